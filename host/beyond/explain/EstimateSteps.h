#pragma once

#include "host/beyond/DifferenceMatrix.h"
#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// From where an estimate of Hodges and Lehmann and its limits are taken out of the differences in their order.
struct EstimatePlaces {
    double mean = 0;           ///< the place in the middle, as the expectation of a rank statistic
    double standardError = 0;  ///< of that statistic
};

/// The median of the differences, and those at the places mean -+ q SE, q the normal quantile of the level. `what` they
/// are: "means of two differences". Of an even number the median lies between two of them.
void AddEstimateSteps(const ExplainedTest& test, const std::string& what, const DifferenceMatrix& differences,
                      const EstimatePlaces& places);

}  // namespace tarn
