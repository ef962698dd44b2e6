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
#include <tuple>
#include <utility>

#include "contract/TARNPlanBuilder.h"
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
double PairsPerCase(std::int64_t n1, std::int64_t n2, const Arithmetic& arithmetic) {
    return arithmetic.Unsigned32(Whole(n1) * n2) / arithmetic.Unsigned32(Whole(n1) + n2);
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
        if (!status.IsError()) BeginWalks();
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
    groups.Prepare(split);
    passesRemaining = 2;
}

/// The second walk is made only where the two may come to something else.
void TARNKSmirnowTwoSample::BeginWalks() {
    if (!isBrief) {
        for (GroupHistogram& histogram : histograms) histogram.Begin();
    }
    // Where a count wraps around, nothing bounds the differences.
    const std::array<std::int64_t, 2> counted = sizes;
    for (std::int64_t& size : sizes) size = arithmetic.UnsignedCount(size);
    // Each share, and their difference, is rounded by less than 1e-15 in all.
    constexpr double kRounding = 1e-15;
    constexpr double kMostPairs = 0x1p62;
    const auto [n1, n2] = std::pair(static_cast<double>(sizes[0]), static_cast<double>(sizes[1]));
    const bool areExact = walksCounts && sizes == counted && n1 * n2 < kMostPairs;
    walk.extent.reach = areExact ? static_cast<std::int64_t>(n1 * n2 * kRounding) + 1 : -1;
    walkByTextbook.extent.reach = -1;
    walksTwice = hasStrangers && arithmetic.WantsTextbook();
}

void TARNKSmirnowTwoSample::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

QKStatus TARNKSmirnowTwoSample::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = weightIndex < 0 ? nullptr : batch.Weights(weightIndex);
    split.Take(batch, groupVariableIndex);
    if (passCounter == 0) {
        Count(values, weights);
    } else {
        if (!isBrief) FillHistograms(split, values, weights, histograms);
        Take(walk, values, batch.Weights(weightIndex));
        if (walksTwice) Take(walkByTextbook, values, batch.Weights(weightIndex));
    }
    return status;
}

void TARNKSmirnowTwoSample::Count(const double* values, const std::int32_t* weights) {
    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        sizes[group] += split.WeightOf(static_cast<std::int32_t>(group), weights);
    }
    ExtendRanges(split, values, histograms);
    const std::size_t size = split.Size();
    const bool isBelowZero = weights != nullptr && *std::min_element(weights, weights + size) < 0;
    // What is no number stands at an end of the order.
    const bool isNumber = !std::isnan(values[0]) && !std::isnan(values[size - 1]);
    hasStrangers = hasStrangers || split.CountOf(GroupSplit::kNoGroup) != 0;
    walksCounts = walksCounts && !isBelowZero && isNumber && !hasStrangers;
}

void TARNKSmirnowTwoSample::Take(Walk& taking, const double* values, const std::int32_t* weights) const {
    const std::int32_t* const places = split.Groups();
    for (std::size_t i = 0; i < split.Size(); ++i) {
        if (QKMV::IsMissing(taking.lastValue) && places[i] != GroupSplit::kNoGroup) {
            taking.beganInGroup = true;
            taking.lastValue = values[i];
        }
        auto group = static_cast<std::size_t>(places[i]);
        if (values[i] != taking.lastValue) {
            if (places[i] == GroupSplit::kNoGroup && taking.strangers == Strangers::kAreLeftOut) continue;
            if (MayBeExtreme(taking)) TakeDifference(taking);
            taking.lastValue = values[i];
            // A record of neither group that brings a new value counts for the second one here, though its n does not
            // know it. Documents depend on it.
            if (places[i] == GroupSplit::kNoGroup) group = TwoGroups::kSecond;
        } else if (places[i] == GroupSplit::kNoGroup) {
            continue;
        }
        taking.cumulative[group] += weights[i];
    }
}

