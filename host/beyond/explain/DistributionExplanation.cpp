#include <algorithm>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <functional>

#include "host/NumberText.h"
#include "host/beyond/NormalTail.h"
#include "host/beyond/QuietDistributions.h"
#include "host/beyond/explain/OneSampleExplanations.h"
#include "host/beyond/explain/RankBlocks.h"
#include "host/beyond/explain/Tails.h"
#include "vocabulary/LillieforsTable.h"

namespace tarn {

namespace {

/// The distribution that a test names in its condition.
struct NamedDistribution {
    std::string formula;  ///< of its function, "Phi((x - mean) / sd)"
    bool isOfCounts = false;
    bool isFitted = false;  ///< a normal one with the sample's own mean and deviation
    std::function<double(double)> upTo;
    std::function<bool(double)> takes;  ///< whether a value lies in its range
};

double NormalUpTo(double z) {
    return NormalTail(z, Alternative::kLess);
}

/// From this mean on a Poisson distribution is taken for a normal one.
constexpr double kLargeMean = 100000;

NamedDistribution PoissonOf(double mean) {
    NamedDistribution named;
    named.isOfCounts = true;
    named.formula = "sum of exp(-mean) mean^k / k! for k up to x";
    named.upTo = [=](double x) { return x < 0 ? 0 : boost::math::gamma_q(std::floor(x) + 1, mean, QuietPolicy()); };
    if (mean < kLargeMean) return named;
    named.formula = "Phi((x - mean) / sqrt(mean))";
    named.upTo = [=](double x) { return NormalUpTo((x - mean) / std::sqrt(mean)); };
    return named;
}

NamedDistribution DistributionOf(const ExplainedTest& test) {
    const std::string& key = test.view.result->conditionKey;
    const double first = Number(test.Parameter(1)).value;
    const double second = Number(test.Parameter(2)).value;
    NamedDistribution named;
    if (key.starts_with("Uniform")) {
        named.formula = "(x - min) / (max - min)";
        named.upTo = [=](double x) { return (x - first) / (second - first); };
        named.takes = [=](double x) { return x >= first && x <= second; };
    } else if (key.starts_with("Poisson")) {
        named = PoissonOf(first);
    } else if (key.starts_with("Exponential")) {
        named.formula = "1 - exp(-x / mean)";
        named.upTo = [=](double x) { return -std::expm1(-x / first); };
        named.takes = [](double x) { return x >= 0; };
    } else {
        named.formula = "Phi((x - mean) / sd)";
        named.upTo = [=](double x) { return NormalUpTo((x - first) / second); };
        // D itself is shown for it, and the root of n times D for any other; of one case alone there is no deviation.
        named.isFitted = test.Set().statistic == test.FigureOf("Absolute") && test.view.Size() > 1;
    }
    if (!named.takes) named.takes = [](double) { return true; };
    return named;
}

/// The parameters with their places in the condition.
void AddParameters(const ExplainedTest& test) {
    const std::string& key = test.view.result->conditionKey;
    const bool isUniform = key.starts_with("Uniform");
    test.steps.Count(isUniform ? "min" : "mean", "of the distribution", Number(test.Parameter(1)).value);
    if (!isUniform && !key.starts_with("Normal")) return;
    test.steps.Count(isUniform ? "max" : "sd", "of the distribution", Number(test.Parameter(2)).value);
}

/// The sample's function less the distribution's, on both sides of each step.
struct Distances {
    double below = 0;  ///< the smallest, 0 or less
    double above = 0;  ///< the largest, 0 or more

