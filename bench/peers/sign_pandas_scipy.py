#!/usr/bin/env python3
"""Times the sign test of two columns of a CSV of 1,000,000 rows side by side: tarn, and pandas with SciPy.

usage: sign_pandas_scipy.py [RUNS]

Both read the whole table with exact numbers, test the first two columns and write their result.
"""
import os
import re

import side_by_side
from side_by_side import timing

PEER = side_by_side.READ + """
difference = table["x1"] - table["x0"]
positive, negative = int((difference > 0).sum()), int((difference < 0).sum())
print(positive, stats.binomtest(positive, positive + negative).pvalue)
"""


def job(runs):
    data = timing.normal_table()
    ours, theirs = (os.path.join(timing.FOLDER, name) for name in ("ours.xml", "theirs.txt"))
    side_by_side.compare("sign test", side_by_side.tarn("sign", data, [{"RSign": {"variableName": ["x0", "x1"]}}]),
                         side_by_side.python(PEER, data), runs, ours, theirs)
    with open(ours) as document, open(theirs) as line:
        our_count = re.search(r'"PositiveDifferences" value="(\d+)"', document.read()).group(1)
        their_count = line.read().split()[0]
    if our_count != their_count:
        raise SystemExit("the results differ: %s and %s positive differences" % (our_count, their_count))


if __name__ == "__main__":
    side_by_side.main(job)
