#!/usr/bin/env python3
"""Times the Mann-Whitney test side by side: tarn, and pandas with SciPy.

usage: two_groups_scipy.py [RUNS]

Three tables: 1,000,000 rows of a continuous field and of one with the values 1 to 7, and 2,000 fields of 2,000 rows
that are all tested against one group field. Both sides read the whole table. SciPy has no Hodges-Lehmann estimate; for
one beside ours, NumPy makes all differences of 2 x 5,000 values.
"""
import side_by_side
from side_by_side import normal, seven_steps

MANN_WHITNEY = side_by_side.READ + """
groups = table.pop("g") == 1
result = stats.mannwhitneyu(table[groups].to_numpy(), table[~groups].to_numpy(), use_continuity=False,
                            method="asymptotic")
print(result.statistic.sum(), result.pvalue.min())
"""
ALL_DIFFERENCES = side_by_side.READ + """
groups = (table["g"] == 1).to_numpy()
values = table["x0"].to_numpy()
print(numpy.median(numpy.subtract.outer(values[groups], values[~groups])))
"""


def command(test, fields, data):
    tests = [{test: {"variableName": "x%d" % i, "groupVariableName": "g"}} for i in range(fields)]
    return side_by_side.tarn("%s_%d" % (test, fields), data, tests, "--nominal", "g")


def job(runs):
    for title, name, rows, fields, draw in (
            ("Mann-Whitney, 1,000,000 continuous values", "two_groups", side_by_side.ROWS, 1, normal),
            ("Mann-Whitney, 1,000,000 values from 1 to 7", "two_groups_steps", side_by_side.ROWS, 1, seven_steps),
            ("Mann-Whitney, 2,000 fields of 2,000 rows", "two_groups", 2_000, 2_000, normal)):
        data = side_by_side.grouped_table(name, 2, draw, rows, fields)
        side_by_side.compare(title, command("IMannWhitneyU", fields, data), side_by_side.python(MANN_WHITNEY, data),
                             runs)
    data = side_by_side.grouped_table("two_groups", 2, normal, 10_000)
    side_by_side.compare("Hodges-Lehmann, 10,000 values", command("IHodgesLehmannEstimateGroups", 1, data),
                         side_by_side.python(ALL_DIFFERENCES, data), runs)


if __name__ == "__main__":
    side_by_side.main(job)
