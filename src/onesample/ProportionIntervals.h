#pragma once

#include <cstdint>
#include <optional>

#include "support/Arithmetic.h"

/// Confidence intervals for the probability behind the share of `first` among first + second trials.

struct ProportionCounts {
    std::int64_t first = 0;
    std::int64_t second = 0;

    double Total() const { return static_cast<double>(first + second); }
    double Share() const { return static_cast<double>(first) / Total(); }
};

struct ProportionInterval {
    double lower = 0;
    double upper = 0;
};

/// Source: Clopper and Pearson (1934), Biometrika 26, 404-413; by quantiles of the F distribution.
ProportionInterval ClopperPearsonInterval(const ProportionCounts& counts, double confidenceLevel,
                                          const Arithmetic& arithmetic);

/// The equal-tailed interval of the posterior distribution under Jeffreys' prior, its outer limit at the end of the
/// scale where a class is empty. Source: Brown, Cai and DasGupta (2001), Statistical Science 16, 101-133.
ProportionInterval JeffreysInterval(const ProportionCounts& counts, double confidenceLevel,
                                    const Arithmetic& arithmetic);

/// The probabilities at which the log likelihood lies less than half a chi-square quantile below its maximum. Nothing
/// where the exponential function fails. Source: Venzon and Moolgavkar (1988), Applied Statistics 37, 87-94.
std::optional<ProportionInterval> ProfileLikelihoodInterval(const ProportionCounts& counts, double confidenceLevel,
                                                            const Arithmetic& arithmetic);

/// One limit of that interval, from a start t: damped Newton steps, of which each one that leaves the scale or doesn't
/// come nearer halves the next ones. After 20 such steps the trial value is the result as it stands, even outside 0..1.
/// `drop` is how far the log likelihood falls from its maximum to the limit.
double SolveProfileLimit(const ProportionCounts& counts, double drop, double start);
/// The same limit to the last digit, `side` -1 for the lower one and 1 for the upper one. Neither class is empty.
long double PreciseProfileLimit(const ProportionCounts& counts, double drop, int side);
