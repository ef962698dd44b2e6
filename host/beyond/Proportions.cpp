#include "host/beyond/Proportions.h"

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>
#include <limits>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The correlation of two answers with a correction for continuity where it is positive; 0 where an answer is the same
/// in all pairs.
double CorrectedCorrelation(const PairedAnswers& answers, double n) {
    const auto& [a, b, c, d] = answers;
    const double margins = std::sqrt(a + b) * std::sqrt(c + d) * std::sqrt(a + c) * std::sqrt(b + d);
    if (margins == 0) return 0;
    const long double product = static_cast<long double>(a) * d - static_cast<long double>(b) * c;
    const double difference = static_cast<double>(product);
    return (difference > 0 ? std::max(0.0, difference - n / 2) : difference) / margins;
}

/// How far the difference of two shares reaches where the one reaches `first` and the other `second` to the other side.
double JointReach(double first, double second, double correlation) {
    return std::sqrt(std::max(0.0, first * first - 2 * correlation * first * second + second * second));
}

double OddsOf(double share) {
    return share / (1 - share);
}

}  // namespace

Estimate WilsonLimits(double share, double trials, double bound) {
    if (!(trials > 0) || !(bound > 0)) return {share, kNaN, kNaN};
    const double square = bound * bound;
    const double middle = share + square / (2 * trials);
    const double reach = bound * std::sqrt(share * (1 - share) / trials + square / (4 * trials * trials));
    const double scale = 1 + square / trials;
    // The ends are exact where all trials agree.
    const double lower = share == 0 ? 0 : std::max(0.0, (middle - reach) / scale);
    const double upper = share == 1 ? 1 : std::min(1.0, (middle + reach) / scale);
    return {share, lower, upper};
}

Estimate WilsonInterval(double count, double n, double level) {
    if (!(n > 0)) return {};
    if (!IsLevel(level)) return {count / n, kNaN, kNaN};
    return WilsonLimits(count / n, n, NormalBound(level));
}

Estimate ClopperPearsonInterval(double count, double n, double level) {
    if (!(n > 0)) return {};
    Estimate estimate{count / n, kNaN, kNaN};
    if (!IsLevel(level)) return estimate;
    const double tail = (1 - level) / 2;
    estimate.lower = count == 0 ? 0 : boost::math::ibeta_inv(count, n - count + 1, tail, QuietPolicy());
    estimate.upper = count == n ? 1 : boost::math::ibetac_inv(count + 1, n - count, tail, QuietPolicy());
    return estimate;
}

Estimate PairedProportionDifference(const PairedAnswers& answers, double level) {
    const double n = answers.a + answers.b + answers.c + answers.d;
    if (!(n > 0)) return {};
    const double difference = (answers.b - answers.c) / n;
    if (!IsLevel(level)) return {difference, kNaN, kNaN};
    const Estimate first = WilsonInterval(answers.a + answers.b, n, level);
    const Estimate second = WilsonInterval(answers.a + answers.c, n, level);
    const double correlation = CorrectedCorrelation(answers, n);
    const double below = JointReach(first.value - first.lower, second.upper - second.value, correlation);
    const double above = JointReach(first.upper - first.value, second.value - second.lower, correlation);
    return {difference, std::max(-1.0, difference - below), std::min(1.0, difference + above)};
}

Estimate OddsRatioOfPairs(double b, double c, double level) {
    const Estimate share = ClopperPearsonInterval(b, b + c, level);
    if (std::isnan(share.value)) return {};
    return {b / c, OddsOf(share.lower), OddsOf(share.upper)};
}

Estimate CohensG(double b, double c, double level) {
    const Estimate share = WilsonInterval(b, b + c, level);
    constexpr double kHalf = 0.5;
    return {share.value - kHalf, share.lower - kHalf, share.upper - kHalf};
}

}  // namespace tarn
