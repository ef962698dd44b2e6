// Reference values: scipy 1.17, scipy.stats.poisson.cdf(x, mean).

#include "onesample/TheoreticalDistribution.h"

#include <gtest/gtest.h>

#include <limits>
#include "tests/harness/WithinUlp.h"

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

TEST(PoissonCdf, AgreesWithSciPyAtAscendingValues) {
    PoissonCdf small(0.5);
    EXPECT_NEAR(small.At(0), 0.6065306597126334, 1e-13);
    EXPECT_NEAR(small.At(1), 0.9097959895689501, 1e-13);
    EXPECT_NEAR(small.At(4), 0.9998278843700441, 1e-13);
    PoissonCdf large(300.5);
    EXPECT_NEAR(large.At(250), 0.0015354707209243265, 1e-13);
    EXPECT_NEAR(large.At(300), 0.5038370817233174, 1e-12);
    EXPECT_NEAR(large.At(301), 0.5268158119594013, 1e-12);
    EXPECT_NEAR(large.At(400), 0.9999999805200871, 1e-12);
    PoissonCdf largest(99999);
    EXPECT_NEAR(largest.At(99500), 0.0573761048312503, 1e-9);
    EXPECT_NEAR(largest.At(100000), 0.5021026062064294, 1e-9);
}

TEST(PoissonCdf, GoesOnFromTheValueBeforeAsIfItHadBegunAnew) {
    PoissonCdf walked(7);
    for (const double x : {0.0, 1.0, 1.0, 2.0, 6.0, 5.0, 6.0, 12.0, 11.0, 30.0, 3.0, 29.0}) {
        PoissonCdf fresh(7);
        EXPECT_EQ(walked.At(x), fresh.At(x)) << x;
    }
}

TEST(PoissonCdf, EndsItsSumWhereTheTermsVanish) {  // otherwise this would take minutes
    PoissonCdf poisson(40);
    EXPECT_NEAR(poisson.At(1e15), 1, 1e-13);
    EXPECT_EQ(poisson.At(1e15 - 1), poisson.At(2e15));
    EXPECT_NEAR(poisson.At(40), 0.5419181783625371, 1e-12);  // back again
}

TEST(PoissonCdf, IsZeroBelowZeroAndMissingWithoutAMean) {
    EXPECT_EQ(PoissonCdf(3).At(-1), 0);
    PoissonCdf none(kNaN);
    EXPECT_TRUE(QKMV::IsMissing(none.At(0)));
    EXPECT_TRUE(QKMV::IsMissing(none.At(2)));
}

TheoreticalDistribution Distribution(DistributionKind kind) {
    TheoreticalDistribution distribution;
    distribution.kind = kind;
    return distribution;
}

TEST(TheoreticalDistribution, UniformIsNotCutAtItsEnds) {
    TheoreticalDistribution uniform = Distribution(DistributionKind::kUniform);
    uniform.minimum = 2;
    uniform.maximum = 6;
    EXPECT_EQ(uniform.Cdf(3, Arithmetic::AsDefined()), 0.25);
    EXPECT_EQ(uniform.Cdf(8, Arithmetic::AsDefined()), 1.5);
}

TEST(TheoreticalDistribution, NormalAndExponential) {
    TheoreticalDistribution normal;
    normal.mean = 10;
    normal.stdDev = 2;
    EXPECT_TRUE(harness::WithinUlp(normal.Cdf(8, Arithmetic::AsDefined()), 0.15865525393145707,
                                   4));  // scipy.stats.norm.cdf(-1)
    TheoreticalDistribution exponential = Distribution(DistributionKind::kExponential);
    exponential.mean = 2;
    EXPECT_TRUE(
        harness::WithinUlp(exponential.Cdf(3, Arithmetic::AsDefined()), 0.7768698398515702, 4));  // 1 - exp(-1.5)
    EXPECT_EQ(exponential.Cdf(1e6, Arithmetic::AsDefined()), 1);  // the exponential underflows
    exponential.mean = kNaN;
    EXPECT_TRUE(QKMV::IsMissing(exponential.Cdf(1, Arithmetic::AsDefined())));
}

TEST(TheoreticalDistribution, ApproximatedPoissonIsTheNormalOfItsVariance) {
    TheoreticalDistribution poisson = Distribution(DistributionKind::kPoisson);
    poisson.mean = 250000;
    poisson.ApproximateByNormal();
    EXPECT_EQ(poisson.stdDev, 500);
    EXPECT_TRUE(harness::WithinUlp(poisson.Cdf(249500, Arithmetic::AsDefined()), 0.15865525393145707, 4));
}

// mpmath 1.3 at 35 digits: expm1, and the terms of the Poisson distribution added up.
TEST(TheoreticalDistribution, WithCareSmallPartsAndLargeMeansHaveTheirDigits) {
    Arithmetic extended;
    extended.Extend(true);
    TheoreticalDistribution exponential = Distribution(DistributionKind::kExponential);
    exponential.mean = 2;
    EXPECT_TRUE(harness::WithinUlp(exponential.Cdf(1e-12, extended), 4.99999999999875e-13, 4));
    EXPECT_FALSE(harness::WithinUlp(exponential.Cdf(1e-12, Arithmetic::AsDefined()), 4.99999999999875e-13, 1000));
    exponential.mean = kNaN;
    EXPECT_TRUE(QKMV::IsMissing(exponential.Cdf(1, extended)));
    TheoreticalDistribution poisson = Distribution(DistributionKind::kPoisson);
    poisson.mean = 4;
    EXPECT_NEAR(poisson.Cdf(2, extended), 0.23810330555354434, 1e-15);
    EXPECT_EQ(poisson.Cdf(-1, extended), 0);
    TheoreticalDistribution large = Distribution(DistributionKind::kPoisson);
    large.mean = 49999.5;
    EXPECT_NEAR(large.Cdf(49999, extended), 0.50029735618345426, 1e-15);
}

TEST(TheoreticalDistribution, ValuesThatFit) {
    TheoreticalDistribution uniform = Distribution(DistributionKind::kUniform);
    uniform.minimum = 2;
    uniform.maximum = 6;
    EXPECT_EQ(uniform.FitOf(2, false), ValueFit::kGood);
    EXPECT_EQ(uniform.FitOf(6, false), ValueFit::kGood);
    EXPECT_EQ(uniform.FitOf(6.1, false), ValueFit::kOutside);
    EXPECT_EQ(uniform.FitOf(6.1, true), ValueFit::kGood);
    const TheoreticalDistribution exponential = Distribution(DistributionKind::kExponential);
    EXPECT_EQ(exponential.FitOf(0, false), ValueFit::kGood);
    EXPECT_EQ(exponential.FitOf(-0.1, false), ValueFit::kOutside);
    const TheoreticalDistribution poisson = Distribution(DistributionKind::kPoisson);
    EXPECT_EQ(poisson.FitOf(0, false), ValueFit::kGood);
    EXPECT_EQ(poisson.FitOf(5e9, false), ValueFit::kGood);
    EXPECT_EQ(poisson.FitOf(3 + 4e-16, false), ValueFit::kGood);
    for (const double value : {-1.0, 2.5, 3 + 1e-14, 4 - 1e-15, kInfinity, kNaN}) {
        EXPECT_EQ(poisson.FitOf(value, false), ValueFit::kNoCount) << value;
    }
    EXPECT_EQ(Distribution(DistributionKind::kNormal).FitOf(-kInfinity, false), ValueFit::kGood);
}

}  // namespace
