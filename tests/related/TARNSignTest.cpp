// The sign test through the engine, from settings and records to its element.
//
// Exact significances: scipy.stats.binomtest(positive, n, 0.5).pvalue, SciPy 1.17. Asymptotic ones: mpmath with 30
// digits, 2 * ncdf(-|z|) of the statistic with continuity correction.

#include "related/TARNSign.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "tests/harness/DrivenTest.h"
#include "tests/harness/WithinUlp.h"
#include "tests/related/PairRun.h"

namespace {

using harness::ElementOf;
using harness::Fields;
using harness::kNone;
using harness::MessagesOf;
using harness::Outcome;
using harness::Table;
using harness::WithinUlp;
using pairs::Number;
using pairs::Rows;
using pairs::Texts;

/// One sign test of the named fields.
Outcome RunSign(const std::vector<std::string>& names, Fields& fields, Rows rows, double sigLevel = 0.05) {
    return pairs::RunEntry("RSign", pairs::Entry(names), fields, std::move(rows), {{"sigLevel", sigLevel}});
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
    return RunSign({"before", "after"}, fields, rows, sigLevel);
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
    EXPECT_TRUE(WithinUlp(Number(statistics, "StandardTestStatistic"), expected.z, harness::kUlpsOfFifteenDigits));
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

std::unique_ptr<QKSettings> OwnSettings(const std::vector<int>& pair) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", pair, false);
    return settings;
}

/// A test over its own settings alone, driven by hand: records of (first field, second field, weight).
class WeightedSign : public TARNSign {
 public:
    explicit WeightedSign(const std::vector<int>& pair = {0, 1}) : TARNSign(SettingsOf(pair)) {}

    /// The first pass, which computes all but the intervals.
    void Pass(const Rows& rows) {
        harness::BeginPassOver(*this, rows);
        static_cast<void>(EndPass());
    }

 private:
    static std::unique_ptr<QKSettings> SettingsOf(const std::vector<int>& pair) {
        auto settings = OwnSettings(pair);
        settings->AddSetting("weightVariableIndex", 2.0);
        return settings;
    }
};

/// How many of the 2^n sequences of signs have at most `k` positive ones.
std::uint64_t SequencesUpTo(int k, int n) {
    std::uint64_t sum = 0;
    std::uint64_t binomial = 1;
    for (int i = 0; i <= k; ++i) {
        sum += binomial;
        binomial = binomial * static_cast<std::uint64_t>(n - i) / static_cast<std::uint64_t>(i + 1);
    }
    return sum;
}

TEST(TARNSign, EverySplitOfUpTo25CasesHasTheSignificancesOfItsEnumeration) {
    for (int n = 1; n <= 27; ++n) {
        for (int positive = 0; positive <= n; ++positive) {
            SCOPED_TRACE(testing::Message() << positive << " of " << n);
            WeightedSign test;
            test.Pass({{0, 1, double(positive)}, {5, 3, double(n - positive)}});
            const Table result = ElementOf(test);
            const Table statistics = result.Sub("StatisticsResult");

            const double excess = std::max(std::fabs(positive - n / 2.0) - 0.5, 0.0);
            const double z = std::copysign(excess / std::sqrt(n / 4.0), positive - n / 2.0);
            double deciding = std::erfc(std::fabs(z) / std::sqrt(2.0));  // both tails of the normal distribution
            EXPECT_TRUE(WithinUlp(Number(statistics, "StandardTestStatistic"), z, harness::kUlpsOfFifteenDigits));
            EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), deciding, 2e-15);
            EXPECT_EQ(statistics.HasRow("ExactSig2Tailed"), n < 26);
            EXPECT_EQ(MessagesOf(result).size(), n < 26 ? 1u : 0u);
            if (n < 26) {
                const double tail =
                    std::ldexp(static_cast<double>(SequencesUpTo(std::min(positive, n - positive), n)), -n);
                deciding = std::min(2 * tail, 1.0);
                EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), deciding, 2e-15);
            }
            EXPECT_EQ(result.Attribute("decision"), deciding < 0.05 ? "reject" : "retain");
        }
    }
}

TEST(TARNSign, OnePositiveDifference) {
    // The lower tail is 1, the upper one 1/2; the excess of 0.5 is corrected to exactly 0.
    const Table statistics = RunPair({{1, 4}}).document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TestStatistic"), "1");
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
}

