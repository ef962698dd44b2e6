// The binomial test: statistic, significances and element. How the classes come about: BinaryClassesTest.cpp.
// Reference values: scipy 1.17. Exact ones are binom.cdf and binom.sf, asymptotic ones norm.sf of the corrected
// difference over its standard error, as beside each.

#include "onesample/TARNBinomial.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "tests/harness/EntryRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;

constexpr double kTolerance = 1e-12;
/// More than the machine epsilon away from 1/2.
constexpr double kBesideOneHalf = 0.5000000001;

/// `first` values of 1 and `second` values of 2, to be cut at 1.
Rows Counts(int first, int second) {
    Rows rows(static_cast<std::size_t>(first), {1.0});
    rows.insert(rows.end(), static_cast<std::size_t>(second), {2.0});
    return rows;
}

QKSettings CutEntry(double cutPoint = 1) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("contVarClassFormation", "givenCutPoint");
    entry.AddSetting("givenCutPoint", cutPoint);
    return entry;
}

QKSettings CutEntryWithProbability(double probability) {
    QKSettings entry = CutEntry();
    entry.AddSetting("testProbability", probability);
    return entry;
}

Table Result(const Rows& rows, const QKSettings& entry = CutEntry(),
             const std::vector<std::pair<std::string, double>>& common = {}) {
    Fields fields;
    fields.Continuous("x").Weight("w");
    Rows weighted = rows;
    for (std::vector<double>& row : weighted) row.resize(2, 1.0);
    return harness::ResultOf("OBinomial", entry, fields, weighted, common);
}

Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}

// ---- Two-tailed ----

TEST(Binomial, ProbabilityOneHalfGivesTwoTailedRowsWithDoubledSignificances) {
    const Table test = Result(Counts(7, 3));
    EXPECT_EQ(test.Attribute("name"), "OBinomial");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable TwoClassComparison",
                                        "StructuredTable StatisticsResult"}));
    const Table statistics = Statistics(test);
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed",
                                              "Attribute ExactSig2Tailed"}));
    EXPECT_EQ(statistics.Row("TotalN"), "10");
    EXPECT_EQ(statistics.Row("TestStatistic"), "7");
    EXPECT_NEAR(Number(statistics, "StandardError"), 1.5811388300841898, kTolerance);          // sqrt(2.5)
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 0.9486832980505138, kTolerance);  // 1.5 / sqrt(2.5)
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.34278171114791145, kTolerance);  // 2 norm.sf of it
    EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), 0.34375, kTolerance);                   // 2 binom.sf(6, 10, .5)
}

TEST(Binomial, FewInTheFirstClassGiveANegativeStatisticAndTheSameSignificances) {
    const Table statistics = Statistics(Result(Counts(3, 7)));
    EXPECT_EQ(statistics.Row("TestStatistic"), "3");
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), -0.9486832980505138, kTolerance);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.34278171114791145, kTolerance);
    EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), 0.34375, kTolerance);
}

TEST(Binomial, DifferenceOfAtMostOneHalfGivesStatisticZeroAndSignificanceOne) {
    for (const auto& [first, second] : {std::pair{5, 5}, {5, 4}, {4, 5}}) {
        const Table statistics = Statistics(Result(Counts(first, second)));
        EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
        EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
        EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");  // twice 0.62 and twice 0.5, cut to 1
    }
}

TEST(Binomial, ComparisonShowsPercentagesOfTheClasses) {
    const Table comparison = Result(Counts(6, 2), CutEntryWithProbability(0.25)).Sub("TwoClassComparison");
    EXPECT_EQ(comparison.ChildNames(), Texts({"SimpleTable Content"}));
    EXPECT_EQ(comparison.SimpleRows("Content"), Texts({"75;25", "25;75"}));
    const pugi::xml_node content = comparison.Node().child("SimpleTable");
    EXPECT_STREQ(content.child("RowNames").text().get(), "Observed;Hypothesized");
    EXPECT_STREQ(content.child("ColumnNames").text().get(), "0;1");
}

TEST(Binomial, OneRecordAndOneClassAreEnough) {
    const Table statistics = Statistics(Result(Counts(1, 0)));
    EXPECT_EQ(statistics.Row("TotalN"), "1");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");  // a difference of 1/2
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
}

// ---- One-tailed ----

