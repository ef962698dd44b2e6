#!/usr/bin/env python3
"""Gives the command small inputs of many shapes, each below 7 MB, and looks whether each is done or refused in time.

usage: try_shapes.py --program build/release/tarn [--seconds 10] [--cpu] [--only TEXT] [--list]

A shape is what makes one thing large that a run grows with: groups, categories, fields, rows, ties, names, tests of a
plan, parts, conditions. A run ends well if it has status 0, or status 1 or 2 with one line or more that says why, takes
no more than --seconds and 2 GB, and is no crash. --cpu counts what the process used of the processors, where a machine
is busy with other work. Prints a line for each shape that does not end well, and the largest of the others.
"""

import argparse
import json
import os
import pathlib
import random
import resource
import subprocess
import sys
import tempfile
import time
import zlib

LARGEST_INPUT = 7_000_000
MOST_MEMORY = 2 << 30
THREADS = ["--threads", "2"]
MEMORY = ["--memory", "2G"]  # which the command keeps to by itself


def table(path, names, rows):
    with open(path, "w") as file:
        file.write(",".join(names) + "\n")
        for row in rows:
            file.write(",".join(map(str, row)) + "\n")


def numbered(count, stem="v"):
    return [f"{stem}{i}" for i in range(count)]


# ---- Shapes: the name, what makes the table at a path, and the command ----

def many_groups():
    """Several groups that differ, so that what comes behind the test is made, too."""
    def make(groups, size, trend):
        def write(path):
            numbers = random.Random(groups)
            shift = (lambda g: g) if trend else (lambda g: 3 * g / groups)
            table(path, ["y", "g"], ((f"{shift(g) + numbers.gauss(0, 1):.4f}", g) for g in range(groups)
                                     for _ in range(size)))
        return write
    for groups, size in ((2, 100_000), (30, 10_000), (300, 1000), (1000, 3), (1000, 300), (3000, 3), (10_000, 3),
                         (100_000, 3)):
        for test in ("kruskal-wallis", "median", "jonckheere"):
            for compare in ("pairwise", "stepwise"):
                yield (f"{groups} groups of {size}, {test} {compare}", make(groups, size, size == 3),
                       ["analyze", "{data}", "--independent", "y", "--group", "g", "--ordinal", "g", "--tests", test,
                        "--compare", compare, *THREADS])
    for groups in (1000, 10_000, 100_000):
        yield (f"{groups} groups of 3, chosen by the command", make(groups, 3, True),
               ["analyze", "{data}", "y ~ g", "--nominal", "g", *THREADS])


def many_fields():
    def numbers_of(fields, rows):
        def write(path):
            numbers = random.Random(fields)
            table(path, numbered(fields), ([f"{i / fields * 5 + numbers.gauss(0, 1):.3f}" for i in range(fields)]
                                           for _ in range(rows)))
        return write

    def classes_of(fields, rows):
        def write(path):
            numbers = random.Random(fields)
            table(path, numbered(fields), (["yes" if numbers.random() < i / fields else "no" for i in range(fields)]
                                           for _ in range(rows)))
        return write
    for fields, rows in ((3, 100_000), (30, 10_000), (300, 1000), (1000, 3), (1000, 300), (3000, 10), (30_000, 3)):
        for test, make in (("friedman", numbers_of), ("kendall", numbers_of), ("cochran", classes_of)):
            for compare in ("pairwise", "stepwise"):
                yield (f"{fields} fields of {rows} rows, {test} {compare}", make(fields, rows),
                       ["analyze", "{data}", "--related", "v*", "--tests", test, "--compare", compare, *THREADS])
    for fields, rows in ((300, 1000), (3000, 100), (30_000, 10), (100_000, 5), (300_000, 1)):
        for family in ("one-sample", "related"):
            yield (f"{fields} fields of {rows} rows, {family} by choice", numbers_of(fields, rows),
                   ["analyze", "{data}", f"--{family}", "v*", *THREADS])
        yield f"{fields} fields of {rows} rows, a look", numbers_of(fields, rows), ["look", "{data}"]


