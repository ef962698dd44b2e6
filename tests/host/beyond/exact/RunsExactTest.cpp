#include "host/beyond/exact/RunsExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

std::int64_t RunsOf(const Integers& sequence) {
    std::int64_t runs = 1;
    for (std::size_t i = 1; i < sequence.size(); ++i) runs += sequence[i] != sequence[i - 1] ? 1 : 0;
    return runs;
}

TEST(RunsExact, IsTheShareOfAllOrders) {
    for (std::size_t cases = 1; cases <= 10; ++cases) {
        std::map<Integers, Integers> runsBySizes;
        ForEveryList(cases, 1,
                     [&](const Integers& sequence) { runsBySizes[SizesOf(sequence, 2)].push_back(RunsOf(sequence)); });
        for (const auto& [sizes, all] : runsBySizes) {
            for (std::int64_t runs = 1; runs <= static_cast<std::int64_t>(cases); ++runs) {
                if (std::find(all.begin(), all.end(), runs) == all.end()) continue;
                ExpectNear(RunsExact(runs, sizes[0], sizes[1]), TailsAmong(all, runs), 1e-12);
            }
        }
    }
}

// Swed and Eisenhart, 1943, table II: the largest number of runs with a chance of .025 or less to have it or fewer, and
// the smallest one to have it or more, as Siegel, 1956, Nonparametric Statistics, table F shows them.
TEST(RunsExact, HasTheCriticalValuesOfThePrintedTable) {
    struct Critical {
        std::int64_t size;
        std::int64_t few;
        std::int64_t many;
    };
    for (const Critical& critical : {Critical{5, 2, 10}, Critical{10, 6, 16}, Critical{20, 14, 28}}) {
        EXPECT_LE(RunsExact(critical.few, critical.size, critical.size).less, .025);
        EXPECT_GT(RunsExact(critical.few + 1, critical.size, critical.size).less, .025);
        EXPECT_LE(RunsExact(critical.many, critical.size, critical.size).greater, .025);
        EXPECT_GT(RunsExact(critical.many - 1, critical.size, critical.size).greater, .025);
    }
}

TEST(RunsExact, KeepsItsDigitsInTheFarthestTails) {
    // Two of choose(400, 200) orders have two runs, and two have 400; R's choose(400, 200).
    ExpectClose(RunsExact(2, 200, 200).less, 2 / 1.0295250013541443e+119);
    ExpectClose(RunsExact(400, 200, 200).greater, 2 / 1.0295250013541443e+119);
    ExpectClose(RunsExact(400, 200, 200).twoSided, 4 / 1.0295250013541443e+119);
    // Three cases among 10000: 7 runs, where none is first, last or next to another: choose(9999, 3) of
    // choose(10003, 3) orders.
    ExpectClose(RunsExact(7, 3, 10000).greater, 9999. * 9998 * 9997 / (10003. * 10002 * 10001));
}

TEST(RunsExact, IsTheSameWithTheKindsExchangedAndOneWithoutOne) {
    ExpectNear(RunsExact(9, 6, 11), RunsExact(9, 11, 6), 1e-15);
    ExpectNear(RunsExact(1, 6, 0), {1, 1, 1}, 0);
    ExpectNear(RunsExact(0, 0, 0), {1, 1, 1}, 0);
    // One case among 2^52: all but two of 2^52 + 1 orders have three runs.
    const ExactTails tails = RunsExact(2, 1, std::int64_t{1} << 52);
    ExpectClose(tails.less, 2 / (0x1p52 + 1));
}

}  // namespace
}  // namespace tarn
