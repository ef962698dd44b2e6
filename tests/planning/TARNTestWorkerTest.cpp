#include "planning/TARNTestWorker.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "tests/planning/WorkerRig.h"

using harness::Fields;
using harness::kNoCategory;
using harness::kNone;

namespace {

constexpr long kOutOfMemory = 220012;
constexpr long kSomeError = 220903;

/// The calls of one test, without its name.
CallLog CallsOf(const std::string& name, const CallLog& log) {
    CallLog calls;
    for (const std::string& call : log) {
        if (call.starts_with(name + " ")) calls.push_back(call.substr(name.size() + 1));
    }
    return calls;
}

/// The records that a test got, as told by the log: "1:10" is record 10 in pass 1.
CallLog RecordsOf(const std::string& name, const CallLog& log) {
    CallLog records;
    for (const std::string& call : CallsOf(name, log)) {
        if (call.starts_with("rec")) records.push_back(call.substr(3));
    }
    return records;
}

bool Has(const CallLog& log, const std::string& call) {
    return std::find(log.begin(), log.end(), call) != log.end();
}

}  // namespace

// ---- The order of the calls ----

TEST(TARNTestWorkerTest, CallsTestsInTheirOrderThroughOnePass) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
    rig.Add({.name = "a"});
    rig.Add({.name = "b"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_TRUE(rig.worker->CollectResults().IsOK());
    const CallLog expected{"a results", "b results", "a begin1",  "a used1",   "b begin1", "b used1",
                           "a rec1:10", "b rec1:10", "a rec1:20", "b rec1:20", "a end1",   "b end1",
                           "a again1",  "b again1",  "a element", "b element"};
    EXPECT_EQ(rig.log, expected);
}

TEST(TARNTestWorkerTest, RewindsTheStreamBeforeEveryPassAndGivesTheDescriptivesOnce) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
    rig.Add({.yes = {"again1", "again2"}});
    const int rewindsOfReading = rig.stream.RewindCount();
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(rig.stream.RewindCount() - rewindsOfReading, 3);
    const CallLog expected{"results", "begin1",  "used1",   "rec1:10", "rec1:20", "end1",   "again1",
                           "begin2",  "used2",   "rec2:10", "rec2:20", "end2",    "again2", "begin3",
                           "used3",   "rec3:10", "rec3:20", "end3",    "again3"};
    EXPECT_EQ(CallsOf("a", rig.log), expected);
}

TEST(TARNTestWorkerTest, ATestThatIsDoneRestsWhileTheOthersGoOnAndMayComeBack) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({.name = "a", .yes = {"again2"}});            // out of pass 2, back in pass 3
    rig.Add({.name = "b", .yes = {"again1", "again2"}});  // in all three
    EXPECT_TRUE(rig.Run().IsOK());
    const CallLog expected{"a results", "b results",                                                               //
                           "a begin1",  "a used1",   "b begin1",  "b used1",  "a rec1:10", "b rec1:10",            //
                           "a end1",    "b end1",    "a again1",  "b again1",                                      //
                           "b begin2",  "b used2",   "b rec2:10", "b end2",   "a again2",  "b again2",             //
                           "a begin2",  "a used2",   "b begin3",  "b used3",  "a rec2:10", "b rec3:10", "a end2",  //
                           "b end3",    "a again3",  "b again3"};
    EXPECT_EQ(rig.log, expected);
}

