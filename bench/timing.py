"""What the timing scripts share: the table, one timed run of a command, and medians."""
import json
import os
import random
import statistics
import time

ROOT = os.path.normpath(os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
FOLDER = os.path.join(ROOT, "build", "bench")
TARN = os.path.join(ROOT, "build", "tarn")


def normal_table(rows=1_000_000, columns=6):
    """A CSV file of normal values with all their digits; made once."""
    os.makedirs(FOLDER, exist_ok=True)
    path = os.path.join(FOLDER, "normal_%dx%d.csv" % (rows, columns))
    if not os.path.exists(path):
        rng = random.Random(20261)
        with open(path + ".part", "w") as out:
            out.write(",".join("x%d" % i for i in range(columns)) + "\n")
            for _ in range(rows):
                out.write(",".join(repr(rng.gauss(0.1, 1.0)) for _ in range(columns)) + "\n")
        os.rename(path + ".part", path)
    return path


def sign_plan():
    path = os.path.join(FOLDER, "sign.plan.json")
    with open(path, "w") as out:
        json.dump({"tests": [{"RSign": {"variableName": ["x0", "x1"]}}]}, out)
    return path


def timed(command, output):
    """Seconds and peak memory in MB of one run, which has to succeed. Its standard output goes to `output`."""
    start = time.perf_counter()
    flags = os.O_WRONLY | os.O_CREAT | os.O_TRUNC
    process = os.posix_spawnp(command[0], command, os.environ,
                              file_actions=[(os.POSIX_SPAWN_OPEN, 1, output, flags, 0o644)])
    _, status, usage = os.wait4(process, 0)
    seconds = time.perf_counter() - start
    if status != 0:
        raise SystemExit("failed: " + " ".join(command))
    return seconds, usage.ru_maxrss / 1024


def row(name, values, unit):
    return "%-34s min %8.3f  median %8.3f  max %8.3f %s" % (
        name, min(values), statistics.median(values), max(values), unit)
