#!/usr/bin/env python3
"""Makes the tables of distribution functions beside this folder, in ../functions.

usage: functions.py [FOLDER]

Needs mpmath (1.3 or later): python3 -m pip install mpmath. Every argument is a double to its last bit, every value is
worked out with 50 digits and written with 25. Sums over whole numbers (binomial, hypergeometric) are exact fractions.
Quantiles are found by bisection and Newton's method on the distribution function in the same precision. The bounds stand
in docs/numerics.md, too.
"""
import json
import math
import os
import sys
from fractions import Fraction

import mpmath
from mpmath import mpf

mpmath.mp.dps = 50
WRITTEN = 25


def exact(text):
    """The number that a program holds after it has read that text."""
    return mpf(float(text))


def written(value):
    if isinstance(value, Fraction):
        value = mpf(value.numerator) / value.denominator
    return mpmath.nstr(value, WRITTEN, min_fixed=-4, max_fixed=6, strip_zeros=True)


# ---- Functions ----

def normal_below(x):
    return mpmath.erfc(-x / mpmath.sqrt(2)) / 2


def normal_above(x):
    return mpmath.erfc(x / mpmath.sqrt(2)) / 2


def chi_square_below(x, df):
    return mpmath.gammainc(df / 2, 0, x / 2, regularized=True)


def chi_square_above(x, df):
    return mpmath.gammainc(df / 2, x / 2, mpmath.inf, regularized=True)


def beta_below(x, a, b):
    return mpmath.betainc(a, b, 0, x, regularized=True)


def f_below(x, d1, d2):
    return beta_below(d1 * x / (d1 * x + d2), d1 / 2, d2 / 2)


def inverse(function, p, low, high):
    """The x with function(x) = p between two bounds; halved on the scale of logarithms where the bounds are above 0."""
    middle = (lambda a, b: mpmath.sqrt(a * b)) if low > 0 else (lambda a, b: (a + b) / 2)
    for _ in range(400):
        x = middle(low, high)
        if x in (low, high) or abs(high - low) < abs(x) * mpf(10)**-35:
            break
        low, high = (x, high) if function(x) < p else (low, x)
    return x


def binomial_terms(n, p, counts):
    """The sum of the probabilities of these counts, as a fraction."""
    success = Fraction(float(p))
    top, bottom = success.numerator, success.denominator
    return Fraction(sum(math.comb(n, k) * top**k * (bottom - top)**(n - k) for k in counts), bottom**n)


def hypergeometric_terms(total, margin1, margin2, counts):
    ways = sum(math.comb(margin1, k) * math.comb(total - margin1, margin2 - k) for k in counts if 0 <= margin2 - k)
    return Fraction(ways, math.comb(total, margin2))


def kolmogorov_above(cells, weight):
    """Kolmogorov's limit at z = sqrt(weight / cells) / 2, by the series that converges faster."""
    square = mpf(weight) / (4 * mpf(cells))
    if square > mpf("0.5"):
        return 2 * mpmath.nsum(lambda k: (-1)**(int(k) - 1) * mpmath.exp(-2 * k * k * square), [1, 60])
    terms = sum(mpmath.exp(-(2 * k - 1)**2 * mpmath.pi**2 / (8 * square)) for k in range(1, 60))
    return 1 - mpmath.sqrt(2 * mpmath.pi / square) * terms


# ---- Tables ----

def points(arguments, function, whole=False):
    table = []
    for each in arguments:
        values = [int(text) if whole else exact(text) for text in each]
        table.append([str(text) for text in each] + [written(function(*values))])
    return table


def table(function, title, arguments, made, ranges):
    return {"format": "tarn-functions-1", "function": function, "title": title, "arguments": arguments, "made": made,
            "ranges": [{"range": name, "bound": bound, "points": rows} for name, bound, rows in ranges]}


def normal():
    tail = [(x,) for x in ("-37.5", "-37", "-33.3", "-30", "-25.4", "-20", "-16.1", "-12", "-9.3", "-8")]
    middle = [(x,) for x in ("-7.1", "-6", "-5", "-4.4", "-3.29", "-2.576", "-1.96", "-1.4", "-1", "-0.5", "-0.01", "0")]
    upper = [(x,) for x in ("0.01", "0.5", "1", "1.96", "2.576", "4.4", "6", "8")]
    negated = lambda rows: [(text[1:] if text.startswith("-") else text,) for (text,) in rows]
    erfc = "erfc(-x / sqrt 2) / 2 of mpmath with 50 digits"
    yield table("CdfStdNorm", "P(X <= x) of the standard normal distribution", ["x"], erfc,
                [("far lower tail, x to -8", "1e-15", points(tail, normal_below)),
                 ("lower half", "1e-15", points(middle, normal_below)),
                 ("upper half", "1e-15", points(upper, normal_below))])
    yield table("SfStdNorm", "P(X > x) of the standard normal distribution", ["x"], erfc.replace("-x", "x"),
                [("far upper tail, x from 8", "1e-15", points(negated(tail), normal_above)),
                 ("upper half", "1e-15", points(negated(middle), normal_above)),
                 ("lower half", "1e-15", points([("-" + x,) for (x,) in upper], normal_above))])
    quantile = lambda p: inverse(normal_below, p, mpf(-40), mpf(10))
    yield table("IdfStdNorm", "the x with P(X <= x) = p of the standard normal distribution", ["p"],
                "bisection of erfc of mpmath with 50 digits",
                [("p to 1e-8", "4e-16", points([(p,) for p in ("1e-300", "1e-200", "1e-100", "1e-50", "1e-20", "1e-12",
                                                                "1e-8")], quantile)),
                 ("p from 1e-8", "4e-16", points([(p,) for p in ("1e-6", "0.001", "0.005", "0.025", "0.05", "0.1", "0.3",
                                                                  "0.6", "0.9", "0.95", "0.975", "0.995", "0.999999")],
                                                 quantile))])


