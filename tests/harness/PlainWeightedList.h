#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "support/WeightedOrder.h"

/// The list whose order statistics `WeightedOrder` gives without making it: made, sorted, its weights summed up, and
/// searched from the front, word by word as the definition says. The reference of the tests.
class PlainWeightedList {
 public:
    void Add(double value, std::int64_t weight) { entries_.push_back({value, weight}); }

    void Close() {
        // Of equal values those without weight come first, which the definition leaves open.
        std::sort(entries_.begin(), entries_.end(), [](const Entry& a, const Entry& b) {
            return a.value != b.value ? a.value < b.value : (a.weight == 0) > (b.weight == 0);
        });
        std::int64_t running = 0;
        for (const Entry& entry : entries_) cumulative_.push_back(running += entry.weight);
    }

    double Lookup(double x) const {
        if (x >= static_cast<double>(cumulative_.back())) return entries_.back().value;
        if (static_cast<double>(cumulative_.front()) >= x) return entries_.front().value;
        std::size_t i = 1;
        while (!(static_cast<double>(cumulative_[i - 1] + 1) <= x && x <= static_cast<double>(cumulative_[i]))) ++i;
        return entries_[i].value;
    }

    double Median() const {
        const std::int64_t total = cumulative_.back();
        const double h = static_cast<double>(total + 1) * 0.5;
        if (total % 2 == 0) {
            for (std::size_t i = 0; i + 1 < entries_.size(); ++i) {
                const auto below = static_cast<double>(cumulative_[i]);
                if (below < h && h < below + 1) return (entries_[i].value + entries_[i + 1].value) * 0.5;
            }
        }
        return Lookup(h);
    }

    /// By position from 0, for lists without weights.
    double operator[](std::size_t position) const { return entries_[position].value; }
    std::size_t Size() const { return entries_.size(); }
    std::int64_t TotalWeight() const { return cumulative_.back(); }

    static PlainWeightedList OfWalshAverages(const std::vector<WeightedDifference>& values) {
        PlainWeightedList list;
        for (std::size_t i = 0; i < values.size(); ++i) {
            for (std::size_t j = i; j < values.size(); ++j) {
                const std::int64_t wi = values[i].weight;
                const std::int64_t weight = j > i ? values[j].weight * wi : (wi + 1) * wi / 2;
                list.Add((values[j].difference + values[i].difference) * 0.5, weight);
            }
        }
        list.Close();
        return list;
    }

    static PlainWeightedList OfDifferences(const std::vector<WeightedDifference>& minuends,
                                           const std::vector<WeightedDifference>& subtrahends) {
        PlainWeightedList list;
        for (const auto& [a, weightOfA] : minuends) {
            for (const auto& [b, weightOfB] : subtrahends) list.Add(a - b, std::int64_t{weightOfA} * weightOfB);
        }
        list.Close();
        return list;
    }

 private:
    struct Entry {
        double value;
        std::int64_t weight;
    };
    std::vector<Entry> entries_;
    std::vector<std::int64_t> cumulative_;
};
