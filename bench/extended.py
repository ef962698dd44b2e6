#!/usr/bin/env python3
"""Times our runs in this process with extended arithmetic beside the same runs as defined, full and brief, with a
budget of one thread.

Both sides have to give the same statistic. Beyond the fixed widths they can't, so a job that is (docs/limits.md) is
compared by the number behind its statistic.
"""
import numpy

import in_process
import jobs
import timing


def sides(job, fields, **settings):
    return [timing.call_side(name, in_process.Run(job.tests, fields, threads=1, **settings, **more))
            for name, more in (("extended", {"extendedArithmetic": True}), ("as defined", {}))]


def checker(kind, job):
    """Compares the statistics of both documents."""
    def check(*runs):
        found = [job.read(run.document()) for run in runs]
        for one, other in zip(*([value] if not isinstance(value, list) else value for value in found)):
            timing.check_close(job.title, one, other, jobs.tolerance(kind))
    return check


def main():
    options = timing.parser(__doc__, runs=21, rows=timing.ROWS).parse_args()
    timing.print_machine("numpy " + numpy.__version__)
    for kind, job in jobs.jobs(options.rows, options.only):
        for what, settings in (("full", {}), ("brief", {"brief": True})):
            timing.compare("%s, %s" % (job.title, what), sides(job, job.fields, **settings), options.runs,
                           checker(kind, job), baseline=True)


if __name__ == "__main__":
    main()
