#pragma once

#include <cstddef>
#include <cstdint>
#include <limits>
#include <string>

#include "support/Ascending.h"
#include "support/Histogram.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"

/// The values of one group as a histogram. Two passes: the first one extends the range, the second one fills the
/// histogram over it.
class GroupHistogram {
 public:
    /// First pass: takes part whatever the weight of the record.
    void ExtendRange(double value) {
        if (value < groupMin) groupMin = value;
        if (value > groupMax) groupMax = value;
    }
    /// The same for values in ascending order.
    void ExtendRangeAscending(const double* values, std::size_t count) {
        if (count == 0) return;
        ExtendRange(values[0]);
        ExtendRange(HighestOfAscending(values, count));
    }
    double Min() const { return groupMin; }
    double Max() const { return groupMax; }

    /// Second pass.
    void Begin() { variable.GetHistogram().SetUp(groupMin, groupMax, Histogram::kDefaultBins); }
    void Add(double value, std::int32_t weight) { variable.GetHistogram().Add(value, weight); }
    /// The same for values in ascending order, also over all calls. `weights`: null: each is 1.
    void AddAscending(const double* values, const std::int32_t* weights, std::size_t count) {
        variable.GetHistogram().AddAscending(values, weights, count);
    }
    void End() { variable.GetHistogram().Close(); }

    /// Writes the table "Interval".
    void AddIntervals(StructuredTable& group) const {
        std::string counts;
        std::string values;
        group.Add(MakeIntervalTable(variable.GetBins(), counts, values));
    }

 private:
    double groupMin = std::numeric_limits<double>::max();
    double groupMax = std::numeric_limits<double>::lowest();
    QKContUnivariateVariable variable{-1, -1};
};
