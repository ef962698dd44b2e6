#include "host/beyond/RankTests.h"

#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <numbers>
#include <sstream>
#include <string>
#include <vector>

#include "host/beyond/KolmogorovDistribution.h"
#include "tests/host/beyond/like/Recorded.h"

namespace tarn {
namespace {

using like_test::Agree;
using like_test::Find;
using like_test::FromR;
using like_test::FromSciPy;
using like_test::Recorded;
using like_test::SampleOf;

// The tails of normal statistics near 1e-295 move by a thousand roundings of z.
constexpr double kClose = 1e-12;

struct Side {
    Alternative alternative;
    std::string name;
};
const std::array kSides{Side{Alternative::kTwoSided, "two.sided"}, Side{Alternative::kLess, "less"},
                        Side{Alternative::kGreater, "greater"}};
const std::vector<std::string> kPairs{"plain", "tied", "even", "large", "far"};
const std::vector<std::string> kDifferences{"plain", "tied", "zeros", "few", "far"};

std::string EndOf(const Side& side, bool continuity) {
    return side.name + (continuity ? " corrected" : " plain");
}

std::vector<double> NumbersIn(const std::string& text) {
    std::istringstream words(text);
    std::vector<double> numbers;
    for (double number = 0; words >> number;) numbers.push_back(number);
    return numbers;
}

/// A statistic and its significance.
void ExpectLike(const ChosenTest& test, const Recorded& recorded) {
    ASSERT_GE(recorded.numbers.size(), 2u) << recorded.call;
    EXPECT_TRUE(Agree(test.statistic, recorded.numbers.front(), kClose)) << recorded.call;
    EXPECT_TRUE(Agree(test.p, recorded.numbers.back(), kClose)) << recorded.call;
}

AscendingSample Values(std::vector<double> values, std::vector<double> weights = {}) {
    AscendingSample sample{std::move(values), std::move(weights), 0};
    for (std::size_t i = 0; i < sample.values.size(); ++i) sample.size += sample.WeightAt(i);
    return sample;
}

TieBlocks BlocksOf(const std::vector<AscendingSample>& groups) {
    std::map<double, std::vector<std::int64_t>> counts;
    for (std::size_t group = 0; group < groups.size(); ++group) {
        for (std::size_t i = 0; i < groups[group].values.size(); ++i) {
            std::vector<std::int64_t>& block = counts[groups[group].values[i]];
            block.resize(groups.size());
            block[group] += static_cast<std::int64_t>(groups[group].WeightAt(i));
        }
    }
    TieBlocks blocks{groups.size(), {}};
    for (const auto& entry : counts)
        blocks.counts.insert(blocks.counts.end(), entry.second.begin(), entry.second.end());
    return blocks;
}

// Of wilcox.test(x, y, exact = FALSE, mu, alternative, correct) in R and of scipy.stats.mannwhitneyu(x - mu, y,
// method="asymptotic", ..) in SciPy, recorded beside the samples.
TEST(RankSumTest, IsThatOfRAndOfSciPyWithEachChoice) {
    for (const Side& side : kSides) {
        for (const std::string& name : kPairs) {
            for (const bool continuity : {true, false}) {
                for (const double shift : {0.0, 1.5}) {
                    const std::string id = "ranksum " + name + (shift == 0 ? " 0 " : " 1.5 ") + EndOf(side, continuity);
                    const ChosenTest test =
                        RankSumTest(SampleOf(name + ".x"), SampleOf(name + ".y"), side.alternative, continuity, shift);
                    ExpectLike(test, Find(FromR(), id));
                    ExpectLike(test, Find(FromSciPy(), id));
                }
            }
        }
    }
}

// By hand: ranks 1, 2.5 | 2.5, 4, so that U is 0.5; 12 times the variance is 2 2 (5 - 6 / 12) = 18.
TEST(RankSumTest, CountsTiesByHalfAndTakesThemFromTheVariance) {
    const ChosenTest test = RankSumTest(Values({1, 2}), Values({2, 3}), Alternative::kTwoSided, false);
    EXPECT_EQ(test.statistic, 0.5);
    EXPECT_DOUBLE_EQ(test.z, -1.5 / std::sqrt(1.5));
    EXPECT_TRUE(test.hasShift && test.hasContinuity && test.hasAlternative);
    EXPECT_FALSE(test.hasZeroMethod);
}

TEST(RankSumTest, TakesWeightsAsSoManyCases) {
    const ChosenTest whole = RankSumTest(Values({1, 1, 2, 4, 4, 4}), Values({2, 2, 3, 4}));
    const ChosenTest weighted = RankSumTest(Values({1, 2, 4}, {2, 1, 3}), Values({2, 3, 4}, {2, 1, 1}));
    EXPECT_EQ(weighted.statistic, whole.statistic);
    EXPECT_EQ(weighted.z, whole.z);
    EXPECT_EQ(weighted.p, whole.p);
}

// n cases at 0 and at 1, n and n + 1 of the other sample: 2 U - n1 n2 is -n, and of squares below less above the sum is
// N a b with a and b the cases at 0 and at 1.
TEST(RankSumTest, LosesNoDigitsWithCountsNearTheLimit) {
    const double n = 0x1p50;
    const ChosenTest test =
        RankSumTest(Values({0, 1}, {n, n}), Values({0, 1}, {n, n + 1}), Alternative::kTwoSided, false);
    const long double total = 4 * static_cast<long double>(n) + 1;
    const long double low = 2 * static_cast<long double>(n);
    const long double variance =
        2 * static_cast<long double>(n) * (low + 1) * low * (total - low) * total / (4 * total * (total - 1));
    EXPECT_TRUE(Agree(test.z, static_cast<double>(-n / 2 / std::sqrt(variance)), 1e-15));
}

TEST(RankSumTest, HasNoNumbersWhereNothingVaries) {
    EXPECT_TRUE(std::isnan(RankSumTest(Values({1, 1}), Values({1})).p));
    EXPECT_TRUE(std::isnan(RankSumTest(Values({}), Values({1})).p));
    EXPECT_TRUE(std::isnan(RankSumTest(Values({}), Values({})).z));
}

// Of wilcox.test(x, exact = FALSE, alternative, correct) in R, which drops zeros.
TEST(SignedRankTest, IsThatOfRWithEachChoice) {
    for (const Side& side : kSides) {
        for (const std::string& name : kDifferences) {
            for (const bool continuity : {true, false}) {
                const ChosenTest test = SignedRankTest(SampleOf(name + ".d"), side.alternative, continuity);
                ExpectLike(test, Find(FromR(), "signedrank " + name + " " + EndOf(side, continuity)));
            }
        }
    }
}

// Of scipy.stats.wilcoxon(d, zero_method, correction, alternative, method="asymptotic"), which gives the smaller rank
// sum and minus the magnitude of z where it tests two-sided.
TEST(SignedRankTest, IsThatOfSciPyWithEachTreatmentOfZeros) {
    const std::array methods{std::pair(ZeroMethod::kDrop, "wilcox"), std::pair(ZeroMethod::kPratt, "pratt"),
                             std::pair(ZeroMethod::kSplit, "zsplit")};
    for (const Side& side : kSides) {
        for (const std::string& name : kDifferences) {
            for (const bool continuity : {true, false}) {
                for (const auto& method : methods) {
                    const std::string id = "signedrank " + name + " " + method.second + " " + EndOf(side, continuity);
                    const Recorded& recorded = Find(FromSciPy(), id);
                    const ChosenTest test =
                        SignedRankTest(SampleOf(name + ".d"), side.alternative, continuity, method.first);
                    ASSERT_EQ(recorded.numbers.size(), 3u) << id;
                    const bool isTwoSided = side.alternative == Alternative::kTwoSided;
                    if (!isTwoSided) {
                        EXPECT_TRUE(Agree(test.statistic, recorded.numbers[0], kClose)) << id;
                    }
                    EXPECT_TRUE(Agree(isTwoSided ? -std::abs(test.z) : test.z, recorded.numbers[1], kClose)) << id;
                    EXPECT_TRUE(Agree(test.p, recorded.numbers[2], kClose)) << id;
                }
            }
        }
    }
}

// By hand: 0, 0, 1, -2, 3. Dropped, the ranks 1, 2, 3 give 4 of 14 / 4; ranked first, they are 3, 4, 5, so 8 of 50 / 4;
// split, half of 1.5 + 1.5 is added, and the variance is (2 1.5^2 + 50) / 4.
TEST(SignedRankTest, TreatsZerosAsAskedFor) {
    const AscendingSample sample = Values({-2, 0, 0, 1, 3});
    const auto test = [&](ZeroMethod zeros) { return SignedRankTest(sample, Alternative::kGreater, false, zeros); };
    EXPECT_EQ(test(ZeroMethod::kDrop).statistic, 4);
    EXPECT_DOUBLE_EQ(test(ZeroMethod::kDrop).z, 1 / std::sqrt(3.5));
    EXPECT_EQ(test(ZeroMethod::kPratt).statistic, 8);
    EXPECT_DOUBLE_EQ(test(ZeroMethod::kPratt).z, 2 / std::sqrt(12.5));
    EXPECT_EQ(test(ZeroMethod::kSplit).statistic, 9.5);
    EXPECT_DOUBLE_EQ(test(ZeroMethod::kSplit).z, 2 / std::sqrt(13.625));
    EXPECT_TRUE(test(ZeroMethod::kDrop).hasZeroMethod);
    EXPECT_TRUE(std::isnan(SignedRankTest(Values({0, 0})).p));
    EXPECT_TRUE(std::isnan(SignedRankTest(Values({})).p));
}

// w differences of each magnitude 1 and 2, of which those of 2 are positive: the doubled ranks are w + 1 and 3 w + 1.
TEST(SignedRankTest, LosesNoDigitsWithCountsNearTheLimit) {
    const double w = 0x1p51;
    const ChosenTest test = SignedRankTest(Values({-1, 2}, {w, w}), Alternative::kTwoSided, false);
    const long double low = static_cast<long double>(w) + 1;
    const long double high = 3 * static_cast<long double>(w) + 1;
    const long double z = (high - low) * w / 4 / std::sqrt(w * (low * low + high * high) / 16);
    EXPECT_TRUE(Agree(test.z, static_cast<double>(z), 1e-15));
}

// Of prop.test(count, size, p, alternative, correct) in R, whose X-squared is the square of z.
TEST(ProportionTest, IsThatOfR) {
    for (const Side& side : kSides) {
        for (const std::string counts :
             {"7 20 0.5", "10 20 0.5", "31 40 0.6", "2 1000 0.3", "3 5 0.5", "900 1000 0.1", "5 11 0.47"}) {
            for (const bool continuity : {true, false}) {
                const std::vector<double> with = NumbersIn(counts);
                const Recorded& recorded = Find(FromR(), "proportion " + counts + " " + EndOf(side, continuity));
                ChosenTest test = ProportionTest(with[0], with[1], with[2], side.alternative, continuity);
                EXPECT_EQ(test.statistic, with[0]);
                test.statistic = test.z * test.z;
                ASSERT_EQ(recorded.numbers.size(), 2u);
                // R's 31 - 40 0.6 is rounded, and so is the correction of 5.17 - 5 for 11 cases.
                EXPECT_NEAR(test.statistic, recorded.numbers[0], 1e-13 * recorded.numbers[0] + 1e-27) << counts;
                EXPECT_TRUE(Agree(test.p, recorded.numbers[1], 1e-11)) << recorded.call;
                if (with[2] != 0.5) continue;
                const ChosenTest sign = SignTest(with[0], with[1] - with[0], side.alternative, continuity);
                EXPECT_TRUE(Agree(sign.p, recorded.numbers[1], kClose)) << recorded.call;
                EXPECT_EQ(sign.statistic, with[0]);
            }
        }
    }
    EXPECT_TRUE(std::isnan(SignTest(0, 0).p));
    EXPECT_TRUE(std::isnan(ProportionTest(3, 5, 1).p));
}

// Of mcnemar.test(matrix(c(5, b, c, 7), 2), correct) in R.
TEST(McNemarTest, IsThatOfR) {
    for (const std::string counts : {"8 3", "4 4", "5 6", "200 90", "0 9", "1500 1"}) {
        for (const bool continuity : {true, false}) {
            const std::vector<double> with = NumbersIn(counts);
            const ChosenTest test = McNemarTest(with[0], with[1], continuity);
            ExpectLike(test, Find(FromR(), "mcnemar " + counts + (continuity ? " corrected" : " plain")));
            EXPECT_EQ(test.z < 0, with[0] + (continuity ? 1 : 0) < with[1]);
            EXPECT_FALSE(test.hasAlternative);
        }
    }
    EXPECT_TRUE(std::isnan(McNemarTest(0, 0).p));
}

// Of cor.test(groups, values, method = "kendall", exact = FALSE, alternative) in R, whose statistic is z. The third
// group are the whole thirds of a sample.
TEST(JonckheereTest, IsThatOfKendallsTauInR) {
    for (const Side& side : kSides) {
        for (const std::string& name : kPairs) {
            const Recorded& recorded = Find(FromR(), "concordance " + name + " " + side.name);
            const AscendingSample first = SampleOf(name + ".x");
            const AscendingSample second = SampleOf(name + ".y");
            const ChosenTest test = JonckheereTest(BlocksOf({first, second}), side.alternative);
            EXPECT_EQ(test.statistic, RankSumTest(second, first).statistic);
            EXPECT_TRUE(Agree(test.z, recorded.numbers[0], kClose)) << recorded.call;
            EXPECT_TRUE(Agree(test.p, recorded.numbers[1], kClose)) << recorded.call;
            EXPECT_FALSE(test.hasContinuity);
        }
        AscendingSample thirds = SampleOf("large.x");
        for (double& value : thirds.values) value = std::floor(value / 3);
        const Recorded& recorded = Find(FromR(), "concordance three " + side.name);
        const ChosenTest test =
            JonckheereTest(BlocksOf({SampleOf("tied.x"), SampleOf("tied.y"), thirds}), side.alternative);
        EXPECT_TRUE(Agree(test.z, recorded.numbers[0], kClose)) << recorded.call;
        EXPECT_TRUE(Agree(test.p, recorded.numbers[1], kClose)) << recorded.call;
    }
}

// Hollander and Wolfe's variance written out, of three groups with ties: sizes 3, 2, 4, ties 2, 3, 1, 3.
TEST(JonckheereTest, HasTheVarianceOfHollanderAndWolfe) {
    const TieBlocks blocks{3, {1, 0, 1, 2, 1, 0, 0, 0, 1, 0, 1, 2}};
    double cases = 0;
    double sizes = 0;
    double sizesOfThree = 0;
    double sizesOfTwo = 0;
    double ties = 0;
    double tiesOfThree = 0;
    double tiesOfTwo = 0;
    const auto add = [](double n, double& all, double& three, double& two) {
        all += n * (n - 1) * (2 * n + 5);
        three += n * (n - 1) * (n - 2);
        two += n * (n - 1);
    };
    for (const double n : {3.0, 2.0, 4.0}) add(n, sizes, sizesOfThree, sizesOfTwo), cases += n;
    for (const double t : {2.0, 3.0, 1.0, 3.0}) add(t, ties, tiesOfThree, tiesOfTwo);
    const double variance = (cases * (cases - 1) * (2 * cases + 5) - sizes - ties) / 72 +
                            sizesOfThree * tiesOfThree / (36 * cases * (cases - 1) * (cases - 2)) +
                            sizesOfTwo * tiesOfTwo / (8 * cases * (cases - 1));
    // The groups are 1 2 2, 2 4 and 1 3 4 4. Pairs that rise from the first to the second: 2 + 1.5 + 1.5, to the third
    // 3.5 + 3 + 3, from the second to the third 3 + 1.
    const double statistic = 5 + 9.5 + 4;
    const ChosenTest test = JonckheereTest(blocks);
    const double expectation = (cases * cases - 9 - 4 - 16) / 4;
    EXPECT_NEAR(test.z, (test.statistic - expectation) / std::sqrt(variance), 1e-14);
    EXPECT_EQ(test.statistic, statistic);
}

TEST(JonckheereTest, HasNoNumbersWhereNothingVaries) {
    EXPECT_TRUE(std::isnan(JonckheereTest({2, {3, 4}}).p));
    EXPECT_TRUE(std::isnan(JonckheereTest({2, {}}).p));
    EXPECT_TRUE(std::isnan(JonckheereTest({0, {}}).p));
    EXPECT_DOUBLE_EQ(JonckheereTest({2, {1, 0, 0, 1}}).z, 1);  // J is 0 or 1 alike
}

// By hand: 4 and 6 cases, expectation 1 + 48 / 10, variance 48 (48 - 10) / (100 9).
TEST(RunsTest, MovesTheRunsAgainstTheAlternative) {
    const double deviation = std::sqrt(48.0 * 38 / 900);
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6, Alternative::kTwoSided, false).z, -2.8 / deviation);
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6).z, -2.3 / deviation);
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6, Alternative::kLess).z, -2.3 / deviation);
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6, Alternative::kGreater).z, -3.3 / deviation);
    EXPECT_DOUBLE_EQ(RunsTest(6, 4, 6).z, 0);
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6, Alternative::kLess).p, 0.5 * std::erfc(2.3 / deviation / std::numbers::sqrt2));
    EXPECT_DOUBLE_EQ(RunsTest(3, 4, 6).p, std::erfc(2.3 / deviation / std::numbers::sqrt2));
    EXPECT_EQ(RunsTest(3, 4, 6).statistic, 3);
    EXPECT_TRUE(std::isnan(RunsTest(1, 5, 0).p));
    EXPECT_TRUE(std::isnan(RunsTest(0, 0, 0).p));
}

