#include "host/report/MarkupReport.h"

#include <algorithm>
#include <vector>

#include "host/report/ExplanationText.h"

namespace tarn {

namespace {

constexpr int kRun = 1;
constexpr int kTest = 2;

std::string TableOf(const PageTable& table, const Markup& markup) {
    return table.IsEmpty() ? "" : markup.Table(table);
}

std::string LineOf(const PageLine& line, const Markup& markup) {
    std::string text = line.title.empty() ? "" : markup.Escaped(line.title + (line.figures.empty() ? "" : ": "));
    for (const PageFigure& figure : line.figures) {
        if (&figure != &line.figures.front()) text += ", ";
        text += markup.Figure(figure);
        if (!figure.remark.empty()) text += " " + markup.Escaped(figure.remark);
    }
    return text;
}

std::string ExplanationMarkup(const TestExplanation& explanation, const Markup& markup) {
    std::string text = markup.Heading(kTest + 1, kExplanationTitle);
    for (const ExplanationTable& table : explanation.tables) text += TableOf(PageTableOf(table), markup);
    text += TableOf(StepTable(explanation), markup);
    for (const ExplanationTable& table : explanation.comparisons) text += TableOf(PageTableOf(table), markup);
    for (const std::string& note : explanation.notes) text += markup.Paragraph(note);
    return text;
}

std::string TestText(const TestPage& page, const Markup& markup) {
    std::string text = markup.Heading(kTest, page.Heading());
    if (!page.cases.empty()) text += markup.Paragraph(page.cases);
    if (!page.hypothesis.empty() && !page.hasFailed) {
        text += markup.Paragraph((page.isEstimate ? "Asked: " : "Null hypothesis: ") + page.hypothesis);
    }
    text += TableOf(page.samples, markup) + TableOf(page.counts, markup);
    std::vector<std::string> lines;
    for (const PageLine& line : page.statistics) lines.push_back(LineOf(line, markup));
    if (!lines.empty()) text += markup.List(lines);
    text += TableOf(EffectsTable(page), markup) + TableOf(page.pairs, markup) + TableOf(page.subsets, markup);
    for (const auto* facts : {&page.orders, &page.methods}) {
        for (const PageFact& fact : *facts) {
            // The methods of the intervals stand in their table.
            if (!fact.title.starts_with("Intervals")) text += markup.Paragraph(fact.title + ": " + fact.text);
        }
    }
    if (!page.conclusion.empty()) text += markup.Paragraph(page.conclusion);
    for (const PageNote& note : page.notes) {
        text += markup.Paragraph(std::string(TitleOf(note.kind)) + ": " + note.text);
    }
    if (page.explanation) text += ExplanationMarkup(*page.explanation, markup);
    return text;
}

std::string NotesText(const std::vector<std::string>& notes, const Markup& markup) {
    std::string text;
    for (const std::string& note : notes) text += markup.Paragraph("Note: " + note);
    return text;
}

std::string SummaryText(const std::string& title, const std::string& line, const PageTable& table,
                        const Markup& markup) {
    return markup.Heading(kRun, title) + (line.empty() ? "" : markup.Paragraph(line)) + TableOf(table, markup);
}

std::string BodyOf(const ResultPage& page, const Markup& markup) {
    std::string text;
    if (page.hasManyTests || !page.familyLine.empty()) {
        text += SummaryText(page.title, page.familyLine, page.summary, markup);
    }
    for (const TestPage& test : page.tests) text += TestText(test, markup);
    return text + NotesText(page.notes, markup);
}

/// Blocks end with an empty line; a document ends with its last one.
std::string Finished(std::string text) {
    while (text.ends_with("\n\n")) text.pop_back();
    return text;
}

}  // namespace

PageTable EffectsTable(const TestPage& page) {
    PageTable table;
    table.columns = {{"effect", page.isEstimate ? "estimate" : "effect"},
                     {"value", "value", Alignment::kRight},
                     {"interval", "interval", Alignment::kRight},
                     {"method", "by"}};
    const auto levelled =
        std::ranges::find_if(page.methods, [](const PageFact& fact) { return fact.title.starts_with("Intervals, "); });
    // "Intervals, 95 %" has the level behind the comma.
    if (levelled != page.methods.end()) {
        table.columns[2].title = levelled->title.substr(std::string("Intervals, ").size()) + " interval";
    }
    for (const PageEffect& effect : page.effects) {
        const std::string interval = effect.HasInterval() ? "[" + effect.lowerText + ", " + effect.upperText + "]" : "";
        table.rows.push_back({{effect.label, {}, {}},
                              {effect.text, effect.value, {}},
                              {interval, effect.lower, effect.upper},
                              {effect.method + (effect.isBeyondRange ? " (beyond the engine's range)" : ""), {}, {}}});
    }
    return table;
}

std::string MarkupReport(const ResultPage& page, const Markup& markup) {
    if (page.tests.empty()) return markup.Paragraph("No test of the request is known.");
    return Finished(markup.Head() + BodyOf(page, markup));
}

std::string MarkupReport(const PartsPage& page, const Markup& markup) {
    std::string text = markup.Head();
    if (!page.summary.IsEmpty()) text += SummaryText(page.title, "", page.summary, markup);
    for (const PartPage& part : page.parts) {
        text += markup.Heading(kRun, part.name);
        text += part.mistake.empty() ? BodyOf(part.page, markup) : markup.Paragraph("Not done: " + part.mistake);
    }
    return Finished(text + NotesText(page.notes, markup));
}

}  // namespace tarn
