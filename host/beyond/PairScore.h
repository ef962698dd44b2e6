#pragma once

#include "host/beyond/Estimate.h"

namespace tarn {

/// Pairs of cases that are compared, each with one winner.
struct ComparedPairs {
    double count = 0;  ///< of the pairs
    double cases = 0;  ///< from which the pairs are made
    /// Of a pair, in how many other pairs each of its two cases is, on the mean of both cases and all pairs. Of two
    /// samples (n1 + n2) / 2 - 1.
    double shared = 0;
};

/// The variance of a share of pairs between two exponential distributions (Hanley and McNeil, 1982, Radiology 143,
/// 29-36; with `shared` as by Newcombe, 2006, Statistics in Medicine 25, 559-573, method 5):
///
///   t (1 - t) (1 + s ((1 - t) / (2 - t) + t / (1 + t))) / m,   t the share, m the count of pairs, s their `shared`.
double ExponentialPairVariance(double share, const ComparedPairs& pairs);

/// A share of pairs with limits by the score method: those shares for which the observed one is `bound` standard
/// deviations away by the variance above (Newcombe, 2006, method 5). It has limits for a share of 0 and 1, too.
Estimate ExponentialPairScore(double share, const ComparedPairs& pairs, double bound);

/// A share of pairs with limits by Wilson's method (1927, Journal of the American Statistical Association 22, 209-212)
/// for as many independent trials as would have the share's variance.
///
/// `variance`: that of DeLong, DeLong and Clarke-Pearson (1988) and of Sen (1960), or its like for other pairs. It
/// comes out too small where few cases make up all lost pairs. It is therefore drawn to the variance of exponential
/// distributions, where that is larger, by (2t - 1)^2 c / (c + N t (1 - t)), t the share, N the cases, c = 2: hardly at
/// all near one half and with many cases. Where the variance is 0 or no number, limits are those of
/// `ExponentialPairScore`. The simulated coverage is in docs/numerics.md.
Estimate LimitsOfPairShare(double share, double variance, const ComparedPairs& pairs, double bound);

}  // namespace tarn
