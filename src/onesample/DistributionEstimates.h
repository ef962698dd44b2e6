#pragma once

#include <cstdint>
#include <memory>
#include <span>

#include "onesample/TheoreticalDistribution.h"
#include "platform/common/QKStatus.h"
#include "support/QKUnivariateVariable.h"

/// The parameters of a distribution that come from the sample: those that were not given. Of a range with one end
/// missing both ends are estimated.
class DistributionEstimates {
 public:
    /// Finds out what is to be estimated. An error of the test takes away the range, but not that of a uniform
    /// distribution. 220002 without memory. Borrows `arithmetic`.
    QKStatus Choose(const TheoreticalDistribution& distribution, int variableIndex, int weightIndex, bool hasError,
                    const Arithmetic& arithmetic);

    /// `weights`: those of the values, truncated.
    void Add(std::span<const double> values, const std::int32_t* weights);
    QKStatus EndPass();
    /// Writes the estimates into the distribution.
    void TakeInto(TheoreticalDistribution& distribution) const;

    bool HasRange() const { return rangeFromSample; }

 private:
    /// What came of an estimate that is used is the test's, and not what came of one beside it.
    Departure DepartureOfUsed() const;

    const Arithmetic* testArithmetic = nullptr;
    Arithmetic ownArithmetic;
    bool rangeFromSample = false;
    bool meanFromSample = false;
    bool stdDevFromSample = false;
    /// Null where nothing is to be estimated.
    std::unique_ptr<QKContUnivariateVariable> sampleStatistics;
};
