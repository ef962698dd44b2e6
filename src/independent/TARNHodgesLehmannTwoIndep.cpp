// Hodges-Lehmann estimate of the shift of two independent groups.
//
// Question    By how much do the values of the first group exceed those of the second?
// Data        Records that miss neither field, in ascending order of the test field. The first group is the category
//             of the lower index. n1 and n2 are the weighted sizes, N = n1 + n2.
// Statistic   The median of all differences x_i - y_j, each weighted by its two records. The interval ends at the
//             differences at the positions n1 n2 / 2 -+ q s, s the standard error of the Mann-Whitney statistic: its
//             square is (N + 1) n1 n2 / 12 * (1 - sum of (t^3 - t) / (N^3 - N)) over the runs of t equal values.
// Source      Hodges and Lehmann (1963), Annals of Mathematical Statistics 34, 598-611; the interval: Lehmann (1963),
//             Annals of Mathematical Statistics 34, 1507-1512.
// Degenerate  No case at all, or a group without a record: an error. One record in each group: their difference
//             three times.

#include "independent/TARNHodgesLehmannTwoIndep.h"

#include <cmath>
#include <limits>
#include <new>
#include <utility>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/ResultElements.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "AllDistinctValuesUsed_I_HodgesLehman_2";
/// Of the vocabulary; groups can't be given, so that nothing writes it.
[[maybe_unused]] constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_HodgesLehman_2";

constexpr long kWrongKind = 222504_error;
constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 222510_error,
                                         .groupNameMissing = 222511_error,
                                         .unknownField = 222503_error,
                                         .testNotContinuous = kWrongKind,
                                         .groupNotCategorical = kWrongKind};
constexpr long kNoFrequencies = 222506_error;
constexpr long kNotTwoCategories = 222509_error;

constexpr std::int64_t kNoRecordYet = -1;

/// The products are 64 bits wide by definition.
double StandardError(std::int64_t n1, std::int64_t n2, const TieCorrection& ties, const Arithmetic& arithmetic) {
    const std::int64_t n = n1 + n2;
    const Whole cubicN = (Whole(n) * n - 1) * n;
    const double cubic = arithmetic.Signed64(cubicN);
    const double product = arithmetic.Signed64((Whole(n) + 1) * n1 * n2);
    const double untied =
        arithmetic.Carefully([&] { return 1 - ties.Sum() / cubic; }, [&] { return ties.SpreadOf(n) / cubicN.Value(); });
    return std::sqrt(untied * (product / 12));
}

/// What is no number stands in front of the list.
double Position(double place) {
    return std::isnan(place) ? -std::numeric_limits<double>::infinity() : place;
}

}  // namespace

void PlanHodgesLehmannTwoIndep(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kConfidenceLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kStillFindGroup);
    builder.RequestOriginFrequencies(Origins::kOne);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNHodgesLehmannTwoIndep>(fields.test);
}

// ---- Pass ----

/// A test that its plan builder failed reads its settings too, so that its condition can show the fields.
QKStatus TARNHodgesLehmannTwoIndep::BeginPass() {
    passesRemaining = 1;
    settings->GetSettingValByName(SettingKey::kConfidenceLevel, confidenceLevel);
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    if (!status.IsError()) {
        const QKStatus taken =
            groups.TakeCategoriesOfData(univariateResults, groupVariableIndex, kNoFrequencies, kNotTwoCategories);
        if (taken.IsError()) AddStatusMessage(taken, MessageKind::kError);
        groups.Prepare(split);
    }
    groupCounts = {kNoRecordYet, kNoRecordYet};
    return status;
}

void TARNHodgesLehmannTwoIndep::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {variableIndex, groupVariableIndex};
}

QKStatus TARNHodgesLehmannTwoIndep::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = batch.Weights(weightIndex);
    split.TakeExactly(batch, groupVariableIndex);
    for (std::size_t i = 0; i < batch.Size(); ++i) {
        if (split.Groups()[i] == GroupSplit::kNoGroup) continue;
        const auto group = static_cast<std::size_t>(split.Groups()[i]);
        if (groupCounts[group] == kNoRecordYet) {
            previousValue = values[i];
            runWeight = weights[i];
            groupCounts = {0, 0};
        } else {
            ExtendTieRun(values[i], weights[i]);
        }
        groupCounts[group] += weights[i];
        lists[group].push_back({values[i], weights[i]});
    }
    return status;
}

