#include "host/beyond/MedianInterval.h"

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <cmath>

#include "host/beyond/IntervalScales.h"
#include "host/beyond/Quartiles.h"
#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

constexpr double kFair = 0.5;

/// The probability of `successes` or fewer, from 0 to below n, in n fair trials.
double FairBinomial(double successes, double n) {
    return boost::math::ibetac(successes + 1, n - successes, kFair, QuietPolicy());
}

/// The largest r from 0 to half of n with P(B < r) <= tail.
double LargestRank(double n, double tail) {
    // A tail that is met exactly, as 1/32 of 5 trials, may come out a rounding off.
    constexpr double kRounding = 1e-12;
    const double allowed = tail * (1 + kRounding);
    double fits = 0;
    double tooLarge = std::floor(n / 2) + 1;
    while (tooLarge - fits > 1) {
        const double middle = std::floor((fits + tooLarge) / 2);
        (FairBinomial(middle - 1, n) <= allowed ? fits : tooLarge) = middle;
    }
    return fits;
}

}  // namespace

MedianEstimate MedianInterval(const AscendingSample& sample, double level) {
    MedianEstimate estimate;
    estimate.median.value = Quantile(sample, kFair);
    const double n = sample.size;
    if (!(n > 0) || !IsLevel(level)) return estimate;
    const double rank = LargestRank(n, (1 - level) / 2);
    if (rank == 0) return estimate;
    estimate.median.lower = ValueAtPlace(sample, rank - 1);
    estimate.median.upper = ValueAtPlace(sample, n - rank);
    estimate.coverage = 1 - 2 * FairBinomial(rank - 1, n);
    return estimate;
}

}  // namespace tarn
