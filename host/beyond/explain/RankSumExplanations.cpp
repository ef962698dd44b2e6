#include <algorithm>
#include <cmath>
#include <numeric>

#include "host/beyond/explain/EstimateSteps.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

// ---- U and its variance ----

/// N^3 - N less the sum over the ties.
long double SpreadOf(double n, long double tieSum) {
    const long double wide = n;
    return wide * wide * wide - wide - tieSum;
}

double TieSumStep(StepWriter& steps, long double tieSum) {
    return steps.Step("tie sum", "sum of (t^3 - t), t the sizes of ties", "", static_cast<double>(tieSum));
}

struct GroupSizes {
    double n1;
    double n2;
    double n;
};

GroupSizes AddSizes(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const std::vector<AscendingSample>& samples = test.view.samples;
    const double n1 = steps.Count("n1", "cases of " + test.view.names[0], samples[0].size);
    const double n2 = steps.Count("n2", "cases of " + test.view.names[1], samples[1].size);
    return {n1, n2, steps.Step("N", "n1 + n2", With("# + #", {n1, n2}), n1 + n2)};
}

/// The variance of U.
double AddVariance(StepWriter& steps, const GroupSizes& sizes, long double tieSum) {
    const auto [n1, n2, n] = sizes;
    const double ties = TieSumStep(steps, tieSum);
    const auto variance = static_cast<double>(static_cast<long double>(n1) * n2 /
                                              (static_cast<long double>(n) * (n - 1)) * (SpreadOf(n, tieSum) / 12));
    return steps.Step("variance", "n1 n2 / (N (N - 1)) * (N^3 - N - tie sum) / 12",
                      With("# * # / (# * #) * (# ^ 3 - # - #) / 12", {n1, n2, n, n - 1, n, n, ties}), variance);
}

// ---- The exact significance ----

/// How many arrangements of n1 and n2 cases without ties have each U, from 0 to n1 n2: the coefficients of a product of
/// (1 - z^(n2 + i)) / (1 - z^i) for i from 1 to n1 (Mann and Whitney 1947).
std::vector<double> ArrangementsByU(std::size_t n1, std::size_t n2) {
    std::vector<double> ways(n1 * n2 + 1, 0);
    ways[0] = 1;
    for (std::size_t i = 1; i <= n1; ++i) {
        for (std::size_t u = ways.size(); u-- > n2 + i;) ways[u] -= ways[u - n2 - i];
        for (std::size_t u = i; u < ways.size(); ++u) ways[u] += ways[u - i];
    }
    return ways;
}

void AddExact(const ExplainedTest& test, const GroupSizes& sizes, double u) {
    StepWriter& steps = test.steps;
    const Number exact = PValueOf(test.Set(), PValueKind::kExact);
    const double pairs = sizes.n1 * sizes.n2;
    const std::string rule =
        "An exact p, of all arrangements as if there were no ties, decides up to n1 n2 = 400; here n1 n2 = " +
        CalculatorText(pairs);
    if (exact.empty()) return steps.Note(rule + ", so that the asymptotic p decides.");
    const double smaller = std::min(u, pairs - u);
    const std::vector<double> ways =
        ArrangementsByU(static_cast<std::size_t>(sizes.n1), static_cast<std::size_t>(sizes.n2));
    const double all = std::accumulate(ways.begin(), ways.end(), 0.0);
    const auto end = ways.begin() + static_cast<std::ptrdiff_t>(std::floor(smaller)) + 1;
    const double extreme = steps.Step("extreme", With("arrangements with a U of at most #, the smaller one", {smaller}),
                                      "", std::accumulate(ways.begin(), end, 0.0));
    steps.Step("all", "arrangements, N! / (n1! n2!)", With("#! / (#! * #!)", {sizes.n, sizes.n1, sizes.n2}), all);
    steps.Told("p exact", "2 extreme / all, at most 1", With("2 * # / #", {extreme, all}),
               std::min(2 * extreme / all, 1.0), exact);
    steps.Note(rule + ".");
}

}  // namespace

void ExplainMannWhitney(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const std::vector<std::string>& names = test.view.names;
    const std::vector<RankBlock> blocks = RankTogether(test.view.samples);
    AddRankTable(steps, "Values in order with the cases of each group and their ranks", test.Reading().fields.front(),
                 names, blocks);
    const GroupSizes sizes = AddSizes(test);
    const double rankSum = steps.Count("R1", "sum of the ranks of " + names[0], RankSumOf(blocks, 0));
    const double own = sizes.n1 * (sizes.n1 + 1) / 2;
    const double u = steps.Told("U", "R1 - n1 (n1 + 1) / 2", With("# - # * # / 2", {rankSum, sizes.n1, sizes.n1 + 1}),
                                rankSum - own, set.statistic);
    const double pairs = sizes.n1 * sizes.n2;
    steps.Told("U of " + names[1], "n1 n2 - U", With("# * # - #", {sizes.n1, sizes.n2, u}), pairs - u,
               test.FigureOf("MannWhitneyU"));
    const double mean = steps.Step("mean", "n1 n2 / 2", With("# * # / 2", {sizes.n1, sizes.n2}), pairs / 2);
    const double variance = AddVariance(steps, sizes, TieSumOf(blocks));
    const double standardError =
        steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance), set.standardError);
    const double z = StandardizedStep(steps, {"U", u, mean, u - mean, standardError}, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    AddExact(test, sizes, u);
}

void ExplainHodgesLehmannGroups(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const std::vector<std::string>& names = test.view.names;
    const std::vector<AscendingSample> samples = EqualOnly(test);
    const std::vector<RankBlock> blocks = RankTogether(samples);
    AddRankTable(steps, "Values in order with the cases of each group", test.Reading().fields.front(), names, blocks);
    const GroupSizes sizes = AddSizes(test);
    const double mean =
        steps.Step("mean", "n1 n2 / 2", With("# * # / 2", {sizes.n1, sizes.n2}), sizes.n1 * sizes.n2 / 2);
    const double variance = AddVariance(steps, sizes, TieSumOf(blocks));
    const double standardError = steps.Step("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance));
    AddEstimateSteps(test, "differences of a case of " + names[0] + " and one of " + names[1] + ", n1 n2",
                     DifferenceMatrix::OfSamples(samples[0], samples[1]), {mean, standardError});
}

}  // namespace tarn
