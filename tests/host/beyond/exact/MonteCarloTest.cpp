// Significances by random arrangements: those of a plain program with the same generator, and near those of all
// arrangements.

#include "host/beyond/exact/MonteCarlo.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "host/beyond/exact/CounterRandom.h"
#include "tests/host/beyond/exact/GroupArrangements.h"

namespace tarn {
namespace {

using namespace arrangement_test;

using Lists = std::vector<std::vector<int>>;

const Lists& TwoGroups() {
    static const Lists lists{{3, 5, 5, 8, 9, 12, 13}, {1, 2, 4, 5, 6, 7, 8, 10}};
    return lists;
}

std::int64_t HitsOf(const Estimate& estimate, std::uint64_t draws) {
    return std::llround(estimate.value * static_cast<double>(1 + draws)) - 1;
}

// The hits are those of a program in Python, written from the papers of the generator and of bounded numbers: doubled
// midranks in a list, the first seven places swapped with a random one that is not before, for each of the draws. The
// limits are R's binom.test(hits, 9999, conf.level = 0.99)$conf.int.
TEST(MonteCarlo, RankSumIsThatOfAPlainProgram) {
    const auto tails = RankSumMonteCarlo(BlocksOf(CasesOf(TwoGroups())), {9999, 42}, WorkShare());
    ASSERT_TRUE(tails);
    EXPECT_EQ(tails->draws, 9999U);
    EXPECT_DOUBLE_EQ(tails->less.value, 8851 / 10000.0);
    EXPECT_DOUBLE_EQ(tails->greater.value, 1271 / 10000.0);
    EXPECT_DOUBLE_EQ(tails->twoSided.value, 2505 / 10000.0);
    EXPECT_NEAR(tails->less.lower, 0.876639137830677, 1e-12);
    EXPECT_NEAR(tails->less.upper, 0.893168501031472, 1e-12);
    EXPECT_NEAR(tails->greater.lower, 0.118564537331916, 1e-12);
    EXPECT_NEAR(tails->greater.upper, 0.135818511732668, 1e-12);
    EXPECT_NEAR(tails->twoSided.lower, 0.239335731639270, 1e-12);
    EXPECT_NEAR(tails->twoSided.upper, 0.261753224314277, 1e-12);
}

// R: binom.test(0, 9999, conf.level = 0.99) and binom.test(9999, 9999, conf.level = 0.99). No draw can have a positive
// sum above all ranks.
TEST(MonteCarlo, LimitsOfNoneAndOfAll) {
    const auto tails = SignedRankMonteCarlo({{2, 3}}, 100, {9999, 1}, WorkShare());
    ASSERT_TRUE(tails);
    EXPECT_DOUBLE_EQ(tails->greater.value, 1 / 10000.0);
    EXPECT_EQ(tails->greater.lower, 0);
    EXPECT_NEAR(tails->greater.upper, 0.00052974436100971655, 1e-15);
    EXPECT_EQ(tails->less.value, 1);
    EXPECT_NEAR(tails->less.lower, 0.99947025563899028, 1e-14);
    EXPECT_EQ(tails->less.upper, 1);
}

/// Draws in the plainest way: everything is copied, and moved as a textbook says.
class PlainDraw {
 public:
    PlainDraw(std::uint64_t seed, std::uint64_t draw) : random_(seed, draw) {}

    template <typename T>
    void Shuffle(std::vector<T>& items, std::size_t places) {
        for (std::size_t i = 0; i < places; ++i) {
            std::swap(items[i], items[i + random_.Below(static_cast<std::uint32_t>(items.size() - i))]);
        }
    }
    std::uint32_t Next() { return random_.Next(); }

