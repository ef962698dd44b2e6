#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "host/NumberText.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/explain/IndependentExplanations.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

constexpr double kHalf = 0.5;

}  // namespace

// ---- Kolmogorov-Smirnov test ----

void ExplainKolmogorovSmirnovTwoSample(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const std::vector<std::string>& names = test.view.names;
    const std::vector<AscendingSample> samples = EqualOnly(test);
    const std::vector<RankBlock> blocks = RankTogether(samples);
    const double n1 = samples[0].size;
    const double n2 = samples[1].size;
    std::vector<std::vector<std::string>> rows;
    long double count1 = 0;
    long double count2 = 0;
    double above = 0;
    double below = 0;
    for (const RankBlock& block : blocks) {
        count1 += block.counts[0];
        count2 += block.counts[1];
        const auto difference = static_cast<double>((count1 * n2 - count2 * n1) / (static_cast<long double>(n1) * n2));
        above = std::max(above, difference);
        below = std::min(below, difference);
        rows.push_back({ExactText(block.value), CalculatorText(block.counts[0]), CalculatorText(block.counts[1]),
                        CalculatorText(static_cast<double>(count1 / n1)),
                        CalculatorText(static_cast<double>(count2 / n2)), CalculatorText(difference)});
    }
    ExplanationTable& table =
        steps.Table("Values in order with the shares S1 and S2 of both groups up to them",
                    {{test.Reading().fields.front()}, {names[0]}, {names[1]}, {"S1"}, {"S2"}, {"S1 - S2"}});
    AddRows(table, rows.size(), [&](std::size_t row) { return rows[row]; });
    steps.Count("n1", "cases of " + names[0], n1);
    steps.Count("n2", "cases of " + names[1], n2);
    steps.Told("largest", "largest S1 - S2", "", above, test.FigureOf("Positive"), 1);
    steps.Told("smallest", "smallest S1 - S2", "", below, test.FigureOf("Negative"), 1);
    const double d =
        steps.Told("D", "the larger of the two without signs", "", std::max(above, -below), test.FigureOf("Absolute"));
    const double z = steps.Told("z", "sqrt(n1 n2 / (n1 + n2)) D", With("sqrt(# * # / #) * #", {n1, n2, n1 + n2, d}),
                                std::sqrt(n1 * n2 / (n1 + n2)) * d, set.statistic);
    KolmogorovStep(steps, z, PValueOf(set, PValueKind::kAsymptotic));
}

// ---- Wald-Wolfowitz test ----

namespace {

constexpr double kNone = std::numeric_limits<double>::infinity();

/// The fewest and the most runs up to a value that end with each of the groups.
struct RunsSoFar {
    std::array<double, 2> fewest{kNone, kNone};
    std::array<double, 2> most{-kNone, -kNone};

    double Fewest() const { return std::min(fewest[0], fewest[1]); }
    double Most() const { return std::max(most[0], most[1]); }
};

/// The runs within tied cases that begin with one group and end with another, at least and at most; none where there
/// are no cases for that.
struct RunsWithin {
    double fewest = kNone;
    double most = -kNone;
};

RunsWithin WithinTies(const RankBlock& block, std::size_t first, std::size_t last) {
    const double ofFirst = block.counts[first];
    const double ofOther = block.counts[1 - first];
    if (first != last) {
        if (ofFirst < 1 || ofOther < 1) return {};
        return {2, 2 * std::min(ofFirst, ofOther)};
    }
    if (ofFirst < 1) return {};
    if (ofOther < 1) return {1, 1};
    if (ofFirst < 2) return {};
    return {3, 2 * std::min(ofFirst - 1, ofOther) + 1};
}

/// Each order of the tied cases with each of what came before.
RunsSoFar Behind(const RunsSoFar& before, const RankBlock& block, bool isFirst) {
    RunsSoFar after;
    for (const std::size_t first : {0U, 1U}) {
        for (const std::size_t last : {0U, 1U}) {
            const RunsWithin within = WithinTies(block, first, last);
            for (const std::size_t previous : {0U, 1U}) {
                // A run goes on into the tied cases where these begin with its group.
                const double joined = !isFirst && previous == first ? 1 : 0;
                const double fewest = isFirst ? 0 : before.fewest[previous];
                const double most = isFirst ? 0 : before.most[previous];
                after.fewest[last] = std::min(after.fewest[last], fewest + within.fewest - joined);
                after.most[last] = std::max(after.most[last], most + within.most - joined);
            }
        }
    }
    return after;
}

double Choose(double n, double k) {
    if (k < 0 || k > n) return 0;
    double ways = 1;
    for (double i = 1; i <= k; ++i) ways = std::round(ways * (n - k + i) / i);
    return ways;
}

/// The arrangements with exactly so many runs (Wald and Wolfowitz 1940).
double ArrangementsOf(double runs, double n1, double n2) {
    const double half = std::floor(runs / 2);
    if (std::fmod(runs, 2) == 0) return 2 * Choose(n1 - 1, half - 1) * Choose(n2 - 1, half - 1);
    return Choose(n1 - 1, half) * Choose(n2 - 1, half - 1) + Choose(n1 - 1, half - 1) * Choose(n2 - 1, half);
}

struct RunsMoments {
    double n1;
    double n2;
    double mean;
    double standardError;

