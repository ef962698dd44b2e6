#include "platform/common/QKDistFun.h"

#include <algorithm>
#include <boost/math/quadrature/gauss.hpp>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/erf.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <cmath>
#include <cstdint>
#include <limits>
#include <span>

#include "platform/common/QKMV.h"
#include "runtime/common/MathPolicy.h"

namespace QKMath {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr WorkReal kTwoPi = 6.283185307179586476925286766559006L;

bool IsPositiveFinite(double value) {
    return value > 0 && std::isfinite(value);
}
bool IsProbability(double value) {
    return value >= 0 && value <= 1;
}

/// A calculated probability as a result: rounding may have left it beyond an end, a failure made it a NaN.
double ProbabilityResult(WorkReal value) {
    if (std::isnan(value)) return QKMV::Missing();
    return static_cast<double>(std::clamp<WorkReal>(value, 0, 1));
}

double QuantileResult(WorkReal value) {
    return std::isnan(value) ? QKMV::Missing() : static_cast<double>(value);
}

// The normal distribution --------------------------------------------------------------------------------------------

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

// Sums over the terms of a discrete distribution ---------------------------------------------------------------------

/// n! e^n / n^n, which varies as sqrt(2 pi n) where n! itself has no room; 1 for 0. Whole n up to 20, any n above.
WorkReal ScaledFactorial(WorkReal n) {
    constexpr WorkReal kSeriesAbove = 20;
    if (n <= kSeriesAbove) {
        constexpr WorkReal kE = 2.718281828459045235360287471352662L;
        WorkReal product = 1;
        for (int factor = 1; factor <= n; ++factor) product *= factor * (kE / n);
        return product;
    }
    const WorkReal s = 1 / (n * n);
    const WorkReal series =
        (1 / 12.0L - s * (1 / 360.0L - s * (1 / 1260.0L -
                                            s * (1 / 1680.0L - s * (1 / 1188.0L - s * (691 / 360360.0L - s / 156)))))) /
        n;
    return std::sqrt(kTwoPi * n) * std::exp(series);
}

/// (1 + e) log(1 + e) - e for e from -1.
WorkReal RelativeDeviance(WorkReal e) {
    constexpr WorkReal kSmall = 0.5;
    if (e <= -1) return 1;
    if (std::fabs(e) > kSmall) return (1 + e) * std::log1p(e) - e;
    return (1 + e) * boost::math::log1pmx(e, MathPolicy()) + e * e;
}

/// A count that the distribution splits its total into.
struct Cell {
    WorkReal count;
    WorkReal expected;
    int direction;  ///< of the count when X goes up by 1: 1 or -1
};

/// P(X <= x) for an x not above the mean, of a distribution on whole numbers whose probabilities are
///
///     front / product of ScaledFactorial(count) * exp(-sum of expected * RelativeDeviance((count - expected) /
///     expected))
///
/// over the cells: the form of Loader (2000), Fast and accurate computation of binomial probabilities, in which
/// nothing large cancels. count - expected is the deviation in the direction of the cell; it is told apart, as its
/// relative error is what a far tail magnifies.
class LowerTail {
 public:
    LowerTail(std::span<const Cell> cells, WorkReal deviation, WorkReal front, WorkReal odds)
        : cells_(cells), deviation_(deviation), front_(front), odds_(odds) {
        WorkReal inverseVariance = 0;
        for (const Cell& cell : cells_) inverseVariance += 1 / cell.expected;
        sd_ = 1 / std::sqrt(inverseVariance);
    }

    WorkReal Sum() const {
        const WorkReal last = Density(0);
        if (!(last > 0)) return last;
        return sd_ > kIntegrateAboveSd ? Integral(last) : SumOfTerms(last);
    }

 private:
    /// From here on the correction terms left out of `Integral` are below 1e-14 of the result wherever that is a
    /// double, and summing the terms one by one would take longer.
    static constexpr WorkReal kIntegrateAboveSd = 3000;
    static constexpr WorkReal kNegligible = 1e-22L;

    /// The density at x - below, which need not be whole where the counts are above 20.
    WorkReal Density(WorkReal below) const {
        WorkReal deviance = 0;
        WorkReal factorials = 1;
        for (const Cell& cell : cells_) {
            const WorkReal deviation = cell.direction * (deviation_ - below);
            factorials *= ScaledFactorial(cell.count - cell.direction * below);
            deviance += cell.expected * RelativeDeviance(deviation / cell.expected);
        }
        return front_ / factorials * std::exp(-deviance);
    }

    /// P(X = x - below - 1) / P(X = x - below).
    WorkReal Ratio(WorkReal below) const {
        WorkReal numerator = odds_;
        WorkReal denominator = 1;
        for (const Cell& cell : cells_) {
            const WorkReal count = cell.count - cell.direction * below;
            if (cell.direction > 0)
                numerator *= count;
            else
                denominator *= count + 1;
        }
        return numerator / denominator;
    }

