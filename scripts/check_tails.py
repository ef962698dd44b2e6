#!/usr/bin/env python3
"""Compares small significances of all tests with those of the same tables in 60 digits; scripts/check_tails starts it.

    scripts/check_tails            shows the table of docs/numerics.md
    scripts/check_tails --write    and puts it there

A test runs on a few records whose weights are raised until its significance falls below 1e-20, 1e-100 and 1e-300.
Each reference is worked out here from the records, in fractions and with mpmath, by the formulas of the textbooks and by
nothing of the program. Status 1 if any significance has fewer than 12 right digits.
"""

import argparse
import json
import math
import pathlib
import subprocess
import sys
import tempfile
from fractions import Fraction

import mpmath as mp

mp.mp.dps = 60
TARGETS = (20, 100, 300)
RIGHT_DIGITS = 12
PAGE = pathlib.Path("docs/numerics.md")
BEGIN, END = "<!-- tails -->", "<!-- end of tails -->"


def real(number):
    fraction = Fraction(number)
    return mp.mpf(fraction.numerator) / fraction.denominator


# ---- Distributions ----


def two_tailed(z):
    return mp.erfc(abs(z) / mp.sqrt(2))


def one_tailed(z):
    return mp.erfc(abs(z) / mp.sqrt(2)) / 2


def chi_square(x, df):
    return mp.gammainc(mp.mpf(df) / 2, real(x) / 2, mp.inf, regularized=True)


def kolmogorov(z):
    """The limit of Kolmogorov (1933) by Smirnov's series."""
    total, k = mp.mpf(0), 1
    while True:
        term = mp.exp(-2 * (k * z) ** 2)
        total += term if k % 2 else -term
        if term < mp.mpf(10) ** -60 * abs(total):
            return 2 * total
        k += 1


# ---- Ranks ----


def mid_ranks(values):
    """The mid-rank of each distinct value, and the sum of t^3 - t, of a list of (value, weight)."""
    ranks, below, ties = {}, 0, 0
    for value in sorted({value for value, _ in values}):
        t = sum(weight for other, weight in values if other == value)
        ranks[value] = below + Fraction(t + 1, 2)
        below += t
        ties += t**3 - t
    return ranks, below, ties


def signed_rank(differences):
    """z of Wilcoxon's signed ranks with the tie correction, without zeros."""
    kept = [(d, w) for d, w in differences if d != 0]
    ranks, n, ties = mid_ranks([(abs(d), w) for d, w in kept])
    positive = sum(ranks[abs(d)] * w for d, w in kept if d > 0)
    variance = Fraction(n * (n + 1) * (2 * n + 1), 24) - Fraction(ties, 48)
    return real(positive - Fraction(n * (n + 1), 4)) / mp.sqrt(real(variance))


def friedman(rows):
    k = len(rows[0][0])
    n = sum(weight for _, weight in rows)
    sums, ties = [Fraction(0)] * k, 0
    for row, weight in rows:
        ranks, _, row_ties = mid_ranks([(value, 1) for value in row])
        ties += row_ties * weight
        for i, value in enumerate(row):
            sums[i] += ranks[value] * weight
    centred = sum((s - Fraction(n * (k + 1), 2)) ** 2 for s in sums)
    return 12 * centred / (n * k * (k + 1)) / (1 - Fraction(ties, n * (k**3 - k))), k - 1


# ---- Tests: (what is typed, the records for a weight m, the significance of such records) ----
# A record is (cells.., weight). The name of the fields is a, b, c, .., that of the groups g, that of the weight w.


def weights(m, *shares):
    return [max(1, m * share) for share in shares]


def related(values):
    return lambda m: [(*row, weight) for row, weight in values(m)]


def groups(table):
    """(value, group, weight) to a dict of lists."""
    by_group = {}
    for value, group, weight in table:
        by_group.setdefault(group, []).append((value, weight))
    return by_group


def p_binomial(records):
    n = sum(w for _, w in records)
    first = sum(w for a, w in records if a == "x")
    return two_tailed(real(abs(2 * first - n) - 1) / 2 / (mp.sqrt(n) / 2))


