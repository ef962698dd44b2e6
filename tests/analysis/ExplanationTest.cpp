#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <iterator>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/TextList.h"
#include "host/beyond/explain/StepWriter.h"
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

/// How the fields of a table are read: by their names, of those that it has.
LoadOptions LoadingOf(const std::string& csv) {
    const std::string header = "," + csv.substr(0, csv.find('\n')) + ",";
    const auto those = [&](const std::vector<std::string>& names) {
        std::vector<std::string> found;
        for (const std::string& name : names) {
            if (header.find("," + name + ",") != std::string::npos) found.push_back(name);
        }
        return found;
    };
    LoadOptions load;
    load.nominal = those({"g", "h", "a", "b", "c"});
    load.ordinal = those({"s", "t"});
    return load;
}

enum class Weights { kNone, kByW };

Explained Explain(const std::string& csv, AnalysisOptions options, Weights weights = Weights::kNone) {
    LoadOptions load = LoadingOf(csv);
    if (weights == Weights::kByW) load.weightField = "w";
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
    AnalysisOptions falling = TestsOf({"jonckheere"});
    falling.independent = {"x", "y"};
    falling.group = "h";
    falling.compare = "pairwise";
    falling.descending = true;
    falling.alpha = 0.49;
    std::vector<AnalysisOptions> requests{numbers, given,     counts,  classes, expected, pair,   fields,
                                          answers, successes, margins, two,     several,  falling};
    AnalysisOptions aroundGiven = several;
    aroundGiven.tests = {"median"};
    aroundGiven.testValue = 3;
    requests.push_back(aroundGiven);
    fields.related = {"x", "y", "z", "p"};  // of three there would be one step alone
    for (AnalysisOptions stepwise : {fields, successes, several, falling, aroundGiven}) {
        stepwise.compare = "stepwise";
        requests.push_back(stepwise);
    }
    return requests;
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

/// Whether a table behind the steps has a row of those samples with each of the numbers, in their five digits.
bool HasRow(const TestExplanation& explanation, const std::string& samples, std::vector<Number> numbers) {
    constexpr double kFiveDigits = 5.1e-5;
    std::erase_if(numbers, [](const Number& number) { return number.empty(); });
    const auto has = [&](const std::vector<std::string>& row) {
        return std::ranges::all_of(numbers, [&](const Number& number) {
            return std::ranges::any_of(row, [&](const std::string& cell) {
                char* end = nullptr;
                const double value = std::strtod(cell.c_str(), &end);
                const bool isNumber = !cell.empty() && *end == 0;
                return isNumber && std::fabs(value - number.value) <= kFiveDigits * std::fabs(number.value) + 1e-12;
            });
        });
    };
    for (const ExplanationTable& table : explanation.comparisons) {
        for (const std::vector<std::string>& row : table.rows) {
            if (std::ranges::find(row, samples) != row.end() && has(row)) return true;
        }
    }
    return false;
}

/// Holds the rows of pairs and of subsets to the document. Says which of them the test has.
std::set<std::string> CheckComparisons(const TestReading& test) {
    std::set<std::string> seen;
    for (const PairComparison& pair : test.pairs) {
        EXPECT_TRUE(HasRow(*test.explanation, pair.first + " - " + pair.second,
                           {pair.statistic, pair.standardError, pair.standardized, pair.p, pair.adjustedP}))
            << pair.first << " - " << pair.second << "\n"
            << ExplanationText(*test.explanation, 120, 0);
        seen.insert("pairs of " + test.name);
    }
    for (const HomogeneousSubset& subset : test.subsets) {
        if (subset.members.size() < 2) continue;
        EXPECT_TRUE(
            HasRow(*test.explanation, JoinList(subset.members, ", "), {subset.statistic, subset.p, subset.adjustedP}))
            << subset.members.front() << "\n"
            << ExplanationText(*test.explanation, 120, 0);
        seen.insert("subsets of " + test.name);
        if (subset.members.size() + 2 <= test.orderedSamples.size()) seen.insert("later subsets of " + test.name);
    }
    return seen;
}

TEST(Explanation, GivesTheNumbersOfAllTestsOnRandomData) {
    const Shape shapes[] = {{9, 5, false, false},     {14, 12, true, false},  {24, 8, false, true},
                            {60, 6, true, true},      {130, 90, false, true}, {70, 40, true, true},
                            {50, 9, true, true, true}};
    std::mt19937 random(20);
    std::set<std::string> seen;
    for (int round = 0; round < 70; ++round) {
        const Shape& shape = shapes[static_cast<std::size_t>(round) % std::size(shapes)];
        const std::string csv = RandomCsv(shape, random);
        for (const AnalysisOptions& options : Requests()) {
            AnalysisOptions asked = options;
            asked.listwise = round % 5 == 4;
            const Explained explained = Explain(csv, asked, shape.isWeighted ? Weights::kByW : Weights::kNone);
            for (const TestReading& test : explained.result.tests) {
                if (test.HasError()) continue;
                SCOPED_TRACE(test.name + " of " + test.fields.front() + "\n" + csv);
                ASSERT_TRUE(test.explanation.has_value());
                EXPECT_TRUE(test.explanation->agrees) << test.explanation->notes.back();
                for (const Number& number : NumbersOf(test)) {
                    EXPECT_TRUE(HasStep(*test.explanation, number, test.isEstimate)) << number.text;
                }
                seen.insert(test.name);
                seen.merge(CheckComparisons(test));
                if (testing::Test::HasFailure()) return;
            }
        }
    }
    for (const TestFacts* const test : Tests::kAll) {
        const std::string name(test->resultName);
        std::vector<std::string> expected{name};
        if (test->comparesSamples) expected.insert(expected.end(), {"pairs of " + name, "subsets of " + name});
        // Of the three fields of Cochran's test runs of two are tested alone.
        if (test->comparesSamples && test != &Tests::kCochran) expected.push_back("later subsets of " + name);
        for (const std::string& each : expected) EXPECT_TRUE(seen.contains(each)) << each;
    }
}

// ---- Examples of textbooks, worked by hand ----

const TestExplanation& OnlyExplanation(const Explained& explained) {
    return *explained.result.tests.front().explanation;
}

/// The value of a step; NaN for a step that isn't there.
double ValueOf(const TestExplanation& explanation, const std::string& name) {
    const auto found = std::ranges::find(explanation.steps, name, &ExplanationStep::name);
    return found == explanation.steps.end() ? std::nan("") : found->value.value;
}

/// Hollander and Wolfe (1973), Nonparametric Statistical Methods, page 116: half-times of mucociliary clearance of dust
/// in normal subjects and those with obstructive airway disease or asbestosis. In order, with their groups:
/// 2.0c 2.2c 2.4b 2.5a 2.6a 2.7b 2.8c 2.9a 3.0a 3.2a 3.4c 3.7c 3.8b 4.0b.
TEST(Explanation, OfKruskalWallisIsWorkedByHand) {
    const Explained explained = Explain(
        "x,h\n2.9,a\n3.0,a\n2.5,a\n2.6,a\n3.2,a\n3.8,b\n2.7,b\n4.0,b\n2.4,b\n2.8,c\n3.4,c\n3.7,c\n2.2,c\n2.0,c\n", [] {
            AnalysisOptions options = TestsOf({"kruskal-wallis"});
            options.independent = {"x"};
            options.group = "h";
            return options;
        }());
    const TestExplanation& explanation = OnlyExplanation(explained);
    ASSERT_EQ(explanation.tables.size(), 2U);
    EXPECT_EQ(explanation.tables[0].rows.size(), 14U);
    EXPECT_EQ(explanation.tables[0].rows[3], (std::vector<std::string>{"2.5", "1", "0", "0", "4"}));
    // a: 4 + 5 + 8 + 9 + 10; b: 3 + 6 + 13 + 14; c: 1 + 2 + 7 + 11 + 12.
    EXPECT_EQ(explanation.tables[1].rows[0], (std::vector<std::string>{"a", "5", "36", "7.2"}));
    EXPECT_EQ(explanation.tables[1].rows[1], (std::vector<std::string>{"b", "4", "36", "9"}));
    EXPECT_EQ(explanation.tables[1].rows[2], (std::vector<std::string>{"c", "5", "33", "6.6"}));
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "middle"), 7.5);     // 15 / 2
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "Q"), 13.5);         // 5 * .3^2 + 4 * 1.5^2 + 5 * .9^2
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "C"), 1);            // no ties
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "H"), 162.0 / 210);  // 12 * 13.5 / (14 * 15); the book has 0.771
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "df"), 2);
    EXPECT_NEAR(ValueOf(explanation, "p asymptotic"), std::exp(-81.0 / 210), 1e-15);  // with 2 df: exp(-H / 2)
}

