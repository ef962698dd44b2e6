#include "host/plan/PlanRun.h"

#include <memory>
#include <sstream>
#include <utility>

#include "catalogue/TARNFactory.h"
#include "host/engine/KnownKeys.h"
#include "host/plan/PlanData.h"
#include "planning/TARNReporter.h"

namespace tarn {

namespace {

/// Hands on the engine's own reports.
class ProgressRelay : public ProgressListener {
 public:
    explicit ProgressRelay(const PlanRun& run) : run_(run) {}
    void OnProgress(ProgressReport& report) override {
        if (run_.onProgress) run_.onProgress(dynamic_cast<TARNReporter&>(report).GetCurrentStepNum());
    }

 private:
    const PlanRun& run_;
};

class CancelQuery : public QKQueryCancel {
 public:
    explicit CancelQuery(const PlanRun& run) : run_(run) {}
    bool IsCancelled() override { return run_.isCancelled && run_.isCancelled(); }

 private:
    const PlanRun& run_;
};

EngineOutcome Failed(const QKStatus& status) {
    return {false, "", {{true, status.GetErrorCode(), {}}}};
}

}  // namespace

EngineOutcome RunInFactory(PlanSettings& plan, const Table& table, const PlanRun& run) {
    if (run.threads > 0) plan.settings.AddSetting(kThreads, static_cast<int>(run.threads));
    QKVarList varList = MakeVarList(table);
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(plan.settings, varList));
    if (algorithm == nullptr) return Failed(factory.GetStatus());

    CancelQuery query(run);
    ProgressRelay listener(run);
    algorithm->SetQueryCancel(&query);
    algorithm->SetProgressListener(&listener);
    TableRecords records(table);
    QKStatus status = algorithm->Run(records);
    if (status.IsError()) return Failed(status);

    std::ostringstream document;
    document.exceptions(std::ios::badbit);  // or memory that runs out would end the text and no more
    status = algorithm->WriteResults(document, {run.applicationName, run.applicationVersion, ""});
    if (status.IsError()) return Failed(status);
    return {true, std::move(document).str(), {}};
}

}  // namespace tarn
