#pragma once

#include <cstdint>
#include <optional>

#include "support/Arithmetic.h"

/// The significance of a number of runs of two groups whose order is random. n1 and n2 are the sizes of the groups.
///
/// Source: Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162; Swed and Eisenhart (1943), Annals
/// of Mathematical Statistics 14, 66-87.

/// A normal statistic and its standard error.
struct RunsStatistic {
    double standardError;
    double z;
};

/// Nothing if the variance is not above 0.
std::optional<RunsStatistic> RunsNormalStatistic(std::int64_t runs, std::int64_t n1, std::int64_t n2,
                                                 const Arithmetic& arithmetic);

/// The share of the arrangements with at most that many runs. Nothing if a binomial coefficient is no number.
std::optional<double> RunsExactSignificance(std::int64_t runs, std::int64_t n1, std::int64_t n2);
