#include "host/beyond/explain/OneSampleExplanations.h"

#include <algorithm>
#include <boost/math/special_functions/beta.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>

#include "host/NumberText.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/Quartiles.h"
#include "host/beyond/QuietDistributions.h"
#include "host/beyond/exact/BinomialExact.h"
#include "host/beyond/explain/ClassesOfField.h"
#include "host/beyond/explain/SignedRankSteps.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

constexpr double kOneHalf = 0.5;

void AddClassTable(const ExplainedTest& test, const ClassesOfField& classes) {
    ExplanationTable& table =
        test.steps.Table("Classes of " + test.Reading().fields.front(), {{"class", true}, {"cases"}});
    table.rows = {{classes.firstName, CalculatorText(classes.first)},
                  {classes.secondName, CalculatorText(classes.second)}};
}

// ---- Binomial test ----

/// The probability that the binomial test expects, which stands behind the classes.
double ExpectedShareOf(const ExplainedTest& test) {
    const std::vector<std::string>& parameters = test.view.result->parameters;
    constexpr std::size_t kShares = 2;
    return parameters.size() < kShares ? kOneHalf : Number(parameters[parameters.size() - kShares]).value;
}

void AddBinomialTail(const ExplainedTest& test, double count, double n, double p0, bool isTwoTailed) {
    const Number exact = PValueOf(test.Set(), PValueKind::kExact);
    if (exact.empty()) return;
    const ExactTails tails = BinomialExact(static_cast<std::int64_t>(count), static_cast<std::int64_t>(n), p0);
    const bool isLower = tails.less < tails.greater;
    const double tail = isLower ? tails.less : tails.greater;
    const std::string sign = isLower ? " <= " : " >= ";
    test.steps.Step("tail", "P(X" + sign + "observed), the smaller tail",
                    With("P(X" + sign + "#) of # trials with #", {count, n, p0}), tail);
    test.steps.Told("p exact", isTwoTailed ? "2 * tail, at most 1" : "tail", With(isTwoTailed ? "2 * #" : "#", {tail}),
                    std::min(isTwoTailed ? 2 * tail : tail, 1.0), exact);
}

}  // namespace

void ExplainBinomial(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const ClassesOfField classes = ClassesOf(test, CutItself::kIsFirst);
    AddClassTable(test, classes);
    const double n = steps.Count("n", "cases", classes.Total());
    const double count =
        steps.Told("X", "cases in the first class, " + classes.firstName, "", classes.first, set.statistic);
    const double p0 = steps.Count("p0", "share of the first class that is expected", ExpectedShareOf(test));
    const double mean = steps.Step("mean", "n p0", With("# * #", {n, p0}), n * p0);
    const double standardError = steps.Told("SE", "sqrt(n p0 (1 - p0))", With("sqrt(# * # * #)", {n, p0, 1 - p0}),
                                            std::sqrt(n * p0 * (1 - p0)), set.standardError);
    const double z = CorrectedStep(steps, {"X", count, mean, count - mean, standardError}, set.standardized);
    constexpr double kRounding = 1e-15;
    const bool isTwoTailed = std::fabs(p0 - kOneHalf) < kRounding;
    const Number asymptotic = PValueOf(set, PValueKind::kAsymptotic);
    if (isTwoTailed) {
        TwoTailedNormalStep(steps, z, set);
    } else {
        steps.Told("p asymptotic", "P(N >= |z|), one tail since p0 isn't 0.5", With("P(N >= #)", {std::fabs(z)}),
                   NormalTail(std::fabs(z), Alternative::kGreater), asymptotic);
    }
    AddBinomialTail(test, count, n, p0, isTwoTailed);
    steps.Note("The asymptotic p decides; an exact one stands beside it for n < 26.");
}

// ---- Intervals of a proportion ----

namespace {

/// What the three intervals have in common.
struct Proportion {
    double x = 0;     ///< cases in the first class
    double y = 0;     ///< in the second one
    double tail = 0;  ///< half of what the level leaves out

