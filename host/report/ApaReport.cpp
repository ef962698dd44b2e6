#include "host/report/ApaReport.h"

#include <algorithm>
#include <string_view>
#include <vector>

#include "host/TextList.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

/// The text of a column in a row; "" where the table doesn't have it.
std::string CellOf(const PageTable& table, std::size_t row, std::string_view key) {
    const auto column = std::ranges::find(table.columns, key, &PageColumn::key);
    if (column == table.columns.end()) return "";
    return table.rows[row][static_cast<std::size_t>(column - table.columns.begin())].text;
}

/// "OJ (n = 30, Mdn = 22.7)"
std::string SampleText(const PageTable& samples, std::size_t row) {
    std::vector<std::string> parts;
    if (const std::string n = CellOf(samples, row, "n"); !n.empty()) parts.push_back("n = " + n);
    if (const std::string median = CellOf(samples, row, "median"); !median.empty()) parts.push_back("Mdn = " + median);
    return CellOf(samples, row, "sample") + (parts.empty() ? "" : " (" + JoinList(parts) + ")");
}

/// "a, b and c"
std::string Enumerated(const std::vector<std::string>& parts) {
    if (parts.size() < 2) return JoinList(parts);
    const std::vector<std::string> first(parts.begin(), parts.end() - 1);
    return JoinList(first) + " and " + parts.back();
}

/// "sign test": a test whose name has no name of a person begins with a small letter.
std::string InSentence(std::string title) {
    for (const char* word : {"Sign", "Binomial", "Chi-square", "Runs", "Median", "Marginal"}) {
        if (title.starts_with(word)) title.front() = static_cast<char>(title.front() - 'A' + 'a');
    }
    return title;
}

/// "A Mann-Whitney U test", without an article where a name owns the test: "McNemar's test".
std::string WithArticle(const std::string& title) {
    if (title.substr(0, title.find(' ')).ends_with("'s")) return title;
    return "A " + InSentence(title);
}

/// "A Mann-Whitney U test compared len between OJ (n = 30, Mdn = 22.7) and VC (...)."
std::string Opening(const TestPage& page) {
    const TestFacts* const facts = Tests::OfResult(page.name);
    const bool isOneSample = facts == nullptr || facts->family == TestFamily::kOneSample;
    const bool isIndependent = !isOneSample && facts->family == TestFamily::kIndependent;
    std::vector<std::string> samples;
    for (std::size_t i = 0; i < page.samples.rows.size(); ++i) samples.push_back(SampleText(page.samples, i));
    const bool areIntervals = page.isEstimate && isOneSample;
    std::string text = areIntervals ? page.title : WithArticle(page.title);
    if (isOneSample || samples.empty()) {
        text += (areIntervals ? " were made for " : " was run on ") +
                (samples.size() == 1 ? samples.front() : page.subject);
    } else if (isIndependent) {
        // "len by supp" compares len between the groups.
        const std::string field = page.subject.substr(0, page.subject.rfind(" by "));
        text += " compared " + field + " between " + Enumerated(samples);
    } else {
        text += " compared " + Enumerated(samples);
    }
    // Who is missing is part of what was done.
    const bool isComplete = page.cases.find('(') == std::string::npos;
    return text + (isComplete || page.cases.empty() ? "" : "; " + page.cases) +
           (isOneSample && !areIntervals && !page.hypothesis.empty() ? ". Null hypothesis: " + page.hypothesis : ".");
}

/// What of a significance's remark APA style has beside it.
std::string KindOf(const std::string& remark) {
    std::vector<std::string> kinds;
    if (remark.find("one-sided") != std::string::npos) kinds.emplace_back("one-sided");
    for (const char* kind : {"Monte Carlo", "Fisher's exact test"}) {
        if (remark.find(kind) != std::string::npos) kinds.emplace_back(kind);
    }
    const bool isExact = remark.find("exact") != std::string::npos && remark.find("Fisher") == std::string::npos;
    if (isExact) kinds.emplace_back("exact");
    if (remark.find("ignoring ties") != std::string::npos) kinds.emplace_back("ignoring ties");
    return kinds.empty() ? "" : " (" + JoinList(kinds) + ")";
}

/// "H(2) = 7.99", "\u03C7\u00B2(1, N = 311) = 0.26"
std::string FigureOf(const PageFigure& figure, const TestPage& page) {
    const bool isChiSquare = figure.symbol == "chi2";
    std::string text = isChiSquare ? "\u03C7\u00B2" : figure.symbol;
    if (!figure.df.empty()) {
        text += "(" + figure.df + (isChiSquare && !page.n.empty() ? ", N = " + page.n.text : "") + ")";
    }
    text += (figure.relation.empty() ? " " : " " + figure.relation + " ") + figure.text;
    if (figure.key == "p") return text + KindOf(figure.remark);
    // The other U stands in brackets, which APA style has no place for.
    const std::string remark = figure.remark.substr(0, figure.remark.find(" ("));
    return figure.remark.starts_with('(') || remark.empty() ? text : text + " " + remark;
}

