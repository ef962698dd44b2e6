#include "host/analysis/Report.h"

#include <algorithm>
#include <cctype>
#include <cmath>
#include <limits>
#include <set>
#include <utility>

#include "host/TestNames.h"
#include "host/TextList.h"
#include "host/analysis/Analysis.h"
#include "host/beyond/PlotSources.h"
#include "host/report/HtmlReport.h"
#include "host/report/JsonReport.h"
#include "host/report/PageNumbers.h"
#include "host/report/RecordFacts.h"
#include "host/report/ResultPage.h"

namespace tarn {

namespace {

/// With more tests than that a page would be too large for plots of all of them.
constexpr std::size_t kMostTestsWithPlots = 500;
constexpr std::size_t kPlotsOfMany = 50;

std::optional<PlotData> PlotDataOf(const ReportSource& source, std::size_t place) {
    if (source.table == nullptr || place >= source.result.tests.size()) return std::nullopt;
    const CaseRule rule = CaseRuleOf(*source.table, source.options);
    // What is stopped halfway would be drawn with half of its cases.
    const PlotSource plot{*source.table, *source.environment.texts, rule, WorkShare(source.environment.threads, {}),
                          source.options.success};
    return PlotOf(source.result.tests[place], source.result, plot);
}

std::optional<HtmlPlot> HtmlPlotOf(const ReportSource& source, std::size_t place, const std::string& id) {
    std::optional<PlotData> data = PlotDataOf(source, place);
    if (!data) return std::nullopt;
    std::string svg = SvgOf(*data, PictureUse::kPage, id);
    return HtmlPlot{std::move(svg), std::move(data->notes)};
}

// ---- Which tests have plots ----

/// Those with the smallest significances where there are too many; a test without one stands behind all others.
std::set<std::size_t> PlacesWithPlots(const ResultReading& result, std::size_t allTests) {
    std::vector<std::size_t> places(result.tests.size());
    for (std::size_t i = 0; i < places.size(); ++i) places[i] = i;
    if (allTests > kMostTestsWithPlots) {
        const std::vector<double> pValues = ConclusivePValues(result);
        std::ranges::stable_sort(places, {}, [&](std::size_t i) {
            return std::isnan(pValues[i]) ? std::numeric_limits<double>::infinity() : pValues[i];
        });
        const std::size_t most = std::max<std::size_t>(1, kPlotsOfMany * result.tests.size() / allTests);
        places.resize(std::min(places.size(), most));
    }
    return {places.begin(), places.end()};
}

// ---- Fields ----

std::string NameOf(const ResultReading& result, const std::string& field) {
    for (const ResultField& known : result.document.fields) {
        if (known.name == field && !known.label.empty()) return field + ": " + known.label;
    }
    return field;
}

/// The statistics of the fields used, a row each, under the names that they have.
PageTable FieldsTable(const ResultReading& result, const MessageCatalogue& texts) {
    PageTable table;
    table.columns.push_back({"field", "field"});
    for (const FieldReading& field : result.fields) {
        for (const Figure& figure : field.figures) {
            if (std::ranges::find(table.columns, figure.key, &PageColumn::key) == table.columns.end()) {
                table.columns.push_back({figure.key, texts.Label("field" + figure.key), Alignment::kRight});
            }
        }
    }
    for (const FieldReading& field : result.fields) {
        std::vector<PageCell> row{{NameOf(result, field.field), {}, {}}};
        for (std::size_t k = 1; k < table.columns.size(); ++k) {
            const auto found = std::ranges::find(field.figures, table.columns[k].key, &Figure::key);
            const bool has = found != field.figures.end() && !found->value.empty();
            row.push_back(has ? PageCell{ShortNumber(found->value), found->value, {}} : PageCell());
        }
        if (table.columns.size() > 1) table.rows.push_back(std::move(row));
    }
    return table;
}

// ---- Methods ----

void AddOnce(std::vector<std::string>& list, const std::string& text) {
    if (!text.empty() && std::ranges::find(list, text) == list.end()) list.push_back(text);
}

/// The sources of a test stand in one text, with a semicolon between them.
std::vector<std::string> SourcesOf(const std::string& text) {
    std::vector<std::string> sources;
    for (std::size_t begin = 0; begin < text.size();) {
        const std::size_t end = std::min(text.find("; ", begin), text.size());
        sources.push_back(text.substr(begin, end - begin));
        begin = end + 2;
    }
    return sources;
}

/// "Yates (1934), .." of "continuity correction: Yates (1934), ..".
std::string WithoutPurpose(const std::string& reference) {
    const std::size_t colon = reference.find(": ");
    const bool hasPurpose =
        std::islower(static_cast<unsigned char>(reference.front())) != 0 && colon != std::string::npos;
    return hasPurpose ? reference.substr(colon + 2) : reference;
}

/// Those of pairs and of subsets, which say so, where a test has such.
void AddReferences(const TestReading& test, const std::string& source, std::vector<std::string>& references) {
    constexpr std::string_view kOfPairs = "pairs: ";
    constexpr std::string_view kOfSubsets = "subsets: ";
    for (const std::string& reference : SourcesOf(source)) {
        if (reference.starts_with(kOfPairs)) {
            if (!test.pairs.empty()) AddOnce(references, reference.substr(kOfPairs.size()));
        } else if (reference.starts_with(kOfSubsets)) {
            if (!test.subsets.empty()) AddOnce(references, reference.substr(kOfSubsets.size()));
        } else {
            AddOnce(references, WithoutPurpose(reference));
        }
    }
}

void AddMethods(const ReportSource& source, HtmlSource& html) {
    for (const TestReading& test : source.result.tests) {
        const TestTexts* const about = source.environment.texts->Test(test.name);
        if (about == nullptr || test.HasError()) continue;
        const auto isThis = [&](const PageFact& fact) { return fact.title == test.title; };
        if (std::ranges::none_of(html.methods, isThis)) {
            std::vector<std::string> texts;
            for (const std::string* text : {&test.method, &test.pairsMethod, &test.subsetsMethod})
                AddOnce(texts, *text);
            if (!texts.empty()) html.methods.push_back({test.title, JoinList(texts, " ")});
        }
        AddReferences(test, about->source, html.references);
    }
    std::ranges::sort(html.references);
}

// ---- Record ----

/// `program`: by what the result was made, some of which the page says elsewhere.
void AddFacts(const ReportFacts& facts, const std::vector<PageFact>& program, HtmlSource& html) {
    const auto add = [&](const char* title, const std::string& text) {
        if (!text.empty()) html.record.push_back({title, text});
    };
    html.request = facts.request;
    add("Table", facts.data);
    add("Hash of the table", facts.dataHash);
    add("Made", facts.time);
    add(kProgramFact, facts.program);
    for (const PageFact& fact : program) {
        if (fact.title != kProgramFact && fact.title != kRequestFact) html.record.push_back(fact);
    }
    std::vector<std::string> parts;
    for (const std::string* part : {&facts.data, &facts.time, &facts.program}) AddOnce(parts, *part);
    html.subtitle = JoinList(parts, " · ");
}

HtmlRun RunOf(const ReportSource& source, const ResultPage& page, const std::string& id, std::size_t allTests) {
    HtmlRun run;
    for (const TestPage& test : page.tests) run.tests.push_back(&test);
    run.plots.resize(run.tests.size());
    for (const std::size_t place : PlacesWithPlots(source.result, allTests)) {
        run.plots[place] = HtmlPlotOf(source, place, id + "plot-" + std::to_string(place + 1));
    }
    run.fields = FieldsTable(source.result, *source.environment.texts);
    run.record = page.record;
    return run;
}

std::string PlotsRemark(bool hasTable, std::size_t tests) {
    if (!hasTable) return "There are no plots: a result without its table has no cases to draw.";
    if (tests <= kMostTestsWithPlots) return "";
    return "Of " + std::to_string(tests) + " tests the " + std::to_string(kPlotsOfMany) +
           " with the smallest significances have plots.";
}

}  // namespace

std::optional<std::string> SvgOfTest(const ReportSource& source, std::size_t place, PictureUse use) {
    const std::optional<PlotData> data = PlotDataOf(source, place);
    return data ? std::optional(SvgOf(*data, use, "plot-" + std::to_string(place + 1))) : std::nullopt;
}

std::string HtmlOfTest(const ReportSource& source, std::size_t place, const std::string& id) {
    const TestPage page = PageOf(source.result, place, *source.environment.texts);
    return HtmlArticle(page, HtmlPlotOf(source, place, id + "-plot"), id);
}

std::string HtmlOfResult(const ReportSource& source, const ReportFacts& facts) {
    const MessageCatalogue& texts = *source.environment.texts;
    const ResultPage page = PageOf(source.result, texts, facts.notes);
    HtmlSource html;
    html.title = page.title.empty() ? "Results" : page.title;
    if (page.tests.size() > 1) html.summary = page.summary;
    html.familyLine = page.familyLine;
    html.notes = page.notes;
    html.runs.push_back(RunOf(source, page, "", page.tests.size()));
    html.plotsRemark = PlotsRemark(source.table != nullptr, page.tests.size());
    AddMethods(source, html);
    AddFacts(facts, page.program, html);
    html.json = JsonOf(source.result, texts, facts.notes).dump();
    return HtmlReport(html);
}

std::string HtmlOfParts(const std::vector<ReportPart>& parts, const AnalysisOptions& options,
                        const AnalysisEnvironment& environment, const ReportFacts& facts) {
    std::vector<ResultPart> results;
    std::size_t tests = 0;
    for (const ReportPart& part : parts) {
        results.push_back(part.part);
        if (part.part.result) tests += part.part.result->tests.size();
    }
    const PartsPage page = PageOf(results, *environment.texts, facts.notes);
    HtmlSource html;
    html.title = page.title.empty() ? "Results" : page.title;
    html.summary = page.summary;
    html.notes = page.notes;
    bool hasTable = true;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        HtmlRun run;
        if (const ResultPart& part = parts[i].part; part.result) {
            const ReportSource source{*part.result, parts[i].table, options, environment};
            run = RunOf(source, page.parts[i].page, "part-" + std::to_string(i + 1) + "-", tests);
            AddMethods(source, html);
            hasTable &= parts[i].table != nullptr;
        }
        run.name = page.parts[i].name;
        run.mistake = page.parts[i].mistake;
        run.notes = parts[i].part.notes;
        html.runs.push_back(std::move(run));
    }
    html.plotsRemark = PlotsRemark(hasTable, tests);
    AddFacts(facts, page.program, html);
    html.json = PartsJson(results, *environment.texts, facts.notes);
    return HtmlReport(html);
}

std::string PlotFileName(const ResultReading& result, std::size_t place) {
    constexpr std::size_t kMostCharacters = 90;
    const TestReading& test = result.tests[place];
    const TestTexts* const about = MessageCatalogue::English().Test(test.name);
    std::string words = about == nullptr ? test.name : about->name;
    for (const std::string& field : test.fields) words += "-" + field;
    if (!test.group.empty()) words += "-by-" + test.group;
    std::string name;
    for (const char each : words) {
        const auto byte = static_cast<unsigned char>(each);
        const bool isKept = byte < 0x80 && (std::isalnum(byte) != 0 || each == '_' || each == '-');
        if (isKept || (!name.empty() && name.back() != '-')) name += isKept ? each : '-';
    }
    name = name.substr(0, kMostCharacters);
    while (name.ends_with('-')) name.pop_back();
    const std::string last = std::to_string(result.tests.size());
    std::string number = std::to_string(place + 1);
    number.insert(
        0, std::max<std::size_t>(2, last.size()) - std::min(number.size(), std::max<std::size_t>(2, last.size())), '0');
    return number + "-" + name + ".svg";
}

}  // namespace tarn
