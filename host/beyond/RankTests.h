#pragma once

#include <cstdint>
#include <limits>

#include "host/beyond/Alternative.h"
#include "host/beyond/AscendingSample.h"
#include "host/beyond/TieBlocks.h"
#include "host/beyond/ZeroMethod.h"

namespace tarn {

/// A test by a limiting distribution, done with the choices of an analyst. All three numbers are NaN where there is
/// nothing to test: no cases, or a variance of 0.
struct ChosenTest {
    double statistic = std::numeric_limits<double>::quiet_NaN();
    /// Its distance from the expectation in standard deviations, with the correction for continuity; for
    /// Kolmogorov's test the root of n1 n2 / (n1 + n2) times the difference.
    double z = std::numeric_limits<double>::quiet_NaN();
    double p = std::numeric_limits<double>::quiet_NaN();  ///< a tail that keeps its digits however small it is
    // Which choices the test has.
    bool hasAlternative = true;
    bool hasContinuity = true;
    bool hasZeroMethod = false;
    bool hasShift = false;
};

// The correction for continuity moves a statistic by 0.5. In the rank sum, signed rank and runs tests it moves it
// against the alternative, and a two-sided test towards the expectation and no further. In the tests of counts it
// always moves towards the expectation and no further, also against a one-sided alternative. These are the ways of
// R's wilcox.test and prop.test.

/// The Wilcoxon rank sum test of Mann and Whitney (1947, Annals of Mathematical Statistics 18, 50-60). The statistic is
/// U: the pairs in which the value of the first sample less `shift` is larger than that of the second, ties by half.
/// The variance is that under ties (Lehmann 1975, Nonparametrics, page 20). Less: the first sample has the smaller
/// values. R: wilcox.test(x, y, exact = FALSE); SciPy: mannwhitneyu(x, y, method="asymptotic").
ChosenTest RankSumTest(const AscendingSample& first, const AscendingSample& second,
                       Alternative alternative = Alternative::kTwoSided, bool continuity = true, double shift = 0);

/// The Wilcoxon signed rank test. The statistic is the sum of the ranks of the positive differences, with half of those
/// of zeros where these are split. Ranks are of the magnitudes, mid-ranks under ties. The variance is a quarter of the
/// sum of the squared ranks: of the differences that are not zero (Pratt 1959, Journal of the American Statistical
/// Association 54, 655-667; Cureton 1967, the same 62, 1068-1069), but of all where zeros are split, as SciPy has it.
/// Less: the differences are negative. R: wilcox.test(x, exact = FALSE), which drops zeros; SciPy: wilcoxon(x,
/// method="asymptotic"), where zero_method is "wilcox", "pratt" or "zsplit".
ChosenTest SignedRankTest(const AscendingSample& differences, Alternative alternative = Alternative::kTwoSided,
                          bool continuity = true, ZeroMethod zeros = ZeroMethod::kDrop);

/// The sign test of so many differences above and below zero: that of a proportion of one half.
ChosenTest SignTest(double positive, double negative, Alternative alternative = Alternative::kTwoSided,
                    bool continuity = true);

/// Whether `count` of `size` cases are more or fewer than a share of `expected` lets expect. The statistic is the
/// count. R: prop.test(count, size, expected), whose X-squared is the square of z.
ChosenTest ProportionTest(double count, double size, double expected, Alternative alternative = Alternative::kTwoSided,
                          bool continuity = true);

/// McNemar's test (1947, Psychometrika 12, 153-157) of the pairs that changed one way and the other. The statistic is
/// chi-square with 1 degree of freedom, two-sided; the correction is that of Edwards (1948, Psychometrika 13, 185-187).
/// z has the sign of `oneWay` less `otherWay`. R: mcnemar.test.
ChosenTest McNemarTest(double oneWay, double otherWay, bool continuity = true);

/// The test of Terpstra (1952) and Jonckheere (1954, Biometrika 41, 133-145) for groups in an order. The statistic
/// counts the pairs of cases that rise with the groups, ties by half; its variance is that under ties of both
/// (Hollander and Wolfe 1999, Nonparametric Statistical Methods, page 212; worked out as the permutation variance of
/// Daniels 1944, Biometrika 33, 129-135, which loses no digits). Greater: the values rise. No continuity correction.
/// R: cor.test(groups, values, method = "kendall", exact = FALSE).
ChosenTest JonckheereTest(const TieBlocks& blocks, Alternative alternative = Alternative::kTwoSided);

/// The runs test of Wald and Wolfowitz (1940, Annals of Mathematical Statistics 11, 147-162) for classes of these
/// sizes. Less: fewer runs than by chance, equal ones cluster; greater: they alternate.
ChosenTest RunsTest(double runs, double firstSize, double secondSize, Alternative alternative = Alternative::kTwoSided,
                    bool continuity = true);

/// How the largest difference of two distribution functions becomes a significance.
enum class KolmogorovForm {
    /// Smirnov's limits: 1 - K(z), and exp(-2 z^2) to one side. R: ks.test(exact = FALSE), which works out the first
    /// to 1e-6 only.
    kLimit,
    /// Closer for small samples: to both sides Kolmogorov's distribution for n1 n2 / (n1 + n2) cases, rounded; to one
    /// side formula 5.3 of Hodges (1958, Arkiv foer Matematik 3, 469-486). SciPy: ks_2samp(method="asymp").
    kCorrected
};

/// Smirnov's test of two samples. The statistic is the largest difference of their distribution functions; to one side
/// greater means that the function of the first one lies above, so that its *values* are the smaller ones, as in R and
/// SciPy. No continuity correction. The significance is NaN where the corrected form rounds its size to 0.
ChosenTest KolmogorovTest(const AscendingSample& first, const AscendingSample& second,
                          Alternative alternative = Alternative::kTwoSided,
                          KolmogorovForm form = KolmogorovForm::kLimit);

/// How many cases of a sample lie above the common median, and how many do not.
struct MedianCounts {
    double above = 0;
    double rest = 0;
};

/// The median test of two samples (Mood 1950). The statistic is chi-square with 1 degree of freedom, with the
/// correction of Yates (1934, Supplement to the Journal of the Royal Statistical Society 1, 217-235), which takes no
/// more from a cell than its distance. Less: the first sample has the smaller share above. R: prop.test of the counts,
/// two-sided also chisq.test; SciPy: median_test(ties="below"), chi2_contingency.
ChosenTest MedianTest(const MedianCounts& first, const MedianCounts& second,
                      Alternative alternative = Alternative::kTwoSided, bool continuity = true);

}  // namespace tarn
