#!/usr/bin/env python3
"""Times the binomial and the chi-square test on a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

Both read the whole table: a normal value "x", cut at 0.1, and a category "c" from 1 to 5. SciPy has no runs test; for
one beside ours, NumPy counts the runs. The Clopper-Pearson interval is SciPy's `proportion_ci`.
"""
import side_by_side
from side_by_side import timing

CUT = 0.1

BINOMIAL = side_by_side.READ + """
test = stats.binomtest(int((table["x"] <= %r).sum()), len(table), 0.5)
print(test.k, test.pvalue, test.proportion_ci(0.95, "exact"))
""" % CUT
CHI_SQUARE = side_by_side.READ + """
result = stats.chisquare(table["c"].value_counts().to_numpy())
print(result.statistic, result.pvalue)
"""
RUNS = side_by_side.READ + """
lower = table["x"].to_numpy() < %r
runs = 1 + numpy.count_nonzero(lower[1:] != lower[:-1])
first, n = int(lower.sum()), len(lower)
product = 2 * first * (n - first)
z = (runs - product / n - 1) / (((product - n) * product) / (n * n * (n - 1))) ** 0.5
print(runs, 2 * stats.norm.cdf(-abs(z)))
""" % CUT

CUT_X = {"variableName": "x", "contVarClassFormation": "givenCutPoint", "givenCutPoint": CUT}
JOBS = {
    "binomial": (BINOMIAL, [{"OBinomial": CUT_X},
                            {"OEstimateConfidenceInterval": dict(CUT_X, isDoClopperPearson=True)}]),
    "chi-square": (CHI_SQUARE, [{"OChiSquare": {"variableName": "c", "classFormation": "getFromData"}}]),
    "runs": (RUNS, [{"ORuns": {"variableName": "x", "contVarClassFormation": "cutPointValue", "cutPointValue": CUT}}]),
}


def job(options):
    data = timing.table("onesample", ["x", "c"], lambda rng: [timing.normal(rng), rng.randint(1, 5)], options.rows)
    for name, (peer, tests) in JOBS.items():
        side_by_side.compare(name, options, timing.tarn(name, data, tests, "--nominal", "c"),
                             side_by_side.python(peer, data))


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
