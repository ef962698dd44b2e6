#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <vector>

#include "platform/common/Record.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"

/// The box plot of one group: quartiles, fences at 1.5 times the distance of the quartiles, and the values outside.
///
/// Two passes over the group's records in ascending order: `AddToQuantiles` for each, then `Finish`; `AddToOutliers`
/// for each.
///
/// Source: Tukey (1977), Exploratory Data Analysis.
class GroupBoxPlot {
 public:
    static constexpr int kNoCaseId = -1;

    /// `count`: sum of the truncated weights of the group. Negative indices: no weight field, no case identifiers.
    GroupBoxPlot(std::int32_t count, int variableIndex, int weightIndex, int caseIdIndex);

    void AddToQuantiles(const Record& record);
    void Finish();
    void AddToOutliers(const Record& record);

    /// The same for many values of the group, in ascending order over all calls. `weights`: null: each is 1; `caseIds`:
    /// null: there are none.
    void AddAscendingToQuantiles(const double* values, const std::int32_t* weights, std::size_t size);
    void AddAscendingToOutliers(const double* values, const double* caseIds, std::size_t size);

    /// After `Finish`.
    double Median() const { return quantiles.GetMedian(); }

    /// Writes the tables "Box" and "Outliers".
    void AddTables(StructuredTable& group) const;

 private:
    void AddToOutliers(double value, const double* caseId);
    void TakeSmallest(double value);
    void TakeLargest(double value);

    std::int32_t count;
    int variableIndex;
    int weightIndex;
    int caseIdIndex;
    QKContUnivariateVariable quantiles;
    std::vector<double> highOutliers;
    std::vector<double> highOutlierIds;
    std::vector<double> lowOutliers;
    std::vector<double> lowOutlierIds;
    double lowerFence = 0;
    double upperFence = 0;
    double smallestNonOutlier = std::numeric_limits<double>::max();
    double largestNonOutlier = std::numeric_limits<double>::lowest();
};
