// The median test of several groups: fields, codes, the table and its significances, the box plots. Reference values:
// scipy 1.17 (median_test with ties="below", correction=False; fisher_exact; chi2_contingency), the call beside them,
// and counts by hand.

#include "independent/TARNKSMedian.h"

#include <gtest/gtest.h>

#include <memory>
#include <sstream>

#include "tests/independent/GroupRun.h"

namespace {

using groups::Common;
using groups::Entry;
using groups::Failure;
using groups::FailureOf;
using groups::Number;
using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using groups::TwoFields;
using harness::MessagesOf;
using harness::Table;

constexpr const char* kTest = "IMedian";

harness::Fields Groups(std::vector<double> categories) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", std::move(categories));
    return fields;
}
harness::Fields WeightedGroups(std::vector<double> categories) {
    harness::Fields fields = Groups(std::move(categories));
    fields.Weight("w");
    return fields;
}
QKSettings Given(double median, const std::string& comparison = "none") {
    QKSettings entry = Entry();
    entry.AddSetting("userSpecifyMedian", true);
    entry.AddSetting("median", median);
    entry.AddSetting("typeOfMultipleComparison", comparison);
    return entry;
}
QKSettings Comparing(const std::string& comparison) {
    QKSettings entry = Entry();
    entry.AddSetting("typeOfMultipleComparison", comparison);
    return entry;
}

Table ResultOfTwo(Rows rows, const Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), TwoFields(), std::move(rows), common);
}
Table ResultOfThree(Rows rows, const QKSettings& entry = Entry()) {
    return groups::ResultOf(kTest, entry, Groups({1, 2, 3}), std::move(rows));
}

/// Two groups with so many of the values 1, 2, ... not above the common median, and so many above it.
Rows TwoHalves(int notAbove1, int above1, int notAbove2, int above2) {
    Rows rows;
    double value = 0;
    const auto add = [&](int count, double group) {
        for (int i = 0; i < count; ++i) rows.push_back({++value, group});
    };
    add(notAbove1, 0);
    add(notAbove2, 1);
    add(above1, 0);
    add(above2, 1);
    return rows;
}

const std::vector<double> kLow{1.1, 2.3, 2.9, 3.4, 4.1, 4.8, 5.2, 6.0};
const std::vector<double> kMiddle{3.1, 4.4, 5.5, 5.9, 6.3, 7.0, 7.7, 8.1, 9.2};
const std::vector<double> kHigh{6.6, 7.2, 8.4, 8.8, 9.5, 10.1, 10.9};

// ---- Element ----

TEST(KSMedian, ShowsTablesInTheirOrder) {
    const Table test = ResultOfThree(RowsOf({kLow, kMiddle, kHigh}));
    EXPECT_EQ(test.Attribute("name"), "IMedian");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable StatisticsResult", "StructuredTable BoxPlotInfo"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_Median_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              Texts({"Attribute TotalN", "Attribute Median", "Attribute TestStatistic", "Attribute DegreeOfFreedom",
                     "Attribute AsymptoticSig2Tailed"}));
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.ChildNames(),
              Texts({"Attribute GroupFieldIndex", "Attribute GroupCount", "Attribute GrandMedian",
                     "StructuredTable Group0", "StructuredTable Group1", "StructuredTable Group2"}));
    EXPECT_EQ(boxes.Row("GroupFieldIndex"), "1");
    EXPECT_EQ(boxes.Row("GroupCount"), "3");
    EXPECT_EQ(boxes.Sub("Group2").ChildNames(),
              Texts({"Attribute GroupIndex", "Attribute GTMedian", "Attribute STMedian", "SimpleTable Box",
                     "SimpleTable Outliers"}));
}

TEST(KSMedian, ThreeGroupsAgreeWithSciPy) {
    const Table test = ResultOfThree(RowsOf({kLow, kMiddle, kHigh}));
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "24");
    EXPECT_EQ(statistics.Row("Median"), "6.15");
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 15.11111111111111, 1e-13);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "2");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.0005231953970456779, 1e-15);
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GrandMedian"), "6.15");
    EXPECT_EQ(boxes.Sub("Group1").Row("GroupIndex"), "1");
    EXPECT_EQ(boxes.Sub("Group1").Row("GTMedian"), "5");
    EXPECT_EQ(boxes.Sub("Group1").Row("STMedian"), "4");
    // 1.1 .. 6.0 without outliers; hinges of 8 values at the positions 2.5, 4.5 and 6.5.
    EXPECT_EQ(boxes.Sub("Group0").SimpleRows("Box"), Texts({"1.1;2.6;3.75;5;6"}));
}

