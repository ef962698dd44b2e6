#include "support/WeightedOrder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

#include "records/SortOrder.h"

namespace {

constexpr std::uint64_t kSignBit = std::uint64_t{1} << 63;

/// A whole number in the order of the doubles, and back.
std::uint64_t OrderKey(double value) {
    const auto bits = std::bit_cast<std::uint64_t>(value);
    return bits & kSignBit ? ~bits : bits | kSignBit;
}
double FromOrderKey(std::uint64_t key) {
    return std::bit_cast<double>(key & kSignBit ? key & ~kSignBit : ~key);
}

/// So many weights between two bounds are too few for a straight line.
constexpr int kFewWeights = 64;

/// An order of all doubles. "<" itself is none: to it, what is no number equals everything.
bool IsBelow(double a, double b) {
    return a < b || (std::isnan(b) && !std::isnan(a));
}

}  // namespace

void SortByValue(std::vector<WeightedDifference>& values) {
    std::sort(values.begin(), values.end(), [](const WeightedDifference& a, const WeightedDifference& b) {
        return IsBelow(a.difference, b.difference);
    });
}

// ---- Positions ----

double WeightedOrder::At(double position) const {
    if (!(position < static_cast<double>(TotalWeight()))) return Last();
    if (position <= 0) return First();
    return Reaching(static_cast<Weight>(position));
}

double WeightedOrder::Median() const {
    const Weight total = TotalWeight();
    if (const std::optional<double> second = Second(); total == 0 && second) return (First() + *second) * 0.5;
    if (total <= 1) return Last();
    const Weight half = total / 2;
    if (total % 2 != 0) return Reaching(half + 1);
    const double lower = Reaching(half);
    return WeightUpTo(lower) == half ? (lower + NextAbove(lower)) * 0.5 : lower;
}

/// Every other question is where a straight line between the bounds reaches the position, which comes near it soon. The
/// others halve what is left of the doubles, so that the search ends whatever the list looks like.
double WeightedOrder::Reaching(Weight position) const {
    std::uint64_t low = OrderKey(First());
    std::uint64_t high = OrderKey(Last());
    auto weightBelow = Weight{0};
    Weight weightUpTo = TotalWeight();
    const bool isLineOfUse = std::isfinite(First()) && std::isfinite(Last()) && !HasNegativeWeights();
    for (bool isHalved = true; low < high && !(work != nullptr && work->IsStopped()); isHalved = !isHalved) {
        std::uint64_t middle = low + (high - low) / 2;
        if (isLineOfUse && isHalved && weightUpTo - weightBelow > kFewWeights) {
            const double share =
                static_cast<double>(position - weightBelow) / static_cast<double>(weightUpTo - weightBelow);
            const double lowest = FromOrderKey(low);
            const double onLine = lowest + share * (FromOrderKey(high) - lowest);
            if (onLine >= lowest) middle = std::clamp(OrderKey(onLine), low, high - 1);
        }
        const Weight weight = WeightUpTo(FromOrderKey(middle));
        if (weight >= position) {
            high = middle;
            weightUpTo = weight;
        } else {
            low = middle + 1;
            weightBelow = weight;
        }
    }
    return FromOrderKey(high) + 0.0;  // -0.0 comes first of the two zeros and would show its sign
}

// ---- Walsh averages ----

WalshAverages::WalshAverages(std::span<const double> sample, const double* weights, const WorkShare* share)
    : weightBefore(sample.size() + 1) {
    SetWork(share);
    const WorkShare alone;
    QKTarn::SortedColumn sorted = QKTarn::SortColumn(sample, share == nullptr ? alone : *share);
    values = std::move(sorted.values);
    weightBefore[0] = 0;
    for (std::size_t i = 0; i < values.size(); ++i) {
        const double weight = weights == nullptr ? 1 : weights[sorted.order[i]];
        hasNegativeWeights = hasNegativeWeights || weight < 0;
        weightBefore[i + 1] = weightBefore[i] + static_cast<std::int64_t>(weight);
    }
    for (std::size_t i = 0; i < values.size(); ++i) totalWeight += RowWeight(i, values.size());
}

/// Of the pairs of `row` with itself and the values behind it up to `end`.
WeightedOrder::Weight WalshAverages::RowWeight(std::size_t row, std::size_t end) const {
    const Weight weight = weightBefore[row + 1] - weightBefore[row];
    return weight * (weightBefore[end] - weightBefore[row + 1]) + (weight + 1) * weight / 2;
}

WeightedOrder::Weight WalshAverages::WeightUpTo(double bound) const {
    Weight sum = 0;
    std::size_t end = values.size();
    for (std::size_t row = 0; row < values.size(); ++row) {
        while (end > row && Average(row, end - 1) > bound) --end;
        if (end <= row) break;
        sum += RowWeight(row, end);
    }
    return sum;
}

double WalshAverages::NextAbove(double bound) const {
    double next = Last();
    std::size_t end = values.size();
    for (std::size_t row = 0; row < values.size(); ++row) {
        while (end > row && Average(row, end - 1) > bound) --end;
        const std::size_t above = std::max(end, row);
        if (above < values.size()) next = std::min(next, Average(row, above));
        if (end <= row) break;  // from here on each row begins above the bound, and higher than this one
    }
    return next;
}

// ---- Pairwise differences ----

PairwiseDifferences::Sample::Sample(std::vector<WeightedDifference> entries) : weightBefore{0} {
    SortByValue(entries);
    for (const auto& [value, weight] : entries) {
        totalWeight += weight;
        hasNegativeWeights = hasNegativeWeights || weight < 0;
        if (values.empty() || values.back() != value) {
            values.push_back(value);
            weightBefore.push_back(totalWeight);
        } else {
            weightBefore.back() = totalWeight;
        }
    }
    if (entries.size() > 1) {
        behindFirst = entries[1].difference;
        beforeLast = entries[entries.size() - 2].difference;
    }
}

std::optional<double> PairwiseDifferences::Second() const {
    std::optional<double> second;
    if (minuends.behindFirst) second = *minuends.behindFirst - subtrahends.values.back();
    if (subtrahends.beforeLast) {
        const double other = minuends.values.front() - *subtrahends.beforeLast;
        second = second ? std::min(*second, other) : other;
    }
    return second;
}

WeightedOrder::Weight PairwiseDifferences::WeightUpTo(double bound) const {
    Weight sum = 0;
    std::size_t start = 0;  // of the subtrahends that are large enough
    for (std::size_t i = 0; i < minuends.values.size(); ++i) {
        while (start < subtrahends.values.size() && Difference(i, start) > bound) ++start;
        if (start == subtrahends.values.size()) break;
        sum += Weight{minuends.weightBefore[i + 1] - minuends.weightBefore[i]} *
               (subtrahends.totalWeight - subtrahends.weightBefore[start]);
    }
    return sum;
}

double PairwiseDifferences::NextAbove(double bound) const {
    double next = Last();
    std::size_t start = 0;
    for (std::size_t i = 0; i < minuends.values.size(); ++i) {
        while (start < subtrahends.values.size() && Difference(i, start) > bound) ++start;
        if (start > 0) next = std::min(next, Difference(i, start - 1));
    }
    return next;
}
