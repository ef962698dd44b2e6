#include "host/beyond/Jackknife.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <random>
#include <vector>

namespace {

using tarn::Estimate;
using tarn::JackknifeErrorOfEpsilonSquared;
using tarn::ScoreRows;
using tarn::TieBlocks;
using tarn::Widened;

double MidRank(const std::vector<double>& values, double value) {
    double rank = 0.5;
    for (const double other : values) rank += other < value ? 1 : other == value ? 0.5 : 0;
    return rank;
}

/// H / (n - 1) as the share of the groups in the sum of squares of the ranks, from its definition.
double EpsilonSquaredOf(const std::vector<double>& values, const std::vector<int>& groups, int groupCount) {
    const double mean = (static_cast<double>(values.size()) + 1) / 2;
    double all = 0;
    double between = 0;
    for (int group = 0; group < groupCount; ++group) {
        double sum = 0;
        double count = 0;
        for (std::size_t i = 0; i < values.size(); ++i) {
            if (groups[i] != group) continue;
            const double distance = MidRank(values, values[i]) - mean;
            sum += distance;
            all += distance * distance;
            ++count;
        }
        if (count > 0) between += sum * sum / count;
    }
    return all == 0 ? 0 : between / all;
}

double ErrorOf(const std::vector<double>& without) {
    const auto n = static_cast<double>(without.size());
    double mean = 0;
    for (const double value : without) mean += value / n;
    double squares = 0;
    for (const double value : without) squares += (value - mean) * (value - mean);
    return std::sqrt((n - 1) / n * squares);
}

}  // namespace

TEST(Jackknife, OfEpsilonSquaredLeavesOutOneCaseAfterAnother) {
    std::mt19937 random(7);
    for (int round = 0; round < 200; ++round) {
        const int groupCount = 2 + static_cast<int>(random() % 3);
        std::vector<double> values;
        std::vector<int> groups;
        TieBlocks blocks;
        blocks.groupCount = static_cast<std::size_t>(groupCount);
        blocks.counts.assign(5 * blocks.groupCount, 0);
        for (int i = 0; i < 4 + static_cast<int>(random() % 12); ++i) {
            const std::size_t value = random() % 5;
            const int group = i < groupCount ? i : static_cast<int>(random() % blocks.groupCount);
            values.push_back(static_cast<double>(value));
            groups.push_back(group);
            ++blocks.counts[value * blocks.groupCount + static_cast<std::size_t>(group)];
        }
        std::vector<double> without;
        for (std::size_t left = 0; left < values.size(); ++left) {
            std::vector<double> others = values;
            std::vector<int> theirGroups = groups;
            others.erase(others.begin() + static_cast<std::ptrdiff_t>(left));
            theirGroups.erase(theirGroups.begin() + static_cast<std::ptrdiff_t>(left));
            without.push_back(EpsilonSquaredOf(others, theirGroups, groupCount));
        }
        ASSERT_NEAR(JackknifeErrorOfEpsilonSquared(blocks), ErrorOf(without), 1e-12) << round;
    }
}

TEST(Jackknife, OfKendallsWLeavesOutOneRowAfterAnother) {
    std::mt19937 random(8);
    for (int round = 0; round < 100; ++round) {
        const std::size_t columns = 3;
        const std::size_t rowCount = 3 + random() % 8;
        ScoreRows rows{.columns = columns, .scores = {}};
        std::vector<std::vector<double>> ranks;
        for (std::size_t row = 0; row < rowCount; ++row) {
            std::vector<double> values;
            for (std::size_t i = 0; i < columns; ++i) values.push_back(static_cast<double>(random() % 3));
            std::vector<double>& ofRow = ranks.emplace_back();
            for (const double value : values) ofRow.push_back(MidRank(values, value));
            for (const double rank : ofRow) rows.scores.push_back(static_cast<std::int64_t>(2 * rank));
        }
        // W is the sum of squares of the columns' sums of ranks about their mean, as a share of the largest one that
        // the ties allow.
        std::vector<double> without;
        for (std::size_t left = 0; left < rowCount; ++left) {
            const double n = static_cast<double>(rowCount) - 1;
            double between = 0;
            double all = 0;
            for (std::size_t i = 0; i < columns; ++i) {
                double sum = 0;
                for (std::size_t row = 0; row < rowCount; ++row) {
                    if (row == left) continue;
                    sum += ranks[row][i] - 2;
                    all += (ranks[row][i] - 2) * (ranks[row][i] - 2);
                }
                between += sum * sum;
            }
            without.push_back(all == 0 ? 0 : between / (n * all));
        }
        ASSERT_NEAR(JackknifeErrorOfKendallsW(rows), ErrorOf(without), 1e-12) << round;
    }
}

TEST(Jackknife, WidensLimitsAndKeepsToShares) {
    const Estimate share{0.5, 0.4, 0.55};
    const Estimate wider = Widened(share, 0.1, 0.95);
    EXPECT_NEAR(wider.lower, 0.5 - 0.1959963984540054, 1e-12);  // qnorm(0.975)
    EXPECT_NEAR(wider.upper, 0.5 + 0.1959963984540054, 1e-12);
    EXPECT_EQ(Widened(share, 0.001, 0.95).lower, 0.4);
    EXPECT_EQ(Widened({0.05, 0.01, 0.9}, 1, 0.95).lower, 0);
    EXPECT_EQ(Widened({0.05, 0.01, 0.9}, 1, 0.95).upper, 1);
    EXPECT_TRUE(std::isnan(Widened({0.5, std::nan(""), std::nan("")}, 0.1, 0.95).lower));
    EXPECT_EQ(Widened(share, std::nan(""), 0.95).upper, 0.55);
}

TEST(Jackknife, OfTwoCasesIsNothing) {
    EXPECT_TRUE(std::isnan(JackknifeErrorOfEpsilonSquared({.groupCount = 2, .counts = {1, 0, 0, 1}})));
}
