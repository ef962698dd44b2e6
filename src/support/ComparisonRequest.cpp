#include "support/ComparisonRequest.h"

#include <string>

#include "vocabulary/SettingKeys.h"

namespace {

constexpr double kOn = 1;

bool IsOn(const QKSettings& settings, const char* key) {
    double value = 0;
    return settings.GetSettingValByName(key, value) && value == kOn;
}

}  // namespace

std::optional<ComparisonRequest> ComparisonRequest::OfEntry(const QKSettings& entry) {
    std::string type;
    if (!entry.GetSettingValByName(SettingKey::kTypeOfMultipleComparison, type)) return std::nullopt;
    return ComparisonRequest{type == MultipleComparisonType::kPairWise, type == MultipleComparisonType::kStepWise};
}

ComparisonRequest ComparisonRequest::OfTest(const QKSettings& testSettings, Wanted wanted) {
    if (wanted == Wanted::kByType) return OfEntry(testSettings).value_or(ComparisonRequest());
    return {IsOn(testSettings, SettingKey::kPairWise), IsOn(testSettings, SettingKey::kStepWise)};
}

void ComparisonRequest::AddTo(QKSettings& testSettings, Wanted wanted) const {
    if (wanted == Wanted::kByType) {
        testSettings.AddSetting(SettingKey::kTypeOfMultipleComparison, pairwise   ? MultipleComparisonType::kPairWise
                                                                       : stepwise ? MultipleComparisonType::kStepWise
                                                                                  : MultipleComparisonType::kNone);
        return;
    }
    testSettings.AddSetting(SettingKey::kPairWise, pairwise ? kOn : 0);
    testSettings.AddSetting(SettingKey::kStepWise, stepwise ? kOn : 0);
}

std::vector<TestMessage> ComparisonRequest::Refuse(const RefusalCodes& codes) {
    std::vector<TestMessage> warnings;
    if (pairwise) warnings.push_back({QKStatus(codes.pairwise), MessageKind::kWarning, {}, {}});
    if (stepwise) warnings.push_back({QKStatus(codes.stepwise), MessageKind::kWarning, {}, {}});
    pairwise = false;
    stepwise = false;
    return warnings;
}
