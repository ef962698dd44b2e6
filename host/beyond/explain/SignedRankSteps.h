#pragma once

#include <string>
#include <vector>

#include "host/beyond/explain/ExplainedTest.h"
#include "host/beyond/explain/RankBlocks.h"

namespace tarn {

/// The signed rank test of differences, of one sample or of a pair: the ranks of their magnitudes, the sum of those
/// above 0, its normal approximation. `what`: what the differences are called, "after minus before".
void AddSignedRankSteps(const ExplainedTest& test, const std::string& what, const AscendingSample& differences);

/// The variance of such a sum, with the steps to it: n (n + 1) (2n + 1) / 24 - sum of (t^3 - t) / 48.
double SignedRankVariance(StepWriter& steps, double n, long double tieSum);

}  // namespace tarn
