// The Moses test. Reference values: spans read off the ranks by hand, and their chances by the sum of the definition
// in whole numbers (Python's math.comb and fractions).

#include "independent/TARNMoses.h"

#include <gtest/gtest.h>

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

constexpr const char* kTest = "IMoses";

Table Result(Rows rows, const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), TwoFields(), std::move(rows), common);
}
Table WeightedResult(Rows rows) {
    return groups::ResultOf(kTest, Entry(), groups::WeightedFields(), std::move(rows));
}

QKSettings Trimming(int outliers) {
    QKSettings entry = Entry();
    entry.AddSetting("userSpecifyNumberOfOutliers", true);
    entry.AddSetting("NumberOfOutliers", outliers);
    return entry;
}
Table Trimmed(int outliers, Rows rows) {
    return groups::ResultOf(kTest, Trimming(outliers), TwoFields(), std::move(rows));
}

/// Observed span, trimmed span, outliers trimmed.
std::vector<std::string> Spans(const Table& test) {
    const Table statistics = test.Sub("StatisticsResult");
    return {statistics.Sub("ObservedControlGroup").Row("TestStatistic"),
            statistics.Sub("TrimmedControlGroup").Row("TestStatistic"), statistics.Row("OutliersTrimmedFromEachEnd")};
}
double ObservedSig(const Table& test) {
    return Number(test.Sub("StatisticsResult").Sub("ObservedControlGroup"), "ExactSig1Tailed");
}
double TrimmedSig(const Table& test) {
    return Number(test.Sub("StatisticsResult").Sub("TrimmedControlGroup"), "ExactSig1Tailed");
}

/// Values equal to their ranks; those from the list are the control group's.
Rows RankRows(int cases, const std::vector<int>& control) {
    Rows rows;
    for (int rank = 1; rank <= cases; ++rank) {
        const bool isControl = std::find(control.begin(), control.end(), rank) != control.end();
        rows.push_back({static_cast<double>(rank), isControl ? 0.0 : 1.0});
    }
    return rows;
}

/// 19 of 32, from 4 to 29, and without one at each end from 5 to 28.
Rows NineteenAmongThirtyTwo() {
    std::vector<int> control{28, 29};
    for (int rank = 4; rank <= 20; ++rank) control.push_back(rank);
    return RankRows(32, control);
}

// ---- Element ----

TEST(Moses, ShowsStatisticsBoxPlotsAndGroupsInTheirOrder) {
    const Table test = Result(NineteenAmongThirtyTwo());
    EXPECT_EQ(test.Attribute("name"), "IMoses");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.ChildNames(),
              Texts({"StructuredTable Condition", "StructuredTable StatisticsResult", "StructuredTable BoxPlotInfo",
                     "StructuredTable Group0", "StructuredTable Group1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_Moses_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.ChildNames(),
              Texts({"Attribute TotalN", "StructuredTable ObservedControlGroup", "StructuredTable TrimmedControlGroup",
                     "Attribute OutliersTrimmedFromEachEnd"}));
    EXPECT_EQ(statistics.Sub("TrimmedControlGroup").ChildNames(),
              Texts({"Attribute TestStatistic", "Attribute ExactSig1Tailed"}));
    EXPECT_EQ(test.Sub("BoxPlotInfo").ChildNames(), Texts({"Attribute GroupFieldIndex", "Attribute GroupCount"}));
    EXPECT_EQ(test.Sub("BoxPlotInfo").Row("GroupFieldIndex"), "1");
    EXPECT_EQ(test.Sub("BoxPlotInfo").Row("GroupCount"), "2");
    EXPECT_EQ(test.Sub("Group1").ChildNames(),
              Texts({"Attribute GroupIndex", "Attribute N", "SimpleTable Box", "SimpleTable Outliers"}));
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "1");
    EXPECT_EQ(test.Sub("Group1").Row("N"), "13");
}

// ---- Spans and significance ----

TEST(Moses, TrimmedSpanDecidesAlone) {
    const Table test = Result(NineteenAmongThirtyTwo());
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "32");
    EXPECT_EQ(Spans(test), Texts({"26", "24", "1"}));
    EXPECT_NEAR(ObservedSig(test), 55.0 / 5394, 1e-12);
    EXPECT_NEAR(TrimmedSig(test), 4763.0 / 67425, 1e-12);
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(Result(NineteenAmongThirtyTwo(), {{"sigLevel", 0.08}}).Attribute("decision"), "reject");
    EXPECT_EQ(Result(NineteenAmongThirtyTwo(), {{"sigLevel", 0.07}}).Attribute("decision"), "retain");
}

