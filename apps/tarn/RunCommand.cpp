#include "apps/tarn/RunCommand.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/PlanRun.h"
#include "apps/tarn/PlanSettings.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RequestRun.h"
#include "host/ByteSource.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/WholeFile.h"
#include "host/engine/InputNotes.h"
#include "host/engine/SettingsDocument.h"

namespace tarn {

namespace {

// The keys by which the two kinds of request name the case-ID field.
constexpr const char* kPlanCaseId = "caseIDVariableName";
constexpr const char* kRequestCaseId = "caseIDField";
constexpr const char* kUserMissing = "userMissing";
constexpr const char* kExclude = "exclude";

void TellWeights(const Table& table, WeightRule rule) {
    if (const std::string note = WeightNote(table, rule); !note.empty()) TellNotes({note});
}

RunOutcome RunPlanFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.planPath);
    PlanSettings plan = ReadPlan(source);
    if (options.caseIdField) {
        plan.settings.RemoveSetting(kPlanCaseId, true);
        plan.settings.AddSetting(kPlanCaseId, *options.caseIdField);
    }
    Table table = LoadTableOf(options.table, true);
    TellWeights(table, WeightRule::kCut);
    ProgressBar progress(!options.output.quiet);
    return RunPlan(plan, table, interrupt, progress);
}

RunOutcome RunSettingsFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.settingsPath);
    nlohmann::ordered_json request = ReadJson(source);
    if (!request.is_object()) throw InputError(source.Name() + ": expected a JSON object with the keys of a request");
    if (options.caseIdField) request[kRequestCaseId] = *options.caseIdField;
    const std::string document = MakeSettingsDocument(request, source.Name());
    const auto userMissing = request.find(kUserMissing);
    const Table table = LoadTableOf(options.table, userMissing != request.end() && *userMissing == kExclude);
    TellWeights(table, WeightRule::kRounded);
    ProgressBar progress(!options.output.quiet);
    return RunRequest(document, table, interrupt, progress);
}

}  // namespace

ExitStatus Run(const RunOptions& options) {
    Interrupt interrupt;  // from the start, so that one that comes while the table is read counts as well
    const RunOutcome outcome =
        options.planPath.empty() ? RunSettingsFile(options, interrupt) : RunPlanFile(options, interrupt);
    const OutputOptions& output = options.output;
    const bool isStored = !output.outPath.empty();
    if (outcome.succeeded && isStored) WriteWholeFile(output.outPath, outcome.document);
    if (outcome.succeeded && (output.format || !isStored)) {
        const ReportFormat format = output.format.value_or(ReportFormat::kXml);
        PrintResult(format == ReportFormat::kXml ? outcome.document : Present(outcome.document, format));
    }
    const ExitStatus status = TellRemarks(outcome);
    // Standard output carries one result: the document or what was asked for, or beside a document in a file the table.
    if (outcome.succeeded && !output.quiet && output.format != ReportFormat::kText) {
        (isStored && !output.format ? std::cout : std::cerr) << PresentShortly(outcome.document);
    }
    return status;
}

}  // namespace tarn
