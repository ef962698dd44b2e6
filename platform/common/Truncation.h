#pragma once

#include <cstdint>
#include <limits>

/// Truncates towards zero to 32 bits. NaN and anything beyond 32 bits give the smallest integer, which is what the
/// processor's own conversion answers for them; in C++ that conversion would be undefined.
inline std::int32_t TruncateToInt32(double value) {
    constexpr double kBound = 2147483648.0;
    if (value > -kBound - 1 && value < kBound) return static_cast<std::int32_t>(value);
    return std::numeric_limits<std::int32_t>::min();
}
