#pragma once

#include <optional>
#include <string_view>

/// Reads a text that is, as a whole, a decimal number with optional sign, fraction and exponent, as the nearest
/// double. Spellings of infinity and NaN, hexadecimal numbers and numbers too large for a double don't count; a number
/// too small for a double is read as the nearest one.
std::optional<double> ParseDecimal(std::string_view text);

/// The same into `value`, which is left as it is where the text is no number. For reading millions of cells.
[[nodiscard]] bool ParseDecimal(std::string_view text, double& value);
