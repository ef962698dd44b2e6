#include "host/beyond/exact/MedianExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <vector>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

/// Sum over the groups of above^2 / size, times all the sizes: it rises with chi-square.
std::int64_t ScaledSum(const Integers& above, const Integers& sizes) {
    std::int64_t product = 1;
    for (const std::int64_t size : sizes) product *= size;
    std::int64_t sum = 0;
    for (std::size_t g = 0; g < sizes.size(); ++g) sum += above[g] * above[g] * (product / sizes[g]);
    return sum;
}

/// The groups of the cases, in order, that lie above.
Integers AboveOf(const Integers& sizes, const Integers& isAbove) {
    Integers above;
    std::size_t next = 0;
    for (const std::int64_t size : sizes) {
        above.push_back(0);
        for (std::int64_t i = 0; i < size; ++i) above.back() += isAbove[next++];
    }
    return above;
}

/// For every table of groups of such sizes: all choices of as many cases as lie above.
template <typename Check>
void ForEveryTable(const Integers& sizes, const Check& check) {
    std::int64_t cases = 0;
    for (const std::int64_t size : sizes) cases += size;
    std::map<std::int64_t, std::vector<Integers>> tablesByMargin;
    ForEveryList(static_cast<std::size_t>(cases), 1, [&](const Integers& isAbove) {
        std::int64_t margin = 0;
        for (const std::int64_t one : isAbove) margin += one;
        tablesByMargin[margin].push_back(AboveOf(sizes, isAbove));
    });
    for (const auto& [margin, tables] : tablesByMargin) {
        for (const Integers& table : tables) check(table, tables);
    }
}

Integers NotAbove(const Integers& above, const Integers& sizes) {
    Integers rest;
    for (std::size_t g = 0; g < sizes.size(); ++g) rest.push_back(sizes[g] - above[g]);
    return rest;
}

TEST(MedianExact, OfThreeGroupsIsTheShareOfAllChoices) {
    std::size_t wrong = 0;
    ForEveryAscendingList(3, 1, 4, [&](const Integers& sizes) {
        if (sizes[0] + sizes[1] + sizes[2] > 8) return;
        Integers last;
        ForEveryTable(sizes, [&](const Integers& table, const std::vector<Integers>& all) {
            if (table == last) return;
            last = table;
            Integers statistics;
            for (const Integers& other : all) statistics.push_back(ScaledSum(other, sizes));
            const double expected = TailsAmong(statistics, ScaledSum(table, sizes)).greater;
            wrong += std::abs(MedianExact(table, NotAbove(table, sizes)) - expected) <= 1e-12 ? 0 : 1;
        });
    });
    EXPECT_EQ(wrong, 0u);
}

TEST(MedianExact, OfTwoGroupsIsTheShareOfTablesAtMostAsProbable) {
    ForEveryAscendingList(2, 1, 4, [&](const Integers& sizes) {
        ForEveryTable(sizes, [&](const Integers& table, const std::vector<Integers>& all) {
            Integers firsts;
            Integers timesMet;
            for (const Integers& other : all) firsts.push_back(other[0]);
            for (const std::int64_t first : firsts) timesMet.push_back(std::count(firsts.begin(), firsts.end(), first));
            const std::int64_t mine = std::count(firsts.begin(), firsts.end(), table[0]);
            const ExactTails byFirst = TailsAmong(firsts, table[0]);
            const ExactTails expected{byFirst.less, byFirst.greater, TailsAmong(timesMet, mine).less};
            const Integers rest = NotAbove(table, sizes);
            ExpectNear(FisherExact({table[0], rest[0], table[1], rest[1]}), expected, 1e-12);
            EXPECT_NEAR(MedianExact(table, rest), expected.twoSided, 1e-12);
        });
    });
}

