#include "support/WeightedOrder.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "tests/harness/PlainWeightedList.h"

namespace {

WalshAverages AveragesOf(const std::vector<WeightedDifference>& sample) {
    std::vector<double> values;
    std::vector<double> weights;
    for (const WeightedDifference& entry : sample) {
        values.push_back(entry.difference);
        weights.push_back(entry.weight);
    }
    return WalshAverages(values, weights.data());
}

std::vector<WeightedDifference> Unweighted(const std::vector<double>& values) {
    std::vector<WeightedDifference> sample;
    for (const double value : values) sample.push_back({value, 1});
    return sample;
}

TEST(WalshAverages, AreFoundByTheirPosition) {  // of 1, 2, 4, 8: 1 1.5 2 2.5 3 4 4.5 5 6 8
    const WalshAverages averages = AveragesOf(Unweighted({8, 1, 4, 2}));
    const std::vector<double> expected{1, 1.5, 2, 2.5, 3, 4, 4.5, 5, 6, 8};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(averages.At(static_cast<double>(i + 1)), expected[i]) << i;
    }
    EXPECT_EQ(averages.Median(), 3.5);
}

TEST(WalshAverages, PositionsOutsideTheListGiveItsEnds) {
    const WalshAverages averages = AveragesOf(Unweighted({1, 2, 4, 8}));
    const double infinity = std::numeric_limits<double>::infinity();
    for (const double position : {0.0, -1.0, -1e300, -infinity}) EXPECT_EQ(averages.At(position), 1);
    for (const double position : {10.0, 11.0, 1e300, infinity, std::nan("")}) EXPECT_EQ(averages.At(position), 8);
}

TEST(WalshAverages, OneValueIsItsOwnMedian) {
    EXPECT_EQ(AveragesOf(Unweighted({-2.5})).Median(), -2.5);
}

TEST(WalshAverages, EvenTotalWithAHalfThatNoValueJustReachesTakesOneValue) {
    // 1 twice and 5 once: 1 has 3, 3 has 2, 5 has 1. The total is 6, and 3 of it is reached by 1: (1 + 3) / 2.
    EXPECT_EQ(AveragesOf({{1, 2}, {5, 1}}).Median(), 2);
    // 1 three times and 5 once: 6, 3, 1 of 10; the fifth and the sixth both are 1.
    EXPECT_EQ(AveragesOf({{1, 3}, {5, 1}}).Median(), 1);
}

TEST(WalshAverages, ValueWithoutWeightTakesPartAsTheNextOneAndAsTheLast) {
    // Weights: 1 has 3, (1 + 5) / 2 = 3 has 2, 5 has 1; 2 and what it makes with others have none: 1.5, 2, 3.5.
    const WalshAverages averages = AveragesOf({{1, 2}, {5, 1}, {2, 0}});
    EXPECT_EQ(averages.Median(), 1.25);  // of 1 and 1.5
    EXPECT_EQ(averages.At(4), 3);
    EXPECT_EQ(AveragesOf({{1, 1}, {9, 0}}).Median(), 9);  // a total of 1 is reached by the end of the list alone
}

TEST(WalshAverages, TotalsBeyond32And64BitsStayRight) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    EXPECT_EQ(AveragesOf({{1, kMost}, {2, 1}, {3, 1}}).Median(), 1);
    // Four of them: totals of 4 w and 8 w^2 + 2 w, above 64 bits. Half of it lies in the middle by symmetry.
    EXPECT_EQ(AveragesOf({{1, kMost}, {2, kMost}, {3, kMost}, {4, kMost}}).Median(), 2.5);
}

TEST(WalshAverages, SignOfZeroDoesNotShow) {
    EXPECT_FALSE(std::signbit(AveragesOf(Unweighted({-1, 0, 1})).Median()));
    EXPECT_FALSE(std::signbit(AveragesOf(Unweighted({-1, 0, 1})).At(3)));
}

TEST(WalshAverages, ExtremeValuesKeepTheirOrder) {
    const double most = std::numeric_limits<double>::max();
    const WalshAverages averages = AveragesOf(Unweighted({-most, most}));
    EXPECT_EQ(averages.Median(), 0);
    EXPECT_EQ(AveragesOf(Unweighted({5e-324, 5e-324, 5e-324})).Median(), 5e-324);
}

TEST(WalshAverages, WhatIsNoNumberEndsNothing) {
    const double nan = std::nan("");
    for (const double value : {nan, -nan}) {
        const WalshAverages averages = AveragesOf({{value, 2}, {1, 1}, {value, 1}, {-3, 0}});
        // There is no order, but nothing comes out that isn't an average: of the numbers, 1, -1 and -3.
        for (const double found : {averages.Median(), averages.At(2)}) {
            EXPECT_TRUE(std::isnan(found) || found == 1 || found == -1 || found == -3) << found;
        }
    }
}

/// Small numbers with many ties, or rounded and large ones; weights with zeros, or none.
std::vector<WeightedDifference> RandomSample(std::mt19937_64& random, bool weighted) {
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    std::vector<WeightedDifference> sample(1 + static_cast<std::size_t>(upTo(11)));
    const int kind = upTo(3);
    for (WeightedDifference& entry : sample) {
        const int whole = upTo(8) - 4;
        const double real = std::normal_distribution<double>(0, 3)(random);
        entry.difference = kind == 0 ? whole : kind == 1 ? whole * 0.1 : kind == 2 ? real : real * 1e-320;
        entry.weight = weighted ? upTo(4) : 1;
    }
    if (sample.front().weight == 0) sample.front().weight = 1;
    return sample;
}

