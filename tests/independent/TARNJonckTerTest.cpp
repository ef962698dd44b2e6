// The Jonckheere-Terpstra test. Reference values: Hollander and Wolfe (1973), Nonparametric Statistical Methods,
// example 6.2 (J = 79); J counted and its variance formed in Python's fractions, significances by scipy 1.17
// (scipy.stats.norm.sf); small cases by hand.

#include "independent/TARNJonckTer.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/independent/SeveralGroupsRun.h"

namespace {

using groups::Entry;
using groups::Failure;
using groups::FailureOf;
using groups::Number;
using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using harness::Table;
using several::Categories;
using several::Comparing;
using several::MessagesIn;
using several::Samples;

constexpr const char* kTest = "IJonckheereTerpstra";

const Samples kTextbook{{40, 35, 38, 43, 44, 41}, {38, 40, 47, 44, 40, 42}, {48, 40, 45, 43, 46, 44}};

Table Result(const Samples& samples, const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), Categories(samples.size()), RowsOf(samples), common);
}
Table WeightedResult(std::size_t categories, Rows rows) {
    harness::Fields fields = Categories(categories);
    fields.Weight("w");
    return groups::ResultOf(kTest, Entry(), fields, std::move(rows));
}

std::vector<std::string> Statistics(const Table& test) {
    std::vector<std::string> values;
    for (const char* row :
         {"TotalN", "TestStatistic", "StandardError", "StandardTestStatistic", "AsymptoticSig2Tailed"}) {
        values.push_back(test.Sub("StatisticsResult").Row(row));
    }
    return values;
}

// ---- Element ----

TEST(JonckheereTerpstra, ShowsItsTablesInTheirOrder) {
    const Table test = Result(kTextbook);
    EXPECT_EQ(test.Attribute("name"), "IJonckheereTerpstra");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.ChildNames(),
              Texts({"StructuredTable Condition", "StructuredTable StatisticsResult", "StructuredTable BoxPlotInfo"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_JonckheereTerpstra_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    // There is no exact significance.
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute StandardError",
                     "Attribute StandardTestStatistic", "Attribute AsymptoticSig2Tailed"}));
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.ChildNames(), Texts({"Attribute GroupFieldIndex", "Attribute GroupCount", "StructuredTable Group0",
                                         "StructuredTable Group1", "StructuredTable Group2"}));
    EXPECT_EQ(boxes.Sub("Group1").ChildNames(),
              Texts({"Attribute GroupIndex", "SimpleTable Box", "SimpleTable Outliers"}));
}

TEST(JonckheereTerpstra, TextbookExampleWithTies) {
    const Table test = Result(kTextbook);
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "18");
    EXPECT_EQ(statistics.Row("TestStatistic"), "79");
    EXPECT_NEAR(Number(statistics, "StandardError"), std::sqrt(20439.0 / 136), 1e-13);
    EXPECT_NEAR(Number(statistics, "StandardTestStatistic"), 2.0392930588447173, 1e-13);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.041420787986094464, 1e-14);
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(Result(kTextbook, {{"sigLevel", 0.04}}).Attribute("decision"), "retain");
    // Tukey's hinges of 38 40 40 42 44 47.
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group1").SimpleRows("Box"), Texts({"38;40;41;44;47"}));
}

TEST(JonckheereTerpstra, FallingValuesAreFoundAsWell) {
    const Table test = Result({kTextbook[2], kTextbook[1], kTextbook[0]});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TestStatistic"), "29");  // 108 pairs less 79
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "StandardTestStatistic"), -2.0392930588447173, 1e-13);
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "AsymptoticSig2Tailed"), 0.041420787986094464, 1e-14);
    EXPECT_EQ(test.Attribute("decision"), "reject");
}

TEST(JonckheereTerpstra, OrderOfTheRecordsDoesNotMatter) {
    Rows rows = RowsOf(kTextbook);
    std::reverse(rows.begin(), rows.end());
    EXPECT_EQ(Statistics(groups::ResultOf(kTest, Entry(), Categories(3), rows)), Statistics(Result(kTextbook)));
}

