// The significance of H over all arrangements: enumerated, as printed in tables, and as R finds it for two groups.

#include "host/beyond/exact/KruskalWallisExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tests/host/beyond/exact/GroupArrangements.h"

namespace tarn {
namespace {

using namespace arrangement_test;

using Lists = std::vector<std::vector<int>>;

struct PrintedPoint {
    Lists lists;
    double h;           ///< as printed
    double printed;     ///< its significance, to three places
    double favourable;  ///< arrangements with an H as large
    double all;
};

// Kruskal and Wallis (1952), Journal of the American Statistical Association 47, 614-617, table 6.1. The numbers of
// arrangements are from an enumeration with Python's itertools.combinations and fractions.
TEST(KruskalWallisExact, IsThatOfThePrintedTable) {
    const std::vector<PrintedPoint> points{
        {{{1, 2, 3}, {4, 5}, {6, 7}}, 5.3572, 0.029, 6, 210},
        {{{1, 2, 3}, {4, 6}, {5, 7}}, 4.7143, 0.048, 10, 210},
        {{{1, 2, 3}, {4, 7}, {5, 6}}, 4.5000, 0.067, 14, 210},
        {{{1, 2, 4}, {3, 5}, {6, 7}}, 4.4643, 0.105, 22, 210},
        {{{1, 2, 3, 4, 6}, {5, 7, 9, 12}, {8, 10, 11}}, 7.4449, 0.010, 270, 27720},
        {{{1, 2, 3, 4, 7}, {5, 6, 8, 11}, {9, 10, 12}}, 7.3949, 0.011, 302, 27720},
        {{{1, 2, 4, 7, 10}, {8, 9, 11, 12}, {3, 5, 6}}, 5.6564, 0.049, 1348, 27720},
        {{{1, 2, 3, 4, 9}, {5, 10, 11, 12}, {6, 7, 8}}, 5.6308, 0.050, 1396, 27720},
        {{{1, 2, 3, 5}, {4, 6, 7, 11}, {8, 9, 10, 12}}, 7.6538, 0.008, 264, 34650},
        {{{1, 2, 3, 4}, {5, 6, 9, 12}, {7, 8, 10, 11}}, 7.5385, 0.011, 372, 34650},
        {{{1, 2, 3, 6}, {4, 5, 11, 12}, {7, 8, 9, 10}}, 5.6923, 0.049, 1686, 34650},
        {{{1, 2, 3, 4, 10}, {5, 6, 7, 8, 14}, {9, 11, 12, 13, 15}}, 8.0000, 0.009, 7158, 756756},
        {{{1, 2, 3, 4, 13}, {5, 6, 7, 8, 14}, {9, 10, 11, 12, 15}}, 5.7800, 0.049, 36912, 756756},
        {{{1, 2, 3, 4, 11}, {5, 6, 7, 13, 15}, {8, 9, 10, 12, 14}}, 5.6600, 0.051, 38532, 756756},
        {{{1, 2, 3, 4, 14}, {5, 6, 7, 9, 15}, {8, 10, 11, 12, 13}}, 4.5600, 0.100, 75312, 756756},
    };
    for (const PrintedPoint& point : points) {
        const Cases cases = CasesOf(point.lists);
        ASSERT_NEAR(KruskalWallisH(cases), point.h, 1e-4);
        const std::optional<double> p = KruskalWallisExact(BlocksOf(cases));
        ASSERT_TRUE(p) << point.h;
        EXPECT_NEAR(*p, point.favourable / point.all, 1e-14) << point.h;
        EXPECT_NEAR(*p, point.printed, 0.0005) << point.h;
    }
}

/// Checks every way to give these values to groups of these sizes.
void ExpectAllArrangements(const std::vector<int>& values, const std::vector<int>& sizes) {
    Cases cases;
    cases.values = values;
    cases.groupCount = static_cast<int>(sizes.size());
    for (std::size_t group = 0; group < sizes.size(); ++group) {
        cases.groups.insert(cases.groups.end(), static_cast<std::size_t>(sizes[group]), static_cast<int>(group));
    }
    std::vector<double> statistics;
    std::vector<double> significances;
    do {
        statistics.push_back(KruskalWallisH(cases));
        significances.push_back(KruskalWallisExact(BlocksOf(cases)).value_or(-1));
    } while (std::next_permutation(cases.groups.begin(), cases.groups.end()));
    const auto count = static_cast<double>(statistics.size());
    std::vector<double> ascending = statistics;
    std::sort(ascending.begin(), ascending.end());
    for (std::size_t i = 0; i < statistics.size(); ++i) {
        const auto first = std::lower_bound(ascending.begin(), ascending.end(), statistics[i] - kEqual);
        ASSERT_NEAR(significances[i], static_cast<double>(ascending.end() - first) / count, 1e-13);
    }
}

/// Calls the function with all ascending lists of `count` values from 1 to 4.
void ForAscendingLists(std::size_t count, const std::function<void(const std::vector<int>&)>& visit) {
    constexpr int kLargest = 4;
    std::vector<int> values(count, 1);
    const std::function<void(std::size_t, int)> fill = [&](std::size_t place, int least) {
        if (place == count) {
            visit(values);
            return;
        }
        for (int value = least; value <= kLargest; ++value) {
            values[place] = value;
            fill(place + 1, value);
        }
    };
    fill(0, 1);
}

TEST(KruskalWallisExact, IsTheShareOfArrangementsOfSixTiedValues) {
    for (const auto& sizes : std::vector<std::vector<int>>{{2, 2, 2}, {1, 2, 3}, {4, 1, 1}}) {
        ForAscendingLists(6, [&](const std::vector<int>& values) { ExpectAllArrangements(values, sizes); });
    }
}

TEST(KruskalWallisExact, IsTheShareOfArrangementsOfSevenTiedValues) {
    for (const auto& sizes : std::vector<std::vector<int>>{{3, 2, 2}, {1, 5, 1}}) {
        ForAscendingLists(7, [&](const std::vector<int>& values) { ExpectAllArrangements(values, sizes); });
    }
}

TEST(KruskalWallisExact, IsTheShareOfArrangementsOfMoreGroups) {
    ExpectAllArrangements({1, 2, 3, 4, 5, 6, 7}, {1, 2, 4});
    ExpectAllArrangements({1, 2, 2, 3, 4, 5, 5}, {1, 1, 2, 3});
    ExpectAllArrangements({1, 2, 3, 4, 5, 6, 7}, {2, 2, 2, 1});
    ExpectAllArrangements({1, 2, 3, 3, 4}, {1, 1, 1, 1, 1});
    ExpectAllArrangements({1, 2, 3, 4, 5, 6}, {2, 1, 1, 1, 1});
}

// R: wilcox.test(x, y, exact = TRUE)$p.value; H of two groups is larger as the rank sum is further from its
// expectation.
TEST(KruskalWallisExact, IsTheTwoSidedRankSumTestOfTwoGroups) {
    const Lists few{{11, 22, 33, 90, 100, 110, 120, 200}, {20, 30, 40, 50, 60, 70, 80}};
    EXPECT_NEAR(KruskalWallisExact(BlocksOf(CasesOf(few))).value_or(-1), 0.280963480963481, 1e-14);
    Lists more(2);
    for (const int value : {1, 2, 3, 4, 5, 6, 7, 8, 9, 30, 31, 32}) more[0].push_back(2 * value + 1);
    for (int value = 10; value <= 24; ++value) more[1].push_back(2 * value);
    EXPECT_NEAR(KruskalWallisExact(BlocksOf(CasesOf(more))).value_or(-1), 0.0281412758731375, 1e-15);
}

// The most extreme arrangement of untied values: the groups one above the other, in any order of groups of one size.
TEST(KruskalWallisExact, OfSeparateGroupsIsOneArrangementInEachOrder) {
    // 6 orders of 30! / (10!)^3 = 5550996791340 arrangements.
    Lists ten(3);
    for (int i = 0; i < 30; ++i) ten[static_cast<std::size_t>(i / 10)].push_back(i);
    EXPECT_NEAR(KruskalWallisExact(BlocksOf(CasesOf(ten))).value_or(-1) / (6 / 5550996791340.0), 1, 1e-12);
    // With two values and 3, 3 and 30 cases, a group of 3 above the others: its 3 among all 36 are one of 7140, either
    // small group may be it, and no other arrangement is as far apart.
    const TieBlocks twoValues{3, {0, 3, 30, 3, 0, 0}};
    EXPECT_NEAR(KruskalWallisExact(twoValues).value_or(-1), 2 / 7140.0, 1e-15);
}

// Sums and counts of many groups need more than 64 bits. One case in each of 20 groups has the same H in any
// arrangement.
TEST(KruskalWallisExact, OfSingleCasesIsOne) {
    Lists lists;
    for (int i = 0; i < 20; ++i) lists.push_back({i});
    EXPECT_NEAR(KruskalWallisExact(BlocksOf(CasesOf(lists))).value_or(-1), 1, 1e-13);
}

// Three cases in one group and one in each of 18 others: the ranks scatter least within the group, and so most between
// the groups, where its ranks follow on each other. That are 19 of the 1330 ways to choose three of 21.
TEST(KruskalWallisExact, OfOneGroupAmongSingleCasesIsThatOfItsRanks) {
    Lists lists;
    for (int i = 0; i < 18; ++i) lists.push_back({i < 4 ? i : i + 3});
    lists.insert(lists.begin() + 7, {4, 5, 6});
    EXPECT_NEAR(KruskalWallisExact(BlocksOf(CasesOf(lists))).value_or(-1), 19 / 1330.0, 1e-14);
}

TEST(KruskalWallisExact, LeavesOutGroupsWithoutCases) {
    EXPECT_EQ(KruskalWallisExact(TieBlocks{3, {1, 0, 1, 2, 0, 1, 0, 0, 2}}),
              KruskalWallisExact(TieBlocks{2, {1, 1, 2, 1, 0, 2}}));
    EXPECT_FALSE(KruskalWallisExact(TieBlocks{3, {0, 4, 0, 0, 2, 0}}));
    EXPECT_FALSE(KruskalWallisExact(TieBlocks{}));
    EXPECT_TRUE(std::isinf(KruskalWallisExactSteps(TieBlocks{})));
}

TEST(KruskalWallisExact, OfEqualValuesIsOne) {
    EXPECT_NEAR(KruskalWallisExact(TieBlocks{3, {2, 3, 4}}).value_or(-1), 1, 1e-13);
}

TEST(KruskalWallisExactSteps, AreFewForSmallGroupsAndNoneForHugeOnes) {
    const auto untied = [](int size) {
        Lists lists(3);
        for (int i = 0; i < 3 * size; ++i) lists[static_cast<std::size_t>(i % 3)].push_back(i);
        return KruskalWallisExactSteps(BlocksOf(CasesOf(lists)));
    };
    EXPECT_LT(untied(5), 1e6);
    EXPECT_GT(untied(40), 1e9);
    EXPECT_TRUE(std::isinf(KruskalWallisExactSteps(TieBlocks{2, {INT64_MAX, INT64_MAX}})));
    EXPECT_FALSE(KruskalWallisExact(TieBlocks{2, {INT64_MAX, INT64_MAX}}));
}

}  // namespace
}  // namespace tarn
