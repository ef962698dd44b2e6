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

}  // namespace

std::optional<double> KolmogorovSignificance(double z) {
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
