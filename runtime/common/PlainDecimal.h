#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#if defined(__SSE2__)
#include <emmintrin.h>
#endif

/// The usual spelling of a decimal number, digits with an optional minus and an optional point, read where it stands:
/// one walk finds its value and its end. Header only, for loops over millions of cells; whoever has a text as a whole
/// asks `ParseDecimal`, which knows every spelling.
namespace plain_decimal {

__extension__ using Wide = unsigned __int128;

/// As many decimal digits always fit into 64 bits.
inline constexpr std::size_t kMaxDigits = 19;
/// A double holds all whole numbers of so many digits, all below 2^53, and so many powers of ten.
inline constexpr std::size_t kMaxExactDigits = 15;
inline constexpr std::uint64_t kExactBelow = std::uint64_t{1} << 53;
inline constexpr std::size_t kMaxExactPower = 22;
/// The largest power of five in 64 bits.
inline constexpr std::size_t kMaxPower = 27;

/// 10^power, and the reciprocal of 5^power as a fraction of 64 bits, rounded down, below the power of two 2^scale.
struct Power {
    double ofTen;
    std::uint64_t reciprocal;
    int scale;
};

inline constexpr auto kPowers = [] {
    std::array<Power, kMaxPower + 1> powers{};
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

inline double PowerOfTwo(int exponent) {
    return std::bit_cast<double>(static_cast<std::uint64_t>(1023 + exponent) << 52);
}

/// number / 10^power for a number above 0, correctly rounded; false where 64 bits don't decide the rounding.
///
/// The product with the reciprocal, cut to 63 bits, is below the true quotient by less than 2. If both ends of that
/// interval round to one double, it is the nearest to the quotient. An upper end of 2^63 comes out negative and decides
/// nothing.
inline bool DivideByPowerOfTen(std::uint64_t number, std::size_t power, double& quotient) {
    const auto& [ofTen, reciprocal, scale] = kPowers[power];
    const int shift = std::countl_zero(number);
    const auto product = static_cast<std::int64_t>((Wide{number << shift} * reciprocal) >> 65);
    const auto lowest = static_cast<double>(product);
    quotient = lowest * PowerOfTwo(scale - shift - 62 - static_cast<int>(power));
    return lowest == static_cast<double>(static_cast<std::int64_t>(static_cast<std::uint64_t>(product) + 2));
}

/// The first byte is the lowest.
inline std::uint64_t LoadEightBytes(const char* text) {
    std::uint64_t bytes = 0;
    std::memcpy(&bytes, text, sizeof bytes);
    return std::endian::native == std::endian::little ? bytes : __builtin_bswap64(bytes);
}

/// How many of eight bytes are digits before the first that is none.
inline std::size_t DigitsInFront(std::uint64_t bytes) {
    // A digit becomes its value, and the sum with 0x76 reaches 0x80 for all others. It may carry into the bytes behind
    // the first one that is no digit, which don't count.
    const std::uint64_t values = bytes ^ 0x3030303030303030;
    const std::uint64_t others = ((values + 0x7676767676767676) | values) & 0x8080808080808080;
    return static_cast<std::size_t>(std::countr_zero(others)) / 8;
}

/// The number of eight digits, the first in the lowest byte: neighbours are joined to pairs, then fours, then eight.
inline std::uint64_t JoinDigits(std::uint64_t bytes) {
    bytes = (bytes & 0x0f0f0f0f0f0f0f0f) * (1 + (10 << 8)) >> 8;
    bytes = (bytes & 0x00ff00ff00ff00ff) * (1 + (100 << 16)) >> 16;
    return (bytes & 0x0000ffff0000ffff) * (1 + (std::uint64_t{10000} << 32)) >> 32;
}

/// Appends the digits from `text` on to `number`, which may overflow, and returns the end of them.
inline const char* TakeDigits(const char* text, const char* last, std::uint64_t& number) {
    constexpr std::uint64_t kTens[] = {1, 10, 100, 1000, 10000, 100000, 1000000, 10000000};
    while (last - text >= 8) {
        const std::uint64_t bytes = LoadEightBytes(text);
        const std::size_t count = DigitsInFront(bytes);
        if (count == 8) {
            number = 100000000 * number + JoinDigits(bytes);
            text += 8;
            continue;
        }
        // Zeros in front fill up the digits to eight. Shifted twice, since there may be none at all.
        number = kTens[count] * number + JoinDigits(bytes << 8 << (56 - 8 * count));
        return text + count;
    }
    while (text != last && *text >= '0' && *text <= '9') {
        number = 10 * number + static_cast<std::uint64_t>(*text++ - '0');
    }
    return text;
}

/// Reads the number at `text` and returns its end, which is in front of the first byte that doesn't belong to it; null
/// where there is none, or one whose digits don't fit into 64 bits or whose rounding they don't decide. `point` stands
/// in front of a fraction.
[[gnu::always_inline]] inline const char* Read(const char* text, const char* last, double& value, char point = '.') {
    const bool isNegative = text != last && *text == '-';
    const char* const digits = text + (isNegative ? 1 : 0);
    std::uint64_t number = 0;
    // One digit in front of the point is told by a branch that is nearly always foreseen, so that the digits behind it
    // are looked at before it is known where they begin.
    const char* end = digits + 1;
    if (last - digits >= 2 && digits[1] == point && *digits >= '0' && *digits <= '9') {
        number = static_cast<std::uint64_t>(*digits - '0');
    } else {
        end = TakeDigits(digits, last, number);
    }
    std::size_t digitCount = static_cast<std::size_t>(end - digits);
    std::size_t power = 0;
    if (end != last && *end == point) {
        const char* const fraction = end + 1;
        end = TakeDigits(fraction, last, number);
        power = static_cast<std::size_t>(end - fraction);
        digitCount += power;
    }
    if (digitCount == 0) return nullptr;
    if (digitCount > kMaxDigits) {
        // Zeros in front are no digits that count.
        for (const char* zero = digits; zero != end && (*zero == '0' || *zero == point); ++zero) {
            if (*zero == '0') --digitCount;
        }
        if (digitCount > kMaxDigits || power > kMaxPower) return nullptr;
    }
    double magnitude = 0;
    const bool isDecided = digitCount > kMaxExactDigits && number != 0 && DivideByPowerOfTen(number, power, magnitude);
    if (!isDecided) {
        // A quotient of two numbers that doubles hold exactly is correctly rounded (Clinger 1990, How to read floating
        // point numbers accurately).
        if (number >= kExactBelow || power > kMaxExactPower) return nullptr;
        magnitude = static_cast<double>(number) / kPowers[power].ofTen;
    }
    // Without a branch, since nobody can foretell the sign.
    value =
        std::bit_cast<double>(std::bit_cast<std::uint64_t>(magnitude) | static_cast<std::uint64_t>(isNegative) << 63);
    return end;
}

/// As many bytes from the front of a number on `SkipNumbers` looks at.
inline constexpr std::size_t kSkipWidth = 64;

/// What numbers are made of among some bytes: a bit for each byte, the first in the lowest one.
struct NumberCharacters {
    std::uint64_t digits = 0;
    std::uint64_t points = 0;
    std::uint64_t signs = 0;
};

inline NumberCharacters FindNumberCharacters(const char* text, char point) {
    NumberCharacters found;
#if defined(__SSE2__)
    for (unsigned at = 0; at < kSkipWidth; at += sizeof(__m128i)) {
        const auto bitsOf = [at](__m128i bytes) {
            return static_cast<std::uint64_t>(static_cast<unsigned>(_mm_movemask_epi8(bytes))) << at;
        };
        const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(text + at));
        const __m128i values = _mm_sub_epi8(bytes, _mm_set1_epi8('0'));  // above 9 for what is no digit
        found.digits |= bitsOf(_mm_cmpeq_epi8(_mm_min_epu8(values, _mm_set1_epi8(9)), values));
        found.points |= bitsOf(_mm_cmpeq_epi8(bytes, _mm_set1_epi8(point)));
        found.signs |= bitsOf(_mm_cmpeq_epi8(bytes, _mm_set1_epi8('-')));
    }
#else
    for (std::size_t at = 0; at < kSkipWidth; ++at) {
        found.digits |= static_cast<std::uint64_t>(text[at] >= '0' && text[at] <= '9') << at;
        found.points |= static_cast<std::uint64_t>(text[at] == point) << at;
        found.signs |= static_cast<std::uint64_t>(text[at] == '-') << at;
    }
#endif
    return found;
}

/// Goes over `count` numbers, one at least, with `delimiter` behind each but the last, and returns the end of the last
/// one; null where one of them is none in the usual spelling, or longer than nearly all are. Several are looked at
/// together, so that it takes less time than to read them.
inline const char* SkipNumbers(const char* text, std::size_t count, char delimiter = ',', char point = '.') {
    for (;;) {
        auto [digits, points, signs] = FindNumberCharacters(text, point);
        for (std::size_t left = kSkipWidth; left > 0;) {
            const auto length = static_cast<std::size_t>(std::countr_one(digits | points | (signs & 1)));
            if (length >= left) {
                if (left == kSkipWidth) return nullptr;
                break;  // its end is behind the bytes that were looked at
            }
            const std::uint64_t ofNumber = (std::uint64_t{1} << length) - 1;
            const bool hasTwoPoints = (points & ofNumber & ((points & ofNumber) - 1)) != 0;
            if (hasTwoPoints || (digits & ofNumber) == 0) return nullptr;
            text += length;
            if (--count == 0) return text;
            if (*text != delimiter) return nullptr;
            ++text;
            left -= length + 1;
            digits = digits >> length >> 1;
            points = points >> length >> 1;
            signs = signs >> length >> 1;
        }
    }
}

}  // namespace plain_decimal
