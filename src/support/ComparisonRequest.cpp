#include "support/ComparisonRequest.h"

std::vector<TestMessage> ComparisonRequest::Refuse(const RefusalCodes& codes) {
    std::vector<TestMessage> warnings;
    if (pairwise) warnings.push_back({QKStatus(codes.pairwise), MessageKind::kWarning, {}, {}});
    if (stepwise) warnings.push_back({QKStatus(codes.stepwise), MessageKind::kWarning, {}, {}});
    pairwise = false;
    stepwise = false;
    return warnings;
}
