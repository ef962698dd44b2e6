// The Wilcoxon test of one field. Reference values: scipy 1.17, scipy.stats.wilcoxon(x - m, correction=False,
// mode="approx"), whose z has the sign of the smaller rank sum; rank sums by scipy.stats.rankdata; the rest by hand.

#include "onesample/TARNWilcoxonSR.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <memory>
#include <optional>

#include "tests/harness/DrivenTest.h"
#include "tests/harness/EntryRun.h"
#include "tests/harness/WithinUlp.h"

namespace {

using harness::Columns;
using harness::Fields;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr const char* kTest = "OWilcoxonSignedRanks";
constexpr double kTolerance = 1e-12;

const std::vector<double> kValues{12.5, 9.0, 14.25, 10.0, 10.0, 7.5, 18.0, 11.0, 10.0, 9.0, 15.5, 3.0};

QKSettings EntryOf(std::optional<double> testValue, const std::string& field = "x") {
    QKSettings entry;
    entry.AddSetting("variableName", field);
    if (testValue) {
        entry.AddSetting("userSpecifyTestValue", true);
        entry.AddSetting("testValue", *testValue);
    }
    return entry;
}

/// Against the median `testValue`; with two columns the second one is the weight.
Table Result(double testValue, Rows rows, double sigLevel = 0.05) {
    Fields fields;
    fields.Continuous("x");
    if (rows.front().size() > 1) fields.Weight("w");
    return harness::ResultOf(kTest, EntryOf(testValue), fields, std::move(rows), {{"sigLevel", sigLevel}});
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Distribution(const Table& test) {
    return test.Sub("ContinuousDistribution");
}

// ---- Statistic ----

TEST(WilcoxonOneSample, GivesTheSumOfPositiveRanksWithTiesAndValuesAtTheMedian) {
    const Table test = Result(10, Columns({kValues}));
    EXPECT_EQ(test.Attribute("name"), "OWilcoxonSignedRanks");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable ContinuousDistribution",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").ChildNames(), Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "O_WilcoxonSignedRanks_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "10");

    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "12");
    EXPECT_EQ(statistics.Row("TestStatistic"), "28.5");
    EXPECT_NEAR(Number(statistics, "StandardError"), 8.403868156985805, kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 0.7139569407704756, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.47525380583898236, kTolerance);
}

TEST(WilcoxonOneSample, WholeWeightsCountAsRepeatedRecords) {  // SciPy over the values repeated
    const Table statistics = Statistics(Result(10, Columns({kValues, {2, 1, 3, 1, 2, 1, 1, 4, 1, 2, 1, 1}})));
    EXPECT_EQ(statistics.Row("TotalN"), "20");
    EXPECT_EQ(statistics.Row("TestStatistic"), "100");
    EXPECT_NEAR(Number(statistics, "StandardError"), 19.131126469708992, kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 1.6726667951658134, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.0943929094608517, kTolerance);
}

TEST(WilcoxonOneSample, FractionOfAWeightCountsInNAndTotalNWhileTheRanksTruncateIt) {
    // d = 1, -2, 3 with weights 1.5, 2.75, 0.5 and 1.9 at the median. Truncated 1, 2, 0 they give the ranks 1, 2.5 and
    // (0 + 1) / 2 + 3 = 3.5. R = 1 * 1.5 + 3.5 * 0.5, N = 4.75; one run of two.
    const Table test = Result(10, {{11, 1.5}, {8, 2.75}, {13, 0.5}, {10, 1.9}});
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.Row("TotalN"), "6.65");
    EXPECT_EQ(statistics.Row("TestStatistic"), "3.25");
    const double product = 4.75 * 5.75;
    const double standardError = std::sqrt((2 * 4.75 + 1) * product / 24 - 6.0 / 48);
    EXPECT_NEAR(Number(statistics, "StandardError"), standardError, kTolerance);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), (3.25 - product / 4) / standardError, kTolerance);
    // 1.9 at the median is 1 in its column, and 0.5 is no column at all.
    EXPECT_EQ(Distribution(test).SimpleRows("Interval"), Texts({"0;2;1;1", "1;8;10;11"}));
}

TEST(WilcoxonOneSample, ProductOfRanksDoesNotWrapWhereThatOfAPairDoes) {
    // N = 46341: the product of 32 bits would be negative. R = N (N + 1) / 2 as one run: rank (N + 1) / 2, weight N.
    constexpr double kN = 46341;
    const Table statistics = Statistics(Result(0, {{5, kN}}));
    const double standardError = std::sqrt((2 * kN + 1) * kN * (kN + 1) / 24 - (kN * kN * kN - kN) / 48);
    EXPECT_EQ(statistics.Row("TestStatistic"), "1073767311");
    EXPECT_TRUE(harness::WithinUlp(Number(statistics, "StandardError"), standardError, harness::kUlpsOfFifteenDigits));
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), kN * (kN + 1) / 4 / standardError, 1e-9);
}

