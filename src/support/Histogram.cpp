#include "support/Histogram.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <functional>

#include "support/CaseWeight.h"
#include "support/Int32.h"

namespace {

/// A counter of 32 bits, or of 64 that the arithmetic folds.
template <typename Counter>
Counter Sum(Counter count, std::int32_t weight, const Arithmetic& arithmetic) {
    if constexpr (sizeof(Counter) == sizeof(std::int32_t)) {
        return Add32(count, weight);
    } else {
        return arithmetic.Count(count + weight);
    }
}

}  // namespace

void Histogram::SetUp(double lowest, double highest, std::size_t wishedBins) {
    low = lowest;
    binCount = wishedBins;
    zeroCount = 0;
    weightSeen = 0;
    edges.clear();

    const double width = (highest - lowest) / static_cast<double>(wishedBins);
    double previous = lowest;
    for (std::size_t i = 1; edges.size() < binCount; ++i) {
        const double edge = lowest + static_cast<double>(i) * width;
        if (previous <= 0 && edge > 0) {
            edges.push_back(0);
            ++binCount;
        }
        edges.push_back(edge);
        previous = edge;
    }
    if (!edges.empty()) edges.back() = highest + 1.0;
    zeroEdges = binCount - wishedBins;
    bins.assign(binCount, HistogramBin{});

    const bool ascending =
        edges.size() > 1 && std::adjacent_find(edges.begin(), edges.end(), std::greater_equal<>()) == edges.end();
    binsPerUnit = ascending && width > 0 && std::isfinite(1 / width) ? 1 / width : 0;
    // An edge is off its place by the rounding of numbers of its size, here less than an eighth of an interval.
    constexpr double kWidthsPerNumber = 0x1p50;
    constexpr std::size_t kMostEdges = std::size_t{1} << 30;
    isGuessClose = binsPerUnit > 0 && edges.size() < kMostEdges &&
                   std::max(std::fabs(lowest), std::fabs(highest)) < width * kWidthsPerNumber;
    bins.reserve(binCount + 1);  // for the zeros
}

void Histogram::Add(double value, std::int32_t weight) {
    weightSeen += std::abs(std::int64_t{weight});
    if (value == 0.0) {
        zeroCount = arithmetic->Count(zeroCount + weight);
        return;
    }
    const std::size_t index = FindBin(value);
    if (index >= binCount) return;
    HistogramBin& bin = bins[index];
    bin.count = arithmetic->Count(bin.count + weight);
    bin.mean += (value - bin.mean) * weight / static_cast<double>(bin.count);
}

/// A value depends on the interval's mean before it alone, so values of different intervals are worked on at once.
/// Which interval each one falls into is found beforehand, and without a branch that can't be foretold.
void Histogram::AddColumn(const double* values, const std::int32_t* weights, std::size_t count) {
    if (!isGuessClose) {
        for (std::size_t i = 0; i < count; ++i) Add(values[i], weights == nullptr ? 1 : weights[i]);
        return;
    }
    weightSeen += SumOfMagnitudes(weights, count);
    bins.push_back({zeroCount, 0.0});  // the slot of the zeros; its mean is of no use
    if (arithmetic->StaysNarrow(weightSeen)) {
        AddToBins<std::int32_t>(values, weights, count);
    } else {
        AddToBins<std::int64_t>(values, weights, count);
    }
    zeroCount = bins.back().count;
    bins.pop_back();
}

template <typename Counter>
void Histogram::AddToBins(const double* values, const std::int32_t* weights, std::size_t count) {
    constexpr std::size_t kBlock = 64;  // small enough for the processor to look for the next ones beside the divisions
    std::array<std::int32_t, kBlock> slots;
    for (std::size_t begin = 0; begin < count; begin += kBlock) {
        const std::size_t size = std::min(kBlock, count - begin);
        FindSlots(values + begin, size, slots.data());
        for (std::size_t i = 0; i < size; ++i) {
            const std::int32_t weight = weights == nullptr ? 1 : weights[begin + i];
            HistogramBin& bin = bins[static_cast<std::size_t>(slots[i])];
            const Counter sum = Sum(static_cast<Counter>(bin.count), weight, *arithmetic);
            bin.count = sum;
            bin.mean += (values[begin + i] - bin.mean) * weight / static_cast<double>(sum);
        }
    }
}

