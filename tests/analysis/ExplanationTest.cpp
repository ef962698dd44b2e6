#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "host/report/ExplanationText.h"
#include "tests/analysis/AnalysisRun.h"
#include "vocabulary/TestFacts.h"

namespace tarn {
namespace {

using namespace analysis_test;

/// A table with its analysis, every test explained.
struct Explained {
    Table table;
    AnalysisOptions options;
    ResultReading result;
};

AnalysisEnvironment EnglishEnvironment() {
    AnalysisEnvironment environment = Environment();
    environment.threads = 1;
    return environment;
}

LoadOptions Loading(bool isWeighted) {
    LoadOptions load;
    load.nominal = {"g", "h", "a", "b", "c"};
    load.ordinal = {"s", "t"};
    if (isWeighted) load.weightField = "w";
    return load;
}

Explained Explain(const std::string& csv, AnalysisOptions options, const LoadOptions& load = Loading(false)) {
    Explained explained{TableOf(csv, load), std::move(options), {}};
    PrepareTable(explained.table, explained.options);
    const AnalysisEnvironment environment = EnglishEnvironment();
    AnalysisOutcome outcome = Analyze(explained.table, explained.options, environment);
    EXPECT_TRUE(outcome.succeeded);
    explained.result = ReadAnalysis(std::move(outcome.document), explained.options, environment);
    ExplainTests(explained.result, explained.table, explained.options, environment);
    return explained;
}

// ---- All tests on random data ----

/// What a table may have.
struct Shape {
    int records;
    int values;  ///< so many different ones, so that there are ties
    bool isWeighted;
    bool hasMissing;
    bool hasWeightless = false;
};

/// Where a record of weight 0 has a part in what the engine shows, which the cases alone don't tell: its value may be
/// the one in front of the middle, so that it becomes the median; and behind all others a largest count is a step of its
/// own.
bool CountsWeightless(const TestReading& test) {
    return test.name == Tests::kMedian.resultName ||
           (test.name == Tests::kKolmogorovSmirnov.resultName && test.fields.front() == "p");
}

/// Fields of every kind: x, y, z of numbers; p of counts; a, b, c of two categories; s, t of ordered ones; g of two
/// groups and h of four; w of weights, of which some are 0 and some have fractions.
std::string RandomCsv(const Shape& shape, std::mt19937& random) {
    const auto below = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most)); };
    const auto cell = [&](const std::string& text) {
        return shape.hasMissing && below(12) == 0 ? std::string() : text;
    };
    const auto number = [&] { return std::to_string(below(shape.values)) + "." + std::to_string(below(2) * 5); };
    std::string csv = "x,y,z,p,a,b,c,s,t,g,h,w\n";
    for (int i = 0; i < shape.records; ++i) {
        const int weight = below(4) + (shape.hasWeightless ? 0 : 1);
        for (int field = 0; field < 3; ++field) csv += cell(number()) + ",";
        csv += cell(std::to_string(below(6))) + ",";
        for (int field = 0; field < 3; ++field) csv += cell(below(2 + field) == 0 ? "yes" : "no") + ",";
        for (int field = 0; field < 2; ++field) csv += cell(std::to_string(1 + below(4))) + ",";
        // Each group has a record.
        const bool isOfFirst = i < 4;
        csv += isOfFirst ? (i % 2 == 0 ? "f," : "m,") + std::to_string(i) + ","
                         : cell(below(2) == 0 ? "f" : "m") + "," + cell(std::to_string(below(4))) + ",";
        csv += std::to_string(weight) + (below(4) == 0 ? ".3" : "") + "\n";
    }
    return csv;
}

AnalysisOptions TestsOf(const std::vector<std::string>& tests) {
    AnalysisOptions options;
    options.tests = tests;
    return options;
}

