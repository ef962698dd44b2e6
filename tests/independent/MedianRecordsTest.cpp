// The tables of subsets from records that are kept, held to subsets that take each of their records in turn.

#include "independent/MedianRecords.h"

#include <gtest/gtest.h>

#include <limits>
#include <numeric>

#include "tests/independent/RandomRecords.h"

namespace {

using several::GroupedColumns;
using several::RandomRecords;
using several::Ties;

constexpr std::int32_t kGroups = 6;

/// A subset that has its groups and nothing else.
MedianSubset SubsetOf(const GroupedColumns& records, const std::vector<std::size_t>& groups) {
    std::vector<std::int32_t> categories;
    std::vector<double> sizes;
    for (const std::size_t group : groups) {
        categories.push_back(static_cast<std::int32_t>(group));
        const GroupedColumns own = records.Of([&](std::int32_t other) { return other == categories.back(); });
        sizes.push_back(std::accumulate(own.weights.begin(), own.weights.end(), 0.0));
    }
    MedianSubset subset(Arithmetic::AsDefined());
    subset.SetGroups(categories, sizes, kGroups);
    return subset;
}

void ExpectPlainTables(const GroupedColumns& records) {
    MedianRecords kept;
    kept.Begin(kGroups);
    for (std::size_t i = 0; i < records.Size(); ++i) {
        kept.Add(records.values[i], records.weights[i], static_cast<std::size_t>(records.groups[i]));
    }
    kept.Close();
    for (const std::vector<std::size_t>& groups :
         {std::vector<std::size_t>{0, 1}, {5, 2}, {4}, {3, 0, 5}, {0, 1, 2, 3, 4, 5}}) {
        MedianSubset subset = SubsetOf(records, groups);
        kept.FindMedian(subset, groups);
        kept.Count(subset, groups);

        MedianSubset plain = SubsetOf(records, groups);
        const auto forEach = [&](auto take) {
            for (std::size_t i = 0; i < records.Size(); ++i) {
                const std::int32_t place = plain.PlaceOf(records.groups[i]);
                if (place != MedianSubset::kNotInside) take(records.values[i], records.weights[i], place);
            }
        };
        forEach([&](double value, std::int32_t weight, std::int32_t) { plain.AddToMedian(value, weight); });
        plain.FinishMedian();
        forEach([&](double value, std::int32_t weight, std::int32_t place) { plain.Count(value, weight, place); });
        ASSERT_EQ(subset.Median(), plain.Median()) << groups.size();
        for (const std::size_t row : {MedianSubset::kNotAbove, MedianSubset::kAbove}) {
            ASSERT_EQ(subset.Counts(row), plain.Counts(row)) << groups.size();
        }
    }
}

// Lengths around a block and beyond several.
TEST(MedianRecords, TablesAreThoseOfTheRecordsInTurn) {
    unsigned seed = 1;
    for (const std::size_t count : {0U, 1U, 2U, 7U, 1023U, 1024U, 1025U, 5000U}) {
        for (const std::vector<std::int32_t>& weights :
             {std::vector<std::int32_t>{1}, {0, 1, 3}, {0, 0, 0, 5}, {100'000'000, 1}, {-2, 1, 3}}) {
            for (const int gridPoints : {1, 30, 1'000'000}) {
                ExpectPlainTables(RandomRecords(count, kGroups, gridPoints, Ties::kEqual, weights, seed++));
            }
        }
    }
}

// The value in front of the median's block is then far away, or there is none in it.
TEST(MedianRecords, GroupsOfFewRecordsAmongMany) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        GroupedColumns records = RandomRecords(6000, 1, 1'000'000, Ties::kEqual, {1}, seed);
        std::mt19937 random(seed);
        for (int i = 0; i < 9; ++i) records.groups[random() % 6000] = 1 + static_cast<std::int32_t>(random() % 5);
        ExpectPlainTables(records);
    }
}

TEST(MedianRecords, WhatIsNoNumberIsNotAbove) {
    GroupedColumns records = RandomRecords(3000, kGroups, 500, Ties::kEqual, {1, 2}, 9);
    for (std::size_t i = 2700; i < 3000; ++i) records.values[i] = std::numeric_limits<double>::quiet_NaN();
    ExpectPlainTables(records);
}

TEST(MedianRecords, AreCountedAroundAGivenMedian) {
    const GroupedColumns records = RandomRecords(4000, kGroups, 100, Ties::kEqual, {1, 2}, 10);
    MedianRecords kept;
    kept.Begin(kGroups);
    double above = 0;
    for (std::size_t i = 0; i < records.Size(); ++i) {
        kept.Add(records.values[i], records.weights[i], static_cast<std::size_t>(records.groups[i]));
        if (records.groups[i] == 3 && records.values[i] > 5) above += records.weights[i];
    }
    kept.Close();
    EXPECT_TRUE(kept.IsClosed());
    MedianSubset subset = SubsetOf(records, {2, 3});
    subset.SetMedian(5);
    kept.Count(subset, {2, 3});
    EXPECT_EQ(subset.Counts(MedianSubset::kAbove)[1], above);
}

}  // namespace