/// Hollander and Wolfe (1973), page 29: the Hamilton depression scale of nine patients before and after a
/// tranquilizer. The differences have the magnitudes .010 .080 .147 .430 .490 .590 .620 .952 1.022 in their order, of
/// which .080 and .147 alone are rises.
TEST(Explanation, OfWilcoxonPairsIsWorkedByHand) {
    AnalysisOptions options = TestsOf({"wilcoxon"});
    options.related = {"x", "y"};
    const Explained explained = Explain(
        "x,y\n1.83,0.878\n0.50,0.647\n1.62,0.598\n2.48,2.05\n1.68,1.06\n1.88,1.29\n1.55,1.06\n3.06,3.14\n1.30,1.29\n",
        options);
    const TestExplanation& explanation = OnlyExplanation(explained);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "n"), 9);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "T"), 5);             // ranks 2 and 3
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "mean"), 22.5);       // 9 * 10 / 4
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "variance"), 71.25);  // 9 * 10 * 19 / 24
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "SE"), std::sqrt(71.25));
    EXPECT_NEAR(ValueOf(explanation, "z"), -17.5 / std::sqrt(71.25), 1e-15);    // 5 - 22.5
    EXPECT_NEAR(ValueOf(explanation, "p asymptotic"), 0.0381517101734, 1e-12);  // Python: math.erfc(17.5 / sqrt(142.5))
    const auto step = std::ranges::find(explanation.steps, "T", &ExplanationStep::name);
    EXPECT_EQ(step->numbers, "2 + 3");
    EXPECT_TRUE(explanation.agrees);
}

