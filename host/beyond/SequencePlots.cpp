#include "host/beyond/SequencePlots.h"

#include <algorithm>
#include <utility>

#include "host/beyond/Dichotomies.h"
#include "host/beyond/PlotParts.h"

namespace tarn {

namespace {

/// Each record as often as its weight says; at most so many of them.
std::vector<std::size_t> RecordsInOrder(const CompleteCases& cases, std::size_t most) {
    std::vector<std::size_t> records;
    if (cases.columns.empty()) return records;
    for (std::size_t row = 0; row < cases.columns.front().size(); ++row) {
        const double weight = cases.WeightAt(row);
        for (double copy = 0; copy < weight && records.size() < most; ++copy) records.push_back(row);
    }
    return records;
}

}  // namespace

void PlotRuns(PlotView& plot) {
    constexpr std::size_t kMostInSeries = 1000;
    constexpr std::size_t kMostInStrip = 900;
    const TestView& view = plot.view;
    const FirstClass first = FirstClassOf(view);
    if (!first.cut && first.categories.empty()) return;
    const std::size_t most = first.cut ? kMostInSeries : kMostInStrip;
    const std::vector<std::size_t> records = RecordsInOrder(view.cases, most);
    SequencePanel panel;
    panel.orderTitle = plot.Text("plotOrder");
    panel.valueTitle = plot.ValueTitle();
    const std::span<const double> values = view.cases.columns.front();
    for (const std::size_t row : records) {
        // The values from the cut point on are the second class, and so are categories that no list has.
        const bool isFirst =
            first.cut ? values[row] < *first.cut
                      : std::ranges::find(first.categories, plot.ShownValue(0, values[row])) != first.categories.end();
        panel.places.push_back(isFirst ? 0 : 1);
        if (first.cut) panel.values.push_back(values[row]);
    }
    if (panel.places.empty()) return;
    if (first.cut) {
        const std::string cut = plot.Digits(*first.cut);
        panel.classes = {plot.Text("plotBelow", {cut}), plot.Text("plotFrom", {cut})};
        panel.cut = PlotReference{*first.cut, plot.Text("plotCut", {cut})};
    } else {
        panel.classes = {plot.FirstClassName(), plot.SecondClassName()};
    }
    if (view.cases.size > static_cast<double>(records.size())) {
        plot.Note("plotFirstRecords", {std::to_string(records.size()), plot.Digits(view.cases.size)});
    }
    plot.data.panels.emplace_back(std::move(panel));
}

void PlotOrderOfGroups(PlotView& plot) {
    constexpr double kMostInStrip = 900;
    const TestView& view = plot.view;
    if (view.HasTwoGroups() && view.Size() <= kMostInStrip) {
        const std::vector<std::size_t> order = DrawnOrder(plot);
        SequencePanel panel;
        panel.orderTitle = plot.Text("plotOrderOfValues", {plot.ValueTitle()});
        std::vector<std::pair<double, std::size_t>> all;
        for (std::size_t i = 0; i < order.size(); ++i) {
            const AscendingSample& sample = view.samples[order[i]];
            panel.classes.push_back(view.names[order[i]]);
            for (std::size_t k = 0; k < sample.values.size(); ++k) {
                for (double copy = 0; copy < sample.WeightAt(k); ++copy) all.emplace_back(sample.values[k], i);
            }
        }
        std::ranges::sort(all);
        for (const auto& [value, group] : all) panel.places.push_back(group);
        plot.Note("plotEqualValues");
        plot.data.panels.emplace_back(std::move(panel));
    }
    SamplesPanel samples = SamplesOf(plot);
    AddNotesOnSamples(samples, plot);
    plot.data.panels.emplace_back(std::move(samples));
}

}  // namespace tarn
