#include "related/SquareTable.h"

#include <gtest/gtest.h>

#include <cstddef>
#include <cstdint>
#include <random>
#include <tuple>
#include <vector>

namespace {

using Cell = std::tuple<std::size_t, std::size_t, std::int64_t>;

std::vector<Cell> CountedCells(const SquareTable& table) {
    std::vector<Cell> cells;
    table.ForEach([&](std::size_t row, std::size_t column, std::int64_t count) {
        if (count != 0) cells.emplace_back(row, column, count);
    });
    return cells;
}

std::size_t WalkedCells(const SquareTable& table) {
    std::size_t walked = 0;
    table.ForEach([&](std::size_t, std::size_t, std::int64_t) { ++walked; });
    return walked;
}

constexpr std::size_t kLarge = SquareTable::kLargestDense + 1;

TEST(SquareTable, KeepsOfALargeTableTheCountedCellsAlone) {
    SquareTable table;
    table.Clear(kLarge, true);
    ASSERT_TRUE(table.IsSparse());
    table.Sparse(kLarge - 1, 0) += 2;
    table.Sparse(0, kLarge - 1) += 3;
    table.Sparse(kLarge - 1, 0) += 5;
    EXPECT_EQ(CountedCells(table), (std::vector<Cell>{{0, kLarge - 1, 3}, {kLarge - 1, 0, 7}}));
    EXPECT_EQ(WalkedCells(table), 2u);
    EXPECT_EQ(table.Row(0).back(), 3);
    EXPECT_EQ(table.Row(kLarge - 1).front(), 7);
    EXPECT_EQ(table.Row(1), std::vector<std::int64_t>(kLarge, 0));
    table.Clear(kLarge, true);
    EXPECT_EQ(WalkedCells(table), 0u);
}

TEST(SquareTable, WalksEveryCellOfASmallOneAndWhereThatIsAskedFor) {
    SquareTable small;
    small.Clear(3, true);
    EXPECT_FALSE(small.IsSparse());
    EXPECT_EQ(WalkedCells(small), 9u);
    SquareTable large;
    large.Clear(kLarge, false);
    EXPECT_FALSE(large.IsSparse());
    EXPECT_EQ(WalkedCells(large), kLarge * kLarge);
}

TEST(SquareTable, CountsTheSameInBothForms) {
    std::mt19937 random(5);
    SquareTable dense;
    SquareTable sparse;
    dense.Clear(kLarge, false);
    sparse.Clear(kLarge, true);
    for (int i = 0; i < 3000; ++i) {
        const std::size_t row = random() % 50 * 20;
        const std::size_t column = random() % kLarge;
        const auto count = static_cast<std::int64_t>(random() % 4) - 1;
        dense.Dense(row, column) += count;
        sparse.Sparse(row, column) += count;
    }
    EXPECT_EQ(CountedCells(sparse), CountedCells(dense));
    for (std::size_t row = 0; row < kLarge; row += 10) EXPECT_EQ(sparse.Row(row), dense.Row(row)) << row;
}

}  // namespace
