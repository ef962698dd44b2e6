#include <gtest/gtest.h>

#include <memory>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "catalogue/TARNFactory.h"
#include "support/QKVecValue.h"
#include "tests/harness/AllocationFailure.h"
#include "tests/planning/WorkerRig.h"

using harness::AddListTest;
using harness::Fields;
using harness::kNoCategory;
using harness::kNone;
using harness::Outcome;

namespace {

using Rows = std::vector<std::vector<double>>;

const Rows kPairs{{1, 2}, {1, 3}, {5, 4}, {2, 2}};  // two positive differences, one negative, one tie

Fields PairFields() {
    return Fields().Continuous("x").Continuous("y");
}

/// Settings that ask for a sign test on x and y.
QKSettings SignSettings() {
    QKSettings settings;
    AddListTest(settings, "RSign", {"x", "y"});
    return settings;
}

std::string TotalN(const Outcome& outcome, int test = 0) {
    return outcome.document.Test(test).Sub("StatisticsResult").Row("TotalN");
}

std::string TestsAttribute(const Outcome& outcome, const char* name) {
    return outcome.document.Output().child("NonParametricTests").attribute(name).value();
}

/// An algorithm that is kept, for calls in another order than a whole run's.
struct Engine {
    explicit Engine(QKSettings executionSettings, Fields tableFields = PairFields())
        : settings(std::move(executionSettings)), fields(std::move(tableFields)) {
        TARNFactory factory;
        algorithm.reset(factory.CreateQKAlgorithm(settings, fields.List()));
    }

    QKStatus Run(Rows rows) {
        harness::RowStream stream(std::move(rows));
        return algorithm->Run(stream);
    }
    QKStatus Write(std::string& text) {
        std::ostringstream out;
        const QKStatus status = algorithm->WriteResults(out, {});
        text = out.str();
        return status;
    }

    QKSettings settings;
    Fields fields;
    std::unique_ptr<IQKAlgorithm> algorithm;
};

}  // namespace

// ---- What was requested ----

TEST(TARNPlannerTest, OnlyScalarSettingsYield220001AndAreNotComplete) {
    QKSettings settings;
    settings.AddSetting("missingTreatment", "analysis");
    settings.AddSetting("sigLevel", 0.05);
    settings.AddSetting("RSign", true);                                     // a test's name on a scalar
    AddVecSetting(settings, "RMcNemar", std::vector<double>{1, 2}, false);  // and on a vector
    Fields fields = PairFields();
    const Outcome outcome = harness::Run(settings, fields, kPairs);
    EXPECT_EQ(outcome.status, QKStatus(220001));
    EXPECT_FALSE(outcome.complete);
    EXPECT_EQ(outcome.writeStatus, QKStatus(6));
    EXPECT_EQ(outcome.text, "");
}

TEST(TARNPlannerTest, AnEmptyTreeYields220001) {
    Fields fields = PairFields();
    EXPECT_EQ(harness::Run(QKSettings(), fields, kPairs).status, QKStatus(220001));
}

TEST(TARNPlannerTest, AListOfUnknownNameCountsAndTheDocumentHoldsNoTest) {
    for (const std::string name : {"NoSuchTest", "rsign", "RSign ", ""}) {
        SCOPED_TRACE(name);
        QKSettings settings;
        AddListTest(settings, name, {"x", "y"});
        Fields fields = PairFields();
        StepListener listener;
        const Outcome outcome = harness::Run(settings, fields, kPairs, &listener);
        EXPECT_TRUE(outcome.status.IsOK());
        EXPECT_TRUE(outcome.complete);
        EXPECT_TRUE(outcome.writeStatus.IsOK());
        EXPECT_EQ(outcome.document.TestCount(), 0);
        EXPECT_EQ(TestsAttribute(outcome, "number"), "0");
        EXPECT_TRUE(listener.steps.empty()) << "an empty sequence of workers has nothing to tell";
    }
}

TEST(TARNPlannerTest, TheMainWorkerIsNotRunWithoutATestInIt) {
    QKSettings settings;
    AddListTest(settings, "NoSuchTest", {});
    Engine engine(settings);
    harness::RowStream stream(kPairs);
    EXPECT_TRUE(engine.algorithm->Run(stream).IsOK());
    EXPECT_EQ(stream.NextCount(), 4) << "the records are read once, into the store";
    EXPECT_EQ(stream.RewindCount(), 1);
}