def p_chi_square(records):
    n = sum(w for _, w in records)
    expected = Fraction(n, len(records))
    return chi_square(sum((w - expected) ** 2 for _, w in records) / expected, len(records) - 1)


def largest_difference(records, cdf):
    """max |F_n - F| just before and at each value."""
    n, below, largest = sum(w for _, w in records), 0, mp.mpf(0)
    for value in sorted({a for a, _ in records}):
        t = sum(w for a, w in records if a == value)
        largest = max(largest, abs(mp.mpf(below) / n - cdf(value)), abs(mp.mpf(below + t) / n - cdf(value)))
        below += t
    return largest


def p_kolmogorov_uniform(records):
    low, high = min(a for a, _ in records), max(a for a, _ in records)
    n = sum(w for _, w in records)
    return kolmogorov(mp.sqrt(n) * largest_difference(records, lambda x: mp.mpf(x - low) / (high - low)))


def p_lilliefors(records):
    """Dallal and Wilkinson (1986), for more than 100 cases."""
    n = sum(w for _, w in records)
    mean = real(Fraction(sum(a * w for a, w in records), n))
    sd = mp.sqrt(sum(w * (a - mean) ** 2 for a, w in records) / (n - 1))
    d = largest_difference(records, lambda x: mp.erfc((mean - x) / sd / mp.sqrt(2)) / 2)
    a = mp.mpf("-7.90289126054") * mp.mpf(n) ** mp.mpf("0.98")
    b = mp.mpf("3.180370175721") * mp.mpf(n) ** mp.mpf("0.49")
    return mp.exp(a * d * d + b * d + mp.mpf("2.2947256") - mp.mpf("2.3025851"))


def p_runs(records):
    """Below the cut of 5 against the rest; each record is one run at most."""
    classes = [a < 5 for a, _ in records]
    lower = sum(w for a, w in records if a < 5)
    upper = sum(w for a, w in records if a >= 5)
    n = lower + upper
    runs = 1 + sum(x != y for x, y in zip(classes, classes[1:]))
    t = 2 * lower * upper
    mean, variance = Fraction(t, n) + 1, Fraction(t * (t - n), n * n * (n - 1))
    return two_tailed(real(runs - mean) / mp.sqrt(real(variance)))


def p_wilcoxon_one(records):
    return two_tailed(signed_rank([(a - 3, w) for a, w in records]))


def p_wilcoxon_pair(records):
    return two_tailed(signed_rank([(b - a, w) for a, b, w in records]))


def p_sign(records):
    positive = sum(w for a, b, w in records if b > a)
    negative = sum(w for a, b, w in records if b < a)
    n = positive + negative
    return two_tailed((mp.mpf(abs(positive - negative)) - 1) / mp.sqrt(n))


def p_mcnemar(records):
    b = sum(w for x, y, w in records if (x, y) == ("yes", "no"))
    c = sum(w for x, y, w in records if (x, y) == ("no", "yes"))
    return chi_square(Fraction((abs(b - c) - 1) ** 2, b + c), 1)


def p_marginal_homogeneity(records):
    excess = sum(Fraction((x - y) * w, 2) for x, y, w in records)
    variance = sum(Fraction((x - y) ** 2 * w, 4) for x, y, w in records)
    return two_tailed(real(excess) / mp.sqrt(real(variance)))


def p_cochran(records):
    k = len(records[0]) - 1
    columns = [sum(row[k] for row in records if row[i] == "yes") for i in range(k)]
    row_sums = [(sum(cell == "yes" for cell in row[:k]), row[k]) for row in records]
    total = sum(columns)
    denominator = k * total - sum(s * s * w for s, w in row_sums)
    return chi_square(Fraction((k - 1) * (k * sum(c * c for c in columns) - total**2), denominator), k - 1)


def p_friedman(records):
    q, df = friedman([(row[:-1], row[-1]) for row in records])
    return chi_square(q, df)


