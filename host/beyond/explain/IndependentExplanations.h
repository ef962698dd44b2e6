#pragma once

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

// ---- Two groups ----

/// The ranks of both groups together, U of the first one, and the arrangements for the exact significance.
void ExplainMannWhitney(const ExplainedTest& test);
/// Both distribution functions at each value.
void ExplainKolmogorovSmirnovTwoSample(const ExplainedTest& test);
/// The fewest and the most runs that the order within ties allows.
void ExplainWaldWolfowitz(const ExplainedTest& test);
/// The span of the control group, whole and trimmed.
void ExplainMoses(const ExplainedTest& test);
/// All differences of the two groups.
void ExplainHodgesLehmannGroups(const ExplainedTest& test);

// ---- Several groups ----

/// The ranks of all groups together, and their pairs.
void ExplainKruskalWallis(const ExplainedTest& test);
/// The counts of the pairs of cases that rise with the groups.
void ExplainJonckheereTerpstra(const ExplainedTest& test);
/// The cases above the common median.
void ExplainMedian(const ExplainedTest& test);

}  // namespace tarn
