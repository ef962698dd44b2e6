// The descriptive records of single fields, without a store.

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "support/QKUnivariateVariable.h"

namespace {

Record MakeRecord(std::vector<double> values) {
    Record record(values.size());
    std::copy(values.begin(), values.end(), record.begin());
    return record;
}

/// Adds records of (value, weight) with field 0 and weight field 1.
template <typename Variable>
void AddAll(Variable& variable, const std::vector<std::vector<double>>& rows) {
    for (const auto& row : rows) ASSERT_TRUE(variable.AddRecord(MakeRecord(row)).IsOK());
}

// ---- Which statistics there are ----

struct Request {
    int code;
    bool continuous;
    bool categorical;
};

class Requests : public testing::TestWithParam<Request> {};

TEST_P(Requests, AreTakenOrRefusedByTheKindOfField) {
    QKContUnivariateVariable continuous(0, -1);
    QKCateUnivariateVariable categorical(0, -1, 2);
    EXPECT_EQ(continuous.AddStatistic(GetParam().code), GetParam().continuous);
    EXPECT_EQ(categorical.AddStatistic(GetParam().code), GetParam().categorical);
}

INSTANTIATE_TEST_SUITE_P(Codes, Requests,
                         testing::Values(Request{-1, false, false}, Request{0, true, false}, Request{1, true, false},
                                         Request{2, true, false}, Request{3, true, false}, Request{4, true, true},
                                         Request{5, true, false}, Request{6, true, false}, Request{7, false, true},
                                         Request{8, false, true}, Request{9, true, true}, Request{10, false, false}));

// ---- Continuous fields ----

TEST(QKContUnivariateVariable, MeanAndDeviationOfASample) {
    // 2, 4, 4, 4, 5, 5, 7, 9: mean 5, sum of squares 32, variance 32 / 7.
    QKContUnivariateVariable variable(0, -1);
    variable.AddStatistic(0);  // the mean is stored as mean and deviation
    AddAll(variable, {{2}, {4}, {4}, {4}, {5}, {5}, {7}, {9}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetCount(), 8);
    EXPECT_DOUBLE_EQ(variable.GetMean(), 5);
    EXPECT_DOUBLE_EQ(variable.GetStdDev(), std::sqrt(32.0 / 7));
    EXPECT_FALSE(variable.NeedsPass());
    EXPECT_EQ(variable.GetMin(), QKMV::Missing());
}

TEST(QKContUnivariateVariable, WeightsCountAsRepetitionsAndLoseTheirFractions) {
    // 1 twice and 4 three times: mean 14 / 5, sum of squares 2 * 1.8^2 + 3 * 1.2^2 = 10.8, variance 10.8 / 4.
    QKContUnivariateVariable variable(0, 1);
    variable.AddStatistic(1);
    AddAll(variable, {{1, 2.9}, {4, 3.2}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetCount(), 5);
    EXPECT_DOUBLE_EQ(variable.GetMean(), 2.8);
    EXPECT_DOUBLE_EQ(variable.GetStdDev(), std::sqrt(2.7));
}

TEST(QKContUnivariateVariable, OneCaseHasNoDeviation) {
    QKContUnivariateVariable variable(0, -1);
    variable.AddStatistic(1);
    AddAll(variable, {{3.5}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetStdDev(), 0);
}

TEST(QKContUnivariateVariable, WeightOfZeroComingFirstDividesByZero) {
    QKContUnivariateVariable variable(0, 1);
    for (const int code : {1, 2, 3}) variable.AddStatistic(code);
    AddAll(variable, {{7, 0.5}, {1, 1}});
    EXPECT_EQ(variable.GetCount(), 1);
    EXPECT_TRUE(std::isnan(variable.GetMean()));
    EXPECT_EQ(variable.GetMax(), 7);  // the range asks for no weight
}

TEST(QKContUnivariateVariable, HistogramBringsTheRangeAndASecondPass) {
    QKContUnivariateVariable variable(0, -1);
    variable.AddStatistic(6);
    AddAll(variable, {{1}, {0}, {-3}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetMin(), -3);
    EXPECT_EQ(variable.GetMax(), 1);
    EXPECT_TRUE(variable.NeedsPass());
    AddAll(variable, {{1}, {0}, {-3}});
    EXPECT_EQ(variable.GetCount(), 3);  // the second pass counts nothing more
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_FALSE(variable.NeedsPass());
    ASSERT_EQ(variable.GetBins().size(), 402u);  // 400, one more for the boundary at zero, and the zeros
    EXPECT_EQ(variable.GetBins().back().count, 1);
    EXPECT_EQ(variable.GetBins().back().mean, 0);
}

struct Hinges {
    std::vector<std::vector<double>> rows;  // value, weight
    double first, median, third;
};

class HingesByHand : public testing::TestWithParam<Hinges> {};

// Tukey's hinges with depth (floor((n + 1) / 2) + 1) / 2, worked by hand on values in ascending order.
TEST_P(HingesByHand, OfValuesInAscendingOrder) {
    QKContUnivariateVariable variable(0, 1);
    int total = 0;
    for (const auto& row : GetParam().rows) total += static_cast<int>(row[1]);
    for (const auto& row : GetParam().rows) variable.QuantileStep(row[0], row[1], total);
    variable.CloseQuantiles();
    EXPECT_DOUBLE_EQ(variable.GetFirstQuartile(), GetParam().first);
    EXPECT_DOUBLE_EQ(variable.GetMedian(), GetParam().median);
    EXPECT_DOUBLE_EQ(variable.GetThirdQuartile(), GetParam().third);
    EXPECT_EQ(variable.GetMin(), GetParam().rows.front()[0]);
    EXPECT_EQ(variable.GetMax(), GetParam().rows.back()[0]);
}

INSTANTIATE_TEST_SUITE_P(
    , HingesByHand,
    testing::Values(Hinges{{{5, 1}}, 5, 5, 5},                                             // n = 1: all take it
                    Hinges{{{1, 1}, {3, 1}}, 1, 2, 3},                                     // positions 1, 1.5, 2
                    Hinges{{{1, 1}, {3, 1}, {7, 1}}, 2, 3, 5},                             // positions 1.5, 2, 2.5
                    Hinges{{{1, 1}, {3, 1}, {7, 1}, {8, 1}}, 2, 5, 7.5},                   // 1.5, 2.5, 3.5
                    Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}}, 2, 4, 8},            // 2, 3, 4
                    Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}}, 2, 6, 16},  // 2, 3.5, 5
                    Hinges{{{1, 2}, {2, 1}, {10, 5}}, 1.5, 10, 10},                        // 1 1 2 10 10 10 10 10
                    Hinges{{{1, 5}, {9, 1}}, 1, 1, 1}));                                   // 1 1 1 1 1 9