def many_fields_in_other_commands():
    """What names fields of a wide table in all ways that a command has."""
    def numbers_of(fields, rows, write_beside=None, missing=False):
        def write(path):
            numbers = random.Random(fields)
            table(path, numbered(fields), (["NA" if missing and numbers.random() < 0.2 else numbers.randrange(9)
                                            for _ in range(fields)] for _ in range(rows)))
            if write_beside:
                name, content = write_beside(fields)
                pathlib.Path(path).with_name(name).write_text(json.dumps(content, separators=(",", ":")))
        return write

    def words_of(fields, rows):
        return lambda path: table(path, numbered(fields), ([f"w{(i + row) % 5}" for i in range(fields)]
                                                           for row in range(rows)))

    def descriptor(fields):
        return "fields.json", {"fields": [{"name": name} for name in numbered(fields)]}

    def request(fields):
        return "asked.json", {"oneSampleVariables": numbered(fields), "isAutomaticallyOneSample": True}

    def plan_of_one(fields):
        return "asked.json", {"tests": [{"sign": {"variableName": ["v7", f"v{fields - 1}"]}}]}

    def plan_of_all(fields):
        return "asked.json", {"tests": [{"friedman": {"variableName": numbered(fields)}}]}

    run = ["run", "--data", "{data}", "--out", "{folder}/out.xml", *THREADS]
    one = ["--one-sample", "v7", "--tests", "runs", *THREADS]
    for fields, rows in ((30_000, 10), (100_000, 5), (300_000, 2)):
        plain, gaps, words = numbers_of(fields, rows), numbers_of(fields, rows, missing=True), words_of(fields, rows)
        last = f"v{fields - 1}"
        for name, make, command in (
                ("a look as JSON", gaps, ["look", "{data}", "--format", "json"]),
                ("a look at words", words, ["look", "{data}"]),
                ("a look at words as JSON", words, ["look", "{data}", "--format", "json"]),
                ("a look by a descriptor", numbers_of(fields, rows, descriptor),
                 ["look", "{data}", "--fields", "{folder}/fields.json", "--format", "json"]),
                ("one field", plain, ["analyze", "{data}", *one]),
                ("one field by a descriptor", numbers_of(fields, rows, descriptor),
                 ["analyze", "{data}", "--fields", "{folder}/fields.json", *one]),
                ("one field in capitals", plain,
                 ["analyze", "{data}", "--one-sample", last.upper(), "--tests", "runs", *THREADS]),
                ("a field that isn't there", plain, ["analyze", "{data}", "--one-sample", "x", *THREADS]),
                ("a formula", plain, ["analyze", "{data}", f"{last} ~ v7", "--nominal", "v7", *THREADS]),
                ("repeated measures", plain, ["analyze", "{data}", f"{last} ~ v7 | v8", *THREADS]),
                ("a condition", plain, ["analyze", "{data}", "--where", f"{last} >= 0", *one]),
                ("parts", plain, ["analyze", "{data}", "--split", last, "--nominal", last, *one]),
                ("a page", plain, ["analyze", "{data}", "--report", "{folder}/page.html", *one]),
                ("all by themselves, brief, as JSON", gaps,
                 ["analyze", "{data}", "--one-sample", "*", "--brief", "--format", "json", *THREADS]),
                ("all, listwise, brief, as JSON", plain,
                 ["analyze", "{data}", "--one-sample", "*", "--missing", "listwise", "--brief", "--format", "json",
                  *THREADS]),
                ("all of words, brief", words,
                 ["analyze", "{data}", "--one-sample", "*", "--tests", "wilcoxon,chi-square", "--brief", *THREADS]),
                ("all in groups, brief", plain,
                 ["analyze", "{data}", "--independent", "v*", "--group", "v0", "--nominal", "v0", "--brief", *THREADS]),
                ("a tenth of them in groups, brief", numbers_of(fields, rows),
                 ["analyze", "{data}", "--independent", "v?*1", "--group", "v0", "--nominal", "v0", "--brief", *THREADS]),
                ("all related, two of them ordinal", plain,
                 ["analyze", "{data}", "--related", "v*", "--ordinal", "v1,v2", "--tests", "friedman", *THREADS]),
                ("all related as CSV, brief", plain,
                 ["analyze", "{data}", "--related", "v*", "--tests", "friedman", "--brief", "--format", "csv", *THREADS]),
                ("all related, a page", plain,
                 ["analyze", "{data}", "--related", "v*", "--tests", "friedman", "--report", "{folder}/page.html",
                  *THREADS]),
                ("all related, two tests", plain,
                 ["analyze", "{data}", "--related", "v*", "--tests", "friedman,kendall", *THREADS]),
                ("a plan of two", numbers_of(fields, rows, plan_of_one), [*run, "--plan", "{folder}/asked.json"]),
                ("a plan of all", numbers_of(fields, rows, plan_of_all), [*run, "--plan", "{folder}/asked.json"]),
                ("a request of all", numbers_of(fields, rows, request), [*run, "--settings", "{folder}/asked.json"]),
                ("a request of all, brief", numbers_of(fields, rows, request),
                 [*run, "--brief", "--settings", "{folder}/asked.json"])):
            yield f"{fields} fields of {rows} rows, {name}", make, command


