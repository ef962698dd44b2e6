#include "host/beyond/Quartiles.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/beyond/MedianInterval.h"
#include "tests/host/beyond/SamplesForTests.h"

namespace tarn {
namespace {

using namespace beyond_test;

// R 4.2.2: quantile(c(1.1, 2.3, 2.3, 4, 7.5, 8, 8, 9.25, 11), c(.1, .25, .5, .75), type = 7)
TEST(Quartiles, AreThoseOfTypeSeven) {
    const AscendingSample sample = SampleOf({1.1, 2.3, 2.3, 4, 7.5, 8, 8, 9.25, 11});
    for (const AscendingSample& form : {sample, Weighted(sample)}) {
        EXPECT_DOUBLE_EQ(Quantile(form, 0.1), 2.06);
        const Summary summary = SummaryOf(form);
        EXPECT_EQ(summary.n, 9);
        EXPECT_DOUBLE_EQ(summary.firstQuartile, 2.3);
        EXPECT_DOUBLE_EQ(summary.median, 7.5);
        EXPECT_DOUBLE_EQ(summary.thirdQuartile, 8);
        EXPECT_EQ(Quantile(form, 0), 1.1);
        EXPECT_EQ(Quantile(form, 1), 11);
    }
}

TEST(Quartiles, LieBetweenLargeValuesWithoutOverflow) {
    EXPECT_EQ(Quantile(SampleOf({-1e308, 1e308}), 0.5), 0);
    EXPECT_TRUE(std::isnan(Quantile(SampleOf({}), 0.5)));
    EXPECT_TRUE(std::isnan(Quantile(SampleOf({1}), 1.5)));
}

// Of 2^53 cases the first half are 0 and the others 1: the median is between.
TEST(Quartiles, CountWeightsOfAnySize) {
    AscendingSample sample;
    sample.values = {0, 1};
    sample.weights = {4503599627370496, 4503599627370496};
    sample.size = 9007199254740992;
    EXPECT_EQ(Quantile(sample, 0.5), 0.5);
    sample.weights = {4503599627370497, 4503599627370495};
    EXPECT_EQ(Quantile(sample, 0.5), 0);
}

// R 4.2.2: k <- qbinom(.025, n, .5); 1 - 2 * pbinom(k - 1, n, .5); the limits are the k-th from both ends.
TEST(MedianInterval, HasTheCoverageOfTheBinomialDistribution) {
    struct Row {
        double n, rank, coverage;
    };
    for (const Row& row : {Row{6, 1, 0.96875}, Row{10, 2, 0.978515625}, Row{1000, 469, 0.953708802639502},
                           Row{1e6, 499020, 0.950121031347632}}) {
        std::vector<double> values;
        for (double i = 1; i <= row.n; ++i) values.push_back(i);
        const MedianEstimate estimate = MedianInterval(SampleOf(values), 0.95);
        EXPECT_EQ(estimate.median.lower, row.rank) << row.n;
        EXPECT_EQ(estimate.median.upper, row.n + 1 - row.rank) << row.n;
        EXPECT_EQ(estimate.median.value, (row.n + 1) / 2) << row.n;
        EXPECT_NEAR(estimate.coverage, row.coverage, 1e-13) << row.n;
    }
    // The same for 1e9 cases of one value.
    AscendingSample many{{7}, {1e9}, 1e9};
    EXPECT_NEAR(MedianInterval(many, 0.95).coverage, 0.950005532442754, 1e-12);
}

TEST(MedianInterval, HasNoLimitsBelowSixCases) {
    const MedianEstimate estimate = MedianInterval(SampleOf({1, 2, 3, 4, 5}), 0.95);
    EXPECT_EQ(estimate.median.value, 3);
    EXPECT_TRUE(std::isnan(estimate.median.lower));
    EXPECT_EQ(estimate.coverage, 0);
    // 1 - 2 / 32 exactly.
    EXPECT_EQ(MedianInterval(SampleOf({1, 2, 3, 4, 5}), 0.9375).median.lower, 1);
    EXPECT_TRUE(std::isnan(MedianInterval(SampleOf({}), 0.95).median.value));
}

TEST(MedianInterval, IsTheSameOfWeightsAndWidensWithTheLevel) {
    std::mt19937 generator(1);
    for (int i = 0; i < 100; ++i) {
        const AscendingSample sample = RandomSample(8 + i, 0, 20, generator);
        const MedianEstimate plain = MedianInterval(sample, 0.9);
        const MedianEstimate weighted = MedianInterval(Weighted(sample), 0.9);
        const MedianEstimate wider = MedianInterval(sample, 0.99);
        EXPECT_EQ(plain.median.lower, weighted.median.lower);
        EXPECT_EQ(plain.median.upper, weighted.median.upper);
        EXPECT_GE(plain.coverage, 0.9);
        EXPECT_LE(plain.median.lower, plain.median.value);
        EXPECT_GE(plain.median.upper, plain.median.value);
        if (std::isnan(wider.median.lower)) continue;
        EXPECT_LE(wider.median.lower, plain.median.lower);
        EXPECT_GE(wider.median.upper, plain.median.upper);
    }
}

}  // namespace
}  // namespace tarn
