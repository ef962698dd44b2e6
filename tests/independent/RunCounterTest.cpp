// The smallest and the largest number of runs. Expected values by enumeration of all orders within equal values, and by
// hand.

#include "independent/RunCounter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <map>
#include <string>
#include <vector>

namespace {

/// How many records of each group have one value.
struct Block {
    int first = 0;
    int second = 0;
};

struct Runs {
    int least = std::numeric_limits<int>::max();
    int most = std::numeric_limits<int>::min();

    void Take(int low, int high) {
        least = std::min(least, low);
        most = std::max(most, high);
    }
    bool operator==(const Runs&) const = default;
};
void PrintTo(const Runs& runs, std::ostream* out) {
    *out << runs.least << " to " << runs.most;
}

int ChangesIn(const std::string& order) {
    int changes = 0;
    for (std::size_t i = 1; i < order.size(); ++i) changes += order[i] != order[i - 1];
    return changes;
}

/// Over every order of the records within each block: per group at the end what was reached so far.
Runs ByEnumeration(const std::vector<Block>& blocks) {
    std::map<char, Runs> reached{{' ', {0, 0}}};
    for (const Block& block : blocks) {
        std::map<char, Runs> next;
        std::string order = std::string(static_cast<std::size_t>(block.first), 'a') +
                            std::string(static_cast<std::size_t>(block.second), 'b');
        do {
            for (const auto& [last, runs] : reached) {
                const int added = ChangesIn(order) + (order.front() != last ? 1 : 0);
                next[order.back()].Take(runs.least + added, runs.most + added);
            }
        } while (std::next_permutation(order.begin(), order.end()));
        reached = std::move(next);
    }
    Runs all;
    for (const auto& [last, runs] : reached) all.Take(runs.least, runs.most);
    return all;
}

void Add(RunCounter& counter, double value, std::int32_t group, std::int32_t weight) {
    counter.Add(&value, &group, &weight, 1);
}

Runs RunsOf(const RunCounter& counter) {
    return {static_cast<int>(counter.MinRuns()), static_cast<int>(counter.MaxRuns())};
}

RunCounter Counted(const std::vector<Block>& blocks) {
    RunCounter counter(Arithmetic::AsDefined());
    double value = 0;
    for (const Block& block : blocks) {
        ++value;
        for (int i = 0; i < block.first; ++i) Add(counter, value, 0, 1);
        for (int i = 0; i < block.second; ++i) Add(counter, value, 1, 1);
    }
    counter.Close();
    return counter;
}

TEST(RunCounter, FindsTheLeastAndTheMostOfAllOrders) {
    const std::vector<Block> kinds{{1, 0}, {0, 1}, {2, 0}, {0, 2}, {1, 1}, {2, 1}, {1, 2}, {2, 2}, {3, 1}, {1, 3}};
    for (const Block& first : kinds) {
        for (const Block& second : kinds) {
            for (const Block& third : kinds) {
                const std::vector<Block> blocks{first, second, third};
                const RunCounter counter = Counted(blocks);
                EXPECT_EQ(RunsOf(counter), ByEnumeration(blocks))
                    << first.first << first.second << " " << second.first << second.second << " " << third.first
                    << third.second;
            }
        }
    }
}

TEST(RunCounter, WithoutTiesAcrossTheGroupsBothNumbersAreOne) {  // a b b a a b
    const RunCounter counter = Counted({{1, 0}, {0, 2}, {2, 0}, {0, 1}});
    EXPECT_EQ(counter.MinRuns(), 4);
    EXPECT_EQ(counter.MaxRuns(), 4);
    EXPECT_EQ(counter.TieBlocks(), 0);
    EXPECT_EQ(counter.TieCases(), 0);
}

TEST(RunCounter, AllValuesEqual) {
    for (const Block& block : {Block{3, 5}, Block{5, 3}, Block{4, 4}, Block{1, 1}}) {
        const RunCounter counter = Counted({block});
        const int smaller = std::min(block.first, block.second);
        EXPECT_EQ(counter.MinRuns(), 2);
        EXPECT_EQ(counter.MaxRuns(), 2 * smaller + (block.first != block.second ? 1 : 0));
        EXPECT_EQ(counter.TieBlocks(), 1);
        EXPECT_EQ(counter.TieCases(), block.first + block.second);
    }
}

TEST(RunCounter, TiesOfTheLastBlockCount) {
    const RunCounter counter = Counted({{2, 1}, {1, 0}, {1, 4}});
    EXPECT_EQ(counter.TieBlocks(), 2);
    EXPECT_EQ(counter.TieCases(), 8);
}

TEST(RunCounter, OrderWithinEqualValuesDoesNotMatter) {
    RunCounter counter(Arithmetic::AsDefined());
    for (const std::int32_t group : {1, 0, 0, 1}) Add(counter, 1, group, 1);
    Add(counter, 2, 0, 1);
    counter.Close();
    EXPECT_EQ(RunsOf(counter), ByEnumeration({{2, 2}, {1, 0}}));
}

TEST(RunCounter, WeightCountsAsThatManyRecords) {
    RunCounter counter(Arithmetic::AsDefined());
    Add(counter, 1, 0, 3);
    Add(counter, 1, 1, 2);
    Add(counter, 2, 1, 4);
    Add(counter, 2, 1, 1);
    counter.Close();
    EXPECT_EQ(counter.Counts(), (RunCounter::GroupCounts{3, 7}));
    EXPECT_EQ(RunsOf(counter), ByEnumeration({{3, 2}, {0, 5}}));
    EXPECT_EQ(counter.TieCases(), 5);
}

// A value that only records without weight have is a block of no group: the largest number grows by one there.
TEST(RunCounter, BlockWithoutWeightIsOneMoreRunAtMost) {
    RunCounter counter(Arithmetic::AsDefined());
    Add(counter, 1, 0, 1);
    Add(counter, 2, 0, 0);
    Add(counter, 3, 0, 1);
    Add(counter, 4, 1, 1);
    counter.Close();
    EXPECT_EQ(counter.MaxRuns(), 4);  // a, nothing, a, b
    EXPECT_EQ(counter.MinRuns(), 2);
}

TEST(RunCounter, ProductsOfDifferencesWrap) {
    // 65536 * 65536 is 0 in 32 bits, which is no change of sign and, for the largest number, below 1.
    RunCounter counter(Arithmetic::AsDefined());
    Add(counter, 1, 0, 65536);
    Add(counter, 2, 1, 65536);
    counter.Close();
    EXPECT_EQ(counter.MinRuns(), 1);
    EXPECT_EQ(counter.MaxRuns(), 2);
}

TEST(RunCounter, GroupWithoutARecordHasTheSizeOfNone) {
    EXPECT_EQ(RunCounter(Arithmetic::AsDefined()).Counts(), (RunCounter::GroupCounts{-1, -1}));
    EXPECT_EQ(Counted({{2, 0}}).Counts(), (RunCounter::GroupCounts{2, -1}));
}

}  // namespace
