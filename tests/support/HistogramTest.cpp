#include "support/Histogram.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

namespace {

/// The search for an interval, sentence by sentence as it is told: plain, and the measure for the quick one. With two
/// or more edges `mid` lies below `hi`, and `mid` of 0 ends the search, so that no edge outside is looked at.
int PlainFindBin(const std::vector<double>& edges, double x) {
    if (edges.size() < 2) return 0;
    int lo = 0;
    int hi = static_cast<int>(edges.size()) - 1;
    int remembered = 0;
    const auto edge = [&](int i) { return edges.at(static_cast<std::size_t>(i)); };
    while (true) {
        const int mid = lo + (hi - lo) / 2;
        if (mid == 0) return 0;
        if (x == edge(mid)) return mid;
        if (x > edge(mid)) {
            lo = mid + 1;
            if (edge(lo) >= x) return mid + 1;
        } else {
            hi = mid - 1;
            if (x > edge(hi)) return mid;
            remembered = hi;
        }
        if (lo >= hi) return remembered;
    }
}

/// The edges as they are told, `wished` of them and one more where zero comes between two.
std::vector<double> PlainEdges(double low, double high, std::size_t wished) {
    std::vector<double> edges;
    std::size_t binCount = wished;
    const double width = (high - low) / static_cast<double>(wished);
    double previous = low;
    for (int i = 1; edges.size() < binCount; ++i) {
        const double edge = low + i * width;
        edges.push_back(edge);
        if (previous <= 0 && edge > 0) {
            edges.push_back(edge);
            edges[edges.size() - 2] = 0;
            ++binCount;
        }
        previous = edge;
    }
    edges.back() = high + 1.0;
    return edges;
}

/// Compares edges and search with the plain ones, for values on and beside edges, of the range and far outside.
void ExpectPlainEdgesAndSearch(double low, double high, std::size_t bins, const std::vector<double>& further) {
    Histogram histogram;
    histogram.SetUp(low, high, bins);
    const std::vector<double>& edges = histogram.Edges();
    ASSERT_EQ(edges, PlainEdges(low, high, bins)) << bins << " intervals of " << low << " .. " << high;
    ASSERT_EQ(histogram.Bins().size(), edges.size());
    std::vector<double> values = further;
    values.insert(values.end(), {low, high, 0.0, 1e300, -1e300, 5e-324, -5e-324});
    for (const double edge : edges) {
        values.push_back(edge);
        values.push_back(std::nextafter(edge, -INFINITY));
        values.push_back(std::nextafter(edge, INFINITY));
    }
    for (const double value : values) {
        ASSERT_EQ(histogram.FindBin(value), static_cast<std::size_t>(PlainFindBin(edges, value)))
            << value << " among " << bins << " intervals of " << low << " .. " << high;
    }
}

struct Range {
    double low;
    double high;
};

TEST(Histogram, QuickSearchFindsTheIntervalOfThePlainOneInEveryNumberOfIntervals) {
    for (const Range& range : {Range{-1, 1}, {0, 1}, {0.5, 3}, {-7, -2}, {-3, 1e4}, {5, 5}}) {
        for (std::size_t bins = 1; bins <= 450; ++bins) {
            ExpectPlainEdgesAndSearch(range.low, range.high, bins, {});
            if (HasFatalFailure()) return;
        }
    }
}

TEST(Histogram, QuickSearchFindsTheIntervalOfThePlainOneInExtremeRanges) {
    const Range ranges[] = {{-1, 0},
                            {-1e-3, 1e9},
                            {-1e300, 1e300},
                            {1e-300, 3e-300},
                            {-1e300, -1e300},
                            {0, 0},
                            {1e17, 1e17 + 64},
                            {-5e-324, 5e-324},
                            {0, 400 * 5e-324},
                            {1e-310, 2e-310},
                            {1, std::nextafter(1.0, 2.0)},
                            {-1.7e308, 1.7e308},
                            {-1.7976931348623157e308, -1.7976931348623157e308}};
    for (const Range& range : ranges) {
        for (const std::size_t bins : {1u, 2u, 3u, 4u, 5u, 6u, 7u, 8u, 9u, 16u, 33u, 100u, 399u, 400u, 450u}) {
            ExpectPlainEdgesAndSearch(range.low, range.high, bins, {});
            if (HasFatalFailure()) return;
        }
    }
}

TEST(Histogram, QuickSearchFindsTheIntervalOfThePlainOneInRandomRanges) {
    std::mt19937_64 random(7);
    std::uniform_real_distribution<double> mantissa(-1, 1);
    std::uniform_int_distribution<int> exponent(-320, 300);
    std::uniform_int_distribution<int> nearExponent(-3, 6);
    std::uniform_int_distribution<std::size_t> size(1, 450);
    std::uniform_real_distribution<double> part(-0.1, 1.1);
    const auto number = [&](bool anySize) {
        return mantissa(random) * std::pow(10.0, anySize ? exponent(random) : nearExponent(random));
    };
    for (int i = 0; i < 1500; ++i) {
        double low = number(i % 3 == 0);
        double high = i % 50 == 0 ? low : number(i % 3 == 0);
        if (i % 5 == 0) (low > 0 ? low : high) = 0;  // zero at an end of the range
        if (high < low) std::swap(low, high);
        std::vector<double> values;
        for (int k = 0; k < 40; ++k) {
            const double p = part(random);
            values.push_back(low * (1 - p) + high * p);
        }
        ExpectPlainEdgesAndSearch(low, high, size(random), values);
        if (HasFatalFailure()) return;
    }
}

/// A search told by its outcome, worked by hand on a handful of edges.
TEST(Histogram, SearchByHandAmongFewIntervals) {
    struct Case {
        std::size_t bins;
        double value;
        std::size_t found;
    };
    // Edges at 1.5, 2.5, 3.5, ...: no boundary at zero; the last one is 1 higher.
    for (const Case& c : std::vector<Case>{{1, 99, 0},   // fewer than 2 edges
                                           {2, 1.4, 0},  // edges 1.5, 3.5: the first mid is 0
                                           {2, 3, 0},    // so the second interval is never found
                                           {3, 1.5, 0},  // edges 1.5, 2.5, 4.5: below edge 1, not above edge 0
                                           {3, 2, 1},    // below edge 1 and above edge 0
                                           {3, 2.5, 1},  // on edge 1
                                           {3, 2.6, 2},  // above edge 1, edge 2 is not below it
                                           {6, 1.6, 0},  // mid 2, then 0: interval 1 is never found
                                           {6, 2.5, 0},  // not even on its upper edge
                                           {6, 2.6, 2},
                                           {6, 3.5, 2},
                                           {6, 3.6, 3},
                                           {6, 6.5, 5},
                                           {6, 7.5, 5}}) {
        Histogram histogram;
        histogram.SetUp(0.5, 0.5 + static_cast<double>(c.bins), c.bins);
        EXPECT_EQ(histogram.FindBin(c.value), c.found) << c.value << " among " << c.bins;
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
