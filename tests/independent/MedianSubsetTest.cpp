// The table of a median test and its significances. Reference values: scipy 1.17 (chi2_contingency, fisher_exact, with
// the call beside them), and all tables of given margins listed.

#include "independent/MedianSubset.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <vector>
#include "tests/harness/WithinUlp.h"

namespace {

/// A subset of groups of one table: the cases not above 0, and those above it.
MedianSubset SubsetOf(const std::vector<std::int32_t>& notAbove, const std::vector<std::int32_t>& above) {
    MedianSubset subset(Arithmetic::AsDefined());
    std::vector<std::int32_t> categories;
    std::vector<double> sizes;
    for (std::size_t i = 0; i < above.size(); ++i) {
        categories.push_back(static_cast<std::int32_t>(i));
        sizes.push_back(notAbove[i] + above[i]);
    }
    subset.SetGroups(categories, sizes, static_cast<std::int32_t>(above.size()));
    subset.SetMedian(0);
    for (std::size_t i = 0; i < above.size(); ++i) {
        subset.Count(-1, notAbove[i], categories[i]);
        subset.Count(1, above[i], categories[i]);
    }
    return subset;
}

// ---- Groups, median and counts ----

TEST(MedianSubset, PlacesItsGroupsInTheOrderGiven) {
    MedianSubset subset(Arithmetic::AsDefined());
    subset.SetGroups({3, 0}, {5, 2}, 5);
    EXPECT_EQ(subset.PlaceOf(3), 0);
    EXPECT_EQ(subset.PlaceOf(0), 1);
    for (const std::int32_t outside : {1, 2, 4}) EXPECT_EQ(subset.PlaceOf(outside), MedianSubset::kNotInside);
    EXPECT_EQ(subset.GroupCount(), 2u);
    EXPECT_EQ(subset.TotalN(), 7);
    EXPECT_EQ(subset.GroupsWithCases(), 2u);
    subset.SetGroups({1, 2, 4}, {1, 0, 3}, 5);
    EXPECT_EQ(subset.PlaceOf(3), MedianSubset::kNotInside);
    EXPECT_EQ(subset.GroupsWithCases(), 2u);
}

TEST(MedianSubset, ValueEqualToTheMedianIsNotAbove) {
    MedianSubset subset(Arithmetic::AsDefined());
    subset.SetGroups({0}, {3}, 1);
    for (const double value : {1.0, 2.0, 2.0}) subset.AddToMedian(value, 1);
    subset.FinishMedian();
    EXPECT_EQ(subset.Median(), 2);
    for (const double value : {1.0, 2.0, 2.0, 2.0000000001}) subset.Count(value, 1, 0);
    EXPECT_EQ(subset.RowTotal(MedianSubset::kNotAbove), 3);
    EXPECT_EQ(subset.RowTotal(MedianSubset::kAbove), 1);
}

TEST(MedianSubset, MedianIsBetweenTheMiddleCasesAndZeroWithoutAny) {
    MedianSubset subset(Arithmetic::AsDefined());
    subset.SetGroups({0}, {4}, 1);
    subset.AddToMedian(1, 2);
    subset.AddToMedian(4, 2);
    subset.FinishMedian();
    EXPECT_EQ(subset.Median(), 2.5);

    MedianSubset empty(Arithmetic::AsDefined());
    empty.SetGroups({0}, {4}, 1);
    empty.FinishMedian();
    EXPECT_EQ(empty.Median(), 0);
}

TEST(MedianSubset, ValueOfWeightZeroMovesTheMedianButIsNoCase) {
    // Two cases, 1 and 9: the position 1.5 lies between 9 and the value passed last, which is 5.
    MedianSubset subset(Arithmetic::AsDefined());
    subset.SetGroups({0}, {2}, 1);
    subset.AddToMedian(1, 1);
    subset.AddToMedian(5, 0);
    subset.AddToMedian(9, 1);
    subset.FinishMedian();
    EXPECT_EQ(subset.Median(), 7);
    subset.Count(5, 0, 0);
    EXPECT_EQ(subset.RowTotal(MedianSubset::kNotAbove), 0);
}

TEST(MedianSubset, TakingGroupsAgainEmptiesTheTable) {
    MedianSubset subset = SubsetOf({3, 4}, {2, 1});
    subset.SetGroups({0}, {5}, 2);
    EXPECT_EQ(subset.Counts(MedianSubset::kNotAbove), std::vector<double>{0});
    EXPECT_EQ(subset.Counts(MedianSubset::kAbove), std::vector<double>{0});
}

// ---- Pearson's chi-square ----

TEST(MedianSubset, ChiSquareAgreesWithSciPy) {
    // chi2_contingency([[7, 2, 4], [3, 9, 5]], correction=False)
    MedianSubset three = SubsetOf({7, 2, 4}, {3, 9, 5});
    three.ComputeChiSquare();
    EXPECT_NEAR(three.chiSquare, 5.734265734265734, 1e-13);
    EXPECT_NEAR(three.sig, 0.056861723204029296, 1e-14);
    // chi2_contingency([[10, 5], [5, 11]], correction=False)
    MedianSubset two = SubsetOf({10, 5}, {5, 11});
    two.ComputeChiSquare();
    EXPECT_NEAR(two.chiSquare, 3.888454861111112, 1e-13);
    EXPECT_NEAR(two.sig, 0.04861913422927604, 1e-14);
}

TEST(MedianSubset, ChiSquareStartsAnewEachTime) {
    MedianSubset subset = SubsetOf({10, 5}, {5, 11});
    subset.ComputeChiSquare();
    const double once = subset.chiSquare;
    subset.ComputeChiSquare();
    EXPECT_EQ(subset.chiSquare, once);
}

TEST(MedianSubset, CellThatExpectsNothingAddsNothing) {
    // A group without cases: the rest is [[4, 1], [1, 4]], 10 (16 - 1)^2 / 5^4 = 3.6, and it still counts for the
    // degrees of freedom: exp(-1.8).
    MedianSubset subset = SubsetOf({4, 0, 1}, {1, 0, 4});
    const MedianSubset::ExpectedCells cells = subset.ComputeChiSquare();
    EXPECT_NEAR(subset.chiSquare, 3.6, 1e-14);
    EXPECT_NEAR(subset.sig, 0.16529888822158653, 1e-14);
    EXPECT_TRUE(cells.anyBelowOne);
}

TEST(MedianSubset, ManySmallCellsAreMoreThanAQuarterBelowFive) {
    const auto isMany = [](const std::vector<std::int32_t>& notAbove, const std::vector<std::int32_t>& above) {
        return SubsetOf(notAbove, above).ComputeChiSquare().manyBelowFive;
    };
    EXPECT_FALSE(isMany({4, 9, 9, 9}, {4, 9, 9, 9}));  // 2 of 8 expect 4: exactly a quarter
    EXPECT_TRUE(isMany({4, 4, 9, 9}, {4, 4, 9, 9}));
    EXPECT_FALSE(isMany({5, 5}, {5, 5}));  // 5 is not below 5
    EXPECT_TRUE(isMany({4, 6}, {5, 5}));   // 9 * 10 / 20 = 4.5 in two cells of four
}

TEST(MedianSubset, SmallestExpectedValueBelowOne) {
    const auto isBelowOne = [](const std::vector<std::int32_t>& notAbove, const std::vector<std::int32_t>& above) {
        return SubsetOf(notAbove, above).ComputeChiSquare().anyBelowOne;
    };
    EXPECT_FALSE(isBelowOne({1, 7}, {1, 7}));  // 2 * 8 / 16 = 1
    EXPECT_TRUE(isBelowOne({0, 8}, {1, 7}));   // 1 * 8 / 16
}

// ---- Fisher's exact test ----

TEST(FisherExactSignificance, AgreesWithSciPy) {
    // fisher_exact of the table, its second value.
    EXPECT_NEAR(FisherExactSignificance({11, 4, 4, 11}, Arithmetic::AsDefined()), 0.026837729226202166, 1e-14);
    EXPECT_NEAR(FisherExactSignificance({2, 7, 8, 2}, Arithmetic::AsDefined()), 0.02301413756522116, 1e-14);
    EXPECT_NEAR(FisherExactSignificance({9, 5, 6, 10}, Arithmetic::AsDefined()), 0.27230347674459976, 1e-14);
    EXPECT_NEAR(FisherExactSignificance({3, 1, 1, 3}, Arithmetic::AsDefined()), 0.48571428571428565, 1e-14);
    EXPECT_NEAR(FisherExactSignificance({10, 0, 0, 10}, Arithmetic::AsDefined()), 1.082508822446903e-05,
                1e-14);  // 2 / C(20, 10)
    EXPECT_NEAR(FisherExactSignificance({0, 10, 10, 0}, Arithmetic::AsDefined()), 1.082508822446903e-05, 1e-14);
}

TEST(FisherExactSignificance, IsOneWithoutCasesAndWithAMarginOfZero) {
    EXPECT_EQ(FisherExactSignificance({0, 0, 0, 0}, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(FisherExactSignificance({0, 0, 3, 4}, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(FisherExactSignificance({3, 0, 4, 0}, Arithmetic::AsDefined()), 1);
    EXPECT_EQ(FisherExactSignificance({2, 2, 2, 2}, Arithmetic::AsDefined()), 1);
}

std::int64_t Binomial(int n, int k) {
    std::int64_t result = 1;
    for (int i = 1; i <= k; ++i) result = result * (n - k + i) / i;
    return result;
}

/// The share of all tables of the same margins that are no more probable than this one, in whole numbers.
double SumOfTablesNoMoreProbable(int a, int b, int c, int d) {
    const auto ways = [&](int cell) { return Binomial(a + b, cell) * Binomial(c + d, a + c - cell); };
    std::int64_t sum = 0;
    for (int cell = std::max(0, a - d); cell <= std::min(a + b, a + c); ++cell) {
        if (ways(cell) <= ways(a)) sum += ways(cell);
    }
    return static_cast<double>(sum) / static_cast<double>(Binomial(a + b + c + d, a + c));
}

TEST(FisherExactSignificance, IsTheSumOfTheTablesNoMoreProbableUpToATotalOfTwenty) {
    for (int total = 1; total <= 20; ++total) {
        for (int a = 0; a <= total; ++a) {
            for (int b = 0; a + b <= total; ++b) {
                for (int c = 0; a + b + c <= total; ++c) {
                    const int d = total - a - b - c;
                    const FourfoldTable table{double(a), double(b), double(c), double(d)};
                    ASSERT_NEAR(FisherExactSignificance(table, Arithmetic::AsDefined()),
                                SumOfTablesNoMoreProbable(a, b, c, d), 1e-13)
                        << a << " " << b << " / " << c << " " << d;
                }
            }
        }
    }
}

TEST(FisherExactSignificance, TablesOfTheSameProbabilityAreTakenInDespiteRounding) {
    // Margins 15 and 15 of 30: the table that mirrors the observed one has the same probability, so twice the tail:
    // 2 (C(15,4)^2 + C(15,3)^2 + C(15,2)^2 + C(15,1)^2 + 1) / C(30,15) = 2 * 2081501 / 155117520.
    EXPECT_TRUE(harness::WithinUlp(FisherExactSignificance({4, 11, 11, 4}, Arithmetic::AsDefined()),
                                   4163002.0 / 155117520, 64));
}

// ---- Continuity-corrected chi-square ----

TEST(YatesChiSquare, AgreesWithSciPy) {
    // chi2_contingency of the table, correction=True
    EXPECT_NEAR(YatesChiSquare({11, 5, 4, 11}, Arithmetic::AsDefined()), 3.9343359374999993, 1e-14);
    EXPECT_NEAR(YatesChiSquare({5, 11, 10, 5}, Arithmetic::AsDefined()), 2.5996137152777785, 1e-14);
    EXPECT_NEAR(YatesChiSquare({10, 0, 0, 10}, Arithmetic::AsDefined()), 16.2, 1e-13);
}

TEST(YatesChiSquare, CorrectionIsNotCutOffWhereItExceedsTheDifference) {
    // No difference at all leaves the correction squared: 32 * 16^2 / 16^4, and not 0. Documents depend on it.
    EXPECT_DOUBLE_EQ(YatesChiSquare({8, 8, 8, 8}, Arithmetic::AsDefined()), 0.125);
}

}  // namespace
