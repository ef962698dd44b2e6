// Which number of a test a pack means.

#include "host/verify/Quantities.h"

#include <gtest/gtest.h>

#include <string>

#include "host/InputError.h"

namespace {

using tarn::PValueKind;
using tarn::QuantityOf;
using tarn::TestReading;

/// A reading with a number of each kind, all different.
TestReading Reading() {
    TestReading test;
    test.n = "20";
    tarn::StatisticSet all{"all cases", "", "7", "1.5", "2.5", "3", {}};
    all.pValues = {{PValueKind::kAsymptotic, 2, "0.11", false, false, {}},
                   {PValueKind::kContinuityCorrected, 2, "0.12", false, false, tarn::Number("6.5")}};
    tarn::StatisticSet trimmed{"trimmed", "", "8", "", "", "", {{PValueKind::kExact, 1, "0.13", false, true, {}}}};
    test.statistics = {all, trimmed};
    test.intervals = {{"Jeffreys", "0.5", "0.4", "0.6"}, {"other", "0.51", "0.41", "0.61"}};
    test.figures = {{"KendallsW", "W", "0.9"}};
    test.samples = {{"a", "", {{"MeanOfRank", "", "4.5"}}, {}, {}}};
    test.pairs = {{"a", "b", "3.5", "1", "1.75", "0.08", "0.24"}};
    test.subsets = {{{"a", "b"}, "1.25", "0.26", "0.33"}};
    test.supplement.samples = {{"a", "10", "0", "1", "2", "3", "", ""}};
    test.supplement.effects = {{"cohens-w", "", "a", "b", "0.9", "", "", ""},
                               {"cohens-w", "", "", "", "0.3", "0.1", "0.5", ""}};
    test.supplement.pValues = {{"asymptotic", "less", "", "7", "-2.5", "0.006", "", "", ""},
                               {"exact", "less", "", "", "", "0.007", "", "", ""}};
    return test;
}

std::string Found(const std::string& quantity, const std::string& of = "") {
    return QuantityOf(Reading(), quantity, of, "here").text;
}

TEST(Quantities, OfTheDocumentAreThoseOfTheSetThatDecides) {
    EXPECT_EQ(Found("n"), "20");
    EXPECT_EQ(Found("statistic"), "8");
    EXPECT_EQ(Found("p"), "0.13");
    EXPECT_EQ(Found("p exact"), "0.13");
    EXPECT_EQ(Found("z"), "");
}

TEST(Quantities, OfANamedSet) {
    EXPECT_EQ(Found("statistic", "all cases"), "7");
    EXPECT_EQ(Found("standard error", "all cases"), "1.5");
    EXPECT_EQ(Found("z", "all cases"), "2.5");
    EXPECT_EQ(Found("df", "all cases"), "3");
    EXPECT_EQ(Found("p asymptotic", "all cases"), "0.11");
    EXPECT_EQ(Found("p continuity-corrected", "all cases"), "0.12");
    EXPECT_EQ(Found("corrected statistic", "all cases"), "6.5");
    EXPECT_EQ(Found("p fisher", "all cases"), "");
    EXPECT_EQ(Found("statistic", "no such set"), "");
}

TEST(Quantities, BesideTheDocument) {
    EXPECT_EQ(Found("further p exact"), "0.007");
    EXPECT_EQ(Found("further p exact", "less"), "0.007");
    EXPECT_EQ(Found("further p exact", "greater"), "");
    EXPECT_EQ(Found("further p asymptotic"), "0.006");
    EXPECT_EQ(Found("further statistic"), "7");
    EXPECT_EQ(Found("further z"), "-2.5");
    EXPECT_EQ(Found("median", "a"), "2");
    EXPECT_EQ(Found("first quartile", "a"), "1");
    EXPECT_EQ(Found("third quartile", "a"), "3");
}

TEST(Quantities, OfAnEffectAreThoseOfTheWholeTest) {
    EXPECT_EQ(Found("effect", "cohens-w"), "0.3");
    EXPECT_EQ(Found("effect lower", "cohens-w"), "0.1");
    EXPECT_EQ(Found("effect upper", "cohens-w"), "0.5");
    EXPECT_EQ(Found("effect", "epsilon-squared"), "");
}

TEST(Quantities, OfIntervalsFiguresAndSamples) {
    EXPECT_EQ(Found("interval lower"), "0.4");
    EXPECT_EQ(Found("interval upper", "other"), "0.61");
    EXPECT_EQ(Found("interval estimate", "other"), "0.51");
    EXPECT_EQ(Found("figure", "KendallsW"), "0.9");
    EXPECT_EQ(Found("mean rank", "a"), "4.5");
    EXPECT_EQ(Found("mean rank", "b"), "");
}

TEST(Quantities, OfAPairTurnTheirSignWithIt) {
    EXPECT_EQ(Found("pair z", "a - b"), "1.75");
    EXPECT_EQ(Found("pair z", "b - a"), "-1.75");
    EXPECT_EQ(Found("pair statistic", "b - a"), "-3.5");
    EXPECT_EQ(Found("pair p", "b - a"), "0.08");
    EXPECT_EQ(Found("pair adjusted p", "a - b"), "0.24");
    EXPECT_EQ(Found("pair p", "a - c"), "");
}

TEST(Quantities, OfASubsetAreFoundByItsMembers) {
    EXPECT_EQ(Found("subset statistic", "a, b"), "1.25");
    EXPECT_EQ(Found("subset p", "a, b"), "0.26");
    EXPECT_EQ(Found("subset adjusted p", "a, b"), "0.33");
    EXPECT_EQ(Found("subset p", "b, a"), "");
}

TEST(Quantities, AreRefusedWithTheNameThatIsMeant) {
    try {
        Found("p exakt");
        ADD_FAILURE();
    } catch (const tarn::InputError& mistake) {
        EXPECT_STREQ(mistake.what(), "here: \"p exakt\" is no quantity; did you mean p exact?");
    }
}

}  // namespace
