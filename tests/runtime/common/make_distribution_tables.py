#!/usr/bin/env python3
"""Writes distribution_tables.inc, the reference values of DistributionFunctionsTest.cpp.

    python3 make_distribution_tables.py > distribution_tables.inc

Needs mpmath. Everything is computed with 130 digits from the exact value of the double arguments, by routes
that share nothing with the library: power series whose terms all have one sign, and sums over every term of a
discrete distribution. Takes some minutes.
"""

import itertools
import math

import mpmath as mp

mp.mp.dps = 130

SMALLEST_NORMAL = mp.mpf(2) ** -1022
FIXED_BITS = 480  # of the integers that stand for fractions in the long sums


# Distribution functions ---------------------------------------------------------------------------------------------


def std_norm_cdf(x):
    return mp.erfc(-mp.mpf(x) / mp.sqrt(2)) / 2


def sum_of_ratios(ratio):
    """1 + r(0) + r(0) r(1) + ..., in fixed point; ratio(k) gives a positive numerator and denominator as integers."""
    term = 1 << FIXED_BITS
    total = term
    k = 0
    while term:
        numerator, denominator = ratio(k)
        term = term * numerator // denominator
        total += term
        k += 1
    return mp.mpf(total) / (mp.mpf(2) ** FIXED_BITS)


def scaled(*values):
    """The values as integers over one common power of 2, which is appended; exact for doubles of ordinary size."""
    fractions = [mp.mpf(v) for v in values]
    shift = max(0, max(-int(v.man_exp[1]) for v in fractions))
    unit = 1 << shift
    return [int(v * unit) for v in fractions] + [unit]


def gamma_p(a, x):
    """P(a, x) = x^a e^-x / Gamma(a + 1) * (1 + x/(a+1) + x^2/((a+1)(a+2)) + ...)."""
    a, x = mp.mpf(a), mp.mpf(x)
    fixed_x = int(mp.floor(mp.ldexp(x, FIXED_BITS)))
    fixed_a = int(mp.floor(mp.ldexp(a, FIXED_BITS)))
    one = 1 << FIXED_BITS
    series = sum_of_ratios(lambda k: (fixed_x, fixed_a + (k + 1) * one))
    return mp.exp(a * mp.log(x) - x - mp.loggamma(a + 1)) * series


def gamma_q(a, x):
    """The upper tail as 1 - P(a, x), with as many digits more as the tail is small."""
    global FIXED_BITS
    usual_bits, FIXED_BITS = FIXED_BITS, 1600
    with mp.workdps(480):
        tail = 1 - gamma_p(a, x)
    FIXED_BITS = usual_bits
    return tail


def beta_p(a, b, x, y):
    """I_x(a, b) with y = 1 - x, by x^a y^b / (a B(a, b)) * (1 + x (a+b)/(a+1) + ...)."""
    a, b, x, y = (mp.mpf(v) for v in (a, b, x, y))
    # Either side's series is slow near its own end; the other one's complement costs digits of a far tail.
    if x > 0.5 and (x > a / (a + b) or y < 1e-3):
        return 1 - beta_p(b, a, y, x)
    fixed_x = int(mp.floor(mp.ldexp(x, FIXED_BITS)))
    fixed_a = int(mp.floor(mp.ldexp(a, FIXED_BITS)))
    fixed_sum = int(mp.floor(mp.ldexp(a + b, FIXED_BITS)))
    one = 1 << FIXED_BITS

    def ratio(k):
        return fixed_x * (fixed_sum + k * one), (fixed_a + (k + 1) * one) << FIXED_BITS

    log_front = a * mp.log(x) + b * mp.log(y) - mp.loggamma(a) - mp.loggamma(b) + mp.loggamma(a + b) - mp.log(a)
    return mp.exp(log_front) * sum_of_ratios(ratio)