/// The interval of each value as `FindBin` has it, 0 for one beyond the last edge; the slot behind all of them for a
/// zero. Half an interval below its place a value's guess is the right one or one too low.
void Histogram::FindSlots(const double* values, std::size_t count, std::int32_t* slots) const {
    const double* const edge = edges.data();
    const auto last = static_cast<std::int32_t>(edges.size() - 1);
    const double top = last;
    const auto ofPositive = static_cast<std::int32_t>(zeroEdges);
    for (std::size_t i = 0; i < count; ++i) {
        double place = (values[i] - low) * binsPerUnit - 0.5;
        place = place > 0 ? place : 0;
        place = place < top ? place : top;
        slots[i] = static_cast<std::int32_t>(place) + (values[i] > 0 ? ofPositive : 0);
    }
    for (std::size_t i = 0; i < count; ++i) {
        const std::int32_t guess = std::min(slots[i], last);
        slots[i] = guess + (edge[guess] < values[i] ? 1 : 0);
    }
    const auto intervalOne = static_cast<std::int32_t>(SearchBin(edges[1]));
    for (std::size_t i = 0; i < count; ++i) {
        std::int32_t slot = slots[i] == 1 ? intervalOne : slots[i];
        slot = slot > last ? 0 : slot;
        slots[i] = values[i] == 0 ? last + 1 : slot;
    }
}

namespace {

/// Up to eight chains of means, one of an interval each, side by side: a division waits for the one before it in its
/// own chain alone.
class BinChains {
 public:
    BinChains(std::vector<HistogramBin>& histogramBins, const Arithmetic& by, bool isNarrowHere)
        : bins(histogramBins), arithmetic(by), isNarrow(isNarrowHere) {}

    bool IsFull() const { return active == kMost; }
    bool IsEmpty() const { return active == 0; }

    /// Begins the chain of an interval that isn't among them. `weights`: null: each is 1, in all chains.
    void Begin(std::size_t bin, const double* values, const std::int32_t* weights, std::size_t count) {
        chains[active++] = {bin, values, weights, count};
    }

    /// Takes all of them on until one ends at least.
    void Advance() {
        std::size_t steps = chains[0].left;
        for (std::size_t i = 1; i < active; ++i) steps = std::min(steps, chains[i].left);
        const bool isWeighted = chains[0].weights != nullptr;
        if (!isNarrow) {
            isWeighted ? Step<8, true, std::int64_t>(steps) : Step<8, false, std::int64_t>(steps);
        } else if (active > 4) {
            isWeighted ? Step<8, true>(steps) : Step<8, false>(steps);
        } else if (active > 2) {
            isWeighted ? Step<4, true>(steps) : Step<4, false>(steps);
        } else {
            isWeighted ? Step<2, true>(steps) : Step<2, false>(steps);
        }
        std::size_t kept = 0;
        for (std::size_t i = 0; i < active; ++i) {
            Chain& chain = chains[i];
            chain.values += steps;
            if (isWeighted) chain.weights += steps;
            chain.left -= steps;
            if (chain.left > 0) chains[kept++] = chain;
        }
        active = kept;
    }

 private:
    static constexpr std::size_t kMost = 8;

    struct Chain {
        std::size_t bin = 0;
        const double* values = nullptr;
        const std::int32_t* weights = nullptr;
        std::size_t left = 0;
    };

    /// Lanes without a chain do what the first one does, in vain.
    template <std::size_t kLanes, bool kIsWeighted, typename Counter = std::int32_t>
    void Step(std::size_t steps) {
        const double* values[kLanes];
        const std::int32_t* weights[kLanes];
        double means[kLanes];
        Counter counts[kLanes];
        for (std::size_t lane = 0; lane < kLanes; ++lane) {
            const Chain& chain = chains[lane < active ? lane : 0];
            values[lane] = chain.values;
            weights[lane] = chain.weights;
            means[lane] = bins[chain.bin].mean;
            counts[lane] = static_cast<Counter>(bins[chain.bin].count);
        }
        for (std::size_t i = 0; i < steps; ++i) {
            double distances[kLanes];
            for (std::size_t lane = 0; lane < kLanes; ++lane) distances[lane] = values[lane][i] - means[lane];
            if constexpr (kIsWeighted) {
                std::int32_t added[kLanes];
                for (std::size_t lane = 0; lane < kLanes; ++lane) added[lane] = weights[lane][i];
                for (std::size_t lane = 0; lane < kLanes; ++lane) distances[lane] *= added[lane];
                for (std::size_t lane = 0; lane < kLanes; ++lane) {
                    counts[lane] = Sum(counts[lane], added[lane], arithmetic);
                }
            } else {
                for (std::size_t lane = 0; lane < kLanes; ++lane) {
                    counts[lane] = Sum(counts[lane], 1, arithmetic);
                }
            }
            for (std::size_t lane = 0; lane < kLanes; ++lane) {
                means[lane] += distances[lane] / static_cast<double>(counts[lane]);
            }
        }
        for (std::size_t lane = 0; lane < std::min(kLanes, active); ++lane) {
            bins[chains[lane].bin] = {counts[lane], means[lane]};
        }
    }

