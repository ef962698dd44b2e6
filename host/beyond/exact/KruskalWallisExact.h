#pragma once

#include <optional>

#include "host/beyond/TieBlocks.h"

namespace tarn {

/// P(H >= h) of the Kruskal-Wallis test over all ways to give the observed values to the groups, tied values included;
/// h is that of the blocks. Nothing with fewer than two groups that have cases, and where the states would take more
/// memory than is allowed (256 MiB).
///
/// The values go to the groups one by one. A state says how many cases each group has and what their ranks add up to;
/// groups of one size may be exchanged. After Kruskal and Wallis (1952), Journal of the American Statistical
/// Association 47, 583-621, and the recursion over sums of ranks that Streitberg and Roehmel (1986), Statistical
/// Software Newsletter 12, 10-17, give for two groups.
std::optional<double> KruskalWallisExact(const TieBlocks& blocks);

/// About how many steps that takes, at 1e8 a second; infinite where it isn't possible. Quickly found for any blocks.
double KruskalWallisExactSteps(const TieBlocks& blocks);

}  // namespace tarn