def many_rows():
    def pair(rows, kind):
        def write(path):
            numbers = random.Random(rows)
            cell = {"ties": lambda: numbers.randrange(5), "whole": lambda: numbers.randrange(10**6),
                    "equal": lambda: 7, "tiny steps": lambda: f"{1 + numbers.randrange(9) * 1e-13!r}"}[kind]
            table(path, ["x", "y", "g"], ((cell(), cell(), i % 2) for i in range(rows)))
        return write
    for rows in (1000, 200_000, 430_000):
        for kind in ("ties", "whole", "equal", "tiny steps"):
            if kind == "tiny steps" and rows > 200_000:
                continue
            rows_of_kind = min(rows, 150_000) if kind == "tiny steps" else rows
            make = pair(rows_of_kind, kind)
            yield (f"{rows_of_kind} rows, {kind}, pair", make,
                   ["analyze", "{data}", "--related", "x,y", "--continuous", "x,y", "--tests",
                    "sign,wilcoxon,hodges-lehmann", *THREADS])
            yield (f"{rows_of_kind} rows, {kind}, two groups", make,
                   ["analyze", "{data}", "--independent", "x", "--continuous", "x", "--group", "g", "--nominal", "g", "--tests",
                    "mann-whitney,kolmogorov-smirnov,wald-wolfowitz,moses,hodges-lehmann", *THREADS])
            yield (f"{rows_of_kind} rows, {kind}, one sample", make,
                   ["analyze", "{data}", "--one-sample", "x", "--continuous", "x", "--tests",
                    "kolmogorov-smirnov,runs,wilcoxon,binomial", "--test-value", "7", *THREADS])
    for choice in ("--exact", "--monte-carlo=1000"):
        for rows in (30, 1000, 200_000):
            yield (f"{rows} rows, ties, two groups {choice}", pair(rows, "ties"),
                   ["analyze", "{data}", "x ~ g", "--nominal", "g", "--continuous", "x", choice, *THREADS])
            yield (f"{rows} rows, ties, pair {choice}", pair(rows, "ties"),
                   ["analyze", "{data}", "--related", "x,y", "--continuous", "x,y", choice, *THREADS])


