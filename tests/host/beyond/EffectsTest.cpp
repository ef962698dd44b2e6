#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "host/beyond/Association.h"
#include "host/beyond/MatchedEffects.h"
#include "host/beyond/OrderedTrend.h"
#include "host/beyond/PairScore.h"
#include "host/beyond/SmirnovDistance.h"
#include "host/beyond/Superiority.h"
#include "tests/host/beyond/SamplesForTests.h"

namespace tarn {
namespace {

using namespace beyond_test;

constexpr double kBound95 = 1.95996398454005;  // R 4.2.2: qnorm(.975)

void ExpectNear(const Estimate& actual, const Estimate& expected, double error) {
    EXPECT_NEAR(actual.value, expected.value, error);
    EXPECT_NEAR(actual.lower, expected.lower, error);
    EXPECT_NEAR(actual.upper, expected.upper, error);
}

/// A share with its limits as a coefficient.
Estimate Coefficient(const Estimate& share) {
    return {2 * share.value - 1, 2 * share.lower - 1, 2 * share.upper - 1};
}

TEST(OrderedTrend, OfTwoGroupsIsTheRankBiserialOfTheSecond) {
    std::mt19937 generator(11);
    for (int i = 0; i < 100; ++i) {
        const AscendingSample first = RandomSample(1 + i % 11, 0, 6, generator);
        const AscendingSample second = RandomSample(2 + i % 17, i % 8, 7, generator);
        ExpectNear(OrderedTrend({first, second}, 0.95), ProbabilityOfSuperiority(second, first, 0.95).rankBiserial,
                   1e-12);
    }
}

/// From all pairs, as the definition has it.
Estimate BruteTrend(const std::vector<AscendingSample>& groups) {
    double sum = 0;
    double pairs = 0;
    double cases = 0;
    double variance = 0;
    for (const AscendingSample& group : groups) cases += group.size;
    for (std::size_t g = 0; g < groups.size(); ++g) {
        std::vector<double> additions;
        double mean = 0;
        for (const double x : groups[g].values) {
            double addition = 0;
            for (std::size_t h = 0; h < groups.size(); ++h) {
                if (h == g) continue;
                for (const double y : groups[h].values) addition += h < g ? Sign(x - y) : Sign(y - x);
            }
            additions.push_back(addition);
            mean += addition / groups[g].size;
            sum += addition / 2;
        }
        for (const double a : additions) variance += (a - mean) * (a - mean) * groups[g].size / (groups[g].size - 1);
        pairs += groups[g].size * (cases - groups[g].size) / 2;
    }
    double shared = -1;
    for (const AscendingSample& g : groups) shared += g.size * (cases - g.size) * (cases - g.size) / (2 * pairs);
    const double share = (sum / pairs + 1) / 2;
    return Coefficient(LimitsOfPairShare(share, variance / 4 / pairs / pairs, {pairs, cases, shared}, kBound95));
}

TEST(OrderedTrend, IsThatOfAllPairs) {
    std::mt19937 generator(12);
    for (int i = 0; i < 60; ++i) {
        std::vector<AscendingSample> groups;
        std::vector<AscendingSample> weighted;
        for (int g = 0; g < 3 + i % 5; ++g) {
            groups.push_back(RandomSample(2 + (i * g) % 9, g, g + 5, generator));
            weighted.push_back(Weighted(groups.back()));
        }
        ExpectNear(OrderedTrend(groups, 0.95), BruteTrend(groups), 1e-12);
        ExpectNear(OrderedTrend(weighted, 0.95), BruteTrend(groups), 1e-12);
        const Estimate expected = BruteTrend(groups);
        groups.insert(groups.begin() + 1, SampleOf({}));
        ExpectNear(OrderedTrend(groups, 0.95), expected, 1e-12);
    }
}

TEST(OrderedTrend, HasLimitsAtItsEnds) {
    const Estimate rising = OrderedTrend({SampleOf({1, 2}), SampleOf({3, 4}), SampleOf({5, 6})}, 0.95);
    EXPECT_EQ(rising.value, 1);
    EXPECT_EQ(rising.upper, 1);
    EXPECT_GT(rising.lower, -0.2);
    EXPECT_LT(rising.lower, 0.9);
    EXPECT_TRUE(std::isnan(OrderedTrend({SampleOf({1, 2}), SampleOf({})}, 0.95).value));
}

/// From the signs of all means, as the definition has it.
Estimate BruteMatched(const AscendingSample& differences) {
    std::vector<double> kept;
    for (const double d : differences.values) {
        if (d != 0) kept.push_back(d);
    }
    const auto n = static_cast<double>(kept.size());
    std::vector<double> sums;
    double mean = 0;
    double all = 0;
    for (std::size_t i = 0; i < kept.size(); ++i) {
        double sum = 0;
        for (std::size_t j = 0; j < kept.size(); ++j) {
            sum += Sign(kept[i] + kept[j]);
            if (j <= i) all += Sign(kept[i] + kept[j]);
        }
        sums.push_back(sum);
        mean += sum / n;
    }
    double squares = 0;
    for (const double s : sums) squares += (s - mean) * (s - mean);
    const double pairs = n * (n + 1) / 2;
    const double variance = squares / (n - 1) / n / (n + 1) / (n + 1);
    return Coefficient(LimitsOfPairShare((all / pairs + 1) / 2, variance, {pairs, n, n - 1}, kBound95));
}

TEST(MatchedRankBiserial, IsThatOfAllMeans) {
    std::mt19937 generator(13);
    for (int i = 0; i < 100; ++i) {
        const AscendingSample differences = RandomSample(6 + i % 25, -6, 3 + i % 7, generator);
        ExpectNear(MatchedRankBiserial(differences, 0.95), BruteMatched(differences), 1e-12);
        ExpectNear(MatchedRankBiserial(Weighted(differences), 0.95), BruteMatched(differences), 1e-12);
    }
}

// By hand: ranks of |d| without the zero 1, 2.5, 2.5, 4, 5; positive ones 1 + 2.5 + 5 = 8.5 of 15.
TEST(MatchedRankBiserial, CountsEqualDifferencesOneHalfAndDropsZeros) {
    EXPECT_NEAR(MatchedRankBiserial(SampleOf({0, 1, 2, -2, -3, 4}), 0.95).value, 2.0 / 15, 1e-15);
    const Estimate all = MatchedRankBiserial(SampleOf({1, 2, 3, 4}), 0.95);
    EXPECT_EQ(all.value, 1);
    EXPECT_EQ(all.upper, 1);
    EXPECT_LT(all.lower, 0.8);
    EXPECT_EQ(MatchedRankBiserial(SampleOf({-1, -2}), 0.95).value, -1);
    EXPECT_TRUE(std::isnan(MatchedRankBiserial(SampleOf({0, 0}), 0.95).value));
}

// R 4.2.2: 2 * prop.test(7, 40, correct = FALSE)$conf.int - 1
TEST(MatchedSignBiserial, HasWilsonsLimits) {
    ExpectNear(MatchedSignBiserial(7, 33, 0.95), {-0.65, 2 * 0.0874541374603592 - 1, 2 * 0.319499903317877 - 1}, 1e-12);
    EXPECT_TRUE(std::isnan(MatchedSignBiserial(0, 0, 0.95).value));
}

// R 4.2.2: uniroot(function(l) pchisq(x, df, ncp = l) - p, c(0, 2 * x + 100), tol = 1e-10) with p = .975 and .025
TEST(Association, InvertsTheNoncentralChiSquareDistribution) {
    struct Row {
        double chiSquare, degrees, lower, upper;
    };
    for (const Row& row : {Row{0.5, 1, 0, 7.07894047262}, Row{0.5, 4, 0, 0.1268004084}, Row{0.5, 20, 0, 0},
                           Row{10, 1, 1.44529602549, 26.2373594668}, Row{10, 4, 0, 22.3932510639},
                           Row{200, 20, 130.78883055, 238.989039357}, Row{9000, 1, 8631.96443944, 9375.7184782}}) {
        const Estimate limits = NoncentralityOfChiSquare(row.chiSquare, row.degrees, 0.95);
        EXPECT_NEAR(limits.lower, row.lower, 1e-8 + 1e-10 * row.lower);
        EXPECT_NEAR(limits.upper, row.upper, 1e-8 + 1e-10 * row.upper);
    }
}

// R 4.2.2: the same with pf(x, 2, df2, ncp = l), which is right to some 1e-8.
TEST(Association, InvertsTheNoncentralFDistribution) {
    struct Row {
        double f, degrees2, lower, upper;
    };
    for (const Row& row : {Row{0.5, 10, 0, 7.12451578275}, Row{3, 60, 0, 18.4494428439},
                           Row{30, 10, 13.7332185183, 132.922414717}, Row{1000, 5000, 1811.43405477, 2195.44917682}}) {
        const Estimate limits = NoncentralityOfF(row.f, 2, row.degrees2, 0.95);
        EXPECT_NEAR(limits.lower, row.lower, 1e-7 * (1 + row.lower));
        EXPECT_NEAR(limits.upper, row.upper, 1e-7 * (1 + row.upper));
    }
}

// R 4.2.2: pf(10000, 2, 60, ncp = limit) is .975 and .025 but for 1e-4, beyond where the series are taken.
TEST(Association, TakesANormalDistributionForLargeNoncentralities) {
    const Estimate limits = NoncentralityOfF(10000, 2, 60, 0.95);
    EXPECT_NEAR(limits.lower, 13471.83, 14);
    EXPECT_NEAR(limits.upper, 27790.15, 28);
}

TEST(Association, ScalesTheLimits) {
    constexpr double kNoLimit = std::numeric_limits<double>::infinity();
    ExpectNear(CohensW(10, 100, 1, 0.95, kNoLimit),
               {std::sqrt(0.1), std::sqrt(0.0144529602549), std::sqrt(0.262373594668)}, 1e-9);
    EXPECT_EQ(CohensW(10, 12, 1, 0.95, 1).upper, 1);
    // F = 30 with 2 and 10 degrees of freedom is a share of 60 / 70 of 13 cases in 3 groups.
    const Estimate epsilon = EpsilonSquared(12 * 6.0 / 7, 13, 3, 0.95);
    ExpectNear(epsilon, {6.0 / 7, 13.7332185183 / 26.7332185183, 132.922414717 / 145.922414717}, 1e-8);
    // Six rankings of three objects have 2 and 10 degrees of freedom, too.
    const Estimate concordance = KendallsW(12 * 6.0 / 7, 6, 3, 0.95);
    ExpectNear(concordance, {6.0 / 7, 13.7332185183 / 25.7332185183, 132.922414717 / 144.922414717}, 1e-8);
}

TEST(Association, ReachesToTheEstimateAndStaysBetweenItsEnds) {
    for (double h = 0; h < 30; h += 0.5) {
        const Estimate epsilon = EpsilonSquared(h, 31, 6, 0.95);
        EXPECT_LE(epsilon.lower, epsilon.value);
        EXPECT_GE(epsilon.upper, epsilon.value);
        EXPECT_GE(epsilon.lower, 0);
        EXPECT_LE(epsilon.upper, 1);
        const Estimate wider = EpsilonSquared(h, 31, 6, 0.99);
        EXPECT_LE(wider.lower, epsilon.lower + 1e-12);
        EXPECT_GE(wider.upper, epsilon.upper - 1e-12);
    }
    EXPECT_EQ(KendallsW(12, 6, 3, 0.95).lower, 1);
    EXPECT_TRUE(std::isnan(CohensW(0, 0, 1, 0.95, 1).value));
    EXPECT_TRUE(std::isnan(EpsilonSquared(3, 30, 3, 1).lower));
}

// By hand: sqrt(log(2 / .05) / 200) = .1358102, and sqrt(log(2 / (1 - sqrt(.95))) / (2 n)).
TEST(SmirnovDistance, HasTheBandsOfMassart) {
    const double band = std::sqrt(std::log(40.0) / 200);
    EXPECT_NEAR(band, 0.1358102, 1e-7);
    ExpectNear(KolmogorovDistance(0.3, 100, 0.95), {0.3, 0.3 - band, 0.3 + band}, 1e-14);
    const double ofOne = std::log(2 / (1 - std::sqrt(0.95)));
    const double reach = std::sqrt(ofOne / 200) + std::sqrt(ofOne / 800);
    ExpectNear(SmirnovDistance(0.4, 100, 400, 0.95), {0.4, 0.4 - reach, 0.4 + reach}, 1e-14);
    ExpectNear(SmirnovDistance(0.9, 10, 10, 0.95), {0.9, 0, 1}, 1e-14);
    EXPECT_TRUE(std::isnan(SmirnovDistance(0.5, 0, 10, 0.95).lower));
    EXPECT_TRUE(std::isnan(KolmogorovDistance(0.5, 10, 0).lower));
}

}  // namespace
}  // namespace tarn