def binomial_cdf(x, n, p):
    """The term at x by log gamma, and from there the sum of all terms on the side of the smaller tail."""
    p = mp.mpf(p)
    q = 1 - p

    def term(k):
        return mp.exp(
            mp.loggamma(n + 1) - mp.loggamma(k + 1) - mp.loggamma(n - k + 1) + k * mp.log(p) + (n - k) * mp.log(q)
        )

    fixed_p, fixed_q, _ = scaled(p, q)
    if x <= n * p:
        return term(x) * sum_of_ratios(lambda k: ((x - k) * fixed_q, (n - x + k + 1) * fixed_p))
    if x == n:
        return mp.mpf(1)
    first = x + 1
    return 1 - term(first) * sum_of_ratios(lambda k: ((n - first - k) * fixed_p, (first + k + 1) * fixed_q))


def binomial_sf(x, n, p):
    """More than x successes are fewer than n - x failures."""
    return binomial_cdf(n - x - 1, n, 1 - mp.mpf(p)) if x < n else mp.mpf(0)


def hypergeometric_sf(x, total, row, column):
    """A larger first cell is a smaller one below it."""
    return hypergeometric_cdf(column - x - 1, total, total - row, column)


def hypergeometric_cdf(x, total, row, column):
    def term(k):
        log_choose = lambda n, r: mp.loggamma(n + 1) - mp.loggamma(r + 1) - mp.loggamma(n - r + 1)
        return mp.exp(log_choose(row, k) + log_choose(total - row, column - k) - log_choose(total, column))

    if x * total <= row * column:
        return term(x) * sum_of_ratios(
            lambda k: ((x - k) * (total - row - column + x - k), (row - x + k + 1) * (column - x + k + 1))
        )
    if x == min(row, column):
        return mp.mpf(1)
    first = x + 1
    return 1 - term(first) * sum_of_ratios(
        lambda k: (
            max(0, (row - first - k) * (column - first - k)),
            (first + k + 1) * (total - row - column + first + k + 1),
        )
    )


def log_gamma(x):
    """log|Gamma(x)|; below 0 by the reflection formula."""
    x = mp.mpf(x)
    if x > 0:
        return mp.loggamma(x)
    return mp.log(mp.pi / abs(mp.sinpi(x))) - mp.loggamma(1 - x)


# Quantiles ----------------------------------------------------------------------------------------------------------


def root_of_log_concave(cdf, slope, p, start):
    """Newton on log cdf(u) = log p, over a variable on the whole real line where the density is log-concave: the
    iteration is then on the left of the root after its first step and never beyond it again."""
    target = mp.log(p)
    last = u = mp.mpf(start)
    for _ in range(300):
        value = cdf(u)
        # A first step so far to the left that the digits do not suffice there.
        while value < p * mp.mpf(10) ** -40:
            u = (u + last) / 2
            value = cdf(u)
        last = u
        step = (mp.log(value) - target) * value / slope(u)
        u -= step
        if abs(step) < mp.mpf(10) ** -45 * max(1, abs(u)):
            return u
    raise ArithmeticError("no convergence")


def chi_square_quantile(p, df):
    a = mp.mpf(df) / 2

    def slope(u):
        return mp.exp(a * u - mp.exp(u) - mp.loggamma(a))

    return 2 * mp.exp(root_of_log_concave(lambda u: gamma_p(a, mp.exp(u)), slope, p, mp.log(a)))


def normal_quantile_start(p):
    """Some digits of the normal quantile."""
    with mp.workdps(25):
        p = mp.mpf(p)
        tail = min(p, 1 - p)
        z = -mp.sqrt(-2 * mp.log(tail)) if tail < mp.mpf("0.1") else -mp.mpf(1) / 2
        for _ in range(60):
            step = (mp.log(std_norm_cdf(z)) - mp.log(tail)) * std_norm_cdf(z) / mp.npdf(z)
            z -= step
            if abs(step) < mp.mpf(10) ** -15:
                break
        return z if p <= mp.mpf(1) / 2 else -z


def std_norm_quantile(p):
    p = mp.mpf(p)
    if p == mp.mpf(1) / 2:
        return mp.mpf(0)
    tail = min(p, 1 - p)
    z = normal_quantile_start(tail)
    for _ in range(8):
        z -= (mp.log(std_norm_cdf(z)) - mp.log(tail)) * std_norm_cdf(z) / mp.npdf(z)
    return z if p < mp.mpf(1) / 2 else -z