TEST(Moses, ObservedSpanTakesNoTrimmingInItsSignificance) {
    // Ranks 1 3 5 of seven: (1 * 5 + 2 * 4 + 3 * 3) / 35. Without one case at each end one case is left.
    const Table test = Result(RankRows(7, {1, 3, 5}));
    EXPECT_EQ(Spans(test), Texts({"5", "1", "1"}));
    EXPECT_NEAR(ObservedSig(test), 22.0 / 35, 1e-14);
    EXPECT_EQ(TrimmedSig(test), 0);
    EXPECT_EQ(test.Attribute("decision"), "reject");
}

TEST(Moses, ExperimentalGroupOnOneSideLeavesASpanOfTheControlGroupsSize) {
    const Table test = Result(RankRows(9, {6, 7, 8, 9}));
    EXPECT_EQ(Spans(test), Texts({"4", "2", "1"}));
    EXPECT_EQ(ObservedSig(test), 0);  // no other case inside: 0 by definition
}

TEST(Moses, ControlGroupIsTheFirstOne) {
    // Ranks 2 5 6 of six against 1 3 4: spans 5 and 4. The smaller category value is the first group.
    EXPECT_EQ(Spans(Result(RankRows(6, {2, 5, 6})))[0], "5");
    EXPECT_EQ(Spans(Result(RankRows(6, {1, 3, 4})))[0], "4");
    harness::Fields swapped;
    swapped.Continuous("x").Numeric("g", {10, 9});
    const Table test = groups::ResultOf(kTest, Entry(), swapped, RankRows(6, {2, 5, 6}));
    EXPECT_EQ(Spans(test)[0], "4");
    EXPECT_EQ(test.Sub("Group0").Row("GroupIndex"), "1");
}

TEST(Moses, FivePerCentAreTrimmedAtLeastOne) {
    const auto outliersOf = [](int control) {
        std::vector<int> ranks;
        for (int rank = 1; rank <= control; ++rank) ranks.push_back(rank);
        return Spans(Result(RankRows(control + 3, ranks)))[2];
    };
    EXPECT_EQ(outliersOf(19), "1");
    EXPECT_EQ(outliersOf(39), "1");
    EXPECT_EQ(outliersOf(40), "2");
    EXPECT_EQ(outliersOf(60), "3");
}

TEST(Moses, GivenNumberIsTrimmedFromEachEnd) {
    const std::vector<int> control{1, 2, 4, 7, 11, 12};
    EXPECT_EQ(Spans(Trimmed(1, RankRows(12, control))), Texts({"12", "10", "1"}));
    const Table test = Trimmed(2, RankRows(12, control));
    EXPECT_EQ(Spans(test), Texts({"12", "4", "2"}));
    EXPECT_FALSE(test.Sub("WarningMessages").Exists());
    // P(4) with m = n = 6, h = 2: the sum over i = 0, 1, 2 of C(i, i) C(11 - i, 6 - i) over 924.
    EXPECT_NEAR(TrimmedSig(test), (462 + 252 + 126) / 924.0, 1e-14);
}

TEST(Moses, NumberThatIsTooLargeIsReducedWithAWarning) {
    const std::vector<int> control{1, 2, 4, 7, 11, 12};
    const Table test = Trimmed(3, RankRows(12, control));
    EXPECT_EQ(MessagesOf(test), Texts({"221117 warning 3 6"}));
    EXPECT_EQ(Spans(test), Texts({"12", "4", "2"}));
    EXPECT_EQ(Spans(Trimmed(2147483647, RankRows(12, control)))[2], "2");
    const Table one = Trimmed(1, RankRows(5, {3}));  // (1 - 2) / 2 is cut to 0
    EXPECT_EQ(MessagesOf(one), Texts({"221117 warning 1 1"}));
    EXPECT_EQ(Spans(one), Texts({"1", "1", "0"}));
}

// ---- Ties and weights ----

TEST(Moses, HalfRankIsCarriedUpward) {
    // Values 1 1 2 3 4: the control group has the ranks 1.5 and 4, a span of 3.5.
    EXPECT_EQ(Spans(Result(RowsOf({{1, 3}, {1, 2, 4}})))[0], "4");
    // 1.5 and 4.5: a span of 4.
    EXPECT_EQ(Spans(Result(RowsOf({{1, 3}, {1, 2, 3}})))[0], "4");
}

TEST(Moses, ControlGroupOfOneValueHasASpanOfOne) {
    const Table test = WeightedResult({{1, 1, 1}, {2, 0, 30}, {3, 1, 1}});
    EXPECT_EQ(Spans(test), Texts({"1", "1", "1"}));
    EXPECT_EQ(ObservedSig(test), 0);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "32");
}

TEST(Moses, HeavyWeightAtAnEndKeepsItsRank) {
    // Control: 1 with weight 3 (ranks 1 to 3, mid-rank 2), 3 and 5; others 2 and 4. Trimming one case leaves rank 2 at
    // the bottom, and at the top the rank of the next entry, 5: a span of 4. Observed from 2 to 7.
    const Table test = WeightedResult({{1, 0, 3}, {2, 1, 1}, {3, 0, 1}, {4, 1, 1}, {5, 0, 1}});
    EXPECT_EQ(Spans(test), Texts({"6", "4", "1"}));
}

