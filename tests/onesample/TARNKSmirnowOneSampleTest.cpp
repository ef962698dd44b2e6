// The Kolmogorov-Smirnov test of one field. Reference values: scipy 1.17, scipy.stats.kstest(x, cdf) for the largest
// difference, its two sides by the same definition in NumPy, significances by scipy.stats.kstwobign.sf(sqrt(n) D) and,
// for Lilliefors', by the formula named in LillieforsSignificanceTest.cpp; scipy.stats.poisson.cdf; the rest by hand.

#include "onesample/TARNKSmirnowOneSample.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "tests/onesample/KSmirnowRun.h"

namespace {

using harness::Columns;
using harness::MessagesOf;
using harness::Number;
using harness::Rows;
using harness::Table;
using harness::Texts;
using ksone::Extremes;
using ksone::kExponential;
using ksone::kNormal;
using ksone::kPoisson;
using ksone::kUniform;
using ksone::Result;
using ksone::ResultOf;
using ksone::Statistics;
using ksone::UseSample;

constexpr double kTolerance = 1e-12;

const std::vector<double> kValues{6.4, 3.1, 12.5, 4.7, 5.0, 9.6, 5.0, 5.2, 6.4, 7.9, 6.4, 8.3};

struct Expected {
    double positive, negative, z, significance;
};

void ExpectStatistics(const Table& test, const Expected& expected) {
    EXPECT_NEAR(Number(Extremes(test), "Absolute"), std::max(expected.positive, -expected.negative), kTolerance);
    EXPECT_NEAR(Number(Extremes(test), "Positive"), expected.positive, kTolerance);
    EXPECT_NEAR(Number(Extremes(test), "Negative"), expected.negative, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), expected.z, kTolerance);
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), expected.significance, kTolerance);
}

// ---- Given parameters ----

TEST(KolmogorovSmirnovOneSample, NormalWithGivenParameters) {
    const Table test = Result(kNormal, {{"mean", 6}, {"stdDev", 2}}, kValues);
    EXPECT_EQ(test.Attribute("name"), "OKolmogorovSmirnov");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "One_Sample");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(Statistics(test).ChildNames(), Texts({"Attribute TotalN", "StructuredTable MostExtremeDifferences",
                                                    "Attribute TestStatistic", "Attribute AsymptoticSig2Tailed"}));
    EXPECT_EQ(Extremes(test).ChildNames(), Texts({"Attribute Absolute", "Attribute Positive", "Attribute Negative"}));
    EXPECT_EQ(Statistics(test).Row("TotalN"), "12");
    ExpectStatistics(test, {0.08740695722756353, -0.1745127774725314, 0.6045299943047716, 0.8582282368534416});

    const Table condition = test.Sub("Condition");
    EXPECT_EQ(condition.ChildNames(), Texts({"Attribute ConditionKey", "Attribute isUseSample", "Attribute %0",
                                             "Attribute %1", "Attribute %2"}));
    EXPECT_EQ(condition.Row("ConditionKey"), "NormalDistribution_O_KolmogorovSmirnov_3");
    EXPECT_EQ(condition.Row("isUseSample"), "false");
    EXPECT_EQ(condition.Row("%0"), "0");
    EXPECT_EQ(condition.Row("%1"), "6");
    EXPECT_EQ(condition.Row("%2"), "2");
}

TEST(KolmogorovSmirnovOneSample, UniformWithGivenRange) {
    const Table test = Result(kUniform, {{"min", 0}, {"max", 15}}, kValues);
    ExpectStatistics(test, {0.28, -0.23, 0.9699484522385713, 0.3036150540167628});
    const Table condition = test.Sub("Condition");
    EXPECT_EQ(condition.ChildNames(),
              Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1", "Attribute %2"}));
    EXPECT_EQ(condition.Row("ConditionKey"), "UniformDistribution_O_KolmogorovSmirnov_3");
    EXPECT_EQ(condition.Row("%1"), "0");
    EXPECT_EQ(condition.Row("%2"), "15");
}

TEST(KolmogorovSmirnovOneSample, ExponentialWithGivenMean) {
    const Table test = Result(kExponential, {{"mean", 7}}, kValues);
    ExpectStatistics(test, {0.1704108754466359, -0.4056885792310499, 1.4053464625572207, 0.03850923032498736});
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_EQ(test.Sub("Condition").ChildNames(), Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "ExponentialDistribution_O_KolmogorovSmirnov_2");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "7");
}

