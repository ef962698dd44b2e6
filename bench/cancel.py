#!/usr/bin/env python3
"""How long a run goes on after Ctrl-C: from the signal to the end of the process.

The command runs on large input again and again, and gets its SIGINT after a random part of the time that a whole run
takes, so that it comes while the table is read, sorted and described, in the passes, at their end and while the
document is written. Each trial also checks what is left: no document and nothing beside it unless the run was through,
and then the whole document. The table by tenths of the run shows where the waiting is.
"""
import math
import os
import random
import shutil
import signal
import subprocess
import time

import timing

STOPPED = 1
ENDED_BY_SIGNAL = -signal.SIGINT  # before the command has begun to listen


def in_large_table(rows):
    data = timing.grouped_table("five_groups", 5, timing.normal, rows)
    grouped = {"variableName": "x0", "groupVariableName": "g"}
    none = {"typeOfMultipleComparison": "none"}
    return timing.tarn("cancel_large", data, [
        {"IKruskalWallis": dict(grouped, **none)}, {"IJonckheereTerpstra": dict(grouped, **none)},
        {"IMedian": dict(grouped, **none)}, {"OWilcoxonSignedRanks": {"variableName": "x0"}},
        {"OKolmogorovSmirnovNormal": {"variableName": "x0", "isUseSample": True}}], "--nominal", "g")


def in_all_pairs(rows):
    data = timing.grouped_table("twenty_groups", 20, timing.normal, rows)
    return timing.tarn("cancel_pairs", data, [{"IJonckheereTerpstra": {
        "variableName": "x0", "groupVariableName": "g", "typeOfMultipleComparison": "pairWise"}}], "--nominal", "g")


def in_estimates(rows):
    data = timing.normal_table(rows, 2)
    return timing.tarn("cancel_estimates", data, [{"RHodgesLehmannEstimatePairs": {"variableName": ["x0", "x1"]}}])


def in_screening(rows):
    size = min(2_000, rows)
    data = timing.grouped_table("two_groups", 2, timing.normal, size, size)
    return timing.tarn("cancel_screening", data, [{"IMannWhitneyU": {
        "variableName": "x%d" % i, "groupVariableName": "g"}} for i in range(size)], "--nominal", "g")


def in_figures(rows):
    size = min(400, rows)
    data = timing.table("cancel_figures", ["g", "x0"], lambda rng: [rng.randint(1, 4), rng.randint(1, 9)], size)
    return [timing.TARN, "analyze", data, "--independent", "x0", "--ordinal", "g", "--group", "g", "--tests",
            "jonckheere,kruskal-wallis,median", "--exact", "--monte-carlo", "100000"]


def trial(command, folder, delay):
    """The milliseconds from the signal to the end, and the exit status. None if the run ended first."""
    shutil.rmtree(folder, ignore_errors=True)
    os.makedirs(folder)
    process = subprocess.Popen(command + ["--out", os.path.join(folder, "document.xml")],
                               stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    time.sleep(delay)
    if process.poll() is not None:
        return None, process.returncode
    process.send_signal(signal.SIGINT)
    start = time.perf_counter()
    process.wait()
    return 1000 * (time.perf_counter() - start), process.returncode


def check_left(folder, status, whole):
    """No half of a document is left, under no name."""
    left = os.listdir(folder)
    if status in (STOPPED, ENDED_BY_SIGNAL):
        # A signal that comes while the results are shown finds the document stored, and whole.
        stored = left == ["document.xml"] and os.path.getsize(os.path.join(folder, left[0])) == whole
        if left and not stored:
            raise SystemExit("a stopped run left %s behind" % " ".join(left))
    elif status == 0:
        if left != ["document.xml"] or os.path.getsize(os.path.join(folder, left[0])) != whole:
            raise SystemExit("a run that ended well left %s behind" % " ".join(left))
    else:
        raise SystemExit("a stopped run ended with status %d" % status)


def percentile(values, share):
    """The smallest value that is not below that share of them."""
    ordered = sorted(values)
    return ordered[math.ceil(share * len(ordered)) - 1]


def distribution(values):
    return "median %7.1f  99th percentile %7.1f  max %7.1f ms" % (
        percentile(values, 0.5), percentile(values, 0.99), max(values))


def measure(title, command, options):
    if options.only not in title:
        return
    folder = os.path.join(timing.FOLDER, "cancel.%d" % os.getpid())
    os.makedirs(folder, exist_ok=True)
    document = os.path.join(folder, "document.xml")
    whole_run = timing.median([timing.timed(command + ["--out", document]).wall for _ in range(3)])
    whole = os.path.getsize(document)

    rng = random.Random(20265)
    tenths = [[] for _ in range(10)]
    ended = 0
    for i in range(options.runs):
        part = (i + rng.random()) / options.runs  # one trial in each of equal parts of the run
        latency, status = trial(command, folder, part * whole_run)
        check_left(folder, status, whole)
        if latency is None:
            ended += 1
        else:
            tenths[int(10 * part)].append(latency)
    shutil.rmtree(folder)

    values = [value for tenth in tenths for value in tenth]
    print("%s: a run takes %.2f s; %d signals, %d runs had ended before theirs" % (
        title, whole_run, len(values), ended))
    if values:
        print("  all          %s" % distribution(values))
    for place, tenth in enumerate(tenths):
        if tenth:
            print("  %3d - %3d %%  %s" % (10 * place, 10 * place + 10, distribution(tenth)), flush=True)


def main():
    options = timing.parser(__doc__, runs=200, rows=5 * timing.ROWS)
    options.add_argument("--threads", type=int, help="the budget of the command (as many as the machine has)")
    options = options.parse_args()
    timing.print_machine()
    budget = ["--threads", str(options.threads)] if options.threads else []
    for title, make, rows in (("five tests of a large table", in_large_table, options.rows),
                              ("all pairs of 20 groups", in_all_pairs, options.rows // 5),
                              ("Hodges-Lehmann estimate of a pair", in_estimates, options.rows // 5),
                              ("screening of 2,000 fields", in_screening, options.rows),
                              ("exact significances and random arrangements", in_figures, options.rows)):
        if options.only in title:
            measure(title, make(rows) + budget, options)


if __name__ == "__main__":
    main()
