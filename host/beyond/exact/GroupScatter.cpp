#include "host/beyond/exact/GroupScatter.h"

#include <algorithm>
#include <cmath>
#include <numeric>

namespace tarn {

namespace {

constexpr long double kEqualWithin = 1e-12L;

/// The smallest common multiple; 0 where it is beyond 2^60.
std::int64_t CommonMultiple(const std::vector<std::int64_t>& sizes) {
    constexpr std::int64_t kMost = std::int64_t{1} << 60;
    std::int64_t multiple = 1;
    for (const std::int64_t size : sizes) {
        const std::int64_t factor = std::max<std::int64_t>(1, size / std::gcd(multiple, size));
        if (multiple > kMost / factor) return 0;
        multiple *= factor;
    }
    return multiple;
}

template <typename Number>
int Sign(Number one, Number other) {
    return static_cast<int>(one > other) - static_cast<int>(one < other);
}

}  // namespace

GroupScatter::GroupScatter(const std::vector<std::int64_t>& sizes, const std::vector<std::int64_t>& observed,
                           std::int64_t largestScore) {
    constexpr int kWordBits = 62;
    constexpr int kWideBits = 126;
    const std::int64_t multiple = CommonMultiple(sizes);
    const double cases = std::accumulate(sizes.begin(), sizes.end(), 0.0);
    const double score = static_cast<double>(largestScore);
    const double most = static_cast<double>(multiple) * cases * score * score;  // squared size * score, over the size
    if (multiple == 0 || most >= std::ldexp(1.0, kWideBits)) {
        width_ = Width::kFloating;
        for (const std::int64_t size : sizes) floatingWeights_.push_back(1 / static_cast<long double>(size));
        floatingObserved_ = Of(observed.data(), floatingWeights_);
    } else if (most >= std::ldexp(1.0, kWordBits)) {
        width_ = Width::kWide;
        for (const std::int64_t size : sizes) wideWeights_.push_back(multiple / size);
        wideObserved_ = Of(observed.data(), wideWeights_);
    } else {
        for (const std::int64_t size : sizes) wordWeights_.push_back(multiple / size);
        wordObserved_ = Of(observed.data(), wordWeights_);
    }
}

template <typename Number>
Number GroupScatter::Of(const std::int64_t* distances, const std::vector<Number>& weights) const {
    Number sum = 0;
    for (std::size_t i = 0; i < weights.size(); ++i) {
        const auto distance = static_cast<Number>(distances[i]);
        sum += distance * distance * weights[i];
    }
    return sum;
}

int GroupScatter::CompareWithObserved(const std::int64_t* distances) const {
    if (width_ == Width::kWord) return Sign(Of(distances, wordWeights_), wordObserved_);
    if (width_ == Width::kWide) return Sign(Of(distances, wideWeights_), wideObserved_);
    const long double scatter = Of(distances, floatingWeights_);
    if (std::fabs(scatter - floatingObserved_) <= kEqualWithin * std::max(scatter, floatingObserved_)) return 0;
    return Sign(scatter, floatingObserved_);
}

}  // namespace tarn