def beta_logit_quantile(p, a, b):
    """log(x / (1 - x)) of the beta quantile x."""
    a, b = mp.mpf(a), mp.mpf(b)

    def cdf(u):
        return beta_p(a, b, 1 / (1 + mp.exp(-u)), 1 / (1 + mp.exp(u)))

    def slope(u):
        log_beta = mp.loggamma(a) + mp.loggamma(b) - mp.loggamma(a + b)
        return mp.exp(-a * mp.log(1 + mp.exp(-u)) - b * mp.log(1 + mp.exp(u)) - log_beta)

    return root_of_log_concave(cdf, slope, p, mp.log(a / b))


def beta_quantile(p, a, b):
    return 1 / (1 + mp.exp(-beta_logit_quantile(p, a, b)))


def f_quantile(p, d1, d2):
    return mp.mpf(d2) / mp.mpf(d1) * mp.exp(beta_logit_quantile(p, mp.mpf(d1) / 2, mp.mpf(d2) / 2))


# Tables -------------------------------------------------------------------------------------------------------------


def literal(value):
    text = mp.nstr(value, 30, min_fixed=-3, max_fixed=4, strip_zeros=True)
    return text if any(c in text for c in ".e") else text + ".0"


def argument(value):
    """A literal that gives the same double again."""
    if isinstance(value, int):
        return str(value)
    text = repr(float(value))
    return text


def table(name, comment, function, rows):
    print(f"\n// {comment}")
    print(f"constexpr Row{len(rows[0])} {name}[] = {{")
    for row in rows:
        value = function(*row)
        if value != 0 and not SMALLEST_NORMAL <= abs(value) < mp.mpf(2) ** 1023:
            continue
        print(f"    {{{', '.join(argument(v) for v in row)}, {literal(value)}}},", flush=True)
    print("};")


LOWER = [1e-300, 1e-100, 1e-16, 1e-5]
MIDDLE = [0.05, 0.3, 0.5, 0.75, 0.95]
UPPER = [1 - 1e-5, 1 - 1e-12, 1 - 2.0**-53]


def near(value):
    """Few digits, so that a table's argument is no quantile to the last place."""
    return float(mp.nstr(value, 7))


