#pragma once

#include <cstdint>

namespace tarn {

/// The lower tail of Mann and Whitney's U without ties for groups that are too large for the shift algorithm.
///
/// The probabilities of U are the coefficients of a product of (1 - z^(n+i)) / (1 - z^i) for i from 1 to m (Mann and
/// Whitney, 1947, Annals of Mathematical Statistics 18, 50-60). Their sum up to u is an integral around a circle
/// (Cauchy), whose radius is chosen so that the terms at u have the largest weight (Daniels, 1954, Annals of
/// Mathematical Statistics 25, 631-650). The trapezoidal rule has no other error there than terms that lie a whole
/// round further, for which the number of its points is chosen. All is found to a relative error below 1e-11.
class UntiedRankSum {
 public:
    /// Both groups have `kFewest` cases or more; `u` lies from 0 to firstCount * secondCount / 2.
    UntiedRankSum(std::int64_t firstCount, std::int64_t secondCount, std::int64_t u);

    static constexpr std::int64_t kFewest = 50;

    /// The chance of a U of `u` or less.
    double LowerTail() const;
    /// About how many additions `LowerTail` takes.
    double Cost() const;

 private:
    std::int64_t smaller_;
    std::int64_t larger_;
    std::int64_t u_;
    double rate_ = 0;           ///< The radius is exp(-rate).
    long double logScale_ = 0;  ///< of the integrand where it meets the real axis
    std::int64_t points_ = 0;
    bool areAllNeeded_ = true;  ///< and not only those near the real axis
};

}  // namespace tarn
