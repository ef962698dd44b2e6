#include "independent/TwoGroups.h"

#include <algorithm>
#include <map>
#include <string>
#include <unordered_set>
#include <utility>

#include "contract/TARNVariableInfo.h"
#include "platform/common/Truncation.h"
#include "support/QKUnivariateVariable.h"
#include "support/QKVecValue.h"
#include "support/TextMakers.h"
#include "vocabulary/ResultKeys.h"
#include "vocabulary/SettingKeys.h"

namespace {

constexpr const char* kGroupVariableValue1 = "groupVariableValue1";
constexpr const char* kGroupVariableValue2 = "groupVariableValue2";

constexpr double kUnknownCategory = -1.0;

// ---- Plan ----

bool IsContinuous(int kind) {
    return kind == FieldKind::kContinuous;
}

/// One of the two fields, and what its failures are called.
struct FieldRole {
    const char* nameKey;
    const char* indexKey;
    long nameMissing;
    long wrongKind;
    bool (*fits)(int kind);
    bool tellsWrongKind;
};

/// The field under a key of the entry, -1 if it is not found.
int ResolveField(TARNPlanBuilder& builder, const QKVarList& varList, const FieldRole& role,
                 const GroupedFieldsCodes& codes) {
    std::string name;
    if (!builder.Read(role.nameKey, name)) {
        builder.Fail(role.nameMissing);
        return -1;
    }
    const int field = varList.FindVariable(name);
    if (field < 0) {
        builder.Fail(codes.unknownField, name);
        return -1;
    }
    builder.TestSettings().AddSetting(role.indexKey, field);
    if (!role.fits(varList.GetVarAt(field)->GetKind())) {
        role.tellsWrongKind ? builder.Fail(role.wrongKind, IntToString(field)) : builder.Fail(role.wrongKind);
    }
    return field;
}

int FindGroupSilently(TARNPlanBuilder& builder, const QKVarList& varList) {
    std::string name;
    const int field = builder.Read(SettingKey::kGroupVariableName, name) ? varList.FindVariable(name) : -1;
    if (field >= 0) builder.TestSettings().AddSetting(SettingKey::kGroupVariableIndex, field);
    return field;
}

/// Whether category 0 belongs behind category 1: the smaller one comes first, unless the order of the categories has
/// a meaning. Texts are compared as lists show them, with a backslash before ";" and "\".
bool AreSwapped(const QKVarList& varList, int groupField) {
    const TARNVariableInfo info(varList);
    if (info.IsOrdinal(groupField)) return false;
    const IQKVariable& variable = *varList.GetVarAt(groupField);
    if (variable.GetKind() == FieldKind::kNumericCategories) {
        return variable.GetCategoryValue(0) > variable.GetCategoryValue(1);
    }
    return info.GetCategoryDisplayText(groupField, 0) > info.GetCategoryDisplayText(groupField, 1);
}

/// Writes both lists as category indices; false if either is empty.
template <typename Value>
bool WriteLists(TARNPlanBuilder& builder, const QKVarList& varList, int groupField) {
    std::vector<Value> first;
    std::vector<Value> second;
    builder.Read(SettingKey::kGroup1List, first);
    builder.Read(SettingKey::kGroup2List, second);
    const TARNVariableInfo info(varList);
    AddVecSetting(builder.TestSettings(), SettingKey::kGroup1List, info.MapCategories(groupField, first), false);
    AddVecSetting(builder.TestSettings(), SettingKey::kGroup2List, info.MapCategories(groupField, second), false);
    return !first.empty() && !second.empty();
}

}  // namespace

GroupedFields PlanGroupedFields(TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFieldsCodes& codes,
                                AfterFailedTestField after) {
    const QKVarList& varList = plan.GetVarList();
    const FieldRole test{SettingKey::kVariableName,
                         SettingKey::kVariableIndex,
                         codes.testNameMissing,
                         codes.testNotContinuous,
                         IsContinuous,
                         codes.tellsTestField};
    const FieldRole group{SettingKey::kGroupVariableName, SettingKey::kGroupVariableIndex, codes.groupNameMissing,
                          codes.groupNotCategorical,      FieldKind::IsCategorical,        codes.tellsGroupField};
    GroupedFields fields;
    fields.test = ResolveField(builder, varList, test, codes);
    if (after == AfterFailedTestField::kResolveGroup) builder.EndMessage();
    if (builder.IsOK() || after == AfterFailedTestField::kResolveGroup) {
        fields.group = ResolveField(builder, varList, group, codes);
    } else if (after == AfterFailedTestField::kStillFindGroup) {
        fields.group = FindGroupSilently(builder, varList);
    }
    return fields;
}

