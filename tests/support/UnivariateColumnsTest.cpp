// Descriptives of many values at once, held against the rules as they are told, one value after the other.

#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <map>
#include <memory>
#include <vector>

#include "platform/common/Truncation.h"
#include "support/Int32.h"
#include "support/QKUnivariateVariable.h"
#include "tests/harness/ColumnData.h"

namespace {

using harness::ColumnData;
using harness::SameBits;

void PutMissing(ColumnData& data, std::vector<double>& values, double marker) {
    const double share = data.Chance(0.3) ? 0.2 : 0.001;
    for (double& value : values) value = data.Chance(share) ? marker : value;
}

// ---- Moments, range and count ----

struct PlainMoments {
    void Add(double value, std::int32_t weight) {
        if (value == QKMV::Missing()) return;
        const double before = count;
        count = Add32(count, weight);
        const double step = (value - mean) * weight / count;
        mean += step;
        m2 += step * step * count * before / weight;
        if (QKMV::IsMissing(min) || min > value) min = value;
        if (QKMV::IsMissing(max) || max < value) max = value;
    }
    double StdDev() const { return count > 1 ? std::sqrt(m2 / (count - 1)) : 0; }

    std::int32_t count = 0;
    double mean = 0;
    double m2 = 0;
    double min = QKMV::Missing();
    double max = QKMV::Missing();
};

void ExpectAs(const PlainMoments& plain, const QKContUnivariateVariable& variable) {
    ASSERT_EQ(variable.GetCount(), plain.count);
    ASSERT_TRUE(SameBits(variable.GetMean(), plain.mean));
    ASSERT_TRUE(SameBits(variable.GetStdDev(), plain.StdDev()));
    ASSERT_TRUE(SameBits(variable.GetMin(), plain.min)) << variable.GetMin() << " not " << plain.min;
    ASSERT_TRUE(SameBits(variable.GetMax(), plain.max)) << variable.GetMax() << " not " << plain.max;
}

/// `fields` columns of random values, some of them missing, taken side by side in batches.
void ExpectColumnsAsPlain(ColumnData& data, std::size_t fields, std::size_t count) {
    std::vector<std::vector<double>> columns;
    for (std::size_t i = 0; i < fields; ++i) {
        columns.push_back(data.Chance(0.2) ? data.AscendingValues(count) : data.Values(count));
        if (data.Chance(0.4)) PutMissing(data, columns.back(), QKMV::Missing());
    }
    const std::vector<std::int32_t> weights = data.Chance(0.5) ? data.Weights(count) : std::vector<std::int32_t>();
    std::vector<QKContUnivariateVariable> variables(fields, QKContUnivariateVariable(0, -1));
    for (QKContUnivariateVariable& variable : variables) {
        for (const int code : {Statistic::kMeanAndStdDev, Statistic::kMin, Statistic::kMax})
            variable.AddStatistic(code);
    }
    std::size_t begin = 0;
    for (const std::size_t end : data.Cuts(count)) {
        std::vector<QKContUnivariateVariable::Column> together;
        for (std::size_t i = 0; i < fields; ++i) together.push_back({&variables[i], columns[i].data() + begin});
        QKContUnivariateVariable::AddColumns(together, weights.empty() ? nullptr : weights.data() + begin, end - begin);
        begin = end;
    }
    for (std::size_t i = 0; i < fields; ++i) {
        PlainMoments plain;
        for (std::size_t k = 0; k < count; ++k) plain.Add(columns[i][k], weights.empty() ? 1 : weights[k]);
        ASSERT_TRUE(variables[i].EndPass().IsOK());
        ExpectAs(plain, variables[i]);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(UnivariateColumns, FieldsSideBySideAreOneValueAfterTheOther) {
    ColumnData data(21);
    for (int i = 0; i < 300; ++i) {
        ExpectColumnsAsPlain(data, 1 + data.Below(11), 1 + data.Below(i % 4 == 0 ? 5 : 4000));
        if (HasFatalFailure()) return;
    }
}

/// Only the first value of all can be one that is no number and stay the range.
TEST(UnivariateColumns, WhatIsNoNumberIsInTheRangeAsTheFirstValueAlone) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const std::size_t place : {0U, 1U, 700U, 1999U}) {
        ColumnData data(22);
        std::vector<double> values = data.Values(2000);
        values[place] = nan;
        PlainMoments plain;
        for (const double value : values) plain.Add(value, 1);
        QKContUnivariateVariable variable(0, -1);
        for (const int code : {Statistic::kMeanAndStdDev, Statistic::kMin, Statistic::kMax})
            variable.AddStatistic(code);
        variable.AddColumn(values, nullptr);
        EXPECT_TRUE(variable.EndPass().IsOK());
        EXPECT_EQ(std::isnan(variable.GetMin()), place == 0);
        ExpectAs(plain, variable);
    }
}

TEST(UnivariateColumns, FirstOfTheZerosShowsInTheRange) {
    for (const bool isNegativeFirst : {true, false}) {
        std::vector<double> values(3000, isNegativeFirst ? 0.0 : -0.0);
        values[5] = isNegativeFirst ? -0.0 : 0.0;
        std::fill(values.begin(), values.begin() + 5, 1.0);
        QKContUnivariateVariable variable(0, -1);
        for (const int code : {Statistic::kMin, Statistic::kMax}) variable.AddStatistic(code);
        variable.AddColumn(values, nullptr);
        EXPECT_TRUE(SameBits(variable.GetMin(), isNegativeFirst ? -0.0 : 0.0));
        EXPECT_EQ(variable.GetMax(), 1);
    }
}

TEST(UnivariateColumns, OneEndOfTheRangeAloneIsKept) {
    ColumnData data(23);
    const std::vector<double> values = data.Values(3000);
    QKContUnivariateVariable low(0, -1);
    low.AddStatistic(Statistic::kMin);
    low.AddColumn(values, nullptr);
    EXPECT_EQ(low.GetMin(), *std::min_element(values.begin(), values.end()));
    EXPECT_EQ(low.GetMax(), QKMV::Missing());
    QKContUnivariateVariable high(0, -1);
    high.AddStatistic(Statistic::kMax);
    high.AddColumn(values, nullptr);
    EXPECT_EQ(high.GetMin(), QKMV::Missing());
    EXPECT_EQ(high.GetMax(), *std::max_element(values.begin(), values.end()));
}

// ---- Hinges ----

/// A value at a position among the weighted values, one step after the other.
struct PlainTracker {
    double cumulative = 0;
    double previous = 0;
    double result = 0;
    bool isFound = false;

