// The sign test through the engine, from settings and records to its element.
//
// Exact significances: scipy.stats.binomtest(positive, n, 0.5).pvalue, SciPy 1.17. Asymptotic ones: mpmath with 30
// digits, 2 * ncdf(-|z|) of the statistic with continuity correction.

#include <gtest/gtest.h>

#include <cmath>
#include <memory>
#include <string>
#include <vector>

#include "related/TARNSign.h"
#include "support/QKVecValue.h"
#include "tests/harness/TestRun.h"

namespace {

using harness::Fields;
using harness::kNone;
using harness::MessagesOf;
using harness::Outcome;
using harness::Table;
using Rows = std::vector<std::vector<double>>;

/// Settings with one sign test of the named fields.
QKSettings SignOf(const std::vector<std::string>& names, double sigLevel = 0.05) {
    QKSettings settings;
    settings.AddSetting("sigLevel", sigLevel);
    harness::AddListTest(settings, "RSign", names);
    return settings;
}

Fields Pair() {
    Fields fields;
    fields.Continuous("before").Continuous("after");
    return fields;
}

/// Rows with as many positive, negative and zero differences, their sizes all different.
Rows Differences(int positive, int negative, int zero) {
    Rows rows;
    for (int i = 0; i < positive; ++i) rows.push_back({double(i), i + 1.0 + i});
    for (int i = 0; i < negative; ++i) rows.push_back({2.0 * i + 3, double(i)});
    for (int i = 0; i < zero; ++i) rows.push_back({i / 7.0, i / 7.0});
    return rows;
}

Outcome RunPair(const Rows& rows, double sigLevel = 0.05) {
    Fields fields = Pair();
    return harness::Run(SignOf({"before", "after"}, sigLevel), fields, rows);
}

double Number(const Table& table, const std::string& row) {
    return std::stod(table.Row(row));
}

// ---- Statistics ----

struct Counts {
    int positive;
    int negative;
    const char* exact;  // as the element spells it, "(absent)" for none
    double z;
    double asymptotic;
    const char* standardError;
    const char* decision;
};

class SignStatistics : public testing::TestWithParam<Counts> {};

TEST_P(SignStatistics, AreThoseOfTheReference) {
    const Counts& expected = GetParam();
    const Outcome outcome = RunPair(Differences(expected.positive, expected.negative, 3));
    const Table test = outcome.document.Test(0);
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), std::to_string(expected.positive + expected.negative + 3));
    EXPECT_EQ(statistics.Row("TestStatistic"), std::to_string(expected.positive));
    EXPECT_EQ(statistics.Row("StandardError"), expected.standardError);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), expected.z, 1e-14 * std::fabs(expected.z));
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), expected.asymptotic, 1e-14);
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), expected.exact);
    EXPECT_EQ(test.Attribute("decision"), expected.decision);
}

INSTANTIATE_TEST_SUITE_P(
    , SignStatistics,
    testing::Values(
        // n = 25 is exact, n = 26 is not.
        Counts{18, 7, "0.0432852506637573", 2, 0.0455002638963584, "2.5", "reject"},
        Counts{18, 8, "(absent)", 1.76504521624366, 0.0775561667436655, "2.54950975679639", "retain"},
        Counts{20, 6, "(absent)", 2.54950975679639, 0.0107874492546704, "2.54950975679639", "reject"},
        Counts{7, 19, "(absent)", -2.15727748652002, 0.0309840500984566, "2.54950975679639", "reject"},
        Counts{9, 0, "0.00390625", 2.66666666666667, 0.00766076113517947, "1.5", "reject"},
        Counts{8, 2, "0.109375", 1.58113883008419, 0.113846298006658, "1.58113883008419", "retain"},
        Counts{2, 10, "0.03857421875", -2.02072594216369, 0.0433081428107920, "1.73205080756888", "reject"},
        // No positive difference at all: the upper tail is the whole distribution.
        Counts{0, 9, "0.00390625", -2.66666666666667, 0.00766076113517947, "1.5", "reject"},
        // One positive difference: lower 1, upper 1/2, doubled 1; the excess of exactly 0.5 is corrected to 0.
        Counts{1, 0, "1", 0, 1, "0.5", "retain"}, Counts{0, 1, "1", 0, 1, "0.5", "retain"},
        // As many of either: twice the tail is above 1 and cut.
        Counts{5, 5, "1", 0, 1, "1.58113883008419", "retain"},
        Counts{20, 20, "(absent)", 0, 1, "3.16227766016838", "retain"}));

