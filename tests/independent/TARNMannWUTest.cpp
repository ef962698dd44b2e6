// The Mann-Whitney test. Reference values: scipy 1.17 (mannwhitneyu with use_continuity=False for the asymptotic
// significance and method="exact" for the exact one; its statistic is n1 n2 - U), rank sums worked by hand.

#include "independent/TARNMannWU.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "tests/harness/WithinUlp.h"
#include "tests/independent/GroupRun.h"

namespace {

using groups::Entry;
using groups::Number;
using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using groups::TwoFields;
using harness::MessagesOf;
using harness::Table;

constexpr const char* kTest = "IMannWhitneyU";

Table Result(Rows rows, const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), TwoFields(), std::move(rows), common);
}
Table WeightedResult(Rows rows) {
    return groups::ResultOf(kTest, Entry(), groups::WeightedFields(), std::move(rows));
}

const std::vector<double> kFirst{1.1, 2.3, 4.5, 6.7, 8.2};
const std::vector<double> kSecond{0.4, 3.1, 3.3, 9.9, 10.5, 12.0, 13.1};

// ---- Element ----

TEST(MannWhitney, ShowsGroupsAndStatisticsInTheirOrder) {
    const Table test = Result(RowsOf({kFirst, kSecond}));
    EXPECT_EQ(test.Attribute("name"), "IMannWhitneyU");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable Group0", "StructuredTable Group1",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("Group0").ChildNames(),
              Texts({"Attribute GroupIndex", "Attribute N", "Attribute MeanOfRank", "SimpleTable Interval"}));
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              Texts({"Attribute TotalN", "Attribute MannWhitneyU", "Attribute WilcoxonW", "Attribute TestStatistic",
                     "Attribute StandardError", "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed",
                     "Attribute ExactSig2Tailed"}));
}

TEST(MannWhitney, AgreesWithSciPyOnSamplesOfUnequalSize) {
    const Table test = Result(RowsOf({kFirst, kSecond}));
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "12");
    EXPECT_EQ(statistics.Row("MannWhitneyU"), "24");
    EXPECT_EQ(statistics.Row("TestStatistic"), "24");
    EXPECT_EQ(statistics.Row("WilcoxonW"), "52");
    EXPECT_NEAR(Number(statistics, "StandardError"), 6.157651067303722, 1e-12);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 1.0555973258234952, 1e-12);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.29115222318363554, 1e-12);
    EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), 0.3434343434343435, 1e-12);
    EXPECT_EQ(test.Sub("Group0").Row("N"), "5");
    EXPECT_EQ(test.Sub("Group0").Row("MeanOfRank"), "5.2");  // 2 3 6 7 8
    EXPECT_EQ(test.Sub("Group1").Row("N"), "7");
    EXPECT_NEAR(Number(test.Sub("Group1"), "MeanOfRank"), 52.0 / 7, 1e-13);
}

TEST(MannWhitney, GroupsSwappedExchangeUAndTakeTheOtherRankSum) {
    const Table statistics = Result(RowsOf({kSecond, kFirst})).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("MannWhitneyU"), "11");
    EXPECT_EQ(statistics.Row("WilcoxonW"), "26");
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), -1.0555973258234952, 1e-12);
    EXPECT_NEAR(Number(statistics, "ExactSig2Tailed"), 0.3434343434343435, 1e-12);
}

TEST(MannWhitney, TiesWithinAndAcrossTheGroupsReduceTheVariance) {
    const Rows rows = RowsOf({{1, 1, 2, 2, 3, 5, 5, 5}, {2, 2, 3, 3, 3, 6, 7, 7, 7, 8}});
    const Table statistics = Result(rows).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("MannWhitneyU"), "59.5");
    EXPECT_EQ(statistics.Row("WilcoxonW"), "114.5");
    EXPECT_NEAR(Number(statistics, "StandardError"), 11.084936490276526, 1e-12);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 1.759144043550001, 1e-12);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.0785530456764509, 1e-12);

    Rows backwards(rows.rbegin(), rows.rend());
    EXPECT_EQ(Number(Result(backwards).Sub("StatisticsResult"), "MannWhitneyU"), 59.5);
}

TEST(MannWhitney, EveryValueTiedHasNoSpread) {
    const Table statistics = Result(RowsOf({{4, 4, 4}, {4, 4}})).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("MannWhitneyU"), "3");
    EXPECT_EQ(statistics.Row("StandardError"), "0");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "0");
    EXPECT_EQ(statistics.Row("AsymptoticSig2Tailed"), "1");
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
}

TEST(MannWhitney, OneRecordInEachGroup) {
    const Table statistics = Result(RowsOf({{1}, {2}})).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("MannWhitneyU"), "1");
    EXPECT_EQ(statistics.Row("WilcoxonW"), "2");
    EXPECT_EQ(statistics.Row("StandardTestStatistic"), "1");  // (1 - 1/2) / sqrt(1/4)
    EXPECT_EQ(statistics.Row("ExactSig2Tailed"), "1");
}

