#include "host/beyond/PlotSources.h"

#include <algorithm>
#include <array>
#include <boost/math/distributions/normal.hpp>
#include <cmath>
#include <limits>
#include <numeric>

#include "host/TextList.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/DistributionPlots.h"
#include "host/beyond/PlotView.h"
#include "host/beyond/Proportions.h"
#include "host/beyond/QuietDistributions.h"
#include "host/beyond/SampleShapes.h"
#include "host/report/SupplementText.h"

namespace tarn {

namespace {

// ---- Samples ----

/// Which groups, or fields, a view has, in the order in which they are drawn.
std::vector<std::size_t> DrawnOrder(const PlotView& plot) {
    std::vector<std::size_t> order(plot.view.names.size());
    std::iota(order.begin(), order.end(), std::size_t{0});
    std::ranges::stable_sort(order, {}, [&](std::size_t i) { return plot.ColourOf(plot.view.names[i]); });
    return order;
}

const std::string* LettersOf(const Supplement& supplement, const std::string& name) {
    const auto found = std::ranges::find(supplement.letters, name, &SampleLetters::name);
    return found == supplement.letters.end() ? nullptr : &found->letters;
}

SamplesPanel SamplesOf(const PlotView& plot) {
    const TestView& view = plot.view;
    SamplesPanel panel;
    panel.valueTitle = plot.ValueTitle();
    panel.sampleTitle = plot.GroupTitle();
    panel.colourCount = plot.ColourCount();
    const std::vector<PlotSample> shapes = ShapesOf(view.samples);
    for (const std::size_t i : DrawnOrder(plot)) {
        PlotSample sample = shapes[i];
        sample.name = view.names[i];
        sample.caption = plot.CountText(view.samples[i].size);
        sample.colour = plot.ColourOf(view.names[i]);
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

/// The rows of few cases, to be joined by lines; none of many.
std::vector<std::vector<double>> RowsOf(const TestView& view) {
    constexpr std::size_t kMostRows = 40;
    const CompleteCases& cases = view.cases;
    if (cases.columns.empty() || cases.columns.front().size() > kMostRows) return {};
    std::vector<std::vector<double>> rows(cases.columns.front().size());
    for (const std::vector<double>& column : cases.columns) {
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

// ---- Estimates ----

std::optional<PlotEstimate> EstimateOf(const std::string& label, const Number& value, const Number& lower,
                                       const Number& upper) {
    if (value.empty() || !std::isfinite(value.value)) return std::nullopt;
    PlotEstimate estimate{label, value.value, std::nullopt, ""};
    const bool hasLimits = !lower.empty() && std::isfinite(lower.value) && std::isfinite(upper.value);
    if (hasLimits) estimate.limits = {lower.value, upper.value};
    return estimate;
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

/// The pairs that are compared; the most different ones where there are many.
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

// ---- One source for each kind of plot ----

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

/// The span of the control group, without the values trimmed from each end.
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

/// The differences of a pair, below the pair itself where cases are few.
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

// ---- Shares ----

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
        if (counts.rows.size() < 2 || counts.rows[1].size() <= place) return std::nullopt;
        return Number(counts.rows[1][place]).value / kPercent;
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
    panel.colourCount = counts.rows.size();
    for (std::size_t i = 0; i < counts.rows.size() && i < counts.rowTitles.size(); ++i) {
        constexpr std::size_t kObservedAndExpected = 2;
        if (counts.rows[i].size() < kObservedAndExpected) return;
        const double observed = Number(counts.rows[i][0]).value;
        const double expected = Number(counts.rows[i][1]).value;
        if (!std::isfinite(observed) || !std::isfinite(expected)) return;
        panel.bars.push_back({counts.rowTitles[i], plot.Digits(observed), i, observed, std::nullopt, expected});
    }
    if (!panel.bars.empty()) plot.data.panels.emplace_back(std::move(panel));
}

/// How often each of several dichotomies is a success.
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

// ---- Sequences ----

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
    const std::vector<double>& values = view.cases.columns.front();
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

/// The groups in the joint order of their values; beside one another where there are too many for that.
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

// ---- Changes ----

void PlotAnswers(PlotView& plot) {
    const CountTable& counts = plot.reading.counts;
    FlowPanel panel;
    panel.fromTitle = plot.reading.fields.front();
    panel.toTitle = plot.reading.fields.back();
    panel.from = counts.rowTitles;
    panel.to = counts.columnTitles;
    for (const std::vector<std::string>& row : counts.rows) {
        std::vector<double>& cells = panel.counts.emplace_back();
        for (const std::string& cell : row) {
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
    for (const std::vector<double>& column : cases.columns) values.insert(values.end(), column.begin(), column.end());
    std::ranges::sort(values);
    values.erase(std::unique(values.begin(), values.end()), values.end());
    constexpr std::size_t kMostCategories = 12;
    if (values.empty() || values.size() > kMostCategories) return PlotDifferences(plot);
    FlowPanel panel;
    panel.hasOrder = true;
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

// ---- All tests ----

struct PlotRow {
    const TestFacts* test;
    void (*add)(PlotView&);
};
constexpr std::array kPlots{
    PlotRow{&Tests::kKolmogorovSmirnov, PlotAgainstDistribution},
    PlotRow{&Tests::kBinomial, PlotProportion},
    PlotRow{&Tests::kProportionIntervals, PlotProportionIntervals},
    PlotRow{&Tests::kChiSquare, PlotFrequencies},
    PlotRow{&Tests::kRuns, PlotRuns},
    PlotRow{&Tests::kWilcoxonOneSample, PlotOneField},
    PlotRow{&Tests::kSign, PlotDifferences},
    PlotRow{&Tests::kWilcoxonPairs, PlotDifferences},
    PlotRow{&Tests::kHodgesLehmannPairs, PlotDifferences},
    PlotRow{&Tests::kFriedman, PlotFields},
    PlotRow{&Tests::kKendall, PlotFields},
    PlotRow{&Tests::kMcNemar, PlotAnswers},
    PlotRow{&Tests::kCochran, PlotSuccesses},
    PlotRow{&Tests::kMarginalHomogeneity, PlotMargins},
    PlotRow{&Tests::kMannWhitney, PlotGroups},
    PlotRow{&Tests::kKolmogorovSmirnovTwoSample, PlotTwoDistributions},
    PlotRow{&Tests::kWaldWolfowitz, PlotOrderOfGroups},
    PlotRow{&Tests::kMoses, PlotSpan},
    PlotRow{&Tests::kHodgesLehmannGroups, PlotGroups},
    PlotRow{&Tests::kKruskalWallis, PlotGroups},
    PlotRow{&Tests::kJonckheereTerpstra, PlotGroups},
    PlotRow{&Tests::kMedian, PlotGroups},
};
static_assert(kPlots.size() == std::size(Tests::kAll), "each test has a plot");

}  // namespace

std::optional<PlotData> PlotOf(const TestReading& reading, const ResultReading& result, const PlotSource& source) {
    constexpr bool kKeepsRows = true;
    const std::optional<TestView> view = ViewOf(reading, result, {source.table, source.rule, source.work, kKeepsRows});
    if (!view || view->Size() == 0 || view->samples.empty()) return std::nullopt;
    const auto isEmpty = [](const AscendingSample& sample) { return sample.values.empty(); };
    if (std::ranges::any_of(view->samples, isEmpty)) return std::nullopt;
    PlotView plot(*view, source);
    for (const auto& [test, add] : kPlots) {
        if (view->Is(*test)) add(plot);
    }
    if (plot.data.panels.empty()) return std::nullopt;
    plot.Describe();
    return std::move(plot.data);
}

}  // namespace tarn
