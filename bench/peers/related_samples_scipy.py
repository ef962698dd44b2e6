#!/usr/bin/env python3
"""Times the Friedman test on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: related_samples_scipy.py [RUNS]

Both read the whole table and test its first five columns. SciPy has neither Kendall's coefficient of concordance nor
Cochran's Q test; the first one is the same work as the Friedman test.
"""
import importlib.util
import json
import os
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

FIELDS = ["x0", "x1", "x2", "x3", "x4"]

PEER = """
import sys
import pandas
from scipy.stats import friedmanchisquare
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
result = friedmanchisquare(*(table[name] for name in %r))
print(result.statistic, result.pvalue)
""" % (FIELDS,)


def plan_of(test):
    path = os.path.join(timing.FOLDER, test + ".plan.json")
    with open(path, "w") as out:
        json.dump({"tests": [{test: {"variableName": FIELDS, "typeOfMultipleComparison": "none"}}]}, out)
    return path


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 3
    data = timing.normal_table()
    ours = [timing.TARN, "run", "--data", data, "--plan", plan_of("RFriedmansTwoWayByRanks"), "--quiet"]
    theirs = [sys.executable, "-W", "ignore", "-c", PEER, data]
    pairs = []
    for run in range(runs + 1):
        pair = timing.timed(ours, os.devnull), timing.timed(theirs, os.devnull)
        if run > 0:  # the first pair warms the file cache
            pairs.append(pair)
    print(timing.row("tarn run, Friedman", [a[0] for a, _ in pairs], "s"))
    print(timing.row("pandas and SciPy, friedmanchisquare", [b[0] for _, b in pairs], "s"))
    print("pandas and SciPy take %.1f times as long (median of the pairs); memory %.0f MB beside %.0f MB"
          % (statistics.median(b[0] / a[0] for a, b in pairs), statistics.median(a[1] for a, _ in pairs),
             statistics.median(b[1] for _, b in pairs)))


if __name__ == "__main__":
    main()
