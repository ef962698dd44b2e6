#include "records/SortOrder.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>
#include <cstddef>
#include <limits>
#include <utility>
#include <vector>

#include "platform/common/QKSort.h"

namespace QKTarn {

namespace {

constexpr std::uint64_t kSign = std::uint64_t{1} << 63;

/// A whole number in the order of the doubles: a positive one gets its sign bit set, a negative one is turned over.
std::uint64_t OrderPreservingKey(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value + 0.0);  // -0.0 and 0.0 are one value
    // Without a branch, since nobody can foretell the sign.
    const auto allIfNegative = static_cast<std::uint64_t>(static_cast<std::int64_t>(bits) >> 63);
    return bits ^ (allIfNegative | kSign);
}

/// How many values a job takes: some tenths of a millisecond of work.
constexpr std::size_t kChunk = std::size_t{1} << 16;

std::size_t ChunkCount(std::size_t count) {
    return (count + kChunk - 1) / kChunk;
}

/// Does a range of the places 0 .. count-1 after another.
template <typename Job>
void ForChunks(const WorkShare& share, std::size_t count, Job job) {
    share.Run(ChunkCount(count),
              [&](std::size_t chunk) { job(chunk * kChunk, std::min(count, (chunk + 1) * kChunk)); });
}

// ---- Few different whole numbers: scores, ranks, ratings ----

/// The whole numbers from `lowest` on that a column consists of.
struct WholeNumbers {
    double lowest = 0;
    std::size_t count = 0;  // of possible numbers; 0 for a column of other values
};

constexpr std::size_t kMostWholeNumbers = 2048;

WholeNumbers FindWholeNumbers(std::span<const double> column) {
    constexpr std::size_t kBetweenLooks = 256;  // few, as most columns show at once that they are others
    double lowest = std::numeric_limits<double>::infinity();
    double highest = -lowest;
    for (std::size_t first = 0; first < column.size(); first += kBetweenLooks) {
        bool areWhole = true;
        for (const double value : column.subspan(first, std::min(kBetweenLooks, column.size() - first))) {
            lowest = std::min(lowest, value);
            highest = std::max(highest, value);
            // A number beyond 32 bits may not be converted, and is no score.
            const bool isSmall = std::fabs(value) < 1e9;
            areWhole &= isSmall && static_cast<double>(static_cast<std::int32_t>(isSmall ? value : 0)) == value;
        }
        if (!areWhole || highest - lowest >= kMostWholeNumbers) return {};
    }
    return {lowest, static_cast<std::size_t>(highest - lowest) + 1};
}

/// Counting sort: the places of each number follow one another.
void SortWholeNumbers(std::span<const double> column, const WholeNumbers& numbers, SortedColumn& sorted) {
    std::array<std::size_t, kMostWholeNumbers> places{};
    const auto numberOf = [&](double value) { return static_cast<std::size_t>(value - numbers.lowest); };
    for (const double value : column) ++places[numberOf(value)];
    std::size_t place = 0;
    for (std::size_t number = 0; number < numbers.count; ++number) place += std::exchange(places[number], place);
    for (std::size_t i = 0; i < column.size(); ++i) {
        const std::size_t at = places[numberOf(column[i])]++;
        sorted.order[at] = static_cast<std::uint32_t>(i);
        sorted.values[at] = column[i];  // as it stands: a zero may have a sign
    }
}

// ---- Any values: words of a key's leading bits, and behind them the position ----

/// Where the words of a column have their parts. Keys are taken from the least one on, so that leading bits which all
/// of them share are not in the way.
struct Packing {
    std::uint64_t least = 0;
    unsigned unit = 0;  // trailing bits that are 0 in all keys, from the least one on
    unsigned lost = 0;  // further bits that don't fit beside the position
    unsigned positionBits = 0;

    std::uint64_t Word(double value, std::size_t position) const {
        return (OrderPreservingKey(value) - least) >> unit >> lost << positionBits | position;
    }
    std::size_t Position(std::uint64_t word) const { return word & ((std::uint64_t{1} << positionBits) - 1); }
};

Packing MakePacking(std::span<const double> column, const WorkShare& share) {
    struct Range {
        std::uint64_t least = ~std::uint64_t{0};
        std::uint64_t greatest = 0;
        std::uint64_t all = 0;  // the bits in which any key differs from the first one
    };
    const std::uint64_t first = OrderPreservingKey(column.front());
    std::vector<Range> ranges(ChunkCount(column.size()));
    ForChunks(share, column.size(), [&](std::size_t begin, std::size_t end) {
        Range range;
        for (std::size_t i = begin; i < end; ++i) {
            const std::uint64_t key = OrderPreservingKey(column[i]);
            range.least = std::min(range.least, key);
            range.greatest = std::max(range.greatest, key);
            range.all |= key ^ first;
        }
        ranges[begin / kChunk] = range;
    });
    Range whole;
    for (const Range& range : ranges) {
        whole.least = std::min(whole.least, range.least);
        whole.greatest = std::max(whole.greatest, range.greatest);
        whole.all |= range.all;
    }
    Packing packing;
    packing.least = whole.least;
    packing.positionBits = static_cast<unsigned>(std::bit_width(column.size() - 1));
    if (whole.all == 0) return packing;
    packing.unit = static_cast<unsigned>(std::countr_zero(whole.all));
    const auto keyBits = static_cast<unsigned>(std::bit_width((whole.greatest - whole.least) >> packing.unit));
    packing.lost = std::max(keyBits + packing.positionBits, 64U) - 64;
    return packing;
}

/// Sorts words on all threads: they are parted around pivots until each piece is short enough to be sorted by itself,
/// which also bounds how long a cancel waits.
class WordSort {
 public:
    WordSort(std::uint64_t* words, std::size_t count, const WorkShare& share)
        : words_(words), share_(share), longest_(count) {
        if (count > kAlwaysParted || (share.Threads() > 1 && count > kPartedFrom)) {
            longest_ = std::min(kAlwaysParted, std::max(kPartedFrom, count / share.Threads()));
        }
        pieces_.push_back({0, count});
    }

