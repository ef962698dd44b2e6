// Signed numbers are shown in one direction, whatever that of the document.

#include "host/report/Direction.h"

#include <gtest/gtest.h>

#include <string>

#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;

std::string Group(int number, const std::string& index, const std::string& n) {
    return Table("Group" + std::to_string(number), Row("GroupIndex", index) + Row("N", n) + Row("MeanOfRank", "1"));
}

TestReading Read(const std::string& test) {
    const ResultDocument document = ReadResult(DocumentOf(test));
    return ReadTest(document.tests.at(0), document, MessageCatalogue::English());
}

/// A Mann-Whitney test of 6 and 7 values, whose U counts the 29.5 pairs in which the second group of the document is
/// the larger one.
TestReading MannWhitney(const std::string& key, const std::string& first, const std::string& second) {
    return Read(TestElement(
        "IMannWhitneyU", "Independent_Samples", "retain",
        Condition(key, {"0", "2"}) + Group(0, first, "6") + Group(1, second, "7") +
            Table("StatisticsResult", Row("TotalN", "13") + Row("MannWhitneyU", "29.5") + Row("WilcoxonW", "57.5") +
                                          Row("TestStatistic", "29.5") + Row("StandardTestStatistic", "1.25") +
                                          Row("AsymptoticSig2Tailed", "0.21"))));
}

constexpr const char* kOfData = "DefaultAllDistinctValuesUsed_I_MannWhitneyU_2";

TEST(Direction, OfMannWhitneyIsTheFirstCategoryLessTheSecond) {
    const TestReading reading = MannWhitney(kOfData, "0", "1");
    EXPECT_EQ(reading.direction.Text(), "old minus new");
    EXPECT_EQ(reading.statistics[0].label, "U of old");
    EXPECT_EQ(reading.statistics[0].statistic, "12.5");  // 6 * 7 - 29.5
    EXPECT_EQ(reading.statistics[0].standardized, "-1.25");
    EXPECT_EQ(reading.figures[0].label + " " + reading.figures[0].value.text, "U of new 29.5");
    EXPECT_EQ(reading.figures[1].label + " " + reading.figures[1].value.text, "rank sum of new 57.5");
    EXPECT_EQ(reading.samples[0].name, "old");
}

// The document sorts the groups of a nominal field by value, where its categories may be listed in another order.
TEST(Direction, OfMannWhitneyStaysWhereTheDocumentHasTheGroupsInAnotherOrder) {
    const TestReading reading = MannWhitney(kOfData, "1", "0");
    EXPECT_EQ(reading.direction.Text(), "old minus new");
    EXPECT_EQ(reading.statistics[0].label, "U of old");
    EXPECT_EQ(reading.statistics[0].statistic, "29.5");
    EXPECT_EQ(reading.statistics[0].standardized, "1.25");
    EXPECT_EQ(reading.figures[0].label + " " + reading.figures[0].value.text, "U of new 12.5");
    EXPECT_EQ(reading.figures[1].label + " " + reading.figures[1].value.text, "rank sum of old 57.5");
    EXPECT_EQ(reading.samples[0].name, "old");
}

TEST(Direction, OfListedGroupsIsThatOfTheLists) {
    const TestReading reading = MannWhitney("CategoryListsAreSpecified_I_MannWhitneyU_2", "1", "0");
    EXPECT_EQ(reading.direction.Text(), "new minus old");
    EXPECT_EQ(reading.statistics[0].statistic, "12.5");
}

TestReading KolmogorovSmirnov(const std::string& firstSize, const std::string& secondSize) {
    return Read(
        TestElement("IKolmogorovSmirnov", "Independent_Samples", "retain",
                    Condition("DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2", {"0", "2"}) +
                        Table("StatisticsResult",
                              Row("TotalN", "13") +
                                  Table("MostExtremeDifferences",
                                        Row("Absolute", "0.4") + Row("Positive", "0.1") + Row("Negative", "-0.4")) +
                                  Row("TestStatistic", "0.7") + Row("AsymptoticSig2Tailed", "0.7")) +
                        Group(0, "0", firstSize) + Group(1, "1", secondSize)));
}

std::string Differences(const TestReading& reading) {
    return reading.figures[1].label + " " + reading.figures[1].value.text + ", " + reading.figures[2].label + " " +
           reading.figures[2].value.text;
}

// The document takes the smaller group from the larger one; of equal groups the second from the first.
TEST(Direction, OfTwoDistributionsIsTheFirstLessTheSecondWhicheverIsLarger) {
    EXPECT_EQ(Differences(KolmogorovSmirnov("7", "6")), "largest F(old) - F(new) 0.1, smallest F(old) - F(new) -0.4");
    EXPECT_EQ(Differences(KolmogorovSmirnov("6", "6")), "largest F(old) - F(new) 0.1, smallest F(old) - F(new) -0.4");
    EXPECT_EQ(Differences(KolmogorovSmirnov("6", "7")), "largest F(old) - F(new) 0.4, smallest F(old) - F(new) -0.1");
}

TEST(Direction, OfTheShiftOfTwoGroupsIsThatOfTheCategoriesThatOccur) {
    const std::string test =
        TestElement("IHodgesLehmannEstimateGroups", "Independent_Samples", "",
                    Condition("AllDistinctValuesUsed_I_HodgesLehman_2", {"0", "2"}) +
                        Table("StatisticsResult",
                              Row("Estimate", "2") + Table("Asymptotic", Row("Lower", "1") + Row("Upper", "3"))));
    const std::string counts =
        "<FieldInfo varIndex=\"2\">" +
        Table("CategoricalDistribution", Row("TotalN", "9") + SimpleTable("Interval", "", "", {"4;5", "0;2"})) +
        "</FieldInfo>";
    const ResultDocument document = ReadResult(DocumentOf(test, counts));
    const TestReading reading = ReadTest(document.tests.at(0), document, MessageCatalogue::English());
    EXPECT_EQ(reading.direction.Text(), "old minus 3");
    EXPECT_EQ(reading.intervals[0].estimate, "2");
}

TEST(Direction, OfAPairIsTheSecondFieldLessTheFirst) {
    EXPECT_EQ(Read(SignTest()).direction.Text(), "u minus v");
}

TEST(Direction, IsNotThereWithoutSignedNumbers) {
    EXPECT_TRUE(Read(KruskalWallisTest()).direction.IsEmpty());
}

}  // namespace
}  // namespace tarn