// ---- Decision ----

TEST(MannWhitney, ExactSignificanceDecidesWhereThereIsOne) {
    // Three against three, apart: 2 / 20 = 0.1 exact, 0.0495 asymptotic (z = 4.5 / sqrt(5.25)).
    const Rows rows = RowsOf({{1, 2, 3}, {4, 5, 6}});
    EXPECT_EQ(Result(rows).Attribute("decision"), "retain");
    EXPECT_NEAR(Number(Result(rows).Sub("StatisticsResult"), "AsymptoticSig2Tailed"), 0.04953461343562649, 1e-12);
    EXPECT_EQ(Result(rows, {{"sigLevel", 0.1}}).Attribute("decision"), "retain");  // a level that is just reached
    EXPECT_EQ(Result(rows, {{"sigLevel", 0.1000001}}).Attribute("decision"), "reject");
}

/// One value against so many others, all above it.
Table OneAgainst(int others) {
    Rows rows{{0, 0}};
    for (int i = 1; i <= others; ++i) rows.push_back({static_cast<double>(i), 1});
    return Result(rows);
}

TEST(MannWhitney, ExactUpToFourHundredPairsInclusive) {
    const Table statistics = OneAgainst(400).Sub("StatisticsResult");
    EXPECT_TRUE(harness::WithinUlp(Number(statistics, "ExactSig2Tailed"), 2.0 / 401, 6));
    EXPECT_FALSE(OneAgainst(401).Sub("StatisticsResult").HasRow("ExactSig2Tailed"));
    // The sizes decide, not the sum of them.
    Rows rows;
    for (int i = 0; i < 40; ++i) rows.push_back({i + (i % 2 == 0 ? 0 : 14.0), i % 2 == 0 ? 0.0 : 1.0});
    EXPECT_TRUE(Result(rows).Sub("StatisticsResult").HasRow("ExactSig2Tailed"));
    rows.push_back({50, 0});
    EXPECT_FALSE(Result(rows).Sub("StatisticsResult").HasRow("ExactSig2Tailed"));
}

TEST(MannWhitney, AsymptoticSignificanceDecidesElsewhere) {
    EXPECT_EQ(OneAgainst(401).Attribute("decision"), "retain");  // z = 200.5 / sqrt(401 * 403 / 12) = 1.728
    Rows rows;
    for (int i = 0; i < 60; ++i) rows.push_back({static_cast<double>(i), i < 30 ? 0.0 : 1.0});
    EXPECT_EQ(Result(rows).Attribute("decision"), "reject");
}

// ---- Groups ----

harness::Fields Categories(std::vector<double> values, bool ordinal = false) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", std::move(values), ordinal);
    return fields;
}

std::string GroupOfFirst(const harness::Fields& fields) {
    const Table test = groups::ResultOf(kTest, Entry(), fields, RowsOf({{1, 2}, {3, 4, 5}}));
    const std::string first = test.Sub("Group0").Row("GroupIndex");
    EXPECT_EQ(test.Sub("Group0").Row("N"), first == "0" ? "2" : "3");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("MannWhitneyU"), first == "0" ? "6" : "0");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("WilcoxonW"), first == "0" ? "12" : "3");
    return first;
}

TEST(MannWhitney, SmallerValueOfAnUnorderedFieldIsTheFirstGroup) {
    EXPECT_EQ(GroupOfFirst(Categories({1, 2})), "0");
    EXPECT_EQ(GroupOfFirst(Categories({10, 9})), "1");  // by value, not by text
}

TEST(MannWhitney, OrderOfAnOrderedFieldStays) {
    EXPECT_EQ(GroupOfFirst(Categories({10, 9}, true)), "0");
    harness::Fields fields;
    fields.Continuous("x").Text("g", {"b", "a"}, true);
    EXPECT_EQ(GroupOfFirst(fields), "0");
}

TEST(MannWhitney, TextsAreComparedByTheirBytesWithBackslashesBeforeSemicolons) {
    const auto firstOf = [](const std::string& first, const std::string& second) {
        harness::Fields fields;
        fields.Continuous("x").Text("g", {first, second});
        return GroupOfFirst(fields);
    };
    EXPECT_EQ(firstOf("a", "b"), "0");
    EXPECT_EQ(firstOf("b", "a"), "1");
    EXPECT_EQ(firstOf("10", "9"), "0");
    EXPECT_EQ(firstOf("a", "B"), "1");
    EXPECT_EQ(firstOf("\xc3\xa4", "z"), "1");
    // "a;" is shown as "a\;", and a backslash stands behind "A".
    EXPECT_EQ(firstOf("a;", "aA"), "1");
    EXPECT_EQ(firstOf("aA", "a;"), "0");
}

