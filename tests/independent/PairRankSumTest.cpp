// The rank sum of a pair of groups against the ranks that a list of all of them gives.

#include "independent/PairRankSum.h"

#include <gtest/gtest.h>
#include <rapidcheck/gtest.h>

#include <algorithm>
#include <tuple>
#include <vector>

namespace {

struct Case {
    double value;
    std::int32_t weight;
    PairRankSum::Side side;
};
using Cases = std::vector<Case>;

constexpr PairRankSum::Side kFirst = PairRankSum::Side::kFirst;
constexpr PairRankSum::Side kSecond = PairRankSum::Side::kSecond;

PairRankSum SumOf(const Cases& cases) {
    PairRankSum sum(Arithmetic::AsDefined());
    for (const Case& one : cases) sum.Add(one.value, one.weight, one.side);
    sum.Close();
    return sum;
}

/// The same by `TARNRank`, which has a key for each group.
void ExpectAsByRank(const Cases& cases) {
    TARNRank rank(Arithmetic::AsDefined());
    double sizes[2] = {0, 0};
    for (const Case& one : cases) {
        static_cast<void>(rank.AddValue(one.value, one.weight, one.side == kFirst ? 1 : 2));
        sizes[one.side == kFirst ? 0 : 1] += one.weight;
    }
    rank.CloseTieRun();
    const PairRankSum sum = SumOf(cases);
    RC_ASSERT(sum.SumOfRanks() == rank.GroupRanks(2).sumOfRanks);
    RC_ASSERT(sum.TieCorrectionSum() == rank.TieCorrectionSum());
    RC_ASSERT(sum.SizeOfFirst() == sizes[0]);
    RC_ASSERT(sum.SizeOfSecond() == sizes[1]);
}

/// Values on a grid that makes ties frequent, `nearTies` steps of 3e-15 beside it: three of them are still tied with
/// the first, four no more. Around 0.25 such a step is a whole number of the last places.
Cases CasesOn(int values, int nearTies) {
    const auto drawn = *rc::gen::container<std::vector<std::tuple<int, int, int, bool>>>(
        rc::gen::tuple(rc::gen::inRange(-values, values + 1), rc::gen::inRange(0, nearTies + 1),
                       rc::gen::element(0, 1, 1, 1, 2, 3, 1000), rc::gen::arbitrary<bool>()));
    Cases cases;
    for (const auto& [value, near, weight, isSecond] : drawn) {
        cases.push_back({value * 0.25 + near * 3e-15, weight, isSecond ? kSecond : kFirst});
    }
    std::stable_sort(cases.begin(), cases.end(), [](const Case& a, const Case& b) { return a.value < b.value; });
    return cases;
}

RC_GTEST_PROP(PairRankSum, IsThatOfTheListOfRanksUnderTies, ()) {
    ExpectAsByRank(CasesOn(6, 0));
}
RC_GTEST_PROP(PairRankSum, IsThatOfTheListOfRanksWhereValuesDifferByALittle, ()) {
    ExpectAsByRank(CasesOn(1, 12));
}
RC_GTEST_PROP(PairRankSum, IsThatOfTheListOfRanksWhereFewAreTied, ()) {
    ExpectAsByRank(CasesOn(1'000'000, 0));
}

TEST(PairRankSum, RanksByHand) {
    // 1 | 2 2 | 3 | 5: the second group has 2.5 and 5.
    const PairRankSum sum = SumOf({{1, 1, kFirst}, {2, 1, kFirst}, {2, 1, kSecond}, {3, 1, kFirst}, {5, 1, kSecond}});
    EXPECT_EQ(sum.SumOfRanks(), 7.5);
    EXPECT_EQ(sum.TieCorrectionSum(), 6);
    EXPECT_EQ(sum.SizeOfFirst(), 3);
    EXPECT_EQ(sum.SizeOfSecond(), 2);
}

TEST(PairRankSum, ZeroIsAValueLikeOthers) {
    EXPECT_EQ(SumOf({{0, 1, kSecond}, {0, 1, kFirst}, {1, 1, kSecond}}).SumOfRanks(), 4.5);
    EXPECT_EQ(SumOf({{-1, 1, kFirst}, {-0.0, 1, kFirst}, {0.0, 1, kSecond}}).SumOfRanks(), 2.5);
}

TEST(PairRankSum, WeightsAreRepeatedRecordsAndAWeightOfZeroMovesNothing) {
    // 1 1 | 4 4 4: ranks 1.5 and 4.
    const PairRankSum sum = SumOf({{1, 2, kFirst}, {3, 0, kSecond}, {4, 1, kFirst}, {4, 2, kSecond}, {9, 0, kFirst}});
    EXPECT_EQ(sum.SumOfRanks(), 8);
    EXPECT_EQ(sum.TieCorrectionSum(), 6 + 24);
    EXPECT_EQ(sum.SizeOfFirst(), 3);
    EXPECT_EQ(sum.SizeOfSecond(), 2);
}

TEST(PairRankSum, TiesReachBelow1EMinus14OfTheFirstOfTheRunAndNoFurther) {
    const double step = 3.0 / 4 * 1e-14;
    EXPECT_EQ(SumOf({{0, 1, kFirst}, {step, 1, kSecond}}).SumOfRanks(), 1.5);
    EXPECT_EQ(SumOf({{0, 1, kFirst}, {1e-14, 1, kSecond}}).SumOfRanks(), 2);
    // The third one is near the second, which is tied with the first; ties don't chain.
    EXPECT_EQ(SumOf({{0, 1, kFirst}, {step, 1, kSecond}, {2 * step, 1, kSecond}}).SumOfRanks(), 1.5 + 3);
}

TEST(PairRankSum, NothingAddedIsNoRank) {
    EXPECT_EQ(SumOf({}).SumOfRanks(), 0);
    EXPECT_EQ(SumOf({}).TieCorrectionSum(), 0);
    EXPECT_EQ(SumOf({{3, 1, kFirst}}).SumOfRanks(), 0);
    EXPECT_EQ(SumOf({{3, 1, kSecond}}).SumOfRanks(), 1);
}

}  // namespace
