#pragma once

#include "host/beyond/DistinctValues.h"

namespace tarn {

/// What the pairs of two samples say, a case of the first with each of the second. The placement of a case is the share
/// of the other sample that it beats in its pairs: a case of the first is to be larger, one of the second smaller, and
/// equal ones count one half (Sen, 1960, Calcutta Statistical Association Bulletin 10, 1-18; DeLong, DeLong and
/// Clarke-Pearson, 1988, Biometrics 44, 837-845).
struct Placements {
    double pairsWon = 0;       ///< U of the first sample: pairs in which its case is larger, equal ones one half
    double share = 0;          ///< U / (n1 n2), the mean placement in either sample
    double firstSquares = 0;   ///< sum of the squared deviations of the first sample's placements from their mean
    double secondSquares = 0;  ///< the same of the second sample
};

/// Both samples have one case or more. O(n1 + n2).
Placements PlacementsOf(const AscendingSample& first, const AscendingSample& second);
Placements PlacementsOf(const DistinctValues& first, const DistinctValues& second);

}  // namespace tarn
