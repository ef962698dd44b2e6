// The Kruskal-Wallis test. Reference values: scipy 1.17 (scipy.stats.kruskal for H and its significance, of all groups
// and of the groups of a subset); mean ranks, the pairs of Dunn (1964) and the walks of the subsets by hand.

#include "independent/TARNKruskalWOneWay.h"

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

constexpr const char* kTest = "IKruskalWallis";

const Samples kTied{{2.1, 3.4, 3.4, 5.0, 7.7}, {1.0, 2.1, 3.4, 4.2}, {6.1, 7.7, 7.7, 8.8, 9.0, 9.9}, {5.0, 5.0, 6.1}};
/// Groups that lie apart.
const Samples kApart{{1, 2, 3}, {4, 5, 6}, {7, 8, 9}};

Table Result(const Samples& samples, const std::string& comparison = "none", const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Comparing(comparison), Categories(samples.size()), RowsOf(samples), common);
}
Table WeightedResult(std::size_t categories, Rows rows, const std::string& comparison = "none") {
    harness::Fields fields = Categories(categories);
    fields.Weight("w");
    return groups::ResultOf(kTest, Comparing(comparison), fields, std::move(rows));
}

// ---- Element ----

TEST(KruskalWallis, ShowsItsTablesInTheirOrder) {
    const Table test = Result(kTied);
    EXPECT_EQ(test.Attribute("name"), "IKruskalWallis");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable WarningMessages",
                                        "StructuredTable StatisticsResult", "StructuredTable BoxPlotInfo"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_KruskalWallis_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              Texts({"Attribute TotalN", "Attribute TestStatistic", "Attribute DegreeOfFreedom",
                     "Attribute AsymptoticSig2Tailed"}));
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.ChildNames(),
              Texts({"Attribute GroupFieldIndex", "Attribute GroupCount", "StructuredTable Group0",
                     "StructuredTable Group1", "StructuredTable Group2", "StructuredTable Group3"}));
    EXPECT_EQ(boxes.Sub("Group2").ChildNames(),
              Texts({"Attribute GroupIndex", "Attribute MeanOfRank", "SimpleTable Box", "SimpleTable Outliers"}));
}

TEST(KruskalWallis, AgreesWithSciPyUnderTies) {
    const Table test = Result(kTied);
    const Table statistics = test.Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "18");
    EXPECT_NEAR(Number(statistics, "TestStatistic"), 12.202172774869103, 1e-12);
    EXPECT_EQ(statistics.Row("DegreeOfFreedom"), "3");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), 0.0067217357121521796, 1e-13);
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GroupFieldIndex"), "1");
    EXPECT_EQ(boxes.Row("GroupCount"), "4");
    EXPECT_EQ(boxes.Sub("Group0").Row("MeanOfRank"), "7.1");  // 2.5 5 5 9 14
    EXPECT_EQ(boxes.Sub("Group1").Row("MeanOfRank"), "3.875");
    EXPECT_NEAR(Number(boxes.Sub("Group2"), "MeanOfRank"), 90.5 / 6, 1e-13);
    EXPECT_EQ(boxes.Sub("Group3").Row("GroupIndex"), "3");
}

TEST(KruskalWallis, OrderOfTheRecordsDoesNotMatter) {
    Rows rows = RowsOf(kTied);
    std::reverse(rows.begin(), rows.end());
    const Table test = groups::ResultOf(kTest, Comparing("none"), Categories(4), rows);
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "TestStatistic"), 12.202172774869103, 1e-12);
}

TEST(KruskalWallis, BoxOfAGroupHasItsOutliersWithoutCaseIdentifiers) {
    // Tukey's hinges 3.5 and 6.5 and a reach of 4.5: the far value lies above the upper fence of 11.
    const Table test = Result({{2, 3, 4, 5, 6, 7, 100}, {1, 2}});
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").SimpleRows("Box"), Texts({"2;3.5;5;6.5;7"}));
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").SimpleRows("Outliers"), Texts({"100", ""}));
}

