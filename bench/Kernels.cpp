#include "bench/Kernels.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstdlib>

#ifdef TARN_HAS_VQSORT
#include <hwy/contrib/sort/vqsort.h>
#endif

namespace bench {

namespace {

constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;

/// A number whose order among unsigned ones is that of the double.
std::uint64_t OrderedBits(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // -0 becomes 0, or the two would not be tied
    const auto negative = static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> 63);
    return bits ^ (negative | kSignBit);
}

template <typename T>
void SortAll(std::vector<T>& values, Sorter sorter) {
#ifdef TARN_HAS_VQSORT
    if (sorter == Sorter::kVectorised) {
        static const hwy::Sorter vectorised;
        vectorised(values.data(), values.size(), hwy::SortAscending());
        return;
    }
#endif
    static_cast<void>(sorter);
    std::sort(values.begin(), values.end());
}

constexpr std::size_t kMostGroups = 8;

}  // namespace

bool HasVectorisedSort() {
#ifdef TARN_HAS_VQSORT
    return true;
#else
    return false;
#endif
}

void Sort(std::vector<double>& values, Sorter sorter) {
    SortAll(values, sorter);
}

Moments MomentsOf(const double* values, std::size_t records) {
    Moments moments;
    moments.min = moments.max = values[0];
    double squares = 0;
    for (std::size_t i = 0; i < records; ++i) {
        const double value = values[i];
        const double delta = value - moments.mean;
        moments.mean += delta / static_cast<double>(i + 1);
        squares += delta * (value - moments.mean);
        moments.min = std::min(moments.min, value);
        moments.max = std::max(moments.max, value);
    }
    moments.stdDev = std::sqrt(squares / static_cast<double>(records - 1));
    return moments;
}

void FillBins(const double* values, std::size_t records, double low, double high, Bins& bins) {
    const std::size_t last = bins.counts.size() - 1;
    const double binsPerUnit = static_cast<double>(last + 1) / (high - low);
    for (std::size_t i = 0; i < records; ++i) {
        const std::size_t bin = std::min(last, static_cast<std::size_t>((values[i] - low) * binsPerUnit));
        ++bins.counts[bin];
        bins.sums[bin] += values[i];
    }
}

// ---- Ranks of groups ----

/// Twice the rank sum of each group, its size, and the sum of t^3 - t over the ties.
struct Kernels::RankTotals {
    std::array<std::uint64_t, kMostGroups> twiceRanks{};
    std::array<std::uint64_t, kMostGroups> sizes{};
    double ties = 0;
};

void Kernels::MakeKeys(const double* values, const double* groups, std::size_t records, unsigned groupBits) {
    keys_.resize(records);
    const std::uint64_t mask = (std::uint64_t{1} << groupBits) - 1;
    for (std::size_t i = 0; i < records; ++i) {
        keys_[i] = (OrderedBits(values[i]) & ~mask) | static_cast<std::uint64_t>(static_cast<std::int64_t>(groups[i]));
    }
}

void Kernels::SortKeys() {
    SortAll(keys_, sorter_);
}

Kernels::RankTotals Kernels::RanksOfGroups(unsigned groupBits) const {
    RankTotals totals;
    const std::uint64_t mask = (std::uint64_t{1} << groupBits) - 1;
    const std::size_t records = keys_.size();
    for (std::size_t begin = 0; begin < records;) {
        std::size_t end = begin + 1;
        if (end == records || (keys_[end] | mask) != (keys_[begin] | mask)) {
            totals.twiceRanks[keys_[begin] & mask] += 2 * end;
            ++totals.sizes[keys_[begin] & mask];
            begin = end;
            continue;
        }
        // Within a tie the groups stand in their order, so that each is a run whose length is its count.
        std::array<std::uint64_t, kMostGroups> counts{};
        std::size_t runBegin = begin;
        for (; end < records && (keys_[end] | mask) == (keys_[begin] | mask); ++end) {
            if (keys_[end] == keys_[runBegin]) continue;
            counts[keys_[runBegin] & mask] = end - runBegin;
            runBegin = end;
        }
        counts[keys_[runBegin] & mask] = end - runBegin;
        const std::uint64_t twiceRank = begin + end + 1;
        for (std::size_t group = 0; group <= mask; ++group) {
            totals.twiceRanks[group] += twiceRank * counts[group];
            totals.sizes[group] += counts[group];
        }
        const auto tied = static_cast<double>(end - begin);
        totals.ties += tied * tied * tied - tied;
        begin = end;
    }
    return totals;
}

Kernels::RankSum Kernels::MannWhitney(const double* values, const double* groups, std::size_t records) {
    MakeKeys(values, groups, records, 1);
    SortKeys();
    const RankTotals totals = RanksOfGroups(1);
    const auto n1 = static_cast<double>(totals.sizes[0]);
    const auto n2 = static_cast<double>(totals.sizes[1]);
    const double n = n1 + n2;
    const double u = static_cast<double>(totals.twiceRanks[1]) / 2 - n2 * (n2 + 1) / 2;
    const double variance = n1 * n2 / 12 * (n + 1 - totals.ties / (n * (n - 1)));
    return {u, (u - n1 * n2 / 2) / std::sqrt(variance)};
}

