#include "independent/KGroups.h"

#include <cstddef>
#include <string>

#include "planning/contract/SettingKeys.h"
#include "support/Int32.h"

void GroupComparisons::Read(const QKSettings& settings) {
    settings.GetSettingValByName(SettingKey::kPairWise, wanted.pairwise);
    settings.GetSettingValByName(SettingKey::kStepWise, wanted.stepwise);
}

GroupedFields PlanKGroups(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes) {
    const GroupedFields fields = PlanGroupedFields(builder, plan, codes, AfterFailedTestField::kStop);
    builder.RequestOriginFrequencies(Origins::kOne);
    std::string type = MultipleComparisonType::kNone;
    builder.Read(SettingKey::kTypeOfMultipleComparison, type);
    QKSettings& settings = builder.TestSettings();
    settings.AddSetting(SettingKey::kPairWise, type == MultipleComparisonType::kPairWise ? 1.0 : 0.0);
    settings.AddSetting(SettingKey::kStepWise, type == MultipleComparisonType::kStepWise ? 1.0 : 0.0);
    return fields;
}

void GroupSizes::Add(std::int32_t category, std::int32_t weight) {
    const auto index = static_cast<std::size_t>(category);
    if (index >= sizes.size()) sizes.resize(index + 1, 0);
    sizes[index] = Add32(sizes[index], weight);
}

std::int32_t GroupSizes::Of(std::int32_t category) const {
    const auto index = static_cast<std::size_t>(category);
    return index < sizes.size() ? sizes[index] : 0;
}

std::vector<std::int32_t> GroupSizes::WithCases(std::int32_t categoryCount) const {
    std::vector<std::int32_t> categories;
    for (std::int32_t category = 0; category < categoryCount; ++category) {
        if (Of(category) > 0) categories.push_back(category);
    }
    return categories;
}
