#pragma once

#include <limits>

/// The system-missing value of continuous fields. A categorical field marks a missing value by `kMissingCategory`.
class QKMV {
 public:
    static constexpr double Missing() { return -std::numeric_limits<double>::max(); }
    static constexpr bool IsMissing(double value) { return value == Missing(); }
};

/// The category index that stands for a missing value of a categorical field.
inline constexpr double kMissingCategory = -1.0;
