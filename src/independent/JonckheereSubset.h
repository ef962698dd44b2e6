#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "independent/JonckheereWalk.h"
#include "support/Arithmetic.h"
#include "support/WideNumber.h"

/// Some of the groups of a Jonckheere-Terpstra test in their order, and what comes out of the counts of their records.
class JonckheereSubset {
 public:
    /// Takes the groups of these sizes, in the order of the subset.
    void SetGroups(std::vector<double> groupSizes);
    /// Computes `j`, `mean`, `standardError` and `z`.
    void Compute(const JonckheereCounts& counts, const Arithmetic& arithmetic);

    std::size_t GroupCount() const { return sizes.size(); }
    double TotalN() const { return totalN; }
    bool HasEmptyGroup() const;

    bool degenerate = false;
    double j = 0;
    double mean = 0;
    double standardError = 0;
    double z = 0;
    double sigTwoTail = 0;   ///< of the overall test
    double sigDirected = 0;  ///< of a comparison

 private:
    WideNumber PairsOfCases() const;

    std::vector<double> sizes;
    double totalN = 0;
};

/// The variance of J among groups of these sizes (each at least 0), with `pairsTied` and `triplesTied` of their counts,
/// for a total of at least 3 (Kendall and Gibbons, 1990, Rank Correlation Methods, chapter 4). It is formed without
/// rounding as long as the total allows it, so that it is 0, and not a small number, where it should be.
double JonckheereVariance(const std::vector<double>& sizes, long double pairsTied, long double triplesTied);
