#include "support/WeightedOrder.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <utility>

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

/// An order of all doubles. "<" itself is none: to it, what is no number equals everything.
bool IsBelow(double a, double b) {
    return a < b || (std::isnan(b) && !std::isnan(a));
}

template <typename Difference>
void SortByAbsolute(std::vector<Difference>& values) {
    std::sort(values.begin(), values.end(), [](const Difference& a, const Difference& b) {
        return IsBelow(std::fabs(a.difference), std::fabs(b.difference));
    });
}

}  // namespace

void SortByValue(std::vector<WeightedDifference>& values) {
    std::sort(values.begin(), values.end(), [](const WeightedDifference& a, const WeightedDifference& b) {
        return IsBelow(a.difference, b.difference);
    });
}

void SortByAbsoluteValue(std::vector<WeightedDifference>& values) {
    SortByAbsolute(values);
}

void SortByAbsoluteValue(std::vector<UntruncatedDifference>& values) {
    SortByAbsolute(values);
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

double WeightedOrder::Reaching(Weight position) const {
    std::uint64_t low = OrderKey(First());
    std::uint64_t high = OrderKey(Last());
    while (low < high) {
        const std::uint64_t middle = low + (high - low) / 2;
        if (WeightUpTo(FromOrderKey(middle)) >= position) {
            high = middle;
        } else {
            low = middle + 1;
        }
    }
    return FromOrderKey(high) + 0.0;  // -0.0 comes first of the two zeros and would show its sign
}

// ---- Walsh averages ----

WalshAverages::WalshAverages(std::vector<WeightedDifference> sample)
    : values(std::move(sample)), weightBefore(values.size() + 1) {
    SortByValue(values);
    for (std::size_t i = 0; i < values.size(); ++i) weightBefore[i + 1] = weightBefore[i] + values[i].weight;
    for (std::size_t i = 0; i < values.size(); ++i) totalWeight += RowWeight(i, values.size());
}

/// Of the pairs of `row` with itself and the values behind it up to `end`.
WeightedOrder::Weight WalshAverages::RowWeight(std::size_t row, std::size_t end) const {
    const Weight weight = values[row].weight;
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
