#pragma once

#include <cmath>

#include "platform/common/QKDistFun.h"
#include "support/Arithmetic.h"

/// An exact binomial significance is computed for fewer cases than this.
inline constexpr int kExactBelow = 26;

/// Moves the difference between an observed and an expected count towards zero by 0.5; a difference of at most 0.5
/// gives exactly 0. Source: Yates (1934), Supplement to the Journal of the Royal Statistical Society 1, 217-235.
inline double CorrectForContinuity(double difference) {
    if (difference < -0.5) return difference + 0.5;
    if (difference > 0.5) return difference - 0.5;
    return 0.0;
}

/// P(Z > z) of the standard normal distribution. As defined it is one minus the lower tail, so that it is exactly 0
/// from about 8.3 on.
inline double UpperTailOfNormal(double z, const Arithmetic& arithmetic) {
    return arithmetic.UpperTail([=] { return QKMath::QKDistFun::CdfStdNorm(z); },
                                [=] { return QKMath::QKDistFun::SfStdNorm(z); });
}

/// Two-tailed significance of a standard normal statistic.
inline double TwoTailedNormal(double z, const Arithmetic& arithmetic) {
    return 2 * UpperTailOfNormal(std::fabs(z), arithmetic);
}

/// Significance of a chi-square statistic: its upper tail, too.
inline double ChiSquareSig(double statistic, double degreesOfFreedom, const Arithmetic& arithmetic) {
    return arithmetic.UpperTail([=] { return QKMath::QKDistFun::CdfChi(statistic, degreesOfFreedom); },
                                [=] { return QKMath::QKDistFun::SfChi(statistic, degreesOfFreedom); });
}
