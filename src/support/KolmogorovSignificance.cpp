#include "support/KolmogorovSignificance.h"

#include <cmath>
#include <numbers>

#include "platform/common/QKPower.h"

using QKMath::QKPower;

namespace {

/// An underflow to 0 is no failure; nothing on a failure.
std::optional<double> Exponential(double x) {
    double value = 0;
    const int result = QKPower::Exponent(x, value);
    if (result != 0 && result != 1) return std::nullopt;
    return value;
}

bool IsAlmost(double value, double bound) {
    return QKPower::AlmostEqual(value, bound, QKPower::gMachineEpsilon);
}

/// Each series to where a term changes nothing more. Below 1 the upper tail is large, so that the other one may be
/// taken from 1.
long double BySeries(long double z) {
    constexpr long double kPi = std::numbers::pi_v<long double>;
    constexpr long double kMostTerms = 8;  // the sixth one at z = 1 is below 1e-30 of the first one
    long double sum = 0;
    if (z < 1) {
        if (z == 0) return 1;
        for (long double i = 1; i < 2 * kMostTerms; i += 2) sum += std::exp(-i * i * kPi * kPi / (8 * z * z));
        return 1 - std::sqrt(2 * kPi) / z * sum;
    }
    long double sign = 1;
    for (long double i = 1; i < kMostTerms; i += 1) {
        sum += sign * std::exp(-2 * i * i * z * z);
        sign = -sign;
    }
    return 2 * sum;
}

std::optional<double> ByFirstTerms(double z) {
    constexpr double kPi = std::numbers::pi;
    if (z >= 0 && z < 0.27) return 1.0;
    if (z >= 0.27 && z < 1) {
        const std::optional<double> q = Exponential(-kPi * kPi / (8 * z * z));
        if (!q) return std::nullopt;
        return 1 - std::sqrt(2 * kPi) / z * *q * (1 + std::pow(*q, 8) + std::pow(*q, 24));
    }
    if (z >= 1 && z < 3.1) {
        const std::optional<double> q = Exponential(-2 * z * z);
        if (!q) return std::nullopt;
        return 2 * (*q - std::pow(*q, 4) + std::pow(*q, 9) - std::pow(*q, 16));
    }
    return 0.0;
}

}  // namespace

std::optional<double> KolmogorovSignificance(double z, const Arithmetic& arithmetic) {
    const std::optional<double> byFirstTerms = ByFirstTerms(z);
    if (!byFirstTerms || !(z >= 0)) return byFirstTerms;
    return arithmetic.Carefully([&] { return *byFirstTerms; }, [=] { return BySeries(z); });
}

bool ExtremeDifferences::HasPositive() const {
    return !IsAlmost(positive, kNoneAbove);
}

bool ExtremeDifferences::HasNegative() const {
    return !IsAlmost(negative, kNoneBelow);
}

void ExtremeDifferences::AddTable(StructuredTable& statistics) const {
    StructuredTable table = statistics.Table(TableName::kMostExtremeDifferences);
    table.Row(RowName::kAbsolute, IsAlmost(absolute, kNoneAbove) ? 0.0 : absolute);
    table.Row(RowName::kPositive, HasPositive() ? positive : 0.0);
    table.Row(RowName::kNegative, HasNegative() ? negative : 0.0);
}
