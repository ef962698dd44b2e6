#pragma once

#include <optional>

#include "platform/common/QKMV.h"
#include "support/Arithmetic.h"

enum class DistributionKind { kUniform, kPoisson, kNormal, kExponential };

/// Whether a value can come from a distribution: `kOutside` its range, or, for Poisson, no whole number from 0 on.
enum class ValueFit { kGood, kOutside, kNoCount };

/// P(X <= x) of the Poisson distribution for values that ascend: each one goes on with the sum of the one before, so
/// that a whole walk over the data costs no more than its largest value. To the last bit the same as sums made anew.
class PoissonCdf {
 public:
    explicit PoissonCdf(double poissonMean);

    /// The missing double if a term has no value. A value may also be 1 below the one before.
    double At(double x);

 private:
    bool AddTerm();
    void Restart();

    double mean;
    double logMean;
    double next = 0;  // the number of the next term
    double sum = 0;
    double sumBefore = 0;    // without the last term
    bool isSettled = false;  // all further terms are too small to change the sum
    bool hasFailed = false;
};

/// A distribution function with its parameters, which are missing until they are given or estimated.
class TheoreticalDistribution {
 public:
    DistributionKind kind = DistributionKind::kNormal;
    double minimum = QKMV::Missing();
    double maximum = QKMV::Missing();
    double mean = QKMV::Missing();
    double stdDev = QKMV::Missing();

    /// No value is outside the range of a uniform distribution that will be estimated from it.
    ValueFit FitOf(double value, bool isRangeEstimated) const;
    /// Takes the normal distribution of the same mean and variance in place of the Poisson one, which stays the kind.
    void ApproximateByNormal();
    /// P(X <= x); the missing double if it has no value. Poisson: once the mean is final, and for ascending values.
    double Cdf(double x, const Arithmetic& arithmetic);

 private:
    bool isApproximated = false;
    std::optional<PoissonCdf> poisson;
};
