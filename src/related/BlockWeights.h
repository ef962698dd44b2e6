#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>

/// Sums of the weights of some records, made in 32 bits where these do, which takes half the time of wider ones.
namespace BlockWeights {

/// Records that are taken at a time, so that what is known of them stays at hand.
inline constexpr std::size_t kRows = 1024;

/// Whether the sum of the weights, each at most `factor` times, fits into 32 bits. It says no now and then where it
/// would just fit, and for weights below 0, which are impossible.
inline bool AreNarrow(const std::int32_t* weights, std::size_t count, double factor) {
    std::uint32_t bits = 0;
    for (std::size_t i = 0; i < count; ++i) bits |= static_cast<std::uint32_t>(weights[i]);
    return static_cast<double>(bits) * static_cast<double>(count) * factor <= std::numeric_limits<std::int32_t>::max();
}

/// The weight of the records whose mask is -1; the mask of the others is 0.
template <typename Sum>
std::int64_t Within(const std::int32_t* weights, const std::int32_t* masks, std::size_t count) {
    Sum sum = 0;
    for (std::size_t i = 0; i < count; ++i) sum += static_cast<Sum>(weights[i]) & static_cast<Sum>(masks[i]);
    return sum;
}
inline std::int64_t Within(bool areNarrow, const std::int32_t* weights, const std::int32_t* masks, std::size_t count) {
    return areNarrow ? Within<std::int32_t>(weights, masks, count) : Within<std::int64_t>(weights, masks, count);
}

}  // namespace BlockWeights
