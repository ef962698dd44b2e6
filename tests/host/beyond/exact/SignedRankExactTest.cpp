#include "host/beyond/exact/SignedRankExact.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <limits>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

AscendingSample SampleOf(const Integers& differences) {
    AscendingSample sample;
    for (const std::int64_t difference : differences) sample.values.push_back(static_cast<double>(difference));
    sample.size = static_cast<double>(differences.size());
    return sample;
}

/// Twice the mid-rank of each absolute difference: how many are smaller, twice, how many are equal, and one.
Integers DoubledRanks(const Integers& differences, ZeroMethod zeros) {
    Integers ranks;
    for (const std::int64_t mine : differences) {
        std::int64_t doubled = 1;
        for (const std::int64_t other : differences) {
            if (zeros == ZeroMethod::kDrop && other == 0) continue;
            if (std::abs(other) < std::abs(mine)) doubled += 2;
            if (std::abs(other) == std::abs(mine)) doubled += 1;
        }
        ranks.push_back(doubled);
    }
    return ranks;
}

/// Twice the sum of the positive ranks for every choice of the signs, and for the observed one.
struct AllSigns {
    Integers statistics;
    std::int64_t observed = 0;
};

AllSigns AllSignsOf(const Integers& differences, ZeroMethod zeros) {
    const Integers ranks = DoubledRanks(differences, zeros);
    AllSigns all;
    ForEveryList(differences.size(), 1, [&](const Integers& signs) {
        std::int64_t quadrupled = 0;
        bool isObserved = true;
        for (std::size_t i = 0; i < signs.size(); ++i) {
            if (differences[i] == 0) {
                if (signs[i] == 1) return;  // a zero has no sign
                quadrupled += zeros == ZeroMethod::kSplit ? ranks[i] : 0;
            } else {
                quadrupled += signs[i] * 2 * ranks[i];
                isObserved = isObserved && (signs[i] == 1) == (differences[i] > 0);
            }
        }
        all.statistics.push_back(quadrupled / 2);
        if (isObserved) all.observed = quadrupled / 2;
    });
    return all;
}

TEST(SignedRankExact, IsTheShareOfAllSigns) {
    std::size_t wrong = 0;
    std::size_t wrongSums = 0;
    for (const ZeroMethod zeros : {ZeroMethod::kDrop, ZeroMethod::kPratt, ZeroMethod::kSplit}) {
        for (std::size_t cases = 1; cases <= 8; ++cases) {
            ForEveryAscendingList(cases, -3, 3, [&](const Integers& differences) {
                const AllSigns all = AllSignsOf(differences, zeros);
                const SignedRankScores scores = MakeSignedRankScores(SampleOf(differences), zeros);
                const ExactTails expected = TailsAmong(all.statistics, all.observed);
                wrong += AreNear(SignedRankExact(scores), expected, 1e-12) ? 0 : 1;
                wrongSums += scores.doubledPositiveSum == all.observed ? 0 : 1;
            });
        }
    }
    EXPECT_EQ(wrong, 0u);
    EXPECT_EQ(wrongSums, 0u);
}

/// 1 .. count, of which those are positive whose ranks add up to `sum`.
ExactTails UntiedTails(std::int64_t count, std::int64_t sum) {
    SignedRankScores scores;
    for (std::int64_t rank = 1; rank <= count; ++rank) {
        scores.doubledRanks.push_back(2 * rank);
        scores.counts.push_back(1);
    }
    scores.doubledPositiveSum = 2 * sum;
    return SignedRankExact(scores);
}

// R 4.2: psignrank(8, 10), psignrank(9, 10), psignrank(52, 20), psignrank(53, 20), psignrank(89, 25), psignrank(90,
// 25), psignrank(900, 80), psignrank(899, 80, lower = FALSE). 8, 52 and 89 are the critical values for .05 on both
// sides of Wilcoxon's table (Wilcoxon and Wilcox, 1964, Some Rapid Approximate Statistical Procedures, table 2).
TEST(SignedRankExact, IsThatOfRAndOfThePrintedTable) {
    ExpectClose(UntiedTails(10, 8).less, 0.0244140625);
    ExpectClose(UntiedTails(10, 9).less, 0.0322265625);
    ExpectClose(UntiedTails(20, 52).less, 0.024220466613769531);
    ExpectClose(UntiedTails(20, 53).less, 0.026584625244140625);
    ExpectClose(UntiedTails(25, 89).less, 0.02413120865821838);
    ExpectClose(UntiedTails(25, 90).less, 0.025788128376007077);
    ExpectClose(UntiedTails(80, 900).less, 0.00022102642720891373);
    ExpectClose(UntiedTails(80, 900).greater, 0.99978320643593999);
    ExpectClose(UntiedTails(80, 900).twoSided, 2 * 0.00022102642720891373);
}

