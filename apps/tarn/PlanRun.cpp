#include "apps/tarn/PlanRun.h"

#include <memory>
#include <sstream>
#include <string_view>
#include <utility>

#include "apps/tarn/PlanData.h"
#include "apps/tarn/Presentation.h"
#include "planning/TARNFactory.h"
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

/// A test that the engine does not know is passed over without a word there; its user should hear of it.
void RemarkUnknownTests(std::size_t requested, RunOutcome& outcome) {
    // Each test has one element. The document may be large, so it is not read for that.
    constexpr std::string_view kElement = "<Algorithm ";
    std::size_t known = 0;
    for (std::size_t at = 0; (at = outcome.document.find(kElement, at)) != std::string::npos; ++at) ++known;
    if (known >= requested) return;
    const std::size_t unknown = requested - known;
    outcome.remarks.push_back(std::to_string(unknown) + (unknown == 1 ? " requested test is" : " requested tests are") +
                              " unknown to the engine and left out");
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
    status = algorithm->WriteResults(document, {"tarn", TARN_VERSION, ""});
    if (status.IsError()) return Failed(status);
    RunOutcome outcome{true, std::move(document).str(), {}};
    RemarkUnknownTests(plan.requestedTests, outcome);
    return outcome;
}

}  // namespace tarn
