// The descriptive record of a continuous field, without a store.
//
// Moments: exact rational arithmetic over the values and the truncated weights, the root by mpmath with 40 digits.
// Hinges: by hand, and as the medians of the two halves of the sorted values, the middle one in both.

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "support/QKUnivariateVariable.h"
#include "tests/harness/WithinUlp.h"

namespace {

/// A value of field 0 with its weight in field 1.
using Weighted = std::pair<double, double>;

QKStatus AddValue(QKContUnivariateVariable& variable, double value, double weight = 1) {
    Record record(2);
    record[0] = value;
    record[1] = weight;
    return variable.AddRecord(record);
}

/// A record of field 0, weighted by field 1, after a pass over the values.
QKContUnivariateVariable AfterOnePass(const std::vector<int>& statistics, const std::vector<Weighted>& values) {
    QKContUnivariateVariable variable(0, 1);
    for (const int statistic : statistics) EXPECT_TRUE(variable.AddStatistic(statistic)) << statistic;
    for (const auto& [value, weight] : values) EXPECT_TRUE(AddValue(variable, value, weight).IsOK());
    EXPECT_TRUE(variable.EndPass().IsOK());
    return variable;
}

// ---- Which statistics there are, and what each computes ----

struct StatisticCase {
    int code;
    bool taken;
    bool moments;
    bool min;
    bool max;
    bool histogram;
};

class ContinuousStatistics : public testing::TestWithParam<StatisticCase> {};

TEST_P(ContinuousStatistics, ComputeWhatTheirCodeSaysAndNoMore) {
    QKContUnivariateVariable variable(0, -1);
    EXPECT_EQ(variable.AddStatistic(GetParam().code), GetParam().taken);
    for (const double value : {4.0, 1.0, 7.0}) EXPECT_TRUE(AddValue(variable, value).IsOK());
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetCount(), 3);  // counted whatever is asked for
    EXPECT_EQ(variable.GetMean(), GetParam().moments ? 4 : 0);
    EXPECT_EQ(variable.GetStdDev(), GetParam().moments ? 3 : 0);
    EXPECT_EQ(variable.GetMin(), GetParam().min ? 1 : QKMV::Missing());
    EXPECT_EQ(variable.GetMax(), GetParam().max ? 7 : QKMV::Missing());
    EXPECT_EQ(variable.NeedsPass(), GetParam().histogram);
    EXPECT_EQ(variable.GetBins().size(), GetParam().histogram ? 400u : 0u);
    EXPECT_EQ(variable.GetMedian(), QKMV::Missing());  // without sorted views there are no quantiles
}

INSTANTIATE_TEST_SUITE_P(
    Codes, ContinuousStatistics,
    testing::Values(
        StatisticCase{-1, false, false, false, false, false}, StatisticCase{0, true, true, false, false, false},
        StatisticCase{1, true, true, false, false, false}, StatisticCase{2, true, false, true, false, false},
        StatisticCase{3, true, false, false, true, false}, StatisticCase{4, true, false, false, false, false},
        StatisticCase{5, true, false, false, false, false}, StatisticCase{6, true, false, true, true, true},
        StatisticCase{7, false, false, false, false, false}, StatisticCase{8, false, false, false, false, false},
        StatisticCase{9, true, true, true, true, true}, StatisticCase{10, false, false, false, false, false}),
    [](const auto& test) { return test.param.code < 0 ? "Negative" : "Code" + std::to_string(test.param.code); });

TEST(QKContUnivariateVariable, BeforeAnythingIsSeenMomentsAre0AndTheRestIsMissing) {
    const QKContUnivariateVariable variable(-1, -1);
    EXPECT_EQ(variable.GetCount(), 0);
    EXPECT_EQ(variable.GetMean(), 0);
    EXPECT_EQ(variable.GetStdDev(), 0);
    EXPECT_EQ(variable.GetMin(), QKMV::Missing());
    EXPECT_EQ(variable.GetMax(), QKMV::Missing());
    EXPECT_EQ(variable.GetMedian(), QKMV::Missing());
    EXPECT_EQ(variable.GetFirstQuartile(), QKMV::Missing());
    EXPECT_EQ(variable.GetThirdQuartile(), QKMV::Missing());
    EXPECT_TRUE(variable.NeedsPass());
    EXPECT_TRUE(variable.GetBins().empty());
}

