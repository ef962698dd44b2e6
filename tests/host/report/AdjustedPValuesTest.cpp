#include "host/report/AdjustedPValues.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include "host/report/ResultReading.h"
#include "tests/harness/WithinUlp.h"
#include "tests/host/beyond/like/Recorded.h"
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

// p.adjust(p, method) in R, recorded with the call. The significances come from its method "none".
TEST(AdjustedPValues, AreThoseOfRWithEachMethod) {
    std::size_t compared = 0;
    for (const auto& [id, recorded] : like_test::FromR()) {
        if (!id.starts_with("adjust ")) continue;
        ++compared;
        const std::size_t last = id.rfind(' ');
        const std::optional<Adjustment> adjustment = AdjustmentOf(id.substr(last + 1));
        ASSERT_TRUE(adjustment.has_value()) << id;
        const Numbers& p = like_test::Find(like_test::FromR(), id.substr(0, last) + " none").numbers;
        const Numbers adjusted = Adjusted(p, *adjustment);
        ASSERT_EQ(adjusted.size(), recorded.numbers.size()) << id;
        for (std::size_t i = 0; i < adjusted.size(); ++i) {
            EXPECT_TRUE(like_test::Agree(adjusted[i], recorded.numbers[i], 1e-14)) << id << " " << i;
        }
    }
    EXPECT_EQ(compared, 56u);
}

/// The definition of Hommel (1988) for few significances: the largest of Simes' tests of all sets that hold one.
Numbers HommelByAllSets(const Numbers& p) {
    Numbers adjusted(p.size());
    for (std::size_t set = 1; set < (std::size_t{1} << p.size()); ++set) {
        Numbers members;
        for (std::size_t i = 0; i < p.size(); ++i) {
            if ((set >> i & 1) != 0) members.push_back(p[i]);
        }
        std::ranges::sort(members);
        double simes = 1;
        for (std::size_t i = 0; i < members.size(); ++i) {
            simes = std::min(simes, static_cast<double>(members.size()) * members[i] / static_cast<double>(i + 1));
        }
        for (std::size_t i = 0; i < p.size(); ++i) {
            if ((set >> i & 1) != 0) adjusted[i] = std::max(adjusted[i], simes);
        }
    }
    return adjusted;
}

TEST(AdjustedPValues, OfHommelAreThoseOfTheClosedTest) {
    std::uint32_t state = 1;
    const auto random = [&state] { return (state = state * 1664525 + 1013904223) >> 8; };
    for (int round = 0; round < 500; ++round) {
        Numbers p(1 + random() % 9);
        for (double& value : p) value = std::pow(random() % 50 / 49.0, 1 + random() % 4);
        const Numbers expected = HommelByAllSets(p);
        const Numbers actual = Adjusted(p, Adjustment::kHommel);
        for (std::size_t i = 0; i < p.size(); ++i) EXPECT_TRUE(like_test::Agree(actual[i], expected[i], 1e-14)) << i;
    }
}

TEST(AdjustedPValues, HaveNamesAndTitles) {
    for (const Adjustment adjustment :
         {Adjustment::kHolm, Adjustment::kHochberg, Adjustment::kHommel, Adjustment::kBonferroni,
          Adjustment::kBenjaminiHochberg, Adjustment::kBenjaminiYekutieli, Adjustment::kNone}) {
        EXPECT_EQ(AdjustmentOf(NameOf(adjustment)), adjustment);
        EXPECT_TRUE(Adjusted({}, adjustment).empty());
    }
    EXPECT_EQ(NameOf(Adjustment::kBenjaminiYekutieli), "by");
    EXPECT_EQ(TitleOf(Adjustment::kBenjaminiHochberg), "Benjamini-Hochberg");
    EXPECT_FALSE(AdjustmentOf("fdr"));
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
