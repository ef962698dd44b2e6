#pragma once

#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// Exact significances of the rank sum test of Wilcoxon, Mann and Whitney, by all ways to choose as many cases as the
/// first of the two groups has, given the ties. The statistic is the rank sum of the first group with mid-ranks, or its
/// U, which differs by a constant: `greater` is small where the first group has the larger values.
///
/// The number of arrangements by rank sum comes from the shift algorithm (Streitberg and Roehmel, 1986, Statistical
/// Software Newsletter 12, 10-17) for the lower and for the upper cases on their own, and both are put together at the
/// end (van de Wiel, 2001, Computational Statistics 16, 519-538). Each tail is a sum of terms above 0 and never one
/// minus the other one where it is small, so that its relative error stays below 1e-11 down to 1e-290. Smaller ones may
/// come out as 0.
///
/// Without ties larger groups are worked out from the closed form of the generating function, see `UntiedRankSum`.
///
/// All tails are 1 where a group is empty. `blocks` has two groups.
ExactTails RankSumExact(const TieBlocks& blocks);

/// About how many additions `RankSumExact` takes; infinite where there are too many cases to think of it. With ties it
/// needs some 64 bytes of memory for each addition, divided by the number of cases: 20 MB at 1e8 and 1 GB at 2e10.
double RankSumExactCost(const TieBlocks& blocks);

}  // namespace tarn