    double Share() const { return x / (x + y); }
};

double BetaQuantile(double p, double a, double b) {
    return static_cast<double>(boost::math::ibeta_inv(static_cast<long double>(a), static_cast<long double>(b),
                                                      static_cast<long double>(p), QuietPolicy()));
}

/// How far the log likelihood of a share lies below the largest one, less what the level allows.
long double Excess(const Proportion& of, long double share, long double allowed) {
    const long double n = static_cast<long double>(of.x) + of.y;
    return of.x * std::log(of.x / n / share) + of.y * std::log(of.y / n / (1 - share)) - allowed;
}

/// The share at which that is nothing, on the side of the sample's share that `end` is on.
double ProfileLimit(const Proportion& of, long double allowed, long double end) {
    long double inside = static_cast<long double>(of.x) / (static_cast<long double>(of.x) + of.y);
    long double outside = end;
    constexpr int kHalvings = 200;
    for (int i = 0; i < kHalvings; ++i) {
        const long double middle = (inside + outside) / 2;
        (Excess(of, middle, allowed) < 0 ? inside : outside) = middle;
    }
    return static_cast<double>((inside + outside) / 2);
}

const ResultTable* LimitsOf(const ExplainedTest& test, const char* method) {
    const ResultTable* const table = test.view.result->content.Table(method);
    return table == nullptr ? nullptr : table->Table("Asymptotic");
}

Number LimitOf(const ResultTable& limits, const char* row) {
    return Number(limits.Value(row));
}

/// Of two quantiles of the beta distribution; where a class is empty the limit on its side is the end.
void AddBetaLimits(const ExplainedTest& test, const Proportion& of, const char* method, double shift) {
    const ResultTable* const limits = LimitsOf(test, method);
    if (limits == nullptr) return;
    const bool isExact = shift == 0;
    const std::string name = isExact ? "Clopper-Pearson" : "Jeffreys";
    const double a = isExact ? of.x : of.x + kOneHalf;
    const double b = isExact ? of.y + 1 : of.y + kOneHalf;
    const double upperA = isExact ? of.x + 1 : a;
    const double upperB = isExact ? of.y : b;
    StepWriter& steps = test.steps;
    if (of.x == 0) {
        steps.Told(name + " lower", "0, since x = 0", "", 0, LimitOf(*limits, "Lower"));
    } else {
        steps.Told(name + " lower",
                   isExact ? "quantile tail of Beta(x, n - x + 1)" : "quantile tail of Beta(x + 0.5, n - x + 0.5)",
                   With("quantile # of Beta(#, #)", {of.tail, a, b}), BetaQuantile(of.tail, a, b),
                   LimitOf(*limits, "Lower"));
    }
    if (of.y == 0) {
        steps.Told(name + " upper", "1, since x = n", "", 1, LimitOf(*limits, "Upper"));
        return;
    }
    steps.Told(name + " upper",
               isExact ? "quantile 1 - tail of Beta(x + 1, n - x)" : "quantile 1 - tail of Beta(x + 0.5, n - x + 0.5)",
               With("quantile # of Beta(#, #)", {1 - of.tail, upperA, upperB}),
               BetaQuantile(1 - of.tail, upperA, upperB), LimitOf(*limits, "Upper"));
}

void AddProfileLimits(const ExplainedTest& test, const Proportion& of) {
    const ResultTable* const limits = LimitsOf(test, "ProfileLikelihood");
    if (limits == nullptr) return;
    StepWriter& steps = test.steps;
    const std::string name = "profile likelihood";
    const long double level = 1 - 2 * static_cast<long double>(of.tail);
    const long double quantile = 2 * boost::math::gamma_p_inv(0.5L, level, QuietPolicy());
    const auto shown = static_cast<double>(quantile);
    steps.Step("c", "quantile of chi2 with 1 df at the level", With("quantile # of chi2", {1 - 2 * of.tail}), shown);
    const std::string equation = "t with 2 x log(share / t) + 2 (n - x) log((1 - share) / (1 - t)) = c";
    const double n = of.x + of.y;
    // As defined the search ends within 1e-7 (docs/numerics.md).
    constexpr double kLengthOfSearch = 1000;
    const double size = steps.IsAsDefined() ? kLengthOfSearch : 0;
    if (of.x > 0 && of.y > 0) {
        steps.Told(name + " lower", "the smaller " + equation, "", ProfileLimit(of, quantile / 2, 0),
                   LimitOf(*limits, "Lower"), size);
        steps.Told(name + " upper", "the larger " + equation, "", ProfileLimit(of, quantile / 2, 1),
                   LimitOf(*limits, "Upper"), size);
    } else if (of.x == 0) {
        steps.Told(name + " upper", "1 - exp(-c / (2n))", With("1 - exp(-# / #)", {shown, 2 * n}),
                   static_cast<double>(-std::expm1(-quantile / (2 * n))), LimitOf(*limits, "Upper"));
    } else {
        steps.Told(name + " lower", "exp(-c / (2n))", With("exp(-# / #)", {shown, 2 * n}),
                   static_cast<double>(std::exp(-quantile / (2 * n))), LimitOf(*limits, "Lower"));
    }
}

}  // namespace

