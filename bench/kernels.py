#!/usr/bin/env python3
"""Times our runs in this process, full and brief, beside the least that makes each statistic (bench/Kernels.h).

The kernels take one thread and the columns as they are: no missing values, no weights, no descriptives. What they
can't do without is the sort, which is Highway's VQSort where the build has it.
"""
import in_process
import jobs
import timing


def kernel_call(kind, job, kernels):
    if kind == "mann-whitney":
        return lambda: kernels.mann_whitney(job.values[0], job.group)
    if kind == "kruskal-wallis":
        return lambda: kernels.kruskal_wallis(job.values[0], job.group)
    if kind == "kolmogorov-smirnov":
        return lambda: kernels.kolmogorov_smirnov(job.values[0], job.group)
    if kind == "sign":
        return lambda: kernels.sign(*job.values)
    if kind == "wilcoxon":
        return lambda: kernels.wilcoxon(*job.values)
    if kind == "friedman":
        return lambda: kernels.friedman(job.values)
    return lambda: kernels.screening(job.values, job.group)


def main():
    options = timing.parser(__doc__, runs=11, rows=timing.ROWS).parse_args()
    kernels, sorter = in_process.vqsort()
    timing.print_machine("numpy " + in_process.numpy.__version__, "kernels sort by " + sorter)
    if not in_process.engine_has_brief():
        print(in_process.NO_BRIEF)
    for kind, job in jobs.jobs(options.rows, options.only):
        ours = in_process.our_sides(job.tests, job.fields) + in_process.our_sides(job.tests, job.fields, brief=True)
        kernel = timing.call_side("kernel", kernel_call(kind, job, kernels))
        timing.compare(job.title, ours + [kernel], options.runs, jobs.checker(kind, job), baseline=True)


if __name__ == "__main__":
    main()
