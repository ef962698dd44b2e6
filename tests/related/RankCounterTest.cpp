// Many rows ranked by comparing columns: held against `RowRanks`, which takes one row by itself.

#include "related/RankCounter.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>
#include <vector>

#include "related/RowRanks.h"

namespace {

using Columns = std::vector<std::vector<double>>;

struct Ranked {
    std::vector<std::int64_t> twiceRanks;
    std::vector<std::uint8_t> isUncertain;

    double At(std::size_t field, std::size_t row) const {
        return static_cast<double>(twiceRanks[field * RowComparison::kRankRoom + row]) / 2;
    }
};

Ranked Rank(const Columns& columns) {
    std::vector<const double*> pointers;
    for (const auto& column : columns) pointers.push_back(column.data());
    const std::size_t rows = columns.front().size();
    Ranked ranked{std::vector<std::int64_t>(columns.size() * RowComparison::kRankRoom),
                  std::vector<std::uint8_t>(rows)};
    const RowBlock block{pointers.data(), columns.size(), 0, rows};
    RowComparison::Rank(block, ranked.twiceRanks.data(), ranked.isUncertain.data());
    std::vector<std::uint8_t> marks(rows);
    RowComparison::MarkUncertain(block, marks.data());
    EXPECT_EQ(marks, ranked.isUncertain);
    return ranked;
}

TEST(RowComparison, RanksRowsAsRowRanksDoes) {
    std::mt19937 random(11);
    for (const std::size_t fields : {1U, 2U, 3U, 5U, 8U, 16U}) {
        for (const std::size_t rows : {1U, 2U, 3U, 63U, 256U}) {
            for (const unsigned distinct : {2U, 6U, 1000000U}) {
                Columns columns(fields, std::vector<double>(rows));
                for (auto& column : columns) {
                    for (double& value : column) value = static_cast<double>(random() % distinct) / 8;
                }
                const Ranked ranked = Rank(columns);
                RowRanks plain;
                for (std::size_t row = 0; row < rows; ++row) {
                    std::vector<double> values;
                    for (const auto& column : columns) values.push_back(column[row]);
                    plain.Sort(values);
                    plain.Rank(0, fields - 1);
                    EXPECT_EQ(ranked.isUncertain[row], 0);
                    for (std::size_t i = 0; i < fields; ++i) EXPECT_EQ(ranked.At(i, row), plain.At(i));
                }
            }
        }
    }
}

TEST(RowComparison, MarksRowsWhoseTiesDontFollowFromSingleComparisons) {
    const double infinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    // Distinct; equal; nearly equal; just not; equal infinities; two infinities; no number; zeros of both signs.
    const Ranked ranked =
        Rank({{1, 1, 1, 1, infinity, infinity, nan, 0.0}, {2, 1, 1 + 8e-15, 1 + 2e-14, infinity, -infinity, 1, -0.0}});
    EXPECT_EQ(ranked.isUncertain, (std::vector<std::uint8_t>{0, 0, 1, 0, 1, 0, 1, 0}));
    EXPECT_EQ(ranked.At(0, 3), 1);
    EXPECT_EQ(ranked.At(0, 5), 2);
    EXPECT_EQ(ranked.At(1, 7), 1.5);
}

TEST(RowComparison, BalanceIsTheWeightAboveLessThatBelow) {
    const std::vector<double> first{3, 1, 2, 5, 0};
    const std::vector<double> second{1, 1, 4, 2, -1};
    std::vector<std::int64_t> weights(RowComparison::kRankRoom, 1000);
    for (std::size_t i = 0; i < first.size(); ++i) weights[i] = std::int64_t{1} << i;
    EXPECT_EQ(RowComparison::Balance(first.data(), second.data(), weights.data(), first.size()), 1 - 4 + 8 + 16);
    EXPECT_EQ(RowComparison::Balance(second.data(), first.data(), weights.data(), first.size()), -21);
}

TEST(RowComparison, TieStepsAddUpToTheTiesOfARow) {
    // Rows 1 1 1 1, 1 2 1 2, 1 2 2 2 and 1 2 3 4: t^3 - t is 60, twice 6, 24 and 0.
    const Columns columns{{1, 1, 1, 1}, {1, 2, 2, 2}, {1, 1, 2, 3}, {1, 2, 2, 4}};
    std::vector<std::int64_t> weights(RowComparison::kRankRoom, 1000);
    for (std::size_t i = 0; i < 4; ++i) weights[i] = std::int64_t{100} << 8 * i;
    std::int64_t sum = 0;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        std::vector<std::int64_t> tied = weights;
        for (std::size_t j = i + 1; j < columns.size(); ++j) {
            const auto [balance, tieStep] =
                RowComparison::CompareTied(columns[i].data(), columns[j].data(), weights.data(), tied.data(), 4);
            EXPECT_EQ(balance, RowComparison::Balance(columns[i].data(), columns[j].data(), weights.data(), 4));
            sum += tieStep;
        }
    }
    EXPECT_EQ(6 * sum, 60 * weights[0] + 12 * weights[1] + 24 * weights[2]);
}

TEST(RankCounter, AddsTheWeightsOfEachRankAndKnowsThoseOfNoWeight) {
    RankCounter counter(2);
    EXPECT_EQ(counter.Width(), 5U);
    counter.Add(0, 2, 3);
    counter.Add(0, 2, -1);
    counter.Add(1, 4, 0);
    EXPECT_EQ(counter.WeightOf(0, 2), 2);
    EXPECT_TRUE(counter.HasCome(0, 2));
    EXPECT_FALSE(counter.HasCome(0, 4));
    EXPECT_TRUE(counter.HasCome(1, 4));
    EXPECT_EQ(counter.WeightOf(1, 4), 0);
}

}  // namespace
