// Comparisons of groups that are told to stop while they work.

#include <gtest/gtest.h>

#include <memory>
#include <vector>

#include "independent/TARNJonckTer.h"
#include "independent/TARNKSMedian.h"
#include "independent/TieRuns.h"
#include "machine/WorkShare.h"
#include "records/TARNSortedDataSet.h"
#include "support/UnivariateCollector.h"
#include "tests/harness/DrivenTest.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

constexpr int kGroups = 4;

class FourCategories : public UnivariateResults {
 public:
    FourCategories() : UnivariateResults(collector) {}
    int GetCategoryCount(int) const override { return kGroups; }

 private:
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
};

/// Values that rise with the group.
std::vector<std::vector<double>> RisingRows() {
    std::vector<std::vector<double>> rows;
    for (int i = 0; i < 40; ++i) rows.push_back({static_cast<double>(i), static_cast<double>(i / 10)});
    return rows;
}

/// How many pairs are shown of a run that is stopped when so many passes have been read.
template <typename Test>
std::size_t PairsOfRunStoppedInPass(int stoppedIn) {
    auto settings = std::make_unique<QKSettings>();
    settings->AddSetting("variableIndex", 0);
    settings->AddSetting("groupVariableIndex", 1);
    settings->AddSetting("pairWise", 1);
    settings->AddSetting("sigLevel", 0.05);
    bool isStopped = false;
    const WorkShare work(1, [&] { return isStopped; });
    FourCategories descriptives;
    Test test(std::move(settings));
    test.SetWork(&work);
    test.SetUnivariateResults(&descriptives);
    int passes = 0;
    do {
        harness::BeginPassOver(test, RisingRows());
        isStopped = ++passes == stoppedIn;
        EXPECT_FALSE(test.EndPass().IsError());
    } while (test.NeedsAnotherPass());
    return several::Pairs(harness::ElementOf(test)).size();
}

TEST(StoppedComparison, MakesNoFurtherPairs) {
    constexpr int kNever = 99;
    EXPECT_EQ(PairsOfRunStoppedInPass<TARNJonckTer>(kNever), 6U);
    EXPECT_EQ(PairsOfRunStoppedInPass<TARNJonckTer>(4), 0U);
    EXPECT_EQ(PairsOfRunStoppedInPass<TARNKSMedian>(kNever), 6U);
    EXPECT_EQ(PairsOfRunStoppedInPass<TARNKSMedian>(5), 0U);
}

TEST(StoppedComparison, SumsOverRunsOfTiesAreLeft) {
    const auto questionsOf = [](bool isStopped) {
        const WorkShare work(1, [=] { return isStopped; });
        TieRuns runs;
        runs.Begin(2, &work);
        for (int run = 0; run < 5000; ++run) {
            runs.Add(0, 1);
            runs.Add(1, 1);
            runs.EndRun();
        }
        int asked = 0;
        const auto term = [&](std::int64_t) { return static_cast<double>(++asked); };
        static_cast<void>(runs.SumsOfPairs<double>(term, false));
        static_cast<void>(runs.SumsOfRanges<double>(1, term));
        static_cast<void>(runs.SumsOfAllRanges<double>(term));
        return asked;
    };
    EXPECT_GE(questionsOf(false), 15'000);
    EXPECT_EQ(questionsOf(true), 0);
}

}  // namespace
