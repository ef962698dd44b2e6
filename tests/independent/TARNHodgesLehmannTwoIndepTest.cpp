// The Hodges-Lehmann estimate of the shift of two groups. Reference values: the list of all differences, made and
// searched as the definition says (PlainWeightedList), differences worked by hand, and scipy 1.17 for the normal
// quantile.

#include "independent/TARNHodgesLehmannTwoIndep.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <random>

#include "support/TextMakers.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/harness/PlainWeightedList.h"
#include "tests/independent/GroupRun.h"

namespace {

using groups::Entry;
using groups::Failure;
using groups::FailureOf;
using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using groups::TwoFields;
using harness::MessagesOf;
using harness::Table;

constexpr const char* kTest = "IHodgesLehmannEstimateGroups";
constexpr double kQuantile95 = 1.959963984540054;  // norm.ppf(0.975)

using Sample = std::vector<WeightedDifference>;

/// Estimate, lower and upper end by the definition at a confidence level of 0.95, from the list of all differences.
std::vector<std::string> Reference(const Sample& first, const Sample& second, bool weighted) {
    const PlainWeightedList list = PlainWeightedList::OfDifferences(first, second);
    double n1 = 0;
    double n2 = 0;
    Sample pooled;
    for (const WeightedDifference& entry : first) n1 += entry.weight;
    for (const WeightedDifference& entry : second) n2 += entry.weight;
    for (const Sample* sample : {&first, &second}) pooled.insert(pooled.end(), sample->begin(), sample->end());
    std::stable_sort(pooled.begin(), pooled.end(),
                     [](const auto& a, const auto& b) { return a.difference < b.difference; });
    double ties = 0;
    double run = 0;
    for (std::size_t i = 0; i < pooled.size(); ++i) {
        if (i > 0 && pooled[i].difference != pooled[i - 1].difference) {
            ties += run > 1 ? run * run * run - run : 0;
            run = 0;
        }
        run += pooled[i].weight;
    }  // the run of the largest value is left out
    const double n = n1 + n2;
    const double mean = n1 * n2 / 2;
    const double error = std::sqrt((1 - ties / ((n * n - 1) * n)) * ((n + 1) * n1 * n2 / 12));
    const auto a = static_cast<std::int64_t>(std::floor(mean - kQuantile95 * error));
    const auto b = static_cast<std::int64_t>(std::ceil(mean + kQuantile95 * error));
    double lower = 0;
    double upper = 0;
    if (weighted) {
        lower = list.Lookup(static_cast<double>(a + 1));
        upper = list.Lookup(static_cast<double>(b));
    } else {
        const auto size = static_cast<std::int64_t>(list.Size());
        lower = list[a + 1 < 1 ? 0 : static_cast<std::size_t>(a)];
        upper = list[static_cast<std::size_t>(b > size ? size - 1 : b - 1)];
    }
    return {DoubleToString(list.Median()), DoubleToString(lower), DoubleToString(upper)};
}

/// Estimate, lower and upper end.
std::vector<std::string> Values(const Table& test) {
    const Table statistics = test.Sub("StatisticsResult");
    const Table interval = statistics.Sub("Asymptotic");
    return {statistics.Row("Estimate"), interval.Row("Lower"), interval.Row("Upper")};
}

std::vector<std::string> ValuesOf(const std::vector<double>& first, const std::vector<double>& second,
                                  double confidence = 0.95) {
    return Values(
        groups::ResultOf(kTest, Entry(), TwoFields(), RowsOf({first, second}), {{"confidenceLevel", confidence}}));
}

Table Weighted(const Sample& first, const Sample& second) {
    Rows rows;
    for (const auto& [value, weight] : first) rows.push_back({value, 0, static_cast<double>(weight)});
    for (const auto& [value, weight] : second) rows.push_back({value, 1, static_cast<double>(weight)});
    return groups::ResultOf(kTest, Entry(), groups::WeightedFields(), rows);
}

// ---- Element ----

TEST(HodgesLehmannTwoGroups, GivesAnEstimateWithAnIntervalAndNoDecision) {
    const Table test = groups::ResultOf(kTest, Entry(), TwoFields(), RowsOf({{1, 4, 9}, {0, 2}}));
    EXPECT_EQ(test.Attribute("name"), "IHodgesLehmannEstimateGroups");
    EXPECT_EQ(test.Attribute("type"), "confidence_interval");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_TRUE(test.Node().attribute("decision").empty());
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "AllDistinctValuesUsed_I_HodgesLehman_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(), Texts({"Attribute Estimate", "StructuredTable Asymptotic"}));
    EXPECT_EQ(test.Sub("StatisticsResult").Sub("Asymptotic").ChildNames(),
              Texts({"Attribute Lower", "Attribute Upper"}));
}

// ---- Estimate ----

TEST(HodgesLehmannTwoGroups, OneRecordPerGroupIsOneDifference) {
    EXPECT_EQ(ValuesOf({5}, {7.5}), Texts({"-2.5", "-2.5", "-2.5"}));
    EXPECT_EQ(Values(Weighted({{5, 3}}, {{7.5, 2}})), Texts({"-2.5", "-2.5", "-2.5"}));
}

TEST(HodgesLehmannTwoGroups, EvenNumberOfDifferencesTakesTheMeanOfTheTwoInTheMiddle) {
    // -1 1 2 4 7 9. Positions 3 -+ 1.96 * sqrt(6 * 6 / 12): from -0.39 to 6.39, wider than the data.
    EXPECT_EQ(ValuesOf({1, 4, 9}, {0, 2}), Texts({"3", "-1", "9"}));
    EXPECT_EQ(ValuesOf({1, 4, 9}, {2}), Texts({"2", "-1", "7"}));
}

TEST(HodgesLehmannTwoGroups, HeavyWeightOnOneDifferenceIsTheEstimateWithoutAveraging) {
    // -1 has 1, 1 has 9, 2 has 1, 4 has 9: of 20 the tenth just ends the run of 1.
    EXPECT_EQ(Values(Weighted({{1, 1}, {4, 1}}, {{0, 9}, {2, 1}}))[0], "1.5");
    // -1 has 1, 1 has 10, 2 has 1, 4 has 10 of 22: the eleventh ends the run of 1. With 12 and 10 it lies inside.
    EXPECT_EQ(Values(Weighted({{1, 6}, {4, 5}}, {{0, 4}, {2, 2}}))[0], "1");  // 12, 24, 10, 20 of 66
}

TEST(HodgesLehmannTwoGroups, FirstGroupIsTheLowerCategoryIndexWhateverItsValue) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {10, 9});
    EXPECT_EQ(Values(groups::ResultOf(kTest, Entry(), fields, RowsOf({{11}, {1}})))[0], "10");
}

