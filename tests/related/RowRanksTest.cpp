// Ranking of single rows: held against TARNRank, which takes sorted values one by one.

#include "related/RowRanks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <random>
#include <utility>
#include <vector>

#include "support/TARNRank.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();

std::vector<double> RanksOf(const std::vector<double>& row, double* tieSum = nullptr) {
    RowRanks ranks;
    ranks.Sort(row);
    const double sum = ranks.Rank(0, row.size() - 1);
    if (tieSum != nullptr) *tieSum = sum;
    std::vector<double> result;
    for (std::size_t i = 0; i < row.size(); ++i) result.push_back(ranks.At(i));
    return result;
}

using Values = std::vector<double>;

TEST(RowRanks, GivesMidRanksInRowOrder) {
    double tieSum = -1;
    EXPECT_EQ(RanksOf({3, 1, 2}, &tieSum), (Values{3, 1, 2}));
    EXPECT_EQ(tieSum, 0);
    EXPECT_EQ(RanksOf({2, 1, 2, 3}, &tieSum), (Values{2.5, 1, 2.5, 4}));
    EXPECT_EQ(tieSum, 6);
    EXPECT_EQ(RanksOf({5, 5, 5}, &tieSum), (Values{2, 2, 2}));
    EXPECT_EQ(tieSum, 24);
    EXPECT_EQ(RanksOf({7}), (Values{1}));
    EXPECT_EQ(RanksOf({0.0, -0.0, -1}), (Values{2.5, 2.5, 1}));
}

TEST(RowRanks, TiesToleranceDoesNotChain) {
    EXPECT_EQ(RanksOf({1, 1 + 8e-15}), (Values{1.5, 1.5}));
    EXPECT_EQ(RanksOf({1, 1 + 2e-14}), (Values{1, 2}));
    EXPECT_EQ(RanksOf({1, 1 + 8e-15, 1 + 1.6e-14}), (Values{1.5, 1.5, 3}));
}

TEST(RowRanks, EqualInfinitiesAreNoTie) {
    // Their difference is no number.
    EXPECT_EQ(RanksOf({kInfinity, 1, kInfinity}), (Values{2, 1, 3}));
    EXPECT_EQ(RanksOf({-kInfinity, 1, -kInfinity}), (Values{1, 3, 2}));
}

TEST(RowRanks, RowWithValuesThatAreNoNumbersIsRankedSomehow) {
    for (const std::size_t size : {3U, 200U}) {
        Values row(size, 1.0);
        for (std::size_t i = 0; i < size; i += 2) row[i] = std::numeric_limits<double>::quiet_NaN();
        for (const double rank : RanksOf(row)) {
            EXPECT_GE(rank, 1);
            EXPECT_LE(rank, static_cast<double>(size));
        }
    }
}

/// The ranks of the positions first .. last by the rule itself.
struct Reference {
    Values ranks;
    double tieSum;
};

Reference ByTARNRank(const Values& row, std::size_t first, std::size_t last) {
    std::vector<std::pair<double, std::size_t>> ascending;
    for (std::size_t i = first; i <= last; ++i) ascending.emplace_back(row[i], i);
    std::stable_sort(ascending.begin(), ascending.end(),
                     [](const auto& a, const auto& b) { return a.first < b.first; });
    TARNRank rank(Arithmetic::AsDefined());
    for (const auto& [value, position] : ascending) {
        EXPECT_FALSE(rank.AddValue(value, 1, static_cast<std::int32_t>(position)).IsError());
    }
    rank.CloseTieRun();
    Reference reference{{}, rank.TieCorrectionSum()};
    for (std::size_t i = first; i <= last; ++i) {
        reference.ranks.push_back(rank.GroupRanks(static_cast<std::int32_t>(i)).sumOfRanks);
    }
    return reference;
}

TEST(RowRanks, RanksEveryRunOfPositionsAsTARNRankDoes) {
    std::mt19937 random(7);
    RowRanks ranks;
    for (const std::size_t size : {2U, 3U, 5U, 12U, 32U, 33U, 70U}) {
        for (const int distinct : {2, 6, 1000}) {
            Values row(size);
            for (double& value : row) value = static_cast<double>(random() % static_cast<unsigned>(distinct)) / 7;
            ranks.Sort(row);
            for (std::size_t first = 0; first < size; first += 1 + size / 8) {
                for (std::size_t last = first; last < size; ++last) {
                    const Reference expected = ByTARNRank(row, first, last);
                    EXPECT_EQ(ranks.Rank(first, last), expected.tieSum);
                    for (std::size_t i = first; i <= last; ++i) EXPECT_EQ(ranks.At(i), expected.ranks[i - first]);
                }
            }
        }
    }
}

TEST(RankFrequencies, KeepsRanksInOrderAndThoseOfNoWeight) {
    RankFrequencies frequencies;
    for (const auto& [rank, weight] : {std::pair(2.5, 3.0), {1.0, 0.0}, {4.0, 2.0}, {2.5, -1.0}, {1.0, 0.0}}) {
        frequencies.Add(rank, weight);
    }
    EXPECT_EQ(frequencies.Entries(), (std::vector<std::pair<double, double>>{{1, 0}, {2.5, 2}, {4, 2}}));
}

}  // namespace
