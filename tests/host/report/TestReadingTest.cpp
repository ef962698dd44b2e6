#include "host/report/TestReading.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;
using Strings = std::vector<std::string>;

TestReading ReadingOf(const std::string& test) {
    const ResultDocument document = ReadResult(DocumentOf(test));
    return ReadTest(document.tests.at(0), document, MessageCatalogue::English());
}

/// A test of that name whose statistics are these rows and tables.
TestReading WithStatistics(const std::string& name, const std::string& statistics) {
    return ReadingOf(TestElement(name, "Independent_Samples", "retain",
                                 Condition("key", {"0", "2"}) + Table("StatisticsResult", statistics)));
}

std::string Deciding(const TestReading& reading) {
    return reading.Leading()->Leading()->value;
}

TEST(TestReading, ReadsATestOfAPair) {
    const TestReading reading = ReadingOf(SignTest());
    EXPECT_EQ(reading.fields, (Strings{"v", "u"}));
    EXPECT_EQ(reading.group, "");
    EXPECT_EQ(reading.family + " " + reading.n.text + " " + reading.decision, "related 12 retain");
    ASSERT_EQ(reading.statistics.size(), 1u);
    EXPECT_EQ(reading.statistics[0].statistic, "8");
    EXPECT_EQ(reading.statistics[0].standardized, "0.866025403784439");
    ASSERT_EQ(reading.figures.size(), 3u);
    EXPECT_EQ(reading.figures[0].key + "=" + reading.figures[0].value.text, "PositiveDifferences=8");
    ASSERT_EQ(reading.notes.size(), 1u);
    EXPECT_EQ(reading.notes[0].code, 220916);
}

TEST(TestReading, TheExactSignificanceDecidesInSomeTestsOnly) {
    const std::string both =
        Row("TestStatistic", "1") + Row("AsymptoticSig2Tailed", "0.04") + Row("ExactSig2Tailed", "0.06");
    EXPECT_EQ(Deciding(WithStatistics("RSign", both)), "0.06");
    EXPECT_EQ(Deciding(WithStatistics("IMannWhitneyU", both)), "0.06");
    EXPECT_EQ(Deciding(WithStatistics("OBinomial", both)), "0.04");
    EXPECT_EQ(Deciding(WithStatistics("RMcNemar", both)), "0.04");
}

TEST(TestReading, TheMedianTestDecidesByFisherThenByTheCorrectedValue) {
    const std::string plain = Row("TestStatistic", "1") + Row("AsymptoticSig2Tailed", "0.04");
    const std::string corrected = Table("YatesContinuityCorrection", Row("AsymptoticSig2Tailed", "0.05"));
    EXPECT_EQ(Deciding(WithStatistics("IMedian", plain)), "0.04");
    EXPECT_EQ(Deciding(WithStatistics("IMedian", plain + corrected)), "0.05");
    EXPECT_EQ(Deciding(WithStatistics("IMedian", plain + Row("FisherExactSig", "0.07") + corrected)), "0.07");
}

TEST(TestReading, TheSecondOfTwoSetsDecides) {
    const TestReading moses = WithStatistics(
        "IMoses", Table("ObservedControlGroup", Row("TestStatistic", "26") + Row("ExactSig1Tailed", "0.01")) +
                      Table("TrimmedControlGroup", Row("TestStatistic", "24") + Row("ExactSig1Tailed", "0.07")));
    ASSERT_EQ(moses.statistics.size(), 2u);
    EXPECT_EQ(Deciding(moses), "0.07");
    EXPECT_FALSE(moses.statistics[0].pValues[0].decides);
    const std::string values =
        Row("TestStatistic", "3") + Row("AsymptoticSig2Tailed", "0.2") + Row("ExactSig2Tailed", "0.1");
    const TestReading runs =
        WithStatistics("IWaldWolfowitzRuns", Table("MinimumPossible", values) + Table("MaximumPossible", values));
    EXPECT_EQ(Deciding(runs), "0.2");
}

