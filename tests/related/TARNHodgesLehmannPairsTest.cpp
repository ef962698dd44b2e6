// The Hodges-Lehmann estimate of a pair. Reference values: the list of all averages, made and searched as the
// definition says (PlainWeightedList), averages worked by hand, and scipy 1.17 for the normal quantile.

#include "related/TARNHodgesLehmannPairs.h"

#include <gtest/gtest.h>

#include <cmath>
#include <map>
#include <random>

#include "support/TextMakers.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/harness/PlainWeightedList.h"
#include "tests/related/PairRun.h"

namespace {

using harness::Fields;
using harness::MessagesOf;
using harness::Table;
using pairs::Entry;
using pairs::Rows;
using pairs::Texts;

constexpr double kQuantile95 = 1.959963984540054;  // norm.ppf(0.975)

struct Interval {
    double estimate;
    double lower;
    double upper;
};

std::vector<std::string> TextsOf(const Interval& interval) {
    return {DoubleToString(interval.estimate), DoubleToString(interval.lower), DoubleToString(interval.upper)};
}

/// What the definition says for the confidence level of 0.95, from the list of all averages. For counts whose product
/// fits 32 bits.
Interval Reference(std::vector<WeightedDifference> sample, bool weighted) {
    std::int64_t n = 0;
    std::int64_t zeros = 0;
    double smallest = sample.front().difference;
    for (const WeightedDifference& entry : sample) {
        n += entry.weight;
        if (entry.difference == 0) zeros += entry.weight;
        smallest = std::min(smallest, entry.difference);
    }
    const double shift = zeros > 0 ? 1 - smallest : 0;
    for (WeightedDifference& entry : sample) entry.difference += shift;
    const PlainWeightedList list = PlainWeightedList::OfWalshAverages(sample);

    std::map<double, double> runs;  // of equal |d|; the samples below have none that differ by a rounding
    for (const WeightedDifference& entry : sample) runs[std::fabs(entry.difference)] += entry.weight;
    double ties = 0;
    for (const auto& [value, size] : runs) ties += size > 1 ? size * size * size - size : 0;
    const auto count = static_cast<double>(n);
    const double mean = count * (count + 1) * 0.25;
    const double error = std::sqrt((count + 1) * count * (2 * count + 1) / 24 - ties / 48);
    const auto f = static_cast<std::int64_t>(std::floor(mean - kQuantile95 * error));
    const auto up = static_cast<std::int64_t>(std::ceil(mean + kQuantile95 * error));
    Interval interval{list.Median(), 0, 0};
    if (weighted) {
        interval.lower = list.Lookup(static_cast<double>(f + 1));
        interval.upper = list.Lookup(static_cast<double>(up));
    } else {
        const auto size = static_cast<std::int64_t>(list.Size());
        interval.lower = list[f + 1 < 1 ? 0 : static_cast<std::size_t>(f)];
        interval.upper = list[static_cast<std::size_t>(up <= size ? up - 1 : size - 1)];
    }
    if (zeros > 0) {
        interval.estimate -= shift;
        interval.lower -= shift;
        interval.upper -= shift;
    }
    return interval;
}

Table Result(const std::vector<WeightedDifference>& sample, bool weighted, double confidence = 0.95) {
    Fields fields;
    fields.Continuous("before").Continuous("after");
    if (weighted) fields.Weight("w");
    Rows rows;
    for (const auto& [difference, weight] : sample) {
        rows.push_back({0, difference});
        if (weighted) rows.back().push_back(weight);
    }
    return pairs::ResultOf("RHodgesLehmannEstimatePairs", Entry({"before", "after"}), fields, std::move(rows),
                           {{"confidenceLevel", confidence}});
}

Table ResultOf(const std::vector<double>& differences, double confidence = 0.95) {
    std::vector<WeightedDifference> sample;
    for (const double difference : differences) sample.push_back({difference, 1});
    return Result(sample, false, confidence);
}

/// Estimate, lower and upper end.
std::vector<std::string> Values(const Table& test) {
    const Table statistics = test.Sub("StatisticsResult");
    const Table interval = statistics.Sub("Asymptotic");
    return {statistics.Row("Estimate"), interval.Row("Lower"), interval.Row("Upper")};
}

// ---- Element ----

TEST(HodgesLehmannPairs, GivesAnEstimateWithAnIntervalAndNoDecision) {
    const Table test = ResultOf({1, 2, 4});
    EXPECT_EQ(test.Attribute("name"), "RHodgesLehmannEstimatePairs");
    EXPECT_EQ(test.Attribute("type"), "confidence_interval");
    EXPECT_EQ(test.Attribute("classification"), "Related_Samples");
    EXPECT_TRUE(test.Node().attribute("decision").empty());
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "R_HodgesLehman_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(), Texts({"Attribute Estimate", "StructuredTable Asymptotic"}));
    EXPECT_EQ(test.Sub("StatisticsResult").Sub("Asymptotic").ChildNames(),
              Texts({"Attribute Lower", "Attribute Upper"}));
}

// ---- Estimate ----

TEST(HodgesLehmannPairs, OneRecordIsItsOwnEstimateAndInterval) {
    EXPECT_EQ(Values(ResultOf({2.5})), Texts({"2.5", "2.5", "2.5"}));
}

TEST(HodgesLehmannPairs, WideIntervalClampsToTheFirstAndLastAverage) {
    // 1 1.5 2 2.5 3 4, positions 3 -+ 1.96 * sqrt(3.5): from -0.67 to 6.67.
    EXPECT_EQ(Values(ResultOf({1, 2, 4})), Texts({"2.25", "1", "4"}));
}

TEST(HodgesLehmannPairs, IntervalEndsAtThePositionsOfTheRankMoments) {
    // Differences 1 to 8: N = 8, mean 18, variance 9 * 8 * 17 / 24 = 51. At a level of 0.5 q = norm.ppf(0.75) =
    // 0.674..., so positions floor(13.18) + 1 = 14 and ceil(22.82) = 23. The 36 averages have at most 1, 1.5, ...
    // the counts 1 1 2 2 3 3 4 4 ...: up to 3.5 there are 12, up to 4 16, up to 4.5 20, up to 5 24.
    EXPECT_EQ(Values(ResultOf({1, 2, 3, 4, 5, 6, 7, 8}, 0.5)), Texts({"4.5", "4", "5"}));
}

TEST(HodgesLehmannPairs, LevelOfOneTakesInAllAverages) {
    EXPECT_EQ(Values(ResultOf({1, 2, 3, 4, 5, 6, 7, 8}, 1.0)), Texts({"4.5", "1", "8"}));
}

TEST(HodgesLehmannPairs, LevelOfZeroHasPositionsAroundTheMiddle) {
    // mean 18: positions 19 and 18, both of the value 4.5.
    EXPECT_EQ(Values(ResultOf({1, 2, 3, 4, 5, 6, 7, 8}, 0.0)), Texts({"4.5", "4.5", "4.5"}));
}

TEST(HodgesLehmannPairs, EvenTotalTakesTheMeanOfTheTwoAveragesInTheMiddle) {
    // -1 0.5 2 3 3.5 | 4.5 5 7 7.5 8
    EXPECT_EQ(Values(ResultOf({-1, 2, 7, 8}))[0], "4");
}

TEST(HodgesLehmannPairs, WeightOfTwoHasADiagonalOfThreeAndProductsWithOthers) {
    // 1 twice, 5 three times: 1 has 3, 3 has 6, 5 has 6; of 15 the eighth is 3. With 5 four times: 3, 8, 10 of 21.
    EXPECT_EQ(Values(Result({{1, 2}, {5, 3}}, true))[0], "3");
    EXPECT_EQ(Values(Result({{1, 2}, {5, 4}}, true))[0], "3");
    EXPECT_EQ(Values(Result({{1, 2}, {5, 1}}, true))[0], "2");  // 3, 2, 1: the half of 6 is just reached by 1
}

TEST(HodgesLehmannPairs, WeightCountsAsEqualRecords) {
    EXPECT_EQ(Values(Result({{1, 2}, {4, 3}, {6, 1}, {11, 2}}, true)), Values(ResultOf({1, 1, 4, 4, 4, 6, 11, 11})));
}

TEST(HodgesLehmannPairs, RecordWithoutWeightTakesPartInTheListOnly) {
    // 1 has 3, 3 has 2, 5 has 1; after 1 comes 1.5, which 2 makes with 1 without any weight.
    EXPECT_EQ(Values(Result({{1, 2}, {5, 1}, {2, 0}}, true))[0], "1.25");
}

// ---- Zero differences ----

TEST(HodgesLehmannPairs, ZeroDifferenceAmongPositiveOnesIsShiftedAndBack) {
    // 0 0.5 1 | 2.5 3 5, with a shift of 1 on the way.
    EXPECT_EQ(Values(ResultOf({0, 1, 5})), Texts({"1.75", "0", "5"}));
    EXPECT_EQ(Values(ResultOf({0, 2, 4})), Texts({"2", "0", "4"}));
}

TEST(HodgesLehmannPairs, AllDifferencesZeroGiveZeros) {
    EXPECT_EQ(Values(ResultOf({0, 0, 0})), Texts({"0", "0", "0"}));
}

TEST(HodgesLehmannPairs, ShiftGoesByTheSmallestDifferenceNegativeOnesToo) {
    // Shifted by 4: 1, 4, 9; the averages less 4 are -3 -1.5 0 1 2.5 5.
    EXPECT_EQ(Values(ResultOf({-3, 0, 5})), Texts({"0.5", "-3", "5"}));
}

TEST(HodgesLehmannPairs, ZeroDifferencesChangeTheTiesThroughTheShift) {
    // -2, 0, 2 have two equal |d|, shifted to 1, 3, 5 they have none: the variance is 3.5 and not 3.375. At a level of
    // 0.41 q = norm.ppf(0.705) = 0.539: positions floor(3 - q * 1.8708) + 1 = 2 and ceil(3 + q * 1.8708) = 5 of
    // -2 -1 0 0 1 2; with 3.375 they would be 3 and 4.
    EXPECT_EQ(Values(ResultOf({-2, 0, 2}, 0.41)), Texts({"0", "-1", "1"}));
}

TEST(HodgesLehmannPairs, ZeroDifferenceWithoutWeightShiftsNothing) {
    const Interval expected = Reference({{0.3, 1}, {-0.1, 2}, {0, 0}}, true);
    EXPECT_EQ(Values(Result({{0.3, 1}, {-0.1, 2}, {0, 0}}, true)), TextsOf(expected));
}

// ---- The whole definition ----

TEST(HodgesLehmannPairs, AgreesWithTheListOfAllAveragesWithTiesWeightsZerosAndShift) {
    std::mt19937_64 random(6502);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int round = 0; round < 2000; ++round) {
        const bool weighted = round % 2 == 0;
        const int spread = 1 + upTo(12);
        std::vector<WeightedDifference> sample(1 + static_cast<std::size_t>(upTo(14)));
        for (WeightedDifference& entry : sample) {
            // Quarters keep their value through the shift; other numbers may become equal by it or cease to be.
            entry.difference = (upTo(2 * spread) - spread) * 0.25;
            entry.weight = weighted ? upTo(3) : 1;
        }
        if (weighted) sample.front().weight = 1;
        ASSERT_EQ(Values(Result(sample, weighted)), TextsOf(Reference(sample, weighted))) << round;
    }
}