TEST(KSMedian, OrderOfRecordsDoesNotMatter) {
    const Rows rows = RowsOf({kLow, kMiddle, kHigh});
    const Table backwards = ResultOfThree(Rows(rows.rbegin(), rows.rend()));
    EXPECT_NEAR(Number(backwards.Sub("StatisticsResult"), "TestStatistic"), 15.11111111111111, 1e-13);
    EXPECT_EQ(backwards.Sub("StatisticsResult").Row("Median"), "6.15");
}

// ---- Two groups ----

TEST(KSMedian, TwoGroupsOfThirtyRecordsInAllAreDecidedByFishersTest) {
    const Table test = ResultOfTwo(TwoHalves(10, 4, 5, 11));
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "30");
    EXPECT_EQ(statistics.ChildNames(),
              Texts({"Attribute TotalN", "Attribute Median", "Attribute TestStatistic", "Attribute DegreeOfFreedom",
                     "Attribute AsymptoticSig2Tailed", "Attribute FisherExactSig"}));
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 4.821428571428571, 1e-13);  // chi2_contingency, not corrected
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.028108040147151875, 1e-14);
    EXPECT_NEAR(Number(statistics, "FisherExactSig"), 0.06559547883437022, 1e-14);  // fisher_exact
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(ResultOfTwo(TwoHalves(10, 4, 5, 11), {{"sigLevel", 0.0656}}).Attribute("decision"), "reject");
}

TEST(KSMedian, TwoGroupsOfThirtyOneRecordsInAllAreDecidedByTheCorrectedChiSquare) {
    const Table test = ResultOfTwo(TwoHalves(5, 10, 11, 5));
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "31");
    EXPECT_EQ(statistics.Row("Median"), "16");
    EXPECT_FALSE(statistics.HasRow("FisherExactSig"));
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 3.888454861111112, 1e-13);  // chi2_contingency, correction=False
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.04861913422927604, 1e-14);
    const Table corrected = statistics.Sub("YatesContinuityCorrection");
    EXPECT_EQ(corrected.ChildNames(),
              Texts({"Attribute ChiSquare", "Attribute DegreeOfFreedom", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_NEAR(Number(corrected, "ChiSquare"), 2.5996137152777785, 1e-13);  // chi2_contingency, correction=True
    EXPECT_EQ(corrected.Row("DegreeOfFreedom"), "1");
    EXPECT_NEAR(Number(corrected, "AsymptoticSig2Tailed"), 0.10688976489998428, 1e-14);
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(ResultOfTwo(TwoHalves(5, 10, 11, 5), {{"sigLevel", 0.107}}).Attribute("decision"), "reject");
}

TEST(KSMedian, SignificanceThatEqualsTheLevelIsRetained) {
    const Rows same = RowsOf({{1, 2, 3, 4}, {1, 2, 3, 4}});  // Fisher's significance is 1
    EXPECT_EQ(ResultOfTwo(same, {{"sigLevel", 1.0}}).Attribute("decision"), "retain");
}

TEST(KSMedian, TwoOfThreeCategoriesWithRecordsAreTwoGroups) {
    const Table test = ResultOfThree(RowsOf({{1, 2, 3}, {}, {4, 5, 6}}));
    EXPECT_EQ(test.Sub("StatisticsResult").Row("DegreeOfFreedom"), "1");
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "FisherExactSig"), 0.1, 1e-14);  // 2 / C(6, 3)
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GroupCount"), "2");
    EXPECT_EQ(boxes.Sub("Group1").Row("GroupIndex"), "2");
    EXPECT_EQ(boxes.Sub("Group1").Row("GTMedian"), "3");
}

// ---- Median ----

