#include "host/beyond/TestCases.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace {

using tarn::AscendingSample;
using tarn::CaseRule;
using tarn::Category;
using tarn::Column;
using tarn::CompleteCases;
using tarn::FieldLevel;
using tarn::FieldType;
using tarn::GroupedCases;
using tarn::kMissingCategory;
using tarn::kMissingNumber;
using tarn::Table;
using tarn::TieBlocks;

Column NumberColumn(const std::string& name) {
    Column column;
    column.name = name;
    return column;
}

Column WordColumn(const std::string& name, const std::vector<std::string>& words) {
    Column column;
    column.name = name;
    column.type = FieldType::kString;
    column.level = FieldLevel::kNominal;
    for (const std::string& word : words) column.categories.push_back({0, word, ""});
    return column;
}

/// A value, a group of a, b and c, a weight.
Table MakeTable(const std::vector<std::vector<double>>& rows, bool isWeighted = false) {
    Table table({NumberColumn("x"), WordColumn("g", {"a", "b", "c"}), NumberColumn("w")});
    table.Resize(rows.size());
    for (std::size_t row = 0; row < rows.size(); ++row) {
        for (std::size_t column = 0; column < 3; ++column) table.Cells(column)[row] = rows[row][column];
    }
    if (isWeighted) table.SetWeightIndex(2);
    return table;
}

std::vector<double> ColumnOf(const CompleteCases& cases, std::size_t field) {
    return {cases.columns[field].begin(), cases.columns[field].end()};
}

}  // namespace

TEST(TestCases, GroupsAscendWithoutThoseThatHaveNoCase) {
    const Table table = MakeTable({{3, 2, 1}, {1, 0, 1}, {2, 2, 1}, {kMissingNumber, 2, 1}, {5, kMissingCategory, 1}});
    const GroupedCases cases = CasesByGroup(table, 0, 1, {}, WorkShare());
    EXPECT_EQ(cases.names, (std::vector<std::string>{"a", "c"}));
    EXPECT_EQ(cases.samples[0].values, std::vector<double>{1});
    EXPECT_EQ(cases.samples[1].values, (std::vector<double>{2, 3}));
    EXPECT_EQ(cases.missing, (std::vector<double>{0, 1}));
    EXPECT_EQ(cases.Size(), 3);
}

TEST(TestCases, WeightsAreRoundedAndThoseBelowOneHalfCountForNothing) {
    const Table table = MakeTable({{1, 0, 2.5}, {2, 0, 0.4}, {1, 0, 1}, {7, 0, -3}, {4, 0, 0.5}}, true);
    const GroupedCases cases = CasesByGroup(table, 0, 1, {}, WorkShare());
    EXPECT_EQ(cases.samples[0].values, (std::vector<double>{1, 4}));
    EXPECT_EQ(cases.samples[0].weights, (std::vector<double>{4, 1}));  // 2.5 is rounded up, as is 0.5
    EXPECT_EQ(cases.samples[0].size, 5);
}

TEST(TestCases, ListwiseARecordHasToHaveAllFields) {
    const Table table = MakeTable({{1, 0, kMissingNumber}, {2, 0, 1}});
    EXPECT_EQ(CasesByGroup(table, 0, 1, {}, WorkShare()).samples[0].size, 2);
    EXPECT_EQ(CasesByGroup(table, 0, 1, {{0, 2}}, WorkShare()).samples[0].values, std::vector<double>{2});
    EXPECT_EQ(ColumnOf(CasesOf(table, {0}, {{0, 2}}), 0), std::vector<double>{2});
}

TEST(TestCases, ARowIsCompleteOrNoCaseOfSeveralFields) {
    const Table table = MakeTable({{1, 0, 5}, {kMissingNumber, 0, 6}, {3, 0, kMissingNumber}, {4, 0, 8}});
    const CompleteCases cases = CasesOf(table, {0, 2}, {});
    EXPECT_EQ(ColumnOf(cases, 0), (std::vector<double>{1, 4}));
    EXPECT_EQ(ColumnOf(cases, 1), (std::vector<double>{5, 8}));
    EXPECT_EQ(cases.missing, (std::vector<double>{1, 1}));
    EXPECT_EQ(cases.size, 2);
}

TEST(TestCases, FieldsAreNotCopiedWhereEachRecordIsACase) {
    const Table table = MakeTable({{1, 0, 5}, {3, 0, 7}});
    const CompleteCases cases = CasesOf(table, {2, 0}, {});
    EXPECT_EQ(cases.columns[0].data(), table.Cells(2).data());
    EXPECT_EQ(ColumnOf(cases, 1), (std::vector<double>{1, 3}));
    EXPECT_EQ(cases.missing, (std::vector<double>{0, 0}));
    EXPECT_EQ(cases.size, 2);
}

