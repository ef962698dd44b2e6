#include "host/beyond/Superiority.h"

#include <gtest/gtest.h>

#include <cmath>

#include "host/beyond/PairScore.h"
#include "host/beyond/Proportions.h"
#include "tests/host/beyond/SamplesForTests.h"

namespace tarn {
namespace {

using namespace beyond_test;

constexpr double kBound95 = 1.95996398454005;  // R 4.2.2: qnorm(.975)

// R 4.2.2, datasets: ToothGrowth$len of the supplements OJ and VC. wilcox.test(len ~ supp)$statistic is 575.5; pROC
// 1.18.0: var(roc(supp, len, levels = c("VC", "OJ"), direction = "<")).
TEST(Superiority, OfTheToothGrowthData) {
    const AscendingSample orange =
        SampleOf({15.2, 21.5, 17.6, 9.7,  14.5, 10,   8.2,  9.4,  16.5, 9.7,  19.7, 23.3, 23.6, 26.4, 20,
                  25.2, 25.8, 21.2, 14.5, 27.3, 25.5, 26.4, 22.4, 24.5, 24.8, 30.9, 26.4, 27.3, 29.4, 23});
    const AscendingSample ascorbic =
        SampleOf({4.2,  11.5, 7.3,  5.8,  6.4,  10,   11.2, 11.2, 5.2,  7,    16.5, 16.5, 15.2, 17.3, 22.5,
                  17.3, 13.6, 14.5, 18.8, 15.5, 23.6, 18.5, 33.9, 25.5, 26.4, 32.5, 26.7, 21.5, 23.3, 29.5});
    const Superiority superiority = ProbabilityOfSuperiority(orange, ascorbic, 0.95);
    EXPECT_EQ(superiority.pairsWon, 575.5);
    EXPECT_DOUBLE_EQ(superiority.probability.value, 575.5 / 900);
    EXPECT_DOUBLE_EQ(superiority.rankBiserial.value, 2 * 575.5 / 900 - 1);
    EXPECT_NEAR(superiority.variance, 0.00540610898254576, 1e-16);
}

// pROC 1.18.0: r <- roc(c(0, 0, 0, 0, 1, 1, 1, 1, 1), c(1, 2, 3, 3, 2, 3, 4, 5, 5)); c(auc(r), var(r))
TEST(Superiority, CountsEqualValuesOneHalf) {
    const Superiority superiority = ProbabilityOfSuperiority(SampleOf({2, 3, 4, 5, 5}), SampleOf({1, 2, 3, 3}), 0.95);
    EXPECT_DOUBLE_EQ(superiority.probability.value, 0.825);
    EXPECT_NEAR(superiority.variance, 0.020625, 1e-15);
}

double BruteVariance(const AscendingSample& first, const AscendingSample& second, double share) {
    double squares1 = 0;
    for (const double x : first.values) {
        double placement = 0;
        for (const double y : second.values) placement += (Sign(x - y) + 1) / 2 / second.size;
        squares1 += (placement - share) * (placement - share);
    }
    double squares2 = 0;
    for (const double y : second.values) {
        double placement = 0;
        for (const double x : first.values) placement += (Sign(x - y) + 1) / 2 / first.size;
        squares2 += (placement - share) * (placement - share);
    }
    return squares1 / (first.size - 1) / first.size + squares2 / (second.size - 1) / second.size;
}

TEST(Superiority, HasTheVarianceOfAllPlacements) {
    std::mt19937 generator(2);
    for (int i = 0; i < 200; ++i) {
        const AscendingSample first = RandomSample(2 + i % 30, i % 7, 7 + i % 13, generator);
        const AscendingSample second = RandomSample(2 + i % 17, 0, 6, generator);
        double won = 0;
        for (const double x : first.values) {
            for (const double y : second.values) won += (Sign(x - y) + 1) / 2;
        }
        const Superiority plain = ProbabilityOfSuperiority(first, second, 0.95);
        EXPECT_EQ(plain.pairsWon, won);
        const double share = won / first.size / second.size;
        EXPECT_NEAR(plain.variance, BruteVariance(first, second, share), 1e-14);
        const Superiority weighted = ProbabilityOfSuperiority(Weighted(first), Weighted(second), 0.95);
        EXPECT_EQ(plain.pairsWon, weighted.pairsWon);
        EXPECT_NEAR(plain.probability.lower, weighted.probability.lower, 1e-12);
    }
}

TEST(Superiority, IsTurnedWithTheSamplesAndWidensWithTheLevel) {
    std::mt19937 generator(3);
    for (int i = 0; i < 200; ++i) {
        const AscendingSample first = RandomSample(1 + i % 9, i % 5, 5 + i % 3, generator);
        const AscendingSample second = RandomSample(1 + i % 23, 0, 6, generator);
        const Estimate there = ProbabilityOfSuperiority(first, second, 0.95).probability;
        const Estimate back = ProbabilityOfSuperiority(second, first, 0.95).probability;
        EXPECT_NEAR(there.value, 1 - back.value, 1e-14);
        EXPECT_NEAR(there.lower, 1 - back.upper, 1e-12);
        EXPECT_NEAR(there.upper, 1 - back.lower, 1e-12);
        EXPECT_LE(there.lower, there.value);
        EXPECT_GE(there.upper, there.value);
        EXPECT_GE(there.lower, 0);
        EXPECT_LE(there.upper, 1);
        const Estimate wider = ProbabilityOfSuperiority(first, second, 0.99).probability;
        EXPECT_LE(wider.lower, there.lower);
        EXPECT_GE(wider.upper, there.upper);
    }
}

// The lower limit is the share t at which 1 is qnorm(.975) standard deviations away: (1 - t)^2 = z^2 V(t).
TEST(Superiority, HasALowerLimitWhereAllPairsAreWon) {
    const Estimate all = ProbabilityOfSuperiority(SampleOf({4, 5, 6}), SampleOf({1, 2, 3, 3.5}), 0.95).probability;
    EXPECT_EQ(all.value, 1);
    EXPECT_EQ(all.upper, 1);
    const double t = all.lower;
    const double variance = t * (1 - t) * (1 + 2.5 * ((1 - t) / (2 - t) + t / (1 + t))) / 12;
    EXPECT_NEAR((1 - t) * (1 - t), kBound95 * kBound95 * variance, 1e-12);
    EXPECT_GT(t, 0.3);
    EXPECT_LT(t, 0.9);
}

TEST(Superiority, OfEqualValuesAloneIsWide) {
    const Estimate equal = ProbabilityOfSuperiority(SampleOf({1, 1, 1}), SampleOf({1, 1, 1}), 0.95).probability;
    EXPECT_EQ(equal.value, 0.5);
    EXPECT_LT(equal.lower, 0.25);
    EXPECT_GT(equal.upper, 0.75);
}

TEST(Superiority, HasNoNumbersWithoutCasesAndNoLimitsWithoutALevel) {
    EXPECT_TRUE(std::isnan(ProbabilityOfSuperiority(SampleOf({}), SampleOf({1}), 0.95).probability.value));
    const Estimate estimate = ProbabilityOfSuperiority(SampleOf({1, 3}), SampleOf({2, 4}), 1).probability;
    EXPECT_EQ(estimate.value, 0.25);
    EXPECT_TRUE(std::isnan(estimate.lower));
}

TEST(PairScore, IsWilsonsWhereNoPairsShareACase) {
    const Estimate score = ExponentialPairScore(7.0 / 40, {40, 80, 0}, kBound95);
    const Estimate wilson = WilsonInterval(7, 40, 0.95);
    EXPECT_NEAR(score.lower, wilson.lower, 1e-13);
    EXPECT_NEAR(score.upper, wilson.upper, 1e-13);
}

// By hand: D is DeLong's variance, H that of exponential distributions, larger here.
TEST(PairScore, DrawsASmallVarianceToThatOfExponentialDistributions) {
    const ComparedPairs pairs{100, 20, 9};
    const double share = 0.9;
    const double exponential = 0.09 * (1 + 9 * (0.1 / 1.1 + 0.9 / 1.9)) / 100;
    const double drawn = 0.002 + 0.64 * 2 / (2 + 20 * 0.09) * (exponential - 0.002);
    const Estimate expected = WilsonLimits(share, 0.09 / drawn, kBound95);
    const Estimate actual = LimitsOfPairShare(share, 0.002, pairs, kBound95);
    EXPECT_NEAR(actual.lower, expected.lower, 1e-13);
    EXPECT_NEAR(actual.upper, expected.upper, 1e-13);
    EXPECT_NEAR(LimitsOfPairShare(share, 0.02, pairs, kBound95).lower, WilsonLimits(share, 4.5, kBound95).lower, 1e-13);
}

}  // namespace
}  // namespace tarn