// R 4.2: fisher.test(table, alternative)$p.value for "less", "greater" and "two.sided".
TEST(MedianExact, OfTwoGroupsIsThatOfR) {
    const auto expect = [](const ExactTails& actual, const ExactTails& expected) {
        ExpectClose(actual.less, expected.less);
        ExpectClose(actual.greater, expected.greater);
        ExpectClose(actual.twoSided, expected.twoSided);
    };
    expect(FisherExact({8, 2, 1, 5}), {0.99912587412587417, 0.024475524475524479, 0.034965034965034975});
    expect(FisherExact({10, 5, 7, 12}), {0.98168173977527362, 0.083160032886782712, 0.1663200657735654});
    expect(FisherExact({120, 80, 90, 110}), {0.99906317323281846, 0.0018175927779407195, 0.0036351855558814389});
    ExpectClose(MedianExact({120, 90}, {80, 110}), 0.0036351855558814389);
}

// Python, fractions.Fraction over all tables with these margins: the sum of the products of comb(size, above), and
// comb(all cases, all above).
TEST(MedianExact, OfMoreGroupsIsThatOfAllTables) {
    ExpectClose(MedianExact({6, 2, 3}, {2, 5, 4}), 170352. / 705432);
    ExpectClose(MedianExact({5, 1, 4, 2}, {2, 6, 3, 5}), 5223260. / 30421755);
    ExpectClose(MedianExact({7, 3, 8, 2}, {4, 10, 5, 11}), 955504144012. / 47129212243960);
    // The order of the groups and of the rows doesn't matter.
    ExpectClose(MedianExact({2, 7, 8, 3}, {11, 4, 5, 10}), 955504144012. / 47129212243960);
    ExpectClose(MedianExact({4, 10, 5, 11}, {7, 3, 8, 2}), 955504144012. / 47129212243960);
}

TEST(MedianExact, KeepsItsDigitsInTheFarthestTails) {
    ExpectClose(FisherExact({200, 0, 0, 200}).greater, 1 / 1.0295250013541443e+119);  // R's choose(400, 200)
    ExpectClose(FisherExact({200, 0, 0, 200}).twoSided, 2 / 1.0295250013541443e+119);
    // All of one group of three above and none of the others: three of choose(150, 50) choices are as uneven; R's
    // choose(150, 50) is 2.0128660909731928e+40.
    ExpectClose(MedianExact({50, 0, 0}, {0, 50, 50}), 3 / 2.0128660909731928e+40);
}

TEST(MedianExact, IsOneWhereNothingCanDiffer) {
    EXPECT_EQ(MedianExact({}, {}), 1);
    EXPECT_EQ(MedianExact({3}, {4}), 1);
    EXPECT_EQ(MedianExact({3, 0}, {4, 0}), 1);
    EXPECT_EQ(MedianExact({3, 5, 1}, {0, 0, 0}), 1);
    EXPECT_EQ(MedianExact({0, 0, 0}, {1, 2, 3}), 1);
}

// Three primes whose product has 153 bits, almost 1 : 2 : 4, and two cases above: chi-square rises with 1.5 where one
// of them is in the first and one in the second group, with 2 where both are in the second, and with 4 in the first.
// Those have chances of 2 * 1 * 2, 2 * 2 and 1 * 1 of 7 * 7.
TEST(MedianExact, HoldsWhereWholeNumbersDoNotSuffice) {
    const Integers sizes{(std::int64_t{1} << 50) - 27, (std::int64_t{1} << 51) - 129, (std::int64_t{1} << 52) - 47};
    ExpectClose(MedianExact({2, 0, 0}, NotAbove({2, 0, 0}, sizes)), 1. / 49);
    ExpectClose(MedianExact({0, 2, 0}, NotAbove({0, 2, 0}, sizes)), 5. / 49);
    ExpectClose(MedianExact({1, 1, 0}, NotAbove({1, 1, 0}, sizes)), 9. / 49);
    ExpectClose(MedianExact(NotAbove({1, 1, 0}, sizes), {1, 1, 0}), 9. / 49);
    EXPECT_LT(MedianExactCost({1, 1, 0}, NotAbove({1, 1, 0}, sizes)), 1e4);
}

TEST(MedianExact, SaysWhatItCosts) {
    EXPECT_LT(MedianExactCost({6, 2, 3}, {2, 5, 4}), 1e5);
    EXPECT_GT(MedianExactCost(Integers(10, 50), Integers(10, 50)), 1e17);
    EXPECT_LT(FisherExactCost({10, 1000000000, 20, 1000000000}), 1e4);
}

}  // namespace
}  // namespace tarn
