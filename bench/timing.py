"""What the timing scripts share: tables made once, one timed run, runs of several sides in turn, and their table.

Every figure is a median. Wall time is what somebody waits for, CPU time what all threads of a side took together; both
are always shown. The sides of a comparison run in turn, round by round, so that a machine whose speed drifts treats
them alike, and a ratio is the median of the ratios of the rounds.
"""
import argparse
import collections
import json
import math
import os
import platform
import random
import re
import statistics
import subprocess
import sys
import time

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
FOLDER = os.path.join(ROOT, "build", "bench")
TARN = os.path.join(ROOT, "build", "tarn")

ROWS = 1_000_000

Figures = collections.namedtuple("Figures", "wall cpu memory")  # seconds, seconds, MB; memory is None within a process

# One competitor: `measure` does the job once and returns its Figures and what came out of it, if that is asked for.
Side = collections.namedtuple("Side", "name measure")


# ---- Options and the machine ----

def parser(doc, runs=5, rows=None):
    """The options that every script has. `--rows` is for trying a script; the figures are those of the default."""
    options = argparse.ArgumentParser(description=doc, formatter_class=argparse.RawDescriptionHelpFormatter)
    options.add_argument("--runs", type=int, default=runs, help="how many rounds are timed (%(default)s)")
    options.add_argument("--only", default="", metavar="TEXT", help="the jobs with that text in their title alone")
    if rows:
        options.add_argument("--rows", type=int, default=rows, help="records of the tables (%(default)s)")
    return options


def processor():
    try:
        with open("/proc/cpuinfo") as lines:
            return next(line.split(":")[1].strip() for line in lines if line.startswith("model name"))
    except (OSError, StopIteration):
        return platform.machine()


def print_machine(*more):
    """What the figures below were measured on; `more` are the versions of the other side."""
    version = subprocess.run([TARN, "--version"], capture_output=True, text=True, check=True).stdout.split("\n")[0]
    print("%s, %d cores, load %.1f; %s" % (processor(), len(os.sched_getaffinity(0)), os.getloadavg()[0],
                                           "; ".join((version, "Python " + platform.python_version()) + more)))


# ---- Tables ----

def normal(rng):
    return rng.gauss(0.1, 1.0)


def seven_steps(rng):
    return rng.randint(1, 7)


def table(name, header, draw, rows):
    """The path of a CSV file; `draw` gives the cells of a row from a random.Random. Made once."""
    os.makedirs(FOLDER, exist_ok=True)
    path = os.path.join(FOLDER, "%s_%dx%d.csv" % (name, rows, len(header)))
    if not os.path.exists(path):
        rng = random.Random(20262)
        part = "%s.%d.part" % (path, os.getpid())
        with open(part, "w") as out:
            out.write(",".join(header) + "\n")
            for _ in range(rows):
                out.write(",".join(map(repr, draw(rng))) + "\n")
        os.rename(part, path)
    return path


def normal_table(rows=ROWS, columns=6):
    """Normal values with all their digits."""
    return table("normal", ["x%d" % i for i in range(columns)], lambda rng: [normal(rng) for _ in range(columns)], rows)


def grouped_table(name, groups, draw, rows=ROWS, fields=1):
    """The group field "g", from 1 to `groups`, in front of "x0" and so on."""
    return table(name, ["g"] + ["x%d" % i for i in range(fields)],
                 lambda rng: [rng.randint(1, groups)] + [draw(rng) for _ in range(fields)], rows)


# ---- The command ----

def tarn(name, data, tests, *more, settings=None):
    """The command that runs a plan, kept under `name`."""
    os.makedirs(FOLDER, exist_ok=True)
    plan = os.path.join(FOLDER, name + ".plan.json")
    with open(plan, "w") as out:
        json.dump({**(settings or {}), "tests": tests}, out)
    return [TARN, "run", "--data", data, "--plan", plan, "--quiet", *more]


