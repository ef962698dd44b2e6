#include <algorithm>
#include <cmath>
#include <cstdint>

#include "host/NumberText.h"
#include "host/beyond/Quartiles.h"
#include "host/beyond/exact/MedianExact.h"
#include "host/beyond/explain/ClassesOfField.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/PairSteps.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

// ---- Kruskal-Wallis test ----

namespace {

/// The rank sums of the groups, and what lies within all ranks.
struct GroupRanks {
    std::vector<double> sums;
    std::vector<double> sizes;
    double n = 0;
    long double tieSum = 0;

    double MeanOf(std::size_t group) const { return sums[group] / sizes[group]; }
    /// N^3 - N less the ties.
    long double Spread() const {
        const long double wide = n;
        return wide * wide * wide - wide - tieSum;
    }
};

GroupRanks RankGroups(const ExplainedTest& test) {
    const std::vector<RankBlock> blocks = RankTogether(test.view.samples);
    AddRankTable(test.steps, "Values in order with the cases of each group and their ranks",
                 test.Reading().fields.front(), test.view.names, blocks);
    GroupRanks ranks;
    ranks.n = test.view.Size();
    ranks.tieSum = TieSumOf(blocks);
    ExplanationTable& table =
        test.steps.Table("Rank sums", {{test.Reading().group, true}, {"n"}, {"rank sum R"}, {"mean rank R / n"}});
    for (std::size_t group = 0; group < test.view.samples.size(); ++group) {
        ranks.sizes.push_back(test.view.samples[group].size);
        ranks.sums.push_back(RankSumOf(blocks, group));
        table.rows.push_back({test.view.names[group], CalculatorText(ranks.sizes[group]),
                              CalculatorText(ranks.sums[group]), CalculatorText(ranks.MeanOf(group))});
    }
    return ranks;
}

double AddH(const ExplainedTest& test, const GroupRanks& ranks) {
    StepWriter& steps = test.steps;
    const double n = ranks.n;
    const double middle = steps.Step("middle", "(N + 1) / 2", With("# / 2", {n + 1}), (n + 1) / 2);
    long double sum = 0;
    std::vector<std::string> terms;
    for (std::size_t group = 0; group < ranks.sums.size(); ++group) {
        const long double size = ranks.sizes[group];
        const long double above = ranks.sums[group] - size * middle;
        sum += above * above / size;
        terms.push_back(With("# * (# - #)^2", {ranks.sizes[group], ranks.MeanOf(group), middle}));
    }
    const double squares = steps.Step("Q", "sum of n (R / n - middle)^2", SumText(terms), static_cast<double>(sum));
    const auto ties = static_cast<double>(ranks.tieSum);
    steps.Step("tie sum", "sum of (t^3 - t), t the sizes of ties", "", ties);
    const long double wide = n;
    const auto correction = static_cast<double>(ranks.Spread() / (wide * wide * wide - wide));
    steps.Step("C", "1 - tie sum / (N^3 - N)", With("1 - # / (# ^ 3 - #)", {ties, n, n}), correction);
    const Number& document = test.Set().statistic;
    if (ranks.Spread() == 0) return steps.Told("H", "0, since all values are tied", "", 0, document);
    return steps.Told("H", "12 Q / (N (N + 1) C)", With("12 * # / (# * # * #)", {squares, n, n + 1, correction}),
                      static_cast<double>(12 * (wide - 1) * sum / ranks.Spread()), document);
}

/// Dunn's pairs: the differences of the mean ranks, each with a standard error of its own.
void AddDunnPairs(const ExplainedTest& test, const GroupRanks& ranks) {
    if (test.Reading().pairs.empty()) return;
    const long double unit = ranks.Spread() / (12 * (static_cast<long double>(ranks.n) - 1));
    const double v = test.steps.Step(
        "V", "(N^3 - N - tie sum) / (12 (N - 1)), of which the SE of a pair is sqrt(V (1 / n1 + 1 / n2))",
        With("(# ^ 3 - # - #) / (12 * #)", {ranks.n, ranks.n, static_cast<double>(ranks.tieSum), ranks.n - 1}),
        static_cast<double>(unit));
    PairValues values{"mean rank", {}, {}};
    for (std::size_t group = 0; group < ranks.sums.size(); ++group) values.ofSample.push_back(ranks.MeanOf(group));
    values.standardError = [&ranks, v](std::size_t first, std::size_t second) {
        return std::sqrt(v * (1 / ranks.sizes[first] + 1 / ranks.sizes[second]));
    };
    AddPairTable(test, values);
}

}  // namespace

void ExplainKruskalWallis(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const GroupRanks ranks = RankGroups(test);
    steps.Count("N", "cases", ranks.n);
    const double k = steps.Count("k", "groups with cases", static_cast<double>(ranks.sums.size()));
    const double h = AddH(test, ranks);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "H", h, degrees, PValueOf(set, PValueKind::kAsymptotic));
    AddDunnPairs(test, ranks);
    NoteSubsets(test);
}

