// Kolmogorov-Smirnov test of two independent groups.
//
// Question    Do two groups come from the same distribution?
// Data        Records that miss neither field, in ascending order of the test field. n1 and n2 are the weighted sizes.
// Statistic   z = sqrt(n1 n2 / (n1 + n2)) D, D the largest absolute difference of the two empirical distribution
//             functions; asymptotic significance by Kolmogorov's distribution. A difference is that of the larger
//             group less the other one.
// Source      Smirnov (1939), Bulletin Mathematique de l'Universite de Moscou 2, 3-26; Smirnov (1948), Annals of
//             Mathematical Statistics 19, 279-281.
// Degenerate  An empty group: an error. Equal distributions: z = 0, significance 1.

#include "independent/TARNKSmirnowTwoSample.h"

#include <algorithm>
#include <cmath>
#include <string>
#include <utility>

#include "independent/TwoGroups.h"
#include "planning/StatusCodes.h"
#include "planning/contract/SettingKeys.h"
#include "planning/contract/TARNPlanBuilder.h"
#include "platform/common/Truncation.h"
#include "support/CaseWeight.h"

namespace {

constexpr const char* kTestName = "IKolmogorovSmirnov";
constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_KolmogorovSmirnov_2";

constexpr long kSettingsMissing = 222001;
constexpr long kFieldUnknown = 222003;
constexpr long kNoSignificance = 222005;
constexpr long kNotTwoCategories = 222009;
constexpr long kGroupEmpty = 222010;
constexpr long kFirstRecordInNoGroup = 222011;
constexpr long kTestNotContinuous = 222012;
constexpr long kGroupNotCategorical = 222013;

constexpr int kTwoCategories = 2;

}  // namespace

// ---- Plan ----

namespace {

/// The field under a key of the entry, -1 if it is not found.
int FieldUnder(TARNPlanBuilder& builder, const QKVarList& varList, const char* nameKey, const char* indexKey) {
    std::string name;
    if (!builder.Read(nameKey, name)) {
        builder.FailToo(kFieldUnknown);
        return -1;
    }
    const int field = varList.FindVariable(name);
    if (field >= 0) {
        builder.TestSettings().AddSetting(indexKey, field);
    } else {
        builder.FailToo(kFieldUnknown, {name});
    }
    return field;
}

}  // namespace

/// The failures of both fields are told, not one of them.
void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const QKVarList& varList = plan.GetVarList();
    GroupedFields fields;
    fields.test = FieldUnder(builder, varList, SettingKey::kVariableName, SettingKey::kVariableIndex);
    if (fields.test >= 0 && varList.GetVarAt(fields.test)->GetKind() != FieldKind::kContinuous) {
        builder.FailToo(kTestNotContinuous);
    }
    fields.group = FieldUnder(builder, varList, SettingKey::kGroupVariableName, SettingKey::kGroupVariableIndex);
    if (fields.group >= 0) {
        const IQKVariable& group = *varList.GetVarAt(fields.group);
        if (!FieldKind::IsCategorical(group.GetKind())) {
            builder.FailToo(kGroupNotCategorical);
        } else if (group.GetCategoryCount() != kTwoCategories) {
            builder.FailToo(kNotTwoCategories);
        }
    }
    builder.RequestOriginFrequencies();
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNKSmirnowTwoSample>(fields.test);
}

// ---- Passes ----

QKStatus TARNKSmirnowTwoSample::BeginPass() {
    if (passCounter == 0) {
        ReadSettings();
    } else if (!status.IsError()) {
        for (Group& group : groups) group.variable.Begin();
        passesRemaining = 1;
    }
    return status;
}

/// A test that its plan builder failed still reads its fields, so that its condition can show them.
void TARNKSmirnowTwoSample::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    if (status.IsError()) return;
    bool isComplete = settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    if (isComplete && settings->GetSettingValByName(SettingKey::kGroup1List, groups[kFirst].categories)) {
        userSpecifyGroupList = settings->GetSettingValByName(SettingKey::kGroup2List, groups[kSecond].categories);
        isComplete = userSpecifyGroupList;
    }
    if (isComplete) {
        passesRemaining = 2;
    } else {
        AddStatusMessage(QKStatus(kSettingsMissing), MessageKind::kError);
    }
}

void TARNKSmirnowTwoSample::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

bool TARNKSmirnowTwoSample::NeedsAnotherPass() {
    return !status.IsError() && passCounter++ == 0;
}

