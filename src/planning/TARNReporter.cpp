#include "planning/TARNReporter.h"

#include "platform/common/QKMV.h"

TARNReporter::~TARNReporter() = default;
int TARNReporter::DiscreteMeasure(const std::string&) {
    return 1;
}
double TARNReporter::ScaleMeasure(const std::string&) {
    return QKMV::Missing();
}
void TARNReporter::SetCurrentStepNum(int step) {
    currentStepNum = step;
}
int TARNReporter::GetCurrentStepNum() const {
    return currentStepNum;
}
