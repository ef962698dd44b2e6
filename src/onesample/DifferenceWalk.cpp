#include "onesample/DifferenceWalk.h"

#include <algorithm>
#include <cmath>

#include "support/CaseWeight.h"
#include "support/Int32.h"

DifferenceWalk::DifferenceWalk(TheoreticalDistribution& theory, std::int64_t total, const Arithmetic& by)
    : distribution(&theory), totalN(total), arithmetic(&by) {}

void DifferenceWalk::Add(const double* values, const std::int32_t* weights, std::size_t count) {
    weightSeen += SumOfMagnitudes(weights, count);
    if (arithmetic->StaysNarrow(weightSeen)) {
        AddValues<std::int32_t>(values, weights, count);
    } else {
        AddValues<std::int64_t>(values, weights, count);
    }
}

template <typename Counter>
void DifferenceWalk::AddValues(const double* values, const std::int32_t* weights, std::size_t count) {
    constexpr bool kIsNarrow = sizeof(Counter) == sizeof(std::int32_t);
    const auto sum = [by = arithmetic](std::int64_t counter, std::int32_t weight) -> std::int64_t {
        return kIsNarrow ? Add32(static_cast<std::int32_t>(counter), weight) : by->Count(counter + weight);
    };
    for (std::size_t i = 0; i < count; ++i) {
        if (QKMV::IsMissing(previousValue)) previousValue = values[i];
        // Behind the whole weight only records of weight 0 are left, and each of them is a run by itself.
        const bool isInRun = values[i] == previousValue && cumulativeCount < totalN;
        if (!isInRun) CloseRun();
        cumulativeCount = sum(cumulativeCount, weights[i]);
        runWeight = isInRun ? sum(runWeight, weights[i]) : weights[i];
        previousValue = values[i];
    }
}

namespace {

/// Whether two differences are other ones, and not one that was rounded in two ways.
bool AreApart(double first, double second) {
    constexpr double kRounding = 1e-9;
    return std::fabs(first - second) > kRounding * std::max(std::fabs(first), std::fabs(second));
}

}  // namespace

void DifferenceWalk::Close() {
    CloseRun();
    if (!isTextbookApart) return;
    const bool differs = AreApart(textbookExtremes.absolute, extremes.absolute) ||
                         AreApart(textbookExtremes.positive, extremes.positive) ||
                         AreApart(textbookExtremes.negative, extremes.negative);
    if (arithmetic->TakesTextbook(differs)) extremes = textbookExtremes;
}

void DifferenceWalk::CloseRun() {
    const double value = previousValue;
    if (distribution->kind == DistributionKind::kPoisson) {
        // Both functions are steps at whole numbers: just below the value is at the number before.
        const double below = value - 1;
        if (value == 0) {
            Take({}, 0);
        } else {
            Take(LevelsAt(below, arithmetic->Count(cumulativeCount - runWeight)),
                 distribution->Cdf(below, *arithmetic));
        }
        Take(LevelsAt(value, cumulativeCount), distribution->Cdf(value, *arithmetic));
        return;
    }
    const Levels levels = LevelsAt(value, cumulativeCount);
    const double theoretical = distribution->Cdf(value, *arithmetic);
    Take(previous, theoretical);
    Take(levels, theoretical);
    previous = levels;
}

/// The share of the sample up to a value. As defined a given range cuts it, and in front of the first value of a
/// sample, when the count is 0, it is taken as 1: that shows where a Poisson sample's given range begins lower, and
/// where the first values have no weight. The textbook's way counts, and no more.
DifferenceWalk::Levels DifferenceWalk::LevelsAt(double value, std::int64_t count) const {
    const auto total = static_cast<double>(totalN);
    const auto cases = static_cast<double>(count);
    double defined = count == 0 ? 1.0 : cases;
    if (value < distribution->minimum) {
        defined = 0;
    } else if (value >= distribution->maximum) {
        defined = total;
    }
    const double share = defined / total;
    return {share, defined == cases ? share : cases / total};
}

namespace {

/// A difference that is no number leaves the extremes as they are.
void Extend(ExtremeDifferences& extremes, double difference) {
    if (std::fabs(difference) > extremes.absolute) extremes.absolute = std::fabs(difference);
    if (difference > 0 && difference > extremes.positive) extremes.positive = difference;
    if (difference < 0 && difference < extremes.negative) extremes.negative = difference;
}

}  // namespace

void DifferenceWalk::Take(const Levels& levels, double theoretical) {
    if (!isTextbookApart && levels.textbook != levels.defined) {
        isTextbookApart = true;
        textbookExtremes = extremes;
    }
    Extend(extremes, levels.defined - theoretical);
    if (isTextbookApart) Extend(textbookExtremes, levels.textbook - theoretical);
}
