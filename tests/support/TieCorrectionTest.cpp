// The sum over tied runs. Reference values: by hand, and the terms of a map of sizes by the openers, which is what the
// sum stands for; such a map takes a NaN for equal to whatever comes first in it.

#include "support/TieCorrection.h"

#include <gtest/gtest.h>

#include <limits>
#include <map>
#include <random>
#include <utility>
#include <vector>

namespace {

constexpr double kInfinity = std::numeric_limits<double>::infinity();
constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();

using Runs = std::vector<std::pair<double, std::int32_t>>;

double SumOf(const Runs& runs) {
    TieCorrection correction;
    for (const auto& [opener, size] : runs) correction.AddRun(opener, size);
    return correction.Sum();
}

double SumOfMap(const Runs& runs) {
    std::map<double, std::int32_t> sizes;
    for (const auto& [opener, size] : runs) {
        if (size >= 2) sizes[opener] = size;
    }
    double sum = 0;
    for (const auto& [opener, size] : sizes) sum += static_cast<double>(size) * size * size - size;
    return sum;
}

TEST(TieCorrection, SumsTheTermsOfRunsOfTwoAndMore) {
    EXPECT_EQ(SumOf({}), 0);
    EXPECT_EQ(SumOf({{1, 2}, {2, 1}, {3, 4}, {4, 0}, {5, -7}}), 6 + 60);
}

TEST(TieCorrection, TheLastOfEqualOpenersCounts) {
    EXPECT_EQ(SumOf({{-kInfinity, 4}, {-kInfinity, 2}, {0, 3}, {kInfinity, 3}, {kInfinity, 5}}), 6 + 24 + 120);
}

TEST(TieCorrection, ANaNTakesTheFirstPlaceAndGivesItUp) {
    EXPECT_EQ(SumOf({{1, 2}, {2, 3}, {kNaN, 4}, {kNaN, 5}}), 120 + 24);
    EXPECT_EQ(SumOf({{kNaN, 5}, {1, 2}, {2, 3}}), 24);
}

TEST(TieCorrection, IsTheSumOfAMapWhateverTheOpeners) {
    std::mt19937 random(3);  // NOLINT(cert-msc32-c,cert-msc51-cpp): the same runs each time
    for (int repetition = 0; repetition < 2000; ++repetition) {
        Runs runs;
        const auto append = [&](double opener) { runs.emplace_back(opener, static_cast<std::int32_t>(random() % 5)); };
        for (unsigned i = random() % 3; i > 0; --i) append(-kNaN);
        for (unsigned i = random() % 3; i > 0; --i) append(-kInfinity);
        TieCorrection quick;
        for (const auto& [opener, size] : runs) quick.AddRun(opener, size);
        for (unsigned i = random() % 4; i > 0; --i) {
            append(-static_cast<double>(i));
            quick.AddHigherRun(runs.back().second);
        }
        const std::size_t taken = runs.size();
        for (unsigned i = random() % 3; i > 0; --i) append(kInfinity);
        for (unsigned i = random() % 3; i > 0; --i) append(kNaN);
        for (std::size_t i = taken; i < runs.size(); ++i) quick.AddRun(runs[i].first, runs[i].second);
        EXPECT_EQ(SumOf(runs), SumOfMap(runs)) << repetition;
        EXPECT_EQ(quick.Sum(), SumOfMap(runs)) << repetition;
    }
}

}  // namespace
