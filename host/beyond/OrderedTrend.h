#pragma once

#include <vector>

#include "host/beyond/AscendingSample.h"
#include "host/beyond/Estimate.h"

namespace tarn {

/// The effect of Jonckheere's test of ordered groups: of all pairs of cases of two groups the share in which the case
/// of the later group is larger, less the share in which it is smaller. It is (J - E(J)) / (max J - E(J)), J
/// Jonckheere's statistic with equal cases one half (Jonckheere, 1954, Biometrika 41, 133-145), and for two groups the
/// rank-biserial coefficient of the second against the first. The variance is that of placements in all other groups
/// (Lehmann, 1951, Annals of Mathematical Statistics 22, 165-179; Sen, 1960); the limits are those of
/// `LimitsOfPairShare`. Empty groups are left out. Nothing with fewer than two groups; no limits where `level` is none.
/// O(n log k).
Estimate OrderedTrend(const std::vector<AscendingSample>& groups, double level);

}  // namespace tarn
