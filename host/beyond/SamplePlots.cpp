#include "host/beyond/SamplePlots.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "host/beyond/PlotParts.h"
#include "host/beyond/SampleShapes.h"

namespace tarn {

namespace {

/// The rows of few cases, to be joined by lines; none of many.
std::vector<std::vector<double>> RowsOf(const TestView& view) {
    constexpr std::size_t kMostRows = 40;
    const CompleteCases& cases = view.cases;
    if (cases.columns.empty() || cases.columns.front().size() > kMostRows) return {};
    std::vector<std::vector<double>> rows(cases.columns.front().size());
    for (const std::span<const double> column : cases.columns) {
        for (std::size_t i = 0; i < column.size(); ++i) rows[i].push_back(column[i]);
    }
    return rows;
}

double FigureOf(const TestReading& reading, std::string_view key) {
    const auto found = std::ranges::find(reading.figures, key, &Figure::key);
    return found == reading.figures.end() ? std::nan("") : found->value.value;
}

void AddReference(SamplesPanel& panel, double value, const std::string& label) {
    if (std::isfinite(value)) panel.references.push_back({value, label});
}

/// An effect of the whole test that is in the unit of the data.
std::optional<PlotEstimate> ShiftOf(const TestReading& reading, const std::string& label) {
    constexpr std::array kInUnits{"hodges-lehmann-shift", "pseudomedian", "median"};
    for (const EffectSize& effect : reading.supplement.effects) {
        if (effect.first.empty() && std::ranges::find(kInUnits, effect.key) != kInUnits.end()) {
            return EstimateOf(label.empty() ? effect.label : label, effect.value, effect.lower, effect.upper);
        }
    }
    if (!reading.isEstimate || reading.intervals.empty()) return std::nullopt;
    const Interval& interval = reading.intervals.front();
    return EstimateOf(label.empty() ? "Hodges-Lehmann" : label, interval.estimate, interval.lower, interval.upper);
}

}  // namespace

void PlotGroups(PlotView& plot) {
    SamplesPanel panel = SamplesOf(plot);
    panel.connectsMedians = plot.view.Is(Tests::kJonckheereTerpstra);
    if (panel.connectsMedians) plot.Note("plotMedianLine");
    if (plot.view.Is(Tests::kMedian)) {
        const double median = FigureOf(plot.reading, "Median");
        const auto found = std::ranges::find(plot.reading.figures, "Median", &Figure::key);
        if (found != plot.reading.figures.end()) AddReference(panel, median, found->label);
    }
    AddNotesOnSamples(panel, plot);
    plot.data.panels.emplace_back(std::move(panel));
    if (plot.view.HasTwoGroups()) {
        if (auto shift = ShiftOf(plot.reading, plot.reading.direction.Text())) {
            IntervalsPanel estimate;
            estimate.valueTitle = plot.Text("plotShift", {plot.LevelText()});
            estimate.rows = {*shift};
            estimate.noEffect = 0;
            plot.data.panels.emplace_back(std::move(estimate));
        }
    }
    AddPairs(plot);
}

void PlotSpan(PlotView& plot) {
    SamplesPanel panel = SamplesOf(plot);
    const auto control = std::ranges::find(plot.reading.samples, "control", &Sample::role);
    const double trimmed = FigureOf(plot.reading, "OutliersTrimmedFromEachEnd");
    const auto name = std::ranges::find(plot.view.names, panel.samples.front().name);
    const AscendingSample& first = plot.view.samples[static_cast<std::size_t>(name - plot.view.names.begin())];
    const bool isFirst = control == plot.reading.samples.end() || control->name == panel.samples.front().name;
    if (isFirst && trimmed >= 0 && first.weights.empty() && 2 * trimmed < first.size) {
        const auto place = static_cast<std::size_t>(trimmed);
        panel.span = {first.values[place], first.values[first.values.size() - 1 - place]};
        panel.spanLabel = plot.Text("plotSpan", {panel.samples.front().name});
    }
    AddNotesOnSamples(panel, plot);
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotFields(PlotView& plot) {
    SamplesPanel panel = SamplesOf(plot);
    panel.rows = RowsOf(plot.view);
    panel.connectsMedians = true;
    plot.Note("plotMedianLine");
    if (!panel.rows.empty()) plot.Note("plotRows");
    AddNotesOnSamples(panel, plot);
    plot.data.panels.emplace_back(std::move(panel));
    AddPairs(plot);
}

void PlotDifferences(PlotView& plot) {
    if (!plot.view.differences || plot.view.differences->values.empty()) return;
    SamplesPanel slopes = SamplesOf(plot);
    slopes.rows = RowsOf(plot.view);
    if (!slopes.rows.empty()) {
        slopes.hasBoxes = false;
        plot.Note("plotRows");
        plot.data.panels.emplace_back(std::move(slopes));
    }
    SamplesPanel panel;
    panel.samples = ShapesOf({*plot.view.differences});
    panel.samples.front().name = plot.Text("plotDifferences");
    panel.samples.front().caption = plot.CountText(plot.view.differences->size);
    panel.valueTitle = plot.reading.direction.Text();
    panel.colourCount = 1;
    AddReference(panel, 0, plot.Text("plotZero"));
    if (auto shift = ShiftOf(plot.reading, plot.Text("plotEstimate"))) panel.estimates.push_back(std::move(*shift));
    AddNotesOnSamples(panel, plot);
    if (!panel.estimates.empty()) plot.Note("plotEstimateNote", {plot.LevelText()});
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotOneField(PlotView& plot) {
    SamplesPanel panel = SamplesOf(plot);
    const double expected = FigureOf(plot.reading, "HypotheticalMedian");
    AddReference(panel, expected, plot.Text("plotExpectedMedian", {plot.Digits(expected)}));
    // The pseudomedian of the document's effects is that of the values less the hypothesized median.
    AddNotesOnSamples(panel, plot);
    plot.data.panels.emplace_back(std::move(panel));
}

}  // namespace tarn
