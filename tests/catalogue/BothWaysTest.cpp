// Every test of the catalogue takes its records by columns, and one by one where a value is no number. What it says
// may not depend on that, nor on how the records are divided into batches: here each is driven three ways over the same
// random tables, and its element is compared to the letter. One by one is the reference: it is what the tables of
// numbers in the other folders were checked against. That holds for both arithmetics.

#include <gtest/gtest.h>

#include <algorithm>
#include <memory>
#include <random>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "catalogue/TARNTestCatalog.h"
#include "contract/ColumnPass.h"
#include "planning/TARNReporter.h"
#include "tests/harness/AllTests.h"
#include "tests/harness/PlannedTest.h"
#include "tests/harness/TestRun.h"
#include "vocabulary/TestFacts.h"

namespace {

using harness::AllEntries;
using harness::Data;
using harness::Entry;
using harness::kScenes;
using harness::PlannedTest;
using harness::Rows;
using harness::Scene;

using Case = std::tuple<Entry, Scene, bool>;

class BothWays : public testing::TestWithParam<Case> {};

std::string NameOf(const testing::TestParamInfo<Case>& info) {
    return std::get<0>(info.param).name + "_" + std::get<1>(info.param).name +
           (std::get<2>(info.param) ? "_extended" : "");
}

}  // namespace

INSTANTIATE_TEST_SUITE_P(Tests, BothWays,
                         testing::Combine(testing::ValuesIn(AllEntries()), testing::ValuesIn(kScenes), testing::Bool()),
                         NameOf);

TEST_P(BothWays, GiveTheSameElement) {
    const auto& [entry, scene, isExtended] = GetParam();
    Data data(scene, 20'261'122);
    const std::string byRecords = PlannedTest(entry, data.fields, data.rows, scene, isExtended).ByRecords();
    EXPECT_EQ(PlannedTest(entry, data.fields, data.rows, scene, isExtended).ByWorker(), byRecords);
    for (int round = 0; round < (scene.records > 1000 ? 1 : 5); ++round) {
        ASSERT_EQ(PlannedTest(entry, data.fields, data.rows, scene, isExtended).ByBatches(data.random), byRecords);
    }
    if (scene.records > 1000) return;  // of which a batch of few records each would take minutes
    for (const std::size_t size : {std::size_t{1}, std::size_t{2}, std::size_t{3}, scene.records}) {
        PlannedTest planned(entry, data.fields, data.rows, scene, isExtended);
        ASSERT_EQ(planned.ByBatchesOf([&] { return size; }), byRecords) << "batches of " << size;
    }
}

TEST(BothWaysTest, EveryTestOfTheCatalogueIsHereAndTakesColumns) {
    Data data(kScenes[1], 1);
    for (const TARNTestRow& row : TestCatalog()) {
        const auto entry = std::find_if(AllEntries().begin(), AllEntries().end(),
                                        [&](const Entry& each) { return each.setting == row.settingName; });
        ASSERT_NE(entry, AllEntries().end()) << row.settingName;
        PlannedTest planned(*entry, data.fields, data.rows, kScenes[1], false);
        EXPECT_NE(dynamic_cast<ColumnTest*>(&planned.Test()), nullptr) << row.settingName;
    }
}

namespace {

class Steps : public ProgressListener {
 public:
    void OnProgress(ProgressReport& report) override {
        EXPECT_EQ(std::this_thread::get_id(), thread) << "the host is called on the thread of the run alone";
        percents.push_back(dynamic_cast<TARNReporter&>(report).GetCurrentStepNum());
    }
    std::thread::id thread = std::this_thread::get_id();
    std::vector<int> percents;
};

}  // namespace

namespace {

void ExpectTheSameOfAnyThreads(const Scene& scene, bool isExtended) {
    Data data(scene, 7);
    std::string document;
    std::vector<int> percents;
    for (const int threads : {1, 2, 4, 5}) {
        QKSettings settings;
        settings.AddSetting("threads", threads);
        settings.AddSetting("sigLevel", 0.9);
        settings.AddSetting("missingTreatment", scene.analysisMissing ? "analysis" : "listwise");
        if (isExtended) settings.AddSetting("extendedArithmetic", true);
        for (const Entry& entry : AllEntries()) settings.AddSetting(entry.setting, entry.settings);
        Steps steps;
        const harness::Outcome outcome = harness::Run(settings, data.fields, data.rows, &steps);
        ASSERT_TRUE(outcome.status.IsOK());
        ASSERT_EQ(outcome.document.TestCount(), static_cast<int>(AllEntries().size()));
        if (threads == 1) {
            document = outcome.text;
            percents = steps.percents;
        }
        EXPECT_TRUE(outcome.text == document) << threads << " threads";
        EXPECT_EQ(steps.percents, percents) << threads << " threads";
    }
}

}  // namespace

TEST(BothWaysTest, AnyNumberOfThreadsGivesTheSameDocumentAndProgress) {
    for (const Scene& scene : kScenes) {
        for (const bool isExtended : {false, true}) {
            SCOPED_TRACE(scene.name + (isExtended ? " extended" : ""));
            ExpectTheSameOfAnyThreads(scene, isExtended);
        }
    }
}

TEST(BothWaysTest, TheTestsAreNotJustInError) {
    for (const Entry& entry : AllEntries()) {
        const Scene& scene = kScenes[1];
        Data data(scene, 20'261'122);
        const std::string element = PlannedTest(entry, data.fields, data.rows, scene, false).ByRecords();
        EXPECT_EQ(element.find("\"error\""), std::string::npos) << entry.name << "\n" << element.substr(0, 1500);
    }
}
