#!/usr/bin/env python3
"""Times the Mann-Whitney test side by side: tarn, and pandas with SciPy.

Three tables: 1,000,000 rows of a continuous field and of one with the values 1 to 7, and 2,000 fields of 2,000 rows
that are all tested against one group field, with the full document and with the brief one. Both sides read the whole
table. SciPy has no Hodges-Lehmann estimate; for one beside ours, NumPy makes all differences of 2 x 5,000 values.
"""
import side_by_side
from side_by_side import timing

SCREENED = 2_000

# U of the second group, as we have it. Of many fields the sum.
MANN_WHITNEY = side_by_side.READ + """
groups = table.pop("g") == 2
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
    return timing.tarn("%s_%d" % (test, fields), data, tests, "--nominal", "g")


def sum_of_statistics(document):
    return sum(timing.values_of(document, "TestStatistic"))


def job(options):
    for title, name, draw in (("Mann-Whitney, continuous", "two_groups", timing.normal),
                              ("Mann-Whitney, values from 1 to 7", "two_groups_steps", timing.seven_steps)):
        data = timing.grouped_table(name, 2, draw, options.rows)
        side_by_side.compare(title, options, command("IMannWhitneyU", 1, data),
                             side_by_side.python(MANN_WHITNEY, data))

    screened = min(SCREENED, options.rows)
    data = timing.grouped_table("two_groups", 2, timing.normal, screened, screened)
    ours = command("IMannWhitneyU", screened, data)
    theirs = side_by_side.python(MANN_WHITNEY, data)
    title = "Mann-Whitney, %d fields of %d rows" % (screened, screened)
    side_by_side.compare(title + ", full document", options, ours, theirs, sum_of_statistics)
    if timing.has_brief():
        side_by_side.compare(title + ", brief document", options, ours + ["--brief"], theirs, sum_of_statistics)
    elif options.only in title:
        print("%s, brief document: not run, this tarn has no --brief" % title)

    data = timing.grouped_table("two_groups", 2, timing.normal, min(10_000, options.rows))
    side_by_side.compare("Hodges-Lehmann, 10,000 values", options, command("IHodgesLehmannEstimateGroups", 1, data),
                         side_by_side.python(ALL_DIFFERENCES, data), "Estimate")


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
