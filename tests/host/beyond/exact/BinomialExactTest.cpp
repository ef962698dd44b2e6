#include "host/beyond/exact/BinomialExact.h"

#include <gtest/gtest.h>

#include <cmath>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

TEST(BinomialExact, OfSignsIsTheShareOfAllSigns) {
    for (std::size_t trials = 1; trials <= 8; ++trials) {
        Integers statistics;
        ForEveryList(trials, 1, [&](const Integers& signs) {
            std::int64_t positive = 0;
            for (const std::int64_t sign : signs) positive += sign;
            statistics.push_back(positive);
        });
        const auto count = static_cast<std::int64_t>(trials);
        for (std::int64_t positive = 0; positive <= count; ++positive) {
            const ExactTails expected = TailsAmong(statistics, positive);
            ExpectNear(SignExact(positive, count - positive), expected, 1e-12);
            ExpectNear(McNemarExact(positive, count - positive), expected, 1e-12);
            ExpectNear(BinomialExact(positive, count, .5), expected, 1e-12);
        }
    }
}

// R 4.2: binom.test(count, trials, probability, alternative)$p.value for "less", "greater" and "two.sided".
TEST(BinomialExact, IsThatOfR) {
    const auto expect = [](const ExactTails& actual, const ExactTails& expected) {
        ExpectClose(actual.less, expected.less);
        ExpectClose(actual.greater, expected.greater);
        ExpectClose(actual.twoSided, expected.twoSided);
    };
    expect(BinomialExact(7, 20, .3), {0.77227179741816054, 0.39199018779907585, 0.62949796667667735});
    expect(BinomialExact(2, 25, .25), {0.032108520881706695, 0.99297626105712666, 0.061778432817249027});
    expect(BinomialExact(12, 25, .25), {0.99662955193113234, 0.010734297951536602, 0.017758036894409947});
    expect(BinomialExact(430, 1000, .4), {0.97518362417029114, 0.028779450905758123, 0.056822364035870751});
    expect(BinomialExact(0, 9, .1), {0.38742048900000031, 1, 1});
    expect(BinomialExact(3, 10, .5), {0.171875, 0.9453125, 0.34375});
}

TEST(BinomialExact, KeepsItsDigitsInTheFarthestTails) {
    ExpectClose(SignExact(0, 900).less, std::ldexp(1, -900));
    ExpectClose(SignExact(0, 900).twoSided, std::ldexp(1, -899));
    ExpectClose(SignExact(900, 0).greater, std::ldexp(1, -900));
    ExpectClose(BinomialExact(150, 150, .01).greater, std::pow(.01, 150));
}

TEST(BinomialExact, IsCertainOfWhatIsCertain) {
    ExpectNear(SignExact(0, 0), {1, 1, 1}, 0);
    ExpectNear(BinomialExact(0, 0, .3), {1, 1, 1}, 0);
    ExpectNear(BinomialExact(0, 5, 0), {1, 1, 1}, 0);
    ExpectNear(BinomialExact(2, 5, 0), {1, 0, 0}, 0);
    ExpectNear(BinomialExact(5, 5, 1), {1, 1, 1}, 0);
    ExpectNear(BinomialExact(4, 5, 1), {0, 1, 0}, 0);
    EXPECT_EQ(SignExact(17, 17).twoSided, 1);
}

// mpmath 1.4 with 50 digits: the probability of the count by loggamma, times the sum of what each further term is of
// it.
TEST(BinomialExact, HoldsForLargeCounts) {
    const std::int64_t half = std::int64_t{1} << 33;
    const std::int64_t off = 131072;
    ExpectClose(SignExact(half - off, half + off).less, 0.022750543868135214);
    ExpectClose(SignExact(half + off, half - off).greater, 0.022750543868135214);
    const std::int64_t trials = std::int64_t{1} << 36;
    ExpectClose(BinomialExact(trials / 4 + 500000, trials, .25).greater, 5.2937078743728896e-6);
    ExpectClose(BinomialExact(trials / 4 - 500000, trials, .25).less, 5.2930481039075963e-6);
    ExpectClose(BinomialExact(trials / 4 - 3000000, trials, .25).less, 3.1389071237863825e-154);
}

// By the normal distribution with continuity correction, whose error is of the order of one by the number of trials.
TEST(BinomialExact, HoldsForTheLargestCounts) {
    const std::int64_t half = std::int64_t{1} << 52;
    const std::int64_t off = std::int64_t{1} << 26;
    const double z = 2 * (static_cast<double>(off) - .5) / std::sqrt(0x1p53);
    EXPECT_NEAR(SignExact(half - off, half + off).less, .5 * std::erfc(z / std::sqrt(2.0)), 1e-14);
    EXPECT_NEAR(SignExact(half - off, half + off).twoSided, std::erfc(z / std::sqrt(2.0)), 1e-14);
    // The mean itself, and next to it.
    EXPECT_EQ(BinomialExact(half, 2 * half, .5).twoSided, 1);
    EXPECT_NEAR(BinomialExact(half, 2 * half, .5).less, .5 + .5 / std::sqrt(2 * std::acos(-1.0) * 0x1p51), 1e-14);
}

}  // namespace
}  // namespace tarn
