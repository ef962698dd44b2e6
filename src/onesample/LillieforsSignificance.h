#pragma once

#include <cstdint>

#include "support/Arithmetic.h"

/// The significance of a difference D between the distribution of n values and the normal one that has their mean and
/// standard deviation.
struct LillieforsSignificance {
    /// The missing double for n below 5.
    double value;
    /// Whether the significance is at least `value`, and no more is known.
    bool isFloor = false;

    bool operator==(const LillieforsSignificance&) const = default;
};

/// Below 0.1 by the formula of Dallal and Wilkinson, above it between critical values of tables.
LillieforsSignificance LillieforsSignificanceOf(std::int64_t n, double difference, const Arithmetic& arithmetic);
