// The discrete distributions, binomial and hypergeometric: sums over their terms.

#include <algorithm>
#include <boost/math/quadrature/gauss.hpp>
#include <boost/math/special_functions/log1p.hpp>
#include <cmath>
#include <cstdint>
#include <span>

#include "platform/common/QKDistFun.h"
#include "platform/common/QKMV.h"
#include "runtime/common/MathPolicy.h"
#include "runtime/common/QKDistFunParts.h"

namespace QKMath {

namespace {

/// n! e^n / n^n, which varies as sqrt(2 pi n) where n! itself has no room; 1 for 0. Whole n up to 20, any n above.
WorkReal ScaledFactorial(WorkReal n) {
    constexpr WorkReal kSeriesAbove = 20;
    if (n <= kSeriesAbove) {
        constexpr WorkReal kE = 2.718281828459045235360287471352662L;
        WorkReal product = 1;
        for (int factor = 1; factor <= n; ++factor) product *= factor * (kE / n);
        return product;
    }
    const WorkReal s = 1 / (n * n);
    const WorkReal series =
        (1 / 12.0L - s * (1 / 360.0L - s * (1 / 1260.0L -
                                            s * (1 / 1680.0L - s * (1 / 1188.0L - s * (691 / 360360.0L - s / 156)))))) /
        n;
    return std::sqrt(kTwoPi * n) * std::exp(series);
}

/// (1 + e) log(1 + e) - e for e from -1.
WorkReal RelativeDeviance(WorkReal e) {
    constexpr WorkReal kSmall = 0.5;
    if (e <= -1) return 1;
    if (std::fabs(e) > kSmall) return (1 + e) * std::log1p(e) - e;
    return (1 + e) * boost::math::log1pmx(e, MathPolicy()) + e * e;
}

/// A count that the distribution splits its total into.
struct Cell {
    WorkReal count;
    WorkReal expected;
    int direction;  ///< of the count when X goes up by 1: 1 or -1
};

/// P(X <= x) for an x not above the mean, of a distribution on whole numbers whose probabilities are
///
///     front / product of ScaledFactorial(count) * exp(-sum of expected * RelativeDeviance((count - expected) /
///     expected))
///
/// over the cells: the form of Loader (2000), Fast and accurate computation of binomial probabilities, in which
/// nothing large cancels. count - expected is the deviation in the direction of the cell; it is given by itself, as its
/// relative error is what a far tail magnifies.
class LowerTail {
 public:
    LowerTail(std::span<const Cell> cells, WorkReal deviation, WorkReal front, WorkReal odds)
        : cells_(cells), deviation_(deviation), front_(front), odds_(odds) {
        WorkReal inverseVariance = 0;
        for (const Cell& cell : cells_) inverseVariance += 1 / cell.expected;
        sd_ = 1 / std::sqrt(inverseVariance);
    }

    WorkReal Sum() const {
        const WorkReal last = Density(0);
        if (!(last > 0)) return last;
        return sd_ > kIntegrateAboveSd ? Integral(last) : SumOfTerms(last);
    }

 private:
    /// From here on the correction terms left out of `Integral` are below 1e-14 of the result wherever that is a
    /// double, and summing the terms one by one would take longer.
    static constexpr WorkReal kIntegrateAboveSd = 3000;
    static constexpr WorkReal kNegligible = 1e-22L;

    /// The density at x - below, which need not be whole where the counts are above 20.
    WorkReal Density(WorkReal below) const {
        WorkReal deviance = 0;
        WorkReal factorials = 1;
        for (const Cell& cell : cells_) {
            const WorkReal deviation = cell.direction * (deviation_ - below);
            factorials *= ScaledFactorial(cell.count - cell.direction * below);
            deviance += cell.expected * RelativeDeviance(deviation / cell.expected);
        }
        return front_ / factorials * std::exp(-deviance);
    }

    /// P(X = x - below - 1) / P(X = x - below).
    WorkReal Ratio(WorkReal below) const {
        WorkReal numerator = odds_;
        WorkReal denominator = 1;
        for (const Cell& cell : cells_) {
            const WorkReal count = cell.count - cell.direction * below;
            if (cell.direction > 0)
                numerator *= count;
            else
                denominator *= count + 1;
        }
        return numerator / denominator;
    }

    WorkReal SumOfTerms(WorkReal last) const {
        WorkReal relative = 1;
        WorkReal sum = 1;
        for (WorkReal below = 0; relative > sum * kNegligible; below += 1) {
            relative *= Ratio(below);
            sum += relative;
        }
        return last * sum;
    }

    /// The Euler-Maclaurin sum formula with midpoints: the integral up to x + 1/2 and corrections from the
    /// derivatives there, which central differences of the probabilities around x + 1/2 give.
    WorkReal Integral(WorkReal last) const {
        const WorkReal distance = -deviation_ / sd_;
        const WorkReal width = sd_ / std::max<WorkReal>(1, distance);
        WorkReal integral = 0;
        WorkReal panel = 1;
        for (WorkReal from = -0.5L; panel > integral * kNegligible; from += width) {
            panel = boost::math::quadrature::gauss<WorkReal, 20>::integrate(
                [this](WorkReal below) { return Density(below); }, from, from + width);
            integral += panel;
        }
        const WorkReal next = last / Ratio(-1);
        const WorkReal first = next - last;
        const WorkReal third = next / Ratio(-2) - 3 * first - last * Ratio(0);
        return integral - first / 24 + third * 17 / 5760;
    }

