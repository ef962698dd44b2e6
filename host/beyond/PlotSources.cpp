#include "host/beyond/PlotSources.h"

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>

#include "host/beyond/DistributionPlots.h"
#include "host/beyond/PlotView.h"
#include "host/beyond/SamplePlots.h"
#include "host/beyond/SequencePlots.h"
#include "host/beyond/SharePlots.h"

namespace tarn {

namespace {

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
    constexpr bool kKeepsAll = true;
    const std::optional<TestView> view = ViewOf(reading, result, {source.table, source.rule, source.work, kKeepsAll});
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