TEST(KSMedian, ValueEqualToTheMedianCountsAsNotAbove) {
    const Table boxes = ResultOfTwo(RowsOf({{1, 2, 3, 3}, {3, 3, 4, 5}})).Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GrandMedian"), "3");
    EXPECT_EQ(boxes.Sub("Group0").Row("STMedian"), "4");
    EXPECT_EQ(boxes.Sub("Group0").Row("GTMedian"), "0");
    EXPECT_EQ(boxes.Sub("Group1").Row("STMedian"), "2");
    EXPECT_EQ(boxes.Sub("Group1").Row("GTMedian"), "2");
}

TEST(KSMedian, AllRecordsTiedAtTheMedianLeaveNoneAboveAndAreAnError) {
    const Table test = ResultOfThree(RowsOf({{4, 4, 4}, {4, 4}, {4}}));
    EXPECT_EQ(FailureOf(test), (Failure{{"222325 error"}, "0", "1"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
    // More than half at the largest value.
    EXPECT_EQ(MessagesOf(ResultOfThree(RowsOf({{1, 2}, {5, 5}, {5, 5, 5}}))), Texts({"222325 error"}));
}

TEST(KSMedian, GivenMedianBelowAllValuesIsAnError) {
    EXPECT_EQ(FailureOf(ResultOfThree(RowsOf({{1, 2}, {3}, {4}}), Given(0.5))), (Failure{{"222324 error"}, "0", "1"}));
    EXPECT_EQ(MessagesOf(ResultOfThree(RowsOf({{1, 2}, {3}, {4}}), Given(4))), Texts({"222325 error"}));
}

TEST(KSMedian, GivenMedianTakesThePlaceOfTheOneOfTheData) {
    const Table test = ResultOfThree(RowsOf({kLow, kMiddle, kHigh}), Given(7.0));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_I_Median_2");
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("Median"), "7");
    // chi2_contingency([[8, 6, 1], [0, 3, 6]], correction=False); the value 7.0 itself is not above.
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 11.80952380952381, 1e-13);
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.002726430853663862, 1e-15);
    EXPECT_EQ(test.Sub("BoxPlotInfo").Row("GrandMedian"), "7");
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group1").Row("GTMedian"), "3");
    // The box plots are those of the data all the same.
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").SimpleRows("Box"), Texts({"1.1;2.6;3.75;5;6"}));
}

TEST(KSMedian, MedianIsNotReadUnlessItIsGiven) {
    QKSettings entry = Entry();
    entry.AddSetting("median", 7.0);
    const Table test = ResultOfThree(RowsOf({kLow, kMiddle, kHigh}), entry);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("Median"), "6.15");
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_Median_2");
}

// ---- Weights and missing values ----

TEST(KSMedian, WeightsCountAsRepeatedRecords) {
    const Table weighted = groups::ResultOf(kTest, Entry(), WeightedGroups({1, 2}),
                                            {{1, 0, 2.9}, {3, 0, 1}, {2, 1, 1}, {4, 1, 3.2}, {5, 0, 1}});
    const Table repeated = ResultOfTwo(RowsOf({{1, 1, 3, 5}, {2, 4, 4, 4}}));
    for (const char* row : {"TotalN", "Median", "TestStatistic", "FisherExactSig"}) {
        EXPECT_EQ(weighted.Sub("StatisticsResult").Row(row), repeated.Sub("StatisticsResult").Row(row)) << row;
    }
    EXPECT_EQ(repeated.Sub("StatisticsResult").Row("Median"), "3.5");
    EXPECT_EQ(weighted.Sub("BoxPlotInfo").Sub("Group0").Row("STMedian"), "3");
}

TEST(KSMedian, WeightOfNineTenthsPassesThroughTheQuantilesButCountsZero) {
    const Table test =
        groups::ResultOf(kTest, Entry(), WeightedGroups({1, 2}), {{1, 0, 1}, {5, 1, 0.9}, {9, 1, 1}, {20, 0, 0.9}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "2");
    // Between 9 and the value passed last before it, 5; the middle of the two cases would be 5.
    EXPECT_EQ(test.Sub("StatisticsResult").Row("Median"), "7");
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Sub("Group0").Row("STMedian"), "1");
    EXPECT_EQ(boxes.Sub("Group0").Row("GTMedian"), "0");
    EXPECT_EQ(boxes.Sub("Group1").Row("STMedian"), "0");
    EXPECT_EQ(boxes.Sub("Group1").Row("GTMedian"), "1");
}

