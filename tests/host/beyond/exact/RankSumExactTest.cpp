#include "host/beyond/exact/RankSumExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <utility>
#include <vector>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

TEST(RankSumExact, IsTheShareOfAllArrangements) {
    std::size_t wrong = 0;
    std::size_t sets = 0;
    // Pairs in which the first group's case is larger: groups the other way round.
    const auto statistic = [](const Integers& values, Integers groups) {
        for (std::int64_t& group : groups) group = 1 - group;
        return DoubledPairs(values, groups);
    };
    ForEveryDataSet(8, 2, statistic, [&](const TieBlocks& blocks, const Integers& all, std::int64_t observed) {
        ++sets;
        wrong += AreNear(RankSumExact(blocks), TailsAmong(all, observed), 1e-12) ? 0 : 1;
    });
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(sets, 12869u);  // ways to put 1 to 8 cases into 8 places: C(16, 8) - 1
}

// Mann and Whitney, 1947, table I for n = 5 and m = 5: the chance of U and smaller ones, to three places.
TEST(RankSumExact, IsThatOfMannAndWhitneysTable) {
    const std::vector<double> table{.004, .008, .016, .028, .048, .075, .111, .155, .210, .274, .345, .421, .500};
    for (std::size_t u = 0; u < table.size(); ++u) {
        TieBlocks blocks;
        blocks.groupCount = 2;
        std::size_t left = u;
        std::vector<std::size_t> below;  // how many cases of the second group, for each of the first
        for (std::size_t i = 0; i < 5; ++i) {
            below.insert(below.begin(), std::min<std::size_t>(left, 5));
            left -= below.front();
        }
        std::size_t second = 0;
        for (const std::size_t ofSecond : below) {
            for (; second < ofSecond; ++second) blocks.counts.insert(blocks.counts.end(), {0, 1});
            blocks.counts.insert(blocks.counts.end(), {1, 0});
        }
        for (; second < 5; ++second) blocks.counts.insert(blocks.counts.end(), {0, 1});
        EXPECT_NEAR(RankSumExact(blocks).less, table[u], .0005) << u;
    }
}

// SciPy 1.17: permutation_test((a, b), the rank sum of a by rankdata, n_resamples=inf, alternative="less", "greater").
TEST(RankSumExact, IsThatOfAPermutationTestWithTies) {
    const ExactTails tails = RankSumExact(TwoGroupBlocks({1, 2, 1, 0, 2, 0}, {0, 1, 2, 1, 1, 2}));
    ExpectClose(tails.less, 0.10664335664335664);
    ExpectClose(tails.greater, 0.9143356643356644);
}

// Python's whole numbers: the coefficients of the product over all blocks of the sum over x of
// comb(tied, x) * y^x * z^(x * score).
TEST(RankSumExact, IsThatOfWholeNumbersForLargerGroups) {
    const ExactTails middle = RankSumExact(TwoGroupBlocks({9, 6, 4, 3, 2}, {2, 3, 5, 8, 12}));
    ExpectClose(middle.less, 6.494581874613309e-05);
    ExpectClose(middle.greater, 0.9999467638167733);
    ExpectClose(middle.twoSided, 0.00012543994495044952);
    const ExactTails far = RankSumExact(TwoGroupBlocks({20, 9, 0, 1, 0}, {0, 2, 3, 11, 20}));
    ExpectClose(far.less, 2.4126764771598923e-16);
    ExpectClose(far.greater, 0.9999999999999999);
    ExpectClose(far.twoSided, 3.7286818283380153e-16);
}

// R 4.2: pwilcox(400, 40, 30), pwilcox(399, 40, 30, lower = FALSE). Of 40 cases of the first group 26 lie above 15
// cases of the second and 1 above 10 of it: U = 26 * 15 + 10.
TEST(RankSumExact, IsThatOfRWithoutTies) {
    TieBlocks blocks;
    blocks.groupCount = 2;
    const auto add = [&](int count, std::int64_t first) {
        for (int i = 0; i < count; ++i) blocks.counts.insert(blocks.counts.end(), {first, 1 - first});
    };
    add(13, 1);
    add(10, 0);
    add(1, 1);
    add(5, 0);
    add(26, 1);
    add(15, 0);
    const ExactTails tails = RankSumExact(blocks);
    ExpectClose(tails.less, 0.0086100104404088808);
    ExpectClose(tails.greater, 0.99167246032750267);
    ExpectClose(tails.twoSided, 2 * 0.0086100104404088808);
}

