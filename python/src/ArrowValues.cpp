#include "python/src/ArrowValues.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <limits>
#include <string>

#include "host/table/CellValue.h"

namespace tarn {

namespace {

constexpr int kWords = 8;  // of 32 bits, in the widest decimal
using Words = std::array<std::uint32_t, kWords>;

/// The magnitude of a whole number in two's complement, lowest word first.
Words MagnitudeOf(const std::uint8_t* bytes, int width, bool isNegative) {
    Words words;
    words.fill(isNegative ? ~std::uint32_t{0} : 0);
    std::memcpy(words.data(), bytes, static_cast<std::size_t>(width));
    if (!isNegative) return words;
    std::uint64_t carry = 1;
    for (std::uint32_t& word : words) {
        carry += static_cast<std::uint32_t>(~word);
        word = static_cast<std::uint32_t>(carry);
        carry >>= 32;
    }
    return words;
}

std::string DigitsOf(Words words) {
    constexpr std::uint64_t kTen = 10;
    std::string digits;
    while (std::ranges::any_of(words, [](std::uint32_t word) { return word != 0; })) {
        std::uint64_t rest = 0;
        for (int i = kWords - 1; i >= 0; --i) {
            rest = rest << 32 | words[static_cast<std::size_t>(i)];
            words[static_cast<std::size_t>(i)] = static_cast<std::uint32_t>(rest / kTen);
            rest %= kTen;
        }
        digits += static_cast<char>('0' + rest);
    }
    std::ranges::reverse(digits);
    return digits.empty() ? "0" : digits;
}

}  // namespace

double HalfNumbers::operator()(std::int64_t at) const {
    constexpr int kFractionBits = 10;
    constexpr int kExponentMask = 0x1f;
    constexpr int kFractionMask = 0x3ff;
    constexpr int kLowestExponent = -24;  // of the last bit of the smallest numbers
    const auto bits = ValueAt<std::uint16_t>(values_, at);
    const int exponent = bits >> kFractionBits & kExponentMask;
    const int fraction = bits & kFractionMask;
    const double sign = (bits >> 15) != 0 ? -1 : 1;
    if (exponent == kExponentMask) return fraction != 0 ? std::nan("") : sign * HUGE_VAL;
    if (exponent == 0) return sign * std::ldexp(fraction, kLowestExponent);
    return sign * std::ldexp(fraction | 1 << kFractionBits, exponent - 1 + kLowestExponent);
}

double DecimalNumbers::operator()(std::int64_t at) const {
    const std::uint8_t* const bytes = bytes_ + at * width_;
    const bool isNegative = (bytes[width_ - 1] & 0x80) != 0;
    const Words words = MagnitudeOf(bytes, width_, isNegative);
    const double sign = isNegative ? -1 : 1;
    // Where the whole number and the power of ten are numbers themselves, their quotient is rounded once.
    static constexpr std::array kPowers{1e0,  1e1,  1e2,  1e3,  1e4,  1e5,  1e6,  1e7,  1e8,  1e9,  1e10, 1e11,
                                        1e12, 1e13, 1e14, 1e15, 1e16, 1e17, 1e18, 1e19, 1e20, 1e21, 1e22};
    constexpr std::uint64_t kExact = std::uint64_t{1} << 53;
    const bool isShort = std::all_of(words.begin() + 2, words.end(), [](std::uint32_t word) { return word == 0; });
    const std::uint64_t low = std::uint64_t{words[1]} << 32 | words[0];
    if (isShort && low <= kExact && scale_ >= 0 && scale_ < std::ssize(kPowers)) {
        return sign * (static_cast<double>(low) / kPowers[static_cast<std::size_t>(scale_)]);
    }
    // The digits of any other are read as those of a text, which is rounded once, too.
    return sign * ParseCell(FieldType::kNumber, DigitsOf(words) + "e" + std::to_string(-scale_)).value_or(HUGE_VAL);
}

std::string_view ViewTexts::operator()(std::int64_t at) const {
    const auto view = ValueAt<TextView>(views_, at);
    const auto size = static_cast<std::size_t>(view.size);
    if (view.size > TextView::kLongestWithin)
        return {static_cast<const char*>(buffers_[view.buffer]) + view.begin, size};
    constexpr auto kViewSize = static_cast<std::int64_t>(sizeof(TextView));
    return {views_ + at * kViewSize + sizeof view.size, size};
}

const double* FiniteDoubles(const ArrowArray& array, std::int64_t first, std::int64_t count) {
    if (array.null_count != 0 && array.buffers[0] != nullptr) return nullptr;
    const double* const values = static_cast<const double*>(array.buffers[1]) + first;
    if (reinterpret_cast<std::uintptr_t>(values) % alignof(double) != 0) return nullptr;
    bool isFinite = true;
    for (std::int64_t i = 0; i < count; ++i) isFinite &= std::abs(values[i]) <= std::numeric_limits<double>::max();
    return isFinite ? values : nullptr;
}

}  // namespace tarn
