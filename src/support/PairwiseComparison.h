#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <vector>

#include "support/Arithmetic.h"

/// All pairs of k samples, compared with Bonferroni's factor (Dunn, 1961, Journal of the American Statistical
/// Association 56, 52-64). A test supplies its statistic; `ComparisonTables` shows the pairs.

/// A compared pair.
struct PairRecord {
    std::int32_t sample1 = 0;  ///< position in the test's list of samples, below `sample2`
    std::int32_t sample2 = 0;
    double testStatistic = 0;
    double standardError = 0;
    double standardTestStatistic = 0;
    double sig = 0;
    double adjSig = 0;
    bool untestable = false;  ///< the values are not there
};

/// A pair of `sampleCount` samples whose statistic is normal: the rest of its record.
PairRecord MakeNormalPair(std::int32_t sample1, std::int32_t sample2, double testStatistic, double standardError,
                          std::size_t sampleCount, const Arithmetic& arithmetic);

/// All pairs of `sampleCount` samples with one standard error; `difference` is the statistic of two samples.
std::vector<PairRecord> CompareNormalPairs(std::size_t sampleCount, double standardError,
                                           const std::function<double(std::size_t, std::size_t)>& difference,
                                           const Arithmetic& arithmetic);

/// Bonferroni's adjustment for all pairs of `sampleCount` samples, at most 1.
double AdjustForPairs(double sig, std::size_t sampleCount);
/// The same where the number of pairs is formed first, in 32 bits by definition: above 46341 samples it wraps around.
double AdjustByPairCount(double sig, std::int32_t sampleCount, const Arithmetic& arithmetic);
