// The same bytes whatever the number of threads and however the table comes in: all 22 tests, with ties, weights,
// missing values and comparisons of several samples, in both ways to compute. What is compared is the JSON of a result,
// which has all of the document, what stands beside it, and the record with the hash of the data. How the engine's
// tests take their records in batches is the matter of tests/catalogue/BothWaysTest. Built and run under
// ThreadSanitizer, too.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/analysis/Record.h"
#include "host/report/JsonReport.h"
#include "tests/analysis/AnalysisRun.h"
#include "vocabulary/TestFacts.h"

namespace {

using namespace analysis_test;

constexpr int kRecords = 120;
/// All rows are as long, so that a block of bytes is a number of records: twelve cells of two characters.
constexpr std::size_t kRowLength = 36;

/// x0 to x2 continuous; a0, b0, c0 of two categories, p0, q0 of three, g0 of five; w0 weights, y0 counts, i0 the place.
std::string TiedCsv() {
    std::string csv = "x0,x1,x2,a0,b0,c0,p0,q0,g0,w0,y0,i0\n";
    std::uint64_t state = 20'261'122;
    const auto below = [&](std::uint64_t bound) {
        state = state * 6364136223846793005U + 1442695040888963407U;
        return (state >> 33U) % bound;
    };
    for (int record = 0; record < kRecords; ++record) {
        std::string row;
        const auto add = [&](std::uint64_t number, bool mayMiss = true) {
            const bool isMissing = mayMiss && below(20) == 0;
            row += isMissing ? "NA" : std::to_string(number / 10) + std::to_string(number % 10);
            row += row.size() + 1 == kRowLength ? "\n" : ",";
        };
        // Samples differ, so that they are compared.
        const std::uint64_t group = below(5);
        for (const std::uint64_t shift : {0U, 1U, 3U}) add(below(5) + group + shift);
        for (const std::uint64_t most : {2U, 3U, 6U}) add(below(most) == 0 ? 1 : 2);
        for (const std::uint64_t most : {3U, 2U}) add(1 + below(most) + (most == 2 ? below(2) : 0));
        add(1 + group);
        add(below(4));  // weights, of which some are 0
        add(below(6));
        add(static_cast<std::uint64_t>(record) % 100, false);
        csv += row;
    }
    return csv;
}

tarn::Table Loaded(const std::string& csv, unsigned threads, std::size_t recordsOfBlock) {
    tarn::LoadOptions load;
    load.nominal = {"a0", "b0", "c0"};
    load.ordinal = {"p0", "q0", "g0"};
    load.weightField = "w0";
    load.threads = threads;
    if (recordsOfBlock > 0) load.blockSize = recordsOfBlock * kRowLength;
    return TableOf(csv, load);
}

struct Wish {
    std::vector<std::string> oneSample;
    std::vector<std::string> related;
    std::vector<std::string> independent;
    std::string group;
    std::vector<std::string> tests;
    std::string compare;
};

/// So that each test is asked for with fields that it takes.
std::vector<Wish> Wishes() {
    return {
        {{"x0"}, {}, {}, "", {"runs", "binomial"}, ""},
        {{"x1"}, {}, {}, "", {"wilcoxon"}, ""},
        {{"y0"}, {}, {}, "", {"kolmogorov-smirnov"}, ""},
        {{"a0"}, {}, {}, "", {"runs", "binomial"}, ""},
        {{"p0"}, {}, {}, "", {"chi-square"}, ""},
        {{}, {"x0", "x1"}, {}, "", {"sign", "wilcoxon", "hodges-lehmann"}, ""},
        {{}, {"x0", "x1", "x2"}, {}, "", {"friedman", "kendall"}, "pairwise"},
        {{}, {"x0", "x1", "x2"}, {}, "", {"friedman", "kendall"}, "stepwise"},
        {{}, {"a0", "b0"}, {}, "", {"mcnemar"}, ""},
        {{}, {"a0", "b0", "c0"}, {}, "", {"cochran"}, "pairwise"},
        {{}, {"a0", "b0", "c0"}, {}, "", {"cochran"}, "stepwise"},
        {{}, {"p0", "q0"}, {}, "", {"marginal-homogeneity"}, ""},
        {{},
         {},
         {"x0", "x1"},
         "a0",
         {"mann-whitney", "kolmogorov-smirnov", "wald-wolfowitz", "moses", "hodges-lehmann"},
         ""},
        {{}, {}, {"x0"}, "g0", {"kruskal-wallis", "jonckheere", "median"}, "pairwise"},
        {{}, {}, {"x0"}, "g0", {"kruskal-wallis", "jonckheere", "median"}, "stepwise"},
    };
}

tarn::AnalysisOptions OptionsOf(const Wish& wish, bool asDefined) {
    tarn::AnalysisOptions options;
    options.oneSample = wish.oneSample;
    options.related = wish.related;
    options.independent = wish.independent;
    options.group = wish.group;
    options.tests = wish.tests;
    options.compare = wish.compare;
    options.asDefined = asDefined;
    if (wish.tests.front() == "wilcoxon") options.testValue = 4;
    // As defined the subsets are right where fields stand in the order of their successes.
    if (wish.tests.front() == "cochran") options.success = {"2"};
    if (wish.tests.front() == "kolmogorov-smirnov" && !wish.oneSample.empty()) {
        for (const std::string_view name : tarn::DistributionNames()) options.distributions.emplace_back(name);
    }
    return options;
}

/// The JSON of a result; `seen` takes the names of its tests that came to a result.
std::string JsonOfRun(const tarn::Table& table, const tarn::AnalysisOptions& options, unsigned threads,
                      std::set<std::string>& seen) {
    tarn::AnalysisEnvironment environment = Environment();
    environment.threads = threads;
    const tarn::AnalysisOutcome outcome = tarn::Analyze(table, options, environment);
    EXPECT_TRUE(outcome.succeeded);
    tarn::ResultReading result = tarn::ReadAnalysis(outcome.document, options, environment);
    tarn::SupplementOptions supplement;
    supplement.draws = 200;
    supplement.adjustment = tarn::Adjustment::kHolm;
    tarn::SupplyFigures(result, table, options, supplement, environment);
    const tarn::CaseRule rule = tarn::CaseRuleOf(table, options);
    const tarn::RecordSelection selection{table.RowCount(), {}, {}, {}};
    const tarn::Json request;
    tarn::AddRecord(result, {table, rule, tarn::WeightRule::kRounded, selection, request}, WorkShare(threads));
    for (const tarn::TestReading& test : result.tests) {
        if (!test.HasError()) seen.insert(test.name);
        EXPECT_EQ(!test.pairs.empty(), options.compare == "pairwise") << test.name;
        EXPECT_EQ(!test.subsets.empty(), options.compare == "stepwise") << test.name;
    }
    return tarn::JsonReport(result, *environment.texts, outcome.notes);
}

class SameBytes : public testing::TestWithParam<bool> {};

TEST_P(SameBytes, OfAnyNumberOfThreadsAndAnyBlocks) {
    const std::string csv = TiedCsv();
    const tarn::Table whole = Loaded(csv, 1, 0);
    ASSERT_EQ(whole.RowCount(), static_cast<std::size_t>(kRecords));
    std::set<std::string> seen;
    std::set<std::string> different;
    for (const Wish& wish : Wishes()) {
        const tarn::AnalysisOptions options = OptionsOf(wish, GetParam());
        const std::string alone = JsonOfRun(whole, options, 1, seen);
        different.insert(alone);
        for (const unsigned threads : {1U, 2U, 4U}) {
            for (const std::size_t records : {std::size_t{1}, std::size_t{2}, std::size_t{3}, std::size_t{kRecords}}) {
                const std::string json = JsonOfRun(Loaded(csv, threads, records), options, threads, seen);
                EXPECT_TRUE(json == alone)
                    << wish.tests.front() << " with " << threads << " threads, in blocks of " << records;
            }
        }
    }
    EXPECT_EQ(different.size(), Wishes().size());
    std::set<std::string> all;
    for (const TestFacts* const test : Tests::kAll) all.insert(std::string(test->resultName));
    EXPECT_EQ(seen, all) << "every test came to a result";
}

INSTANTIATE_TEST_SUITE_P(Ways, SameBytes, testing::Bool(),
                         [](const auto& test) { return test.param ? "as_defined" : "extended"; });

}  // namespace
