// Significances of block designs over all arrangements: enumerated, as printed in tables, and binomial for two columns.

#include "host/beyond/exact/FriedmanExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <functional>
#include <numeric>
#include <optional>
#include <vector>

#include "tests/host/beyond/exact/GroupArrangements.h"

namespace tarn {
namespace {

using namespace arrangement_test;

/// Rows of the ranks 1, 2, ... whose columns have these sums.
ScoreRows RowsWithSums(std::size_t count, const std::vector<int>& sums) {
    const auto columns = static_cast<int>(sums.size());
    ScoreRows rows{sums.size(), {}};
    std::vector<int> left = sums;
    const std::function<bool(int)> add = [&](int rowsLeft) {
        if (rowsLeft == 0) return std::all_of(left.begin(), left.end(), [](int sum) { return sum == 0; });
        if (std::any_of(left.begin(), left.end(), [&](int s) { return s < rowsLeft || s > rowsLeft * columns; })) {
            return false;
        }
        std::vector<int> row(sums.size());
        std::iota(row.begin(), row.end(), 1);
        do {
            for (std::size_t i = 0; i < row.size(); ++i) left[i] -= row[i];
            for (const int rank : row) rows.scores.push_back(2 * rank);
            if (add(rowsLeft - 1)) return true;
            for (std::size_t i = 0; i < row.size(); ++i) left[i] += row[i];
            rows.scores.resize(rows.scores.size() - row.size());
        } while (std::next_permutation(row.begin(), row.end()));
        return false;
    };
    add(static_cast<int>(count));
    return rows;
}

struct PrintedPoint {
    std::size_t rows;
    std::vector<int> sums;
    double chiSquare;   ///< as printed
    double printed;     ///< its significance
    double unit;        ///< of the last printed place
    double favourable;  ///< arrangements with a chi-square as large, of (k!)^rows
};

// Friedman (1937), Journal of the American Statistical Association 32, 688-689, tables V and VI. The numbers of
// arrangements are from an enumeration of the column sums of all arrangements in Python, without regard to symmetry.
TEST(FriedmanExact, IsThatOfThePrintedTables) {
    const std::vector<PrintedPoint> points{
        {2, {2, 4, 6}, 4, 0.167, 1e-3, 6},
        {3, {3, 6, 9}, 6, 0.028, 1e-3, 6},
        {3, {3, 7, 8}, 4.667, 0.194, 1e-3, 42},
        {4, {4, 8, 12}, 8, 0.0046, 1e-4, 6},
        {4, {4, 9, 11}, 6.5, 0.042, 1e-3, 54},
        {4, {4, 10, 10}, 6, 0.069, 1e-3, 90},
        {5, {5, 10, 15}, 10, 0.00077, 1e-5, 6},
        {5, {5, 11, 14}, 8.4, 0.0085, 1e-4, 66},
        {5, {6, 10, 14}, 6.4, 0.039, 1e-3, 306},
        {6, {6, 13, 17}, 10.333, 0.0017, 1e-4, 78},
        {6, {7, 13, 16}, 7, 0.029, 1e-3, 1350},
        {6, {7, 14, 15}, 6.333, 0.052, 1e-3, 2430},
        {7, {7, 15, 20}, 12.286, 0.00032, 1e-5, 90},
        {7, {9, 14, 19}, 7.143, 0.027, 1e-3, 7608},
        {8, {8, 17, 23}, 14.25, 0.000061, 1e-6, 102},
        {8, {11, 16, 21}, 6.25, 0.047, 1e-3, 78786},
        {9, {9, 18, 27}, 18, 0.0000006, 1e-7, 6},
        {9, {12, 20, 22}, 6.222, 0.048, 1e-3, 479220},
        {9, {12, 21, 21}, 6, 0.057, 1e-3, 573972},
        {2, {2, 4, 6, 8}, 6, 0.042, 1e-3, 24},
        {3, {3, 6, 9, 12}, 9, 0.0017, 1e-4, 24},
        {3, {4, 5, 10, 11}, 7.4, 0.033, 1e-3, 456},
        {4, {4, 8, 12, 16}, 12, 0.000072, 1e-6, 24},
        {4, {5, 9, 11, 15}, 7.8, 0.036, 1e-3, 12072},
    };
    for (const PrintedPoint& point : points) {
        const ScoreRows rows = RowsWithSums(point.rows, point.sums);
        ASSERT_EQ(rows.RowCount(), point.rows);
        const auto n = static_cast<double>(point.rows);
        const auto k = static_cast<double>(rows.columns);
        const double squares = SumOfSquaredColumnSums(rows) / 4;  // of ranks, where those of the rows are doubled
        ASSERT_NEAR(12 * squares / (n * k * (k + 1)) - 3 * n * (k + 1), point.chiSquare, 6e-4);
        const std::optional<double> p = FriedmanExact(rows);
        ASSERT_TRUE(p);
        EXPECT_NEAR(*p * std::pow(std::tgamma(k + 1), n) / point.favourable, 1, 1e-12) << point.chiSquare;
        EXPECT_NEAR(*p, point.printed, 0.51 * point.unit) << point.chiSquare;
    }
}

/// Checks every arrangement of these rows, whatever order their scores have now.
void ExpectAllArrangements(const ScoreRows& rows, const std::function<std::optional<double>(const ScoreRows&)>& exact) {
    std::vector<double> statistics;
    std::vector<double> significances;
    ScoreRows arranged = rows;
    const std::function<void(std::size_t)> arrange = [&](std::size_t row) {
        if (row == rows.RowCount()) {
            statistics.push_back(SumOfSquaredColumnSums(arranged));
            significances.push_back(exact(arranged).value_or(-1));
            return;
        }
        const auto begin = arranged.scores.begin() + static_cast<std::ptrdiff_t>(row * rows.columns);
        const auto end = begin + static_cast<std::ptrdiff_t>(rows.columns);
        std::sort(begin, end);
        do {
            arrange(row + 1);
        } while (std::next_permutation(begin, end));  // equal scores are arranged once: all orders are as likely
    };
    arrange(0);
    const auto count = static_cast<double>(statistics.size());
    std::vector<double> ascending = statistics;
    std::sort(ascending.begin(), ascending.end());
    for (std::size_t i = 0; i < statistics.size(); ++i) {
        const auto first = std::lower_bound(ascending.begin(), ascending.end(), statistics[i]);
        ASSERT_NEAR(significances[i], static_cast<double>(ascending.end() - first) / count, 1e-13);
    }
}

// Each table of three rows and columns with the values 1, 2 and 3: the rows have one of these patterns, in some order.
TEST(FriedmanExact, IsTheShareOfArrangementsOfThreeTiedRows) {
    const std::vector<std::vector<int>> patterns{{1, 2, 3}, {1, 1, 2}, {1, 2, 2}, {1, 1, 1}};
    for (const auto& first : patterns) {
        for (const auto& second : patterns) {
            for (const auto& third : patterns) ExpectAllArrangements(RankRows({first, second, third}), FriedmanExact);
        }
    }
}

TEST(FriedmanExact, IsTheShareOfArrangementsOfMoreColumns) {
    ExpectAllArrangements(RankRows({{1, 2, 3, 4}, {1, 2, 2, 3}, {1, 1, 2, 2}}), FriedmanExact);
    ExpectAllArrangements(RankRows({{1, 1, 2, 3, 3}, {1, 2, 2, 2, 2}, {1, 1, 1, 2, 2}}), FriedmanExact);
    ExpectAllArrangements(RankRows({{1, 2, 2, 2, 3, 3}, {1, 1, 1, 2, 2, 2}}), FriedmanExact);
}

// Of two columns, P is that of the sign test. R: binom.test(c(14, 5))$p.value and binom.test(c(60, 35))$p.value.
TEST(FriedmanExact, OfTwoColumnsIsTheSignTest) {
    const auto rowsOf = [](int rising, int falling, int tied) {
        std::vector<std::vector<int>> table(static_cast<std::size_t>(rising), {1, 2});
        table.insert(table.end(), static_cast<std::size_t>(falling), {2, 1});
        table.insert(table.end(), static_cast<std::size_t>(tied), {1, 1});
        return RankRows(table);
    };
    EXPECT_NEAR(FriedmanExact(rowsOf(14, 5, 3)).value_or(-1), 0.063568115234375, 1e-15);
    EXPECT_NEAR(FriedmanExact(rowsOf(60, 35, 0)).value_or(-1), 0.0133787030260039, 1e-15);
    EXPECT_NEAR(CochranExact(std::vector<std::int64_t>(95, 1), {60, 35}).value_or(-1), 0.0133787030260039, 1e-15);
}

// Rows that agree altogether are one arrangement in each of the k! orders of the columns: (k!)^(1 - n).
TEST(FriedmanExact, OfAgreeingRowsIsOneArrangementInEachOrder) {
    const auto agreeing = [](std::size_t count, std::size_t columns) {
        std::vector<int> row(columns);
        std::iota(row.begin(), row.end(), 1);
        return RankRows(std::vector<std::vector<int>>(count, row));
    };
    EXPECT_NEAR(FriedmanExact(agreeing(12, 4)).value_or(-1) * std::pow(24.0, 11), 1, 1e-12);
    EXPECT_NEAR(FriedmanExact(agreeing(6, 5)).value_or(-1) * std::pow(120.0, 5), 1, 1e-12);
    EXPECT_NEAR(FriedmanExact(agreeing(2, 8)).value_or(-1) * 40320, 1, 1e-12);
}

TEST(FriedmanExact, GivesNothingWithoutRowsAndForTooManyArrangements) {
    EXPECT_FALSE(FriedmanExact(ScoreRows{}));
    EXPECT_FALSE(FriedmanExact(ScoreRows{1, {2, 2}}));
    EXPECT_FALSE(FriedmanExact(RankRows({{1, 2, 3, 4, 5, 6, 7, 8, 9}})));
    EXPECT_TRUE(std::isinf(FriedmanExactSteps(RankRows({{1, 2, 3, 4, 5, 6, 7, 8, 9}}))));
    EXPECT_EQ(FriedmanExact(RankRows({{5, 5, 5}, {7, 7, 7}})), 1.0);
    EXPECT_EQ(FriedmanExact(RankRows({{5, 6, 7}})), 1.0);
}

std::optional<double> CochranOf(const ScoreRows& rows) {
    std::vector<std::int64_t> successes(rows.RowCount());
    std::vector<std::int64_t> sums(rows.columns);
    for (std::size_t i = 0; i < rows.RowCount(); ++i) {
        for (std::size_t column = 0; column < rows.columns; ++column) {
            successes[i] += rows.At(i, column);
            sums[column] += rows.At(i, column);
        }
    }
    return CochranExact(successes, sums);
}

// Each table of four rows and three columns, rows without and with all successes among them.
TEST(CochranExact, IsTheShareOfArrangements) {
    const std::vector<std::vector<std::int64_t>> kinds{{0, 0, 0}, {0, 0, 1}, {0, 1, 1}, {1, 1, 1}};
    for (std::size_t code = 0; code < 256; ++code) {
        ScoreRows rows{3, {}};
        for (std::size_t row = 0, rest = code; row < 4; ++row, rest /= 4) {
            rows.scores.insert(rows.scores.end(), kinds[rest % 4].begin(), kinds[rest % 4].end());
        }
        ExpectAllArrangements(rows, CochranOf);
    }
}

TEST(CochranExact, IsTheShareOfArrangementsOfFiveColumns) {
    ExpectAllArrangements(ScoreRows{5, {0, 0, 0, 0, 1, 0, 0, 0, 1, 1, 0, 0, 1, 1, 1}}, CochranOf);
    ExpectAllArrangements(ScoreRows{5, {0, 0, 1, 1, 1, 0, 0, 0, 1, 1, 0, 1, 1, 1, 1}}, CochranOf);
}

// Rows with one success each, all of them in one column: one way for each of the k columns, of k^n. Of 42 columns, 41
// sums of three bits need more than 64.
TEST(CochranExact, OfOneSuccessARowIsOneColumnForAll) {
    std::vector<std::int64_t> sums(30);
    sums[7] = 3;
    EXPECT_NEAR(CochranExact({1, 1, 1}, sums).value_or(-1), 30 / 27000.0, 1e-16);
    std::vector<std::int64_t> wide(42);
    wide[0] = 5;
    EXPECT_NEAR(CochranExact({1, 1, 1, 1, 1}, wide).value_or(-1) * std::pow(42.0, 4), 1, 1e-12);
}

TEST(CochranExact, GivesNothingForCountsThatDoNotFit) {
    EXPECT_FALSE(CochranExact({}, {0, 0}));
    EXPECT_FALSE(CochranExact({1, 1}, {2}));
    EXPECT_FALSE(CochranExact({3}, {1, 2}));
    EXPECT_FALSE(CochranExact({-1, 2}, {0, 1}));
    EXPECT_FALSE(CochranExact({1, 1}, {2, 1}));
    EXPECT_TRUE(std::isinf(CochranExactSteps({1, 1}, {2, 1})));
    EXPECT_NEAR(CochranExact({0, 3}, {1, 1, 1}).value_or(-1), 1, 1e-15);
}

TEST(FriedmanExactSteps, GrowWithRowsAndColumns) {
    const auto steps = [](std::size_t count, const std::vector<int>& row) {
        return FriedmanExactSteps(RankRows(std::vector<std::vector<int>>(count, row)));
    };
    EXPECT_LT(steps(12, {1, 2, 3, 4}), 1e7);
    EXPECT_LT(steps(12, {1, 2, 3, 4}), steps(24, {1, 2, 3, 4}));
    EXPECT_GT(steps(30, {1, 2, 3, 4, 5, 6}), 1e9);
    EXPECT_LT(CochranExactSteps(std::vector<std::int64_t>(10, 1), std::vector<std::int64_t>{10, 0, 0, 0, 0, 0}), 1e6);
}

}  // namespace
}  // namespace tarn
