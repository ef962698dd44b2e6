// How far groups are apart is compared without rounding wherever whole numbers have room, and within a small distance
// where they have not.

#include "host/beyond/exact/GroupScatter.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

#include "host/beyond/exact/GroupScores.h"

namespace tarn {
namespace {

using Numbers = std::vector<std::int64_t>;

int Compare(const Numbers& sizes, const Numbers& observed, std::int64_t largestScore, const Numbers& other) {
    return GroupScatter(sizes, observed, largestScore).CompareWithObserved(other.data());
}

// 3^2 / 2 + 3^2 / 3 = 7.5; 6^2 / 6 + 3^2 / 6 is the same.
TEST(GroupScatter, EqualSumsOfQuotientsAreEqual) {
    const Numbers sizes{2, 3, 6, 6};
    EXPECT_EQ(Compare(sizes, {3, -3, 0, 0}, 5, {0, 0, 6, 3}), 0);
    EXPECT_EQ(Compare(sizes, {3, -3, 0, 0}, 5, {0, 0, 6, 2}), -1);
    EXPECT_EQ(Compare(sizes, {3, -3, 0, 0}, 5, {0, 0, 6, -4}), 1);
}

// A common multiple of 1009 * 1013 * 1019 times 3041 cases times squared scores is beyond 64 bits. One unit in the
// first distance moves the scatter by 3e-9 of itself.
TEST(GroupScatter, LargeMultiplesDecideByOneUnit) {
    const Numbers sizes{1009, 1013, 1019};
    const Numbers observed{700'000'001, -500'000'000, -200'000'001};
    EXPECT_EQ(Compare(sizes, observed, 1'000'000, {-700'000'001, 500'000'000, 200'000'001}), 0);
    EXPECT_EQ(Compare(sizes, observed, 1'000'000, {700'000'000, -500'000'000, -200'000'001}), -1);
    EXPECT_EQ(Compare(sizes, observed, 1'000'000, {700'000'002, -500'000'000, -200'000'001}), 1);
}

// Eleven primes have a product beyond 2^60, so that quotients are added.
TEST(GroupScatter, QuotientsAreAddedWhereNoMultipleHasRoom) {
    const Numbers sizes{1009, 1013, 1019, 1021, 1031, 1033, 1039, 1049, 1051, 1061, 1063};
    Numbers observed;
    for (std::size_t i = 0; i < sizes.size(); ++i) observed.push_back(1000 + 37 * static_cast<std::int64_t>(i));
    Numbers other = observed;
    for (std::int64_t& distance : other) distance = -distance;
    EXPECT_EQ(Compare(sizes, observed, 1100, other), 0);
    other[10] -= 1;
    EXPECT_EQ(Compare(sizes, observed, 1100, other), 1);
    other[10] += 2;
    EXPECT_EQ(Compare(sizes, observed, 1100, other), -1);
}

// Values 1 1 | 2 | 3 3 3 of the groups 2 + 1 + 0 and 0 + 0 + 3: ranks 1.5, 3, 5 less their mean of 3.5 are -2, -0.5
// and 1.5, in whole numbers -4, -1 and 3; above 2 or not is +-1/2, in whole numbers +-1.
TEST(GroupScores, AreTheSmallestWholeNumbersWithAMeanOfZero) {
    const TieBlocks blocks{3, {2, 0, 0, 1, 0, 0, 0, 0, 3}};
    const GroupScores ranks = RankScores(blocks);
    EXPECT_EQ(ranks.scores, (Numbers{-4, -1, 3}));
    EXPECT_EQ(ranks.blockSizes, (Numbers{2, 1, 3}));
    EXPECT_EQ(ranks.groupSizes, (Numbers{3, 3}));
    EXPECT_EQ(ranks.sums, (Numbers{-9, 9}));
    EXPECT_EQ(ranks.cases, 6);
    EXPECT_EQ(ranks.LargestScore(), 4);
    const GroupScores medians = MedianScores(blocks, 2);
    EXPECT_EQ(medians.scores, (Numbers{-1, -1, 1}));
    EXPECT_EQ(medians.sums, (Numbers{-3, 3}));
}

TEST(GroupScores, OfEqualValuesAreZero) {
    const GroupScores scores = RankScores(TieBlocks{2, {2, 3}});
    EXPECT_EQ(scores.scores, (Numbers{0}));
    EXPECT_EQ(scores.sums, (Numbers{0, 0}));
}

}  // namespace
}  // namespace tarn
