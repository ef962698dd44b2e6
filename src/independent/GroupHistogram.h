#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <limits>
#include <span>
#include <string>

#include "independent/GroupSplit.h"
#include "support/Ascending.h"
#include "support/Histogram.h"
#include "support/QKUnivariateVariable.h"
#include "support/ResultElements.h"

/// The values of one group as a histogram. Two passes: the first one extends the range, the second one fills the
/// histogram over it.
class GroupHistogram {
 public:
    /// Borrows `by`.
    explicit GroupHistogram(const Arithmetic& by = Arithmetic::AsDefined()) : variable(-1, -1, by) {}

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
    QKContUnivariateVariable variable;
};

/// The histograms of two groups. `split` has taken the groups of the records; `values` ascend.
using GroupHistograms = std::array<GroupHistogram, 2>;

/// First pass.
inline void ExtendRanges(const GroupSplit& split, const double* values, GroupHistograms& histograms) {
    for (std::size_t group = 0; group < histograms.size(); ++group) {
        double lowest = 0;
        double highest = 0;
        if (!split.FindRange(static_cast<std::int32_t>(group), values, lowest, highest)) continue;
        histograms[group].ExtendRange(lowest);
        histograms[group].ExtendRange(highest);
    }
}

/// Second pass. `weights` null: each is 1.
inline void FillHistograms(GroupSplit& split, const double* values, const std::int32_t* weights,
                           GroupHistograms& histograms) {
    split.Part(values, weights);
    for (std::size_t group = 0; group < histograms.size(); ++group) {
        const std::span<const double> parted = split.Values(group);
        histograms[group].AddAscending(parted.data(), split.Weights(group), parted.size());
    }
}
