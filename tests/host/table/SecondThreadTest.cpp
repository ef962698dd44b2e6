#include "host/table/SecondThread.h"

#include <gtest/gtest.h>

#include <chrono>
#include <future>
#include <stdexcept>
#include <thread>

namespace tarn {
namespace {

TEST(SecondThread, DoesOneJobAfterAnotherOnItsOwnThread) {
    SecondThread second(2);
    std::thread::id first;
    int done = 0;
    for (int job = 0; job < 1000; ++job) {
        second
            .Start([&] {
                if (job == 0) first = std::this_thread::get_id();
                EXPECT_EQ(std::this_thread::get_id(), first);
                EXPECT_NE(std::this_thread::get_id(), std::thread::id());
                ++done;
            })
            .get();
    }
    EXPECT_EQ(done, 1000);
    EXPECT_NE(first, std::this_thread::get_id());
}

TEST(SecondThread, HandsOnWhatAJobThrows) {
    SecondThread second(2);
    std::future<void> failed = second.Start([] { throw std::runtime_error("no"); });
    EXPECT_THROW(failed.get(), std::runtime_error);
    second.Start([] {}).get();
}

TEST(SecondThread, LeavesTheJobToItsCallerWithinABudgetOfOne) {
    SecondThread second(1);
    EXPECT_FALSE(second.Start([] { FAIL() << "a second thread works"; }).valid());
}

TEST(SecondThread, EndsWithoutAnyJob) {
    EXPECT_NO_THROW(SecondThread{2});
}

TEST(SecondThread, ItsEndWaitsForTheJob) {
    bool isDone = false;
    {
        SecondThread second(2);
        static_cast<void>(second.Start([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(20));
            isDone = true;
        }));
    }
    EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace tarn