/// Siegel and Castellan (1988), Nonparametric Statistics for the Behavioral Sciences, page 43: of 18 students under
/// stress 16 took the way of tying a knot that they had learned first. Here as two records with weights.
TEST(Explanation, OfBinomialIsWorkedByHand) {
    AnalysisOptions options = TestsOf({"binomial"});
    options.oneSample = {"a"};
    const Explained explained = Explain("a,w\nfirst,16\nsecond,2\n", options, Weights::kByW);
    const TestExplanation& explanation = OnlyExplanation(explained);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "n"), 18);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "X"), 16);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "mean"), 9);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "SE"), std::sqrt(4.5));       // 18 * .5 * .5
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "z"), 6.5 / std::sqrt(4.5));  // 16 - 9 - .5
    // 1 + 18 + 153 of 2^18 outcomes have 16 or more; the book has .0007 to one side.
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "tail"), 172.0 / 262144);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "p exact"), 344.0 / 262144);
}

/// Agresti (1990), Categorical Data Analysis, page 350: approval of a prime minister in two surveys, as four records
/// with weights.
TEST(Explanation, OfMcNemarIsWorkedByHand) {
    AnalysisOptions options = TestsOf({"mcnemar"});
    options.related = {"a", "b"};
    const Explained explained =
        Explain("a,b,w\nyes,yes,794\nyes,no,150\nno,yes,86\nno,no,570\n", options, Weights::kByW);
    const TestExplanation& explanation = OnlyExplanation(explained);
    EXPECT_EQ(explanation.tables[0].title, "Success is yes");
    EXPECT_EQ(explanation.tables[0].rows[0], (std::vector<std::string>{"success", "794", "150"}));
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "n"), 236);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "chi2"), 3969.0 / 236);  // (64 - 1)^2 / 236
    EXPECT_TRUE(explanation.agrees);
}

/// Five cases in order: 1a, 2a and 2b tied, 3b, 4b. Ranks: a has 1 and 2.5, b has 2.5, 4 and 5.
TEST(Explanation, OfMannWhitneyIsWorkedByHand) {
    AnalysisOptions options = TestsOf({"mann-whitney"});
    options.independent = {"x"};
    options.group = "g";
    const Explained explained = Explain("x,g\n1,a\n2,a\n2,b\n3,b\n4,b\n,b\n", options);
    const TestExplanation& explanation = OnlyExplanation(explained);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "R1"), 3.5);
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "U"), 0.5);          // 3.5 - 2 * 3 / 2
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "U of b"), 5.5);     // 2 * 3 - .5
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "tie sum"), 6);      // 2^3 - 2
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "variance"), 2.85);  // 6 / 20 * (125 - 5 - 6) / 12
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "z"), -2.5 / std::sqrt(2.85));
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "extreme"), 1);  // U = 0: both of a in front
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "all"), 10);     // 5! / (2! 3!)
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "p exact"), 0.2);
}

