// The records of a batch by their groups, against loops that ask each record.

#include "independent/GroupSplit.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <utility>
#include <vector>

#include "tests/harness/BatchOf.h"

namespace {

using Parts = std::vector<std::vector<std::pair<double, std::int32_t>>>;

/// The groups 0 and 1 are the categories 2 and 0; category 1 has none, and neither has any beyond 3.
const std::vector<std::int32_t> kTwo{1, GroupSplit::kNoGroup, 0};
const std::vector<std::int32_t> kFour{3, 1, GroupSplit::kNoGroup, 0, 2};

class GroupSplitOf : public testing::TestWithParam<std::vector<std::int32_t>> {};

TEST_P(GroupSplitOf, PartsValuesAndWeightsInTheirOrder) {
    const std::vector<std::int32_t>& groupOf = GetParam();
    const std::size_t groupCount = groupOf.size() - 1;
    std::mt19937 random(20265);
    GroupSplit split;
    split.SetGroups(groupOf, groupCount);
    for (const std::size_t size : {1U, 2U, 5U, 300U, 1U, 4000U}) {
        std::vector<double> values;
        std::vector<double> categories;
        std::vector<std::int32_t> weights;
        for (std::size_t i = 0; i < size; ++i) {
            values.push_back(static_cast<double>(i));
            categories.push_back(static_cast<double>(random() % 8) - 2);  // -2 .. 5
            weights.push_back(static_cast<std::int32_t>(random() % 7) - 1);
        }
        Parts expected(groupCount);
        for (std::size_t i = 0; i < size; ++i) {
            const double category = categories[i];
            if (category < 0 || category >= static_cast<double>(groupOf.size())) continue;
            const std::int32_t group = groupOf[static_cast<std::size_t>(category)];
            if (group >= 0) expected[static_cast<std::size_t>(group)].emplace_back(values[i], weights[i]);
        }
        harness::BatchOf batch({values, categories});
        split.Take(batch, 1);
        ASSERT_EQ(split.Size(), size);
        for (const bool areWeighted : {true, false}) {
            split.Part(values.data(), areWeighted ? weights.data() : nullptr);
            std::int32_t inNone = static_cast<std::int32_t>(size);
            for (std::size_t group = 0; group < groupCount; ++group) {
                std::vector<std::pair<double, std::int32_t>> parted;
                std::int64_t weight = 0;
                for (std::size_t i = 0; i < split.Values(group).size(); ++i) {
                    parted.emplace_back(split.Values(group)[i],
                                        areWeighted ? split.Weights(group)[i] : expected[group][i].second);
                    weight += areWeighted ? parted.back().second : 1;
                }
                EXPECT_EQ(parted, expected[group]);
                const auto number = static_cast<std::int32_t>(group);
                EXPECT_EQ(split.WeightOf(number, areWeighted ? weights.data() : nullptr), weight);
                EXPECT_EQ(split.CountOf(number), static_cast<std::int32_t>(expected[group].size()));
                inNone -= split.CountOf(number);
                EXPECT_EQ(split.Weights(group) == nullptr, !areWeighted);
            }
            EXPECT_EQ(split.CountOf(GroupSplit::kNoGroup), inNone);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Groups, GroupSplitOf, testing::Values(kTwo, kFour));

TEST(GroupSplit, FindsTheRangeOfAGroup) {
    GroupSplit split;
    split.SetGroups({0, 1}, 2);
    double lowest = 7;
    double highest = 7;
    harness::BatchOf batch({{-3, -2, -1, 5, 6, 7}, {1, 0, 0, 0, 1, 2}});
    split.Take(batch, 1);
    EXPECT_TRUE(split.FindRange(0, batch.Values(0), lowest, highest));
    EXPECT_EQ(lowest, -2);
    EXPECT_EQ(highest, 5);
    EXPECT_TRUE(split.FindRange(1, batch.Values(0), lowest, highest));
    EXPECT_EQ(lowest, -3);
    EXPECT_EQ(highest, 6);

    harness::BatchOf none({{1}, {2}});
    split.Take(none, 1);
    EXPECT_FALSE(split.FindRange(0, none.Values(0), lowest, highest));
}

TEST(GroupSplit, OfTheZerosOfBothSignsTheFirstOneIsTheHighest) {
    GroupSplit split;
    split.SetGroups({0, 1}, 2);
    double lowest = 7;
    double highest = 7;
    harness::BatchOf batch({{-1, 0.0, -0.0, 0.0, -0.0}, {0, 1, 0, 0, 1}});
    split.Take(batch, 1);
    EXPECT_TRUE(split.FindRange(0, batch.Values(0), lowest, highest));
    EXPECT_TRUE(highest == 0 && std::signbit(highest));
    EXPECT_TRUE(split.FindRange(1, batch.Values(0), lowest, highest));
    EXPECT_TRUE(highest == 0 && !std::signbit(highest));
}

}  // namespace
