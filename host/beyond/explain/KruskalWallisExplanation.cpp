#include <cmath>

#include "host/NumberText.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/PairSteps.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/SubsetSteps.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

/// The rank sums of the groups, and what lies within all ranks.
struct GroupRanks {
    std::vector<double> sums;
    std::vector<double> sizes;
    double n = 0;
    long double tieSum = 0;

    GroupRanks(const std::vector<RankBlock>& blocks, const std::vector<AscendingSample>& samples)
        : tieSum(TieSumOf(blocks)) {
        for (std::size_t group = 0; group < samples.size(); ++group) {
            sizes.push_back(samples[group].size);
            sums.push_back(RankSumOf(blocks, group));
            n += samples[group].size;
        }
    }

    double MeanOf(std::size_t group) const { return sums[group] / sizes[group]; }
    /// N^3 - N less the ties.
    long double Spread() const {
        const long double wide = n;
        return wide * wide * wide - wide - tieSum;
    }
    /// Of n (R / n - (N + 1) / 2)^2 over the groups.
    long double SumOfSquares() const {
        long double sum = 0;
        for (std::size_t group = 0; group < sums.size(); ++group) {
            const long double size = sizes[group];
            const long double above = sums[group] - size * (static_cast<long double>(n) + 1) / 2;
            sum += above * above / size;
        }
        return sum;
    }
    double H() const {
        const long double spread = Spread();
        if (spread == 0) return 0;
        return static_cast<double>(12 * (static_cast<long double>(n) - 1) * SumOfSquares() / spread);
    }
};

GroupRanks RankGroups(const ExplainedTest& test) {
    const std::vector<RankBlock> blocks = RankTogether(test.view.samples);
    AddRankTable(test.steps, "Values in order with the cases of each group and their ranks",
                 test.Reading().fields.front(), test.view.names, blocks);
    GroupRanks ranks(blocks, test.view.samples);
    ExplanationTable& table =
        test.steps.Table("Rank sums", {{test.Reading().group, true}, {"n"}, {"rank sum R"}, {"mean rank R / n"}});
    for (std::size_t group = 0; group < test.view.samples.size(); ++group) {
        table.rows.push_back({test.view.names[group], CalculatorText(ranks.sizes[group]),
                              CalculatorText(ranks.sums[group]), CalculatorText(ranks.MeanOf(group))});
    }
    return ranks;
}

double AddH(const ExplainedTest& test, const GroupRanks& ranks) {
    StepWriter& steps = test.steps;
    const double n = ranks.n;
    const double middle = steps.Step("middle", "(N + 1) / 2", With("# / 2", {n + 1}), (n + 1) / 2);
    std::vector<std::string> terms;
    for (std::size_t group = 0; group < ranks.sums.size(); ++group) {
        terms.push_back(With("# * (# - #)^2", {ranks.sizes[group], ranks.MeanOf(group), middle}));
    }
    const double squares =
        steps.Step("Q", "sum of n (R / n - middle)^2", SumText(terms), static_cast<double>(ranks.SumOfSquares()));
    const auto ties = static_cast<double>(ranks.tieSum);
    steps.Step("tie sum", "sum of (t^3 - t), t the sizes of ties", "", ties);
    const long double wide = n;
    const auto correction = static_cast<double>(ranks.Spread() / (wide * wide * wide - wide));
    steps.Step("C", "1 - tie sum / (N^3 - N)", With("1 - # / (# ^ 3 - #)", {ties, n, n}), correction);
    const Number& document = test.Set().statistic;
    if (ranks.Spread() == 0) return steps.Told("H", "0, since all values are tied", "", 0, document);
    return steps.Told("H", "12 Q / (N (N + 1) C)", With("12 * # / (# * # * #)", {squares, n, n + 1, correction}),
                      ranks.H(), document);
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

/// Campbell and Skillings' subsets: H of the ranks among the groups of each. p itself decides.
void AddSubsetsByH(const ExplainedTest& test, const GroupRanks& all) {
    const auto compare = [&](const std::vector<std::size_t>& groups) {
        std::vector<AscendingSample> samples;
        for (const std::size_t group : groups) samples.push_back(test.view.samples[group]);
        const GroupRanks ranks(RankTogether(samples), samples);
        std::vector<std::string> sums;
        for (const double sum : ranks.sums) sums.push_back(CalculatorText(sum));
        WorkedSubset subset;
        subset.statistic = ranks.H();
        subset.p = ChiSquareTail(subset.statistic, static_cast<double>(groups.size()) - 1);
        subset.cells = {FewText(sums), CalculatorText(static_cast<double>(ranks.tieSum)), ShortText(subset.statistic)};
        return subset;
    };
    SubsetRule rule{"H as above, of the values of its m groups ranked among themselves, df = m - 1",
                    {{"rank sums R"}, {"tie sum"}, {"H"}},
                    "mean rank",
                    {},
                    compare};
    for (std::size_t group = 0; group < all.sums.size(); ++group) rule.orderValues.push_back(all.MeanOf(group));
    rule.isByPlainP = true;
    rule.endsStep = false;
    rule.skipsInside = true;
    AddSubsets(test, rule);
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
    AddSubsetsByH(test, ranks);
}

}  // namespace tarn
