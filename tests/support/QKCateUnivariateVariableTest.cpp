// The descriptive record of a categorical field, without a store. Expected values by hand.

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

#include "support/QKUnivariateVariable.h"

namespace {

using Frequencies = std::vector<std::int64_t>;  // of the categories from 0 up
/// A category of field 0 with its weight in field 1.
using Weighted = std::pair<double, double>;

/// A record of field 0, weighted by field 1, after its pass.
QKCateUnivariateVariable AfterThePass(const std::vector<int>& statistics, int categories,
                                      const std::vector<Weighted>& values) {
    QKCateUnivariateVariable variable(0, 1, categories);
    for (const int statistic : statistics) EXPECT_TRUE(variable.AddStatistic(statistic)) << statistic;
    for (const auto& [category, weight] : values) {
        Record record(2);
        record[0] = category;
        record[1] = weight;
        EXPECT_TRUE(variable.AddRecord(record).IsOK());
    }
    EXPECT_TRUE(variable.NeedsPass());
    EXPECT_TRUE(variable.EndPass().IsOK());
    return variable;
}

struct StatisticCase {
    int code;
    bool taken;
    int median;
    int mode;
};

class CategoricalStatistics : public testing::TestWithParam<StatisticCase> {};

TEST_P(CategoricalStatistics, ComputeWhatTheirCodeSaysAndFrequenciesInAnyCase) {
    QKCateUnivariateVariable variable(0, -1, 3);
    EXPECT_EQ(variable.AddStatistic(GetParam().code), GetParam().taken);
    for (const double category : {2.0, 1.0, 2.0, 2.0, 1.0}) {
        Record record(1);
        record[0] = category;
        EXPECT_TRUE(variable.AddRecord(record).IsOK());
    }
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetMedianCategory(), GetParam().median);
    EXPECT_EQ(variable.GetModeFrequency(), GetParam().mode);
    EXPECT_EQ(variable.GetFrequencies(), (Frequencies{0, 2, 3}));
    EXPECT_EQ(variable.GetCount(), 5);
}

// The sums 0, 2, 5 reach 5 / 2 = 2 at category 1.
INSTANTIATE_TEST_SUITE_P(
    Codes, CategoricalStatistics,
    testing::Values(StatisticCase{-1, false, 0, 0}, StatisticCase{0, false, 0, 0}, StatisticCase{1, false, 0, 0},
                    StatisticCase{2, false, 0, 0}, StatisticCase{3, false, 0, 0}, StatisticCase{4, true, 1, 0},
                    StatisticCase{5, false, 0, 0}, StatisticCase{6, false, 0, 0}, StatisticCase{7, true, 0, 3},
                    StatisticCase{8, true, 0, 0}, StatisticCase{9, true, 1, 3}, StatisticCase{10, false, 0, 0}),
    [](const auto& test) { return test.param.code < 0 ? "Negative" : "Code" + std::to_string(test.param.code); });

struct Sample {
    const char* name;
    int categories;
    std::vector<Weighted> values;
    Frequencies frequencies;
    std::int32_t count;
    std::int32_t mode;
    int median;
};

class Samples : public testing::TestWithParam<Sample> {};

TEST_P(Samples, HaveTheirFrequenciesModeAndMedian) {
    const Sample& expected = GetParam();
    const QKCateUnivariateVariable variable = AfterThePass({9}, expected.categories, expected.values);
    EXPECT_FALSE(variable.NeedsPass());
    EXPECT_EQ(variable.GetFrequencies(), expected.frequencies);
    EXPECT_EQ(variable.GetCount(), expected.count);
    EXPECT_EQ(variable.GetModeFrequency(), expected.mode);
    EXPECT_EQ(variable.GetMedianCategory(), expected.median);
    EXPECT_EQ(variable.GetCategoryCount(), expected.categories);
}

INSTANTIATE_TEST_SUITE_P(
    , Samples,
    testing::Values(
        Sample{"Weighted", 4, {{2, 3.9}, {0, 1}, {2, 1}, {3, 0.9}}, {1, 0, 4, 0}, 5, 4, 2},
        // 3 / 2 = 1, which the one case of category 0 reaches.
        Sample{"HalfIsRoundedDown", 3, {{0, 1}, {1, 1}, {1, 1}}, {1, 2, 0}, 3, 2, 0},
        // Half of 4 is reached, not passed, at category 0.
        Sample{"HalfReachedExactly", 2, {{0, 2}, {1, 2}}, {2, 2}, 4, 2, 0},
        // 1 / 2 = 0 is reached before any case is.
        Sample{"OneCase", 3, {{2, 1}}, {0, 0, 1}, 1, 1, 0}, Sample{"NoCase", 2, {}, {0, 0}, 0, 0, 0},
        Sample{"NoCategory", 0, {}, {}, 0, 0, 0},
        // Categories beyond the table add to no frequency but to the count, whose half is then never reached.
        Sample{"UnknownCategoryAddsToTheCountAlone", 2, {{5, 8}, {-2, 1}, {1, 2}}, {0, 2}, 11, 2, 0},
        Sample{"FractionOfACategoryIsCut", 2, {{1.9, 1}}, {0, 1}, 1, 1, 0},
        Sample{"NegativeWeightsTakeAway", 2, {{0, 4}, {0, -1}, {1, 5}}, {3, 5}, 8, 5, 1},
        Sample{"LargestOfNegativeFrequencies", 2, {{0, -4}, {1, -3}}, {-4, -3}, -7, -3, 0},
        Sample{"CountersWrap", 1, {{0, 2147483647}, {0, 3}}, {-2147483646}, -2147483646, -2147483646, 0}),
    [](const auto& test) { return std::string(test.param.name); });

TEST(QKCateUnivariateVariable, MissingIsMinusOne) {
    const QKCateUnivariateVariable variable(0, -1, 2);
    EXPECT_TRUE(variable.IsMissing(-1.0));
    EXPECT_FALSE(variable.IsMissing(-1.7976931348623157e308));
}

TEST(QKCateUnivariateVariable, EveryCategoryHasAnEntryBeforeAnythingIsSeen) {
    const QKCateUnivariateVariable variable(0, -1, 3);
    EXPECT_EQ(variable.GetFrequencies(), (Frequencies{0, 0, 0}));
    EXPECT_EQ(variable.GetModeFrequency(), 0);
    EXPECT_EQ(variable.GetMedianCategory(), 0);
}

TEST(QKCateUnivariateVariable, WeightFieldSetLaterHoldsFromThenOn) {
    QKCateUnivariateVariable variable(0, -1, 1);
    Record record(2);
    record[0] = 0;
    record[1] = 10;
    EXPECT_TRUE(variable.AddRecord(record).IsOK());
    variable.SetWeightIndex(1);
    EXPECT_TRUE(variable.AddRecord(record).IsOK());
    EXPECT_EQ(variable.GetCount(), 11);
}

}  // namespace
