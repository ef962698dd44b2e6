// The Wilcoxon test of a pair. Reference values: scipy 1.17, scipy.stats.wilcoxon(d, correction=False, mode="approx"),
// whose z has the sign of the smaller rank sum; rank sums by scipy.stats.rankdata; the rest by hand.

#include "related/TARNWilcoxonPairs.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/related/PairRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Table;
using pairs::Columns;
using pairs::Entry;
using pairs::Number;
using pairs::Rows;
using pairs::Texts;

constexpr double kTolerance = 1e-12;

const std::vector<double> kFirst{10, 12, 9, 15, 7, 8, 20, 11, 13, 6, 9, 14};
const std::vector<double> kSecond{13, 12, 7, 18, 9, 8, 17, 15, 14, 10, 4, 14};
const std::vector<double> kWeights{2, 1, 3, 1, 2, 5, 1, 1, 2, 1, 1, 4};

Table Result(Rows rows, bool weighted = false, double sigLevel = 0.05) {
    Fields fields;
    fields.Continuous("before").Continuous("after");
    if (weighted) fields.Weight("w");
    return pairs::ResultOf("RWilcoxonSignedRanks", Entry({"before", "after"}), fields, std::move(rows),
                           {{"sigLevel", sigLevel}});
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Distribution(const Table& test) {
    return test.Sub("ContinuousDistribution");
}

/// Records whose differences are these.
Rows WithDifferences(const std::vector<double>& differences) {
    Rows rows;
    for (const double difference : differences) rows.push_back({0, difference});
    return rows;
}

// ---- Statistic ----

TEST(WilcoxonPairs, GivesTheSumOfPositiveRanksWithTiesAndZeros) {
    const Table test = Result(Columns({kFirst, kSecond}));
    EXPECT_EQ(test.Attribute("name"), "RWilcoxonSignedRanks");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable ContinuousDistribution",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_WilcoxonSignedRanks_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");

    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "12");
    EXPECT_EQ(statistics.Row("TestStatistic"), "28.5");
    EXPECT_NEAR(Number(statistics, "StandardError"), 8.396427811873332, kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 0.7145896010104964, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.47486267230576795, kTolerance);
}

TEST(WilcoxonPairs, GivesTheValuesOfTheSleepData) {  // extra hours of sleep under two drugs, Student (1908)
    const Table test = Result(Columns(
        {{0.7, -1.6, -0.2, -1.2, -0.1, 3.4, 3.7, 0.8, 0.0, 2.0}, {1.9, 0.8, 1.1, 0.1, -0.1, 4.4, 5.5, 1.6, 4.6, 3.4}}));
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "45");
    EXPECT_NEAR(Number(Statistics(test), "StandardTestStatistic"), 2.6679112502793854, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.007632441648205508, kTolerance);
    EXPECT_EQ(test.Attribute("decision"), "reject");
}

TEST(WilcoxonPairs, WeightOfThreeCountsAsThreeEqualValues) {
    const Table test = Result(Columns({kFirst, kSecond, kWeights}), true);
    EXPECT_EQ(Statistics(test).Row("TotalN"), "24");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "66.5");
    EXPECT_NEAR(Number(Statistics(test), "StandardError"), 15.803480629279107, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "StandardTestStatistic"), 0.8858807960356658, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.375681765495835, kTolerance);
    EXPECT_EQ(Distribution(test).Row("NegativeDifferences"), "5");
    EXPECT_EQ(Distribution(test).Row("Ties"), "10");
    EXPECT_EQ(Distribution(test).Row("PositiveDifferences"), "9");
}

TEST(WilcoxonPairs, WeightBelowOneAddsNothingAndAFractionIsLost) {
    const Table truncated = Result({{0, 1, 2.9}, {0, -2, 1.5}, {0, 3, 0.9}, {0, 0, 1.1}}, true);
    const Table whole = Result({{0, 1, 2}, {0, -2, 1}, {0, 0, 1}}, true);
    for (const char* row : {"TotalN", "TestStatistic", "StandardError", "AsymptoticSig2Tailed"}) {
        EXPECT_EQ(Statistics(truncated).Row(row), Statistics(whole).Row(row)) << row;
    }
}

TEST(WilcoxonPairs, TiesOfBothSignsShareAMidRankAndReduceTheStandardError) {
    // |d| = 1, 2, 2, 2: ranks 1, 3, 3, 3; variance 9 * 20 / 24 - 24 / 48 = 7, without the correction 7.5.
    const Table statistics = Statistics(Result(WithDifferences({1, 2, -2, 2})));
    EXPECT_EQ(statistics.Row("TestStatistic"), "7");
    EXPECT_NEAR(Number(statistics, "StandardError"), std::sqrt(7.0), kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 2 / std::sqrt(7.0), kTolerance);
}

TEST(WilcoxonPairs, MakesNoContinuityCorrection) {  // one difference: R = 1, mean 0.5, variance 3 * 2 / 24
    const Table statistics = Statistics(Result(WithDifferences({5})));
    EXPECT_EQ(statistics.Row("StandardError"), "0.5");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "1");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.31731050786291415, kTolerance);  // 2 * norm.sf(1)
}

