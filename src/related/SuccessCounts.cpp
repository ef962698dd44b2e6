#include "related/SuccessCounts.h"

#include <algorithm>
#include <cmath>

#include "platform/common/Truncation.h"

namespace {

Whole SumOf(const std::vector<std::int64_t>& counts) {
    Whole sum = 0;
    for (const std::int64_t count : counts) sum = sum + count;
    return sum;
}

/// By the distances from a whole number near the mean, which don't change it and don't cancel.
Whole SpreadOfFields(const std::vector<std::int64_t>& ofField, const Whole& sum) {
    const auto k = static_cast<long double>(ofField.size());
    const auto centre = static_cast<std::int64_t>(sum.Value() / k);
    Whole distances = 0;
    Whole squares = 0;
    for (const std::int64_t count : ofField) {
        const Whole distance = Whole(count) - centre;
        distances = distances + distance;
        squares = squares + distance * distance;
    }
    return squares * ofField.size() - distances * distances;
}

}  // namespace

// ---- Terms ----

CochranTerms::CochranTerms(const std::vector<std::int64_t>& ofField, const Whole& rowTerm) : k(ofField.size()) {
    const Whole sum = SumOf(ofField);
    numerator = SpreadOfFields(ofField, sum);
    spread = sum * k - rowTerm;
}

double CochranTerms::Q(const Arithmetic& arithmetic) const {
    const double divisor = arithmetic.Signed32(spread);
    if (divisor == 0) return 0;
    return arithmetic.Unsigned32(numerator) * (static_cast<double>(k) - 1) / divisor;
}

double CochranTerms::WideQ() const {
    if (spread.Value() == 0) return 0;
    return static_cast<double>(numerator.Value() * (static_cast<long double>(k) - 1) / spread.Value());
}

// ---- Counts ----

/// A sum whose lower 32 bits are not all 0 is none in either width.
bool SuccessCounts::HasSuccess() const {
    const Whole sum = SumOf(ofField);
    return static_cast<std::uint32_t>(sum.Bits()) != 0 || arithmetic->Unsigned32(sum) != 0;
}

bool SuccessCounts::HasBothOutcomes() const {
    const std::int64_t all = arithmetic->UnsignedCount(n);
    const auto isAnyOtherThan = [&](std::int64_t value) {
        return std::any_of(ofField.begin(), ofField.end(),
                           [&](std::int64_t count) { return arithmetic->UnsignedCount(count) != value; });
    };
    return isAnyOtherThan(all) && isAnyOtherThan(0);
}

double SuccessCounts::Cases() const {
    return static_cast<double>(arithmetic->UnsignedCount(n));
}

std::vector<double> SuccessCounts::Proportions() const {
    std::vector<double> proportions;
    for (const std::int64_t count : ofField) {
        proportions.push_back(static_cast<double>(arithmetic->UnsignedCount(count)) / Cases());
    }
    return proportions;
}

std::int32_t SuccessCounts::Percentage(std::size_t field) const {
    return TruncateToInt32(static_cast<double>(arithmetic->UnsignedCount(ofField[field])) * 100.0 / Cases());
}

double SuccessCounts::Difference(std::size_t first, std::size_t second) const {
    return arithmetic->Signed32(Whole(ofField[first]) - ofField[second]) / Cases();
}

double SuccessCounts::StandardError() const {
    const auto k = static_cast<double>(ofField.size());
    const double squaredCases = arithmetic->Unsigned32(Whole(n) * n);
    const double spread = arithmetic->Signed32(CochranTerms(ofField, sumRowSuccessSquared).spread);
    return std::sqrt(2 * spread / (squaredCases * k * (k - 1.0)));
}
