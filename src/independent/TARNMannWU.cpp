// Mann-Whitney test of two independent groups.
//
// Question    Does a continuous field have the same distribution in two groups?
// Data        Records that miss neither field, in ascending order of the test field; those of neither group take no
//             part. n1 and n2 are the weighted sizes, N = n1 + n2.
// Statistic   U = n1 (n1 + 1) / 2 + n1 n2 - R1, R1 the sum of the mid-ranks of the first group, and W = R2, that of the
//             second one. Normal approximation without continuity correction: mean n1 n2 / 2, variance
//             n1 n2 / (N (N - 1)) * (N^3 - N - sum of (t^3 - t)) / 12 over the runs of t equal values. Where
//             n1 n2 <= 400 the significance among all arrangements without ties decides.
// Source      Mann and Whitney (1947), Annals of Mathematical Statistics 18, 50-60; Wilcoxon (1945), Biometrics
//             Bulletin 1, 80-83.
// Degenerate  An empty group: an error. All values equal: z = 0, significance 1.

#include "independent/TARNMannWU.h"

#include <algorithm>
#include <cmath>
#include <string>

#include "contract/TARNPlanBuilder.h"
#include "independent/MannWhitneyExact.h"
#include "support/ResultElements.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionOfData = "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2";
constexpr const char* kConditionOfLists = "CategoryListsAreSpecified_I_MannWhitneyU_2";

constexpr GroupedFieldsCodes kFieldCodes{.testNameMissing = 220712_error,
                                         .groupNameMissing = 220713_error,
                                         .unknownField = 220703_error,
                                         .testNotContinuous = 220715_error,
                                         .groupNotCategorical = 220714_error};
constexpr TwoGroupsCodes kGroupsCodes{.noUnivariateResults = 220706_error,
                                      .notTwoCategories = 220709_error,
                                      .inBothLists = 220710_error,
                                      .groupEmpty = 220711_error};
constexpr long kListEmpty = 220701_error;

/// Both limits are inclusive. The second one is part of the rule, though no pair of sizes within the first exceeds it.
bool HasExactSignificance(double n1, double n2) {
    constexpr double kMostPairs = 400;
    constexpr double kMostWork = 220;
    return n1 * n2 <= kMostPairs && n1 * n2 / 2 + std::min(n1, n2) <= kMostWork;
}

/// N^3 - N less the same over the runs of equal values, 0 if there is but one run.
double Spread(double n, double tieCorrectionSum) {
    return (n * n * n - n - tieCorrectionSum) / 12;
}

}  // namespace

void PlanMannWU(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    const GroupedFields fields = PlanGroupedFields(builder, plan, kFieldCodes, AfterFailedTestField::kStop);
    builder.RequestOriginFrequencies(Origins::kOne);
    PlanTwoGroups(builder, plan, fields.group, kListEmpty);
    RequestGroupedFields(builder, plan, fields);
    builder.AddToSortedWorker<TARNMannWU>(fields.test);
}

// ---- Passes ----

QKStatus TARNMannWU::BeginPass() {
    if (passCounter == 0) {
        BeginRanking();
    } else if (passCounter == 1 && !status.IsError()) {
        passesRemaining = 1;
        for (GroupHistogram& variable : groupVariables) variable.Begin();
    }
    return status;
}

/// A test that its plan builder failed reads its settings too, so that its condition can show the fields.
void TARNMannWU::BeginRanking() {
    passesRemaining = isBrief ? 1 : 2;
    settings->GetSettingValByName(SettingKey::kVariableIndex, variableIndex);
    settings->GetSettingValByName(SettingKey::kGroupVariableIndex, groupVariableIndex);
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightIndex);
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    groups.Read(*settings);
    if (status.IsError()) return;
    const QKStatus valid = groups.Validate(univariateResults, groupVariableIndex, kGroupsCodes);
    if (valid.IsError()) {
        AddStatusMessage(valid, MessageKind::kError);
        return;
    }
    groups.Prepare(split);
    rank.Reset();
    groupCounts = {};
}

void TARNMannWU::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices.push_back(variableIndex);
    fieldIndices.push_back(groupVariableIndex);
}

