#!/usr/bin/env python3
"""Times the Kruskal-Wallis test side by side: tarn, and pandas with SciPy.

usage: several_groups_scipy.py [RUNS]

Two tables of 1,000,000 rows in 5 groups: a continuous field, and one with the values 1 to 7. Both sides read the whole
table; ours makes the box plots of the groups as well. SciPy has no Jonckheere-Terpstra test.
"""
import importlib.util
import json
import os
import random
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402
from two_groups_scipy import compare, normal, seven_steps  # noqa: E402

ROWS = 1_000_000
GROUPS = 5

KRUSKAL = """
import sys
import pandas
from scipy.stats import kruskal
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
result = kruskal(*(values.to_numpy() for _, values in table.groupby("g")["x0"]))
print(result.statistic, result.pvalue)
"""


def table_of(name, draw):
    """A CSV file with the group field "g" in front; made once."""
    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "several_groups_%s.csv" % name)
    if not os.path.exists(path):
        rng = random.Random(20263)
        with open(path + ".part", "w") as out:
            out.write("g,x0\n")
            for _ in range(ROWS):
                out.write("%d,%r\n" % (rng.randint(1, GROUPS), draw(rng)))
        os.rename(path + ".part", path)
    return path


def command(data):
    plan = os.path.join(timing.FOLDER, "IKruskalWallis.plan.json")
    with open(plan, "w") as out:
        json.dump({"tests": [{"IKruskalWallis": {"variableName": "x0", "groupVariableName": "g",
                                                 "typeOfMultipleComparison": "none"}}]}, out)
    return [timing.TARN, "run", "--data", data, "--nominal", "g", "--plan", plan, "--quiet"]


def main():
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    runs = int(sys.argv[1]) if len(sys.argv) > 1 else 5
    for title, name, draw in (("Kruskal-Wallis, 1,000,000 continuous values in 5 groups", "normal", normal),
                              ("Kruskal-Wallis, 1,000,000 values from 1 to 7 in 5 groups", "steps", seven_steps)):
        data = table_of(name, draw)
        compare(title, command(data), [sys.executable, "-W", "ignore", "-c", KRUSKAL, data], runs)


if __name__ == "__main__":
    main()
