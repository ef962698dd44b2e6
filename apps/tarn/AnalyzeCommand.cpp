#include "apps/tarn/AnalyzeCommand.h"

#include <iostream>
#include <optional>
#include <string>

#include "apps/tarn/Command.h"
#include "apps/tarn/CommandEnvironment.h"
#include "apps/tarn/Interrupt.h"
#include "apps/tarn/Presentation.h"
#include "apps/tarn/ProgressBar.h"
#include "host/TestNames.h"
#include "host/TextTable.h"
#include "host/WholeFile.h"
#include "host/analysis/Analysis.h"

namespace tarn {

namespace {

NamedFields FieldsOf(const AnalysisOptions& analysis) {
    NamedFields fields;
    for (const auto* list : {&analysis.oneSample, &analysis.related, &analysis.independent}) {
        for (const std::string& field : *list) fields.Add(field);
    }
    fields.Add(analysis.group);
    fields.Add(analysis.caseId);
    return fields;
}

Table LoadTableFor(const AnalyzeOptions& options, const Interrupt& interrupt) {
    const AnalysisOptions& analysis = options.analysis;
    const auto group = analysis.group.empty() ? std::nullopt : std::optional(analysis.group);
    Table table =
        LoadTableOf(options.table, FieldsOf(analysis), !analysis.includeUserMissing, interrupt, group, analysis.orders);
    PrepareTable(table, analysis);
    return table;
}

/// CSV has the statistics alone, so nothing else is made where the document isn't kept.
AnalysisOptions AnalysisOf(const AnalyzeOptions& options) {
    AnalysisOptions analysis = options.analysis;
    const OutputOptions& output = options.output;
    analysis.brief = analysis.brief || (output.format == ReportFormat::kCsv && output.outPath.empty());
    return analysis;
}

}  // namespace

ExitStatus Analyze(const AnalyzeOptions& options) {
    Interrupt interrupt;
    const Table table = LoadTableFor(options, interrupt);
    std::optional<ProgressBar> progress(!options.output.quiet);
    const AnalysisEnvironment environment = EnvironmentOf(interrupt, *progress, options.table.threads);
    AnalysisOutcome outcome = Analyze(table, AnalysisOf(options), environment);
    progress.reset();  // nothing of it is left on the line when results are shown
    const ExitStatus status = TellRemarks(outcome);
    if (!outcome.succeeded) return status;

    const OutputOptions& output = options.output;
    const ReportFormat format = output.format.value_or(ReportFormat::kText);
    const bool isDocumentShown = format == ReportFormat::kXml;
    const bool isKept = isDocumentShown || !output.outPath.empty();
    const std::string document = isKept ? outcome.document : std::string();
    ResultReading result = ReadAnalysis(std::move(outcome.document), options.analysis, environment);
    const bool isShown = format != ReportFormat::kText || !output.quiet;
    if (isShown && !isDocumentShown) SupplyFigures(result, table, options.analysis, options.supplement, environment);
    if (interrupt.IsAsked()) return TellMistake(kCancelledRun, ExitStatus::kRunFailed);
    if (!output.outPath.empty()) WriteWholeFile(output.outPath, document);
    // Text and JSON have a place for notes.
    if (!isShown || format == ReportFormat::kCsv || format == ReportFormat::kXml) TellNotes(outcome.notes);
    if (isShown) PrintResult(isDocumentShown ? document : Present(result, format, outcome.notes));
    if (!IsNoneDone(result)) return status;
    return TellMistake("no test could be done; each says why", ExitStatus::kRunFailed);
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