TEST(MannWhitney, ListedGroupsMayHaveSeveralCategoriesAndTheOthersAreSkipped) {
    const Rows rows = RowsOf({{1, 5, 6}, {2.5, 7, 0}, {2, 8}, {3, 4}});
    const Table test = groups::ResultOf(kTest, groups::Listed<double>({4, 1}, {3}), Categories({1, 2, 3, 4}), rows);
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_I_MannWhitneyU_2");
    EXPECT_EQ(test.Sub("Group0").Row("GroupIndex"), "3;0");
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "2");
    // 1 | 2 | 3 4 5 6 | 8: the values of category 2, with 0 among them, take no rank and no place in an interval.
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "7");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("WilcoxonW"), "9");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("MannWhitneyU"), "6");
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval")[0], "1;1;1;1;1");
    EXPECT_EQ(test.Sub("Group1").SimpleRows("Interval")[1], "2;8");
}

TEST(MannWhitney, ListedGroupsOfTextsKeepTheirOrder) {
    harness::Fields fields;
    fields.Continuous("x").Text("g", {"a", "b"});
    const Table test =
        groups::ResultOf(kTest, groups::Listed<std::string>({"b"}, {"a", "nowhere"}), fields, RowsOf({{1, 2}, {3, 4}}));
    EXPECT_EQ(test.Sub("Group0").Row("GroupIndex"), "1");
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "0;-1");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("MannWhitneyU"), "0");
}

// ---- Weights and intervals ----

TEST(MannWhitney, WeightsCountAsRepeatedRecords) {
    // 2.9 counts as 2.
    const Table weighted = WeightedResult({{1, 0, 2.9}, {3, 0, 1}, {2, 1, 3}, {3, 1, 1.5}});
    const Table repeated = Result(RowsOf({{1, 1, 3}, {2, 2, 2, 3}}));
    for (const char* row : {"TotalN", "MannWhitneyU", "WilcoxonW", "StandardError", "ExactSig2Tailed"}) {
        EXPECT_EQ(weighted.Sub("StatisticsResult").Row(row), repeated.Sub("StatisticsResult").Row(row)) << row;
    }
    EXPECT_EQ(weighted.Sub("Group0").Row("N"), "3");
    EXPECT_EQ(weighted.Sub("Group0").SimpleRows("Interval")[0], "2;1");
}

TEST(MannWhitney, WeightBelowOneLeavesTheRecordWithoutACase) {
    const Table test = WeightedResult({{1, 0, 1}, {2, 1, 1}, {9, 1, 0.5}, {-9, 0, 0.5}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "2");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("WilcoxonW"), "2");
    EXPECT_EQ(test.Sub("Group1").SimpleRows("Interval")[1], "2");
}

// The record without a case is not skipped: it extends its group's range down to 1, and the mean of the interval that
// it falls into first, 0 / 0, stays undefined for the neighbour at 1.001.
TEST(MannWhitney, WeightBelowOneStaysARecordOfTheRun) {
    const Table test = WeightedResult({{1, 0, 0.5}, {1.001, 0, 3}, {1000, 0, 4}, {5, 1, 1}});
    EXPECT_EQ(test.Sub("Group0").Row("N"), "7");
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval"), Texts({"3;4", "nan;1000"}));
}

TEST(MannWhitney, ValueOfZeroShowsAsAFinalInterval) {
    const Table test = Result(RowsOf({{-1, 0, 0, 3}, {1, 2}}));
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval"), Texts({"1;1;2", "-1;3;0"}));
    EXPECT_EQ(test.Sub("Group1").SimpleRows("Interval"), Texts({"1;1", "1;2"}));
}

TEST(MannWhitney, MissingValuesCostTheRecord) {
    Rows rows = RowsOf({kFirst, kSecond});
    rows.push_back({harness::kNone, 0});
    rows.push_back({5, harness::kNoCategory});
    EXPECT_EQ(Result(rows).Sub("StatisticsResult").Row("WilcoxonW"), "52");
}

// Counts are shown as signed 32-bit numbers, here 3,000,000,000 - 2^32.
TEST(MannWhitney, TotalWrapsAroundAsACount) {
    const Table test = WeightedResult({{1, 0, 1.5e9}, {2, 1, 1.5e9}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "-1294967296");
}

TEST(MannWhitney, LargeWeightsKeepTheirRankSums) {
    // Twice 1,000,000,000 cases: the ranks of the second group lie above 1e9. TotalN is a 32-bit count.
    const Table test = WeightedResult({{1, 0, 1e9}, {2, 1, 1e9}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "2000000000");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("MannWhitneyU"), "1e+18");
}

// ---- Codes ----

TEST(MannWhitney, NoCaseAtAllAndAnEmptyGroup) {
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 0}, {2, 1, 0.5}})), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 0}, {2, 1, 1}})), Texts({"220711 error"}));
    const Table test = Result(RowsOf({{1, 2}}));
    EXPECT_EQ(groups::FailureOf(test), (groups::Failure{{"220711 error"}, "0", "1"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
}

TEST(MannWhitney, MakesTwoPassesAndCountsThemDown) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    TARNMannWU test(std::move(settings));
    test.SetUnivariateResults(nullptr);
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 220706);
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
    std::vector<int> used;
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{0, 1}));
}

}  // namespace