QKStatus TARNMannWU::ProcessColumns(ColumnBatch& batch) {
    const double* const values = batch.Values(variableIndex);
    const std::int32_t* const weights = weightIndex < 0 ? nullptr : batch.Weights(weightIndex);
    split.Take(batch, groupVariableIndex);
    if (passCounter == 1) {
        FillHistograms(split, values, weights, groupVariables);
        return status;
    }
    rank.AddAscending(values, weights, split.Groups(), split.Size());
    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        groupCounts[group] += static_cast<double>(split.WeightOf(static_cast<std::int32_t>(group), weights));
    }
    if (!isBrief) ExtendRanges(split, values, groupVariables);
    return status;
}

QKStatus TARNMannWU::EndPass() {
    split.Release();
    if (status.IsError()) return status;
    if (passCounter == 0) {
        EndRanking();
        return status;
    }
    passesRemaining = 0;
    for (GroupHistogram& variable : groupVariables) variable.End();
    passCounter = 2;
    return status;
}

void TARNMannWU::EndRanking() {
    const double n1 = groupCounts[TwoGroups::kFirst];
    const double n2 = groupCounts[TwoGroups::kSecond];
    totalN = arithmetic.Count(arithmetic.Truncated(n1) + arithmetic.Truncated(n2));
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return;
    }
    if (n1 == 0 || n2 == 0) {
        AddStatusMessage(QKStatus(kGroupsCodes.groupEmpty), MessageKind::kError);
        return;
    }
    passesRemaining = isBrief ? 0 : 1;
    rank.CloseTieRun();
    const double rankSumOfFirst = rank.GroupRanks(TwoGroups::kFirst).sumOfRanks;
    const double rankSumOfSecond = rank.GroupRanks(TwoGroups::kSecond).sumOfRanks;
    meanRank = {rankSumOfFirst / n1, rankSumOfSecond / n2};
    w = rankSumOfSecond;
    // U and its distance from the middle, from what the rank sum of the first group lies above.
    const double n = n1 + n2;
    const auto whole1 = static_cast<std::int64_t>(n1);
    const auto whole2 = static_cast<std::int64_t>(n2);
    const GroupRankStats& first = rank.GroupRanks(TwoGroups::kFirst);
    const WideNumber twiceOwn = WideNumber{whole1} * (WideNumber{whole1} + 1);
    const WideNumber pairs = WideNumber{whole1} * whole2;
    u = arithmetic.Carefully([&] { return n1 * (n1 + 1) / 2 + n1 * n2 - rankSumOfFirst; },
                             [&] { return first.Below(twiceOwn + 2 * pairs); });
    if (HasExactSignificance(n1, n2)) {
        exactSig = MannWhitneyExactSignificance(TruncateToInt32(n1), TruncateToInt32(n2), u, arithmetic);
        exactComputed = true;
    }
    const double spread = arithmetic.Carefully([&] { return Spread(n, rank.TieCorrectionSum()); },
                                               [&] { return rank.SpreadOf(whole1 + whole2) / 12; });
    standardError = std::sqrt(spread * (n1 * n2 / (n * (n - 1))));
    if (spread != 0) {
        const double above =
            arithmetic.Carefully([&] { return u - n1 * n2 / 2; }, [&] { return first.Below(twiceOwn + pairs); });
        z = above / standardError;
    }
    asymptoticSig = TwoTailedNormal(z, arithmetic);
    passCounter = isBrief ? 2 : 1;
    rank.Reset();  // it holds every rank, and tests live as long as the document
}

// ---- Element ----

QKXML::XMLElement* TARNMannWU::MakeResultElement() {
    ResultElement element(Tests::kMannWhitney, Decide(status, sigLevel, exactComputed ? exactSig : asymptoticSig));
    element.AddCondition(groups.AreListed() ? kConditionOfLists : kConditionOfData,
                         {IntToString(variableIndex), IntToString(groupVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    for (const std::size_t group : {TwoGroups::kFirst, TwoGroups::kSecond}) {
        StructuredTable table = element.AddTable(GroupTableName(group));
        table.Row(RowName::kGroupIndex, JoinValues(groups.List(group)));
        table.Row(RowName::kN, groupCounts[group]);
        table.Row(RowName::kMeanOfRank, meanRank[group]);
        if (!isBrief) groupVariables[group].AddIntervals(table);
    }
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, totalN);
    statistics.Row(RowName::kMannWhitneyU, u);
    statistics.Row(RowName::kWilcoxonW, w);
    statistics.Row(RowName::kTestStatistic, u);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, z);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    if (exactComputed) statistics.Row(RowName::kExactSig2Tailed, exactSig);
    return element.Release();
}