// ---- Estimated parameters ----

TEST(KolmogorovSmirnovOneSample, WhatIsNotGivenComesFromTheSample) {
    const Table normal = Result(kNormal, {}, kValues);
    ExpectStatistics(normal, {0.21486075172960883, -0.13178507285944008, 0.74429947709625, 0.6367701545065692});
    EXPECT_NEAR(Number(normal.Sub("Condition"), "%1"), 6.708333333333333, kTolerance);
    EXPECT_NEAR(Number(normal.Sub("Condition"), "%2"), 2.5461051657682003, kTolerance);
    const Table exponential = Result(kExponential, {}, kValues);
    ExpectStatistics(exponential, {0.15572303582972713, -0.42038970518375257, 1.4562726567143216, 0.0287730556210967});
    // With the range from the sample no value is refused, and half a range is none.
    for (const ksone::Parameters& parameters : {ksone::Parameters{}, {{"min", 5}}, {{"max", 6}}}) {
        const Table uniform = Result(kUniform, parameters, kValues);
        ExpectStatistics(uniform, {0.3156028368794326, -0.08687943262411348, 1.0932802969760997, 0.18302274571431534});
        EXPECT_EQ(uniform.Sub("Condition").Row("%1"), "3.1");
        EXPECT_EQ(uniform.Sub("Condition").Row("%2"), "12.5");
    }
}

TEST(KolmogorovSmirnovOneSample, NormalWithAllFromTheSampleIsLillieforsTest) {
    const Table test = ResultOf(kNormal, UseSample(), Columns({kValues}));
    EXPECT_EQ(test.Sub("Condition").Row("isUseSample"), "true");
    EXPECT_NEAR(Number(Statistics(test), "TestStatistic"), 0.21486075172960883, kTolerance);  // D itself, not z
    // Between the critical values 0.21 and D10 = 0.22345966200436862 of n = 12.
    const double expected = 0.15 - 0.05 * (0.21486075172960883 - 0.21) / (0.22345966200436862 - 0.21);
    EXPECT_NEAR(Number(Statistics(test), "AsymptoticSig2Tailed"), expected, 1e-7);
}

TEST(KolmogorovSmirnovOneSample, UseSampleIgnoresGivenParameters) {
    QKSettings entry = ksone::Entry({{"mean", 1}, {"stdDev", 1}});
    entry.AddSetting("isUseSample", true);
    const Table test = ResultOf(kNormal, entry, Columns({kValues}));
    EXPECT_NEAR(Number(test.Sub("Condition"), "%1"), 6.708333333333333, kTolerance);
    QKSettings range = ksone::Entry({{"min", 5}, {"max", 6}});
    range.AddSetting("isUseSample", true);
    EXPECT_EQ(ResultOf(kUniform, range, Columns({kValues})).Sub("Condition").Row("%2"), "12.5");
    EXPECT_FALSE(ResultOf(kUniform, range, Columns({kValues})).Sub("Condition").HasRow("isUseSample"));
}

TEST(KolmogorovSmirnovOneSample, SmallDifferenceShowsAFloor) {  // nearly normal scores; D about 0.05
    const Table test = ResultOf(kNormal, UseSample(), {{-1.5}, {-0.9}, {-0.5}, {-0.2}, {0.1}, {0.5}, {0.9}, {1.6}});
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), ">0.2");
    EXPECT_EQ(test.Attribute("decision"), "retain");
}

// The significance of a sample too small for one is the missing value, which lies below any level.
TEST(KolmogorovSmirnovOneSample, FourValuesHaveNoSignificanceAndReject) {
    const Table test = ResultOf(kNormal, UseSample(), {{1}, {2}, {4}, {8}});
    EXPECT_EQ(Statistics(test).Row("AsymptoticSig2Tailed"), "__MISSING__");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_NE(Statistics(ResultOf(kNormal, UseSample(), {{1}, {2}, {4}, {8}, {9}})).Row("AsymptoticSig2Tailed"),
              "__MISSING__");
}

