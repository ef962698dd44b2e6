#pragma once

#include "host/beyond/Estimate.h"

namespace tarn {

/// A share of `trials` independent trials, which need not be a whole number, with the limits of Wilson (1927, Journal
/// of the American Statistical Association 22, 209-212) at `bound` standard deviations.
Estimate WilsonLimits(double share, double trials, double bound);

/// count / n with Wilson's limits. Nothing where n is 0; no limits where `level` is none.
Estimate WilsonInterval(double count, double n, double level);

/// count / n with the exact limits of Clopper and Pearson (1934, Biometrika 26, 404-413).
Estimate ClopperPearsonInterval(double count, double n, double level);

/// The pairs of two yes-or-no answers: a both yes, b yes then no, c no then yes, d both no.
struct PairedAnswers {
    double a = 0;
    double b = 0;
    double c = 0;
    double d = 0;
};

/// (a + b) / n - (a + c) / n, the share of yes in the first answers less that in the second ones, with limits from
/// Wilson's limits of both shares and the correlation of the answers (Newcombe, 1998, Statistics in Medicine 17,
/// 2635-2650, method 10). Nothing without pairs.
Estimate PairedProportionDifference(const PairedAnswers& answers, double level);

/// b / c, the odds ratio within pairs, of which only those with two different answers tell; with the exact limits of
/// Clopper and Pearson of p = b / (b + c), as odds p / (1 - p) (Breslow and Day, 1980, Statistical Methods in Cancer
/// Research 1, IARC, section 5.2). Infinite where c is 0; nothing where both are.
Estimate OddsRatioOfPairs(double b, double c, double level);

/// Cohen's g: b / (b + c) - 1/2 (Cohen, 1988, Statistical Power Analysis for the Behavioral Sciences, chapter 5), with
/// Wilson's limits of the share, less 1/2. Nothing where b + c is 0.
Estimate CohensG(double b, double c, double level);

}  // namespace tarn
