#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/NumberText.h"
#include "host/beyond/Quartiles.h"
#include "host/beyond/exact/MedianExact.h"
#include "host/beyond/explain/ClassesOfField.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/PairSteps.h"
#include "host/beyond/explain/SubsetSteps.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

/// The cases of one group on both sides of the median.
struct MedianCell {
    double above = 0;
    double notAbove = 0;

    double Size() const { return above + notAbove; }
};

bool IsMedianGiven(const ExplainedTest& test) {
    return test.view.result->conditionKey == "CategoryListsAreSpecified_I_Median_2";
}

double MedianOf(const std::vector<AscendingSample>& samples) {
    std::vector<double> values;
    std::vector<double> weights;
    for (const AscendingSample& sample : samples) {
        for (std::size_t i = 0; i < sample.values.size(); ++i) {
            values.push_back(sample.values[i]);
            weights.push_back(sample.WeightAt(i));
        }
    }
    return Quantile(Ascending(std::move(values), weights), 0.5);
}

/// The median of all cases, or the one that was asked for.
double AddMedian(const ExplainedTest& test) {
    const double own = MedianOf(test.view.samples);
    const Number document = test.FigureOf("Median");
    const double median = InAllDigits(document.text, {own});
    if (IsMedianGiven(test)) return test.steps.Count("median", "as asked for", median);
    return test.steps.Told("median", "of all cases", "", own, document);
}

MedianCell CellOf(const AscendingSample& sample, double median) {
    MedianCell cell;
    for (std::size_t i = 0; i < sample.values.size(); ++i) {
        (sample.values[i] > median ? cell.above : cell.notAbove) += sample.WeightAt(i);
    }
    return cell;
}

std::vector<MedianCell> CellsOf(const ExplainedTest& test, double median) {
    std::vector<MedianCell> cells;
    ExplanationTable& table = test.steps.Table("Cases on both sides of the median",
                                               {{test.Reading().group, true}, {"above a"}, {"not above b"}, {"n"}});
    for (std::size_t group = 0; group < test.view.samples.size(); ++group) {
        const MedianCell& cell = cells.emplace_back(CellOf(test.view.samples[group], median));
        table.rows.push_back({test.view.names[group], CalculatorText(cell.above), CalculatorText(cell.notAbove),
                              CalculatorText(cell.Size())});
    }
    return cells;
}

double AboveIn(const std::vector<MedianCell>& cells) {
    double above = 0;
    for (const MedianCell& cell : cells) above += cell.above;
    return above;
}

double ChiSquareOf(const std::vector<MedianCell>& cells) {
    const double above = AboveIn(cells);
    double n = 0;
    for (const MedianCell& cell : cells) n += cell.Size();
    long double sum = 0;
    for (const MedianCell& cell : cells) {
        // Both cells of a group lie as far from what is expected of them.
        const long double expected = static_cast<long double>(cell.Size()) * above / n;
        const long double distance =
            (static_cast<long double>(cell.above) * n - static_cast<long double>(cell.Size()) * above) / n;
        sum += distance * distance * (1 / expected + 1 / (cell.Size() - expected));
    }
    return static_cast<double>(sum);
}

/// Some of the groups around the median of their cases, or around the one that was asked for. Not testable where all
/// cases lie on one side of it.
WorkedSubset CompareAroundMedian(const ExplainedTest& test, const std::vector<std::size_t>& groups, double overall) {
    std::vector<AscendingSample> samples;
    for (const std::size_t group : groups) samples.push_back(test.view.samples[group]);
    const double median = IsMedianGiven(test) ? overall : MedianOf(samples);
    std::vector<MedianCell> cells;
    std::vector<std::string> counts;
    double notAbove = 0;
    for (const AscendingSample& sample : samples) {
        const MedianCell& cell = cells.emplace_back(CellOf(sample, median));
        notAbove += cell.notAbove;
        counts.push_back(CalculatorText(cell.above));
    }
    WorkedSubset worked;
    worked.isTestable = notAbove > 0 && AboveIn(cells) > 0;
    if (worked.isTestable) {
        worked.statistic = ChiSquareOf(cells);
        worked.p = ChiSquareTail(worked.statistic, static_cast<double>(groups.size()) - 1);
    }
    worked.cells = {CalculatorText(median), FewText(counts), worked.isTestable ? ShortText(worked.statistic) : ""};
    return worked;
}

