#pragma once

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <iomanip>
#include <sstream>

/// Doubles that have to agree but for a few roundings: EXPECT_TRUE(harness::WithinUlp(actual, expected, 4)).
///
/// One unit in the last place is between 1.1e-16 and 2.2e-16 of the value, so that a relative bound b becomes
/// b / 2.2e-16 units if it is not to grow. Where an error doesn't shrink with the value, as that of one minus a lower
/// tail, an absolute bound says so better.
namespace harness {

/// The bound of two numbers of which each is rounded to 15 digits, as documents have them: half a unit of the 15th,
/// twice.
inline constexpr std::uint64_t kUlpsOfFifteenDigits = 45;

/// How many steps of `nextafter` lie between two numbers that are not NaN. 0 and -0 are the same place, and infinity
/// is one step behind the largest double.
inline std::uint64_t UlpsBetween(double a, double b) {
    // Of one sign the bits ascend with the value.
    const auto place = [](double x) { return std::bit_cast<std::uint64_t>(std::fabs(x)); };
    if (std::signbit(a) != std::signbit(b)) return place(a) + place(b);
    return place(a) > place(b) ? place(a) - place(b) : place(b) - place(a);
}

/// NaN is near nothing, itself included.
inline testing::AssertionResult WithinUlp(double actual, double expected, std::uint64_t ulps) {
    std::ostringstream numbers;
    numbers << std::setprecision(17) << "actual   " << actual << "\nexpected " << expected << "\n";
    if (std::isnan(actual) || std::isnan(expected))
        return testing::AssertionFailure() << numbers.str() << "not a number";
    const std::uint64_t distance = UlpsBetween(actual, expected);
    return testing::AssertionResult(distance <= ulps)
           << numbers.str() << "distance " << distance << " in units in the last place, at most " << ulps << " allowed";
}

}  // namespace harness
