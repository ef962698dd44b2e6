#include "runtime/common/DecimalNumber.h"

#include <locale.h>
#include <stdlib.h>

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>
#include <string>
#include <system_error>

namespace {

__extension__ using Wide = unsigned __int128;

// As many decimal digits always fit into 64 bits.
constexpr std::size_t kMaxDigits = 19;
// A double holds all whole numbers of so many digits, and 10^0 .. 10^19 among the larger ones.
constexpr std::size_t kMaxExactDigits = 15;

// 10^power, and the reciprocal of 5^power as a fraction of 64 bits, rounded down, below the power of two 2^scale.
struct Power {
    double ofTen;
    std::uint64_t reciprocal;
    int scale;
};

constexpr auto kPowers = [] {
    std::array<Power, kMaxDigits + 1> powers{};
    double ofTen = 1;
    std::uint64_t ofFive = 1;
    for (Power& power : powers) {
        const int shift = std::countl_zero(ofFive);
        const auto reciprocal = static_cast<std::uint64_t>(((Wide{1} << 127) - 1) / (ofFive << shift));
        power = {ofTen, reciprocal, shift};
        ofTen *= 10;
        ofFive *= 5;
    }
    return powers;
}();

bool IsDigit(char c) {
    return c >= '0' && c <= '9';
}

double PowerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52);
}

// number / 10^power for a number above 0, correctly rounded; false where 64 bits don't decide the rounding.
//
// The product with the reciprocal, cut to 63 bits, is below the true quotient by less than 2. If both ends of that
// interval round to one double, it is the nearest to the quotient.
bool DivideByPowerOfTen(std::uint64_t number, std::size_t power, double& quotient) {
    const auto& [ofTen, reciprocal, scale] = kPowers[power];
    const int shift = std::countl_zero(number);
    const auto product = static_cast<std::int64_t>((Wide{number << shift} * reciprocal) >> 65);
    const auto lowest = static_cast<double>(product);
    quotient = lowest * PowerOfTwo(scale - shift - 62 - static_cast<int>(power));
    return lowest == static_cast<double>(product + 2);
}

// The first byte is the lowest.
std::uint64_t LoadEightBytes(const char* text) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    return std::endian::native == std::endian::little ? bytes : __builtin_bswap64(bytes);
}

// Whether each of eight bytes is a digit: its upper half is 3, also after adding 6 to it.
bool AreDigits(std::uint64_t bytes) {
    constexpr std::uint64_t kUpperHalves = 0xf0f0f0f0f0f0f0f0;
    constexpr std::uint64_t kThrees = 0x3030303030303030;
    return ((bytes & kUpperHalves) | ((bytes + 0x0606060606060606) & kUpperHalves) >> 4) == (kThrees | kThrees >> 4);
}

// The number of eight digits, the first in the lowest byte: neighbours are joined to pairs, then fours, then eight.
std::uint64_t JoinDigits(std::uint64_t bytes) {
    bytes = (bytes & 0x0f0f0f0f0f0f0f0f) * (1 + (10 << 8)) >> 8;
    bytes = (bytes & 0x00ff00ff00ff00ff) * (1 + (100 << 16)) >> 16;
    return (bytes & 0x0000ffff0000ffff) * (1 + (std::uint64_t{10000} << 32)) >> 32;
}

// Appends the digits at the front of `text` to `number`, which may overflow, and drops them from `text`.
std::size_t TakeDigits(std::string_view& text, std::uint64_t& number) {
    const std::size_t size = text.size();
    while (text.size() >= 8) {
        const std::uint64_t bytes = LoadEightBytes(text.data());
        if (!AreDigits(bytes)) break;
        number = 100000000 * number + JoinDigits(bytes);
        text.remove_prefix(8);
    }
    while (!text.empty() && IsDigit(text.front())) {
        number = 10 * number + static_cast<std::uint64_t>(text.front() - '0');
        text.remove_prefix(1);
    }
    return size - text.size();
}

// Reads the usual spellings, digits with an optional minus and an optional point, as long as their digits fit into 64
// bits; false for all others. A quotient of two numbers that doubles hold exactly is correctly rounded (Clinger 1990,
// How to read floating point numbers accurately).
bool ParsePlainDecimal(std::string_view text, double& value) {
    const bool isNegative = text.starts_with('-');
    if (isNegative) text.remove_prefix(1);
    std::uint64_t number = 0;
    std::size_t digitCount = TakeDigits(text, number);
    std::size_t power = 0;
    if (text.starts_with('.')) {
        text.remove_prefix(1);
        power = TakeDigits(text, number);
        digitCount += power;
    }
    if (!text.empty() || digitCount == 0 || digitCount > kMaxDigits) return false;

    double magnitude = 0;
    if (digitCount <= kMaxExactDigits || number == 0) {
        magnitude = static_cast<double>(number) / kPowers[power].ofTen;
    } else if (!DivideByPowerOfTen(number, power, magnitude)) {
        return false;
    }
    value = isNegative ? -magnitude : magnitude;
    return true;
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
    return ParsePlainDecimal(text, value) || ParseAnyDecimal(text, value);
}

std::optional<double> ParseDecimal(std::string_view text) {
    double value = 0;
    return ParseDecimal(text, value) ? std::optional(value) : std::nullopt;
}
