#include "python/src/ColumnFormat.h"

#include <array>
#include <charconv>
#include <utility>

#include "host/InputError.h"

namespace tarn {

namespace {

using enum ValueLayout;

constexpr std::array<std::pair<std::string_view, ValueLayout>, 16> kLayouts{{
    {"n", kNull},
    {"b", kBit},
    {"c", kInt8},
    {"C", kUInt8},
    {"s", kInt16},
    {"S", kUInt16},
    {"i", kInt32},
    {"I", kUInt32},
    {"l", kInt64},
    {"L", kUInt64},
    {"e", kHalf},
    {"f", kFloat},
    {"g", kDouble},
    {"u", kText},
    {"U", kLargeText},
    {"vu", kTextView},
}};

// By how a format begins; of two that fit the one that stands first is meant.
constexpr std::array<std::pair<std::string_view, std::string_view>, 14> kRefused{{
    {"td", "dates"},
    {"tt", "times of day"},
    {"ts", "dates with times"},
    {"tD", "durations"},
    {"ti", "intervals of time"},
    {"+s", "structs"},
    {"+m", "maps"},
    {"+u", "unions"},
    {"+r", "run-end encoded values"},
    {"+", "lists"},
    {"z", "bytes"},
    {"Z", "bytes"},
    {"vz", "bytes"},
    {"w:", "bytes"},
}};

struct DecimalKind {
    int bits;
    int mostDigits;
};
constexpr std::array<DecimalKind, 4> kDecimals{{{32, 9}, {64, 18}, {128, 38}, {256, 76}}};

/// Two or three whole numbers with commas between them. The third is left as it is where there are two.
bool ReadDecimalNumbers(std::string_view text, std::array<int, 3>& numbers) {
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (std::size_t i = 0; i < numbers.size(); ++i) {
        const auto [rest, error] = std::from_chars(at, end, numbers[i]);
        if (error != std::errc{}) return false;
        if (rest == end) return i > 0;
        if (*rest != ',') return false;
        at = rest + 1;
    }
    return false;
}

/// "10,2" or "10,2,256": digits, those behind the point, and the width in bits, 128 if it isn't told.
bool ReadDecimalFormat(std::string_view text, ColumnFormat& format) {
    constexpr int kBitsOfByte = 8;
    constexpr int kMostScale = 1000;  // with so many, up or down, any number of 76 digits is 0 or infinite as a double
    std::array<int, 3> numbers{0, 0, 128};
    if (!ReadDecimalNumbers(text, numbers)) return false;
    const auto [digits, scale, bits] = numbers;
    for (const DecimalKind& kind : kDecimals) {
        if (kind.bits != bits) continue;
        format.layout = kDecimal;
        format.scale = scale;
        format.decimalWidth = bits / kBitsOfByte;
        return digits >= 1 && digits <= kind.mostDigits && scale >= -kMostScale && scale <= kMostScale;
    }
    return false;
}

}  // namespace

FieldType ColumnFormat::Type() const {
    switch (layout) {
        case kBit:
            return FieldType::kBoolean;
        case kText:
        case kLargeText:
        case kTextView:
            return FieldType::kString;
        default:
            return FieldType::kNumber;
    }
}

bool ColumnFormat::IsWholeNumber() const {
    return layout >= kInt8 && layout <= kUInt64;
}

ColumnFormat ReadColumnFormat(std::string_view format) {
    ColumnFormat read;
    for (const auto& [text, layout] : kLayouts) {
        if (format != text) continue;
        read.layout = layout;
        return read;
    }
    if (format.starts_with("d:") && ReadDecimalFormat(format.substr(2), read)) return read;
    for (const auto& [text, what] : kRefused) {
        if (!format.starts_with(text)) continue;
        read.refused = what;
        return read;
    }
    read.refused = "values in the unknown format " + Quoted(format);
    return read;
}

}  // namespace tarn
