#include "host/beyond/exact/GroupScores.h"

#include <algorithm>
#include <cstdlib>
#include <numeric>

namespace tarn {

namespace {

/// The scores of the blocks, whatever their mean, turned into the smallest whole numbers with a mean of 0.
GroupScores Centred(const TieBlocks& blocks, const std::vector<std::int64_t>& scores) {
    __extension__ using Wide = __int128;
    GroupScores result;
    result.blockSizes = BlockSizes(blocks);
    result.cases = std::accumulate(result.blockSizes.begin(), result.blockSizes.end(), std::int64_t{0});
    Wide total = 0;
    for (std::size_t i = 0; i < scores.size(); ++i) total += Wide{scores[i]} * result.blockSizes[i];
    std::vector<Wide> distances;
    Wide divisor = 0;
    for (const std::int64_t score : scores) {
        distances.push_back(Wide{score} * result.cases - total);
        Wide rest = distances.back() < 0 ? -distances.back() : distances.back();
        while (rest != 0) {
            divisor %= rest;
            std::swap(divisor, rest);
        }
    }
    for (const Wide distance : distances) {
        result.scores.push_back(divisor == 0 ? 0 : static_cast<std::int64_t>(distance / divisor));
    }
    const std::vector<std::int64_t> groupSizes = GroupSizes(blocks);
    for (std::size_t group = 0; group < groupSizes.size(); ++group) {
        if (groupSizes[group] == 0) continue;
        std::int64_t sum = 0;
        for (std::size_t i = 0; i < scores.size(); ++i) sum += result.scores[i] * blocks.CountOf(i, group);
        result.groupSizes.push_back(groupSizes[group]);
        result.sums.push_back(sum);
    }
    return result;
}

}  // namespace

std::int64_t GroupScores::LargestScore() const {
    std::int64_t largest = 0;
    for (const std::int64_t score : scores) largest = std::max(largest, std::abs(score));
    return largest;
}

std::vector<std::int64_t> BlockSizes(const TieBlocks& blocks) {
    std::vector<std::int64_t> sizes(blocks.BlockCount());
    for (std::size_t i = 0; i < sizes.size(); ++i) {
        for (std::size_t group = 0; group < blocks.groupCount; ++group) sizes[i] += blocks.CountOf(i, group);
    }
    return sizes;
}

std::vector<std::int64_t> GroupSizes(const TieBlocks& blocks) {
    std::vector<std::int64_t> sizes(blocks.groupCount);
    for (std::size_t i = 0; i < blocks.counts.size(); ++i) sizes[i % blocks.groupCount] += blocks.counts[i];
    return sizes;
}

GroupScores RankScores(const TieBlocks& blocks) {
    std::vector<std::int64_t> doubledRanks;
    std::int64_t below = 0;
    for (const std::int64_t size : BlockSizes(blocks)) {
        doubledRanks.push_back(2 * below + size + 1);
        below += size;
    }
    return Centred(blocks, doubledRanks);
}

GroupScores MedianScores(const TieBlocks& blocks, std::size_t blocksBelow) {
    std::vector<std::int64_t> above(blocks.BlockCount());
    for (std::size_t i = blocksBelow; i < above.size(); ++i) above[i] = 1;
    return Centred(blocks, above);
}

}  // namespace tarn
