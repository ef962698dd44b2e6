#pragma once

#include <limits>

namespace QKMath {

/// Comparisons and powers with a specified answer at the limits of the double.
class QKPower {
 public:
    /// The distance from 1 to the next double.
    static constexpr double gMachineEpsilon = std::numeric_limits<double>::epsilon();

    /// |a - b| <= eps * max(1, |a|, |b|).
    static bool AlmostEqual(double a, double b, double eps);
    /// Whether x is a whole number that 2 divides.
    static bool IsEvenInteger(double x);
    /// exp(x) into `out`. 0: good. 1: underflow, `out` is 0. 2: overflow or NaN, `out` is the missing double.
    static int Exponent(double x, double& out);
};

}  // namespace QKMath