def many_categories():
    def make(categories, rows, stem=""):
        def write(path):
            table(path, ["a", "b"], ((f"{stem}{i % categories}", f"{stem}{(i * 7) % categories}") for i in range(rows)))
        return write
    for categories in (10, 100, 1000, 10_000, 100_000, 400_000):
        rows = max(categories, 1000)
        yield (f"{categories} categories, marginal homogeneity", make(categories, rows),
               ["analyze", "{data}", "--related", "a,b", "--ordinal", "a,b", "--tests", "marginal-homogeneity", *THREADS])
        yield (f"{categories} words, chi-square", make(categories, rows, "w"),
               ["analyze", "{data}", "--one-sample", "a", "--tests", "chi-square", *THREADS])
        yield f"{categories} words, a look", make(categories, rows, "w"), ["look", "{data}"]
        yield (f"{categories} words, parts", make(categories, rows, "w"),
               ["analyze", "{data}", "--one-sample", "b", "--split", "a", *THREADS])


def long_texts():
    def names(count, length):
        return lambda path: table(path, [f"{i}" + "n" * length for i in range(count)],
                                  ([i + row for i in range(count)] for row in range(20)))

    def cells(count, length):
        return lambda path: table(path, ["y", "g"], ((i, f"{i % count}" + "c" * length) for i in range(3 * count)))
    for count, length in ((2, 3_000_000), (100, 30_000), (10_000, 500)):
        for form in ("text", "json", "csv", "md"):
            yield (f"{count} names of {length} characters as {form}", names(count, length),
                   ["analyze", "{data}", "--one-sample", "*", "--format", form, *THREADS])
    for count, length in ((2, 1_000_000), (50, 30_000), (2000, 1000)):
        for form in ("text", "json"):
            yield (f"{count} groups with names of {length} characters as {form}", cells(count, length),
                   ["analyze", "{data}", "y ~ g", "--continuous", "y", "--format", form, *THREADS])
        yield (f"{count} groups with names of {length} characters, a page", cells(count, length),
               ["analyze", "{data}", "y ~ g", "--continuous", "y", "--report", "{folder}/page.html", *THREADS])


def odd_files():
    def content(data):
        return lambda path: pathlib.Path(path).write_bytes(data)
    half = (LARGEST_INPUT - 100) // 2
    packed = zlib.compressobj(9, zlib.DEFLATED, 31)
    bomb = b"".join([packed.compress(b"x\n"), *(packed.compress(b"1\n" * (1 << 20)) for _ in range(1500)), packed.flush()])
    for name, data in (("line breaks alone", b"\n" * half), ("commas alone", b"," * half), ("quotes alone", b'"' * half),
                       ("one row without an end", b"x," * half), ("one quoted cell", b'x\n"' + b"a\n" * half + b'"'),
                       ("zeros", b"\0" * half), ("3 GB of rows in a small file", bomb),
                       ("a field of empty cells", b"x,y\n" + b",\n" * half),
                       ("digits without an end", b"x\n" + b"1" * half),
                       ("dates", b"d\n" + b"2020-02-03T04:05:06\n" * 300_000)):
        yield f"{name}, an analysis", content(data), ["analyze", "{data}", "--one-sample", "x", *THREADS]
        yield f"{name}, a look", content(data), ["look", "{data}"]


def long_requests():
    def small(path):
        table(path, ["x", "y", "z", "g"], ((i, (i * 7) % 40, (i * 11) % 40, i % 4) for i in range(40)))

    def plan(count, entry):
        def write(path):
            small(path)
            pathlib.Path(path).with_name("plan.json").write_text(json.dumps({"tests": [entry] * count}))
        return write
    run = ["run", "--data", "{data}", "--plan", "{folder}/plan.json", "--out", "{folder}/out.xml"]
    for count in (1000, 30_000, 100_000):
        yield f"{count} sign tests in a plan", plan(count, {"sign": {"variableName": ["x", "y"]}}), run
    for count in (1000, 30_000):
        entry = {"friedman": {"variableName": ["x", "y", "z"], "typeOfMultipleComparison": "stepWise"}}
        yield f"{count} stepwise tests in a plan", plan(count, entry), run
    for count in (100, 3000):
        yield (f"a condition of {count} parts", small,
               ["analyze", "{data}", "--one-sample", "x", "--where", " or ".join(f"x == {i}" for i in range(count))])
        yield (f"a condition in {count} brackets", small,
               ["analyze", "{data}", "--one-sample", "x", "--where", "(" * count + "x > 1" + ")" * count])
        yield (f"{count} names of one field", small, ["analyze", "{data}", "--one-sample", ",".join(["x"] * count)])
        yield f"a formula of {count} names", small, ["analyze", "{data}", " + ".join(["y"] * count) + " ~ g"]
        yield (f"an order of {count} categories", small,
               ["analyze", "{data}", "y ~ g", "--order", "g=" + ",".join(map(str, range(count)))])


