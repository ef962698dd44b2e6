// The small formulas of significance that several tests share.

#include "support/Significance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

namespace {

struct Correction {
    double difference;
    double corrected;
};

class ContinuityCorrection : public testing::TestWithParam<Correction> {};

TEST_P(ContinuityCorrection, MovesByHalfTowardsZeroAndIsExactly0UpToHalf) {
    const double corrected = CorrectForContinuity(GetParam().difference);
    EXPECT_EQ(corrected, GetParam().corrected);
    EXPECT_FALSE(corrected == 0 && std::signbit(corrected));  // it would be written as "-0"
}

INSTANTIATE_TEST_SUITE_P(, ContinuityCorrection,
                         testing::Values(Correction{2, 1.5}, Correction{-2, -1.5}, Correction{0.5, 0},
                                         Correction{-0.5, 0}, Correction{0.25, 0}, Correction{-0.25, 0},
                                         Correction{0.375, 0}, Correction{-0.375, 0}, Correction{0, 0},
                                         Correction{0.75, 0.25}, Correction{-0.75, -0.25}, Correction{1, 0.5},
                                         Correction{-1, -0.5}, Correction{1e9, 999999999.5}));

struct NormalTail {
    double z;
    double significance;
};

class TwoTailedNormalOf : public testing::TestWithParam<NormalTail> {};

TEST_P(TwoTailedNormalOf, AStatisticOfEitherSign) {
    // One minus a lower tail: its error is that of numbers near 1.
    EXPECT_NEAR(TwoTailedNormal(GetParam().z, Arithmetic::AsDefined()), GetParam().significance, 4.5e-16);
    EXPECT_EQ(TwoTailedNormal(-GetParam().z, Arithmetic::AsDefined()),
              TwoTailedNormal(GetParam().z, Arithmetic::AsDefined()));
}

// mpmath with 30 digits: 2 * ncdf(-z)
INSTANTIATE_TEST_SUITE_P(, TwoTailedNormalOf,
                         testing::Values(NormalTail{0, 1}, NormalTail{0.17320508075688773, 0.86249023013592159},
                                         NormalTail{1.96, 0.0499957902964409}, NormalTail{2.3, 0.021448220043351611},
                                         NormalTail{8, 1.2441921148543568e-15}));

TEST(TwoTailedNormal, IsExactly0WhereTheLowerTailRoundsTo1) {
    EXPECT_EQ(TwoTailedNormal(10, Arithmetic::AsDefined()), 0);
}

TEST(TwoTailedNormal, OfNoNumberIsNoNumber) {
    EXPECT_TRUE(std::isnan(TwoTailedNormal(std::numeric_limits<double>::quiet_NaN(), Arithmetic::AsDefined())));
}

TEST(ExactSignificance, IsComputedBelow26Cases) {
    EXPECT_EQ(kExactBelow, 26);
}

}  // namespace
