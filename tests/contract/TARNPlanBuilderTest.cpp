#include "contract/TARNPlanBuilder.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "support/QKVecValue.h"
#include "tests/harness/TestRun.h"

namespace {

/// A test that shows what its plan builder left in it.
class PlannedTest : public TARNTest {
 public:
    explicit PlannedTest(std::unique_ptr<QKSettings> testSettings, std::string given = "")
        : TARNTest(std::move(testSettings)), extra(std::move(given)) {}
    void SetUnivariateResults(UnivariateResults*) override {}
    QKStatus BeginPass() override { return status; }
    QKStatus ProcessRecord(Record&) override { return status; }
    bool NeedsAnotherPass() override { return false; }
    QKStatus EndPass() override { return status; }
    void GetUsedVariables(std::vector<int>&) override {}
    QKXML::XMLElement* MakeResultElement() override { return nullptr; }

    using TARNTest::messages;
    using TARNTest::settings;
    using TARNTest::status;
    std::string extra;
};

/// A plan that notes what it is asked.
class NotingPlan : public TARNPlan {
 public:
    NotingPlan() { fields.Continuous("x").Continuous("y").Numeric("g", {1, 2}); }

    double GetSigLevel() const override { return 0.01; }
    double GetConfidenceLevel() const override { return 0.9; }
    int GetWeightIndex() const override { return weightIndex; }
    int GetCaseIdIndex() const override { return kNoCaseId; }
    bool IsBrief() const override { return false; }
    bool IsExtended() const override { return false; }
    const QKVarList& GetVarList() const override { return const_cast<harness::Fields&>(fields).List(); }
    int GetMeasureLevel(const std::string&) override { return 0; }
    bool Request(int field, int statistic) override {
        requests.emplace_back(field, statistic);
        return true;
    }
    void RegisterSorted(int) override {}
    void RequestSorted(int field) override { sorted.push_back(field); }
    void AddToMainWorker(std::unique_ptr<TARNTest> given) override { Take(std::move(given), "main"); }
    void AddSortedTest(std::unique_ptr<TARNTest> given, int field, const QKStatus& status) override {
        Take(std::move(given), "sorted by " + std::to_string(field));
        sortedStatus = status;
    }

    harness::Fields fields;
    int weightIndex = kNoWeight;
    std::vector<std::pair<int, int>> requests;
    std::vector<int> sorted;
    std::unique_ptr<PlannedTest> test;
    std::string worker;
    QKStatus sortedStatus{77};

 private:
    void Take(std::unique_ptr<TARNTest> given, const std::string& where) {
        test.reset(static_cast<PlannedTest*>(given.release()));
        worker = where;
    }
};

constexpr int kFrequencyCount = 8;

}  // namespace

TEST(TARNPlanBuilderTest, TheTestsSettingsGetTheLevelsThatItsKindWants) {
    struct Row {
        CommonSettings common;
        std::vector<std::string> names;
    };
    for (const Row& row :
         {Row{CommonSettings::kSigLevel, {"sigLevel"}}, Row{CommonSettings::kConfidenceLevel, {"confidenceLevel"}},
          Row{CommonSettings::kBothLevels, {"sigLevel", "confidenceLevel"}}}) {
        NotingPlan plan;
        const QKSettings entry;
        TARNPlanBuilder builder(entry, plan, row.common);
        EXPECT_EQ(builder.TestSettings().GetSettingNames(), row.names);
        double level = 0;
        EXPECT_EQ(builder.TestSettings().GetSettingValByName("sigLevel", level) ? level : 0.01, 0.01);
        EXPECT_EQ(builder.TestSettings().GetSettingValByName("confidenceLevel", level) ? level : 0.9, 0.9);
    }
}

TEST(TARNPlanBuilderTest, WithNoWeightFieldTheWeightIndexIsAbsentFromTheTestsSettings) {
    const QKSettings entry;
    for (const CommonSettings common :
         {CommonSettings::kSigLevel, CommonSettings::kConfidenceLevel, CommonSettings::kBothLevels}) {
        NotingPlan plan;
        TARNPlanBuilder without(entry, plan, common);
        EXPECT_EQ(without.TestSettings().FindSetting("weightVariableIndex"), nullptr);
        plan.weightIndex = 0;
        TARNPlanBuilder with(entry, plan, common);
        const QKSetting* weight = with.TestSettings().FindSetting("weightVariableIndex");
        ASSERT_NE(weight, nullptr);
        EXPECT_EQ(weight->GetValue().GetNumber(), 0);
        EXPECT_EQ(weight->GetValue().GetElementKind(), static_cast<int>(SettingElementKind::kDouble));
    }
}