TEST(TARNPlannerTest, ElementsStandInTheOrderOfTheSettingsARepeatedNameIncluded) {
    QKSettings settings;
    AddListTest(settings, "RSign", {"x", "y"});
    AddListTest(settings, "NoSuchTest", {"x"});
    AddListTest(settings, "RMcNemar", {"g", "h"});
    AddListTest(settings, "RSign", {"y", "x"});
    Fields fields = Fields().Continuous("x").Continuous("y").Numeric("g", {0, 1}).Numeric("h", {0, 1});
    const Outcome outcome = harness::Run(settings, fields, {{1, 2, 0, 1}, {3, 5, 1, 1}, {4, 1, 0, 0}});
    ASSERT_TRUE(outcome.status.IsOK());
    ASSERT_EQ(outcome.document.TestCount(), 3);
    EXPECT_EQ(outcome.document.Test(0).Attribute("name"), "RSign");
    EXPECT_EQ(outcome.document.Test(1).Attribute("name"), "RMcNemar");
    EXPECT_EQ(outcome.document.Test(2).Attribute("name"), "RSign");
    EXPECT_EQ(outcome.document.Test(0).Sub("Condition").Row("%0"), "0");
    EXPECT_EQ(outcome.document.Test(2).Sub("Condition").Row("%0"), "1");
    EXPECT_EQ(TestsAttribute(outcome, "number"), "3");
}

TEST(TARNPlannerTest, ATestOnAnUnknownFieldDoesNotStopTheOthersAndShowsItsError) {
    QKSettings settings;
    AddListTest(settings, "RSign", {"x", "nowhere"});
    AddListTest(settings, "RSign", {"x", "y"});
    Fields fields = PairFields();
    const Outcome outcome = harness::Run(settings, fields, kPairs);
    EXPECT_TRUE(outcome.status.IsOK());
    ASSERT_EQ(outcome.document.TestCount(), 2);
    EXPECT_EQ(outcome.document.Test(0).Attribute("decision"), "unknown");
    const std::vector<std::string> messages = harness::MessagesOf(outcome.document.Test(0));
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.front(), "220903 error nowhere");
    EXPECT_EQ(TotalN(outcome, 1), "4");
}

// ---- The settings that the planner reads itself ----

TEST(TARNPlannerTest, AnyTreatmentOtherThanAnalysisIsListwise) {
    struct Row {
        const char* treatment;  ///< null: not given
        const char* totalN;
        const char* written;
    };
    // The third field is used by no test; it is missing in two of the records.
    const Rows rows{{1, 2, 0}, {3, 1, kNoCategory}, {2, 4, 1}, {5, 9, kNoCategory}, {kNone, 1, 0}};
    const std::vector<Row> table{{nullptr, "4", "analysis"},    {"analysis", "4", "analysis"},
                                 {"listwise", "2", "listwise"}, {"", "2", "listwise"},
                                 {"Analysis", "2", "listwise"}, {"analysis ", "2", "listwise"},
                                 {"pairwise", "2", "listwise"}};
    for (const Row& row : table) {
        SCOPED_TRACE(row.treatment ? row.treatment : "(absent)");
        QKSettings settings;
        if (row.treatment) settings.AddSetting("missingTreatment", row.treatment);
        AddListTest(settings, "RSign", {"x", "y"});
        Fields fields = Fields().Continuous("x").Continuous("y").Numeric("g", {1, 2});
        const Outcome outcome = harness::Run(settings, fields, rows);
        EXPECT_TRUE(outcome.status.IsOK());
        EXPECT_EQ(TotalN(outcome), row.totalN);
        EXPECT_EQ(TestsAttribute(outcome, "missingTreatment"), row.written);
    }
}

TEST(TARNPlannerTest, TheMainWorkerReadsTheSourceAndNotTheFilteredStore) {
    // Kind 4 with -1 is lost to the store but not to the passes; with the missing double it is the other way round.
    QKSettings settings = SignSettings();
    settings.AddSetting("missingTreatment", "listwise");
    Fields fields = Fields().Continuous("x").Continuous("y").Other("o");
    const Outcome outcome = harness::Run(settings, fields, {{1, 2, 7}, {1, 2, -1}, {1, 2, -1}, {1, 2, kNone}});
    EXPECT_TRUE(outcome.status.IsOK());
    EXPECT_EQ(TotalN(outcome), "3");
}

