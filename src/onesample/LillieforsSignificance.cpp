// Source: Lilliefors (1967), Journal of the American Statistical Association 62, 399-402, for the critical values;
// Dallal and Wilkinson (1986), The American Statistician 40, 294-296, for the formula of the upper tail. Its critical
// value of 0.1 is where the formula meets the interpolation between the critical values of 0.15 and 0.2.

#include "onesample/LillieforsSignificance.h"

#include <algorithm>
#include <cmath>

#include "platform/common/QKMV.h"
#include "vocabulary/LillieforsTable.h"

namespace {

constexpr std::int64_t kSmallestN = 5;
constexpr double kTolerance = 1e-14;

using Lilliefors::CriticalValues;
using Lilliefors::kTable;

/// Of n past the last row. As defined the divisor is n and not its square root. The table of critical values ends that
/// way, and documents depend on it: nearly every D of a large sample lies above both.
CriticalValues PastTheTable(std::int64_t n, double divisor) {
    return {n, Lilliefors::kPastTableAt20 / divisor, Lilliefors::kPastTableAt15 / divisor};
}

/// Of n from the first row's to the last one's.
CriticalValues CriticalValuesOf(std::int64_t n) {
    const auto above = std::lower_bound(kTable.begin(), kTable.end(), n,
                                        [](const CriticalValues& row, std::int64_t wanted) { return row.n < wanted; });
    if (above->n == n) return *above;
    const CriticalValues& below = *(above - 1);
    const double share = static_cast<double>(n - below.n) / (above->n - below.n);
    return {n, below.at20 + (above->at20 - below.at20) * share, below.at15 + (above->at15 - below.at15) * share};
}

/// The exponent of the formula is a D^2 + b D + c, less ln 10.
struct Exponent {
    double a;
    double b;
    double c;

    explicit Exponent(double n) {
        using namespace Lilliefors::UpperTail;
        if (n > kMostOfFirst) {
            a = kLargeSquare * std::pow(n, kLargeSquarePower);
            b = kLargeLinear * std::pow(n, kLargeLinearPower);
            c = kLargeConstant;
        } else {
            const double shifted = n + kShift;
            a = kSquare * shifted;
            b = kLinear * std::sqrt(shifted);
            c = kConstant + kOverRoot / std::sqrt(n) + kOverSize / n;
        }
    }
    /// The D of the significance 0.1, where the exponent is that of 0.1.
    double CriticalValueAt10() const { return (-b - std::sqrt(b * b - 4 * a * c)) / (2 * a); }
    double Significance(double difference) const {
        return std::exp(a * difference * difference + b * difference + c - Lilliefors::UpperTail::kLogOfTen);
    }
};

bool IsEqual(double difference, double critical) {
    return std::fabs(difference - critical) < kTolerance;
}

bool Reaches(double difference, double critical) {
    return difference - critical >= kTolerance || IsEqual(difference, critical);
}

/// On the line through two critical values with their significances.
double Interpolate(double difference, double upperSig, double upper, double lowerSig, double lower) {
    return (upperSig - lowerSig) / (upper - lower) * (difference - lower) + lowerSig;
}

/// Above 0.1; `at10`: the critical value of that.
LillieforsSignificance Interpolated(double difference, double at10, const CriticalValues& critical) {
    if (Reaches(difference, critical.at15)) return {Interpolate(difference, 0.1, at10, 0.15, critical.at15)};
    if (Reaches(difference, critical.at20)) return {Interpolate(difference, 0.15, critical.at15, 0.2, critical.at20)};
    return {0.2, true};
}

}  // namespace

LillieforsSignificance LillieforsSignificanceOf(std::int64_t n, double difference, const Arithmetic& arithmetic) {
    if (n < kSmallestN) return {QKMV::Missing()};
    const Exponent exponent(static_cast<double>(n));
    const double at10 = exponent.CriticalValueAt10();
    if (difference - at10 >= kTolerance) return {exponent.Significance(difference)};
    if (IsEqual(difference, at10)) return {0.1};
    if (n <= kTable.back().n) return Interpolated(difference, at10, CriticalValuesOf(n));
    const auto size = static_cast<double>(n);
    const LillieforsSignificance asDefined = Interpolated(difference, at10, PastTheTable(n, size));
    const LillieforsSignificance textbook = Interpolated(difference, at10, PastTheTable(n, std::sqrt(size)));
    return arithmetic.TakesTextbook(textbook != asDefined) ? textbook : asDefined;
}