def p_mann_whitney(records):
    by_group = groups(records)
    ranks, n, ties = mid_ranks([(a, w) for a, _, w in records])
    n1, n2 = (sum(w for _, w in by_group[g]) for g in ("one", "two"))
    rank_sum = sum(ranks[a] * w for a, w in by_group["one"])
    variance = Fraction(n1 * n2, n * (n - 1)) * (Fraction(n**3 - n, 12) - Fraction(ties, 12))
    return two_tailed(real(rank_sum - Fraction(n1 * (n + 1), 2)) / mp.sqrt(real(variance)))


def p_kolmogorov_groups(records):
    by_group = groups(records)
    n1, n2 = (sum(w for _, w in by_group[g]) for g in ("one", "two"))

    def share(group, size, value):
        return Fraction(sum(w for a, w in by_group[group] if a <= value), size)

    d = max(abs(share("one", n1, a) - share("two", n2, a)) for a, _, _ in records)
    return kolmogorov(mp.sqrt(real(Fraction(n1 * n2, n1 + n2))) * real(d))


def p_wald_wolfowitz(records):
    """The groups share no value, so the number of runs is one."""
    by_group = groups(records)
    n1, n2 = (sum(w for _, w in by_group[g]) for g in ("one", "two"))
    n, t = n1 + n2, 2 * n1 * n2
    order = [g for _, g, _ in sorted(records)]
    runs = 1 + sum(x != y for x, y in zip(order, order[1:]))
    mean, variance = Fraction(t, n) + 1, Fraction(t * (t - n), n * n * (n - 1))
    return one_tailed(real(runs - mean) / mp.sqrt(real(variance)))


def p_moses(records):
    """The span of the control cases without h = 1 at either end. Control values are all different, one case each."""
    values = sorted((a, g, w) for a, g, w in records)
    control = [a for a, g, _ in values if g == "one"]
    m, n = len(control), sum(w for _, g, w in values if g == "two")
    low, high = control[1], control[-2]
    others = sum(w for a, g, w in values if g == "two" and low < a < high)
    # Sum over i of C(i + m - 2h - 2, i) C(n + 2h + 1 - i, n - i), over C(m + n, m), Moses (1952).
    total = sum(math.comb(i + m - 4, i) * math.comb(n + 3 - i, n - i) for i in range(others + 1))
    return real(Fraction(total, math.comb(m + n, m)))


def p_kruskal_wallis(records):
    ranks, n, ties = mid_ranks([(a, w) for a, _, w in records])
    h, by_group = Fraction(0), groups(records)
    for members in by_group.values():
        size = sum(w for _, w in members)
        h += (sum(ranks[a] * w for a, w in members) - Fraction(size * (n + 1), 2)) ** 2 / size
    return chi_square(12 * h / (n * (n + 1)) / (1 - Fraction(ties, n**3 - n)), len(by_group) - 1)


def p_jonckheere(records):
    by_group = groups(records)
    names = sorted(by_group)
    j = Fraction(0)
    for i, first in enumerate(names):
        for second in names[i + 1 :]:
            for x, v in by_group[first]:
                for y, w in by_group[second]:
                    j += v * w if x < y else Fraction(v * w, 2) if x == y else 0
    sizes = [sum(w for _, w in by_group[g]) for g in names]
    ties = [sum(w for a, _, w in records if a == value) for value in {a for a, _, _ in records}]
    n = sum(sizes)

    def s(f):
        return sum(f(x) for x in sizes), sum(f(x) for x in ties)

    a1, b1 = s(lambda t: t * (t - 1) * (2 * t + 5))
    a2, b2 = s(lambda t: t * (t - 1) * (t - 2))
    a3, b3 = s(lambda t: t * (t - 1))
    variance = Fraction(n * (n - 1) * (2 * n + 5) - a1 - b1, 72)
    variance += Fraction(a2 * b2, 36 * n * (n - 1) * (n - 2)) + Fraction(a3 * b3, 8 * n * (n - 1))
    return two_tailed(real(j - Fraction(n * n - sum(x * x for x in sizes), 4)) / mp.sqrt(real(variance)))