// Of ks.test(x, y, exact = FALSE, alternative) in R, which works the two-sided limit out to 1e-6 and takes the
// significance from 1, and of scipy.stats.ks_2samp(x, y, alternative, method="asymp").
TEST(KolmogorovTest, IsThatOfRAndInItsCorrectedFormOfSciPy) {
    for (const Side& side : kSides) {
        for (const std::string& name : kPairs) {
            const AscendingSample first = SampleOf(name + ".x");
            const AscendingSample second = SampleOf(name + ".y");
            const ChosenTest limit = KolmogorovTest(first, second, side.alternative);
            const Recorded& r = Find(FromR(), "kolmogorov " + name + " " + side.name);
            EXPECT_NEAR(limit.statistic, r.numbers[0], 1e-15) << r.call;
            EXPECT_NEAR(limit.p, r.numbers[1], side.alternative == Alternative::kTwoSided ? 1e-6 : 1e-15) << r.call;
            const ChosenTest corrected = KolmogorovTest(first, second, side.alternative, KolmogorovForm::kCorrected);
            const Recorded& scipy = Find(FromSciPy(), "kolmogorov " + name + " " + side.name);
            EXPECT_TRUE(Agree(corrected.statistic, scipy.numbers[0], 1e-14)) << scipy.call;
            EXPECT_TRUE(Agree(corrected.p, scipy.numbers[1], kClose)) << scipy.call;
            EXPECT_FALSE(limit.hasContinuity);
        }
    }
    EXPECT_TRUE(std::isnan(KolmogorovTest(Values({}), Values({1})).p));
}