    void Run() {
        for (bool again = true; again && !share_.IsStopped();) again = PartLongPieces();
        share_.Run(pieces_.size(), [&](std::size_t i) {
            QKSort::SortKeys(words_ + pieces_[i].begin, pieces_[i].end - pieces_[i].begin);
        });
    }

 private:
    struct Piece {
        std::size_t begin;
        std::size_t end;
    };
    static constexpr std::size_t kPartedFrom = std::size_t{1} << 17;
    static constexpr std::size_t kAlwaysParted = std::size_t{1} << 20;

    bool IsLong(const Piece& piece) const { return piece.end - piece.begin > longest_ + longest_ / 4; }

    /// One round; whether a long piece is left.
    bool PartLongPieces() {
        std::vector<std::size_t> middles(pieces_.size());
        share_.Run(pieces_.size(),
                   [&](std::size_t i) { middles[i] = IsLong(pieces_[i]) ? Part(pieces_[i]) : pieces_[i].end; });
        if (share_.IsStopped()) return false;
        std::vector<Piece> parted;
        for (std::size_t i = 0; i < pieces_.size(); ++i) {
            const Piece& piece = pieces_[i];
            if (middles[i] > piece.begin) parted.push_back({piece.begin, middles[i]});
            if (middles[i] < piece.end) parted.push_back({middles[i], piece.end});
        }
        pieces_ = std::move(parted);
        return std::any_of(pieces_.begin(), pieces_.end(), [&](const Piece& piece) { return IsLong(piece); });
    }

    /// Puts the words below a pivot in front of the others. Words are all different, so that neither part is empty and
    /// the parting comes to an end.
    std::size_t Part(const Piece& piece) {
        constexpr std::size_t kSample = 127;
        std::array<std::uint64_t, kSample> sample;
        const std::size_t count = piece.end - piece.begin;
        for (std::size_t i = 0; i < kSample; ++i) sample[i] = words_[piece.begin + count / kSample * i];
        std::nth_element(sample.begin(), sample.begin() + kSample / 2, sample.end());
        const std::uint64_t pivot = sample[kSample / 2];
        // Without a branch: on which side a word belongs can't be foreseen.
        std::size_t below = piece.begin;
        for (std::size_t i = piece.begin; i < piece.end; ++i) {
            const std::uint64_t word = words_[i];
            words_[i] = words_[below];
            words_[below] = word;
            below += word < pivot;
        }
        return below;
    }

    std::uint64_t* words_;
    const WorkShare& share_;
    std::size_t longest_;
    std::vector<Piece> pieces_;
};

/// Where keys lost their last bits, values of equal words stand in the order of their positions.
void MendLostBits(std::span<const double> column, const Packing& packing, const LargeArray<std::uint64_t>& words,
                  SortedColumn& sorted) {
    const auto lead = [&](std::size_t place) { return words[place] >> packing.positionBits; };
    const auto key = [&](std::size_t place) { return OrderPreservingKey(sorted.values[place]); };
    for (std::size_t place = 1; place < words.size(); ++place) {
        if (lead(place) != lead(place - 1) || key(place) >= key(place - 1)) continue;
        std::size_t begin = place - 1;
        while (begin > 0 && lead(begin - 1) == lead(place)) --begin;
        std::size_t end = place + 1;
        while (end < words.size() && lead(end) == lead(place)) ++end;
        std::stable_sort(sorted.order.begin() + begin, sorted.order.begin() + end,
                         [&](std::uint32_t a, std::uint32_t b) {
                             return OrderPreservingKey(column[a]) < OrderPreservingKey(column[b]);
                         });
        for (std::size_t i = begin; i < end; ++i) sorted.values[i] = column[sorted.order[i]];
        place = end - 1;
    }
}

void SortAnyValues(std::span<const double> column, const WorkShare& share, SortedColumn& sorted) {
    const Packing packing = MakePacking(column, share);
    LargeArray<std::uint64_t> words(column.size());
    ForChunks(share, column.size(), [&](std::size_t begin, std::size_t end) {
        for (std::size_t i = begin; i < end; ++i) words[i] = packing.Word(column[i], i);
    });
    WordSort(words.data(), words.size(), share).Run();
    if (share.IsStopped()) return;
    ForChunks(share, column.size(), [&](std::size_t begin, std::size_t end) {
        constexpr std::size_t kAhead = 16;
        for (std::size_t place = begin; place < end; ++place) {
            if (place + kAhead < end) __builtin_prefetch(&column[packing.Position(words[place + kAhead])]);
            const std::size_t position = packing.Position(words[place]);
            sorted.order[place] = static_cast<std::uint32_t>(position);
            sorted.values[place] = column[position];
        }
    });
    if (packing.lost > 0 && !share.IsStopped()) MendLostBits(column, packing, words, sorted);
}

}  // namespace

SortedColumn SortColumn(std::span<const double> column, const WorkShare& share) {
    SortedColumn sorted{LargeArray<std::uint32_t>(column.size()), LargeArray<double>(column.size())};
    if (column.empty()) return sorted;
    const WholeNumbers numbers = FindWholeNumbers(column);
    if (numbers.count > 0 && numbers.count <= column.size()) {
        SortWholeNumbers(column, numbers, sorted);
    } else {
        SortAnyValues(column, share, sorted);
    }
    return sorted;
}

}  // namespace QKTarn
