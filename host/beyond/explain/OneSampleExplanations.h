#pragma once

#include "host/beyond/explain/ExplainedTest.h"

namespace tarn {

/// The number of cases in the first class, its normal approximation with continuity correction, and the binomial tail.
void ExplainBinomial(const ExplainedTest& test);

/// The three intervals of a proportion, by the quantiles that they rest on.
void ExplainProportionIntervals(const ExplainedTest& test);

/// Pearson's chi-square, category by category.
void ExplainChiSquare(const ExplainedTest& test);

/// The runs of the two classes in the order of the records.
void ExplainRuns(const ExplainedTest& test);

/// The ranks of the differences from the hypothesized median.
void ExplainWilcoxonOneSample(const ExplainedTest& test);

/// The distance of the sample's distribution function from the one that is named.
void ExplainKolmogorovSmirnov(const ExplainedTest& test);

}  // namespace tarn