TEST(TARNPlannerTest, LevelsAreReadAndDefaultTo5And95Percent) {
    Fields fields = PairFields();
    const Outcome byDefault = harness::Run(SignSettings(), fields, kPairs);
    EXPECT_EQ(TestsAttribute(byDefault, "sigLevel"), "0.05");
    EXPECT_EQ(TestsAttribute(byDefault, "confidenceLevel"), "0.95");

    QKSettings settings = SignSettings();
    settings.AddSetting("sigLevel", "0.2");  // a text that is a number
    settings.AddSetting("confidenceLevel", 0.5);
    const Outcome given = harness::Run(settings, fields, kPairs);
    EXPECT_EQ(TestsAttribute(given, "sigLevel"), "0.2");
    EXPECT_EQ(TestsAttribute(given, "confidenceLevel"), "0.5");
}

TEST(TARNPlannerTest, TheSignificanceLevelReachesTheTests) {
    // Five positive differences of five: the exact significance is 2 / 32 = 0.0625.
    const Rows rows{{1, 2}, {1, 3}, {1, 4}, {1, 5}, {1, 6}};
    for (const auto& [level, decision] : {std::pair{0.06, "retain"}, std::pair{0.07, "reject"}}) {
        QKSettings settings = SignSettings();
        settings.AddSetting("sigLevel", level);
        Fields fields = PairFields();
        EXPECT_EQ(harness::Run(settings, fields, rows).document.Test(0).Attribute("decision"), decision) << level;
    }
}

TEST(TARNPlannerTest, TheCaseIdFieldIsLookedUpByName) {
    for (const auto& [name, shown] : {std::pair{"x", false}, std::pair{"nowhere", true}}) {
        QKSettings settings = SignSettings();
        settings.AddSetting("caseIDVariableName", name);
        Fields fields = PairFields();
        const Outcome outcome = harness::Run(settings, fields, kPairs);
        EXPECT_EQ(outcome.document.FieldInfo(0).Exists(), shown) << name;
        EXPECT_TRUE(outcome.document.FieldInfo(1).Exists());
    }
}

TEST(TARNPlannerTest, TheModelIdIsReadWhenTheDocumentIsWritten) {
    Engine engine(SignSettings());
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    std::string text;
    EXPECT_TRUE(engine.Write(text).IsOK());
    EXPECT_NE(text.find("<PMMLModel modelID=\"0\""), std::string::npos);
    engine.settings.AddSetting("TarnTabulonModelID", 17);
    EXPECT_TRUE(engine.Write(text).IsOK());
    EXPECT_NE(text.find("<PMMLModel modelID=\"17\""), std::string::npos);
}

TEST(TARNPlannerTest, TheWeightComesFromTheFieldsAndNotFromTheSettings) {
    QKSettings settings = SignSettings();
    settings.AddSetting("weightVariableIndex", 2);
    const Rows rows{{1, 2, 10}, {1, 3, 4}, {5, 4, 3}, {2, 2, 1}};
    Fields unweighted = Fields().Continuous("x").Continuous("y").Continuous("w");
    EXPECT_EQ(TotalN(harness::Run(settings, unweighted, rows)), "4");
    Fields weighted = Fields().Continuous("x").Continuous("y").Weight("w");
    EXPECT_EQ(TotalN(harness::Run(settings, weighted, rows)), "18");
}

// ---- Failures of reading ----

TEST(TARNPlannerTest, ErrorsOfReadingEndTheRunBeforeAnyTestIsBuilt) {
    struct Row {
        const char* what;
        const char* treatment;
        Rows rows;
        long code;
    };
    const std::vector<Row> table{
        {"an empty stream", "analysis", {}, 220003},
        {"a filter that drops every record", "listwise", {{1, kNone, 1}, {kNone, 1, 1}}, 220003},
        {"a weight beyond 32 bits", "analysis", {{1, 2, 1}, {1, 2, 2147483648.0}}, 220026},
        {"the same in a record that a filter would drop", "listwise", {{1, 2, 1}, {kNone, 2, 2147483648.0}}, 220026},
    };
    for (const Row& row : table) {
        SCOPED_TRACE(row.what);
        for (const bool requested : {true, false}) {  // without a request 220001 does not replace the code
            QKSettings settings;
            settings.AddSetting("missingTreatment", row.treatment);
            if (requested) AddListTest(settings, "RSign", {"x", "y"});
            Fields fields = Fields().Continuous("x").Continuous("y").Weight("w");
            const Outcome outcome = harness::Run(settings, fields, row.rows);
            EXPECT_EQ(outcome.status, QKStatus(row.code));
            EXPECT_FALSE(outcome.complete);
            EXPECT_EQ(outcome.writeStatus, QKStatus(6));
        }
    }
}