double Kernels::KruskalWallis(const double* values, const double* groups, std::size_t records, unsigned groupCount) {
    const auto groupBits = static_cast<unsigned>(std::bit_width(groupCount - 1));
    MakeKeys(values, groups, records, groupBits);
    SortKeys();
    const RankTotals totals = RanksOfGroups(groupBits);
    const auto n = static_cast<double>(records);
    double sum = 0;
    for (unsigned group = 0; group < groupCount; ++group) {
        const double ranks = static_cast<double>(totals.twiceRanks[group]) / 2;
        sum += ranks * ranks / static_cast<double>(totals.sizes[group]);
    }
    return (12 * sum / (n * (n + 1)) - 3 * (n + 1)) / (1 - totals.ties / (n * n * n - n));
}

double Kernels::KolmogorovSmirnov(const double* values, const double* groups, std::size_t records) {
    MakeKeys(values, groups, records, 1);
    std::uint64_t second = 0;
    for (const std::uint64_t key : keys_) second += key & 1;
    SortKeys();
    const auto n2 = static_cast<std::int64_t>(second);
    const auto n1 = static_cast<std::int64_t>(records) - n2;
    std::int64_t difference = 0;  // of the two distributions, times n1 n2
    std::int64_t largest = 0;
    for (std::size_t i = 0; i < records; ++i) {
        difference += (keys_[i] & 1) != 0 ? -n1 : n2;
        if (i + 1 < records && (keys_[i + 1] | 1) == (keys_[i] | 1)) continue;  // the rest of a tie
        largest = std::max(largest, std::abs(difference));
    }
    return static_cast<double>(largest) / static_cast<double>(n1) / static_cast<double>(n2);
}

// ---- Pairs and rows ----

double Kernels::Wilcoxon(const double* first, const double* second, std::size_t records) {
    // The bits of |d| have their order and leave the highest one free: moved up by one, they lose nothing to the sign.
    keys_.resize(records);
    std::size_t used = 0;
    for (std::size_t i = 0; i < records; ++i) {
        const double difference = second[i] - first[i];
        const auto bits = std::bit_cast<std::uint64_t>(difference);
        keys_[used] = (bits << 1) | (difference > 0 ? 1 : 0);
        used += difference != 0 ? 1 : 0;
    }
    keys_.resize(used);
    SortKeys();
    return static_cast<double>(RanksOfGroups(1).twiceRanks[1]) / 2;
}

double Kernels::Sign(const double* first, const double* second, std::size_t records) {
    std::uint64_t positive = 0;
    for (std::size_t i = 0; i < records; ++i) positive += second[i] > first[i] ? 1 : 0;
    return static_cast<double>(positive);
}

double Kernels::Friedman(const double* const* fields, std::size_t fieldCount, std::size_t records) {
    // A rank within a row is one more than the number of smaller values and half of the equal ones, so that the rank
    // sums are counts of pairs. Blocks of rows stay in the cache while all pairs of fields go over them.
    constexpr std::size_t kBlock = 2048;
    std::vector<double> aboveOthers(fieldCount, 0.0);
    double ties = 0;
    for (std::size_t begin = 0; begin < records; begin += kBlock) {
        const std::size_t end = std::min(records, begin + kBlock);
        std::uint64_t equalPairs = 0;
        for (std::size_t a = 0; a < fieldCount; ++a) {
            for (std::size_t b = a + 1; b < fieldCount; ++b) {
                std::uint64_t above = 0;
                std::uint64_t below = 0;
                for (std::size_t i = begin; i < end; ++i) {
                    above += fields[a][i] > fields[b][i] ? 1 : 0;
                    below += fields[a][i] < fields[b][i] ? 1 : 0;
                }
                const std::uint64_t equal = end - begin - above - below;
                equalPairs += equal;
                aboveOthers[a] += static_cast<double>(above) + static_cast<double>(equal) / 2;
                aboveOthers[b] += static_cast<double>(below) + static_cast<double>(equal) / 2;
            }
        }
        if (equalPairs == 0) continue;
        for (std::size_t i = begin; i < end; ++i) {
            for (std::size_t a = 0; a < fieldCount; ++a) {
                std::size_t tied = 0;
                for (std::size_t b = 0; b < fieldCount; ++b) tied += fields[a][i] == fields[b][i] ? 1 : 0;
                ties += static_cast<double>(tied * tied - 1);  // t members of a tie give t^3 - t together
            }
        }
    }
    const auto n = static_cast<double>(records);
    const auto k = static_cast<double>(fieldCount);
    double sum = 0;
    for (const double above : aboveOthers) sum += (above + n) * (above + n);
    return (12 * sum / (n * k * (k + 1)) - 3 * n * (k + 1)) / (1 - ties / (n * k * (k * k - 1)));
}

}  // namespace bench