std::string MedianWords(const ExplainedTest& test) {
    return IsMedianGiven(test) ? "chi2 as above, around the median that was asked for, "
                               : "chi2 as above, around a median of its own, ";
}

void AddMedianPairs(const ExplainedTest& test, double overall) {
    const auto compare = [&](std::size_t first, std::size_t second) {
        const WorkedSubset worked = CompareAroundMedian(test, {first, second}, overall);
        WorkedPair pair{worked.cells, worked.statistic, 0, {}, 0, worked.p};
        pair.isTestable = worked.isTestable;
        return pair;
    };
    AddPairs(test, {"Pairs: " + MedianWords(test) + "df = 1", {{"median"}, {"above a"}, {"chi2"}}, compare});
}

void AddMedianSubsets(const ExplainedTest& test, double overall) {
    const auto compare = [&](const std::vector<std::size_t>& groups) {
        return CompareAroundMedian(test, groups, overall);
    };
    SubsetRule rule{MedianWords(test) + "df = m - 1", {{"median"}, {"above a"}, {"chi2"}}, "median", {}, compare};
    for (const AscendingSample& sample : test.view.samples) rule.orderValues.push_back(Quantile(sample, 0.5));
    AddSubsets(test, rule);
}

/// Of two groups: Fisher's exact significance, or Yates' correction.
void AddFourfold(const ExplainedTest& test, const MedianCell& first, const MedianCell& second) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const Number fisher = PValueOf(set, PValueKind::kFisher);
    const auto whole = [](double count) { return static_cast<std::int64_t>(count); };
    if (!fisher.empty()) {
        const double p =
            FisherExact({whole(first.above), whole(first.notAbove), whole(second.above), whole(second.notAbove)})
                .twoSided;
        steps.Told("p by Fisher",
                   With("sum of the probabilities of the tables with the margins of # #, # # that are no more probable",
                        {first.above, first.notAbove, second.above, second.notAbove}),
                   "", p, fisher);
        steps.Note("Fisher's p decides, for two groups and N <= 30.");
        return;
    }
    const auto found = std::ranges::find(set.pValues, PValueKind::kContinuityCorrected, &PValue::kind);
    if (found == set.pValues.end()) return;
    const double n = first.Size() + second.Size();
    const double above = first.above + second.above;
    const double product = steps.Step(
        "d", "a1 b2 - a2 b1", With("# * # - # * #", {first.above, second.notAbove, second.above, first.notAbove}),
        first.above * second.notAbove - second.above * first.notAbove);
    const double moved = std::max(std::fabs(product) - n / 2, 0.0);
    const double corrected =
        steps.Told("chi2 by Yates", "N (|d| - N / 2)^2 / (A (N - A) n1 n2), |d| - N / 2 at least 0",
                   With("# * # ^ 2 / (# * # * # * #)", {n, moved, above, n - above, first.Size(), second.Size()}),
                   n * moved * moved / (above * (n - above) * first.Size() * second.Size()), set.StatisticOf(*found));
    steps.Told("p by Yates", "P(chi2 with 1 df >= chi2 by Yates)", With("P(chi2 with 1 df >= #)", {corrected}),
               ChiSquareTail(corrected, 1), found->value);
    steps.Note("The p by Yates decides, for two groups and N > 30.");
}

}  // namespace

void ExplainMedian(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const double median = AddMedian(test);
    const std::vector<MedianCell> cells = CellsOf(test, median);
    const double n = steps.Count("N", "cases", test.view.Size());
    const double k = steps.Count("k", "groups with cases", static_cast<double>(cells.size()));
    const double above = steps.Count("A", "cases above the median", AboveIn(cells));
    std::vector<std::string> terms;
    for (const MedianCell& cell : cells) {
        const double shown = cell.Size() * above / n;
        terms.push_back(With("(# - #)^2 (1 / # + 1 / #)", {cell.above, shown, shown, cell.Size() - shown}));
    }
    const double chiSquare = steps.Told("chi2", "sum of (a - E)^2 (1 / E + 1 / (n - E)), E = n A / N", SumText(terms),
                                        ChiSquareOf(cells), set.statistic);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "chi2", chiSquare, degrees, PValueOf(set, PValueKind::kAsymptotic));
    if (cells.size() == 2) AddFourfold(test, cells[0], cells[1]);
    AddMedianPairs(test, median);
    AddMedianSubsets(test, median);
}

}  // namespace tarn