TEST(TARNTestWorkerTest, UsedFieldsAreAskedAnewInEveryPass) {
    WorkerRig rig(Fields().Continuous("id").Continuous("x"), {{10, kNone}, {20, 1}});
    rig.Add({.used = {0}, .yes = {"again1"}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:10", "1:20", "2:10", "2:20"}));
    EXPECT_TRUE(Has(rig.log, "a used2"));
}

TEST(TARNTestWorkerTest, WithoutTestsNothingRunsAndTheStatusIsOK) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    const int nexts = rig.stream.NextCount();
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(rig.stream.NextCount(), nexts);
    EXPECT_TRUE(rig.listener.steps.empty());
    EXPECT_TRUE(rig.worker->CollectResults().IsOK());
    EXPECT_TRUE(rig.worker->Results().empty());
}

TEST(TARNTestWorkerTest, CollectsTheElementsInTestOrderOfATestInErrorAsWell) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({.name = "first", .answers = {{"begin1", QKStatus(kSomeError)}}});
    rig.Add({.name = "second"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_TRUE(rig.worker->CollectResults().IsOK());
    ASSERT_EQ(rig.worker->Results().size(), 2u);
    EXPECT_EQ(rig.worker->Results()[0]->AsElement()->GetName(), "first");
    EXPECT_EQ(rig.worker->Results()[1]->AsElement()->GetName(), "second");
}

// ---- Errors of a test ----

TEST(TARNTestWorkerTest, ErrorAtBeginPassGetsNoRecordAndNoEndPassButIsAskedForAnotherPass) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
    rig.Add({.name = "bad", .answers = {{"begin1", QKStatus(kSomeError)}}});
    rig.Add({.name = "good"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(CallsOf("bad", rig.log), (CallLog{"results", "begin1", "used1", "again1"}));
    EXPECT_EQ(CallsOf("good", rig.log),
              (CallLog{"results", "begin1", "used1", "rec1:10", "rec1:20", "end1", "again1"}));
}

TEST(TARNTestWorkerTest, ErrorAtOneRecordStopsThatTestWhileOthersGoOnAndTheRunIsOK) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
    rig.Add({.name = "bad", .answers = {{"rec1:20", QKStatus(kSomeError)}}});
    rig.Add({.name = "good"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(CallsOf("bad", rig.log), (CallLog{"results", "begin1", "used1", "rec1:10", "rec1:20", "again1"}));
    EXPECT_EQ(CallsOf("good", rig.log),
              (CallLog{"results", "begin1", "used1", "rec1:10", "rec1:20", "rec1:30", "end1", "again1"}));
}

TEST(TARNTestWorkerTest, ErrorAtEndPassStaysInTheTest) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({.name = "bad", .answers = {{"end1", QKStatus(220003)}}});
    rig.Add({.name = "good"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_TRUE(Has(rig.log, "good end1"));
    EXPECT_TRUE(Has(rig.log, "bad again1"));
}

TEST(TARNTestWorkerTest, ATestThatFailedInOnePassStartsAfreshInTheNext) {
    for (const std::string place : {"begin1", "rec1:10", "end1"}) {
        SCOPED_TRACE(place);
        WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
        rig.Add({.answers = {{place, QKStatus(kSomeError)}}, .yes = {"again1"}});
        EXPECT_TRUE(rig.Run().IsOK());
        for (const char* call : {"a begin2", "a used2", "a rec2:10", "a rec2:20", "a end2", "a again2"}) {
            EXPECT_TRUE(Has(rig.log, call)) << call;
        }
    }
}

TEST(TARNTestWorkerTest, AWarningOfATestIsIgnored) {
    const QKStatus warning(222011, true);
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
    rig.Add({.answers = {{"begin1", warning}, {"rec1:10", warning}, {"end1", warning}}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(CallsOf("a", rig.log), (CallLog{"results", "begin1", "used1", "rec1:10", "rec1:20", "end1", "again1"}));
}

TEST(TARNTestWorkerTest, AnErrorOfAnEarlierPassIsOverwrittenByALaterOne) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add(
        {.name = "a", .answers = {{"begin1", QKStatus(kSomeError)}, {"end2", QKStatus(220003)}}, .yes = {"again1"}});
    EXPECT_EQ(rig.Run(), QKStatus());
}

// ---- Out of memory ----

namespace {

struct StopPlace {
    const char* call;      ///< of the first of two tests
    CallLog notCalled;     ///< afterwards
    const char* lastCall;  ///< of all
};

const std::vector<StopPlace>& StopPlaces() {
    static const std::vector<StopPlace> places{
        {"begin1", {"a used1", "b begin1", "a rec1:10", "a again1", "b again1"}, "a begin1"},
        {"rec1:20", {"b rec1:20", "a rec1:30", "b rec1:30", "a end1", "b end1", "a again1"}, "a rec1:20"},
        {"end1", {"b end1", "a again1", "b again1", "a begin2"}, "a end1"},
        {"begin2", {"b begin2", "a rec2:10", "a again2"}, "a begin2"},
        {"end2", {"b end2", "a again2"}, "a end2"},
    };
    return places;
}

}  // namespace

TEST(TARNTestWorkerTest, Code220012AtEachPlaceStopsAtOnce) {
    for (const StopPlace& place : StopPlaces()) {
        SCOPED_TRACE(place.call);
        WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
        rig.Add({.name = "a", .answers = {{place.call, QKStatus(kOutOfMemory)}}, .yes = {"again1"}});
        rig.Add({.name = "b", .yes = {"again1"}});
        EXPECT_EQ(rig.Run(), QKStatus(kOutOfMemory));
        for (const std::string& call : place.notCalled) EXPECT_FALSE(Has(rig.log, call)) << call;
        EXPECT_EQ(rig.log.back(), place.lastCall);
    }
}

TEST(TARNTestWorkerTest, Code220012StopsWhateverItIsMeantAs) {
    for (const std::string call : {"begin1", "rec1:10", "end1"}) {
        WorkerRig rig(Fields().Continuous("id"), {{10}});
        rig.Add({.name = "a", .answers = {{call, QKStatus(kOutOfMemory, true)}}});
        EXPECT_EQ(rig.Run().GetErrorCode(), kOutOfMemory) << call;
        EXPECT_EQ(rig.log.back(), "a " + call);
    }
}

TEST(TARNTestWorkerTest, AnAllocationFailureInsideATestBecomes220012) {
    for (const std::string call : {"results", "begin1", "used1", "rec1:10", "end1", "again1", "begin2", "rec2:30"}) {
        SCOPED_TRACE(call);
        WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
        rig.Add({.name = "a", .yes = {"again1"}, .outOfMemory = {call}});
        rig.Add({.name = "b", .yes = {"again1"}});
        EXPECT_EQ(rig.Run(), QKStatus(kOutOfMemory));
        EXPECT_EQ(rig.log.back(), "a " + call);
    }
}

TEST(TARNTestWorkerTest, AnAllocationFailureInAResultElementBecomes220012) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({.name = "a"});
    rig.Add({.name = "b", .outOfMemory = {"element"}});
    rig.Add({.name = "c"});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(rig.worker->CollectResults(), QKStatus(kOutOfMemory));
    EXPECT_FALSE(Has(rig.log, "c element"));
}

// ---- Missing values ----

namespace {

/// "id" numbers the records; each other kind of field is missing once, the numeric category 0 and the number -1 are
/// values like others.
WorkerRig* MissingTable(bool analysisMissing) {
    return new WorkerRig(
        Fields().Continuous("id").Continuous("x").Numeric("n", {1, 2}).Text("s", {"p", "q"}).Other("o"),
        {
            {1, 5, 0, 1, 9},            // complete
            {2, kNone, 0, 0, 9},        // misses the continuous field
            {3, 5, kNoCategory, 0, 9},  // the numeric categories
            {4, 5, 1, kNoCategory, 9},  // the string categories
            {5, 5, 1, 1, kNone},        // the field of kind 4
            {6, -1, 1, 1, 9},           // complete: -1 is a number like others
            {7, 5, kNone, 1, 9},        // complete: the missing double is no missing category
            {8, 5, 1, 1, -1},           // complete for the passes: kind 4 is no categorical field
            {9, kNone, kNoCategory, -1, kNone},
        },
        analysisMissing);
}

}  // namespace

TEST(TARNTestWorkerTest, UnderAnalysisARecordReachesATestThatDoesNotUseTheMissingField) {
    struct Row {
        std::vector<int> used;
        CallLog records;
    };
    const std::vector<Row> rows{
        {{0}, {"1:1", "1:2", "1:3", "1:4", "1:5", "1:6", "1:7", "1:8", "1:9"}},
        {{1}, {"1:1", "1:3", "1:4", "1:5", "1:6", "1:7", "1:8"}},
        {{2}, {"1:1", "1:2", "1:4", "1:5", "1:6", "1:7", "1:8"}},
        {{3}, {"1:1", "1:2", "1:3", "1:5", "1:6", "1:7", "1:8"}},
        {{4}, {"1:1", "1:2", "1:3", "1:4", "1:6", "1:7", "1:8"}},
        {{1, 2}, {"1:1", "1:4", "1:5", "1:6", "1:7", "1:8"}},
        {{2, 1, 2}, {"1:1", "1:4", "1:5", "1:6", "1:7", "1:8"}},
        {{-1, 77}, {"1:1", "1:2", "1:3", "1:4", "1:5", "1:6", "1:7", "1:8", "1:9"}},  // no such field: never missing
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(testing::PrintToString(row.used));
        const std::unique_ptr<WorkerRig> rig(MissingTable(true));
        rig->Add({.used = row.used});
        EXPECT_TRUE(rig->Run().IsOK());
        EXPECT_EQ(RecordsOf("a", rig->log), row.records);
    }
}

TEST(TARNTestWorkerTest, AnEmptyUsedFieldListGetsCompleteRecordsOnly) {
    const std::unique_ptr<WorkerRig> rig(MissingTable(true));
    rig->Add({.used = {}});
    EXPECT_TRUE(rig->Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig->log), (CallLog{"1:1", "1:6", "1:7", "1:8"}));
}

TEST(TARNTestWorkerTest, UnderListwiseTheMainWorkerDropsARecordThatMissesAnythingForEveryTest) {
    const std::unique_ptr<WorkerRig> rig(MissingTable(false));
    rig->Add({.name = "used", .used = {0}});
    rig->Add({.name = "none", .used = {}});
    EXPECT_TRUE(rig->Run().IsOK());
    EXPECT_EQ(RecordsOf("used", rig->log), (CallLog{"1:1", "1:6", "1:7", "1:8"}));
    EXPECT_EQ(RecordsOf("none", rig->log), (CallLog{"1:1", "1:6", "1:7", "1:8"}));
}

TEST(TARNTestWorkerTest, KindFourIsTheOneDifferenceBetweenTheReaderAndTheWorker) {
    const std::unique_ptr<WorkerRig> rig(MissingTable(false));
    // The reader keeps the record whose kind 4 field has the missing double, and drops the one where it is -1.
    std::vector<double> stored;
    for (const double id : rig->reader.Columns().ColumnSpan(0)) stored.push_back(id);
    EXPECT_EQ(stored, (std::vector<double>{1, 5, 6, 7}));
    // The main worker reads the stream with its own check.
    rig->Add({});
    EXPECT_TRUE(rig->Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig->log), (CallLog{"1:1", "1:6", "1:7", "1:8"}));
}

TEST(TARNTestWorkerTest, ASortedWorkerGetsWhatBothTheReaderAndTheWorkerKeep) {
    const std::unique_ptr<WorkerRig> rig(MissingTable(false));
    rig->SortBy(0);
    rig->Add({});
    EXPECT_TRUE(rig->Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig->log), (CallLog{"1:1", "1:6", "1:7"}));
}

TEST(TARNTestWorkerTest, AStreamThatGrewSinceItWasReadIsJudgedRecordByRecord) {
    WorkerRig rig(Fields().Continuous("id").Continuous("x"), {{1, 5}, {2, kNone}, {3, 5}, {4, kNone}});
    const QKTarn::RecordFlags firstRecordOnly{false};
    rig.worker = std::make_unique<TARNTestWorker>(rig.markers, true, rig.stream, firstRecordOnly);
    rig.Add({.used = {1}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:1", "1:3"}));
}

// ---- Sorted views ----

TEST(TARNTestWorkerTest, ASortedWorkerReadsTheRecordsInAscendingOrderInEveryPass) {
    WorkerRig rig(Fields().Continuous("id").Continuous("x"), {{1, 3}, {2, -2.5}, {3, kNone}, {4, 0}});
    rig.SortBy(1);
    rig.Add({.used = {0}, .yes = {"again1"}});
    EXPECT_TRUE(rig.Run().IsOK());
    // The missing value stands by its number, the lowest there is; the test does not use the field.
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:3", "1:2", "1:4", "1:1", "2:3", "2:2", "2:4", "2:1"}));
}

TEST(TARNTestWorkerTest, ASortedWorkerJudgesMissingValuesByTheRecordAndNotByItsPlace) {
    WorkerRig rig(Fields().Continuous("id").Continuous("x").Continuous("y"),
                  {{1, 30, kNone}, {2, 20, 7}, {3, 10, 7}, {4, 40, kNone}, {5, 15, 7}});
    rig.SortBy(1);
    rig.Add({.used = {2}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:3", "1:5", "1:2"}));
}

TEST(TARNTestWorkerTest, WithoutASortFieldTheStoreIsReadInFileOrder) {
    WorkerRig rig(Fields().Continuous("id"), {{30}, {10}, {20}});
    rig.memo = rig.reader.Begin();
    rig.worker = std::make_unique<TARNTestWorker>(rig.markers, true, rig.memo, rig.reader.IncompleteInStore());
    EXPECT_EQ(rig.worker->SortField(), -1);
    rig.Add({.yes = {"again1"}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:30", "1:10", "1:20", "2:30", "2:10", "2:20"}));
}

TEST(TARNTestWorkerTest, WithZeroRecordsEndPassStillRuns) {
    WorkerRig rig(Fields().Continuous("id"), {});
    EXPECT_EQ(rig.readStatus, QKStatus(220003));
    rig.Add({.remaining = {{"begin1", 1}, {"end1", 0}}});
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(CallsOf("a", rig.log), (CallLog{"results", "begin1", "used1", "end1", "again1"}));
    EXPECT_EQ(rig.listener.steps, (std::vector<int>{25, 75}));
}

TEST(TARNTestWorkerTest, WithZeroRecordsInASortedViewEndPassStillRuns) {
    WorkerRig rig(Fields().Continuous("id").Continuous("x"), {{1, kNone}, {2, kNone}});
    rig.SortBy(1);
    rig.Add({.used = {1}});  // the view has records, but the test may see none of them
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(CallsOf("a", rig.log), (CallLog{"results", "begin1", "used1", "end1", "again1"}));
}

// ---- Progress ----

namespace {

/// The passes that a test says are left, at the begin and the end of each of its passes.
struct PassEstimate {
    std::vector<int> atBegin;
    std::vector<int> atEnd;
};

Script Estimating(const std::string& name, const PassEstimate& estimate) {
    Script script{.name = name};
    for (std::size_t pass = 1; pass <= estimate.atBegin.size(); ++pass) {
        script.remaining["begin" + std::to_string(pass)] = estimate.atBegin[pass - 1];
        script.remaining["end" + std::to_string(pass)] = estimate.atEnd[pass - 1];
        if (pass < estimate.atBegin.size()) script.yes.insert("again" + std::to_string(pass));
    }
    return script;
}

}  // namespace

TEST(TARNTestWorkerTest, ReportsProgressWhenThePassesLeftHaveGoneDown) {
    struct Row {
        const char* what;
        std::vector<PassEstimate> tests;
        std::vector<int> steps;  // the worker's part of the scale is 25 to 75
    };
    const std::vector<Row> rows{
        {"one pass", {{{1}, {0}}}, {25, 75}},
        {"two passes, a half each", {{{2, 1}, {1, 0}}}, {25, 50, 75}},
        {"the end of a pass says less than its begin", {{{2, 1}, {0, 0}}}, {25, 75}},
        {"three passes: 41.67 and 58.33 are truncated", {{{3, 2, 1}, {2, 1, 0}}}, {25, 41, 58, 75}},
        {"the longest test counts", {{{1}, {0}}, {{3, 2, 1}, {2, 1, 0}}}, {25, 41, 58, 75}},
        {"raised later: silent until it falls below what was told", {{{1, 3, 2, 1}, {3, 2, 1, 0}}}, {25, 75}},
        {"raised above the first estimate, told again below it",
         {{{2, 5, 4, 3, 2, 1}, {5, 4, 3, 2, 1, 0}}},
         {25, 50, 75}},
        {"a test that expects no pass leaves the scale at its end", {{{0}, {0}}}, {75}},
        {"ends with passes left", {{{2}, {1}}}, {25, 50, 75}},
        {"a negative estimate counts as none", {{{2, 1}, {1, -3}}}, {25, 50, 75}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.what);
        WorkerRig rig(Fields().Continuous("id"), {{10}, {20}});
        char name = 'a';
        for (const PassEstimate& estimate : row.tests) rig.Add(Estimating(std::string(1, name++), estimate));
        EXPECT_TRUE(rig.Run().IsOK());
        EXPECT_EQ(rig.listener.steps, row.steps);
    }
}

TEST(TARNTestWorkerTest, TheStepNumberIsTruncatedFromBaseAndShare) {
    struct Row {
        double base;
        double share;
        std::vector<int> steps;
    };
    const std::vector<Row> rows{
        {0, 1, {0, 50, 100}}, {0.25, 0.25, {25, 37, 50}}, {0.875, 0.125, {87, 93, 100}}, {0.5, 0, {50, 50, 50}}};
    for (const Row& row : rows) {
        WorkerRig rig(Fields().Continuous("id"), {{10}});
        rig.worker->SetProgress(&rig.listener, row.base, row.share);
        rig.Add(Estimating("a", {{2, 1}, {1, 0}}));
        EXPECT_TRUE(rig.Run().IsOK());
        EXPECT_EQ(rig.listener.steps, row.steps) << row.base;
    }
}

TEST(TARNTestWorkerTest, RunsWithoutAListener) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.worker->SetProgress(nullptr, 0, 1);
    rig.Add(Estimating("a", {{2, 1}, {1, 0}}));
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_TRUE(Has(rig.log, "a end2"));
}

TEST(TARNTestWorkerTest, AFailedTestLeavesTheEstimateToTheOthers) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({.name = "bad", .answers = {{"begin1", QKStatus(kSomeError)}}, .remaining = {{"begin1", 4}}});
    rig.Add(Estimating("good", {{2, 1}, {1, 0}}));
    EXPECT_TRUE(rig.Run().IsOK());
    // Four passes at first; after the first pass only "good" is counted: one of four is left, then none.
    EXPECT_EQ(rig.listener.steps, (std::vector<int>{25, 62, 75}));
}

// ---- Cancel ----

TEST(TARNTestWorkerTest, TheCancelQueryIsAskedOncePerRecordAndAroundEachPass) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
    rig.Add({.yes = {"again1"}});
    CancelAtPoll never(0);
    EXPECT_TRUE(rig.Run(&never).IsOK());
    // In each pass: before it, at each of 3 records, before the ends, and after it.
    EXPECT_EQ(never.polls, 2 * (1 + 3 + 1 + 1));
}

TEST(TARNTestWorkerTest, CancelAtEachPollPlaceEndsWithoutAnotherCallOfAnyTest) {
    constexpr int kPolls = 2 * (1 + 3 + 1 + 1);
    for (int poll = 1; poll <= kPolls; ++poll) {
        SCOPED_TRACE(poll);
        WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
        rig.Add({.name = "a", .yes = {"again1"}});
        rig.Add({.name = "b", .yes = {"again1"}});
        std::size_t callsAtCancel = 0;
        CancelAtPoll query(poll, [&] { callsAtCancel = rig.log.size(); });
        EXPECT_TRUE(rig.Run(&query).IsOK());  // the worker sequence makes code 1 of it
        EXPECT_EQ(rig.log.size(), callsAtCancel);
        EXPECT_TRUE(rig.cancelled);
        EXPECT_EQ(query.polls, poll) << "a cancelled run has no need to ask again";
    }
}

TEST(TARNTestWorkerTest, ACancelFromElsewhereEndsWithinOneRecord) {
    WorkerRig rig(Fields().Continuous("id"), {{10}, {20}, {30}});
    rig.Add({.name = "a", .onCall = [&](const std::string& call) {
                 if (call == "rec1:20") rig.cancelled = true;
             }});
    rig.Add({.name = "b"});
    EXPECT_TRUE(rig.Run().IsOK());
    // The record under way is given to all tests; no further record, no end of the pass, no question for another.
    EXPECT_EQ(rig.log.back(), "b rec1:20");
    EXPECT_EQ(RecordsOf("a", rig.log), (CallLog{"1:10", "1:20"}));
}

TEST(TARNTestWorkerTest, ElementsMayStillBeMadeAfterACancel) {
    WorkerRig rig(Fields().Continuous("id"), {{10}});
    rig.Add({});
    rig.cancelled = true;
    EXPECT_TRUE(rig.Run().IsOK());
    EXPECT_EQ(rig.log, (CallLog{"a results"}));
    EXPECT_TRUE(rig.worker->CollectResults().IsOK());
    EXPECT_EQ(rig.worker->Results().size(), 1u);
}