TEST(KSMedian, GroupWithoutWeightTakesNoPart) {
    const Rows rows{{1, 0, 1}, {2, 0, 1}, {100, 1, 0.9}, {3, 2, 1}, {4, 2, 1}};
    const Table test = groups::ResultOf(kTest, Entry(), WeightedGroups({1, 2, 3}), rows);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("DegreeOfFreedom"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("Median"), "2.5");
    EXPECT_EQ(test.Sub("BoxPlotInfo").Row("GroupCount"), "2");
}

TEST(KSMedian, MissingValuesCostTheRecord) {
    Rows rows = RowsOf({kLow, kMiddle, kHigh});
    rows.push_back({harness::kNone, 0});
    rows.push_back({0.1, harness::kNoCategory});
    EXPECT_EQ(ResultOfThree(rows).Sub("StatisticsResult").Row("TotalN"), "24");
    EXPECT_EQ(ResultOfThree(rows).Sub("StatisticsResult").Row("Median"), "6.15");
}

// ---- Warnings ----

TEST(KSMedian, SmallExpectedValuesAreWarnedOf) {
    // Sizes 8, 9 and 7 in halves: all cells expect less than 5, none less than 1.
    EXPECT_EQ(MessagesOf(ResultOfThree(RowsOf({kLow, kMiddle, kHigh}))), Texts({"222327 warning"}));
    // A group of one case expects half a case.
    EXPECT_EQ(MessagesOf(ResultOfThree(RowsOf({{1}, {2, 3}, {4, 5, 6}}))), Texts({"222326 warning", "222327 warning"}));
    // 10 and 10 in halves: 5 is not below 5.
    EXPECT_EQ(MessagesOf(ResultOfTwo(TwoHalves(5, 5, 5, 5))), Texts({}));
}

// ---- Codes ----

TEST(KSMedian, PlanFailsAtTheFirstMistakeWithItsOwnParameter) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Other("o");
    const Rows rows{{1, 0, 0}, {2, 1, 0}};
    // A test that was planned in error reads none of its settings, so that its condition shows no field.
    const auto fails = [&](const QKSettings& entry) {
        const Failure failure = FailureOf(groups::ResultOf(kTest, entry, fields, rows));
        EXPECT_EQ(failure.testField + " " + failure.groupField, "-1 -1");
        return failure.messages;
    };
    QKSettings onlyGroup;
    onlyGroup.AddSetting("groupVariableName", "g");
    EXPECT_EQ(fails(onlyGroup), Texts({"222315 error"}));
    EXPECT_EQ(fails(QKSettings()), Texts({"222315 error"}));
    QKSettings onlyTest;
    onlyTest.AddSetting("variableName", "x");
    EXPECT_EQ(fails(onlyTest), Texts({"222316 error"}));
    EXPECT_EQ(fails(Entry("nowhere", "gone")), Texts({"222303 error nowhere"}));
    EXPECT_EQ(fails(Entry("x", "gone")), Texts({"222303 error gone"}));
    // Of the two wrong kinds only that of the group names its field. Documents depend on it.
    EXPECT_EQ(fails(Entry("g", "g")), Texts({"222318 error"}));
    EXPECT_EQ(fails(Entry("o", "gone")), Texts({"222318 error"}));
    EXPECT_EQ(fails(Entry("x", "x")), Texts({"222317 error 0"}));
    EXPECT_EQ(fails(Entry("x", "o")), Texts({"222317 error 2"}));
    QKSettings noMedian = Entry();
    noMedian.AddSetting("userSpecifyMedian", true);
    EXPECT_EQ(fails(noMedian), Texts({"222322 error"}));
    QKSettings noMedianOfUnknown = Entry("nowhere", "g");
    noMedianOfUnknown.AddSetting("userSpecifyMedian", true);
    EXPECT_EQ(fails(noMedianOfUnknown), Texts({"222303 error nowhere"}));
}

TEST(KSMedian, AsksForTheFrequenciesOfTheOriginEvenIfItFails) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Numeric("c", {1, 2});
    for (const char* group : {"g", "gone"}) {
        QKSettings entry = Entry("x", group);
        const auto hasOrigin = [&] {
            return groups::RunEntry(kTest, entry, fields, {{1, 0, 0}, {2, 1, 1}}).document.FieldInfo(2).Exists();
        };
        EXPECT_FALSE(hasOrigin()) << group;
        entry.AddSetting("originVariableName", "c");
        EXPECT_TRUE(hasOrigin()) << group;
    }
}