TEST(TestReading, KnowsABoundAndAValueThatWasNeverComputed) {
    const TestReading bound =
        WithStatistics("OKolmogorovSmirnov", Row("TestStatistic", "0.1") + Row("AsymptoticSig2Tailed", ">0.2"));
    EXPECT_TRUE(bound.Leading()->Leading()->isBound);
    EXPECT_EQ(Deciding(bound), "0.2");
    const TestReading never = WithStatistics("OKolmogorovSmirnov", Row("TestStatistic", "-1.79769313486232e+308") +
                                                                       Row("AsymptoticSig2Tailed", "__MISSING__"));
    EXPECT_EQ(never.statistics[0].statistic, "");
    EXPECT_EQ(Deciding(never), "");
}

TEST(TestReading, NamesSamplesPairsAndSubsets) {
    const TestReading reading = ReadingOf(KruskalWallisTest());
    EXPECT_EQ(reading.group, "arm");
    EXPECT_EQ(reading.statistics[0].df, "2");
    ASSERT_EQ(reading.samples.size(), 2u);
    EXPECT_EQ(reading.samples[0].name + reading.samples[1].name, "old3");
    EXPECT_EQ(reading.samples[0].figures[0].label + reading.samples[0].figures[0].value.text, "mean rank2.5");
    EXPECT_EQ(reading.samples[0].figures[3].label + reading.samples[0].figures[3].value.text, "median3");
    ASSERT_EQ(reading.pairs.size(), 1u);
    EXPECT_EQ(reading.pairs[0].first + " " + reading.pairs[0].second, "old 3");
    EXPECT_EQ(reading.pairs[0].adjustedP, "0.0303");
    ASSERT_EQ(reading.subsets.size(), 2u);
    EXPECT_EQ(reading.orderedSamples, (Strings{"3", "old"}));
    EXPECT_EQ(reading.subsets[0].members, (Strings{"3", "old"}));
    EXPECT_EQ(reading.subsets[0].adjustedP, "0.2612");
    EXPECT_EQ(reading.subsets[1].members, Strings{"old"});
    EXPECT_EQ(reading.subsets[1].statistic, "");
}

TEST(TestReading, NamesTheFieldsOfAComparisonByTheirPlaceInTheList) {
    const TestReading reading = ReadingOf(TestElement(
        "RFriedmansTwoWayByRanks", "Related_Samples", "reject",
        Condition("R_FriedmansTwoWayByRanks_1", {"2;0"}) +
            Table("VariableInformation0", Row("GroupIndex", "2") + Row("MeanOfRank", "1.5")) +
            Table("PairwiseResult",
                  SimpleTable("PairwiseInfo", "IndexOrder;Value", "", {"2;0", "1;2"}) +
                      SimpleTable("Content", "", "Sample1;Sample2;TestStatistic;Sig", {"0;1;-1;0.5;-2;0.04;0.04"}))));
    EXPECT_EQ(reading.fields, (Strings{"arm", "u"}));
    EXPECT_EQ(reading.samples.at(0).name, "arm");
    EXPECT_EQ(reading.pairs.at(0).first + " " + reading.pairs.at(0).second, "arm u");
}

TEST(TestReading, ReadsEveryIntervalOfAProportion) {
    const auto method = [](const std::string& name) {
        return Table(name, Row("computeECIMethod", name) + Row("Estimate", "0.5") +
                               Table("Asymptotic", Row("Lower", "0.25") + Row("Upper", "0.75")));
    };
    const TestReading reading = ReadingOf(TestElement("OEstimateConfidenceInterval", "One_Sample", "",
                                                      Condition("ACutPointIsSpecified_O_Binomial_2", {"0", "1.5"}) +
                                                          method("ClopperPearson") + method("ProfileLikelihood")));
    EXPECT_TRUE(reading.isEstimate);
    EXPECT_EQ(reading.fields, Strings{"u"});
    ASSERT_EQ(reading.intervals.size(), 2u);
    EXPECT_EQ(reading.intervals[0].method + "," + reading.intervals[1].method, "Clopper-Pearson,profile likelihood");
    EXPECT_EQ(reading.intervals[1].lower.text + " " + reading.intervals[1].upper.text, "0.25 0.75");
}