TEST(TARNPlannerTest, TheLargestWeightIsAccepted) {
    Fields fields = Fields().Continuous("x").Continuous("y").Weight("w");
    const Outcome outcome = harness::Run(SignSettings(), fields, {{1, 2, 2147483647.0}});
    EXPECT_TRUE(outcome.status.IsOK());
    EXPECT_EQ(TotalN(outcome), "2147483647");
}

TEST(TARNPlannerTest, AStreamThatCannotBeReadAgainYields220005) {
    class OnePassStream : public RecordIterator {
     public:
        bool HasMore() override { return true; }
        Record* Next() override { return nullptr; }
        int GetState() override { return 0; }
    };
    Engine engine(SignSettings());
    OnePassStream stream;
    EXPECT_EQ(engine.algorithm->Run(stream), QKStatus(220005));
    EXPECT_FALSE(engine.algorithm->IsComplete());
}

TEST(TARNPlannerTest, AFailedAllocationAnywhereEndsInAStatusAndTheNextRunIsAsIfNothingHadBeen) {
    QKSettings settings = SignSettings();
    QKSettings sorted;  // a test that reads a sorted view, so that the view's making can fail
    sorted.AddSetting("variableName", "x");
    sorted.AddSetting("isUseSample", true);
    settings.AddSetting("OKolmogorovSmirnovNormal", sorted);
    Engine engine(settings);
    std::string expected;
    ASSERT_TRUE(engine.Run(kPairs).IsOK());
    ASSERT_TRUE(engine.Write(expected).IsOK());
    bool failed = true;
    for (long successes = 0; failed; ++successes) {
        SCOPED_TRACE(successes);
        harness::RowStream stream(kPairs);
        QKStatus status;
        {
            const component_test::AllocationFailure failure(successes);
            status = engine.algorithm->Run(stream);
            failed = component_test::AllocationFailure::HasFailed();
        }
        EXPECT_TRUE(status.IsOK() || status == QKStatus(220002) || status == QKStatus(220012));
        EXPECT_EQ(engine.algorithm->IsComplete(), status.IsOK());
        std::string text;
        EXPECT_EQ(engine.Write(text), status.IsOK() ? QKStatus() : QKStatus(6));
        EXPECT_TRUE(failed || text == expected);
    }
    std::string again;
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_TRUE(engine.Write(again).IsOK());
    EXPECT_EQ(again, expected);
}

// ---- The life of the object ----

TEST(TARNPlannerTest, WriteResultsBeforeRunReturnsCode6AndWritesNothing) {
    Engine engine(SignSettings());
    std::string text;
    EXPECT_FALSE(engine.algorithm->IsComplete());
    EXPECT_TRUE(engine.algorithm->GetStatus().IsOK());
    EXPECT_EQ(engine.Write(text), QKStatus(6));
    EXPECT_EQ(text, "");
    EXPECT_TRUE(engine.algorithm->GetStatus().IsOK()) << "a refusal is no failure of the run";
}

TEST(TARNPlannerTest, WriteResultsAfterAFailedRunReturnsCode6AlsoBehindAGoodOne) {
    Engine engine(SignSettings());
    std::string text;
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_TRUE(engine.Write(text).IsOK());
    EXPECT_EQ(engine.Run({}), QKStatus(220003));
    EXPECT_EQ(engine.algorithm->GetStatus(), QKStatus(220003));
    EXPECT_TRUE(engine.algorithm->QueryStatus().IsOK()) << "always OK";
    EXPECT_EQ(engine.Write(text), QKStatus(6));
    EXPECT_EQ(text, "");
}

