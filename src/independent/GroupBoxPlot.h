#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"

/// The box plot of one group: quartiles, fences at 1.5 times the distance of the quartiles, and the values outside.
///
/// Two passes over the group's values, in ascending order over all calls: `AddAscendingToQuantiles`, then `Finish`;
/// `AddAscendingToOutliers`.
///
/// Source: Tukey (1977), Exploratory Data Analysis.
class GroupBoxPlot {
 public:
    /// `groupCount`: sum of the truncated weights of the group.
    explicit GroupBoxPlot(std::int64_t groupCount) : count(groupCount) {}

    /// `weights`: null: each is 1.
    void AddAscendingToQuantiles(const double* values, const std::int32_t* weights, std::size_t size);
    void Finish();
    /// `caseIds`: null: there are none.
    void AddAscendingToOutliers(const double* values, const double* caseIds, std::size_t size);

    /// After `Finish`.
    double Median() const { return quantiles.GetMedian(); }

    /// Writes the tables "Box" and "Outliers".
    void AddTables(StructuredTable& group) const;

 private:
    void AddToOutliers(double value, const double* caseId);
    void TakeSmallest(double value);
    void TakeLargest(double value);

    std::int64_t count;
    QKContUnivariateVariable quantiles{-1, -1};
    std::vector<double> highOutliers;
    std::vector<double> highOutlierIds;
    std::vector<double> lowOutliers;
    std::vector<double> lowOutlierIds;
    double lowerFence = 0;
    double upperFence = 0;
    double smallestNonOutlier = std::numeric_limits<double>::max();
    double largestNonOutlier = std::numeric_limits<double>::lowest();
};