TEST(HodgesLehmannPairs, AgreesWithTheListForNumbersThatRoundInTheShift) {
    std::mt19937_64 random(6503);
    std::normal_distribution<double> normal(0.3, 7);
    for (int round = 0; round < 500; ++round) {
        std::vector<WeightedDifference> sample(2 + static_cast<std::size_t>(round % 17));
        for (WeightedDifference& entry : sample) entry = {normal(random), 1};
        if (round % 3 == 0) sample.front().difference = 0;
        ASSERT_EQ(Values(Result(sample, false)), TextsOf(Reference(sample, false))) << round;
    }
}

// ---- 32 bits ----

TEST(HodgesLehmannPairs, MeanRankWrapsAboveFortySixThousandAndTakesTheIntervalWithIt) {
    // The estimate keeps its width: of averages 1, 1.5 and 2 the middle one holds the middle of the weight.
    EXPECT_EQ(Values(Result({{1, 20000}, {2, 26340}}, true)), Texts({"1.5", "1.5", "1.5"}));  // N = 46340
    EXPECT_EQ(Values(Result({{1, 20000}, {2, 26341}}, true)), Texts({"1.5", "1", "1"}));      // a negative mean
}

TEST(HodgesLehmannPairs, WeightsWhoseProductsExceed32BitsKeepTheEstimate) {
    EXPECT_EQ(Values(Result({{1, 500000000}, {2, 500000000}, {3, 500000000}}, true))[0], "2");
}

