// Source: Lilliefors (1967), Journal of the American Statistical Association 62, 399-402, for the critical values;
// Dallal and Wilkinson (1986), The American Statistician 40, 294-296, for the formula of the upper tail. Its critical
// value of 0.1 is where the formula meets the interpolation between the critical values of 0.15 and 0.2.

#include "onesample/LillieforsSignificance.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "platform/common/QKMV.h"

namespace {

constexpr std::int64_t kSmallestN = 5;
constexpr double kTolerance = 1e-14;

struct CriticalValues {
    std::int64_t n;
    double at20;  ///< of the significance 0.2
    double at15;  ///< of the significance 0.15
};

constexpr std::array<CriticalValues, 22> kTable{
    {{5, 0.289, 0.303},   {6, 0.269, 0.281},  {7, 0.252, 0.264},  {8, 0.239, 0.25},   {9, 0.227, 0.238},
     {10, 0.217, 0.228},  {11, 0.208, 0.218}, {12, 0.2, 0.21},    {13, 0.193, 0.202}, {14, 0.187, 0.196},
     {15, 0.181, 0.19},   {16, 0.176, 0.184}, {17, 0.171, 0.179}, {18, 0.167, 0.175}, {19, 0.163, 0.17},
     {20, 0.159, 0.166},  {25, 0.143, 0.15},  {30, 0.131, 0.138}, {40, 0.115, 0.12},  {100, 0.074, 0.077},
     {400, 0.037, 0.039}, {900, 0.025, 0.026}}};

/// Of n past the last row. As defined the divisor is n and not its square root. The table of critical values ends that
/// way, and documents depend on it: nearly every D of a large sample lies above both.
CriticalValues PastTheTable(std::int64_t n, double divisor) {
    return {n, 0.736 / divisor, 0.768 / divisor};
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
        if (n > 100) {
            a = -7.90289126054 * std::pow(n, 0.98);
            b = 3.180370175721 * std::pow(n, 0.49);
            c = 2.2947256;
        } else {
            const double shifted = n + 2.78019;
            a = -7.01256 * shifted;
            b = 2.99587 * std::sqrt(shifted);
            c = 2.1804661 + 0.974598 / std::sqrt(n) + 1.67997 / n;
        }
    }
    /// The D of the significance 0.1, where the exponent is that of 0.1.
    double CriticalValueAt10() const { return (-b - std::sqrt(b * b - 4 * a * c)) / (2 * a); }
    double Significance(double difference) const {
        return std::exp(a * difference * difference + b * difference + c - 2.3025851);
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
