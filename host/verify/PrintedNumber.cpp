#include "host/verify/PrintedNumber.h"

#include <algorithm>
#include <cmath>
#include <cstdlib>

#include "host/InputError.h"

namespace tarn {

namespace {

constexpr const char* kBelow = "< ";
/// Significant digits of a number of a document.
constexpr int kOwnDigits = 15;
/// Binary numbers don't hold decimal ones exactly; this much of one is no difference.
constexpr long double kRepresentation = 1e-17L;

bool IsNumber(const std::string& text) {
    // A sign, digits with at most one point, an exponent: what strtold takes beyond that ("inf", "0x1") is no print.
    return !text.empty() && text.find_first_not_of("+-.0123456789eE") == std::string::npos;
}

/// The exponent of ten of the first significant digit.
int Magnitude(long double value) {
    return value == 0 ? 0 : static_cast<int>(std::floor(std::log10(std::fabs(value))));
}

bool IsWithinHalfAUnit(long double ours, long double printed, int decimals, long double allowance) {
    const long double unit = std::pow(10.0L, static_cast<long double>(-decimals));
    const long double slack = kRepresentation * std::max(std::fabs(ours), std::fabs(printed)) + allowance;
    return std::fabs(ours - printed) <= unit / 2 + slack;
}

}  // namespace

PrintedNumber ReadPrintedNumber(const std::string& text, const std::string& place) {
    PrintedNumber printed;
    printed.text = text;
    printed.isUpperBound = text.starts_with(kBelow);
    const std::string number = printed.isUpperBound ? text.substr(std::string_view(kBelow).size()) : text;
    char* end = nullptr;
    printed.value = std::strtold(number.c_str(), &end);
    if (!IsNumber(number) || end != number.c_str() + number.size()) {
        throw InputError(place + ": " + Quoted(text) + "; expected a number as it is printed, like \"0.0390\"");
    }
    const std::size_t mark = std::min(number.find_first_of("eE"), number.size());
    const std::string mantissa = number.substr(0, mark);
    const int exponent = mark < number.size() ? std::atoi(number.c_str() + mark + 1) : 0;
    const std::size_t point = mantissa.find('.');
    printed.decimals = (point == std::string::npos ? 0 : static_cast<int>(mantissa.size() - point - 1)) - exponent;
    const std::size_t first = mantissa.find_first_of("123456789");
    if (first != std::string::npos) {
        printed.digits = static_cast<int>(std::count_if(mantissa.begin() + static_cast<std::ptrdiff_t>(first),
                                                        mantissa.end(), [](char c) { return c >= '0' && c <= '9'; }));
    }
    printed.digits = std::max(printed.digits, 1);
    return printed;
}

Agreement Compare(const PrintedNumber& printed, const Number& ours, double allowance) {
    Agreement agreement;
    // The text keeps more than a double would.
    const long double value = ours.empty() ? std::nanl("") : std::strtold(ours.text.c_str(), nullptr);
    if (std::isnan(value)) return agreement;
    if (printed.isUpperBound) {
        agreement.agrees = value < printed.value + allowance;
        agreement.digits = agreement.agrees ? printed.digits : 0;
        return agreement;
    }
    const int decimals = std::min(printed.decimals, kOwnDigits - 1 - Magnitude(printed.value));
    const int digits = printed.digits - (printed.decimals - decimals);
    agreement.agrees = IsWithinHalfAUnit(value, printed.value, decimals, allowance);
    for (agreement.digits = digits; agreement.digits > 0; --agreement.digits) {
        if (IsWithinHalfAUnit(value, printed.value, decimals - (digits - agreement.digits), allowance)) break;
    }
    return agreement;
}

}  // namespace tarn