TEST(HodgesLehmannTwoGroups, ACategoryWithAFractionIsInNoGroup) {
    Rows rows = RowsOf({{11}, {1}});
    rows.push_back({500, 0.5});
    EXPECT_EQ(Values(groups::ResultOf(kTest, Entry(), TwoFields(), rows)), Texts({"10", "10", "10"}));
}

TEST(HodgesLehmannTwoGroups, IntervalEndsAtThePositionsOfTheStandardError) {
    // 0 to 7 and 0, 10, ..., 70: 64 differences, 32 -+ 1.96 * s with s^2 = 17 * 64 / 12 less the tie of the two
    // zeros, which is the first run: (1 - 6 / 4080). s = 9.5149, so positions 14 and 51. With 10 j between -70 and 0,
    // each value below 0 stands alone: of -70 -69 ... -63 | -60 ... the fourteenth is -55, the 51st -8.
    std::vector<double> first;
    std::vector<double> second;
    for (int i = 0; i < 8; ++i) {
        first.push_back(i);
        second.push_back(10.0 * i);
    }
    EXPECT_EQ(ValuesOf(first, second), Texts({"-31.5", "-55", "-8"}));
    // A level of 0 leaves the positions 33 and 32; a level of 1 takes in all differences.
    EXPECT_EQ(ValuesOf(first, second, 0), Texts({"-31.5", "-30", "-33"}));
    EXPECT_EQ(ValuesOf(first, second, 1), Texts({"-31.5", "-70", "7"}));
}