// SciPy 1.17: wilcoxon([1, -2, 3, 4, 5, -6, 7, 8, 9, 10], method="exact", alternative="greater").
TEST(SignedRankExact, IsThatOfSciPy) {
    const SignedRankScores scores =
        MakeSignedRankScores(SampleOf({-6, -2, 1, 3, 4, 5, 7, 8, 9, 10}), ZeroMethod::kDrop);
    EXPECT_EQ(scores.doubledPositiveSum, 2 * 47);
    ExpectClose(SignedRankExact(scores).greater, 0.0244140625);
}

// Only one of 2^n choices of the signs is as extreme as all the same.
TEST(SignedRankExact, KeepsItsDigitsInTheFarthestTails) {
    ExpectClose(UntiedTails(900, 0).less, std::ldexp(1, -900));
    ExpectClose(UntiedTails(900, 900 * 901 / 2).greater, std::ldexp(1, -900));
    ExpectClose(UntiedTails(900, 900 * 901 / 2).twoSided, std::ldexp(1, -899));
    // Sums up to 3: of nothing, 1, 2, 3 and 1 + 2.
    ExpectClose(UntiedTails(900, 3).less, 5 * std::ldexp(1, -900));
}

// Ranked with two zeros the values 1, 2, 2 have ranks 3, 4.5, 4.5, and the zeros 1.5 each.
TEST(SignedRankExact, RanksByTheTreatmentOfZeros) {
    const AscendingSample sample = SampleOf({-2, 0, 0, 1, 2});
    const SignedRankScores dropped = MakeSignedRankScores(sample, ZeroMethod::kDrop);
    EXPECT_EQ(dropped.doubledRanks, (Integers{2, 5}));
    EXPECT_EQ(dropped.counts, (Integers{1, 2}));
    EXPECT_EQ(dropped.doubledPositiveSum, 7);
    const SignedRankScores pratt = MakeSignedRankScores(sample, ZeroMethod::kPratt);
    EXPECT_EQ(pratt.doubledRanks, (Integers{6, 9}));
    EXPECT_EQ(pratt.doubledPositiveSum, 15);
    const SignedRankScores split = MakeSignedRankScores(sample, ZeroMethod::kSplit);
    EXPECT_EQ(split.doubledFixedSum, 3);
    EXPECT_EQ(split.doubledPositiveSum, 18);
}

TEST(SignedRankExact, TakesWeightsAsSoManyCases) {
    const AscendingSample weighted{{-2, -1, 0, 1, 3}, {2, 1, 3, 4, 2}, 12};
    const AscendingSample each = SampleOf({-2, -2, -1, 0, 0, 0, 1, 1, 1, 1, 3, 3});
    for (const ZeroMethod zeros : {ZeroMethod::kDrop, ZeroMethod::kPratt, ZeroMethod::kSplit}) {
        const SignedRankScores scores = MakeSignedRankScores(weighted, zeros);
        const SignedRankScores expected = MakeSignedRankScores(each, zeros);
        EXPECT_EQ(scores.doubledRanks, expected.doubledRanks);
        EXPECT_EQ(scores.counts, expected.counts);
        EXPECT_EQ(scores.doubledPositiveSum, expected.doubledPositiveSum);
    }
}

TEST(SignedRankExact, IsOneWithoutDifferencesAndDoesNotOverflow) {
    ExpectNear(SignedRankExact(MakeSignedRankScores(SampleOf({0, 0}), ZeroMethod::kPratt)), {1, 1, 1}, 0);
    ExpectNear(SignedRankExact({}), {1, 1, 1}, 0);
    const AscendingSample huge{{-1, 1}, {0x1p52, 0x1p52}, 0x1p53};
    const SignedRankScores scores = MakeSignedRankScores(huge, ZeroMethod::kDrop);
    EXPECT_EQ(scores.doubledPositiveSum, std::numeric_limits<std::int64_t>::max());
    EXPECT_TRUE(std::isinf(SignedRankExactCost(scores)));
}

}  // namespace
}  // namespace tarn
