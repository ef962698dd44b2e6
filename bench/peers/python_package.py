#!/usr/bin/env python3
"""Times the Python package in this process beside SciPy, pingouin and numba-mwu, and what a program pays for it.

Samples are arrays of NumPy. The package's side ends with its statistic and significance, as the other ones do; effects
and what else stands beside them is worked out when it is asked for, and a side of its own asks for it.
"""
import importlib.metadata
import importlib.util
import os
import random
import signal
import statistics
import subprocess
import sys
import time

import numpy
from scipy import stats

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import timing  # noqa: E402

import tarn  # noqa: E402

FEW = 20
SCREENED = 2000
BLOCKS = 5  # columns of Friedman's test
FRAME_ROWS = 10_000_000
MOST_DIFFERENCED = 10_000  # whose differences pingouin keeps in memory


def samples(rows, count, steps=None):
    numbers = numpy.random.default_rng(20262)
    drawn = [numbers.normal(0.01 * place, 1.0, rows) for place in range(count)]
    return drawn if steps is None else [numpy.round(steps * sample) for sample in drawn]


def repeated(call, times):
    """A call so often that a clock can tell it."""
    def run():
        for _ in range(times):
            result = call()
        return result
    return run


def pair(result):
    return float(result[0]), float(result[1])


def same(tolerance=1e-9):
    def check(*results):
        for result in results[:-1]:
            for what, ours, theirs in zip(("statistic", "significance"), result, results[-1]):
                timing.check_close(what, ours, theirs, tolerance)
    return check


def same_of_wilcoxon(count):
    """SciPy's statistic is the smaller rank sum, ours that of the positive differences."""
    def check(*results):
        ours, theirs = results[0], results[-1]
        timing.check_close("statistic", min(ours[0], count * (count + 1) / 2 - ours[0]), theirs[0])
        timing.check_close("significance", ours[1], theirs[1])
    return check


def same_statistic(*results):
    """Of few values ours decides by the exact significance, which SciPy calls another method."""
    timing.check_close("statistic", results[0][0], results[-1][0])


def significances_alone(*results):
    timing.check_close("significance", results[0][1], results[-1][1])


def jobs(rows, like):
    """Title, our call, what asks for the effect, SciPy's call, check. `like`: the choices of SciPy for few values."""
    x, y, z, v, w = samples(rows, BLOCKS)
    of_ranks = same() if like or rows > FEW else same_statistic
    plain = {} if like is None else {"like": like}
    method = "asymptotic" if like is None else "auto"
    return [
        ("Mann-Whitney", lambda: tarn.mann_whitney(x, y, **plain),
         lambda: stats.mannwhitneyu(x, y, method=method, use_continuity=like is not None), of_ranks),
        ("Wilcoxon", lambda: tarn.wilcoxon(x, y, **plain),
         lambda: stats.wilcoxon(x, y, method=method if like is None else "auto"),
         (same_of_wilcoxon(rows) if rows > FEW else None) if like is None else significances_alone),
        ("Kruskal-Wallis", lambda: tarn.kruskal(x, y, z, **plain), lambda: stats.kruskal(x, y, z), same()),
        ("Kolmogorov-Smirnov", lambda: tarn.kolmogorov_smirnov(x, y, **plain),
         lambda: stats.ks_2samp(x, y, method="asymp" if like is None else "auto"), None),
        ("Friedman x5", lambda: tarn.friedman(x, y, z, v, w, **plain),
         lambda: stats.friedmanchisquare(x, y, z, v, w), same()),
    ]


def pingouin_calls(rows):
    if importlib.util.find_spec("pingouin") is None:
        return {}
    import pingouin
    x, y = samples(rows, BLOCKS)[:2]
    if rows > MOST_DIFFERENCED:
        print("pingouin's tests of %d values are left out: they make all %.0e differences" % (rows, float(rows) ** 2))
        return {}
    return {"Mann-Whitney": lambda: pingouin.mwu(x, y), "Wilcoxon": lambda: pingouin.wilcoxon(x, y)}


def compare_samples(title, rows, runs, times, like, only, with_pingouin):
    others = pingouin_calls(rows) if with_pingouin else {}
    for name, ours, theirs, check in jobs(rows, like):
        if only not in name:
            continue
        sides = [timing.call_side("tarn", repeated(lambda call=ours: pair(tuple(call())), times)),
                 timing.call_side("tarn with effect", repeated(lambda call=ours: with_effect(call()), times))]
        last = timing.call_side("SciPy", repeated(lambda call=theirs: pair(call()), times))
        # Some statistics and significances are other ones by definition; docs/conventions.md says which.
        timing.compare("%s, %s" % (name, title), sides + [last], runs, check or (lambda *_: None))
        if name in others:
            timing.compare("%s, %s; pingouin" % (name, title), sides + [
                timing.call_side("pingouin", repeated(others[name], times))], runs, lambda *_: None)


def with_effect(test):
    test.effect
    return pair(tuple(test))


# ---- Many fields ----

