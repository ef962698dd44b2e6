// Significances of a sum of differences over all signs: enumerated, and as R finds them.

#include "host/beyond/exact/MarginalHomogeneityExact.h"

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <vector>

#include "tests/host/beyond/exact/GroupArrangements.h"

namespace tarn {
namespace {

using namespace arrangement_test;

void ExpectTails(const std::optional<ExactTails>& tails, double less, double greater, double twoSided) {
    ASSERT_TRUE(tails);
    EXPECT_NEAR(tails->less, less, 1e-14);
    EXPECT_NEAR(tails->greater, greater, 1e-14);
    EXPECT_NEAR(tails->twoSided, twoSided, 1e-14);
}

/// Checks all sums that signs can give, each difference once with each sign.
void ExpectAllSigns(const std::vector<CountedDifference>& differences) {
    std::vector<double> all;
    for (const CountedDifference& one : differences) {
        all.insert(all.end(), static_cast<std::size_t>(one.count), one.difference);
    }
    std::vector<double> sums;
    for (std::uint32_t signs = 0; signs < (1U << all.size()); ++signs) {
        double sum = 0;
        for (std::size_t i = 0; i < all.size(); ++i) sum += (signs >> i & 1U) != 0 ? all[i] : -all[i];
        sums.push_back(sum);
    }
    for (const double sum : sums) {
        const Shares shares = SharesOf(sums, sum);
        ExpectTails(MarginalHomogeneityExact(differences, sum), shares.less, shares.greater, shares.twoSided);
    }
}

TEST(MarginalHomogeneityExact, IsTheShareOfSigns) {
    ExpectAllSigns({{1, 3}, {2, 2}, {5, 1}});
    ExpectAllSigns({{2, 2}, {4, 2}, {6, 3}});              // the measure is 2
    ExpectAllSigns({{0.5, 3}, {1.25, 2}, {3, 1}});         // 0.25
    ExpectAllSigns({{0.1, 2}, {0.3, 3}, {0.7 - 0.2, 1}});  // 0.1, which is no binary fraction
    ExpectAllSigns({{1 / 3.0, 2}, {1, 2}, {5 / 3.0, 2}});
}

// R, with g the 1024 sign vectors of expand.grid and s <- g %*% c(1, 1, 1, 2, 2, 3, 4, 1, 2, 5): mean(s <= 12),
// mean(s >= 12), mean(abs(s) >= 12).
TEST(MarginalHomogeneityExact, IsThatOfAnEnumerationInR) {
    ExpectTails(MarginalHomogeneityExact({{1, 4}, {2, 3}, {3, 1}, {4, 1}, {5, 1}}, 12), 0.943359375, 0.09375, 0.1875);
    ExpectTails(MarginalHomogeneityExact({{1, 4}, {2, 3}, {3, 1}, {4, 1}, {5, 1}}, -12), 0.09375, 0.943359375, 0.1875);
}

// Equal differences: R's pbinom(63, 200, 0.5), 1 - pbinom(62, 200, 0.5) and binom.test(63, 200)$p.value.
TEST(MarginalHomogeneityExact, OfEqualDifferencesIsBinomial) {
    const auto tails = MarginalHomogeneityExact({{0.3, 200}}, 0.3 * (63 - 137));
    ExpectTails(tails, 8.95160572124081e-08, 0.99999995986547, 1.79032114424816e-07);
    EXPECT_NEAR(tails->less / 8.95160572124081e-08, 1, 1e-12);
}

// The differences 1 to n: R's psignrank(30, 12) with 2 * 30 - 78 = -18, and psignrank(5000, 200) with
// 2 * 5000 - 20100 = -10100.
TEST(MarginalHomogeneityExact, OfRanksIsTheSignedRankTest) {
    std::vector<CountedDifference> ranks;
    for (int rank = 1; rank <= 12; ++rank) ranks.push_back({static_cast<double>(rank), 1});
    EXPECT_NEAR(MarginalHomogeneityExact(ranks, -18)->less, 0.25927734375, 1e-15);
    for (int rank = 13; rank <= 200; ++rank) ranks.push_back({static_cast<double>(rank), 1});
    EXPECT_NEAR(MarginalHomogeneityExact(ranks, -10100)->less / 1.13129911981241e-10, 1, 1e-9);
    EXPECT_LT(MarginalHomogeneityExactSteps(ranks, -10100), 1e6);
}

TEST(MarginalHomogeneityExact, WithoutDifferencesIsOne) {
    ExpectTails(MarginalHomogeneityExact({}, 0), 1, 1, 1);
    ExpectTails(MarginalHomogeneityExact({{0, 5}, {3, 0}}, 0), 1, 1, 1);
    EXPECT_FALSE(MarginalHomogeneityExact({}, 1));
}

TEST(MarginalHomogeneityExact, GivesNothingWithoutCommonMeasureAndForSumsThatCannotBe) {
    EXPECT_FALSE(MarginalHomogeneityExact({{1, 1}, {std::sqrt(2.0), 1}}, 1 + std::sqrt(2.0)));
    EXPECT_FALSE(MarginalHomogeneityExact({{1, 2}, {2, 1}}, 5));
    EXPECT_FALSE(MarginalHomogeneityExact({{1, 2}, {2, 1}}, 1));
    EXPECT_FALSE(MarginalHomogeneityExact({{1, 2}, {2, 1}}, 0.5));
    EXPECT_FALSE(MarginalHomogeneityExact({{1, INT64_MAX}, {2, INT64_MAX}}, 0));
    EXPECT_TRUE(std::isinf(MarginalHomogeneityExactSteps({{1, INT64_MAX}, {2, INT64_MAX}}, 0)));
}

}  // namespace
}  // namespace tarn
