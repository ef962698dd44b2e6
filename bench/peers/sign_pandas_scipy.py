#!/usr/bin/env python3
"""Times the sign test of two columns of a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: sign_pandas_scipy.py [RUNS]

Both read the whole table with exact numbers, test the first two columns and write their result. The runs alternate,
so that a machine whose speed drifts treats both alike; the ratio is taken pair by pair.
"""
import importlib.util
import os
import re
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

PEER = """
import sys
import pandas
from scipy.stats import binomtest
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
difference = table["x1"] - table["x0"]
positive, negative = int((difference > 0).sum()), int((difference < 0).sum())
print(positive, binomtest(positive, positive + negative).pvalue)
"""


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    data = timing.normal_table()
    ours = [timing.TARN, "run", "--data", data, "--plan", timing.sign_plan(), "--quiet"]
    theirs = [sys.executable, "-W", "ignore", "-c", PEER, data]
    our_result, their_result = (os.path.join(timing.FOLDER, name) for name in ("ours.xml", "theirs.txt"))
    pairs = []
    for run in range(runs + 1):
        pair = timing.timed(ours, our_result), timing.timed(theirs, their_result)
        if run > 0:  # the first pair warms the file cache
            pairs.append(pair)

    with open(our_result) as document, open(their_result) as line:
        our_count = re.search(r'"PositiveDifferences" value="(\d+)"', document.read()).group(1)
        their_count = line.read().split()[0]
    if our_count != their_count:
        raise SystemExit("the results differ: %s and %s positive differences" % (our_count, their_count))

    print(timing.row("tarn run", [a[0] for a, _ in pairs], "s"))
    print(timing.row("pandas and SciPy", [b[0] for _, b in pairs], "s"))
    print("pandas and SciPy take %.1f times as long (median of the pairs)"
          % statistics.median(b[0] / a[0] for a, b in pairs))
    print(timing.row("tarn run, peak memory", [a[1] for a, _ in pairs], "MB"))
    print(timing.row("pandas and SciPy, peak memory", [b[1] for _, b in pairs], "MB"))


if __name__ == "__main__":
    main()