TEST(HodgesLehmannTwoGroups, TieAmongTheLargestValuesTakesNothingOffTheStandardError) {
    // Of 16 values eight are tied: s^2 = 17 * 60 / 12 * (1 - 504 / 4080) = 74.5 where they are the smallest, 85 where
    // they are the largest. Positions at 1.96: 30 -+ 16.92 or 30 -+ 18.07, so 14 and 47 or 12 and 49.
    const Sample first{{1, 1}, {2, 1}, {3, 1}, {4, 1}, {5, 1}, {100, 1}};
    const Sample second{{100, 1}, {100, 1}, {100, 1}, {100, 1}, {100, 1},
                        {100, 1}, {100, 1}, {10, 1},  {20, 1},  {30, 1}};
    const auto negated = [](Sample sample) {
        for (WeightedDifference& entry : sample) entry.difference = -entry.difference;
        return sample;
    };
    const PlainWeightedList list = PlainWeightedList::OfDifferences(first, second);
    const PlainWeightedList ofNegated = PlainWeightedList::OfDifferences(negated(first), negated(second));
    ASSERT_NE(ofNegated[11], ofNegated[13]);
    EXPECT_EQ(Values(Weighted(first, second)),
              Texts({DoubleToString(list.Median()), DoubleToString(list[11]), DoubleToString(list[48])}));
    EXPECT_EQ(
        Values(Weighted(negated(first), negated(second))),
        Texts({DoubleToString(ofNegated.Median()), DoubleToString(ofNegated[13]), DoubleToString(ofNegated[46])}));
}

TEST(HodgesLehmannTwoGroups, RunOfOneValueEndsWhereAnotherBegins) {
    // Ties are told exactly, not by a tolerance.
    EXPECT_EQ(ValuesOf({1, 1 + 1e-15}, {1}), Reference({{1, 1}, {1 + 1e-15, 1}}, {{1, 1}}, false));
}

// ---- The whole definition ----

TEST(HodgesLehmannTwoGroups, AgreesWithTheListOfAllDifferencesWithTiesWeightsAndZeros) {
    std::mt19937_64 random(7501);
    const auto upTo = [&](int most) { return std::uniform_int_distribution<int>(0, most)(random); };
    for (int round = 0; round < 2500; ++round) {
        const bool weighted = round % 2 == 0;
        const int spread = 1 + upTo(20);
        const auto sampleOf = [&] {
            Sample sample(1 + static_cast<std::size_t>(upTo(13)));
            for (WeightedDifference& entry : sample) {
                entry.difference = round % 3 == 0   ? std::max(0, upTo(spread) - spread / 2)
                                   : round % 3 == 1 ? (upTo(2 * spread) - spread) * 0.1
                                                    : std::normal_distribution<double>(0.3, 7)(random);
                entry.weight = weighted ? upTo(3) : 1;
            }
            sample.front().weight = std::max(sample.front().weight, 1);
            return sample;
        };
        const Sample first = sampleOf();
        const Sample second = sampleOf();
        std::vector<std::string> values;
        if (weighted) {
            values = Values(Weighted(first, second));
        } else {
            std::vector<std::vector<double>> plain(2);
            for (const WeightedDifference& entry : first) plain[0].push_back(entry.difference);
            for (const WeightedDifference& entry : second) plain[1].push_back(entry.difference);
            values = ValuesOf(plain[0], plain[1]);
        }
        ASSERT_EQ(values, Reference(first, second, weighted)) << round;
    }
}

// ---- Weights and records ----

