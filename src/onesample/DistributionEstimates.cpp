#include "onesample/DistributionEstimates.h"

#include <new>

#include "platform/common/QKMV.h"
#include "vocabulary/StatusCodes.h"

QKStatus DistributionEstimates::Choose(const TheoreticalDistribution& distribution, int variableIndex, int weightIndex,
                                       bool hasError, const Arithmetic& arithmetic) {
    const bool isUniform = distribution.kind == DistributionKind::kUniform;
    const bool isNormal = distribution.kind == DistributionKind::kNormal;
    meanFromSample = !isUniform && QKMV::IsMissing(distribution.mean);
    stdDevFromSample = isNormal && QKMV::IsMissing(distribution.stdDev);
    rangeFromSample =
        (isUniform || !hasError) && (QKMV::IsMissing(distribution.minimum) || QKMV::IsMissing(distribution.maximum));
    if (!meanFromSample && !stdDevFromSample && !rangeFromSample) return QKStatus();

    testArithmetic = &arithmetic;
    ownArithmetic.Extend(arithmetic.WantsTextbook());
    sampleStatistics.reset(new (std::nothrow) QKContUnivariateVariable(variableIndex, weightIndex, ownArithmetic));
    if (sampleStatistics == nullptr) return QKStatus(StatusCode::kAllocationFailed);
    if (meanFromSample) sampleStatistics->AddStatistic(Statistic::kMean);
    if (stdDevFromSample) sampleStatistics->AddStatistic(Statistic::kMeanAndStdDev);
    if (rangeFromSample) {
        sampleStatistics->AddStatistic(Statistic::kMax);
        sampleStatistics->AddStatistic(Statistic::kMin);
    }
    return QKStatus();
}

void DistributionEstimates::Add(std::span<const double> values, const std::int32_t* weights) {
    if (sampleStatistics != nullptr) sampleStatistics->AddColumn(values, weights);
}

QKStatus DistributionEstimates::EndPass() {
    if (sampleStatistics == nullptr) return QKStatus();
    const QKStatus status = sampleStatistics->EndPass();
    testArithmetic->Adopt(DepartureOfUsed());
    return status;
}

Departure DistributionEstimates::DepartureOfUsed() const {
    if (stdDevFromSample) return sampleStatistics->GetDeparture();
    return meanFromSample ? sampleStatistics->MeanDeparture() : Departure();
}

void DistributionEstimates::TakeInto(TheoreticalDistribution& distribution) const {
    if (sampleStatistics == nullptr) return;
    if (meanFromSample) distribution.mean = sampleStatistics->GetMean();
    if (stdDevFromSample) distribution.stdDev = sampleStatistics->GetStdDev();
    if (rangeFromSample) {
        distribution.minimum = sampleStatistics->GetMin();
        distribution.maximum = sampleStatistics->GetMax();
    }
}
