#!/usr/bin/env python3
"""Times the Mann-Whitney test side by side: tarn, and pandas with SciPy.

usage: two_groups_scipy.py [RUNS]

Three tables: 1,000,000 rows of a continuous field and of one with the values 1 to 7, and 2,000 fields of 2,000 rows
that are all tested against one group field. Both sides read the whole table. SciPy has no Hodges-Lehmann estimate; for
one beside ours, NumPy makes all differences of 2 x 5,000 values.
"""
import importlib.util
import json
import os
import random
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

MANN_WHITNEY = """
import sys
import pandas
from scipy.stats import mannwhitneyu
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
groups = table.pop("g") == 1
result = mannwhitneyu(table[groups].to_numpy(), table[~groups].to_numpy(), use_continuity=False, method="asymptotic")
print(result.statistic.sum(), result.pvalue.min())
"""

ALL_DIFFERENCES = """
import sys
import numpy
import pandas
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
groups = (table["g"] == 1).to_numpy()
values = table["x0"].to_numpy()
print(numpy.median(numpy.subtract.outer(values[groups], values[~groups])))
"""


def table_of(name, rows, fields, draw):
    """A CSV file with the group field "g", 1 or 2, in front; made once."""
    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "groups_%s_%dx%d.csv" % (name, rows, fields))
    if not os.path.exists(path):
        rng = random.Random(20262)
        with open(path + ".part", "w") as out:
            out.write("g," + ",".join("x%d" % i for i in range(fields)) + "\n")
            for _ in range(rows):
                out.write("%d," % rng.randint(1, 2) + ",".join(repr(draw(rng)) for _ in range(fields)) + "\n")
        os.rename(path + ".part", path)
    return path


def command(test, fields, data):
    plan = os.path.join(timing.FOLDER, "%s_%d.plan.json" % (test, fields))
    with open(plan, "w") as out:
        json.dump({"tests": [{test: {"variableName": "x%d" % i, "groupVariableName": "g"}} for i in range(fields)]},
                  out)
    return [timing.TARN, "run", "--data", data, "--nominal", "g", "--plan", plan, "--quiet"]


def compare(title, ours, theirs, runs):
    pairs = []
    for run in range(runs + 1):
        pair = timing.timed(ours, os.devnull), timing.timed(theirs, os.devnull)
        if run > 0:  # the first pair warms the file cache
            pairs.append(pair)
    print(title)
    print(timing.row("  tarn run", [a[0] for a, _ in pairs], "s"))
    print(timing.row("  tarn run, peak memory", [a[1] for a, _ in pairs], "MB"))
    print(timing.row("  Python", [b[0] for _, b in pairs], "s"))
    print(timing.row("  Python, peak memory", [b[1] for _, b in pairs], "MB"))
    print("  Python takes %.1f times as long (median of the pairs)"
          % statistics.median(b[0] / a[0] for a, b in pairs))


def normal(rng):
    return rng.gauss(0.1, 1.0)


def seven_steps(rng):
    return rng.randint(1, 7)


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5

    def peer(program, data):
        return [sys.executable, "-W", "ignore", "-c", program, data]

    for title, name, rows, fields, draw in (
            ("Mann-Whitney, 1,000,000 continuous values", "normal", 1_000_000, 1, normal),
            ("Mann-Whitney, 1,000,000 values from 1 to 7", "steps", 1_000_000, 1, seven_steps),
            ("Mann-Whitney, 2,000 fields of 2,000 rows", "normal", 2_000, 2_000, normal)):
        data = table_of(name, rows, fields, draw)
        compare(title, command("IMannWhitneyU", fields, data), peer(MANN_WHITNEY, data), runs)
    data = table_of("normal", 10_000, 1, normal)
    compare("Hodges-Lehmann, 10,000 values", command("IHodgesLehmannEstimateGroups", 1, data),
            peer(ALL_DIFFERENCES, data), runs)


if __name__ == "__main__":
    main()