TEST(Binomial, ProbabilityBesideOneHalfGivesOneTailedRows) {
    const Table statistics = Statistics(Result(Counts(7, 3), CutEntryWithProbability(kBesideOneHalf)));
    EXPECT_EQ(statistics.ChildNames(), Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                                              "Attribute StandardTestStatistic", "Attribute AsymptoticSig1Tailed",
                                              "Attribute ExactSig1Tailed"}));
    EXPECT_NEAR(Number(statistics, "AsymptoticSig1Tailed"), 0.17139085557395572, 1e-9);
    EXPECT_NEAR(Number(statistics, "ExactSig1Tailed"), 0.171875, 1e-9);
}

TEST(Binomial, ProbabilityWithinTheMachineEpsilonOfOneHalfIsOneHalf) {
    EXPECT_TRUE(Statistics(Result(Counts(7, 3), CutEntryWithProbability(0.5 + 1.2e-16))).HasRow("ExactSig2Tailed"));
    EXPECT_TRUE(Statistics(Result(Counts(7, 3), CutEntryWithProbability(0.5 + 2.3e-16))).HasRow("ExactSig1Tailed"));
}

TEST(Binomial, OneTailedSignificanceIsThatOfTheSmallerTail) {
    const Table below = Statistics(Result(Counts(2, 8), CutEntryWithProbability(0.3)));
    EXPECT_NEAR(Number(below, "StandardError"), 1.4491376746189437, kTolerance);  // sqrt(2.1)
    EXPECT_NEAR(Number(below, "StandardTestStatistic"), -0.3450327796711771, kTolerance);
    EXPECT_NEAR(Number(below, "AsymptoticSig1Tailed"), 0.3650348637900211, kTolerance);
    EXPECT_NEAR(Number(below, "ExactSig1Tailed"), 0.38278278639999987, kTolerance);  // binom.cdf(2, 10, .3)

    const Table above = Statistics(Result(Counts(4, 8), CutEntryWithProbability(0.2)));
    EXPECT_NEAR(Number(above, "StandardTestStatistic"), 0.793856620135735, kTolerance);
    EXPECT_NEAR(Number(above, "AsymptoticSig1Tailed"), 0.21363945308598825, kTolerance);
    EXPECT_NEAR(Number(above, "ExactSig1Tailed"), 0.20543105024000003, kTolerance);  // binom.sf(3, 12, .2)
}

TEST(Binomial, ProbabilityAboveTheObservedShareBringsAHelpMessageAndAllTables) {
    const Table test = Result(Counts(6, 4), CutEntryWithProbability(0.7));
    EXPECT_EQ(MessagesOf(test), Texts({"221311 helpMessage 0.7"}));
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable TwoClassComparison", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(Binomial, NoHelpMessageForAProbabilityAtOrBelowTheShareOrForOneHalf) {
    EXPECT_TRUE(MessagesOf(Result(Counts(3, 1), CutEntryWithProbability(0.75))).empty());
    EXPECT_TRUE(MessagesOf(Result(Counts(3, 1), CutEntryWithProbability(0.25))).empty());
    EXPECT_TRUE(MessagesOf(Result(Counts(1, 3))).empty());
}

// ---- Exact significance ----

TEST(Binomial, TotalOf25HasTheExactRowAnd26HasNot) {
    const Table exact = Statistics(Result(Counts(18, 7)));
    EXPECT_NEAR(Number(exact, "AsymptoticSig2Tailed"), 0.04550026389635839, kTolerance);  // 2 norm.sf(2)
    EXPECT_NEAR(Number(exact, "ExactSig2Tailed"), 0.043285250663757324, kTolerance);      // 2 binom.sf(17, 25, .5)
    const Table asymptotic = Statistics(Result(Counts(18, 8)));
    EXPECT_FALSE(asymptotic.HasRow("ExactSig2Tailed"));
    EXPECT_NEAR(Number(asymptotic, "AsymptoticSig2Tailed"), 0.07755616674366546, kTolerance);
}

TEST(Binomial, CountOf25IncludesWeightsSoFiveRecordsOfWeight6HaveNoExactRow) {
    const Table statistics = Statistics(Result({{1, 6}, {1, 6}, {2, 6}, {2, 6}, {1, 6}}));
    EXPECT_EQ(statistics.Row("TotalN"), "30");
    EXPECT_EQ(statistics.Row("TestStatistic"), "18");
    EXPECT_FALSE(statistics.HasRow("ExactSig2Tailed"));
}

