#pragma once

namespace tarn {

/// What the cells of a column are. Dates are days since 1970-01-01, times seconds since midnight, date-times seconds
/// since 1970-01-01T00:00Z, booleans 1 and 0.
enum class FieldType { kNumber, kInteger, kString, kBoolean, kDate, kTime, kDateTime };

/// How the values of a column are to be taken.
enum class FieldLevel { kContinuous, kNominal, kOrdinal };

}  // namespace tarn
