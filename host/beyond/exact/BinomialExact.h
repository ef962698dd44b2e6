#pragma once

#include <cstdint>

#include "host/beyond/exact/ExactTails.h"

namespace tarn {

// Where both outcomes are expected more than 2^32 times, numbers come from the saddlepoint approximation, the relative
// error of which is below 1e-9 there.

/// Exact significances of the number of positive differences among those that are not zero, where positive and negative
/// ones are equally likely. `greater` is small where positive ones prevail. All are 1 where there are no differences.
/// (Dixon and Mood, 1946, Journal of the American Statistical Association 41, 557-566.)
ExactTails SignExact(std::int64_t positive, std::int64_t negative);

/// The same of the two kinds of change in pairs of answers (McNemar, 1947, Psychometrika 12, 153-157): `greater` is
/// small where the first kind prevails.
ExactTails McNemarExact(std::int64_t firstChange, std::int64_t secondChange);

/// Exact significances of `count` successes in `trials`, each with `probability`, which lies from 0 to 1. `twoSided`
/// adds up the outcomes that are at most as probable as the observed one. Probabilities that differ by less than 1e-7
/// of themselves count as equal.
ExactTails BinomialExact(std::int64_t count, std::int64_t trials, double probability);

/// All three take this many additions or fewer, at any number of trials.
double BinomialExactCost();

}  // namespace tarn