TEST(TARNSign, ExactSignificanceComesWithAHelpMessageBelow26Cases) {
    const Outcome exact = RunPair(Differences(18, 7, 0));
    EXPECT_EQ(MessagesOf(exact.document.Test(0)), std::vector<std::string>{"220916 helpMessage"});
    const Outcome asymptotic = RunPair(Differences(18, 8, 0));
    EXPECT_EQ(MessagesOf(asymptotic.document.Test(0)), std::vector<std::string>{});
}

TEST(TARNSign, TiesDontCountTowardsN) {
    const Outcome outcome = RunPair(Differences(15, 5, 80));
    const Table test = outcome.document.Test(0);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "100");
    // scipy.stats.binomtest(15, 20, 0.5).pvalue
    EXPECT_EQ(test.Sub("StatisticsResult").Row("ExactSig2Tailed"), "0.0413894653320312");
}

TEST(TARNSign, ExactSignificanceDecidesWhereTheAsymptoticOneLiesOnTheOtherSide) {
    // 18 of 25: exact 0.04329, asymptotic 0.04550; a level between them.
    const Outcome outcome = RunPair(Differences(18, 7, 0), 0.0444);
    EXPECT_EQ(outcome.document.Test(0).Attribute("decision"), "reject");
    EXPECT_GT(Number(outcome.document.Test(0).Sub("StatisticsResult"), "AsymptoticSig2Tailed"), 0.0444);
}

TEST(TARNSign, SignificanceEqualToTheLevelRetains) {
    EXPECT_EQ(RunPair(Differences(9, 0, 0), 0.00390625).document.Test(0).Attribute("decision"), "retain");
    EXPECT_EQ(RunPair(Differences(9, 0, 0), 0.0039062500000001).document.Test(0).Attribute("decision"), "reject");
}

TEST(TARNSign, AllDifferencesZero) {
    const Outcome outcome = RunPair({{1, 1}, {2, 2}, {5, 5}});
    const Table test = outcome.document.Test(0);
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(statistics.Row("StandardError"), "0");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
    EXPECT_FALSE(statistics.HasRow("ExactSig2Tailed"));
    EXPECT_EQ(MessagesOf(test), std::vector<std::string>{});
    EXPECT_EQ(test.Sub("ContinuousDistribution").SimpleRows("Interval"), (std::vector<std::string>{"3", "0"}));
    EXPECT_EQ(RunPair({{1, 1}}, 1.5).document.Test(0).Attribute("decision"), "reject");  // a level above 1
}

// ---- Records ----

TEST(TARNSign, NoRecordsForTheTestIs220003) {
    for (const Rows& rows : {Rows{{1, kNone}, {kNone, 2}}, Rows{{kNone, kNone}}}) {
        const Table test = RunPair(rows).document.Test(0);
        EXPECT_EQ(MessagesOf(test), std::vector<std::string>{"220003 error"});
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        EXPECT_EQ(test.ChildNames(),
                  (std::vector<std::string>{"StructuredTable Condition", "StructuredTable WarningMessages"}));
        EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    }
}

TEST(TARNSign, RecordsThatMissAFieldOfThePairTakeNoPartAndOthersDo) {
    Fields fields = Pair();
    fields.Continuous("other");
    const Outcome outcome =
        harness::Run(SignOf({"before", "after"}), fields, {{1, 2, kNone}, {kNone, 5, 1}, {2, kNone, 1}, {4, 3, 1}});
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TotalN"), "2");
}

Fields WeightedPair() {
    Fields fields = Pair();
    fields.Weight("n");
    return fields;
}

TEST(TARNSign, OnlyRecordsOfWeightUnder1Are220003) {
    Fields fields = WeightedPair();
    const Outcome outcome = harness::Run(SignOf({"before", "after"}), fields, {{1, 2, 0.9}, {1, 3, 0}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), std::vector<std::string>{"220003 error"});
}

