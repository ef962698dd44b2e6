// Brief runs of the tests of independent groups: the statistics as ever, and nothing that only a plot shows.

#include <gtest/gtest.h>

#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "independent/TARNJonckTer.h"
#include "independent/TARNKSMedian.h"
#include "independent/TARNKSmirnowTwoSample.h"
#include "independent/TARNKruskalWOneWay.h"
#include "independent/TARNMannWU.h"
#include "independent/TARNMoses.h"
#include "independent/TARNWaldWolfRuns.h"
#include "records/TARNSortedDataSet.h"
#include "support/UnivariateCollector.h"
#include "tests/harness/BriefRun.h"
#include "tests/harness/DrivenTest.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

using groups::Rows;

/// Values that rise with the group, some of them far out, with weights.
Rows RowsOfGroups(int groupCount) {
    Rows rows;
    for (int i = 0; i < 30 * groupCount; ++i) {
        const int group = i % groupCount;
        const double value = (i * 7 % 11) / 4.0 + 3 * group + (i % 29 == 0 ? 40 : 0);
        rows.push_back({value, static_cast<double>(group), 1.0 + i % 3});
    }
    return rows;
}

struct Case {
    const char* test;
    int groupCount;
    const char* comparison;
    bool hasPlot;
};
void PrintTo(const Case& one, std::ostream* out) {
    *out << one.test << " of " << one.groupCount << " with " << one.comparison;
}

class BriefIndependentRuns : public testing::TestWithParam<Case> {};

TEST_P(BriefIndependentRuns, LackThePlotsAndNothingElse) {
    const Case& one = GetParam();
    harness::Fields fields = several::Categories(static_cast<std::size_t>(one.groupCount));
    fields.Weight("w");
    harness::ExpectBriefIsTheSameWithoutPlots(one.test, several::Comparing(one.comparison), fields,
                                              RowsOfGroups(one.groupCount), one.hasPlot);
}

INSTANTIATE_TEST_SUITE_P(
    Tests, BriefIndependentRuns,
    testing::Values(Case{"IMannWhitneyU", 2, "none", true}, Case{"IMoses", 2, "none", true},
                    Case{"IWaldWolfowitzRuns", 2, "none", true}, Case{"IKolmogorovSmirnov", 2, "none", true},
                    Case{"IHodgesLehmannEstimateGroups", 2, "none", false}, Case{"IKruskalWallis", 5, "none", true},
                    Case{"IKruskalWallis", 5, "pairWise", true}, Case{"IKruskalWallis", 5, "stepWise", true},
                    Case{"IJonckheereTerpstra", 5, "none", true}, Case{"IJonckheereTerpstra", 5, "pairWise", true},
                    Case{"IJonckheereTerpstra", 5, "stepWise", true}, Case{"IMedian", 2, "none", true},
                    Case{"IMedian", 5, "pairWise", true}, Case{"IMedian", 5, "stepWise", true}));

// ---- Passes ----

/// Two categories of a field.
class TwoCategories : public UnivariateResults {
 public:
    TwoCategories() : UnivariateResults(collector) {}
    bool GetFrequencies(int, std::map<int, std::int32_t>& frequencies) const override {
        frequencies = {{0, 4}, {1, 4}};
        return true;
    }
    int GetCategoryCount(int) const override { return 2; }

 private:
    QKVarList fields;
    UnivariateCollector collector{QKTarn::TarnMemoIterator(), fields};
};

template <typename Test>
int PassesOf(bool isBrief) {
    auto settings = std::make_unique<QKSettings>();
    for (const auto& [key, value] :
         {std::pair("variableIndex", 0), {"groupVariableIndex", 1}, {"numberOfCategories", 2}}) {
        settings->AddSetting(key, value);
    }
    settings->AddSetting("groupVariableValue1", 0.0);
    settings->AddSetting("groupVariableValue2", 1.0);
    settings->AddSetting("sigLevel", 0.05);
    TwoCategories descriptives;
    Test test(std::move(settings));
    test.SetBrief(isBrief);
    test.SetUnivariateResults(&descriptives);
    int passes = 0;
    do {
        harness::BeginPassOver(test, {{1, 0}, {2, 1}, {3, 0}, {4, 0}, {5, 1}, {6, 1}, {7, 0}, {8, 1}});
        EXPECT_FALSE(test.EndPass().IsError());
        ++passes;
    } while (test.NeedsAnotherPass() && passes < 10);
    return passes;
}

TEST(BriefIndependentTests, HaveNoPassForPlots) {
    EXPECT_EQ(std::pair(PassesOf<TARNMannWU>(false), PassesOf<TARNMannWU>(true)), std::pair(2, 1));
    EXPECT_EQ(std::pair(PassesOf<TARNMoses>(false), PassesOf<TARNMoses>(true)), std::pair(3, 1));
    EXPECT_EQ(std::pair(PassesOf<TARNWaldWolfRuns>(false), PassesOf<TARNWaldWolfRuns>(true)), std::pair(2, 1));
    EXPECT_EQ(std::pair(PassesOf<TARNKruskalWOneWay>(false), PassesOf<TARNKruskalWOneWay>(true)), std::pair(3, 1));
    EXPECT_EQ(std::pair(PassesOf<TARNJonckTer>(false), PassesOf<TARNJonckTer>(true)), std::pair(3, 2));
    // The counts above the median need its pass, too, and the walk of the distributions the sizes.
    EXPECT_EQ(std::pair(PassesOf<TARNKSMedian>(false), PassesOf<TARNKSMedian>(true)), std::pair(3, 3));
    EXPECT_EQ(std::pair(PassesOf<TARNKSmirnowTwoSample>(false), PassesOf<TARNKSmirnowTwoSample>(true)),
              std::pair(2, 2));
}

}  // namespace
