// Kolmogorov-Smirnov test of two independent groups.
//
// Question    Does a continuous field have the same distribution in two groups?
// Data        Records that miss neither field, in ascending order of the test field. The first pass counts the groups,
//             n1 and n2, and finds their ranges; the second one walks their distribution functions.
// Statistic   D, the largest distance of the two distribution functions behind each run of equal values, and
//             z = sqrt(n1 n2 / (n1 + n2)) D with a significance by Kolmogorov's limit. A difference is that of the
//             larger group less that of the smaller one; of equal groups, of the first less the second.
// Source      Smirnov (1939), Bulletin mathematique de l'Universite de Moscou 2 (2), 3-16; Smirnov (1948), Annals of
//             Mathematical Statistics 19, 279-281.
// Degenerate  An empty group: an error. Equal groups: D = 0, significance 1.

#include "independent/TARNKSmirnowTwoSample.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "contract/TARNPlanBuilder.h"
#include "support/CaseWeight.h"
#include "support/ResultElements.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_KolmogorovSmirnov_2";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 222003_error,
                                         .groupNameMissing = 222003_error,
                                         .unknownField = 222003_error,
                                         .testNotContinuous = 222012_error,
                                         .groupNotCategorical = 222013_error,
                                         .tellsTestField = false,
                                         .tellsGroupField = false};
constexpr long kSettingsIncomplete = 222001_error;
constexpr long kExponentFailed = 222005_error;
constexpr long kNotTwoCategories = 222009_error;
constexpr long kGroupEmpty = 222010_error;
constexpr long kFirstRecordInNoGroup = 222011_error;

constexpr int kTwoCategories = 2;

/// The pairs of two groups per case, all 32 bits wide by definition: with more than 4294967295 pairs, of two groups of
/// 65536 say, the product wraps around. docs/limits.md says what a user sees.
double PairsPerCase(std::uint32_t n1, std::uint32_t n2) {
    return static_cast<double>(n1 * n2) / static_cast<double>(n1 + n2);
}

void CheckCategories(TARNPlanBuilder& builder, const QKVarList& varList, int groupField) {
    if (groupField < 0) return;
    const IQKVariable& group = *varList.GetVarAt(groupField);
    if (!FieldKind::IsCategorical(group.GetKind())) return;  // has failed by its kind
    if (group.GetCategoryCount() != kTwoCategories) builder.Fail(kNotTwoCategories);
}

std::vector<double> AsDoubles(const std::vector<int>& categories) {
    return {categories.begin(), categories.end()};
}

}  // namespace

void PlanKSmirnowTwoSample(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kResolveGroup);
    CheckCategories(builder, plan.GetVarList(), fields.group);
    builder.RequestOriginFrequencies(Origins::kOne);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNKSmirnowTwoSample>(fields.test);
}

// ---- Passes ----

QKStatus TARNKSmirnowTwoSample::BeginPass() {
    if (passCounter == 0) {
        ReadSettings();
    } else {
        if (!status.IsError()) {
            for (Sample& sample : samples) sample.variable.Begin();
        }
        passesRemaining = 1;
    }
    return status;
}

/// A test that its plan builder failed reads its fields too, so that its condition can show them.
void TARNKSmirnowTwoSample::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    if (status.IsError()) return;
    std::vector<int> first;
    std::vector<int> second;
    const bool hasLevel = settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    const bool hasFirst = hasLevel && settings->GetSettingValByName(SettingKey::kGroup1List, first);
    userSpecifyGroupList = hasFirst && settings->GetSettingValByName(SettingKey::kGroup2List, second);
    if (!hasLevel || hasFirst != userSpecifyGroupList) {
        AddStatusMessage(QKStatus(kSettingsIncomplete), MessageKind::kError);
        return;
    }
    if (userSpecifyGroupList) groups = TwoGroups(AsDoubles(first), AsDoubles(second));
    passesRemaining = 2;
}

void TARNKSmirnowTwoSample::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

