// Hodges-Lehmann estimate of the median difference of a pair of continuous fields.
//
// Question    By how much do the fields differ, second minus first?
// Data        Records that miss neither field of the pair; zero differences take part.
// Statistic   The median of the averages (d_i + d_j) / 2, i <= j, each weighted by its two records. The interval ends
//             at the averages at the positions meanRank -+ q rankStdError, the moments of the signed rank sum.
// Source      Hodges and Lehmann (1963), Annals of Mathematical Statistics 34, 598-611; the interval: Tukey (1949),
//             and Hollander and Wolfe (1973), Nonparametric Statistical Methods.
// Degenerate  No case at all: an error. One record: its difference three times.

#include "related/TARNHodgesLehmannPairs.h"

#include <cmath>
#include <new>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
#include "support/CaseWeight.h"
#include "support/Int32.h"
#include "support/ResultElements.h"
#include "vocabulary/SettingKeys.h"
#include "vocabulary/StatusCodes.h"
#include "vocabulary/TestFacts.h"

namespace {

constexpr const char* kConditionKey = "R_HodgesLehman_2";

constexpr PairCodes kCodes{.namesMissing = 222410_error,
                           .unknownField = 222403_error,
                           .notTwoFields = 222409_error,
                           .notContinuous = 222404_error};

/// N (N + 1) / 4, the product 32 bits wide by definition: above 46340 cases it wraps around and takes the interval
/// with it. docs/limits.md says what a user sees.
double MeanRank(std::int32_t n) {
    return Multiply32(n, Add32(n, 1)) * 0.25;
}

/// In double arithmetic throughout, unlike the mean.
double RankStandardError(double n, double tieCorrectionSum) {
    return std::sqrt((n + 1) * n * (2 * n + 1) / 24 - tieCorrectionSum / 48);
}

}  // namespace

void PlanHodgesLehmannPairs(const QKSettings& entry, TARNPlan& plan) {
    TARNPlanBuilder builder(entry, plan, CommonSettings::kConfidenceLevel);
    PlanContinuousPair(builder, plan, kCodes);
    builder.AddToMainWorker<TARNHodgesLehmannPairs>();
}

// ---- Pass ----

QKStatus TARNHodgesLehmannPairs::BeginPass() {
    passesRemaining = 1;
    settings->GetSettingValByName(SettingKey::kConfidenceLevel, confidenceLevel);
    if (ReadPair(*settings, firstVariableIndex, secondVariableIndex)) {
        differences = PairDifferences(firstVariableIndex, secondVariableIndex);
    } else if (!status.IsError()) {
        AddStatusMessage(QKStatus(kCodes.notTwoFields), MessageKind::kError);
    }
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    return status;
}

void TARNHodgesLehmannPairs::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {firstVariableIndex, secondVariableIndex};
}

QKStatus TARNHodgesLehmannPairs::ProcessRecord(Record& record) {
    const double difference = differences.Of(record);
    const std::int32_t weight = CaseWeight(record, weightVariableIndex);
    pairDifferences.push_back({difference, weight});
    std::int32_t& count = difference > 0 ? positiveCount : difference < 0 ? negativeCount : tieCount;
    count = Add32(count, weight);
    differences.ExtendRange(difference);
    return status;
}

QKStatus TARNHodgesLehmannPairs::EndPass() {
    if (status.IsError()) return status;
    totalN = Add32(Add32(positiveCount, negativeCount), tieCount);
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    QKStatus estimated;
    try {
        estimated = Estimate();
    } catch (const std::bad_alloc&) {
        estimated = QKStatus(StatusCode::kOutOfMemory);
    }
    if (estimated.IsError()) AddStatusMessage(estimated, MessageKind::kError);
    passesRemaining = 0;
    return status;
}

QKStatus TARNHodgesLehmannPairs::Estimate() {
    if (tieCount > 0) {
        // Zero differences become ordinary values: all are at least 1 then. With no weight on a zero nothing moves.
        shift = 1 - differences.Smallest();
        for (WeightedDifference& entry : pairDifferences) entry.difference += shift;
    }
    const WalshAverages averages(pairDifferences);
    estimate = averages.Median();
    const QKStatus ranked = ComputeRankMoments();
    if (ranked.IsError()) return ranked;
    ComputeInterval(averages);
    estimate -= shift;
    lower -= shift;
    upper -= shift;
    return QKStatus();
}

QKStatus TARNHodgesLehmannPairs::ComputeRankMoments() {
    TARNRank rank;
    const QKStatus ranked = RankAbsoluteDifferences(pairDifferences, rank);
    meanRank = MeanRank(totalN);
    rankStdError = RankStandardError(totalN, rank.TieCorrectionSum());
    return ranked;
}

/// Without a weight field each position is that of one average, which is what the weighted position comes to when all
/// weights are 1.
void TARNHodgesLehmannPairs::ComputeInterval(const WeightedOrder& averages) {
    const double q = QKMath::QKDistFun::IdfStdNorm(1 - (1 - confidenceLevel) * 0.5);
    lower = averages.At(std::floor(meanRank - q * rankStdError) + 1);
    upper = averages.At(std::ceil(meanRank + q * rankStdError));
}

// ---- Element ----

QKXML::XMLElement* TARNHodgesLehmannPairs::MakeResultElement() {
    ResultElement element(Tests::kHodgesLehmannPairs, Decision::kUnknown);
    element.AddCondition(kConditionKey, {IntToString(firstVariableIndex), IntToString(secondVariableIndex)});
    if (element.EndsWithMessages(messages, status)) return element.Release();

    StructuredTable statistics = element.AddTable(TableName::kStatisticsResult);
    statistics.Row(RowName::kEstimate, estimate);
    StructuredTable interval = statistics.Table(TableName::kAsymptotic);
    interval.Row(RowName::kLower, lower);
    interval.Row(RowName::kUpper, upper);
    return element.Release();
}