TEST(TestCases, CategoriesOfNumbersCountByTheirNumbers) {
    Column ordinal = NumberColumn("o");
    ordinal.level = FieldLevel::kOrdinal;
    ordinal.categories = {{10, "", ""}, {5, "", ""}};
    Table table({ordinal});
    table.Resize(2);
    table.Cells(0)[0] = 0;
    table.Cells(0)[1] = 1;
    EXPECT_EQ(ColumnOf(CasesOf(table, {0}, {}), 0), (std::vector<double>{10, 5}));
}

// Neighbours differ in the last bit alone, where the place of a value stands while they are sorted.
TEST(TestCases, WeightedValuesAscendToTheLastBit) {
    std::vector<double> values;
    std::vector<double> weights;
    double value = 1;
    for (int i = 0; i < 1000; ++i, value = std::nextafter(value, 2)) {
        values.push_back(i % 2 == 0 ? value : -value);
        weights.push_back(i + 1);
    }
    values.push_back(0.0);
    values.push_back(-0.0);
    weights.insert(weights.end(), {5, 6});
    const AscendingSample sample = tarn::Ascending(values, weights);
    ASSERT_EQ(sample.values.size(), 1001U);
    EXPECT_TRUE(std::ranges::is_sorted(sample.values));
    EXPECT_EQ(sample.size, 1000 * 1001 / 2 + 11);
    EXPECT_EQ(sample.weights[500], 11);
    EXPECT_EQ(sample.weights[501], 1);
    EXPECT_EQ(sample.weights[502], 3);
    EXPECT_EQ(sample.weights[499], 2);
}

TEST(TestCases, NegativeNumbersAndBothZerosStandInTheirOrder) {
    const AscendingSample sample = tarn::Ascending({0.0, -0.0, -2, 1e300, -1e-300}, {});
    EXPECT_EQ(sample.values, (std::vector<double>{-2, -1e-300, 0, 0, 1e300}));
    EXPECT_FALSE(std::signbit(sample.values[2]));
}

// The ranks of the tests are tied within 1e-14 of the value that opens a run, and runs don't chain.
TEST(TestCases, NeighboursAreTiedAsTheTestsTieThem) {
    const double step = 0.6e-14;
    std::vector<AscendingSample> samples{{{1, 1 + step}, {}, 2}, {{1 + 2 * step, 2}, {}, 2}};
    TieTogether(samples);
    EXPECT_EQ(samples[0].values, (std::vector<double>{1, 1}));
    EXPECT_EQ(samples[1].values, (std::vector<double>{1 + 2 * step, 2}));  // 1.2e-14 from the opener
    std::vector<AscendingSample> three{{{6.2 - 5.8}, {}, 1}, {{0.4}, {}, 1}, {{0.5}, {}, 1}};
    TieTogether(three);
    EXPECT_EQ(three[0].values, three[1].values);
    EXPECT_NE(three[1].values, three[2].values);
}

// The definition, value by value: sorted together, each becomes the first one of its run if it is less than 1e-14
// above. Most samples have neighbours in one place alone, at an end or where a walk over both lists is parted.
TEST(TestCases, NeighboursAreTiedWhereverTheyStand) {
    std::mt19937 generator(7);
    const auto chance = [&](std::size_t below) { return generator() % below; };
    for (int round = 0; round < 3000; ++round) {
        std::vector<AscendingSample> samples(2);
        for (std::size_t value = 1 + chance(3); value <= 9; value += 1 + chance(2)) {
            samples[chance(2)].values.push_back(static_cast<double>(value));
        }
        const std::vector<double> any = samples[chance(2)].values;
        if (!any.empty()) {
            const double near = any[chance(any.size())] + 4e-15 * static_cast<double>(chance(4));
            samples[chance(2)].values.push_back(near);
        }
        std::vector<double*> pooled;
        std::vector<AscendingSample> expected = samples;
        for (AscendingSample& sample : expected) {
            std::ranges::sort(sample.values);
            for (double& value : sample.values) pooled.push_back(&value);
        }
        std::ranges::sort(pooled, {}, [](const double* value) { return *value; });
        double opener = -1;
        for (double* const value : pooled) {
            if (*value - opener >= 1e-14) opener = *value;
            *value = opener;
        }
        for (AscendingSample& sample : samples) std::ranges::sort(sample.values);
        TieTogether(samples);
        ASSERT_EQ(samples[0].values, expected[0].values) << round;
        ASSERT_EQ(samples[1].values, expected[1].values) << round;
    }
}

TEST(TestCases, BlocksCountTheCasesOfEachGroupByValue) {
    const std::vector<AscendingSample> samples{{{1, 2}, {3, 1}, 4}, {{2, 5}, {}, 2}};
    const TieBlocks blocks = BlocksOf(samples);
    EXPECT_EQ(blocks.BlockCount(), 3U);
    EXPECT_EQ(blocks.counts, (std::vector<std::int64_t>{3, 0, 1, 1, 0, 1}));
}

TEST(TestCases, InfiniteValuesAreSeen) {
    EXPECT_TRUE(tarn::HasUnordered({{1, std::numeric_limits<double>::infinity()}, {}, 2}));
    EXPECT_FALSE(tarn::HasUnordered({{-1e308, 1e308}, {}, 2}));
}