SHAPES = (odd_files, long_requests, long_texts, many_rows, many_categories, many_groups, many_fields,
          many_fields_in_other_commands)


# ---- Runs ----

class Run:
    def __init__(self, options, command):
        begin = time.monotonic()
        process = subprocess.Popen([str(options.program), *command, *MEMORY], stdin=subprocess.DEVNULL,
                                   stdout=subprocess.DEVNULL, stderr=subprocess.PIPE,
                                   preexec_fn=lambda: resource.setrlimit(resource.RLIMIT_CPU, (int(3 * options.seconds),) * 2))
        try:
            told = process.stderr.read()
        finally:
            _, self.status, used = os.wait4(process.pid, 0)
        self.wall = time.monotonic() - begin
        self.cpu = used.ru_utime + used.ru_stime
        self.memory = used.ru_maxrss * 1024
        self.told = told.decode(errors="replace")

    def mistake(self, options):
        seconds = self.cpu if options.cpu else self.wall
        if os.WIFSIGNALED(self.status):
            return f"ended by signal {os.WTERMSIG(self.status)}"
        code = os.WEXITSTATUS(self.status)
        if code not in (0, 1, 2):
            return f"status {code}: {self.told[-200:]}"
        if code != 0 and not self.told.startswith("tarn: "):
            return f"status {code} with {self.told[:200]!r}"
        if len(self.told) > 100_000:
            return f"{len(self.told)} bytes of messages"
        if seconds > options.seconds:
            return f"{seconds:.1f} s"
        return f"{self.memory >> 20} MB" if self.memory > MOST_MEMORY else None


def main():
    parser = argparse.ArgumentParser()
    parser.add_argument("--program", required=True, type=pathlib.Path)
    parser.add_argument("--seconds", type=float, default=10)
    parser.add_argument("--cpu", action="store_true")
    parser.add_argument("--only", default="")
    parser.add_argument("--list", action="store_true")
    options = parser.parse_args()
    ends = {"done": 0, "refused": 0, "bad": 0}
    slowest, largest = (0.0, ""), (0, "")
    for family in SHAPES:
        for name, make, command in family():
            if options.only not in name:
                continue
            with tempfile.TemporaryDirectory() as folder:
                data = str(pathlib.Path(folder, "data.csv"))
                make(data)
                for file in pathlib.Path(folder).iterdir():
                    assert file.stat().st_size < LARGEST_INPUT, (name, file.stat().st_size)
                run = Run(options, [word.replace("{data}", data).replace("{folder}", folder) for word in command])
            mistake = run.mistake(options)
            ends["bad" if mistake else "done" if run.status == 0 else "refused"] += 1
            if mistake or options.list:
                print(f"{name}: {mistake or 'good'} (status {run.status >> 8}, {run.wall:.2f} s, {run.cpu:.2f} s of "
                      f"processors, {run.memory >> 20} MB) {run.told.splitlines()[:1]}"[:400], flush=True)
            slowest = max(slowest, (run.cpu if options.cpu else run.wall, name))
            largest = max(largest, (run.memory, name))
    print(f"{sum(ends.values())} shapes: {ends['done']} done, {ends['refused']} refused, {ends['bad']} bad; "
          f"the slowest {slowest[0]:.1f} s ({slowest[1]}), the largest {largest[0] >> 20} MB ({largest[1]})")
    return 1 if ends["bad"] or not sum(ends.values()) else 0


if __name__ == "__main__":
    sys.exit(main())
