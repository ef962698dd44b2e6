// What one walk over the records of several groups knows of any of them, held to a walk over these alone: the plain
// way, by the classes that rank a single list.

#include <gtest/gtest.h>

#include <functional>
#include <limits>
#include <vector>

#include "independent/JonckheereWalk.h"
#include "independent/PairRankSum.h"
#include "independent/PairRankSums.h"
#include "independent/RangeRanks.h"
#include "independent/TieRuns.h"
#include "independent/TieScan.h"
#include "tests/independent/RandomRecords.h"

namespace {

using several::GroupedColumns;
using several::RandomRecords;
using several::Ties;

constexpr std::int32_t kGroups = 11;  // more than a block of a row

const std::vector<std::int32_t> kOnes{1};
const std::vector<std::int32_t> kMixed{0, 1, 1, 2, 5};
const std::vector<std::int32_t> kLarge{0, 1, 40'000, 3'000'000};
const std::vector<std::int32_t> kNegative{-2, 1, 3};

bool AreShared(const GroupedColumns& records) {
    TieScan scan;
    scan.Add(records.values.data(), records.groups.data(), records.Size());
    return scan.AreShared();
}

// ---- Shared ties ----

bool AreSharedOf(const std::vector<double>& values) {
    TieScan scan;
    const std::vector<std::int32_t> groups(values.size(), 0);
    // In two parts: what was before counts.
    const std::size_t half = values.size() / 2;
    scan.Add(values.data(), groups.data(), half);
    scan.Add(values.data() + half, groups.data(), values.size() - half);
    return scan.AreShared();
}

TEST(TieScan, TiesAreSharedUntilSmallStepsMakeAChain) {
    EXPECT_TRUE(AreSharedOf({}));
    EXPECT_TRUE(AreSharedOf({1, 1, 2, 3}));
    EXPECT_TRUE(AreSharedOf({0.25, 0.25 + 3e-15, 0.25 + 6e-15, 0.25 + 9e-15, 0.5}));
    EXPECT_FALSE(AreSharedOf({0.25, 0.25 + 3e-15, 0.25 + 6e-15, 0.25 + 9e-15, 0.25 + 12e-15}));
    EXPECT_FALSE(AreSharedOf({0.25, 0.25 + 6e-15, 0.25 + 12e-15}));
    EXPECT_TRUE(AreSharedOf({0.25, 0.25 + 12e-15}));
    EXPECT_TRUE(AreSharedOf({-0.0, 0.0}));
}

TEST(TieScan, WhatIsNoFiniteNumberIsTiedWithNothing) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_FALSE(AreSharedOf({1, kInfinity}));
    EXPECT_FALSE(AreSharedOf({-kInfinity, 1}));
    EXPECT_FALSE(AreSharedOf({1, std::numeric_limits<double>::quiet_NaN()}));
}

TEST(TieScan, RecordsOfNoGroupAreNotThere) {
    TieScan scan;
    const std::vector<double> values{0.25, 0.25 + 6e-15, 0.25 + 12e-15};
    const std::vector<std::int32_t> groups{0, -1, 1};
    scan.Add(values.data(), groups.data(), values.size());
    EXPECT_TRUE(scan.AreShared());
}

// ---- Pairs ----

PairRankSum PlainPair(const GroupedColumns& records, std::int32_t first, std::int32_t second) {
    PairRankSum sum(Arithmetic::AsDefined());
    for (std::size_t i = 0; i < records.Size(); ++i) {
        if (records.groups[i] == first) sum.Add(records.values[i], records.weights[i], PairRankSum::Side::kFirst);
        if (records.groups[i] == second) sum.Add(records.values[i], records.weights[i], PairRankSum::Side::kSecond);
    }
    sum.Close();
    return sum;
}

void ExpectPlainPairs(const GroupedColumns& records, PairRankSums::Ties ties) {
    PairRankSums sums;
    sums.Begin(kGroups, ties, Arithmetic::AsDefined());
    for (std::size_t i = 0; i < records.Size(); ++i) {
        sums.Add(records.values[i], records.weights[i], static_cast<std::size_t>(records.groups[i]));
    }
    sums.Close();
    for (std::int32_t first = 0; first < kGroups; ++first) {
        for (std::int32_t second = first + 1; second < kGroups; ++second) {
            const PairRankSum plain = PlainPair(records, first, second);
            const auto [i, j] = std::pair(static_cast<std::size_t>(first), static_cast<std::size_t>(second));
            ASSERT_EQ(sums.SumOfRanks(i, j), plain.SumOfRanks()) << first << " " << second;
            ASSERT_EQ(sums.SizeOf(i), plain.SizeOfFirst());
            ASSERT_EQ(sums.SizeOf(j), plain.SizeOfSecond());
            const bool areTwoCases = plain.SizeOfFirst() == 1 && plain.SizeOfSecond() == 1;
            if (areTwoCases || ties == PairRankSums::Ties::kOfEachPair) {
                ASSERT_EQ(sums.TieCorrectionSum(i, j), plain.TieCorrectionSum());
            }
        }
    }
}

TEST(PairRankSums, AreThoseOfEachPairByItself) {
    unsigned seed = 1;
    for (const std::vector<std::int32_t>& weights : {kOnes, kMixed, kLarge}) {
        for (const Ties ties : {Ties::kEqual, Ties::kNearlyEqual}) {
            for (const int gridPoints : {3, 60, 100'000}) {
                const GroupedColumns records = RandomRecords(400, kGroups, gridPoints, ties, weights, seed++);
                ASSERT_TRUE(AreShared(records));
                ExpectPlainPairs(records, PairRankSums::Ties::kShared);
                ExpectPlainPairs(records, PairRankSums::Ties::kOfEachPair);
            }
        }
    }
}

TEST(PairRankSums, OfSingleCasesKnowWhichAreTied) {
    for (unsigned seed = 0; seed < 20; ++seed) {
        GroupedColumns records = RandomRecords(kGroups, kGroups, 5, Ties::kEqual, kOnes, seed);
        for (std::int32_t group = 0; group < kGroups; ++group) records.groups[static_cast<std::size_t>(group)] = group;
        ExpectPlainPairs(records, PairRankSums::Ties::kShared);
    }
}

TEST(PairRankSums, OfChainsAndOfNegativeWeightsAreWalkedByPairs) {
    const GroupedColumns chains = RandomRecords(400, kGroups, 20, Ties::kInChains, kMixed, 5);
    ASSERT_FALSE(AreShared(chains));
    ExpectPlainPairs(chains, PairRankSums::Ties::kOfEachPair);
    ExpectPlainPairs(RandomRecords(400, kGroups, 20, Ties::kEqual, kNegative, 6), PairRankSums::Ties::kOfEachPair);
}

TEST(PairRankSums, RanksBeyond32BitsWrapAroundAsTheyDoOfAPair) {
    ExpectPlainPairs(RandomRecords(2000, kGroups, 700, Ties::kEqual, {1'000'000'000, 7}, 7),
                     PairRankSums::Ties::kShared);
}

// ---- Runs of ties ----

TieRuns RunsOf(const GroupedColumns& records) {
    TieRuns runs;
    runs.Begin(kGroups);
    for (std::size_t i = 0; i < records.Size(); ++i) {
        if (i > 0 && records.values[i] != records.values[i - 1]) runs.EndRun();
        runs.Add(static_cast<std::size_t>(records.groups[i]), records.weights[i]);
    }
    runs.EndRun();
    return runs;
}

template <typename Sum>
Sum CubicTerm(std::int64_t weight) {
    const Sum t = static_cast<Sum>(weight);
    return t * t * t - t;
}

/// The sum over the runs of some groups, one after the other.
template <typename Sum>
Sum PlainSum(const GroupedColumns& records, const std::function<bool(std::int32_t)>& isMember) {
    const GroupedColumns some = records.Of(isMember);
    Sum sum = 0;
    for (std::size_t begin = 0; begin < some.Size();) {
        std::int64_t weight = 0;
        std::size_t end = begin;
        for (; end < some.Size() && some.values[end] == some.values[begin]; ++end) weight += some.weights[end];
        sum += CubicTerm<Sum>(weight);
        begin = end;
    }
    return sum;
}

template <typename Sum>
void ExpectPlainTieSums(const GroupedColumns& records, bool isExact) {
    const TieRuns runs = RunsOf(records);
    const std::vector<Sum> pairs = runs.SumsOfPairs<Sum>(CubicTerm<Sum>, isExact);
    RangeTieSums<Sum> ranges;
    for (std::int32_t last = 0; last < kGroups; ++last) {
        for (std::int32_t first = 0; first <= last; ++first) {
            const Sum plain =
                PlainSum<Sum>(records, [&](std::int32_t group) { return group >= first && group <= last; });
            const auto [from, to] = std::pair(static_cast<std::size_t>(first), static_cast<std::size_t>(last));
            ASSERT_EQ(ranges.Of(runs, CubicTerm<Sum>, isExact, from, to), plain) << first << " " << last;
            if (first == last) continue;
            const Sum pair =
                PlainSum<Sum>(records, [&](std::int32_t group) { return group == first || group == last; });
            ASSERT_EQ(pairs[TieRuns::PairPlace(from, to)], pair);
        }
    }
    const auto isOdd = [](std::uint32_t group) { return group % 2 == 1; };
    EXPECT_EQ(runs.SumOf<Sum>(CubicTerm<Sum>, isOdd),
              PlainSum<Sum>(records, [](std::int32_t group) { return group % 2 == 1; }));
}

TEST(TieRuns, SumsAreThoseOfTheGroupsAlone) {
    unsigned seed = 11;
    for (const std::vector<std::int32_t>& weights : {kOnes, kMixed, kNegative}) {
        for (const int gridPoints : {2, 40, 300}) {
            const GroupedColumns records = RandomRecords(500, kGroups, gridPoints, Ties::kEqual, weights, seed++);
            ExpectPlainTieSums<double>(records, true);
            ExpectPlainTieSums<double>(records, false);
            ExpectPlainTieSums<long double>(records, true);
        }
    }
}

// Cubes of some millions are rounded, so that the order of the sum matters.
TEST(TieRuns, SumsThatAreRoundedKeepTheirOrder) {
    const GroupedColumns records = RandomRecords(900, kGroups, 200, Ties::kEqual, {1, 3'000'001, 777'777}, 21);
    ExpectPlainTieSums<double>(records, false);
    ExpectPlainTieSums<long double>(records, false);
}

TEST(TieRuns, SingleCasesAreNotKept) {
    TieRuns runs;
    runs.Begin(2);
    for (const auto& [group, weight] : {std::pair(0U, 1), {1U, 1}, {0U, 0}, {1U, 2}}) {
        runs.Add(group, weight);
        runs.EndRun();
    }
    EXPECT_EQ(runs.Count(), 1U);
    EXPECT_FALSE(runs.HasNegative());
    runs.Add(0, -1);
    runs.EndRun();
    EXPECT_EQ(runs.Count(), 2U);
    EXPECT_TRUE(runs.HasNegative());
}

// ---- Ranges ----

void ExpectPlainRanges(const GroupedColumns& records) {
    RangeRanks ranks;
    ranks.Begin(kGroups);
    const std::size_t half = records.Size() / 2;
    ranks.Add(records.values.data(), records.weights.data(), records.groups.data(), half);
    ranks.Add(records.values.data() + half, records.weights.data() + half, records.groups.data() + half,
              records.Size() - half);
    ranks.Close();
    for (std::int32_t last = kGroups - 1; last > 0; --last) {
        for (std::int32_t first = 0; first < last; ++first) {
            TARNRank plain(Arithmetic::AsDefined());
            for (std::size_t i = 0; i < records.Size(); ++i) {
                const std::int32_t group = records.groups[i];
                if (group < first || group > last) continue;
                static_cast<void>(plain.AddValue(records.values[i], records.weights[i], group));
            }
            plain.CloseTieRun();
            const auto [from, to] = std::pair(static_cast<std::size_t>(first), static_cast<std::size_t>(last));
            ASSERT_EQ(ranks.TieCorrectionSum(from, to), plain.TieCorrectionSum()) << first << " " << last;
            for (std::int32_t group = first; group <= last; ++group) {
                ASSERT_EQ(ranks.SumOfRanks(static_cast<std::size_t>(group), from, to),
                          plain.GroupRanks(group).sumOfRanks)
                    << group << " of " << first << " to " << last;
            }
        }
    }
}

TEST(RangeRanks, AreThoseOfEachRangeByItself) {
    unsigned seed = 31;
    for (const std::vector<std::int32_t>& weights : {kOnes, kMixed}) {
        for (const Ties ties : {Ties::kEqual, Ties::kNearlyEqual}) {
            for (const int gridPoints : {3, 60, 100'000}) {
                ExpectPlainRanges(RandomRecords(300, kGroups, gridPoints, ties, weights, seed++));
            }
        }
    }
}

TEST(RangeRanks, TieSumsThatAreRoundedKeepTheirOrder) {
    const GroupedColumns records = RandomRecords(600, kGroups, 100, Ties::kEqual, {1, 300'001, 77'777}, 41);
    std::int64_t total = 0;
    for (const std::int32_t weight : records.weights) total += weight;
    ASSERT_TRUE(RangeRanks::AreExact(total, total / 4));
    ExpectPlainRanges(records);
}

TEST(RangeRanks, AreExactWhileAProductOfSizesFitsIntoADouble) {
    EXPECT_TRUE(RangeRanks::AreExact(40'000'000, 40'000'000));
    EXPECT_FALSE(RangeRanks::AreExact(60'000'000, 60'000'000));
    EXPECT_TRUE(RangeRanks::AreExact(330'000'000, 5'000'000));
    EXPECT_FALSE(RangeRanks::AreExact(2'200'000'000, 1));  // ranks are 32 bits wide
}

// ---- Counts of the Jonckheere-Terpstra test ----

JonckheereWalk WalkOver(const GroupedColumns& records, PairRankSums::Ties ties) {
    JonckheereWalk walk;
    walk.Begin(kGroups, ties, Arithmetic::AsDefined());
    const std::size_t part = records.Size() / 3;
    walk.Add(records.values.data(), records.weights.data(), records.groups.data(), part);
    walk.Add(records.values.data() + part, records.weights.data() + part, records.groups.data() + part,
             records.Size() - part);
    walk.Close();
    return walk;
}

void ExpectSame(const JonckheereCounts& counts, const JonckheereCounts& plain) {
    ASSERT_EQ(counts.j, plain.j);
    ASSERT_EQ(counts.pairsTied, plain.pairsTied);
    ASSERT_EQ(counts.triplesTied, plain.triplesTied);
}

/// Counts pair by pair, and the ties of equal values.
JonckheereCounts PlainCounts(const GroupedColumns& records, const std::vector<std::size_t>& groups) {
    JonckheereCounts counts;
    for (std::size_t i = 0; i < groups.size(); ++i) {
        for (std::size_t j = i + 1; j < groups.size(); ++j) {
            const PairRankSum pair =
                PlainPair(records, static_cast<std::int32_t>(groups[i]), static_cast<std::int32_t>(groups[j]));
            counts.j += pair.SumOfRanks() - pair.SizeOfSecond() * (pair.SizeOfSecond() + 1) / 2;
        }
    }
    const GroupedColumns some = records.Of([&](std::int32_t group) {
        return std::find(groups.begin(), groups.end(), static_cast<std::size_t>(group)) != groups.end();
    });
    for (std::size_t begin = 0; begin < some.Size();) {
        long double t = 0;
        std::size_t end = begin;
        for (; end < some.Size() && some.values[end] == some.values[begin]; ++end) t += some.weights[end];
        counts.pairsTied += t * (t - 1);
        counts.triplesTied += t * t * (t - 1);
        begin = end;
    }
    return counts;
}

void ExpectPlainCounts(const GroupedColumns& records, PairRankSums::Ties ties) {
    JonckheereWalk walk = WalkOver(records, ties);
    ExpectSame(walk.Of({0, 3, 4, 9}), PlainCounts(records, {0, 3, 4, 9}));
    for (std::size_t last = kGroups - 1; last > 0; --last) {
        std::vector<std::size_t> range{last};
        for (std::size_t first = last; first-- > 0;) {
            range.insert(range.begin(), first);
            ExpectSame(walk.OfPair(first, last), PlainCounts(records, {first, last}));
            const JonckheereCounts ofRange = walk.OfRange(first, last);
            ExpectSame(ofRange, PlainCounts(records, range));
            const JonckheereCounts ofGroups = walk.Of(range);
            ASSERT_TRUE(ofRange.twiceJ == ofGroups.twiceJ);
            ASSERT_EQ(ofRange.tieCorrectionSum, ofGroups.tieCorrectionSum);
        }
    }
}

TEST(JonckheereWalk, KnowsAnyPairAndAnyRange) {
    unsigned seed = 51;
    for (const std::vector<std::int32_t>& weights : {kOnes, kMixed, kLarge}) {
        for (const Ties ties : {Ties::kEqual, Ties::kNearlyEqual}) {
            for (const int gridPoints : {3, 60, 100'000}) {
                ExpectPlainCounts(RandomRecords(200, kGroups, gridPoints, ties, weights, seed++),
                                  PairRankSums::Ties::kShared);
            }
        }
    }
    ExpectPlainCounts(RandomRecords(200, kGroups, 20, Ties::kInChains, kMixed, seed++),
                      PairRankSums::Ties::kOfEachPair);
    ExpectPlainCounts(RandomRecords(200, kGroups, 20, Ties::kEqual, kNegative, seed), PairRankSums::Ties::kOfEachPair);
}

TEST(JonckheereWalk, InfiniteValuesAreEqualButTiedInNoRank) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    GroupedColumns records;
    records.values = {-kInfinity, -kInfinity, 1, kInfinity, kInfinity, kInfinity};
    records.weights = {1, 1, 1, 1, 1, 1};
    records.groups = {0, 1, 0, 2, 1, 0};
    ExpectPlainCounts(records, PairRankSums::Ties::kOfEachPair);
}

}  // namespace
