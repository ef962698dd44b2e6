#include "planning/TARNWorkerSequence.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <vector>

#include "tests/planning/WorkerRig.h"

using harness::Fields;

namespace {

constexpr double kBase = 0.25;
constexpr double kShare = 0.5;

/// Three workers over the same two records; their tests share one log. The base and the share make whole percents.
class TARNWorkerSequenceTest : public testing::Test {
 protected:
    TARNWorkerSequenceTest() : stream_({{10}, {20}}) {
        fields_.Continuous("id");
        markers_ = QKTarn::MarkersOfPasses(fields_.List());
        for (int i = 0; i < 3; ++i) {
            workers_.push_back(std::make_unique<TARNTestWorker>(markers_, true, stream_, complete_));
        }
    }

    void Add(std::size_t worker, Script script) {
        script.remaining.try_emplace("begin1", 1);
        script.remaining.try_emplace("end1", 0);
        workers_[worker]->AddTest(std::make_unique<ScriptedTest>(std::move(script), log_));
    }

    QKStatus Run(QKQueryCancel* query = nullptr) {
        TARNWorkerSequence sequence(&listener_, kBase, kShare);
        for (const auto& worker : workers_) {
            if (worker->TestCount() > 0) sequence.Add(*worker);
        }
        const CancelState cancel(query, cancelled_);
        return sequence.Run(WorkShare(threads_, [&] { return cancel.Poll(); }));
    }

    Fields fields_;
    QKTarn::MissingMarkers markers_;
    unsigned threads_ = 1;
    harness::RowStream stream_;
    const QKTarn::RecordFlags complete_{false, false};
    CallLog log_;
    StepListener listener_;
    std::atomic<bool> cancelled_ = false;
    std::vector<std::unique_ptr<TARNTestWorker>> workers_;
};

}  // namespace

TEST_F(TARNWorkerSequenceTest, WithoutWorkersTheStatusIsOKAndNothingIsAsked) {
    CancelAtPoll query(1);
    EXPECT_TRUE(Run(&query).IsOK());
    EXPECT_EQ(query.polls, 0);
}

TEST_F(TARNWorkerSequenceTest, RunsTheWorkersOneAfterTheOtherAndCollectsEachBeforeTheNext) {
    Add(0, {.name = "a"});
    Add(1, {.name = "b"});
    Add(1, {.name = "c"});
    EXPECT_TRUE(Run().IsOK());
    const CallLog expected{"a results", "a begin1",  "a used1",   "a rec1:10", "a rec1:20", "a end1",
                           "a again1",  "a element", "b results", "c results", "b begin1",  "b used1",
                           "c begin1",  "c used1",   "b rec1:10", "c rec1:10", "b rec1:20", "c rec1:20",
                           "b end1",    "c end1",    "b again1",  "c again1",  "b element", "c element"};
    EXPECT_EQ(log_, expected);
    EXPECT_EQ(workers_[0]->Results().size(), 1u);
    EXPECT_EQ(workers_[1]->Results().size(), 2u);
}

TEST_F(TARNWorkerSequenceTest, EachWorkerFillsThePartOfTheScaleThatItsNumberOfTestsEarns) {
    Add(0, {.name = "a"});
    Add(1, {.name = "b"});
    Add(2, {.name = "c"});
    Add(2, {.name = "d"});
    EXPECT_TRUE(Run().IsOK());
    // 25 to 75 for four tests: 12.5 for each of the first two workers, 25 for the last.
    EXPECT_EQ(listener_.steps, (std::vector<int>{25, 37, 37, 50, 50, 75}));
}

TEST_F(TARNWorkerSequenceTest, Code220012EndsTheSequenceAtOnce) {
    Add(0, {.name = "a", .answers = {{"rec1:10", QKStatus(220012)}}});
    Add(1, {.name = "b"});
    EXPECT_EQ(Run(), QKStatus(220012));
    EXPECT_EQ(log_.back(), "a rec1:10");
    EXPECT_TRUE(workers_[0]->Results().empty());
}

TEST_F(TARNWorkerSequenceTest, NoMemoryForAnElementEndsTheSequence) {
    Add(0, {.name = "a", .outOfMemory = {"element"}});
    Add(1, {.name = "b"});
    EXPECT_EQ(Run(), QKStatus(220012));
    EXPECT_EQ(log_.back(), "a element");
}

TEST_F(TARNWorkerSequenceTest, ErrorsOfTestsNeitherStopTheNextWorkerNorShowInTheStatus) {
    Add(0, {.name = "a", .answers = {{"begin1", QKStatus(220903)}}});
    Add(1, {.name = "b", .answers = {{"end1", QKStatus(220003)}}});
    EXPECT_TRUE(Run().IsOK());
    EXPECT_EQ(workers_[0]->Results().size(), 1u) << "elements are collected of a test in error as well";
    EXPECT_EQ(workers_[1]->Results().size(), 1u);
}

TEST_F(TARNWorkerSequenceTest, ACancelAtAnyPollStopsWithCode1AndCollectsNoMore) {
    // For each of two workers: before it, before its pass, at 2 records, before the ends, after the pass, after it.
    constexpr int kPollsOfWorker = 7;
    const auto begin = [this] {
        log_.clear();
        cancelled_ = false;
        workers_.clear();
        for (int i = 0; i < 2; ++i) {
            workers_.push_back(std::make_unique<TARNTestWorker>(markers_, true, stream_, complete_));
        }
        Add(0, {.name = "a"});
        Add(1, {.name = "b"});
    };
    for (int poll = 1; poll <= 2 * kPollsOfWorker; ++poll) {
        SCOPED_TRACE(poll);
        begin();
        CancelAtPoll query(poll);
        EXPECT_EQ(Run(&query), QKStatus(1));
        EXPECT_EQ(workers_[0]->Results().size(), poll > kPollsOfWorker ? 1u : 0u);
        EXPECT_TRUE(workers_[1]->Results().empty());
        EXPECT_EQ(query.polls, poll);
    }
    begin();
    CancelAtPoll never(0);
    EXPECT_TRUE(Run(&never).IsOK());
    EXPECT_EQ(never.polls, 2 * kPollsOfWorker);
}

TEST_F(TARNWorkerSequenceTest, ACancelledFlagStopsBeforeTheFirstWorker) {
    Add(0, {.name = "a"});
    cancelled_ = true;
    EXPECT_EQ(Run(), QKStatus(1));
    EXPECT_TRUE(log_.empty());
}
