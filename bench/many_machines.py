#!/usr/bin/env python3
"""What screenings of many fields and counts of many records cost, and how that grows.

Every figure is that of a process of its own. CPU time is that of all its threads, and of its workers where it has some;
of a cluster the time of the process that calls is shown by itself, too, since no worker can take it over. The slope is
that of the logarithms from the row before: 1 is in proportion. `--largest` and `--records` are for trying it.
"""
import json
import math
import os
import pickle
import resource
import subprocess
import sys
import tempfile
import time

import timing

FIELDS = (1_250, 2_500, 5_000, 10_000, 20_000)
ROWS = (500, 2_000, 8_000, 32_000)
FIELDS_OF_ROWS = 1_000
ROWS_OF_FIELDS = 2_000
# Of more fields the whole documents of one call take gigabytes.
FIELDS_OF_PLAIN = 2_500
RECORDS = (1_000_000, 10_000_000, 100_000_000)
RECORDS_OF_A_PARTITION = 1_000_000
LEVELS = 100_000


# ---- Data ----

def parquet(fields, rows):
    """Normal values in `fields` columns and two groups, as Parquet. Made once."""
    import numpy
    import pyarrow
    import pyarrow.parquet

    os.makedirs(timing.FOLDER, exist_ok=True)
    path = os.path.join(timing.FOLDER, "wide_%dx%d.parquet" % (rows, fields))
    if not os.path.exists(path):
        numbers = numpy.random.default_rng(20262)
        columns = {"x%d" % i: numbers.normal(size=rows) for i in range(fields)}
        columns["g"] = numpy.where(numbers.random(rows) < 0.5, "a", "b")
        part = "%s.%d.part" % (path, os.getpid())
        pyarrow.parquet.write_table(pyarrow.table(columns), part, use_dictionary=["g"])
        os.replace(part, path)
    return path


def records(number):
    """A partition of the records: two fields at 100,000 levels, and two groups."""
    import numpy
    import pandas

    numbers = numpy.random.default_rng(number)
    columns = {name: numbers.integers(0, LEVELS, RECORDS_OF_A_PARTITION) * 0.01 for name in ("x", "y")}
    return pandas.DataFrame({**columns, "g": numbers.random(RECORDS_OF_A_PARTITION) < 0.5})


# ---- Jobs, each in a process of its own ----

def plain(path, brief):
    """One call of the whole table, with the frame of its tests."""
    import pyarrow.parquet
    import tarn

    data = pyarrow.parquet.read_table(path)
    return len(tarn.analyze(data, independent="x*", group="g", threads=1, brief=brief).tests)


def cores(path, threads, out=None):
    import tarn

    return len(tarn.screen(path, group="g", threads=threads, out=out))


def cluster(path, workers):
    """The same on a cluster of processes of one thread; its figures are taken without the time to start it."""
    import distributed
    import tarn

    with (
        distributed.LocalCluster(n_workers=workers, threads_per_worker=1, processes=True, dashboard_address=":0") as made,
        distributed.Client(made) as client,
    ):
        client.run(__import__, "tarn")
        before = sum(client.run(time.process_time).values())
        start, used = time.perf_counter(), time.process_time()
        count = len(tarn.screen(path, group="g", client=client))
        own = time.process_time() - used
        wall = time.perf_counter() - start
        return count, wall, own + sum(client.run(time.process_time).values()) - before, own


