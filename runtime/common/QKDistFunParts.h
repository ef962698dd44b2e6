#pragma once

#include <algorithm>
#include <cmath>
#include <limits>

#include "platform/common/QKMV.h"
#include "runtime/common/MathPolicy.h"

/// What the sources of `QKDistFun` share: its domains and its results. The functions themselves are in
/// QKDistFunNormal.cpp, QKDistFunGammaBeta.cpp (what is made of the incomplete gamma and beta functions) and
/// QKDistFunDiscrete.cpp.
namespace QKMath {

inline constexpr double kInfinity = std::numeric_limits<double>::infinity();
inline constexpr WorkReal kTwoPi = 6.283185307179586476925286766559006L;

inline bool IsPositiveFinite(double value) {
    return value > 0 && std::isfinite(value);
}
inline bool IsProbability(double value) {
    return value >= 0 && value <= 1;
}

/// A calculated probability as a result: rounding may have left it beyond an end, a failure made it a NaN.
inline double ProbabilityResult(WorkReal value) {
    if (std::isnan(value)) return QKMV::Missing();
    return static_cast<double>(std::clamp<WorkReal>(value, 0, 1));
}

inline double QuantileResult(WorkReal value) {
    return std::isnan(value) ? QKMV::Missing() : static_cast<double>(value);
}

/// The x with P(X <= x) = p of the standard normal distribution.
WorkReal StdNormQuantile(WorkReal p);

}  // namespace QKMath
