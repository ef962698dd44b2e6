// Sums of weights in 32 bits where these do.

#include "related/BlockWeights.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

TEST(BlockWeights, AreNarrowAsLongAsTheirSumFitsInto32Bits) {
    const auto areNarrow = [](const std::vector<std::int32_t>& weights, double factor) {
        return BlockWeights::AreNarrow(weights.data(), weights.size(), factor);
    };
    EXPECT_TRUE(areNarrow({2147483647}, 1));
    EXPECT_FALSE(areNarrow({2147483647, 0}, 1));
    EXPECT_FALSE(areNarrow({2147483647}, 2));
    EXPECT_TRUE(areNarrow({1, 5, 1}, 9));
    EXPECT_FALSE(areNarrow({1, -1, 1}, 1));
    EXPECT_TRUE(areNarrow(std::vector<std::int32_t>(1024, 2097151), 1));
    EXPECT_FALSE(areNarrow(std::vector<std::int32_t>(1024, 2097152), 1));
}

TEST(BlockWeights, WithinAreThoseWhoseMaskIsSet) {
    const std::vector<std::int32_t> weights{2147483647, 5, 2147483647, -3};
    const std::vector<std::int32_t> masks{-1, 0, -1, -1};
    EXPECT_EQ(BlockWeights::Within(false, weights.data(), masks.data(), 4), 4294967291);
    EXPECT_EQ(BlockWeights::Within(true, weights.data() + 1, masks.data() + 1, 2), 2147483647);
    EXPECT_EQ(BlockWeights::Within(true, weights.data(), masks.data(), 0), 0);
}

}  // namespace
