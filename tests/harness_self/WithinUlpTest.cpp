// What the tests themselves rely on when they compare doubles.

#include "tests/harness/WithinUlp.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

namespace {

using harness::UlpsBetween;
using harness::WithinUlp;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kLargest = std::numeric_limits<double>::max();
constexpr double kSmallest = std::numeric_limits<double>::denorm_min();

double Steps(double from, unsigned steps, double towards) {
    for (unsigned i = 0; i < steps; ++i) from = std::nextafter(from, towards);
    return from;
}

TEST(WithinUlp, CountsTheStepsOfNextafterWhereverTheyAre) {
    for (const double from : {1.0, 0.1, -1.0, -3e-300, 1e300, 0.0, kSmallest, 2 * kSmallest, -kSmallest}) {
        for (const unsigned steps : {0u, 1u, 2u, 3u, 4u, 100u}) {
            EXPECT_EQ(UlpsBetween(from, Steps(from, steps, kInfinity)), steps) << from;
            EXPECT_EQ(UlpsBetween(Steps(from, steps, -kInfinity), from), steps) << from;
        }
    }
    EXPECT_EQ(UlpsBetween(0.0, -0.0), 0u);
    EXPECT_EQ(UlpsBetween(kInfinity, kLargest), 1u);
    EXPECT_EQ(UlpsBetween(-kInfinity, kInfinity), 2 * 0x7ff0000000000000u);
}

TEST(WithinUlp, HoldsUpToTheBoundAndNotBeyond) {
    EXPECT_TRUE(WithinUlp(0.1, 0.1, 0));
    EXPECT_TRUE(WithinUlp(Steps(0.1, 3, 1), 0.1, 3));
    EXPECT_TRUE(WithinUlp(0.1, Steps(0.1, 3, 1), 3));
    EXPECT_FALSE(WithinUlp(Steps(0.1, 4, 1), 0.1, 3));
    EXPECT_FALSE(WithinUlp(1.0, -1.0, 1000));
    EXPECT_TRUE(WithinUlp(kInfinity, kInfinity, 0));
    EXPECT_FALSE(WithinUlp(kInfinity, kLargest, 0));
}

TEST(WithinUlp, IsFalseForWhatIsNoNumber) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    constexpr auto kAll = std::numeric_limits<std::uint64_t>::max();
    EXPECT_FALSE(WithinUlp(nan, 1, kAll));
    EXPECT_FALSE(WithinUlp(1, nan, kAll));
    EXPECT_FALSE(WithinUlp(nan, nan, kAll));
}

TEST(WithinUlp, TellsBothNumbersWithAllTheirDigitsAndTheDistance) {
    EXPECT_EQ(std::string(WithinUlp(0.1 + 0.2, 0.3, 0).message()),
              "actual   0.30000000000000004\nexpected 0.29999999999999999\n"
              "distance 1 in units in the last place, at most 0 allowed");
    EXPECT_EQ(std::string(WithinUlp(kInfinity, std::nan(""), 5).message()), "actual   inf\nexpected nan\nnot a number");
}

}  // namespace
