#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

#include "platform/common/QKMV.h"

/// Counts the runs of group membership in the ascending order of a field, block by block of equal values: the fewest
/// and the most runs that any order within the blocks gives.
class RunCounter {
 public:
    /// Takes a record of group 0 or 1, in ascending order of the values.
    void Add(double value, std::int32_t weight, std::size_t group);
    /// Closes the last block.
    void Finish();

    std::int32_t FewestRuns() const { return minRuns; }
    std::int32_t MostRuns() const { return maxRuns; }
    /// The weighted size of a group; -1 for one that had no record.
    std::int32_t GroupCount(std::size_t group) const { return groupCount[group]; }
    /// Blocks that hold both groups, and the weight in them.
    std::int32_t TieBlocks() const { return tieBlocks; }
    std::int32_t TieCases() const { return tieCases; }

 private:
    static constexpr std::int32_t kNoRecordYet = -1;

    void CloseBlock();
    void NoteTie();

    bool firstRecord = true;
    double blockValue = 0;
    std::array<std::int32_t, 2> groupCount{kNoRecordYet, kNoRecordYet};
    std::array<std::int32_t, 2> blockCount{0, 0};
    std::int32_t maxSign = 0;
    std::int32_t minSign = 0;
    std::int32_t minRuns = 1;
    std::int32_t maxRuns = 0;
    std::int32_t tieBlocks = 0;
    std::int32_t tieCases = 0;
};

/// The normal approximation of a number of runs among n1 and n2 cases; both missing where the variance isn't positive.
struct RunStatistics {
    double standardError = QKMV::Missing();
    double z = QKMV::Missing();
};
RunStatistics NormalRunStatistics(std::int32_t n1, std::int32_t n2, std::int32_t runs);

/// P(R <= runs), each arrangement of n1 and n2 cases being as likely as any other; missing where a term overflows.
double ExactRunSignificance(std::int32_t n1, std::int32_t n2, std::int32_t runs);
