#include "host/report/PageNumbers.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdio>

#include "host/report/SupplementText.h"

namespace tarn {

namespace {

constexpr int kDecimalsOfP = 3;
constexpr double kSmallestP = 0.001;
constexpr double kLargestP = 0.9995;  // what is above it and rounds to 1
constexpr int kUsualDecimals = 2;
constexpr int kMostDecimalsOfShare = 4;
constexpr int kDigitsOfSmallest = 2;
constexpr int kMostDecimals = 6;
constexpr double kMostInDigits = 1e15;
constexpr double kLeastInDigits = 1e-4;

std::string WithoutLeadingZero(std::string text) {
    const std::size_t digits = text.starts_with('-') ? 1 : 0;
    if (text.compare(digits, 2, "0.") == 0) text.erase(digits, 1);
    return text;
}

/// Decimals that show so many digits of a number; below 0 for one with more before the point.
int DecimalsFor(double size, int digits) {
    return digits - 1 - static_cast<int>(std::floor(std::log10(size)));
}

}  // namespace

WrittenP WriteP(const Number& p, bool isBound) {
    if (p.empty()) return {"", "not computed"};
    if (std::isnan(p.value)) return {"", "undefined"};
    if (p.value < kSmallestP) return {"<", ".001"};
    if (!isBound && p.value >= kLargestP && p.value < 1) return {">", ".999"};
    return {isBound ? ">" : "=", WithoutLeadingZero(FixedText(p.value, kDecimalsOfP))};
}

std::string PCellText(const Number& p, bool isBound) {
    if (p.empty()) return "";
    const WrittenP written = WriteP(p, isBound);
    const bool isPlain = written.relation.empty() || written.relation == "=";
    return isPlain ? written.text : written.relation + " " + written.text;
}

std::string FixedText(double value, int decimals) {
    if (std::isnan(value)) return "undefined";
    if (std::isinf(value)) return value < 0 ? "-inf" : "inf";
    std::array<char, 400> text{};
    std::snprintf(text.data(), text.size(), "%.*f", decimals, value);
    const std::string written = text.data();
    return written.starts_with('-') && written.find_first_of("123456789") == std::string::npos ? written.substr(1)
                                                                                               : written;
}

std::string ShareText(double value, int decimals) {
    if (std::isnan(value)) return "undefined";
    const double size = std::fabs(value);
    // A digit of what is near 0, and what tells it from 1.
    const auto isHidden = [&] {
        const double shown = std::round(size * std::pow(10, decimals)) / std::pow(10, decimals);
        return (size > 0 && shown == 0) || (size < 1 && shown >= 1);
    };
    while (decimals < kMostDecimalsOfShare && isHidden()) ++decimals;
    return WithoutLeadingZero(FixedText(value, decimals));
}

std::string StatisticText(const Number& value) {
    if (value.empty()) return "not computed";
    return std::fabs(value.value) < kMostInDigits ? FixedText(value.value, kUsualDecimals) : FewDigits(value);
}

std::string CountText(const Number& value) {
    if (value.empty()) return "not computed";
    if (!(std::fabs(value.value) < kMostInDigits)) return FewDigits(value);
    const bool isWhole = value.value == std::floor(value.value);
    const bool isHalf = 2 * value.value == std::floor(2 * value.value);
    return FixedText(value.value, isWhole ? 0 : isHalf ? 1 : kUsualDecimals);
}

SameDecimals::SameDecimals(const std::vector<double>& values, int digits) {
    double largest = 0;
    double smallest = kMostInDigits;
    for (const double value : values) {
        const double size = std::fabs(value);
        if (!std::isfinite(size) || size == 0) continue;
        largest = std::max(largest, size);
        smallest = std::min(smallest, size);
    }
    if (largest == 0) return;
    isPlain_ = largest < kMostInDigits && largest >= kLeastInDigits;
    const int wanted = std::max(DecimalsFor(largest, digits), DecimalsFor(smallest, kDigitsOfSmallest));
    decimals_ = std::clamp(wanted, 0, kMostDecimals);
    const auto needsAll = [&](double value) {
        return FixedText(value, decimals_).back() != '0' && std::isfinite(value);
    };
    while (decimals_ > 0 && std::ranges::none_of(values, needsAll)) --decimals_;
}

std::string SameDecimals::Text(const Number& value) const {
    if (value.empty()) return "";
    return isPlain_ ? FixedText(value.value, decimals_) : FewDigits(value);
}

std::string SameDecimals::Range(const Number& lower, const Number& upper) const {
    return lower.empty() ? "" : Text(lower) + " to " + Text(upper);
}

}  // namespace tarn