/// Whether the difference, as it stands, could be more extreme than those before, rounding included.
bool TARNKSmirnowTwoSample::MayBeExtreme(Walk& taking) const {
    Extent& extent = taking.extent;
    if (extent.reach < 0) return true;
    const std::int64_t difference = taking.cumulative[0] * sizes[1] - taking.cumulative[1] * sizes[0];
    const bool isHigh = difference >= extent.largest - extent.reach;
    const bool isLow = difference <= extent.smallest + extent.reach;
    extent.largest = std::max(extent.largest, difference);
    extent.smallest = std::min(extent.smallest, difference);
    return isHigh || isLow;
}

/// The share of the group up to the value in hand: it has no step in front of its smallest value and none behind its
/// largest.
double TARNKSmirnowTwoSample::ShareOf(std::size_t group, const Walk& taking) const {
    if (histograms[group].Min() > taking.lastValue) return 0;
    if (taking.lastValue >= histograms[group].Max()) return 1;
    return static_cast<double>(arithmetic.UnsignedCount(taking.cumulative[group])) / static_cast<double>(sizes[group]);
}

void TARNKSmirnowTwoSample::TakeDifference(Walk& taking) const {
    if (!taking.beganInGroup) {
        taking.status = QKStatus(kFirstRecordInNoGroup, true);
        return;
    }
    const double first = ShareOf(TwoGroups::kFirst, taking);
    const double second = ShareOf(TwoGroups::kSecond, taking);
    const bool secondIsLarger = sizes[TwoGroups::kFirst] < sizes[TwoGroups::kSecond];
    const double difference = secondIsLarger ? second - first : first - second;
    ExtremeDifferences& found = taking.extremes;
    if (difference >= 0) found.positive = std::max(found.positive, difference);
    if (difference <= 0) found.negative = std::min(found.negative, difference);
}

QKStatus TARNKSmirnowTwoSample::EndPass() {
    split.Release();
    if (passCounter == 0) return status;
    if (sizes[TwoGroups::kFirst] == 0 || sizes[TwoGroups::kSecond] == 0) {
        AddStatusMessage(QKStatus(kGroupEmpty), MessageKind::kError);
    }
    passesRemaining = 0;
    if (status.IsError()) return status;
    EndWalks();
    ComputeSignificance();
    if (!isBrief) {
        for (GroupHistogram& histogram : histograms) histogram.End();
    }
    return status;
}

void TARNKSmirnowTwoSample::EndWalks() {
    TakeDifference(walk);
    if (walksTwice) TakeDifference(walkByTextbook);
    const auto found = [](const Walk& each) {
        return std::tuple(each.status.IsOK(), each.extremes.positive, each.extremes.negative);
    };
    const Walk& taken =
        walksTwice && arithmetic.TakesTextbook(found(walk) != found(walkByTextbook)) ? walkByTextbook : walk;
    extremes = taken.extremes;
    if (!taken.status.IsOK()) status = taken.status;
}

void TARNKSmirnowTwoSample::ComputeSignificance() {
    if (extremes.HasPositive()) extremes.absolute = extremes.positive;
    if (extremes.HasNegative()) extremes.absolute = std::max(extremes.absolute, std::fabs(extremes.negative));
    z = std::sqrt(PairsPerCase(sizes[TwoGroups::kFirst], sizes[TwoGroups::kSecond], arithmetic)) * extremes.absolute;
    const std::optional<double> significance = KolmogorovSignificance(z, arithmetic);
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
    statistics.Row(RowName::kTotalN, arithmetic.Count(sizes[TwoGroups::kFirst] + sizes[TwoGroups::kSecond]));
    extremes.AddTable(statistics);
    statistics.Row(RowName::kTestStatistic, z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, sig);
    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, SizeToString(group));
        table.Row(RowName::kN, arithmetic.Count(sizes[group]));
        if (!isBrief) histograms[group].AddIntervals(table);
    }
    return element.Release();
}