TEST(TARNPlanBuilderTest, HandsAGoodTestOverWithItsSettingsAndNoMessage) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.TestSettings().AddSetting("variableIndex", 2);
    EXPECT_TRUE(builder.IsOK());
    builder.AddToMainWorker<PlannedTest>();
    EXPECT_EQ(plan.worker, "main");
    ASSERT_NE(plan.test, nullptr);
    EXPECT_TRUE(plan.test->messages.empty());
    EXPECT_TRUE(plan.test->status.IsOK());
    int index = -1;
    EXPECT_TRUE(plan.test->settings->GetSettingValByName("variableIndex", index));
    EXPECT_EQ(index, 2);
}

TEST(TARNPlanBuilderTest, AFailedTestStaysInThePlanWithItsErrorAndItsParameters) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.Fail(220903, "nowhere");
    EXPECT_FALSE(builder.IsOK());
    builder.AddToMainWorker<PlannedTest>();
    ASSERT_NE(plan.test, nullptr);
    const TestMessage expected{QKStatus(220903), MessageKind::kError, {"nowhere"}, {}};
    EXPECT_EQ(plan.test->messages, (std::vector<TestMessage>{expected}));
    EXPECT_EQ(plan.test->status, QKStatus(220903));
}

TEST(TARNPlanBuilderTest, FailuresBehindAnEndedMessageMakeOneOfTheirOwn) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.EndMessage();  // none is open
    builder.Fail(222003, "nowhere");
    builder.EndMessage();
    builder.EndMessage();
    EXPECT_FALSE(builder.IsOK());
    builder.Fail(222013);
    builder.AddToMainWorker<PlannedTest>();
    ASSERT_NE(plan.test, nullptr);
    const TestMessage first{QKStatus(222003), MessageKind::kError, {"nowhere"}, {}};
    const TestMessage second{QKStatus(222013), MessageKind::kError, {}, {}};
    EXPECT_EQ(plan.test->messages, (std::vector<TestMessage>{first, second}));
    EXPECT_EQ(plan.test->status, QKStatus(222013));
}

TEST(TARNPlanBuilderTest, TheLastFailureGivesTheCodeAndEveryParameterIsKept) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.Fail(220915, "1");
    builder.Fail(220915, "0");
    builder.Fail(220912);
    builder.AddToMainWorker<PlannedTest>();
    const TestMessage expected{QKStatus(220912), MessageKind::kError, {"1", "0"}, {}};
    EXPECT_EQ(plan.test->messages, (std::vector<TestMessage>{expected}));
}

TEST(TARNPlanBuilderTest, ASortedTestGoesToTheWorkerOfItsFieldWithTheBuildersStatus) {
    for (const bool fails : {false, true}) {
        NotingPlan plan;
        const QKSettings entry;
        TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
        if (fails) builder.Fail(220303);
        builder.AddToSortedWorker<PlannedTest>(fails ? -1 : 1, std::string("normal"));
        EXPECT_EQ(plan.worker, fails ? "sorted by -1" : "sorted by 1");
        EXPECT_EQ(plan.sortedStatus, fails ? QKStatus(220303) : QKStatus());
        EXPECT_EQ(plan.test->extra, "normal");
        EXPECT_EQ(plan.test->messages.size(), fails ? 1u : 0u);
    }
}

TEST(TARNPlanBuilderTest, ReadsTheEntryAndLeavesTheOutputOfAnAbsentKey) {
    QKSettings entry;
    AddVecSetting(entry, "variableName", std::vector<std::string>{"x", "y"}, false);
    NotingPlan plan;
    const TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    std::vector<std::string> names{"untouched"};
    EXPECT_FALSE(builder.Read("groupVariableName", names));
    EXPECT_EQ(names, (std::vector<std::string>{"untouched"}));
    EXPECT_TRUE(builder.Read("variableName", names));
    EXPECT_EQ(names, (std::vector<std::string>{"x", "y"}));
    double number = 5;
    EXPECT_FALSE(builder.Read("variableName", number)) << "a vector is no scalar";
    EXPECT_EQ(number, 5);
}