// ---- Comparisons, worked by hand ----

/// Groups of two cases each, which follow one another: a has 1 and 2, b has 3 and 4, and so on.
std::string GroupsInARow(int groups) {
    std::string csv = "x,h\n";
    for (int i = 0; i < 2 * groups; ++i) csv += std::to_string(i + 1) + "," + std::to_string(i / 2 + 1) + "\n";
    return csv;
}

AnalysisOptions Comparing(const std::string& test, const std::string& compare, double alpha) {
    AnalysisOptions options = TestsOf({test});
    options.independent = {"x"};
    options.group = "h";
    options.compare = compare;
    options.alpha = alpha;
    return options;
}

using Rows = std::vector<std::vector<std::string>>;

/// All 4 pairs of cases of two groups rise: J = 4, its mean 2 and its variance 4 (4^3 - 4) / (12 * 4 * 3) = 5 / 3, so
/// that z = 2 / 1.29099 = 1.54919. Half of erfc(z / sqrt(2)) is 0.0606676, three times that 0.182003 (Python's math).
TEST(Explanation, OfPairsOfJonckheereIsWorkedByHand) {
    const TestExplanation explanation =
        OnlyExplanation(Explain(GroupsInARow(3), Comparing("jonckheere", "pairwise", 0.05)));
    ASSERT_EQ(explanation.comparisons.size(), 1U);
    const std::vector<std::string> numbers{"2", "2", "0", "4", "1.291", "1.5492", "0.060668", "0.182"};
    Rows rows;
    for (const char* const pair : {"1 - 2", "1 - 3", "2 - 3"}) {
        rows.push_back(numbers);
        rows.back().insert(rows.back().begin(), pair);
    }
    EXPECT_EQ(explanation.comparisons[0].rows, rows);
    EXPECT_TRUE(explanation.agrees);
    AnalysisOptions falling = Comparing("jonckheere", "pairwise", 0.05);
    falling.descending = true;
    const TestExplanation other = OnlyExplanation(Explain(GroupsInARow(3), falling));
    EXPECT_EQ(other.comparisons[0].rows[0][7], "0.93933");  // 1 - 0.0606676
    EXPECT_NE(other.comparisons[0].title.find("P(N <= |z|)"), std::string::npos);
}

/// Around the median 3.5 of 1, 2, 3 and 4, 5, 6 none of the first and all of the second are above: chi2 is the number
/// of cases, 6. Its p of 1 df is erfc(sqrt(3)) = 0.0143059, three times that 0.0429177 (Python's math).
TEST(Explanation, OfPairsOfTheMedianTestIsWorkedByHand) {
    const std::string csv = "x,h\n1,1\n2,1\n3,1\n4,2\n5,2\n6,2\n7,3\n8,3\n9,3\n";
    const TestExplanation explanation = OnlyExplanation(Explain(csv, Comparing("median", "pairwise", 0.05)));
    // Of all: the median is 5, above it are 0, 1 and 3 of 3. (16 + 1 + 25) / 9 * (3 / 4 + 3 / 5)
    EXPECT_NEAR(ValueOf(explanation, "chi2"), 6.3, 1e-14);
    ASSERT_EQ(explanation.comparisons.size(), 1U);
    const Rows rows{{"1 - 2", "3.5", "0; 3", "6", "0.014306", "0.042918"},
                    {"1 - 3", "5", "0; 3", "6", "0.014306", "0.042918"},
                    {"2 - 3", "6.5", "0; 3", "6", "0.014306", "0.042918"}};
    EXPECT_EQ(explanation.comparisons[0].rows, rows);
    EXPECT_TRUE(explanation.agrees);
}

