#include "host/beyond/exact/UntiedRankSum.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <vector>

#include "tests/host/beyond/exact/Arrangements.h"

namespace tarn {
namespace {

using namespace exact_test;

/// Probabilities of U by the recurrence of Mann and Whitney, 1947: the largest case is in the first group, or in the
/// second and above all of the first.
std::vector<double> ProbabilitiesOfU(std::size_t first, std::size_t second) {
    std::vector<std::vector<double>> rows(second + 1, std::vector<double>{1.0});
    for (std::size_t i = 1; i <= first; ++i) {
        for (std::size_t j = 1; j <= second; ++j) {
            std::vector<double> next(i * j + 1, 0.0);
            const double ofFirst = static_cast<double>(i) / static_cast<double>(i + j);
            for (std::size_t k = 0; k < rows[j].size(); ++k) next[k] += ofFirst * rows[j][k];
            for (std::size_t k = 0; k < rows[j - 1].size(); ++k) next[k + i] += (1 - ofFirst) * rows[j - 1][k];
            rows[j] = next;
        }
    }
    return rows[second];
}

TEST(UntiedRankSum, IsThatOfTheRecurrence) {
    struct Sizes {
        std::size_t first;
        std::size_t second;
    };
    for (const Sizes& sizes : {Sizes{50, 50}, Sizes{80, 60}}) {
        const std::vector<double> probabilities = ProbabilitiesOfU(sizes.first, sizes.second);
        const std::size_t half = sizes.first * sizes.second / 2;
        const auto first = static_cast<std::int64_t>(sizes.first);
        const auto second = static_cast<std::int64_t>(sizes.second);
        double tail = 0;
        double worst = 0;
        for (std::size_t u = 0; u <= half; ++u) {
            tail += probabilities[u];
            const bool isAtAnEnd = u < 5 || half - u < 5;
            if (!isAtAnEnd && u % 97 != 0) continue;
            const double actual = UntiedRankSum(first, second, static_cast<std::int64_t>(u)).LowerTail();
            worst = std::max(worst, std::abs(actual / tail - 1));
        }
        EXPECT_LT(worst, 1e-12);
    }
}

// R 4.2: pwilcox(7000, 140, 130), pwilcox(5000, 140, 130), pwilcox(2000, 140, 130).
TEST(UntiedRankSum, IsThatOfR) {
    ExpectClose(UntiedRankSum(140, 130, 7000).LowerTail(), 0.00050229943700349415);
    ExpectClose(UntiedRankSum(130, 140, 5000).LowerTail(), 3.0268600823018552e-11);
    ExpectClose(UntiedRankSum(140, 130, 2000).LowerTail(), 4.5004981979224039e-34);
}

// 1, 1, 2, 3, 5 and 7 ways to divide 0 to 5 into parts.
TEST(UntiedRankSum, CountsPartitionsAtItsEnd) {
    constexpr double kArrangements = 1.0295250013541443e+119;  // R's choose(400, 200)
    double ways = 0;
    std::int64_t u = 0;
    for (const double more : {1., 1., 2., 3., 5., 7.}) {
        ways += more;
        ExpectClose(UntiedRankSum(200, 200, u++).LowerTail(), ways / kArrangements);
    }
}

// U is symmetric about its middle: P(U <= pairs / 2) is one half of 1 + P(U = pairs / 2), whose normal approximation
// is right to one by the number of cases.
TEST(UntiedRankSum, IsAboutOneHalfInTheMiddleOfLargeGroups) {
    const double cases = 100000;
    const double deviation = std::sqrt(cases / 2 * (cases / 2) * (cases + 1) / 12);
    const UntiedRankSum tail(50000, 50000, std::int64_t{1250000000});
    EXPECT_NEAR(tail.LowerTail(), .5 + .5 / (deviation * std::sqrt(2 * std::acos(-1.0))), 1e-12);
    EXPECT_LT(tail.Cost(), 1e9);
}

}  // namespace
}  // namespace tarn