TEST(KruskalWallis, AllValuesTiedAcrossTheGroups) {
    const Table test = Result({{4, 4}, {4}, {4, 4, 4}});
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TestStatistic"), "0");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("DegreeOfFreedom"), "2");
    EXPECT_EQ(test.Sub("StatisticsResult").Row("AsymptoticSig2Tailed"), "1");
}

TEST(KruskalWallis, TwoGroupsOfOneRecord) {
    // Ranks 1 and 2: 12 * 5 / 6 - 9 = 1.
    const Table statistics = Result({{7}, {3}}).Sub("StatisticsResult");
    EXPECT_EQ(statistics.Row("TotalN"), "2");
    EXPECT_EQ(statistics.Row("TestStatistic"), "1");
    EXPECT_NEAR(Number(statistics, "AsymptoticSig2Tailed"), std::erfc(std::sqrt(0.5)), 1e-14);
}

// The remark is no sign of ties: it goes out with each statistic, ties or not.
TEST(KruskalWallis, RemarkGoesOutWithoutTiesToo) {
    EXPECT_EQ(MessagesIn(Result(kApart)), Texts({"222111 helpMessage"}));
    EXPECT_EQ(MessagesIn(Result(kTied)), Texts({"222111 helpMessage"}));
}

// ---- Groups, weights, missing values ----

TEST(KruskalWallis, GroupWithoutDataIsDroppedFromTheStatisticYetCounted) {
    const Table test = Result({{1, 2, 3}, {}, {4, 5, 6}, {7, 8, 9}});
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "TestStatistic"), 7.2, 1e-12);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("DegreeOfFreedom"), "2");
    const Table boxes = test.Sub("BoxPlotInfo");
    EXPECT_EQ(boxes.Row("GroupCount"), "4");
    EXPECT_EQ(boxes.ChildNames(), Texts({"Attribute GroupFieldIndex", "Attribute GroupCount", "StructuredTable Group0",
                                         "StructuredTable Group2", "StructuredTable Group3"}));
}

TEST(KruskalWallis, WeightOf1Point9CountsAsOne) {
    Rows rows = RowsOf(kTied);
    for (std::vector<double>& row : rows) row.push_back(1.9);
    const Table test = WeightedResult(4, rows);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "18");
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "TestStatistic"), 12.202172774869103, 1e-12);
    EXPECT_EQ(test.Sub("BoxPlotInfo").Sub("Group0").Row("MeanOfRank"), "7.1");
}

TEST(KruskalWallis, WeightsCountAsRepeatedRecordsAndBelowOneAsNone) {
    const Table weighted =
        WeightedResult(3, {{1, 0, 2}, {5, 0, 1}, {3, 1, 3.7}, {9, 1, 0.9}, {5, 2, 2}, {-4, 2, 0}}, "pairWise");
    const Table repeated = Result({{1, 1, 5}, {3, 3, 3}, {5, 5}}, "pairWise");
    for (const char* row : {"TotalN", "TestStatistic", "DegreeOfFreedom", "AsymptoticSig2Tailed"}) {
        EXPECT_EQ(weighted.Sub("StatisticsResult").Row(row), repeated.Sub("StatisticsResult").Row(row)) << row;
    }
    // A group of weight 0 is a group without data.
    EXPECT_EQ(WeightedResult(3, {{1, 0, 1}, {2, 1, 1}, {3, 2, 0.9}}).Sub("StatisticsResult").Row("DegreeOfFreedom"),
              "1");
}

TEST(KruskalWallis, MissingValuesCostTheRecord) {
    Rows rows = RowsOf(kTied);
    rows.push_back({harness::kNone, 0});
    rows.push_back({5, harness::kNoCategory});
    const Table test = groups::ResultOf(kTest, Comparing("none"), Categories(4), rows);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "18");
    EXPECT_NEAR(Number(test.Sub("StatisticsResult"), "TestStatistic"), 12.202172774869103, 1e-12);
}

