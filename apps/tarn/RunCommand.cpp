#include "apps/tarn/RunCommand.h"

#include <cstdio>
#include <iostream>
#include <memory>
#include <sstream>

#include "apps/tarn/Interrupt.h"
#include "apps/tarn/PlanData.h"
#include "apps/tarn/PlanSettings.h"
#include "apps/tarn/ProgressBar.h"
#include "host/ByteSource.h"
#include "host/FieldDescriptor.h"
#include "host/InputError.h"
#include "host/ResultSummary.h"
#include "host/RunStatusTexts.h"
#include "host/TableLoader.h"
#include "host/WholeFile.h"
#include "planning/TARNFactory.h"

namespace tarn {

namespace {

constexpr const char* kCaseIdSetting = "caseIDVariableName";

TableDescriptor LoadDescriptor(const std::string& path) {
    if (path.empty()) return TableDescriptor();
    ByteSource source(path);
    return ReadTableDescriptor(source);
}

Table LoadData(const RunOptions& options) {
    const TableDescriptor descriptor = LoadDescriptor(options.fieldsPath);
    LoadOptions load;
    load.excludeUserMissing = true;
    load.nominal = options.nominal;
    load.ordinal = options.ordinal;
    load.continuous = options.continuous;
    load.weightField = options.weightField;
    ByteSource source(options.dataPath);
    return LoadTable(source, descriptor, load);
}

PlanSettings LoadPlan(const RunOptions& options) {
    ByteSource source(options.planPath);
    PlanSettings plan = ReadPlan(source);
    if (options.caseIdField) {
        plan.settings.RemoveSetting(kCaseIdSetting, true);
        plan.settings.AddSetting(kCaseIdSetting, *options.caseIdField);
    }
    return plan;
}

struct RunOutcome {
    QKStatus status;
    std::string document;
};

RunOutcome RunEngine(QKSettings& settings, Table& table, Interrupt& interrupt, bool showProgress) {
    QKVarList varList = MakeVarList(table);
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(settings, varList));
    if (algorithm == nullptr) return {factory.GetStatus(), ""};

    ProgressBar progress(showProgress);
    algorithm->SetQueryCancel(&interrupt);
    algorithm->SetProgressListener(&progress);
    TableRecords records(table);
    QKStatus status = algorithm->Run(records);
    if (status.IsError()) return {status, ""};

    std::ostringstream document;
    status = algorithm->WriteResults(document, {"tarn", TARN_VERSION, ""});
    return {status, std::move(document).str()};
}

}  // namespace

ExitStatus RunPlan(const RunOptions& options) {
    Interrupt interrupt;  // from the start, so that one that comes while the table is read counts as well
    PlanSettings plan = LoadPlan(options);
    Table table = LoadData(options);
    const RunOutcome outcome = RunEngine(plan.settings, table, interrupt, !options.quiet);
    if (outcome.status.IsError()) {
        std::cerr << "tarn: " << DescribeRunFailure(outcome.status.GetErrorCode()) << "\n";
        return ExitStatus::kRunFailed;
    }

    const bool toFile = !options.outPath.empty();
    if (toFile) {
        WriteWholeFile(options.outPath, outcome.document);
    } else {
        std::cout << outcome.document << std::flush;
        if (!std::cout) throw InputError("standard output: can't be written");
    }
    const std::size_t known = CountTests(outcome.document);
    if (known < plan.requestedTests) {
        const std::size_t unknown = plan.requestedTests - known;
        std::cerr << "tarn: " << unknown << (unknown == 1 ? " requested test is" : " requested tests are")
                  << " unknown to the engine and left out\n";
    }
    // Standard output carries one result: the document, or beside a document in a file the table.
    if (!options.quiet) (toFile ? std::cout : std::cerr) << SummarizeDocument(outcome.document);
    return ExitStatus::kDone;
}

}  // namespace tarn
