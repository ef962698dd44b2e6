// The differences of a pair: their sign, their range, and their histogram in the element.

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "related/PairDifferences.h"
#include "tests/harness/BatchOf.h"

namespace {

std::string TextOf(ResultElement& element) {
    const std::unique_ptr<QKXML::XMLElement> released(element.Release());
    std::ostringstream out;
    QKXML::WriteTree(out, nullptr, released.get(), 0);
    return out.str();
}

/// The "Interval" rows of differences of weight 1 after both passes, as "counts / values".
std::string IntervalsOf(const std::vector<double>& values) {
    PairDifferences differences(0, 1, -1, Arithmetic::AsDefined());
    harness::BatchOf batch({std::vector<double>(values.size()), values});
    differences.ExtendRange(differences.Of(batch), values.size());
    differences.BeginHistogram();
    differences.AddToHistogram(batch);
    differences.EndHistogram();
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kRetain);
    differences.AddDistribution(element, 0, 0, 0, false);
    const std::string text = TextOf(element);
    const auto row = [&](std::size_t from) {
        const std::size_t start = text.find("<Row>", from) + 5;
        return text.substr(start, text.find("</Row>", start) - start);
    };
    return row(0) + " / " + row(text.find("</Row>"));
}

TEST(PairDifferences, AreSecondMinusFirst) {
    harness::BatchOf batch({{0}, {10}, {0}, {4}});
    EXPECT_EQ(*PairDifferences(1, 3, -1, Arithmetic::AsDefined()).Of(batch), -6);
    EXPECT_EQ(*PairDifferences(3, 1, -1, Arithmetic::AsDefined()).Of(batch), 6);
}

TEST(PairDifferences, OfTwoInfinitiesIsNoNumberAndHasNoSign) {
    const double infinity = std::numeric_limits<double>::infinity();
    harness::BatchOf batch({{infinity, -infinity}, {infinity, -infinity}});
    PairDifferences differences(0, 1, -1, Arithmetic::AsDefined());
    const double* const values = differences.Of(batch);
    for (const double value : {values[0], values[1]}) {
        EXPECT_TRUE(std::isnan(value));
        EXPECT_FALSE(std::signbit(value));
    }
}

TEST(PairDifferences, AreCountedByTheirSigns) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    const std::vector<double> values{3, -1, 0, nan, -0.0, 2, 5, -4, 0.5, 7, -8};
    PairDifferences unweighted;
    unweighted.Count(values.data(), nullptr, values.size());
    EXPECT_EQ(unweighted.Positive(), 5);
    EXPECT_EQ(unweighted.Negative(), 3);
    EXPECT_EQ(unweighted.NotZero(), 9);  // what is no number, too
    EXPECT_EQ(unweighted.Total(), 11);

    PairDifferences weighted;
    const std::vector<std::int32_t> weights{1, 10, 100, 1000, 10000, 2, 0, 20, -1, 3, 30};
    for (std::size_t i = 0; i < values.size(); ++i) weighted.Count(&values[i], &weights[i], 1);
    EXPECT_EQ(weighted.Positive(), 5);
    EXPECT_EQ(weighted.Negative(), 60);
    EXPECT_EQ(weighted.NotZero(), 1065);
    EXPECT_EQ(weighted.Total(), 11165);
}

TEST(PairDifferences, CountsWrapAround) {
    const std::vector<double> values{1, 1, -1};
    const std::vector<std::int32_t> weights{2147483647, 2, 1};
    PairDifferences differences;
    differences.Count(values.data(), weights.data(), values.size());
    EXPECT_EQ(differences.Positive(), -2147483647);
    EXPECT_EQ(differences.Total(), -2147483646);
}

TEST(PairDifferences, RangeIsThatOfAllThatWereSeen) {
    PairDifferences differences;
    EXPECT_EQ(differences.Smallest(), std::numeric_limits<double>::max());
    const std::vector<double> few{3, 5, -1e300, 0};
    differences.ExtendRange(few.data(), few.size());
    EXPECT_EQ(differences.Smallest(), -1e300);
    const double none = std::numeric_limits<double>::quiet_NaN();  // of two infinite values
    differences.ExtendRange(&none, 1);
    EXPECT_EQ(differences.Smallest(), -1e300);
    for (std::size_t place = 0; place < 20; ++place) {  // wherever the smallest one stands
        std::vector<double> many(20, 1.0);
        many[place] = -7;
        many[(place + 5) % 20] = none;
        PairDifferences ofMany;
        ofMany.ExtendRange(many.data(), many.size());
        EXPECT_EQ(ofMany.Smallest(), -7);
    }
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
    const PairDifferences differences;
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kRetain);
    differences.AddDistribution(element, 3, -2, 5, false);
    EXPECT_NE(TextOf(element).find(
                  R"(<StructuredTable name="ContinuousDistribution"><Attribute name="NegativeDifferences" value="3"/>)"
                  R"(<Attribute name="Ties" value="-2"/><Attribute name="PositiveDifferences" value="5"/>)"
                  R"(<SimpleTable name="Interval"><RowNames>count;value</RowNames><ColumnNames/><Row/><Row/>)"
                  R"(</SimpleTable></StructuredTable>)"),
              std::string::npos);
}

TEST(PairDifferences, DistributionOfABriefRunHasTheCountsAlone) {
    const PairDifferences differences;
    ResultElement element("T", ResultType::kHypothesisTest, TestFamily::kRelated, Decision::kRetain);
    differences.AddDistribution(element, 3, -2, 5, true);
    const std::string text = TextOf(element);
    EXPECT_NE(text.find(R"(<Attribute name="PositiveDifferences" value="5"/></StructuredTable>)"), std::string::npos);
    EXPECT_EQ(text.find("Interval"), std::string::npos);
}

}  // namespace
