#include "host/beyond/exact/JonckheereExact.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <utility>

#include "host/beyond/exact/RankSumExact.h"
#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

std::size_t WrongOnes(std::size_t mostCases, std::size_t groupCount) {
    std::size_t wrong = 0;
    ForEveryDataSet(mostCases, groupCount, DoubledPairs,
                    [&](const TieBlocks& blocks, const Integers& all, std::int64_t observed) {
                        wrong += AreNear(JonckheereExact(blocks), TailsAmong(all, observed), 1e-12) ? 0 : 1;
                    });
    return wrong;
}

TEST(JonckheereExact, IsTheShareOfAllArrangementsOfTwoGroups) {
    EXPECT_EQ(WrongOnes(8, 2), 0u);
}

TEST(JonckheereExact, IsTheShareOfAllArrangementsOfThreeGroups) {
    EXPECT_EQ(WrongOnes(8, 3), 0u);
}

TEST(JonckheereExact, IsTheShareOfAllArrangementsOfFourGroups) {
    EXPECT_EQ(WrongOnes(4, 4), 0u);
}

TEST(JonckheereExact, IsTheShareOfAllArrangementsWithoutTies) {
    Integers values{1, 2, 3, 4, 5, 6, 7};
    std::map<Integers, Integers> statisticsBySizes;
    ForEveryList(values.size(), 2, [&](const Integers& groups) {
        statisticsBySizes[SizesOf(groups, 3)].push_back(DoubledPairs(values, groups));
    });
    std::size_t wrong = 0;
    ForEveryList(values.size(), 2, [&](const Integers& groups) {
        const ExactTails expected = TailsAmong(statisticsBySizes[SizesOf(groups, 3)], DoubledPairs(values, groups));
        wrong += AreNear(JonckheereExact(BlocksOf(values, groups, 3)), expected, 1e-12) ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0u);
}

/// Cases without ties, one after the other, of these groups.
TieBlocks InOrder(const Integers& groups, std::size_t groupCount) {
    Integers values;
    for (std::size_t i = 0; i < groups.size(); ++i) values.push_back(static_cast<std::int64_t>(i));
    return BlocksOf(values, groups, groupCount);
}

// Hollander and Wolfe, Nonparametric Statistical Methods, table of the Jonckheere-Terpstra statistic: three groups of
// two cases, J of 12, 11 and 10 or more.
TEST(JonckheereExact, IsThatOfThePrintedTable) {
    EXPECT_NEAR(JonckheereExact(InOrder({0, 0, 1, 1, 2, 2}, 3)).greater, .0111, .00005);
    EXPECT_NEAR(JonckheereExact(InOrder({0, 1, 0, 1, 2, 2}, 3)).greater, .0333, .00005);
    EXPECT_NEAR(JonckheereExact(InOrder({0, 1, 0, 2, 1, 2}, 3)).greater, .0889, .00005);
}

// The same table for three groups of six cases: .0231 for a J of 79 or more, of 108 pairs. Each exchange of neighbours
// takes one pair off the perfect order.
TEST(JonckheereExact, IsThatOfThePrintedTableForSixCasesInEachGroup) {
    Integers groups{0, 0, 0, 0, 0, 0, 1, 1, 1, 1, 1, 1, 2, 2, 2, 2, 2, 2};
    int swaps = 108 - 79;
    while (swaps > 0) {
        for (std::size_t i = 0; i + 1 < groups.size() && swaps > 0; ++i) {
            if (groups[i] >= groups[i + 1]) continue;
            std::swap(groups[i], groups[i + 1]);
            --swaps;
        }
    }
    EXPECT_NEAR(JonckheereExact(InOrder(groups, 3)).greater, .0231, .00005);
}

// Python, itertools.combinations over all 11550 ways to share out 1 2 2 4, 2 3 3 and 2 4 5 5: 11286 have a J of 31 or
// less, 368 one of 31 or more, 736 one as far from the mean.
TEST(JonckheereExact, IsThatOfAllWaysToShareOut) {
    const TieBlocks blocks{3, {1, 0, 0, 2, 1, 1, 0, 2, 0, 1, 0, 1, 0, 0, 2}};
    const ExactTails tails = JonckheereExact(blocks);
    ExpectClose(tails.less, 11286. / 11550);
    ExpectClose(tails.greater, 368. / 11550);
    ExpectClose(tails.twoSided, 736. / 11550);
}

TEST(JonckheereExact, OfTwoGroupsIsTheRankSumTestFromTheOtherEnd) {
    const TieBlocks blocks = TwoGroupBlocks({3, 0, 2, 5}, {1, 6, 2, 2});
    const ExactTails rankSum = RankSumExact(blocks);
    ExpectNear(JonckheereExact(blocks), {rankSum.greater, rankSum.less, rankSum.twoSided}, 0);
    // An empty group between them changes nothing.
    const TieBlocks three{3, {3, 0, 1, 0, 0, 6, 2, 0, 2, 5, 0, 2}};
    ExpectNear(JonckheereExact(three), JonckheereExact(blocks), 0);
}

// R: factorial(40) / factorial(10)^4 ways to share out 40 cases among four groups of ten.
TEST(JonckheereExact, KeepsItsDigitsInTheFarthestTails) {
    Integers groups;
    for (std::int64_t g = 0; g < 4; ++g) groups.insert(groups.end(), 10, g);
    const double ways = 4705360871073570227520.0;
    const ExactTails perfect = JonckheereExact(InOrder(groups, 4));
    ExpectClose(perfect.greater, 1 / ways);
    ExpectClose(perfect.twoSided, 2 / ways);
    // With the two lowest of the first group tied: nothing else is as large.
    TieBlocks tied = InOrder(groups, 4);
    tied.counts.erase(tied.counts.begin(), tied.counts.begin() + 4);
    tied.counts[0] = 2;
    ExpectClose(JonckheereExact(tied).greater, 1 / ways);
}

TEST(JonckheereExact, IsOneWhereNothingCanDiffer) {
    ExpectNear(JonckheereExact(TieBlocks{3, {2, 3, 4}}), {1, 1, 1}, 0);
    ExpectNear(JonckheereExact(TieBlocks{3, {2, 0, 0, 1, 0, 0}}), {1, 1, 1}, 0);
    ExpectNear(JonckheereExact(TieBlocks{3, {}}), {1, 1, 1}, 0);
    EXPECT_TRUE(std::isinf(JonckheereExactCost(TieBlocks{3, Integers(3, std::int64_t{1} << 51)})));
}

}  // namespace
}  // namespace tarn