TEST(TARNSign, WeightsLoseTheirFractionsAndOneUnder1StillMovesTheRange) {
    Fields fields = WeightedPair();
    const Outcome outcome =
        harness::Run(SignOf({"before", "after"}), fields, {{0, 1, 2.9}, {0, -4, 1.2}, {0, 7, 0.9}, {3, 3, 2}});
    const Table distribution = outcome.document.Test(0).Sub("ContinuousDistribution");
    EXPECT_EQ(distribution.Row("PositiveDifferences"), "2");
    EXPECT_EQ(distribution.Row("NegativeDifferences"), "1");
    EXPECT_EQ(distribution.Row("Ties"), "2");
    // -4 and 7 are the ends of the range, so that 1 stands in an interval of its own though 7 itself has no weight.
    EXPECT_EQ(distribution.SimpleRows("Interval"), (std::vector<std::string>{"1;2;2", "-4;1;0"}));
}

TEST(TARNSign, NegativeWeightsTakeAway) {
    Fields fields = WeightedPair();
    const Outcome outcome = harness::Run(SignOf({"before", "after"}), fields, {{0, 1, 5}, {0, 2, -3}, {0, -1, 1}});
    const Table statistics = outcome.document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "3");
    EXPECT_EQ(statistics.Row("TestStatistic"), "2");
}

TEST(TARNSign, MissingWeightTruncatesToTheSmallestInteger) {
    Fields fields = WeightedPair();
    const Outcome outcome = harness::Run(SignOf({"before", "after"}), fields, {{0, 1, kNone}});
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TotalN"), "-2147483648");
}

TEST(TARNSign, CountersWrapAt32Bits) {
    Fields fields = WeightedPair();
    const Outcome outcome =
        harness::Run(SignOf({"before", "after"}), fields, {{0, 1, 2147483647}, {0, 1, 2147483647}, {0, 1, 12}});
    // 2 (2^31 - 1) + 12 = 2^32 + 10
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TotalN"), "10");
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("ExactSig2Tailed"), "0.001953125");  // 2 / 2^10
}

TEST(TARNSign, OrderOfRecordsChangesNothingButTheMeans) {
    const Rows rows = Differences(12, 9, 2);
    const Rows reversed(rows.rbegin(), rows.rend());
    const Table forward = RunPair(rows).document.Test(0).Sub("StatisticsResult");
    const Table backward = RunPair(reversed).document.Test(0).Sub("StatisticsResult");
    for (const char* row : {"TotalN", "TestStatistic", "StandardTestStatistic", "ExactSig2Tailed"}) {
        EXPECT_EQ(forward.Row(row), backward.Row(row));
    }
}

// ---- The plan ----

struct BadPair {
    std::vector<std::string> names;
    std::vector<std::string> messages;
    const char* first;
    const char* second;
};

class BadPairs : public testing::TestWithParam<BadPair> {};

TEST_P(BadPairs, StayInThePlanWithTheirError) {
    Fields fields;
    fields.Continuous("a").Continuous("b").Numeric("g", {1, 2}).Text("t", {"x"}).Continuous("c").Other("o");
    const Outcome outcome = harness::Run(SignOf(GetParam().names), fields, {{1, 2, 0, 0, 3, 4}});
    EXPECT_TRUE(outcome.complete);
    const Table test = outcome.document.Test(0);
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(MessagesOf(test), GetParam().messages);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_Sign_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), GetParam().first);
    EXPECT_EQ(test.Sub("Condition").Row("%1"), GetParam().second);
    EXPECT_EQ(test.ChildNames(),
              (std::vector<std::string>{"StructuredTable Condition", "StructuredTable WarningMessages"}));
    EXPECT_FALSE(outcome.document.FieldInfo(0).Exists());  // a failed test requests nothing
}

