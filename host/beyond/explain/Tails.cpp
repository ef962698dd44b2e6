#include "host/beyond/explain/Tails.h"

#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>

#include "host/beyond/KolmogorovDistribution.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/QuietDistributions.h"

namespace tarn {

Number PValueOf(const StatisticSet& set, PValueKind kind) {
    const auto found = std::ranges::find(set.pValues, kind, &PValue::kind);
    return found == set.pValues.end() ? Number() : found->value;
}

double ChiSquareTail(double statistic, double degrees) {
    if (std::isnan(statistic)) return statistic;
    return static_cast<double>(boost::math::gamma_q(degrees / 2.0L, statistic / 2.0L, QuietPolicy()));
}

double HypergeometricTail(double total, double marked, double drawn, double least) {
    const double lowest = std::max(0.0, drawn - (total - marked));
    const double highest = std::min(marked, drawn);
    if (least <= lowest) return 1;
    if (least > highest) return 0;
    const double mode = std::clamp(std::floor((drawn + 1) * ((marked + 1) / (total + 2))), lowest, highest);
    constexpr long double kNegligible = 1e-25L;
    // Terms are taken relative to the largest one. Their ratios are those of the counts.
    const auto ratioAbove = [&](long double k) {
        return (marked - k) / (k + 1) * ((drawn - k) / (total - marked - drawn + k + 1));
    };
    long double sum = 0;
    long double tail = 0;
    long double term = 1;
    for (double k = mode; k <= highest && term > 0; ++k) {
        sum += term;
        if (k >= least) tail += term;
        if (term < kNegligible * tail) break;
        term *= ratioAbove(k);
    }
    term = 1;
    for (double k = mode - 1; k >= lowest && term > kNegligible * sum; --k) {
        term /= ratioAbove(k);
        sum += term;
        if (k >= least) tail += term;
    }
    return static_cast<double>(tail / sum);
}

double TwoTailedNormalStep(StepWriter& steps, double z, const StatisticSet& set) {
    return steps.Told("p asymptotic", "2 * P(N >= |z|)", With("2 * P(N >= #)", {std::fabs(z)}),
                      NormalTail(z, Alternative::kTwoSided), PValueOf(set, PValueKind::kAsymptotic));
}

double ChiSquareStep(StepWriter& steps, const std::string& symbol, double statistic, double degrees, const Number& p) {
    return steps.Told("p asymptotic", "P(chi2 with df >= " + symbol + ")",
                      With("P(chi2 with # df >= #)", {degrees, statistic}), ChiSquareTail(statistic, degrees), p);
}

double KolmogorovStep(StepWriter& steps, double z, const Number& p) {
    // As defined the series isn't gone through where a table of it would have 1 and 0 (docs/numerics.md).
    constexpr double kCertainBelow = 0.27;
    constexpr double kNothingFrom = 3.1;
    if (steps.IsAsDefined() && z < kCertainBelow) {
        return steps.Told("p asymptotic", "taken as 1 for z < 0.27", "", 1, p);
    }
    if (steps.IsAsDefined() && z >= kNothingFrom) {
        return steps.Told("p asymptotic", "taken as 0 from z = 3.1 on", "", 0, p);
    }
    const double q = steps.Step("q", "exp(-2 z^2)", With("exp(-2 * # ^ 2)", {z}), std::exp(-2 * z * z));
    return steps.Told("p asymptotic", "2 (q - q^4 + q^9 - q^16 + ..)", With("2 * (# - # ^ 4 + # ^ 9 - ..)", {q, q, q}),
                      KolmogorovLimitUpperTail(z), p);
}

double StandardizedStep(StepWriter& steps, const NormalStatistic& statistic, const Number& document) {
    const bool hasNoSpread = statistic.standardError == 0 && statistic.deviation == 0 && document == "0";
    const double z = hasNoSpread ? 0 : statistic.deviation / statistic.standardError;
    return steps.Told("z", "(" + statistic.name + " - mean) / SE",
                      With("(# - #) / #", {statistic.value, statistic.mean, statistic.standardError}), z, document);
}

double CorrectedStep(StepWriter& steps, const NormalStatistic& statistic, const Number& document) {
    constexpr double kHalf = 0.5;
    if (std::fabs(statistic.deviation) <= kHalf) {
        return steps.Told(
            "z",
            "nothing, since |" + statistic.name + With(" - mean| = |# - #| <= 0.5", {statistic.value, statistic.mean}),
            "", 0, document);
    }
    const bool isAbove = statistic.deviation > 0;
    const double moved = statistic.deviation + (isAbove ? -kHalf : kHalf);
    const std::string sign = isAbove ? "-" : "+";
    return steps.Told("z", "(" + statistic.name + " - mean " + sign + " 0.5) / SE",
                      With("(# - # " + sign + " 0.5) / #", {statistic.value, statistic.mean, statistic.standardError}),
                      moved / statistic.standardError, document);
}

}  // namespace tarn