TEST(TARNSign, PositiveCountOf0HasAnUpperTailOf1) {
    // scipy.stats.binomtest(0, 25, 0.5).pvalue is twice the lower tail of 2^-25.
    const Table statistics = RunPair(Differences(0, 25, 0)).document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "5.96046447753906e-08");
}

TEST(TARNSign, LargeSamplesOfKnownStatistics) {
    // mpmath: 2 * ncdf(-2.3) of 62 among 100, and of 152 among 300, whose excess of 2 is corrected to 1.5.
    const Table first = RunPair(Differences(62, 38, 0)).document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(first.Row("StandardTestStatistic"), "2.3");
    EXPECT_NEAR(Number(first, "AsymptoticSig2Tailed"), 0.021448220043351611, 1e-15);
    const Table second = RunPair(Differences(152, 148, 0)).document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(second.Row("StandardTestStatistic"), "0.173205080756888");
    EXPECT_NEAR(Number(second, "AsymptoticSig2Tailed"), 0.86249023013592159, 2e-15);
}

TEST(TARNSign, N25GivesTheExactSignificanceAndItsHelpMessageAndN26GivesNeither) {
    const Outcome exact = RunPair(Differences(18, 7, 0));
    EXPECT_EQ(MessagesOf(exact.document.Test(0)), Texts({"220916 helpMessage"}));
    // All tables follow behind a help message.
    EXPECT_EQ(exact.document.Test(0).ChildNames().size(), 4u);
    const Outcome asymptotic = RunPair(Differences(18, 8, 0));
    EXPECT_EQ(MessagesOf(asymptotic.document.Test(0)), Texts({}));
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
    EXPECT_EQ(MessagesOf(test), Texts({}));
    EXPECT_EQ(test.Sub("ContinuousDistribution").SimpleRows("Interval"), Texts({"3", "0"}));
    EXPECT_EQ(RunPair({{1, 1}}, 1.5).document.Test(0).Attribute("decision"), "reject");  // a level above 1
}

// ---- Records ----

TEST(TARNSign, NoRecordsForTheTestIs220003) {
    for (const Rows& rows : {Rows{{1, kNone}, {kNone, 2}}, Rows{{kNone, kNone}}}) {
        const Table test = RunPair(rows).document.Test(0);
        EXPECT_EQ(MessagesOf(test), Texts({"220003 error"}));
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
        EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    }
}

TEST(TARNSign, RecordsThatMissAFieldOfThePairTakeNoPartAndOthersDo) {
    Fields fields = Pair();
    fields.Continuous("other");
    const Outcome outcome =
        RunSign({"before", "after"}, fields, {{1, 2, kNone}, {kNone, 5, 1}, {2, kNone, 1}, {4, 3, 1}});
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TotalN"), "2");
}

Fields WeightedPair() {
    Fields fields = Pair();
    fields.Weight("n");
    return fields;
}

TEST(TARNSign, OnlyRecordsOfWeightUnder1Are220003) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{1, 2, 0.9}, {1, 3, 0}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), Texts({"220003 error"}));
}

TEST(TARNSign, WeightsLoseTheirFractionsAndOneUnder1StillMovesTheRange) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 1, 2.9}, {0, -4, 1.2}, {0, 7, 0.9}, {3, 3, 2}});
    const Table distribution = outcome.document.Test(0).Sub("ContinuousDistribution");
    EXPECT_EQ(distribution.Row("PositiveDifferences"), "2");
    EXPECT_EQ(distribution.Row("NegativeDifferences"), "1");
    EXPECT_EQ(distribution.Row("Ties"), "2");
    // -4 and 7 are the ends of the range, so that 1 stands in an interval of its own though 7 itself has no weight.
    EXPECT_EQ(distribution.SimpleRows("Interval"), Texts({"1;2;2", "-4;1;0"}));
}

TEST(TARNSign, WeightUnder1MovesTheRangeOfTheIntervals) {
    Fields fields = WeightedPair();
    // Between 1 and 1000 an interval is 2.4975 wide and holds both 1 and 1.5; between 1 and 1.5 it would not.
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 1, 1}, {0, 1.5, 1}, {0, 1000, 0.9}});
    EXPECT_EQ(outcome.document.Test(0).Sub("ContinuousDistribution").SimpleRows("Interval"), Texts({"2", "1.25"}));
    // The same below, where the smallest difference has no weight.
    const Outcome below = RunSign({"before", "after"}, fields, {{0, -1, 1}, {0, -1.5, 1}, {0, -1000, 0.9}});
    EXPECT_EQ(below.document.Test(0).Sub("ContinuousDistribution").SimpleRows("Interval"), Texts({"2", "-1.25"}));
}

