// Brief runs of the tests of related samples: the statistics as ever, and nothing that only a plot shows.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "tests/harness/BriefRun.h"
#include "tests/related/RankedRun.h"

namespace {

using harness::ExpectBriefIsTheSameWithoutPlots;
using harness::Fields;
using harness::Rows;

Rows ThreeFields() {
    Rows rows;
    for (int i = 0; i < 60; ++i)
        rows.push_back({double(i * 7 % 11), double(i * 5 % 13) + 1, double(i % 4), 1.0 + i % 3});
    return rows;
}

TEST(BriefRelatedRuns, ShowTheStatisticsAlone) {
    Fields fields = ranked::ContinuousFields(3);
    fields.Weight("w");
    for (const char* test : {"RSign", "RWilcoxonSignedRanks"}) {
        ExpectBriefIsTheSameWithoutPlots(test, ranked::Entry({"x0", "x1"}), fields, ThreeFields(), true);
    }
    for (const char* test : {"RFriedmansTwoWayByRanks", "RKendallsCoefficient"}) {
        for (const char* comparison : {"none", "pairWise", "stepWise"}) {
            ExpectBriefIsTheSameWithoutPlots(test, ranked::Entry({"x0", "x1", "x2"}, comparison), fields, ThreeFields(),
                                             true);
        }
    }
}

TEST(BriefRelatedRuns, ShowTheEstimateOfAPairAsEver) {
    Fields fields = ranked::ContinuousFields(3);
    fields.Weight("w");
    ExpectBriefIsTheSameWithoutPlots("RHodgesLehmannEstimatePairs", ranked::Entry({"x0", "x1"}), fields, ThreeFields(),
                                     false);
}

TEST(BriefRelatedRuns, AskForNoDescriptivesThatNoTestNeeds) {
    Fields fields = ranked::ContinuousFields(3);
    fields.Text("origin", {"a", "b"});
    Rows rows;
    for (int i = 0; i < 12; ++i) rows.push_back({double(i), double(i * i % 5), double(i % 3), double(i % 2)});
    for (const char* test : {"RSign", "RWilcoxonSignedRanks", "RFriedmansTwoWayByRanks"}) {
        QKSettings entry = ranked::Entry({"x0", "x1"});
        AddVecSetting(entry, "originVariableName", std::vector<std::string>{"origin"}, false);
        const harness::Outcome brief = ExpectBriefIsTheSameWithoutPlots(test, entry, fields, rows, true);
        for (int field = 0; field < 4; ++field) EXPECT_FALSE(brief.document.FieldInfo(field).Exists()) << test;
    }
}

}  // namespace
