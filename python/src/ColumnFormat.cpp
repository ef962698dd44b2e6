#include "python/src/ColumnFormat.h"

#include <array>
#include <charconv>
#include <utility>

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
constexpr std::array<std::pair<std::string_view, std::string_view>, 15> kRefused{{
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
    {"", "values of an unknown kind"},
}};

/// "10,2" or "10,2,256": digits, those behind the point, and the width in bits, 128 if it isn't told.
bool ReadDecimalFormat(std::string_view text, ColumnFormat& format) {
    constexpr int kBitsOfByte = 8;
    int numbers[] = {0, 0, 128};
    const char* at = text.data();
    const char* const end = text.data() + text.size();
    for (int& number : numbers) {
        const auto [rest, error] = std::from_chars(at, end, number);
        if (error != std::errc{}) return false;
        at = rest;
        if (at == end) break;
        if (*at++ != ',') return false;
    }
    format.layout = kDecimal;
    format.scale = numbers[1];
    format.decimalWidth = numbers[2] / kBitsOfByte;
    return format.decimalWidth == 4 || format.decimalWidth == 8 || format.decimalWidth == 16 ||
           format.decimalWidth == 32;
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
        break;
    }
    return read;
}

}  // namespace tarn