TEST(JonckheereTerpstra, MissingValuesCostTheRecord) {
    Rows rows = RowsOf(kTextbook);
    rows.push_back({harness::kNone, 0});
    rows.push_back({5, harness::kNoCategory});
    EXPECT_EQ(Statistics(groups::ResultOf(kTest, Entry(), Categories(3), rows)), Statistics(Result(kTextbook)));
}

// The order of the hypotheses is one of the comparisons; the overall test looks both ways.
TEST(JonckheereTerpstra, OrderOfTheHypothesesChangesNothingOverall) {
    for (const char* order : {"orderSmallestToLargest", "orderLargestToSmallest", "none"}) {
        QKSettings entry = Entry();
        entry.AddSetting("orderOfHypotheses", order);
        const Table test = groups::ResultOf(kTest, entry, Categories(3), RowsOf(kTextbook));
        EXPECT_EQ(Statistics(test), Statistics(Result(kTextbook))) << order;
        EXPECT_EQ(test.Attribute("decision"), "reject");
    }
}

// ---- Groups ----

TEST(JonckheereTerpstra, BoxesAreCountedByTheirPlacesAndNamedByTheirCategories) {
    const Table test = Result({{}, kTextbook[0], {}, kTextbook[1], kTextbook[2]});
    EXPECT_EQ(Statistics(test), Statistics(Result(kTextbook)));
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GroupFieldIndex"), "1");
    EXPECT_EQ(boxes.Row("GroupCount"), "3");
    EXPECT_EQ(boxes.Sub("Group0").Row("GroupIndex"), "1");
    EXPECT_EQ(boxes.Sub("Group1").Row("GroupIndex"), "3");
    EXPECT_EQ(boxes.Sub("Group2").Row("GroupIndex"), "4");
    EXPECT_FALSE(boxes.Sub("Group3").Exists());
}

TEST(JonckheereTerpstra, SingleNonEmptyGroupOfThreeCases) {
    const Table test = Result({{}, {1, 2, 3}, {}});
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(Statistics(test), Texts({"3", "0", "0", "0", "1"}));
    EXPECT_EQ(test.Sub("BoxPlotInfo").Row("GroupCount"), "1");
    EXPECT_EQ(Statistics(Result({{}, {1, 2, 2, 5}})), Texts({"4", "0", "0", "0", "1"}));
}

TEST(JonckheereTerpstra, SingleNonEmptyGroupOfFewerCases) {
    EXPECT_EQ(Statistics(Result({{7}, {}})), Texts({"1", "0", "0", "0", "1"}));
    EXPECT_EQ(Statistics(Result({{}, {7, 8}, {}})), Texts({"2", "0", "0", "0", "1"}));
}

TEST(JonckheereTerpstra, OneRecordInEachOfTwoGroups) {
    // J = 1, mean 1/2, variance (8 - 2) / 12 * 1 / 2 = 1/4.
    std::vector<std::string> statistics = Statistics(Result({{1}, {2}}));
    EXPECT_NEAR(std::strtod(statistics.back().c_str(), nullptr), several::TwoSided(1), 1e-14);
    statistics.pop_back();
    EXPECT_EQ(statistics, Texts({"2", "1", "0.5", "1"}));
    EXPECT_EQ(Statistics(Result({{2}, {2}})), Texts({"2", "0.5", "0", "0", "1"}));
}

