#!/usr/bin/env python3
"""Times R's rank tests beside ours at 1,000,000 records.

Two comparisons of each test. "In process": R's call alone on columns that it holds, start-up and reading excluded,
beside our full run in this process. "Whole": Rscript from its start, with the columns read from a file of raw doubles,
which is the fastest way into R, beside the whole command, which reads a CSV and writes its document. R is one thread.
Its Friedman test ranks row by row, and gets a tenth of the records.
"""
import os
import shutil
import subprocess
import sys

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import in_process  # noqa: E402
import jobs  # noqa: E402
import timing  # noqa: E402

# Reads the columns and makes the call; prints its wall and CPU seconds and the statistic.
PROGRAM = """
arguments <- commandArgs(trailingOnly = TRUE)
rows <- as.integer(arguments[2])
size <- as.integer(arguments[3])
x <- matrix(readBin(arguments[1], "double", rows * size), ncol = size)
%s
before <- proc.time()
result <- %s
used <- proc.time() - before
cat(used[["elapsed"]], used[["user.self"]] + used[["sys.self"]], format(unname(result$statistic), digits = 17), "\\n")
"""

PARTS = "parts <- split(x[, 2], x[, 1])"  # the groups apart before the call is timed
# R's W of the Mann-Whitney test is U of the first argument, its V that of the positive differences.
CALLS = {
    "mann-whitney": (PARTS, "wilcox.test(parts[[2]], parts[[1]], exact = FALSE, correct = FALSE)"),
    "kruskal-wallis": (PARTS, "kruskal.test(parts)"),
    "wilcoxon": ("", "wilcox.test(x[, 2], x[, 1], paired = TRUE, exact = FALSE, correct = FALSE)"),
    "friedman": ("", "friedman.test(x)"),
}


def columns_of(job):
    return ([job.group.values] if job.group else []) + job.values


def csv_of(job, name):
    """The same numbers for the command; the groups are 1 and so on there."""
    path = os.path.join(timing.FOLDER, name + ".csv")
    names = list(job.fields)
    columns = [(field.values + 1).astype(int) if isinstance(field, in_process.Groups) else field
               for field in job.fields.values()]
    with open(path, "w") as out:
        out.write(",".join(names) + "\n")
        for row in zip(*(column.tolist() for column in columns)):
            out.write(",".join(map(repr, row)) + "\n")
    return path


def r_command(kind, job, name):
    raw = os.path.join(timing.FOLDER, name + ".doubles")
    columns = columns_of(job)
    with open(raw, "wb") as out:
        for column in columns:
            column.tofile(out)
    script = os.path.join(timing.FOLDER, name + ".R")
    with open(script, "w") as out:
        out.write(PROGRAM % CALLS[kind])
    return ["Rscript", "--vanilla", script, raw, str(len(columns[0])), str(len(columns))]


def call_in_r(command):
    """A side whose figures are those that R gives of the call alone."""
    def measure(_):
        text = subprocess.run(command, stdout=subprocess.PIPE, text=True, check=True).stdout
        wall, cpu, statistic = map(float, text.split())
        return timing.Figures(wall, cpu, None), statistic
    return timing.Side("R, the call alone", measure)


def main():
    options = timing.parser(__doc__, rows=timing.ROWS).parse_args()
    if shutil.which("Rscript") is None:
        print("beside R: not run, Rscript is not installed")
        return
    version = subprocess.run(["Rscript", "--version"], capture_output=True, text=True, check=True)
    timing.print_machine((version.stdout + version.stderr).strip())
    os.makedirs(timing.FOLDER, exist_ok=True)
    offered = list(jobs.jobs(options.rows, options.only, [kind for kind in CALLS if kind != "friedman"]))
    offered += jobs.jobs(options.rows // 10, options.only, ["friedman"])
    for kind, job in offered:
        name = "r_" + "".join(letter if letter.isalnum() else "_" for letter in job.title)
        title = "%s, %d records" % (job.title, len(job.values[0]))
        other = r_command(kind, job, name)
        timing.compare(title + ", in process", in_process.our_sides(job.tests, job.fields) + [call_in_r(other)],
                       options.runs, jobs.checker(kind, job))

        ours = timing.tarn(name, csv_of(job, name), job.tests, *(["--nominal", "g"] if job.group else []))

        def check(all_cores, one_core, text, job=job, kind=kind):
            for document in (all_cores, one_core):
                timing.check_close(job.title, job.read(document), float(text.split()[2]), jobs.tolerance(kind))

        timing.compare(title + ", whole", [timing.command_side("tarn run, all cores", ours),
                                               timing.command_side("tarn run, one core", ours + ["--threads", "1"]),
                                               timing.command_side("Rscript", other)], options.runs, check)


if __name__ == "__main__":
    main()
