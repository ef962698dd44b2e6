#pragma once

#include <limits>
#include <string_view>

/// What stands for a missing value in a record. A host writes it, the reader and the passes look for it, and a result
/// shows it where a number was never computed.
namespace MissingValue {

/// In a continuous field.
inline constexpr double kNumber = -std::numeric_limits<double>::max();
/// In a categorical field, whose values are indices of categories.
inline constexpr double kCategory = -1;
/// The number as a document has it, rounded beyond what can be read back.
inline constexpr std::string_view kNumberText = "-1.79769313486232e+308";

}  // namespace MissingValue