TEST(KSMedian, GroupsMayBeTexts) {
    harness::Fields fields;
    fields.Continuous("x").Text("g", {"b", "a"});
    const Table test = groups::ResultOf(kTest, Entry(), fields, RowsOf({{1, 2, 3}, {4, 5, 6}}));
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").Row("GroupIndex"), "0");
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").Row("STMedian"), "3");
}

TEST(KSMedian, FieldOfOneCategoryNoCaseAtAllAndOneGroupWithCases) {
    EXPECT_EQ(FailureOf(groups::ResultOf(kTest, Entry(), Groups({1}), RowsOf({{1, 2}}))),
              (Failure{{"222320 error"}, "0", "1"}));
    EXPECT_EQ(FailureOf(groups::ResultOf(kTest, Entry(), WeightedGroups({1, 2}), {{1, 0, 0}, {2, 1, 0.9}})),
              (Failure{{"220003 error"}, "0", "1"}));
    EXPECT_EQ(FailureOf(ResultOfTwo(RowsOf({{1, 2, 3}}))), (Failure{{"222319 error"}, "0", "1"}));
}

TEST(KSMedian, ComparisonIsRefusedUnlessThreeGroupsDifferSignificantly) {
    const auto messages = [](const Rows& rows, const QKSettings& entry) {
        const Table test = ResultOfThree(rows, entry);
        EXPECT_FALSE(test.Sub("PairwiseResult").Exists());
        EXPECT_FALSE(test.Sub("StepwiseResult").Exists());
        return MessagesOf(test);
    };
    const Rows two = TwoHalves(10, 0, 0, 10);
    EXPECT_EQ(messages(two, Comparing("pairWise")), Texts({"222337 warning"}));
    EXPECT_EQ(messages(two, Comparing("stepWise")), Texts({"222335 warning"}));
    EXPECT_EQ(messages(two, Comparing("none")), Texts({}));
    EXPECT_EQ(messages(two, Comparing("both")), Texts({}));  // an unknown text asks for none
    std::vector<double> ten;
    for (int i = 0; i < 10; ++i) ten.push_back(i);
    const Rows alike = RowsOf({ten, ten, ten});
    EXPECT_EQ(messages(alike, Comparing("pairWise")), Texts({"222338 warning"}));
    EXPECT_EQ(messages(alike, Comparing("stepWise")), Texts({"222336 warning"}));
    EXPECT_EQ(messages(TwoHalves(5, 5, 5, 5), Comparing("pairWise")), Texts({"222338 warning"}));
}

TEST(KSMedian, TwoGroupsThatCannotBeTestedAreToldThatTheyAreTooFewAsWell) {
    const Rows tied = RowsOf({{4, 4, 4}, {4, 4}});
    const auto messages = [&](const QKSettings& entry) { return MessagesOf(ResultOfThree(tied, entry)); };
    EXPECT_EQ(messages(Comparing("pairWise")), Texts({"222325 error", "222337 warning"}));
    EXPECT_EQ(messages(Given(1, "stepWise")), Texts({"222324 error", "222335 warning"}));
    EXPECT_EQ(messages(Entry()), Texts({"222325 error"}));
    EXPECT_EQ(MessagesOf(ResultOfThree(RowsOf({{4}, {4}, {4}}), Comparing("pairWise"))), Texts({"222325 error"}));
}

TEST(KSMedian, NeedsDescriptivesAndIsRetainedBeforeItHasRun) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 3);
    settings->AddSetting("groupVariableIndex", 1);
    TARNKSMedian test(std::move(settings));
    const std::unique_ptr<QKXML::XMLElement> untouched(test.MakeResultElement());
    std::ostringstream out;
    QKXML::WriteTree(out, nullptr, untouched.get(), 0);
    EXPECT_NE(out.str().find("decision=\"retain\""), std::string::npos) << out.str();

    test.SetUnivariateResults(nullptr);
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 222306);
    EXPECT_FALSE(test.NeedsAnotherPass());
    EXPECT_EQ(test.GetPassKind(), 0);
    std::vector<int> used;
    test.GetUsedVariables(used);
    EXPECT_EQ(used, (std::vector<int>{3, 1}));
}

}  // namespace
