// What comes next in a test of several groups: the order in which the base class calls upon a test.

#include "independent/SeveralGroups.h"

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace {

using Calls = std::vector<std::string>;

constexpr SeveralGroupsRules kPlain{.tooFewGroups = {.pairwise = 1, .stepwise = 2},
                                    .notSignificant = {.pairwise = 3, .stepwise = 4},
                                    .passesOfPairs = 1,
                                    .passesOfStep = 1};
constexpr SeveralGroupsRules kEarly{.tooFewGroups = {.pairwise = 1, .stepwise = 2},
                                    .notSignificant = {.pairwise = 3, .stepwise = 4},
                                    .passesOfPairs = 0,
                                    .passesOfStep = 1,
                                    .firstStep = FirstStep::kWithTheOutliers,
                                    .foretold = Foretold::kToTheEnd};

struct Script {
    bool pairwise = false;
    bool stepwise = false;
    bool prepares = false;
    int settlesIn = 2;
    bool isSignificant = true;
};

/// Notes what it is called upon, and a "|" behind each pass. No two of its groups are ever homogeneous.
class Scripted : public SeveralGroups {
 public:
    Scripted(const SeveralGroupsRules& rules, const Script& given, int categories)
        : SeveralGroups(Settings(given), rules, ComparisonRulesOf::kJonckTer), script(given), count(categories) {}

    QKXML::XMLElement* MakeResultElement() override { return nullptr; }

    /// Runs to the end, over a record in each category.
    Calls Run() {
        do {
            EXPECT_TRUE(BeginPass().IsOK());
            for (int category = 0; category < count; ++category) {
                std::vector<double> row{0, static_cast<double>(category)};
                Record record = Record::View(row.data(), row.size());
                EXPECT_TRUE(ProcessRecord(record).IsOK());
            }
            EXPECT_TRUE(EndPass().IsOK());
            calls.emplace_back("|");
        } while (NeedsAnotherPass() && calls.size() < 100);
        return calls;
    }

    using SeveralGroups::messages;

 private:
    static std::unique_ptr<QKSettings> Settings(const Script& script) {
        auto settings = std::make_unique<QKSettings>();
        settings->AddSetting("variableIndex", 0);
        settings->AddSetting("groupVariableIndex", 1);
        settings->AddSetting("pairWise", script.pairwise);
        settings->AddSetting("stepWise", script.stepwise);
        return settings;
    }

    void ReadOwnSettings() override { preparesComparisons = script.prepares; }
    void CountCategories() override { categoryCount = count; }
    int BriefPasses() const override { return script.settlesIn + 1; }
    void BeginOverall() override {
        calls.emplace_back("overall");
        BeginBoxes();
    }
    void Take(const GroupedRecords&) override {}
    void EndOverallPass() override {
        if (overallPass == script.settlesIn) Settle(script.isSignificant);
    }
    void EndPairs() override { calls.emplace_back("end pairs"); }
    void BeginSteps() override {
        calls.emplace_back("steps");
        steps.Begin(activeGroups.size(), activeGroups.size());
    }
    void EndPreparation() override { calls.emplace_back("prepared"); }
    StepwiseComparison::Outcome ComputeStep(SubsetRecord& range) override {
        range.sig = 0;
        return StepwiseComparison::Outcome::kComputed;
    }
    void EndStep() override {
        calls.emplace_back("end step");
        SeveralGroups::EndStep();
    }

    Script script;
    int count;
    Calls calls;
};

Calls CallsOf(const SeveralGroupsRules& rules, const Script& script, int categories = 4) {
    return Scripted(rules, script, categories).Run();
}

TEST(SeveralGroups, ThreePassesWhereNothingIsCompared) {
    EXPECT_EQ(CallsOf(kPlain, {}), Calls({"|", "overall", "|", "|"}));
    EXPECT_EQ(CallsOf(kEarly, {.settlesIn = 0}), Calls({"|", "overall", "|", "|"}));
}

// Four groups that all differ: candidates of three and of two, then of two.
TEST(SeveralGroups, PairsComeBeforeSteps) {
    EXPECT_EQ(CallsOf(kPlain, {.pairwise = true, .stepwise = true}),
              Calls({"|", "overall", "|", "|", "end pairs", "|", "steps", "end step", "|", "end step", "|"}));
}

TEST(SeveralGroups, APreparedComparisonTakesTwoPassesAndBeginsOnce) {
    EXPECT_EQ(CallsOf(kPlain, {.pairwise = true, .prepares = true}),
              Calls({"|", "overall", "|", "|", "prepared", "|", "end pairs", "|"}));
    EXPECT_EQ(
        CallsOf(kPlain, {.stepwise = true, .prepares = true}),
        Calls({"|", "overall", "|", "|", "steps", "prepared", "|", "end step", "|", "prepared", "|", "end step", "|"}));
}

TEST(SeveralGroups, AnEarlyStepGoesWithTheOutliers) {
    EXPECT_EQ(CallsOf(kEarly, {.stepwise = true, .settlesIn = 0}),
              Calls({"|", "overall", "|", "steps", "end step", "|", "end step", "|"}));
}

TEST(SeveralGroups, ARefusedComparisonIsNeverBegun) {
    for (const SeveralGroupsRules& rules : {kPlain, kEarly}) {
        for (const bool isSignificant : {false, true}) {
            Scripted test(rules,
                          {.pairwise = true,
                           .stepwise = true,
                           .settlesIn = rules.firstStep == FirstStep::kWithTheOutliers ? 0 : 2,
                           .isSignificant = isSignificant},
                          isSignificant ? 2 : 4);
            EXPECT_EQ(test.Run(), Calls({"|", "overall", "|", "|"}));
            ASSERT_EQ(test.messages.size(), 2U);
            EXPECT_EQ(test.messages[0].status.GetErrorCode(), isSignificant ? 1 : 3);
            EXPECT_EQ(test.messages[1].status.GetErrorCode(), isSignificant ? 2 : 4);
        }
    }
}

}  // namespace