def made(count):
    """Only makes the records that are to be counted."""
    import dask

    parts = [dask.delayed(lambda number: len(records(number)))(i) for i in range(count // RECORDS_OF_A_PARTITION)]
    return sum(dask.compute(*parts, scheduler="sync"))


def counted(count):
    """Mann-Whitney's test of both fields, from counts."""
    import dask
    import dask.dataframe
    import tarn

    empty = records(0).iloc[:0]
    data = dask.dataframe.from_map(records, range(count // RECORDS_OF_A_PARTITION), meta=empty)
    with dask.config.set(scheduler="sync"):
        result = tarn.analyze(data, independent=["x", "y"], group="g", tests="mann-whitney", brief=True, threads=1)
    if result[0].n != count:
        raise SystemExit("the counts add up to %r, not %d" % (result[0].n, count))
    return count


JOBS = {job.__name__: job for job in (plain, cores, cluster, made, counted)}


def run_job(name, arguments):
    """Prints the figures of a job: what it did, wall and CPU seconds, those of the caller alone, and its peak in MB."""
    # Imports are no part of the figures.
    import dask.dataframe  # noqa: F401
    import pyarrow.dataset  # noqa: F401
    import pyarrow.parquet  # noqa: F401
    import tarn  # noqa: F401

    start, used = time.perf_counter(), time.process_time()
    done = JOBS[name](*arguments)
    figures = done if isinstance(done, tuple) else (done, time.perf_counter() - start, time.process_time() - used, 0.0)
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1000
    print(json.dumps([*figures, peak]))


def figures_of(name, *arguments):
    done = subprocess.run([sys.executable, os.path.abspath(__file__), "--job", name, json.dumps(arguments)],
                          stdout=subprocess.PIPE, text=True)
    if done.returncode != 0:
        raise SystemExit("failed: %s%r" % (name, arguments))
    return json.loads(done.stdout)


# ---- Tables of figures ----

class Table:
    """Figures line by line, with slopes where sizes are compared."""

    def __init__(self, title):
        print(title)
        print("  %-34s %9s %9s %6s %9s %9s %12s" % ("", "wall s", "CPU s", "slope", "caller s", "peak MB", "us per one"))
        self.before = None

    def line(self, what, size, figures, is_series=True):
        _, wall, cpu, own, peak = figures
        slope = ""
        if is_series and self.before:
            slope = "%.2f" % (math.log(cpu / self.before[1]) / math.log(size / self.before[0]))
        print("  %-34s %9.2f %9.2f %6s %9s %9.0f %12.3f" % (
            what, wall, cpu, slope, "%.2f" % own if own else "", peak, 1e6 * cpu / size), flush=True)
        self.before = size, cpu


def print_shares(path, fields):
    """What moves for each field between those who call and those who work, from a table of files, and how long the
    caller has it: to take a block, and to keep it in a folder, adjusted. The rest may be on any worker."""
    from tarn import _blocks, _parts, _sources

    start = time.process_time()
    source = _sources.source_of(path)
    opened = time.process_time() - start
    tested = [(name,) for name in source.names[:fields] if name != "g"]
    work = _blocks.Work(source.part(["g", *(names[0] for names in tested)]),
                        _blocks.Inquiry("independent", {"group": "g"}, ("g",)), tested)
    sent, back = pickle.dumps(work), pickle.dumps(_blocks.run_block(work))
    start = time.process_time()
    block = pickle.loads(back)
    taken = time.process_time() - start
    start = time.process_time()
    with tempfile.TemporaryDirectory() as out:
        folder = _parts.PartFolder(out, {}, len(tested))
        folder.begin()
        folder.write(0, block)
        folder.read(0, ("pvalue", "p_asked", "in_family"))
        folder.replace(0, {name: block.columns["pvalue"] for name in ("p_holm", "p_bh", "p_adjusted")})
    kept = time.process_time() - start
    count = len(tested)
    print("opening the file of %d columns: %.2f s of CPU" % (len(source.names), opened))
    print("bytes a field, of blocks of %d: %.0f to a worker, %.0f back" % (count, len(sent) / count, len(back) / count))
    print("us of CPU a field for the caller: %.1f to take it, %.1f more to keep it in a folder" % (
        1e6 * taken / count, 1e6 * kept / count))


def main():
    options = timing.parser(__doc__, runs=1)
    options.add_argument("--largest", type=int, default=max(FIELDS), help="the most fields (%(default)s)")
    options.add_argument("--records", type=int, default=max(RECORDS), help="the most records (%(default)s)")
    options.add_argument("--job", nargs=2, metavar=("NAME", "ARGUMENTS"), help="one job alone, as the others are run")
    options = options.parse_args()
    if options.job:
        return run_job(options.job[0], json.loads(options.job[1]))
    timing.print_machine()
    if options.only in "fields":
        table = Table("Mann-Whitney's test of each field of %d rows, on one core, by fields" % ROWS_OF_FIELDS)
        sizes = [size for size in FIELDS if size <= options.largest] or [options.largest]
        for size in sizes:
            table.line("%d fields" % size, size, figures_of("cores", parquet(size, ROWS_OF_FIELDS), 1))
        largest = sizes[-1]
        path = parquet(largest, ROWS_OF_FIELDS)
        table = Table("the same of %d fields, in other ways" % largest)
        table.line("two cores", largest, figures_of("cores", path, 2), False)
        for workers in (1, 2):
            table.line("a cluster of %d processes" % workers, largest, figures_of("cluster", path, workers), False)
        size = min(FIELDS_OF_PLAIN, largest)
        for what, is_brief in (("analyze of %d fields", False), ("the same, brief=True", True)):
            figures = figures_of("plain", parquet(size, ROWS_OF_FIELDS), is_brief)
            table.line(what % size if "%" in what else what, size, figures, False)
        print_shares(path, FIELDS_OF_ROWS)
    if options.only in "rows":
        table = Table("Mann-Whitney's test of each of %d fields, on one core, by rows" % FIELDS_OF_ROWS)
        for size in ROWS:
            fields = min(FIELDS_OF_ROWS, options.largest)
            table.line("%d rows" % size, size * fields, figures_of("cores", parquet(fields, size), 1))
    if options.only in "records":
        for title, job in (("making the records, two fields at %d levels and two groups" % LEVELS, "made"),
                           ("making, counting and testing them, on one core", "counted")):
            table = Table(title)
            for size in RECORDS:
                if size <= options.records:
                    table.line("%d records" % size, size, figures_of(job, size))


if __name__ == "__main__":
    main()
