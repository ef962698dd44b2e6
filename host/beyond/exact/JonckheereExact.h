#pragma once

#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// Exact significances of the test of Jonckheere and Terpstra, by all ways to share the cases out among the groups,
/// given the ties. The statistic is the number of pairs of cases of different groups of which the later group's is
/// larger, ties as one half: `greater` is small where values rise from group to group (Jonckheere, 1954, Biometrika 41,
/// 133-145).
///
/// Without ties the statistic is a sum of independent rank sum statistics, each group against all earlier ones. With
/// ties the blocks are gone through one after the other, with a distribution for each way to have shared out the cases
/// so far. Each tail is a sum of terms above 0, with a relative error below 1e-11 down to 1e-290.
///
/// Empty groups are left out; all tails are 1 where fewer than two are left.
ExactTails JonckheereExact(const TieBlocks& blocks);

/// About how many additions `JonckheereExact` takes; infinite where there are too many cases to think of it.
double JonckheereExactCost(const TieBlocks& blocks);

}  // namespace tarn
