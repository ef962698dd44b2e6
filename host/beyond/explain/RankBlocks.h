#pragma once

#include <functional>
#include <string>
#include <vector>

#include "host/beyond/AscendingSample.h"
#include "host/beyond/explain/StepWriter.h"

namespace tarn {

/// Cases that share a rank: those of one value, or of one magnitude.
struct RankBlock {
    double value = 0;
    std::vector<double> counts;  ///< cases of each group, or of each sign: above 0, below 0
    double size = 0;             ///< all of them
    double rank = 0;             ///< the mean of the ranks that they take up

    double RankSumOf(std::size_t group) const { return counts[group] * rank; }
};

/// The cases of all samples in one order. Values that count as tied are equal.
std::vector<RankBlock> RankTogether(const std::vector<AscendingSample>& samples);

/// Differences by their magnitudes without zeros: the first count of a block is of those above 0, the second of those
/// below.
std::vector<RankBlock> RankMagnitudes(const AscendingSample& differences);

/// The sum of t^3 - t over the blocks, t their sizes.
long double TieSumOf(const std::vector<RankBlock>& blocks);

/// The rank sum of a group.
double RankSumOf(const std::vector<RankBlock>& blocks, std::size_t group);

/// Adds so many rows to a table, each by its number from 0; of many the first and the last ones, with dots between.
void AddRows(ExplanationTable& table, std::size_t count,
             const std::function<std::vector<std::string>(std::size_t)>& rowOf);

/// Adds a table of the blocks: the value, the cases of each group, the rank. Many groups have one column together.
void AddRankTable(StepWriter& steps, const std::string& title, const std::string& valueTitle,
                  const std::vector<std::string>& groups, const std::vector<RankBlock>& blocks);

}  // namespace tarn
