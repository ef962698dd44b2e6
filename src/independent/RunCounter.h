#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

/// Counts the runs of group membership in the ascending order of a field. Equal values of both groups leave their order
/// open, so there are two counts: the smallest and the largest number that an order of them could give. Equal values
/// are a block; all products are 32 bits wide.
class RunCounter {
 public:
    using GroupCounts = std::array<std::int32_t, 2>;
    /// The size of a group that had no record; no real size is meant to equal it.
    static constexpr std::int32_t kNoRecord = -1;

    /// The values have to ascend.
    void Add(double value, std::size_t group, std::int32_t weight);
    /// After the last value.
    void Close();

    const GroupCounts& Counts() const { return groupCount; }
    std::int32_t MinRuns() const { return minRuns; }
    std::int32_t MaxRuns() const { return maxRuns; }
    /// Blocks that hold both groups, and the cases in them.
    std::int32_t TieBlocks() const { return tieBlocks; }
    std::int32_t TieCases() const { return tieCases; }

 private:
    void CloseBlock();
    void CloseOfOneGroup(std::int32_t difference);
    void CloseOfBothGroups(std::int32_t smaller, std::int32_t difference);
    void CountTies();

    GroupCounts groupCount{kNoRecord, kNoRecord};
    bool firstRecord = true;
    // The block in hand.
    double blockValue = 0;
    GroupCounts blockCount{};
    // The counts, and for each the last difference of the groups in a block that had one: its sign gives the group at
    // the end.
    std::int32_t minRuns = 1;
    std::int32_t maxRuns = 0;
    std::int32_t minSign = 0;
    std::int32_t maxSign = 0;
    std::int32_t tieBlocks = 0;
    std::int32_t tieCases = 0;
};
