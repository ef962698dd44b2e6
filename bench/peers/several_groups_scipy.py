#!/usr/bin/env python3
"""Times the Kruskal-Wallis test side by side: tarn, and pandas with SciPy.

Two tables of 1,000,000 rows in 5 groups: a continuous field, and one with the values 1 to 7. Both sides read the whole
table; ours makes the box plots of the groups as well. SciPy has no Jonckheere-Terpstra test.
"""
import side_by_side
from side_by_side import timing

KRUSKAL = side_by_side.READ + """
result = stats.kruskal(*(values.to_numpy() for _, values in table.groupby("g")["x0"]))
print(result.statistic, result.pvalue)
"""

# Both subtract two numbers of the size of the number of records from one another.
TOLERANCE = 1e-6


def job(options):
    tests = [{"IKruskalWallis": {"variableName": "x0", "groupVariableName": "g", "typeOfMultipleComparison": "none"}}]
    for title, name, draw in (("Kruskal-Wallis, 5 groups, continuous", "five_groups", timing.normal),
                              ("Kruskal-Wallis, 5 groups, values from 1 to 7", "five_groups_steps",
                               timing.seven_steps)):
        data = timing.grouped_table(name, 5, draw, options.rows)
        side_by_side.compare(title, options, timing.tarn("kruskal", data, tests, "--nominal", "g"),
                             side_by_side.python(KRUSKAL, data), tolerance=TOLERANCE)


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
