#include "apps/tarn/AnalyzeCommand.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cstddef>
#include <iostream>
#include <new>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "apps/tarn/Command.h"
#include "apps/tarn/CommandEnvironment.h"
#include "apps/tarn/Interrupt.h"
#include "apps/tarn/OutputPaths.h"
#include "apps/tarn/Presentation.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/ReportFiles.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/TestNames.h"
#include "host/TextList.h"
#include "host/TextTable.h"
#include "host/WholeFile.h"
#include "host/analysis/Analysis.h"
#include "host/analysis/Record.h"
#include "host/report/JsonReport.h"
#include "host/report/ResultComparison.h"
#include "host/words/AnalysisWords.h"

namespace tarn {

namespace {

/// What stands for the category in the name of a document of a part.
constexpr std::string_view kPlaceOfCategory = "{}";

/// CSV has the statistics alone, so nothing else is made where the document isn't kept.
AnalysisOptions Briefly(AnalysisOptions analysis, const AnalyzeOptions& options) {
    const OutputOptions& output = options.output;
    analysis.brief =
        analysis.brief || (output.format == ReportFormat::kCsv && output.outPath.empty() && !WantsReport(output));
    return analysis;
}

ExitStatus NoneDone() {
    return TellMistake("no test could be done; each says why", ExitStatus::kRunFailed);
}

/// Explanations stand below the tests of a text, of a document or of a page.
void CheckExplanations(const OutputOptions& output) {
    // The page has them, whatever else is shown.
    if (!output.explain || !output.reportPath.empty()) return;
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    constexpr std::array kFormats{ReportFormat::kText,  ReportFormat::kJson,  ReportFormat::kMarkdown,
                                  ReportFormat::kLatex, ReportFormat::kTypst, ReportFormat::kHtml};
    if (std::ranges::find(kFormats, format) == kFormats.end()) {
        throw InputError("--explain: " + FormatNames()[static_cast<std::size_t>(format)] +
                         " has no place for it; expected --format text, json, md, latex, typst or html, or --report");
    }
    if (format != ReportFormat::kText) return;
    if (output.details)
        throw InputError("--explain: stands below the short text; expected it without --details, or --report");
    if (output.quiet) throw InputError("--explain: --quiet shows no text; expected one of the two, or --report");
}

/// A name may have been looked up by the reader of the table and for the request.
void AddNotes(std::vector<std::string>& notes, const std::vector<std::string>& more) {
    for (const std::string& note : more) {
        if (std::ranges::find(notes, note) == notes.end()) notes.push_back(note);
    }
}

bool IsCompared(const AnalyzeOptions& options) {
    return !options.compared.is_null();
}

/// Says in what a result in JSON differs from the one that was given.
ExitStatus ShowComparison(const std::string& json, const AnalyzeOptions& options) {
    const ResultComparison comparison = CompareResults(options.compared, ParseJson(json, "result"));
    const bool asJson = options.output.format == ReportFormat::kJson;
    if (asJson || !options.output.quiet) {
        PrintResult(asJson ? Written(ComparisonJson(comparison)) : ComparisonText(comparison));
    }
    return comparison.IsSame() ? ExitStatus::kDone : ExitStatus::kIsAnother;
}

/// Adds how a part was made to its result.
void AddRecordOf(ResultReading& result, const AnalysisPart& part, const AnalyzeOptions& options,
                 const AnalysisEnvironment& environment) {
    if (!IsCompared(options) && !ShowsRecord(options.output, options.output.format.value_or(ReportFormat::kText)))
        return;
    const CaseRule rule = CaseRuleOf(part.table, part.options);
    const Json request = RequestOf(options.study);
    AddRecord(result,
              {part.table, rule, WeightRule::kRounded, part.selection, request, WordsOf(options.study),
               options.table.dataPath},
              WorkShare(environment.threads, environment.isCancelled));
}

/// All records in one analysis.
ExitStatus AnalyzeWhole(AnalysisPart part, const std::vector<std::string>& notes, const AnalyzeOptions& options,
                        Interrupt& interrupt) {
    PrepareTable(part.table, part.options);
    std::optional<ProgressBar> progress(!options.output.quiet);
    const AnalysisEnvironment environment = EnvironmentOf(interrupt, *progress, options.table);
    AnalysisOutcome outcome = Analyze(part.table, Briefly(part.options, options), environment);
    progress.reset();  // nothing of it is left on the line when results are shown
    const ExitStatus status = TellRemarks(outcome);
    if (!outcome.succeeded) return status;
    std::vector<std::string> allNotes = notes;
    AddNotes(allNotes, part.notes);
    AddNotes(allNotes, outcome.notes);

    const OutputOptions& output = options.output;
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    const bool isDocumentShown = format == ReportFormat::kXml;
    const bool isKept = isDocumentShown || !output.outPath.empty();
    const std::string document = isKept ? outcome.document : std::string();
    ResultReading result = ReadAnalysis(std::move(outcome.document), part.options, environment);
    const bool isShown = format != ReportFormat::kText || !output.quiet;
    if ((isShown && !isDocumentShown) || WantsReport(output) || IsCompared(options))
        SupplyFigures(result, part.table, part.options, options.supplement, environment);
    AddRecordOf(result, part, options, environment);
    if (output.explain) ExplainTests(result, part.table, part.options, environment);
    if (interrupt.IsAsked()) return TellMistake(kCancelledRun, ExitStatus::kRunFailed);
    const ReportSource source{result, &part.table, part.options, environment};
    const ReportFacts facts = WantsReport(output) ? FactsOf(options, allNotes) : ReportFacts();
    std::string report;
    if (IsCompared(options)) {
        report = Present(result, {ReportFormat::kJson, false}, allNotes);
    } else if (isShown && format == ReportFormat::kHtml) {
        report = HtmlOfResult(source, facts);
    } else if (isShown && !isDocumentShown) {
        report = Present(result, {format, output.details}, allNotes);
    }
    WriteReports(output, source, facts);
    // Whatever else can fail has been done by now, but for the printing.
    if (!output.outPath.empty()) WriteWholeFile(output.outPath, document);
    if (IsCompared(options)) return ShowComparison(report, options);
    // Text and JSON have a place for notes.
    if (!isShown || format == ReportFormat::kCsv || format == ReportFormat::kXml) TellNotes(allNotes);
    if (isShown) PrintResult(isDocumentShown ? document : report);
    return IsNoneDone(result) ? NoneDone() : status;
}

// ---- Parts ----

/// One document can't hold several analyses.
void CheckOutputOfParts(const AnalyzeOptions& options) {
    if (options.output.format == ReportFormat::kXml) {
        throw InputError(
            "--format: xml is one document, and --split makes one for each part; expected text, json, csv or html");
    }
    CheckReportOfParts(options.output);
    const std::string& path = options.output.outPath;
    if (!path.empty() && path.find(kPlaceOfCategory) == std::string::npos) {
        throw InputError("--out: " + Quoted(path) + "; expected a name with " + std::string(kPlaceOfCategory) +
                         " for the category, since --split makes a document for each part");
    }
}

/// The name of a file without what a path, a shell or another system takes for something else.
std::string NameForFile(const std::string& category) {
    std::string name;
    for (const char c : category) {
        const bool isLetter = std::isalnum(static_cast<unsigned char>(c)) != 0 || static_cast<unsigned char>(c) >= 0x80;
        name += isLetter || c == '-' || c == '.' ? c : '_';
    }
    return name.starts_with('.') ? "_" + name.substr(1) : name;
}

/// Writes the document of each part in a file of its own.
void WriteDocuments(const std::vector<ResultPart>& parts, const std::vector<std::string>& documents,
                    const std::string& path) {
    const std::size_t place = path.find(kPlaceOfCategory);
    std::set<std::string> names;
    for (std::size_t i = 0; i < parts.size(); ++i) {
        if (!parts[i].result) continue;
        const std::string plain = NameForFile(parts[i].category);
        std::string name = plain;
        for (int number = 2; !names.insert(name).second; ++number) name = plain + "-" + std::to_string(number);
        std::string own = path;
        WriteWholeFile(own.replace(place, kPlaceOfCategory.size(), name), documents[i]);
    }
}

/// Analyses one part, whose table it prepares, and puts its document where it will be kept. What can't be done with it
/// is told at its place, unless the run was cancelled.
ResultPart ResultOf(AnalysisPart& part, const AnalyzeOptions& options, const AnalysisEnvironment& environment,
                    std::string& document) {
    ResultPart result;
    result.field = part.field;
    result.category = part.category;
    result.notes = part.notes;
    try {
        PrepareTable(part.table, part.options);
        AnalysisOutcome outcome = Analyze(part.table, Briefly(part.options, options), environment);
        AddNotes(result.notes, outcome.notes);
        if (outcome.lacksMemory) throw std::bad_alloc();  // it holds for the run, not for this part
        if (!outcome.succeeded) {
            result.mistake = JoinList(outcome.remarks, "; ");
            return result;
        }
        AddNotes(result.notes, outcome.remarks);
        if (!options.output.outPath.empty()) document = outcome.document;
        result.result = ReadAnalysis(std::move(outcome.document), part.options, environment);
        SupplyFigures(*result.result, part.table, part.options, options.supplement, environment);
        AddRecordOf(*result.result, part, options, environment);
        if (options.output.explain) ExplainTests(*result.result, part.table, part.options, environment);
    } catch (const InputError& mistake) {
        result.mistake = mistake.what();
    }
    return result;
}

/// The page of all parts, where it is asked for.
std::string PageOfParts(const std::vector<ResultPart>& results, const std::vector<AnalysisPart>& parts,
                        const std::vector<std::string>& notes, const AnalyzeOptions& options) {
    if (!WantsReport(options.output)) return "";
    std::vector<ReportPart> shown;
    for (std::size_t i = 0; i < results.size(); ++i) shown.push_back({results[i], &parts[i].table});
    AnalysisEnvironment environment;
    environment.texts = &Texts();
    environment.threads = options.table.threads;
    return HtmlOfParts(shown, parts.front().options, environment, FactsOf(options, notes));
}

/// The records of each category by themselves.
ExitStatus AnalyzeParts(std::vector<AnalysisPart> parts, std::vector<std::string> notes, const AnalyzeOptions& options,
                        Interrupt& interrupt) {
    CheckOutputOfParts(options);
    std::vector<ResultPart> results;
    std::vector<std::string> documents;
    std::optional<ProgressBar> progress(!options.output.quiet);
    for (AnalysisPart& part : parts) {
        AnalysisEnvironment environment = EnvironmentOf(interrupt, *progress, options.table);
        environment.onProgress = [show = environment.onProgress, done = results.size(),
                                  all = parts.size()](double percent) {
            show((100.0 * static_cast<double>(done) + percent) / static_cast<double>(all));
        };
        results.push_back(ResultOf(part, options, environment, documents.emplace_back()));
        if (!WantsReport(options.output)) part.table = Table();  // plots alone need it from here on
        if (!results.back().result && interrupt.IsAsked()) {
            progress.reset();
            return TellMistake(results.back().mistake, ExitStatus::kRunFailed);
        }
    }
    progress.reset();
    const auto isDone = [](const ResultPart& part) { return part.result.has_value(); };
    // What holds for no part is a mistake of the request.
    if (std::ranges::none_of(results, isDone)) {
        return TellMistake(results.front().Name() + ": " + results.front().mistake, ExitStatus::kWrongUsage);
    }
    const std::string page = PageOfParts(results, parts, notes, options);
    if (!options.output.outPath.empty()) WriteDocuments(results, documents, options.output.outPath);
    if (!options.output.reportPath.empty()) WriteWholeFile(options.output.reportPath, page);
    if (IsCompared(options)) return ShowComparison(PresentParts(results, {ReportFormat::kJson, false}, notes), options);
    const ReportFormat format = options.output.format.value_or(ReportFormat::kText);
    if (format == ReportFormat::kCsv || (format == ReportFormat::kText && options.output.quiet)) {
        for (const ResultPart& part : results) {
            for (const std::string& note : part.notes) notes.push_back(part.Name() + ": " + note);
            if (!part.result) notes.push_back(part.Name() + ": not done: " + part.mistake);
        }
        TellNotes(notes);
    }
    if (format != ReportFormat::kText || !options.output.quiet) {
        const Wanted wanted{format, options.output.details};
        PrintResult(format == ReportFormat::kHtml ? page : PresentParts(results, wanted, notes));
    }
    const auto isNoneDone = [](const ResultPart& part) { return !part.result || IsNoneDone(*part.result); };
    return std::ranges::all_of(results, isNoneDone) ? NoneDone() : ExitStatus::kDone;
}

}  // namespace

std::vector<std::string> LevelsOf(const AnalyzeOptions& options) {
    std::vector<std::string> fields;
    for (const auto* list : {&options.table.nominal, &options.table.ordinal, &options.table.continuous}) {
        fields.insert(fields.end(), list->begin(), list->end());
    }
    for (const FieldOrder& order : options.analysis.orders) fields.push_back(order.field);
    return fields;
}

ExitStatus Analyze(const AnalyzeOptions& options) {
    CheckOutput(options.output);
    CheckExplanations(options.output);
    CheckOutputPaths(
        std::vector<NamedPath>{{"--out", options.output.outPath},
                               {"--save", options.savePath},
                               {"--report", options.output.reportPath},
                               {"--plot", options.output.plotPath}},
        std::vector<NamedPath>{{"the table", options.table.dataPath}, {"the descriptor", options.table.fieldsPath}});
    WordedAnalysis worded(options.words, options.analysis);
    Interrupt interrupt;
    Table table = LoadTableOf(options.table, worded.Fields(), !options.analysis.includeUserMissing, interrupt,
                              worded.NominalByDefault(), options.analysis.orders);
    const std::string study = options.savePath.empty() ? "" : StudyText(options.study, table);
    std::vector<std::string> notes = DifferencesFrom(options.studiedData, table);
    std::vector<AnalysisPart> parts = worded.PartsOf(std::move(table), LevelsOf(options), notes);
    const ExitStatus status = options.words.split.empty()
                                  ? AnalyzeWhole(std::move(parts.front()), notes, options, interrupt)
                                  : AnalyzeParts(std::move(parts), std::move(notes), options, interrupt);
    // A request that can't be met is not worth keeping.
    if (!options.savePath.empty() && status == ExitStatus::kDone) WriteWholeFile(options.savePath, study);
    return status;
}

ExitStatus ListTests() {
    for (const TestFamily family : {TestFamily::kOneSample, TestFamily::kRelated, TestFamily::kIndependent}) {
        std::cout << FamilyTitle(family) << "\n";
        TextTable table({{""}, {""}});
        for (const TestName& test : TestNames()) {
            if (test.family != family) continue;
            table.AddRow({"  " + std::string(test.name), Texts().Test(test.resultName)->question});
        }
        std::cout << table.ToText();
    }
    return ExitStatus::kDone;
}

}  // namespace tarn
