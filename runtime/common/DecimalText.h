#pragma once

#include <cstddef>

/// The room that `WriteDecimal` asks for; no text fills it.
inline constexpr std::size_t kDecimalTextRoom = 48;

/// Writes a number with at most 15 significant digits, exactly as printf does by "%.15g" in a locale with a point, and
/// returns the end of the text. A NaN is "nan" whatever its sign, the infinities are "inf" and "-inf". For the millions
/// of numbers of a result document.
char* WriteDecimal(double value, char* to);
