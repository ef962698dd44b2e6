// J and its moments. Reference values: Python's fractions over the formula of the variance; mean and variance of all
// ways to deal the values out to the groups, enumerated in Python; Hollander and Wolfe (1973), Nonparametric
// Statistical Methods, example 6.2 (J = 79); sums by hand.

#include "independent/JonckheereSubset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <numeric>
#include <tuple>

#include "tests/harness/WithinUlp.h"
#include "tests/independent/SeveralGroupsRun.h"

namespace {

using several::Samples;

using Records = std::vector<std::tuple<double, std::int32_t, std::int32_t>>;

/// Groups of these sizes, from records (value, weight, group).
JonckheereSubset Computed(const std::vector<double>& sizes, const Records& records) {
    std::vector<double> values;
    std::vector<std::int32_t> weights;
    std::vector<std::int32_t> places;
    for (const auto& [value, weight, place] : records) {
        values.push_back(value);
        weights.push_back(weight);
        places.push_back(place);
    }
    JonckheereWalk walk;
    walk.Begin(sizes.size(), PairRankSums::Ties::kShared, Arithmetic::AsDefined());
    walk.Add(values.data(), weights.data(), places.data(), values.size());
    walk.Close();
    std::vector<std::size_t> groups(sizes.size());
    std::iota(groups.begin(), groups.end(), std::size_t{0});
    JonckheereSubset subset;
    subset.SetGroups(sizes);
    subset.Compute(walk.Of(groups), Arithmetic::AsDefined());
    return subset;
}

/// The groups at their places, in ascending order of the values.
JonckheereSubset Computed(const Samples& samples) {
    Records records;
    std::vector<double> sizes;
    for (std::size_t place = 0; place < samples.size(); ++place) {
        sizes.push_back(static_cast<double>(samples[place].size()));
        for (const double value : samples[place]) records.emplace_back(value, 1, static_cast<std::int32_t>(place));
    }
    std::stable_sort(records.begin(), records.end(), [](auto a, auto b) { return std::get<0>(a) < std::get<0>(b); });
    return Computed(sizes, records);
}

/// The variance among groups of these sizes where the tied values are so many each.
double Variance(const std::vector<double>& sizes, const std::vector<double>& ties) {
    long double pairs = 0;
    long double triples = 0;
    for (const long double t : ties) {
        pairs += t * (t - 1);
        triples += t * t * (t - 1);
    }
    return JonckheereVariance(sizes, pairs, triples);
}

// ---- Variance ----

TEST(JonckheereVariance, IsThatOfTheFormulaInFractions) {
    EXPECT_EQ(Variance({1, 1, 1}, {1, 1, 1}), 11.0 / 12);
    EXPECT_EQ(Variance({3, 3, 2}, {1, 3, 2, 2}), 1473.0 / 112);
    EXPECT_EQ(Variance({4, 7, 5, 1}, {5, 1, 1, 4, 6}), 971177.0 / 8160);
    EXPECT_EQ(Variance({700, 300}, std::vector<double>(1000, 1)), 17517500);
    // Terms above 1e35 that leave a number of twelve digits.
    EXPECT_EQ(Variance({1'000'000, 2}, {500'000, 500'001, 1}), 125000500000);
    EXPECT_DOUBLE_EQ(Variance({500'000, 400'000, 600'000}, {700'000, 800'000}), 92400000000000000000000.0 / 1499999);
    EXPECT_EQ(Variance({0, 3, 2}, {2, 3}), 9.0 / 4);
}

TEST(JonckheereVariance, IsZeroWhereAllIsTied) {
    // Above 1,500,000 cases the formula itself would leave a rest.
    for (const std::vector<double>& sizes : {std::vector<double>{1, 1, 1},
                                             {3, 4},
                                             {7, 11, 13, 1},
                                             {33333, 77777},
                                             {1'499'999, 1},
                                             {123'457, 999'983, 7},
                                             {1'500'000, 1},
                                             {999'999'937, 123'456'789, 77'777}}) {
        double n = 0;
        for (const double size : sizes) n += size;
        EXPECT_EQ(Variance(sizes, {n}), 0) << n;
    }
}

TEST(JonckheereVariance, IsZeroOfOneGroup) {
    EXPECT_EQ(Variance({10}, {4, 6}), 0);
    EXPECT_EQ(Variance({1'234'567, 0}, {1'000'000, 234'567}), 0);
    EXPECT_EQ(Variance({0, 1'234'567'891}, {1'000'000'000, 234'567'891}), 0);
}

TEST(JonckheereVariance, LargeTotals) {
    // float of the fraction
    EXPECT_NEAR(Variance({1e9, 9e8}, {1e9, 899'999'999, 1}) / 1.06578947475e+26, 1, 1e-12);
}

TEST(JonckheereVariance, MoreTiesThanCasesAreNoOverflow) {
    // Records that don't go with the sizes; the formula falls below 0.
    const double variance = Variance({500'000, 500'000}, {2e9});
    EXPECT_NEAR(variance / -1.6666683331266665e+26, 1, 1e-12);
}

// ---- Statistic ----

TEST(JonckheereSubset, MomentsAreThoseOfAllWaysToDealTheValuesOut) {
    const std::vector<std::tuple<Samples, double, double, double>> cases{
        {{{1, 2, 2}, {2, 3, 4}, {3, 4}}, 18, 10.5, 1473.0 / 112},
        {{{1, 1}, {1, 2}, {2, 2, 3}}, 14, 8, 41.0 / 5},
        {{{5, 1, 1}, {1, 2}, {5}}, 7.5, 5.5, 201.0 / 40}};
    for (const auto& [samples, j, mean, variance] : cases) {
        const JonckheereSubset subset = Computed(samples);
        EXPECT_EQ(subset.j, j);
        EXPECT_EQ(subset.mean, mean);
        EXPECT_EQ(subset.standardError, std::sqrt(variance));
        EXPECT_EQ(subset.z, (j - mean) / std::sqrt(variance));
    }
}

TEST(JonckheereSubset, TextbookExampleWithTies) {
    const JonckheereSubset subset =
        Computed({{40, 35, 38, 43, 44, 41}, {38, 40, 47, 44, 40, 42}, {48, 40, 45, 43, 46, 44}});
    EXPECT_EQ(subset.TotalN(), 18);
    EXPECT_EQ(subset.GroupCount(), 3U);
    EXPECT_EQ(subset.j, 79);
    EXPECT_EQ(subset.mean, 54);
    EXPECT_EQ(subset.standardError, std::sqrt(20439.0 / 136));
    EXPECT_TRUE(harness::WithinUlp(subset.z, 2.0392930588447173, 2));
}

TEST(JonckheereSubset, OrderOfTheGroupsIsTheirPlace) {
    EXPECT_EQ(Computed({{1, 2}, {3, 4}, {5, 6}}).j, 12);
    EXPECT_EQ(Computed({{5, 6}, {3, 4}, {1, 2}}).j, 0);
    EXPECT_EQ(Computed({{3, 4}, {1, 2}, {5, 6}}).j, 8);
    // Five groups: all ten pairs have their own count.
    EXPECT_EQ(Computed({{1}, {2}, {3}, {4}, {5}}).j, 10);
    EXPECT_EQ(Computed({{1}, {2}, {5}, {4}, {3}}).j, 7);
}

// Ranks take values that differ by less than 1e-14 as tied; the variance takes them as they are.
TEST(JonckheereSubset, ValuesThatDifferByALittleAreTiedInTheRanksAlone) {
    const JonckheereSubset subset = Computed({{1, 3}, {1 + 4e-15, 4}});
    EXPECT_EQ(subset.j, 2.5);
    EXPECT_EQ(subset.standardError, std::sqrt(5.0 / 3));  // 4 * 5 / 12, without ties
}

TEST(JonckheereSubset, FewerThanThreeCasesAreComparedAsTwoSamples) {
    const JonckheereSubset apart = Computed({{1}, {2}});
    EXPECT_EQ(apart.j, 1);
    EXPECT_EQ(apart.mean, 0.5);
    EXPECT_EQ(apart.standardError, 0.5);  // (8 - 2) / 12 * 1 / 2
    EXPECT_EQ(apart.z, 1);
    const JonckheereSubset tied = Computed({{2}, {2}});
    EXPECT_EQ(tied.j, 0.5);
    EXPECT_EQ(tied.standardError, 0);  // 8 - 2 less the tie sum of 6
    EXPECT_EQ(tied.z, 0);
}

TEST(JonckheereSubset, OneGroupHasNoPair) {
    for (const Samples& samples : {Samples{{7}}, {{7, 7}}, {{7, 8}}, {{1, 2, 2, 5}}}) {
        const JonckheereSubset subset = Computed(samples);
        EXPECT_EQ(subset.j, 0);
        EXPECT_EQ(subset.mean, 0);
        EXPECT_EQ(subset.standardError, 0);
        EXPECT_EQ(subset.z, 0);
    }
}

TEST(JonckheereSubset, WeightsCountAsRepeatedRecords) {
    const JonckheereSubset subset =
        Computed({3, 3, 2}, {{1, 1, 0}, {2, 2, 0}, {2, 1, 1}, {2.5, 0, 2}, {3, 1, 1}, {3, 1, 2}, {4, 1, 1}, {4, 1, 2}});
    EXPECT_EQ(subset.j, 18);
    EXPECT_EQ(subset.standardError, std::sqrt(1473.0 / 112));
}

TEST(JonckheereSubset, AMillionTiedCasesHaveNoSpread) {
    const JonckheereSubset subset = Computed({123'457, 999'983, 7}, {{5, 999'983, 1}, {5, 7, 2}, {5, 123'457, 0}});
    EXPECT_EQ(subset.standardError, 0);
    EXPECT_EQ(subset.z, 0);
}

TEST(JonckheereSubset, KnowsAnEmptyGroup) {
    JonckheereSubset subset;
    subset.SetGroups({2, 0, 1});
    EXPECT_TRUE(subset.HasEmptyGroup());
    subset.SetGroups({2, 1});
    EXPECT_FALSE(subset.HasEmptyGroup());
}

}  // namespace
