#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "independent/PairRankSum.h"

/// Some of the groups of a Jonckheere-Terpstra test in their order: what is gathered from the records, in ascending
/// order of the test field, and what comes out.
class JonckheereSubset {
 public:
    static constexpr std::int32_t kNotInside = -1;

    /// Takes the groups of these sizes, in the order of the subset; empties all that was gathered.
    void SetGroups(std::vector<double> groupSizes);
    /// Takes a record of the group at a place; only the pairs of that group are visited.
    void Add(double value, std::int32_t weight, std::size_t place);
    /// Computes `j`, `mean`, `standardError` and `z` from what was gathered.
    void Compute();

    std::size_t GroupCount() const { return sizes.size(); }
    double TotalN() const { return totalN; }
    bool HasEmptyGroup() const;

    std::vector<std::int32_t> members;     ///< the two categories of a pair
    std::vector<std::int32_t> positionOf;  ///< per category its place in the subset, or `kNotInside`
    std::vector<double> sizes;

    bool degenerate = false;
    double j = 0;
    double mean = 0;
    double standardError = 0;
    double z = 0;
    double sigTwoTail = 0;   ///< of the overall test
    double sigDirected = 0;  ///< of a comparison
    double adjustedSig = 0;

 private:
    PairRankSum& PairAt(std::size_t first, std::size_t second);
    void CloseTie();

    double totalN = 0;
    std::vector<PairRankSum> pairs;  // row by row: each place with those behind it
    double tieValue = 0;
    double tieWeight = 0;
    // Over the runs of t equal values: sum of t (t - 1), and of t^2 (t - 1), which a double rounds from 262,147 on.
    long double pairsTied = 0;
    long double triplesTied = 0;
};

/// The variance of J among groups of these sizes (each at least 0), with `pairsTied` and `triplesTied` as above, for
/// a total of at least 3 (Kendall and Gibbons, 1990, Rank Correlation Methods, chapter 4). It is formed without
/// rounding as long as the total allows it, so that it is 0, and not a small number, where it should be.
double JonckheereVariance(const std::vector<double>& sizes, long double pairsTied, long double triplesTied);