// Of scipy.stats.kstwobign.sf(z) and scipy.stats.kstwo.sf(d, n).
TEST(KolmogorovDistribution, IsThatOfSciPy) {
    std::size_t found = 0;
    for (const auto& [id, recorded] : FromSciPy()) {
        const bool isLimit = id.starts_with("kstwobign ");
        if (!isLimit && !id.starts_with("kstwo ")) continue;
        ++found;
        const std::vector<double> with = NumbersIn(id.substr(id.find(' ')));
        const double tail = isLimit ? KolmogorovLimitUpperTail(with[0]) : KolmogorovUpperTail(with[0], with[1]);
        EXPECT_TRUE(Agree(tail, recorded.numbers[0], 1e-10)) << id;
    }
    EXPECT_GT(found, 50u);
}

// ksone.sf of SciPy 1.17
TEST(KolmogorovDistribution, HasTheOneSidedTail) {
    EXPECT_NEAR(KolmogorovOneSidedUpperTail(1, 0.3), 0.7, 1e-14);
    EXPECT_NEAR(KolmogorovOneSidedUpperTail(10, 0.2), 0.39676169159999997, 1e-13);
    EXPECT_NEAR(KolmogorovOneSidedUpperTail(10, 0.5), 0.003888705, 1e-15);
    EXPECT_NEAR(KolmogorovOneSidedUpperTail(50, 0.1), 0.34490701996888001, 1e-13);
    EXPECT_NEAR(KolmogorovOneSidedUpperTail(1000, 0.05), 0.0065060373905451658, 1e-14);
    EXPECT_EQ(KolmogorovOneSidedUpperTail(7, 0), 1);
    EXPECT_EQ(KolmogorovOneSidedUpperTail(7, 1), 0);
}