def has_brief():
    """Whether this command makes documents without descriptives."""
    text = subprocess.run([TARN, "run", "--help"], capture_output=True, text=True, check=True).stdout
    return "--brief" in text


LIMIT_STATUS = 124  # of timeout(1)


def timed(command, output=os.devnull, limit=None):
    """The figures of one run, which has to succeed. Its standard output goes to `output`. None if it takes more than
    `limit` seconds, after which it is ended."""
    spawn = [sys.executable, "-I", "-S", os.path.join(ROOT, "bench", "spawn.py"), output]
    bound = ["timeout", str(limit)] if limit else []
    run = subprocess.run(spawn + bound + command, stdout=subprocess.PIPE, text=True)
    if limit and run.returncode == LIMIT_STATUS:
        return None
    if run.returncode != 0:
        raise SystemExit("failed: " + " ".join(command))
    return Figures(*map(float, run.stdout.split()))


def command_side(name, command):
    """A side that is a program; what comes out is its standard output."""
    def measure(keep):
        output = os.path.join(FOLDER, "output.%d" % os.getpid())
        figures = timed(command, output)
        result = None
        if keep:
            with open(output) as text:
                result = text.read()
        os.remove(output)
        return figures, result
    return Side(name, measure)


def call_side(name, call):
    """A side that is a function in this process; what comes out is what it returns."""
    def measure(_):
        start, used = time.perf_counter(), time.process_time()
        result = call()
        return Figures(time.perf_counter() - start, time.process_time() - used, None), result
    return Side(name, measure)


# ---- Documents ----

def values_of(document, name):
    """The values of all attributes of that name, in their order."""
    return [float(value) for value in re.findall(r'"%s" value="([^"]*)"' % name, document)]


def value_of(document, name):
    values = values_of(document, name)
    if not values:
        raise SystemExit("the document has no " + name)
    return values[0]


def smaller_rank_sum(document):
    """What SciPy calls the statistic of the Wilcoxon test, from ours, where no difference is zero."""
    ranks, n = value_of(document, "TestStatistic"), value_of(document, "TotalN")
    return min(ranks, n * (n + 1) / 2 - ranks)


# ---- Comparing ----

def check_close(what, ours, theirs, tolerance=1e-9):
    """A comparison of two things that differ is worth nothing: it ends the script."""
    if not math.isclose(ours, theirs, rel_tol=tolerance, abs_tol=1e-12):
        raise SystemExit("the results differ: %s is %r here and %r there" % (what, ours, theirs))


def median(values):
    return statistics.median(values)


def seconds(value):
    return "%6.2f s " % value if value >= 1 else "%6.2f ms" % (1000 * value)


def compare(title, sides, runs, check, baseline=False):
    """Runs the sides in turn and prints a line for each. All but the last one are ours; their lines say how many times
    as long the last one takes, or with `baseline` how many times as long as the last one they take.

    `check` takes the results of the first round, in the order of the sides, and raises SystemExit if they differ.
    """
    check(*(side.measure(True)[1] for side in sides))  # warms the file cache, too
    rounds = [[side.measure(False)[0] for side in sides] for _ in range(runs)]

    def ratio(place, what):
        pairs = [(getattr(one[place], what), getattr(one[-1], what)) for one in rounds]
        return median([ours / theirs if baseline else theirs / ours for ours, theirs in pairs])

    print(title)
    for place, side in enumerate(sides):
        figures = [one[place] for one in rounds]
        walls = [one.wall for one in figures]
        line = "  %-24s wall %s (%s to %s)  CPU %s" % (
            side.name, seconds(median(walls)), seconds(min(walls)), seconds(max(walls)),
            seconds(median([one.cpu for one in figures])))
        if figures[0].memory is not None:
            line += "  peak %5.0f MB" % median([one.memory for one in figures])
        if place + 1 < len(sides):
            form = "  x last: %.2f wall, %.2f CPU" if baseline else "  last is x %.1f wall, %.1f CPU"
            line += form % (ratio(place, "wall"), ratio(place, "cpu"))
        print(line)
    sys.stdout.flush()
