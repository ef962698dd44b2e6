#include "apps/tarn/RunCommand.h"

#include <iostream>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

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
#include "host/engine/KnownKeys.h"
#include "host/engine/PassedOver.h"
#include "host/engine/SettingsDocument.h"

namespace tarn {

namespace {

constexpr const char* kUserMissing = "userMissing";
constexpr const char* kExclude = "exclude";

void TellWeights(const Table& table, WeightRule rule) {
    if (const std::string note = WeightNote(table, rule); !note.empty()) TellNotes({note});
}

/// Tells what the engine will pass over, each in a line; false if there is such a thing and it is a mistake.
bool TellPassedOver(const std::vector<std::string>& lines, bool strict) {
    for (const std::string& line : lines) TellMistake(line, ExitStatus::kWrongUsage);
    return !strict || lines.empty();
}

// Each gives nothing if nothing was run.

std::optional<RunOutcome> RunPlanFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.planPath);
    PlanSettings plan = ReadPlan(source);
    if (!TellPassedOver(plan.passedOver, options.strict)) return std::nullopt;
    if (options.caseIdField) {
        plan.settings.RemoveSetting(kPlanCaseId, true);
        plan.settings.AddSetting(kPlanCaseId, *options.caseIdField);
    }
    Table table = LoadTableOf(options.table, true);
    TellWeights(table, WeightRule::kCut);
    ProgressBar progress(!options.output.quiet);
    return RunPlan(plan, table, interrupt, progress);
}

std::optional<RunOutcome> RunSettingsFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.settingsPath);
    nlohmann::ordered_json request = ReadJson(source);
    if (!request.is_object()) throw InputError(source.Name() + ": expected a JSON object with the keys of a request");
    const std::vector<std::string> passedOver = PassedOverInRequest(request, source.Name());
    if (options.caseIdField) request[kRequestCaseId] = *options.caseIdField;
    const std::string document = MakeSettingsDocument(request, source.Name());
    if (!TellPassedOver(passedOver, options.strict)) return std::nullopt;
    const auto userMissing = request.find(kUserMissing);
    const Table table = LoadTableOf(options.table, userMissing != request.end() && *userMissing == kExclude);
    TellWeights(table, WeightRule::kRounded);
    ProgressBar progress(!options.output.quiet);
    return RunRequest(document, table, interrupt, progress);
}

}  // namespace

ExitStatus Run(const RunOptions& options) {
    Interrupt interrupt;  // from the start, so that one that comes while the table is read counts as well
    const std::optional<RunOutcome> ran =
        options.planPath.empty() ? RunSettingsFile(options, interrupt) : RunPlanFile(options, interrupt);
    if (!ran) return ExitStatus::kWrongUsage;
    const RunOutcome& outcome = *ran;
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
