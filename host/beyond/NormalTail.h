#pragma once

#include <cmath>
#include <numbers>

#include "host/beyond/Alternative.h"

namespace tarn {

/// How probable it is that a standard normal variate is as large as `z` or larger; as small or smaller where less is
/// the alternative; as far from 0, to both sides. It keeps its digits however small it is.
inline double NormalTail(long double z, Alternative alternative) {
    constexpr long double kHalf = 0.5L;
    const long double scaled = z / std::numbers::sqrt2_v<long double>;
    if (alternative == Alternative::kTwoSided) return static_cast<double>(std::erfc(std::abs(scaled)));
    return static_cast<double>(kHalf * std::erfc(alternative == Alternative::kGreater ? scaled : -scaled));
}

}  // namespace tarn
