#pragma once

#include <string>

#include "host/beyond/explain/StepWriter.h"
#include "host/report/TestReading.h"

namespace tarn {

/// The significance of that kind; "" for none.
Number PValueOf(const StatisticSet& set, PValueKind kind);

/// The probability that a chi-square variate is as large as `statistic` or larger.
double ChiSquareTail(double statistic, double degrees);

/// The probability that of `drawn` cases out of `total`, of which `marked` are marked, `least` or more are marked.
double HypergeometricTail(double total, double marked, double drawn, double least);

// The steps from a statistic to its significance, which the document has in a set, and what the set doesn't have is no
// step that is compared.

/// p = 2 P(N >= |z|)
double TwoTailedNormalStep(StepWriter& steps, double z, const StatisticSet& set);
/// p = P(chi-square with df degrees of freedom >= statistic)
double ChiSquareStep(StepWriter& steps, const std::string& symbol, double statistic, double degrees, const Number& p);
/// p by Kolmogorov's limit: 2 (q - q^4 + q^9 - ...), q = exp(-2 z^2).
double KolmogorovStep(StepWriter& steps, double z, const Number& p);

/// "z = (T - mean) / standard error" of a normal approximation. `corrected`: the distance after a correction for
/// continuity, whose formula is given. 0 where there is neither a distance nor a spread.
struct NormalStatistic {
    std::string name;  ///< of the statistic: "T"
    double value = 0;
    double mean = 0;
    double deviation = 0;  ///< of the statistic from its mean, without any rounding of the two
    double standardError = 0;
};
double StandardizedStep(StepWriter& steps, const NormalStatistic& statistic, const Number& document);
/// The same with the deviation moved towards zero by 0.5, and no further.
double CorrectedStep(StepWriter& steps, const NormalStatistic& statistic, const Number& document);

}  // namespace tarn
