#include "component/TARNProgressListener.h"

#include "planning/TARNReporter.h"
#include "platform/peer/QKPeer.h"

namespace {

constexpr double kWholeScale = 100.0;
constexpr int kUnknownTime = -1;

}  // namespace

void TARNProgressListener::OnProgress(ProgressReport& report) {
    const auto& reporter = dynamic_cast<TARNReporter&>(report);
    int ignored = 0;  // a report can't fail the run
    builder->Report_Progress(reporter.GetCurrentStepNum(), kWholeScale, &ignored, kUnknownTime);
}
