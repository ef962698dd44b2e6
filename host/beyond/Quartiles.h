#pragma once

#include "host/beyond/AscendingSample.h"

namespace tarn {

/// The value of the case at a place, counted from 0 in ascending order; `place` is a whole number from 0 to below the
/// size. O(1), O(values) with weights.
double ValueAtPlace(const AscendingSample& sample, double place);

/// The quantile at a share from 0 to 1: between the cases beside (n - 1) share on a straight line (Hyndman and Fan,
/// 1996, American Statistician 50, 361-365, type 7). A weight counts as that many cases. NaN of an empty sample and of
/// a share outside.
double Quantile(const AscendingSample& sample, double share);

struct Summary {
    double n = 0;  ///< number of cases
    double firstQuartile = 0;
    double median = 0;
    double thirdQuartile = 0;
};

Summary SummaryOf(const AscendingSample& sample);

}  // namespace tarn
