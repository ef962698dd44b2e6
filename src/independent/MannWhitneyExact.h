#pragma once

#include <cstdint>

#include "support/Arithmetic.h"

/// The two-sided significance of the Mann-Whitney statistic `u` for samples of `n1` and `n2` values without ties, from
/// all their arrangements. Data with ties are looked up in the same table. For sizes below 1 there is no arrangement,
/// and the answer is no number.
///
/// A statistic above the middle n1 n2 / 2 by no more than a whole number takes the lower tail, too, and has the
/// significance 1. By the textbook it is twice the smaller tail.
///
/// Source: the frequencies by Dinneen and Blakesley (1973), Applied Statistics 22, 269-273, algorithm AS 62.
double MannWhitneyExactSignificance(std::int32_t n1, std::int32_t n2, double u, const Arithmetic& arithmetic);
