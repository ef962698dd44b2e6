#include "host/report/HtmlReport.h"

#include <algorithm>

#include "host/report/HtmlExplanation.h"
#include "host/report/HtmlText.h"

namespace tarn {

namespace {

std::string Element(const std::string& name, const std::string& content) {
    return "<" + name + ">" + content + "</" + name + ">\n";
}

std::string Heading(int level, const std::string& text) {
    const std::string name = "h" + std::to_string(level);
    return Element(name, HtmlIsolated(text));
}

// ---- One test ----

/// A letter of the field in italics, and words as words.
std::string SymbolHtml(const std::string& symbol) {
    constexpr std::size_t kLongestLetter = 2;
    return symbol.size() <= kLongestLetter ? "<i>" + HtmlEscaped(symbol) + "</i>" : HtmlIsolated(symbol);
}

/// "<i>U</i> = 575.5 for OJ": the symbols of the field in italics, the square of chi as one.
std::string FigureHtml(const PageFigure& figure) {
    const bool isChiSquare = figure.symbol == "chi2";
    std::string html;
    if (!figure.symbol.empty()) html = isChiSquare ? "<i>χ</i><sup>2</sup>" : SymbolHtml(figure.symbol);
    if (isChiSquare && !figure.df.empty()) html += "(" + HtmlEscaped(figure.df) + ")";
    // What is a bound belongs to the number.
    const bool isEqual = figure.relation.empty() || figure.relation == "=";
    html += figure.relation == "=" ? " = " : " ";
    html += HtmlNumber(isEqual ? figure.text : figure.relation + " " + figure.text, figure.number);
    if (!isChiSquare && !figure.df.empty()) html += ", df " + HtmlEscaped(figure.df);
    if (!figure.remark.empty()) html += " " + HtmlIsolated(figure.remark);
    return html;
}

std::string LineHtml(const PageLine& line) {
    std::string figures;
    for (const PageFigure& figure : line.figures) figures += (figures.empty() ? "" : ", ") + FigureHtml(figure);
    const std::string title = line.title.empty() ? "" : HtmlIsolated(line.title) + (figures.empty() ? "" : ": ");
    return "<p class=\"stat\">" + title + figures + "</p>\n";
}

PageTable EffectsTable(const std::vector<PageEffect>& effects) {
    PageTable table;
    table.columns = {
        {"effect", "effect"}, {"value", "value", Alignment::kRight}, {"interval", "interval", Alignment::kRight}};
    for (const PageEffect& effect : effects) {
        const std::string interval = effect.HasInterval() ? effect.lowerText + " to " + effect.upperText : "";
        table.rows.push_back({{effect.label, {}, {}},
                              {effect.text, effect.value, {}},
                              {interval, effect.HasInterval() ? effect.lower : Number(), effect.upper}});
    }
    return table;
}

std::string FactsHtml(const std::vector<PageFact>& facts) {
    if (facts.empty()) return "";
    std::string html = "<dl>";
    for (const PageFact& fact : facts) {
        html += "<dt>" + HtmlIsolated(fact.title) + "</dt><dd>" + HtmlIsolated(fact.text) + "</dd>";
    }
    return html + "</dl>\n";
}

std::string NotesHtml(const std::vector<PageNote>& notes) {
    std::string html;
    for (const PageNote& note : notes) {
        const bool isBad = note.kind != PageNote::Kind::kNote;
        html += std::string("<li") + (isBad ? " class=\"bad\"" : "") + ">" + std::string(TitleOf(note.kind)) + ": " +
                HtmlIsolated(note.text) + "</li>\n";
    }
    return html.empty() ? "" : "<ul>" + html + "</ul>\n";
}

std::string FigureElement(const HtmlPlot& plot) {
    std::string html = "<figure>" + plot.svg;
    if (!plot.notes.empty()) {
        html += "<figcaption>";
        for (std::size_t i = 0; i < plot.notes.size(); ++i) html += (i > 0 ? " " : "") + HtmlIsolated(plot.notes[i]);
        html += "</figcaption>";
    }
    return html + "</figure>\n";
}

void AddTable(std::string& html, const PageTable& table, const TestPage& test, const char* what) {
    if (!table.IsEmpty()) html += HtmlTable(table, {std::string(what) + " of " + test.Heading()});
}

/// What a test says in words and tables, in the order in which it is read.
std::string TextOf(const TestPage& test) {
    std::string html;
    const char* const what = test.isEstimate ? "" : "Null hypothesis: ";
    if (!test.hypothesis.empty()) html += std::string("<p>") + what + HtmlIsolated(test.hypothesis) + "</p>\n";
    if (!test.cases.empty()) html += "<p class=\"quiet\">" + HtmlIsolated(test.cases) + "</p>\n";
    AddTable(html, test.samples, test, "Samples");
    AddTable(html, test.counts, test, "Counts");
    for (const PageLine& line : test.statistics) html += LineHtml(line);
    if (!test.conclusion.empty()) html += "<p class=\"verdict\">" + HtmlIsolated(test.conclusion) + "</p>\n";
    if (!test.effects.empty()) html += HtmlTable(EffectsTable(test.effects), {"Effects of " + test.Heading()});
    return html;
}

std::string DetailsOf(const TestPage& test) {
    std::string html;
    AddTable(html, test.pairs, test, "Pairs");
    AddTable(html, test.subsets, test, "Homogeneous subsets");
    html += FactsHtml(test.orders) + FactsHtml(test.methods) + NotesHtml(test.notes);
    if (test.explanation) html += HtmlExplanation(*test.explanation, test.Heading());
    return html;
}

/// `heading` is its own, or none where that of the page, whose identifier is `label`, says the same.
std::string ArticleOf(const TestPage& test, const std::optional<HtmlPlot>& plot, const std::string& id,
                      const std::string& label, const std::string& heading) {
    std::string html = "<article id=\"" + id + "\" aria-labelledby=\"" + label + "\">" + heading;
    if (plot) {
        html +=
            "<div class=\"sides\"><div class=\"text\">" + TextOf(test) + "</div>" + FigureElement(*plot) + "</div>\n";
    } else {
        html += TextOf(test);
    }
    return html + DetailsOf(test) + "</article>\n";
}

// ---- The page ----

constexpr const char* kTitleId = "title";

/// Whether the title of the page is the heading of its one test.
bool IsOfOneTest(const HtmlSource& source) {
    return source.runs.size() == 1 && source.runs.front().tests.size() == 1 && source.summary.IsEmpty() &&
           source.title == source.runs.front().tests.front()->Heading();
}

std::string IdOf(std::size_t run, std::size_t runs, std::size_t test) {
    const std::string own = "test-" + std::to_string(test + 1);
    return runs > 1 ? "part-" + std::to_string(run + 1) + "-" + own : own;
}

std::string ListOf(const std::vector<std::string>& items) {
    if (items.empty()) return "";
    std::string html = "<ul>";
    for (const std::string& item : items) html += "<li>" + HtmlIsolated(item) + "</li>\n";
    return html + "</ul>\n";
}

std::string Section(const std::string& id, const std::string& title, const std::string& content) {
    return "<section id=\"" + id + "\" aria-labelledby=\"" + id + "-h\"><h2 id=\"" + id + "-h\">" + HtmlEscaped(title) +
           "</h2>\n" + content + "</section>\n";
}

bool IsExplained(const HtmlSource& source) {
    const auto isTestExplained = [](const TestPage* test) { return test->explanation.has_value(); };
    return std::ranges::any_of(source.runs,
                               [&](const HtmlRun& run) { return std::ranges::any_of(run.tests, isTestExplained); });
}

bool HasFields(const HtmlSource& source) {
    return std::ranges::any_of(source.runs, [](const HtmlRun& run) { return !run.fields.IsEmpty(); });
}

/// Where a reader may go; of few tests they are among it themselves.
std::string NavigationOf(const HtmlSource& source) {
    std::string html = "<nav aria-label=\"Contents\"><ul>";
    const auto add = [&](const std::string& id, const std::string& title) {
        html += "<li><a href=\"#" + id + "\">" + HtmlEscaped(title) + "</a></li>";
    };
    if (!source.summary.IsEmpty()) add("summary", "Summary");
    add("tests", "Tests");
    if (HasFields(source)) add("fields", "Fields");
    if (!source.methods.empty()) add("methods", "Methods");
    add("record", "Record");
    return html + "</ul></nav>\n";
}

/// The column of a summary that tells its rows apart: fields, or where all are about the same ones, tests.
std::string LinkColumnOf(const PageTable& summary) {
    for (const char* const key : {"fields", "test"}) {
        if (std::ranges::find(summary.columns, key, &PageColumn::key) != summary.columns.end()) return key;
    }
    return summary.columns.empty() ? "" : summary.columns.front().key;
}

std::string SummaryOf(const HtmlSource& source) {
    if (source.summary.IsEmpty()) return "";
    HtmlTableLook look{"Summary of the tests", LinkColumnOf(source.summary), {}};
    for (std::size_t run = 0; run < source.runs.size(); ++run) {
        for (std::size_t i = 0; i < source.runs[run].tests.size(); ++i) {
            look.targets.push_back(IdOf(run, source.runs.size(), i));
        }
    }
    std::string html = HtmlTable(source.summary, look);
    if (!source.familyLine.empty()) html += "<p>" + HtmlIsolated(source.familyLine) + "</p>\n";
    return Section("summary", "Summary", html + ListOf(source.notes));
}

void AppendTests(std::string& html, const HtmlSource& source) {
    html += "<section id=\"tests\" aria-label=\"Tests\">\n";
    if (!source.plotsRemark.empty()) html += "<p class=\"quiet\">" + HtmlEscaped(source.plotsRemark) + "</p>\n";
    for (std::size_t run = 0; run < source.runs.size(); ++run) {
        const HtmlRun& part = source.runs[run];
        if (!part.name.empty()) html += Heading(2, part.name);
        if (!part.mistake.empty()) html += "<p class=\"bad\">Not done: " + HtmlIsolated(part.mistake) + "</p>\n";
        html += ListOf(part.notes);
        for (std::size_t i = 0; i < part.tests.size(); ++i) {
            const std::optional<HtmlPlot> plot = i < part.plots.size() ? part.plots[i] : std::nullopt;
            const std::string id = IdOf(run, source.runs.size(), i);
            html += IsOfOneTest(source) ? ArticleOf(*part.tests[i], plot, id, kTitleId, "")
                                        : HtmlArticle(*part.tests[i], plot, id, part.name.empty() ? 2 : 3);
        }
    }
    html += "</section>\n";
}

std::string FieldsOf(const HtmlSource& source) {
    if (!HasFields(source)) return "";
    std::string html;
    for (const HtmlRun& run : source.runs) {
        if (run.fields.IsEmpty()) continue;
        if (!run.name.empty()) html += Heading(3, run.name);
        html += HtmlTable(run.fields, {"Descriptives of the fields" + (run.name.empty() ? "" : ", " + run.name)});
    }
    return Section("fields", "Fields", html);
}

std::string MethodsOf(const HtmlSource& source) {
    if (source.methods.empty()) return "";
    std::string html = FactsHtml(source.methods);
    if (!source.references.empty()) html += Heading(3, "References") + ListOf(source.references);
    return Section("methods", "Methods", html);
}

std::string RecordOf(const HtmlSource& source) {
    std::string html;
    if (!source.request.empty()) {
        html +=
            "<p>To make it again:</p>\n<pre tabindex=\"0\"><code>" + HtmlEscaped(source.request) + "</code></pre>\n";
    }
    html += FactsHtml(source.record);
    for (const HtmlRun& run : source.runs) {
        if (run.record.empty()) continue;
        if (!run.name.empty()) html += Heading(3, run.name);
        html += FactsHtml(run.record);
    }
    return Section("record", "Record", html);
}

/// JSON within a page: no text of it can end the element or begin another one.
std::string JsonElement(const std::string& json) {
    std::string escaped;
    escaped.reserve(json.size());
    for (const char each : json) {
        if (each == '<') {
            escaped += "\\u003c";
        } else {
            escaped += each;
        }
    }
    return "<script type=\"application/json\" id=\"tarn-result\">" + escaped + "</script>\n";
}

}  // namespace

std::string HtmlArticle(const TestPage& test, const std::optional<HtmlPlot>& plot, const std::string& id, int level) {
    const std::string heading = "h" + std::to_string(level);
    const std::string number = test.number > 0 ? std::to_string(test.number) + ". " : "";
    return ArticleOf(
        test, plot, id, id + "-h",
        "<" + heading + " id=\"" + id + "-h\">" + number + HtmlIsolated(test.Heading()) + "</" + heading + ">\n");
}

std::string HtmlReport(const HtmlSource& source) {
    std::string html =
        "<!DOCTYPE html>\n<html lang=\"en\"><head><meta charset=\"utf-8\">\n"
        "<meta http-equiv=\"Content-Security-Policy\" content=\"default-src 'none'; style-src 'unsafe-inline'; "
        "img-src data:\">\n"
        "<meta name=\"viewport\" content=\"width=device-width, initial-scale=1\">\n"
        "<meta name=\"color-scheme\" content=\"light dark\">\n<title>" +
        HtmlEscaped(source.title) + "</title>\n<style>" + HtmlStyleSheet() +
        (IsExplained(source) ? HtmlExplanationStyle() : "") +
        "html{background:#fff}@media screen and (prefers-color-scheme:dark){html{background:#16181c}}body{margin:0}"
        "</style></head>\n<body>\n<div class=\"tarn\"><header>" +
        "<h1 id=\"" + kTitleId + "\">" + HtmlIsolated(source.title) + "</h1>\n<p class=\"quiet\">" +
        HtmlIsolated(source.subtitle) + "</p>\n" + NavigationOf(source) + "</header>\n<main>\n";
    html += SummaryOf(source);
    if (source.summary.IsEmpty()) html += ListOf(source.notes);
    AppendTests(html, source);
    html += FieldsOf(source) + MethodsOf(source) + RecordOf(source) + "</main></div>\n";
    if (!source.json.empty()) html += JsonElement(source.json);
    return html + "</body></html>\n";
}

}  // namespace tarn