/// Of three groups in a row H = 12 / 42 (9 + 49 + 121) / 2 - 21 = 32 / 7 and p = exp(-16 / 7) = 0.101701 with 2 df; of
/// two H = 12 / 20 (9 + 49) / 2 - 15 = 2.4 and p = erfc(sqrt(1.2)) = 0.121335 with 1 df, adjusted 1 - (1 - p)^(4 / 2) =
/// 0.227948. All four have p = 0.0833 (H = 20 / 3 with 3 df). At 0.102 three differ and two don't.
TEST(Explanation, OfSubsetsOfKruskalWallisIsWorkedByHand) {
    const TestExplanation explanation =
        OnlyExplanation(Explain(GroupsInARow(4), Comparing("kruskal-wallis", "stepwise", 0.102)));
    ASSERT_EQ(explanation.comparisons.size(), 2U);
    EXPECT_EQ(explanation.comparisons[0].rows, (Rows{{"1", "1.5"}, {"2", "3.5"}, {"3", "5.5"}, {"4", "7.5"}}));
    const Rows rows{{"1", "1, 2, 3", "3; 7; 11", "0", "4.5714", "0.1017", "0.1017", "differ"},
                    {"1", "2, 3, 4", "3; 7; 11", "0", "4.5714", "0.1017", "0.1017", "differ"},
                    {"1", "3, 4", "3; 7", "0", "2.4", "0.12134", "0.22795", "subset"},
                    {"2", "1, 2", "3; 7", "0", "2.4", "0.12134", "0.22795", "subset"},
                    {"2", "2, 3", "3; 7", "0", "2.4", "0.12134", "0.22795", "subset"}};
    EXPECT_EQ(explanation.comparisons[1].rows, rows);
    EXPECT_NE(explanation.comparisons[1].title.find("Where p >= 0.102"), std::string::npos);
    EXPECT_TRUE(explanation.agrees);
}

/// The same by J: z of two groups as above. Of three J = 12, its mean 6, its variance (6 * 5 * 17 - 3 * 18) / 72 = 19 /
/// 3 and z = 2.38416, of which the tail is 0.0085591 (Python's math). The last two of four don't differ, which ends the
/// first step, as all that follows lies inside them.
TEST(Explanation, OfSubsetsOfJonckheereIsWorkedByHand) {
    const TestExplanation explanation =
        OnlyExplanation(Explain(GroupsInARow(4), Comparing("jonckheere", "stepwise", 0.05)));
    ASSERT_EQ(explanation.comparisons.size(), 1U);
    const double adjusted = 1 - std::pow(1 - 0.0606676, 2);
    const std::string shown = ShortText(adjusted);
    const Rows rows{{"1", "1, 2, 3", "12", "6", "2.5166", "2.3842", "0.0085591", "0.0085591", "differ"},
                    {"1", "2, 3, 4", "12", "6", "2.5166", "2.3842", "0.0085591", "0.0085591", "differ"},
                    {"1", "3, 4", "4", "2", "1.291", "1.5492", "0.060668", shown, "subset"},
                    {"2", "1, 2", "4", "2", "1.291", "1.5492", "0.060668", shown, "subset"},
                    {"2", "2, 3", "4", "2", "1.291", "1.5492", "0.060668", shown, "subset"}};
    EXPECT_EQ(explanation.comparisons[0].rows, rows);
    EXPECT_TRUE(explanation.agrees);
}

TEST(Explanation, ShowsTheSubsetsAloneThatManySamplesHave) {
    const TestExplanation explanation =
        OnlyExplanation(Explain(GroupsInARow(60), Comparing("kruskal-wallis", "stepwise", 0.05)));
    ASSERT_EQ(explanation.comparisons.size(), 2U);
    const Rows& rows = explanation.comparisons[1].rows;
    ASSERT_FALSE(rows.empty());
    for (const std::vector<std::string>& row : rows) EXPECT_EQ(row.front() + row.back(), "subset");
    EXPECT_TRUE(explanation.agrees) << explanation.notes.back();
    EXPECT_EQ(explanation.notes.front(),
              "Of the search the subsets that it found are shown alone, since there are many samples or cases.");
}

// ---- What is told ----

TEST(Explanation, SaysWhereTheResultHasOtherComparisons) {
    const auto lastNote = [](Explained& explained) {
        ExplainTests(explained.result, explained.table, explained.options, EnglishEnvironment());
        return OnlyExplanation(explained).notes.back();
    };
    const std::string begin = "Warning: these steps don't give the numbers of the result: ";
    Explained pairs = Explain(GroupsInARow(3), Comparing("jonckheere", "pairwise", 0.05));
    pairs.result.tests.front().pairs[1].standardError = "2";
    EXPECT_EQ(lastNote(pairs), begin + "1 - 3, SE is 1.2909944487358056 here and 2 there.");
    pairs.result.tests.front().pairs[1].p = "";
    EXPECT_EQ(lastNote(pairs), begin + "1 - 3 has numbers here and none there.");
    Explained subsets = Explain(GroupsInARow(4), Comparing("kruskal-wallis", "stepwise", 0.102));
    HomogeneousSubset& one = subsets.result.tests.front().subsets.front();
    const Number p = std::exchange(one.p, "0.5");
    EXPECT_EQ(lastNote(subsets).substr(0, begin.size() + 14), begin + "3, 4, p is 0.1");
    one.p = p;
    EXPECT_TRUE(lastNote(subsets).starts_with("The result has the same numbers"));
    one.members = {"1", "2", "3"};
    EXPECT_EQ(lastNote(subsets), begin +
                                     "the subset 1, 2, 3 is there and not here; the subset 1, 2, 3 is there and not "
                                     "here; the subset 3, 4 is here and not there.");
}

