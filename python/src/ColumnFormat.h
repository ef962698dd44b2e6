#pragma once

#include <string>
#include <string_view>

#include "host/table/FieldType.h"

namespace tarn {

/// How the values of a column lie in memory.
enum class ValueLayout {
    kNull,  ///< nothing: all are missing
    kBit,
    kInt8,
    kUInt8,
    kInt16,
    kUInt16,
    kInt32,
    kUInt32,
    kInt64,
    kUInt64,
    kHalf,
    kFloat,
    kDouble,
    kDecimal,
    kText,       ///< offsets of 32 bits
    kLargeText,  ///< offsets of 64 bits
    kTextView
};

/// What a format of the Arrow C interface says of the values of a column.
struct ColumnFormat {
    ValueLayout layout = ValueLayout::kNull;
    int scale = 0;         ///< of a decimal, the digits behind its point
    int decimalWidth = 0;  ///< of a decimal, in bytes
    /// What the column holds where it can't be tested: "dates". Else "".
    std::string refused;

    FieldType Type() const;
    /// Whether its values can be codes of a dictionary.
    bool IsWholeNumber() const;
};

/// Reads a format as the interface writes it: "g", "d:10,2", "tdD".
ColumnFormat ReadColumnFormat(std::string_view format);

}  // namespace tarn
