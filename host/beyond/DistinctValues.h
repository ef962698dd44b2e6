#pragma once

#include <cstddef>
#include <span>

#include "host/beyond/AscendingSample.h"
#include "machine/LargeArray.h"

namespace tarn {

/// The values of a sample that differ, in ascending order, and how many cases have each of them. A sample whose values
/// all differ is not copied: it has to outlive this object.
class DistinctValues {
 public:
    explicit DistinctValues(const AscendingSample& sample);
    /// Of values in ascending order; `weights` may be empty, and `cases` is their sum.
    DistinctValues(std::span<const double> values, std::span<const double> weights, double cases);
    DistinctValues(const DistinctValues&) = delete;
    DistinctValues& operator=(const DistinctValues&) = delete;

    std::size_t Size() const { return size_; }
    double ValueAt(std::size_t i) const { return values_[i]; }
    double CountAt(std::size_t i) const { return counts_ == nullptr ? 1.0 : counts_[i]; }
    const double* Values() const { return values_; }
    /// Null where each value has one case.
    const double* Counts() const { return counts_; }
    /// How many cases there are.
    double Cases() const { return cases_; }

 private:
    void Gather(std::span<const double> values, std::span<const double> weights);

    LargeArray<double> ownValues_;
    LargeArray<double> ownCounts_;
    const double* values_ = nullptr;
    const double* counts_ = nullptr;
    std::size_t size_ = 0;
    double cases_ = 0;
};

/// Goes through the values of two samples in ascending order, each value once. `visit` takes how many cases of the
/// first and of the second sample have the value, and how many of the first and of the second are smaller.
template <typename Visit>
void WalkTogether(const DistinctValues& first, const DistinctValues& second, Visit visit) {
    std::size_t i = 0;
    std::size_t j = 0;
    double firstBelow = 0;
    double secondBelow = 0;
    // Which sample goes on is a matter of chance, so that a jump would be foretold wrongly half of the time.
    while (i < first.Size() && j < second.Size()) {
        const double x = first.ValueAt(i);
        const double y = second.ValueAt(j);
        const bool isOfFirst = x <= y;
        const bool isOfSecond = y <= x;
        const double ofFirst = first.CountAt(i) * static_cast<double>(isOfFirst);
        const double ofSecond = second.CountAt(j) * static_cast<double>(isOfSecond);
        visit(ofFirst, ofSecond, firstBelow, secondBelow);
        firstBelow += ofFirst;
        secondBelow += ofSecond;
        i += static_cast<std::size_t>(isOfFirst);
        j += static_cast<std::size_t>(isOfSecond);
    }
    for (; i < first.Size(); ++i) {
        visit(first.CountAt(i), 0.0, firstBelow, secondBelow);
        firstBelow += first.CountAt(i);
    }
    for (; j < second.Size(); ++j) {
        visit(0.0, second.CountAt(j), firstBelow, secondBelow);
        secondBelow += second.CountAt(j);
    }
}

}  // namespace tarn
