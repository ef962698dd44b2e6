// The Wald-Wolfowitz runs test. Numbers of runs and exact significances by enumeration in Python (itertools), normal
// statistics by the moments told in RunsSignificance.h, their significance by scipy.stats.norm.cdf.

#include "independent/TARNWaldWolfRuns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <memory>

#include "tests/harness/DrivenTest.h"
#include "tests/independent/GroupRun.h"

namespace {

using groups::Entry;
using groups::Failure;
using groups::FailureOf;
using groups::Number;
using groups::Rows;
using groups::RowsOf;
using groups::Texts;
using groups::TwoFields;
using harness::Fields;
using harness::MessagesOf;
using harness::Table;

constexpr const char* kTest = "IWaldWolfowitzRuns";
constexpr double kTolerance = 1e-13;
constexpr double kSigOfSix = 0.7772857048075268;  // of 6 runs of 4 and 5 cases

Table Result(Rows rows, const groups::Common& common = {}) {
    return groups::ResultOf(kTest, Entry(), TwoFields(), std::move(rows), common);
}
Table WeightedResult(Rows rows) {
    return groups::ResultOf(kTest, Entry(), groups::WeightedFields(), std::move(rows));
}
Table Minimum(const Table& test) {
    return test.Sub("StatisticsResult").Sub("MinimumPossible");
}
Table Maximum(const Table& test) {
    return test.Sub("StatisticsResult").Sub("MaximumPossible");
}

const std::vector<double> kFive{1.1, 2.3, 4.5, 6.7, 8.2};
const std::vector<double> kSeven{0.4, 3.1, 3.3, 9.9, 10.5, 12.0, 13.1};

/// Two groups apart, of that many records each.
Rows Apart(int first, int second) {
    Rows rows;
    for (int i = 0; i < first; ++i) rows.push_back({1.0 + i, 0});
    for (int i = 0; i < second; ++i) rows.push_back({101.0 + i, 1});
    return rows;
}

// ---- Element ----

TEST(WaldWolfowitz, ShowsTheGroupsAndTwoNumbersOfRuns) {
    const Table test = Result(RowsOf({kFive, kSeven}));
    EXPECT_EQ(test.Attribute("name"), "IWaldWolfowitzRuns");
    EXPECT_EQ(test.Attribute("type"), "hypothesis_test");
    EXPECT_EQ(test.Attribute("classification"), "Independent_Samples");
    EXPECT_EQ(test.Attribute("decision"), "retain");
    EXPECT_EQ(test.ChildNames(), Texts({"StructuredTable Condition", "StructuredTable Group0", "StructuredTable Group1",
                                        "StructuredTable StatisticsResult"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2");
    EXPECT_EQ(test.Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(test.Sub("Condition").Row("%1"), "1");
    EXPECT_EQ(test.Sub("Group1").ChildNames(), Texts({"Attribute GroupIndex", "Attribute N", "SimpleTable Interval"}));
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "1");
    EXPECT_EQ(test.Sub("Group1").Row("N"), "7");
    EXPECT_EQ(test.Sub("Group0").SimpleRows("Interval"), Texts({"1;1;1;1;1", "1.1;2.3;4.5;6.7;8.2"}));
    EXPECT_EQ(test.Sub("StatisticsResult").ChildNames(),
              Texts({"Attribute TotalN", "StructuredTable MinimumPossible", "StructuredTable MaximumPossible"}));
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "12");
    EXPECT_EQ(Minimum(test).ChildNames(),
              Texts({"Attribute TestStatistic", "Attribute StandardError", "Attribute StandardTestStatistic",
                     "Attribute AsymptoticSig2Tailed", "Attribute ExactSig2Tailed"}));
}

// ---- Statistic ----

TEST(WaldWolfowitz, WithoutTiesBothNumbersAreTheSameAndNothingWarns) {  // b aa bb aaa bbbb
    const Table test = Result(RowsOf({kFive, kSeven}));
    EXPECT_TRUE(MessagesOf(test).empty());
    for (const Table& runs : {Minimum(test), Maximum(test)}) {
        EXPECT_EQ(runs.Row("TestStatistic"), "5");
        EXPECT_NEAR(Number(runs, "StandardError"), 1.6009782363078247, kTolerance);
        EXPECT_NEAR(Number(runs, "StandardTestStatistic"), -0.832824146571952, kTolerance);
        EXPECT_NEAR(Number(runs, "AsymptoticSig2Tailed"), 0.20247195721142225, kTolerance);
        EXPECT_NEAR(Number(runs, "ExactSig2Tailed"), 156 / 792.0, kTolerance);
    }
}

TEST(WaldWolfowitz, TiesAcrossTheGroupsGiveTwoNumbersAndAWarning) {  // 2 aab, 5 ab: 5 cases in 2 blocks
    const Rows rows = RowsOf({{1, 2, 2, 5}, {2, 3, 5, 6, 7}});
    for (const Rows& ordered : {rows, Rows(rows.rbegin(), rows.rend())}) {
        const Table test = Result(ordered);
        EXPECT_EQ(MessagesOf(test), Texts({"221413 warning 2 5"}));
        EXPECT_EQ(test.ChildNames().size(), 5u);
        EXPECT_EQ(Minimum(test).Row("TestStatistic"), "4");
        EXPECT_NEAR(Number(Minimum(test), "StandardError"), 1.3833221775543036, kTolerance);
        EXPECT_NEAR(Number(Minimum(test), "StandardTestStatistic"), -0.6827364295671241, kTolerance);
        EXPECT_NEAR(Number(Minimum(test), "AsymptoticSig2Tailed"), 0.2473867028653915, kTolerance);
        EXPECT_NEAR(Number(Minimum(test), "ExactSig2Tailed"), 33 / 126.0, kTolerance);
        EXPECT_EQ(Maximum(test).Row("TestStatistic"), "6");
        EXPECT_NEAR(Number(Maximum(test), "StandardTestStatistic"), 0.7630583624573738, kTolerance);
        EXPECT_NEAR(Number(Maximum(test), "AsymptoticSig2Tailed"), kSigOfSix, kTolerance);
        EXPECT_NEAR(Number(Maximum(test), "ExactSig2Tailed"), 99 / 126.0, kTolerance);
    }
}

TEST(WaldWolfowitz, AllValuesEqualAreOneBlock) {
    const Table test = Result(RowsOf({{4, 4, 4}, {4, 4, 4, 4, 4}}));
    EXPECT_EQ(Minimum(test).Row("TestStatistic"), "2");
    EXPECT_EQ(Maximum(test).Row("TestStatistic"), "7");  // 2 * 3 and one more, the groups being of unequal size
    EXPECT_EQ(MessagesOf(test), Texts({"221413 warning 1 8"}));
    EXPECT_EQ(Maximum(Result(RowsOf({{4, 4}, {4, 4}}))).Row("TestStatistic"), "4");
}

// The row of the total is a signed 32-bit count; what is at most 30 is not.
TEST(WaldWolfowitz, ManyCasesHaveNoExactSignificanceWhateverTheirCountLooksLike) {
    const Table test = WeightedResult({{1, 0, 1.5e9}, {2, 1, 1.5e9}});
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "-1294967296");
    EXPECT_EQ(test.Attribute("decision"), "reject");
    EXPECT_FALSE(Maximum(test).HasRow("ExactSig2Tailed"));
}

TEST(WaldWolfowitz, ExactSignificanceEndsAtThirtyCases) {
    const Table thirty = Result(Apart(15, 15));
    EXPECT_NEAR(Number(Maximum(thirty), "ExactSig2Tailed"), 2 / 155117520.0, 1e-20);  // 2 of 30 over 15
    EXPECT_TRUE(Minimum(thirty).HasRow("ExactSig2Tailed"));
    const Table thirtyOne = Result(Apart(15, 16));
    EXPECT_FALSE(Maximum(thirtyOne).HasRow("ExactSig2Tailed"));
    EXPECT_FALSE(Minimum(thirtyOne).HasRow("ExactSig2Tailed"));
}

TEST(WaldWolfowitz, CorrectionForContinuityEndsBelowFiftyCases) {
    EXPECT_NEAR(Number(Maximum(Result(Apart(24, 25))), "StandardTestStatistic"), -6.640847846595595, kTolerance);
    EXPECT_NEAR(Number(Maximum(Result(Apart(25, 25))), "StandardTestStatistic"), -6.858571279792899, kTolerance);
}

TEST(WaldWolfowitz, NumberOfRunsNearItsMeanHasTheStatisticZero) {  // 2.4 + 1 = 3.4, three runs
    const Table test = Result(RowsOf({{1, 9}, {3, 4, 5}}));
    EXPECT_EQ(Maximum(test).Row("TestStatistic"), "3");
    EXPECT_EQ(Maximum(test).Row("StandardTestStatistic"), "0");
    EXPECT_EQ(Maximum(test).Row("AsymptoticSig2Tailed"), "0.5");
}

// ---- Decision ----

TEST(WaldWolfowitz, LargestNumberDecidesByItsAsymptoticSignificance) {
    const Rows rows = RowsOf({{1, 2, 2, 5}, {2, 3, 5, 6, 7}});
    EXPECT_EQ(Result(rows, {{"sigLevel", kSigOfSix - 1e-6}}).Attribute("decision"), "retain");
    EXPECT_EQ(Result(rows, {{"sigLevel", kSigOfSix + 1e-6}}).Attribute("decision"), "reject");
    const Rows middle = RowsOf({{1, 9}, {3, 4, 5}});
    EXPECT_EQ(Result(middle, {{"sigLevel", 0.5}}).Attribute("decision"), "retain");  // a level that is just reached
    EXPECT_EQ(Result(middle, {{"sigLevel", 0.51}}).Attribute("decision"), "reject");
}

// ---- Weights and records ----

TEST(WaldWolfowitz, WeightsRepeatAndAreTruncated) {
    const Table weighted = WeightedResult(
        {{7, 1, 1}, {1, 0, 1.5}, {2, 0, 2.9}, {5, 0, 1}, {2, 1, 1.1}, {3, 1, 1}, {5, 1, 1}, {6, 1, 1.999}});
    EXPECT_EQ(weighted.Sub("StatisticsResult").Row("TotalN"), "9");
    EXPECT_EQ(Minimum(weighted).Row("TestStatistic"), "4");
    EXPECT_EQ(Maximum(weighted).Row("TestStatistic"), "6");
    EXPECT_EQ(MessagesOf(weighted), Texts({"221413 warning 2 5"}));
    EXPECT_EQ(weighted.Sub("Group0").SimpleRows("Interval"), Texts({"1;2;1", "1;2;5"}));
}

TEST(WaldWolfowitz, MissingValuesCostTheRecord) {
    Rows rows = RowsOf({kFive, kSeven});
    rows.push_back({harness::kNone, 0});
    rows.push_back({7, harness::kNoCategory});
    const Table test = Result(rows);
    EXPECT_EQ(test.Sub("StatisticsResult").Row("TotalN"), "12");
    EXPECT_EQ(Maximum(test).Row("TestStatistic"), "5");
}

TEST(WaldWolfowitz, ZerosComeLastInTheIntervals) {
    EXPECT_EQ(Result(RowsOf({{0, -1, 3, 0}, {1, 2}})).Sub("Group0").SimpleRows("Interval"), Texts({"1;1;2", "-1;3;0"}));
}

// ---- Failures ----

TEST(WaldWolfowitz, PlanFailsAtTheFirstFieldAndStillShowsTheGroups) {
    struct Case {
        const char* test;
        const char* group;
        Failure failure;
    };
    const std::vector<Case> cases{{nullptr, "g", {{"221411 error"}, "-1", "1"}},
                                  {nullptr, nullptr, {{"221411 error"}, "-1", "-1"}},
                                  {"nowhere", "g", {{"221403 error nowhere"}, "-1", "1"}},
                                  {"g", "g", {{"221404 error 1"}, "1", "1"}},
                                  {"o", "nobody", {{"221404 error 3"}, "3", "-1"}},
                                  {"x", nullptr, {{"221412 error"}, "0", "-1"}},
                                  {"x", "nobody", {{"221403 error nobody"}, "0", "-1"}},
                                  {"x", "x", {{"221404 error 0"}, "0", "0"}},
                                  {"x", "h", {{"221409 error"}, "0", "2"}}};
    for (const Case& one : cases) {
        QKSettings entry;
        if (one.test != nullptr) entry.AddSetting("variableName", one.test);
        if (one.group != nullptr) entry.AddSetting("groupVariableName", one.group);
        Fields fields;
        fields.Continuous("x").Numeric("g", {1, 2}).Numeric("h", {1, 2, 3}).Other("o");
        const Table test = groups::ResultOf(kTest, entry, fields, {{1, 0, 0, 1}});
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        EXPECT_EQ(FailureOf(test), one.failure);
    }
}

TEST(WaldWolfowitz, PlanRefusesListedGroups) {
    QKSettings entry = groups::Listed<double>({1}, {2});
    entry.AddSetting("classFormation", "twoCategoryLists");
    const Table test = groups::ResultOf(kTest, entry, TwoFields(), RowsOf({kFive, kSeven}));
    EXPECT_EQ(FailureOf(test), (Failure{{"221401 error"}, "0", "1"}));
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_WaldWolfowitzRuns_2");
    QKSettings other = Entry();
    other.AddSetting("classFormation", "getFromData");
    EXPECT_TRUE(MessagesOf(groups::ResultOf(kTest, other, TwoFields(), RowsOf({kFive, kSeven}))).empty());
}

// A group without a record counts as -1: it makes no weight of one case, and no record at all an empty group.
TEST(WaldWolfowitz, GroupsWithoutWeight) {
    EXPECT_EQ(MessagesOf(Result({{1, 0}, {2, 0}})), Texts({"221410 error"}));
    EXPECT_EQ(MessagesOf(Result({{1, 1}})), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(Result({{harness::kNone, 0}, {harness::kNone, 1}})), Texts({"221410 error"}));
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 0.5}, {2, 1, 0.9}})), Texts({"220003 error"}));
    EXPECT_EQ(MessagesOf(WeightedResult({{1, 0, 5}, {2, 1, 0.9}})), Texts({"221410 error"}));
}