// ---- Jonckheere-Terpstra test ----

namespace {

/// Sums over sizes, of the groups or of the ties: of m (m - 1) (2m + 5), m (m - 1) (m - 2), m (m - 1).
__extension__ using Wide = __int128;

struct SizeSums {
    Wide ofVariance = 0;
    Wide ofTriples = 0;
    Wide ofPairs = 0;

    void Add(double size) {
        const auto m = static_cast<Wide>(size);
        ofVariance += m * (m - 1) * (2 * m + 5);
        ofTriples += m * (m - 1) * (m - 2);
        ofPairs += m * (m - 1);
    }
};

double AsNumber(Wide number) {
    return static_cast<double>(number);
}

/// Over a common denominator in whole numbers, so that nothing is rounded before it is subtracted.
double VarianceOfJ(const SizeSums& all, const SizeSums& groups, const SizeSums& ties) {
    if (all.ofTriples == 0) {
        // Two cases: 1/4 where they are in two groups and not tied.
        return all.ofPairs > 0 && groups.ofPairs == 0 && ties.ofPairs == 0 ? 0.25 : 0;
    }
    constexpr Wide kVarianceDivisor = 72;
    // m (m - 1) (m - 2) of all is (N - 2) times their pairs.
    const Wide nLessTwo = all.ofTriples / all.ofPairs;
    const Wide numerator = all.ofTriples * (all.ofVariance - groups.ofVariance - ties.ofVariance) +
                           2 * groups.ofTriples * ties.ofTriples + 9 * nLessTwo * groups.ofPairs * ties.ofPairs;
    return static_cast<double>(static_cast<long double>(numerator) /
                               static_cast<long double>(kVarianceDivisor * all.ofTriples));
}

/// U of each pair of groups: how often a value of the earlier one lies below one of the later one, ties by half.
double AddCounts(const ExplainedTest& test) {
    const std::vector<AscendingSample>& samples = test.view.samples;
    const std::vector<std::string>& names = test.view.names;
    struct Pair {
        std::size_t earlier;
        std::size_t later;
        double u;
    };
    std::vector<Pair> pairs;
    double sum = 0;
    for (std::size_t j = 1; j < samples.size(); ++j) {
        for (std::size_t i = 0; i < j; ++i) {
            const double n2 = samples[j].size;
            pairs.push_back({i, j, RankSumOf(RankTogether({samples[i], samples[j]}), 1) - n2 * (n2 + 1) / 2});
            sum += pairs.back().u;
        }
    }
    ExplanationTable& table =
        test.steps.Table("Pairs of cases that rise from the earlier group to the later one, ties by half",
                         {{"groups", true}, {"pairs U"}});
    AddRows(table, pairs.size(), [&](std::size_t row) {
        const Pair& pair = pairs[row];
        return std::vector<std::string>{names[pair.earlier] + " < " + names[pair.later], CalculatorText(pair.u)};
    });
    return test.steps.Told("J", "sum of U", "", sum, test.Set().statistic);
}

/// The variance under ties (Kendall and Gibbons 1990; Hollander and Wolfe 1999, page 212).
double AddVarianceOfJ(StepWriter& steps, double n, const SizeSums& groups, const SizeSums& ties) {
    SizeSums all;
    all.Add(n);
    const auto sums = [&](const std::string& number, const std::string& formula, const Wide SizeSums::*member) {
        steps.Step("G" + number, "sum of " + formula + ", m the sizes of the groups", "", AsNumber(groups.*member));
        steps.Step("T" + number, "sum of " + formula + ", m the sizes of ties", "", AsNumber(ties.*member));
    };
    sums("1", "m (m - 1) (2m + 5)", &SizeSums::ofVariance);
    const Wide rest = all.ofVariance - groups.ofVariance - ties.ofVariance;
    steps.Step("A", "N (N - 1) (2N + 5) - G1 - T1",
               With("# * # * # - # - #", {n, n - 1, 2 * n + 5, AsNumber(groups.ofVariance), AsNumber(ties.ofVariance)}),
               AsNumber(rest));
    sums("2", "m (m - 1) (m - 2)", &SizeSums::ofTriples);
    const auto product =
        static_cast<double>(static_cast<long double>(groups.ofTriples) * static_cast<long double>(ties.ofTriples));
    steps.Step("B", "G2 T2", With("# * #", {AsNumber(groups.ofTriples), AsNumber(ties.ofTriples)}), product);
    sums("3", "m (m - 1)", &SizeSums::ofPairs);
    const auto pairs =
        static_cast<double>(static_cast<long double>(groups.ofPairs) * static_cast<long double>(ties.ofPairs));
    steps.Step("D", "G3 T3", With("# * #", {AsNumber(groups.ofPairs), AsNumber(ties.ofPairs)}), pairs);
    return steps.Step("variance", "A / 72 + B / (36 N (N - 1) (N - 2)) + D / (8 N (N - 1))",
                      With("# / 72 + # / (36 * # * # * #) + # / (8 * # * #)",
                           {AsNumber(rest), product, n, n - 1, n - 2, pairs, n, n - 1}),
                      VarianceOfJ(all, groups, ties));
}

}  // namespace

