#pragma once

#include <cstdint>
#include <vector>

#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// A table of two groups by two answers.
struct FourfoldTable {
    std::int64_t firstYes = 0;
    std::int64_t firstNo = 0;
    std::int64_t secondYes = 0;
    std::int64_t secondNo = 0;
};

/// Fisher's exact test, by all tables with the same margins (Fisher, 1935, Journal of the Royal Statistical Society 98,
/// 39-82). The statistic is `firstYes`. `twoSided` adds up the tables that are at most as probable as the observed one;
/// probabilities that differ by less than 1e-7 of themselves count as equal.
ExactTails FisherExact(const FourfoldTable& table);

/// About how many additions `FisherExact` takes.
double FisherExactCost(const FourfoldTable& table);

/// Exact significance of the median test: how many cases of each group lie above the common median, and how many don't,
/// given both margins. Two groups: Fisher's, two-sided. More: the chance of a Pearson chi-square as large as the
/// observed one or larger (Freeman and Halton, 1951, Biometrika 38, 141-149), compared in whole numbers as long as they
/// have 125 bits, and otherwise with a relative tolerance of 1e-9.
///
/// The lists have the same length. Empty groups are left out; 1 where fewer than two are left, or all cases are on the
/// same side.
double MedianExact(const std::vector<std::int64_t>& above, const std::vector<std::int64_t>& notAbove);

/// About how many additions `MedianExact` takes at most, which is in proportion to the product of the sizes of the
/// groups but for the largest one.
double MedianExactCost(const std::vector<std::int64_t>& above, const std::vector<std::int64_t>& notAbove);

}  // namespace tarn
