#include "support/Histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

/// The search for an interval, step by step as it is defined: plain, and the measure for the quick one.
std::size_t PlainFindBin(const std::vector<double>& edges, double x) {
    if (edges.size() < 2) return 0;
    std::ptrdiff_t lo = 0;
    auto hi = static_cast<std::ptrdiff_t>(edges.size()) - 1;
    std::ptrdiff_t remembered = 0;
    const auto edge = [&](std::ptrdiff_t i) { return edges[static_cast<std::size_t>(i)]; };
    while (true) {
        const std::ptrdiff_t mid = lo + (hi - lo) / 2;
        if (mid == 0) return 0;
        if (x == edge(mid)) return static_cast<std::size_t>(mid);
        if (x > edge(mid)) {
            lo = mid + 1;
            if (lo == static_cast<std::ptrdiff_t>(edges.size())) return edges.size();  // above all intervals
            if (edge(lo) >= x) return static_cast<std::size_t>(mid + 1);
        } else {
            hi = mid - 1;
            if (x > edge(hi)) return static_cast<std::size_t>(mid);
            remembered = hi;
        }
        if (lo >= hi) return static_cast<std::size_t>(remembered);
    }
}

struct Range {
    double low;
    double high;
};

TEST(Histogram, QuickSearchFindsTheIntervalOfThePlainOne) {
    const Range ranges[] = {{-1, 1},
                            {0, 1},
                            {-1, 0},
                            {0.5, 3},
                            {-7.25, -2},
                            {-1e-3, 1e9},
                            {-1e300, 1e300},
                            {1e-300, 3e-300},
                            {5, 5},
                            {0, 0},
                            {1e17, 1e17 + 64},
                            {-5e-324, 5e-324},
                            {1, std::nextafter(1.0, 2.0)},
                            {-1.7e308, 1.7e308}};
    std::mt19937_64 random(7);
    for (const Range& range : ranges) {
        for (const std::size_t bins : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 16u, 33u, 100u, 399u, 400u, 450u}) {
            Histogram histogram;
            histogram.SetUp(range.low, range.high, bins);
            const std::vector<double>& edges = histogram.Edges();
            std::vector<double> values{range.low, range.high, 0.0};
            for (const double edge : edges) {
                values.push_back(edge);
                values.push_back(std::nextafter(edge, -INFINITY));
                values.push_back(std::nextafter(edge, INFINITY));
            }
            std::uniform_real_distribution<double> part(0, 1);
            for (int i = 0; i < 300; ++i) {
                const double p = part(random);
                values.push_back(range.low * (1 - p) + range.high * p);
            }
            for (const double value : values) {
                if (!(value >= range.low && value <= range.high)) continue;
                ASSERT_EQ(histogram.FindBin(value), PlainFindBin(edges, value))
                    << value << " among " << bins << " intervals of " << range.low << " .. " << range.high;
            }
        }
    }
}

TEST(Histogram, IntervalOneStaysEmptyAsTheSearchEndsAtIntervalZero) {
    // 400 edges at 1.01, 1.02, ...: a value between the first and the second one belongs to interval 1.
    Histogram histogram;
    histogram.SetUp(1, 5, 400);
    EXPECT_GT(1.015, histogram.Edges()[0]);
    EXPECT_LT(1.015, histogram.Edges()[1]);
    EXPECT_EQ(histogram.FindBin(1.015), 0u);
    EXPECT_EQ(histogram.FindBin(1.025), 2u);
}

TEST(Histogram, AllPositiveDataHaveNoBoundaryAtZero) {
    Histogram histogram;
    histogram.SetUp(0.5, 2, 400);
    EXPECT_EQ(histogram.Bins().size(), 400u);
    EXPECT_EQ(std::count(histogram.Edges().begin(), histogram.Edges().end(), 0.0), 0);
}