/// Requests that have all tests together.
std::vector<AnalysisOptions> Requests() {
    AnalysisOptions numbers = TestsOf({"runs", "wilcoxon", "binomial", "kolmogorov-smirnov"});
    numbers.oneSample = {"x"};
    numbers.testValue = 3;
    numbers.distributions = {"normal", "uniform", "exponential"};
    AnalysisOptions given = TestsOf({"kolmogorov-smirnov", "binomial", "runs"});
    given.oneSample = {"y"};
    given.distributions = {"normal"};
    given.mean = 4.25;
    given.standardDeviation = 2.5;
    given.cutPoint = 3.5;
    given.probability = 0.3;
    AnalysisOptions counts = TestsOf({"kolmogorov-smirnov"});
    counts.oneSample = {"p"};
    counts.distributions = {"poisson"};
    AnalysisOptions classes = TestsOf({"binomial", "chi-square", "runs"});
    classes.oneSample = {"a", "b"};
    AnalysisOptions expected = TestsOf({"chi-square"});
    expected.oneSample = {"h"};
    expected.expected = {{"0", 1}, {"1", 2}, {"2", 3}, {"3", 0.7}};
    AnalysisOptions pair = TestsOf({"sign", "wilcoxon", "hodges-lehmann"});
    pair.related = {"x", "y"};
    AnalysisOptions fields = TestsOf({"friedman", "kendall"});
    fields.related = {"x", "y", "z"};
    fields.compare = "pairwise";
    fields.alpha = 0.49;  // so that pairs are compared
    AnalysisOptions answers = TestsOf({"mcnemar", "cochran"});
    answers.related = {"a", "b"};
    answers.alpha = 0.49;
    AnalysisOptions successes = TestsOf({"cochran"});
    successes.related = {"a", "b", "c"};
    successes.success = {"no"};
    successes.compare = "pairwise";
    successes.alpha = 0.49;
    AnalysisOptions margins = TestsOf({"marginal-homogeneity"});
    margins.related = {"s", "t"};
    AnalysisOptions two = TestsOf({"mann-whitney", "kolmogorov-smirnov", "wald-wolfowitz", "moses", "hodges-lehmann",
                                   "kruskal-wallis", "median"});
    two.independent = {"x"};
    two.group = "g";
    AnalysisOptions several = TestsOf({"kruskal-wallis", "jonckheere", "median"});
    several.independent = {"x", "y"};
    several.group = "h";
    several.compare = "pairwise";
    several.alpha = 0.49;
    return {numbers, given, counts, classes, expected, pair, fields, answers, successes, margins, two, several};
}

std::vector<Number> NumbersOf(const TestReading& test) {
    std::vector<Number> numbers;
    for (const StatisticSet& set : test.statistics) {
        numbers.insert(numbers.end(), {set.statistic, set.standardError, set.standardized, set.df});
        for (const PValue& p : set.pValues) numbers.push_back(p.value);
    }
    for (const Interval& interval : test.intervals) {
        numbers.insert(numbers.end(), {interval.estimate, interval.lower, interval.upper});
    }
    std::erase_if(numbers, [](const Number& number) { return number.empty(); });
    return numbers;
}

/// Whether a step has that number, as it was worked out from the cases. An estimate is a difference of values up to 10.
bool HasStep(const TestExplanation& explanation, const Number& number, bool isEstimate) {
    const double scale = isEstimate ? 10 : std::fabs(number.value);
    return std::ranges::any_of(explanation.steps, [&](const ExplanationStep& step) {
        if (std::isnan(number.value)) return std::isnan(step.value.value);
        return !step.document.empty() && std::fabs(step.value.value - number.value) <= 1e-12 * scale;
    });
}

TEST(Explanation, GivesTheNumbersOfAllTestsOnRandomData) {
    const Shape shapes[] = {{9, 5, false, false}, {14, 12, true, false}, {24, 8, false, true}, {60, 6, true, true},
                            {130, 90, false, true}, {70, 40, true, true},
                            {50, 9, true, true, true}};
    std::mt19937 random(20);
    std::set<std::string> seen;
    for (int round = 0; round < 70; ++round) {
        const Shape& shape = shapes[static_cast<std::size_t>(round) % std::size(shapes)];
        const std::string csv = RandomCsv(shape, random);
        for (const AnalysisOptions& options : Requests()) {
            AnalysisOptions asked = options;
            asked.listwise = round % 5 == 4;
            const Explained explained = Explain(csv, asked, Loading(shape.isWeighted));
            for (const TestReading& test : explained.result.tests) {
                if (test.HasError() || (shape.hasWeightless && CountsWeightless(test))) continue;
                SCOPED_TRACE(test.name + " of " + test.fields.front() + "\n" + csv);
                ASSERT_TRUE(test.explanation.has_value());
                EXPECT_TRUE(test.explanation->agrees) << test.explanation->notes.back();
                for (const Number& number : NumbersOf(test)) {
                    EXPECT_TRUE(HasStep(*test.explanation, number, test.isEstimate)) << number.text;
                }
                seen.insert(test.name);
                if (testing::Test::HasFailure()) return;
            }
        }
    }
    EXPECT_EQ(seen.size(), std::size(Tests::kAll));
}

}  // namespace
}  // namespace tarn
