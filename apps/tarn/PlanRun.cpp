#include "apps/tarn/PlanRun.h"

#include <memory>
#include <sstream>
#include <utility>

#include "apps/tarn/PlanData.h"
#include "apps/tarn/Presentation.h"
#include "catalogue/TARNFactory.h"
#include "planning/TARNReporter.h"

namespace tarn {

namespace {

/// Shows the engine's own reports.
class BarListener : public ProgressListener {
 public:
    explicit BarListener(ProgressBar& bar) : bar_(bar) {}
    void OnProgress(ProgressReport& report) override {
        bar_.Show(dynamic_cast<TARNReporter&>(report).GetCurrentStepNum());
    }

 private:
    ProgressBar& bar_;
};

class InterruptQuery : public QKQueryCancel {
 public:
    explicit InterruptQuery(Interrupt& interrupt) : interrupt_(interrupt) {}
    bool IsCancelled() override { return interrupt_.IsAsked(); }

 private:
    Interrupt& interrupt_;
};

RunOutcome Failed(const QKStatus& status) {
    return {false, "", {DescribeMessage(true, status.GetErrorCode(), {})}};
}

}  // namespace

RunOutcome RunPlan(PlanSettings& plan, Table& table, Interrupt& interrupt, ProgressBar& progress) {
    QKVarList varList = MakeVarList(table);
    TARNFactory factory;
    const std::unique_ptr<IQKAlgorithm> algorithm(factory.CreateQKAlgorithm(plan.settings, varList));
    if (algorithm == nullptr) return Failed(factory.GetStatus());

    InterruptQuery query(interrupt);
    BarListener listener(progress);
    algorithm->SetQueryCancel(&query);
    algorithm->SetProgressListener(&listener);
    TableRecords records(table);
    QKStatus status = algorithm->Run(records);
    if (status.IsError()) return Failed(status);

    std::ostringstream document;
    document.exceptions(std::ios::badbit);  // or memory that runs out would end the text and no more
    status = algorithm->WriteResults(document, {"tarn", TARN_VERSION, ""});
    if (status.IsError()) return Failed(status);
    return {true, std::move(document).str(), {}};
}

}  // namespace tarn