TEST(Histogram, DataFromMinusOneToOneHave401IntervalsWithZeroAnEdge) {
    Histogram histogram;
    histogram.SetUp(-1, 1, 400);
    EXPECT_EQ(histogram.Bins().size(), 401u);
    // -1 + 200 * (2 / 400) is exactly 0, which is no edge above 0; the next one is, and 0 is put in front of it.
    EXPECT_EQ(std::count(histogram.Edges().begin(), histogram.Edges().end(), 0.0), 2);
    EXPECT_EQ(histogram.Edges()[199], 0.0);
    EXPECT_EQ(histogram.Edges()[200], 0.0);
}

TEST(Histogram, AllValuesEqualMakeAllEdgesEqualButTheLast) {
    Histogram histogram;
    histogram.SetUp(3, 3, 400);
    const std::vector<double>& edges = histogram.Edges();
    ASSERT_EQ(edges.size(), 400u);
    EXPECT_EQ(std::count(edges.begin(), edges.end() - 1, 3.0), 399);
    EXPECT_EQ(edges.back(), 4.0);
}

TEST(Histogram, LastEdgeIsOneAboveTheLargestValue) {
    Histogram histogram;
    histogram.SetUp(1, 9, 4);
    EXPECT_EQ(histogram.Edges(), (std::vector<double>{3, 5, 7, 10}));
    histogram.SetUp(-3, 9, 4);  // 0 is an edge already, and stands there a second time as the boundary
    EXPECT_EQ(histogram.Edges(), (std::vector<double>{0, 0, 3, 6, 10}));
    histogram.SetUp(-4, 8, 4);
    EXPECT_EQ(histogram.Edges(), (std::vector<double>{-1, 0, 2, 5, 9}));
    histogram.SetUp(-8, 4, 3);  // the largest edge crosses zero: the boundary comes before it
    EXPECT_EQ(histogram.Edges(), (std::vector<double>{-4, 0, 0, 5}));
}

TEST(Histogram, IntervalsHoldWeightsAndWeightedMeans) {
    Histogram histogram;
    histogram.SetUp(1, 9, 4);
    histogram.Add(4, 1);
    histogram.Add(5, 3);
    histogram.Add(9, 2);
    EXPECT_EQ(histogram.Bins()[1].count, 4);
    EXPECT_EQ(histogram.Bins()[1].mean, 4.75);  // (4 + 3 * 5) / 4
    EXPECT_EQ(histogram.Bins()[3].count, 2);
    EXPECT_EQ(histogram.Bins()[3].mean, 9);
}

TEST(Histogram, ZerosAreAppendedAsAnIntervalOfTheirOwn) {
    Histogram histogram;
    histogram.SetUp(-2, 2, 4);
    histogram.Add(0.0, 2);
    histogram.Add(-0.0, 1);
    histogram.Add(1.5, 1);
    const std::size_t regular = histogram.Bins().size();
    histogram.Close();
    ASSERT_EQ(histogram.Bins().size(), regular + 1);
    EXPECT_EQ(histogram.Bins().back().count, 3);
    EXPECT_EQ(histogram.Bins().back().mean, 0);
}

TEST(Histogram, WithoutZerosNothingIsAppended) {
    Histogram histogram;
    histogram.SetUp(-2, 2, 4);
    histogram.Add(0.0, 0);
    const std::size_t regular = histogram.Bins().size();
    histogram.Close();
    EXPECT_EQ(histogram.Bins().size(), regular);
}

TEST(Histogram, WeightOfZeroInAnEmptyIntervalIsNotGuarded) {
    Histogram histogram;
    histogram.SetUp(1, 9, 4);
    histogram.Add(4, 0);
    EXPECT_EQ(histogram.Bins()[1].count, 0);
    EXPECT_TRUE(std::isnan(histogram.Bins()[1].mean));  // 0/0
}

TEST(Histogram, CanBeSetUpAnew) {
    Histogram histogram;
    histogram.SetUp(-2, 2, 4);
    histogram.Add(0.0, 2);
    histogram.SetUp(1, 2, 4);
    histogram.Close();
    EXPECT_EQ(histogram.Bins().size(), 4u);
    EXPECT_EQ(histogram.Bins()[0].count, 0);
}

}  // namespace
