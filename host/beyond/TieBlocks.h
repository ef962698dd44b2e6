#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tarn {

/// The cases of several groups in the order of their values: a block for each value that occurs, with how many cases
/// each group has of it. Whatever rests on ranks alone can be worked out from it.
struct TieBlocks {
    std::size_t groupCount = 0;
    std::vector<std::int64_t> counts;  ///< block by block, the groups side by side

    std::size_t BlockCount() const { return groupCount == 0 ? 0 : counts.size() / groupCount; }
    std::int64_t CountOf(std::size_t block, std::size_t group) const { return counts[block * groupCount + group]; }
};

}  // namespace tarn
