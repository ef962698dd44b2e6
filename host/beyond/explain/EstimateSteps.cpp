#include "host/beyond/explain/EstimateSteps.h"

#include <algorithm>
#include <boost/math/special_functions/erf.hpp>
#include <cmath>
#include <numbers>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

double NormalQuantile(double tail) {
    const long double scaled = boost::math::erfc_inv(2 * static_cast<long double>(tail), QuietPolicy());
    return static_cast<double>(scaled * std::numbers::sqrt2_v<long double>);
}

/// The place of a difference, from 1; beyond an end that at the end.
PairCount PlaceOf(double place, double count) {
    return static_cast<PairCount>(std::clamp(place, 1.0, count));
}

}  // namespace

void AddEstimateSteps(const ExplainedTest& test, const std::string& what, const DifferenceMatrix& differences,
                      const EstimatePlaces& places) {
    StepWriter& steps = test.steps;
    const auto count = static_cast<double>(differences.Count());
    const double tail = (1 - test.view.confidence) / 2;
    const double q = NormalQuantile(tail);
    const double lowerPlace = std::floor(places.mean - q * places.standardError) + 1;
    const double upperPlace = std::ceil(places.mean + q * places.standardError);
    const PairCount below = (differences.Count() + 1) / 2;
    const PairCount above = differences.Count() / 2 + 1;
    const PairCount lower = PlaceOf(lowerPlace, count);
    const PairCount upper = PlaceOf(upperPlace, count);
    std::vector<PairCount> ranks{below, above, lower, upper};
    std::ranges::sort(ranks);
    const std::vector<double> found = differences.Select(ranks);
    const auto at = [&](PairCount rank) {
        return found[static_cast<std::size_t>(std::ranges::find(ranks, rank) - ranks.begin())];
    };
    const std::vector<Interval>& intervals = test.Reading().intervals;
    const Interval document = intervals.empty() ? Interval() : intervals.front();
    const double size = std::max(std::fabs(at(lower)), std::fabs(at(upper)));
    steps.Count("M", what, count);
    steps.Told("estimate", below == above ? "the middle one of them" : "half way between the two in the middle",
               With("(# + #) / 2", {at(below), at(above)}), at(below) / 2 + at(above) / 2, document.estimate, size);
    steps.Step("q", "normal quantile of 1 - (1 - level) / 2", With("quantile of #", {1 - tail}), q);
    steps.Step("first place", "floor(mean - q SE) + 1",
               With("floor(# - # * #) + 1", {places.mean, q, places.standardError}), lowerPlace);
    steps.Told("lower limit", "the one at the first place", "", at(lower), document.lower, size);
    steps.Step("last place", "ceil(mean + q SE)", With("ceil(# + # * #)", {places.mean, q, places.standardError}),
               upperPlace);
    steps.Told("upper limit", "the one at the last place", "", at(upper), document.upper, size);
}

}  // namespace tarn
