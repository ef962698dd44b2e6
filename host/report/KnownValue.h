#pragma once

#include <string>
#include <string_view>

#include "host/report/Number.h"
#include "host/report/ResultDocument.h"

namespace tarn {

/// What the engine shows for a number that was never computed: the lowest one, rounded beyond what can be read back.
inline constexpr std::string_view kNeverComputed = "-1.79769313486232e+308";

/// A value as a reader may have it: "" for what is missing or was never computed.
inline Number KnownValue(const std::string& value) {
    return value == kMissingText || value == kNeverComputed ? Number() : Number(value);
}

inline Number KnownRow(const ResultTable& table, std::string_view row) {
    return KnownValue(table.Value(row));
}

}  // namespace tarn