TEST(TestReading, NamesTheClassesOfACrossTable) {
    const TestReading reading = ReadingOf(TestElement(
        "RMarginalHomogeneity", "Related_Samples", "retain",
        Condition("AllDistinctValuesUsed_R_MarginalHomogeneity_2", {"2", "2"}) +
            Table("CategoryFieldsComparison", Row("RowNames", "2") + Row("ColumnNames", "2") +
                                                  SimpleTable("Content", "", "", {"1;2;3", "4;5;6", "7;8;9"}))));
    EXPECT_EQ(reading.counts.corner, "arm \\ arm");
    EXPECT_EQ(reading.counts.rowTitles, (Strings{"old", "new", "3"}));
    EXPECT_EQ(reading.counts.columnTitles, reading.counts.rowTitles);
    EXPECT_EQ(reading.counts.CellsOf(1), (Strings{"4", "5", "6"}));
}

TEST(TestReading, ListsTheCountedCellsOfAWideTable) {
    CountTable counts{"a \\ b", {}, {"low", "high"}, {"0;4", "2;0"}};
    for (int i = 0; i < 200; ++i) counts.columnTitles.push_back(std::to_string(i));
    EXPECT_FALSE(counts.IsWide());
    for (int i = 2; i < 200; ++i) counts.lines[0] += ";0";
    EXPECT_EQ(counts.ColumnCount(), 200u);
    EXPECT_FALSE(counts.IsWide()) << "200 columns are shown";
    counts.lines[0] += ";7";
    counts.columnTitles.emplace_back("top");
    EXPECT_TRUE(counts.IsWide());
    const CountTable list = counts.Listed();
    EXPECT_EQ(list.corner, "a \\ b");
    EXPECT_EQ(list.columnTitles, Strings{"cases"});
    EXPECT_EQ(list.rowTitles, (Strings{"low \\ 1", "low \\ top", "high \\ 0"}));
    EXPECT_EQ(list.lines, (Strings{"4", "7", "2"}));
}

TEST(TestReading, NamesTheSuccessesOfAFourfoldTableWhereTheyAreListed) {
    const auto titles = [](const std::string& success, const std::string& fail) {
        return ReadingOf(TestElement("RMcNemar", "Related_Samples", "retain",
                                     Condition("CategoryListsAreSpecified_R_McNemar_2", {"2", "2"}) +
                                         Table("CategoryFieldsComparison",
                                               Row("RowNames", "2") + Row("RowSuccessList", success) +
                                                   Row("RowFailList", fail) + Row("ColumnNames", "2") +
                                                   Row("ColumnSuccessList", success) + Row("ColumnFailList", fail) +
                                                   SimpleTable("Content", "", "", {"1;2", "3;4"}))))
            .counts.rowTitles;
    };
    EXPECT_EQ(titles("1", "0;2"), (Strings{"new", "old, 3"}));
    EXPECT_EQ(titles("", ""), (Strings{"success", "other"}));
}

// The columns of the table are categories, not success and failure.
TEST(TestReading, NamesTheClassesOfCochransTable) {
    const auto titles = [](const std::string& field) {
        return ReadingOf(TestElement(
                             "RCochransQ", "Related_Samples", "retain",
                             Condition("DefaultAllDistinctValuesUsed_R_CochransQ_1", {field}) +
                                 Table("TwoClassComparison", SimpleTable("Content", field, "0;1", {"35;65", "42;58"}))))
            .counts.columnTitles;
    };
    EXPECT_EQ(titles("2"), (Strings{"first class %", "second class %"})) << "the field has three categories";
}

TEST(TestReading, AFailedTestHasItsErrorAlone) {
    const TestReading reading = ReadingOf(TestElement(
        "RSign", "Related_Samples", "unknown",
        Condition("R_Sign_2", {"__MISSING__", "7"}) + Table("WarningMessages", Message("220903", "error", {"w"}))));
    EXPECT_TRUE(reading.HasError());
    EXPECT_EQ(reading.fields, (Strings{"?", "?"}));
    EXPECT_EQ(reading.Leading(), nullptr);
}

}  // namespace
}  // namespace tarn