TEST(Moses, WeightUsedUpJustSoTakesTheNextRank) {
    // h = 2 of 40 cases: the lowest two records use it up, at the top one of weight 2 does.
    Rows rows{{1, 0, 1}, {2, 0, 1}, {3, 1, 1}, {4, 0, 20}, {5, 0, 16}, {6, 1, 1}, {7, 0, 2}};
    // Ranks: 1, 2, (3), 4..23 = 13.5, 24..39 = 31.5, (40), 41.5. Trimmed from 13.5 to 31.5.
    EXPECT_EQ(Spans(WeightedResult(rows)), Texts({"42", "19", "2"}));
}

TEST(Moses, WeightIsTruncated) {
    EXPECT_EQ(WeightedResult({{1, 0, 2.9}, {2, 1, 1.5}, {3, 0, 1}, {9, 0, 0.5}}).Sub("Group0").Row("N"), "3");
}

TEST(Moses, HugeWeightsEnd) {
    const Table test = WeightedResult({{1, 0, 5e8}, {2, 1, 9e8}, {3, 0, 5e8}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "1900000000");
    // Mid-ranks 250000000.5 and 1650000000.5; 9e8 cases inside of 9e8: t is 1400000001 - 1e9.
    EXPECT_EQ(Spans(test)[0], "1400000001");
    EXPECT_EQ(ObservedSig(test), 0);
}

// ---- Groups, boxes, records ----

TEST(Moses, OutliersAreListedWithTheirCases) {
    harness::Fields fields = TwoFields();
    fields.Continuous("id");
    Rows rows;
    for (const double value : {1, 2, 3, 4, 5, 6, 7, 8, 20}) rows.push_back({value, 0, 100 + value});
    for (const double value : {-9, 11, 11, 12, 12, 13}) rows.push_back({value, 1, 200 + value});
    rows.push_back({harness::kNone, 0, 7});
    QKSettings settings;
    settings.AddSetting("caseIDVariableName", "id");
    settings.AddSetting(kTest, Entry());
    const Table test = harness::Run(settings, fields, rows).document.Test(0);
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Box"), Texts({"1;3;5;7;8"}));
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Outliers"), Texts({"20", "120"}));
    EXPECT_EQ(test.Sub("Group1").SimpleRows("Outliers"), Texts({"-9", "191"}));
    EXPECT_EQ(Result(RowsOf({{1, 2, 3, 4, 5, 6, 7, 8, 20}, {1}})).Sub("Group0").SimpleRows("Outliers"),
              Texts({"20", ""}));
}

TEST(Moses, CategoriesOfNeitherGroupTakeNoPart) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2, 3});
    const Table test =
        groups::ResultOf(kTest, groups::Listed<double>({3}, {1}), fields, RowsOf({{2, 4}, {0, 3.5, 9, -7}, {1, 3, 5}}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_I_Moses_2");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "5");
    EXPECT_EQ(Spans(test)[0], "5");
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Box")[0], "1;2;3;4;5");  // hinges of three values: 1.5 and 2.5
}

TEST(Moses, NoCaseAtAllAndAnEmptyGroup) {
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 0}, {2, 1, 0.5}})), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 3}, {2, 1, 0.5}})), Texts({"221111 error"}));
    const Table test = Result(RowsOf({{1, 2}}));
    EXPECT_EQ(groups::FailureOf(test), (groups::Failure{{"221111 error"}, "0", "1"}));
    EXPECT_EQ(test.Attribute("decision"), "unknown");
}

TEST(Moses, NumberOfOutliersMustBeThereAndPositive) {
    QKSettings absent = Entry();
    absent.AddSetting("userSpecifyNumberOfOutliers", true);
    const Rows rows = RowsOf({{1, 2, 3, 4}, {2}});
    EXPECT_EQ(MessagesOf(groups::ResultOf(kTest, absent, TwoFields(), rows)), Texts({"221101 error"}));
    EXPECT_EQ(MessagesOf(Trimmed(0, rows)), Texts({"221116 error"}));
    EXPECT_EQ(MessagesOf(Trimmed(-3, rows)), Texts({"221116 error"}));
    EXPECT_EQ(Spans(Trimmed(1, rows))[2], "1");
    QKSettings notAsked = Entry();
    notAsked.AddSetting("NumberOfOutliers", 0);
    EXPECT_EQ(Spans(groups::ResultOf(kTest, notAsked, TwoFields(), rows))[2], "1");
}

TEST(Moses, WithoutDescriptivesThereAreNoGroups) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    TARNMoses test(std::move(settings));
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 221106);
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
}

}  // namespace