def p_median(records):
    """Pearson's chi-square of three groups around the common median."""
    n, reached, median = sum(w for _, _, w in records), 0, None
    for value in sorted({a for a, _, _ in records}):
        reached += sum(w for a, _, w in records if a == value)
        if 2 * reached > n:
            median = value
            break
    by_group = groups(records)
    above = {g: sum(w for a, w in members if a > median) for g, members in by_group.items()}
    total_above, statistic = sum(above.values()), Fraction(0)
    for g, members in by_group.items():
        size = sum(w for _, w in members)
        for observed, row in ((above[g], total_above), (size - above[g], n - total_above)):
            expected = Fraction(size * row, n)
            statistic += (observed - expected) ** 2 / expected
    return chi_square(statistic, len(by_group) - 1)


def three_groups(m):
    v, w = m, 3 * m
    return [(1, "1", w), (2, "1", v), (3, "1", v), (1, "2", v), (2, "2", w), (3, "2", v), (2, "3", v), (3, "3", w)]


TESTS = [
    ("binomial", "--one-sample a --tests binomial", lambda m: [("x", 3 * m), ("y", 2 * m)], p_binomial),
    ("chi-square", "--one-sample a --tests chi-square", lambda m: [("x", 3 * m), ("y", 2 * m), ("z", 2 * m + 1)],
     p_chi_square),
    ("kolmogorov-smirnov, uniform", "--one-sample a --tests kolmogorov-smirnov --distribution uniform",
     lambda m: [(0, m), (1, 4 * m), (2, m), (4, m), (8, m)], p_kolmogorov_uniform),
    ("kolmogorov-smirnov, fitted normal", "--one-sample a --tests kolmogorov-smirnov",
     lambda m: [(0, 40 + m), (1, 40 + 4 * m), (3, 40 + m)], p_lilliefors),
    ("runs", "--one-sample a --tests runs --cut-point 5", lambda m: [(1, 2 * m), (9, 3 * m), (2, m), (8, m + 30)],
     p_runs),
    ("wilcoxon", "--one-sample a --tests wilcoxon --test-value 3",
     lambda m: [(1, m), (2, m), (4, 2 * m), (5, m), (7, m)], p_wilcoxon_one),
    ("sign", "--related a,b --tests sign", lambda m: [(1, 2, 3 * m + 30), (2, 1, 2 * m), (3, 3, m)], p_sign),
    ("wilcoxon of pairs", "--related a,b --tests wilcoxon", lambda m: [(1, 2, 3 * m), (2, 1, 2 * m), (3, 6, m)],
     p_wilcoxon_pair),
    ("mcnemar", "--related a,b --tests mcnemar --success yes",
     lambda m: [("yes", "no", 3 * m), ("no", "yes", 2 * m), ("yes", "yes", m)], p_mcnemar),
    ("marginal-homogeneity", "--related a,b --ordinal a,b --tests marginal-homogeneity",
     lambda m: [(1, 2, 3 * m), (2, 1, 2 * m), (3, 1, m), (1, 3, 2 * m)], p_marginal_homogeneity),
    ("cochran", "--related a,b,c --tests cochran --success yes",
     lambda m: [("yes", "no", "no", 3 * m), ("no", "yes", "no", 2 * m), ("no", "yes", "yes", m)], p_cochran),
    ("friedman", "--related a,b,c --continuous a,b,c --tests friedman",
     lambda m: [(1, 2, 3, 3 * m), (2, 1, 3, 2 * m), (2, 2, 1, 3 * m)], p_friedman),
    ("kendall", "--related a,b,c --continuous a,b,c --tests kendall",
     lambda m: [(1, 2, 3, 3 * m), (3, 1, 2, 2 * m), (2, 2, 1, 2 * m)], p_friedman),
    ("mann-whitney", "--independent a --group g --tests mann-whitney",
     lambda m: [(1, "one", 3 * m), (2, "one", 2 * m), (2, "two", 2 * m), (3, "two", 2 * m), (1, "two", 9 + m)],
     p_mann_whitney),
    ("kolmogorov-smirnov of groups", "--independent a --group g --tests kolmogorov-smirnov",
     lambda m: [(1, "one", 3 * m), (2, "one", 2 * m), (2, "two", 2 * m), (3, "two", 2 * m)], p_kolmogorov_groups),
    ("wald-wolfowitz", "--independent a --group g --tests wald-wolfowitz",
     lambda m: [(1, "one", 40 + m), (2, "two", 50 + m)], p_wald_wolfowitz),
    ("moses", "--independent a --group g --tests moses --outliers 1",
     lambda m: [(10 + i, "one", 1) for i in range(90)] + [(20.5, "two", 2), (1, "two", m), (900, "two", m)], p_moses),
    ("kruskal-wallis", "--independent a --group g --tests kruskal-wallis", three_groups, p_kruskal_wallis),
    ("jonckheere", "--independent a --group g --ordinal g --tests jonckheere", three_groups, p_jonckheere),
    ("median", "--independent a --group g --tests median", three_groups, p_median),
]


