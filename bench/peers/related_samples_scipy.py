#!/usr/bin/env python3
"""Times the Friedman test on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

Both read the whole table of six columns and test its first five. SciPy has neither Kendall's coefficient of concordance
nor Cochran's Q test; the first one is the same work as the Friedman test.
"""
import side_by_side
from side_by_side import timing

FIELDS = ["x0", "x1", "x2", "x3", "x4"]

FRIEDMAN = side_by_side.READ + """
result = stats.friedmanchisquare(*(table[name] for name in %r))
print(result.statistic, result.pvalue)
""" % (FIELDS,)

# Both subtract two numbers of the size of the number of records from one another.
TOLERANCE = 1e-6


def job(options):
    data = timing.normal_table(options.rows)
    tests = [{"RFriedmansTwoWayByRanks": {"variableName": FIELDS, "typeOfMultipleComparison": "none"}}]
    side_by_side.compare("Friedman test of 5 fields", options, timing.tarn("friedman", data, tests),
                         side_by_side.python(FRIEDMAN, data), tolerance=TOLERANCE)


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