/// The messages of a plan of which one part fails before the entry is found not to name a comparison.
std::vector<TestMessage> MessagesWithoutAComparison(const ComparisonRules& rules, bool failsBefore) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    if (failsBefore) builder.Fail(222003, "nowhere");
    builder.ReadComparison(rules, 222101);
    builder.AddToMainWorker<PlannedTest>();
    return plan.test->messages;
}

// Ranked rows tell it where nothing else failed, the Kruskal-Wallis test always, and the rest compares nothing then.
TEST(TARNPlanBuilderTest, AnEntryThatNamesNoComparisonFailsAsTheRulesSay) {
    const TestMessage unsaid{QKStatus(222101), MessageKind::kError, {}, {}};
    const TestMessage before{QKStatus(222003), MessageKind::kError, {"nowhere"}, {}};
    using Messages = std::vector<TestMessage>;
    EXPECT_EQ(MessagesWithoutAComparison(ComparisonRulesOf::kFriedman, false), Messages{unsaid});
    EXPECT_EQ(MessagesWithoutAComparison(ComparisonRulesOf::kFriedman, true), Messages{before});
    EXPECT_EQ(MessagesWithoutAComparison(ComparisonRulesOf::kKruskalWOneWay, false), Messages{unsaid});
    EXPECT_EQ(MessagesWithoutAComparison(ComparisonRulesOf::kJonckTer, false), Messages{});
    EXPECT_EQ(MessagesWithoutAComparison(ComparisonRulesOf::kJonckTer, true), Messages{before});
}

TEST(TARNPlanBuilderTest, TheTestsSettingsGetTheComparisonInTheFormOfItsRules) {
    QKSettings entry;
    entry.AddSetting("typeOfMultipleComparison", "stepWise");
    for (const ComparisonRules& rules : {ComparisonRulesOf::kKruskalWOneWay, ComparisonRulesOf::kKSMedian}) {
        NotingPlan plan;
        TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
        builder.ReadComparison(rules, 222101);
        builder.AddToMainWorker<PlannedTest>();
        std::string type;
        double stepwise = 0;
        EXPECT_EQ(plan.test->settings->GetSettingValByName("typeOfMultipleComparison", type),
                  rules.wanted == Wanted::kByType);
        EXPECT_EQ(plan.test->settings->GetSettingValByName("stepWise", stepwise), rules.wanted == Wanted::kBySwitches);
        EXPECT_TRUE(plan.test->messages.empty());
    }
}

TEST(TARNPlanBuilderTest, RequestsTheFrequenciesOfTheOriginFieldsPassingOverUnknownNames) {
    QKSettings entry;
    AddVecSetting(entry, "originVariableName", std::vector<std::string>{"g", "nowhere", "x"}, false);
    NotingPlan plan;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.Fail(220912);  // the request is made whatever the status
    builder.RequestOriginFrequencies(Origins::kSeveral);
    EXPECT_EQ(plan.requests, (std::vector<std::pair<int, int>>{{2, kFrequencyCount}, {0, kFrequencyCount}}));
    EXPECT_EQ(builder.IsOK(), false) << "an unknown name is no failure and no cure";
}

TEST(TARNPlanBuilderTest, AnOriginOfTheOtherShapeIsPassedOver) {
    QKSettings one;
    one.AddSetting("originVariableName", "g");
    QKSettings several;
    AddVecSetting(several, "originVariableName", std::vector<std::string>{"g"}, false);
    NotingPlan plan;
    TARNPlanBuilder(one, plan, CommonSettings::kSigLevel).RequestOriginFrequencies(Origins::kSeveral);
    TARNPlanBuilder(several, plan, CommonSettings::kSigLevel).RequestOriginFrequencies(Origins::kOne);
    EXPECT_TRUE(plan.requests.empty());
    TARNPlanBuilder(one, plan, CommonSettings::kSigLevel).RequestOriginFrequencies(Origins::kOne);
    EXPECT_EQ(plan.requests, (std::vector<std::pair<int, int>>{{2, kFrequencyCount}}));
}

TEST(TARNPlanBuilderTest, WithoutOriginFieldsNothingIsRequested) {
    NotingPlan plan;
    const QKSettings entry;
    TARNPlanBuilder builder(entry, plan, CommonSettings::kSigLevel);
    builder.RequestOriginFrequencies(Origins::kOne);
    builder.RequestOriginFrequencies(Origins::kSeveral);
    EXPECT_TRUE(plan.requests.empty());
    EXPECT_TRUE(plan.sorted.empty());
}