TEST(WilcoxonOneSample, MakesNoContinuityCorrection) {  // one difference: R = 1, mean 0.5, variance 3 * 2 / 24
    const Table statistics = Statistics(Result(2, {{7}}));
    EXPECT_EQ(statistics.Row("TestStatistic"), "1");
    EXPECT_EQ(statistics.Row("StandardError"), "0.5");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "1");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.31731050786291415, kTolerance);  // 2 * norm.sf(1)
    EXPECT_FALSE(statistics.HasRow("ExactSig2Tailed"));
}

TEST(WilcoxonOneSample, NegativeDifferencesGiveANegativeStatisticAndTheSameSignificance) {
    const Table statistics = Statistics(Result(10, {{9}, {8}, {7}}));  // R = 0, mean 3, variance 7 * 12 / 24
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), -3 / std::sqrt(3.5), kTolerance);
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"),
              Statistics(Result(10, {{11}, {12}, {13}})).Row("AsymptoticSig2Tailed"));
}

TEST(WilcoxonOneSample, OrderOfTheRecordsDoesNotMatter) {
    std::vector<double> reversed = kValues;
    std::reverse(reversed.begin(), reversed.end());
    EXPECT_EQ(Statistics(Result(10, Columns({reversed}))).Row("TestStatistic"), "28.5");
}

TEST(WilcoxonOneSample, MissingValuesOfTheFieldCostTheRecord) {
    Rows rows = Columns({kValues});
    rows.insert(rows.begin(), {harness::kNone});
    EXPECT_EQ(Statistics(Result(10, rows)).Row("TotalN"), "12");
}

TEST(WilcoxonOneSample, AllValuesAtTheMedianShowAsNotANumberAndRetain) {
    const Table test = Result(4, {{4}, {4}, {4}}, 1.0);
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_TRUE(MessagesOf(test).empty());
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.Row("TotalN"), "3");
    EXPECT_EQ(statistics.Row("TestStatistic"), "0");
    EXPECT_EQ(statistics.Row("StandardError"), "0");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "nan");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "nan");
}

TEST(WilcoxonOneSample, SignificanceEqualToTheLevelRetainsAndIsNeverAboveOne) {
    const Rows balanced{{9}, {11}};  // z = 0
    EXPECT_EQ(Statistics(Result(10, balanced)).Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(Result(10, balanced, 1.0).Attribute("decision"), "retain");
    EXPECT_EQ(Result(10, balanced, 1.01).Attribute("decision"), "reject");
}

// ---- Median ----

TEST(WilcoxonOneSample, WithoutATestValueTheFieldMeetsItsOwnMedian) {
    Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2});
    QKSettings sorted;
    sorted.AddSetting("variableName", "x");
    sorted.AddSetting("groupVariableName", "g");
    QKSettings settings;
    settings.AddSetting("IMannWhitneyU", sorted);  // a sorted test planned before, so that the median can be had
    settings.AddSetting(kTest, EntryOf(std::nullopt));
    const Table test = harness::Run(settings, fields, {{1, 0}, {9, 1}, {4, 0}, {30, 1}}).document.Test(0);
    EXPECT_EQ(Distribution(test).Row("HypotheticalMedian"), "6.5");
    EXPECT_EQ(Distribution(test).Row("ObservedMedian"), "6.5");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "6.5");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "5.5");  // d = -5.5, 2.5, -2.5, 23.5: ranks 1.5 and 4
}

// The median is refused as long as no sorted test is planned. The missing value then stands for it everywhere, and
// every difference is positive.
TEST(WilcoxonOneSample, AloneItHasTheMissingValueForAMedian) {
    Fields fields;
    fields.Continuous("x");
    const Table test = harness::ResultOf(kTest, EntryOf(std::nullopt), fields, {{1}, {9}, {4}});
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "-1.79769313486232e+308");
    EXPECT_EQ(Distribution(test).Row("HypotheticalMedian"), "-1.79769313486232e+308");
    EXPECT_EQ(Distribution(test).Row("ObservedMedian"), "-1.79769313486232e+308");
    EXPECT_EQ(Statistics(test).Row("TestStatistic"), "6");
    const Table given = Result(4, {{1}, {9}, {4}});
    EXPECT_EQ(Distribution(given).Row("HypotheticalMedian"), "4");
    EXPECT_EQ(Distribution(given).Row("ObservedMedian"), "-1.79769313486232e+308");
}

// ---- Distribution ----

