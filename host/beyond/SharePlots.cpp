#include "host/beyond/SharePlots.h"

#include <algorithm>
#include <cmath>
#include <optional>
#include <utility>

#include "host/beyond/Dichotomies.h"
#include "host/beyond/PlotParts.h"
#include "host/beyond/Proportions.h"
#include "host/beyond/SamplePlots.h"

namespace tarn {

void PlotProportion(PlotView& plot) {
    const std::vector<EffectSize>& effects = plot.reading.supplement.effects;
    const auto share = std::ranges::find(effects, "proportion", &EffectSize::key);
    if (share == effects.end() || share->value.empty()) return;
    BarsPanel panel;
    panel.valueTitle = plot.Text("plotShareOfCases");
    panel.highest = 1;
    panel.colourCount = 2;
    const double n = plot.reading.n.value;
    const double value = share->value.value;
    const CountTable& counts = plot.reading.counts;
    const auto expectedOf = [&](std::size_t place) -> std::optional<double> {
        constexpr double kPercent = 100;
        if (counts.RowCount() < 2) return std::nullopt;
        const std::vector<std::string> expected = counts.CellsOf(1);
        if (expected.size() <= place) return std::nullopt;
        return Number(expected[place]).value / kPercent;
    };
    const auto caption = [&](double part) {
        return plot.Text("plotOf", {plot.Digits(std::round(part * n)), plot.Digits(n)});
    };
    PlotBar first{plot.FirstClassName(), caption(value), 0, value, std::nullopt, expectedOf(0)};
    if (!share->lower.empty()) first.limits = {share->lower.value, share->upper.value};
    PlotBar second{plot.SecondClassName(), caption(1 - value), 1, 1 - value, std::nullopt, expectedOf(1)};
    if (first.limits) panel.limitsLabel = plot.Text("plotInterval", {plot.LevelText(), share->method});
    if (first.expected) panel.expectedLabel = plot.Text("plotExpected");
    panel.bars = {std::move(first), std::move(second)};
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotProportionIntervals(PlotView& plot) {
    IntervalsPanel panel;
    panel.valueTitle = plot.Text("plotShareOf", {plot.FirstClassName(), plot.LevelText()});
    for (const Interval& interval : plot.reading.intervals) {
        if (auto row = EstimateOf(interval.method, interval.estimate, interval.lower, interval.upper)) {
            panel.rows.push_back(std::move(*row));
        }
    }
    if (!panel.rows.empty()) plot.data.panels.emplace_back(std::move(panel));
}

void PlotFrequencies(PlotView& plot) {
    const CountTable& counts = plot.reading.counts;
    BarsPanel panel;
    panel.valueTitle = plot.Text("plotCases");
    panel.expectedLabel = plot.Text("plotExpected");
    panel.colourCount = counts.RowCount();
    for (std::size_t i = 0; i < counts.RowCount() && i < counts.rowTitles.size(); ++i) {
        constexpr std::size_t kObservedAndExpected = 2;
        const std::vector<std::string> cells = counts.CellsOf(i);
        if (cells.size() < kObservedAndExpected) return;
        const double observed = Number(cells[0]).value;
        const double expected = Number(cells[1]).value;
        if (!std::isfinite(observed) || !std::isfinite(expected)) return;
        panel.bars.push_back({counts.rowTitles[i], plot.Digits(observed), i, observed, std::nullopt, expected});
    }
    if (!panel.bars.empty()) plot.data.panels.emplace_back(std::move(panel));
}

void PlotSuccesses(PlotView& plot) {
    const TestView& view = plot.view;
    const std::vector<std::vector<double>> successes = SuccessesOf(view, plot.source.success);
    if (successes.empty() || view.cases.size == 0) return;
    BarsPanel panel;
    panel.valueTitle = plot.Text("plotShareOfSuccesses");
    panel.highest = 1;
    panel.colourCount = successes.size();
    panel.limitsLabel = plot.Text("plotInterval", {plot.LevelText(), "Wilson (1927)"});
    for (std::size_t i = 0; i < successes.size(); ++i) {
        double count = 0;
        for (std::size_t row = 0; row < successes[i].size(); ++row)
            count += successes[i][row] * view.cases.WeightAt(row);
        const Estimate share = WilsonInterval(count, view.cases.size, view.confidence);
        PlotBar bar{view.names[i],
                    plot.Text("plotOf", {plot.Digits(count), plot.Digits(view.cases.size)}),
                    i,
                    share.value,
                    std::nullopt,
                    std::nullopt};
        if (!std::isnan(share.lower)) bar.limits = {share.lower, share.upper};
        panel.bars.push_back(std::move(bar));
    }
    plot.Note("plotSuccess", {plot.SuccessName()});
    plot.data.panels.emplace_back(std::move(panel));
    AddPairs(plot);
}

void PlotAnswers(PlotView& plot) {
    const CountTable& counts = plot.reading.counts;
    if (counts.IsWide()) return;  // its bands would be thinner than a line
    FlowPanel panel;
    panel.fromTitle = plot.reading.fields.front();
    panel.toTitle = plot.reading.fields.back();
    panel.from = counts.rowTitles;
    panel.to = counts.columnTitles;
    for (std::size_t row = 0; row < counts.RowCount(); ++row) {
        std::vector<double>& cells = panel.counts.emplace_back();
        for (const std::string& cell : counts.CellsOf(row)) {
            const double count = Number(cell).value;
            cells.push_back(std::isfinite(count) ? count : 0);
        }
    }
    const bool isSquare = !panel.counts.empty() && panel.from.size() == panel.counts.size() &&
                          panel.to.size() == panel.counts.front().size();
    if (!isSquare) return;
    panel.stayed = plot.Text("plotStayed");
    panel.rose = plot.Text("plotChange", {panel.from.front(), panel.to.back()});
    panel.fell = plot.Text("plotChange", {panel.from.back(), panel.to.front()});
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotMargins(PlotView& plot) {
    const CompleteCases& cases = plot.view.cases;
    if (cases.columns.size() != 2) return;
    std::vector<double> values;
    for (const std::span<const double> column : cases.columns)
        values.insert(values.end(), column.begin(), column.end());
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    constexpr std::size_t kMostCategories = 12;
    if (values.empty() || values.size() > kMostCategories) return PlotDifferences(plot);
    FlowPanel panel;
    panel.fromTitle = plot.reading.fields.front();
    panel.toTitle = plot.reading.fields.back();
    for (const double value : values) panel.from.push_back(plot.ShownValue(0, value));
    for (const double value : values) panel.to.push_back(plot.ShownValue(1, value));
    panel.counts.assign(values.size(), std::vector<double>(values.size(), 0));
    const auto placeOf = [&](double value) {
        return static_cast<std::size_t>(std::ranges::lower_bound(values, value) - values.begin());
    };
    for (std::size_t row = 0; row < cases.columns[0].size(); ++row) {
        panel.counts[placeOf(cases.columns[0][row])][placeOf(cases.columns[1][row])] += cases.WeightAt(row);
    }
    panel.stayed = plot.Text("plotStayed");
    panel.rose = plot.Text("plotRose");
    panel.fell = plot.Text("plotFell");
    plot.data.panels.emplace_back(std::move(panel));
}

}  // namespace tarn
