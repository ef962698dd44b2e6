#pragma once

/// Numeric functions of the common library.
namespace QKMath {

/// Distribution functions. Nothing throws: below its support a distribution function is 0, above it 1; a quantile at
/// a probability of 0 or 1 is the end of the support, infinite where that is; an argument outside the domain that
/// has no such meaning gives the missing double. A continuous distribution function of a NaN is a NaN, so that what
/// follows from a statistic of 0/0 shows as "nan". Accuracy: docs/numerics.md.
///
/// Source of the definitions: Johnson, Kotz and Balakrishnan (1994, 1995), Continuous Univariate Distributions, and
/// Johnson, Kemp and Kotz (2005), Univariate Discrete Distributions.
class QKDistFun {
 public:
    /// P(X <= x) of the standard normal distribution.
    static double CdfStdNorm(double x);
    /// P(X <= x) of the normal distribution with `mean` and standard deviation `sd` above 0.
    static double CdfNorm(double x, double mean, double sd);
    /// P(X > x) of the standard normal distribution, and of the normal one; with its own digits where it is small.
    static double SfStdNorm(double x);
    static double SfNorm(double x, double mean, double sd);
    /// The x with P(X <= x) = p of the standard normal distribution.
    static double IdfStdNorm(double p);

    /// P(X <= x) of the chi-square distribution with `df` above 0 degrees of freedom.
    static double CdfChi(double x, double df);
    /// P(X > x) of it, with its own digits where it is small.
    static double SfChi(double x, double df);
    /// Quantile of the chi-square distribution.
    static double IdfChi(double p, double df);

    /// Quantile of the F distribution with `d1` and `d2` above 0 degrees of freedom.
    static double IdfF(double p, double d1, double d2);
    /// Quantile of the beta distribution with shapes `a` and `b` above 0.
    static double IdfBeta(double p, double a, double b);

    /// P(X <= x) of the number of successes in `n` trials with probability `p`; 0 for x below 0.
    /// `err` is 0 on success, and 1 where n is negative or no number, p is outside 0 .. 1 or x is above n: the result
    /// is the missing double then. A caller takes 3 for a failure as well.
    static double CdfBin(double x, double n, double p, int& err);
    /// P(X > x) of it, with its own digits where it is small; `err` as above.
    static double SfBin(double x, double n, double p, int& err);

    /// P(X <= x) of the first cell of a 2 x 2 table with a given `total`, a first row sum `margin1` and a first
    /// column sum `margin2`. `status` is 0 on success and 1 where a margin is negative, above the total or no
    /// number; the result is then the missing double.
    static double CDFHyper(double x, double total, double margin1, double margin2, int& status);
    /// P(X > x) of it, with its own digits where it is small; `status` as above.
    static double SfHyper(double x, double total, double margin1, double margin2, int& status);

    /// The natural logarithm of the absolute value of the gamma function; +infinity at 0 and at negative whole
    /// numbers.
    static double zomrdnlgam(double x);
};

}  // namespace QKMath
