#include "runtime/common/DecimalText.h"

#include <algorithm>
#include <array>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <cstring>

namespace {

__extension__ using Wide = unsigned __int128;

constexpr int kDigits = 15;
constexpr std::uint64_t kSmallestWith15Digits = 100'000'000'000'000;
constexpr std::uint64_t kSmallestWith16Digits = 10 * kSmallestWith15Digits;

// From here on, and below the other one, printf writes an exponent.
constexpr int kFirstWithExponent = kDigits;
constexpr int kLastWithoutExponent = -4;

// 10^power as fraction * 2^exponent, with the first bit of the fraction set; rounded down.
struct PowerOfTen {
    std::uint64_t fraction = 0;
    int exponent = 0;
};

// The numbers from 1e-49 to 1e44, which are nearly all that a document holds.
constexpr int kLowestPower = -30;
constexpr int kHighestPower = 64;
constexpr int kHighestExactPower = 27;  // 5^27 is the last one that fits into 64 bits

// Worked in 128 bits. A step loses less than 2^-122 of its number, so that after all of them the fraction is below the
// true one by less than 2.
constexpr auto kPowersOfTen = [] {
    std::array<PowerOfTen, kHighestPower - kLowestPower + 1> powers{};
    const auto keep = [&](int power, Wide fraction, int exponent) {
        powers[static_cast<std::size_t>(power - kLowestPower)] = {static_cast<std::uint64_t>(fraction >> 64),
                                                                  exponent + 64};
    };
    constexpr Wide kFirstBit = Wide{1} << 127;
    Wide fraction = kFirstBit;
    int exponent = -127;
    for (int power = 0; power <= kHighestPower; ++power) {
        keep(power, fraction, exponent);
        fraction = (fraction >> 1) + (fraction >> 3);
        exponent += 4;
        for (; fraction < kFirstBit; --exponent) fraction <<= 1;
    }
    fraction = kFirstBit;
    exponent = -127;
    for (int power = 0; power >= kLowestPower; --power) {
        keep(power, fraction, exponent);
        fraction /= 10;
        for (; fraction < kFirstBit; --exponent) fraction <<= 1;
    }
    return powers;
}();

// A number above 0 as its first 15 digits, correctly rounded, and the decimal place of the first of them.
struct Decimal {
    std::uint64_t digits;
    int place;
};

// False where the number is out of the table's range, or where 64 bits of the power don't decide the rounding.
bool RoundTo15Digits(double value, Decimal& decimal) {
    constexpr int kFractionBits = 52;
    const auto bits = std::bit_cast<std::uint64_t>(value);
    const int biased = static_cast<int>(bits >> kFractionBits);
    if (biased == 0) return false;  // a subnormal
    // value = significand * 2^exponent, with the first bit of the significand set
    const std::uint64_t significand = (std::uint64_t{1} << 63) | (bits << (63 - kFractionBits));
    const int exponent = biased - 1023 - 63;

    // The logarithm of the power of two below the value: that of the value, or one less.
    int place = static_cast<int>((std::int64_t{exponent + 63} * 315653) >> 20);
    for (;; ++place) {
        const int power = kDigits - 1 - place;
        if (power < kLowestPower || power > kHighestPower) return false;
        const PowerOfTen& ofTen = kPowersOfTen[static_cast<std::size_t>(power - kLowestPower)];
        const Wide product = Wide{significand} * ofTen.fraction;
        const int shift = -(exponent + ofTen.exponent);
        const auto whole = static_cast<std::uint64_t>(product >> shift);
        if (whole >= kSmallestWith16Digits) continue;

        const Wide rest = product & ((Wide{1} << shift) - 1);
        const Wide half = Wide{1} << (shift - 1);
        const bool isExact = power >= 0 && power <= kHighestExactPower;
        const Wide error = isExact ? Wide{0} : Wide{significand} << 1;
        if (rest <= half && rest + error >= half) {
            if (!isExact) return false;
            // A tie, which goes to the even digit.
            decimal = {whole + (rest == half ? whole & 1 : 0), place};
        } else {
            decimal = {whole + (rest > half ? 1 : 0), place};
        }
        break;
    }
    if (decimal.digits == kSmallestWith16Digits) decimal = {kSmallestWith15Digits, decimal.place + 1};
    return true;
}

// The eight digits of a number, a byte each and the first in the lowest one: fours, then pairs, then digits.
std::uint64_t SpreadDigits(std::uint64_t number) {
    std::uint64_t bytes = number / 10000 | (number % 10000) << 32;
    const std::uint64_t hundreds = (bytes * 5243 >> 19) & 0x0000007f0000007f;
    bytes = hundreds + ((bytes - 100 * hundreds) << 16);
    const std::uint64_t tens = (bytes * 103 >> 10) & 0x000f000f000f000f;
    return tens + ((bytes - 10 * tens) << 8);
}

void StoreDigits(std::uint64_t bytes, char* to) {
    bytes |= 0x3030303030303030;
    if constexpr (std::endian::native == std::endian::big) bytes = __builtin_bswap64(bytes);
    std::memcpy(to, &bytes, sizeof bytes);
}

int TrailingZeros(std::uint64_t bytes) {
    return std::countl_zero(bytes) / 8;
}

char* WriteExponent(int place, char* to) {
    *to++ = 'e';
    *to++ = place < 0 ? '-' : '+';
    const int magnitude = place < 0 ? -place : place;
    if (magnitude < 10) *to++ = '0';
    return std::to_chars(to, to + 3, magnitude).ptr;
}

char* Write(const Decimal& decimal, char* to) {
    constexpr std::uint64_t kEightDigits = 100'000'000;
    constexpr std::size_t kAllDigits = 16;  // with one more, so that copies are of a fixed size
    const std::uint64_t first = SpreadDigits(decimal.digits / kEightDigits);
    const std::uint64_t last = SpreadDigits(decimal.digits % kEightDigits);
    const int count = last != 0 ? kDigits - TrailingZeros(last) : kDigits - 8 - TrailingZeros(first);
    char buffer[3 * kAllDigits];  // copies begin at any digit
    StoreDigits(first, buffer);   // a zero, then the first seven
    StoreDigits(last, buffer + 8);
    const char* const digits = buffer + 1;

    const int place = decimal.place;
    if (place >= 0 && place < kFirstWithExponent) {
        const int whole = place + 1;
        std::memcpy(to, digits, kAllDigits);
        if (count <= whole) return to + whole;
        to[whole] = '.';
        std::memcpy(to + whole + 1, digits + whole, kAllDigits);
        return to + count + 1;
    }
    if (place < 0 && place >= kLastWithoutExponent) {
        std::copy_n("0.000", 5, to);
        to += 1 - place;
        std::memcpy(to, digits, kAllDigits);
        return to + count;
    }
    *to++ = digits[0];
    if (count > 1) {
        *to++ = '.';
        std::memcpy(to, digits + 1, kAllDigits);
        to += count - 1;
    }
    return WriteExponent(place, to);
}

}  // namespace

char* WriteDecimal(double value, char* to) {
    if (std::isnan(value)) {
        std::copy_n("nan", 3, to);
        return to + 3;
    }
    if (std::signbit(value)) *to++ = '-';
    const double magnitude = std::fabs(value);
    if (std::isinf(magnitude)) {
        std::copy_n("inf", 3, to);
        return to + 3;
    }
    if (magnitude < static_cast<double>(kSmallestWith16Digits)) {
        const auto whole = static_cast<std::int64_t>(magnitude);
        if (static_cast<double>(whole) == magnitude) return std::to_chars(to, to + kDigits + 1, whole).ptr;
    }
    Decimal decimal{};
    if (RoundTo15Digits(magnitude, decimal)) return Write(decimal, to);
    return std::to_chars(to, to + kDecimalTextRoom - 1, magnitude, std::chars_format::general, kDigits).ptr;
}
