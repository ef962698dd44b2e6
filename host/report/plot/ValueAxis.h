#pragma once

#include <string>
#include <vector>

namespace tarn {

/// A mark of an axis and the number beside it.
struct AxisTick {
    double value = 0;
    std::string text;
};

/// An axis of numbers: where it begins and ends, and its ticks, which lie at 1, 2, 2.5 or 5 times a power of ten (after
/// Heckbert, 1990, Nice numbers for graph labels, Graphics Gems, 61-63).
struct ValueAxis {
    double from = 0;
    double to = 1;
    std::vector<AxisTick> ticks;

    /// Where a value lies: 0 at the beginning, 1 at the end.
    double ShareOf(double value) const { return (value - from) / (to - from); }
};

/// How an axis is made of the data.
struct AxisWish {
    double lowest = 0;
    double highest = 0;
    std::size_t mostTicks = 6;
    /// Whether it begins and ends at ticks; else a little beyond the data.
    bool endsAtTicks = false;
};

/// The axis of finite values. Where they are one value it reaches to both sides of it.
ValueAxis AxisOf(const AxisWish& wish);

}  // namespace tarn