TEST(JonckheereTerpstra, AllValuesEqual) {
    const Table test = Result({{4, 4}, {4}, {4, 4, 4}});
    EXPECT_EQ(Statistics(test), Texts({"6", "5.5", "0", "0", "1"}));  // halves of 2 + 6 + 3 pairs
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

TEST(JonckheereTerpstra, SignificanceExactlyAtTheLevelIsNone) {
    EXPECT_EQ(Result({{4, 4}, {4}}, {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result({{4, 4}, {4}}, {{"sigLevel", 1.0000001}}).Attribute("decision"), "reject");
}

// ---- Weights ----

TEST(JonckheereTerpstra, FractionOfAWeightIsLost) {
    Rows rows = RowsOf(kTextbook);
    for (std::vector<double>& row : rows) row.push_back(1.9);
    EXPECT_EQ(Statistics(WeightedResult(3, rows)), Statistics(Result(kTextbook)));
}

TEST(JonckheereTerpstra, WeightsCountAsRepeatedRecordsAndBelowOneAsNone) {
    const Table weighted = WeightedResult(
        3, {{1, 0, 1}, {2, 0, 2.5}, {2, 1, 1}, {3, 1, 1}, {4, 1, 1}, {3, 2, 1}, {4, 2, 1}, {2, 2, 0.9}, {-8, 1, 0}});
    EXPECT_EQ(Statistics(weighted), Statistics(Result({{1, 2, 2}, {2, 3, 4}, {3, 4}})));
    EXPECT_EQ(weighted.Sub("StatisticsResult").Row("TestStatistic"), "18");
    EXPECT_EQ(WeightedResult(3, {{1, 0, 1}, {2, 1, 1}, {3, 2, 0.9}}).Sub("BoxPlotInfo").Row("GroupCount"), "2");
}

// ---- Codes ----

TEST(JonckheereTerpstra, NoGroupHasACase) {
    const Table test = WeightedResult(2, {{1, 0, 0}, {2, 1, 0.5}});
    EXPECT_EQ(FailureOf(test), (Failure{{"220003 error"}, "0", "1"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
}

TEST(JonckheereTerpstra, FieldOfOneCategory) {
    EXPECT_EQ(FailureOf(Result({{1, 2, 3}})), (Failure{{"222220 error"}, "0", "1"}));
}

class JonckheereTerpstraPlan : public testing::Test {
 protected:
    static harness::Fields Fields() {
        harness::Fields fields;
        fields.Continuous("x").Numeric("one", {1}).Text("g", {"a", "b"}).Other("other");
        return fields;
    }
    static Failure Fails(const QKSettings& entry) {
        return FailureOf(groups::ResultOf(kTest, entry, Fields(), {{1, 0, 0, 0}, {2, 0, 1, 0}}));
    }
    /// No field is read under a failure.
    static Failure With(const std::string& message) { return {{message}, "-1", "-1"}; }
};

TEST_F(JonckheereTerpstraPlan, FieldThatIsAbsent) {
    QKSettings onlyGroup;
    onlyGroup.AddSetting("groupVariableName", "g");
    EXPECT_EQ(Fails(onlyGroup), With("222215 error"));
    QKSettings onlyTest;
    onlyTest.AddSetting("variableName", "x");
    EXPECT_EQ(Fails(onlyTest), With("222216 error"));
}

TEST_F(JonckheereTerpstraPlan, FieldThatIsUnknownOrOfTheWrongKind) {
    EXPECT_EQ(Fails(Entry("nowhere", "g")), With("222203 error nowhere"));
    EXPECT_EQ(Fails(Entry("x", "gone")), With("222203 error gone"));
    EXPECT_EQ(Fails(Entry("g", "g")), With("222218 error 2"));
    EXPECT_EQ(Fails(Entry("other", "g")), With("222218 error 3"));
    EXPECT_EQ(Fails(Entry("x", "x")), With("222217 error 0"));
    EXPECT_EQ(Fails(Entry("x", "other")), With("222217 error 3"));
}

TEST_F(JonckheereTerpstraPlan, FirstFailureStands) {
    EXPECT_EQ(Fails(Entry("nowhere", "gone")), With("222203 error nowhere"));
    EXPECT_EQ(Fails(Entry("g", "x")), With("222218 error 2"));
    EXPECT_EQ(Fails(QKSettings()), With("222215 error"));
}

TEST_F(JonckheereTerpstraPlan, OriginHasItsFrequenciesShownUnderAFailureToo) {
    for (const bool failed : {false, true}) {
        QKSettings entry = Entry(failed ? "nowhere" : "x");
        entry.AddSetting("originVariableName", "one");
        const harness::Outcome outcome = groups::RunEntry(kTest, entry, Fields(), {{1, 0, 0, 0}, {2, 0, 1, 0}});
        EXPECT_TRUE(outcome.document.FieldInfo(1).Exists()) << failed;
        EXPECT_EQ(outcome.document.FieldInfo(2).Exists(), !failed);
    }
}

}  // namespace