TEST(TARNSign, ZeroDifferencesTakePartInTheRange) {
    // From 0 on an interval is 0.02505 wide and the last one, from 9.995, holds both; from 10 on it would not.
    const Outcome outcome = RunPair({{0, 10}, {0, 10.02}, {3, 3}});
    EXPECT_EQ(outcome.document.Test(0).Sub("ContinuousDistribution").SimpleRows("Interval"), Texts({"2;1", "10.01;0"}));
}

TEST(TARNSign, WeightOf0InAnEmptyIntervalLeavesItsMeanNoNumberForGood) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 2, 0.9}, {0, 8, 0.5}, {0, 2, 1}, {0, 5, 1}});
    // The interval of 8 has no weight at all and is left out.
    EXPECT_EQ(outcome.document.Test(0).Sub("ContinuousDistribution").SimpleRows("Interval"), Texts({"1;1", "nan;5"}));
}

TEST(TARNSign, DifferenceIsTheSecondFieldMinusTheFirstInTheOrderOfTheNames) {
    for (const auto& [names, positive] : std::vector<std::pair<std::vector<std::string>, std::string>>{
             {{"before", "after"}, "3"}, {{"after", "before"}, "1"}}) {
        Fields fields = Pair();
        const Outcome outcome = RunSign(names, fields, {{1, 2}, {1, 3}, {1, 4}, {9, 1}});
        EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TestStatistic"), positive);
    }
}

TEST(TARNSign, NegativeWeightsTakeAway) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 1, 5}, {0, 2, -3}, {0, -1, 1}});
    const Table statistics = outcome.document.Test(0).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "3");
    EXPECT_EQ(statistics.Row("TestStatistic"), "2");
}

TEST(TARNSign, MissingWeightTruncatesToTheSmallestInteger) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 1, kNone}});
    EXPECT_EQ(outcome.document.Test(0).Sub("StatisticsResult").Row("TotalN"), "-2147483648");
}

TEST(TARNSign, CountersWrapAt32Bits) {
    Fields fields = WeightedPair();
    const Outcome outcome = RunSign({"before", "after"}, fields, {{0, 1, 2147483647}, {0, 1, 2147483647}, {0, 1, 12}});
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
    const Outcome outcome = RunSign(GetParam().names, fields, {{1, 2, 0, 0, 3, 4}});
    EXPECT_TRUE(outcome.complete);
    const Table test = outcome.document.Test(0);
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(MessagesOf(test), GetParam().messages);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_Sign_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), GetParam().first);
    EXPECT_EQ(test.Sub("Condition").Row("%1"), GetParam().second);
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
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
    const Outcome outcome = pairs::RunEntry("RSign", QKSettings(), fields, {{1, 2}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), Texts({"220912 error", "220918 error"}));
}

TEST(TARNSign, EqualIndicesAreAnErrorOfTheTestAndTheDescriptivesStandAllTheSame) {
    Fields fields = Pair();
    const Outcome outcome = RunSign({"before", "before"}, fields, {{1, 2}});
    EXPECT_EQ(MessagesOf(outcome.document.Test(0)), Texts({"220918 error"}));
    EXPECT_TRUE(outcome.document.FieldInfo(0).Exists());
}

TEST(TARNSign, PositionsOfThePairAreSortedNotItsFields) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Continuous("before").Continuous("after");
    const Outcome outcome = RunSign({"before", "after"}, fields, {{7, 0, 1, 2}, {9, 1, 3, 5}});
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
        QKSettings entry = pairs::Entry({"before", second});
        AddVecSetting(entry, "originVariableName", Texts({"unknown", "g"}), false);
        const Outcome outcome = pairs::RunEntry("RSign", entry, fields, {{1, 2, 0}, {2, 5, 0}});
        EXPECT_EQ(outcome.document.FieldInfo(2).Sub("CategoricalDistribution").SimpleRows("Interval"),
                  Texts({"2;0", "0;1"}))
            << second;
    }
}

// ---- The element and the protocol ----

TEST(TARNSign, ElementHasItsTablesAndRowsInOrder) {
    const Table test = RunPair(Differences(3, 1, 1)).document.Test(0);
    EXPECT_EQ(test.Attribute("name"), "RSign");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable ContinuousDistribution", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("ContinuousDistribution").ChildNames(),
              Texts({"Attribute NegativeDifferences", "Attribute Ties", "Attribute PositiveDifferences",
                     "SimpleTable Interval"}));
    EXPECT_EQ(
        test.Sub("StatisticsResult").ChildNames(),
        Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
               "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed", "Attribute ExactSig2Tailed"}));
}

