// What the Kolmogorov-Smirnov test of two groups makes of settings and groups that don't fit. Values by hand.

#include <gtest/gtest.h>

#include <memory>

#include "independent/TARNKSmirnowTwoSample.h"
#include "tests/harness/DrivenTest.h"
#include "tests/independent/GroupRun.h"

namespace {

using groups::Failure;
using groups::FailureOf;
using groups::Rows;
using groups::Texts;
using harness::Fields;
using harness::MessagesOf;
using harness::Table;

constexpr const char* kTest = "IKolmogorovSmirnov";

// ---- Plan ----

QKSettings EntryOf(const char* test, const char* group) {
    QKSettings entry;
    if (test != nullptr) entry.AddSetting("variableName", test);
    if (group != nullptr) entry.AddSetting("groupVariableName", group);
    return entry;
}

TEST(KolmogorovSmirnovTwoSampleFailures, PlanTellsTheFailureOfEachFieldByItself) {
    struct Case {
        const char* test;
        const char* group;
        Failure failure;
    };
    const std::vector<Case> cases{
        {nullptr, "g", {{"222003 error"}, "-1", "1"}},
        {"x", nullptr, {{"222003 error"}, "0", "-1"}},
        {nullptr, nullptr, {{"222003 error"}, "-1", "-1"}},  // an equal message is not repeated
        {"nowhere", "g", {{"222003 error nowhere"}, "-1", "1"}},
        {"x", "nobody", {{"222003 error nobody"}, "0", "-1"}},
        {"nowhere", "nobody", {{"222003 error nowhere", "222003 error nobody"}, "-1", "-1"}},
        {"g", "x", {{"222012 error", "222013 error"}, "1", "0"}},
        {"o", "g", {{"222012 error"}, "4", "1"}},
        {"x", "h", {{"222009 error"}, "0", "2"}},
        {"x", "t", {{"222009 error"}, "0", "3"}},
        {"o", "h", {{"222012 error", "222009 error"}, "4", "2"}},
    };
    for (const Case& one : cases) {
        Fields fields;
        fields.Continuous("x").Numeric("g", {1, 2}).Numeric("h", {1, 2, 3}).Text("t", {"a"}).Other("o");
        const Table test = groups::ResultOf(kTest, EntryOf(one.test, one.group), fields, {{1, 0, 0, 0, 1}});
        EXPECT_EQ(test.Attribute("decision"), "unknown");
        EXPECT_EQ(FailureOf(test), one.failure);
    }
}

TEST(KolmogorovSmirnovTwoSampleFailures, EmptyGroup) {
    for (const Rows& rows : {Rows{{1, 0}, {2, 0}}, Rows{{1, 1}}, Rows{{harness::kNone, 0}, {2, 1}}}) {
        EXPECT_EQ(FailureOf(groups::ResultOf(kTest, groups::Entry(), groups::TwoFields(), rows)),
                  (Failure{{"222010 error"}, "0", "1"}));
    }
    EXPECT_EQ(MessagesOf(groups::ResultOf(kTest, groups::Entry(), groups::WeightedFields(), {{1, 0, 3}, {2, 1, 0.9}})),
              Texts({"222010 error"}));
}

TEST(KolmogorovSmirnovTwoSampleFailures, PlanReadsNoLists) {
    const Table test =
        groups::ResultOf(kTest, groups::Listed<double>({2}, {1}), groups::TwoFields(), {{1, 0}, {2, 0}, {3, 1}});
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "DefaultAllDistinctValuesUsed_I_KolmogorovSmirnov_2");
    EXPECT_EQ(test.Sub("Group0").Row("N"), "2");  // category 0 stays in front
}

TEST(KolmogorovSmirnovTwoSampleFailures, GroupsAreNotReordered) {
    Fields fields;
    fields.Continuous("x").Text("g", {"z", "a"});
    const Table test = groups::ResultOf(kTest, groups::Entry(), fields, {{1, 0}, {2, 0}, {3, 1}});
    EXPECT_EQ(test.Sub("Group0").Row("N"), "2");
}

// ---- Settings of the test ----

std::unique_ptr<QKSettings> Settings(const std::vector<int>& first, const std::vector<int>& second) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("sigLevel", 0.05);
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    AddVecSetting(*settings, "group1List", first, false);
    AddVecSetting(*settings, "group2List", second, false);
    return settings;
}

