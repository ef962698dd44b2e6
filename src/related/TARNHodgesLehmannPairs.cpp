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

#include <algorithm>
#include <cmath>
#include <new>
#include <span>

#include "contract/TARNPlanBuilder.h"
#include "platform/common/QKDistFun.h"
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

/// N (N + 1) / 4, the product 32 bits wide as defined: above 46340 cases it wraps around and takes the interval with
/// it. docs/limits.md says what a user sees.
double MeanRank(std::int64_t n, const Arithmetic& arithmetic) {
    return arithmetic.Signed32(Whole(n) * (Whole(n) + 1)) * 0.25;
}

/// In double arithmetic throughout, unlike the mean.
double RankStandardError(double n, double tieCorrectionSum) {
    return std::sqrt((n + 1) * n * (2 * n + 1) / 24 - tieCorrectionSum / 48);
}

/// Whether averages of differences that are moved, and moved back, may be others. Not if all are multiples of 2^-20
/// that are not large; the search is quickest then where no value is near 0.
bool LosesDigits(std::span<const double> differences, double shift) {
    constexpr double kSteps = 0x1p20;
    constexpr double kLeastTooLarge = 0x1p30;
    if (!std::isfinite(shift)) return false;  // nothing has a digit
    if (std::fabs(shift) >= kLeastTooLarge) return true;
    return !std::all_of(differences.begin(), differences.end(), [](double difference) {
        if (!(std::fabs(difference) < kLeastTooLarge)) return false;
        const double steps = difference * kSteps;
        return static_cast<double>(static_cast<std::int64_t>(steps)) == steps;
    });
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
    settings->GetSettingValByName(SettingKey::kWeightVariableIndex, weightVariableIndex);
    if (ReadPair(*settings, firstVariableIndex, secondVariableIndex)) {
        differences = PairDifferences(firstVariableIndex, secondVariableIndex, weightVariableIndex, arithmetic);
    } else if (!status.IsError()) {
        AddStatusMessage(QKStatus(kCodes.notTwoFields), MessageKind::kError);
    }
    return status;
}

void TARNHodgesLehmannPairs::GetUsedVariables(std::vector<int>& fieldIndices) {
    fieldIndices = {firstVariableIndex, secondVariableIndex};
}

QKStatus TARNHodgesLehmannPairs::ProcessColumns(ColumnBatch& batch) {
    differences.ForParts(batch, [this](const double* values, const std::int32_t* weights, std::size_t count) {
        differences.Count(values, weights, count);
        differences.ExtendRange(values, count);
        sample.Add(values, weights, count, true);
    });
    return status;
}

QKStatus TARNHodgesLehmannPairs::EndPass() {
    if (status.IsError()) return status;
    totalN = differences.Total();
    if (totalN == 0) {
        AddStatusMessage(QKStatus(StatusCode::kNoRecords), MessageKind::kError);
        return status;
    }
    try {
        Estimate();
    } catch (const std::bad_alloc&) {
        AddStatusMessage(QKStatus(StatusCode::kOutOfMemory), MessageKind::kError);
    }
    passesRemaining = 0;
    return status;
}

void TARNHodgesLehmannPairs::Estimate() {
    const std::int64_t tieCount = arithmetic.Count(totalN - differences.Positive() - differences.Negative());
    // Zero differences become ordinary values: all are at least 1 then. With no weight on a zero nothing moves.
    const double shift = tieCount > 0 ? 1 - differences.Smallest() : 0;
    // The averages move along and back again, or stay where they are if that would cost them digits.
    const double shiftOfAverages = arithmetic.Carefully(
        [=] { return shift; }, [&] { return LosesDigits(sample.Differences(), shift) ? 0.0 : shift; });
    Move(shiftOfAverages);
    const WalshAverages averages(sample.Differences(), sample.Weights(), work);
    if (work != nullptr && work->IsStopped()) return;
    estimate = averages.Median();
    if (shiftOfAverages != shift) Move(shift - shiftOfAverages);
    ComputeRankMoments();
    ComputeInterval(averages);
    if (shift != 0) {
        for (double* const value : {&estimate, &lower, &upper}) {
            *value = *value - shiftOfAverages + 0.0;  // no -0.0, which would show its sign
        }
    }
    sample.Clear();  // it holds every record, and tests live as long as the document
}

void TARNHodgesLehmannPairs::Move(double distance) {
    if (distance == 0) return;
    for (double& difference : sample.Differences()) difference += distance;
}

void TARNHodgesLehmannPairs::ComputeRankMoments() {
    meanRank = MeanRank(totalN, arithmetic);
    rankStdError = RankStandardError(static_cast<double>(totalN),
                                     RankSignedDifferences(sample, work, arithmetic).tieCorrectionSum);
}

/// Without a weight field each position is that of one average, which is what the weighted position comes to when all
/// weights are 1.
void TARNHodgesLehmannPairs::ComputeInterval(const WeightedOrder& averages) {
    const double tail = (1 - confidenceLevel) * 0.5;
    const double q = arithmetic.Carefully([=] { return QKMath::QKDistFun::IdfStdNorm(1 - tail); },
                                          [=] { return -QKMath::QKDistFun::IdfStdNorm(tail); });
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
