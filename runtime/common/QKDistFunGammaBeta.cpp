// The distributions whose functions are incomplete gamma and beta functions: chi-square, F and beta, with quantiles
// found by an iteration of our own; and the logarithm of the gamma function.

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <cmath>
#include <limits>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKMV.h"
#include "runtime/common/MathPolicy.h"
#include "runtime/common/QKDistFunParts.h"

namespace QKMath {

namespace {

/// Both tails of a distribution at a point, and the density there.
struct Tails {
    WorkReal below;
    WorkReal above;
    WorkReal density;
};

/// The u between `low` and `high` at which P(U <= u) is p; minus or plus infinity for one beyond them, NaN on failure.
///
/// The density of U is to be log-concave. Newton's iteration on the logarithm of a tail then stays on one side of
/// the root after its first step; that of the smaller tail keeps all digits. Where a step leads out of the bracket, for
/// instance because the tail is too small for a number, the bracket is halved.
template <typename TailsAt>
WorkReal FindQuantile(TailsAt tailsAt, WorkReal p, WorkReal start, WorkReal low, WorkReal high) {
    constexpr int kMaxSteps = 200;
    constexpr WorkReal kLastStep = 1e-11L;  // the step after it would be about its square
    const bool useLower = p <= 0.5L;
    const WorkReal target = useLower ? p : 1 - p;

    const auto isBelowRoot = [&](const Tails& tails) { return useLower ? tails.below < target : tails.above > target; };
    if (!isBelowRoot(tailsAt(low))) return -std::numeric_limits<WorkReal>::infinity();
    if (isBelowRoot(tailsAt(high))) return std::numeric_limits<WorkReal>::infinity();

    WorkReal u = std::clamp(start, low, high);
    for (int i = 0; i < kMaxSteps; ++i) {
        const Tails tails = tailsAt(u);
        const WorkReal tail = useLower ? tails.below : tails.above;
        if (std::isnan(tail)) return tail;
        (isBelowRoot(tails) ? low : high) = u;
        const WorkReal step = (useLower ? -1 : 1) * std::log(tail / target) * tail / tails.density;
        const WorkReal next = u + step;
        if (std::fabs(step) < kLastStep) return next;
        u = next > low && next < high ? next : (low + high) / 2;
    }
    return u;
}

/// The logarithms of half the smallest double and of the largest one.
constexpr WorkReal kLogOfSmallest = -745.2L;
constexpr WorkReal kLogOfLargest = 709.8L;

/// Above these shapes the series of the incomplete gamma and beta functions take too long, or end before their time.
constexpr WorkReal kLargestGammaShape = 1e8L;
constexpr WorkReal kLargestBetaShape = 1e9L;

/// P(a, x), or the upper tail Q(a, x), for a large shape a by the first term of the uniform expansion of Temme (1979),
/// The asymptotic expansion of the incomplete gamma functions.
WorkReal LargeGammaTail(WorkReal x, WorkReal a, bool isUpper) {
    constexpr WorkReal kSeriesUpTo = 1e-4L;
    const WorkReal mu = (x - a) / a;
    if (mu <= -1) return isUpper ? 1 : 0;
    const WorkReal halfSquare = -boost::math::log1pmx(mu, MathPolicy());
    const WorkReal eta = std::copysign(std::sqrt(2 * halfSquare), mu);
    const WorkReal coefficient = std::fabs(mu) > kSeriesUpTo ? 1 / mu - 1 / eta : -1 / 3.0L + eta / 12;
    const WorkReal sign = isUpper ? -1 : 1;
    return std::erfc(-sign * eta * std::sqrt(a / 2)) / 2 -
           sign * std::exp(-a * halfSquare) / std::sqrt(kTwoPi * a) * coefficient;
}

/// The quantile x / a of the gamma distribution with a large shape a, by Wilson and Hilferty (1931).
WorkReal LargeGammaQuantileRatio(WorkReal p, WorkReal a) {
    const WorkReal root = 1 - 1 / (9 * a) + StdNormQuantile(p) / (3 * std::sqrt(a));
    return root * root * root;
}

/// The quantile of log(x / (1 - x)), twice Fisher's z, for a beta distributed x with two large shapes by the expansion
/// of Fisher and Cornish (1960), Technometrics 2, 209-225.
WorkReal LargeBetaLogitQuantile(WorkReal p, WorkReal a, WorkReal b) {
    const WorkReal u = StdNormQuantile(p);
    const WorkReal mean = (1 / a + 1 / b) / 2;
    const WorkReal half = (1 / a - 1 / b) / 2;
    const WorkReal root = std::sqrt(mean / 2);
    const WorkReal spread = u * root;
    const WorkReal skewness = -half * (u * u + 2) / 6;
    const WorkReal rest = root * (mean * (u * u + 3) * u / 24 + half * half * (u * u + 11) * u / (72 * mean));
    return std::log(a / b) + 2 * (spread + skewness + rest);
}

/// The quantile of log(x / (1 - x)) for a beta distributed x; `low` and `high` as for `FindQuantile`.
WorkReal BetaLogitQuantile(WorkReal p, WorkReal a, WorkReal b, WorkReal low, WorkReal high) {
    constexpr WorkReal kLargeBesideALargerOne = 2000;
    if (std::max(a, b) > kLargestBetaShape) {
        if (std::min(a, b) > kLargeBesideALargerOne) return LargeBetaLogitQuantile(p, a, b);
        // Beside a small shape log(x / (1 - x)) less log(a / b) hardly depends on a shape that large.
        const WorkReal shift = std::log(std::max<WorkReal>(1, a / kLargestBetaShape)) -
                               std::log(std::max<WorkReal>(1, b / kLargestBetaShape));
        return shift + BetaLogitQuantile(p, std::min(a, kLargestBetaShape), std::min(b, kLargestBetaShape), low - shift,
                                         high - shift);
    }
    const auto tailsAt = [a, b](WorkReal u) {
        // The smaller one of x and 1 - x has all the digits.
        const bool isUpperHalf = u > 0;
        const WorkReal small = 1 / (1 + std::exp(std::fabs(u)));
        const WorkReal large = 1 / (1 + std::exp(-std::fabs(u)));
        const WorkReal shape = isUpperHalf ? b : a;
        const WorkReal otherShape = isUpperHalf ? a : b;
        const WorkReal below = boost::math::ibeta(shape, otherShape, small, MathPolicy());
        const WorkReal above = boost::math::ibetac(shape, otherShape, small, MathPolicy());
        const WorkReal density = boost::math::ibeta_derivative(shape, otherShape, small, MathPolicy()) * small * large;
        return isUpperHalf ? Tails{above, below, density} : Tails{below, above, density};
    };
    return FindQuantile(tailsAt, p, std::log(a / b), low, high);
}

}  // namespace

double QKDistFun::CdfChi(double x, double df) {
    if (std::isnan(x)) return x;
    if (!IsPositiveFinite(df)) return QKMV::Missing();
    if (x <= 0) return 0;
    if (std::isinf(x)) return 1;
    const WorkReal a = static_cast<WorkReal>(df) / 2;
    const WorkReal half = static_cast<WorkReal>(x) / 2;
    return ProbabilityResult(a > kLargestGammaShape ? LargeGammaTail(half, a, false)
                                                    : boost::math::gamma_p(a, half, MathPolicy()));
}

double QKDistFun::SfChi(double x, double df) {
    if (std::isnan(x)) return x;
    if (!IsPositiveFinite(df)) return QKMV::Missing();
    if (x <= 0) return 1;
    if (std::isinf(x)) return 0;
    const WorkReal a = static_cast<WorkReal>(df) / 2;
    const WorkReal half = static_cast<WorkReal>(x) / 2;
    return ProbabilityResult(a > kLargestGammaShape ? LargeGammaTail(half, a, true)
                                                    : boost::math::gamma_q(a, half, MathPolicy()));
}

double QKDistFun::IdfChi(double p, double df) {
    if (!IsProbability(p) || !IsPositiveFinite(df)) return QKMV::Missing();
    if (p == 0) return 0;
    if (p == 1) return kInfinity;
    const WorkReal a = static_cast<WorkReal>(df) / 2;
    if (a > kLargestGammaShape) return QuantileResult(df * LargeGammaQuantileRatio(p, a));
    const auto tailsAt = [a](WorkReal u) {
        const WorkReal x = std::exp(u);
        return Tails{boost::math::gamma_p(a, x, MathPolicy()), boost::math::gamma_q(a, x, MathPolicy()),
                     x * boost::math::gamma_p_derivative(a, x, MathPolicy())};
    };
    return QuantileResult(2 * std::exp(FindQuantile(tailsAt, p, std::log(a), kLogOfSmallest, kLogOfLargest)));
}

double QKDistFun::IdfF(double p, double d1, double d2) {
    if (!IsProbability(p) || !IsPositiveFinite(d1) || !IsPositiveFinite(d2)) return QKMV::Missing();
    if (p == 0) return 0;
    if (p == 1) return kInfinity;
    // d1 F / d2 is the x / (1 - x) of a beta distributed x.
    const WorkReal scale = static_cast<WorkReal>(d2) / d1;
    const WorkReal logScale = std::log(scale);
    return QuantileResult(scale *
                          std::exp(BetaLogitQuantile(p, static_cast<WorkReal>(d1) / 2, static_cast<WorkReal>(d2) / 2,
                                                     kLogOfSmallest - logScale, kLogOfLargest - logScale)));
}

double QKDistFun::IdfBeta(double p, double a, double b) {
    if (!IsProbability(p) || !IsPositiveFinite(a) || !IsPositiveFinite(b)) return QKMV::Missing();
    if (p == 0 || p == 1) return p;
    constexpr WorkReal kRoundsToOneFrom = 40;
    const WorkReal logit = BetaLogitQuantile(p, a, b, kLogOfSmallest, kRoundsToOneFrom);
    return QuantileResult(1 / (1 + std::exp(-logit)));
}

double QKDistFun::zomrdnlgam(double x) {
    if (std::isnan(x)) return QKMV::Missing();
    if (std::isinf(x)) return kInfinity;
    if (x <= 0 && x == std::floor(x)) return kInfinity;
    return static_cast<double>(boost::math::lgamma(static_cast<WorkReal>(x), MathPolicy()));
}

}  // namespace QKMath