// One case: the largest difference is the larger part of what lies below and above it, which is uniform on [1/2, 1].
// Two cases, d from 1/2 on: both tails apart, each (1 - d)^2.
TEST(KolmogorovDistribution, IsRightForOneAndTwoCases) {
    EXPECT_DOUBLE_EQ(KolmogorovUpperTail(1, 0.75), 0.5);
    EXPECT_EQ(KolmogorovUpperTail(1, 0.5), 1);
    EXPECT_EQ(KolmogorovUpperTail(1, 1), 0);
    EXPECT_DOUBLE_EQ(KolmogorovUpperTail(2, 0.9), 2 * (1 - 0.9) * (1 - 0.9));
    EXPECT_TRUE(std::isnan(KolmogorovUpperTail(0, 0.5)));
    EXPECT_EQ(KolmogorovLimitUpperTail(0), 1);
}

// Of prop.test(matrix(..), alternative, correct) in R and of scipy.stats.chi2_contingency(.., correction).
TEST(MedianTest, IsThatOfTwoProportionsInRAndOfTheTableInSciPy) {
    for (const Side& side : kSides) {
        for (const std::string counts : {"7 3 2 9", "5 5 5 5", "30 12 18 31", "1 6 1 7", "400 3 5 390"}) {
            for (const bool continuity : {true, false}) {
                const std::vector<double> with = NumbersIn(counts);
                const ChosenTest test =
                    MedianTest({with[0], with[1]}, {with[2], with[3]}, side.alternative, continuity);
                const Recorded& recorded = Find(FromR(), "median " + counts + " " + EndOf(side, continuity));
                EXPECT_NEAR(test.statistic, recorded.numbers[0], 1e-12 * recorded.numbers[0] + 1e-25) << counts;
                EXPECT_TRUE(Agree(test.p, recorded.numbers[1], 1e-11)) << recorded.call;
                if (side.alternative != Alternative::kTwoSided) continue;
                const Recorded& scipy = Find(FromSciPy(), "median " + counts + (continuity ? " corrected" : " plain"));
                EXPECT_NEAR(test.statistic, scipy.numbers[0], 1e-12 * scipy.numbers[0] + 1e-25) << counts;
                EXPECT_TRUE(Agree(test.p, scipy.numbers[1], 1e-11)) << scipy.call;
            }
        }
    }
    EXPECT_TRUE(std::isnan(MedianTest({0, 4}, {0, 5}).p));
    EXPECT_TRUE(std::isnan(MedianTest({0, 0}, {0, 0}).p));
}

}  // namespace
}  // namespace tarn
