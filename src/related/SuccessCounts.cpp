#include "related/SuccessCounts.h"

#include <algorithm>
#include <cmath>

#include "platform/common/Truncation.h"

namespace {

/// k times the successes of the records less the sum of their squares. Over a subset the two terms need not go over
/// the same fields, so that it can be negative.
double Spread(std::uint32_t k, std::uint32_t successes, std::uint32_t rowTerm) {
    return static_cast<std::int32_t>(k * successes - rowTerm);
}

}  // namespace

bool SuccessCounts::HasBothOutcomes() const {
    const auto isAnyOtherThan = [&](std::uint32_t value) {
        return std::any_of(ofField.begin(), ofField.end(), [&](std::uint32_t count) { return count != value; });
    };
    return isAnyOtherThan(n) && isAnyOtherThan(0);
}

std::vector<double> SuccessCounts::Proportions() const {
    std::vector<double> proportions;
    for (const std::uint32_t count : ofField) proportions.push_back(static_cast<double>(count) / n);
    return proportions;
}

std::int32_t SuccessCounts::Percentage(std::size_t field) const {
    return TruncateToInt32(ofField[field] * 100.0 / n);
}

double SuccessCounts::Q() const {
    return SubsetQ(0, ofField.size() - 1, sumRowSuccessSquared);
}

double SuccessCounts::SubsetQ(std::size_t first, std::size_t last, std::uint32_t rowTerm) const {
    const auto k = static_cast<std::uint32_t>(last - first + 1);
    std::uint32_t sum = 0;
    std::uint32_t squares = 0;
    for (std::size_t field = first; field <= last; ++field) {
        sum += ofField[field];
        squares += ofField[field] * ofField[field];
    }
    if (k * sum == rowTerm) return 0;
    const double numerator = k * squares - sum * sum;  // unsigned
    return numerator * (k - 1.0) / Spread(k, sum, rowTerm);
}

double SuccessCounts::Difference(std::size_t first, std::size_t second) const {
    return static_cast<std::int32_t>(ofField[first] - ofField[second]) / static_cast<double>(n);
}

double SuccessCounts::StandardError() const {
    const auto k = static_cast<std::uint32_t>(ofField.size());
    const double squaredCases = n * n;
    return std::sqrt(2 * Spread(k, sumRowSuccess, sumRowSuccessSquared) / (squaredCases * k * (k - 1.0)));
}
