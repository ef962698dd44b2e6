#include <algorithm>
#include <cmath>
#include <map>
#include <utility>

#include "host/NumberText.h"
#include "host/beyond/Dichotomies.h"
#include "host/beyond/exact/BinomialExact.h"
#include "host/beyond/explain/EstimateSteps.h"
#include "host/beyond/explain/RelatedExplanations.h"
#include "host/beyond/explain/SignedRankSteps.h"
#include "host/beyond/explain/SuccessesOfTest.h"
#include "host/beyond/explain/Tails.h"

namespace tarn {

namespace {

std::int64_t Whole(double count) {
    return static_cast<std::int64_t>(count);
}

/// "after - before"
std::string DifferenceName(const ExplainedTest& test) {
    const Direction& direction = test.Reading().direction;
    return direction.first + " - " + direction.second;
}

/// p = 2 P(X <= smaller) of a binomial variate with 1/2.
void AddFairTail(StepWriter& steps, double smaller, double n, const Number& document) {
    if (document.empty()) return;
    const double tail = n == 0 ? 1 : SignExact(Whole(smaller), Whole(n - smaller)).less;
    steps.Told("p exact", "2 * P(X <= the smaller number), at most 1",
               With("2 * P(X <= #) of # trials with 0.5", {smaller, n}), std::min(2 * tail, 1.0), document);
}

}  // namespace

// ---- Sign test ----

void ExplainSign(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const SignCounts& signs = test.view.signs;
    ExplanationTable& table = steps.Table("Signs of d = " + DifferenceName(test), {{"sign", true}, {"cases"}});
    const double zeros = test.view.cases.size - signs.positive - signs.negative;
    table.rows = {{"d > 0", CalculatorText(signs.positive)},
                  {"d < 0", CalculatorText(signs.negative)},
                  {"d = 0", CalculatorText(zeros)}};
    const double positive = steps.Told("S", "cases with d > 0", "", signs.positive, set.statistic);
    const double n = steps.Step("n", "cases with d > 0 or d < 0", With("# + #", {positive, signs.negative}),
                                positive + signs.negative);
    if (n == 0) {
        steps.Told("p asymptotic", "1, since no case differs", "", 1, PValueOf(set, PValueKind::kAsymptotic));
        return;
    }
    const double mean = steps.Step("mean", "n / 2", With("# / 2", {n}), n / 2);
    const double standardError =
        steps.Told("SE", "sqrt(n) / 2", With("sqrt(#) / 2", {n}), std::sqrt(n) / 2, set.standardError);
    const double z = CorrectedStep(steps, {"S", positive, mean, positive - mean, standardError}, set.standardized);
    TwoTailedNormalStep(steps, z, set);
    AddFairTail(steps, std::min(positive, signs.negative), n, PValueOf(set, PValueKind::kExact));
    steps.Note("Cases with d = 0 take no part. For n < 26 the exact p decides, else the asymptotic one.");
}

// ---- Signed ranks ----

void ExplainWilcoxonPairs(const ExplainedTest& test) {
    AddSignedRankSteps(test, DifferenceName(test), *test.view.differences);
}

void ExplainHodgesLehmannPairs(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const AscendingSample& differences = *test.view.differences;
    const bool hasZeros = std::ranges::find(differences.values, 0.0) != differences.values.end();
    // With zeros the differences are moved above 0 before they are ranked, so that equal ones alone are tied.
    const std::vector<RankBlock> blocks = hasZeros ? RankTogether({differences}) : RankMagnitudes(differences);
    const std::vector<RankBlock> shown = RankTogether({differences});
    AddRankTable(steps, "Differences d = " + DifferenceName(test), "d", {"cases"}, shown);
    const double n = steps.Count("n", "cases", differences.size);
    const double mean = steps.Step("mean", "n (n + 1) / 4", With("# * # / 4", {n, n + 1}), n * (n + 1) / 4);
    const double variance = SignedRankVariance(steps, n, TieSumOf(blocks));
    const double standardError = steps.Step("SE", "sqrt(variance)", With("sqrt(#)", {variance}), std::sqrt(variance));
    AddEstimateSteps(test, "means of each d with itself and each other one, n (n + 1) / 2",
                     DifferenceMatrix::OfWalshAverages(differences), {mean, standardError});
    steps.Note(hasZeros ? "Zeros are differences like any other; ties are of equal differences."
                        : "Ties are of equal magnitudes of d.");
}

// ---- McNemar's test ----

void ExplainMcNemar(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const SuccessesOfTest successes(test);
    const std::vector<std::vector<double>>& columns = successes.Columns();
    const PairedAnswers answers = AnswersOf(columns[0], columns[1], test.view.cases);
    const std::vector<std::string>& fields = test.Reading().fields;
    ExplanationTable& table =
        steps.Table("Success is " + successes.Name(), {{fields[0] + " \\ " + fields[1], true}, {"success"}, {"other"}});
    table.rows = {{"success", CalculatorText(answers.a), CalculatorText(answers.b)},
                  {"other", CalculatorText(answers.c), CalculatorText(answers.d)}};
    const double b = steps.Count("b", "success in " + fields[0] + " alone", answers.b);
    const double c = steps.Count("c", "success in " + fields[1] + " alone", answers.c);
    const double changes = steps.Step("n", "b + c", With("# + #", {b, c}), b + c);
    const double excess = std::fabs(b - c) - 1;
    const double chiSquare =
        b == c ? steps.Told("chi2", "0, since b = c", "", 0, set.statistic)
               : steps.Told("chi2", "(|b - c| - 1)^2 / n", With("(|# - #| - 1) ^ 2 / #", {b, c, changes}),
                            excess * excess / changes, set.statistic);
    steps.Told("df", "that of one difference", "", 1, set.df);
    ChiSquareStep(steps, "chi2", chiSquare, 1, PValueOf(set, PValueKind::kAsymptotic));
    AddFairTail(steps, std::min(b, c), changes, PValueOf(set, PValueKind::kExact));
    steps.Note("The asymptotic p decides; for n < 26 the exact one stands beside it.");
}

// ---- Marginal homogeneity ----

namespace {

/// Pairs of one kind of change.
struct Change {
    std::string from;
    std::string to;
    double score;       ///< of the first field's category
    double otherScore;  ///< of the second one's
    double cases = 0;
};

/// The score of a category: its value, or the place of a word among those of the first field and then of the second.
class Scores {
 public:
    explicit Scores(const ExplainedTest& test) : test_(test) {
        if (!test.view.columns.front()->IsText()) return;
        for (const Column* column : test.view.columns) {
            for (const Category& category : column->categories) places_.try_emplace(category.text, places_.size());
        }
    }
    double Of(std::size_t column, double value) const {
        if (places_.empty()) return value;
        const Column& about = *test_.view.columns[column];
        return static_cast<double>(places_.at(about.categories[static_cast<std::size_t>(value)].text));
    }