def chi_square():
    made = "the incomplete gamma function of mpmath with 50 digits"
    low = [("0.001", "0.5"), ("1e-10", "1"), ("0.01", "2"), ("0.5", "5"), ("3", "20"), ("40", "100"), ("850", "1000"),
           ("0.0001", "10")]
    middle = [("0.5", "1"), ("3.841", "1"), ("1.386", "2"), ("5.991", "2"), ("9.342", "10"), ("18.307", "10"),
              ("99.3", "100"), ("124.3", "100"), ("999", "1000"), ("10005", "10000")]
    high = [("30", "1"), ("100", "1"), ("700", "1"), ("1370", "1"), ("50", "2"), ("1380", "2"), ("60", "5"), ("1400", "5"),
            ("100", "20"), ("1500", "20"), ("300", "100"), ("1800", "100"), ("3000", "1000")]
    yield table("CdfChi", "P(X <= x) of the chi-square distribution", ["x", "df"], made,
                [("lower tail", "1e-13", points(low, chi_square_below)),
                 ("middle", "1e-13", points(middle, chi_square_below))])
    yield table("SfChi", "P(X > x) of the chi-square distribution", ["x", "df"], made,
                [("middle", "1e-13", points(middle, chi_square_above)),
                 ("upper tail, to 1e-300", "1e-13", points(high, chi_square_above))])
    quantiles = [("0.95", "1"), ("0.99", "1"), ("0.05", "1"), ("0.5", "2"), ("0.95", "2"), ("0.9", "5"), ("0.95", "10"),
                 ("0.025", "20"), ("0.975", "100"), ("1e-6", "10"), ("0.999999", "10"), ("1e-50", "5")]
    yield table("IdfChi", "the x with P(X <= x) = p of the chi-square distribution", ["p", "df"], "bisection of " + made,
                [("p from 1e-50 to 1 - 1e-6", "4e-16",
                  points(quantiles, lambda p, df: inverse(lambda x: chi_square_below(x, df), p, mpf(10)**-60, mpf(10)**4)))])


def beta():
    made = "bisection of the incomplete beta function of mpmath with 50 digits"
    shapes = [("0.025", "4", "17"), ("0.975", "5", "16"), ("0.025", "0.5", "20.5"), ("0.975", "18.5", "2.5"),
              ("0.005", "3", "48"), ("0.995", "683", "243"), ("0.5", "2", "3"), ("1e-10", "2", "3"), ("0.999999", "7", "5")]
    yield table("IdfBeta", "the x with P(X <= x) = p of the beta distribution", ["p", "a", "b"], made,
                [("p from 1e-10 to 1 - 1e-6", "4e-16",
                  points(shapes, lambda p, a, b: inverse(lambda x: beta_below(x, a, b), p, mpf(10)**-40, mpf(1))))])
    degrees = [("0.025", "8", "36"), ("0.975", "10", "34"), ("0.95", "1", "10"), ("0.95", "5", "20"), ("0.99", "3", "120"),
               ("0.5", "4", "7"), ("1e-6", "6", "9"), ("0.999999", "2", "30"), ("0.025", "1364", "488")]
    yield table("IdfF", "the x with P(X <= x) = p of the F distribution", ["p", "d1", "d2"], made,
                [("p from 1e-6 to 1 - 1e-6", "4e-16",
                  points(degrees, lambda p, d1, d2: inverse(lambda x: f_below(x, d1, d2), p, mpf(10)**-20, mpf(10)**6)))])