/// Two passes over rows of (value, category) in ascending order.
Table ResultOfLists(const std::vector<int>& first, const std::vector<int>& second, const Rows& rows) {
    TARNKSmirnowTwoSample test(Settings(first, second));
    for (const int pass : {0, 1}) {
        harness::BeginPassOver(test, rows);
        EXPECT_EQ(test.GetPassKind(), 2 - pass);
        EXPECT_FALSE(test.EndPass().IsError());
        EXPECT_EQ(test.NeedsAnotherPass(), pass == 0);
    }
    EXPECT_EQ(test.GetPassKind(), 0);
    return harness::ElementOf(test);
}

Table Extremes(const Table& test) {
    return test.Sub("StatisticsResult").Sub("MostExtremeDifferences");
}

TEST(KolmogorovSmirnovTwoSampleLists, HoldTheCategoriesOfEachGroup) {
    const Table test = ResultOfLists({3, 1}, {0}, {{1, 3}, {2, 1}, {3, 0}, {4, 1.9}});  // 1.9 is category 1
    EXPECT_EQ(test.Sub("Condition").Row("ConditionKey"), "CategoryListsAreSpecified_I_KolmogorovSmirnov_2");
    EXPECT_EQ(test.Sub("Group0").Row("N"), "3");
    EXPECT_EQ(test.Sub("Group1").Row("N"), "1");
    EXPECT_EQ(test.Sub("Group1").Row("GroupIndex"), "1");  // the number of the group, not its categories
}

// A record of neither group that brings a new value counts for the second group: at 3 that one is complete already,
// and the difference is 1/2 - 1, where without the record it is 1/2 - 1/2.
TEST(KolmogorovSmirnovTwoSampleLists, RecordOfNeitherGroupAtANewValueRaisesTheSecondOne) {
    const Rows without{{1, 0}, {3, 1}, {4, 0}, {5, 1}};
    const Rows with{{1, 0}, {2, 7}, {3, 1}, {4, 0}, {5, 1}};
    EXPECT_EQ(Extremes(ResultOfLists({0}, {1}, without)).Row("Negative"), "0");
    EXPECT_EQ(Extremes(ResultOfLists({0}, {1}, with)).Row("Negative"), "-0.5");
    // Behind the largest value of the second group it can't: the share is 1 there.
    const Rows behind{{1, 0}, {3, 1}, {4, 0}, {5, 1}, {6, 7}, {7, 7}, {8, 0}};
    EXPECT_EQ(Extremes(ResultOfLists({0}, {1}, behind)).Row("Negative"), "-0.333333333333333");
    // At a value that is there already it changes nothing.
    const Rows tied{{1, 0}, {1, 7}, {3, 1}, {3, 7}, {4, 0}, {5, 1}};
    EXPECT_EQ(Extremes(ResultOfLists({0}, {1}, tied)).Row("Negative"), "0");
}

// Without a group at the start no difference is ever taken. That is a warning without a message: the statistic is
// made of the missing value, and its significance is 0.
TEST(KolmogorovSmirnovTwoSampleLists, WalkThatBeginsInNeitherGroupFindsNoDifference) {
    TARNKSmirnowTwoSample test(Settings({0}, {1}));
    const Rows rows{{0, 7}, {1, 0}, {2, 1}, {3, 0}, {4, 1}};
    harness::BeginPassOver(test, rows);
    EXPECT_TRUE(test.EndPass().IsOK());
    EXPECT_TRUE(test.NeedsAnotherPass());
    harness::BeginPassOver(test, rows);
    EXPECT_EQ(test.EndPass(), QKStatus(222011, true));
    const Table result = harness::ElementOf(test);
    EXPECT_TRUE(MessagesOf(result).empty());
    EXPECT_EQ(result.Attribute("decision"), "reject");
    for (const char* row : {"Absolute", "Positive", "Negative"}) EXPECT_EQ(Extremes(result).Row(row), "0") << row;
    EXPECT_EQ(result.Sub("StatisticsResult").Row("TestStatistic"), "-1.79769313486232e+308");
    EXPECT_EQ(result.Sub("StatisticsResult").Row("AsymptoticSig2Tailed"), "0");
}

TEST(KolmogorovSmirnovTwoSampleLists, WithoutALevelOrASecondListTheSettingsAreIncomplete) {
    const auto codeWithout = [](const char* key) {
        std::unique_ptr<QKSettings> settings = Settings({0}, {1});
        settings->RemoveSetting(key, true);
        TARNKSmirnowTwoSample test(std::move(settings));
        const long code = test.BeginPass().GetErrorCode();
        EXPECT_FALSE(code != 0 && test.NeedsAnotherPass());
        return code;
    };
    EXPECT_EQ(codeWithout("sigLevel"), 222001);
    EXPECT_EQ(codeWithout("group2List"), 222001);
    EXPECT_EQ(codeWithout("group1List"), 0);  // then the second one is not looked at
}

}  // namespace
