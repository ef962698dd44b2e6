#!/usr/bin/env python3
"""Asks R (4.2) and SciPy (1.17) again for the significances of the calls in like.tsv, on the table small.csv, and says
which have changed. A line holds the system, the arguments of `tarn analyze`, the call and its significance.

usage: check.py [--write]
"""
import os
import subprocess
import sys
import warnings

import numpy as np
import pandas as pd
import scipy.stats

FOLDER = os.path.dirname(os.path.abspath(__file__))
LINES = os.path.join(FOLDER, "like.tsv")
TABLE = os.path.join(FOLDER, "small.csv")
warnings.simplefilter("ignore")


def ask_r(calls):
    script = "options(warn = -1); attach(read.csv('%s', na.strings = ''))\n" % TABLE
    script += "".join("cat(sprintf('%%.17g\\n', (%s)$p.value))\n" % call for call in calls)
    return subprocess.run(["Rscript", "-"], input=script, capture_output=True, text=True, check=True).stdout.split()


def ask_scipy(call):
    table = pd.read_csv(TABLE)
    names = {name: table[name].to_numpy() for name in table}
    names.update(np=np, scipy=scipy, df=table)
    return "%.17g" % eval(call, names).pvalue


def main():
    with open(LINES, encoding="utf-8") as file:
        lines = [line.rstrip("\n").split("\t") for line in file]
    of_r = iter(ask_r([line[2] for line in lines if line[0] == "r"]))
    failures = 0
    for line in lines:
        now = next(of_r) if line[0] == "r" else ask_scipy(line[2])
        # R works out Kolmogorov's limit to 1e-6 only, and the last digits of the others differ with libraries.
        if len(line) > 3 and abs(float(now) - float(line[3])) > 1e-11 * float(now):
            print("%s: recorded %s, now %s" % (line[2], line[3], now))
            failures += 1
        line[3:] = [now]
    if sys.argv[1:] == ["--write"]:
        with open(LINES, "w", encoding="utf-8") as file:
            file.writelines("\t".join(line) + "\n" for line in lines)
        return 0
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