    void Take(double difference) {
        below = std::min(below, difference);
        above = std::max(above, difference);
    }
    double Largest() const { return std::max(above, -below); }
};

/// One value of the sample with both functions.
struct SampleStep {
    const RankBlock* block;
    double share;
    double expected;
    double differenceBefore;
    double difference;
};

std::vector<SampleStep> StepsOf(const NamedDistribution& named, const std::vector<RankBlock>& blocks, double n) {
    std::vector<SampleStep> steps;
    double count = 0;
    for (const RankBlock& block : blocks) {
        const double before = count / n;
        count += block.size;
        const double expected = named.upTo(block.value);
        // A distribution of counts is a step function, too: just below a value it is at the number before.
        const double expectedBefore = !named.isOfCounts ? expected : block.value == 0 ? 0 : named.upTo(block.value - 1);
        steps.push_back({&block, count / n, expected, before - expectedBefore, count / n - expected});
    }
    return steps;
}

Distances WalkSteps(const ExplainedTest& test, const NamedDistribution& named, const std::vector<RankBlock>& blocks,
                    double n) {
    const std::vector<SampleStep> steps = StepsOf(named, blocks, n);
    Distances distances;
    for (const SampleStep& step : steps) {
        distances.Take(step.differenceBefore);
        distances.Take(step.difference);
    }
    ExplanationTable& table =
        test.steps.Table("Values with the share S of the cases up to them and the distribution function F",
                         {{test.Reading().fields.front()}, {"cases"}, {"S"}, {"F"}, {"S before - F"}, {"S - F"}});
    AddRows(table, steps.size(), [&](std::size_t row) {
        const SampleStep& step = steps[row];
        return std::vector<std::string>{
            ExactText(step.block->value),  CalculatorText(step.block->size),      CalculatorText(step.share),
            CalculatorText(step.expected), CalculatorText(step.differenceBefore), CalculatorText(step.difference)};
    });
    return distances;
}

// ---- Lilliefors' significance ----

/// The upper tail of D is exp(a D^2 + b D + c).
struct TailExponent {
    double a;
    double b;
    double c;
    std::string formula;

