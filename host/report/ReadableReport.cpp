#include "host/report/ReadableReport.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "host/TextList.h"
#include "host/report/ExplanationText.h"
#include "host/report/PageText.h"
#include "host/report/TextLayout.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

constexpr std::size_t kIndent = 3;
constexpr const char* kNoTest = "No test of the request is known.\n";
constexpr const char* kMoreBelow = "--details shows each test.\n";

std::string Bold(const std::string& text, const TextStyle& style) {
    return style.hasColour ? "\033[1m" + text + "\033[0m" : text;
}

/// "chi2" as a terminal can show it.
std::string InLetters(std::string text, const TextStyle& style) {
    if (style.hasUnicode && text.starts_with("chi2")) text.replace(0, 4, "\u03C7\u00B2");
    return text;
}

/// The block of a test, in the making.
class Block {
 public:
    Block(const TestPage& page, const TextStyle& style) : page_(page), style_(style) {}

    std::string Text() const {
        std::string text = Heading() + Hypothesis() + Table(page_.samples) + Table(page_.counts);
        for (const PageLine& line : page_.statistics) text += StatisticLine(line);
        text += Effects() + Table(page_.pairs) + Table(page_.subsets);
        for (const auto* facts : {&page_.orders, &page_.methods}) {
            for (const PageFact& fact : *facts) text += Wrapped(fact.title + ": " + fact.text, style_.width, kIndent);
        }
        if (!page_.conclusion.empty()) text += Wrapped(page_.conclusion, style_.width, kIndent);
        for (const PageNote& note : page_.notes) {
            text += Wrapped(std::string(TitleOf(note.kind)) + ": " + note.text, style_.width, kIndent);
        }
        if (page_.explanation) text += ExplanationText(*page_.explanation, style_.width, kIndent);
        return text;
    }

 private:
    std::string Table(const PageTable& table) const { return TableText(table, style_.width, kIndent); }

    /// What is asked at the left, who was counted at the right, or below where both don't fit.
    std::string Heading() const {
        const std::string heading = page_.Heading();
        const std::size_t used = DisplayWidth(heading) + DisplayWidth(page_.cases);
        constexpr std::size_t kBetween = 2;
        if (page_.cases.empty()) return Bold(heading, style_) + "\n";
        if (used + kBetween > style_.width) {
            return Bold(heading, style_) + "\n" + Wrapped(page_.cases, style_.width, kIndent);
        }
        return Bold(heading, style_) + std::string(style_.width - used, ' ') + page_.cases + "\n";
    }

    /// Of one sample: the value or the distribution that it is held against stands nowhere else.
    std::string Hypothesis() const {
        const TestFacts* const facts = Tests::OfResult(page_.name);
        const bool isOneSample = facts != nullptr && facts->family == TestFamily::kOneSample;
        const bool isTold = page_.conclusion.find(page_.hypothesis) != std::string::npos;
        if (!isOneSample || isTold || page_.hasFailed || page_.hypothesis.empty()) return "";
        return Wrapped((page_.isEstimate ? "Asked: " : "Tested: ") + page_.hypothesis, style_.width, kIndent);
    }

    std::string StatisticLine(const PageLine& line) const {
        std::vector<std::string> parts;
        for (const PageFigure& figure : line.figures) {
            parts.push_back(InLetters(FigureText(figure), style_) + (figure.remark.empty() ? "" : " " + figure.remark));
        }
        if (!line.title.empty() && !parts.empty()) parts.front() = line.title + ": " + parts.front();
        if (parts.empty()) parts.push_back(line.title);
        return WrappedParts(parts, ",", style_.width, kIndent);
    }

    std::string Effects() const {
        std::vector<std::string> parts;
        for (const PageEffect& effect : page_.effects) {
            std::string part =
                effect.label + " = " + effect.WithInterval() + (effect.HasInterval() ? "" : " (no interval)");
            // The method of an effect's interval stands among the methods.
            if (effect.key == "estimate") part += " (" + effect.method + ")";
            if (effect.isBeyondRange) part += " (beyond the engine's range)";
            parts.push_back(std::move(part));
        }
        return parts.empty() ? "" : WrappedParts(parts, ";", style_.width, kIndent);
    }

