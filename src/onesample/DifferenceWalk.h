#pragma once

#include <cstddef>
#include <cstdint>

#include "onesample/TheoreticalDistribution.h"
#include "platform/common/QKMV.h"
#include "support/KolmogorovSignificance.h"

/// The walk over the ascending values of a sample that finds where its distribution function is farthest from a
/// theoretical one. Equal values are one run, and the function has one step for them.
class DifferenceWalk {
 public:
    DifferenceWalk() = default;
    /// `totalN`: the weight of all values to come. Borrows the distribution.
    DifferenceWalk(TheoreticalDistribution& theory, std::int32_t totalN);

    void Add(const double* values, const std::int32_t* weights, std::size_t count);
    /// After the last value.
    void Close();

    const ExtremeDifferences& Extremes() const { return extremes; }

 private:
    double Empirical(double value, std::int32_t count) const;
    void CloseRun();
    void Take(double difference);

    TheoreticalDistribution* distribution = nullptr;
    std::int32_t totalN = 0;
    ExtremeDifferences extremes;
    std::int32_t cumulativeCount = 0;
    std::int32_t runWeight = 0;
    double previousValue = QKMV::Missing();  // of the run being built
    double previousEmpirical = 0;            // behind the run before
};
