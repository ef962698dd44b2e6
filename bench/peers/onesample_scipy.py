#!/usr/bin/env python3
"""Times the binomial and the chi-square test on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: onesample_scipy.py [RUNS]

Both read the whole table: a normal value "x", cut at 0.1, and a category "c" from 1 to 5. SciPy has no runs test; for
one beside ours, NumPy counts the runs. The Clopper-Pearson interval is SciPy's `proportion_ci`.
"""
import importlib.util
import json
import os
import random
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

CUT = 0.1

READ = """
import sys
import numpy
import pandas
from scipy import stats
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
"""
BINOMIAL = READ + """
test = stats.binomtest(int((table["x"] <= %r).sum()), len(table), 0.5)
print(test.pvalue, test.proportion_ci(0.95, "exact"))
""" % CUT
CHI_SQUARE = READ + """
print(stats.chisquare(table["c"].value_counts().to_numpy()))
"""
RUNS = READ + """
lower = table["x"].to_numpy() < %r
runs = 1 + numpy.count_nonzero(lower[1:] != lower[:-1])
first, n = int(lower.sum()), len(lower)
product = 2 * first * (n - first)
z = (runs - product / n - 1) / (((product - n) * product) / (n * n * (n - 1))) ** 0.5
print(runs, 2 * stats.norm.cdf(-abs(z)))
""" % CUT

TESTS = {
    "binomial": [
        {"OBinomial": {"variableName": "x", "contVarClassFormation": "givenCutPoint", "givenCutPoint": CUT}},
        {"OEstimateConfidenceInterval": {"variableName": "x", "contVarClassFormation": "givenCutPoint",
                                         "givenCutPoint": CUT, "isDoClopperPearson": True}}],
    "chi-square": [{"OChiSquare": {"variableName": "c", "classFormation": "getFromData"}}],
    "runs": [{"ORuns": {"variableName": "x", "contVarClassFormation": "cutPointValue", "cutPointValue": CUT}}],
}
PEERS = {"binomial": BINOMIAL, "chi-square": CHI_SQUARE, "runs": RUNS}


def table_of(rows=1_000_000):
    """The CSV file; made once."""
    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "onesample_%d.csv" % rows)
    if not os.path.exists(path):
        rng = random.Random(20263)
        with open(path + ".part", "w") as out:
            out.write("x,c\n")
            for _ in range(rows):
                out.write("%r,%d\n" % (rng.gauss(0.1, 1.0), rng.randint(1, 5)))
        os.rename(path + ".part", path)
    return path


def command(name, data):
    plan = os.path.join(timing.FOLDER, "onesample_%s.plan.json" % name)
    with open(plan, "w") as out:
        json.dump({"tests": TESTS[name]}, out)
    return [timing.TARN, "run", "--data", data, "--nominal", "c", "--plan", plan, "--quiet"]


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    data = table_of()
    for name in TESTS:
        ours, theirs = command(name, data), [sys.executable, "-W", "ignore", "-c", PEERS[name], data]
        pairs = []
        for run in range(runs + 1):
            pair = timing.timed(ours, os.devnull), timing.timed(theirs, os.devnull)
            if run > 0:  # the first pair warms the file cache
                pairs.append(pair)
        print("%s, 1,000,000 rows" % name)
        for side, column in (("tarn run", 0), ("Python", 1)):
            print(timing.row("  " + side, [pair[column][0] for pair in pairs], "s"))
            print(timing.row("  %s, peak memory" % side, [pair[column][1] for pair in pairs], "MB"))
        print("  Python takes %.1f times as long (median of the pairs)"
              % statistics.median(pair[1][0] / pair[0][0] for pair in pairs))


if __name__ == "__main__":
    main()