TEST(WilcoxonPairs, HasNoExactSignificanceForAFewRecords) {
    const Table test = Result(WithDifferences({1, 2, 3}));
    EXPECT_FALSE(test.Sub("WarningMessages").Exists());
    EXPECT_FALSE(Statistics(test).HasRow("ExactSig2Tailed"));
}

TEST(WilcoxonPairs, OrderOfTheRecordsDoesNotMatter) {
    std::vector<double> first = kFirst;
    std::vector<double> second = kSecond;
    std::reverse(first.begin(), first.end());
    std::reverse(second.begin(), second.end());
    const Table statistics = Statistics(Result(Columns({first, second})));
    EXPECT_EQ(statistics.Row("TestStatistic"), "28.5");
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 0.7145896010104964, kTolerance);
}

TEST(WilcoxonPairs, AllDifferencesZeroShowAsNotANumberAndRetain) {
    const Table test = Result({{1, 1}, {2, 2}, {7, 7}});
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_TRUE(MessagesOf(test).empty());
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.Row("TotalN"), "3");
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("StandardError"), "0");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "nan");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "nan");
    EXPECT_EQ(Distribution(test).SimpleRows("Interval"), Texts({"3", "0"}));
}

TEST(WilcoxonPairs, SignificanceEqualToTheLevelRetains) {  // z = 0, significance 1
    EXPECT_EQ(Result(WithDifferences({1, -1}), false, 1.0).Attribute("decision"), "retain");
    EXPECT_EQ(Result(WithDifferences({1, -1}), false, 1.01).Attribute("decision"), "reject");
}

TEST(WilcoxonPairs, MissingValuesOfThePairCostTheRecord) {
    Rows rows = Columns({kFirst, kSecond});
    rows.push_back({harness::kNone, 1});
    rows.push_back({1, harness::kNone});
    EXPECT_EQ(Statistics(Result(rows)).Row("TotalN"), "12");
}

// ---- 32 bits ----

TEST(WilcoxonPairs, RankProductWrapsAboveFortySixThousand) {
    // n = 92682: n (n + 1) = 8590045806, which 32 bits hold as 111214.
    constexpr int kN = 92682;
    Rows rows;
    for (int i = 1; i <= kN; ++i) rows.push_back({0, static_cast<double>(i)});
    const Table statistics = Statistics(Result(rows));
    EXPECT_EQ(statistics.Row("TestStatistic"), "4295022903");  // the rank sum itself has its full width
    const double standardError = std::sqrt((2.0 * kN + 1) * 111214 / 24);
    EXPECT_NEAR(Number(statistics, "StandardError"), standardError, 1e-9);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), (4295022903.0 - 111214 * 0.25) / standardError, 1e-9);
}

TEST(WilcoxonPairs, LastCountThatFitsAndTheFirstThatDoesNot) {
    const auto standardError = [](double weight) {
        return Statistics(Result({{0, 1, 20000}, {0, 2, weight}}, true)).Row("StandardError");
    };
    // n = 46340, n (n + 1) = 2147441940 of at most 2147483647. In whole numbers, Python's fractions:
    // n (n + 1) (2 n + 1) / 24 - (20000^3 - 20000 + 26340^3 - 26340) / 48 = 7745407433846.25, and the root of it.
    EXPECT_EQ(standardError(26340), "2783057.20994849");
    EXPECT_EQ(standardError(26341), "nan");  // the product is negative
}

// ---- Histogram ----

TEST(WilcoxonPairs, DistributionHasTheSignsAndTheHistogramWithTheZerosLast) {
    const Table test = Result(WithDifferences({-2, 0, 4, 4, 0, 1}));
    const Table distribution = Distribution(test);
    EXPECT_EQ(distribution.ChildNames(), Texts({"Attribute NegativeDifferences", "Attribute Ties",
                                                "Attribute PositiveDifferences", "SimpleTable Interval"}));
    EXPECT_EQ(distribution.Row("NegativeDifferences"), "1");
    EXPECT_EQ(distribution.Row("Ties"), "2");
    EXPECT_EQ(distribution.Row("PositiveDifferences"), "3");
    EXPECT_EQ(distribution.SimpleRows("Interval"), Texts({"1;1;2;2", "-2;1;4;0"}));
}

TEST(WilcoxonPairs, MakesTwoPassesAndCountsThemDown) {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1}, false);
    TARNWilcoxonPairs test(std::move(settings));
    Record record(2);
    record[0] = 1;
    record[1] = 3;
    for (const int pass : {0, 1}) {
        EXPECT_EQ(test.NeedsAnotherPass(), pass == 1);
        ASSERT_FALSE(test.BeginPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 2 - pass);
        ASSERT_FALSE(test.ProcessRecord(record).IsError());
        ASSERT_FALSE(test.EndPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 1 - pass);
    }
    EXPECT_FALSE(test.NeedsAnotherPass());
}

}  // namespace
