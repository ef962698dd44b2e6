#!/usr/bin/env python3
"""Runs the calls of R that the case.json beside each expected.xml names, and compares them with that document.

usage: verify.py [CASE ...]         needs R, which no other test does

The columns of data.csv are variables of the calls, `data` is the whole table, and the functions of verify.R are there.
A quantity is a path through the tables of the test at that position, from 1:

    StatisticsResult/TestStatistic           the value of a row
    PairwiseResult/Content column 5          a cell of each row of a simple table
    StepwiseResult/StepwiseInfo row 2        all cells of one row

Numbers have to agree to 1e-9 of the value, or to what "within" says. They may be off by 5e-15, since significances are
one minus a distribution function, whose error is about 1e-16, and that of 21 pairs is 21 times as large. "__MISSING__"
and an empty cell are NA. The table itself has to be what "table" makes. Status 1 if anything differs.
"""
import json
import math
import os
import subprocess
import sys
import xml.etree.ElementTree as xml

HERE = os.path.dirname(os.path.abspath(__file__))
RELATIVE = 1e-9
ABSOLUTE = 5e-15
NONE = ("", "__MISSING__", "NA")


def number(text):
    return math.nan if text in NONE else float(text)


def child(node, tag, name):
    found = [each for each in node if each.tag.split("}")[-1] == tag and each.get("name") == name]
    if len(found) != 1:
        sys.exit("%d of %s %s" % (len(found), tag, name))
    return found[0]


def expected_values(test, quantity):
    path, _, place = quantity.partition(" ")
    *tables, last = path.split("/")
    for name in tables:
        test = child(test, "StructuredTable", name)
    if not place:
        return [number(child(test, "Attribute", last).get("value"))]
    rows = [(row.text or "").split(";") for row in child(test, "SimpleTable", last) if row.tag.split("}")[-1] == "Row"]
    kind, position = place.split(" ")
    cells = [row[int(position) - 1] for row in rows] if kind == "column" else rows[int(position) - 1]
    return [number(cell) for cell in cells]


def agree(expected, actual, within):
    if math.isnan(expected) or math.isnan(actual):
        return math.isnan(expected) and math.isnan(actual)
    return abs(expected - actual) <= max(within * abs(expected), ABSOLUTE)


def run_r(folder, case):
    """The lines that R writes: whether the table is that of its source, then one line per call."""
    lines = ["source('../verify.R')", "data <- read.csv('data.csv', check.names = FALSE)", "attach(data)"]
    lines += ["source_table <- as.data.frame(%s)" % case["table"],
              "texts <- function(d) as.data.frame(lapply(d, as.character))",  # factors and numbers alike
              "cat(names(data) == names(source_table), texts(data) == texts(source_table), '\\n')"]
    lines += case.get("setup", [])
    for entry in case["verified"]:
        lines += ["cat(formatC(as.numeric({%s}), digits = 17), '\\n')" % entry["call"]]
    done = subprocess.run(["Rscript", "--vanilla", "-"], input="\n".join(lines), text=True, cwd=folder,
                          stdout=subprocess.PIPE, stderr=subprocess.PIPE)
    if done.returncode != 0:
        sys.exit("%s: %s" % (folder, done.stderr))
    return [line.split() for line in done.stdout.splitlines()]


def check(name):
    folder = os.path.join(HERE, name)
    with open(os.path.join(folder, "case.json"), encoding="utf-8") as file:
        case = json.load(file)
    tests = [each for each in xml.parse(os.path.join(folder, "expected.xml")).getroot().iter()
             if each.tag.split("}")[-1] == "Algorithm"]
    same, *answers = run_r(folder, case)
    wrong = []
    if set(same) - {"TRUE", "NA"}:
        wrong.append("data.csv is not " + case["table"])
    for entry, answer in zip(case["verified"], answers, strict=True):
        expected = expected_values(tests[int(entry["test"]) - 1], entry["quantity"])
        actual = [number(text) for text in answer]
        within = float(entry.get("within", RELATIVE))
        if len(expected) != len(actual) or not all(agree(e, a, within) for e, a in zip(expected, actual)):
            wrong.append("test %(test)s, %(quantity)s: %(call)s" % entry + " is %s, expected %s" % (actual, expected))
    print("%-32s %3d calls, %d wrong" % (name, len(answers), len(wrong)))
    for line in wrong:
        print("    " + line)
    return not wrong


def main():
    names = sys.argv[1:] or sorted(entry.name for entry in os.scandir(HERE) if entry.is_dir())
    results = [check(name) for name in names]
    sys.exit(0 if all(results) else 1)


if __name__ == "__main__":
    main()