    std::vector<HistogramBin>& bins;
    const Arithmetic& arithmetic;
    bool isNarrow;  // whether 32 bits do for each count
    std::array<Chain, kMost> chains;
    std::size_t active = 0;
};

}  // namespace

void Histogram::AddAscending(const double* values, const std::int32_t* weights, std::size_t count) {
    // Where an interval has few values, looking for the last of them takes longer than taking each by itself.
    constexpr std::size_t kFewInAnInterval = 8;
    if (isGuessClose && count < kFewInAnInterval * binCount) return AddColumn(values, weights, count);
    const double* const end = values + count;
    weightSeen += SumOfMagnitudes(weights, count);
    const double* const zeros = std::partition_point(values, end, [](double value) { return value < 0; });
    const double* const positive = std::partition_point(zeros, end, [](double value) { return value <= 0; });
    const auto weightsFrom = [&](const double* place) {
        return weights == nullptr ? nullptr : weights + (place - values);
    };
    AddAscendingOfOneSign(values, zeros, weights);
    for (const double* zero = zeros; zero != positive; ++zero) {
        zeroCount = arithmetic->Count(zeroCount + (weights == nullptr ? 1 : weights[zero - values]));
    }
    AddAscendingOfOneSign(positive, end, weightsFrom(positive));
}

/// Up to the last edge ascending values have ascending intervals, so that those of one interval stand together.
void Histogram::AddAscendingOfOneSign(const double* begin, const double* end, const std::int32_t* weights) {
    const double* value = begin;
    const auto weightsFrom = [&](const double* place) {
        return weights == nullptr ? nullptr : weights + (place - begin);
    };
    if (binsPerUnit > 0) {
        const double* const beyond =
            std::partition_point(begin, end, [this](double candidate) { return candidate <= edges.back(); });
        BinChains chains(bins, *arithmetic, arithmetic->StaysNarrow(weightSeen));
        while (value != beyond || !chains.IsEmpty()) {
            while (value != beyond && !chains.IsFull()) {
                const std::size_t bin = FindBin(*value);
                const double* const next = std::partition_point(
                    value, beyond, [this, bin](double candidate) { return FindBin(candidate) == bin; });
                chains.Begin(bin, value, weightsFrom(value), static_cast<std::size_t>(next - value));
                value = next;
            }
            chains.Advance();
        }
    }
    for (; value != end; ++value) Add(*value, weights == nullptr ? 1 : weights[value - begin]);
}

void Histogram::Close() {
    if (zeroCount > 0) bins.push_back({zeroCount, 0.0});
}

std::size_t Histogram::FindBin(double value) const {
    // With ascending edges the search below is a lower bound from interval 2 on. Equal widths let that be guessed;
    // the neighbours then settle rounding and the boundary at zero.
    if (binsPerUnit > 0 && value > edges[1] && value <= edges.back()) {
        const double place = std::min((value - low) * binsPerUnit, static_cast<double>(edges.size() - 1));
        const std::size_t guess = static_cast<std::size_t>(place) + (value > 0 ? zeroEdges : 0);
        std::size_t index = std::clamp<std::size_t>(guess, 2, edges.size() - 1);
        while (edges[index - 1] >= value) --index;
        while (edges[index] < value) ++index;
        return index;
    }
    return SearchBin(value);
}

std::size_t Histogram::SearchBin(double value) const {
    if (edges.size() < 2) return 0;
    std::size_t lo = 0;
    std::size_t hi = edges.size() - 1;
    std::size_t remembered = 0;
    do {
        const std::size_t mid = lo + (hi - lo) / 2;
        if (mid == 0) return 0;
        if (value == edges[mid]) return mid;
        if (value > edges[mid]) {
            lo = mid + 1;  // at most the last edge: the middle of two different positions is below the upper one
            if (edges[lo] >= value) return lo;
        } else {
            hi = mid - 1;
            if (value > edges[hi]) return mid;
            remembered = hi;
        }
    } while (lo < hi);
    return remembered;
}