 private:
    CounterRandom random_;
};

/// The statistics of the draws, each of an arrangement in which the groups are filled in the given order with places
/// that are drawn; the last group gets those that remain.
std::vector<double> PlainStatistics(const Cases& cases, const std::vector<int>& order, const MonteCarloPlan& plan,
                                    const CasesStatistic& statistic) {
    std::vector<double> statistics;
    for (std::uint64_t draw = 0; draw < plan.draws; ++draw) {
        PlainDraw random(plan.seed, draw);
        std::vector<std::size_t> places(cases.values.size());
        for (std::size_t i = 0; i < places.size(); ++i) places[i] = i;
        const auto drawn = static_cast<int>(places.size()) - cases.SizeOf(order.back());
        random.Shuffle(places, static_cast<std::size_t>(drawn));
        Cases arranged = cases;
        std::fill(arranged.groups.begin(), arranged.groups.end(), order.back());
        std::size_t next = 0;
        for (std::size_t i = 0; i + 1 < order.size(); ++i) {
            for (int j = 0; j < cases.SizeOf(order[i]); ++j) arranged.groups[places[next++]] = order[i];
        }
        statistics.push_back(statistic(arranged));
    }
    return statistics;
}

std::int64_t CountOfDraws(const std::vector<double>& statistics, const std::function<bool(double)>& isHit) {
    return std::count_if(statistics.begin(), statistics.end(), isHit);
}

void ExpectHits(const std::optional<MonteCarloTails>& tails, const std::vector<double>& statistics, double observed,
                double mean) {
    ASSERT_TRUE(tails);
    const auto hits = [&](const Estimate& estimate) { return HitsOf(estimate, tails->draws); };
    EXPECT_EQ(hits(tails->less), CountOfDraws(statistics, [&](double s) { return s <= observed + kEqual; }));
    EXPECT_EQ(hits(tails->greater), CountOfDraws(statistics, [&](double s) { return s >= observed - kEqual; }));
    EXPECT_EQ(hits(tails->twoSided), CountOfDraws(statistics, [&](double s) {
                  return std::fabs(s - mean) >= std::fabs(observed - mean) - kEqual;
              }));
}

constexpr MonteCarloPlan kPlan{500, 20240229};

TEST(MonteCarlo, RankSumCountsWhatTheDrawsGive) {
    for (const Lists& lists : {TwoGroups(), Lists{{1, 2, 2, 6, 7}, {3, 4}}}) {
        const Cases cases = CasesOf(lists);
        const bool isFirstSmaller = lists[0].size() <= lists[1].size();
        const std::vector<int> order = isFirstSmaller ? std::vector{0, 1} : std::vector{1, 0};
        const double mean = static_cast<double>(lists[0].size() * (cases.values.size() + 1)) / 2;
        ExpectHits(RankSumMonteCarlo(BlocksOf(cases), kPlan, WorkShare()),
                   PlainStatistics(cases, order, kPlan, RankSumOfFirst), RankSumOfFirst(cases), mean);
    }
}

TEST(MonteCarlo, ScatterCountsWhatTheDrawsGive) {
    const Cases cases = CasesOf({{1, 2, 5, 5, 6}, {5, 6, 7, 8, 9, 9}, {1, 1, 3, 4}});
    const std::vector<int> order{0, 2, 1};  // the largest group last
    // Only large values count: a mean of 0 makes the two-sided hits those of large values.
    ExpectHits(KruskalWallisMonteCarlo(BlocksOf(cases), kPlan, WorkShare()),
               PlainStatistics(cases, order, kPlan, KruskalWallisH), KruskalWallisH(cases), 0);
    const auto medianTest = [](const Cases& one) { return MedianChiSquare(one, 5); };
    const std::size_t blocksUpToFive = 5;  // 1, 2, 3, 4 and 5
    ExpectHits(MedianMonteCarlo(BlocksOf(cases), blocksUpToFive, kPlan, WorkShare()),
               PlainStatistics(cases, order, kPlan, medianTest), medianTest(cases), 0);
}

TEST(MonteCarlo, SmirnovCountsWhatTheDrawsGive) {
    for (const Lists& lists : {TwoGroups(), Lists{{1, 2, 2, 6, 7}, {3, 4, 2}}}) {
        const Cases cases = CasesOf(lists);
        const std::vector<int> order = lists[0].size() <= lists[1].size() ? std::vector{0, 1} : std::vector{1, 0};
        const CasesStatistic positive = [](const Cases& one) { return LargestAbove(one, 0, 1); };
        const CasesStatistic negative = [](const Cases& one) { return LargestAbove(one, 1, 0); };
        const CasesStatistic either = [&](const Cases& one) { return std::max(positive(one), negative(one)); };
        const auto estimates = SmirnovMonteCarlo(BlocksOf(cases), kPlan, WorkShare());
        ASSERT_TRUE(estimates);
        const auto expectHits = [&](const Estimate& estimate, const CasesStatistic& statistic) {
            EXPECT_EQ(HitsOf(estimate, kPlan.draws),
                      CountOfDraws(PlainStatistics(cases, order, kPlan, statistic),
                                   [&](double s) { return s >= statistic(cases) - kEqual; }));
        };
        expectHits(estimates->positive, positive);
        expectHits(estimates->negative, negative);
        expectHits(estimates->either, either);
    }
}

// The cases get their groups in the order of their values, by drawing from all groups' labels.
TEST(MonteCarlo, JonckheereCountsWhatTheDrawsGive) {
    const Cases cases = CasesOf({{1, 2, 5, 5, 6}, {5, 6, 7, 8, 9, 9}, {1, 3, 10}});
    std::vector<double> statistics;
    for (std::uint64_t draw = 0; draw < kPlan.draws; ++draw) {
        Cases arranged = cases;
        std::sort(arranged.groups.begin(), arranged.groups.end());
        PlainDraw(kPlan.seed, draw).Shuffle(arranged.groups, arranged.groups.size());
        statistics.push_back(JonckheereJ(arranged));
    }
    const double mean = (5 * 6 + 5 * 3 + 6 * 3) / 2.0;
    ExpectHits(JonckheereMonteCarlo(BlocksOf(cases), kPlan, WorkShare()), statistics, JonckheereJ(cases), mean);
}

// The lowest bit of the first word is the sign of the first difference, and so on.
TEST(MonteCarlo, SignedRanksCountWhatTheDrawsGive) {
    const std::vector<CountedRank> ranks{{2, 1}, {5, 2}, {38, 30}, {70, 1}, {73, 2}, {78, 4}};
    std::vector<double> statistics;
    double mean = 0;
    for (const CountedRank& rank : ranks) mean += static_cast<double>(rank.doubledRank * rank.count) / 2;
    for (std::uint64_t draw = 0; draw < kPlan.draws; ++draw) {
        PlainDraw random(kPlan.seed, draw);
        std::vector<bool> signs;
        for (int word = 0; word < 2; ++word) {
            const std::uint32_t bits = random.Next();
            for (int bit = 0; bit < 32; ++bit) signs.push_back((bits >> bit & 1U) != 0);
        }
        double sum = 0;
        std::size_t next = 0;
        for (const CountedRank& rank : ranks) {
            for (int i = 0; i < rank.count; ++i) sum += signs[next++] ? static_cast<double>(rank.doubledRank) : 0;
        }
        statistics.push_back(sum);
    }
    const std::int64_t observed = 1000;
    ExpectHits(SignedRankMonteCarlo(ranks, observed, kPlan, WorkShare()), statistics, 1000, mean);
}

TEST(MonteCarlo, RowsCountWhatTheDrawsGive) {
    const ScoreRows rows = RankRows({{1, 2, 3, 4}, {1, 1, 2, 3}, {4, 1, 3, 2}, {1, 2, 2, 2}, {2, 1, 4, 3}});
    std::vector<double> statistics;
    for (std::uint64_t draw = 0; draw < kPlan.draws; ++draw) {
        PlainDraw random(kPlan.seed, draw);
        ScoreRows arranged{rows.columns, {}};
        for (std::size_t i = 0; i < rows.RowCount(); ++i) {
            std::vector<std::int64_t> row;
            for (std::size_t column = 0; column < rows.columns; ++column) row.push_back(rows.At(i, column));
            random.Shuffle(row, rows.columns - 1);
            arranged.scores.insert(arranged.scores.end(), row.begin(), row.end());
        }
        statistics.push_back(SumOfSquaredColumnSums(arranged));
    }
    ExpectHits(RowsMonteCarlo(rows, kPlan, WorkShare()), statistics, SumOfSquaredColumnSums(rows), 0);
}

TEST(MonteCarlo, RunsCountWhatTheDrawsGive) {
    Cases cases;
    cases.groupCount = 2;
    cases.groups = {1, 1, 0, 0, 1, 0, 1, 1, 1, 0, 0, 0, 1, 1};  // 6 and 8 cases, 7 runs
    cases.values.resize(cases.groups.size());
    const double mean = 2 * 6 * 8 / 14.0 + 1;
    const std::vector<double> statistics = PlainStatistics(cases, {0, 1}, kPlan, Runs);
    ExpectHits(RunsMonteCarlo(6, 8, 7, kPlan, WorkShare()), statistics, 7, mean);
    ExpectHits(RunsMonteCarlo(8, 6, 7, kPlan, WorkShare()), statistics, 7, mean);
}

/// Whether the intervals hold the significance over all arrangements about as often as they say: of 200 with 99 %, at
/// least 192 do with a chance of 0.9998 (R: pbinom(8, 200, 0.01)).
void ExpectHeld(const std::string& what, double exact, const std::function<Estimate(const MonteCarloPlan&)>& estimate) {
    constexpr std::uint64_t kSeeds = 200;
    int held = 0;
    double sum = 0;
    for (std::uint64_t seed = 1; seed <= kSeeds; ++seed) {
        const Estimate one = estimate({1000, seed});
        held += one.lower <= exact && exact <= one.upper ? 1 : 0;
        sum += one.value / kSeeds;
    }
    EXPECT_GE(held, 192) << what;
    const double error = std::sqrt(exact * (1 - exact) / (1000.0 * kSeeds));
    EXPECT_NEAR(sum, exact, 4 * error + 1.0 / 1001) << what;  // the observed arrangement is counted, too
}

TEST(MonteCarlo, IntervalsHoldTheExactSignificanceOfTwoGroups) {
    const Cases cases = CasesOf({{3, 5, 8, 9}, {1, 4, 5, 6, 2}});
    const TieBlocks blocks = BlocksOf(cases);
    const Shares rankSum = EnumeratedShares(cases, RankSumOfFirst);
    const auto ofRankSum = [&](Estimate MonteCarloTails::*tail) {
        return [&blocks, tail](const MonteCarloPlan& plan) {
            return (*RankSumMonteCarlo(blocks, plan, WorkShare())).*tail;
        };
    };
    ExpectHeld("rank sum, less", rankSum.less, ofRankSum(&MonteCarloTails::less));
    ExpectHeld("rank sum, greater", rankSum.greater, ofRankSum(&MonteCarloTails::greater));
    ExpectHeld("rank sum, two-sided", rankSum.twoSided, ofRankSum(&MonteCarloTails::twoSided));
    const CasesStatistic largest = [](const Cases& one) {
        return std::max(LargestAbove(one, 0, 1), LargestAbove(one, 1, 0));
    };
    ExpectHeld("Smirnov", EnumeratedShares(cases, largest).greater,
               [&](const MonteCarloPlan& plan) { return SmirnovMonteCarlo(blocks, plan, WorkShare())->either; });
    const Shares runs = EnumeratedShares(cases, Runs);
    const auto observed = static_cast<std::int64_t>(Runs(cases));
    ExpectHeld("runs", runs.less,
               [&](const MonteCarloPlan& plan) { return RunsMonteCarlo(4, 5, observed, plan, WorkShare())->less; });
}

TEST(MonteCarlo, IntervalsHoldTheExactSignificanceOfThreeGroups) {
    const Cases cases = CasesOf({{1, 2, 2}, {2, 4, 5}, {4, 6, 3}});
    const TieBlocks blocks = BlocksOf(cases);
    ExpectHeld("H", EnumeratedShares(cases, KruskalWallisH).greater,
               [&](const MonteCarloPlan& plan) { return KruskalWallisMonteCarlo(blocks, plan, WorkShare())->greater; });
    const Shares medianTest = EnumeratedShares(cases, [](const Cases& one) { return MedianChiSquare(one, 3); });
    ExpectHeld("median", medianTest.greater,
               [&](const MonteCarloPlan& plan) { return MedianMonteCarlo(blocks, 3, plan, WorkShare())->greater; });
    const Shares trend = EnumeratedShares(cases, JonckheereJ);
    ExpectHeld("J", trend.greater,
               [&](const MonteCarloPlan& plan) { return JonckheereMonteCarlo(blocks, plan, WorkShare())->greater; });
    ExpectHeld("J, two-sided", trend.twoSided,
               [&](const MonteCarloPlan& plan) { return JonckheereMonteCarlo(blocks, plan, WorkShare())->twoSided; });
}

TEST(MonteCarlo, IntervalsHoldTheExactSignificanceOfRows) {
    const ScoreRows ranks = RankRows({{1, 2, 3}, {1, 3, 2}, {1, 2, 2}, {2, 1, 3}});
    ExpectHeld("Friedman", EnumeratedRowShares(ranks).greater,
               [&](const MonteCarloPlan& plan) { return RowsMonteCarlo(ranks, plan, WorkShare())->greater; });
    const ScoreRows successes{3, {1, 0, 0, 1, 1, 0, 1, 0, 0, 1, 0, 1, 1, 1, 1}};
    ExpectHeld("Cochran", EnumeratedRowShares(successes).greater,
               [&](const MonteCarloPlan& plan) { return RowsMonteCarlo(successes, plan, WorkShare())->greater; });
    // Of the 32 signs of the ranks 1 to 5, three give 13 or more: all positive, all but the 1, and all but the 2.
    ExpectHeld("signed ranks", 3 / 32.0, [&](const MonteCarloPlan& plan) {
        return SignedRankMonteCarlo({{2, 1}, {4, 1}, {6, 1}, {8, 1}, {10, 1}}, 26, plan, WorkShare())->greater;
    });
}

TEST(MonteCarlo, AnyNumberOfThreadsGivesTheSame) {
    Lists lists(3);
    for (int i = 0; i < 300; ++i) lists[static_cast<std::size_t>(i * i % 7 % 3)].push_back(i * 37 % 101);
    const TieBlocks three = BlocksOf(CasesOf(lists));
    lists.pop_back();
    const TieBlocks two = BlocksOf(CasesOf(lists));
    const ScoreRows rows = RankRows(std::vector<std::vector<int>>(50, {1, 2, 2, 3, 5}));
    const MonteCarloPlan plan{30001, 99};  // a last job that is not full
    const auto values = [&](unsigned threads) {
        const WorkShare work(threads);
        return std::vector<double>{RankSumMonteCarlo(two, plan, work)->twoSided.value,
                                   SmirnovMonteCarlo(two, plan, work)->either.value,
                                   KruskalWallisMonteCarlo(three, plan, work)->greater.value,
                                   MedianMonteCarlo(three, 50, plan, work)->greater.value,
                                   JonckheereMonteCarlo(three, plan, work)->less.value,
                                   RowsMonteCarlo(rows, plan, work)->greater.value,
                                   SignedRankMonteCarlo({{100, 99}, {201, 3}}, 5500, plan, work)->twoSided.value,
                                   RunsMonteCarlo(100, 200, 130, plan, work)->less.value};
    };
    const std::vector<double> alone = values(1);
    EXPECT_EQ(values(2), alone);
    EXPECT_EQ(values(5), alone);
    for (const double value : alone) EXPECT_GE(value, 1 / 30002.0);
}

TEST(MonteCarlo, StopsWhenToldTo) {
    const TieBlocks blocks = BlocksOf(CasesOf(TwoGroups()));
    const MonteCarloPlan endless{std::uint64_t{1} << 60, 1};
    for (const unsigned threads : {1U, 2U}) {
        int questions = 0;
        const WorkShare work(threads, [&] { return ++questions > 3; });
        EXPECT_FALSE(RankSumMonteCarlo(blocks, endless, work));
        EXPECT_FALSE(SmirnovMonteCarlo(blocks, endless, work));
        EXPECT_FALSE(RowsMonteCarlo(RankRows({{1, 2}, {1, 2}}), endless, work));
    }
}

TEST(MonteCarlo, GivesNothingForWhatHasNoArrangements) {
    const TieBlocks blocks = BlocksOf(CasesOf(TwoGroups()));
    const WorkShare work;
    EXPECT_FALSE(RankSumMonteCarlo(blocks, {0, 1}, work));
    EXPECT_FALSE(RankSumMonteCarlo(TieBlocks{2, {3, 0, 4, 0}}, kPlan, work));
    EXPECT_FALSE(RankSumMonteCarlo(BlocksOf(CasesOf({{1}, {2}, {3}})), kPlan, work));
    EXPECT_FALSE(SmirnovMonteCarlo(TieBlocks{}, kPlan, work));
    EXPECT_FALSE(KruskalWallisMonteCarlo(TieBlocks{3, {0, 5, 0}}, kPlan, work));
    EXPECT_FALSE(JonckheereMonteCarlo(TieBlocks{3, {0, 5, 0}}, kPlan, work));
    EXPECT_FALSE(KruskalWallisMonteCarlo(TieBlocks{2, {kMostMonteCarloCases, 1}}, kPlan, work));
    EXPECT_FALSE(MedianMonteCarlo(TieBlocks{2, {INT64_MAX, INT64_MAX}}, 0, kPlan, work));
    EXPECT_FALSE(SignedRankMonteCarlo({}, 0, kPlan, work));
    EXPECT_FALSE(SignedRankMonteCarlo({{2, INT64_MAX}, {4, INT64_MAX}}, 0, kPlan, work));
    EXPECT_FALSE(RowsMonteCarlo(ScoreRows{1, {2, 2}}, kPlan, work));
    EXPECT_FALSE(RowsMonteCarlo(ScoreRows{2, {0, std::int64_t{1} << 31}}, kPlan, work));
    EXPECT_FALSE(RunsMonteCarlo(0, 5, 1, kPlan, work));
    EXPECT_FALSE(RunsMonteCarlo(INT64_MAX, INT64_MAX, 1, kPlan, work));
}

// All values are equal: no arrangement is more extreme than another.
TEST(MonteCarlo, OfEqualValuesIsOne) {
    const WorkShare work;
    EXPECT_EQ(RankSumMonteCarlo(TieBlocks{2, {3, 4}}, kPlan, work)->twoSided.value, 1);
    EXPECT_EQ(KruskalWallisMonteCarlo(TieBlocks{3, {3, 4, 5}}, kPlan, work)->greater.value, 1);
    EXPECT_EQ(JonckheereMonteCarlo(TieBlocks{3, {3, 4, 5}}, kPlan, work)->twoSided.value, 1);
    EXPECT_EQ(SmirnovMonteCarlo(TieBlocks{2, {3, 4}}, kPlan, work)->either.value, 1);
    EXPECT_EQ(RowsMonteCarlo(ScoreRows{2, {3, 3, 3, 3}}, kPlan, work)->greater.value, 1);
}

}  // namespace
}  // namespace tarn
