#include "support/TARNRank.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/common/Truncation.h"

// ---- One by one ----

QKStatus TARNRank::AddValue(double value, double weight, std::int32_t group) {
    if (isFirstValue || !AreTied(value, currentValue)) BeginRun(value);
    AddToRun(weight, group);
    weightSeen += weight == TruncateToInt32(weight) ? std::fabs(weight) : std::numeric_limits<double>::infinity();
    return status;
}

void TARNRank::BeginRun(double opener) {
    if (!isFirstValue) CloseTieRun();
    casesBelow = arithmetic->Count(casesBelow + tieWeight);
    isFirstValue = false;
    currentValue = opener;
    tieWeight = 0;
    pendingGroups.clear();
    pendingWeights.clear();
}

void TARNRank::AddToRun(double weight, std::int32_t group) {
    tieWeight = arithmetic->Count(tieWeight + TruncateToInt32(weight));
    pendingGroups.push_back(group);
    pendingWeights.push_back(weight);
}

void TARNRank::CloseTieRun() {
    const std::int64_t twiceWithin = arithmetic->Count(tieWeight + 1);
    const double midRank = static_cast<double>(twiceWithin) * 0.5 + static_cast<double>(casesBelow);
    const std::int64_t twiceMidRank = twiceWithin + 2 * casesBelow;
    for (std::size_t i = 0; i < pendingGroups.size(); ++i) {
        GroupRankStats& stats = StatsOf(pendingGroups[i]);
        const double weight = pendingWeights[i];
        stats.sumOfRanks = arithmetic->Carefully([&] { return stats.sumOfRanks + midRank * weight; },
                                                 [&] {
                                                     stats.AddExactly(midRank, twiceMidRank, weight);
                                                     return stats.sumOfRanks;  // comes at the end
                                                 });
        if (pendingGroups[i] != keptGroup) continue;
        stats.Extend(midRank);
        stats.ranks.emplace_back(midRank, pendingWeights[i]);
    }
    tieCorrection.AddRun(currentValue, tieWeight);
}

GroupRankStats& TARNRank::GroupRanks(std::int32_t group) {
    GroupRankStats& stats = StatsOf(group);
    stats.sumOfRanks = arithmetic->Carefully([&] { return stats.sumOfRanks; }, [&] { return stats.Above(0); });
    return stats;
}

GroupRankStats& TARNRank::StatsOf(std::int32_t group) {
    const auto place = static_cast<std::size_t>(group);
    if (place >= groupRanks.size()) groupRanks.resize(place + 1);
    return groupRanks[place];
}

void TARNRank::Reset() {
    *this = TARNRank(*arithmetic);
}

// ---- Many at once ----

void TARNRank::AddAscending(const double* values, const std::int32_t* weights, const std::int32_t* groups,
                            std::size_t count) {
    static const std::vector<std::int32_t> kOnes(kBlock, 1);
    std::array<double, kBlock> takenValues;
    std::array<std::int32_t, kBlock> takenWeights;
    std::array<std::int32_t, kBlock> takenGroups;
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
        Block block{values + begin, weights == nullptr ? kOnes.data() : weights + begin, groups + begin,
                    std::min(kBlock, count - begin)};
        std::int32_t signs = 0;
        for (std::size_t i = 0; i < block.size; ++i) signs |= block.groups[i];
        if (signs < 0) {  // one of them is negative
            std::size_t taken = 0;
            for (std::size_t i = 0; i < block.size; ++i) {
                takenValues[taken] = block.values[i];
                takenWeights[taken] = block.weights[i];
                takenGroups[taken] = block.groups[i];
                taken += block.groups[i] >= 0 ? 1 : 0;
            }
            block = {takenValues.data(), takenWeights.data(), takenGroups.data(), taken};
        }
        if (block.size > 0) AddBlock(block);
    }
    AddExactSums();
}

void TARNRank::AddBlock(const Block& block) {
    constexpr std::size_t kFew = 16;
    std::int64_t weight = 0;
    for (std::size_t i = 0; i < block.size; ++i) weight += std::abs(std::int64_t{block.weights[i]});
    const double seen = weightSeen + static_cast<double>(weight);
    const bool isFinite = std::isfinite(block.values[0]) && std::isfinite(block.values[block.size - 1]);
    if (block.size < kFew || seen > kMostExactWeight || !isFinite) {
        AddOneByOne(block);
        return;
    }
    weightSeen = seen;

    std::size_t begin = 0;
    if (!isFirstValue) {
        while (begin < block.size && AreTied(block.values[begin], currentValue)) ++begin;
        AddToRun(block, begin);
        if (begin == block.size) return;
    }
    BeginRun(block.values[begin]);
    const Block runs = block.From(begin);
    const Block open = runs.From(AddClosedRuns(runs));
    currentValue = open.values[0];
    AddToRun(open, open.size);
}