TEST(HodgesLehmannTwoGroups, WeightsCountAsRepeatedRecords) {
    EXPECT_EQ(Values(Weighted({{1, 2}, {4, 3}, {6, 1}}, {{2, 2}, {11, 2}})),
              ValuesOf({1, 1, 4, 4, 4, 6}, {2, 2, 11, 11}));
}

TEST(HodgesLehmannTwoGroups, WeightIsTruncatedAndMissingValuesCostTheRecord) {
    const Table test =
        groups::ResultOf(kTest, Entry(), groups::WeightedFields(),
                         {{1, 0, 2.9}, {5, 0, 1.9}, {0, 1, 1}, {harness::kNone, 0, 9}, {100, harness::kNoCategory, 9}});
    EXPECT_EQ(Values(test)[0], "1");  // 1 has 2, 5 has 1
}

TEST(HodgesLehmannTwoGroups, RecordsWithoutWeightTakePartInTheListOnly) {
    // 1 has 1, 2 none, 5 has 1: the half of 2 is reached by 1, and the next value is 2.
    EXPECT_EQ(Values(Weighted({{1, 1}, {5, 1}, {2, 0}}, {{0, 1}}))[0], "1.5");
}

TEST(HodgesLehmannTwoGroups, GroupWhoseWeightsAreAllZeroStillHasDifferences) {
    // No weight in all: the first two differences, and the ends of the list.
    EXPECT_EQ(Values(Weighted({{1, 0}, {5, 0}}, {{0, 2}, {1, 1}})), Texts({"0.5", "5", "5"}));
}

TEST(HodgesLehmannTwoGroups, WeightsWhoseProductsExceed32BitsKeepTheEstimateAndTheInterval) {
    // 1e6 cases in each group: the positions lie around 5e11.
    EXPECT_EQ(Values(Weighted({{1, 300000}, {2, 400000}, {3, 300000}}, {{0, 1000000}})), Texts({"2", "2", "2"}));
}

TEST(HodgesLehmannTwoGroups, CubeOfTheNumberOfCasesWrapsAt64Bits) {
    // N = 2,200,000: N^3 - N is taken as -7.8e18, and the ties widen the interval. Positions, in thousands of millions:
    // 600 -+ 0.99 and not 600 -+ 0.87.
    EXPECT_EQ(Values(Weighted({{1, 599050}, {2, 1900}, {3, 599050}}, {{0, 1000000}})), Texts({"2", "1", "3"}));
}

// ---- Codes ----

TEST(HodgesLehmannTwoGroups, PlanBuilderFailsByFieldAndStillShowsTheGroupField) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("three", {1, 2, 3}).Text("g", {"a", "b"}).Other("o");
    const Rows rows{{1, 0, 0, 0}, {2, 1, 1, 0}};
    const auto fails = [&](const QKSettings& entry) { return FailureOf(groups::ResultOf(kTest, entry, fields, rows)); };
    QKSettings onlyGroup;
    onlyGroup.AddSetting("groupVariableName", "g");
    EXPECT_EQ(fails(onlyGroup), (Failure{{"222510 error"}, "-1", "2"}));
    QKSettings onlyTest;
    onlyTest.AddSetting("variableName", "x");
    EXPECT_EQ(fails(onlyTest), (Failure{{"222511 error"}, "0", "-1"}));
    EXPECT_EQ(fails(Entry("nowhere", "g")), (Failure{{"222503 error nowhere"}, "-1", "2"}));
    EXPECT_EQ(fails(Entry("nowhere", "gone")), (Failure{{"222503 error nowhere"}, "-1", "-1"}));
    EXPECT_EQ(fails(Entry("x", "gone")), (Failure{{"222503 error gone"}, "0", "-1"}));
    EXPECT_EQ(fails(Entry("g", "g")), (Failure{{"222504 error 2"}, "2", "2"}));
    harness::Fields groupFirst;
    groupFirst.Text("g", {"a", "b"}).Continuous("x");
    EXPECT_EQ(FailureOf(groups::ResultOf(kTest, Entry("nowhere", "g"), groupFirst, {{0, 1}, {1, 2}})),
              (Failure{{"222503 error nowhere"}, "-1", "0"}));
    EXPECT_EQ(fails(Entry("o", "g")), (Failure{{"222504 error 3"}, "3", "2"}));
    EXPECT_EQ(fails(Entry("x", "x")), (Failure{{"222504 error 0"}, "0", "0"}));
    EXPECT_EQ(fails(Entry("x", "three")), (Failure{{"222509 error"}, "0", "1"}));
}