    WorkReal SumOfTerms(WorkReal last) const {
        WorkReal relative = 1;
        WorkReal sum = 1;
        for (WorkReal below = 0; relative > sum * kNegligible; below += 1) {
            relative *= Ratio(below);
            sum += relative;
        }
        return last * sum;
    }

    /// The Euler-Maclaurin sum formula with midpoints: the integral up to x + 1/2 and corrections from the
    /// derivatives there, which central differences of the probabilities around x + 1/2 give.
    WorkReal Integral(WorkReal last) const {
        const WorkReal distance = -deviation_ / sd_;
        const WorkReal width = sd_ / std::max<WorkReal>(1, distance);
        WorkReal integral = 0;
        WorkReal panel = 1;
        for (WorkReal from = -0.5L; panel > integral * kNegligible; from += width) {
            panel = boost::math::quadrature::gauss<WorkReal, 20>::integrate(
                [this](WorkReal below) { return Density(below); }, from, from + width);
            integral += panel;
        }
        const WorkReal next = last / Ratio(-1);
        const WorkReal first = next - last;
        const WorkReal third = next / Ratio(-2) - 3 * first - last * Ratio(0);
        return integral - first / 24 + third * 17 / 5760;
    }

    std::span<const Cell> cells_;
    WorkReal deviation_;
    WorkReal front_;
    WorkReal odds_;
    WorkReal sd_;
};

/// a * b - c * d with nothing lost but the last rounding.
WorkReal DifferenceOfProducts(WorkReal a, WorkReal b, WorkReal c, WorkReal d) {
    const WorkReal left = a * b;
    const WorkReal right = c * d;
    return (left - right) + (std::fma(a, b, -left) - std::fma(c, d, -right));
}

WorkReal BinomialLowerTail(WorkReal x, WorkReal n, WorkReal p, WorkReal q, WorkReal deviation) {
    const Cell cells[] = {{x, n * p, 1}, {n - x, n * q, -1}};
    return LowerTail(cells, deviation, ScaledFactorial(n), q / p).Sum();
}

/// The margins of both rows and both columns are told, as a difference from a huge total may have lost one.
WorkReal HypergeometricLowerTail(WorkReal x, WorkReal row, WorkReal otherRow, WorkReal column, WorkReal otherColumn,
                                 WorkReal total, WorkReal deviation) {
    const Cell cells[] = {{x, row * column / total, 1},
                          {row - x, row * otherColumn / total, -1},
                          {column - x, otherRow * column / total, -1},
                          {otherRow - (column - x), otherRow * otherColumn / total, 1}};
    const WorkReal front = ScaledFactorial(row) * ScaledFactorial(otherRow) / ScaledFactorial(total) *
                           ScaledFactorial(column) * ScaledFactorial(otherColumn);
    return LowerTail(cells, deviation, front, 1).Sum();
}

/// P(X <= x) for n fair trials as a fraction of whole numbers, rounded once.
constexpr double kLargestExactTrials = 62;
double FairBinomial(std::uint64_t x, std::uint64_t n) {
    std::uint64_t choose = 1;
    std::uint64_t sum = 1;
    for (std::uint64_t k = 1; k <= x; ++k) {
        // choose * (n - k + 1) could leave 64 bits; the parts that k divides out can't.
        const std::uint64_t factor = n - k + 1;
        choose = choose / k * factor + choose % k * factor / k;
        sum += choose;
    }
    return std::ldexp(static_cast<double>(sum), -static_cast<int>(n));
}

// Quantiles ----------------------------------------------------------------------------------------------------------

/// Both tails of a distribution at a point, and the density there.
struct Tails {
    WorkReal below;
    WorkReal above;
    WorkReal density;
};

/// The u between `low` and `high` at which P(U <= u) is p; minus or plus infinity for one beyond them, NaN on failure.
///
/// The density of U is to be log-concave. Newton's iteration on the logarithm of a tail then stays on one side of
/// the root after its first step; that of the smaller tail keeps all digits. Where a step leads out of the bracket,
/// be it that the tail is too small for a number, the bracket is halved.
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

WorkReal StdNormQuantile(WorkReal p) {
    constexpr WorkReal kRootTwo = 1.4142135623730950488016887242096981L;
    return -kRootTwo * boost::math::erfc_inv(2 * p, MathPolicy());
}

/// P(a, x) for a large shape a by the first term of the uniform expansion of Temme (1979), The asymptotic expansion of
/// the incomplete gamma functions.
WorkReal LargeGammaCdf(WorkReal x, WorkReal a) {
    constexpr WorkReal kSeriesUpTo = 1e-4L;
    const WorkReal mu = (x - a) / a;
    if (mu <= -1) return 0;
    const WorkReal halfSquare = -boost::math::log1pmx(mu, MathPolicy());
    const WorkReal eta = std::copysign(std::sqrt(2 * halfSquare), mu);
    const WorkReal coefficient = std::fabs(mu) > kSeriesUpTo ? 1 / mu - 1 / eta : -1 / 3.0L + eta / 12;
    return std::erfc(-eta * std::sqrt(a / 2)) / 2 - std::exp(-a * halfSquare) / std::sqrt(kTwoPi * a) * coefficient;
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

double QKDistFun::CdfStdNorm(double x) {
    if (std::isnan(x)) return x;
    return StdNormOfTwoParts(x, 0);
}

double QKDistFun::CdfNorm(double x, double mean, double sd) {
    if (std::isnan(x)) return x;
    if (!std::isfinite(mean) || !IsPositiveFinite(sd)) return QKMV::Missing();
    // The quotient in more digits than it takes can't overflow, and its rest is what a far tail magnifies.
    const WorkReal z = (static_cast<WorkReal>(x) - mean) / sd;
    const double high = static_cast<double>(z);
    return StdNormOfTwoParts(high, std::isinf(high) ? 0 : static_cast<double>(z - high));
}

double QKDistFun::IdfStdNorm(double p) {
    if (!IsProbability(p)) return QKMV::Missing();
    if (p == 0) return -kInfinity;
    if (p == 1) return kInfinity;
    return QuantileResult(StdNormQuantile(p));
}

double QKDistFun::CdfChi(double x, double df) {
    if (std::isnan(x)) return x;
    if (!IsPositiveFinite(df)) return QKMV::Missing();
    if (x <= 0) return 0;
    if (std::isinf(x)) return 1;
    const WorkReal a = static_cast<WorkReal>(df) / 2;
    const WorkReal half = static_cast<WorkReal>(x) / 2;
    return ProbabilityResult(a > kLargestGammaShape ? LargeGammaCdf(half, a)
                                                    : boost::math::gamma_p(a, half, MathPolicy()));
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

double QKDistFun::CdfBin(double x, double n, double p, int& err) {
    const bool isInDomain = n >= 0 && !std::isinf(n) && IsProbability(p) && x <= n;
    err = isInDomain ? 0 : 1;
    if (!isInDomain) return QKMV::Missing();
    const double successes = std::floor(x);
    const double trials = std::floor(n);
    if (successes < 0) return 0;
    if (successes == trials || p == 0) return 1;
    if (p == 1) return 0;
    if (p == 0.5 && trials <= kLargestExactTrials)
        return FairBinomial(static_cast<std::uint64_t>(successes), static_cast<std::uint64_t>(trials));

    const WorkReal q = 1 - static_cast<WorkReal>(p);
    const WorkReal deviation = DifferenceOfProducts(1, successes, trials, p);
    if (deviation <= 0) return ProbabilityResult(BinomialLowerTail(successes, trials, p, q, deviation));
    return ProbabilityResult(1 - BinomialLowerTail(trials - successes - 1, trials, q, p, -(deviation + 1)));
}

double QKDistFun::CDFHyper(double x, double total, double margin1, double margin2, int& status) {
    const auto isMargin = [total](double margin) { return margin >= 0 && margin <= total; };
    if (std::isnan(x) || !std::isfinite(total) || !isMargin(margin1) || !isMargin(margin2)) {
        status = 1;
        return QKMV::Missing();
    }
    status = 0;
    const WorkReal cell = std::floor(x);
    const WorkReal count = std::floor(total);
    const WorkReal row = std::floor(margin1);
    const WorkReal column = std::floor(margin2);
    const WorkReal otherRow = count - row;
    const WorkReal otherColumn = count - column;
    // The last two are the same but for a total beyond the whole numbers of the type.
    if (cell < std::max({WorkReal{0}, column - otherRow, row - otherColumn})) return 0;
    if (cell >= std::min(row, column)) return 1;

    const WorkReal deviation = DifferenceOfProducts(cell, count, row, column) / count;
    if (deviation <= 0) {
        return ProbabilityResult(HypergeometricLowerTail(cell, row, otherRow, column, otherColumn, count, deviation));
    }
    // The upper tail is the lower one of the other row's cell in the same column.
    return ProbabilityResult(
        1 - HypergeometricLowerTail(column - (cell + 1), otherRow, row, column, otherColumn, count, -(deviation + 1)));
}

double QKDistFun::zomrdnlgam(double x) {
    if (std::isnan(x)) return QKMV::Missing();
    if (std::isinf(x)) return kInfinity;
    if (x <= 0 && x == std::floor(x)) return kInfinity;
    return static_cast<double>(boost::math::lgamma(static_cast<WorkReal>(x), MathPolicy()));
}

}  // namespace QKMath