QKStatus TARNKSmirnowTwoSample::ProcessRecord(Record& record) {
    const double value = record[static_cast<std::size_t>(variableIndex)];
    const std::int32_t category = TruncateToInt32(record[static_cast<std::size_t>(groupVariableIndex)]);
    const std::size_t group = groups.GroupOf(category);
    const std::int32_t weight = CaseWeight(record, weightIndex);
    if (passCounter > 0) {
        if (group != TwoGroups::kNeither) samples[group].variable.Add(value, weight);
        Walk(value, group, category, weight);
    } else if (group != TwoGroups::kNeither) {
        samples[group].n += static_cast<std::uint32_t>(weight);
        samples[group].variable.ExtendRange(value);
    }
    return status;
}

void TARNKSmirnowTwoSample::Walk(double value, std::size_t group, std::int32_t category, std::int32_t weight) {
    const auto added = static_cast<std::uint32_t>(weight);
    if (QKMV::IsMissing(lastValue) && group != TwoGroups::kNeither) {
        lastValue = value;
        lastGroup = category;
    }
    if (value == lastValue) {
        if (group != TwoGroups::kNeither) samples[group].cumulative += added;
        return;
    }
    TakeDifference();
    // A record of neither group that brings a new value counts for the second one here, though its n does not know it.
    // Documents depend on it.
    samples[group == TwoGroups::kFirst ? TwoGroups::kFirst : TwoGroups::kSecond].cumulative += added;
    lastValue = value;
}

/// The share of the group up to a value: it has no step in front of its smallest value and none behind its largest.
double TARNKSmirnowTwoSample::Sample::DistributionAt(double value) const {
    if (variable.Min() > value) return 0;
    if (value >= variable.Max()) return 1;
    return static_cast<double>(cumulative) / n;
}

void TARNKSmirnowTwoSample::TakeDifference() {
    if (groups.GroupOf(lastGroup) == TwoGroups::kNeither) {
        status = QKStatus(kFirstRecordInNoGroup, true);
        return;
    }
    const auto& [first, second] = samples;
    double difference = first.DistributionAt(lastValue) - second.DistributionAt(lastValue);
    if (first.n < second.n) difference = second.DistributionAt(lastValue) - first.DistributionAt(lastValue);
    if (difference >= 0) extremes.positive = std::max(extremes.positive, difference);
    if (difference <= 0) extremes.negative = std::min(extremes.negative, difference);
}

QKStatus TARNKSmirnowTwoSample::EndPass() {
    if (passCounter == 0) return status;
    if (samples[TwoGroups::kFirst].n == 0 || samples[TwoGroups::kSecond].n == 0) {
        AddStatusMessage(QKStatus(kGroupEmpty), MessageKind::kError);
    }
    passesRemaining = 0;
    if (status.IsError()) return status;
    TakeDifference();
    ComputeSignificance();
    for (Sample& sample : samples) sample.variable.End();
    return status;
}

void TARNKSmirnowTwoSample::ComputeSignificance() {
    if (extremes.HasPositive()) extremes.absolute = extremes.positive;
    if (extremes.HasNegative()) extremes.absolute = std::max(extremes.absolute, std::fabs(extremes.negative));
    z = std::sqrt(PairsPerCase(samples[TwoGroups::kFirst].n, samples[TwoGroups::kSecond].n)) * extremes.absolute;
    const std::optional<double> significance = KolmogorovSignificance(z);
    if (significance) {
        sig = *significance;
    } else {
        AddStatusMessage(QKStatus(kExponentFailed), MessageKind::kError);
    }
}

// ---- Element ----

QKXML::XMLElement* TARNKSmirnowTwoSample::MakeResultElement() {
    ResultElement element(Tests::kKolmogorovSmirnovTwoSample, Decide(status, sigLevel, sig));
    element.AddCondition(userSpecifyGroupList ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN,
                   static_cast<std::int32_t>(samples[TwoGroups::kFirst].n + samples[TwoGroups::kSecond].n));
    extremes.AddTable(statistics);
    statistics.Row(RowName::kTestStatistic, z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, SizeToString(group));
        table.Row(RowName::kN, static_cast<std::int32_t>(samples[group].n));
        samples[group].variable.AddIntervals(table);
    }
    return element.Release();
}
