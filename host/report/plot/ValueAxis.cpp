#include "host/report/plot/ValueAxis.h"

#include <array>
#include <charconv>
#include <cmath>

namespace tarn {

namespace {

/// The shortest step of the nice ones that is not below.
double NiceStep(double step) {
    constexpr std::array kNice{1.0, 2.0, 2.5, 5.0, 10.0};
    constexpr double kSlack = 1 + 1e-9;
    const double power = std::pow(10.0, std::floor(std::log10(step)));
    for (const double nice : kNice) {
        if (step <= nice * power * kSlack) return nice * power;
    }
    return kNice.back() * power;
}

/// How many digits behind the point tell the multiples of a step apart.
int DigitsFor(double step) {
    constexpr int kMostDigits = 12;
    constexpr double kWhole = 1e-6;
    double scaled = step;
    for (int digits = 0; digits < kMostDigits; ++digits, scaled *= 10) {
        if (std::abs(scaled - std::round(scaled)) < kWhole * scaled) return digits;
    }
    return kMostDigits;
}

/// A number of an axis, with the minus of print.
std::string TickText(double value, double step) {
    constexpr double kLargest = 1e6;
    constexpr double kSmallest = 1e-4;
    constexpr int kDigitsOfPower = 4;
    constexpr std::size_t kRoom = 64;
    std::array<char, kRoom> text{};
    const double magnitude = std::abs(value) < step / 2 ? 0 : std::abs(value);
    const bool isPlain = magnitude == 0 || (magnitude < kLargest && step >= kSmallest);
    const auto end = isPlain ? std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                             std::chars_format::fixed, DigitsFor(step))
                             : std::to_chars(text.data(), text.data() + text.size(), magnitude,
                                             std::chars_format::general, kDigitsOfPower);
    const std::string digits(text.data(), end.ptr);
    return value < 0 && magnitude > 0 ? "\xE2\x88\x92" + digits : digits;
}

}  // namespace

ValueAxis AxisOf(const AxisWish& wish) {
    constexpr double kBeyond = 0.04;  // of the range, so that no mark is cut by the frame
    constexpr double kSlack = 1e-9;
    double lowest = wish.lowest;
    double highest = wish.highest;
    if (!(highest > lowest)) {
        const double half = lowest == 0 ? 1 : std::abs(lowest) / 10;
        lowest -= half;
        highest += half;
    }
    const double range = highest - lowest;
    const double step = NiceStep(range / static_cast<double>(wish.mostTicks));
    ValueAxis axis;
    if (wish.endsAtTicks) {
        axis.from = std::floor(lowest / step + kSlack) * step;
        axis.to = std::ceil(highest / step - kSlack) * step;
    } else {
        axis.from = lowest - kBeyond * range;
        axis.to = highest + kBeyond * range;
    }
    const double first = std::ceil(axis.from / step - kSlack);
    const double last = std::floor(axis.to / step + kSlack);
    for (double place = first; place <= last; ++place)
        axis.ticks.push_back({place * step, TickText(place * step, step)});
    return axis;
}

}  // namespace tarn
