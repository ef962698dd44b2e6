#include "records/SortOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cstdint>
#include <utility>

namespace QKTarn {

namespace {

struct Entry {
    std::uint64_t key;
    int position;
};

/// A whole number in the order of the doubles: a positive one gets its sign bit set, a negative one is turned over.
std::uint64_t OrderPreservingKey(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // -0.0 and 0.0 are one value
    constexpr std::uint64_t kSign = std::uint64_t{1} << 63;
    return bits & kSign ? ~bits : bits | kSign;
}

constexpr unsigned kDigitBits = 11;
constexpr unsigned kDigits = (64 + kDigitBits - 1) / kDigitBits;
constexpr std::size_t kBuckets = std::size_t{1} << kDigitBits;
/// Below this the counts of a radix sort cost more than the comparisons of a merge sort.
constexpr std::size_t kRadixFrom = 2048;

std::size_t Digit(std::uint64_t key, unsigned digit) {
    return (key >> (digit * kDigitBits)) & (kBuckets - 1);
}

/// Least significant digit first. A digit that is the same in all keys is passed over, which spares most of the work
/// for whole numbers of moderate size.
void RadixSort(std::vector<Entry>& entries) {
    std::array<std::vector<std::uint32_t>, kDigits> counts;
    counts.fill(std::vector<std::uint32_t>(kBuckets));
    for (const Entry& entry : entries) {
        for (unsigned digit = 0; digit < kDigits; ++digit) ++counts[digit][Digit(entry.key, digit)];
    }
    std::vector<Entry> sorted(entries.size());
    for (unsigned digit = 0; digit < kDigits; ++digit) {
        if (counts[digit][Digit(entries.front().key, digit)] == entries.size()) continue;
        std::uint32_t place = 0;
        for (std::uint32_t& count : counts[digit]) place += std::exchange(count, place);
        for (const Entry& entry : entries) sorted[counts[digit][Digit(entry.key, digit)]++] = entry;
        entries.swap(sorted);
    }
}

}  // namespace

std::vector<int> AscendingOrder(const std::vector<double>& values) {
    std::vector<Entry> entries(values.size());
    for (std::size_t i = 0; i < values.size(); ++i) entries[i] = {OrderPreservingKey(values[i]), static_cast<int>(i)};
    if (entries.size() < kRadixFrom) {
        std::stable_sort(entries.begin(), entries.end(), [](const Entry& a, const Entry& b) { return a.key < b.key; });
    } else {
        RadixSort(entries);
    }
    std::vector<int> order(values.size());
    std::transform(entries.begin(), entries.end(), order.begin(), [](const Entry& entry) { return entry.position; });
    return order;
}

}  // namespace QKTarn
