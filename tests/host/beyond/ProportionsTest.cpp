#include "host/beyond/Proportions.h"

#include <gtest/gtest.h>

#include <cmath>

namespace tarn {
namespace {

void ExpectNear(const Estimate& actual, const Estimate& expected) {
    EXPECT_NEAR(actual.value, expected.value, 1e-13);
    EXPECT_NEAR(actual.lower, expected.lower, 1e-12);
    EXPECT_NEAR(actual.upper, expected.upper, 1e-12);
}

// R 4.2.2: prop.test(7, 40, correct = FALSE)$conf.int, and with conf.level = .9
TEST(Proportions, HaveWilsonsLimits) {
    ExpectNear(WilsonInterval(7, 40, 0.95), {0.175, 0.0874541374603592, 0.319499903317877});
    ExpectNear(WilsonInterval(7, 40, 0.9), {0.175, 0.0977604430891172, 0.29341929853043});
    EXPECT_EQ(WilsonInterval(0, 12, 0.95).lower, 0);
    EXPECT_EQ(WilsonInterval(12, 12, 0.95).upper, 1);
    EXPECT_TRUE(std::isnan(WilsonInterval(0, 0, 0.95).value));
    EXPECT_TRUE(std::isnan(WilsonInterval(1, 2, 1.5).lower));
}

// R 4.2.2: binom.test(7, 40)$conf.int; qbeta(c(.025, .975), c(x, x + 1), c(n - x + 1, n - x)) with x = 333333333, n =
// 1e9
TEST(Proportions, HaveExactLimits) {
    ExpectNear(ClopperPearsonInterval(7, 40, 0.95), {0.175, 0.0733827293520852, 0.327790133361586});
    ExpectNear(ClopperPearsonInterval(333333333, 1e9, 0.95), {0.333333333, 0.333304115564416, 0.333362551400374});
    // 1 - .025^(1/10)
    EXPECT_NEAR(ClopperPearsonInterval(0, 10, 0.95).upper, 1 - std::pow(0.025, 0.1), 1e-13);
    EXPECT_EQ(ClopperPearsonInterval(0, 10, 0.95).lower, 0);
}

// R 4.2.2: the limits of both margins by prop.test(correct = FALSE), and method 10 of Newcombe (1998) as it is written.
TEST(Proportions, DifferWithinPairsByNewcombesMethodTen) {
    ExpectNear(PairedProportionDifference({20, 12, 2, 16}, 0.95), {0.2, 0.0561564248417483, 0.329206995400141});
    // Its correlation is negative, 2 8 - 14 6, and has no correction; one of the next two is 0.
    ExpectNear(PairedProportionDifference({2, 14, 6, 8}, 0.95), {8.0 / 30, -0.0198783854913395, 0.504671685407439});
    ExpectNear(PairedProportionDifference({0, 4, 0, 30}, 0.95), {4.0 / 34, -0.006194119051890, 0.266208427703718});
    ExpectNear(PairedProportionDifference({54, 0, 0, 0}, 0.95), {0, -0.0664135880908964, 0.0664135880908964});
    EXPECT_TRUE(std::isnan(PairedProportionDifference({}, 0.95).value));
}

// R 4.2.2: p <- binom.test(12, 14)$conf.int (.571870839090301, .982205484516808); p / (1 - p)
TEST(Proportions, GiveTheOddsRatioOfPairs) {
    const Estimate ratio = OddsRatioOfPairs(12, 2, 0.95);
    EXPECT_EQ(ratio.value, 6);
    EXPECT_NEAR(ratio.lower, 0.571870839090301 / (1 - 0.571870839090301), 1e-12);
    EXPECT_NEAR(ratio.upper, 0.982205484516808 / (1 - 0.982205484516808), 1e-10);
    EXPECT_EQ(OddsRatioOfPairs(0, 5, 0.95).lower, 0);
    EXPECT_TRUE(std::isinf(OddsRatioOfPairs(5, 0, 0.95).value));
    EXPECT_TRUE(std::isinf(OddsRatioOfPairs(5, 0, 0.95).upper));
    EXPECT_TRUE(std::isnan(OddsRatioOfPairs(0, 0, 0.95).value));
}

TEST(Proportions, GiveCohensG) {
    ExpectNear(CohensG(7, 33, 0.95), {-0.325, 0.0874541374603592 - 0.5, 0.319499903317877 - 0.5});
    EXPECT_TRUE(std::isnan(CohensG(0, 0, 0.95).value));
}

TEST(Proportions, HaveLimitsThatHoldTheEstimateAndWidenWithTheLevel) {
    for (int count = 0; count <= 25; ++count) {
        for (const auto interval : {WilsonInterval, ClopperPearsonInterval}) {
            const Estimate narrow = interval(count, 25, 0.8);
            const Estimate wide = interval(count, 25, 0.99);
            EXPECT_LE(narrow.lower, narrow.value);
            EXPECT_GE(narrow.upper, narrow.value);
            EXPECT_LE(wide.lower, narrow.lower);
            EXPECT_GE(wide.upper, narrow.upper);
        }
    }
}

}  // namespace
}  // namespace tarn