void TARNHodgesLehmannTwoIndep::ExtendTieRun(double value, std::int32_t weight) {
    if (value == previousValue) {
        runWeight += weight;
        return;
    }
    ties.AddHigherRun(Arithmetic::AsDefined().Count(runWeight));
    wideTies.AddHigherRun(runWeight);
    runWeight = weight;
    previousValue = value;
}

QKStatus TARNHodgesLehmannTwoIndep::EndPass() {
    split.Release();
    if (status.IsError()) return status;
    QKStatus estimated(StatusCode::kNoRecords);
    const bool hasPairs = !lists[TwoGroups::kFirst].empty() && !lists[TwoGroups::kSecond].empty();
    if (hasPairs && groupCounts[TwoGroups::kFirst] + groupCounts[TwoGroups::kSecond] != 0) {
        try {
            Estimate();
            estimated = QKStatus();
        } catch (const std::bad_alloc&) {
            estimated = QKStatus(StatusCode::kOutOfMemory);
        }
    }
    lists = {};
    passesRemaining = 0;
    if (estimated.IsError()) AddStatusMessage(estimated, MessageKind::kError);
    return status;
}

/// Without a weight field each position is that of one difference, which is what the weighted position comes to when
/// all weights are 1. Positions are as wide as the running weights. As defined a value without weight can be one of the
/// two in the middle, or an end; documents depend on it.
void TARNHodgesLehmannTwoIndep::Estimate() {
    PairwiseDifferences differences(std::move(lists[TwoGroups::kFirst]), std::move(lists[TwoGroups::kSecond]));
    differences.SetWork(work);
    const Positions asDefined = PositionsOf(ties, Arithmetic::AsDefined());
    found = {differences.Median(), differences.At(asDefined.lower), differences.At(asDefined.upper)};
    if (!arithmetic.WantsTextbook()) return;

    // Positions that move a little may still be those of the same values.
    Arithmetic wide;
    wide.Extend(true);
    const Positions whole = PositionsOf(wideTies, wide);
    if (whole != asDefined) {
        found.lower = arithmetic.Either(found.lower, differences.At(whole.lower));
        found.upper = arithmetic.Either(found.upper, differences.At(whole.upper));
    }
    TakeTextbook(whole, differences);
}

/// The last run is never closed, so a tie among the largest values takes nothing off the standard error. That is
/// intended: documents depend on it. By the textbook it counts like any other.
void TARNHodgesLehmannTwoIndep::TakeTextbook(const Positions& whole, const PairwiseDifferences& differences) {
    Arithmetic wide;
    wide.Extend(true);
    wideTies.AddHigherRun(runWeight);
    const Positions positions = PositionsOf(wideTies, wide);
    if (positions == whole) return;
    const Interval textbook{found.estimate, differences.At(positions.lower), differences.At(positions.upper)};
    if (arithmetic.TakesTextbook(textbook != found)) found = textbook;
}

/// Where the ends of the interval stand, by the sum over the ties and in the widths of some arithmetic.
TARNHodgesLehmannTwoIndep::Positions TARNHodgesLehmannTwoIndep::PositionsOf(const TieCorrection& correction,
                                                                            const Arithmetic& by) const {
    const auto [n1, n2] = groupCounts;
    const double meanOfU = by.Signed64(Whole(n1) * n2) / 2;
    const double standardError = StandardError(n1, n2, correction, by);
    const double q = QKMath::QKDistFun::IdfStdNorm(1 - (1 - confidenceLevel) / 2);
    return {Position(std::floor(meanOfU - q * standardError) + 1), Position(std::ceil(meanOfU + q * standardError))};
}

// ---- Element ----

QKXML::XMLElement* TARNHodgesLehmannTwoIndep::MakeResultElement() {
    ResultElement element(Tests::kHodgesLehmannGroups, Decision::kUnknown);
    element.AddCondition(kConditionKey, {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kEstimate, found.estimate);
    StructuredTable interval = statistics.Table(TableName::kAsymptotic);
    interval.Row(RowName::kLower, found.lower);
    interval.Row(RowName::kUpper, found.upper);
    return element.Release();
}