TEST(QKContUnivariateVariable, MissingIsTheMissingDouble) {
    const QKContUnivariateVariable variable(0, -1);
    EXPECT_TRUE(variable.IsMissing(-1.7976931348623157e308));
    EXPECT_FALSE(variable.IsMissing(-1.0));
}

// ---- Moments ----

struct Moments {
    std::vector<Weighted> values;
    int count;
    double mean;
    double stdDev;
    std::uint64_t ulps = 4;
};

class MomentsOf : public testing::TestWithParam<Moments> {};

TEST_P(MomentsOf, WeightedValues) {
    const Moments& expected = GetParam();
    const QKContUnivariateVariable variable = AfterOnePass({1}, expected.values);
    EXPECT_EQ(variable.GetCount(), expected.count);
    EXPECT_TRUE(harness::WithinUlp(variable.GetMean(), expected.mean, expected.ulps));
    EXPECT_TRUE(harness::WithinUlp(variable.GetStdDev(), expected.stdDev, expected.ulps));
}

INSTANTIATE_TEST_SUITE_P(
    , MomentsOf,
    testing::Values(
        Moments{{{2, 1}, {4, 1}, {4, 1}, {4, 1}, {5, 1}, {5, 1}, {7, 1}, {9, 1}}, 8, 5, 2.1380899352993950775},
        // Weights 1, 3, 2, 1 once their fractions are gone.
        Moments{{{0.1, 1.99}, {0.7, 3.5}, {-2.25, 2}, {13.5, 1}}, 7, 1.6, 5.4150253923689037524},
        // Far from 0, where a difference of sums of squares would leave nothing.
        Moments{{{1e9 + 4, 1}, {1e9 + 7, 1}, {1e9 + 13, 1}, {1e9 + 16, 1}}, 4, 1000000010, 5.4772255750516611346},
        Moments{{{1.5, 1e6}, {2.5, 999999}, {-7, 1}}, 2000000, 1.99999525, 0.50004049835757053293, 4500},
        // A negative weight takes away: 3 x 10, -1 x 4, 2 x 1 have mean 28 / 4 and variance 90 / 3.
        Moments{{{10, 3}, {4, -1}, {1, 2}}, 4, 7, 5.4772255750516611346},
        // A total weight of 1 has no deviation, nor has one below.
        Moments{{{3.5, 1}}, 1, 3.5, 0}, Moments{{{3, 2}, {5, -1}}, 1, 1, 0}, Moments{{{3, -2}}, -2, 3, 0},
        Moments{{}, 0, 0, 0}));

TEST(QKContUnivariateVariable, WeightOf0LeavesTheCountAndDividesBy0WhereItComesFirst) {
    QKContUnivariateVariable variable(0, 1);
    for (const int code : {1, 2, 3}) variable.AddStatistic(code);
    EXPECT_TRUE(AddValue(variable, 7, 0.5).IsOK());
    EXPECT_EQ(variable.GetCount(), 0);
    EXPECT_TRUE(std::isnan(variable.GetMean()));  // 7 * 0 / 0
    EXPECT_TRUE(AddValue(variable, 1, 1).IsOK());
    EXPECT_EQ(variable.GetCount(), 1);
    EXPECT_TRUE(std::isnan(variable.GetMean()));
    EXPECT_EQ(variable.GetMax(), 7);  // the range asks for no weight
}

TEST(QKContUnivariateVariable, WeightOf0BehindOthersLeavesTheMeanAndNotTheDeviation) {
    const QKContUnivariateVariable variable = AfterOnePass({1}, {{1, 1}, {3, 1}, {50, 0}});
    EXPECT_EQ(variable.GetCount(), 2);
    EXPECT_EQ(variable.GetMean(), 2);
    EXPECT_TRUE(std::isnan(variable.GetStdDev()));  // its part of the sum of squares is 0 / 0
}

TEST(QKContUnivariateVariable, MissingWeightIsTheSmallestInteger) {
    const QKContUnivariateVariable variable = AfterOnePass({1}, {{1, 5}, {3, QKMV::Missing()}});
    EXPECT_EQ(variable.GetCount(), -2147483643);
}

TEST(QKContUnivariateVariable, CountWrapsAt32Bits) {
    EXPECT_EQ(AfterOnePass({2}, {{1, 2147483647}, {1, 2}}).GetCount(), -2147483647);  // 2^31 + 1 - 2^32
}

