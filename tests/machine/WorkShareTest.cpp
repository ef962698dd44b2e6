#include "machine/WorkShare.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

namespace {

class WorkShareOfThreads : public testing::TestWithParam<unsigned> {};
INSTANTIATE_TEST_SUITE_P(Threads, WorkShareOfThreads, testing::Values(1U, 2U, 5U));

TEST_P(WorkShareOfThreads, EachJobIsDoneOnce) {
    const WorkShare share(GetParam());
    std::vector<std::atomic<int>> done(1000);
    EXPECT_TRUE(share.Run(done.size(), [&](std::size_t job) { ++done[job]; }));
    for (const auto& count : done) ASSERT_EQ(count, 1);
}

TEST_P(WorkShareOfThreads, NoJobIsNoWork) {
    const WorkShare share(GetParam());
    EXPECT_TRUE(share.Run(0, [](std::size_t) { FAIL(); }));
}

TEST_P(WorkShareOfThreads, TheFailureOfTheFirstJobComesOut) {
    const WorkShare share(GetParam());
    try {
        share.Run(100, [](std::size_t job) { throw std::runtime_error(std::to_string(job)); });
        FAIL();
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "0");  // it is begun before any other, and every job fails
    }
}

TEST_P(WorkShareOfThreads, WorksAgainAfterAFailure) {
    const WorkShare share(GetParam());
    EXPECT_THROW(share.Run(3, [](std::size_t) { throw std::runtime_error(""); }), std::runtime_error);
    std::atomic<int> done = 0;
    EXPECT_TRUE(share.Run(3, [&](std::size_t) { ++done; }));
    EXPECT_EQ(done, 3);
}

TEST_P(WorkShareOfThreads, AJobMayShareWorkOfItsOwn) {
    const WorkShare share(GetParam());
    std::atomic<int> done = 0;
    EXPECT_TRUE(share.Run(4, [&](std::size_t) { EXPECT_TRUE(share.Run(5, [&](std::size_t) { ++done; })); }));
    EXPECT_EQ(done, 20);
}

TEST_P(WorkShareOfThreads, StopEndsTheWorkBeforeTheJobsThatHaveNotBegun) {
    std::atomic<int> done = 0;
    const WorkShare share(GetParam(), [&] { return done >= 10; });
    EXPECT_FALSE(share.Run(100'000, [&](std::size_t) {
        ++done;
        std::this_thread::yield();
    }));
    EXPECT_GE(done, 10);
    EXPECT_LT(done, 100'000);
    EXPECT_TRUE(share.IsStopped());
}

TEST(WorkShareTest, StopIsAskedOnTheOwnersThreadAlone) {
    std::mutex mutex;
    std::set<std::thread::id> askers;
    const WorkShare share(4, [&] {
        const std::lock_guard lock(mutex);
        askers.insert(std::this_thread::get_id());
        return false;
    });
    EXPECT_TRUE(share.Run(1000, [&](std::size_t) { EXPECT_FALSE(share.IsStopped()); }));
    EXPECT_EQ(askers, std::set{std::this_thread::get_id()});
}

TEST(WorkShareTest, TheOwnerAsksWhileItWaitsForALongJobOfAnother) {
    const auto owner = std::this_thread::get_id();
    std::atomic<bool> othersWork = false;
    const WorkShare share(2, [&] { return othersWork.load(); });
    const bool isComplete = share.Run(2, [&](std::size_t) {
        if (std::this_thread::get_id() == owner) {
            while (!othersWork) std::this_thread::yield();
            return;
        }
        othersWork = true;
        while (!share.IsStopped()) std::this_thread::yield();  // would never end unless the owner asked
    });
    EXPECT_FALSE(isComplete);
}

TEST(WorkShareTest, NoMoreThreadsThanTheBudget) {
    const WorkShare share(3);
    std::atomic<int> working = 0;
    std::atomic<int> most = 0;
    share.Run(200, [&](std::size_t) {
        const int now = ++working;
        int seen = most;
        while (now > seen && !most.compare_exchange_weak(seen, now)) {
        }
        std::this_thread::yield();
        --working;
    });
    EXPECT_LE(most, 3);
}

TEST(WorkShareTest, ABudgetBeyondAllUseIsCut) {
    const WorkShare share(2'000'000'000);
    EXPECT_EQ(share.Threads(), std::max(16U, std::thread::hardware_concurrency()));
    std::atomic<int> done = 0;
    EXPECT_TRUE(share.Run(1000, [&](std::size_t) { ++done; }));
    EXPECT_EQ(done, 1000);
}

TEST(WorkShareTest, NoBudgetTakesWhatTheMachineHas) {
    EXPECT_EQ(WorkShare(0).Threads(), std::max(1U, std::thread::hardware_concurrency()));
    EXPECT_EQ(WorkShare().Threads(), 1U);
}

}  // namespace