# ---- Runs ----


def field_names(options):
    words = options.split()
    return words[1].split(",") + (["g"] if "--group" in words else [])


def shown(options, records, folder):
    """The significance that decides, as the document has it."""
    names = field_names(options)
    table = pathlib.Path(folder, "table.csv")
    table.write_text("\n".join([",".join([*names, "w"])] + [",".join(map(str, record)) for record in records]) + "\n")
    kinds = ["--continuous", "a"] if "--ordinal" not in options.split()[:4] and "--group" in options else []
    if options.startswith("--one-sample a --tests") and isinstance(records[0][0], int):
        kinds = ["--continuous", "a"]
    if "--related a,b --tests" in options and isinstance(records[0][0], int):
        kinds = ["--continuous", "a,b"]
    command = ["build/tarn", "analyze", str(table), "--weight", "w", "--format", "json", "--quiet", *options.split()]
    run = subprocess.run(command + kinds, capture_output=True, text=True)
    if not run.stdout:
        sys.exit(f"{' '.join(command)}: {run.stderr}")
    test = json.loads(run.stdout)["tests"][0]
    values = [p for statistics in test["statistics"] for p in statistics["p_values"]]
    decisive = [p for p in values if p["decides"]] or values
    if not decisive:
        sys.exit(f"{options}: {test['messages']}")
    return decisive[0]["value"]


def weight_for(make, reference, digits):
    """The least m, to within a few per cent, whose significance lies below 10^-digits; 0 if there is none."""
    low, high = 1, 2
    bound = mp.mpf(10) ** -digits
    while reference(make(high)) > bound:
        low, high = high, high * 2
        if high > 2**22:
            return 0
    while high - low > max(1, high // 32):
        middle = (low + high) // 2
        low, high = (middle, high) if reference(make(middle)) > bound else (low, middle)
    return high


def main():
    parser = argparse.ArgumentParser(description=__doc__, formatter_class=argparse.RawDescriptionHelpFormatter)
    parser.add_argument("--write", action="store_true")
    parser.add_argument("tests", nargs="*")
    arguments = parser.parse_args()
    lines = ["| Test | below 1e-20 | below 1e-100 | near 1e-300 |", "|---|---|---|---|"]
    bad = 0
    with tempfile.TemporaryDirectory() as folder:
        for name, options, make, reference in TESTS:
            if arguments.tests and name not in arguments.tests:
                continue
            cells = []
            for digits in TARGETS:
                # Below the smallest normal double a number has fewer digits.
                m = weight_for(make, reference, digits if digits < 300 else 296)
                if m == 0:
                    cells.append("")
                    continue
                records = make(m)
                expected = reference(records)
                value = shown(options, records, folder)
                error = abs(mp.mpf(str(value)) / expected - 1)
                right = 15 if error < mp.mpf(10) ** -15 else int(mp.floor(-mp.log10(error)))
                cells.append(f"{mp.nstr(expected, 4)}: {right}")
                bad += right < RIGHT_DIGITS
            lines.append(f"| {name} | {' | '.join(cells)} |")
            print(lines[-1], flush=True)
    if arguments.write:
        page = PAGE.read_text()
        begin, end = page.index(BEGIN) + len(BEGIN), page.index(END)
        PAGE.write_text(page[:begin] + "\n" + "\n".join(lines) + "\n" + page[end:])
    if bad:
        sys.exit(f"{bad} significances have fewer than {RIGHT_DIGITS} right digits")


if __name__ == "__main__":
    main()
