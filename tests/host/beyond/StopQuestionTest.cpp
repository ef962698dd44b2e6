// A cancel reaches the figures beside the document where they take long.

#include "host/beyond/StopQuestion.h"

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdio>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "host/beyond/TieBlocks.h"
#include "host/beyond/exact/JonckheereExact.h"
#include "host/beyond/exact/KruskalWallisExact.h"
#include "host/beyond/exact/MarginalHomogeneityExact.h"
#include "host/beyond/exact/RankSumExact.h"
#include "host/beyond/exact/SignedRankExact.h"
#include "host/beyond/exact/SmirnovExact.h"

namespace tarn {
namespace {

/// So many blocks of two tied cases each, one of every two neighbouring groups.
TieBlocks TiedPairs(std::size_t groups, std::size_t blocks) {
    TieBlocks made;
    made.groupCount = groups;
    made.counts.assign(groups * blocks, 0);
    for (std::size_t b = 0; b < blocks; ++b) {
        made.counts[b * groups + b % groups] = 1;
        made.counts[b * groups + (b + 1) % groups] += 1;
    }
    return made;
}

/// Two groups of which the first has three of five of the lower half of the values, and the second those of the upper.
TieBlocks ShiftedGroups(std::size_t blocks) {
    TieBlocks made;
    made.groupCount = 2;
    for (std::size_t b = 0; b < blocks; ++b) {
        const bool isFirst = (b % 5 < 3) == (2 * b < blocks);
        made.counts.push_back(isFirst ? 1 : 0);
        made.counts.push_back(isFirst ? 0 : 1);
    }
    return made;
}

SignedRankScores DistinctRanks(std::int64_t count) {
    SignedRankScores scores;
    for (std::int64_t i = 1; i <= count; ++i) {
        scores.doubledRanks.push_back(2 * i);
        scores.counts.push_back(1);
    }
    scores.doubledPositiveSum = count * (count + 1) / 2;
    return scores;
}

/// A computation that goes on for seconds at least.
struct LongOne {
    std::string name;
    std::function<void()> run;
};

std::vector<LongOne> LongOnes() {
    return {
        {"rank sum", [] { RankSumExact(TiedPairs(2, 6000)); }},
        {"Kruskal-Wallis", [] { KruskalWallisExact(TiedPairs(4, 60)); }},
        {"Jonckheere", [] { JonckheereExact(TiedPairs(4, 60)); }},
        {"signed ranks", [] { SignedRankExact(DistinctRanks(5000)); }},
        {"Smirnov", [] { SmirnovExact(ShiftedGroups(400000)); }},
        {"marginal homogeneity",
         [] {
             MarginalHomogeneityExact({{1, 40000}, {2, 40000}, {3, 40000}}, 10);
         }},
    };
}

TEST(StopQuestion, WithoutOneNothingIsAsked) {
    EXPECT_NO_THROW(AskWhetherToStop());
    const WorkShare work(1, [] { return false; });
    const StopQuestion question(work);
    EXPECT_NO_THROW(AskWhetherToStop());
}

TEST(StopQuestion, TheInnerOneCountsAsLongAsItLives) {
    const WorkShare stopped(1, [] { return true; });
    const WorkShare going(1, [] { return false; });
    const StopQuestion outer(stopped);
    {
        const StopQuestion inner(going);
        EXPECT_NO_THROW(AskWhetherToStop());
    }
    EXPECT_THROW(AskWhetherToStop(), FiguresStopped);
}

TEST(StopQuestion, TheQuestionIsThatOfItsThreadAlone) {
    const WorkShare stopped(1, [] { return true; });
    const StopQuestion question(stopped);
    std::thread([] { EXPECT_NO_THROW(AskWhetherToStop()); }).join();
}

// How long it takes from the cancel to the end is printed; a test doesn't assert speed. That it ends by the cancel, and
// not by itself, is what is asserted.
TEST(StopQuestion, EndsLongComputations) {
    using Clock = std::chrono::steady_clock;
    for (const LongOne& one : LongOnes()) {
        std::atomic<bool> isCancelled = false;
        Clock::time_point cancelled;
        std::thread user([&] {
            std::this_thread::sleep_for(std::chrono::milliseconds(30));
            cancelled = Clock::now();
            isCancelled = true;
        });
        const WorkShare work(1, [&] { return isCancelled.load(); });
        const StopQuestion question(work);
        EXPECT_THROW(one.run(), FiguresStopped) << one.name;
        user.join();
        const std::chrono::duration<double, std::milli> wait = Clock::now() - cancelled;
        RecordProperty("milliseconds of " + one.name, std::to_string(wait.count()));
        std::printf("%s: %.2f ms\n", one.name.c_str(), wait.count());
    }
}

}  // namespace
}  // namespace tarn
