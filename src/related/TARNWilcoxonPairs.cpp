// Wilcoxon signed rank test on the differences of a pair of continuous fields.
//
// Question    Are the differences, second minus first, symmetric about zero?
// Data        Records that miss neither field of the pair; zero differences (ties) take no part in the ranks.
// Statistic   Sum of the mid-ranks of |d| over the positive d. Normal approximation without continuity correction:
//             mean n (n + 1) / 4, variance (2 n + 1) n (n + 1) / 24 - sum of (t^3 - t) / 48 over the runs of t equal
//             |d|, n the number of differences that are not zero. There is no exact significance.
// Source      Wilcoxon (1945), Biometrics Bulletin 1, 80-83; tie correction: Lehmann (1975), Nonparametrics.
// Degenerate  No case at all: an error. All differences zero: 0/0, shown as "nan", retained.

#include "related/TARNWilcoxonPairs.h"

#include <cmath>

#include "contract/TARNPlanBuilder.h"
#include "support/ResultElements.h"
#include "support/Significance.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "R_WilcoxonSignedRanks_2";

constexpr PairCodes kCodes{.namesMissing = 221010_error,
                           .unknownField = 221003_error,
                           .notTwoFields = 221009_error,
                           .notContinuous = 221004_error};

/// n (n + 1), 32 bits wide as defined: above 46340 differences it wraps around, and the mean and the standard error
/// are those of the wrapped number. docs/limits.md says what a user sees.
double RankProduct(std::int64_t n, const Arithmetic& arithmetic) {
    return arithmetic.Signed32(Whole(n) * (Whole(n) + 1));
}

double TiedVariance(double n, double rankProduct, double tieCorrectionSum) {
    return (2 * n + 1) * rankProduct / 24 - tieCorrectionSum / 48;
}

}  // namespace

void PlanWilcoxonPairs(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    PlanContinuousPair(builder, plan, kCodes);
    builder.AddToMainWorker<TARNWilcoxonPairs>();
}

// ---- Passes ----

QKStatus TARNWilcoxonPairs::BeginPass() {
    if (passCounter == 0) {
        passesRemaining = isBrief ? 1 : 2;
        ReadSettings();
    } else {
        differences.BeginHistogram();
    }
    return status;
}

/// A test that its plan builder failed reads its fields too, so that its condition can show them.
void TARNWilcoxonPairs::ReadSettings() {
    settings->GetSettingValByName(SettingKey::kSigLevel, sigLevel);
    if (!ReadPair(*settings, firstVariableIndex, secondVariableIndex)) {
        if (!status.IsError()) AddStatusMessage(QKStatus(kCodes.notTwoFields), MessageKind::kError);
        return;
    }
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    differences = PairDifferences(firstVariableIndex, secondVariableIndex, weightVariableIndex, arithmetic);
}

void TARNWilcoxonPairs::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {firstVariableIndex, secondVariableIndex};
}

QKStatus TARNWilcoxonPairs::ProcessColumns(ColumnBatch& batch) {
    if (passCounter != 0) {
        differences.AddToHistogram(batch);
        return status;
    }
    differences.ForParts(batch, [this](const double* values, const std::int32_t* weights, std::size_t count) {
        differences.Count(values, weights, count);
        if (!isBrief) differences.ExtendRange(values, count);
        ranked.Add(values, weights, count, false);
    });
    return status;
}

QKStatus TARNWilcoxonPairs::EndPass() {
    if (status.IsError()) return status;
    if (passCounter == 0) TakeCounts();
    if (TotalN() == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    if (passCounter == 0) {
        EndRanking();
    } else {
        differences.EndHistogram();
    }
    ++passCounter;
    --passesRemaining;
    return status;
}

/// What is no number counts as negative.
void TARNWilcoxonPairs::TakeCounts() {
    positiveCount = differences.Positive();
    negativeCount = arithmetic.Count(differences.NotZero() - positiveCount);
    tieCount = arithmetic.Count(differences.Total() - differences.NotZero());
}

void TARNWilcoxonPairs::EndRanking() {
    const SignedRanks ranks = RankSignedDifferences(ranked, work, arithmetic);
    ranked.Clear();  // it holds every record, and tests live as long as the document
    positiveRankSum = ranks.sumOfPositive;
    const std::int64_t nonZeroN = arithmetic.Count(positiveCount + negativeCount);
    const double product = RankProduct(nonZeroN, arithmetic);
    standardError = std::sqrt(TiedVariance(static_cast<double>(nonZeroN), product, ranks.tieCorrectionSum));
    // The sums of ranks of both signs add up to twice the expected one.
    standardTestStatistic = arithmetic.Carefully([&] { return positiveRankSum - product * 0.25; },
                                                 [&] { return ranks.excessOfPositive * 0.5; }) /
                            standardError;
    asymptoticSig = TwoTailedNormal(standardTestStatistic, arithmetic);
}

std::int64_t TARNWilcoxonPairs::TotalN() const {
    return arithmetic.Count(positiveCount + tieCount + negativeCount);
}

// ---- Element ----

QKXML::XMLElement* TARNWilcoxonPairs::MakeResultElement() {
    ResultElement element(Tests::kWilcoxonPairs, Decide(status, sigLevel, asymptoticSig));
    element.AddCondition(kConditionKey, {IntToString(firstVariableIndex), IntToString(secondVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    differences.AddDistribution(element, negativeCount, tieCount, positiveCount, isBrief);
    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kTotalN, TotalN());
    statistics.Row(RowName::kTestStatistic, positiveRankSum);
    statistics.Row(RowName::kStandardError, standardError);
    statistics.Row(RowName::kStandardTestStatistic, standardTestStatistic);
    statistics.Row(RowName::kAsymptoticSig2Tailed, asymptoticSig);
    return element.Release();
}
