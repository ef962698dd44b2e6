#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "host/beyond/exact/ExactTails.h"

namespace tarn {

/// How many cases differ so much in their two scores, whatever the sign.
struct CountedDifference {
    double difference = 0;  ///< above 0; those of 0 don't matter
    std::int64_t count = 0;
};

/// Significances of a sum of differences of paired scores where each difference has either sign with the same
/// probability, as the test of marginal homogeneity takes it (Agresti, 1983, Biometrics 39, 505-510), or Fisher's
/// randomisation test of pairs (Fisher, 1935, The Design of Experiments, section 21). `sum`: the observed one, with the
/// signs. Found by the shift algorithm (Streitberg and Roehmel, 1986, Statistical Software Newsletter 12, 10-17).
///
/// Nothing where the differences have no common measure, of which each is a whole multiple within 1e-9 of the measure,
/// where their multiples add up to more than 2^24, and where the sum is none that these differences could have.
std::optional<ExactTails> MarginalHomogeneityExact(const std::vector<CountedDifference>& differences, double sum);

/// About how many steps that takes, at 1e8 a second; infinite where there is nothing to be found.
double MarginalHomogeneityExactSteps(const std::vector<CountedDifference>& differences, double sum);

}  // namespace tarn
