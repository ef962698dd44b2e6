#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>

#include "support/Int32.h"

/// Counts the runs of group membership in the ascending order of a field. Equal values of both groups leave their order
/// open, so there are two counts: the smallest and the largest number that an order of them could give. Equal values
/// are a block; all products are 32 bits wide.
class RunCounter {
 public:
    using GroupCounts = std::array<std::int32_t, 2>;
    /// The size of a group that had no record; no real size is meant to equal it.
    static constexpr std::int32_t kNoRecord = -1;

    /// The values have to ascend.
    void Add(double value, std::size_t group, std::int32_t weight) {
        const bool isFirstOfGroup = groupCount[group] == kNoRecord;
        groupCount[group] = isFirstOfGroup ? weight : Add32(groupCount[group], weight);
        if (firstRecord) {
            firstRecord = false;
            blockValue = value;
        }
        if (value == blockValue) {
            blockCount[group] = isFirstOfGroup ? weight : Add32(blockCount[group], weight);
            return;
        }
        CloseBlock();
        if (!isFirstOfGroup) CountTies();
        blockValue = value;
        blockCount = {};
        blockCount[group] = weight;
    }
    /// The same of many; those of a group below 0 take no part.
    void Add(const double* values, const std::int32_t* groups, const std::int32_t* weights, std::size_t count);
    /// After the last value.
    void Close();

    const GroupCounts& Counts() const { return groupCount; }
    std::int32_t MinRuns() const { return minRuns; }
    std::int32_t MaxRuns() const { return maxRuns; }
    /// Blocks that hold both groups, and the cases in them.
    std::int32_t TieBlocks() const { return tieBlocks; }
    std::int32_t TieCases() const { return tieCases; }

 private:
    void CloseBlock() {
        const std::int32_t difference = Subtract32(blockCount[0], blockCount[1]);
        const std::int32_t smaller = std::min(blockCount[0], blockCount[1]);
        if (smaller == 0) {
            CloseOfOneGroup(difference);
        } else {
            CloseOfBothGroups(smaller, difference);
        }
    }
    /// Without branches, since nobody can foretell which group comes next.
    void CloseOfOneGroup(std::int32_t difference) {
        minRuns = Add32(minRuns, static_cast<std::int32_t>(Multiply32(minSign, difference) < 0));
        maxRuns = Add32(maxRuns, static_cast<std::int32_t>(Multiply32(difference, maxSign) < 1));
        maxSign = difference;
        minSign = difference;
    }
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
