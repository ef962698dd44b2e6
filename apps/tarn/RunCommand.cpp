#include "apps/tarn/RunCommand.h"

#include <iostream>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "apps/tarn/CommandEnvironment.h"
#include "apps/tarn/Interrupt.h"
#include "apps/tarn/OutputPaths.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/ReportFiles.h"
#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/Json.h"
#include "host/JsonDocument.h"
#include "host/WholeFile.h"
#include "host/analysis/Analysis.h"
#include "host/analysis/Record.h"
#include "host/engine/KnownKeys.h"
#include "host/engine/PassedOver.h"
#include "host/engine/SettingsDocument.h"
#include "host/plan/PlanSettings.h"

namespace tarn {

namespace {

constexpr const char* kUserMissing = "userMissing";
constexpr const char* kExclude = "exclude";

/// Says what the engine will pass over, a line each; false if there is such a thing and it is a mistake.
bool TellPassedOver(const std::vector<std::string>& lines, bool strict) {
    for (const std::string& line : lines) TellMistake(line, ExitStatus::kWrongUsage);
    return !strict || lines.empty();
}

/// A run with what it takes to say how it was made.
struct FinishedRun {
    AnalysisOutcome outcome;
    Table table;
    WeightRule weights;  ///< rounded on the way of a request, cut on that of a plan
    Json request;
};

/// The request of a record: what was typed, and what the file holds.
Json RecordedRequest(const RunOptions& options, const char* key, const Json& file) {
    Json request = RequestOf(options.study);
    request[key] = file;
    return request;
}

// Each gives nothing if nothing was run.

std::optional<FinishedRun> RunPlanFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.planPath);
    PlanSettings plan = ReadPlan(source);
    if (!TellPassedOver(plan.passedOver, options.strict)) return std::nullopt;
    if (options.caseIdField) {
        plan.settings.RemoveSetting(kPlanCaseId, true);
        plan.settings.AddSetting(kPlanCaseId, *options.caseIdField);
        plan.fields.Add(*options.caseIdField);
    }
    for (const auto& [isWanted, key] : {std::pair(options.brief, kBrief), {options.extended, kExtendedArithmetic}}) {
        if (!isWanted) continue;
        plan.settings.RemoveSetting(key, true);
        plan.settings.AddSetting(key, true);
    }
    FinishedRun run{{}, LoadTableOf(options.table, plan.fields, true, interrupt), WeightRule::kCut, {}};
    ProgressBar progress(!options.output.quiet);
    run.outcome = RunPlan(plan, run.table, EnvironmentOf(interrupt, progress, options.table));
    run.request = RecordedRequest(options, "plan", plan.document);
    return run;
}

std::optional<FinishedRun> RunSettingsFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.settingsPath);
    Json request = ReadJson(source);
    if (!request.is_object()) throw InputError(source.Name() + ": expected a JSON object with the keys of a request");
    const std::vector<std::string> passedOver = PassedOverInRequest(request, source.Name());
    if (options.caseIdField) request[kRequestCaseId] = *options.caseIdField;
    if (options.brief) PutInFront(request, kBrief, true);
    if (options.extended) PutInFront(request, kExtendedArithmetic, true);
    static_cast<void>(
        MakeSettingsDocument(request, source.Name()));  // a shape that no setting has, before the table is read
    if (!TellPassedOver(passedOver, options.strict)) return std::nullopt;
    const auto userMissing = request.find(kUserMissing);
    const bool excludeUserMissing = userMissing != request.end() && *userMissing == kExclude;
    FinishedRun run{{},
                    LoadTableOf(options.table, NamedFields(request), excludeUserMissing, interrupt),
                    WeightRule::kRounded,
                    RecordedRequest(options, "settings", request)};
    ProgressBar progress(!options.output.quiet);
    run.outcome = RunRequest(request, source.Name(), run.table, EnvironmentOf(interrupt, progress, options.table));
    return run;
}

/// Adds how it was made to the result of a run.
void AddRecordOf(ResultReading& result, const FinishedRun& run, const RunOptions& options) {
    const CaseRule rule = ListwiseRuleOf(result, run.table, run.weights);
    const RecordSelection selection{run.table.RowCount(), {}, {}, {}};
    AddRecord(result,
              {run.table, rule, run.weights, selection, run.request, WordsOf(options.study), options.table.dataPath},
              WorkShare(options.table.threads));
}

}  // namespace

ExitStatus Run(const RunOptions& options) {
    CheckOutput(options.output);
    const TableOptions& inputs = options.table;
    CheckOutputPaths(std::vector<NamedPath>{{"--out", options.output.outPath}},
                     std::vector<NamedPath>{{"the table", inputs.dataPath},
                                            {"the descriptor", inputs.fieldsPath},
                                            {"the plan", options.planPath},
                                            {"the request", options.settingsPath}});
    Interrupt interrupt;  // from the start, so that one that comes while the table is read counts as well
    std::optional<FinishedRun> ran =
        options.planPath.empty() ? RunSettingsFile(options, interrupt) : RunPlanFile(options, interrupt);
    if (!ran) return ExitStatus::kWrongUsage;
    AnalysisOutcome& outcome = ran->outcome;
    TellNotes(outcome.notes);
    const OutputOptions& output = options.output;
    const bool isStored = !output.outPath.empty();
    const ReportFormat format = output.format.value_or(ReportFormat::kXml);
    const bool isShown = outcome.succeeded && (output.format || !isStored);
    const bool isDocumentShown = isShown && format == ReportFormat::kXml;
    // Standard output carries one result: the document or what was asked for, or beside a document in a file the table.
    const bool isTableShown = outcome.succeeded && !output.quiet && format != ReportFormat::kText;
    std::string report;
    std::string table;
    if ((isShown && !isDocumentShown) || isTableShown) {
        ResultReading result = ReadDocument(outcome.document, outcome.arithmetic);
        if (isShown && ShowsRecord(output, format)) AddRecordOf(result, *ran, options);
        if (isShown && !isDocumentShown) report = Present(result, {format, output.details}, {});
        if (isTableShown) table = PresentShortly(result);
    }
    // Whatever else can fail has been done by now, but for the printing.
    if (outcome.succeeded && isStored) WriteWholeFile(output.outPath, outcome.document);
    if (isShown) PrintResult(isDocumentShown ? outcome.document : report);
    const ExitStatus status = TellRemarks(outcome);
    if (isTableShown) (isStored && !output.format ? std::cout : std::cerr) << table;
    return status;
}

}  // namespace tarn
