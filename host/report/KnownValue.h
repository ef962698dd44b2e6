#pragma once

#include <string>
#include <string_view>

#include "host/report/Number.h"
#include "host/report/ResultDocument.h"
#include "vocabulary/MissingValues.h"

namespace tarn {

/// A value as a reader may have it: "" for what is missing or was never computed.
inline Number KnownValue(const std::string& value) {
    return value == kMissingText || value == MissingValue::kNumberText ? Number() : Number(value);
}

inline Number KnownRow(const ResultTable& table, std::string_view row) {
    return KnownValue(table.Value(row));
}

}  // namespace tarn
