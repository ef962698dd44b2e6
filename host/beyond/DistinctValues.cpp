#include "host/beyond/DistinctValues.h"

namespace tarn {

namespace {

std::size_t CountDistinct(std::span<const double> values) {
    std::size_t count = values.empty() ? 0 : 1;
    for (std::size_t i = 1; i < values.size(); ++i) count += static_cast<std::size_t>(values[i] != values[i - 1]);
    return count;
}

}  // namespace

DistinctValues::DistinctValues(const AscendingSample& sample)
    : DistinctValues(sample.values, sample.weights, sample.size) {}

DistinctValues::DistinctValues(std::span<const double> values, std::span<const double> weights, double cases)
    : size_(CountDistinct(values)), cases_(cases) {
    if (size_ < values.size()) {
        Gather(values, weights);
        values_ = ownValues_.data();
        counts_ = ownCounts_.data();
    } else {
        values_ = values.data();
        counts_ = weights.empty() ? nullptr : weights.data();
    }
}

void DistinctValues::Gather(std::span<const double> values, std::span<const double> weights) {
    ownValues_ = LargeArray<double>(size_);
    ownCounts_ = LargeArray<double>(size_);
    std::size_t place = 0;
    double cases = 0;
    double last = values[0];
    // No step reads what an earlier one wrote, or has a jump that could be foretold wrongly.
    for (std::size_t i = 0; i < values.size(); ++i) {
        place += static_cast<std::size_t>(values[i] != last);
        last = values[i];
        cases += weights.empty() ? 1.0 : weights[i];
        ownValues_[place] = last;
        ownCounts_[place] = cases;
    }
    for (std::size_t i = size_ - 1; i > 0; --i) ownCounts_[i] -= ownCounts_[i - 1];
}

}  // namespace tarn