// ---- Codes ----

TEST(KruskalWallis, FewerThanTwoGroupsWithData) {
    EXPECT_EQ(FailureOf(Result({{1, 2, 3}, {}, {}}, "pairWise")), (Failure{{"222112 error"}, "0", "1"}));
    EXPECT_EQ(Result({{1, 2, 3}, {}}).Attribute("decision"), "unknown");
    EXPECT_EQ(MessagesIn(WeightedResult(2, {{1, 0, 1}, {2, 1, 0.5}})), Texts({"222112 error"}));
}

class KruskalWallisPlan : public testing::Test {
 protected:
    static harness::Fields Fields() {
        harness::Fields fields;
        fields.Continuous("x").Numeric("one", {1}).Text("g", {"a", "b"}).Other("other");
        return fields;
    }
    static Failure Fails(const QKSettings& entry) {
        return FailureOf(groups::ResultOf(kTest, entry, Fields(), {{1, 0, 0, 0}, {2, 0, 1, 0}}));
    }
};

TEST_F(KruskalWallisPlan, FieldThatIsAbsentOrUnknown) {
    EXPECT_EQ(Fails(Comparing("none", "nowhere")), (Failure{{"222103 error"}, "-1", "2"}));
    EXPECT_EQ(Fails(Comparing("none", "x", "nowhere")), (Failure{{"222103 error"}, "0", "-1"}));
    QKSettings nothing;
    EXPECT_EQ(Fails(nothing), (Failure{{"222103 error", "222101 error"}, "-1", "-1"}));
}

TEST_F(KruskalWallisPlan, FieldOfTheWrongKind) {
    EXPECT_EQ(Fails(Comparing("none", "g")), (Failure{{"222109 error"}, "2", "2"}));
    EXPECT_EQ(Fails(Comparing("none", "other")), (Failure{{"222109 error"}, "3", "2"}));
    // A field without categories has fewer than two of them.
    EXPECT_EQ(Fails(Comparing("none", "x", "x")), (Failure{{"222110 error", "222115 error"}, "0", "0"}));
}

TEST_F(KruskalWallisPlan, FieldOfOneCategoryAndNoComparisonNamed) {
    EXPECT_EQ(Fails(Comparing("none", "x", "one")), (Failure{{"222115 error"}, "0", "1"}));
    EXPECT_EQ(Fails(Entry()), (Failure{{"222101 error"}, "0", "2"}));
}

// Unlike the builders of the other tests, which stop or keep one code.
TEST_F(KruskalWallisPlan, EveryFailureIsTold) {
    EXPECT_EQ(Fails(Entry("g", "one")), (Failure{{"222109 error", "222101 error", "222115 error"}, "2", "1"}));
    EXPECT_EQ(Fails(Entry("nowhere", "one")), (Failure{{"222103 error", "222101 error", "222115 error"}, "-1", "1"}));
}

TEST_F(KruskalWallisPlan, OriginHasItsFrequenciesShown) {
    QKSettings entry = Comparing("none");
    entry.AddSetting("originVariableName", "one");
    const harness::Outcome outcome =
        groups::RunEntry(kTest, entry, Fields(), {{1, 0, 0, 0}, {2, 0, 1, 0}, {3, 0, 1, 0}});
    // The counts and below them the categories: of the origin, and of the groups.
    const auto frequencies = [&](int field) {
        return outcome.document.FieldInfo(field).Sub("CategoricalDistribution").SimpleRows("Interval");
    };
    EXPECT_EQ(frequencies(1), Texts({"3", "0"}));
    EXPECT_EQ(frequencies(2), Texts({"1;2", "0;1"}));
}

TEST_F(KruskalWallisPlan, UnknownComparisonIsNone) {
    EXPECT_EQ(MessagesIn(Result(kApart, "PairWise")), Texts({"222111 helpMessage"}));
    EXPECT_FALSE(Result(kApart, "all").Sub("PairwiseResult").Exists());
}

}  // namespace