void ExplainProportionIntervals(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const ClassesOfField classes = ClassesOf(test, CutItself::kIsFirst);
    AddClassTable(test, classes);
    const Proportion of{classes.first, classes.second, (1 - test.view.confidence) / 2};
    const double n = steps.Count("n", "cases", classes.Total());
    const double x = steps.Count("x", "cases in the first class, " + classes.firstName, of.x);
    const std::vector<Interval>& intervals = test.Reading().intervals;
    steps.Told("share", "x / n", With("# / #", {x, n}), x / n,
               intervals.empty() ? Number() : intervals.front().estimate);
    steps.Step("tail", "(1 - level) / 2", With("(1 - #) / 2", {test.view.confidence}), of.tail);
    AddBetaLimits(test, of, "ClopperPearson", 0);
    AddBetaLimits(test, of, "Jeffreys", kOneHalf);
    AddProfileLimits(test, of);
}

// ---- Chi-square test ----

namespace {

/// A category with what is expected of it, in any scale.
struct ExpectedCell {
    std::string name;
    double observed = 0;
    double share = 1;
};

double GivenShareOf(const ExplainedTest& test, std::size_t place) {
    const Column& column = *test.view.columns.front();
    for (const auto& [word, share] : test.source.expected) {
        const Category* const found = FindCategory(column, word);
        if (found != nullptr && found == &column.categories[place]) return share;
    }
    return 1;
}

/// The cells of the document, counted from the cases.
std::vector<ExpectedCell> CellsOf(const ExplainedTest& test) {
    const ResultTable* const comparison = test.view.result->content.Table("TwoClassComparison");
    const ResultTable* const content = comparison == nullptr ? nullptr : comparison->Table("Content");
    const Column& column = *test.view.columns.front();
    std::vector<double> observed(column.categories.size() + 1, 0);
    const CompleteCases& cases = test.view.cases;
    for (std::size_t row = 0; row < cases.columns.front().size(); ++row) {
        observed[std::min(test.CategoryOf(0, cases.columns.front()[row]), column.categories.size())] +=
            cases.WeightAt(row);
    }
    std::vector<ExpectedCell> cells;
    if (content == nullptr) return cells;
    for (const std::string& line : content->lineNames) {
        const auto place = static_cast<std::size_t>(std::max(0.0, Number(line).value));
        if (place >= column.categories.size()) continue;
        cells.push_back({ShownCategory(column, column.categories[place]), observed[place], GivenShareOf(test, place)});
    }
    return cells;
}

}  // namespace

void ExplainChiSquare(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const std::vector<ExpectedCell> cells = CellsOf(test);
    long double n = 0;
    long double shares = 0;
    for (const ExpectedCell& cell : cells) {
        n += cell.observed;
        shares += cell.share;
    }
    ExplanationTable& table = steps.Table("Categories of " + test.Reading().fields.front(),
                                          {{"category", true}, {"observed O"}, {"expected E"}, {"(O - E)^2 / E"}});
    long double sum = 0;
    std::vector<std::string> terms;
    for (const ExpectedCell& cell : cells) {
        const long double expected = n * cell.share / shares;
        // Over a common denominator, so that nothing is rounded before it is subtracted.
        const long double distance = (cell.observed * shares - n * cell.share) / shares;
        const long double term = distance * distance / expected;
        sum += term;
        terms.push_back(CalculatorText(static_cast<double>(term)));
        table.rows.push_back(
            {cell.name, CalculatorText(cell.observed), CalculatorText(static_cast<double>(expected)), terms.back()});
    }
    const auto k = static_cast<double>(cells.size());
    steps.Count("n", "cases of these categories", static_cast<double>(n));
    steps.Count("k", "categories", k);
    const double chiSquare =
        steps.Told("chi2", "sum of (O - E)^2 / E", SumText(terms), static_cast<double>(sum), set.statistic);
    const double degrees = steps.Told("df", "k - 1", With("# - 1", {k}), k - 1, set.df);
    ChiSquareStep(steps, "chi2", chiSquare, degrees, PValueOf(set, PValueKind::kAsymptotic));
}

