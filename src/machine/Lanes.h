#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

/// Doubles that are compared several at a time. Compilers don't make that of a loop by themselves, since a comparison
/// of what is no number may trap; with these types it is said, and the same code is made for any processor.
///
/// This header includes nothing of the project and is open to all floors.

inline constexpr std::size_t kLanes = 2;
using DoubleLanes = double __attribute__((vector_size(kLanes * sizeof(double))));
/// Whole numbers of the same width. A comparison gives -1 where it holds and 0 where not.
using WholeLanes = std::int64_t __attribute__((vector_size(kLanes * sizeof(std::int64_t))));

/// The first values of an array; 0 behind its `left` values, where these are fewer than the lanes.
inline DoubleLanes LoadLanes(const double* values, std::size_t left) {
    DoubleLanes lanes{};
    if (left >= kLanes) {
        std::memcpy(&lanes, values, sizeof lanes);
    } else {
        std::memcpy(&lanes, values, left * sizeof(double));
    }
    return lanes;
}

/// Does a job for the places 0, `kLanes`, ... below `count`; it gets a place, and how many are left there, which is all
/// lanes but for the last job.
template <typename Job>
void ForLanes(std::size_t count, Job job) {
    const std::size_t whole = count / kLanes * kLanes;
    for (std::size_t place = 0; place < whole; place += kLanes) job(place, kLanes);
    if (whole < count) job(whole, count - whole);
}

/// Loads and stores as many values as there are lanes.
inline WholeLanes LoadLanes(const std::int64_t* values) {
    WholeLanes lanes;
    std::memcpy(&lanes, values, sizeof lanes);
    return lanes;
}
inline void StoreLanes(WholeLanes lanes, std::int64_t* values) {
    std::memcpy(values, &lanes, sizeof lanes);
}
inline void StoreLanes(DoubleLanes lanes, double* values) {
    std::memcpy(values, &lanes, sizeof lanes);
}

/// The one value or the other, each in its lane; `condition` comes from a comparison.
inline DoubleLanes SelectLanes(WholeLanes condition, DoubleLanes one, DoubleLanes other) {
    return reinterpret_cast<DoubleLanes>((reinterpret_cast<WholeLanes>(one) & condition) |
                                         (reinterpret_cast<WholeLanes>(other) & ~condition));
}

inline DoubleLanes AbsoluteLanes(DoubleLanes lanes) {
    constexpr std::int64_t kAllButSign = INT64_MAX;
    return reinterpret_cast<DoubleLanes>(reinterpret_cast<WholeLanes>(lanes) & kAllButSign);
}

inline std::int64_t SumOfLanes(WholeLanes lanes) {
    std::int64_t sum = 0;
    for (std::size_t lane = 0; lane < kLanes; ++lane) sum += lanes[lane];
    return sum;
}
