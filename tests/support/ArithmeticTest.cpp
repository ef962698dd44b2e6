// Case weights and 32-bit arithmetic.

#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "support/CaseWeight.h"
#include "support/Int32.h"

namespace {

constexpr std::int32_t kMax = std::numeric_limits<std::int32_t>::max();
constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();

TEST(Int32, WrapsAround) {
    EXPECT_EQ(Add32(kMax, 1), kMin);
    EXPECT_EQ(Add32(kMin, -1), kMax);
    EXPECT_EQ(Subtract32(kMin, 1), kMax);
    EXPECT_EQ(Subtract32(5, 7), -2);
    EXPECT_EQ(Multiply32(46340, 46341), 2147441940);   // the last product of neighbours that fits
    EXPECT_EQ(Multiply32(46341, 46342), -2147432674);  // 2147534622 - 2^32
    EXPECT_EQ(Multiply32(-3, 7), -21);
}

struct Weight {
    double stored;
    std::int32_t used;
};

class Weights : public testing::TestWithParam<Weight> {};

TEST_P(Weights, AreTruncatedTowardsZeroTo32Bits) {
    Record record(2);
    record[1] = GetParam().stored;
    EXPECT_EQ(CaseWeight(record, 1), GetParam().used);
}

INSTANTIATE_TEST_SUITE_P(, Weights,
                         testing::Values(Weight{2.9, 2}, Weight{0.9, 0}, Weight{1, 1}, Weight{0, 0}, Weight{-0.9, 0},
                                         Weight{-2.9, -2}, Weight{2147483647, kMax}, Weight{2147483647.9, kMax},
                                         Weight{2147483648, kMin}, Weight{-2147483648, kMin}, Weight{-1e300, kMin},
                                         Weight{1e300, kMin}, Weight{-1.7976931348623157e308, kMin},
                                         Weight{std::numeric_limits<double>::quiet_NaN(), kMin}));

TEST(CaseWeight, WithoutAWeightFieldIsOne) {
    Record record(1);
    record[0] = 5;
    EXPECT_EQ(CaseWeight(record, -1), 1);
}

}  // namespace
