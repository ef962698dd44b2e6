#include "host/report/AdjustedPValues.h"

#include <gtest/gtest.h>

#include <vector>

#include "host/report/ResultReading.h"
#include "tests/harness/WithinUlp.h"
#include "tests/host/report/ResultTexts.h"

namespace tarn {
namespace {

using namespace report_test;
using Numbers = std::vector<double>;

void ExpectNear(const Numbers& actual, const Numbers& expected) {
    ASSERT_EQ(actual.size(), expected.size());
    for (std::size_t i = 0; i < expected.size(); ++i) EXPECT_TRUE(harness::WithinUlp(actual[i], expected[i], 2)) << i;
}

// statsmodels 0.14, multipletests(p, method="holm") and method="fdr_bh"; the same by hand: Holm multiplies by 5, 4, 3,
// 2, 1 in ascending order and never falls, Benjamini and Hochberg by 5, 5/2, 5/3, 5/4, 1 and never rises backwards.
TEST(AdjustedPValues, AreThoseOfHolmAndOfBenjaminiAndHochberg) {
    const Numbers p{.01, .04, .03, .005, .2};
    ExpectNear(HolmAdjusted(p), {.04, .09, .09, .025, .2});
    ExpectNear(BenjaminiHochbergAdjusted(p), {.025, .05, .05, .025, .2});
}

TEST(AdjustedPValues, StayAtOneAndKeepEqualOnesEqual) {
    ExpectNear(HolmAdjusted({.9, .4, .4}), {1, 1, 1});
    ExpectNear(BenjaminiHochbergAdjusted({.9, .4, .4}), {.9, .6, .6});
    EXPECT_TRUE(HolmAdjusted({}).empty());
    EXPECT_TRUE(BenjaminiHochbergAdjusted({}).empty());
    ExpectNear(HolmAdjusted({.03}), {.03});
}

TEST(AdjustedPValues, LeaveOutWhatHasNoSignificance) {
    const std::string failed =
        TestElement("RSign", "Related_Samples", "unknown",
                    Condition("R_Sign_2", {"0", "1"}) + Table("WarningMessages", Message("220903", "error", {"w"})));
    const ResultDocument document = ReadResult(DocumentOf(SignTest() + failed + KruskalWallisTest()));
    const TestFamilyPValues family = AdjustTogether(ReadAll(document, MessageCatalogue::English()).tests);
    EXPECT_EQ(family.count, 2u);
    ASSERT_EQ(family.tests.size(), 3u);
    EXPECT_FALSE(family.tests[1].has_value());
    // Of .3877 (exact, which decides) and .0097: twice the smaller one.
    EXPECT_DOUBLE_EQ(family.tests[2]->holm, 2 * .0097);
    EXPECT_DOUBLE_EQ(family.tests[0]->holm, .3876953125);
}

}  // namespace
}  // namespace tarn
