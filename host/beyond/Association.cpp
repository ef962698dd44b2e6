#include "host/beyond/Association.h"

#include <algorithm>
#include <boost/math/distributions/chi_squared.hpp>
#include <boost/math/distributions/fisher_f.hpp>
#include <boost/math/distributions/non_central_chi_squared.hpp>
#include <boost/math/distributions/non_central_f.hpp>
#include <boost/math/tools/toms748_solve.hpp>
#include <cmath>
#include <cstdint>
#include <limits>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
/// Beyond it a series of the noncentral distributions takes long, and a normal approximation is good.
constexpr double kLargestSeries = 1e4;

/// Both tails: as small or smaller, and larger.
struct Tails {
    double lower;
    double upper;
};

template <typename Distribution>
Tails TailsOf(const Distribution& distribution, double statistic) {
    return {cdf(distribution, statistic), cdf(complement(distribution, statistic))};
}

Tails NormalTails(double z) {
    const double root = std::sqrt(2.0);
    return {std::erfc(-z / root) / 2, std::erfc(z / root) / 2};
}

/// The noncentral F distribution as a normal one; that of chi-square with infinite second degrees of freedom (Severo
/// and Zelen, 1960, Biometrika 47, 411-416; Abramowitz and Stegun, 26.6.27).
Tails ApproximateTails(double f, double degrees1, double degrees2, double noncentrality) {
    const double sum = degrees1 + noncentrality;
    const double ofFirst = 2.0 / 9 * (sum + noncentrality) / (sum * sum);
    const double ofSecond = 2.0 / 9 / degrees2;
    const double root = std::cbrt(f * degrees1 / sum);
    return NormalTails((root * (1 - ofSecond) - (1 - ofFirst)) / std::sqrt(ofFirst + ofSecond * root * root));
}

Tails ChiSquareTails(double chiSquare, double degrees, double noncentrality) {
    if (noncentrality > kLargestSeries) return ApproximateTails(chiSquare / degrees, degrees, kInfinity, noncentrality);
    if (noncentrality == 0)
        return TailsOf(boost::math::chi_squared_distribution<double, QuietPolicy>(degrees), chiSquare);
    return TailsOf(boost::math::non_central_chi_squared_distribution<double, QuietPolicy>(degrees, noncentrality),
                   chiSquare);
}

Tails FTails(double f, double degrees1, double degrees2, double noncentrality) {
    // Beside so many degrees of freedom the denominator is 1 but for 1e-4.
    constexpr double kManyDegrees = 1e9;
    if (noncentrality > kLargestSeries) return ApproximateTails(f, degrees1, degrees2, noncentrality);
    if (degrees2 > kManyDegrees) return ChiSquareTails(f * degrees1, degrees1, noncentrality);
    if (noncentrality == 0)
        return TailsOf(boost::math::fisher_f_distribution<double, QuietPolicy>(degrees1, degrees2), f);
    return TailsOf(boost::math::non_central_f_distribution<double, QuietPolicy>(degrees1, degrees2, noncentrality), f);
}

/// Where a function that falls, from above 0 at 0, is 0.
template <typename Function>
double RootAboveZero(Function function, double guess) {
    if (!(function(0.0) > 0)) return 0;
    double low = 0;
    double high = guess + 1;
    constexpr int kDoublings = 200;
    for (int i = 0; i < kDoublings && function(high) > 0; ++i) {
        low = high;
        high *= 2;
    }
    constexpr int kBits = 44;
    std::uintmax_t steps = 200;
    const auto bracket = boost::math::tools::toms748_solve(
        function, low, high, boost::math::tools::eps_tolerance<double>(kBits), steps, QuietPolicy());
    return bracket.first + (bracket.second - bracket.first) / 2;
}

/// `tails` takes a noncentrality; `guess` is about the statistic's own.
template <typename TailsAt>
Estimate LimitsOfNoncentrality(TailsAt tails, double guess, double level) {
    const double rare = (1 - level) / 2;
    const auto lowerIsTooSmall = [&](double noncentrality) { return rare - tails(noncentrality).upper; };
    const auto upperIsTooSmall = [&](double noncentrality) { return tails(noncentrality).lower - rare; };
    return {guess, RootAboveZero(lowerIsTooSmall, guess), RootAboveZero(upperIsTooSmall, guess)};
}

/// A share of squares with limits by F = (share / degrees1) / ((1 - share) / degrees2) and a noncentrality of
/// `scale` share / (1 - share).
Estimate ShareOfSquares(double share, double degrees1, double degrees2, double scale, double level) {
    if (!IsLevel(level) || !(degrees1 > 0 && degrees2 > 0) || std::isnan(share)) {
        return {share, std::numeric_limits<double>::quiet_NaN(), std::numeric_limits<double>::quiet_NaN()};
    }
    if (share >= 1) return {share, 1, 1};
    const double f = share / degrees1 / ((1 - share) / degrees2);
    const Estimate noncentrality = NoncentralityOfF(f, degrees1, degrees2, level);
    const auto shareAt = [&](double limit) { return limit / (limit + scale); };
    return {share, std::min(share, shareAt(noncentrality.lower)), std::max(share, shareAt(noncentrality.upper))};
}

}  // namespace

Estimate NoncentralityOfChiSquare(double chiSquare, double degrees, double level) {
    const auto tails = [&](double noncentrality) { return ChiSquareTails(chiSquare, degrees, noncentrality); };
    return LimitsOfNoncentrality(tails, std::max(0.0, chiSquare - degrees), level);
}

Estimate NoncentralityOfF(double f, double degrees1, double degrees2, double level) {
    const auto tails = [&](double noncentrality) { return FTails(f, degrees1, degrees2, noncentrality); };
    return LimitsOfNoncentrality(tails, std::max(0.0, f * degrees1 - degrees1), level);
}

Estimate CohensW(double chiSquare, double n, double degrees, double level, double largest) {
    if (!(n > 0)) return {};
    Estimate estimate;
    estimate.value = std::sqrt(chiSquare / n);
    if (!IsLevel(level) || !(degrees > 0)) return estimate;
    const Estimate noncentrality = NoncentralityOfChiSquare(chiSquare, degrees, level);
    estimate.lower = std::min(estimate.value, std::sqrt(noncentrality.lower / n));
    estimate.upper = std::max(estimate.value, std::min(largest, std::sqrt(noncentrality.upper / n)));
    return estimate;
}

Estimate EpsilonSquared(double h, double n, double groups, double level) {
    if (!(n > 1)) return {};
    return ShareOfSquares(h / (n - 1), groups - 1, n - groups, n, level);
}

Estimate KendallsW(double q, double n, double k, double level) {
    if (!(n > 0 && k > 1)) return {};
    return ShareOfSquares(q / (n * (k - 1)), k - 1, (n - 1) * (k - 1), n * (k - 1), level);
}

}  // namespace tarn
