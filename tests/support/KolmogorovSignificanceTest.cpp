// Reference values: scipy 1.17, scipy.stats.kstwobign.sf(z).

#include "support/KolmogorovSignificance.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "tests/harness/Document.h"
#include "tests/harness/WithinUlp.h"

namespace {

double Significance(double z) {
    return KolmogorovSignificance(z, Arithmetic::AsDefined()).value_or(-1);
}

TEST(KolmogorovSignificance, AgreesWithTheWholeSeries) {
    struct Row {
        double z, significance;
    };
    constexpr Row kRows[] = {{0.27, 0.9999995849712886},   {0.3, 0.9999906941986655},
                             {0.5, 0.9639452436648751},    {0.828, 0.4993296211937983},
                             {1.0, 0.26999967167735456},   {1.3581, 0.0499996304316674},
                             {2.5, 7.453306344157342e-06}, {3.0999999, 8.992710075515156e-09}};
    for (const Row& row : kRows) EXPECT_NEAR(Significance(row.z), row.significance, 1e-14) << row.z;
}

TEST(KolmogorovSignificance, IsOneBelowTheFirstSeriesAndZeroBehindTheSecond) {
    EXPECT_EQ(Significance(0), 1);
    EXPECT_EQ(Significance(std::nextafter(0.27, 0)), 1);
    EXPECT_LT(Significance(0.27), 1);
    EXPECT_GT(Significance(std::nextafter(3.1, 0)), 0);
    EXPECT_EQ(Significance(3.1), 0);
    EXPECT_EQ(Significance(std::numeric_limits<double>::infinity()), 0);
}

TEST(KolmogorovSignificance, IsZeroForWhatIsNoDistance) {
    EXPECT_EQ(Significance(-0.1), 0);
    EXPECT_EQ(Significance(std::numeric_limits<double>::quiet_NaN()), 0);
}

// Below 1 one series, from 1 on the other one; with all their terms they agree to 15 digits there.
TEST(KolmogorovSignificance, SeriesMeetAtOne) {
    EXPECT_TRUE(harness::WithinUlp(Significance(std::nextafter(1.0, 0)), Significance(1.0), 4));
}

TEST(ExtremeDifferences, ShowZeroForASideThatNoDifferenceWasFoundOn) {
    const auto written = [](const ExtremeDifferences& extremes) {
        const std::unique_ptr<QKXML::XMLElement> root = QKXML::XMLElement::Create("StructuredTable");
        StructuredTable statistics(*root);
        extremes.AddTable(statistics);
        return harness::TableOf(*root).Sub("MostExtremeDifferences");
    };
    const harness::Table none = written({});
    EXPECT_EQ(none.ChildNames(),
              std::vector<std::string>({"Attribute Absolute", "Attribute Positive", "Attribute Negative"}));
    for (const char* row : {"Absolute", "Positive", "Negative"}) EXPECT_EQ(none.Row(row), "0") << row;

    const harness::Table both = written({.absolute = 0.5, .positive = 0.25, .negative = -0.5});
    EXPECT_EQ(both.Row("Absolute"), "0.5");
    EXPECT_EQ(both.Row("Positive"), "0.25");
    EXPECT_EQ(both.Row("Negative"), "-0.5");
}

}  // namespace
