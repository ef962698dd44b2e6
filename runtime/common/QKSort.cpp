#include "platform/common/QKSort.h"

#include <algorithm>
#include <array>
#include <memory>
#include <utility>
#include <vector>

#include "runtime/common/KeySorts.h"

#if defined(TARN_WITH_HIGHWAY)
#include <hwy/contrib/sort/vqsort.h>
#include <hwy/targets.h>

#include "machine/ThreadOwned.h"
#endif

namespace KeySorts {

#if defined(TARN_WITH_HIGHWAY)

bool HasVectorSort() {
#if defined(__x86_64__)
    // Without these the library falls back to a sort that is slower than ours.
    static const bool has = (hwy::SupportedTargets() & (HWY_AVX2 | HWY_AVX3 | HWY_AVX3_DL)) != 0;
#else
    static const bool has = true;
#endif
    return has;
}

void VectorSort(std::uint64_t* keys, std::size_t count) {
    static const ThreadOwned<hwy::Sorter> sorters;  // each holds a buffer that is worth keeping
    sorters.OfThisThread()(keys, count, hwy::SortAscending());
}

#else

bool HasVectorSort() {
    return false;
}

void VectorSort(std::uint64_t* keys, std::size_t count) {
    RadixSort(keys, count);
}

#endif

namespace {

constexpr unsigned kDigitBits = 11;
constexpr unsigned kDigits = (64 + kDigitBits - 1) / kDigitBits;
constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;

std::size_t Digit(std::uint64_t key, unsigned digit) {
    return (key >> (digit * kDigitBits)) & (kBuckets - 1);
}

/// Below this the counts of a radix sort cost more than the comparisons of another one.
constexpr std::size_t kRadixFrom = 2048;
/// Below this the call of the vector sort costs more than it saves.
constexpr std::size_t kVectorFrom = 32;

}  // namespace

void RadixSort(std::uint64_t* keys, std::size_t count) {
    if (count < kRadixFrom) {
        std::sort(keys, keys + count);
        return;
    }
    std::array<std::vector<std::size_t>, kDigits> counts;
    counts.fill(std::vector<std::size_t>(kBuckets));
    for (std::size_t i = 0; i < count; ++i) {
        for (unsigned digit = 0; digit < kDigits; ++digit) ++counts[digit][Digit(keys[i], digit)];
    }
    const auto other = std::make_unique_for_overwrite<std::uint64_t[]>(count);
    std::uint64_t* from = keys;
    std::uint64_t* to = other.get();
    for (unsigned digit = 0; digit < kDigits; ++digit) {
        if (counts[digit][Digit(from[0], digit)] == count) continue;
        std::size_t place = 0;
        for (std::size_t& bucket : counts[digit]) place += std::exchange(bucket, place);
        for (std::size_t i = 0; i < count; ++i) to[counts[digit][Digit(from[i], digit)]++] = from[i];
        std::swap(from, to);
    }
    if (from != keys) std::copy_n(from, count, keys);
}

}  // namespace KeySorts

void QKSort::SortKeys(std::uint64_t* keys, std::size_t count) {
    if (count < KeySorts::kVectorFrom) {
        std::sort(keys, keys + count);
    } else if (KeySorts::HasVectorSort()) {
        KeySorts::VectorSort(keys, count);
    } else {
        KeySorts::RadixSort(keys, count);
    }
}