void ExplainJonckheereTerpstra(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    ExplanationTable& sizes = steps.Table("Groups in their order", {{test.Reading().group, true}, {"n"}});
    SizeSums groups;
    long double squares = 0;
    std::vector<std::string> terms;
    for (std::size_t i = 0; i < test.view.samples.size(); ++i) {
        const double size = test.view.samples[i].size;
        sizes.rows.push_back({test.view.names[i], CalculatorText(size)});
        groups.Add(size);
        squares += static_cast<long double>(size) * size;
        terms.push_back(CalculatorText(size) + "^2");
    }
    const double n = steps.Count("N", "cases", test.view.Size());
    const double j = AddCounts(test);
    const auto pairs = static_cast<double>((static_cast<long double>(n) * n - squares) / 4);
    steps.Step("mean", "(N^2 - sum of n^2) / 4", With("(# ^ 2", {n}) + " - (" + SumText(terms) + ")) / 4", pairs);
    // The variance takes equal values alone as tied.
    SizeSums ties;
    for (const RankBlock& block : RankTogether(EqualOnly(test))) ties.Add(block.size);
    const double variance = AddVarianceOfJ(steps, n, groups, ties);
    const double standardError =
        steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance), set.standardError);
    const double z = StandardizedStep(steps, {"J", j, pairs, j - pairs, standardError}, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    NotePairs(test);
    NoteSubsets(test);
}

// ---- Median test ----

namespace {

/// The cases of one group on both sides of the median.
struct MedianCell {
    double above = 0;
    double notAbove = 0;

    double Size() const { return above + notAbove; }
};

/// The median of all cases, or the one that was asked for.
double AddMedian(const ExplainedTest& test) {
    std::vector<double> values;
    std::vector<double> weights;
    for (const AscendingSample& sample : test.view.samples) {
        for (std::size_t i = 0; i < sample.values.size(); ++i) {
            values.push_back(sample.values[i]);
            weights.push_back(sample.WeightAt(i));
        }
    }
    const double own = Quantile(Ascending(std::move(values), weights), 0.5);
    const Number document = test.FigureOf("Median");
    const double median = InAllDigits(document.text, {own});
    const bool isGiven = test.view.result->conditionKey == "CategoryListsAreSpecified_I_Median_2";
    if (isGiven) return test.steps.Count("median", "as asked for", median);
    return test.steps.Told("median", "of all cases", "", own, document);
}

std::vector<MedianCell> CellsOf(const ExplainedTest& test, double median) {
    std::vector<MedianCell> cells;
    ExplanationTable& table = test.steps.Table("Cases on both sides of the median",
                                               {{test.Reading().group, true}, {"above a"}, {"not above b"}, {"n"}});
    for (std::size_t group = 0; group < test.view.samples.size(); ++group) {
        const AscendingSample& sample = test.view.samples[group];
        MedianCell& cell = cells.emplace_back();
        for (std::size_t i = 0; i < sample.values.size(); ++i) {
            (sample.values[i] > median ? cell.above : cell.notAbove) += sample.WeightAt(i);
        }
        table.rows.push_back({test.view.names[group], CalculatorText(cell.above), CalculatorText(cell.notAbove),
                              CalculatorText(cell.Size())});
    }
    return cells;
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
    double above = 0;
    for (const MedianCell& cell : cells) above += cell.above;
    steps.Count("A", "cases above the median", above);
    long double sum = 0;
    std::vector<std::string> terms;
    for (const MedianCell& cell : cells) {
        // Both cells of a group lie as far from what is expected of them.
        const long double expected = static_cast<long double>(cell.Size()) * above / n;
        const long double distance =
            (static_cast<long double>(cell.above) * n - static_cast<long double>(cell.Size()) * above) / n;
        sum += distance * distance * (1 / expected + 1 / (cell.Size() - expected));
        const auto shown = static_cast<double>(expected);
        terms.push_back(With("(# - #)^2 (1 / # + 1 / #)", {cell.above, shown, shown, cell.Size() - shown}));
    }
    const double chiSquare = steps.Told("chi2", "sum of (a - E)^2 (1 / E + 1 / (n - E)), E = n A / N", SumText(terms),
                                        static_cast<double>(sum), set.statistic);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "chi2", chiSquare, degrees, PValueOf(set, PValueKind::kAsymptotic));
    if (cells.size() == 2) AddFourfold(test, cells[0], cells[1]);
    NotePairs(test);
    NoteSubsets(test);
}

}  // namespace tarn