TEST(QKContUnivariateVariable, WeightFieldSetLaterHoldsFromThenOn) {
    QKContUnivariateVariable variable(0, -1);
    EXPECT_TRUE(AddValue(variable, 1, 10).IsOK());
    variable.SetWeightIndex(1);
    EXPECT_TRUE(AddValue(variable, 1, 10).IsOK());
    EXPECT_EQ(variable.GetCount(), 11);
}

// ---- Two passes ----

TEST(QKContUnivariateVariable, HistogramBringsTheRangeAndASecondPass) {
    QKContUnivariateVariable variable(0, -1);
    variable.AddStatistic(6);
    for (const double value : {1, 0, -3}) EXPECT_TRUE(AddValue(variable, value).IsOK());
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_EQ(variable.GetMin(), -3);
    EXPECT_EQ(variable.GetMax(), 1);
    EXPECT_TRUE(variable.NeedsPass());
    for (const double value : {1, 0, -3}) EXPECT_TRUE(AddValue(variable, value).IsOK());
    EXPECT_EQ(variable.GetCount(), 3);  // the second pass counts nothing more
    EXPECT_TRUE(variable.EndPass().IsOK());
    EXPECT_FALSE(variable.NeedsPass());
    ASSERT_EQ(variable.GetBins().size(), 402u);  // 400, one more for the boundary at zero, and the zeros
    EXPECT_EQ(variable.GetBins().front().count, 1);
    EXPECT_EQ(variable.GetBins().front().mean, -3);
    EXPECT_EQ(variable.GetBins()[400].count, 1);
    EXPECT_EQ(variable.GetBins()[400].mean, 1);
    EXPECT_EQ(variable.GetBins().back().count, 1);
    EXPECT_EQ(variable.GetBins().back().mean, 0);
}

TEST(QKContUnivariateVariable, HistogramCountsTruncatedWeightsAndKeepsAMeanPerInterval) {
    const std::vector<Weighted> values{{1, 2.9}, {5, 1}, {4.999, 3}, {0, 0.5}};
    QKContUnivariateVariable variable = AfterOnePass({6}, values);
    for (const auto& [value, weight] : values) EXPECT_TRUE(AddValue(variable, value, weight).IsOK());
    EXPECT_TRUE(variable.EndPass().IsOK());
    ASSERT_EQ(variable.GetBins().size(), 401u);  // a zero of weight 0 makes no interval of zeros
    // The range starts at 0, so that an empty interval that ends at 0 comes first: 1 falls on edge 80 of 0.0125.
    EXPECT_EQ(variable.GetBins()[80].count, 2);
    EXPECT_EQ(variable.GetBins()[400].count, 4);
    EXPECT_DOUBLE_EQ(variable.GetBins()[400].mean, (5 + 3 * 4.999) / 4);
}

// ---- Hinges ----

QKContUnivariateVariable HingesOf(const std::vector<Weighted>& ascending) {
    QKContUnivariateVariable variable(0, 1);
    int total = 0;
    for (const auto& [value, weight] : ascending) total += static_cast<int>(weight);
    for (const auto& [value, weight] : ascending) variable.QuantileStep(value, static_cast<int>(weight), total);
    variable.CloseQuantiles();
    return variable;
}

struct Hinges {
    std::vector<Weighted> values;
    double first, median, third;
};

class HingesByHand : public testing::TestWithParam<Hinges> {};

TEST_P(HingesByHand, OfValuesInAscendingOrder) {
    const QKContUnivariateVariable variable = HingesOf(GetParam().values);
    EXPECT_DOUBLE_EQ(variable.GetFirstQuartile(), GetParam().first);
    EXPECT_DOUBLE_EQ(variable.GetMedian(), GetParam().median);
    EXPECT_DOUBLE_EQ(variable.GetThirdQuartile(), GetParam().third);
    EXPECT_EQ(variable.GetMin(), GetParam().values.front().first);  // the steps keep the range as well
    EXPECT_EQ(variable.GetMax(), GetParam().values.back().first);
}

