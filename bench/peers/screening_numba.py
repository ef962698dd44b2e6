#!/usr/bin/env python3
"""Times the screening of 2,000 fields of 2,000 rows in this process beside numba-mwu, compiled and parallel.

Its functions are compiled in the first round, which is not timed. One side of it has all cores, the other one thread:
ours on all cores is to be read against the first, ours with one core against the second.
"""
import importlib.metadata
import importlib.util
import os
import sys

import numpy

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import in_process  # noqa: E402
import jobs  # noqa: E402
import timing  # noqa: E402


def peer_call(job, threads):
    import numba
    import numba_mwu
    columns = numpy.column_stack(job.values)
    first, second = (numpy.ascontiguousarray(columns[job.group.values == place]) for place in (0, 1))

    def run():
        numba.set_num_threads(threads)
        return numba_mwu.mannwhitneyu_columns(second, first, use_continuity=False).statistic
    return run


def main():
    options = timing.parser(__doc__, runs=7, rows=jobs.SCREENED).parse_args()
    if importlib.util.find_spec("numba_mwu") is None:
        print("screening beside numba-mwu: not run, it is not installed for %s" % sys.executable)
        return
    timing.print_machine(*("%s %s" % (name, importlib.metadata.version(name))
                           for name in ("numpy", "numba", "numba-mwu")))
    has_brief = in_process.engine_has_brief()
    if not has_brief:
        print(in_process.NO_BRIEF)
    job = jobs.screening(min(options.rows, jobs.SCREENED))
    cores = len(os.sched_getaffinity(0))
    for title, threads in (("all cores", cores), ("one thread", 1)):
        ours = in_process.our_sides(job.tests, job.fields) + in_process.our_sides(job.tests, job.fields, brief=True)
        timing.compare("%s; numba-mwu with %s" % (job.title, title),
                       ours + [timing.call_side("numba-mwu", peer_call(job, threads))], options.runs,
                       jobs.checker("screening", job))


if __name__ == "__main__":
    main()