 private:
    const ExplainedTest& test_;
    std::map<std::string, std::size_t> places_;
};

std::vector<Change> ChangesOf(const ExplainedTest& test) {
    const Scores scores(test);
    const CompleteCases& cases = test.view.cases;
    std::map<std::pair<double, double>, Change> changes;
    for (std::size_t row = 0; row < cases.columns[0].size(); ++row) {
        const double first = cases.columns[0][row];
        const double second = cases.columns[1][row];
        const double score = scores.Of(0, first);
        const double other = scores.Of(1, second);
        if (score == other) continue;
        const Change change{test.ShownValue(0, first), test.ShownValue(1, second), score, other};
        changes.try_emplace({score, other}, change).first->second.cases += cases.WeightAt(row);
    }
    std::vector<Change> list;
    for (const auto& [key, change] : changes) list.push_back(change);
    return list;
}

}  // namespace

void ExplainMarginalHomogeneity(const ExplainedTest& test) {
    StepWriter& steps = test.steps;
    const StatisticSet& set = test.Set();
    const std::vector<std::string>& fields = test.Reading().fields;
    const std::vector<Change> changes = ChangesOf(test);
    ExplanationTable& table =
        steps.Table("Pairs that changed, with the scores s of " + fields[0] + " and t of " + fields[1],
                    {{fields[0], true}, {fields[1], true}, {"s"}, {"t"}, {"cases c"}});
    AddRows(table, changes.size(), [&](std::size_t row) {
        const Change& change = changes[row];
        return std::vector<std::string>{change.from, change.to, ExactText(change.score), ExactText(change.otherScore),
                                        CalculatorText(change.cases)};
    });
    long double sum = 0;
    long double mean = 0;
    long double deviation = 0;
    long double variance = 0;
    std::vector<std::string> terms;
    for (const Change& change : changes) {
        const long double s = change.score;
        const long double t = change.otherScore;
        sum += change.cases * s;
        mean += change.cases * (s + t) / 2;
        deviation += change.cases * (s - t) / 2;
        variance += change.cases * (s - t) / 2 * ((s - t) / 2);
        terms.push_back(With("# * #", {change.cases, change.score}));
    }
    const double statistic = steps.Told("S", "sum of c s", SumText(terms), static_cast<double>(sum), set.statistic);
    steps.Step("mean", "sum of c (s + t) / 2", "", static_cast<double>(mean));
    steps.Step("variance", "sum of c ((s - t) / 2)^2", "", static_cast<double>(variance));
    const auto standardError = static_cast<double>(std::sqrt(variance));
    steps.Told("SE", "sqrt(variance)", With("sqrt(#)", {static_cast<double>(variance)}), standardError,
               set.standardError);
    const double z = StandardizedStep(
        steps, {"S", statistic, static_cast<double>(mean), static_cast<double>(deviation), standardError},
        set.standardized);
    TwoTailedNormalStep(steps, z, set);
}

}  // namespace tarn