    std::span<const Cell> cells_;
    WorkReal deviation_;
    WorkReal front_;
    WorkReal odds_;
    WorkReal sd_;
};

/// a * b - c * d with nothing lost but the last rounding.
WorkReal DifferenceOfProducts(WorkReal a, WorkReal b, WorkReal c, WorkReal d) {
    const WorkReal left = a * b;
    const WorkReal right = c * d;
    return (left - right) + (std::fma(a, b, -left) - std::fma(c, d, -right));
}

WorkReal BinomialLowerTail(WorkReal x, WorkReal n, WorkReal p, WorkReal q, WorkReal deviation) {
    const Cell cells[] = {{x, n * p, 1}, {n - x, n * q, -1}};
    return LowerTail(cells, deviation, ScaledFactorial(n), q / p).Sum();
}

/// The margins of both rows and both columns are given, as a difference from a huge total may have lost one.
WorkReal HypergeometricLowerTail(WorkReal x, WorkReal row, WorkReal otherRow, WorkReal column, WorkReal otherColumn,
                                 WorkReal total, WorkReal deviation) {
    const Cell cells[] = {{x, row * column / total, 1},
                          {row - x, row * otherColumn / total, -1},
                          {column - x, otherRow * column / total, -1},
                          {otherRow - (column - x), otherRow * otherColumn / total, 1}};
    const WorkReal front = ScaledFactorial(row) * ScaledFactorial(otherRow) / ScaledFactorial(total) *
                           ScaledFactorial(column) * ScaledFactorial(otherColumn);
    return LowerTail(cells, deviation, front, 1).Sum();
}

/// P(X <= x) for n fair trials as a fraction of whole numbers, rounded once.
constexpr double kLargestExactTrials = 62;
double FairBinomial(std::uint64_t x, std::uint64_t n) {
    std::uint64_t choose = 1;
    std::uint64_t sum = 1;
    for (std::uint64_t k = 1; k <= x; ++k) {
        // choose * (n - k + 1) could leave 64 bits; the parts that k divides out can't.
        const std::uint64_t factor = n - k + 1;
        choose = choose / k * factor + choose % k * factor / k;
        sum += choose;
    }
    return std::ldexp(static_cast<double>(sum), -static_cast<int>(n));
}

/// The lower tail of the binomial distribution, or the upper one.
double BinomialTail(double x, double n, double p, bool isUpper, int& err) {
    const bool isInDomain = n >= 0 && !std::isinf(n) && IsProbability(p) && x <= n;
    err = isInDomain ? 0 : 1;
    if (!isInDomain) return QKMV::Missing();
    const double successes = std::floor(x);
    const double trials = std::floor(n);
    if (successes < 0) return isUpper ? 1 : 0;
    if (successes == trials || p == 0) return isUpper ? 0 : 1;
    if (p == 1) return isUpper ? 1 : 0;
    const double otherFailures = trials - successes - 1;  // the most that more successes leave
    if (p == 0.5 && trials <= kLargestExactTrials) {
        return FairBinomial(static_cast<std::uint64_t>(isUpper ? otherFailures : successes),
                            static_cast<std::uint64_t>(trials));
    }

    const WorkReal q = 1 - static_cast<WorkReal>(p);
    const WorkReal deviation = DifferenceOfProducts(1, successes, trials, p);
    const bool isSumOfUpper = deviation > 0;
    const WorkReal sum = isSumOfUpper ? BinomialLowerTail(otherFailures, trials, q, p, -(deviation + 1))
                                      : BinomialLowerTail(successes, trials, p, q, deviation);
    return ProbabilityResult(isSumOfUpper == isUpper ? sum : 1 - sum);
}

/// The lower tail of the hypergeometric distribution, or the upper one.
double HypergeometricTail(double x, double total, double margin1, double margin2, bool isUpper, int& status) {
    const auto isMargin = [total](double margin) { return margin >= 0 && margin <= total; };
    if (std::isnan(x) || !std::isfinite(total) || !isMargin(margin1) || !isMargin(margin2)) {
        status = 1;
        return QKMV::Missing();
    }
    status = 0;
    const WorkReal cell = std::floor(x);
    const WorkReal count = std::floor(total);
    const WorkReal row = std::floor(margin1);
    const WorkReal column = std::floor(margin2);
    const WorkReal otherRow = count - row;
    const WorkReal otherColumn = count - column;
    // The last two are the same but for a total beyond the whole numbers of the type.
    if (cell < std::max({WorkReal{0}, column - otherRow, row - otherColumn})) return isUpper ? 1 : 0;
    if (cell >= std::min(row, column)) return isUpper ? 0 : 1;

    const WorkReal deviation = DifferenceOfProducts(cell, count, row, column) / count;
    // The upper tail is the lower one of the other row's cell in the same column.
    const bool isSumOfUpper = deviation > 0;
    const WorkReal sum =
        isSumOfUpper
            ? HypergeometricLowerTail(column - (cell + 1), otherRow, row, column, otherColumn, count, -(deviation + 1))
            : HypergeometricLowerTail(cell, row, otherRow, column, otherColumn, count, deviation);
    return ProbabilityResult(isSumOfUpper == isUpper ? sum : 1 - sum);
}

}  // namespace

double QKDistFun::CdfBin(double x, double n, double p, int& err) {
    return BinomialTail(x, n, p, false, err);
}

double QKDistFun::SfBin(double x, double n, double p, int& err) {
    return BinomialTail(x, n, p, true, err);
}

double QKDistFun::CDFHyper(double x, double total, double margin1, double margin2, int& status) {
    return HypergeometricTail(x, total, margin1, margin2, false, status);
}

double QKDistFun::SfHyper(double x, double total, double margin1, double margin2, int& status) {
    return HypergeometricTail(x, total, margin1, margin2, true, status);
}

}  // namespace QKMath
