#!/usr/bin/env python3
"""Times the Kruskal-Wallis test side by side: tarn, and pandas with SciPy.

usage: several_groups_scipy.py [RUNS]

Two tables of 1,000,000 rows in 5 groups: a continuous field, and one with the values 1 to 7. Both sides read the whole
table; ours makes the box plots of the groups as well. SciPy has no Jonckheere-Terpstra test.
"""
import side_by_side
from side_by_side import normal, seven_steps

KRUSKAL = side_by_side.READ + """
print(stats.kruskal(*(values.to_numpy() for _, values in table.groupby("g")["x0"])))
"""


def job(runs):
    tests = [{"IKruskalWallis": {"variableName": "x0", "groupVariableName": "g", "typeOfMultipleComparison": "none"}}]
    for title, name, draw in (
            ("Kruskal-Wallis, 1,000,000 continuous values in 5 groups", "five_groups", normal),
            ("Kruskal-Wallis, 1,000,000 values from 1 to 7 in 5 groups", "five_groups_steps", seven_steps)):
        data = side_by_side.grouped_table(name, 5, draw)
        side_by_side.compare(title, side_by_side.tarn("kruskal", data, tests, "--nominal", "g"),
                             side_by_side.python(KRUSKAL, data), runs)


if __name__ == "__main__":
    side_by_side.main(job)