TEST(WilcoxonOneSample, FirstColumnHasTheCountZeroAndTheTiesAsItsValue) {
    const Table distribution = Distribution(Result(3, {{1}, {3}, {3}, {8}, {-2}}));
    EXPECT_EQ(distribution.ChildNames(),
              Texts({"Attribute HypotheticalMedian", "Attribute ObservedMedian", "SimpleTable Interval"}));
    EXPECT_EQ(distribution.SimpleRows("Interval"), Texts({"0;1;1;2;1", "2;-2;1;3;8"}));
}

TEST(WilcoxonOneSample, ZerosAreTheHistogramsAndTiesAreTheTests) {
    EXPECT_EQ(Distribution(Result(3, {{0}, {0}, {8}})).SimpleRows("Interval"), Texts({"1;2", "8;0"}));
    EXPECT_EQ(Distribution(Result(0, {{0}, {0}, {8}})).SimpleRows("Interval"), Texts({"0;1;2", "2;8;0"}));
}

// ---- Failures ----

struct Failure {
    const char* what;
    QKSettings entry;
    std::vector<std::string> messages;
    std::string field;
    std::string testValue;
};

std::vector<Failure> Failures() {
    QKSettings noName;
    noName.AddSetting("userSpecifyTestValue", true);
    noName.AddSetting("testValue", 2.0);
    QKSettings noValue;
    noValue.AddSetting("variableName", "x");
    noValue.AddSetting("userSpecifyTestValue", true);
    return {{"no name", noName, {"220812 error"}, "-1", "2"},
            {"unknown field", EntryOf(2, "nowhere"), {"220803 error nowhere"}, "-1", "2"},
            {"categorical field", EntryOf(2, "g"), {"220815 error 1"}, "1", "2"},
            {"field of another kind", EntryOf(2, "o"), {"220815 error 2"}, "2", "2"},
            {"no test value", noValue, {"220801 error"}, "0", "0"}};
}

TEST(WilcoxonOneSample, EveryFailureOfThePlanStaysInTheTestAndShowsWhatWasFound) {
    for (const Failure& failure : Failures()) {
        Fields fields;
        fields.Continuous("x").Numeric("g", {1, 2}).Other("o");
        const Table test = harness::ResultOf(kTest, failure.entry, fields, {{1, 0, 0}, {2, 1, 0}});
        EXPECT_EQ(test.Attribute("decision"), "unknown") << failure.what;
        EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}))
            << failure.what;
        EXPECT_EQ(MessagesOf(test), failure.messages) << failure.what;
        EXPECT_EQ(test.Sub("Condition").Row("%0"), failure.field) << failure.what;
        EXPECT_EQ(test.Sub("Condition").Row("%1"), failure.testValue) << failure.what;
    }
}

TEST(WilcoxonOneSample, NoWeightAtAllIsAnErrorWhateverTheRecords) {
    for (const Rows& rows : {Rows{{1, 0}, {2, 0}}, Rows{{1, 0.5}, {2, -0.5}}, Rows{{harness::kNone, 1}}}) {
        EXPECT_EQ(MessagesOf(Result(1.5, rows)), Texts({"220003 error"}));
    }
    // Below 1 it still counts, though no rank moves.
    EXPECT_EQ(Statistics(Result(1.5, {{1, 0.25}, {2, 0.25}})).Row("TotalN"), "0.5");
}

TEST(WilcoxonOneSample, WithoutDescriptivesItHasNoMedian) {
    TARNWilcoxonSR test(std::make_unique<QKSettings>());
    const QKStatus begun = test.BeginPass();
    EXPECT_TRUE(begun.IsError());
    EXPECT_EQ(begun.GetErrorCode(), 220801);
}

TEST(WilcoxonOneSample, BeforeItsPassTheConditionHasNoTestValue) {
    TARNWilcoxonSR test(std::make_unique<QKSettings>());
    test.AddStatusMessage(QKStatus(220812), MessageKind::kError);
    EXPECT_EQ(harness::ElementOf(test).Sub("Condition").Row("%1"), "__MISSING__");
}

TEST(WilcoxonOneSample, AsksForTheFrequenciesOfTheOrigin) {
    Fields fields;
    fields.Continuous("x").Numeric("c", {1, 2});
    QKSettings entry = EntryOf(2);
    entry.AddSetting("originVariableName", "c");
    const harness::Outcome outcome = harness::RunEntry(kTest, entry, fields, {{1, 0}, {4, 1}, {5, 0}});
    EXPECT_EQ(outcome.document.FieldInfo(1).Sub("CategoricalDistribution").SimpleRows("Interval"),
              Texts({"2;1", "0;1"}));  // the counts and below them the categories
}

}  // namespace