TEST(QKContUnivariateVariable, MissingIsTheMissingDouble) {
    const QKContUnivariateVariable variable(0, -1);
    EXPECT_TRUE(variable.IsMissing(QKMV::Missing()));
    EXPECT_FALSE(variable.IsMissing(-1.0));
}

// ---- Categorical fields ----

TEST(QKCateUnivariateVariable, FrequenciesOfAllCategoriesWithWeights) {
    QKCateUnivariateVariable variable(0, 1, 4);
    variable.AddStatistic(9);
    AddAll(variable, {{2, 3.9}, {0, 1}, {2, 1}, {3, 0.9}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_FALSE(variable.NeedsPass());
    EXPECT_EQ(variable.GetFrequencies(), (std::map<int, std::int32_t>{{0, 1}, {1, 0}, {2, 4}, {3, 0}}));
    EXPECT_EQ(variable.GetCount(), 5);
    EXPECT_EQ(variable.GetModeFrequency(), 4);
    EXPECT_EQ(variable.GetMedianCategory(), 2);  // sums 1, 1, 5 reach 5 / 2 = 2 at category 2
}

TEST(QKCateUnivariateVariable, MedianIsTheFirstCategoryThatReachesHalfRoundedDown) {
    QKCateUnivariateVariable variable(0, -1, 3);
    variable.AddStatistic(4);
    AddAll(variable, {{0}, {1}, {1}});
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetMedianCategory(), 0);  // 3 / 2 = 1, which one case reaches
    EXPECT_EQ(variable.GetModeFrequency(), 0);   // not asked for
}

TEST(QKCateUnivariateVariable, UnknownCategoryAddsToTheCountAlone) {
    QKCateUnivariateVariable variable(0, -1, 2);
    AddAll(variable, {{5}, {1}});
    EXPECT_EQ(variable.GetFrequencies(), (std::map<int, std::int32_t>{{0, 0}, {1, 1}}));
    EXPECT_EQ(variable.GetCount(), 2);
}

TEST(QKCateUnivariateVariable, MissingIsMinusOne) {
    const QKCateUnivariateVariable variable(0, -1, 2);
    EXPECT_TRUE(variable.IsMissing(-1.0));
    EXPECT_FALSE(variable.IsMissing(QKMV::Missing()));
}

}  // namespace
