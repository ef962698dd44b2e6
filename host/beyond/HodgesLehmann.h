#pragma once

#include "host/beyond/AscendingSample.h"
#include "host/beyond/Estimate.h"

namespace tarn {

/// The shift of the first sample against the second: the median of all n1 n2 differences (Hodges and Lehmann, 1963,
/// Annals of Mathematical Statistics 34, 598-611). The limits are the C-th smallest and the C-th largest difference
/// (Lehmann, 1963, Annals of Mathematical Statistics 34, 1507-1512; Hollander, Wolfe and Chicken, 2014, Nonparametric
/// Statistical Methods, section 4.3). With n1 + n2 <= 50 C is the largest number with P(U < C) <= (1 - level) / 2 by
/// the distribution of U without ties, which is on the safe side where there are some. Beyond, it is the whole part of
///
///   n1 n2 / 2 - z sqrt(n1 n2 / 12 (n + 1 - sum of (t^3 - t) / (n (n - 1)))),   n = n1 + n2,
///
/// t the numbers of equal cases within a sample: those ties stay whatever the shift is. No limits where C is below 1 or
/// `level` is none; nothing where a sample is empty. Exact to the double nearest to each difference.
Estimate ShiftOfSamples(const AscendingSample& first, const AscendingSample& second, double level);

/// The pseudo-median of one sample: the median of the means of all pairs of cases, those of a case with itself included
/// (Hodges and Lehmann, 1963; Hollander, Wolfe and Chicken, 2014, section 3.3). The limits are the C-th smallest and
/// the C-th largest mean, with C by the distribution of the signed rank statistic without ties and zeros for n <= 50,
/// and beyond the whole part of
///
///   n (n + 1) / 4 - z sqrt(n (n + 1) (2n + 1) / 24 - sum of (t^3 - t) / 48),   t the numbers of equal cases.
Estimate PseudoMedian(const AscendingSample& sample, double level);

/// About how many nanoseconds the functions above take, by how many values are different, before anything is done: some
/// 60 ms for 500,000 and 500,000. It may be twice as much where many differences are equal but for their rounding, and
/// seven times where all values lie on one lattice.
double ShiftCost(double firstValues, double secondValues);
double PseudoMedianCost(double values);

}  // namespace tarn