    void Step(double value, double weight, double position) {
        if (isFound) return;
        if (position >= cumulative && cumulative + weight > position) {
            const double fraction = position - cumulative;
            result = fraction >= 1 ? value : (1 - fraction) * previous + fraction * value;
            isFound = true;
        } else if (cumulative > position) {
            result = previous;
            isFound = true;
        } else {
            cumulative += weight;
            previous = value;
        }
    }
};

void ExpectHingesAsPlain(ColumnData& data, std::size_t count) {
    const std::vector<double> values = data.AscendingValues(count);
    const std::vector<std::int32_t> weights = data.Chance(0.6) ? data.Weights(count) : std::vector<std::int32_t>();
    std::int32_t total = 0;
    for (std::size_t i = 0; i < count; ++i) total = Add32(total, weights.empty() ? 1 : weights[i]);
    if (data.Chance(0.1)) total /= 3;

    const double n = total;
    const double hinge = std::trunc((n + 3) * 0.5) * 0.5;
    const std::array<double, 3> positions{hinge, (n + 1) * 0.5, n + 1 - hinge};
    std::array<PlainTracker, 3> trackers;
    PlainMoments range;
    for (std::size_t i = 0; i < count; ++i) {
        const double weight = weights.empty() ? 1 : weights[i];
        for (std::size_t k = 0; k < 3; ++k) {
            if (i == 0) {
                trackers[k] = {weight, values[0], 0, false};
            } else {
                trackers[k].Step(values[i], weight, positions[k]);
            }
        }
        range.Add(values[i], 1);
    }
    for (PlainTracker& tracker : trackers) tracker.result = tracker.isFound ? tracker.result : tracker.previous;

    QKContUnivariateVariable variable(-1, -1);
    std::size_t begin = 0;
    for (const std::size_t end : data.Cuts(count)) {
        variable.QuantileSteps(values.data() + begin, weights.empty() ? nullptr : weights.data() + begin, end - begin,
                               total);
        begin = end;
    }
    variable.CloseQuantiles();
    ASSERT_TRUE(SameBits(variable.GetFirstQuartile(), trackers[0].result));
    ASSERT_TRUE(SameBits(variable.GetMedian(), trackers[1].result));
    ASSERT_TRUE(SameBits(variable.GetThirdQuartile(), trackers[2].result));
    ASSERT_TRUE(SameBits(variable.GetMin(), range.min));
    ASSERT_TRUE(SameBits(variable.GetMax(), range.max)) << variable.GetMax();
}

TEST(UnivariateColumns, HingesOfManyValuesAreOneStepAfterTheOther) {
    ColumnData data(24);
    for (int i = 0; i < 1000; ++i) {
        ExpectHingesAsPlain(data, 1 + data.Below(i % 3 == 0 ? 8 : 5000));
        if (HasFatalFailure()) return;
    }
}

// ---- Categories ----

TEST(UnivariateColumns, CategoriesAreOneValueAfterTheOther) {
    ColumnData data(25);
    for (int i = 0; i < 200; ++i) {
        const int categories = static_cast<int>(data.Below(9));
        const std::size_t count = 1 + data.Below(3000);
        std::vector<double> values(count);
        for (double& value : values) value = static_cast<double>(data.Below(10)) + (data.Chance(0.1) ? 0.75 : 0);
        PutMissing(data, values, kMissingCategory);
        for (const double odd : {-1.5, -0.5, 1e300, -1e300, std::numeric_limits<double>::quiet_NaN()}) {
            if (data.Chance(0.3)) values[data.Below(count)] = odd;
        }
        const std::vector<std::int32_t> weights = data.Chance(0.5) ? data.Weights(count) : std::vector<std::int32_t>();

        std::vector<std::int64_t> frequencies(static_cast<std::size_t>(categories));
        std::int32_t total = 0;
        for (std::size_t k = 0; k < count; ++k) {
            if (values[k] == kMissingCategory) continue;
            const std::int32_t weight = weights.empty() ? 1 : weights[k];
            const std::int32_t category = TruncateToInt32(values[k]);
            total = Add32(total, weight);
            if (category < 0 || category >= categories) continue;
            std::int64_t& frequency = frequencies[static_cast<std::size_t>(category)];
            frequency = Wrap32(frequency + weight);
        }

        QKCateUnivariateVariable variable(0, -1, categories);
        std::size_t begin = 0;
        for (const std::size_t end : data.Cuts(count)) {
            variable.AddColumn({values.data() + begin, end - begin},
                               weights.empty() ? nullptr : weights.data() + begin);
            begin = end;
        }
        ASSERT_EQ(variable.GetFrequencies(), frequencies);
        ASSERT_EQ(variable.GetCount(), total);
    }
}

}  // namespace