/// Takes the first values of a block.
void TARNRank::AddToRun(const Block& block, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) tieWeight += block.weights[i];
    pendingGroups.insert(pendingGroups.end(), block.groups, block.groups + count);
    pendingWeights.insert(pendingWeights.end(), block.weights, block.weights + count);
}

void TARNRank::AddOneByOne(const Block& block) {
    AddExactSums();
    for (std::size_t i = 0; i < block.size; ++i) {
        static_cast<void>(AddValue(block.values[i], block.weights[i], block.groups[i]));  // it never fails
    }
}

namespace {

/// Marks the values that open a run, the first one among them, with 1, the others with 0.
void MarkOpeners(const double* values, std::size_t count, std::uint8_t* openers) {
    openers[0] = 1;
    unsigned nearTies = 0;
    for (std::size_t i = 1; i < count; ++i) {
        const unsigned isTied = TARNRank::AreTied(values[i], values[i - 1]) ? 1 : 0;
        const unsigned isOther = values[i] > values[i - 1] ? 1 : 0;
        openers[i] = static_cast<std::uint8_t>(1 - isTied);
        nearTies |= isTied & isOther;
    }
    if (nearTies == 0) return;  // a value that isn't tied with its neighbour isn't tied with what lies below
    double opener = values[0];
    for (std::size_t i = 1; i < count; ++i) {
        openers[i] = TARNRank::AreTied(values[i], opener) ? 0 : 1;
        if (openers[i] != 0) opener = values[i];
    }
}

}  // namespace

/// Takes the runs of a block but the last one, which may go on; the first value opens a run. The place of the last one
/// comes out.
std::size_t TARNRank::AddClosedRuns(const Block& block) {
    std::array<std::uint8_t, kBlock> openers;
    MarkOpeners(block.values, block.size, openers.data());
    std::array<std::int32_t, kBlock> runOf;
    std::array<std::int32_t, kBlock + 1> below;  // the weight below a run
    auto weight = static_cast<std::int32_t>(casesBelow);
    std::size_t runs = 0;
    std::size_t last = 0;
    for (std::size_t i = 0; i < block.size; ++i) {
        below[runs] = weight;
        runs += openers[i];
        last = openers[i] != 0 ? i : last;
        runOf[i] = static_cast<std::int32_t>(runs) - 1;
        weight += block.weights[i];
    }
    const std::size_t closed = runs - 1;
    casesBelow = below[closed];

    std::array<std::int32_t, kBlock> twiceRank;
    std::int32_t longest = 0;
    for (std::size_t run = 0; run < closed; ++run) {
        twiceRank[run] = below[run] + below[run + 1] + 1;
        longest = std::max(longest, below[run + 1] - below[run]);
    }
    if (longest >= 2) {
        for (std::size_t run = 0; run < closed; ++run) {
            tieCorrection.AddHigherRun(below[run + 1] - below[run]);
        }
    }

    std::int32_t highestGroup = 0;
    for (std::size_t i = 0; i < last; ++i) highestGroup = std::max(highestGroup, block.groups[i]);
    const std::size_t sumsNeeded = kSumsOfGroup * (static_cast<std::size_t>(highestGroup) + 1);
    if (sumsNeeded > exactSums.size()) exactSums.resize(sumsNeeded);
    std::int64_t* const sums = exactSums.data();
    for (std::size_t i = 0; i < last; ++i) {
        const auto group = static_cast<std::size_t>(block.groups[i]);
        const auto run = static_cast<std::size_t>(runOf[i]);
        sums[kSumsOfGroup * group + i % kSumsOfGroup] += std::int64_t{block.weights[i]} * twiceRank[run];
    }
    if (keptGroup == kNone) return last;

    GroupRankStats& kept = StatsOf(keptGroup);
    const std::size_t keptBefore = kept.ranks.size();
    std::size_t end = keptBefore;
    kept.ranks.resize(end + last);
    for (std::size_t i = 0; i < last; ++i) {
        kept.ranks[end] = std::pair(twiceRank[static_cast<std::size_t>(runOf[i])] * 0.5, block.weights[i]);
        end += block.groups[i] == keptGroup ? 1 : 0;
    }
    kept.ranks.resize(end);
    for (std::size_t i = keptBefore; i < end; ++i) kept.Extend(kept.ranks[i].first);
    return last;
}

void TARNRank::AddExactSums() {
    for (std::size_t group = 0; group < exactSums.size() / kSumsOfGroup; ++group) {
        std::int64_t twice = 0;
        for (std::size_t i = 0; i < kSumsOfGroup; ++i) twice += exactSums[kSumsOfGroup * group + i];
        if (twice == 0) continue;
        GroupRankStats& stats = StatsOf(static_cast<std::int32_t>(group));
        stats.sumOfRanks += static_cast<double>(twice) * 0.5;
        stats.twiceSumOfRanks += twice;
    }
    std::fill(exactSums.begin(), exactSums.end(), 0);
}
