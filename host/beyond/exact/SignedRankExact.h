#pragma once

#include <cstdint>
#include <vector>

#include "host/beyond/AscendingSample.h"
#include "host/beyond/ZeroMethod.h"
#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// What the exact signed rank test knows of the differences: the ranks of those that are not zero, by absolute value.
struct SignedRankScores {
    std::vector<std::int64_t> doubledRanks;  ///< distinct and ascending: twice the mid-ranks
    std::vector<std::int64_t> counts;        ///< how many differences have each of them
    /// Twice the sum of the positive ranks. Where it exceeds the range, which takes more than 2^31 differences, it
    /// stays at the largest number.
    std::int64_t doubledPositiveSum = 0;
    /// The part of that sum that no sign changes: of zeros half of whose ranks counts as positive.
    std::int64_t doubledFixedSum = 0;
};

/// Ranks the absolute values of the differences. Values that are equal but for the sign are tied.
SignedRankScores MakeSignedRankScores(const AscendingSample& differences, ZeroMethod zeros);

/// Exact significances of the signed rank test, by all ways to give signs to the differences that are not zero, each as
/// likely, given their absolute values. The statistic is the sum of the positive ranks: `greater` is small where
/// positive differences prevail.
///
/// Shift algorithm (Streitberg and Roehmel, 1986, Statistical Software Newsletter 12, 10-17). The smaller tail is
/// summed itself, with a relative error below 1e-11 down to 1e-290; smaller ones may come out as 0.
///
/// All tails are 1 where no difference is left.
ExactTails SignedRankExact(const SignedRankScores& scores);

/// About how many additions `SignedRankExact` takes; infinite where there are too many differences to think of it.
double SignedRankExactCost(const SignedRankScores& scores);

}  // namespace tarn
