// The chance of a span. Reference: all arrangements of small samples; the sum of the definition in whole numbers
// (Python's math.comb and fractions) for larger ones, and mpmath 1.3 with 60 digits for sizes beyond them.

#include "independent/MosesSignificance.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <vector>

namespace {

/// The share of the arrangements of m control cases among m + n whose trimmed span is at most s.
double Enumerated(int s, int m, int n, int h) {
    int all = 0;
    int within = 0;
    for (unsigned arrangement = 0; arrangement < 1u << (m + n); ++arrangement) {
        if (std::popcount(arrangement) != m) continue;
        std::vector<int> ranks;
        for (int rank = 0; rank < m + n; ++rank) {
            if ((arrangement >> rank & 1u) != 0) ranks.push_back(rank);
        }
        ++all;
        const int span = ranks[static_cast<std::size_t>(m - h - 1)] - ranks[static_cast<std::size_t>(h)] + 1;
        if (span <= s) ++within;
    }
    return static_cast<double>(within) / all;
}

TEST(MosesSignificance, AgreesWithAllArrangements) {
    for (int m = 2; m <= 8; ++m) {
        for (int n = 1; n <= 6; ++n) {
            for (int h = 0; 2 * h <= m - 2; ++h) {
                for (int s = m - 2 * h + 1; s <= m + n; ++s) {
                    ASSERT_NEAR(MosesSignificance(s, m, n, h, Arithmetic::AsDefined()), Enumerated(s, m, n, h), 1e-14)
                        << s << " " << m << " " << n << " " << h;
                }
            }
        }
    }
}

TEST(MosesSignificance, SpanWithNoOtherCaseInsideIsZeroAndNotItsOneTerm) {
    EXPECT_GT(Enumerated(3, 3, 4, 0), 0.1);  // 5 of 35 arrangements
    EXPECT_EQ(MosesSignificance(3, 3, 4, 0, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(4, 6, 4, 1, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(1, 6, 4, 1, Arithmetic::AsDefined()), 0);  // tied values make a span even shorter
}

TEST(MosesSignificance, FewerThanTwoCasesLeftHaveNoTerm) {
    EXPECT_EQ(MosesSignificance(2, 3, 5, 1, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(1, 1, 5, 0, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(1, 1, 5, 1, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(4, 2, 5, 1, Arithmetic::AsDefined()), 0);
}

TEST(MosesSignificance, WholeRangeIsCertain) {
    EXPECT_EQ(MosesSignificance(60, 20, 40, 1, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(MosesSignificance(2000000000, 1000000000, 1000000000, 50000000, Arithmetic::AsDefined()), 1);
}

struct Row {
    std::int32_t s;
    std::int32_t m;
    std::int32_t n;
    std::int32_t h;
    double expected;
};

void Check(const std::vector<Row>& rows, double tolerance) {
    for (const Row& row : rows) {
        EXPECT_NEAR(MosesSignificance(row.s, row.m, row.n, row.h, Arithmetic::AsDefined()) / row.expected, 1, tolerance)
            << row.s << " " << row.m << " " << row.n << " " << row.h;
    }
}

TEST(MosesSignificance, AgreesWithTheSumInWholeNumbers) {
    Check({{30, 20, 40, 1, 5.9637449014097515e-05},
           {55, 20, 40, 1, 0.9113528201780686},
           {26, 19, 13, 0, 55.0 / 5394},
           {24, 19, 13, 1, 4763.0 / 67425},
           {820, 400, 600, 20, 4.879050681765808e-08},
           {900, 400, 600, 20, 0.5951791653571022},
           {1500, 1000, 1000, 0, 1.5998904131990784e-185},
           {1995, 1000, 1000, 0, 0.10902308564457643},
           {1999, 1000, 1000, 0, 0.7501250625312657},
           {5000, 3000, 3000, 150, 1.7407215016001782e-44},
           {5400, 3000, 3000, 150, 0.5342640106001951}},
          1e-12);
}

TEST(MosesSignificance, LargeSizesEndAndKeepTheirDigits) {
    // The second one is a sum of a thousand million terms, none of which may be left out: (i + 1) (n + 1 - i).
    Check({{179000, 100000, 100000, 5000, 1.6606583101963794e-13},
           {1000000000, 3, 2000000000, 0, 0.499999998125},
           {1800030000, 1000000000, 1000000000, 50000000, 0.98733610157008536},
           {1800000000, 1000000000, 1000000000, 50000000, 0.50005947080349924}},
          1e-11);
    EXPECT_EQ(MosesSignificance(1799000000, 1000000000, 1000000000, 50000000, Arithmetic::AsDefined()), 0);  // 5e-1204
    EXPECT_EQ(MosesSignificance(1000000000, 1000000000, 1000000000, 50000000, Arithmetic::AsDefined()), 0);
}

TEST(MosesSignificance, SizesThatNoSampleHasGiveNoNumber) {
    EXPECT_TRUE(std::isnan(MosesSignificance(5, 0, 3, 0, Arithmetic::AsDefined())));
    EXPECT_TRUE(std::isnan(MosesSignificance(5, 3, -3, 0, Arithmetic::AsDefined())));
    EXPECT_EQ(MosesSignificance(2147483647, 2, 3, 0, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(MosesSignificance(-2147483647 - 1, 2, 3, 0, Arithmetic::AsDefined()), 0);
    EXPECT_EQ(MosesSignificance(5, 2, 3, 2147483647, Arithmetic::AsDefined()), 0);
}

}  // namespace
