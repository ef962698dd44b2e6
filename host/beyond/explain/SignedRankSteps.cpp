#include "host/beyond/explain/SignedRankSteps.h"

#include <cmath>

#include "host/beyond/explain/Tails.h"

namespace tarn {

double SignedRankVariance(StepWriter& steps, double n, long double tieSum) {
    const auto ties = static_cast<double>(tieSum);
    steps.Step("tie sum", "sum of (t^3 - t), t the sizes of ties", "", ties);
    const long double wide = n;
    const long double variance = wide * (wide + 1) * (2 * wide + 1) / 24 - tieSum / 48;
    return steps.Step("variance", "n (n + 1) (2n + 1) / 24 - tie sum / 48",
                      With("# * # * # / 24 - # / 48", {n, n + 1, 2 * n + 1, ties}), static_cast<double>(variance));
}

void AddSignedRankSteps(const ExplainedTest& test, const std::string& what, const AscendingSample& differences) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const std::vector<RankBlock> blocks = RankMagnitudes(differences);
    AddRankTable(steps, "Differences d = " + what + " by their magnitudes, without zeros", "|d|", {"d > 0", "d < 0"},
                 blocks);
    double n = 0;
    std::vector<std::string> terms;
    for (const RankBlock& block : blocks) {
        n += block.size;
        if (block.counts[0] > 1) terms.push_back(With("# * #", {block.counts[0], block.rank}));
        if (block.counts[0] == 1) terms.push_back(CalculatorText(block.rank));
    }
    steps.Count("zeros", "cases with d = 0, which have no rank", differences.size - n);
    steps.Count("n", "cases with another d", n);
    const double rankSum =
        steps.Told("T", "sum of the ranks of d > 0", SumText(terms), RankSumOf(blocks, 0), set.statistic);
    const double mean = steps.Step("mean", "n (n + 1) / 4", With("# * # / 4", {n, n + 1}), n * (n + 1) / 4);
    const double variance = SignedRankVariance(steps, n, TieSumOf(blocks));
    const double standardError =
        steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance), set.standardError);
    const double z = StandardizedStep(steps, {"T", rankSum, mean, rankSum - mean, standardError}, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    steps.Note("There is no correction for continuity, and the asymptotic p decides.");
}

}  // namespace tarn
