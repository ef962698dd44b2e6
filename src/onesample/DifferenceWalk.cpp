#include "onesample/DifferenceWalk.h"

#include <cmath>

#include "support/Int32.h"

DifferenceWalk::DifferenceWalk(TheoreticalDistribution& theory, std::int32_t total)
    : distribution(&theory), totalN(total) {}

/// The share of the sample up to a value. In front of the first value of a Poisson sample, whose smallest value may be
/// given and lie lower, the count is 0; it is taken as 1.
double DifferenceWalk::Empirical(double value, std::int32_t count) const {
    if (value < distribution->minimum) return 0;
    if (value >= distribution->maximum) return 1;
    return (count == 0 ? 1.0 : count) / totalN;
}

void DifferenceWalk::Add(const double* values, const std::int32_t* weights, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) {
        if (QKMV::IsMissing(previousValue)) previousValue = values[i];
        // Behind the whole weight only records of weight 0 are left, and each of them is a run by itself.
        const bool isInRun = values[i] == previousValue && cumulativeCount < totalN;
        if (!isInRun) CloseRun();
        cumulativeCount = Add32(cumulativeCount, weights[i]);
        runWeight = isInRun ? Add32(runWeight, weights[i]) : weights[i];
        previousValue = values[i];
    }
}

void DifferenceWalk::Close() {
    CloseRun();
}

void DifferenceWalk::CloseRun() {
    const double value = previousValue;
    if (distribution->kind == DistributionKind::kPoisson) {
        // Both functions are steps at whole numbers: just below the value is at the number before.
        const double below = value - 1;
        Take(value == 0 ? 0 : Empirical(below, Subtract32(cumulativeCount, runWeight)) - distribution->Cdf(below));
        Take(Empirical(value, cumulativeCount) - distribution->Cdf(value));
        return;
    }
    const double empirical = Empirical(value, cumulativeCount);
    const double theoretical = distribution->Cdf(value);
    Take(previousEmpirical - theoretical);
    Take(empirical - theoretical);
    previousEmpirical = empirical;
}

/// A difference that is no number leaves the extremes as they are.
void DifferenceWalk::Take(double difference) {
    if (std::fabs(difference) > extremes.absolute) extremes.absolute = std::fabs(difference);
    if (difference > 0 && difference > extremes.positive) extremes.positive = difference;
    if (difference < 0 && difference < extremes.negative) extremes.negative = difference;
}
