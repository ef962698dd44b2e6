#!/usr/bin/env python3
"""Times the Friedman test on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: related_samples_scipy.py [RUNS]

Both read the whole table and test its first five columns. SciPy has neither Kendall's coefficient of concordance nor
Cochran's Q test; the first one is the same work as the Friedman test.
"""
import side_by_side
from side_by_side import timing

FIELDS = ["x0", "x1", "x2", "x3", "x4"]

FRIEDMAN = side_by_side.READ + """
print(stats.friedmanchisquare(*(table[name] for name in %r)))
""" % (FIELDS,)


def job(runs):
    data = timing.normal_table()
    tests = [{"RFriedmansTwoWayByRanks": {"variableName": FIELDS, "typeOfMultipleComparison": "none"}}]
    side_by_side.compare("Friedman test of 5 fields", side_by_side.tarn("friedman", data, tests),
                         side_by_side.python(FRIEDMAN, data), runs)


if __name__ == "__main__":
    side_by_side.main(job)
