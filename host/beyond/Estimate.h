#pragma once

#include <limits>

namespace tarn {

/// A number that was estimated and its confidence interval; no number where there is none.
struct Estimate {
    double value = std::numeric_limits<double>::quiet_NaN();
    double lower = std::numeric_limits<double>::quiet_NaN();
    double upper = std::numeric_limits<double>::quiet_NaN();
};

}  // namespace tarn
