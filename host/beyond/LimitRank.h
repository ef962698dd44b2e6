#pragma once

#include <vector>

#include "host/beyond/DifferenceMatrix.h"

namespace tarn {

/// How many arrangements without ties have each value 0, 1, ... of U, of all (n1 + n2)! / (n1! n2!) (Mann and Whitney,
/// 1947, Annals of Mathematical Statistics 18, 50-60). Exact up to n1 + n2 = 50.
std::vector<double> ArrangementsOfU(int n1, int n2);

/// How many of the 2^n signings of the ranks 1 .. n have each sum 0, 1, ... of the positive ones (Wilcoxon, 1945,
/// Biometrics Bulletin 1, 80-83). Exact up to n = 50.
std::vector<double> SigningsOfRankSum(int n);

/// The largest C with P(statistic < C) <= (1 - level) / 2, by counts of a distribution that is symmetric; 0 where none
/// of 1 and above is.
PairCount ExactLimitRank(const std::vector<double>& counts, double level);

/// The whole part of mean - z deviation; 0 where it is below 1.
PairCount NormalLimitRank(long double mean, long double deviation, double level);

}  // namespace tarn
