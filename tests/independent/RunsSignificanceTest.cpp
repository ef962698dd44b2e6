// Expected values by enumeration of all arrangements of two groups, and by the moments in Python.

#include "independent/RunsSignificance.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <utility>

namespace {

/// How many of the arrangements of two groups have each number of runs.
std::map<int, int> RunsOfAllArrangements(int n1, int n2) {
    std::map<int, int> counts;
    std::string order = std::string(static_cast<std::size_t>(n1), 'a') + std::string(static_cast<std::size_t>(n2), 'b');
    do {
        int runs = 1;
        for (std::size_t i = 1; i < order.size(); ++i) runs += order[i] != order[i - 1];
        ++counts[runs];
    } while (std::next_permutation(order.begin(), order.end()));
    return counts;
}

TEST(RunsExactSignificance, IsTheShareOfTheArrangementsWithAtMostThatManyRuns) {
    for (const auto& [n1, n2] : {std::pair{3, 4}, {5, 2}, {1, 6}, {6, 7}, {4, 4}, {1, 1}}) {
        const std::map<int, int> counts = RunsOfAllArrangements(n1, n2);
        double all = 0;
        for (const auto& [runs, count] : counts) all += count;
        double upTo = 0;
        for (int runs = 1; runs <= n1 + n2 + 1; ++runs) {
            if (const auto found = counts.find(runs); found != counts.end()) upTo += found->second;
            EXPECT_NEAR(RunsExactSignificance(runs, n1, n2).value(), upTo / all, 1e-13)
                << n1 << " " << n2 << " " << runs;
        }
    }
}

TEST(RunsExactSignificance, IsZeroBelowTwoRuns) {
    EXPECT_EQ(RunsExactSignificance(1, 5, 6), 0);
    EXPECT_EQ(RunsExactSignificance(0, 5, 6), 0);
    EXPECT_EQ(RunsExactSignificance(-3, 5, 6), 0);
}

TEST(RunsNormalStatistic, AgreesWithTheMomentsOfAllArrangements) {
    for (const auto& [n1, n2] : {std::pair{3, 4}, {5, 2}, {6, 7}}) {
        double all = 0;
        double sum = 0;
        double squares = 0;
        for (const auto& [runs, count] : RunsOfAllArrangements(n1, n2)) {
            all += count;
            sum += 1.0 * count * runs;
            squares += 1.0 * count * runs * runs;
        }
        const double mean = sum / all;
        const double deviation = std::sqrt(squares / all - mean * mean);
        const RunsStatistic statistic = RunsNormalStatistic(1, n1, n2, Arithmetic::AsDefined()).value();
        EXPECT_NEAR(statistic.standardError, deviation, 1e-12);
        EXPECT_NEAR(statistic.z, (1 - mean + 0.5) / deviation, 1e-12);
    }
}

TEST(RunsNormalStatistic, Below50CasesAHalfIsAddedWhateverTheSign) {
    EXPECT_NEAR(RunsNormalStatistic(5, 5, 7, Arithmetic::AsDefined())->z, -0.832824146571952,
                1e-14);  // deviation -1.83, 1.33 corrected
    EXPECT_NEAR(RunsNormalStatistic(8, 5, 7, Arithmetic::AsDefined())->z, 1.0410301832149405,
                1e-14);  // deviation 1.17, 1.67 corrected
    EXPECT_NEAR(RunsNormalStatistic(20, 25, 24, Arithmetic::AsDefined())->z, -1.4413557909388575, 1e-14);
    EXPECT_NEAR(RunsNormalStatistic(20, 25, 25, Arithmetic::AsDefined())->z, -1.7146428199482247,
                1e-14);  // 50 cases: -6 / 3.4993
}

TEST(RunsNormalStatistic, DeviationBelowAHalfIsNone) {
    EXPECT_EQ(RunsNormalStatistic(16, 15, 15, Arithmetic::AsDefined())->z, 0);  // the mean itself
    EXPECT_EQ(RunsNormalStatistic(7, 5, 7, Arithmetic::AsDefined())->z, 0);     // 6.83
    EXPECT_NE(RunsNormalStatistic(26, 25, 26, Arithmetic::AsDefined())->z,
              0);  // 26.49: from 50 cases on there is no such rule
    EXPECT_EQ(RunsNormalStatistic(3, 1, 3, Arithmetic::AsDefined())->z,
              2);  // 2.5: exactly a half is corrected, (0.5 + 0.5) / 0.5
}

TEST(RunsNormalStatistic, NeedsAVariance) {
    EXPECT_FALSE(RunsNormalStatistic(2, 1, 1, Arithmetic::AsDefined()).has_value());
    EXPECT_TRUE(RunsNormalStatistic(2, 1, 2, Arithmetic::AsDefined()).has_value());
}

}  // namespace
