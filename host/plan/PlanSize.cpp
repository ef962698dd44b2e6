#include "host/plan/PlanSize.h"

#include <string>
#include <vector>

#include "host/engine/KnownKeys.h"
#include "host/engine/RunSize.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/TestFacts.h"

namespace tarn {

namespace {

void AddPlannedTest(const std::string& name, const QKSettings& entry, RunSize& size) {
    size.AddTests(1);
    std::vector<std::string> fields;
    entry.GetSettingValByName(SettingKey::kVariableName, fields);
    if (fields.size() > 1) size.AddFields(fields.size());
    if (name == Tests::kMarginalHomogeneity.Setting() && !fields.empty()) size.AddSquare(size.CategoriesOf(fields[0]));
    std::string comparison;
    if (!entry.GetSettingValByName(SettingKey::kTypeOfMultipleComparison, comparison)) return;
    std::string group;
    const bool hasGroups = entry.GetSettingValByName(SettingKey::kGroupVariableName, group);
    const std::size_t samples = hasGroups ? size.CategoriesOf(group) : fields.size();
    if (comparison == MultipleComparisonType::kPairWise) size.AddPairs(samples, 1);
    if (comparison == MultipleComparisonType::kStepWise) size.AddSteps(samples, 1);
}

}  // namespace

void CheckSizeOfPlan(const PlanSettings& plan, const Table& table, std::size_t limit) {
    RunSize size(table, IsTrue(plan.settings, kBrief));
    for (std::size_t i = 0; i < plan.settings.Size(); ++i) {
        const QKSetting& setting = plan.settings.GetSettingAt(i);
        const auto* const entry = dynamic_cast<const QKSettingListValue*>(&setting.GetValue());
        if (entry != nullptr) AddPlannedTest(setting.GetName(), entry->GetListValue(), size);
    }
    size.Check("the plan", limit);
}

}  // namespace tarn
