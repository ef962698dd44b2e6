#include "runtime/common/DecimalNumber.h"

#include <locale.h>
#include <stdlib.h>

#include <charconv>
#include <cmath>
#include <string>
#include <system_error>

#include "runtime/common/PlainDecimal.h"

namespace {

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

// Zero or an infinity for a number out of range; from_chars does not say on which side it is. The decimal point is not
// to depend on the locale of the process.
double BeyondRange(std::string_view text) {
    static const locale_t plainLocale = newlocale(LC_ALL_MASK, "C", nullptr);
    return strtod_l(std::string(text).c_str(), nullptr, plainLocale);
}

bool ParseAnyDecimal(std::string_view text, double& value) {
    const bool hasPlus = text.starts_with('+');
    if (hasPlus) text.remove_prefix(1);
    const std::string_view magnitude = text.substr(!hasPlus && text.starts_with('-') ? 1 : 0);
    if (magnitude.empty() || !(IsDigit(magnitude.front()) || magnitude.front() == '.')) return false;

    double number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (end != text.data() + text.size()) return false;
    if (error != std::errc{}) number = BeyondRange(text);
    if (!std::isfinite(number)) return false;
    value = number;
    return true;
}

}  // namespace

bool ParseDecimal(std::string_view text, double& value) {
    const char* const last = text.data() + text.size();
    double plain = 0;
    if (plain_decimal::Read(text.data(), last, plain) != last || text.empty()) return ParseAnyDecimal(text, value);
    value = plain;
    return true;
}

std::optional<double> ParseDecimal(std::string_view text) {
    double value = 0;
    return ParseDecimal(text, value) ? std::optional(value) : std::nullopt;
}
