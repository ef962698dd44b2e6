// Kendall's coefficient of concordance. What it shares with the Friedman test is tested there; here stands what
// differs.

#include "related/TARNKendallsW.h"

#include <gtest/gtest.h>

#include <memory>

#include "tests/related/RankedRun.h"

namespace {

using harness::MessagesOf;
using harness::Number;
using harness::Texts;
using ranked::Entry;
using ranked::Fields;
using ranked::FirstBase;
using ranked::Rows;
using ranked::RowsOf;
using ranked::Table;

constexpr const char* kTest = "RKendallsCoefficient";
constexpr const char* kFriedman = "RFriedmansTwoWayByRanks";
constexpr double kTolerance = 1e-12;

Table Result(const Rows& rows, const std::string& comparison = "none") {
    return ranked::ResultOf(kTest, rows, comparison);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}

/// Three judges and six pairs of objects of Siegel (1956), Nonparametric Statistics for the Behavioral Sciences,
/// chapter 9: three executives rank six applicants; sum of squares 25.5 about the mean, W = 0.16.
Rows Applicants() {
    return {{1, 6, 3, 2, 5, 4}, {1, 5, 6, 4, 2, 3}, {6, 3, 2, 5, 4, 1}};
}

TEST(KendallsW, GivesWOfThePublishedExample) {
    const Table test = Result(Applicants());
    EXPECT_EQ(test.Attribute("name"), kTest);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_KendallsCoefficient_1");
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute KendallsW", "Attribute TestStatistic",
                                              "Attribute DegreeOfFreedom", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "3");
    // Rank sums 8, 14, 11, 11, 11, 8: s = 25.5, W = 12 s / (9 * 210) = 306 / 1890.
    EXPECT_NEAR(Number(statistics, "KendallsW"), 306.0 / 1890, kTolerance);
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 3 * 5 * 306.0 / 1890, kTolerance);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "5");
}

TEST(KendallsW, CorrectsForTies) {  // 78 / 7 / (2 * 22), see the Friedman test of these times
    const Table statistics = Statistics(Result(FirstBase()));
    EXPECT_NEAR(Number(statistics, "KendallsW"), 39.0 / 154, kTolerance);
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 78.0 / 7, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.003805040775511383, kTolerance);  // friedmanchisquare
}

TEST(KendallsW, FullAgreementIs1) {
    for (const int judges : {1, 2, 7}) {
        const Table statistics = Statistics(Result(Rows(static_cast<std::size_t>(judges), {2, 1, 3, 4, 5})));
        EXPECT_EQ(statistics.Row("KendallsW"), "1");
        EXPECT_EQ(statistics.Row("TestStatistic"), std::to_string(judges * 4));
    }
}

TEST(KendallsW, AllRowsConstantIs0) {
    const Table test = Result({{1, 1, 1}, {4, 4, 4}});
    EXPECT_EQ(Statistics(test).Row("KendallsW"), "0");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "0");
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(KendallsW, WeightOf3IsThreeJudges) {
    const Table weighted = ranked::WeightedResultOf(kTest, {{1, 2, 3, 3.7}, {2, 1, 3, 1}});
    const Table repeated = Result({{1, 2, 3}, {1, 2, 3}, {1, 2, 3}, {2, 1, 3}});
    for (const char* row : {"TotalN", "KendallsW", "TestStatistic"}) {
        EXPECT_EQ(Statistics(weighted).Row(row), Statistics(repeated).Row(row)) << row;
    }
    EXPECT_EQ(Statistics(weighted).Row("TotalN"), "4");
    // Rank sums 5, 7, 12: s = 26, W = 12 * 26 / (16 * 24).
    EXPECT_NEAR(Number(Statistics(weighted), "KendallsW"), 13.0 / 16, kTolerance);
}

TEST(KendallsW, ComparesAsTheFriedmanTestDoes) {
    Rows rows = FirstBase();
    for (std::size_t i = 0; i < rows.size(); ++i) rows[i].push_back(rows[i][i % 3] + (i % 4 == 0 ? -0.2 : 0.4));
    for (const char* comparison : {"pairWise", "stepWise"}) {
        const Table kendall = Result(rows, comparison);
        const Table friedman = ranked::ResultOf(kFriedman, rows, comparison);
        const std::string result = comparison == std::string("pairWise") ? "PairwiseResult" : "StepwiseResult";
        ASSERT_FALSE(RowsOf(friedman, result, "Content").empty());
        EXPECT_EQ(RowsOf(kendall, result, "Content"), RowsOf(friedman, result, "Content"));
        EXPECT_EQ(kendall.ChildNames(), friedman.ChildNames());
        EXPECT_EQ(MessagesOf(kendall), MessagesOf(friedman));
    }
}

TEST(KendallsW, RefusalsHaveTheirCodes) {
    const Rows different{{1, 2, 3}, {3, 2, 1}, {1, 3, 2}};
    EXPECT_EQ(MessagesOf(Result(different, "pairWise")), Texts({"221913 warning"}));
    EXPECT_EQ(MessagesOf(Result(different, "stepWise")), Texts({"221914 warning"}));
    const Rows alike(6, {1, 2});
    EXPECT_EQ(MessagesOf(Result(alike, "pairWise")), Texts({"221915 warning"}));
    EXPECT_EQ(MessagesOf(Result(alike, "stepWise")), Texts({"221916 warning"}));
}

TEST(KendallsW, PlanFailuresHaveTheirCodes) {
    const auto messages = [](const QKSettings& entry) {
        Fields fields;
        fields.Continuous("x0").Continuous("x1").Numeric("g", {1, 2});
        return MessagesOf(harness::ResultOf(kTest, entry, fields, {{1, 2, 0}}));
    };
    EXPECT_EQ(messages(QKSettings()), Texts({"221911 error"}));
    EXPECT_EQ(messages(Entry({"nowhere", "x0"})), Texts({"221903 error nowhere"}));
    EXPECT_EQ(messages(Entry({"x0"})), Texts({"221909 error"}));
    EXPECT_EQ(messages(Entry({"g", "x0"})), Texts({"221904 error 2"}));
    QKSettings noType;
    AddVecSetting(noType, "variableName", Texts({"x0", "x1"}), false);
    EXPECT_EQ(messages(noType), Texts({"221901 error"}));
}

TEST(KendallsW, NoCaseGives220003) {
    EXPECT_EQ(MessagesOf(ranked::WeightedResultOf(kTest, {{1, 2, 3, 0.5}})), Texts({"220003 error"}));
}

TEST(KendallsW, RecordIsProcessedInErrorAndOverwritesIt) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", std::vector<int>{0}, false);
    TARNKendallsW test(std::move(settings));
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 221909);
    EXPECT_EQ(test.GetPassKind(), 1);
    Record record(1);
    EXPECT_TRUE(test.ProcessRecord(record).IsOK());
    EXPECT_FALSE(test.EndPass().IsError());
}

}  // namespace