// Positions h = trunc((n + 3) / 2) / 2, (n + 1) / 2 and n + 1 - h.
INSTANTIATE_TEST_SUITE_P(
    Cases, HingesByHand,
    testing::Values(
        Hinges{{{5, 1}}, 5, 5, 5},                                   // no second value: all take the first one
        Hinges{{{1, 1}, {3, 1}}, 1, 2, 3},                           // 1, 1.5, 2
        Hinges{{{1, 1}, {3, 1}, {7, 1}}, 2, 3, 5},                   // 1.5, 2, 2.5
        Hinges{{{1, 1}, {3, 1}, {7, 1}, {8, 1}}, 2, 5, 7.5},         // 1.5, 2.5, 3.5
        Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}}, 2, 4, 8},  // 2, 3, 4
        Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}}, 2, 6, 16},                      // 2, 3.5, 5
        Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}, {64, 1}}, 3, 8, 24},             // 2.5, 4
        Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}, {64, 1}, {128, 1}}, 3, 12, 48},  // 2.5, 4.5
        Hinges{{{1, 1}, {2, 1}, {4, 1}, {8, 1}, {16, 1}, {32, 1}, {64, 1}, {128, 1}, {256, 1}}, 4, 16, 64},  // 3, 5, 7
        Hinges{{{-2, 1}, {-2, 1}, {-2, 1}, {-2, 1}}, -2, -2, -2},                                            // ties
        Hinges{{{1, 2}, {2, 1}, {10, 5}}, 1.5, 10, 10},  // 1 1 2 10 10 10 10 10
        Hinges{{{1, 5}, {9, 1}}, 1, 1, 1},               // 1 1 1 1 1 9
        Hinges{{{1, 1}, {9, 5}}, 9, 9, 9},               // 1 9 9 9 9 9: positions 2, 3.5, 5
        Hinges{{{4, 3}}, 4, 4, 4},                       // one value of weight 3
        // A value of weight 0 is in nobody's way at first ...
        Hinges{{{1, 0}, {3, 1}, {7, 1}}, 3, 5, 7},
        // ... but later it stands in for the value below: position 1 is then 5, and 1.5 lies between 5 and 9.
        Hinges{{{1, 1}, {5, 0}, {9, 1}}, 5, 7, 9},
        // A negative one takes the sum of weights back from 2 to 1. n = 3: positions 1.5, 2 and 2.5.
        Hinges{{{1, 2}, {2, -1}, {3, 2}}, 1, 3, 3}));

TEST(QKContUnivariateVariable, FourValuesGiveH1AndAHalfForTheHinges) {
    // Positions 1.5, 2.5 and 3.5.
    const QKContUnivariateVariable variable = HingesOf({{10, 1}, {20, 1}, {40, 1}, {80, 1}});
    EXPECT_EQ(variable.GetFirstQuartile(), 15);
    EXPECT_EQ(variable.GetMedian(), 30);
    EXPECT_EQ(variable.GetThirdQuartile(), 60);
}

double MedianOf(const std::vector<double>& sorted, std::size_t first, std::size_t count) {
    return (sorted[first + (count - 1) / 2] + sorted[first + count / 2]) / 2;
}

TEST(QKContUnivariateVariable, HingesAreTheMediansOfTheHalvesOfTheRepeatedValues) {
    std::mt19937 random(11);
    std::uniform_int_distribution<int> value(-40, 40);
    std::uniform_int_distribution<int> weight(1, 5);
    for (std::size_t n = 1; n <= 60; ++n) {
        for (int repetition = 0; repetition < 20; ++repetition) {
            std::vector<Weighted> values;
            for (std::size_t i = 0; i < n; ++i)
                values.emplace_back(value(random), repetition < 10 ? 1 : weight(random));
            std::sort(values.begin(), values.end());
            std::vector<double> repeated;
            for (const auto& [x, w] : values) repeated.insert(repeated.end(), static_cast<std::size_t>(w), x);
            const std::size_t half = (repeated.size() + 1) / 2;
            const QKContUnivariateVariable variable = HingesOf(values);
            ASSERT_EQ(variable.GetFirstQuartile(), MedianOf(repeated, 0, half)) << repeated.size();
            ASSERT_EQ(variable.GetMedian(), MedianOf(repeated, 0, repeated.size())) << repeated.size();
            ASSERT_EQ(variable.GetThirdQuartile(), MedianOf(repeated, repeated.size() - half, half)) << repeated.size();
        }
    }
}

}  // namespace
