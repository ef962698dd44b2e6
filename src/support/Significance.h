#pragma once

#include <cmath>

#include "platform/common/QKDistFun.h"

/// An exact binomial significance is computed for fewer cases than this.
inline constexpr int kExactBelow = 26;

/// Moves the difference between an observed and an expected count towards zero by 0.5; a difference of at most 0.5
/// gives exactly 0. Source: Yates (1934), Supplement to the Journal of the Royal Statistical Society 1, 217-235.
inline double CorrectForContinuity(double difference) {
    if (difference < -0.5) return difference + 0.5;
    if (difference > 0.5) return difference - 0.5;
    return 0.0;
}

/// Two-tailed significance of a standard normal statistic. The upper tail is one minus the lower one, so that it is
/// exactly 0 from about 8.3 on.
inline double TwoTailedNormal(double z) {
    return 2 * (1 - QKMath::QKDistFun::CdfStdNorm(std::fabs(z)));
}

/// Significance of a chi-square statistic: one minus the lower tail, too.
inline double ChiSquareSig(double statistic, double degreesOfFreedom) {
    return 1 - QKMath::QKDistFun::CdfChi(statistic, degreesOfFreedom);
}