TEST(WaldWolfowitz, OneRecordInEachGroupHasNoVariance) {
    EXPECT_EQ(FailureOf(Result({{1, 0}, {2, 1}})), (Failure{{"220007 error"}, "0", "1"}));
    EXPECT_TRUE(MessagesOf(Result({{1, 0}, {2, 1}, {3, 1}})).empty());
}

// ---- Settings of the test ----

/// What a planner has of the group field.
class Descriptives : public UnivariateResults {
 public:
    explicit Descriptives(std::map<int, std::int32_t> groupFrequencies)
        : UnivariateResults(collector), frequencies(std::move(groupFrequencies)) {}
    bool GetFrequencies(int, std::map<int, std::int32_t>& out) const override {
        out = frequencies;
        return !frequencies.empty();
    }

 private:
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
    std::map<int, std::int32_t> frequencies;
};

std::unique_ptr<QKSettings> Lists(const std::vector<double>& first, const std::vector<double>& second) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    settings->AddSetting("classFormation", "twoCategoryLists");
    AddVecSetting(*settings, "group1List", first, false);
    AddVecSetting(*settings, "group2List", second, false);
    return settings;
}

TEST(WaldWolfowitz, FrequenciesThatAreNotThereOrNotOfTwoCategories) {
    const auto codeWith = [](UnivariateResults* results) {
        auto settings = std::make_unique<QKSettings>();
        TARNWaldWolfRuns test(std::move(settings));
        test.SetUnivariateResults(results);
        const long code = test.BeginPass().GetErrorCode();
        EXPECT_FALSE(test.NeedsAnotherPass());
        return code;
    };
    using Frequencies = std::map<int, std::int32_t>;
    Descriptives none(Frequencies{});
    Descriptives one(Frequencies{{0, 4}});
    Descriptives two(Frequencies{{0, 4}, {1, 0}});
    EXPECT_EQ(codeWith(nullptr), 221406);
    EXPECT_EQ(codeWith(&none), 221406);
    EXPECT_EQ(codeWith(&one), 221409);
    EXPECT_EQ(codeWith(&two), 0);
}

