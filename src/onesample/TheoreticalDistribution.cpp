// Source of the definitions: Johnson, Kotz and Balakrishnan (1994, 1995), Continuous Univariate Distributions; Johnson,
// Kemp and Kotz (2005), Univariate Discrete Distributions.

#include "onesample/TheoreticalDistribution.h"

#include <cmath>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKPower.h"

using QKMath::QKDistFun;
using QKMath::QKPower;

namespace {

/// exp(x), 0 on an underflow; the missing double on a failure.
double Exponential(double x) {
    double value = 0;
    const int result = QKPower::Exponent(x, value);
    return result == 0 || result == 1 ? value : QKMV::Missing();
}

double UniformCdf(double x, double minimum, double maximum) {
    return (x - minimum) / (maximum - minimum);
}

double ExponentialCdf(double x, double mean, const Arithmetic& arithmetic) {
    const double upper = Exponential(-x / mean);
    if (QKMV::IsMissing(upper)) return upper;
    return arithmetic.Carefully([=] { return 1 - upper; }, [=] { return -std::expm1(-x / mean); });
}

/// Up to k events come as long as the wait for one more is longer, half a chi-square of 2 (k + 1) degrees of freedom.
double PoissonCdfByChiSquare(double x, double mean) {
    return x < 0 ? 0 : QKDistFun::SfChi(2 * mean, 2 * (std::floor(x) + 1));
}

}  // namespace

// ---- Poisson ----

PoissonCdf::PoissonCdf(double poissonMean) : mean(poissonMean), logMean(std::log(poissonMean)) {}

void PoissonCdf::Restart() {
    next = 0;
    sum = 0;
    sumBefore = 0;
    isSettled = false;
}

/// False if the term has no value.
bool PoissonCdf::AddTerm() {
    const double term = Exponential(next * logMean - mean - QKDistFun::zomrdnlgam(next + 1));
    if (QKMV::IsMissing(term)) return false;
    sumBefore = sum;
    sum += term;
    ++next;
    isSettled = next > mean && sum == sumBefore;  // behind the mean the terms fall
    return true;
}

double PoissonCdf::At(double x) {
    if (x < 0) return 0;
    if (x < next - 2) Restart();
    if (x < next - 1) return sumBefore;
    while (!hasFailed && !isSettled && x >= next) hasFailed = !AddTerm();
    return hasFailed ? QKMV::Missing() : sum;
}

// ---- All ----

ValueFit TheoreticalDistribution::FitOf(double value, bool isRangeEstimated) const {
    switch (kind) {
        case DistributionKind::kUniform:
            if (isRangeEstimated || (value >= minimum && value <= maximum)) break;
            return ValueFit::kOutside;
        case DistributionKind::kExponential:
            if (value < 0) return ValueFit::kOutside;
            break;
        case DistributionKind::kPoisson:
            if (value >= 0 && QKPower::AlmostEqual(value, std::trunc(value), QKPower::gMachineEpsilon)) break;
            return ValueFit::kNoCount;
        case DistributionKind::kNormal:
            break;
    }
    return ValueFit::kGood;
}

void TheoreticalDistribution::ApproximateByNormal() {
    isApproximated = true;
    stdDev = std::sqrt(mean);
}

double TheoreticalDistribution::Cdf(double x, const Arithmetic& arithmetic) {
    switch (kind) {
        case DistributionKind::kUniform:
            return UniformCdf(x, minimum, maximum);
        case DistributionKind::kExponential:
            return ExponentialCdf(x, mean, arithmetic);
        case DistributionKind::kPoisson:
            if (isApproximated) break;
            if (!poisson) poisson.emplace(mean);
            // Each term of a large mean is the exponential of a difference of large numbers.
            return arithmetic.Carefully([&] { return poisson->At(x); }, [&] { return PoissonCdfByChiSquare(x, mean); });
        case DistributionKind::kNormal:
            break;
    }
    return QKDistFun::CdfStdNorm((x - mean) / stdDev);
}
