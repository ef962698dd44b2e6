// The reading of a whole document: numbers with their values, and what a plot is drawn from.

#include "host/report/ResultReading.h"

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;
using Values = std::vector<double>;

ResultReading Read(const std::string& tests, const std::string& descriptives = "") {
    return ReadAll(ReadResult(DocumentOf(tests, descriptives)), MessageCatalogue::English());
}

TEST(ResultReading, HasNumbersAsTextAndAsValue) {
    const ResultReading reading = Read(SignTest());
    const StatisticSet& set = reading.tests.at(0).statistics.at(0);
    EXPECT_EQ(set.standardized.text, "0.866025403784439");
    EXPECT_EQ(set.standardized.value, 0.866025403784439);
    EXPECT_EQ(set.pValues.at(1).value.text, "0.38769531250000");
    EXPECT_EQ(set.pValues.at(1).value.value, 0.3876953125);
    EXPECT_EQ(reading.sigLevel.value, 0.05);
    EXPECT_EQ(reading.confidenceLevel.value, 0.95);
    EXPECT_TRUE(set.df.empty());
    EXPECT_TRUE(std::isnan(set.df.value));
}

TEST(ResultReading, HasBoxesWithOutliersAndHistogramsOfGroups) {
    const std::string box =
        SimpleTable("Box", "", "smallestNonOutlier;25perc;50perc;75perc;largestNonOutlier", {"1;2;3.5;4;5"});
    const std::string outliers = SimpleTable("Outliers", "Values;CaseID", "", {"9;-7.5", "12;3"});
    const std::string counts = SimpleTable("Interval", "count;value", "", {"2;1;1", "1;3.5;9"});
    const std::string test =
        TestElement("IMoses", "Independent_Samples", "retain",
                    Condition("DefaultAllDistinctValuesUsed_I_Moses_2", {"0", "2"}) +
                        Table("Group0", Row("GroupIndex", "0") + Row("N", "4") + box + outliers + counts));
    const ResultReading reading = Read(test);
    const Sample& sample = reading.tests.at(0).samples.at(0);
    EXPECT_EQ(sample.name, "old");
    EXPECT_EQ(sample.box.lowerWhisker.value, 1);
    EXPECT_EQ(sample.box.median.value, 3.5);
    EXPECT_EQ(sample.box.upperWhisker.value, 5);
    ASSERT_EQ(sample.box.outliers.size(), 2u);
    EXPECT_EQ(sample.box.outliers[1].value, -7.5);
    EXPECT_EQ(sample.box.outliers[1].caseId, "3");
    EXPECT_EQ(sample.histogram.Counts(), (Values{2, 1, 1}));
    EXPECT_EQ(sample.histogram.Values(), (Values{1, 3.5, 9}));
}

TEST(ResultReading, HasTheHistogramOfDifferencesAndThoseOfFields) {
    const std::string test = TestElement(
        "RSign", "Related_Samples", "retain",
        Condition("R_Sign_2", {"0", "1"}) +
            Table("ContinuousDistribution", Row("Ties", "1") + SimpleTable("Interval", "", "", {"3;2;1", "-1;2;0"})));
    const std::string descriptives =
        "<FieldInfo varIndex=\"1\">" +
        Table("ContinuousDistribution",
              Row("TotalN", "9") + Row("Mean", "4.5") + SimpleTable("Interval", "", "", {"4;5", "1;8"})) +
        "</FieldInfo>";
    const ResultReading reading = Read(test, descriptives);
    EXPECT_EQ(reading.tests.at(0).histogram.Counts(), (Values{3, 2, 1}));
    EXPECT_EQ(reading.tests.at(0).histogram.Values(), (Values{-1, 2, 0}));
    ASSERT_EQ(reading.fields.size(), 1u);
    EXPECT_EQ(reading.fields[0].field, "v");
    EXPECT_EQ(reading.fields[0].figures.at(1).key + " " + reading.fields[0].figures.at(1).value.text, "Mean 4.5");
    EXPECT_EQ(reading.fields[0].histogram.Counts(), (Values{4, 5}));
}

TEST(ResultReading, HasNoHistogramOfListsThatDoNotMatch) {
    const std::string test = TestElement(
        "RSign", "Related_Samples", "retain",
        Condition("R_Sign_2", {"0", "1"}) +
            Table("ContinuousDistribution", Row("Ties", "1") + SimpleTable("Interval", "", "", {"3;2", "1"})));
    EXPECT_TRUE(Read(test).tests.at(0).histogram.IsEmpty());
}

TEST(ResultReading, TakesItsLabelsFromTheCatalogue) {
    MessageCatalogue german = MessageCatalogue::English();
    german.Add(R"({"labels": {"Ties": "Bindungen"}})", "the texts of the test");
    const ResultReading reading = ReadAll(ReadResult(DocumentOf(SignTest())), german);
    EXPECT_EQ(reading.tests.at(0).figures.at(2).label, "Bindungen");
    EXPECT_EQ(reading.tests.at(0).figures.at(0).label, "positive differences");
}

}  // namespace
}  // namespace tarn
