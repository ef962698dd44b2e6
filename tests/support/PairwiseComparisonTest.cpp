#include "support/PairwiseComparison.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/harness/WithinUlp.h"

namespace {

// 3 * 2 / 2 of 0.1 in the two orders of rounding: 0.1 * 6 / 2 and 3 * 0.1 * 2 / 2.
TEST(AdjustByPairCount, FormsTheNumberOfPairsFirstIn32Bits) {
    EXPECT_EQ(AdjustByPairCount(0.1, 3, Arithmetic::AsDefined()), 6 * 0.1 / 2);
    EXPECT_EQ(AdjustByPairCount(0.5, 3, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(AdjustByPairCount(0.5, 46342, Arithmetic::AsDefined()), -2147432674 * 0.5 / 2);  // 46341 * 46342 - 2^32
    EXPECT_EQ(AdjustByPairCount(1e-9, 65537, Arithmetic::AsDefined()), 65536 * 1e-9 / 2);
}

TEST(AdjustForPairs, IsBonferronisAndAtMost1) {
    EXPECT_DOUBLE_EQ(AdjustForPairs(0.01, 3), 0.03);
    EXPECT_DOUBLE_EQ(AdjustForPairs(0.01, 7), 0.21);
    EXPECT_EQ(AdjustForPairs(0.5, 3), 1);
    EXPECT_EQ(AdjustForPairs(0.0, 40), 0);
    EXPECT_TRUE(std::isnan(AdjustForPairs(std::numeric_limits<double>::quiet_NaN(), 3)));
}

TEST(MakeNormalPair, FillsTheRecord) {
    const PairRecord pair = MakeNormalPair(1, 3, -0.98, 0.5, 4, Arithmetic::AsDefined());
    EXPECT_EQ(pair.sample1, 1);
    EXPECT_EQ(pair.sample2, 3);
    EXPECT_EQ(pair.testStatistic, -0.98);
    EXPECT_EQ(pair.standardError, 0.5);
    EXPECT_EQ(pair.standardTestStatistic, -1.96);
    EXPECT_TRUE(harness::WithinUlp(pair.sig, 0.049995790296440868, 32));         // mpmath: erfc(1.96 / sqrt 2)
    EXPECT_TRUE(harness::WithinUlp(pair.adjSig, 6 * 0.049995790296440868, 18));  // of 6 pairs
}

}  // namespace
