"""What the timings of this folder share: tables made once, a run of tarn, the same job in Python, and both in turn.

The runs alternate, so that a machine whose speed drifts treats both alike; the ratio is taken pair by pair.
"""
import importlib.util
import json
import os
import random
import statistics
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

ROWS = 1_000_000

# The start of every program on the other side.
READ = """
import sys
import numpy
import pandas
from scipy import stats
table = pandas.read_csv(sys.argv[1], float_precision="round_trip")
"""


def normal(rng):
    return rng.gauss(0.1, 1.0)


def seven_steps(rng):
    return rng.randint(1, 7)


def table(name, header, draw, rows=ROWS):
    """The path of a CSV file; `draw` gives the cells of a row from a random.Random. Made once."""
    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "%s_%dx%d.csv" % (name, rows, len(header)))
    if not os.path.exists(path):
        rng = random.Random(20262)
        with open(path + ".part", "w") as out:
            out.write(",".join(header) + "\n")
            for _ in range(rows):
                out.write(",".join(map(repr, draw(rng))) + "\n")
        os.rename(path + ".part", path)
    return path


def grouped_table(name, groups, draw, rows=ROWS, fields=1):
    """The group field "g", from 1 to `groups`, in front of "x0" and so on."""
    return table(name, ["g"] + ["x%d" % i for i in range(fields)],
                 lambda rng: [rng.randint(1, groups)] + [draw(rng) for _ in range(fields)], rows)


def tarn(name, data, tests, *more):
    """The command that runs a plan, kept under `name`."""
    plan = os.path.join(timing.FOLDER, name + ".plan.json")
    with open(plan, "w") as out:
        json.dump({"tests": tests}, out)
    return [timing.TARN, "run", "--data", data, "--plan", plan, "--quiet", *more]


def python(program, data):
    return [sys.executable, "-W", "ignore", "-c", program, data]


def compare(title, ours, theirs, runs, our_result=os.devnull, their_result=os.devnull):
    """Times both and prints a block of figures. The files take what they write."""
    pairs = []
    for run in range(runs + 1):
        pair = timing.timed(ours, our_result), timing.timed(theirs, their_result)
        if run > 0:  # the first pair warms the file cache
            pairs.append(pair)
    print(title)
    for side, column in (("tarn run", 0), ("Python", 1)):
        print(timing.row("  " + side, [pair[column][0] for pair in pairs], "s"))
        print(timing.row("  %s, peak memory" % side, [pair[column][1] for pair in pairs], "MB"))
    print("  Python takes %.1f times as long (median of the pairs)"
          % statistics.median(theirs[0] / ours[0] for ours, theirs in pairs))


def main(job):
    """Calls `job` with the number of runs, the first argument, if the peers are installed."""
    absent = [name for name in ("pandas", "scipy") if importlib.util.find_spec(name) is None]
    if absent:
        print("not run: %s not installed for %s" % (" and ".join(absent), sys.executable))
        return
    job(int(sys.argv[1]) if len(sys.argv) > 1 else 5)
