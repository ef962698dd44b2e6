// The door of every client: what a program gets that calls it without a command line.

#include "host/analysis/Analysis.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "host/InputError.h"
#include "tests/analysis/AnalysisRun.h"

namespace {

using namespace analysis_test;
using tarn::AnalysisOutcome;
using tarn::ResultReading;

std::vector<std::string> NamesOf(const ResultReading& result) {
    std::vector<std::string> names;
    for (const tarn::TestReading& test : result.tests) names.push_back(test.name + " " + test.fields.front());

    return names;
}

TEST(Analysis, GivesADocumentAndItsReadingInTheOrderAsked) {
    const tarn::Table table = TableOf(GroupsCsv(40, 1), NominalGroups());
    const AnalysisOutcome outcome = tarn::Analyze(table, GroupTests(), Environment());
    ASSERT_TRUE(outcome.succeeded);
    EXPECT_EQ(outcome.remarks, std::vector<std::string>{});
    const ResultReading result = tarn::ReadAnalysis(outcome.document, GroupTests(), Environment());
    EXPECT_EQ(NamesOf(result),
              (std::vector<std::string>{"IMannWhitneyU y", "IKolmogorovSmirnov y", "IHodgesLehmannEstimateGroups y",
                                        "IMedian y", "IMannWhitneyU x", "IKolmogorovSmirnov x",
                                        "IHodgesLehmannEstimateGroups x", "IMedian x", "RHodgesLehmannEstimatePairs x",
                                        "RWilcoxonSignedRanks x"}));
    EXPECT_FALSE(tarn::IsNoneDone(result));
}

TEST(Analysis, NamesItsApplicationAndPutsNotesBesideTheDocument) {
    tarn::LoadOptions load = NominalGroups();
    load.weightField = "y";
    const tarn::Table table = TableOf("x,y,g\n1,1.5,a\n2,2,b\n3,1,a\n4,1,b\n", load);
    tarn::AnalysisOptions options;
    options.independent = {"x"};
    options.group = "g";
    tarn::AnalysisEnvironment environment = Environment();
    environment.applicationName = "a notebook";
    environment.applicationVersion = "7";
    const AnalysisOutcome outcome = tarn::Analyze(table, options, environment);
    EXPECT_EQ(outcome.notes,
              std::vector<std::string>{"weights of y: 1 record rounded to whole numbers, of 4 in all; the "
                                       "weights add up to 5.5 and count as 6"});
    const ResultReading result = tarn::ReadAnalysis(outcome.document, options, environment);
    EXPECT_EQ(result.document.application + " " + result.document.applicationVersion, "a notebook 7");
}

TEST(Analysis, ThrowsForAWishThatCantBeMet) {
    const tarn::Table table = TableOf(GroupsCsv(4, 1), NominalGroups());
    tarn::AnalysisOptions options = GroupTests();
    options.related = {"x", "z"};
    EXPECT_THROW(tarn::Analyze(table, options, Environment()), tarn::InputError);
}

TEST(Analysis, CanBeStopped) {
    const tarn::Table table = TableOf(GroupsCsv(40, 1), NominalGroups());
    tarn::AnalysisEnvironment environment = Environment();
    environment.isCancelled = [] { return true; };
    tarn::PlanSettings plan;
    tarn::ByteSource source =
        tarn::ByteSource::FromMemory("plan.json", R"({"tests": [{"sign": {"variableName": ["x", "y"]}}]})");
    plan = tarn::ReadPlan(source);
    tarn::Table own = TableOf(GroupsCsv(40, 1));
    const AnalysisOutcome outcome = tarn::RunPlan(plan, own, environment);
    EXPECT_FALSE(outcome.succeeded);
    EXPECT_EQ(outcome.failureCode, 1);
    EXPECT_EQ(outcome.remarks, std::vector<std::string>{"the run failed with code 1: the run was cancelled"});
}

// As the same table and plan give it on the command line: the sign test counts 3 pairs up and 1 down.
TEST(Analysis, RunsAPlan) {
    tarn::ByteSource source =
        tarn::ByteSource::FromMemory("plan.json", R"({"tests": [{"sign": {"variableName": ["x", "y"]}}]})");
    tarn::PlanSettings plan = tarn::ReadPlan(source);
    tarn::Table table = TableOf("x,y\n1,2\n2,4\n3,2\n4,5\n");
    const AnalysisOutcome outcome = tarn::RunPlan(plan, table, Environment());
    ASSERT_TRUE(outcome.succeeded);
    const tarn::ResultDocument result = tarn::ReadResult(outcome.document);
    EXPECT_EQ(result.tests.at(0).content.Table("ContinuousDistribution")->Value("PositiveDifferences"), "3");
}

TEST(Analysis, DoesNotDependOnTheThreadBudget) {
    // Enough values that both the reading and the descriptives are shared.
    tarn::LoadOptions one = NominalGroups();
    one.threads = 1;
    const std::string csv = GroupsCsv(60'000, 3);
    tarn::AnalysisEnvironment single = Environment();
    single.threads = 1;
    tarn::AnalysisOptions options = GroupTests();
    options.tests = {"mann-whitney", "wilcoxon"};
    const std::string alone = tarn::Analyze(TableOf(csv, one), options, single).document;
    const std::string shared = tarn::Analyze(TableOf(csv, NominalGroups()), options, Environment()).document;
    EXPECT_FALSE(alone.empty());
    EXPECT_EQ(alone, shared);
}

}  // namespace
