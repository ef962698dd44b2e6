// Histograms of many values at once, held against one value after the other: its interval by `FindBin`, which has tests
// of its own, and the step of the weighted mean as it is told.

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "support/Histogram.h"
#include "support/Int32.h"
#include "tests/harness/ColumnData.h"

namespace {

using harness::ColumnData;

struct PlainHistogram {
    PlainHistogram(double low, double high, std::size_t wished) {
        places.SetUp(low, high, wished);
        bins = places.Bins();
    }

    void Add(double value, std::int32_t weight) {
        if (value == 0) {
            zeros = Add32(zeros, weight);
            return;
        }
        HistogramBin& bin = bins.at(places.FindBin(value));
        bin.count = Add32(bin.count, weight);
        bin.mean += (value - bin.mean) * weight / bin.count;
    }

    Histogram places;
    std::vector<HistogramBin> bins;
    std::int32_t zeros = 0;
};

enum class Order { kAny, kAscending };

/// Fills both in batches, and compares all intervals.
void ExpectAsPlain(ColumnData& data, Order order, const std::vector<double>& values,
                   const std::vector<std::int32_t>* weights, double low, double high, std::size_t wished) {
    PlainHistogram plain(low, high, wished);
    for (std::size_t i = 0; i < values.size(); ++i) plain.Add(values[i], weights == nullptr ? 1 : weights->at(i));
    if (plain.zeros > 0) plain.bins.push_back({plain.zeros, 0});

    Histogram histogram;
    histogram.SetUp(low, high, wished);
    std::size_t begin = 0;
    for (const std::size_t end : data.Cuts(values.size())) {
        const std::int32_t* const some = weights == nullptr ? nullptr : weights->data() + begin;
        if (order == Order::kAny) {
            histogram.AddColumn(values.data() + begin, some, end - begin);
        } else {
            histogram.AddAscending(values.data() + begin, some, end - begin);
        }
        begin = end;
    }
    histogram.Close();
    ASSERT_EQ(histogram.Bins().size(), plain.bins.size());
    for (std::size_t i = 0; i < plain.bins.size(); ++i) {
        ASSERT_EQ(histogram.Bins()[i].count, plain.bins[i].count) << i;
        ASSERT_TRUE(harness::SameBits(histogram.Bins()[i].mean, plain.bins[i].mean)) << i;
    }
}

void ExpectAsPlainInRandomTables(Order order, std::uint64_t seed) {
    ColumnData data(seed);
    for (int table = 0; table < 600; ++table) {
        const std::size_t count = 1 + data.Below(table % 4 == 0 ? 5 : 2000);
        const std::vector<double> values = order == Order::kAny ? data.Values(count) : data.AscendingValues(count);
        const std::vector<std::int32_t> weights = data.Weights(count);
        double low = *std::min_element(values.begin(), values.end());
        double high = *std::max_element(values.begin(), values.end());
        if (data.Chance(0.1)) low += (high - low) / 3;  // values on both sides of the range
        if (data.Chance(0.1)) high -= (high - low) / 2;
        const std::size_t wished = data.Chance(0.5) ? 400 : 1 + data.Below(100);
        ExpectAsPlain(data, order, values, data.Chance(0.5) ? &weights : nullptr, low, high, wished);
        if (testing::Test::HasFatalFailure()) return;
    }
}

TEST(HistogramColumns, ColumnIsOneValueAfterTheOther) {
    ExpectAsPlainInRandomTables(Order::kAny, 1);
}

TEST(HistogramColumns, AscendingValuesAreOneAfterTheOther) {
    ExpectAsPlainInRandomTables(Order::kAscending, 2);
}

TEST(HistogramColumns, ValuesOnAndBesideEveryEdgeAreOneAfterTheOther) {
    ColumnData data(3);
    for (const auto& [low, high] : std::vector<std::pair<double, double>>{{-1, 1},
                                                                          {0, 1},
                                                                          {0.5, 3},
                                                                          {-7, -2},
                                                                          {-7, 0},
                                                                          {1e9, 1e9 + 1},
                                                                          {1e15, 1e15 + 50},
                                                                          {1e15, 1e15 + 63},
                                                                          {1e15, 1e15 + 70},
                                                                          {-1e15 - 77, -1e15},
                                                                          {-1e-300, 1e-300},
                                                                          {-1.7e308, 1.7e308},
                                                                          {5, 5},
                                                                          {0, 0},
                                                                          {-5e-324, 5e-324}}) {
        for (const std::size_t wished : {1U, 2U, 3U, 4U, 7U, 16U, 400U}) {
            Histogram edges;
            edges.SetUp(low, high, wished);
            std::vector<double> values{low, high, 1e300, -1e300, 0.0, -0.0};
            for (const double edge : edges.Edges()) {
                values.insert(values.end(), {edge, std::nextafter(edge, -INFINITY), std::nextafter(edge, INFINITY)});
            }
            ExpectAsPlain(data, Order::kAny, values, nullptr, low, high, wished);
            std::sort(values.begin(), values.end());
            ExpectAsPlain(data, Order::kAscending, values, nullptr, low, high, wished);
            if (HasFatalFailure()) return;
        }
    }
}

TEST(HistogramColumns, WhatIsNoNumberOrInfiniteIsOneAfterTheOther) {
    ColumnData data(4);
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    const double nan = std::numeric_limits<double>::quiet_NaN();
    ExpectAsPlain(data, Order::kAny, {1, nan, -kInfinity, 3, kInfinity, nan, 2}, nullptr, 0, 4, 400);
    ExpectAsPlain(data, Order::kAscending, {-kInfinity, -2, 0, 1, 2, kInfinity, kInfinity}, nullptr, -2, 4, 400);
    for (const double one : {nan, kInfinity, -kInfinity}) {
        ExpectAsPlain(data, Order::kAscending, {one}, nullptr, -2, 4, 400);
    }
}

}  // namespace
