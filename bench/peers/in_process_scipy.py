#!/usr/bin/env python3
"""Times our runs in this process beside SciPy's statistic alone: our full document and our brief one.

Both sides have the data as arrays. SciPy's side is handed the groups already apart, and makes neither descriptives nor
a document. What is timed of ours is all of it: planner, run, document.
"""
import importlib.metadata
import os
import sys

import numpy
from scipy import stats

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import in_process  # noqa: E402
import jobs  # noqa: E402
import timing  # noqa: E402


def second_group_first(job):
    return in_process.parted(job.values[0], job.group)[::-1]


def peer_call(kind, job):
    """SciPy's call, on data that are ready for it."""
    if kind == "mann-whitney":  # our U is that of the second group
        parts = second_group_first(job)
        return lambda: stats.mannwhitneyu(*parts, use_continuity=False, method="asymptotic").statistic
    if kind == "kruskal-wallis":
        parts = in_process.parted(job.values[0], job.group)
        return lambda: stats.kruskal(*parts).statistic
    if kind == "kolmogorov-smirnov":
        parts = in_process.parted(job.values[0], job.group)
        return lambda: stats.ks_2samp(*parts, method="asymp").statistic
    if kind == "sign":
        first, second = job.values

        def sign():
            positive, negative = numpy.count_nonzero(second > first), numpy.count_nonzero(second < first)
            return stats.binomtest(positive, positive + negative).k
        return sign
    if kind == "wilcoxon":
        first, second = job.values
        return lambda: stats.wilcoxon(second, first, correction=False, method="asymptotic").statistic
    if kind == "friedman":
        return lambda: stats.friedmanchisquare(*job.values).statistic
    columns = numpy.column_stack(job.values)
    first, second = (numpy.ascontiguousarray(columns[job.group.values == place]) for place in (0, 1))
    return lambda: stats.mannwhitneyu(second, first, use_continuity=False, method="asymptotic", axis=0).statistic


def check_of(kind, job):
    if kind != "wilcoxon":
        return jobs.checker(kind, job)
    return jobs.checker(kind, job._replace(read=timing.smaller_rank_sum))


def main():
    options = timing.parser(__doc__, runs=7, rows=timing.ROWS).parse_args()
    timing.print_machine(*("%s %s" % (name, importlib.metadata.version(name)) for name in ("numpy", "scipy")))
    if not in_process.engine_has_brief():
        print(in_process.NO_BRIEF)
    for kind, job in jobs.jobs(options.rows, options.only):
        ours = in_process.our_sides(job.tests, job.fields) + in_process.our_sides(job.tests, job.fields, brief=True)
        timing.compare(job.title, ours + [timing.call_side("SciPy, statistic alone", peer_call(kind, job))],
                       options.runs, check_of(kind, job))


if __name__ == "__main__":
    main()