def compare_screening(rows, runs):
    numbers = numpy.random.default_rng(20262)
    columns = numbers.normal(0.1, 1.0, (rows, SCREENED))
    group = numbers.integers(0, 2, rows)
    data = {"f%d" % place: numpy.ascontiguousarray(columns[:, place]) for place in range(SCREENED)}
    data["arm"] = group
    first, second = columns[group == 0], columns[group == 1]

    def ours(**more):
        result = tarn.analyze(data, independent="f*", group="arm", tests="mann-whitney", brief=True, **more)
        return numpy.array([test.statistic for test in result])

    def check(*results):
        for place in range(SCREENED):
            timing.check_close("statistic", results[0][place], float(results[-1][place]))

    sides = [timing.call_side("tarn.analyze, all cores", ours),
             timing.call_side("tarn.analyze, one core", lambda: ours(threads=1))]
    title = "2,000 fields of %d rows, Mann-Whitney" % rows
    timing.compare(title + "; SciPy's axis=", sides + [timing.call_side("SciPy", lambda: stats.mannwhitneyu(
        first, second, axis=0, method="asymptotic", use_continuity=False).statistic)], runs, check)
    if importlib.util.find_spec("numba_mwu") is None:
        print("beside numba-mwu: not run, it is not installed")
        return
    import numba_mwu
    timing.compare(title + "; numba-mwu", sides + [timing.call_side("numba-mwu", lambda: numba_mwu.mannwhitneyu_columns(
        first, second, use_continuity=False).statistic)], runs, check)


# ---- What a program pays ----

def program(code):
    done = subprocess.run([sys.executable, "-c", code], capture_output=True, text=True, check=True)
    return done.stdout.split()


def print_import(runs):
    code = "import time; start = time.perf_counter(); import tarn; print(time.perf_counter() - start)"
    print("import tarn: %s, median of %d" % (timing.seconds(statistics.median(
        float(program(code)[0]) for _ in range(runs))), runs))


MEMORY = """
import resource, numpy, tarn
numbers = numpy.random.default_rng(1)
data = {{name: numbers.normal(size={rows}) for name in ("x", "y")}}
used = lambda: int(open("/proc/self/statm").read().split()[1]) * resource.getpagesize() / 1e6
before = used()
{call}
peak = next(float(line.split()[1]) for line in open("/proc/self/status") if line.startswith("VmHWM:")) * 1024 / 1e6
print(before, peak)
"""


def print_memory(rows):
    """The peak of a process beside what it had with the frame alone."""
    frame = 2 * rows * 8 / 1e6
    for call in ("tarn.analyze(data, related=['x', 'y'], tests='wilcoxon', brief=True)",
                 "tarn.analyze(data, related=['x', 'y'], tests='sign', brief=True)",
                 "tuple(tarn.wilcoxon(data['x'], data['y']))"):
        before, peak = map(float, program(MEMORY.format(rows=rows, call=call)))
        print("%d x 2 doubles, a frame of %.0f MB: %s\n  %.0f MB before, %.0f MB at the peak, %.0f MB more" % (
            rows, frame, call, before, peak, peak - before))


ENDLESS = """
import numpy, tarn
numbers = numpy.random.default_rng(1)
x, y = numbers.normal(size=200_000), numbers.normal(size=200_000)
print("begun", flush=True)
try:
    while True:
        tarn.analyze({"x": x, "y": y}, related=["x", "y"], tests=["sign", "wilcoxon"], monte_carlo=50)
except KeyboardInterrupt:
    print("stopped", flush=True)
"""


def print_interruption(runs):
    """From the signal to the exception, at any moment of an analysis."""
    pauses = []
    moments = random.Random(20262)
    for _ in range(runs):
        with subprocess.Popen([sys.executable, "-c", ENDLESS], stdout=subprocess.PIPE, text=True) as process:
            process.stdout.readline()
            time.sleep(0.1 + moments.random())
            start = time.perf_counter()
            process.send_signal(signal.SIGINT)
            if process.stdout.readline() != "stopped\n":
                raise SystemExit("Ctrl-C did not stop the analysis")
            pauses.append(time.perf_counter() - start)
    print("Ctrl-C to KeyboardInterrupt: median %s, most %s of %d" % (
        timing.seconds(statistics.median(pauses)), timing.seconds(max(pauses)), runs))


def main():
    options = timing.parser(__doc__, runs=5, rows=timing.ROWS).parse_args()
    versions = ["%s %s" % (name, importlib.metadata.version(name)) for name in ("numpy", "scipy", "pingouin", "numba-mwu")
                if importlib.util.find_spec(name.replace("-", "_"))]
    timing.print_machine(*versions)
    compare_samples("%d values, 100 calls" % FEW, FEW, options.runs, 100, None, options.only, True)
    compare_samples("%d values, 100 calls with SciPy's choices" % FEW, FEW, options.runs, 100, "scipy", options.only, False)
    compare_samples("%d values" % options.rows, options.rows, options.runs, 1, None, options.only, True)
    if options.only:
        return
    compare_screening(min(options.rows, SCREENED), options.runs)
    print_import(4 * options.runs)
    print_memory(min(FRAME_ROWS, 10 * options.rows))
    print_interruption(4 * options.runs)


if __name__ == "__main__":
    main()