TEST(TARNPlannerTest, RunMayBeCalledAgainAndReleasesTheEarlierRun) {
    Engine engine(SignSettings());
    std::string first;
    std::string other;
    std::string again;
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_TRUE(engine.Write(first).IsOK());
    EXPECT_TRUE(engine.Run({{1, 2}}).IsOK());
    EXPECT_TRUE(engine.Write(other).IsOK());
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_TRUE(engine.Write(again).IsOK());
    EXPECT_EQ(first, again);
    EXPECT_EQ(harness::Document(other).Test(0).Sub("StatisticsResult").Row("TotalN"), "1");
    EXPECT_EQ(harness::Document(other).TestCount(), 1);
}

TEST(TARNPlannerTest, ADocumentMayBeWrittenTwiceAfterTheStreamIsGone) {
    Engine engine(SignSettings());
    EXPECT_TRUE(engine.Run(kPairs).IsOK());  // its stream is destroyed with the call
    std::string first;
    std::string second;
    EXPECT_TRUE(engine.Write(first).IsOK());
    EXPECT_TRUE(engine.Write(second).IsOK());
    EXPECT_EQ(first, second);
    EXPECT_FALSE(first.empty());
}

TEST(TARNPlannerTest, TellsABannerAndNoWarnings) {
    Engine engine(SignSettings());
    EXPECT_FALSE(engine.algorithm->GetDescription().empty());
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_TRUE(engine.algorithm->GetWarnings().empty());
    EXPECT_EQ(&engine.algorithm->GetWarnings(), &engine.algorithm->GetWarnings()) << "a reference, not a copy";
    engine.algorithm->Reserved();
}

// ---- Progress and cancel ----

TEST(TARNPlannerTest, TestsFillTheScaleFrom25To90Percent) {
    Fields fields = PairFields();
    StepListener listener;
    EXPECT_TRUE(harness::Run(SignSettings(), fields, kPairs, &listener).status.IsOK());
    // The sign test has two passes: 25, 25 + 65 / 2 truncated, 90.
    EXPECT_EQ(listener.steps, (std::vector<int>{25, 57, 90}));
}

TEST(TARNPlannerTest, SettingANullListenerKeepsTheOldOne) {
    Engine engine(SignSettings());
    StepListener listener;
    engine.algorithm->SetProgressListener(&listener);
    engine.algorithm->SetProgressListener(nullptr);
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_EQ(listener.steps.size(), 3u);
    StepListener other;
    engine.algorithm->SetProgressListener(&other);
    EXPECT_TRUE(engine.Run(kPairs).IsOK());
    EXPECT_EQ(listener.steps.size(), 3u);
    EXPECT_EQ(other.steps.size(), 3u);
}

TEST(TARNPlannerTest, SettingANullCancelQueryKeepsTheOldOne) {
    Engine engine(SignSettings());
    CancelAtPoll query(1);
    engine.algorithm->SetQueryCancel(&query);
    engine.algorithm->SetQueryCancel(nullptr);
    EXPECT_EQ(engine.Run(kPairs), QKStatus(1));
    EXPECT_EQ(query.polls, 1);
}

TEST(TARNPlannerTest, ACancelAtAnyPollEndsTheRunWithCode1) {
    Fields fields = PairFields();
    CancelAtPoll never(0);
    QKSettings settings = SignSettings();
    settings.AddSetting("threads", 1);  // with more of them the number of polls depends on how long they take
    ASSERT_TRUE(harness::Run(settings, fields, kPairs, nullptr, &never).status.IsOK());
    // Two passes with 3 polls around each and one at least within it, and 2 polls around the worker; the rest while the
    // records are read and described.
    ASSERT_GT(never.polls, 2 * (1 + 3) + 2);
    for (int poll = 1; poll <= never.polls; ++poll) {
        SCOPED_TRACE(poll);
        CancelAtPoll query(poll);
        const Outcome outcome = harness::Run(settings, fields, kPairs, nullptr, &query);
        EXPECT_EQ(outcome.status, QKStatus(1));
        EXPECT_FALSE(outcome.complete);
        EXPECT_EQ(outcome.writeStatus, QKStatus(6));
        EXPECT_EQ(outcome.text, "");
    }
}

TEST(TARNPlannerTest, CancelSetsTheFlagWithoutAnyQuery) {
    Engine engine(SignSettings());
    engine.algorithm->Cancel();
    EXPECT_TRUE(engine.algorithm->GetStatus().IsOK()) << "it sets the flag and nothing else";
    EXPECT_EQ(engine.Run(kPairs), QKStatus(1));
}
