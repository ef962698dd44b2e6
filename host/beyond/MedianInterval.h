#pragma once

#include "host/beyond/AscendingSample.h"
#include "host/beyond/Estimate.h"

namespace tarn {

struct MedianEstimate {
    Estimate median;
    /// Of the interval, by the binomial distribution, for a continuous distribution; of another one it is larger. 0
    /// where there is no interval.
    double coverage = 0;
};

/// The median of the sample and the interval from the r-th smallest to the r-th largest case whose coverage,
/// 1 - 2 P(B < r) with B binomial of n fair trials, is `level` or more with the largest r; it assumes no distribution
/// (Thompson, 1936, Annals of Mathematical Statistics 7, 122-128; Hahn and Meeker, 1991, Statistical Intervals,
/// section 5.2). No limits where the range of the sample doesn't reach the level: below n = 6 at 95 %.
MedianEstimate MedianInterval(const AscendingSample& sample, double level);

}  // namespace tarn
