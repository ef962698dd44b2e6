#!/usr/bin/env python3
"""Times the Kolmogorov-Smirnov tests and the Wilcoxon test of one field side by side: tarn, and pandas with SciPy.

Both read a whole CSV of 1,000,000 rows: six columns of normal values, or one with a group of two. SciPy has neither
Lilliefors' test, so that its side estimates the parameters and then tests as if they were given, nor the
Wald-Wolfowitz test. What is compared of the test of two groups is D: our statistic is another multiple of it, and
beyond its range at that size.
"""
import side_by_side
from side_by_side import timing

ONE_SAMPLE = side_by_side.READ + """
x = table["x0"].to_numpy()
result = stats.kstest(x, stats.norm(x.mean(), x.std(ddof=1)).cdf, method="asymp")
print(result.statistic, result.pvalue)
"""
WILCOXON = side_by_side.READ + """
result = stats.wilcoxon(table["x0"].to_numpy() - 0.1, correction=False, method="asymptotic")
print(result.statistic, result.pvalue)
"""
TWO_SAMPLES = side_by_side.READ + """
x = table["x0"].to_numpy()
first = (table["g"] == 1).to_numpy()
result = stats.ks_2samp(x[first], x[~first], method="asymp")
print(result.statistic, result.pvalue)
"""


def job(options):
    columns = timing.normal_table(options.rows)
    groups, steps = (timing.grouped_table(name, 2, draw, options.rows)
                     for name, draw in (("two_groups", timing.normal), ("two_groups_steps", timing.seven_steps)))
    two_groups = {"groupVariableName": "g"}
    for title, test, keys, data, peer, statistic in (
            ("Kolmogorov-Smirnov, one field, parameters from the data", "OKolmogorovSmirnovNormal",
             {"isUseSample": True}, columns, ONE_SAMPLE, "Absolute"),
            ("Wilcoxon, one field", "OWilcoxonSignedRanks", {"userSpecifyTestValue": True, "testValue": 0.1}, columns,
             WILCOXON, timing.smaller_rank_sum),
            ("Kolmogorov-Smirnov, two groups, continuous", "IKolmogorovSmirnov", two_groups, groups, TWO_SAMPLES,
             "Absolute"),
            ("Kolmogorov-Smirnov, two groups, values from 1 to 7", "IKolmogorovSmirnov", two_groups, steps,
             TWO_SAMPLES, "Absolute")):
        more = [] if data == columns else ["--nominal", "g"]
        side_by_side.compare(title, options, timing.tarn(test, data, [{test: dict(keys, variableName="x0")}], *more),
                             side_by_side.python(peer, data), statistic)


if __name__ == "__main__":
    side_by_side.main(__doc__, job)
