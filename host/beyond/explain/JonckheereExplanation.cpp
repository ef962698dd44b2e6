#include <cmath>

#include "host/NumberText.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/PairSteps.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/SubsetSteps.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

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
struct PairCount {
    std::size_t earlier;
    std::size_t later;
    double u;
};

std::vector<PairCount> AddCounts(const ExplainedTest& test) {
    const std::vector<AscendingSample>& samples = test.view.samples;
    const std::vector<std::string>& names = test.view.names;
    std::vector<PairCount> pairs;
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
        const PairCount& pair = pairs[row];
        return std::vector<std::string>{names[pair.earlier] + " < " + names[pair.later], CalculatorText(pair.u)};
    });
    test.steps.Told("J", "sum of U", "", sum, test.Set().statistic);
    return pairs;
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

SizeSums TiesOf(const std::vector<AscendingSample>& samples) {
    SizeSums ties;
    for (const RankBlock& block : RankTogether(samples)) ties.Add(block.size);
    return ties;
}

/// The count of a pair among those of all pairs, which stand by their later group.
double CountOf(const std::vector<PairCount>& counts, std::size_t earlier, std::size_t later) {
    return counts[later * (later - 1) / 2 + earlier].u;
}

/// J of some of the groups in their order, with its normal approximation.
struct SomeGroups {
    double j = 0;
    double mean = 0;
    double standardError = 0;
    double z = 0;
    double p = 0;  ///< one-tailed, to the side that the request names
};

SomeGroups CompareSome(const ExplainedTest& test, const std::vector<std::size_t>& members,
                       const std::vector<PairCount>& counts, const std::vector<AscendingSample>& equalOnly) {
    SomeGroups some;
    std::vector<AscendingSample> samples;
    SizeSums groups;
    double n = 0;
    double pairsOfCases = 0;
    for (std::size_t place = 0; place < members.size(); ++place) {
        const std::size_t group = members[place];
        const double size = equalOnly[group].size;
        for (std::size_t before = 0; before < place; ++before) some.j += CountOf(counts, members[before], group);
        samples.push_back(equalOnly[group]);
        groups.Add(size);
        pairsOfCases += n * size;
        n += size;
    }
    SizeSums all;
    all.Add(n);
    some.mean = pairsOfCases / 2;
    some.standardError = std::sqrt(VarianceOfJ(all, groups, TiesOf(samples)));
    some.z = some.standardError == 0 ? 0 : (some.j - some.mean) / some.standardError;
    some.p = NormalTail(std::fabs(some.z), test.source.expectsFall ? Alternative::kLess : Alternative::kGreater);
    return some;
}

/// p goes by the tail that the request names, whatever the sign of z.
std::string TailOfOrder(const ExplainedTest& test) {
    return test.source.expectsFall ? "one-tailed p = P(N <= |z|), since values are to fall"
                                   : "one-tailed p = P(N >= |z|)";
}

void AddOrderedPairs(const ExplainedTest& test, const std::vector<PairCount>& counts,
                     const std::vector<AscendingSample>& equalOnly) {
    const auto compare = [&](std::size_t first, std::size_t second) {
        const SomeGroups some = CompareSome(test, {first, second}, counts, equalOnly);
        const auto tieSum = static_cast<double>(TieSumOf(RankTogether({equalOnly[first], equalOnly[second]})));
        WorkedPair pair{{}, some.j, 0, some.standardError, some.z, some.p};
        pair.cells = {CalculatorText(equalOnly[first].size),
                      CalculatorText(equalOnly[second].size),
                      CalculatorText(tieSum),
                      CalculatorText(some.j),
                      ShortText(some.standardError),
                      ShortText(some.z)};
        return pair;
    };
    AddPairs(test,
             {"Pairs: J, which is U of the two groups, SE = sqrt(n1 n2 (N^3 - N - tie sum) / (12 N (N - 1))) with "
              "N = n1 + n2, z = (J - n1 n2 / 2) / SE, " +
                  TailOfOrder(test),
              {{"n1"}, {"n2"}, {"tie sum"}, {"J"}, {"SE"}, {"z"}},
              compare});
}

void AddOrderedSubsets(const ExplainedTest& test, const std::vector<PairCount>& counts,
                       const std::vector<AscendingSample>& equalOnly) {
    const auto compare = [&](const std::vector<std::size_t>& groups) {
        const SomeGroups some = CompareSome(test, groups, counts, equalOnly);
        WorkedSubset subset;
        subset.statistic = some.j;
        subset.p = some.p;
        subset.cells = {CalculatorText(some.j), CalculatorText(some.mean), ShortText(some.standardError),
                        ShortText(some.z)};
        return subset;
    };
    AddSubsets(test, {"J, mean, SE and z as above, of its m groups alone, " + TailOfOrder(test),
                      {{"J"}, {"mean"}, {"SE"}, {"z"}},
                      "",
                      {},
                      compare});
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
    const std::vector<PairCount> counts = AddCounts(test);
    double j = 0;
    for (const PairCount& pair : counts) j += pair.u;
    const auto pairs = static_cast<double>((static_cast<long double>(n) * n - squares) / 4);
    steps.Step("mean", "(N^2 - sum of n^2) / 4", With("(# ^ 2", {n}) + " - (" + SumText(terms) + ")) / 4", pairs);
    // The variance takes equal values alone as tied.
    const std::vector<AscendingSample> equalOnly = EqualOnly(test);
    const double variance = AddVarianceOfJ(steps, n, groups, TiesOf(equalOnly));
    const double standardError =
        steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance), set.standardError);
    const double z = StandardizedStep(steps, {"J", j, pairs, j - pairs, standardError}, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    AddOrderedPairs(test, counts, equalOnly);
    AddOrderedSubsets(test, counts, equalOnly);
}

}  // namespace tarn
