// The normal distribution.

#include <boost/math/special_functions/erf.hpp>
#include <cmath>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKMV.h"
#include "runtime/common/MathPolicy.h"
#include "runtime/common/QKDistFunParts.h"

namespace QKMath {

namespace {

/// Phi(high + low), where low is at most a rounding error of high.
///
/// Phi(x) = erfc(-x / sqrt 2) / 2. Far out the argument's rounding error would grow to x^2 / 2 times itself in the
/// result, so that the argument is kept in two parts and the second one enters by the derivative of erfc.
double StdNormOfTwoParts(double high, double low) {
    constexpr double kRootHalfHigh = 0.70710678118654757;
    constexpr double kRootHalfLow = -4.8336466567264567e-17;  // sqrt(1/2) - kRootHalfHigh
    constexpr double kTwoOverRootPi = 1.1283791670955126;
    constexpr double kSensitiveFrom = 0.5;
    constexpr double kSmallestArgument = -39;  // the probability is below the smallest double

    if (high < kSmallestArgument) return 0;
    const double z = -high * kRootHalfHigh;
    double tail = std::erfc(z);
    if (z > kSensitiveFrom) {
        const double lost = std::fma(-high, kRootHalfHigh, -z) - high * kRootHalfLow - low * kRootHalfHigh;
        tail -= kTwoOverRootPi * std::exp(-z * z) * lost;
    }
    return tail / 2;
}

}  // namespace

WorkReal StdNormQuantile(WorkReal p) {
    constexpr WorkReal kRootTwo = 1.4142135623730950488016887242096981L;
    return -kRootTwo * boost::math::erfc_inv(2 * p, MathPolicy());
}

double QKDistFun::CdfStdNorm(double x) {
    if (std::isnan(x)) return x;
    return StdNormOfTwoParts(x, 0);
}

double QKDistFun::CdfNorm(double x, double mean, double sd) {
    if (std::isnan(x)) return x;
    if (!std::isfinite(mean) || !IsPositiveFinite(sd)) return QKMV::Missing();
    // The quotient in more digits than it takes can't overflow, and what a double loses of it is what a far tail
    // magnifies.
    const WorkReal z = (static_cast<WorkReal>(x) - mean) / sd;
    const double high = static_cast<double>(z);
    return StdNormOfTwoParts(high, std::isinf(high) ? 0 : static_cast<double>(z - high));
}

double QKDistFun::SfStdNorm(double x) {
    return CdfStdNorm(-x);
}

double QKDistFun::SfNorm(double x, double mean, double sd) {
    return CdfNorm(-x, -mean, sd);
}

double QKDistFun::IdfStdNorm(double p) {
    if (!IsProbability(p)) return QKMV::Missing();
    if (p == 0) return -kInfinity;
    if (p == 1) return kInfinity;
    return QuantileResult(StdNormQuantile(p));
}

}  // namespace QKMath