// ---- Runs test ----

namespace {

/// Records of one class that follow one another.
struct Run {
    bool isFirst;
    std::size_t from;
    std::size_t to;
    double cases;
};

std::vector<Run> RunsOf(const ExplainedTest& test, const ClassesOfField& classes) {
    std::vector<Run> runs;
    for (std::size_t row = 0; row < classes.areFirst.size(); ++row) {
        if (runs.empty() || runs.back().isFirst != classes.areFirst[row]) {
            runs.push_back({classes.areFirst[row], row, row, 0});
        }
        runs.back().to = row;
        runs.back().cases += test.view.cases.WeightAt(row);
    }
    return runs;
}

void AddRunTable(const ExplainedTest& test, const ClassesOfField& classes, const std::vector<Run>& runs) {
    ExplanationTable& table =
        test.steps.Table("Runs in the order of the records", {{"run"}, {"class", true}, {"from"}, {"to"}, {"cases"}});
    AddRows(table, runs.size(), [&](std::size_t row) {
        const Run& run = runs[row];
        return std::vector<std::string>{std::to_string(row + 1), run.isFirst ? classes.firstName : classes.secondName,
                                        std::to_string(run.from + 1), std::to_string(run.to + 1),
                                        CalculatorText(run.cases)};
    });
}

}  // namespace

void ExplainRuns(const ExplainedTest& test) {
    constexpr double kCorrectedBelow = 50;
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const ClassesOfField classes = ClassesOf(test, CutItself::kIsSecond);
    const std::vector<Run> runs = RunsOf(test, classes);
    AddRunTable(test, classes, runs);
    const double n1 = steps.Count("n1", "cases in the class " + classes.firstName, classes.first);
    const double n2 = steps.Count("n2", "cases in the class " + classes.secondName, classes.second);
    const double n = steps.Step("n", "n1 + n2", With("# + #", {n1, n2}), n1 + n2);
    const double count = steps.Told("R", "runs", "", static_cast<double>(runs.size()), set.statistic);
    const long double product = 2 * static_cast<long double>(n1) * n2;
    const double mean = steps.Told("mean", "2 n1 n2 / n + 1", With("2 * # * # / # + 1", {n1, n2, n}),
                                   static_cast<double>(product / n + 1), test.FigureOf("Mean"));
    const auto pairs = static_cast<double>(product);
    const auto variance = static_cast<double>(product * (product - n) / (static_cast<long double>(n) * n * (n - 1)));
    steps.Step("variance", "2 n1 n2 (2 n1 n2 - n) / (n^2 (n - 1))",
               With("# * # / (# ^ 2 * #)", {pairs, pairs - n, n, n - 1}), variance);
    const double standardError =
        steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance), set.standardError);
    const auto deviation = static_cast<double>(((count - 1) * static_cast<long double>(n) - product) / n);
    const NormalStatistic statistic{"R", count, mean, deviation, standardError};
    const double z = n < kCorrectedBelow ? CorrectedStep(steps, statistic, set.standardized)
                                         : StandardizedStep(steps, statistic, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    steps.Note(n < kCorrectedBelow ? "The correction by 0.5 is for n < 50."
                                   : "From n = 50 on there is no correction by 0.5.");
}

// ---- Wilcoxon test ----

void ExplainWilcoxonOneSample(const ExplainedTest& test) {
    const AscendingSample& sample = test.view.samples.front();
    const Number hypothesized = test.FigureOf("HypotheticalMedian");
    const double median = InAllDigits(hypothesized.text, {Quantile(sample, kOneHalf)});
    AscendingSample differences = sample;
    for (double& value : differences.values) value -= median;
    TieMagnitudes(differences);
    AddSignedRankSteps(test, test.Reading().fields.front() + " - " + ExactText(median), differences);
}

}  // namespace tarn
