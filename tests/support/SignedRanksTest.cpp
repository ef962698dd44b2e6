// Ranks of absolute differences, held against their definition: sorted plainly, mid-ranks by counting.

#include "support/SignedRanks.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <map>
#include <random>
#include <vector>

namespace {

SignedRanks RanksOf(const std::vector<double>& differences, const std::vector<double>& weights = {}) {
    SignedDifferences sample;
    sample.Add(differences.data(), weights.empty() ? nullptr : weights.data(), differences.size(), true);
    return RankSignedDifferences(sample, nullptr, Arithmetic::AsDefined());
}

/// A rank is half the weight of its equals and a half behind the weight of all that are smaller.
SignedRanks Plain(const std::vector<double>& differences, const std::vector<double>& weights) {
    std::map<double, double> runs;
    for (std::size_t i = 0; i < differences.size(); ++i) runs[std::fabs(differences[i])] += weights[i];
    SignedRanks ranks;
    double below = 0;
    for (const auto& [value, weight] : runs) {
        for (std::size_t i = 0; i < differences.size(); ++i) {
            if (differences[i] == value) ranks.sumOfPositive += (below + (weight + 1) / 2) * weights[i];
        }
        ranks.tieCorrectionSum += weight < 2 ? 0 : weight * weight * weight - weight;
        below += weight;
    }
    return ranks;
}

TEST(SignedRanks, AreThoseOfTheAbsoluteValues) {
    // |d| 1 2 2 4 5: ranks 1, 2.5 and 2.5, 4, 5.
    const SignedRanks ranks = RanksOf({-2, 5, 1, 2, -4});
    EXPECT_EQ(ranks.sumOfPositive, 5 + 1 + 2.5);
    EXPECT_EQ(ranks.tieCorrectionSum, 6);
}

TEST(SignedRanks, OfNothingAreNothing) {
    const SignedRanks ranks = RankSignedDifferences(SignedDifferences(), nullptr, Arithmetic::AsDefined());
    EXPECT_EQ(ranks.sumOfPositive, 0);
    EXPECT_EQ(ranks.tieCorrectionSum, 0);
}

TEST(SignedRanks, AgreeWithTheDefinition) {
    std::mt19937 random(3);
    for (int round = 0; round < 60; ++round) {
        const std::size_t size = 1 + random() % 400;
        const unsigned distinct = round % 3 == 0 ? 7 : 100000;
        std::vector<double> differences;
        std::vector<double> weights;
        for (std::size_t i = 0; i < size; ++i) {
            const double value = (1 + static_cast<double>(random() % distinct)) / 8;
            differences.push_back(random() % 2 == 0 ? value : -value);
            weights.push_back(round % 2 == 0 ? 1 : static_cast<double>(random() % 4));
        }
        const SignedRanks expected = Plain(differences, weights);
        const SignedRanks weighted = RanksOf(differences, weights);
        EXPECT_EQ(weighted.sumOfPositive, expected.sumOfPositive) << round;
        EXPECT_EQ(weighted.tieCorrectionSum, expected.tieCorrectionSum) << round;
        if (round % 2 != 0) continue;
        const SignedRanks unweighted = RanksOf(differences);
        EXPECT_EQ(unweighted.sumOfPositive, expected.sumOfPositive) << round;
        EXPECT_EQ(unweighted.tieCorrectionSum, expected.tieCorrectionSum) << round;
    }
}

TEST(SignedRanks, FractionsOfWeightsCountInTheSumAlone) {
    // Truncated weights 1, 2, 0: the ranks are 1, 1 + (2 + 1) / 2 = 2.5, and 3 + (0 + 1) / 2 = 3.5.
    EXPECT_EQ(RanksOf({1, 2, 3}, {1.5, 2.25, 0.5}).sumOfPositive, 1.5 + 2.5 * 2.25 + 3.5 * 0.5);
}

TEST(SignedRanks, EqualInfinitiesAreNoTie) {
    const double infinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(RanksOf({infinity, infinity, 1}).tieCorrectionSum, 0);
    EXPECT_EQ(RanksOf({infinity, infinity, 1}).sumOfPositive, 6);
}

TEST(SignedRanks, WhatIsNoNumberStandsBehindAllOnTheSideOfItsSign) {
    const double nan = std::numeric_limits<double>::quiet_NaN();
    EXPECT_EQ(RanksOf({nan, -1, 5}).sumOfPositive, 2 + 3);
    EXPECT_EQ(RanksOf({-nan, -1, 5}).sumOfPositive, 2);
}

TEST(SignedRanks, WeightsBeyondExactSumsAreTakenToo) {
    constexpr double kLarge = 1e8;  // ranks (1e8 + 1) / 2 and 1e8 + (1e8 + 1) / 2
    EXPECT_EQ(RanksOf({-1, 2}, {kLarge, kLarge}).sumOfPositive, (kLarge + (kLarge + 1) / 2) * kLarge);
}

TEST(SignedRanks, WeightsBeyondExactSumsKeepTheirDigitsWhereTheyAreAskedFor) {
    Arithmetic extended;
    extended.Extend(true);
    // 2^30 records of 1 below 0, as many above, and 1 of 2: ranks (2^31 + 1) / 2 and 2^31 + 1, t = 2^31.
    constexpr double kHalf = 0x1p30;
    const double values[] = {-1, 2, 1};
    const double weights[] = {kHalf, 1, kHalf};
    SignedDifferences sample;
    sample.Add(values, weights, 3, true);
    const SignedRanks ranks = RankSignedDifferences(sample, nullptr, extended);
    EXPECT_EQ(ranks.excessOfPositive, 0x1p31 + 1);
    EXPECT_EQ(ranks.sumOfPositive, 0x1p60 + 0x1p29 + 0x1p31 + 1);
    EXPECT_EQ(ranks.tieCorrectionSum, 0x1p93 - 0x1p31);
    EXPECT_FALSE(extended.WasWider());  // it isn't said here, but where the counts are shown
}

TEST(SignedRanks, ExcessIsThatOverTheOtherSide) {
    EXPECT_EQ(RanksOf({-2, 5, 1, 2, -4}).excessOfPositive, 5 + 1 + 2.5 - 2.5 - 4);
    EXPECT_EQ(RanksOf({-2, 5}, {3, 2}).excessOfPositive, 4.5 * 2 - 2 * 3);
    EXPECT_EQ(RanksOf({-1, 2}, {0.5, 1e9}).excessOfPositive, (1e9 + 1) / 2 * 1e9 - 0.5 * 0.5);
}

TEST(SignedDifferences, LeaveZerosOutUnlessAskedForThem) {
    const std::vector<double> differences{0, 3, -0.0, -1};
    const std::vector<std::int32_t> weights{7, 2, 5, 4};
    SignedDifferences without;
    SignedDifferences with;
    for (std::size_t i = 0; i < differences.size(); i += 2) {
        without.Add(&differences[i], &weights[i], 2, false);
        with.Add(&differences[i], &weights[i], 2, true);
    }
    EXPECT_EQ(std::vector<double>(without.Differences().begin(), without.Differences().end()),
              (std::vector<double>{3, -1}));
    EXPECT_EQ(std::vector<double>(without.Weights(), without.Weights() + 2), (std::vector<double>{2, 4}));
    EXPECT_EQ(std::vector<double>(with.Differences().begin(), with.Differences().end()), differences);
    EXPECT_EQ(std::vector<double>(with.Weights(), with.Weights() + 4), (std::vector<double>{7, 2, 5, 4}));
    with.Clear();
    EXPECT_TRUE(with.Differences().empty());
    EXPECT_EQ(with.Weights(), nullptr);
}

TEST(SignedDifferences, KeepWhatCameBeforeWhenTheyGrow) {
    SignedDifferences sample;
    std::vector<double> expected;
    for (int i = 1; i <= 5000; ++i) {
        const double difference = i;
        sample.Add(&difference, static_cast<const double*>(nullptr), 1, false);
        expected.push_back(difference);
    }
    EXPECT_EQ(std::vector<double>(sample.Differences().begin(), sample.Differences().end()), expected);
}

}  // namespace