TEST(WaldWolfowitz, ListsOfTheSettingsMakeTheGroups) {
    TARNWaldWolfRuns test(Lists({0, 3}, {1}));
    for (const int pass : {0, 1}) {
        ASSERT_FALSE(test.BeginPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 2 - pass);
        // Category 7 is in no list: it parts nothing, not even the block of the twos.
        for (const auto& [value, category] :
             std::vector<std::pair<double, double>>{{1, 0}, {2, 3}, {2, 7}, {2, 1}, {3, 7}, {4, 1}, {5, 1.5}, {6, 3}}) {
            Record record(2);
            record[0] = value;
            record[1] = category;
            ASSERT_FALSE(test.ProcessRecord(record).IsError());
        }
        ASSERT_FALSE(test.EndPass().IsError());
        EXPECT_EQ(test.GetPassKind(), 1 - pass);
        EXPECT_EQ(test.NeedsAnotherPass(), pass == 0);
    }
    const Table result = harness::ElementOf(test);
    EXPECT_EQ(result.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_I_WaldWolfowitzRuns_2");
    EXPECT_EQ(MessagesOf(result), Texts({"221413 warning 1 2"}));
    EXPECT_EQ(result.Sub("StatisticsResult").Row("TotalN"), "5");
    EXPECT_EQ(Minimum(result).Row("TestStatistic"), "3");  // a ab b a
    EXPECT_EQ(Maximum(result).Row("TestStatistic"), "5");  // a ba b a
}

TEST(WaldWolfowitz, EmptyListIsAnEmptyGroup) {
    for (const auto& [first, second] : {std::pair<std::vector<double>, std::vector<double>>{{}, {1}}, {{0}, {}}}) {
        TARNWaldWolfRuns test(Lists(first, second));
        EXPECT_EQ(test.BeginPass().GetErrorCode(), 221410);
    }
}

}  // namespace