    const TestPage& page_;
    const TextStyle& style_;
};

/// What tests of a summary have to say, each text once with the tests that say it. `prefix` names the part that they
/// are of.
std::string NotesOfMany(const std::vector<TestPage>& tests, const std::string& prefix, const TextStyle& style) {
    std::vector<std::pair<std::string, std::vector<std::string>>> notes;
    for (const TestPage& test : tests) {
        for (const PageNote& note : test.notes) {
            const std::string text = std::string(TitleOf(note.kind)) + ": " + note.text;
            auto found = std::ranges::find(notes, text, [](const auto& each) { return each.first; });
            if (found == notes.end()) found = notes.insert(notes.end(), {text, {}});
            found->second.push_back(test.Heading());
        }
    }
    std::string text;
    constexpr std::size_t kMostNamed = 3;
    for (auto& [note, headings] : notes) {
        std::string who = headings.size() == tests.size() && headings.size() > 1 ? "all tests" : "";
        if (who.empty() && headings.size() > kMostNamed)
            who = headings.front() + " and " + std::to_string(headings.size() - 1) + " others";
        if (who.empty()) who = JoinList(headings, "; ");
        text += Wrapped(note + " (" + prefix + who + ")", style.width, 0);
    }
    return text;
}

std::string NotesText(const std::vector<std::string>& notes, const TextStyle& style, const std::string& prefix = "") {
    std::string text;
    for (const std::string& note : notes) text += Wrapped("Note: " + prefix + note, style.width, 0);
    return text;
}

std::string SummaryText(const ResultPage& page, const TextStyle& style) {
    std::string title = page.title + (page.familyLine.empty() ? "" : "; " + page.familyLine);
    // A long line of what was found isn't shouted.
    return Wrapped(title, style.width, 0) + TableText(page.summary, style.width, kIndent);
}

std::string BlocksOf(const ResultPage& page, const TextStyle& style) {
    std::string text;
    for (const TestPage& test : page.tests) text += (text.empty() ? "" : "\n") + Block(test, style).Text();
    return text;
}

std::string Separated(const std::string& text) {
    return text.empty() ? "" : "\n" + text;
}

}  // namespace

std::string ReadableReport(const ResultPage& page, const TextStyle& style) {
    if (page.tests.empty()) return kNoTest + NotesText(page.notes, style);
    std::string text;
    if (page.hasManyTests) {
        text = SummaryText(page, style) + NotesOfMany(page.tests, "", style) + kMoreBelow;
    } else {
        // The tests that were adjusted together stand together.
        if (!page.familyLine.empty()) text = SummaryText(page, style) + "\n";
        text += BlocksOf(page, style);
    }
    return text + Separated(NotesText(page.notes, style));
}

std::string ReadableReport(const PartsPage& page, const TextStyle& style) {
    std::string text;
    if (!page.summary.IsEmpty()) {
        text = Wrapped(page.title, style.width, 0) + TableText(page.summary, style.width, kIndent);
    }
    const auto isExplained = [](const PartPage& part) {
        return std::ranges::any_of(part.page.tests, [](const TestPage& test) { return test.explanation.has_value(); });
    };
    const bool hasMany = page.summary.rows.size() >= kFewestForSummary && std::ranges::none_of(page.parts, isExplained);
    std::string notes;
    for (const PartPage& part : page.parts) {
        if (!part.mistake.empty()) {
            notes += Wrapped(part.name + ": Not done: " + part.mistake, style.width, 0);
        } else if (hasMany) {
            notes += NotesOfMany(part.page.tests, part.name + ", ", style) +
                     NotesText(part.page.notes, style, part.name + ": ");
        } else {
            text += "\n" + Bold("== " + part.name, style) + "\n\n" + BlocksOf(part.page, style) +
                    Separated(NotesText(part.page.notes, style));
        }
    }
    text += hasMany ? notes + kMoreBelow : Separated(notes);
    return text + Separated(NotesText(page.notes, style));
}

}  // namespace tarn
