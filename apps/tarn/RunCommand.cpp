#include "apps/tarn/RunCommand.h"

#include <iostream>
#include <nlohmann/json.hpp>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/PlanRun.h"
#include "apps/tarn/PlanSettings.h"
#include "apps/tarn/ProgressBar.h"
#include "apps/tarn/RequestRun.h"
#include "host/ByteSource.h"
#include "host/FieldDescriptor.h"
#include "host/InputError.h"
#include "host/JsonDocument.h"
#include "host/ResultSummary.h"
#include "host/SettingsDocument.h"
#include "host/TableLoader.h"
#include "host/WholeFile.h"

namespace tarn {

namespace {

// The keys by which the two kinds of request name the case-ID field.
constexpr const char* kPlanCaseId = "caseIDVariableName";
constexpr const char* kRequestCaseId = "caseIDField";
constexpr const char* kUserMissing = "userMissing";
constexpr const char* kExclude = "exclude";

TableDescriptor LoadDescriptor(const std::string& path) {
    if (path.empty()) return TableDescriptor();
    ByteSource source(path);
    return ReadTableDescriptor(source);
}

Table LoadData(const RunOptions& options, bool excludeUserMissing) {
    const TableDescriptor descriptor = LoadDescriptor(options.fieldsPath);
    LoadOptions load;
    load.excludeUserMissing = excludeUserMissing;
    load.nominal = options.nominal;
    load.ordinal = options.ordinal;
    load.continuous = options.continuous;
    load.weightField = options.weightField;
    ByteSource source(options.dataPath);
    return LoadTable(source, descriptor, load);
}

RunOutcome RunPlanFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.planPath);
    PlanSettings plan = ReadPlan(source);
    if (options.caseIdField) {
        plan.settings.RemoveSetting(kPlanCaseId, true);
        plan.settings.AddSetting(kPlanCaseId, *options.caseIdField);
    }
    Table table = LoadData(options, true);
    ProgressBar progress(!options.quiet);
    return RunPlan(plan, table, interrupt, progress);
}

RunOutcome RunSettingsFile(const RunOptions& options, Interrupt& interrupt) {
    ByteSource source(options.settingsPath);
    nlohmann::ordered_json request = ReadJson(source);
    if (!request.is_object()) throw InputError(source.Name() + ": expected a JSON object with the keys of a request");
    if (options.caseIdField) request[kRequestCaseId] = *options.caseIdField;
    const std::string document = MakeSettingsDocument(request, source.Name());
    const auto userMissing = request.find(kUserMissing);
    const Table table = LoadData(options, userMissing != request.end() && *userMissing == kExclude);
    ProgressBar progress(!options.quiet);
    return RunRequest(document, table, interrupt, progress);
}

void StoreDocument(const std::string& document, const std::string& outPath) {
    if (!outPath.empty()) {
        WriteWholeFile(outPath, document);
        return;
    }
    std::cout << document << std::flush;
    if (!std::cout) throw InputError("standard output: can't be written");
}

}  // namespace

ExitStatus Run(const RunOptions& options) {
    Interrupt interrupt;  // from the start, so that one that comes while the table is read counts as well
    const RunOutcome outcome =
        options.planPath.empty() ? RunSettingsFile(options, interrupt) : RunPlanFile(options, interrupt);
    if (outcome.succeeded) StoreDocument(outcome.document, options.outPath);
    for (const std::string& remark : outcome.remarks) std::cerr << "tarn: " << remark << "\n";
    if (!outcome.succeeded) return ExitStatus::kRunFailed;
    // Standard output carries one result: the document, or beside a document in a file the table.
    if (!options.quiet) (options.outPath.empty() ? std::cerr : std::cout) << SummarizeDocument(outcome.document);
    return ExitStatus::kDone;
}

}  // namespace tarn
