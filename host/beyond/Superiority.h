#pragma once

#include "host/beyond/AscendingSample.h"
#include "host/beyond/Estimate.h"

namespace tarn {

/// How often a case of one sample is larger than one of another.
struct Superiority {
    double pairsWon = 0;    ///< U of the first sample: pairs in which its case is larger, equal ones one half
    Estimate probability;   ///< P(X > Y) + P(X = Y) / 2, X of the first sample
    Estimate rankBiserial;  ///< 2 P - 1 (Cureton, 1956, Psychometrika 21, 287-290; Wendt, 1972, European Journal of
                            ///< Social Psychology 2, 463-465)
    /// Of the probability, by placements (Sen, 1960, Calcutta Statistical Association Bulletin 10, 1-18; DeLong, DeLong
    /// and Clarke-Pearson, 1988, Biometrics 44, 837-845); no number where a sample has one case.
    double variance = 0;
};

/// The probability of superiority, first sample against second. The limits are those of `LimitsOfPairShare`: in small
/// samples they keep the level better than limits by the variance above alone, on the scale of the logit, do (89 % for
/// 95 % at P = .95) and than method 5 of Newcombe (2006; 87 % where the spreads differ); they come to the former as the
/// samples grow. No numbers where a sample is empty, no limits where `level` is none. O(n1 + n2).
Superiority ProbabilityOfSuperiority(const AscendingSample& first, const AscendingSample& second, double level);

}  // namespace tarn