// One of choose(N, n) arrangements: R's choose(400, 200) is 1.0295250013541443e+119.
TEST(RankSumExact, KeepsItsDigitsInTheFarthestTails) {
    const ExactTails above = RankSumExact(UntiedBlocks(400, 200, 200));
    ExpectClose(above.greater, 1 / 1.0295250013541443e+119);
    ExpectClose(above.twoSided, 2 / 1.0295250013541443e+119);
    EXPECT_NEAR(above.less, 1, 1e-12);
    const ExactTails below = RankSumExact(UntiedBlocks(400, 0, 200));
    ExpectClose(below.less, 1 / 1.0295250013541443e+119);
    // 1 + 1 + 2 + 3 ways to divide 0, 1, 2 and 3 into parts, in 80 cases by tables and in 400 by the closed form.
    const auto withGap = [](std::size_t size) {
        TieBlocks blocks = UntiedBlocks(2 * size, 0, size);
        std::swap(blocks.counts[2 * size - 2], blocks.counts[2 * size + 4]);
        std::swap(blocks.counts[2 * size - 1], blocks.counts[2 * size + 5]);
        return RankSumExact(blocks).less;
    };
    ExpectClose(withGap(200), 7 / 1.0295250013541443e+119);
    ExpectClose(withGap(40), 7 / 1.0750720873333618e+23);
    // 3 of 5000: one of 5000 * 4999 * 4998 / 6.
    ExpectClose(RankSumExact(UntiedBlocks(5000, 4997, 3)).greater, 6 / (5000. * 4999 * 4998));
}

TEST(RankSumExact, ChangesItsEndsWithTheGroups) {
    const Integers first{3, 0, 2, 5, 1, 4};
    const Integers second{1, 6, 2, 2, 7, 1};
    const ExactTails tails = RankSumExact(TwoGroupBlocks(first, second));
    ExpectNear(RankSumExact(TwoGroupBlocks(second, first)), {tails.greater, tails.less, tails.twoSided}, 1e-14);
    const Integers firstBackwards(first.rbegin(), first.rend());
    const Integers secondBackwards(second.rbegin(), second.rend());
    ExpectNear(RankSumExact(TwoGroupBlocks(firstBackwards, secondBackwards)),
               {tails.greater, tails.less, tails.twoSided}, 1e-14);
}

TEST(RankSumExact, IsOneWhereAllIsTiedOrAGroupIsEmpty) {
    ExpectNear(RankSumExact(TwoGroupBlocks({5}, {7})), {1, 1, 1}, 0);
    ExpectNear(RankSumExact(TwoGroupBlocks({5, 2}, {0, 0})), {1, 1, 1}, 0);
    ExpectNear(RankSumExact(TieBlocks{2, {}}), {1, 1, 1}, 0);
    const TieBlocks huge = TwoGroupBlocks({std::int64_t{1} << 52}, {0});
    ExpectNear(RankSumExact(huge), {1, 1, 1}, 0);
    EXPECT_EQ(RankSumExactCost(huge), 1);
}

TEST(RankSumExact, SaysWhatItCosts) {
    // With the two lowest and the two highest cases tied the scores have no common unit but one. The lower half has
    // rows for j of i cases with 2 * j * (i-j) sums: 160^4 / 12 in all. The upper half is the same from the other end.
    TieBlocks blocks = UntiedBlocks(318, 79, 160);
    blocks.counts[1] = 2;
    blocks.counts[blocks.counts.size() - 1] = 2;
    const double cost = RankSumExactCost(blocks);
    EXPECT_GT(cost, std::pow(160., 4) / 12);
    EXPECT_LT(cost, std::pow(160., 4) / 12 * 1.5);
    EXPECT_LT(RankSumExactCost(UntiedBlocks(20000, 6000, 10000)), 1e9);
    EXPECT_TRUE(std::isinf(RankSumExactCost(TwoGroupBlocks({std::int64_t{1} << 52}, {std::int64_t{1} << 52}))));
}

}  // namespace
}  // namespace tarn