/// "95% CI": the level stands in the name of a fact.
std::string IntervalName(const TestPage& page) {
    for (const PageFact& fact : page.methods) {
        if (fact.title.starts_with("Intervals, ") || fact.title == "Interval") {
            std::string level = fact.title == "Interval" ? fact.text : fact.title.substr(fact.title.find(' ') + 1);
            std::erase(level, ' ');
            return level + " CI";
        }
    }
    return "CI";
}

std::string EffectText(const PageEffect& effect, const std::string& interval) {
    std::string text = effect.label + " = " + effect.text;
    if (effect.HasInterval()) text += ", " + interval + " [" + effect.lowerText + ", " + effect.upperText + "]";
    return text + (effect.key == "estimate" ? " (" + effect.method + ")" : "");
}

std::string WithoutStop(std::string text) {
    if (text.ends_with('.')) text.pop_back();
    return text;
}

/// The first sentence of the conclusion, without what a paper doesn't say, with the numbers behind it.
std::string Finding(const TestPage& page) {
    std::vector<std::string> numbers;
    if (!page.statistics.empty()) {
        for (const PageFigure& figure : page.statistics.front().figures) numbers.push_back(FigureOf(figure, page));
    }
    const std::string interval = IntervalName(page);
    std::vector<std::string> effects;
    for (const PageEffect& effect : page.effects) effects.push_back(EffectText(effect, interval));
    // Effects have commas of their own.
    if (!effects.empty()) numbers.push_back(JoinList(effects, "; "));
    std::string sentence = page.conclusion.substr(0, page.conclusion.find("; which of them differ"));
    // The sentence on the pairs comes after them.
    for (const char* next : {" After adjustment ", " Without adjustment "}) {
        sentence = sentence.substr(0, sentence.find(next));
    }
    if (sentence.empty()) return numbers.empty() ? "" : "Estimated: " + JoinList(numbers) + ".";
    return WithoutStop(sentence) + (numbers.empty() ? "" : ", " + JoinList(numbers)) + ".";
}

/// "Pairs (Dunn, Bonferroni): ctrl - trt1, z = 1.12, p = .791; ..."
std::string PairsText(const TestPage& page) {
    std::vector<std::string> pairs;
    for (std::size_t i = 0; i < page.pairs.rows.size(); ++i) {
        std::vector<std::string> parts{CellOf(page.pairs, i, "pair")};
        if (const std::string z = CellOf(page.pairs, i, "z"); !z.empty()) parts.push_back("z = " + z);
        if (const std::string p = CellOf(page.pairs, i, "p-adjusted"); !p.empty()) {
            parts.push_back(p.starts_with('<') || p.starts_with('>') ? "p " + p : "p = " + p);
        }
        pairs.push_back(JoinList(parts));
    }
    return pairs.empty() ? "" : page.pairs.title + ": " + JoinList(pairs, "; ") + ".";
}

std::string TestText(const TestPage& page) {
    std::vector<std::string> sentences;
    const auto add = [&](std::string sentence) {
        if (!sentence.empty()) sentences.push_back(std::move(sentence));
    };
    if (!page.hasFailed) {
        add(Opening(page));
        add(Finding(page));
        add(PairsText(page));
    }
    for (const PageNote& note : page.notes) {
        const std::string title =
            page.hasFailed ? page.Heading() + ": " + std::string(TitleOf(note.kind)) : std::string(TitleOf(note.kind));
        if (note.kind != PageNote::Kind::kNote || page.hasFailed) add(title + ": " + note.text + ".");
    }
    return JoinList(sentences, " ") + "\n";
}

std::string BodyOf(const ResultPage& page) {
    std::string text;
    for (const TestPage& test : page.tests) text += (text.empty() ? "" : "\n") + TestText(test);
    if (!page.familyLine.empty()) text += "\n" + page.title + ": " + page.familyLine + ".\n";
    for (const std::string& note : page.notes) text += "\nNote: " + note + "\n";
    return text;
}

}  // namespace

std::string ApaReport(const ResultPage& page) {
    return page.tests.empty() ? "No test of the request is known.\n" : BodyOf(page);
}

std::string ApaReport(const PartsPage& page) {
    std::string text;
    for (const PartPage& part : page.parts) {
        text += (text.empty() ? "" : "\n") + part.name + "\n\n";
        text += part.mistake.empty() ? BodyOf(part.page) : "Not done: " + part.mistake + "\n";
    }
    for (const std::string& note : page.notes) text += "\nNote: " + note + "\n";
    return text;
}

}  // namespace tarn
