"""Prints what SciPy says of the samples, for tests/host/beyond/RankTestsTest.cpp and others; scripts/check_like starts
it. A line holds an id, the numbers and the call."""
import csv
import os
import sys
import warnings

import numpy as np
import scipy.stats

FOLDER = sys.argv[1]
SIDES = {"two.sided": "two-sided", "less": "less", "greater": "greater"}
warnings.simplefilter("ignore")


def numbers(text):
    for token in text.split():
        if ":" in token:
            first, last = token.split(":")
            yield from range(int(first), int(last) + 1)
        else:
            yield float(token)


class Sample:
    pass


names = {"scipy": scipy, "np": np}
with open(os.path.join(FOLDER, "samples.csv"), encoding="utf-8") as file:
    for line in file:
        name, values = line.split(",")
        owner, part = name.split(".")
        setattr(names.setdefault(owner, Sample()), part, np.array(list(numbers(values)), dtype=float))


def record(name, call, pick):
    try:
        values = pick(eval(call, names))
    except ValueError:
        values = [float("nan")]
    print(name, " ".join("%.17g" % value for value in values), call, sep="\t")


def test(result):
    return result.statistic, result.pvalue


def zed(result):
    return result.statistic, result.zstatistic, result.pvalue


for correct in (True, False):
    for side, alternative in SIDES.items():
        end = "%s %s" % (side, "corrected" if correct else "plain")
        for name in ("plain", "tied", "even", "large", "far"):
            for mu in ("0", "1.5"):
                record("ranksum %s %s %s" % (name, mu, end),
                       'scipy.stats.mannwhitneyu(%s.x - %s, %s.y, use_continuity=%s, alternative="%s", '
                       'method="asymptotic")' % (name, mu, name, correct, alternative), test)
        for name in ("plain", "tied", "zeros", "few", "far"):
            for zeros in ("wilcox", "pratt", "zsplit"):
                record("signedrank %s %s %s" % (name, zeros, end),
                       'scipy.stats.wilcoxon(%s.d, zero_method="%s", correction=%s, alternative="%s", '
                       'method="asymptotic")' % (name, zeros, correct, alternative), zed)
    for counts in ("7 3 2 9", "5 5 5 5", "30 12 18 31", "1 6 1 7", "400 3 5 390"):
        record("median %s %s" % (counts, "corrected" if correct else "plain"),
               "scipy.stats.chi2_contingency([[%s, %s], [%s, %s]], correction=%s)" % (*counts.split(), correct), test)
for side, alternative in SIDES.items():
    for name in ("plain", "tied", "even", "large", "far"):
        record("kolmogorov %s %s" % (name, side),
               'scipy.stats.ks_2samp(%s.x, %s.y, alternative="%s", method="asymp")' % (name, name, alternative), test)
for size in (1, 2, 7, 20, 140, 141, 500, 3333, 20000, 3000000):
    for z in (0.5, 0.8, 1.3, 1.5, 2.1, 6):
        difference = round(z / size**0.5, 7)
        if difference < 1:
            record("kstwo %d %r" % (size, difference), "scipy.stats.kstwo.sf(%r, %d)" % (difference, size),
                   lambda value: [value])
for z in (0.1, 0.3, 0.5, 0.79, 0.81, 1, 1.5, 3, 10, 18):
    record("kstwobign %r" % z, "scipy.stats.kstwobign.sf(%r)" % z, lambda value: [value])

# The calls that an analyst is shown, with the columns of table.csv as variables.
with open(os.path.join(FOLDER, "table.csv"), encoding="utf-8", newline="") as file:
    rows = list(csv.DictReader(file))
names["df"] = {}
for column in rows[0]:
    cells = [row[column] for row in rows]
    try:
        cells = [float(cell) for cell in cells]
    except ValueError:
        pass
    names["df"][column] = names[column] = np.array(cells)
with open(os.path.join(FOLDER, "calls.tsv"), encoding="utf-8") as file:
    for line in file:
        system, name, call = line.rstrip("\n").split("\t")
        if system == "scipy":
            record("call " + name, call, lambda result: np.atleast_1d(getattr(result, "pvalue", result)))