TEST(Binomial, ExactBelowAndAsymptoticAboveTheLevelRetain) {
    // 0.0433 < 0.044 < 0.0455: the exact significance would reject.
    EXPECT_EQ(Result(Counts(18, 7), CutEntry(), {{"sigLevel", 0.044}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result(Counts(18, 7), CutEntry(), {{"sigLevel", 0.046}}).Attribute("decision"), "reject");
}

TEST(Binomial, SignificanceEqualToTheLevelRetains) {
    EXPECT_EQ(Result(Counts(5, 5), CutEntry(), {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result(Counts(5, 5), CutEntry(), {{"sigLevel", 1.01}}).Attribute("decision"), "reject");
}

// ---- Weights and missing values ----

TEST(Binomial, WeightsAreTruncatedAndBelowOneAddNothing) {
    const Table statistics = Statistics(Result({{1, 2.9}, {2, 0.9}, {2, 3.5}, {1, 0}}));
    EXPECT_EQ(statistics.Row("TestStatistic"), "2");
    EXPECT_EQ(statistics.Row("TotalN"), "5");
}

TEST(Binomial, MissingValuesTakeNoPart) {
    Rows rows = Counts(2, 1);
    rows.push_back({harness::kNone});
    EXPECT_EQ(Statistics(Result(rows)).Row("TotalN"), "3");
}

TEST(Binomial, NoCaseLeftGives220003) {
    const Table test = Result({{1, 0.5}, {2, 0.9}});
    EXPECT_EQ(MessagesOf(test), Texts({"220003 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages"}));
}

TEST(Binomial, CountersWrapAt32BitsAndAWrappedTotalGives220007) {
    // 2 * 2147483647 = 2^32 - 2, which 32 bits hold as -2: no binomial distribution has such a size.
    const Table test = Result({{1, 2147483647}, {2, 2147483647}});
    EXPECT_EQ(MessagesOf(test), Texts({"220007 error"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
}

// ---- Settings ----

TEST(Binomial, ImproperProbabilityGives221317) {
    for (const double probability : {0.0, 1.0, -0.1, 1.5, std::numeric_limits<double>::quiet_NaN()}) {
        const Table test = Result(Counts(2, 3), CutEntryWithProbability(probability));
        EXPECT_EQ(MessagesOf(test), Texts({"221317 error"})) << probability;
        EXPECT_EQ(test.Attribute("decision"), "unknown");
    }
}

TEST(Binomial, ImproperProbabilityIsToldBesideALaterErrorOfThePlan) {
    QKSettings entry;
    entry.AddSetting("variableName", "x");
    entry.AddSetting("testProbability", 2);
    const Table test = Result(Counts(1, 1), entry);
    EXPECT_EQ(MessagesOf(test), Texts({"221315 error", "221317 error"}));
    EXPECT_EQ(test.Sub("Condition").Row("%3"), "2");
    EXPECT_EQ(test.Sub("Condition").Row("%4"), "-1");
}

TEST(Binomial, ProbabilityIsNotReadAfterAnEarlierErrorOfThePlan) {
    QKSettings entry;
    entry.AddSetting("variableName", "nowhere");
    entry.AddSetting("testProbability", 2);
    const Table test = Result(Counts(1, 1), entry);
    EXPECT_EQ(MessagesOf(test), Texts({"221303 error nowhere"}));
    EXPECT_EQ(test.Sub("Condition").Row("%3"), "0.5");
}

TEST(Binomial, ConditionTellsTheCutPointAndBothProbabilities) {
    const Table condition = Result(Counts(2, 3), CutEntryWithProbability(0.25)).Sub("Condition");
    EXPECT_EQ(condition.ChildNames(),
              Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1", "Attribute %2", "Attribute %3"}));
    EXPECT_EQ(condition.Row("ConditionKey"), "ACutPointIsSpecified_O_Binomial_4");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "1");
    EXPECT_EQ(condition.Row("%2"), "0.25");
    EXPECT_EQ(condition.Row("%3"), "0.75");
}

// ---- Protocol ----

TEST(Binomial, TakesOnePassAndNamesItsFieldAlone) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 1);
    settings->AddSetting("weightVariableIndex", 0.0);
    settings->AddSetting("classFormation", "givenCutPoint");
    settings->AddSetting("givenCutPoint", 4.0);
    settings->AddSetting("measureLevel", 1);
    TARNBinomial test(std::move(settings));
    EXPECT_TRUE(test.BeginPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 1);
    std::vector<int> used{7, 8};
    test.GetUsedVariables(used);
    EXPECT_EQ(used, std::vector<int>{1});  // the list is emptied, and the weight field isn't named
    Record record(2);
    record[0] = 3;
    record[1] = 4;
    EXPECT_TRUE(test.ProcessRecord(record).IsOK());
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
}

}  // namespace