INSTANTIATE_TEST_SUITE_P(
    , BadPairs,
    testing::Values(
        // The test itself then finds no pair in its settings and says so beside the first message.
        BadPair{{"a", "nowhere"}, {"220903 error nowhere", "220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{"nowhere", "elsewhere"}, {"220903 error nowhere", "220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{"a"}, {"220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{}, {"220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{"a", "b", "c"}, {"220917 error", "220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{"t", "a"}, {"220915 error 3"}, "3", "0"}, BadPair{{"a", "o"}, {"220915 error 5"}, "0", "5"},
        // The walk goes on behind a field of the wrong kind, so that each is named.
        BadPair{{"t", "g"}, {"220915 error 3 2"}, "3", "2"},
        BadPair{{"g", "nowhere"}, {"220903 error 2 nowhere", "220918 error"}, "__MISSING__", "__MISSING__"},
        BadPair{{"a", "g", "b"}, {"220915 error 2", "220918 error"}, "__MISSING__", "__MISSING__"}));

TEST(TARNSign, MissingVariableNameIs220912) {
    Fields fields = Pair();
    QKSettings settings;
    settings.AddSetting("RSign", QKSettings());
    const Outcome outcome = harness::Run(settings, fields, {{1, 2}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), (std::vector<std::string>{"220912 error", "220918 error"}));
}

TEST(TARNSign, EqualIndicesAreAnErrorOfTheTestAndTheDescriptivesStandAllTheSame) {
    Fields fields = Pair();
    const Outcome outcome = harness::Run(SignOf({"before", "before"}), fields, {{1, 2}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), std::vector<std::string>{"220918 error"});
    EXPECT_TRUE(outcome.document.FieldInfo(0).Exists());
}

TEST(TARNSign, PositionsOfThePairAreSortedNotItsFields) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Continuous("before").Continuous("after");
    const Outcome outcome = harness::Run(SignOf({"before", "after"}), fields, {{7, 0, 1, 2}, {9, 1, 3, 5}});
    EXPECT_EQ(outcome.document.Test(0).Sub("Condition").Row("%0"), "2");
    EXPECT_EQ(outcome.document.FieldInfo(0).Sub("ContinuousDistribution").Row("Mean"), "8");
    EXPECT_TRUE(outcome.document.FieldInfo(1).Sub("CategoricalDistribution").Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(2).Exists());
    EXPECT_FALSE(outcome.document.FieldInfo(3).Exists());
}

TEST(TARNSign, OriginFieldsShowTheirFrequenciesWhateverTheStatus) {
    for (const char* second : {"after", "nowhere"}) {
        Fields fields;
        fields.Continuous("before").Continuous("after").Numeric("g", {1, 2});
        QKSettings entry;
        AddVecSetting(entry, "variableName", std::vector<std::string>{"before", second}, false);
        AddVecSetting(entry, "originVariableName", std::vector<std::string>{"unknown", "g"}, false);
        QKSettings settings;
        settings.AddSetting("RSign", entry);
        const Outcome outcome = harness::Run(settings, fields, {{1, 2, 0}, {2, 5, 0}});
        EXPECT_EQ(outcome.document.FieldInfo(2).Sub("CategoricalDistribution").SimpleRows("Interval"),
                  (std::vector<std::string>{"2;0", "0;1"}))
            << second;
    }
}

// ---- The element and the protocol ----

TEST(TARNSign, ElementHasItsTablesAndRowsInOrder) {
    const Table test = RunPair(Differences(3, 1, 1)).document.Test(0);
    EXPECT_EQ(test.Attribute("name"), "RSign");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.ChildNames(),
              (std::vector<std::string>{"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable ContinuousDistribution", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("ContinuousDistribution").ChildNames(),
              (std::vector<std::string>{"Attribute NegativeDifferences", "Attribute Ties",
                                        "Attribute PositiveDifferences", "SimpleTable Interval"}));
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              (std::vector<std::string>{"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                        "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed",
                                        "Attribute ExactSig2Tailed"}));
}

std::unique_ptr<QKSettings> OwnSettings(const std::vector<int>& pair) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", pair, false);
    return settings;
}

TEST(TARNSign, CountsItsPassesDown) {
    TARNSign test(OwnSettings({0, 1}));
    Record record(2);
    record[1] = 1;
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 2);
    EXPECT_TRUE(test.ProcessRecord(record).IsOK());
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    EXPECT_TRUE(test.NeedsAnotherPass());
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
}

TEST(TARNSign, AsksForThePairAndNotForTheWeight) {
    auto settings = OwnSettings({3, 1});
    settings->AddSetting("weightVariableIndex", 2.0);
    TARNSign test(std::move(settings));
    static_cast<void>(test.BeginPass());
    std::vector<int> used{9};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{9, 3, 1}));
}

TEST(TARNSign, IndicesThatAreNoPairAre220918) {
    for (const std::vector<int>& pair : {std::vector<int>{}, {1}, {1, 2, 3}, {-1, 2}, {2, -1}, {2, 2}}) {
        TARNSign test(OwnSettings(pair));
        EXPECT_EQ(test.BeginPass(), QKStatus(220918));
        EXPECT_EQ(test.GetPassKind(), 0);
        EXPECT_FALSE(test.NeedsAnotherPass());
        EXPECT_EQ(test.EndPass(), QKStatus(220918));
    }
}

}  // namespace
