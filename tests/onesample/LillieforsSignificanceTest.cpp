// Reference values above D10: the published formula of Dallal and Wilkinson, p = exp(-7.01256 D^2 (n + 2.78019)
// + 2.99587 D sqrt(n + 2.78019) - 0.122119 + 0.974598 / sqrt(n) + 1.67997 / n), with n = 100 and D (n / 100)^0.49 for a
// larger n, evaluated in Python; D10 by scipy.optimize.brentq on it. The rest from the critical values by hand.

#include "onesample/LillieforsSignificance.h"

#include <gtest/gtest.h>

#include "platform/common/QKMV.h"

namespace {

double Significance(int n, double difference) {
    return LillieforsSignificanceOf(n, difference, Arithmetic::AsDefined()).value;
}
bool IsFloor(int n, double difference) {
    return LillieforsSignificanceOf(n, difference, Arithmetic::AsDefined()).isFloor;
}

TEST(LillieforsSignificance, BelowATenthFollowsThePublishedFormula) {
    struct Row {
        int n;
        double difference, significance;
    };
    constexpr Row kRows[] = {{20, 0.2, 0.03507318944480687},    {10, 0.3, 0.01112147245617862},
                             {12, 0.26, 0.02441075061943068},   {50, 0.15, 0.006646014111664647},
                             {100, 0.1, 0.015326804531700858},  {200, 0.08, 0.003366173253796461},
                             {1000, 0.03, 0.033813483127420565}};
    for (const Row& row : kRows) {
        EXPECT_NEAR(Significance(row.n, row.difference) / row.significance, 1, 1e-6) << row.n;
        EXPECT_FALSE(IsFloor(row.n, row.difference));
    }
}

TEST(LillieforsSignificance, IsATenthWhereTheFormulaMeetsTheTable) {
    struct Row {
        int n;
        double at10;
    };
    constexpr Row kRows[] = {{20, 0.177202511288889}, {12, 0.22345966200436862}, {50, 0.11436597883042193}};
    for (const Row& row : kRows) {
        EXPECT_NEAR(Significance(row.n, row.at10), 0.1, 1e-6) << row.n;
        EXPECT_GT(Significance(row.n, row.at10 - 1e-6), 0.1) << row.n;
        EXPECT_LT(Significance(row.n, row.at10 + 1e-6), 0.1) << row.n;
    }
}

TEST(LillieforsSignificance, AtACriticalValueOfARowIsItsOwn) {
    struct Row {
        int n;
        double at20, at15;
    };
    constexpr Row kRows[] = {{5, 0.289, 0.303},   {6, 0.269, 0.281},  {7, 0.252, 0.264},  {8, 0.239, 0.25},
                             {9, 0.227, 0.238},   {10, 0.217, 0.228}, {11, 0.208, 0.218}, {12, 0.2, 0.21},
                             {13, 0.193, 0.202},  {14, 0.187, 0.196}, {15, 0.181, 0.19},  {16, 0.176, 0.184},
                             {17, 0.171, 0.179},  {18, 0.167, 0.175}, {19, 0.163, 0.17},  {20, 0.159, 0.166},
                             {25, 0.143, 0.15},   {30, 0.131, 0.138}, {40, 0.115, 0.12},  {100, 0.074, 0.077},
                             {400, 0.037, 0.039}, {900, 0.025, 0.026}};
    for (const Row& row : kRows) {
        EXPECT_NEAR(Significance(row.n, row.at15), 0.15, 1e-12) << row.n;
        EXPECT_NEAR(Significance(row.n, row.at20), 0.2, 1e-12) << row.n;
        EXPECT_FALSE(IsFloor(row.n, row.at20)) << row.n;
        EXPECT_NEAR(Significance(row.n, (row.at15 + row.at20) / 2), 0.175, 1e-12) << row.n;
        EXPECT_TRUE(IsFloor(row.n, row.at20 - 1e-6)) << row.n;
        EXPECT_EQ(Significance(row.n, row.at20 - 1e-6), 0.2) << row.n;
    }
}

TEST(LillieforsSignificance, BetweenTheTableAndTheFormulaIsALine) {
    const double at10 = 0.177202511288889;
    EXPECT_NEAR(Significance(20, (0.166 + at10) / 2), 0.125, 1e-6);
}

TEST(LillieforsSignificance, BetweenTwoRowsTheCriticalValuesAreLinear) {  // 22: two fifths from 20 to 25
    EXPECT_NEAR(Significance(22, 0.159 - 0.016 * 2 / 5), 0.2, 1e-12);
    EXPECT_NEAR(Significance(22, 0.166 - 0.016 * 2 / 5), 0.15, 1e-12);
    EXPECT_NEAR(Significance(35, (0.131 + 0.115) / 2), 0.2, 1e-12);
    EXPECT_NEAR(Significance(110, 0.077 - 0.038 / 30), 0.15, 1e-12);
}

// Not the square root of n: any D of a sample of that size that is not tiny lies above both critical values.
TEST(LillieforsSignificance, PastTheLastRowTheDivisorIsNItself) {
    EXPECT_NEAR(Significance(1000, 0.000768), 0.15, 1e-12);
    EXPECT_NEAR(Significance(1000, 0.000736), 0.2, 1e-12);
    EXPECT_TRUE(IsFloor(1000, 0.000735));
    EXPECT_FALSE(IsFloor(1000, 0.02));
    EXPECT_LT(Significance(1000, 0.02), 0.15);
}

// The textbook's divisor: 0.736 / sqrt(1600) and 0.768 / sqrt(1600), which continue the table.
TEST(LillieforsSignificance, PastTheLastRowTheTextbookDividesByTheRoot) {
    Arithmetic extended;
    extended.Extend(true);
    const auto at = [&](double difference) { return LillieforsSignificanceOf(1600, difference, extended); };
    EXPECT_NEAR(at(0.0192).value, 0.15, 1e-12);
    EXPECT_NEAR(at(0.0184).value, 0.2, 1e-12);
    EXPECT_FALSE(at(0.0184).isFloor);
    EXPECT_TRUE(at(0.0183).isFloor);
    EXPECT_NEAR(at(0.0188).value, 0.175, 1e-12);
    EXPECT_TRUE(extended.TookTextbook());
}

TEST(LillieforsSignificance, WhereBothDivisorsGiveTheSameTheTextbookIsNotNamed) {
    Arithmetic extended;
    extended.Extend(true);
    for (const double difference : {0.03, 0.0001}) {  // by the formula; below all critical values
        EXPECT_EQ(LillieforsSignificanceOf(1600, difference, extended),
                  LillieforsSignificanceOf(1600, difference, Arithmetic::AsDefined()));
    }
    EXPECT_EQ(LillieforsSignificanceOf(900, 0.0255, extended).value, Significance(900, 0.0255));
    EXPECT_FALSE(extended.TookTextbook());
}

TEST(LillieforsSignificance, FewerThanFiveValuesHaveNone) {
    EXPECT_TRUE(QKMV::IsMissing(Significance(4, 0.4)));
    EXPECT_FALSE(IsFloor(4, 0.1));
    EXPECT_FALSE(QKMV::IsMissing(Significance(5, 0.4)));
}

}  // namespace
