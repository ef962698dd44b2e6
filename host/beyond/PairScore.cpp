#include "host/beyond/PairScore.h"

#include <cmath>
#include <limits>

#include "host/beyond/Proportions.h"

namespace tarn {

namespace {

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

/// The share between the observed one and `end` whose distance from the observed one is `bound` standard deviations.
double LimitTowards(double end, double share, const ComparedPairs& pairs, double bound) {
    double near = share;
    double far = end;
    constexpr int kHalvings = 1100;  // as many as lead from 1 to the smallest double
    for (int i = 0; i < kHalvings; ++i) {
        const double middle = near + (far - near) / 2;
        if (middle == near || middle == far) break;
        const double distance = middle - share;
        const bool isWithin = distance * distance <= bound * bound * ExponentialPairVariance(middle, pairs);
        (isWithin ? near : far) = middle;
    }
    return far;
}

double DrawnToExponential(double share, double variance, const ComparedPairs& pairs) {
    const double exponential = ExponentialPairVariance(share, pairs);
    if (!(exponential > variance)) return variance;
    constexpr double kPull = 2;  // chosen by the coverage of small samples
    const double distance = 2 * share - 1;
    const double weight = distance * distance * kPull / (kPull + pairs.cases * share * (1 - share));
    return variance + weight * (exponential - variance);
}

}  // namespace

double ExponentialPairVariance(double share, const ComparedPairs& pairs) {
    const double ofShared = (1 - share) / (2 - share) + share / (1 + share);
    return share * (1 - share) * (1 + pairs.shared * ofShared) / pairs.count;
}

Estimate ExponentialPairScore(double share, const ComparedPairs& pairs, double bound) {
    if (!(pairs.count > 0) || !(bound > 0)) return {share, kNaN, kNaN};
    return {share, LimitTowards(0, share, pairs, bound), LimitTowards(1, share, pairs, bound)};
}

Estimate LimitsOfPairShare(double share, double variance, const ComparedPairs& pairs, double bound) {
    if (!(variance > 0) || !(share > 0 && share < 1)) return ExponentialPairScore(share, pairs, bound);
    const double drawn = DrawnToExponential(share, variance, pairs);
    return WilsonLimits(share, share * (1 - share) / drawn, bound);
}

}  // namespace tarn
