#!/usr/bin/env python3
"""Times the tests of a pair of fields on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

Both read the whole table of six columns and test its first two. SciPy has no Hodges-Lehmann estimate of a pair, and a
list of all 5e11 averages does not fit; McNemar's test and that of marginal homogeneity it has not either. What is
compared of the Wilcoxon test is the rank sum: its significance is beyond our range from 46,341 pairs on.
"""
import side_by_side
from side_by_side import timing

SIGN = side_by_side.READ + """
difference = table["x1"] - table["x0"]
positive, negative = int((difference > 0).sum()), int((difference < 0).sum())
print(positive, stats.binomtest(positive, positive + negative).pvalue)
"""
WILCOXON = side_by_side.READ + """
result = stats.wilcoxon(table["x1"], table["x0"], correction=False, method="asymptotic")
print(result.statistic, result.pvalue)
"""


def job(options):
    data = timing.normal_table(options.rows)
    for title, test, peer, statistic in (("sign test", "RSign", SIGN, "PositiveDifferences"),
                                         ("Wilcoxon test of a pair", "RWilcoxonSignedRanks", WILCOXON,
                                          timing.smaller_rank_sum)):
        side_by_side.compare(title, options, timing.tarn(test, data, [{test: {"variableName": ["x0", "x1"]}}]),
                             side_by_side.python(peer, data), statistic)


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
