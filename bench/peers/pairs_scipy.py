#!/usr/bin/env python3
"""Times the tests of a pair of fields on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: pairs_scipy.py [RUNS]

Both read the whole table and test its first two columns. SciPy has no Hodges-Lehmann estimate of a pair, and a list of
all 5e11 averages does not fit; McNemar's test and that of marginal homogeneity it has not either.
"""
import side_by_side
from side_by_side import timing

WILCOXON = side_by_side.READ + """
print(stats.wilcoxon(table["x1"], table["x0"], correction=False, method="asymptotic"))
"""


def job(runs):
    data = timing.normal_table()
    tests = [{"RWilcoxonSignedRanks": {"variableName": ["x0", "x1"]}}]
    side_by_side.compare("Wilcoxon test of a pair", side_by_side.tarn("wilcoxon", data, tests),
                         side_by_side.python(WILCOXON, data), runs)


if __name__ == "__main__":
    side_by_side.main(job)
