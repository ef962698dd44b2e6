#include "host/beyond/DistinctValues.h"

#include <vector>

namespace tarn {

namespace {

std::size_t CountDistinct(const std::vector<double>& values) {
    std::size_t count = values.empty() ? 0 : 1;
    for (std::size_t i = 1; i < values.size(); ++i) count += static_cast<std::size_t>(values[i] != values[i - 1]);
    return count;
}

}  // namespace

DistinctValues::DistinctValues(const AscendingSample& sample)
    : size_(CountDistinct(sample.values)), cases_(sample.size) {
    if (size_ < sample.values.size()) {
        Gather(sample);
        values_ = ownValues_.data();
        counts_ = ownCounts_.data();
    } else {
        values_ = sample.values.data();
        counts_ = sample.weights.empty() ? nullptr : sample.weights.data();
    }
}

void DistinctValues::Gather(const AscendingSample& sample) {
    ownValues_ = LargeArray<double>(size_);
    ownCounts_ = LargeArray<double>(size_);
    std::size_t place = 0;
    double cases = 0;
    double last = sample.values[0];
    // No step reads what an earlier one wrote, or has a jump that could be foretold wrongly.
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        place += static_cast<std::size_t>(sample.values[i] != last);
        last = sample.values[i];
        cases += sample.WeightAt(i);
        ownValues_[place] = last;
        ownCounts_[place] = cases;
    }
    for (std::size_t i = size_ - 1; i > 0; --i) ownCounts_[i] -= ownCounts_[i - 1];
}

}  // namespace tarn