TEST(TARNSign, WholeElementOfAnExampleByHand) {
    // Differences 2, 3, -1, 0: 2 of 3 positive. Exact: twice P(X >= 2) = 1/2, cut at 1. Standard error the root of 3,
    // halved; the excess of 0.5 is corrected to 0. Intervals 0.01 wide, each difference in its own.
    const Outcome outcome = RunPair({{1, 3}, {1, 4}, {2, 1}, {6, 6}});
    std::ostringstream text;
    outcome.document.Test(0).Node().print(text, "", pugi::format_raw);
    EXPECT_EQ(
        text.str(),
        R"(<Algorithm name="RSign" type="hypothesis_test" classification="Related_Samples" decision="retain">)"
        R"(<StructuredTable name="Condition"><Attribute name="ConditionKey" value="R_Sign_2"/>)"
        R"(<Attribute name="%0" value="0"/><Attribute name="%1" value="1"/></StructuredTable>)"
        R"(<StructuredTable name="WarningMessages"><StructuredTable name="Message">)"
        R"(<Attribute name="code" value="220916"/><Attribute name="type" value="helpMessage"/>)"
        R"(<Attribute name="paramNum" value="0"/></StructuredTable></StructuredTable>)"
        R"(<StructuredTable name="ContinuousDistribution"><Attribute name="NegativeDifferences" value="1"/>)"
        R"(<Attribute name="Ties" value="1"/><Attribute name="PositiveDifferences" value="2"/>)"
        R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/>)"
        R"(<Row>1;1;1;1</Row><Row>-1;2;3;0</Row></SimpleTable></StructuredTable>)"
        R"(<StructuredTable name="StatisticsResult"><Attribute name="TotalN" value="4"/>)"
        R"(<Attribute name="TestStatistic" value="2"/><Attribute name="StandardError" value="0.866025403784439"/>)"
        R"(<Attribute name="StandardTestStatistic" value="0"/><Attribute name="AsymptoticSig2Tailed" value="1"/>)"
        R"(<Attribute name="ExactSig2Tailed" value="1"/></StructuredTable></Algorithm>)");
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

TEST(TARNSign, WithoutALevelInItsSettingsItIs5Percent) {
    // 6 of 6: 0.03125, which 0.05 exceeds; 5 of 5: 0.0625.
    for (const auto& [positive, decision] : std::vector<std::pair<double, std::string>>{{6, "reject"}, {5, "retain"}}) {
        WeightedSign test;
        test.Pass({{0, 1, positive}});
        EXPECT_EQ(ElementOf(test).Attribute("decision"), decision);
    }
}

TEST(TARNSign, WithoutRecordsNoSecondPassFollows) {
    WeightedSign test;
    test.Pass({});
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
    EXPECT_EQ(test.EndPass(), QKStatus(220003));
    EXPECT_EQ(MessagesOf(ElementOf(test)), Texts({"220003 error"}));
}

TEST(TARNSign, TestInErrorBeginsItsFirstPassAndKeepsItsError) {
    WeightedSign good({3, 2});
    good.AddMessage({QKStatus(220915), MessageKind::kError, {"3"}, {}});
    EXPECT_EQ(good.BeginPass(), QKStatus(220915));
    EXPECT_EQ(good.GetPassKind(), 2);  // the estimate of the first pass, for progress alone
    EXPECT_FALSE(good.NeedsAnotherPass());
    EXPECT_EQ(good.EndPass(), QKStatus(220915));
    EXPECT_EQ(MessagesOf(ElementOf(good)), Texts({"220915 error 3"}));
    EXPECT_EQ(ElementOf(good).Sub("Condition").Row("%0"), "3");

    // Equal indices are no second error where one stands; a list that is no pair is.
    WeightedSign equal({3, 3});
    equal.AddMessage({QKStatus(220915), MessageKind::kError, {"3", "3"}, {}});
    EXPECT_EQ(equal.BeginPass(), QKStatus(220915));
    WeightedSign single({3});
    single.AddMessage({QKStatus(220903), MessageKind::kError, {"x"}, {}});
    EXPECT_EQ(single.BeginPass(), QKStatus(220918));
    EXPECT_EQ(MessagesOf(ElementOf(single)), Texts({"220903 error x", "220918 error"}));
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