def main():
    print("// Written by make_distribution_tables.py, which tells how; do not edit. clang-format off")

    table(
        "kStdNormCdf",
        "x, Phi(x): erfc(-x / sqrt 2) / 2 with 130 digits.",
        std_norm_cdf,
        [
            (x,)
            for x in [-37.5, -37.123456789, -37.0, -36.6, -35.001, -33.3, -30.0, -28.7, -27.1, -25.0, -22.2, -20.0]
            + [-17.77, -15.0, -13.1, -12.0, -11.1, -10.0, -9.3, -8.0, -7.1, -6.0, -5.5, -5.0, -4.4, -4.0, -3.7, -3.0]
            + [-2.5758293035489004, -2.0, -1.959963984540054, -1.4142135623730951, -1.4, -1.0, -0.7, -0.6744897501960817]
            + [-0.5, -0.3, -0.1, -1e-3, -1e-8, -1e-17, 0.0, 1e-300, 1e-8, 0.1, 0.5, 1.0, 1.1, 1.96, 2.5, 3.1, 5.0, 8.0]
            + [8.3, 10.0, 38.0]
        ],
    )
    table(
        "kStdNormQuantile",
        "p, x: Newton on log Phi(x) = log p with 130 digits; for p above 1/2 from the exact 1 - p.",
        std_norm_quantile,
        [
            (p,)
            for p in [5e-324, 1e-320, 2.3e-308, 1e-300, 1e-250, 1e-200, 1e-150, 1e-100, 1e-70, 1e-50, 1e-40, 1e-30]
            + [1e-25, 1e-20, 1e-18, 1e-16, 1e-14, 1e-12, 1e-10, 1e-8, 1e-6, 1e-5, 1e-4, 1e-3, 0.005, 0.01, 0.02425]
            + [0.025, 0.05, 0.07, 0.075, 0.1, 0.2, 0.25, 0.3, 0.4, 0.49, 0.4999, 0.5 - 2.0**-30, 0.5 - 2.0**-54, 0.5]
            + [0.5 + 2.0**-53, 0.5 + 2.0**-30, 0.5001, 0.6, 0.75, 0.9, 0.975, 0.999, 1 - 1e-6, 1 - 1e-10, 1 - 2.0**-53]
        ],
    )

    freedoms = [0.5, 1, 2, 3, 10, 101.5, 1e3, 1e4, 1e5, 1e6]
    chi_rows = [
        (near(chi_square_quantile(p, df)), df)
        for df, p in itertools.product(freedoms, [2e-300, 1e-100, 1e-20, 1e-5, 0.2, 0.6, 1 - 1e-6])
        if mp.log10(chi_square_quantile(p, df)) > -290
    ]
    table(
        "kChiSquareCdf",
        "x, df, P(X <= x): the ascending series of the incomplete gamma function. x is near the quantiles of\n"
        "// 2e-300, 1e-100, 1e-20, 1e-5, 0.2, 0.6 and 1 - 1e-6.",
        lambda x, df: gamma_p(mp.mpf(df) / 2, mp.mpf(x) / 2),
        chi_rows + [(1e-300, 0.5), (1e-300, 1), (1e-150, 2), (5000.0, 0.5), (5000.0, 3)],
    )
    table(
        "kChiSquareQuantile",
        "p, df, x: Newton on the logarithm of that series, or of 1 minus it above p = 1/2.",
        chi_square_quantile,
        [(p, df) for df, p in itertools.product(freedoms, LOWER + [0.05, 0.5, 0.95] + UPPER)],
    )
    f_pairs = [(0.5, 0.5), (0.1, 10), (1, 1), (1, 1e6), (1e6, 1), (2, 3), (5, 1e5), (100, 0.7), (1e5, 1e5), (1e6, 3e6)]
    table(
        "kFQuantile",
        "p, d1, d2, x: Newton on the logarithm of the smaller tail of the incomplete beta function over log x.",
        f_quantile,
        [(p, d1, d2) for (d1, d2), p in itertools.product(f_pairs, [1e-12, 1e-3, 0.05, 0.5, 0.95, 0.999, 1 - 1e-12])],
    )
    shape_pairs = [(0.5, 0.5), (0.5, 1e5), (1e5, 0.5), (1, 1), (1, 1e5), (3, 0.7), (2.5, 700), (100, 3), (1e5, 3e4)]
    shape_pairs += [(1e5, 1e5)]
    table(
        "kBetaQuantile",
        "p, a, b, x: the same over log(x / (1 - x)).",
        beta_quantile,
        [(p, a, b) for (a, b), p in itertools.product(shape_pairs, [1e-12, 1e-4, 0.025, 0.5, 0.9, 0.975, 1 - 1e-12])],
    )
    table(
        "kBinomialCdf",
        "x, n, p, P(X <= x): the term at x, or at x + 1, by log gamma with 130 digits, times the sum of the ratios of\n"
        "// all terms below, or above, it.",
        binomial_cdf,
        [(0, 1, 0.5), (0, 1, 0.3), (3, 3, 0.1), (2, 10, 0.5), (7, 10, 0.3), (0, 60, 0.5), (13, 60, 0.5), (29, 60, 0.5)]
        + [(30, 60, 0.5), (47, 60, 0.5), (30, 61, 0.5), (31, 63, 0.5), (20, 64, 0.5), (0, 1000, 0.5), (400, 1000, 0.5)]
        + [(5, 60, 0.1), (40, 60, 0.9), (12, 40, 1 / 3), (0, 1000, 0.3), (1, 1000, 0.49), (100, 1000, 0.3)]
        + [(500, 1000, 0.5), (499, 1001, 0.5), (700, 1000, 0.6), (0, 10**5, 1e-5), (3, 10**5, 1e-5), (40, 10**5, 1e-5)]
        + [(0, 10**5, 1e-20), (5, 10**5, 0.9999), (99990, 10**5, 0.9999), (99999, 10**5, 0.9999)]
        + [(99999, 10**5, 1 - 2.0**-53), (9, 10, 1 - 2.0**-53), (0, 10, 1 - 2.0**-53), (0, 10, 1e-300)]
        + [(1, 20, 1e-17), (45000, 10**5, 0.5), (42000, 10**5, 0.5), (49000, 10**5, 0.5), (50001, 10**5, 0.5)]
        + [(60000, 10**6, 0.07), (65000, 10**6, 0.07), (70000, 10**6, 0.07), (71000, 10**6, 0.07)]
        + [(0, 10**9, 1e-9), (0, 10**9, 1e-7), (2, 10**9, 1e-9), (100, 10**9, 1e-6), (990, 10**9, 1e-6)]
        + [(499400000, 10**9, 0.5), (499990000, 10**9, 0.5), (500000000, 10**9, 0.5), (500010000, 10**9, 0.5)]
        + [(17889000, 35999996, 0.5), (17889000, 36000004, 0.5), (17940000, 36000004, 0.5)]
        + [(299500000, 10**9, 0.3), (299999999, 10**9, 0.3), (999999989, 10**9, 1 - 1e-8), (10**9 - 60, 10**9, 1 - 1e-8)],
    )
    table(
        "kHypergeometricCdf",
        "x, total, margin1, margin2, P(X <= x): the same route as for the binomial distribution. The last\n"
        "// rows have totals above 1e5.",
        hypergeometric_cdf,
        [(0, 2, 1, 1), (3, 8, 4, 4), (1, 8, 4, 4), (0, 20, 10, 10), (9, 20, 10, 10), (4, 30, 12, 9), (2, 17, 8, 11)]
        + [(7, 17, 8, 11), (5, 50, 45, 10), (9, 50, 45, 10), (0, 100, 50, 50), (3, 100, 50, 50), (25, 100, 50, 50)]
        + [(10, 1000, 100, 300), (0, 1000, 300, 300), (29, 1000, 100, 300), (99, 1000, 100, 990), (90, 1000, 100, 990)]
        + [(100, 1000, 500, 500), (250, 1000, 500, 500), (0, 1000, 999, 1), (150, 1000, 150, 1000 - 1), (1, 5000, 40, 2500)]
        + [(900, 10**4, 3000, 4000), (1100, 10**4, 3000, 4000), (1200, 10**4, 3000, 4000), (1250, 10**4, 3000, 4000)]
        + [(0, 10**5, 10, 20), (1, 10**5, 10, 20), (0, 10**5, 3000, 4000), (60, 10**5, 3000, 4000), (118, 10**5, 3000, 4000)]
        + [(23000, 10**5, 50000, 50000), (24500, 10**5, 50000, 50000), (25000, 10**5, 50000, 50000)]
        + [(25200, 10**5, 50000, 50000), (22100, 10**5, 50000, 50000), (90003, 10**5, 95000, 95000)]
        + [(90100, 10**5, 95000, 95000), (90250, 10**5, 95000, 95000), (3, 99991, 99990, 3), (2, 99991, 99990, 3)]
        + [(0, 10**7, 1000, 1000), (200, 10**7, 10**5, 10**5), (990, 10**7, 10**5, 10**5), (240000, 10**6, 500000, 500000)]
        + [(249700, 10**6, 500000, 500000), (12480000, 5 * 10**7, 25 * 10**6, 25 * 10**6), (5, 10**9, 10**5, 10**5)]
        + [(249800000, 10**9, 5 * 10**8, 5 * 10**8), (249990000, 10**9, 5 * 10**8, 5 * 10**8)]
        + [(249999999, 10**9, 5 * 10**8, 5 * 10**8), (250004000, 10**9, 5 * 10**8, 5 * 10**8)]
        + [(89980000, 10**9, 3 * 10**8, 3 * 10**8), (5 * 10**6 - 50000, 2 * 10**9, 10**8, 10**8)],
    )
    table(
        "kChiSquareSurvival",
        "x, df, P(X > x): 1 minus the series of the lower tail with 480 digits.",
        lambda x, df: gamma_q(mp.mpf(df) / 2, mp.mpf(x) / 2),
        [(1e-10, 1), (0.3, 1), (3.84, 1), (30.0, 1), (100.0, 1), (500.0, 1), (1360.0, 1), (0.01, 2), (5.99, 2), (1380.0, 2)]
        + [(0.5, 3), (80.0, 3), (1390.0, 3), (4.0, 10), (25.2, 10), (400.0, 10), (1440.0, 10), (60.0, 101.5)]
        + [(200.0, 101.5), (1800.0, 101.5), (900.0, 1e3), (1300.0, 1e3), (3500.0, 1e3), (10300.0, 1e4), (16500.0, 1e4)],
    )
    table(
        "kBinomialSurvival",
        "x, n, p, P(X > x): the lower tail of the failures.",
        binomial_sf,
        [(0, 1, 0.3), (2, 10, 0.5), (7, 10, 0.3), (9, 10, 0.125), (30, 60, 0.5), (59, 60, 0.5), (12, 40, 1 / 3)]
        + [(400, 1000, 0.5), (600, 1000, 0.5), (990, 1000, 0.5), (300, 1000, 0.3), (700, 1000, 0.3), (3, 10**5, 1e-5)]
        + [(40, 10**5, 1e-5), (55000, 10**5, 0.5), (58000, 10**5, 0.5), (71000, 10**6, 0.07), (80000, 10**6, 0.07)]
        + [(500100000, 10**9, 0.5), (100, 10**9, 1e-9)],
    )
    table(
        "kHypergeometricSurvival",
        "x, total, margin1, margin2, P(X > x): the lower tail of the cell below.",
        hypergeometric_sf,
        [(0, 2, 1, 1), (3, 8, 4, 4), (1, 8, 4, 4), (9, 20, 10, 10), (4, 30, 12, 9), (49, 100, 50, 50), (25, 100, 50, 50)]
        + [(29, 1000, 100, 300), (90, 1000, 100, 300), (250, 1000, 500, 500), (480, 1000, 500, 500)]
        + [(1300, 10**4, 3000, 4000), (2200, 10**4, 3000, 4000), (118, 10**5, 3000, 4000), (25500, 10**5, 50000, 50000)]
        + [(27500, 10**5, 50000, 50000), (250500, 10**6, 500000, 500000), (1100, 10**7, 10**5, 10**5)],
    )
    table(
        "kLogGamma",
        "x, log|Gamma(x)|: mpmath's loggamma with 130 digits, by reflection below 0. No row is near one of the zeros\n"
        "// between negative whole numbers.",
        log_gamma,
        [
            (x,)
            for x in [5e-324, 1e-310, 1e-300, 1e-100, 1e-20, 1e-10, 1e-5, 0.01, 0.1, 0.25, 0.5, 0.75, 0.9, 0.99, 0.9999]
            + [1 - 1e-8, 1 - 1e-12, 1 - 2.0**-53, 1.0, 1 + 2.0**-52, 1 + 1e-12, 1 + 1e-8, 1.0001, 1.01, 1.1, 1.3]
            + [1.4616321449683622, 1.6, 1.9, 1.99, 1.9999, 2 - 1e-8, 2 - 1e-12, 2 - 2.0**-52, 2.0, 2 + 2.0**-51]
            + [2 + 1e-12, 2 + 1e-8, 2.0001, 2.01, 2.1, 2.5, 2.9, 3.0, 3.1, 4.0, 5.5, 7.0, 10.0, 10.25, 20.0, 33.3, 99.9]
            + [100.0, 170.6, 1000.0, 12345.678, 1e5, 1e6, 1e8, 1e10, 1e15, 1e20, 1e100, 1e200, 2.5e305]
            + [-5e-324, -1e-300, -1e-20, -1e-8, -0.1, -0.5, -0.9, -1 + 1e-12, -1 - 1e-12, -1.5, -2 + 1e-9, -2.0000001]
            + [-2.3, -3.5, -3.0000001, -4.7, -10.5, -10 + 2.0**-40, -33.25, -100.5, -170.1, -1000.25, -12345.75, -1e6 - 0.5]
            + [-1e9 - 2.0**-10, -1e15 - 0.5]
        ],
    )


if __name__ == "__main__":
    main()
