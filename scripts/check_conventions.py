#!/usr/bin/env python3
"""Compares the numbers of tarn with the calls of R and SciPy on docs/conventions.md; scripts/check_conventions starts it.

The page is the only list of the calls. A section whose heading ends in the name of a test, as in "(`RSign`)", has blocks
that are fenced with ```check:

    $ build/tarn analyze examples/tasting.csv ...        the run; its columns are variables of the calls
    R      d <- second - first                           preparations, any number of them
    SciPy  d = second - first

    .statistics[0].statistic  (to 1e-6)                  a value of the test in the JSON, as jq writes it
    R      sum(d > 0)                                    has to agree to 1e-9, or to what the line above says
    SciPy differs  sum(d < 0)                            has not to

Indented lines go on with the line before. Status 1 if a call doesn't do as the page says.
"""
import csv
import json
import math
import re
import shlex
import subprocess
import sys

import numpy as np
from scipy import optimize, stats

PAGE = "docs/conventions.md"
TOLERANCE = 1e-9
# A significance is one minus a distribution function, and its error some units in the last place of 1.
ABSOLUTE = 1e-15
MISSING = ("", "NA")


class Call:
    def __init__(self, language, differs, code):
        self.language, self.differs, self.code = language, bool(differs), code


class Quantity:
    def __init__(self, path, tolerance):
        self.path, self.tolerance, self.calls = path, tolerance, []


class Block:
    def __init__(self, test, command):
        self.test, self.command, self.preparations, self.quantities = test, command, [], []


# ---- The page ----

def logical_lines(lines):
    """The lines of a block, each with those that go on with it."""
    whole = []
    for line in lines:
        if line.startswith(" ") and whole:
            whole[-1] = whole[-1].removesuffix("\\") + "\n" + line.strip()
        elif line:
            whole.append(line)
    return whole


def read_block(test, lines):
    block = None
    for line in logical_lines(lines):
        if line.startswith("$ "):
            block = Block(test, shlex.split(line[2:]))
        elif line.startswith("."):
            path, tolerance = re.fullmatch(r"(\S+)(?:\s+\(to (\S+)\))?", line).groups()
            block.quantities.append(Quantity(path, float(tolerance or TOLERANCE)))
        else:
            call = Call(*re.fullmatch(r"(R|SciPy)( differs)?\s+(.*)", line, re.DOTALL).groups())
            (block.quantities[-1].calls if block.quantities else block.preparations).append(call)
    return block


def read_page():
    blocks, test, lines = [], None, None
    with open(PAGE, encoding="utf-8") as page:
        for line in page.read().splitlines():
            heading = re.fullmatch(r"## .*\(`(\w+)`\)", line)
            if heading:
                test = heading[1]
            elif line == "```check":
                lines = []
            elif line == "```" and lines is not None:
                blocks.append(read_block(test, lines))
                lines = None
            elif lines is not None:
                lines.append(line)
    return blocks


# ---- The three programs ----

def run_tarn(block):
    """The test in the JSON, the last one of its name."""
    done = subprocess.run(block.command + ["--format", "json"], capture_output=True, text=True)
    if done.returncode != 0:
        sys.exit("%s: %s" % (" ".join(block.command), done.stderr))
    return [test for test in json.loads(done.stdout)["tests"] if test["test"] == block.test][-1]


def value_at(value, path):
    """Numbers at a path as jq writes it: .pairs[0].p is one, .pairs[].p a list."""
    values = [value]
    for name, index in re.findall(r"\.(\w+)|\[(\d*)\]", path):
        if name:
            values = [each[name] for each in values]
        elif index:
            values = [each[int(index)] for each in values]
        else:
            values = [inner for each in values for inner in each]
    return [float("nan" if each is None else each) for each in values]


def table_of(block):
    return next(word for word in block.command if word.endswith(".csv"))


def run_scipy(block):
    with open(table_of(block), encoding="utf-8") as file:
        rows = list(csv.DictReader(file))
    names = {"np": np, "stats": stats, "optimize": optimize}
    for column in rows[0]:
        cells = [row[column] for row in rows]
        try:
            names[column] = np.array([math.nan if cell in MISSING else float(cell) for cell in cells])
        except ValueError:
            names[column] = np.array(cells)
    for call in block.preparations:
        if call.language == "SciPy":
            exec(call.code, names)
    return [np.ravel(eval("(" + call.code + ")", names)).astype(float).tolist()
            for quantity in block.quantities for call in quantity.calls if call.language == "SciPy"]


R_START = """
read <- function(path) list2env(read.csv(path, na.strings = c("", "NA")), envir = new.env())
say <- function(value) cat(sprintf("%.17g", as.numeric(value)), "\\n")
run <- function(code) suppressWarnings(eval(parse(text = code), columns))
"""


def run_r(blocks):
    """One run of R for all blocks; a line of numbers for each call."""
    script = [R_START]
    for block in blocks:
        script.append("columns <- read(%s)" % json.dumps(table_of(block)))
        script += ["run(%s)" % json.dumps(call.code) for call in block.preparations if call.language == "R"]
        script += ["say(run(%s))" % json.dumps(call.code)
                   for quantity in block.quantities for call in quantity.calls if call.language == "R"]
    done = subprocess.run(["R", "--vanilla", "--no-echo"], input="\n".join(script), capture_output=True,
                          text=True)
    if done.returncode != 0:
        sys.exit("R: " + done.stderr)
    return [[float(number) for number in line.split()] for line in done.stdout.splitlines()]


# ---- The comparison ----

def relative(a, b):
    if a == b:
        return 0.0
    return abs(a - b) / abs(b) if b and math.isfinite(a - b) else math.inf


def verdict(call, quantity, ours, theirs):
    """Whether the call does as the page says, and a word for the table."""
    pairs = list(zip(ours, theirs))
    agree = len(ours) == len(theirs) > 0 and all(
        relative(a, b) <= quantity.tolerance or abs(a - b) <= ABSOLUTE for a, b in pairs)
    if call.differs:
        return (False, "AGREES") if agree else (all(map(math.isfinite, theirs)), "differs")
    if not agree:
        return False, "NO"
    apart = max(relative(a, b) for a, b in pairs)
    return True, "%d digits" % min(15, max(0, math.floor(-math.log10(apart))) if apart else 15)


def shown(values):
    text = ", ".join("%.12g" % value for value in values[:2])
    return text + (", .." if len(values) > 2 else "")


def main():
    blocks = [block for block in read_page() if len(sys.argv) < 2 or block.test in sys.argv[1:]]
    from_r = iter(run_r(blocks))
    row = "%-28s %-40s %-38s %-38s %-10s %s"
    print(row % ("test", "quantity", "tarn", "other", "agrees", "call"))
    failures = count = 0
    for block in blocks:
        test = run_tarn(block)
        from_scipy = iter(run_scipy(block))
        for quantity in block.quantities:
            ours = value_at(test, quantity.path)
            for call in quantity.calls:
                theirs = next(from_r if call.language == "R" else from_scipy)
                is_good, word = verdict(call, quantity, ours, theirs)
                count += 1
                failures += not is_good
                print(row % (block.test, quantity.path, shown(ours), shown(theirs), word,
                             call.language + ": " + " ".join(call.code.split())))
    print("%d calls, %d of them not as %s says" % (count, failures, PAGE))
    return 1 if failures or not count else 0


if __name__ == "__main__":
    sys.exit(main())
