#include "host/beyond/DistributionPlots.h"

#include <algorithm>
#include <boost/math/distributions/exponential.hpp>
#include <boost/math/distributions/normal.hpp>
#include <boost/math/distributions/poisson.hpp>
#include <cmath>
#include <functional>
#include <optional>

#include "host/beyond/QuietDistributions.h"

namespace tarn {

namespace {

/// Steps that can be told apart in a picture; a curve of more has these alone.
constexpr std::size_t kMostSteps = 1000;

/// The distribution function of a sample: each value with the share of cases up to it.
std::vector<PlotMark> StepsOf(const AscendingSample& sample) {
    std::vector<PlotMark> steps;
    double count = 0;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        count += sample.WeightAt(i);
        const bool isLastOfItsKind = i + 1 == sample.values.size() || sample.values[i + 1] != sample.values[i];
        if (isLastOfItsKind) steps.push_back({sample.values[i], count / sample.size});
    }
    return steps;
}

std::vector<PlotMark> Thinned(const std::vector<PlotMark>& steps) {
    if (steps.size() <= kMostSteps) return steps;
    std::vector<PlotMark> thinned;
    for (std::size_t i = 0; i < kMostSteps; ++i) thinned.push_back(steps[(i + 1) * steps.size() / kMostSteps - 1]);
    return thinned;
}

/// A distribution function of a hypothesis.
struct Theory {
    const char* label;  ///< the key of its name
    std::function<double(double)> upTo;
    bool isOfCounts = false;  ///< whether it jumps at whole numbers
};

/// The one that the condition of a test names, with its parameters; none for a document that says it otherwise.
std::optional<Theory> TheoryOf(const TestView& view) {
    if (view.result == nullptr) return std::nullopt;
    const std::vector<std::string>& parameters = view.result->parameters;
    const auto parameter = [&](std::size_t place) {
        return place < parameters.size() ? Number(parameters[place]).value : std::nan("");
    };
    const double first = parameter(1);
    const double second = parameter(2);
    const std::string& key = view.result->conditionKey;
    if (key.starts_with("Normal") && second > 0) {
        const boost::math::normal_distribution<double, QuietPolicy> normal(first, second);
        return Theory{"plotNormal", [normal](double value) { return cdf(normal, value); }};
    }
    if (key.starts_with("Uniform") && second > first) {
        return Theory{"plotUniform",
                      [=](double value) { return std::clamp((value - first) / (second - first), 0.0, 1.0); }};
    }
    if (key.starts_with("Poisson") && first > 0) {
        const boost::math::poisson_distribution<double, QuietPolicy> poisson(first);
        return Theory{"plotPoisson",
                      [poisson](double value) { return value < 0 ? 0 : cdf(poisson, std::floor(value)); }, true};
    }
    if (key.starts_with("Exponential") && first > 0) {
        const boost::math::exponential_distribution<double, QuietPolicy> exponential(1 / first);
        return Theory{"plotExponential",
                      [exponential](double value) { return value < 0 ? 0 : cdf(exponential, value); }};
    }
    return std::nullopt;
}

PlotCurve CurveOf(const Theory& theory, double lowest, double highest) {
    constexpr std::size_t kPoints = 200;
    constexpr double kBeyond = 0.04;  // of the range, to the ends of the axis
    PlotCurve curve;
    curve.isTheory = true;
    curve.hasSteps = theory.isOfCounts;
    const double begin = lowest - kBeyond * (highest - lowest);
    const double range = highest + kBeyond * (highest - lowest) - begin;
    if (theory.isOfCounts && range <= static_cast<double>(kMostSteps)) {
        for (double value = std::ceil(begin); value <= begin + range; ++value) {
            curve.points.push_back({value, theory.upTo(value)});
        }
        return curve;
    }
    curve.hasSteps = false;
    for (std::size_t i = 0; i <= kPoints; ++i) {
        const double value = begin + range * static_cast<double>(i) / static_cast<double>(kPoints);
        curve.points.push_back({value, theory.upTo(value)});
    }
    return curve;
}

/// Where the steps of a sample lie farthest from the function, on either side of a step.
CurvesPanel::Gap GapOf(const std::vector<PlotMark>& steps, const Theory& theory) {
    CurvesPanel::Gap gap;
    double largest = -1;
    double before = 0;
    for (const PlotMark& step : steps) {
        const double expected = theory.upTo(step.value);
        for (const double share : {before, step.weight}) {
            if (std::abs(share - expected) <= largest) continue;
            largest = std::abs(share - expected);
            gap.value = step.value;
            gap.lower = std::min(share, expected);
            gap.upper = std::max(share, expected);
        }
        before = step.weight;
    }
    return gap;
}

CurvesPanel::Gap GapOf(const std::vector<PlotMark>& one, const std::vector<PlotMark>& other) {
    CurvesPanel::Gap gap;
    double largest = -1;
    std::size_t i = 0;
    std::size_t j = 0;
    while (i < one.size() || j < other.size()) {
        const bool isOne = j == other.size() || (i < one.size() && one[i].value <= other[j].value);
        const double value = isOne ? one[i].value : other[j].value;
        while (i < one.size() && one[i].value <= value) ++i;
        while (j < other.size() && other[j].value <= value) ++j;
        const double ofOne = i == 0 ? 0 : one[i - 1].weight;
        const double ofOther = j == 0 ? 0 : other[j - 1].weight;
        if (std::abs(ofOne - ofOther) <= largest) continue;
        largest = std::abs(ofOne - ofOther);
        gap = {value, std::min(ofOne, ofOther), std::max(ofOne, ofOther), ""};
    }
    return gap;
}

/// D as the document has it: the picture shows where it is, and tells no number of its own.
std::string GapLabel(const PlotView& plot) {
    const auto found = std::ranges::find(plot.reading.figures, "Absolute", &Figure::key);
    return found == plot.reading.figures.end() ? plot.Text("plotGap")
                                               : plot.Text("plotGapOf", {plot.Digits(std::abs(found->value.value))});
}

}  // namespace

