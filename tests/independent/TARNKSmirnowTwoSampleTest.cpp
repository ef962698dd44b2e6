// The Kolmogorov-Smirnov test of two groups. Reference values: scipy 1.17, scipy.stats.ks_2samp for the largest
// difference and scipy.stats.kstwobign.sf(z) for its significance; the two sides by the definition in NumPy.

#include "independent/TARNKSmirnowTwoSample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>

#include "tests/harness/WithinUlp.h"
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

constexpr const char* kTest = "IKolmogorovSmirnov";
constexpr double kTolerance = 1e-14;

Table Result(Rows rows, const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), TwoFields(), std::move(rows), common);
}
Table WeightedResult(Rows rows) {
    return groups::ResultOf(kTest, Entry(), groups::WeightedFields(), std::move(rows));
}
Table Statistics(const Table& test) {
    return test.Sub("StatisticsResult");
}
Table Extremes(const Table& test) {
    return Statistics(test).Sub("MostExtremeDifferences");
}

const std::vector<double> kFive{1.1, 2.3, 4.5, 6.7, 8.2};
const std::vector<double> kSeven{0.4, 3.1, 3.3, 9.9, 10.5, 12.0, 13.1};

// ---- Statistic ----

TEST(KolmogorovSmirnovTwoSample, ShowsStatisticsAndThenTheGroups) {
    const Table test = Result(RowsOf({kFive, kSeven}));
    EXPECT_EQ(test.Attribute("name"), "IKolmogorovSmirnov");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable StatisticsResult",
                                        "StructuredTable Group0", "StructuredTable Group1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(Statistics(test).ChildNames(), Texts({"Attribute TotalN", "StructuredTable MostExtremeDifferences",
                                                    "Attribute TestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(Extremes(test).ChildNames(), Texts({"Attribute Absolute", "Attribute Positive", "Attribute Negative"}));
    EXPECT_EQ(test.Sub("Group0").ChildNames(), Texts({"Attribute GroupIndex", "Attribute N", "SimpleTable Interval"}));
    EXPECT_EQ(test.Sub("Group0").Row("GroupIndex"), "0");
    EXPECT_EQ(test.Sub("Group0").Row("N"), "5");
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval"), Texts({"1;1;1;1;1", "1.1;2.3;4.5;6.7;8.2"}));
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "1");
    EXPECT_EQ(test.Sub("Group1").Row("N"), "7");
}

TEST(KolmogorovSmirnovTwoSample, AgreesWithSciPyAndTakesItsSignFromTheLargerGroup) {
    for (const Rows& rows : {RowsOf({kFive, kSeven}), RowsOf({kSeven, kFive})}) {  // the larger one less the smaller
        const Table test = Result(rows);
        EXPECT_EQ(Statistics(test).Row("TotalN"), "12");
        EXPECT_NEAR(Number(Extremes(test), "Absolute"), 4.0 / 7, kTolerance);
        EXPECT_NEAR(Number(Extremes(test), "Positive"), 1.0 / 7, kTolerance);
        EXPECT_NEAR(Number(Extremes(test), "Negative"), -4.0 / 7, kTolerance);
        EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 0.9759000729485331, kTolerance);
        EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.29673421491026475, kTolerance);
    }
}

TEST(KolmogorovSmirnovTwoSample, OfEqualGroupsItIsTheFirstLessTheSecond) {
    const std::vector<double> first{1, 2, 2, 5, 6, 8};
    const std::vector<double> second{3, 2, 4, 4, 9, 10};
    const Table test = Result(RowsOf({first, second}));
    EXPECT_NEAR(Number(Extremes(test), "Positive"), 1.0 / 3, kTolerance);
    EXPECT_NEAR(Number(Extremes(test), "Negative"), -1.0 / 6, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.8927783372501086, kTolerance);
    const Table swapped = Result(RowsOf({second, first}));
    EXPECT_NEAR(Number(Extremes(swapped), "Positive"), 1.0 / 6, kTolerance);
    EXPECT_NEAR(Number(Extremes(swapped), "Negative"), -1.0 / 3, kTolerance);
}

TEST(KolmogorovSmirnovTwoSample, TiesAcrossTheGroupsAreOneStep) {
    const Rows rows = RowsOf({{1, 1, 2, 2, 3, 5, 5, 5}, {2, 2, 3, 3, 3, 6, 7, 7, 7, 8}});
    for (const Rows& ordered : {rows, Rows(rows.rbegin(), rows.rend())}) {  // whatever the order within a tie
        const Table test = Result(ordered);
        EXPECT_EQ(Extremes(test).Row("Positive"), "0");
        EXPECT_EQ(Extremes(test).Row("Negative"), "-0.5");
        EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 1.0540925533894598, kTolerance);
        EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.21646022494742512, kTolerance);
    }
}

TEST(KolmogorovSmirnovTwoSample, EqualSamplesHaveNoDifference) {
    for (const Rows& rows : {RowsOf({{1, 2, 3}, {1, 2, 3}}), RowsOf({{4, 4}, {4, 4, 4}})}) {
        const Table test = Result(rows, {{"sigLevel", 1.0}});
        for (const char* row : {"Absolute", "Positive", "Negative"}) EXPECT_EQ(Extremes(test).Row(row), "0") << row;
        EXPECT_EQ(Statistics(test).Row("TestStatistic"), "0");
        EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "1");
        EXPECT_EQ(test.Attribute("decision"), "retain");  // a level that is just reached
    }
}

