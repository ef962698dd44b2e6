#!/usr/bin/env python3
"""Times the Kolmogorov-Smirnov tests and the Wilcoxon test of one field side by side: tarn, and pandas with SciPy.

usage: kolmogorov_scipy.py [RUNS]

Both read a whole CSV of 1,000,000 rows: six columns of normal values, or one with a group of two. SciPy has neither
Lilliefors' test, so that its side estimates the parameters and then tests as if they were given, nor the
Wald-Wolfowitz test.
"""
import importlib.util
import json
import os
import random
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

READ = """
import sys
import pandas
from scipy import stats
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
x = table["x0"].to_numpy()
"""
ONE_SAMPLE = READ + """
result = stats.kstest(x, stats.norm(x.mean(), x.std(ddof=1)).cdf, method="asymp")
print(result.statistic, result.pvalue)
"""
WILCOXON = READ + """
result = stats.wilcoxon(x - 0.1, correction=False, method="asymptotic")
print(result.statistic, result.pvalue)
"""
TWO_SAMPLES = READ + """
first = (table["g"] == 1).to_numpy()
result = stats.ks_2samp(x[first], x[~first], method="asymp")
print(result.statistic, result.pvalue)
"""

ROWS = 1_000_000


def grouped_table():
    """A CSV file of a group, 1 or 2, and a normal value; made once."""
    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "kolmogorov_groups_%d.csv" % ROWS)
    if not os.path.exists(path):
        rng = random.Random(20262)
        with open(path + ".part", "w") as out:
            out.write("g,x0\n")
            for _ in range(ROWS):
                out.write("%d,%r\n" % (rng.randint(1, 2), rng.gauss(0.1, 1.0)))
        os.rename(path + ".part", path)
    return path


def command(test, entry, data):
    plan = os.path.join(timing.FOLDER, test + ".plan.json")
    with open(plan, "w") as out:
        json.dump({"tests": [{test: dict(entry, variableName="x0")}]}, out)
    return [timing.TARN, "run", "--data", data, "--plan", plan, "--quiet"]


def compare(title, ours, theirs, runs):
    pairs = []
    for run in range(runs + 1):
        pair = timing.timed(ours, os.devnull), timing.timed(theirs, os.devnull)
        if run > 0:  # the first pair warms the file cache
            pairs.append(pair)
    print(title)
    print(timing.row("  tarn run", [a[0] for a, _ in pairs], "s"))
    print(timing.row("  pandas and SciPy", [b[0] for _, b in pairs], "s"))
    print("  pandas and SciPy take %.1f times as long (median of the pairs)"
          % statistics.median(b[0] / a[0] for a, b in pairs))


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5

    def peer(program, data):
        return [sys.executable, "-W", "ignore", "-c", program, data]

    normal = timing.normal_table()
    compare("Kolmogorov-Smirnov, one field, parameters from the data",
            command("OKolmogorovSmirnovNormal", {"isUseSample": True}, normal), peer(ONE_SAMPLE, normal), runs)
    compare("Wilcoxon, one field", command("OWilcoxonSignedRanks", {"userSpecifyTestValue": True, "testValue": 0.1},
                                           normal), peer(WILCOXON, normal), runs)
    groups = grouped_table()
    compare("Kolmogorov-Smirnov, two groups",
            command("IKolmogorovSmirnov", {"groupVariableName": "g"}, groups) + ["--nominal", "g"],
            peer(TWO_SAMPLES, groups), runs)


if __name__ == "__main__":
    main()