// ---- Records ----

TEST(HodgesLehmannPairs, WeightIsTruncatedAndMissingValuesCostTheRecord) {
    Fields fields;
    fields.Continuous("before").Continuous("after").Weight("w");
    const Table test = pairs::ResultOf("RHodgesLehmannEstimatePairs", Entry({"before", "after"}), fields,
                                       {{0, 1, 2.9}, {0, 5, 1.2}, {harness::kNone, 100, 5}, {0, harness::kNone, 5}});
    EXPECT_EQ(Values(test)[0], "2");
}

TEST(HodgesLehmannPairs, ReadsTheConfidenceLevelNotTheSignificanceLevel) {
    Fields fields;
    fields.Continuous("before").Continuous("after");
    Rows rows;
    for (int i = 1; i <= 8; ++i) rows.push_back({0, static_cast<double>(i)});
    const Table test =
        pairs::ResultOf("RHodgesLehmannEstimatePairs", Entry({"before", "after"}), fields, rows, {{"sigLevel", 0.5}});
    // At 0.95: floor(18 - 13.997) + 1 = 5 and ceil(31.997) = 32.
    EXPECT_EQ(Values(test), Texts({"4.5", "2.5", "6.5"}));
}

/// A test that has its records and waits for the end of the pass.
std::unique_ptr<TARNHodgesLehmannPairs> BeforeTheEndOfThePass() {
    auto settings = std::make_unique<QKSettings>();
    AddVecSetting(*settings, "variableIndex", std::vector<int>{0, 1}, false);
    auto test = std::make_unique<TARNHodgesLehmannPairs>(std::move(settings));
    EXPECT_FALSE(test->BeginPass().IsError());
    Record record(2);
    for (const double difference : {3.0, 0.0, -1.0}) {
        record[1] = difference;
        EXPECT_FALSE(test->ProcessRecord(record).IsError());
    }
    return test;
}

TEST(HodgesLehmannPairs, MakesOnePass) {
    const auto test = BeforeTheEndOfThePass();
    EXPECT_EQ(test->GetPassKind(), 1);
    ASSERT_FALSE(test->EndPass().IsError());
    EXPECT_EQ(test->GetPassKind(), 0);
    EXPECT_FALSE(test->NeedsAnotherPass());
}

TEST(HodgesLehmannPairs, ExhaustedMemoryIsReportedNotThrown) {
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        const auto test = BeforeTheEndOfThePass();
        long code = 0;
        {
            const component_test::AllocationFailure failure(failures);
            code = test->EndPass().GetErrorCode();
            failed = component_test::AllocationFailure::HasFailed();
        }
        EXPECT_EQ(code, failed ? 220012 : 0) << failures;
        EXPECT_EQ(test->GetPassKind(), 0);
        const std::unique_ptr<QKXML::XMLElement> element(test->MakeResultElement());
        const QKXML::XMLElement* second = element->GetChildren()[1]->AsElement();
        EXPECT_EQ(second->GetAttributes()[0].second, failed ? "WarningMessages" : "StatisticsResult");
    }
    EXPECT_GE(failures, 3);
}

}  // namespace