std::size_t TARNKSmirnowTwoSample::GroupOf(std::int32_t category) const {
    for (const std::size_t group : {kFirst, kSecond}) {
        const std::vector<std::int32_t>& categories = groups[group].categories;
        if (std::find(categories.begin(), categories.end(), category) != categories.end()) return group;
    }
    return kNeither;
}

QKStatus TARNKSmirnowTwoSample::ProcessRecord(Record& record) {
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const auto weight = static_cast<std::uint32_t>(CaseWeight(record, weightIndex));
    const std::int32_t category = TruncateToInt32(record[static_cast<std::size_t>(groupVariableIndex)]);
    if (passCounter > 0) return Walk(value, weight, category);
    const std::size_t at = GroupOf(category);
    if (at == kNeither) return status;
    Group& group = groups[at];
    group.n += weight;
    if (QKMV::IsMissing(group.min)) group.min = value;
    group.max = value;
    group.variable.ExtendRange(value);
    return status;
}

/// The difference is taken where the value changes, so that equal values of both groups are one place of it.
QKStatus TARNKSmirnowTwoSample::Walk(double value, std::uint32_t weight, std::int32_t category) {
    const std::size_t group = GroupOf(category);
    if (group != kNeither) groups[group].variable.Add(value, static_cast<std::int32_t>(weight));
    if (QKMV::IsMissing(lastValue) && group != kNeither) {
        lastValue = value;
        lastGroup = category;
    }
    if (value == lastValue) {
        if (group != kNeither) groups[group].cumulated += weight;
        return status;
    }
    status = EvaluateDifference();
    if (status.IsError()) return status;
    // At a new value a record of neither group counts with the second one. It can't raise its distribution function
    // above 1; documents depend on it.
    groups[group == kFirst ? kFirst : kSecond].cumulated += weight;
    lastValue = value;
    return status;
}

double TARNKSmirnowTwoSample::Group::DistributionAt(double value) const {
    if (min > value) return 0;
    return value >= max ? 1 : static_cast<double>(cumulated) / n;
}

/// A walk that began in neither group only warns.
QKStatus TARNKSmirnowTwoSample::EvaluateDifference() {
    if (GroupOf(lastGroup) == kNeither) return QKStatus(kFirstRecordInNoGroup, true);
    const auto& [first, second] = groups;
    const double ahead = first.DistributionAt(lastValue) - second.DistributionAt(lastValue);
    const double difference = first.n >= second.n ? ahead : -ahead;
    if (difference >= 0) differences.positive = std::max(differences.positive, difference);
    if (difference <= 0) differences.negative = std::min(differences.negative, difference);
    return {};
}

QKStatus TARNKSmirnowTwoSample::EndPass() {
    if (passCounter != 1 || status.IsError()) return status;
    EndWalk();
    passesRemaining = 0;
    return status;
}

void TARNKSmirnowTwoSample::EndWalk() {
    const std::uint32_t n1 = groups[kFirst].n;
    const std::uint32_t n2 = groups[kSecond].n;
    if (n1 == 0 || n2 == 0) {
        AddStatusMessage(QKStatus(kGroupEmpty), MessageKind::kError);
        return;
    }
    status = EvaluateDifference();
    if (status.IsError()) return;
    if (differences.HasPositive()) differences.absolute = differences.positive;
    if (differences.HasNegative()) {
        const double below = std::fabs(differences.negative);
        differences.absolute = QKMV::IsMissing(differences.absolute) ? below : std::max(differences.absolute, below);
    }
    // The product and the sum are 32 bits wide and wrap around from 4,294,967,296 on.
    z = std::sqrt(static_cast<double>(n1 * n2) / static_cast<double>(n1 + n2)) * differences.absolute;
    const std::optional<double> significance = KolmogorovSignificance(z);
    if (significance) {
        sig = *significance;
    } else {
        AddStatusMessage(QKStatus(kNoSignificance), MessageKind::kError);
    }
    for (Group& group : groups) group.variable.End();
}

// ---- Element ----

QKXML::XMLElement* TARNKSmirnowTwoSample::MakeResultElement() {
    ResultElement element(kTestName, ResultType::kHypothesisTest, TestFamily::kIndependentSamples,
                          Decide(status, sigLevel, sig));
    element.AddCondition(userSpecifyGroupList ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, static_cast<std::int32_t>(groups[kFirst].n + groups[kSecond].n));
    differences.AddTable(statistics);
    statistics.Row(RowName::kTestStatistic, z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    for (const std::size_t group : {kFirst, kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, static_cast<std::int32_t>(group));
        table.Row(RowName::kN, static_cast<std::int32_t>(groups[group].n));
        groups[group].variable.AddIntervals(table);
    }
    return element.Release();
}
