// The exact distribution of the Mann-Whitney statistic. Reference: all arrangements of small samples, counted, and
// tails summed by hand; scipy 1.17, mannwhitneyu(method="exact"), for larger ones.

#include "independent/MannWhitneyExact.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <vector>
#include "tests/harness/WithinUlp.h"

namespace {

/// How many arrangements of n1 + n2 values give each statistic.
std::vector<double> CountArrangements(int n1, int n2) {
    std::vector<double> counts(static_cast<std::size_t>(n1 * n2 + 1));
    for (unsigned places = 0; places < 1u << (n1 + n2); ++places) {
        if (std::popcount(places) != n1) continue;
        int statistic = 0;
        int seconds = 0;
        for (int place = 0; place < n1 + n2; ++place) {
            if ((places >> place & 1u) != 0) {
                statistic += seconds;
            } else {
                ++seconds;
            }
        }
        counts[static_cast<std::size_t>(statistic)] += 1;
    }
    return counts;
}

double Enumerated(int n1, int n2, double u) {
    const std::vector<double> counts = CountArrangements(n1, n2);
    double total = 0;
    double tail = 0;
    const bool isLower = u <= (n1 * n2 + 1 + 1) / 2;  // (n1 n2 + 1) / 2 rounded up
    for (std::size_t value = 0; value < counts.size(); ++value) {
        total += counts[value];
        const auto at = static_cast<double>(value);
        if (isLower ? at <= u : at >= u) tail += counts[value];
    }
    return std::min(2 * tail / total, 1.0);
}

TEST(MannWhitneyExact, AgreesWithAllArrangementsAtWholeAndHalfStatistics) {
    for (int n1 = 1; n1 <= 7; ++n1) {
        for (int n2 = 1; n2 <= 8; ++n2) {
            for (int twice = 0; twice <= 2 * n1 * n2; ++twice) {
                ASSERT_NEAR(MannWhitneyExactSignificance(n1, n2, twice / 2.0, Arithmetic::AsDefined()),
                            Enumerated(n1, n2, twice / 2.0), 1e-14)
                    << n1 << " " << n2 << " " << twice / 2.0;
            }
        }
    }
}

TEST(MannWhitneyExact, HalfStatisticTakesTheFloorBelowAndTheCeilingAbove) {
    // 3 and 3: 1 1 2 3 3 3 3 2 1 1 of 20.
    EXPECT_DOUBLE_EQ(MannWhitneyExactSignificance(3, 3, 1.5, Arithmetic::AsDefined()), 0.2);
    EXPECT_DOUBLE_EQ(MannWhitneyExactSignificance(3, 3, 7.5, Arithmetic::AsDefined()), 0.2);
}

TEST(MannWhitneyExact, MiddleIsThatOfTheNumberOfValuesRoundedUp) {
    // 3 and 3: ten values, so 5 is the middle and takes the lower tail, 13 of 20, although it lies above 9 / 2. The
    // upper tail would be 10 of 20, 1 as well; 6 has 7 of 20 above it.
    EXPECT_EQ(MannWhitneyExactSignificance(3, 3, 5, Arithmetic::AsDefined()), 1);
    EXPECT_DOUBLE_EQ(MannWhitneyExactSignificance(3, 3, 6, Arithmetic::AsDefined()), 0.7);
    // 2 and 2: 1 1 2 1 1 of 6; five values, the middle 3 takes 5 of 6 and not 2 of 6.
    EXPECT_EQ(MannWhitneyExactSignificance(2, 2, 3, Arithmetic::AsDefined()), 1);
    // 1 and 2: three values, the middle 2 takes all three of them and not one.
    EXPECT_EQ(MannWhitneyExactSignificance(1, 2, 2, Arithmetic::AsDefined()), 1);
}

TEST(MannWhitneyExact, LargestTables) {
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(20, 20, 78, Arithmetic::AsDefined()),
                                   0.0006675619675571311, 8));
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(20, 20, 322, Arithmetic::AsDefined()),
                                   0.0006675619675571311, 8));
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(8, 50, 42, Arithmetic::AsDefined()),
                                   0.00010071383076976782, 8));
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(50, 8, 358, Arithmetic::AsDefined()),
                                   0.00010071383076976782, 8));
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(1, 400, 0, Arithmetic::AsDefined()), 2.0 / 401, 8));
    EXPECT_TRUE(harness::WithinUlp(MannWhitneyExactSignificance(400, 1, 400, Arithmetic::AsDefined()), 2.0 / 401, 8));
}

TEST(MannWhitneyExact, SizesThatNoSampleHasGiveNoNumber) {
    EXPECT_TRUE(std::isnan(MannWhitneyExactSignificance(0, 5, 0, Arithmetic::AsDefined())));
    EXPECT_TRUE(std::isnan(MannWhitneyExactSignificance(-3, -4, 6, Arithmetic::AsDefined())));
    EXPECT_TRUE(std::isnan(MannWhitneyExactSignificance(2, 2, std::nan(""), Arithmetic::AsDefined())));
    EXPECT_EQ(MannWhitneyExactSignificance(2, 2, -7, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MannWhitneyExactSignificance(2, 2, 1e9, Arithmetic::AsDefined()), 0);
}

}  // namespace