TEST(KolmogorovSmirnovTwoSample, GroupsApartDifferByOne) {
    std::vector<double> low;
    std::vector<double> high;
    for (int i = 1; i <= 20; ++i) {
        low.push_back(i);
        high.push_back(100 + i);
    }
    const Table test = Result(RowsOf({low, high}));
    EXPECT_EQ(Extremes(test).Row("Absolute"), "1");
    EXPECT_EQ(Extremes(test).Row("Positive"), "1");
    EXPECT_EQ(Extremes(test).Row("Negative"), "0");
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "0");  // z = sqrt(10) is above 3.1
    EXPECT_EQ(test.Attribute("decision"), "reject");
}

TEST(KolmogorovSmirnovTwoSample, OneRecordInEachGroup) {  // z = sqrt(1 / 2), kstwobign.sf(0.7071067811865476)
    const Table test = Result(RowsOf({{1}, {2}}));
    EXPECT_EQ(Extremes(test).Row("Absolute"), "1");
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), 0.6993741991310154, kTolerance);
}

TEST(KolmogorovSmirnovTwoSample, SmallStatisticHasTheSignificanceOne) {
    std::vector<double> values;
    for (int i = 1; i <= 20; ++i) values.push_back(i);
    std::vector<double> moved = values;
    moved[7] = 8.5;  // D = 0.05, z = 0.16
    EXPECT_EQ(Statistics(Result(RowsOf({values, moved}))).Row("AsymptoticSig2Tailed"), "1");
}

// ---- Weights and records ----

TEST(KolmogorovSmirnovTwoSample, WeightsRepeatAndAreTruncated) {
    const Table repeated = Result(RowsOf({{1, 2, 2, 2, 3, 3, 3, 3}, {2, 2, 3, 3, 3, 4}}));
    const Table weighted =
        WeightedResult({{3, 0, 4.7}, {1, 0, 1}, {2, 0, 3.2}, {3, 1, 3}, {2, 1, 2}, {4, 1, 1.5}, {9, 1, 0.9}});
    EXPECT_EQ(Statistics(weighted).Row("TotalN"), "14");
    EXPECT_NEAR(Number(Statistics(weighted), "TestStatistic"), 0.30860669992418377, kTolerance);
    EXPECT_EQ(Statistics(weighted).Row("TestStatistic"), Statistics(repeated).Row("TestStatistic"));
    EXPECT_EQ(weighted.Sub("Group0").SimpleRows("Interval"), Texts({"1;3;4", "1;2;3"}));
}

// The walk passes over differences that can't be extreme: here each is taken, as it is defined.
TEST(KolmogorovSmirnovTwoSample, ExtremesAreThoseOfAllDifferences) {
    std::mt19937 random(20264);
    for (int round = 0; round < 40; ++round) {
        const unsigned grid = round % 4 == 0 ? 5 : 100'000;
        const int shift = round % 3 - 1;
        Rows rows;
        for (int i = 0; i < 400; ++i) {
            const int group = random() % 3 == 0 ? 1 : 0;
            const double value = random() % grid + shift * group * grid / 50.0;
            rows.push_back({value, static_cast<double>(group), static_cast<double>(random() % 4)});
        }
        double size[2] = {0, 0};
        for (const std::vector<double>& row : rows) size[row[1] == 1] += row[2];
        const bool isSecondLarger = size[1] > size[0];
        double positive = 0;
        double negative = 0;
        for (const std::vector<double>& at : rows) {
            double below[2] = {0, 0};
            for (const std::vector<double>& row : rows) below[row[1] == 1] += row[0] <= at[0] ? row[2] : 0;
            const double difference = (below[0] / size[0] - below[1] / size[1]) * (isSecondLarger ? -1 : 1);
            positive = std::max(positive, difference);
            negative = std::min(negative, difference);
        }
        const Table test = WeightedResult(rows);
        EXPECT_NEAR(Number(Extremes(test), "Positive"), positive, kTolerance) << round;
        EXPECT_NEAR(Number(Extremes(test), "Negative"), negative, kTolerance) << round;
    }
}

TEST(KolmogorovSmirnovTwoSample, MissingValuesCostTheRecord) {
    Rows rows = RowsOf({kFive, kSeven});
    rows.push_back({harness::kNone, 0});
    rows.push_back({5, harness::kNoCategory});
    const Table test = Result(rows);
    EXPECT_EQ(Statistics(test).Row("TotalN"), "12");
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 0.9759000729485331, kTolerance);
}

TEST(KolmogorovSmirnovTwoSample, ZerosComeLastInTheIntervals) {
    const Table test = Result(RowsOf({{0, -1, 3, 0}, {1, 2}}));
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval"), Texts({"1;1;2", "-1;3;0"}));
}

TEST(KolmogorovSmirnovTwoSample, PairsWrapWithTwoGroupsOf65536) {
    const auto statistic = [](double n) {
        return Number(Statistics(WeightedResult({{1, 0, n}, {2, 1, n}})), "TestStatistic");
    };
    EXPECT_TRUE(harness::WithinUlp(statistic(65535), std::sqrt(65535 / 2.0), harness::kUlpsOfFifteenDigits));
    EXPECT_EQ(statistic(65536), 0);  // 2 to the 32nd pairs are none
}

}  // namespace
