// The differences of a pair: their sign, their range, and their histogram in the element.

#include <gtest/gtest.h>

#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "related/PairDifferences.h"

namespace {

std::string TextOf(ResultElement& element) {
    const std::unique_ptr<QKXML::XMLElement> released(element.Release());
    std::ostringstream out;
    QKXML::WriteTree(out, nullptr, released.get(), 0);
    return out.str();
}

/// The "Interval" rows of differences of weight 1 after both passes, as "counts / values".
std::string IntervalsOf(const std::vector<double>& values) {
    PairDifferences differences(0, 1);
    for (const double value : values) differences.ExtendRange(value);
    differences.BeginHistogram();
    for (const double value : values) differences.Add(value, 1);
    differences.EndHistogram();
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kRetain);
    differences.AddDistribution(element, 0, 0, 0);
    const std::string text = TextOf(element);
    const auto row = [&](std::size_t from) {
        const std::size_t start = text.find("<Row>", from) + 5;
        return text.substr(start, text.find("</Row>", start) - start);
    };
    return row(0) + " / " + row(text.find("</Row>"));
}

TEST(PairDifferences, AreSecondMinusFirst) {
    Record record(4);
    record[1] = 10;
    record[3] = 4;
    EXPECT_EQ(PairDifferences(1, 3).Of(record), -6);
    EXPECT_EQ(PairDifferences(3, 1).Of(record), 6);
}

TEST(PairDifferences, RangeIsThatOfAllThatWereSeen) {
    PairDifferences differences(0, 1);
    EXPECT_EQ(differences.Smallest(), std::numeric_limits<double>::max());
    for (const double value : {3.0, 5.0, -1e300, 0.0}) differences.ExtendRange(value);
    EXPECT_EQ(differences.Smallest(), -1e300);
    differences.ExtendRange(std::numeric_limits<double>::quiet_NaN());  // of two infinite values
    EXPECT_EQ(differences.Smallest(), -1e300);
}

TEST(PairDifferences, FormOneIntervalEachWhereTheyStandFarApartTheZerosLast) {
    EXPECT_EQ(IntervalsOf({4, 0, -4, 2, 0}), "1;1;1;2 / -4;2;4;0");
    EXPECT_EQ(IntervalsOf({7}), "1 / 7");
    EXPECT_EQ(IntervalsOf({0, 0}), "2 / 0");
    EXPECT_EQ(IntervalsOf({-3, -3, -3}), "3 / -3");
    EXPECT_EQ(IntervalsOf({1e300, -1e300}), "1;1 / -1e+300;1e+300");
}

TEST(PairDifferences, OnEitherSideOfZeroDontShareAnInterval) {
    // An interval between -100 and 1000 is 2.75 wide: without a boundary at zero the one from -1 to 1.75 would hold
    // both.
    EXPECT_EQ(IntervalsOf({-100, -0.5, 1, 1000}), "1;1;1;1 / -100;-0.5;1;1000");
}

TEST(PairDifferences, OnEitherSideOfZeroShareTheFirstIntervalWhereTheBoundaryIsItsEnd) {
    // From -1 on the boundary at zero is the first edge, and the second interval is the one that is never found.
    EXPECT_EQ(IntervalsOf({-1, 1, 1000}), "2;1 / 0;1000");
}

TEST(PairDifferences, OfTheFirstTwoIntervalsAllCountForTheFirst) {
    // From 1 to 5 an interval is 0.01 wide; 1.005 lies in the first one, 1.015 in the second one, which the search
    // never finds, 1.025 in the third one.
    EXPECT_EQ(IntervalsOf({1, 1.005, 1.015, 1.025, 5}), "3;1;1 / 1.00666666666667;1.025;5");
}

TEST(PairDifferences, DistributionShowsTheThreeCountsInFrontOfTheIntervals) {
    const PairDifferences differences(0, 1);
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kRetain);
    differences.AddDistribution(element, 3, -2, 5);
    EXPECT_NE(TextOf(element).find(
                  R"(<StructuredTable name="ContinuousDistribution"><Attribute name="NegativeDifferences" value="3"/>)"
                  R"(<Attribute name="Ties" value="-2"/><Attribute name="PositiveDifferences" value="5"/>)"
                  R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/><Row/><Row/>)"
                  R"(</SimpleTable></StructuredTable>)"),
              std::string::npos);
}

}  // namespace
