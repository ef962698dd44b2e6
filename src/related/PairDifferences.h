#pragma once

#include <cstdint>
#include <limits>

#include "platform/common/Record.h"
#include "support/Histogram.h"
#include "support/QKUnivariateVariable.h"

/// The differences of a pair of fields, second minus first, with their range and histogram. Two passes: the first
/// one extends the range, the second one fills the histogram over it.
class PairDifferences {
 public:
    PairDifferences() = default;
    PairDifferences(int firstField, int secondField)
        : firstVariableIndex(static_cast<std::size_t>(firstField)),
          secondVariableIndex(static_cast<std::size_t>(secondField)) {}

    double Of(const Record& record) const { return record[secondVariableIndex] - record[firstVariableIndex]; }

    /// First pass: takes part whatever the weight of the record, and zero differences too.
    void ExtendRange(double difference);

    /// Second pass.
    void BeginHistogram() { differences.GetHistogram().SetUp(minDifference, maxDifference, Histogram::kDefaultBins); }
    void Add(double difference, std::int32_t weight) { differences.GetHistogram().Add(difference, weight); }
    void EndHistogram() { differences.GetHistogram().Close(); }

    const std::vector<HistogramBin>& Intervals() const { return differences.GetBins(); }

 private:
    std::size_t firstVariableIndex = 0;
    std::size_t secondVariableIndex = 0;
    double maxDifference = std::numeric_limits<double>::lowest();
    double minDifference = std::numeric_limits<double>::max();
    QKContUnivariateVariable differences{-1, -1};
};