TEST(Explanation, SaysWhereTheResultHasAnotherNumber) {
    AnalysisOptions options = TestsOf({"mann-whitney"});
    options.independent = {"x"};
    options.group = "g";
    Explained explained = Explain("x,g\n1,a\n2,a\n2,b\n3,b\n4,b\n", options);
    explained.result.tests.front().statistics.front().standardError = "1.7";
    ExplainTests(explained.result, explained.table, explained.options, EnglishEnvironment());
    const TestExplanation& explanation = OnlyExplanation(explained);
    EXPECT_FALSE(explanation.agrees);
    EXPECT_EQ(
        explanation.notes.back(),
        "Warning: these steps don't give the numbers of the result: SE is 1.6881943016134133 here and 1.7 there.");
    const std::string text = ExplanationText(explanation, 80, 3);
    EXPECT_NE(text.find("Warning: these steps"), std::string::npos) << text;
}

TEST(Explanation, AgreesWhereNothingVaries) {
    const std::string csv =
        "x,y,a,b,s,t,g,h\n2,2,yes,yes,1,1,f,0\n2,2,yes,yes,1,1,f,1\n2,2,no,no,1,1,m,0\n2,2,no,no,2,2,m,1\n";
    AnalysisOptions pair = TestsOf({"sign", "wilcoxon", "hodges-lehmann", "friedman", "kendall"});
    pair.related = {"x", "y"};
    AnalysisOptions answers = TestsOf({"mcnemar", "cochran"});
    answers.related = {"a", "b"};
    AnalysisOptions margins = TestsOf({"marginal-homogeneity"});
    margins.related = {"s", "t"};
    AnalysisOptions groups =
        TestsOf({"mann-whitney", "kolmogorov-smirnov", "wald-wolfowitz", "moses", "hodges-lehmann", "kruskal-wallis"});
    groups.independent = {"x"};
    groups.group = "g";
    AnalysisOptions ordered = TestsOf({"jonckheere"});
    ordered.independent = {"x"};
    ordered.group = "h";
    for (const AnalysisOptions& options : {pair, answers, margins, groups, ordered}) {
        const Explained explained = Explain(csv, options);
        for (const TestReading& test : explained.result.tests) {
            if (test.HasError()) continue;
            ASSERT_TRUE(test.explanation.has_value()) << test.name;
            EXPECT_TRUE(test.explanation->agrees) << test.name << ": " << test.explanation->notes.back();
        }
    }
}

TEST(Explanation, FollowsTheDefinedArithmeticToo) {
    std::mt19937 random(3);
    const std::string csv = RandomCsv({60, 6, true, true}, random);
    for (AnalysisOptions options : Requests()) {
        options.asDefined = true;
        for (const TestReading& test : Explain(csv, options, Weights::kByW).result.tests) {
            if (test.HasError()) continue;
            EXPECT_TRUE(test.explanation->agrees) << test.name << ": " << test.explanation->notes.back();
        }
    }
}

TEST(Explanation, ShowsTheEndsOfLongTables) {
    std::string csv = "x,g\n";
    for (int i = 0; i < 500; ++i) csv += std::to_string(i) + (i % 2 == 0 ? ",a\n" : ",b\n");
    AnalysisOptions options = TestsOf({"mann-whitney"});
    options.independent = {"x"};
    options.group = "g";
    const TestExplanation explanation = OnlyExplanation(Explain(csv, options));
    const std::vector<std::vector<std::string>>& rows = explanation.tables.front().rows;
    ASSERT_EQ(rows.size(), 21U);
    EXPECT_EQ(rows[9][0], "9");
    EXPECT_EQ(rows[10], std::vector<std::string>(4, "..."));
    EXPECT_EQ(rows[11][0], "490");
    EXPECT_DOUBLE_EQ(ValueOf(explanation, "R1"), 62500);  // 1 + 3 + ... + 499
}

}  // namespace
}  // namespace tarn
