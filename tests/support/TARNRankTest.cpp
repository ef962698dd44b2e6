#include "support/TARNRank.h"

#include <gtest/gtest.h>

#include <cmath>
#include <utility>
#include <vector>

namespace {

using Ranks = std::vector<std::pair<double, double>>;

struct Value {
    double value;
    double weight = 1;
    std::int32_t group = 0;
};

TARNRank RankOf(const std::vector<Value>& values, std::int32_t kept = 0) {
    TARNRank rank(Arithmetic::AsDefined());
    rank.KeepRanksOf(kept);
    for (const Value& value : values) EXPECT_TRUE(rank.AddValue(value.value, value.weight, value.group).IsOK());
    rank.CloseTieRun();
    return rank;
}

TEST(TARNRank, NoValueAdded) {
    TARNRank rank(Arithmetic::AsDefined());
    rank.CloseTieRun();
    EXPECT_EQ(rank.TieCorrectionSum(), 0);
    const GroupRankStats& stats = rank.GroupRanks(3);
    EXPECT_EQ(stats.sumOfRanks, 0);
    EXPECT_EQ(stats.minRank, -1);
    EXPECT_EQ(stats.maxRank, 0);
    EXPECT_TRUE(stats.ranks.empty());
}

TEST(TARNRank, TiesGetTheirMidRank) {
    TARNRank rank = RankOf({{1}, {2}, {2}, {3}});
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{1, 1}, {2.5, 1}, {2.5, 1}, {4, 1}}));
    EXPECT_EQ(rank.GroupRanks(0).sumOfRanks, 10);
    EXPECT_EQ(rank.GroupRanks(0).minRank, 1);
    EXPECT_EQ(rank.GroupRanks(0).maxRank, 4);
    EXPECT_EQ(rank.TieCorrectionSum(), 6);  // 2^3 - 2
}

TEST(TARNRank, OneRecordOfWeight3IsATieOf3) {
    TARNRank rank = RankOf({{5, 3}});
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{2, 3}}));
    EXPECT_EQ(rank.GroupRanks(0).sumOfRanks, 6);
    EXPECT_EQ(rank.TieCorrectionSum(), 24);  // 3^3 - 3
}

TEST(TARNRank, FractionOfAWeightReachesTheSumButNotTheRanks) {
    TARNRank rank = RankOf({{1, 2.7, 7}, {9, 1, 8}});
    EXPECT_DOUBLE_EQ(rank.GroupRanks(7).sumOfRanks, 1.5 * 2.7);
    EXPECT_EQ(rank.GroupRanks(8).sumOfRanks, 3);  // 2 cases lie below
}

TEST(TARNRank, FirstValueOfWeightUnder1IsARunOfSize0) {
    TARNRank rank = RankOf({{1, 0.5}});
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{0.5, 0.5}}));
    EXPECT_EQ(rank.TieCorrectionSum(), 0);
}

TEST(TARNRank, ToleranceIsAbsoluteStrictAndDoesNotChain) {
    EXPECT_EQ(RankOf({{0}, {1e-15}}).TieCorrectionSum(), 6);
    EXPECT_EQ(RankOf({{0}, {1e-14}}).TieCorrectionSum(), 0);
    EXPECT_EQ(RankOf({{0}, {std::nextafter(1e-14, 0)}}).TieCorrectionSum(), 6);
    // Each is near its neighbour, but the third is too far from the first: runs of 2 and 1.
    TARNRank drifting = RankOf({{0}, {0.8e-14}, {1.6e-14}});
    EXPECT_EQ(drifting.GroupRanks(0).ranks, (Ranks{{1.5, 1}, {1.5, 1}, {3, 1}}));
}

TEST(TARNRank, GroupsShareTheRanksOfATie) {
    const std::vector<Value> values{{1, 1, 1}, {2, 1, 2}, {2, 2, 1}, {4, 1, 2}};
    TARNRank rank = RankOf(values, 1);
    EXPECT_EQ(rank.GroupRanks(1).ranks, (Ranks{{1, 1}, {3, 2}}));
    EXPECT_EQ(rank.GroupRanks(1).sumOfRanks, 7);
    EXPECT_EQ(rank.GroupRanks(2).sumOfRanks, 8);
    EXPECT_EQ(rank.TieCorrectionSum(), 24);
    EXPECT_EQ(RankOf(values, 2).GroupRanks(2).ranks, (Ranks{{3, 1}, {5, 1}}));
}

TEST(TARNRank, RanksAreListedForTheGroupAloneThatIsAskedFor) {
    const std::vector<Value> values{{1, 1, 1}, {2, 1, 2}};
    TARNRank rank = RankOf(values, 1);
    EXPECT_EQ(rank.GroupRanks(1).ranks, (Ranks{{1, 1}}));
    EXPECT_EQ(rank.GroupRanks(1).maxRank, 1);
    EXPECT_TRUE(rank.GroupRanks(2).ranks.empty());
    EXPECT_EQ(rank.GroupRanks(2).minRank, -1);
}

TEST(TARNRank, SecondCloseCountsTheLastRunTwice) {
    TARNRank rank = RankOf({{1}, {2}});
    rank.CloseTieRun();
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{1, 1}, {2, 1}, {2, 1}}));
}

TEST(TARNRank, LowerValueOnlyStartsANewRun) {
    TARNRank rank = RankOf({{5}, {1}});
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{1, 1}, {2, 1}}));
}

TEST(TARNRank, CopyHasAllAndResetForgetsAll) {
    TARNRank rank = RankOf({{1}, {1}});
    TARNRank copy = rank;
    rank.Reset();
    EXPECT_EQ(rank.TieCorrectionSum(), 0);
    EXPECT_TRUE(rank.GroupRanks(0).ranks.empty());
    rank.KeepRanksOf(0);
    EXPECT_TRUE(rank.AddValue(7, 1, 0).IsOK());
    rank.CloseTieRun();
    EXPECT_EQ(rank.GroupRanks(0).ranks, (Ranks{{1, 1}}));
    EXPECT_EQ(copy.TieCorrectionSum(), 6);
    EXPECT_EQ(copy.GroupRanks(0).sumOfRanks, 3);
}

}  // namespace
