#include "host/beyond/exact/SmirnovExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

/// The largest difference of the first group's distribution function and the second's, times both sizes, at any of the
/// values; `sign` -1: of the second's less the first's; 0: of both.
std::int64_t LargestDifference(const Integers& values, const Integers& groups, int sign) {
    const Integers sizes = SizesOf(groups, 2);
    std::int64_t largest = 0;
    for (const std::int64_t value : values) {
        std::int64_t difference = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (values[i] <= value) difference += groups[i] == 0 ? sizes[1] : -sizes[0];
        }
        largest = std::max(largest, sign == 0 ? std::abs(difference) : sign * difference);
    }
    return largest;
}

TEST(SmirnovExact, IsTheShareOfAllArrangements) {
    std::size_t wrong = 0;
    for (const int sign : {-1, 0, 1}) {
        const auto statistic = [&](const Integers& values, const Integers& groups) {
            return LargestDifference(values, groups, sign);
        };
        ForEveryDataSet(8, 2, statistic, [&](const TieBlocks& blocks, const Integers& all, std::int64_t observed) {
            const SmirnovTails tails = SmirnovExact(blocks);
            const double actual = sign == 0 ? tails.twoSided : (sign < 0 ? tails.less : tails.greater);
            wrong += std::abs(actual - TailsAmong(all, observed).greater) <= 1e-12 ? 0 : 1;
        });
    }
    EXPECT_EQ(wrong, 0u);
}

// R 4.2: ks.test(x, y, alternative, exact = TRUE) with x = 1 2 2 3 3 3 4 5 5 7 and y = 2 3 4 4 5 6 6 7 7 8 8 9.
TEST(SmirnovExact, IsThatOfRWithTies) {
    const SmirnovTails tails = SmirnovExact(TwoGroupBlocks({1, 2, 3, 1, 2, 0, 1, 0, 0}, {0, 1, 1, 2, 1, 2, 2, 2, 1}));
    ExpectClose(tails.difference, 58. / 120);
    ExpectClose(tails.twoSided, 0.075883868453520464);
    ExpectClose(tails.greater, 0.039544047283977535);
    EXPECT_EQ(tails.differenceBelow, 0);
    EXPECT_EQ(tails.less, 1);
}

// SciPy 1.17: ks_2samp(u, v, alternative, method="exact") with u = .1 .4 .7 1.1 1.5 2.2 2.9 3.1 and
// v = .5 1.2 1.9 2.3 3.3 3.6 4.1 4.4 5 5.2 6.1.
TEST(SmirnovExact, IsThatOfSciPyWithoutTies) {
    const Integers first{1, 1, 0, 1, 1, 0, 1, 0, 1, 0, 1, 1, 0, 0, 0, 0, 0, 0, 0};
    Integers second;
    for (const std::int64_t count : first) second.push_back(1 - count);
    const SmirnovTails tails = SmirnovExact(TwoGroupBlocks(first, second));
    ExpectClose(tails.difference, 0.6363636363636364);
    ExpectClose(tails.twoSided, 0.027546241168532187);
    ExpectClose(tails.greater, 0.013773120584266095);
    const SmirnovTails exchanged = SmirnovExact(TwoGroupBlocks(second, first));
    ExpectClose(exchanged.less, tails.greater);
    ExpectClose(exchanged.twoSided, tails.twoSided);
}

/// Without ties, with `steps` cases of the first group below everything else.
double ChanceOfSteps(std::size_t size, std::size_t steps) {
    TieBlocks blocks;
    blocks.groupCount = 2;
    const auto add = [&](std::size_t count, std::int64_t first) {
        for (std::size_t i = 0; i < count; ++i) blocks.counts.insert(blocks.counts.end(), {first, 1 - first});
    };
    add(steps, 1);
    for (std::size_t i = steps; i < size; ++i) {
        add(1, 0);
        add(1, 1);
    }
    add(steps, 0);
    return SmirnovExact(blocks).twoSided;
}

// Massey, 1951, Annals of Mathematical Statistics 22, 125-128: for .05, K cases of 5, 10, 15 and 20 in each group, as
// Siegel, 1956, Nonparametric Statistics, table L shows them.
// ks_2samp([1, 1, 2, 3, 3], [1, 2, 2, 4, 4, 4], method="exact") of SciPy 1.17
TEST(SmirnovExact, IsThatOfSciPyWhereTiesAreIgnored) {
    const TieBlocks blocks{2, {2, 1, 1, 2, 2, 0, 0, 3}};
    const SmirnovTails tails = SmirnovExactIgnoringTies(blocks);
    EXPECT_DOUBLE_EQ(tails.difference, 0.5);
    EXPECT_NEAR(tails.twoSided, 0.35714285714285715, 1e-15);
    EXPECT_NEAR(tails.greater, 0.17965367965367965, 1e-15);
    EXPECT_EQ(tails.less, 1);
}

TEST(SmirnovExact, HasTheCriticalValuesOfThePrintedTable) {
    struct Critical {
        std::size_t size;
        std::size_t steps;
    };
    for (const Critical& critical : {Critical{5, 5}, Critical{10, 7}, Critical{15, 8}, Critical{20, 9}}) {
        EXPECT_LE(ChanceOfSteps(critical.size, critical.steps), .05) << critical.size;
        EXPECT_GT(ChanceOfSteps(critical.size, critical.steps - 1), .05) << critical.size;
    }
}

TEST(SmirnovExact, KeepsItsDigitsInTheFarthestTails) {
    const SmirnovTails tails = SmirnovExact(UntiedBlocks(400, 0, 200));
    ExpectClose(tails.twoSided, 2 / 1.0295250013541443e+119);  // R's choose(400, 200)
    ExpectClose(tails.greater, 1 / 1.0295250013541443e+119);
    // By the reflection principle choose(1000, 350) / choose(1000, 500) of all paths come 150 steps above the diagonal.
    double expected = 1;
    for (int i = 1; i <= 150; ++i) expected *= (350. + i) / (500. + i);
    TieBlocks blocks;
    blocks.groupCount = 2;
    const auto add = [&](int count, std::int64_t first) {
        for (int i = 0; i < count; ++i) blocks.counts.insert(blocks.counts.end(), {first, 1 - first});
    };
    add(150, 1);
    for (int i = 0; i < 350; ++i) {
        add(1, 0);
        add(1, 1);
    }
    add(150, 0);
    ExpectClose(SmirnovExact(blocks).greater, expected);
}

TEST(SmirnovExact, IsOneWithoutADifferenceOrAGroup) {
    EXPECT_EQ(SmirnovExact(TwoGroupBlocks({3, 4}, {3, 4})).twoSided, 1);
    EXPECT_EQ(SmirnovExact(TwoGroupBlocks({3, 4}, {0, 0})).twoSided, 1);
    EXPECT_EQ(SmirnovExact(TieBlocks{2, {}}).twoSided, 1);
}

}  // namespace
}  // namespace tarn
