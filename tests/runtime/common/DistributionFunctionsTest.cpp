// The distribution functions against tables of high precision, known values, and arguments that no caller should
// send. The bounds asserted here are those of docs/numerics.md.

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstddef>
#include <limits>
#include <string>
#include <tuple>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKMV.h"
#include "platform/common/QKPower.h"
#include "tests/harness/WithinUlp.h"

namespace {

using QKMath::QKDistFun;
using QKMath::QKPower;

/// A row of a table: the arguments of a function, in their order, and its value.
template <std::size_t N>
struct Row {
    double arguments[N];
    double value;
};
using Row1 = Row<1>;
using Row2 = Row<2>;
using Row3 = Row<3>;
using Row4 = Row<4>;

#include "distribution_tables.inc"

/// Two roundings to a double and the rounding of the expected value itself.
constexpr double kFullPrecision = 4e-16;
/// erfc of the C library is good to a few units in the last place, not to one.
constexpr double kNormalBound = 1e-15;
/// The far lower tail of the chi-square distribution loses about 4e-20 times the degrees of freedom, 1e6 here.
constexpr double kChiSquareBound = 1e-13;
/// The sums over a discrete distribution; most of it is for the terms that the integral of a long sum leaves out.
constexpr double kDiscreteBound = 1e-14;

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kMissing = QKMV::Missing();

double RelativeError(double value, double expected) {
    if (value == expected) return 0;
    return std::fabs((value - expected) / expected);
}

template <typename Table, typename Function>
void ExpectTable(const Table& table, double bound, Function function) {
    double largest = 0;
    for (const auto& row : table) {
        const double error = RelativeError(std::apply(function, std::to_array(row.arguments)), row.value);
        std::string arguments;
        for (const double argument : row.arguments) arguments += testing::PrintToString(argument) + " ";
        EXPECT_LE(error, bound) << "at " << arguments << "expected " << row.value;
        largest = std::fmax(largest, error);
    }
    testing::Test::RecordProperty("largest_relative_error", testing::PrintToString(largest));
}

/// A function that fails by a code behind its arguments: it gives the missing double then, and never else.
template <typename Function, typename... Arguments>
double Checked(Function function, Arguments... arguments) {
    int code = -1;
    const double value = function(arguments..., code);
    EXPECT_EQ(code != 0, value == kMissing) << testing::PrintToString(std::tuple(arguments...));
    return value;
}

double CdfBin(double x, double n, double p) {
    return Checked(QKDistFun::CdfBin, x, n, p);
}
double SfBin(double x, double n, double p) {
    return Checked(QKDistFun::SfBin, x, n, p);
}
double CDFHyper(double x, double total, double margin1, double margin2) {
    return Checked(QKDistFun::CDFHyper, x, total, margin1, margin2);
}
double SfHyper(double x, double total, double margin1, double margin2) {
    return Checked(QKDistFun::SfHyper, x, total, margin1, margin2);
}

int ErrOfCdfBin(double x, double n, double p) {
    int err = -1;
    QKDistFun::CdfBin(x, n, p, err);
    return err;
}

int StatusOfCDFHyper(double x, double total, double margin1, double margin2) {
    int status = -1;
    QKDistFun::CDFHyper(x, total, margin1, margin2, status);
    return status;
}

// Tables -------------------------------------------------------------------------------------------------------------

TEST(QKDistFun, CdfStdNormTable) {
    ExpectTable(kStdNormCdf, kNormalBound, QKDistFun::CdfStdNorm);
}
TEST(QKDistFun, IdfStdNormTable) {
    ExpectTable(kStdNormQuantile, kFullPrecision, QKDistFun::IdfStdNorm);
}
TEST(QKDistFun, CdfChiTable) {
    ExpectTable(kChiSquareCdf, kChiSquareBound, QKDistFun::CdfChi);
}
TEST(QKDistFun, IdfChiTable) {
    ExpectTable(kChiSquareQuantile, kFullPrecision, QKDistFun::IdfChi);
}
TEST(QKDistFun, IdfFTable) {
    ExpectTable(kFQuantile, kFullPrecision, QKDistFun::IdfF);
}
TEST(QKDistFun, IdfBetaTable) {
    ExpectTable(kBetaQuantile, kFullPrecision, QKDistFun::IdfBeta);
}
TEST(QKDistFun, CdfBinTable) {
    ExpectTable(kBinomialCdf, kDiscreteBound, CdfBin);
}
TEST(QKDistFun, CDFHyperTable) {
    ExpectTable(kHypergeometricCdf, kDiscreteBound, CDFHyper);
}
TEST(QKDistFun, SfChiTable) {
    ExpectTable(kChiSquareSurvival, kChiSquareBound, QKDistFun::SfChi);
}
TEST(QKDistFun, SfBinTable) {
    ExpectTable(kBinomialSurvival, kDiscreteBound, SfBin);
}
TEST(QKDistFun, SfHyperTable) {
    ExpectTable(kHypergeometricSurvival, kDiscreteBound, SfHyper);
}
TEST(QKDistFun, LogGammaTable) {
    ExpectTable(kLogGamma, kFullPrecision, QKDistFun::zomrdnlgam);
}

// The normal distribution --------------------------------------------------------------------------------------------

TEST(QKDistFun, CdfStdNormEnds) {
    EXPECT_EQ(QKDistFun::CdfStdNorm(0), 0.5);
    EXPECT_EQ(QKDistFun::CdfStdNorm(-0.0), 0.5);
    EXPECT_EQ(QKDistFun::CdfStdNorm(-kInfinity), 0);
    EXPECT_EQ(QKDistFun::CdfStdNorm(kInfinity), 1);
    EXPECT_EQ(QKDistFun::CdfStdNorm(-40), 0);
    EXPECT_EQ(QKDistFun::CdfStdNorm(40), 1);
    EXPECT_TRUE(std::isnan(QKDistFun::CdfStdNorm(kNaN)));  // a statistic of 0/0 keeps its significance a NaN
}

TEST(QKDistFun, CdfStdNormIsSymmetricAndMonotone) {
    double last = 0;
    for (double x = -38.6; x < 12; x += 1.0 / 512) {
        const double p = QKDistFun::CdfStdNorm(x);
        EXPECT_GE(p, last) << x;
        EXPECT_TRUE(harness::WithinUlp(p + QKDistFun::CdfStdNorm(-x), 1, 1)) << x;
        last = p;
    }
}

TEST(QKDistFun, CdfNormStandardizesWithoutLoss) {
    EXPECT_EQ(QKDistFun::CdfNorm(3, 3, 2), 0.5);
    EXPECT_EQ(QKDistFun::CdfNorm(7, 3, 2), QKDistFun::CdfStdNorm(2));
    // x - mean alone is beyond a double.
    EXPECT_EQ(QKDistFun::CdfNorm(1e308, -1e308, 1e308), QKDistFun::CdfStdNorm(2));
    EXPECT_EQ(QKDistFun::CdfNorm(-1e308, 1e308, 1e-308), 0);
    // In doubles (0.1 - 3.7) / 0.1 is -36, and the rest of 2.8e-16 moves the result by 1e-14. mpmath, 60 digits.
    EXPECT_LE(RelativeError(QKDistFun::CdfNorm(0.1, 3.7, 0.1), 4.18262406579732515675016779282e-284), kNormalBound);
}

TEST(QKDistFun, CdfNormDomain) {
    EXPECT_EQ(QKDistFun::CdfNorm(-kInfinity, 0, 1), 0);
    EXPECT_EQ(QKDistFun::CdfNorm(kInfinity, 0, 1), 1);
    for (const double sd : {0.0, -1.0, kInfinity, kNaN}) EXPECT_EQ(QKDistFun::CdfNorm(1, 0, sd), kMissing) << sd;
    for (const double mean : {kInfinity, -kInfinity, kNaN}) EXPECT_EQ(QKDistFun::CdfNorm(1, mean, 1), kMissing);
    EXPECT_TRUE(std::isnan(QKDistFun::CdfNorm(kNaN, 0, 1)));
}

TEST(QKDistFun, IdfStdNormInvertsTheCdf) {
    for (const double p : {1e-305, 1e-100, 1e-10, 0.01, 0.3, 0.5, 0.77, 0.999}) {
        // The rounding of x alone makes x^2 units of p.
        const double x = QKDistFun::IdfStdNorm(p);
        EXPECT_LE(RelativeError(QKDistFun::CdfStdNorm(x), p), (2 + x * x) * QKPower::gMachineEpsilon) << p;
    }
    for (const double p : {1e-300, 0.125, 0.25}) EXPECT_EQ(std::signbit(QKDistFun::IdfStdNorm(p)), true);
    EXPECT_EQ(QKDistFun::IdfStdNorm(0.25), -QKDistFun::IdfStdNorm(0.75));
}

// Upper tails --------------------------------------------------------------------------------------------------------

TEST(QKDistFun, UpperTailOfTheNormalIsTheLowerOneOfTheMirrorImage) {
    ExpectTable(kStdNormCdf, kNormalBound, [](double x) { return QKDistFun::SfStdNorm(-x); });
    EXPECT_EQ(QKDistFun::SfNorm(7, 3, 2), QKDistFun::SfStdNorm(2));
    EXPECT_EQ(QKDistFun::SfNorm(7, 3, -2), kMissing);
    EXPECT_TRUE(std::isnan(QKDistFun::SfStdNorm(kNaN)));
}

// Where neither tail is small, both are right to a rounding or so of 1.
TEST(QKDistFun, TailsAddUpToOne) {
    for (double x = -4; x <= 4; x += 0.125) {
        EXPECT_NEAR(QKDistFun::SfStdNorm(x) + QKDistFun::CdfStdNorm(x), 1, 4e-16) << x;
    }
    for (const double df : {0.5, 1.0, 7.0, 300.0, 1e6, 5e8}) {
        for (const double p : {1e-4, 0.2, 0.5, 0.8, 1 - 1e-4}) {
            const double x = QKDistFun::IdfChi(p, df);
            EXPECT_NEAR(QKDistFun::SfChi(x, df) + QKDistFun::CdfChi(x, df), 1, 4e-16) << p << " " << df;
        }
    }
    for (double x = 0; x <= 20; ++x) {
        EXPECT_NEAR(SfBin(x, 20, 0.3) + CdfBin(x, 20, 0.3), 1, 4e-16) << x;
        EXPECT_NEAR(SfHyper(x, 50, 20, 30) + CDFHyper(x, 50, 20, 30), 1, 4e-16) << x;
    }
}

TEST(QKDistFun, UpperTailsHaveTheEndsAndTheDomainOfTheLowerOnes) {
    EXPECT_EQ(QKDistFun::SfChi(0, 3), 1);
    EXPECT_EQ(QKDistFun::SfChi(-1, 3), 1);
    EXPECT_EQ(QKDistFun::SfChi(kInfinity, 3), 0);
    EXPECT_TRUE(std::isnan(QKDistFun::SfChi(kNaN, 3)));
    for (const double bad : {0.0, -1.0, kNaN, kInfinity}) EXPECT_EQ(QKDistFun::SfChi(1, bad), kMissing) << bad;
    EXPECT_EQ(SfBin(-1, 4, 0.3), 1);
    EXPECT_EQ(SfBin(4, 4, 0.3), 0);
    EXPECT_EQ(SfBin(2, 4, 0), 0);
    EXPECT_EQ(SfBin(2, 4, 1), 1);
    EXPECT_EQ(SfBin(4, 4, 1), 0);
    EXPECT_EQ(SfBin(5, 4, 0.3), kMissing);
    EXPECT_EQ(SfBin(1, 4, 1.5), kMissing);
    EXPECT_EQ(SfHyper(-1, 10, 4, 5), 1);
    EXPECT_EQ(SfHyper(4, 10, 4, 5), 0);
    EXPECT_EQ(SfHyper(1, 10, 11, 5), kMissing);
    EXPECT_EQ(SfHyper(kNaN, 10, 4, 5), kMissing);
}

// Quantiles ----------------------------------------------------------------------------------------------------------

TEST(QKDistFun, QuantileEnds) {
    EXPECT_EQ(QKDistFun::IdfStdNorm(0), -kInfinity);
    EXPECT_EQ(QKDistFun::IdfStdNorm(1), kInfinity);
    EXPECT_EQ(QKDistFun::IdfChi(0, 3), 0);
    EXPECT_EQ(QKDistFun::IdfChi(1, 3), kInfinity);
    EXPECT_EQ(QKDistFun::IdfF(0, 3, 4), 0);
    EXPECT_EQ(QKDistFun::IdfF(1, 3, 4), kInfinity);
    EXPECT_EQ(QKDistFun::IdfBeta(0, 3, 4), 0);
    EXPECT_EQ(QKDistFun::IdfBeta(1, 3, 4), 1);
}

TEST(QKDistFun, QuantileDomain) {
    for (const double p : {-1e-300, 1 + 1e-15, kNaN, kInfinity, -kInfinity, kMissing}) {
        EXPECT_EQ(QKDistFun::IdfStdNorm(p), kMissing) << p;
        EXPECT_EQ(QKDistFun::IdfChi(p, 2), kMissing) << p;
        EXPECT_EQ(QKDistFun::IdfF(p, 2, 2), kMissing) << p;
        EXPECT_EQ(QKDistFun::IdfBeta(p, 2, 2), kMissing) << p;
    }
    for (const double bad : {0.0, -1.0, kNaN, kInfinity, kMissing}) {
        // The parameters are looked at before an end of the support is answered.
        for (const double p : {0.0, 0.5, 1.0}) {
            EXPECT_EQ(QKDistFun::IdfChi(p, bad), kMissing) << bad;
            EXPECT_EQ(QKDistFun::IdfF(p, bad, 2), kMissing) << bad;
            EXPECT_EQ(QKDistFun::IdfF(p, 2, bad), kMissing) << bad;
            EXPECT_EQ(QKDistFun::IdfBeta(p, bad, 2), kMissing) << bad;
            EXPECT_EQ(QKDistFun::IdfBeta(p, 2, bad), kMissing) << bad;
        }
    }
}

TEST(QKDistFun, QuantilesBeyondADouble) {
    EXPECT_EQ(QKDistFun::IdfChi(1e-300, 0.5), 0);
    EXPECT_EQ(QKDistFun::IdfF(1e-300, 0.5, 3), 0);
    EXPECT_EQ(QKDistFun::IdfF(1 - 1e-16, 3, 0.05), kInfinity);
    EXPECT_EQ(QKDistFun::IdfBeta(1e-300, 0.5, 3), 0);
    EXPECT_EQ(QKDistFun::IdfBeta(0.9, 3, 0.001), 1);
}

TEST(QKDistFun, QuantilesInClosedForm) {
    for (const double p : {1e-200, 1e-5, 0.3, 0.5, 0.9, 1 - 1e-14}) {
        EXPECT_LE(RelativeError(QKDistFun::IdfChi(p, 2), -2 * std::log1p(-p)), kFullPrecision) << p;
        EXPECT_LE(RelativeError(QKDistFun::IdfF(p, 2, 2), p / (1 - p)), kFullPrecision) << p;
        EXPECT_LE(RelativeError(QKDistFun::IdfBeta(p, 1, 1), p), kFullPrecision) << p;
        EXPECT_LE(RelativeError(QKDistFun::IdfBeta(p, 1, 2), p / (1 + std::sqrt(1 - p))), kFullPrecision) << p;
    }
    EXPECT_EQ(QKDistFun::IdfBeta(0.5, 70, 70), 0.5);
    EXPECT_EQ(QKDistFun::IdfF(0.5, 9, 9), 1);
}

TEST(QKDistFun, ChiSquareRoundTrip) {
    for (const double df : {0.7, 1.0, 5.0, 44.0, 3000.0}) {
        for (const double p : {1e-9, 0.01, 0.4, 0.8, 0.99}) {
            // An error of x counts about (df + 9 sqrt df) times in p.
            const double bound = (4 + df / 2 + 9 * std::sqrt(df)) * QKPower::gMachineEpsilon;
            EXPECT_LE(RelativeError(QKDistFun::CdfChi(QKDistFun::IdfChi(p, df), df), p), bound) << p << " " << df;
        }
    }
}

// Above a shape of 1e8 for the gamma and of 1e9 for the beta distribution the functions are those of a limit; the
// larger the shape, the better. The lines are checked where that is worst, just above.
TEST(QKDistFun, LargeShapesMeetTheirLimits) {
    constexpr double kGammaLimitBound = 1e-11;
    constexpr double kBetaLimitBound = 1e-8;
    constexpr double kLargestChi = 2e8;
    constexpr double kLargestF = 2e9;
    for (const double p : {1e-6, 0.01, 0.5, 0.95, 1 - 1e-6}) {
        EXPECT_LE(RelativeError(QKDistFun::IdfF(p, 5, 1e13), QKDistFun::IdfChi(p, 5) / 5), kBetaLimitBound) << p;
        EXPECT_LE(RelativeError(QKDistFun::IdfF(1 - p, 1e13, 5), 5 / QKDistFun::IdfChi(p, 5)), kBetaLimitBound) << p;
        EXPECT_LE(RelativeError(QKDistFun::IdfBeta(p, 5, 1e13), QKDistFun::IdfChi(p, 10) / 2e13), kBetaLimitBound) << p;
        const double aboveF = std::nextafter(kLargestF, kInfinity);
        const double f = QKDistFun::IdfF(p, kLargestF, kLargestF);
        EXPECT_LE(RelativeError(QKDistFun::IdfF(p, aboveF, aboveF), f), kBetaLimitBound) << p;

        const double aboveChi = std::nextafter(kLargestChi, kInfinity);
        const double x = QKDistFun::IdfChi(p, kLargestChi);
        EXPECT_LE(RelativeError(QKDistFun::IdfChi(p, aboveChi), x), kGammaLimitBound) << p;
        EXPECT_LE(RelativeError(QKDistFun::CdfChi(x, aboveChi), QKDistFun::CdfChi(x, kLargestChi)), kGammaLimitBound)
            << p;
    }
}

// Quantiles of the beta distribution with a shape above 1e9 beside one above 2000: x where the density of log(x / (1 -
// x)), integrated with mpmath 1.3 at 40 digits, reaches p. The bound is a share of the standard deviation of x.
TEST(QKDistFun, LargeBetaShapesKeepTheirSpread) {
    struct Case {
        double p, a, b, x, bound;
    };
    for (const Case& c : {
             Case{0.025, 1e9, 2000000010, 0.33331646364334943, 1e-10},
             Case{0.5, 1e9, 2000000010, 0.33333333218518519, 1e-10},
             Case{0.95, 1e9, 2000000010, 0.333347488931362, 1e-10},
             Case{0.025, 1999999, 3e9, 0.00066529948807324337, 1e-9},
             Case{0.95, 1999999, 3e9, 0.00066699699100853959, 1e-9},
             Case{0.025, 2001, 1e12, 1.9142767946104354e-9, 3e-6},
             Case{0.95, 2001, 1e12, 2.0751425868157378e-9, 3e-6},
             Case{0.025, 4e9, 1.5e9, 0.72726095710720862, 1e-10},
             Case{0.5, 5e9, 5e10, 0.090909090904132231, 1e-10},
         }) {
        const double spread = c.x * (1 - c.x) * std::sqrt(1 / c.a + 1 / c.b);
        EXPECT_LE(std::fabs(QKDistFun::IdfBeta(c.p, c.a, c.b) - c.x), c.bound * spread)
            << c.p << " " << c.a << " " << c.b;
    }
}

TEST(QKDistFun, CdfChiEnds) {
    EXPECT_EQ(QKDistFun::CdfChi(0, 3), 0);
    EXPECT_EQ(QKDistFun::CdfChi(-1, 3), 0);
    EXPECT_EQ(QKDistFun::CdfChi(-kInfinity, 3), 0);
    EXPECT_EQ(QKDistFun::CdfChi(kInfinity, 3), 1);
    EXPECT_TRUE(std::isnan(QKDistFun::CdfChi(kNaN, 3)));
    for (const double df : {0.0, -1.0, kNaN, kInfinity}) EXPECT_EQ(QKDistFun::CdfChi(1, df), kMissing) << df;
}

// The binomial distribution ------------------------------------------------------------------------------------------

TEST(QKDistFun, CdfBinCodes) {
    EXPECT_EQ(ErrOfCdfBin(3, 5, 0.5), 0);
    EXPECT_EQ(ErrOfCdfBin(-7, 5, 0.5), 0);
    EXPECT_EQ(ErrOfCdfBin(-kInfinity, 5, 0.5), 0);
    for (const double x : {5.5, 6.0, kInfinity, kNaN}) EXPECT_EQ(ErrOfCdfBin(x, 5, 0.5), 1) << x;
    for (const double n : {-1.0, -1e-300, kNaN, kInfinity, -kInfinity}) EXPECT_EQ(ErrOfCdfBin(0, n, 0.5), 1) << n;
    for (const double p : {-1e-300, 1 + 1e-15, kNaN, kInfinity}) EXPECT_EQ(ErrOfCdfBin(0, 5, p), 1) << p;
    EXPECT_EQ(ErrOfCdfBin(-1, 5, 2), 1) << "x below 0 is no error, the probability is";
}

TEST(QKDistFun, CdfBinEdges) {
    EXPECT_EQ(CdfBin(-1, 7, 0.5), 0);
    EXPECT_EQ(CdfBin(-1e-300, 7, 0.5), 0);
    EXPECT_EQ(CdfBin(7, 7, 0.5), 1);
    EXPECT_EQ(CdfBin(1e9, 1e9, 0.123), 1);
    EXPECT_EQ(CdfBin(0, 0, 0.3), 1);
    EXPECT_EQ(CdfBin(-1, 0, 0.3), 0);
    EXPECT_EQ(CdfBin(0, 9, 0), 1);
    EXPECT_EQ(CdfBin(0, 9, 1), 0);
    EXPECT_EQ(CdfBin(8, 9, 1), 0);
    EXPECT_EQ(CdfBin(9, 9, 1), 1);
    EXPECT_EQ(CdfBin(3.9, 9, 0.2), CdfBin(3, 9, 0.2));
    EXPECT_EQ(CdfBin(0, 1e9, 0.5), 0);
}

TEST(QKDistFun, FairBinomialIsExact) {
    EXPECT_EQ(CdfBin(0, 1, 0.5), 0.5);
    EXPECT_EQ(CdfBin(2, 4, 0.5), 0.6875);
    EXPECT_EQ(CdfBin(5, 10, 0.5), 638.0 / 1024);
    EXPECT_EQ(CdfBin(0, 60, 0.5), std::ldexp(1.0, -60));
    EXPECT_EQ(CdfBin(1, 62, 0.5), std::ldexp(63.0, -62));
    // Pascal's rule holds for P(X <= x) too, and exactly where every sum fits in a double.
    for (int n = 2; n <= 52; ++n) {
        for (int x = 1; x < n - 1; ++x)
            EXPECT_EQ(CdfBin(x, n, 0.5), (CdfBin(x, n - 1, 0.5) + CdfBin(x - 1, n - 1, 0.5)) / 2) << x << " " << n;
    }
}

TEST(QKDistFun, BinomialTailsAddUp) {
    // From terms summed one by one to the integral, which takes over at n = 36000000 for fair trials.
    for (const double n : {63.0, 1000.0, 4e6, 35999999.0, 36000001.0, 1e9}) {
        for (const double z : {-9.0, -2.5, -0.01, 0.4, 3.0}) {
            const double x = std::fmax(0, std::floor(n / 2 + z * std::sqrt(n) / 2));
            EXPECT_TRUE(harness::WithinUlp(CdfBin(x, n, 0.5) + CdfBin(n - x - 1, n, 0.5), 1, 2)) << n << " " << z;
        }
    }
}

// The hypergeometric distribution ------------------------------------------------------------------------------------

TEST(QKDistFun, CDFHyperStatus) {
    EXPECT_EQ(StatusOfCDFHyper(1, 10, 4, 5), 0);
    EXPECT_EQ(StatusOfCDFHyper(-9, 10, 4, 5), 0);
    EXPECT_EQ(StatusOfCDFHyper(99, 10, 4, 5), 0);
    for (const double margin : {-1.0, 11.0, kNaN, kInfinity, -kInfinity}) {
        EXPECT_EQ(StatusOfCDFHyper(1, 10, margin, 5), 1) << margin;
        EXPECT_EQ(StatusOfCDFHyper(1, 10, 4, margin), 1) << margin;
    }
    for (const double total : {-1.0, kNaN, kInfinity}) EXPECT_EQ(StatusOfCDFHyper(1, total, 4, 5), 1) << total;
    EXPECT_EQ(StatusOfCDFHyper(kNaN, 10, 4, 5), 1);
}

TEST(QKDistFun, CDFHyperEdges) {
    EXPECT_EQ(CDFHyper(0, 0, 0, 0), 1);
    EXPECT_EQ(CDFHyper(-1, 0, 0, 0), 0);
    EXPECT_EQ(CDFHyper(0, 10, 0, 5), 1);
    EXPECT_EQ(CDFHyper(4, 10, 10, 5), 0);
    EXPECT_EQ(CDFHyper(5, 10, 10, 5), 1);
    EXPECT_EQ(CDFHyper(1, 10, 7, 5), 0);
    EXPECT_EQ(CDFHyper(-kInfinity, 10, 4, 5), 0);
    EXPECT_EQ(CDFHyper(kInfinity, 10, 4, 5), 1);
    EXPECT_EQ(CDFHyper(2.9, 10.5, 4.2, 5.9), CDFHyper(2, 10, 4, 5));
}

// Every table of a total up to 24, by whole numbers: the terms are products of two binomial coefficients.
TEST(QKDistFun, CDFHyperSmallTables) {
    constexpr int kLargestTotal = 24;
    double choose[kLargestTotal + 1][kLargestTotal + 1] = {};
    for (int n = 0; n <= kLargestTotal; ++n) {
        choose[n][0] = 1;
        for (int k = 1; k <= n; ++k) choose[n][k] = choose[n - 1][k - 1] + choose[n - 1][k];
    }
    for (int total = 1; total <= kLargestTotal; ++total) {
        for (int row = 0; row <= total; ++row) {
            for (int column = 0; column <= total; ++column) {
                double sum = 0;
                for (int x = 0; x <= row && x <= column; ++x) {
                    sum += choose[row][x] * choose[total - row][column - x];
                    ASSERT_LE(RelativeError(CDFHyper(x, total, row, column), sum / choose[total][column]), 5e-16)
                        << x << " " << total << " " << row << " " << column;
                }
            }
        }
    }
}

// The logarithm of the gamma function --------------------------------------------------------------------------------

TEST(QKDistFun, LogGammaEnds) {
    for (const double pole : {0.0, -0.0, -1.0, -2.0, -170.0, -1e9, -1e300}) {
        EXPECT_EQ(QKDistFun::zomrdnlgam(pole), kInfinity) << pole;
    }
    EXPECT_EQ(QKDistFun::zomrdnlgam(kInfinity), kInfinity);
    EXPECT_EQ(QKDistFun::zomrdnlgam(std::numeric_limits<double>::max()), kInfinity);
    EXPECT_EQ(QKDistFun::zomrdnlgam(kNaN), kMissing);
    EXPECT_EQ(QKDistFun::zomrdnlgam(1), 0);
    EXPECT_EQ(QKDistFun::zomrdnlgam(2), 0);
}

// Near its zeros between negative whole numbers the function is the small difference of two logarithms, so that the
// absolute error is bounded there. Values: mpmath's loggamma, 60 digits.
TEST(QKDistFun, LogGammaNearZerosOfNegativeArguments) {
    constexpr double kAbsoluteBound = 1e-17;
    EXPECT_NEAR(QKDistFun::zomrdnlgam(-2.4570247382208), 7.292550612674703295629148169e-16, kAbsoluteBound);
    EXPECT_NEAR(QKDistFun::zomrdnlgam(-2.4570247382208006), 5.619192358950096450912568517e-17, kAbsoluteBound);
    EXPECT_NEAR(QKDistFun::zomrdnlgam(-2.7476826467274127), 1.733509244024500861096648803e-16, kAbsoluteBound);
    EXPECT_NEAR(QKDistFun::zomrdnlgam(-3.14358088834998), 1.69786559061210843022272848e-15, kAbsoluteBound);
    EXPECT_NEAR(QKDistFun::zomrdnlgam(-3.955294284858598), -4.143827507577049950724401683e-16, kAbsoluteBound);
}

// Whatever the arguments ---------------------------------------------------------------------------------------------

const double kNasty[] = {0.0,
                         -0.0,
                         5e-324,
                         1e-310,
                         1e-300,
                         1e-17,
                         1e-5,
                         0.3,
                         0.5,
                         1 - 1e-16,
                         1,
                         1.5,
                         2,
                         100,
                         1e5,
                         1e9,
                         1e18,
                         1e100,
                         1.7e308,
                         kInfinity,
                         kNaN,
                         -5e-324,
                         -1,
                         -2.5,
                         -1e300,
                         -kInfinity,
                         kMissing,
                         4503599627370497.0,
                         9007199254740993.0};

bool IsProbabilityOrMissing(double value) {
    return value == kMissing || (value >= 0 && value <= 1);
}

TEST(QKDistFun, AnyArgumentHasAnAnswer) {
    for (const double a : kNasty) {
        EXPECT_TRUE(std::isnan(a) ? std::isnan(QKDistFun::CdfStdNorm(a))
                                  : IsProbabilityOrMissing(QKDistFun::CdfStdNorm(a)))
            << a;
        EXPECT_FALSE(std::isnan(QKDistFun::IdfStdNorm(a))) << a;
        EXPECT_FALSE(std::isnan(QKDistFun::zomrdnlgam(a))) << a;
        for (const double b : kNasty) {
            EXPECT_TRUE(std::isnan(a) ? std::isnan(QKDistFun::CdfChi(a, b))
                                      : IsProbabilityOrMissing(QKDistFun::CdfChi(a, b)))
                << a << " " << b;
            const double chi = QKDistFun::IdfChi(a, b);
            EXPECT_TRUE(chi == kMissing || chi >= 0) << a << " " << b;
            for (const double c : kNasty) {
                EXPECT_TRUE(std::isnan(a) ? std::isnan(QKDistFun::CdfNorm(a, b, c))
                                          : IsProbabilityOrMissing(QKDistFun::CdfNorm(a, b, c)))
                    << a << " " << b << " " << c;
                EXPECT_TRUE(IsProbabilityOrMissing(QKDistFun::IdfBeta(a, b, c))) << a << " " << b << " " << c;
                EXPECT_TRUE(IsProbabilityOrMissing(CdfBin(a, b, c))) << a << " " << b << " " << c;
                const double f = QKDistFun::IdfF(a, b, c);
                EXPECT_TRUE(f == kMissing || f >= 0) << a << " " << b << " " << c;
            }
        }
    }
}

TEST(QKDistFun, AnyTableHasAnAnswer) {
    for (const double x : kNasty) {
        for (const double total : kNasty) {
            for (const double row : kNasty) {
                for (const double column : kNasty) {
                    ASSERT_TRUE(IsProbabilityOrMissing(CDFHyper(x, total, row, column)))
                        << x << " " << total << " " << row << " " << column;
                }
            }
        }
    }
}

// Comparisons and powers ---------------------------------------------------------------------------------------------

TEST(QKPower, AlmostEqual) {
    EXPECT_TRUE(QKPower::AlmostEqual(1, 1, 0));
    EXPECT_TRUE(QKPower::AlmostEqual(1, 1 + QKPower::gMachineEpsilon, QKPower::gMachineEpsilon));
    EXPECT_FALSE(QKPower::AlmostEqual(1, 1 + 4 * QKPower::gMachineEpsilon, QKPower::gMachineEpsilon));
    // Below 1 the distance is absolute, above it relative.
    EXPECT_TRUE(QKPower::AlmostEqual(1e-9, 3e-9, 1e-8));
    EXPECT_TRUE(QKPower::AlmostEqual(1e9, 1e9 + 5, 1e-8));
    EXPECT_TRUE(QKPower::AlmostEqual(-1e9, -1e9 - 5, 1e-8));
    EXPECT_FALSE(QKPower::AlmostEqual(1e9, -1e9, 1e-8));
    EXPECT_FALSE(QKPower::AlmostEqual(0, 2e-8, 1e-8));
    EXPECT_FALSE(QKPower::AlmostEqual(kNaN, 1, 1));
    EXPECT_FALSE(QKPower::AlmostEqual(1, kNaN, 1));
    EXPECT_FALSE(QKPower::AlmostEqual(kNaN, kNaN, 1));
}

TEST(QKPower, IsEvenInteger) {
    for (const double even : {0.0, -0.0, 2.0, -2.0, 1e300, 18014398509481984.0, 9007199254740994.0}) {
        EXPECT_TRUE(QKPower::IsEvenInteger(even)) << even;
    }
    for (const double other : {1.0, -1.0, 0.5, 2.5, 5e-324, 9007199254740991.0, kNaN, kInfinity, -kInfinity}) {
        EXPECT_FALSE(QKPower::IsEvenInteger(other)) << other;
    }
}

TEST(QKPower, Exponent) {
    double out = -1;
    EXPECT_EQ(QKPower::Exponent(0, out), 0);
    EXPECT_EQ(out, 1);
    EXPECT_EQ(QKPower::Exponent(709.78, out), 0);
    EXPECT_TRUE(std::isfinite(out));
    EXPECT_EQ(QKPower::Exponent(-740, out), 0);
    EXPECT_TRUE(out > 0 && out < std::numeric_limits<double>::min());
    for (const double x : {-746.0, -1e300, -kInfinity}) {
        EXPECT_EQ(QKPower::Exponent(x, out), 1) << x;
        EXPECT_EQ(out, 0) << x;
    }
    for (const double x : {709.79, 1e300, kInfinity, kNaN}) {
        EXPECT_EQ(QKPower::Exponent(x, out), 2) << x;
        EXPECT_EQ(out, kMissing) << x;
    }
}

}  // namespace