TEST(HodgesLehmannTwoGroups, NoCaseOrNoRecordInAGroupIsAnError) {
    EXPECT_EQ(MessagesOf(Weighted({{1, 0}}, {{2, 0}})), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(groups::ResultOf(kTest, Entry(), TwoFields(), RowsOf({{1, 2}}))), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(groups::ResultOf(kTest, Entry(), TwoFields(), {{1, -1}, {harness::kNone, 0}})),
              Texts({"220003 error"}));
}

TEST(HodgesLehmannTwoGroups, ShowsTheFrequenciesOfTheFieldsThatItsOwnWereMadeOf) {
    harness::Fields fields;
    fields.Continuous("x").Numeric("g", {1, 2}).Numeric("origin", {1, 2});
    QKSettings entry = Entry();
    entry.AddSetting("originVariableName", "origin");
    const harness::Outcome outcome = groups::RunEntry(kTest, entry, fields, {{1, 0, 0}, {2, 1, 1}, {3, 1, 1}});
    EXPECT_EQ(outcome.document.FieldInfo(2).Sub("CategoricalDistribution").SimpleRows("Interval"),
              Texts({"1;2", "0;1"}));  // the counts and below them the categories
}

// ---- Pass and memory ----

/// The frequencies of a field "g" with one record in each of two groups.
class Descriptives : public UnivariateResults {
 public:
    Descriptives() : UnivariateResults(collector) {}
    bool GetFrequencies(int, std::map<int, std::int32_t>& frequencies) const override {
        frequencies = {{0, 2}, {1, 2}};
        return true;
    }

 private:
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
};

std::unique_ptr<QKSettings> TestSettings() {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    return settings;
}

TEST(HodgesLehmannTwoGroups, WithoutDescriptivesThereAreNoGroups) {
    TARNHodgesLehmannTwoIndep test(TestSettings());
    test.SetUnivariateResults(nullptr);
    EXPECT_EQ(test.BeginPass().GetErrorCode(), 222506);
}

TEST(HodgesLehmannTwoGroups, ExhaustedMemoryIsReportedNotThrown) {
    int failures = 0;
    for (bool failed = true; failed; ++failures) {
        Descriptives descriptives;
        TARNHodgesLehmannTwoIndep test(TestSettings());
        test.SetUnivariateResults(&descriptives);
        ASSERT_FALSE(test.BeginPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 1);
        Record record(2);
        for (const double value : {-1.0, 0.0, 3.0, 3.0}) {
            record[0] = value;
            record[1] = value < 0 || record[1] == 1 ? 0 : 1;
            EXPECT_FALSE(test.ProcessRecord(record).IsError());
        }
        long code = 0;
        {
            const component_test::AllocationFailure failure(failures);
            code = test.EndPass().GetErrorCode();
            failed = component_test::AllocationFailure::HasFailed();
        }
        EXPECT_EQ(code, failed ? 220012 : 0) << failures;
        EXPECT_EQ(test.GetPassKind(), 0);
        EXPECT_FALSE(test.NeedsAnotherPass());
        const std::unique_ptr<QKXML::XMLElement> element(test.MakeResultElement());
        const QKXML::XMLElement* second = element->GetChildren()[1]->AsElement();
        EXPECT_EQ(second->GetAttributes()[0].second, failed ? "WarningMessages" : "StatisticsResult");
    }
    EXPECT_GE(failures, 3);
}

}  // namespace