    double N() const { return n1 + n2; }
};

/// From a number of runs to its significance, which the document has in a set of its own. `which`: "fewest" or "most".
double AddRunsZ(StepWriter& steps, const RunsMoments& of, double runs, const StatisticSet& set,
                const std::string& which) {
    constexpr double kUncorrectedFrom = 50;
    const std::string name = "z " + which;
    const long double product = 2 * static_cast<long double>(of.n1) * of.n2;
    const auto deviation = static_cast<double>(((runs - 1) * static_cast<long double>(of.N()) - product) / of.N());
    if (of.N() >= kUncorrectedFrom) {
        return steps.Told(name, "(R - mean) / SE", With("(# - #) / #", {runs, of.mean, of.standardError}),
                          deviation / of.standardError, set.standardized);
    }
    if (std::fabs(deviation) < kHalf) {
        return steps.Told(name, With("nothing, since |R - mean| = |# - #| < 0.5", {runs, of.mean}), "", 0,
                          set.standardized);
    }
    return steps.Told(name, "(R - mean + 0.5) / SE", With("(# - # + 0.5) / #", {runs, of.mean, of.standardError}),
                      (deviation + kHalf) / of.standardError, set.standardized);
}

void AddRunsSet(StepWriter& steps, const RunsMoments& of, double runs, const StatisticSet& set,
                const std::string& which) {
    steps.Told("R " + which, which + " runs, of the last line", "", runs, set.statistic);
    steps.Told("SE " + which, "sqrt(variance)", "", of.standardError, set.standardError);
    const double z = AddRunsZ(steps, of, runs, set, which);
    steps.Told("p " + which, "P(N <= z)", With("P(N <= #)", {z}), NormalTail(z, Alternative::kLess),
               PValueOf(set, PValueKind::kAsymptotic));
    const Number exact = PValueOf(set, PValueKind::kExact);
    if (exact.empty()) return;
    double ways = 0;
    for (double count = 2; count <= runs; ++count) ways += ArrangementsOf(count, of.n1, of.n2);
    const double all = Choose(of.N(), of.n1);
    steps.Told("exact p " + which, "arrangements with at most R runs / all, N! / (n1! n2!)", With("# / #", {ways, all}),
               ways / all, exact);
}

void AddRunsTable(const ExplainedTest& test, const std::vector<RankBlock>& blocks, const std::vector<RunsSoFar>& runs) {
    ExplanationTable& table = test.steps.Table(
        "Values in order with the cases of each group and the runs up to them",
        {{test.Reading().fields.front()}, {test.view.names[0]}, {test.view.names[1]}, {"fewest runs"}, {"most runs"}});
    AddRows(table, blocks.size(), [&](std::size_t row) {
        return std::vector<std::string>{ExactText(blocks[row].value), CalculatorText(blocks[row].counts[0]),
                                        CalculatorText(blocks[row].counts[1]), CalculatorText(runs[row].Fewest()),
                                        CalculatorText(runs[row].Most())};
    });
}

}  // namespace