// ---- Poisson ----

TEST(KolmogorovSmirnovOneSample, PoissonComparesBelowAndAtEachValue) {
    // 0, 1, 1, 3 with the mean 1.25: 0.25, 0.75, 0.75, 1 against 0.2865, 0.6446, 0.8685 (at 2), 0.9617.
    const Table test = Result(kPoisson, {}, {1, 3, 0, 1});
    EXPECT_EQ(test.Sub("Condition").ChildNames(), Texts({"Attribute ConditionKey", "Attribute %0", "Attribute %1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "PoissonDistribution_O_KolmogorovSmirnov_2");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1.25");
    ExpectStatistics(test, {0.75 - 0.6446357929354278, 0.75 - 0.8684676654824512, 2 * 0.1184676654824512, 1});
}

// In front of the first value a given minimum lets the count be 0, and it is then taken as 1.
TEST(KolmogorovSmirnovOneSample, PoissonTakesNoCountBelowTheFirstValueAsOne) {
    const Table test = Result(kPoisson, {{"mean", 5}, {"min", 0}, {"max", 100}}, {5, 5, 6});
    EXPECT_NEAR(Number(Extremes(test), "Negative"), 1.0 / 3 - 0.44049328506521257, kTolerance);
    EXPECT_NEAR(Number(Extremes(test), "Positive"), 1 - 0.7621834629729387, kTolerance);
    const Table fromSample = Result(kPoisson, {{"mean", 5}}, {5, 5, 6});
    EXPECT_NEAR(Number(Extremes(fromSample), "Negative"), -0.44049328506521257, kTolerance);
}

TEST(KolmogorovSmirnovOneSample, PoissonMeanOfAHundredThousandTakesTheNormalFunction) {
    const Table normal = Result(kPoisson, {{"mean", 100000}}, {100000});
    EXPECT_EQ(MessagesOf(normal), Texts({"220309 helpMessage"}));
    EXPECT_EQ(Extremes(normal).Row("Positive"), "0.5");
    EXPECT_NEAR(Number(Extremes(normal), "Negative"), -0.4987384358415972, kTolerance);  // norm.cdf(-1 / sqrt(1e5))
    const Table poisson = Result(kPoisson, {{"mean", 99999}}, {99999});
    EXPECT_TRUE(MessagesOf(poisson).empty());
    EXPECT_NEAR(Number(Extremes(poisson), "Positive"), 1 - 0.5008410473045763, 1e-9);
    EXPECT_NEAR(Number(Extremes(poisson), "Negative"), -0.4995794757870083, 1e-9);
}

// ---- Values and weights ----

TEST(KolmogorovSmirnovOneSample, EqualValuesAreOneStepAndWholeWeightsRepeat) {
    const Table repeated = Result(kNormal, {{"mean", 6}, {"stdDev", 2}}, {5, 5, 5, 7, 8, 8});
    const Table weighted =
        ResultOf(kNormal, ksone::Entry({{"mean", 6}, {"stdDev", 2}}), {{7, 1.9}, {5, 2.2}, {8, 2}, {5, 1}, {6, 0.9}});
    EXPECT_EQ(Statistics(weighted).Row("TotalN"), "6");
    EXPECT_EQ(Statistics(weighted).Row("TestStatistic"), Statistics(repeated).Row("TestStatistic"));
    EXPECT_NEAR(Number(Extremes(repeated), "Positive"), 0.5 - 0.3085375387259869, kTolerance);
    EXPECT_NEAR(Number(Extremes(repeated), "Negative"), -0.3085375387259869, kTolerance);
}

// A record without weight that follows when all weight is spent closes the run once more, and what lies below the value
// of a Poisson sample is then the whole sample: 1 against 0.8685 at 2, where the run itself had 0.75.
TEST(KolmogorovSmirnovOneSample, RecordWithoutWeightBehindTheWholeWeightIsARunOfItsOwn) {
    const QKSettings entry = ksone::Entry({{"mean", 1.25}});
    const Table test = ResultOf(kPoisson, entry, {{0, 1}, {1, 2}, {3, 1}, {3, 0}});
    EXPECT_NEAR(Number(Extremes(test), "Positive"), 1 - 0.8684676654824512, kTolerance);
    const Table inFront = ResultOf(kPoisson, entry, {{0, 1}, {1, 2}, {3, 0}, {3, 1}});
    EXPECT_NEAR(Number(Extremes(inFront), "Positive"), 0.75 - 0.6446357929354278, kTolerance);
}

TEST(KolmogorovSmirnovOneSample, OrderOfTheRecordsAndMissingOnesDoNotMatter) {
    Rows rows = Columns({kValues});
    std::reverse(rows.begin(), rows.end());
    rows.push_back({harness::kNone});
    ExpectStatistics(ResultOf(kNormal, ksone::Entry({{"mean", 6}, {"stdDev", 2}}), rows),
                     {0.08740695722756353, -0.1745127774725314, 0.6045299943047716, 0.8582282368534416});
}

TEST(KolmogorovSmirnovOneSample, SideWithoutADifferenceShowsZero) {
    const Table below = Result(kNormal, {{"mean", 0}, {"stdDev", 1}}, {100, 101});  // the whole mass lies below
    EXPECT_EQ(Extremes(below).Row("Positive"), "0");
    EXPECT_EQ(Extremes(below).Row("Negative"), "-1");
    EXPECT_EQ(Statistics(below).Row("TestStatistic"), "1.4142135623731");
    const Table above = Result(kNormal, {{"mean", 0}, {"stdDev", 1}}, {-100, -101});
    EXPECT_EQ(Extremes(above).Row("Positive"), "1");
    EXPECT_EQ(Extremes(above).Row("Negative"), "0");
}

TEST(KolmogorovSmirnovOneSample, GivenRangeCutsTheEmpiricalFunctionOfAnyDistribution) {
    // 3, 5, 10 with the range 4 .. 9: shares 0, 2/3 and 1 against 0.0668, 0.3085 and 0.9772.
    const Table test = Result(kNormal, {{"mean", 6}, {"stdDev", 2}, {"min", 4}, {"max", 9}}, {3, 5, 10});
    EXPECT_NEAR(Number(Extremes(test), "Positive"), 2.0 / 3 - 0.3085375387259869, kTolerance);
    EXPECT_NEAR(Number(Extremes(test), "Negative"), 2.0 / 3 - 0.9772498680518208, kTolerance);
}

TEST(KolmogorovSmirnovOneSample, OneValueHalfwayUpTheRange) {  // D = 0.5 on both sides
    ExpectStatistics(Result(kUniform, {{"min", 0}, {"max", 6}}, {3}), {0.5, -0.5, 0.5, 0.9639452436648751});
}

TEST(KolmogorovSmirnovOneSample, SignificanceEqualToTheLevelRetains) {
    Rows even;  // D = 1 / 800, z = 0.025: the significance is 1
    for (int i = 1; i <= 400; ++i) even.push_back({static_cast<double>(i)});
    const QKSettings entry = ksone::Entry({{"min", 0.5}, {"max", 400.5}});
    EXPECT_EQ(ResultOf(kUniform, entry, even, 1.0).Attribute("decision"), "retain");
    EXPECT_EQ(ResultOf(kUniform, entry, even, 1.1).Attribute("decision"), "reject");
}

TEST(KolmogorovSmirnovOneSample, CountsItsPassesDown) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    TARNKSmirnowOneSample test(std::move(settings));
    for (const int pass : {0, 1}) {
        ASSERT_FALSE(test.BeginPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 2 - pass);
        for (const double value : {1.0, 2.0, 4.0}) {
            Record record(1);
            record[0] = value;
            ASSERT_FALSE(test.ProcessRecord(record).IsError());
        }
        ASSERT_FALSE(test.EndPass().IsError());
        EXPECT_EQ(test.NeedsAnotherPass(), pass == 0);
    }
    EXPECT_EQ(test.GetPassKind(), 0);
    EXPECT_FALSE(test.NeedsAnotherPass());
}

}  // namespace