void RequestGroupedFields(const TARNPlanBuilder& builder, TARNPlan& plan, const GroupedFields& fields) {
    if (!builder.IsOK()) return;
    plan.Request(fields.group, Statistic::kFrequencies);
    plan.RequestSorted(fields.test);
    if (plan.IsBrief()) return;  // the range of the field is for its readers alone
    plan.Request(fields.test, Statistic::kMin);
    plan.Request(fields.test, Statistic::kMax);
}

void PlanTwoGroups(TARNPlanBuilder& builder, const TARNPlan& plan, int groupField, long listEmpty) {
    if (!builder.IsOK()) return;
    const QKVarList& varList = plan.GetVarList();
    bool areListed = false;
    builder.Read(SettingKey::kUserSpecifyGroupList, areListed);
    builder.TestSettings().AddSetting(SettingKey::kUserSpecifyGroupList, areListed);
    if (!areListed) {
        const bool swapped = AreSwapped(varList, groupField);
        builder.TestSettings().AddSetting(kGroupVariableValue1, swapped ? 1.0 : 0.0);
        builder.TestSettings().AddSetting(kGroupVariableValue2, swapped ? 0.0 : 1.0);
        return;
    }
    const bool areNumbers = varList.GetVarAt(groupField)->GetKind() == FieldKind::kNumericCategories;
    const bool areFull = areNumbers ? WriteLists<double>(builder, varList, groupField)
                                    : WriteLists<std::string>(builder, varList, groupField);
    if (!areFull) builder.Fail(listEmpty);
}

// ---- Test ----

std::string GroupTableName(std::size_t group) {
    return TableName::kGroup + SizeToString(group);
}

void TwoGroups::Read(const QKSettings& settings) {
    settings.GetSettingValByName(SettingKey::kUserSpecifyGroupList, userSpecifyGroupList);
    if (userSpecifyGroupList) {
        settings.GetSettingValByName(SettingKey::kGroup1List, groupLists[kFirst]);
        settings.GetSettingValByName(SettingKey::kGroup2List, groupLists[kSecond]);
        return;
    }
    double first = kUnknownCategory;
    double second = kUnknownCategory;
    settings.GetSettingValByName(kGroupVariableValue1, first);
    settings.GetSettingValByName(kGroupVariableValue2, second);
    groupLists = {std::vector<double>{first}, std::vector<double>{second}};
}

QKStatus TwoGroups::Validate(const UnivariateResults* results, int groupField, const TwoGroupsCodes& codes) const {
    if (results == nullptr) return QKStatus(codes.noUnivariateResults);
    std::map<int, std::int32_t> frequencies;
    results->GetFrequencies(groupField, frequencies);
    if (!userSpecifyGroupList) {
        return frequencies.size() == groupLists.size() ? QKStatus() : QKStatus(codes.notTwoCategories);
    }
    if (groupLists[kFirst].empty() || groupLists[kSecond].empty()) return QKStatus(codes.groupEmpty);
    const auto isOccupied = [&](double category) {
        const auto found = frequencies.find(TruncateToInt32(category));
        return found != frequencies.end() && found->second >= 1;
    };
    // Categories that the field doesn't know are all of index -1, so one in each list is a category in both.
    const std::unordered_set<double> first(groupLists[kFirst].begin(), groupLists[kFirst].end());
    for (const double category : groupLists[kSecond]) {
        if (first.count(category) > 0) return QKStatus(codes.inBothLists);
    }
    for (const std::vector<double>& list : groupLists) {
        if (std::none_of(list.begin(), list.end(), isOccupied)) return QKStatus(codes.groupEmpty);
    }
    return QKStatus();
}

QKStatus TwoGroups::TakeCategoriesOfData(const UnivariateResults* results, int groupField, long noFrequencies,
                                         long notTwoCategories) {
    std::map<int, std::int32_t> frequencies;
    if (results == nullptr || !results->GetFrequencies(groupField, frequencies)) return QKStatus(noFrequencies);
    if (frequencies.size() != groupLists.size()) return QKStatus(notTwoCategories);
    groupLists = {std::vector<double>{static_cast<double>(frequencies.begin()->first)},
                  std::vector<double>{static_cast<double>(frequencies.rbegin()->first)}};
    return QKStatus();
}

void TwoGroups::Prepare(GroupSplit& split) const {
    std::vector<std::int32_t> groupOf;
    for (const std::size_t group : {kSecond, kFirst}) {
        for (const double category : groupLists[group]) {
            const std::int32_t index = TruncateToInt32(category);
            if (index != category || index < 0) continue;
            const auto place = static_cast<std::size_t>(index);
            if (place >= groupOf.size()) groupOf.resize(place + 1, GroupSplit::kNoGroup);
            groupOf[place] = static_cast<std::int32_t>(group);
        }
    }
    split.SetGroups(std::move(groupOf), groupLists.size());
}
