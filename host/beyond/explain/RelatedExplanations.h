#pragma once

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

// ---- Pairs ----

/// The signs of the differences.
void ExplainSign(const ExplainedTest& test);
/// The ranks of their magnitudes.
void ExplainWilcoxonPairs(const ExplainedTest& test);
/// The mean of each difference with itself and each other one.
void ExplainHodgesLehmannPairs(const ExplainedTest& test);
/// The changes between two classes.
void ExplainMcNemar(const ExplainedTest& test);
/// The scores of the pairs that changed.
void ExplainMarginalHomogeneity(const ExplainedTest& test);

// ---- Several fields ----

/// The ranks within each record; Kendall's coefficient from the same statistic.
void ExplainFriedman(const ExplainedTest& test);
void ExplainKendall(const ExplainedTest& test);
/// The successes of each field and of each record.
void ExplainCochran(const ExplainedTest& test);

}  // namespace tarn
