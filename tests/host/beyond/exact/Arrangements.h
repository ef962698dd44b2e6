#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <map>
#include <vector>

#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/ExactTails.h"

/// Small sets of data and all of their arrangements, one by one, to hold the exact significances to their definition.
namespace tarn::exact_test {

using Integers = std::vector<std::int64_t>;

inline TieBlocks TwoGroupBlocks(const Integers& first, const Integers& second) {
    TieBlocks blocks;
    blocks.groupCount = 2;
    for (std::size_t b = 0; b < first.size(); ++b) {
        blocks.counts.push_back(first[b]);
        blocks.counts.push_back(second[b]);
    }
    return blocks;
}

/// `cases` cases without ties, of which those from `from` on, one after the other, are the first group's.
inline TieBlocks UntiedBlocks(std::size_t cases, std::size_t from, std::size_t firstCount) {
    TieBlocks blocks;
    blocks.groupCount = 2;
    for (std::size_t i = 0; i < cases; ++i) {
        const bool isFirst = i >= from && i < from + firstCount;
        blocks.counts.push_back(isFirst ? 1 : 0);
        blocks.counts.push_back(isFirst ? 0 : 1);
    }
    return blocks;
}

inline void ExpectNear(const ExactTails& actual, const ExactTails& expected, double tolerance) {
    EXPECT_NEAR(actual.less, expected.less, tolerance);
    EXPECT_NEAR(actual.greater, expected.greater, tolerance);
    EXPECT_NEAR(actual.twoSided, expected.twoSided, tolerance);
}

inline bool AreNear(const ExactTails& actual, const ExactTails& expected, double tolerance) {
    return std::abs(actual.less - expected.less) <= tolerance &&
           std::abs(actual.greater - expected.greater) <= tolerance &&
           std::abs(actual.twoSided - expected.twoSided) <= tolerance;
}

/// Relative to the expected number.
inline void ExpectClose(double actual, double expected, double tolerance = 1e-11) {
    EXPECT_NEAR(actual, expected, tolerance * std::abs(expected));
}

/// The share of the arrangements whose statistic is as small, as large or as far from the mean of all.
inline ExactTails TailsAmong(const Integers& statistics, std::int64_t observed) {
    const auto count = static_cast<std::int64_t>(statistics.size());
    std::int64_t sum = 0;
    for (const std::int64_t statistic : statistics) sum += statistic;
    Integers reached(3, 0);
    for (const std::int64_t statistic : statistics) {
        reached[0] += statistic <= observed ? 1 : 0;
        reached[1] += statistic >= observed ? 1 : 0;
        reached[2] += std::abs(count * statistic - sum) >= std::abs(count * observed - sum) ? 1 : 0;
    }
    const auto share = [&](std::size_t i) { return static_cast<double>(reached[i]) / static_cast<double>(count); };
    return {share(0), share(1), share(2)};
}

/// Calls `visit` with every list of `length` numbers from 0 to `most`.
template <typename Visit>
void ForEveryList(std::size_t length, std::int64_t most, const Visit& visit) {
    Integers list(length, 0);
    for (;;) {
        visit(list);
        std::size_t place = 0;
        while (place < length && list[place] == most) list[place++] = 0;
        if (place == length) return;
        ++list[place];
    }
}

/// Calls `visit` with every ascending list of `length` numbers from `least` to `most`.
template <typename Visit>
void ForEveryAscendingList(std::size_t length, std::int64_t least, std::int64_t most, const Visit& visit) {
    Integers list(length, least);
    for (;;) {
        visit(list);
        std::size_t place = length;
        while (place > 0 && list[place - 1] == most) --place;
        if (place == 0) return;
        const std::int64_t next = list[place - 1] + 1;
        for (std::size_t i = place - 1; i < length; ++i) list[i] = next;
    }
}

inline TieBlocks BlocksOf(const Integers& values, const Integers& groups, std::size_t groupCount) {
    TieBlocks blocks;
    blocks.groupCount = groupCount;
    for (std::size_t i = 0; i < values.size(); ++i) {
        if (i == 0 || values[i] != values[i - 1]) blocks.counts.resize(blocks.counts.size() + groupCount, 0);
        const std::size_t block = blocks.BlockCount() - 1;
        ++blocks.counts[block * groupCount + static_cast<std::size_t>(groups[i])];
    }
    return blocks;
}

inline Integers SizesOf(const Integers& groups, std::size_t groupCount) {
    Integers sizes(groupCount, 0);
    for (const std::int64_t group : groups) ++sizes[static_cast<std::size_t>(group)];
    return sizes;
}

/// Among equal values the groups ascend: of arrangements that make the same data it is the first one.
inline bool IsFirstOfItsKind(const Integers& values, const Integers& groups) {
    for (std::size_t i = 1; i < values.size(); ++i) {
        if (values[i] == values[i - 1] && groups[i] < groups[i - 1]) return false;
    }
    return true;
}

/// For every set of 1 to `mostCases` cases with values from 1 to 4 in `groupCount` groups, some of which may be empty:
/// calls `check(blocks, statistics of all arrangements with these sizes, statistic)`. `statisticOf(values, groups)`
/// returns a whole number.
template <typename Statistic, typename Check>
void ForEveryDataSet(std::size_t mostCases, std::size_t groupCount, const Statistic& statisticOf, const Check& check) {
    const auto lastGroup = static_cast<std::int64_t>(groupCount) - 1;
    for (std::size_t cases = 1; cases <= mostCases; ++cases) {
        ForEveryAscendingList(cases, 1, 4, [&](const Integers& values) {
            std::map<Integers, Integers> statisticsBySizes;
            ForEveryList(cases, lastGroup, [&](const Integers& groups) {
                statisticsBySizes[SizesOf(groups, groupCount)].push_back(statisticOf(values, groups));
            });
            ForEveryList(cases, lastGroup, [&](const Integers& groups) {
                if (!IsFirstOfItsKind(values, groups)) return;
                check(BlocksOf(values, groups, groupCount), statisticsBySizes[SizesOf(groups, groupCount)],
                      statisticOf(values, groups));
            });
        });
    }
}

/// Twice the number of pairs of cases of two groups of which the one of the group with the higher number is larger,
/// ties as one half.
inline std::int64_t DoubledPairs(const Integers& values, const Integers& groups) {
    std::int64_t doubled = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        for (std::size_t j = 0; j < values.size(); ++j) {
            if (groups[i] >= groups[j]) continue;
            doubled += values[i] < values[j] ? 2 : (values[i] == values[j] ? 1 : 0);
        }
    }
    return doubled;
}

}  // namespace tarn::exact_test