def binomial():
    made = "sums of fractions, exact"
    cases = {
        "lower tail": [("0", "10", "0.5"), ("2", "20", "0.5"), ("10", "100", "0.5"), ("4", "21", "0.48"), ("3", "50", "0.2"),
                       ("100", "1000", "0.3"), ("0", "500", "0.75"), ("5", "900", "0.5"), ("600", "2000", "0.5")],
        "middle": [("5", "10", "0.5"), ("9", "21", "0.48"), ("20", "100", "0.25"), ("682", "925", "0.75"),
                   ("500", "1000", "0.5"), ("31", "62", "0.5"), ("1000", "2000", "0.51")],
    }
    upper = {
        "middle": cases["middle"],
        "upper tail": [("9", "10", "0.5"), ("17", "20", "0.5"), ("90", "100", "0.5"), ("16", "21", "0.48"), ("30", "50", "0.2"),
                       ("600", "1000", "0.3"), ("499", "500", "0.25"), ("895", "900", "0.5"), ("1400", "2000", "0.5")],
    }
    rows = lambda each, counts: [[x, n, p, written(binomial_terms(int(n), p, counts(int(x), int(n))))] for x, n, p in each]
    yield table("CdfBin", "P(X <= x) of the binomial distribution", ["x", "n", "p"], made,
                [(name, "1e-14", rows(each, lambda x, n: range(x + 1))) for name, each in cases.items()])
    yield table("SfBin", "P(X > x) of the binomial distribution", ["x", "n", "p"], made,
                [(name, "1e-14", rows(each, lambda x, n: range(x + 1, n + 1))) for name, each in upper.items()])


def hypergeometric():
    made = "sums of fractions, exact"
    low = [("0", "20", "10", "10"), ("2", "20", "10", "10"), ("1", "60", "30", "30"), ("5", "200", "100", "100"),
           ("20", "1000", "500", "300"), ("0", "400", "200", "150")]
    middle = [("5", "20", "10", "10"), ("3", "15", "7", "5"), ("15", "60", "30", "30"), ("50", "200", "100", "100"),
              ("150", "1000", "500", "300")]
    high = [("8", "20", "10", "10"), ("27", "60", "30", "30"), ("90", "200", "100", "100"), ("270", "1000", "500", "300"),
            ("149", "400", "200", "150")]
    rows = lambda each, counts: [
        [*point, written(hypergeometric_terms(*(int(text) for text in point[1:]), counts(*(int(text) for text in point))))]
        for point in each]
    up_to = lambda x, total, margin1, margin2: range(max(0, margin1 + margin2 - total), x + 1)
    beyond = lambda x, total, margin1, margin2: range(x + 1, min(margin1, margin2) + 1)
    names = ["x", "total", "margin1", "margin2"]
    yield table("CDFHyper", "P(X <= x) of the first cell of a 2 x 2 table", names, made,
                [("lower tail", "1e-14", rows(low, up_to)), ("middle", "1e-14", rows(middle, up_to))])
    yield table("SfHyper", "P(X > x) of the first cell of a 2 x 2 table", names, made,
                [("middle", "1e-14", rows(middle, beyond)), ("upper tail", "1e-14", rows(high, beyond))])


def gamma():
    arguments = [("0.001",), ("0.5",), ("0.999",), ("1.001",), ("1.5",), ("1.999",), ("2.5",), ("3",), ("10",), ("62.5",),
                 ("171",), ("1000",), ("1e6",), ("1e12",), ("1e100",)]
    yield table("zomrdnlgam", "the natural logarithm of the gamma function", ["x"], "loggamma of mpmath with 50 digits",
                [("x from 0.001 to 1e100", "4e-16", points(arguments, mpmath.loggamma))])


def kolmogorov():
    made = "both series of Kolmogorov's limit in mpmath with 50 digits"
    wide = [(cells, weight) for cells, weight in ((10, 1), (10, 2), (6, 2), (4, 1), (4, 3), (2, 1), (3, 5), (1, 1), (1, 2))]
    narrow = [(1, weight) for weight in (3, 4, 6, 8, 12, 20)]
    far = [(1, weight) for weight in (40, 90, 200, 400, 800, 1200, 1380)]
    value = lambda cells, weight: kolmogorov_above(int(cells), int(weight))
    rows = lambda each: points([(str(a), str(b)) for a, b in each], value)
    yield table("Kolmogorov", "P(K > z) of Kolmogorov's limit at z = sqrt(weight / cells) / 2", ["cells", "weight"], made,
                [("z to 0.75", "1e-13", rows(wide)), ("z to 2.3", "1e-13", rows(narrow)),
                 ("far tail, to 1e-299", "2e-13", rows(far))])


def text_of(each):
    """JSON with a point in a line."""
    text = json.dumps({**each, "ranges": []}, indent=2, ensure_ascii=False)[:-len("[]\n}")]
    ranges = []
    for one in each["ranges"]:
        rows = ",\n".join("        " + json.dumps(row) for row in one["points"])
        ranges.append('    {\n      "range": %s,\n      "bound": %s,\n      "points": [\n%s\n      ]\n    }'
                      % (json.dumps(one["range"]), json.dumps(one["bound"]), rows))
    return text + "[\n" + ",\n".join(ranges) + "\n  ]\n}\n"


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "functions")
    for maker in (normal, chi_square, beta, binomial, hypergeometric, gamma, kolmogorov):
        for each in maker():
            with open(os.path.join(folder, each["function"] + ".json"), "w", encoding="utf-8") as file:
                file.write(text_of(each))
            print(each["function"])


if __name__ == "__main__":
    main()
