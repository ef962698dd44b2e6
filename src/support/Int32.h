#pragma once

#include <cstdint>

/// 32-bit arithmetic that wraps around. Counters and some products are 32 bits wide by definition; results depend on
/// what the width does to them, so they wrap here, in unsigned arithmetic, and nowhere by a signed overflow.

inline std::int32_t Add32(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) + static_cast<std::uint32_t>(b));
}

inline std::int32_t Subtract32(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}

inline std::int32_t Multiply32(std::int32_t a, std::int32_t b) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(a) * static_cast<std::uint32_t>(b));
}

/// What a counter of 32 bits would hold that was added up to this sum.
inline std::int32_t Wrap32(std::int64_t sum) {
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(sum));
}