void ExplainWaldWolfowitz(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const std::vector<AscendingSample> samples = EqualOnly(test);
    const std::vector<RankBlock> blocks = RankTogether(samples);
    std::vector<RunsSoFar> runs;
    for (const RankBlock& block : blocks) {
        runs.push_back(Behind(runs.empty() ? RunsSoFar() : runs.back(), block, runs.empty()));
    }
    AddRunsTable(test, blocks, runs);
    const double n1 = steps.Count("n1", "cases of " + test.view.names[0], samples[0].size);
    const double n2 = steps.Count("n2", "cases of " + test.view.names[1], samples[1].size);
    const double n = steps.Step("N", "n1 + n2", With("# + #", {n1, n2}), n1 + n2);
    const double t = steps.Step("t", "2 n1 n2", With("2 * # * #", {n1, n2}), 2 * n1 * n2);
    const double mean = steps.Step("mean", "t / N + 1", With("# / # + 1", {t, n}), t / n + 1);
    const double variance =
        steps.Step("variance", "(t - N) t / (N^2 (N - 1))", With("# * # / (# ^ 2 * #)", {t - n, t, n, n - 1}),
                   (t - n) * t / (n * n * (n - 1)));
    const RunsMoments moments{n1, n2, mean, std::sqrt(variance)};
    const std::vector<StatisticSet>& sets = test.Reading().statistics;
    AddRunsSet(steps, moments, runs.back().Fewest(), sets.front(), "fewest");
    AddRunsSet(steps, moments, runs.back().Most(), sets.back(), "most");
    steps.Note(
        "Few runs speak against the hypothesis, so that p is the lower tail. The asymptotic p of the most runs "
        "decides; the correction by 0.5 is for N < 50, an exact p for N <= 30.");
}

// ---- Moses' test ----

namespace {

/// The rank of the first case of the control group from one end, where some of them are left out.
double RankBehind(const std::vector<RankBlock>& blocks, std::size_t control, double leftOut, bool isFromBelow) {
    double count = 0;
    for (std::size_t i = 0; i < blocks.size(); ++i) {
        const RankBlock& block = blocks[isFromBelow ? i : blocks.size() - 1 - i];
        count += block.counts[control];
        if (count > leftOut) return block.rank;
    }
    return std::nan("");
}

/// The control group of m cases beside the n others, without h of its cases at each end.
struct TrimmedControl {
    std::size_t group;
    double m;
    double n;
    double h;

    double Left() const { return m - 2 * h; }
};

/// The span of the control group, and its chance. `which`: "all" or "trimmed".
void AddSpan(StepWriter& steps, const std::vector<RankBlock>& blocks, const TrimmedControl& of, const StatisticSet& set,
             const std::string& which) {
    const double low =
        steps.Step("lowest " + which, "lowest rank of the control group", "", RankBehind(blocks, of.group, of.h, true));
    const double high = steps.Step("highest " + which, "highest rank of the control group", "",
                                   RankBehind(blocks, of.group, of.h, false));
    const double span = steps.Told("span " + which, "highest - lowest + 1, to the nearest whole number",
                                   With("# - # + 1", {high, low}), std::trunc(high - low + 1 + kHalf), set.statistic);
    const Number p = PValueOf(set, PValueKind::kExact);
    if (of.Left() < 2) {
        steps.Told("p " + which, "certain, since fewer than two control cases are left", "", 1, p);
        return;
    }
    // A narrower span than that of cases side by side comes from ties; its chance is that of the narrowest one.
    const double drawn = std::min(std::max(span, of.Left()) - 1, of.m + of.n);
    const std::string least = of.h == 0 ? "m - 1" : "m - 2h - 1";
    steps.Told("p " + which, "P(" + least + " or more control cases among span - 1 of all)",
               With("P(# or more of # among # of #)", {of.Left() - 1, of.m, drawn, of.m + of.n}),
               HypergeometricTail(of.m + of.n, of.m, drawn, of.Left() - 1), p);
}

}  // namespace

void ExplainMoses(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const std::vector<std::string>& names = test.view.names;
    const std::vector<RankBlock> blocks = RankTogether(test.view.samples);
    AddRankTable(steps, "Values in order with the cases of each group and their ranks", test.Reading().fields.front(),
                 names, blocks);
    const std::size_t control = names[0] == test.Reading().samples.front().name ? 0 : 1;
    const double m = steps.Count("m", "cases of the control group, " + names[control], test.view.samples[control].size);
    const double n = steps.Count("n", "cases of " + names[1 - control], test.view.samples[1 - control].size);
    const Number trimmed = test.FigureOf("OutliersTrimmedFromEachEnd");
    const double h = steps.Count("h", "control cases left out at each end, 5 % of m or as asked for", trimmed.value);
    const std::vector<StatisticSet>& sets = test.Reading().statistics;
    AddSpan(steps, blocks, {control, m, n, 0}, sets.front(), "all");
    AddSpan(steps, blocks, {control, m, n, h}, sets.back(), "trimmed");
    steps.Note("The p of the trimmed span decides.");
}

}  // namespace tarn
