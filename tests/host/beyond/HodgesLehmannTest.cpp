#include "host/beyond/HodgesLehmann.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <vector>

#include "host/beyond/DifferenceMatrix.h"
#include "host/beyond/LimitRank.h"
#include "tests/host/beyond/SamplesForTests.h"

namespace tarn {
namespace {

using namespace beyond_test;

void ExpectNear(const Estimate& actual, const Estimate& expected) {
    EXPECT_NEAR(actual.value, expected.value, 1e-12);
    EXPECT_NEAR(actual.lower, expected.lower, 1e-12);
    EXPECT_NEAR(actual.upper, expected.upper, 1e-12);
}

std::vector<double> AllDifferences(const AscendingSample& first, const AscendingSample& second) {
    std::vector<double> all;
    for (const double x : first.values) {
        for (const double y : second.values) all.push_back(x - y);
    }
    std::ranges::sort(all);
    return all;
}

std::vector<double> AllMeans(const AscendingSample& sample) {
    std::vector<double> all;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        for (std::size_t j = 0; j <= i; ++j) all.push_back(sample.values[i] / 2 + sample.values[j] / 2);
    }
    std::ranges::sort(all);
    return all;
}

// Hollander, Wolfe and Chicken (2014), table 4.1, water transfer. R 4.2.2: wilcox.test(x, y, conf.int = TRUE, exact =
// TRUE), and with conf.level = .9
TEST(HodgesLehmann, ShiftOfTheWaterTransferData) {
    const AscendingSample x = SampleOf({0.80, 0.83, 1.89, 1.04, 1.45, 1.38, 1.91, 1.64, 0.73, 1.46});
    const AscendingSample y = SampleOf({1.15, 0.88, 0.90, 0.74, 1.21});
    ExpectNear(ShiftOfSamples(x, y, 0.95), {0.305, -0.15, 0.76});
    ExpectNear(ShiftOfSamples(x, y, 0.9), {0.305, -0.08, 0.72});
    ExpectNear(ShiftOfSamples(y, x, 0.95), {-0.305, -0.76, 0.15});
}

// Hollander, Wolfe and Chicken (2014), table 3.1, depression scale. R 4.2.2: wilcox.test(x - y, conf.int = TRUE, exact
// = TRUE)
TEST(HodgesLehmann, PseudoMedianOfTheDepressionData) {
    const AscendingSample differences = SampleOf({1.83 - 0.878, 0.50 - 0.647, 1.62 - 0.598, 2.48 - 2.05, 1.68 - 1.06,
                                                  1.88 - 1.29, 1.55 - 1.06, 3.06 - 3.14, 1.30 - 1.29});
    ExpectNear(PseudoMedian(differences, 0.95), {0.46, 0.01, 0.786});
}

TEST(HodgesLehmann, HasNoLimitsWhereTheRangeDoesNotReachTheLevel) {
    // Three and three cases: P(U < 1) is 1 / 20.
    const Estimate few = ShiftOfSamples(SampleOf({5, 6, 7}), SampleOf({1, 2, 4}), 0.95);
    EXPECT_EQ(few.value, 4);
    EXPECT_TRUE(std::isnan(few.lower));
    EXPECT_EQ(ShiftOfSamples(SampleOf({5, 6, 7}), SampleOf({1, 2, 4}), 0.9).lower, 1);
    EXPECT_TRUE(std::isnan(PseudoMedian(SampleOf({1, 2, 3, 4, 5}), 0.95).lower));
    EXPECT_EQ(PseudoMedian(SampleOf({1, 2, 3, 4, 5}), 0.9375).lower, 1);
    EXPECT_TRUE(std::isnan(ShiftOfSamples(SampleOf({}), SampleOf({1}), 0.95).value));
    EXPECT_TRUE(std::isnan(PseudoMedian(SampleOf({}), 0.95).value));
    EXPECT_TRUE(std::isnan(PseudoMedian(SampleOf({1, 2, 3, 4, 5, 6, 7}), 1).lower));
}

// All 50 cases of 20 and 30: (50 over 20) arrangements; the first counts are those of partitions.
TEST(LimitRank, CountsArrangements) {
    const std::vector<double> counts = ArrangementsOfU(20, 30);
    EXPECT_EQ(std::accumulate(counts.begin(), counts.end(), 0.0), 47129212243960.0);
    EXPECT_EQ(counts[5], 7);
    EXPECT_EQ(counts[10], 42);
    EXPECT_EQ(counts[10], counts[counts.size() - 11]);
    const std::vector<double> signings = SigningsOfRankSum(50);
    EXPECT_EQ(std::accumulate(signings.begin(), signings.end(), 0.0), 1125899906842624.0);
    EXPECT_EQ(signings[10], 10);  // partitions of 10 into different parts
}

TEST(DifferenceMatrix, SelectsEachElementOfSmallSamples) {
    std::mt19937 generator(5);
    for (int round = 0; round < 60; ++round) {
        const AscendingSample first = RandomSample(1 + round % 12, -5, 9, generator);
        const AscendingSample second = SmoothSample(1 + round % 7, 0, generator);
        const std::vector<double> all = AllDifferences(first, second);
        const std::vector<double> means = AllMeans(first);
        std::vector<PairCount> ranks(all.size());
        for (std::size_t i = 0; i < ranks.size(); ++i) ranks[i] = i + 1;
        EXPECT_EQ(DifferenceMatrix::OfSamples(first, second).Select(ranks), all);
        EXPECT_EQ(DifferenceMatrix::OfSamples(Weighted(first), second).Select(ranks), all);
        ranks.resize(means.size());
        for (std::size_t i = 0; i < ranks.size(); ++i) ranks[i] = i + 1;
        EXPECT_EQ(DifferenceMatrix::OfWalshAverages(first).Select(ranks), means);
        EXPECT_EQ(DifferenceMatrix::OfWalshAverages(Weighted(first)).Select(ranks), means);
    }
}

/// Samples for which the search has to narrow: smooth ones, those with ties, and values of very different sizes.
std::vector<AscendingSample> LargeSamples(std::mt19937& generator) {
    std::vector<AscendingSample> samples{SmoothSample(700, 0.3, generator), SmoothSample(1100, -2, generator),
                                         RandomSample(900, -40, 40, generator)};
    AscendingSample wide = SmoothSample(800, 0, generator);
    for (double& value : wide.values) value = Sign(value) * std::exp(40 * std::fabs(value));
    samples.push_back(wide);
    AscendingSample lattice;
    for (int i = 0; i < 900; ++i) lattice.values.push_back(i * 0.001);
    lattice.size = 900;
    samples.push_back(lattice);
    return samples;
}

TEST(DifferenceMatrix, SelectsFromLargeSamplesWhatAListHas) {
    std::mt19937 generator(6);
    const std::vector<AscendingSample> samples = LargeSamples(generator);
    for (const AscendingSample& first : samples) {
        for (const AscendingSample& second : samples) {
            const std::vector<double> all = AllDifferences(first, second);
            std::vector<PairCount> ranks;
            std::vector<double> expected;
            for (const double share : {0.0, 0.001, 0.3, 0.5, 0.5001, 0.97, 1.0}) {
                const auto place = static_cast<std::size_t>(share * static_cast<double>(all.size() - 1));
                ranks.push_back(place + 1);
                expected.push_back(all[place]);
            }
            EXPECT_EQ(DifferenceMatrix::OfSamples(first, second).Select(ranks), expected);
            EXPECT_EQ(DifferenceMatrix::OfSamples(Weighted(first), Weighted(second)).Select(ranks), expected);
        }
        const std::vector<double> means = AllMeans(first);
        const std::vector<double> selected = DifferenceMatrix::OfWalshAverages(first).Select({1, means.size() / 3});
        EXPECT_EQ(selected, (std::vector<double>{means[0], means[means.size() / 3 - 1]}));
    }
}

// C by hand: the whole part of n1 n2 / 2 - 1.95996... sqrt(n1 n2 (n + 1 - ties) / 12).
TEST(HodgesLehmann, TakesItsLimitsFromTheNormalDistributionBeyondFiftyCases) {
    std::mt19937 generator(7);
    const AscendingSample first = SmoothSample(40, 0.5, generator);
    const AscendingSample second = SmoothSample(60, 0, generator);
    const std::vector<double> all = AllDifferences(first, second);
    const auto rank = static_cast<std::size_t>(1200 - 1.95996398454005 * std::sqrt(40.0 * 60 / 12 * 101));
    const Estimate shift = ShiftOfSamples(first, second, 0.95);
    EXPECT_EQ(shift.value, (all[1199] + all[1200]) / 2);
    EXPECT_EQ(shift.lower, all[rank - 1]);
    EXPECT_EQ(shift.upper, all[2400 - rank]);
    const std::vector<double> means = AllMeans(second);
    const auto rankOfOne = static_cast<std::size_t>(915 - 1.95996398454005 * std::sqrt(60.0 * 61 * 121 / 24));
    EXPECT_EQ(PseudoMedian(second, 0.95).lower, means[rankOfOne - 1]);
    EXPECT_EQ(PseudoMedian(second, 0.95).upper, means[1830 - rankOfOne]);
}

// 2^52 cases of 0 and as many of 1 against as many of 0: half of the differences are 0, half are 1.
TEST(HodgesLehmann, CountsMorePairsThanADoubleHolds) {
    const double half = 2251799813685248;
    const AscendingSample first{{0, 1}, {half, half}, 2 * half};
    const AscendingSample second{{0}, {half}, half};
    ExpectNear(ShiftOfSamples(first, second, 0.95), {0.5, 0, 1});
    // A quarter of the means is 0, one half is 1/2.
    ExpectNear(PseudoMedian(first, 0.95), {0.5, 0.5, 0.5});
}

TEST(HodgesLehmann, WidensWithTheLevelAndFollowsAShift) {
    std::mt19937 generator(8);
    for (int round = 0; round < 40; ++round) {
        const AscendingSample first = RandomSample(10 + 2 * round, 0, 30, generator);
        AscendingSample second = RandomSample(9 + round, 0, 30, generator);
        const Estimate narrow = ShiftOfSamples(first, second, 0.8);
        const Estimate wide = ShiftOfSamples(first, second, 0.98);
        EXPECT_LE(narrow.lower, narrow.value);
        EXPECT_GE(narrow.upper, narrow.value);
        EXPECT_LE(wide.lower, narrow.lower);
        EXPECT_GE(wide.upper, narrow.upper);
        for (double& value : second.values) value += 100;
        ExpectNear(ShiftOfSamples(first, second, 0.8), {narrow.value - 100, narrow.lower - 100, narrow.upper - 100});
    }
}

TEST(HodgesLehmann, CostGrowsWithTheValues) {
    EXPECT_LT(ShiftCost(1e5, 1e5), ShiftCost(5e5, 5e5));
    EXPECT_EQ(PseudoMedianCost(1e5), ShiftCost(1e5, 1e5));
}

}  // namespace
}  // namespace tarn
