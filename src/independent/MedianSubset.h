#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "platform/common/QKMV.h"
#include "platform/common/Truncation.h"
#include "support/Arithmetic.h"
#include "support/QKUnivariateVariable.h"

/// What decides between two groups in place of Pearson's chi-square.
struct FourfoldSignificance {
    bool isExact;      ///< Fisher's, for few cases; else of the chi-square corrected for continuity
    double chiSquare;  ///< the corrected one
    double sig;
};

/// Some of the groups of a median test: their common median, the table of cases above it and not above it, and what
/// comes out of the table.
class MedianSubset {
 public:
    /// A category that is not in the subset.
    static constexpr std::int32_t kNotInside = -1;
    static constexpr std::size_t kNotAbove = 0;
    static constexpr std::size_t kAbove = 1;

    /// Borrows `by`.
    explicit MedianSubset(const Arithmetic& by) : arithmetic(&by) {}

    /// Takes the groups of these sizes, by their categories, out of `categoryCount`; empties the table.
    void SetGroups(const std::vector<std::int32_t>& categories, std::vector<double> groupSizes,
                   std::int32_t categoryCount);
    /// The place of a category in the subset.
    std::int32_t PlaceOf(std::int32_t category) const { return positionOf[static_cast<std::size_t>(category)]; }

    /// A value in ascending order, towards the median of the subset.
    void AddToMedian(double value, double weight);
    /// The same for many values; `weights` null: each is 1.
    void AddToMedian(const double* values, const std::int32_t* weights, std::size_t count);
    /// The position of the median among the cases, from 1 on.
    double MedianPosition() const { return (static_cast<double>(arithmetic->Truncated(totalN)) + 1) * 0.5; }
    /// Whether no further value matters.
    bool HasMedian() const { return !QKMV::IsMissing(quantiles.GetMedian()); }
    /// Takes the median of what was added; 0 if there was nothing.
    void FinishMedian();
    void SetMedian(double given) { median = given; }
    /// Counts a case of the group at a place: above only if strictly so.
    void Count(double value, std::int32_t weight, std::int32_t place) {
        counts[value > median ? kAbove : kNotAbove][static_cast<std::size_t>(place)] += weight;
    }

    /// The same for many; `places`: negative for a case outside the subset.
    void Count(const double* values, const std::int32_t* weights, const std::int32_t* places, std::size_t count);
    void AddCounts(std::size_t place, double notAbove, double above) {
        counts[kNotAbove][place] += notAbove;
        counts[kAbove][place] += above;
    }

    std::size_t GroupCount() const { return sizes.size(); }
    double TotalN() const { return totalN; }
    double Median() const { return median; }
    const std::vector<double>& Counts(std::size_t row) const { return counts[row]; }
    double RowTotal(std::size_t row) const;
    std::size_t GroupsWithCases() const;

    /// How good the approximation by a chi-square distribution is.
    struct ExpectedCells {
        bool anyBelowOne = false;
        bool manyBelowFive = false;  ///< more than a quarter of the cells
    };
    /// Pearson's chi-square of the table and its significance.
    ExpectedCells ComputeChiSquare();
    /// Of a subset of two groups.
    FourfoldSignificance CompareTwoGroups() const;

    bool degenerate = false;
    double chiSquare = 0;
    double sig = 0;

 private:
    const Arithmetic* arithmetic;
    std::vector<std::int32_t> positionOf;
    std::vector<double> sizes;
    double totalN = 0;
    double median = 0;
    std::vector<double> counts[2];
    QKContUnivariateVariable quantiles{-1, -1};
};

/// A table of two rows and two columns: cases not above and above a median, in two groups.
struct FourfoldTable {
    double notAbove1;
    double notAbove2;
    double above1;
    double above2;
};

/// Two-tailed significance of Fisher's exact test: the tail on the side of the observed table, and of the other tail
/// the tables that are no more probable, by a tolerance of 1e-14. Source: Fisher (1935), Journal of the Royal
/// Statistical Society 98, 39-82.
double FisherExactSignificance(const FourfoldTable& table, const Arithmetic& arithmetic);

/// Chi-square with continuity correction, of n / 2; by the textbook of no more than there is to correct. Source: Yates
/// (1934), Supplement to the Journal of the Royal Statistical Society 1, 217-235.
double YatesChiSquare(const FourfoldTable& table, const Arithmetic& arithmetic);
