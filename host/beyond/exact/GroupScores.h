#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "host/beyond/TieBlocks.h"

namespace tarn {

/// Cases of groups with a whole-number score for each of the blocks of equal values.
struct GroupScores {
    std::vector<std::int64_t> scores;      ///< of the blocks; smallest whole numbers with a mean of 0 over the cases
    std::vector<std::int64_t> blockSizes;  ///< cases in a block
    std::vector<std::int64_t> groupSizes;  ///< cases in a group; groups without cases are left out
    std::vector<std::int64_t> sums;        ///< of the scores of each of these groups
    std::int64_t cases = 0;

    /// The largest distance of a score from 0.
    std::int64_t LargestScore() const;
};

/// Scores that rise and fall with the ranks, or with whether a value is above the median. The sums of the cases' scores
/// tell the groups apart as rank sums and counts do, and their expectation is 0 for each group and any arrangement.
/// Exact for up to 2^30 cases in all.
GroupScores RankScores(const TieBlocks& blocks);
/// `blocksBelow`: the blocks, from the first, whose values are not above the median; the others score higher.
GroupScores MedianScores(const TieBlocks& blocks, std::size_t blocksBelow);

/// Cases of all groups, in each of the blocks.
std::vector<std::int64_t> BlockSizes(const TieBlocks& blocks);
/// Cases of all blocks, in each of the groups.
std::vector<std::int64_t> GroupSizes(const TieBlocks& blocks);

}  // namespace tarn