void PlotAgainstDistribution(PlotView& plot) {
    const std::optional<Theory> theory = TheoryOf(plot.view);
    const AscendingSample& sample = plot.view.samples.front();
    const std::vector<PlotMark> steps = StepsOf(sample);
    CurvesPanel panel;
    panel.valueTitle = plot.ValueTitle();
    panel.shareTitle = plot.Text("plotUpToShare");
    panel.curves.push_back({plot.Text("plotObserved", {plot.CountText(sample.size)}), 0, false, true, Thinned(steps)});
    if (theory) {
        PlotCurve curve = CurveOf(*theory, sample.values.front(), sample.values.back());
        curve.name = plot.Text(theory->label);
        panel.curves.push_back(std::move(curve));
        // Of counts the largest difference is defined otherwise than by both sides of a step.
        if (!theory->isOfCounts) {
            panel.gap = GapOf(steps, *theory);
            panel.gap->label = GapLabel(plot);
        }
    }
    if (plot.IsWeighted()) plot.Note("plotWeightedShares");
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotTwoDistributions(PlotView& plot) {
    const TestView& view = plot.view;
    CurvesPanel panel;
    panel.valueTitle = plot.ValueTitle();
    panel.shareTitle = plot.Text("plotUpToShare");
    panel.colourCount = plot.ColourCount();
    const std::vector<std::size_t> colours = plot.Colours();
    std::vector<std::vector<PlotMark>> steps;
    for (std::size_t i = 0; i < view.samples.size(); ++i) {
        steps.push_back(StepsOf(view.samples[i]));
        PlotCurve curve;
        curve.name = plot.Text("plotNamed", {view.names[i], plot.CountText(view.samples[i].size)});
        curve.colour = colours[i];
        curve.points = Thinned(steps.back());
        panel.curves.push_back(std::move(curve));
    }
    std::ranges::stable_sort(panel.curves, {}, &PlotCurve::colour);
    if (steps.size() == 2) {
        panel.gap = GapOf(steps[0], steps[1]);
        panel.gap->label = GapLabel(plot);
    }
    if (plot.IsWeighted()) plot.Note("plotWeightedShares");
    plot.data.panels.emplace_back(std::move(panel));
}

}  // namespace tarn
