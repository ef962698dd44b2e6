#include "host/beyond/PlotParts.h"

#include <algorithm>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <numeric>
#include <utility>

#include "host/beyond/QuietDistributions.h"
#include "host/beyond/SampleShapes.h"

namespace tarn {

namespace {

const std::string* LettersOf(const Supplement& supplement, const std::string& name) {
    const auto found = std::ranges::find(supplement.letters, name, &SampleLetters::name);
    return found == supplement.letters.end() ? nullptr : &found->letters;
}

/// The categories of fields that all have the same few of them, by the numbers that stand for them.
std::vector<std::pair<double, std::string>> ValueNamesOf(const TestView& view) {
    constexpr std::size_t kMostNames = 10;
    const std::vector<Category>& categories = view.columns.front()->categories;
    for (const Column* const column : view.columns) {
        if (!column->IsCategorical() || column->IsText() || column->categories != categories) return {};
    }
    std::vector<std::pair<double, std::string>> names;
    for (const Category& category : categories) {
        names.emplace_back(category.number, ShownCategory(*view.columns.front(), category));
    }
    return names.size() > kMostNames ? std::vector<std::pair<double, std::string>>() : names;
}

/// Pairs by the first of their effects.
void AddPairEffects(const PlotView& plot, IntervalsPanel& panel) {
    const auto isOfPair = [](const EffectSize& effect) { return !effect.first.empty() && !effect.value.empty(); };
    const std::vector<EffectSize>& effects = plot.reading.supplement.effects;
    const auto first = std::ranges::find_if(effects, isOfPair);
    if (first == effects.end()) return;
    const bool areShares = first->key == "probability-of-superiority";
    panel.valueTitle = plot.Text(areShares ? "plotSuperiority" : "plotDifferenceOfShares", {plot.LevelText()});
    panel.noEffect = areShares ? 0.5 : 0.0;
    for (const EffectSize& effect : effects) {
        if (!isOfPair(effect) || effect.key != first->key) continue;
        auto row = EstimateOf(effect.first, effect.value, effect.lower, effect.upper);
        if (!row) continue;
        row->second = effect.second;
        panel.rows.push_back(std::move(*row));
    }
}

/// Pairs by the differences that the test itself compares, of mean ranks, within their standard errors as the normal
/// approximation has them.
void AddPairDifferences(const PlotView& plot, IntervalsPanel& panel) {
    const boost::math::normal_distribution<double, QuietPolicy> normal;
    const double bound = quantile(normal, (1 + plot.view.confidence) / 2);
    panel.valueTitle = plot.Text("plotDifferenceOfRanks", {plot.LevelText()});
    panel.noEffect = 0;
    for (const PairComparison& pair : plot.reading.pairs) {
        const double reach = bound * pair.standardError.value;
        if (!std::isfinite(pair.statistic.value) || !std::isfinite(reach)) continue;
        panel.rows.push_back({pair.first, pair.statistic.value,
                              std::pair(pair.statistic.value - reach, pair.statistic.value + reach), pair.second});
    }
}

}  // namespace

std::vector<std::size_t> DrawnOrder(const PlotView& plot) {
    std::vector<std::size_t> order(plot.view.names.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    const std::vector<std::size_t> colours = plot.Colours();
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return colours[i]; });
    return order;
}

SamplesPanel SamplesOf(const PlotView& plot) {
    const TestView& view = plot.view;
    SamplesPanel panel;
    panel.valueTitle = plot.ValueTitle();
    panel.valueNames = ValueNamesOf(view);
    panel.sampleTitle = plot.GroupTitle();
    panel.colourCount = plot.ColourCount();
    const std::vector<PlotSample> shapes = ShapesOf(view.samples);
    const std::vector<std::size_t> colours = plot.Colours();
    for (const std::size_t i : DrawnOrder(plot)) {
        PlotSample sample = shapes[i];
        sample.name = view.names[i];
        sample.caption = plot.CountText(view.samples[i].size);
        sample.colour = colours[i];
        if (const std::string* const letters = LettersOf(plot.reading.supplement, sample.name))
            sample.letters = *letters;
        panel.samples.push_back(std::move(sample));
    }
    return panel;
}

void AddNotesOnSamples(const SamplesPanel& panel, PlotView& plot) {
    const auto has = [&](auto member) { return std::ranges::any_of(panel.samples, member); };
    plot.Note(has([](const PlotSample& sample) { return sample.hasAllMarks && !sample.marks.empty(); })
                  ? "plotBoxAndDots"
                  : "plotBox");
    if (has([](const PlotSample& sample) { return !sample.outline.empty(); })) plot.Note("plotOutline");
    if (has([](const PlotSample& sample) { return !sample.letters.empty(); })) plot.Note("plotLetters");
    if (plot.IsWeighted()) plot.Note("plotWeights");
}

std::optional<PlotEstimate> EstimateOf(const std::string& label, const Number& value, const Number& lower,
                                       const Number& upper) {
    if (value.empty() || !std::isfinite(value.value)) return std::nullopt;
    PlotEstimate estimate{label, value.value, std::nullopt, ""};
    const bool hasLimits = !lower.empty() && std::isfinite(lower.value) && std::isfinite(upper.value);
    if (hasLimits) estimate.limits = {lower.value, upper.value};
    return estimate;
}

void AddPairs(PlotView& plot) {
    constexpr std::size_t kMostPairs = 40;
    if (plot.reading.pairs.empty()) return;
    IntervalsPanel panel;
    panel.title = plot.Text("plotPairs");
    panel.noEffectLabel = plot.Text("plotNoDifference");
    AddPairEffects(plot, panel);
    const bool areRanks = plot.view.Is(Tests::kFriedman) || plot.view.Is(Tests::kKendall);
    if (panel.rows.empty() && areRanks) AddPairDifferences(plot, panel);
    if (!panel.rows.empty()) plot.Note("plotPairsUnadjusted");
    if (panel.rows.size() > kMostPairs) {
        const auto distance = [&](const PlotEstimate& row) { return -std::abs(row.value - *panel.noEffect); };
        plot.Note("plotMostPairs", {std::to_string(kMostPairs), std::to_string(panel.rows.size())});
        std::ranges::stable_sort(panel.rows, {}, distance);
        panel.rows.resize(kMostPairs);
    }
    if (!panel.rows.empty()) plot.data.panels.emplace_back(std::move(panel));
}

}  // namespace tarn
