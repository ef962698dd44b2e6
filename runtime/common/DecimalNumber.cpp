#include "runtime/common/DecimalNumber.h"

#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <system_error>

namespace {

__extension__ using Wide = unsigned __int128;

// As many decimal digits always fit into 64 bits.
constexpr std::ptrdiff_t kMaxDigits = 19;
// Up to here a double holds all whole numbers, and 10^0 .. 10^19 among the larger ones.
constexpr std::uint64_t kMaxExactInteger = std::uint64_t{1} << 53;

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

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

double PowerOfTwo(int exponent) { return std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52); }

// number / 10^power for a number above 0, correctly rounded; nothing where 64 bits don't decide the rounding.
//
// The product with the reciprocal, cut to 63 bits, is below the true quotient by less than 2. If both ends of that
// interval round to one double, it is the nearest to the quotient.
std::optional<double> DivideByPowerOfTen(std::uint64_t number, std::size_t power) {
    const auto& [ofTen, reciprocal, scale] = kPowers[power];
    const int shift = std::countl_zero(number);
    const auto product = static_cast<std::int64_t>((Wide{number << shift} * reciprocal) >> 65);
    const auto lowest = static_cast<double>(product);
    if (lowest != static_cast<double>(product + 2)) return std::nullopt;
    return lowest * PowerOfTwo(scale - shift - 62 - static_cast<int>(power));
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

// Reads the usual spellings, digits with an optional minus and an optional point, as long as their digits fit into 64
// bits; nothing for all others. A quotient of two numbers that doubles hold exactly is correctly rounded (Clinger
// 1990, How to read floating point numbers accurately).
std::optional<double> ParsePlainDecimal(std::string_view text) {
    const char* position = text.data();
    const char* const last = position + text.size();
    const bool isNegative = position != last && *position == '-';
    if (isNegative) ++position;

    std::uint64_t number = 0;
    const auto readDigits = [&] {
        const char* const first = position;
        while (last - position >= 8) {
            const std::uint64_t bytes = LoadEightBytes(position);
            if (!AreDigits(bytes)) break;
            number = 100000000 * number + JoinDigits(bytes);
            position += 8;
        }
        for (; position != last && IsDigit(*position); ++position) {
            number = 10 * number + static_cast<std::uint64_t>(*position - '0');
        }
        return position - first;
    };
    const std::ptrdiff_t wholeCount = readDigits();
    std::ptrdiff_t fractionCount = 0;
    if (position != last && *position == '.') {
        ++position;
        fractionCount = readDigits();
    }
    const std::ptrdiff_t count = wholeCount + fractionCount;
    if (position != last || count == 0 || count > kMaxDigits) return std::nullopt;

    const auto power = static_cast<std::size_t>(fractionCount);
    const std::optional<double> value = number <= kMaxExactInteger
                                            ? static_cast<double>(number) / kPowers[power].ofTen
                                            : DivideByPowerOfTen(number, power);
    return value && isNegative ? -*value : value;
}

std::optional<double> ParseAnyDecimal(std::string_view text) {
    const char* first = text.data();
    const char* const last = first + text.size();
    const bool hasPlus = first != last && *first == '+';
    if (hasPlus) ++first;
    const char* digits = first;
    if (!hasPlus && digits != last && *digits == '-') ++digits;
    if (digits == last || !(IsDigit(*digits) || *digits == '.')) return std::nullopt;

    double value = 0;
    const auto [end, error] = std::from_chars(first, last, value);
    if (end != last) return std::nullopt;
    if (error == std::errc{}) return value;
    // Out of range, which from_chars does not divide into too large and too small.
    const double nearest = std::strtod(std::string(first, last).c_str(), nullptr);
    return std::isfinite(nearest) ? std::optional(nearest) : std::nullopt;
}

}  // namespace

std::optional<double> ParseDecimal(std::string_view text) {
    if (const std::optional<double> plain = ParsePlainDecimal(text)) return plain;
    return ParseAnyDecimal(text);
}
