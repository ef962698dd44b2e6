#!/usr/bin/env python3
"""Times the Kolmogorov-Smirnov tests and the Wilcoxon test of one field side by side: tarn, and pandas with SciPy.

usage: kolmogorov_scipy.py [RUNS]

Both read a whole CSV of 1,000,000 rows: six columns of normal values, or one with a group of two. SciPy has neither
Lilliefors' test, so that its side estimates the parameters and then tests as if they were given, nor the
Wald-Wolfowitz test.
"""
import side_by_side
from side_by_side import timing

ONE_SAMPLE = side_by_side.READ + """
x = table["x0"].to_numpy()
print(stats.kstest(x, stats.norm(x.mean(), x.std(ddof=1)).cdf, method="asymp"))
"""
WILCOXON = side_by_side.READ + """
print(stats.wilcoxon(table["x0"].to_numpy() - 0.1, correction=False, method="asymptotic"))
"""
TWO_SAMPLES = side_by_side.READ + """
x = table["x0"].to_numpy()
first = (table["g"] == 1).to_numpy()
print(stats.ks_2samp(x[first], x[~first], method="asymp"))
"""


def job(runs):
    columns = timing.normal_table()
    groups = side_by_side.grouped_table("two_groups", 2, side_by_side.normal)
    for title, test, keys, data, peer in (
            ("Kolmogorov-Smirnov, one field, parameters from the data", "OKolmogorovSmirnovNormal",
             {"isUseSample": True}, columns, ONE_SAMPLE),
            ("Wilcoxon, one field", "OWilcoxonSignedRanks", {"userSpecifyTestValue": True, "testValue": 0.1}, columns,
             WILCOXON),
            ("Kolmogorov-Smirnov, two groups", "IKolmogorovSmirnov", {"groupVariableName": "g"}, groups, TWO_SAMPLES)):
        more = ["--nominal", "g"] if data == groups else []
        side_by_side.compare(title, side_by_side.tarn(test, data, [{test: dict(keys, variableName="x0")}], *more),
                             side_by_side.python(peer, data), runs)


if __name__ == "__main__":
    side_by_side.main(job)