    explicit TailExponent(double n) {
        using namespace Lilliefors::UpperTail;
        if (n > kMostOfFirst) {
            a = kLargeSquare * std::pow(n, kLargeSquarePower);
            b = kLargeLinear * std::pow(n, kLargeLinearPower);
            c = kLargeConstant - kLogOfTen;
            formula = "a = -7.90289126054 n^0.98, b = 3.180370175721 n^0.49, c = 2.2947256 - ln 10";
        } else {
            a = kSquare * (n + kShift);
            b = kLinear * std::sqrt(n + kShift);
            c = kConstant + kOverRoot / std::sqrt(n) + kOverSize / n - kLogOfTen;
            formula =
                "a = -7.01256 (n + 2.78019), b = 2.99587 sqrt(n + 2.78019), "
                "c = 2.1804661 + 0.974598 / sqrt(n) + 1.67997 / n - ln 10";
        }
    }
    double TailOf(double d) const { return std::exp(a * d * d + b * d + c); }
    /// The D whose tail is 0.1, by the exponent's own logarithm of it.
    double CriticalAt10() const {
        const double whole = c + Lilliefors::UpperTail::kLogOfTen;
        return (-b - std::sqrt(b * b - 4 * a * whole)) / (2 * a);
    }
};

/// The critical values of 0.2 and 0.15 for n cases, on a line between two rows.
Lilliefors::CriticalValues CriticalOf(double n) {
    const auto size = static_cast<std::int64_t>(n);
    const auto& table = Lilliefors::kTable;
    if (size > table.back().n) {
        return {size, Lilliefors::kPastTableAt20 / std::sqrt(n), Lilliefors::kPastTableAt15 / std::sqrt(n)};
    }
    const auto above = std::ranges::lower_bound(table, size, {}, &Lilliefors::CriticalValues::n);
    if (above->n == size) return *above;
    const auto below = above - 1;
    const double share = static_cast<double>(size - below->n) / static_cast<double>(above->n - below->n);
    return {size, below->at20 + (above->at20 - below->at20) * share, below->at15 + (above->at15 - below->at15) * share};
}

/// Two critical values of D with their significances, between which D lies.
struct CriticalPair {
    double lower;
    double pOfLower;
    double upper;
    double pOfUpper;
};

void AddInterpolated(StepWriter& steps, double d, const CriticalPair& between, const Number& document) {
    steps.Step("D0", "critical value of p = " + CalculatorText(between.pOfLower), "", between.lower);
    steps.Step("D1", "critical value of p = " + CalculatorText(between.pOfUpper), "", between.upper);
    const double slope = (between.pOfUpper - between.pOfLower) / (between.upper - between.lower);
    steps.Told("p asymptotic", "on the line between them: p0 + (p1 - p0) (D - D0) / (D1 - D0)",
               With("# + # * # / #", {between.pOfLower, between.pOfUpper - between.pOfLower, d - between.lower,
                                      between.upper - between.lower}),
               slope * (d - between.lower) + between.pOfLower, document);
}

void AddLilliefors(StepWriter& steps, double n, double d, const Number& document) {
    constexpr double kTolerance = 1e-14;
    constexpr double kFewest = 5;
    if (n < kFewest) return steps.Note("For fewer than 5 cases there is no significance.");
    const TailExponent exponent(n);
    const double at10 = exponent.CriticalAt10();
    const Lilliefors::CriticalValues critical = CriticalOf(n);
    if (d - at10 >= kTolerance) {
        steps.Note(
            "The p is Lilliefors', since mean and deviation are the sample's own; by Dallal and Wilkinson (1986): " +
            exponent.formula + ".");
        steps.Told("p asymptotic", "exp(a D^2 + b D + c)",
                   With("exp(# * # ^ 2 + # * # + #)", {exponent.a, d, exponent.b, d, exponent.c}), exponent.TailOf(d),
                   document);
        return;
    }
    steps.Note(
        "The p is Lilliefors', since mean and deviation are the sample's own; on a line between his critical values "
        "(1967).");
    if (d >= critical.at15 - kTolerance) {
        AddInterpolated(steps, d, {critical.at15, 0.15, at10, 0.1}, document);
    } else if (d >= critical.at20 - kTolerance) {
        AddInterpolated(steps, d, {critical.at20, 0.2, critical.at15, 0.15}, document);
    } else {
        steps.Step("D0", "critical value of p = 0.2", "", critical.at20);
        steps.Told("p asymptotic", "above 0.2, since D < D0, where the table ends", With("# < #", {d, critical.at20}),
                   0.2, document);
    }
}

}  // namespace

void ExplainKolmogorovSmirnov(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const NamedDistribution named = DistributionOf(test);
    const AscendingSample& sample = test.view.samples.front();
    std::vector<RankBlock> blocks = RankTogether({sample});
    std::erase_if(blocks, [&](const RankBlock& block) { return !named.takes(block.value); });
    double n = 0;
    for (const RankBlock& block : blocks) n += block.size;
    const Distances distances = WalkSteps(test, named, blocks, n);
    if (n < sample.size) steps.Count("left out", "cases outside the range of the distribution", sample.size - n);
    steps.Count("n", "cases", n);
    AddParameters(test);
    steps.Note("F(x) = " + named.formula +
               (named.formula.starts_with("Phi") ? ", Phi the normal distribution function." : "."));
    steps.Told("largest", "largest S - F on either side of a step", "", distances.above, test.FigureOf("Positive"), 1);
    steps.Told("smallest", "smallest S - F on either side of a step", "", distances.below, test.FigureOf("Negative"),
               1);
    const Number p = PValueOf(set, PValueKind::kAsymptotic);
    const double d =
        steps.Told("D", "the larger of the two without signs", "", distances.Largest(), test.FigureOf("Absolute"));
    if (named.isFitted) return AddLilliefors(steps, n, d, p);
    const double z = steps.Told("z", "sqrt(n) D", With("sqrt(#) * #", {n, d}), std::sqrt(n) * d, set.statistic);
    KolmogorovStep(steps, z, p);
}

}  // namespace tarn