TEST(WalshAverages, AgreeWithThePlainListToTheLastBit) {
    std::mt19937_64 random(6501);
    for (int round = 0; round < 3000; ++round) {
        const std::vector<WeightedDifference> sample = RandomSample(random, round % 2 == 0);
        const PlainWeightedList list = PlainWeightedList::OfWalshAverages(sample);
        const WalshAverages averages = AveragesOf(sample);
        ASSERT_EQ(averages.Median(), list.Median()) << round;
        for (std::int64_t position = -1; position <= list.TotalWeight() + 1; ++position) {
            const auto x = static_cast<double>(position);
            ASSERT_EQ(averages.At(x), list.Lookup(x)) << round << " at " << position;
        }
    }
}

TEST(WalshAverages, TotalOfZeroIsTheMeanOfTheFirstTwo) {
    EXPECT_EQ(AveragesOf({{1, 0}, {4, 0}}).Median(), 1.75);  // 1 and 2.5
    EXPECT_EQ(AveragesOf({{3, 0}}).Median(), 3);
}

// ---- Pairwise differences ----

TEST(PairwiseDifferences, AreFoundByTheirPosition) {  // of 1, 4, 9 and 0, 2: -1 1 2 4 7 9
    const PairwiseDifferences differences(Unweighted({9, 1, 4}), Unweighted({2, 0}));
    const std::vector<double> expected{-1, 1, 2, 4, 7, 9};
    for (std::size_t i = 0; i < expected.size(); ++i) {
        EXPECT_EQ(differences.At(static_cast<double>(i + 1)), expected[i]) << i;
    }
    EXPECT_EQ(differences.Median(), 3);
    for (const double position : {0.0, -7.0, -1e300}) EXPECT_EQ(differences.At(position), -1);
    for (const double position : {6.0, 7.0, 1e300}) EXPECT_EQ(differences.At(position), 9);
}

TEST(PairwiseDifferences, OnePairIsItsOwnMedianWhateverItsWeight) {
    EXPECT_EQ(PairwiseDifferences({{5, 1}}, {{2, 1}}).Median(), 3);
    EXPECT_EQ(PairwiseDifferences({{5, 6}}, {{2, 7}}).Median(), 3);
    EXPECT_EQ(PairwiseDifferences({{5, 0}}, {{2, 7}}).Median(), 3);
}

TEST(PairwiseDifferences, TotalOfZeroIsTheMeanOfTheFirstTwo) {
    EXPECT_EQ(PairwiseDifferences({{1, 0}, {4, 0}, {9, 0}}, {{0, 3}, {1, 1}}).Median(), 0.5);  // 0 and 1
    EXPECT_EQ(PairwiseDifferences({{1, 0}, {4, 0}}, {{0, 3}, {2, 1}, {2, 1}}).Median(), -1);   // -1 twice
    EXPECT_EQ(PairwiseDifferences({{1, 0}, {1, 0}, {4, 0}}, {{0, 3}, {2, 1}}).Median(), -1);   // -1 twice
    EXPECT_EQ(PairwiseDifferences({{1, 0}}, {{0, 3}, {2, 1}}).Median(), 0);                    // -1 and 1
}

TEST(PairwiseDifferences, TotalsBeyond64BitsStayRight) {
    constexpr std::int32_t kMost = std::numeric_limits<std::int32_t>::max();
    const std::vector<WeightedDifference> sample{{1, kMost}, {2, kMost}, {3, kMost}, {4, kMost}};
    EXPECT_EQ(PairwiseDifferences(sample, sample).Median(), 0);
    EXPECT_EQ(PairwiseDifferences({{1, kMost}, {1, kMost}, {5, kMost}}, {{0, kMost}, {0, kMost}}).Median(), 1);
}

TEST(PairwiseDifferences, SignOfZeroDoesNotShow) {
    EXPECT_FALSE(std::signbit(PairwiseDifferences(Unweighted({-1, -0.0, 1}), Unweighted({0})).Median()));
}

TEST(PairwiseDifferences, ExtremeValuesAndWhatIsNoNumberEndNothing) {
    const double most = std::numeric_limits<double>::max();
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(PairwiseDifferences(Unweighted({-most, 0, most}), Unweighted({most})).At(1), -infinity);
    for (const double value : {std::nan(""), -std::nan(""), infinity}) {
        const PairwiseDifferences differences({{value, 2}, {1, 1}, {-value, 1}}, {{value, 1}, {-3, 0}});
        for (const double found : {differences.Median(), differences.At(2)}) {
            EXPECT_TRUE(!std::isfinite(found) || found == 4) << found;  // 1 - (-3) is the only difference of numbers
        }
    }
}

TEST(PairwiseDifferences, AgreeWithThePlainListToTheLastBit) {
    std::mt19937_64 random(6504);
    for (int round = 0; round < 4000; ++round) {
        const bool weighted = round % 2 == 0;
        std::vector<WeightedDifference> first = RandomSample(random, weighted);
        const std::vector<WeightedDifference> second = RandomSample(random, weighted);
        if (round % 5 == 0) {
            for (WeightedDifference& entry : first) entry.difference = std::max(entry.difference, 0.0);
        }
        if (round % 40 == 0) {
            for (WeightedDifference& entry : first) entry.weight = 0;
        }
        const PlainWeightedList list = PlainWeightedList::OfDifferences(first, second);
        const PairwiseDifferences differences(first, second);
        ASSERT_EQ(differences.Median(), list.Median()) << round;
        for (std::int64_t position = -1; position <= list.TotalWeight() + 1; ++position) {
            const auto x = static_cast<double>(position);
            ASSERT_EQ(differences.At(x), list.Lookup(x)) << round << " at " << position;
        }
    }
}

}  // namespace
