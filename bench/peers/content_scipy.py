#!/usr/bin/env python3
"""Times our runs in this process beside SciPy and NumPy that make what our document has.

For each field of a test: mean, standard deviation, smallest and largest value, and a histogram of 400 intervals with
the mean of each; for groups and differences their own histograms in the same way; of Kruskal-Wallis box plots with
their outliers, of Friedman the counts of the ranks. And the statistic with its significance. Two things are left out
that would cost the other side more: our histograms have zero as a boundary of its own, and our document is text.

The other side is handed the groups already apart, and takes bincount, which is faster than numpy.histogram.
"""
import collections
import importlib.metadata
import os
import sys

import numpy
from scipy import stats

sys.path.insert(0, os.path.join(os.path.dirname(os.path.abspath(__file__)), ".."))
import in_process  # noqa: E402
import jobs  # noqa: E402
import timing  # noqa: E402

BINS = 400

# What the other side makes. `descriptives` has one of Descriptives for each field of the test.
Content = collections.namedtuple("Content", "statistic significance descriptives more")
Descriptives = collections.namedtuple("Descriptives", "mean deviation low high histogram")


def histogram(values, low, high):
    """Counts and means of the intervals."""
    places = ((values - low) * (BINS / (high - low))).astype(numpy.int64)
    numpy.minimum(places, BINS - 1, out=places)
    counts = numpy.bincount(places, minlength=BINS)
    sums = numpy.bincount(places, weights=values, minlength=BINS)
    return counts, numpy.divide(sums, counts, out=numpy.zeros(BINS), where=counts > 0)


def describe(values):
    low, high = values.min(), values.max()
    return Descriptives(values.mean(), values.std(ddof=1), low, high, histogram(values, low, high))


def box(values):
    """Quartiles, the ends of the whiskers, and what lies beyond them."""
    quartiles = numpy.percentile(values, (25, 50, 75))
    reach = 1.5 * (quartiles[2] - quartiles[0])
    inside = (values >= quartiles[0] - reach) & (values <= quartiles[2] + reach)
    kept = values[inside]
    return quartiles, kept.min(), kept.max(), values[~inside]


def group_histograms(parts, field):
    return [histogram(part, field.low, field.high) for part in parts]


def mann_whitney(values, parts):
    field = describe(values)
    result = stats.mannwhitneyu(parts[1], parts[0], use_continuity=False, method="asymptotic")
    return Content(result.statistic, result.pvalue, [field], group_histograms(parts, field))


def kolmogorov_smirnov(values, parts):
    field = describe(values)
    result = stats.ks_2samp(*parts, method="asymp")
    return Content(result.statistic, result.pvalue, [field], group_histograms(parts, field))


def kruskal_wallis(values, parts):
    result = stats.kruskal(*parts)
    return Content(result.statistic, result.pvalue, [describe(values)], [box(part) for part in parts])


def differences(first, second):
    """Those of a pair, with their histogram and the counts of their signs."""
    found = second - first
    counts = (numpy.count_nonzero(found < 0), numpy.count_nonzero(found == 0), numpy.count_nonzero(found > 0))
    return found, counts, histogram(found, found.min(), found.max())


def sign(first, second):
    _, (negative, ties, positive), bars = differences(first, second)
    result = stats.binomtest(positive, positive + negative)
    return Content(result.k, result.pvalue, [describe(first), describe(second)], (negative, ties, positive, bars))


def wilcoxon(first, second):
    found, counts, bars = differences(first, second)
    result = stats.wilcoxon(found, correction=False, method="asymptotic")
    return Content(result.statistic, result.pvalue, [describe(first), describe(second)], (counts, bars))


def friedman(*fields):
    result = stats.friedmanchisquare(*fields)
    ranks = stats.rankdata(numpy.column_stack(fields), axis=1)  # SciPy keeps its own ranks for itself
    counts = [numpy.bincount((2 * column).astype(numpy.int64)) for column in ranks.T]
    return Content(result.statistic, result.pvalue, [describe(field) for field in fields], counts)


GROUPED = {"mann-whitney": mann_whitney, "kruskal-wallis": kruskal_wallis, "kolmogorov-smirnov": kolmogorov_smirnov}
RELATED = {"sign": sign, "wilcoxon": wilcoxon, "friedman": friedman}


def screening(job):
    """All fields at once, as whole arrays: one call of SciPy, and histograms made by one bincount each."""
    columns = numpy.column_stack(job.values)
    masks = [job.group.values == place for place in (0, 1)]
    parts = [numpy.ascontiguousarray(columns[mask]) for mask in masks]
    offsets = numpy.arange(columns.shape[1]) * BINS

    def bars(values, low, high):
        places = ((values - low) * (BINS / (high - low))).astype(numpy.int64)
        numpy.minimum(places, BINS - 1, out=places)
        places += offsets
        size = BINS * columns.shape[1]
        counts = numpy.bincount(places.ravel(), minlength=size)
        sums = numpy.bincount(places.ravel(), weights=values.ravel(), minlength=size)
        return counts, numpy.divide(sums, counts, out=numpy.zeros(size), where=counts > 0)

    def run():
        low, high = columns.min(axis=0), columns.max(axis=0)
        result = stats.mannwhitneyu(parts[1], parts[0], use_continuity=False, method="asymptotic", axis=0)
        mean, deviation = columns.mean(axis=0), columns.std(axis=0, ddof=1)
        field = [Descriptives(*one, None) for one in zip(mean, deviation, low, high)]
        return Content(result.statistic, result.pvalue, field,
                       [bars(values, low, high) for values in (columns, *parts)])
    return run


def peer_call(kind, job):
    if kind in GROUPED:
        parts = in_process.parted(job.values[0], job.group)
        return lambda: GROUPED[kind](job.values[0], parts)
    if kind in RELATED:
        return lambda: RELATED[kind](*job.values)
    return screening(job)


def checker(kind, job):
    """The statistic, and the descriptives of all fields."""
    statistics = jobs.checker(kind, job._replace(read=timing.smaller_rank_sum) if kind == "wilcoxon" else job)

    def check(*results):
        *ours, content = results
        statistics(*ours, content.statistic)
        document = ours[0].document()
        for name, place in (("Mean", "mean"), ("StdDev", "deviation"), ("Min", "low"), ("Max", "high")):
            found = timing.values_of(document, name)
            expected = [getattr(one, place) for one in content.descriptives]
            if len(found) != len(expected):
                raise SystemExit("%d fields have a %s in our document, not %d" % (len(found), name, len(expected)))
            for one, other in zip(found, expected):
                timing.check_close("%s of %s" % (name, job.title), one, other)
    return check


def main():
    options = timing.parser(__doc__, runs=7, rows=timing.ROWS).parse_args()
    timing.print_machine(*("%s %s" % (name, importlib.metadata.version(name)) for name in ("numpy", "scipy")))
    for kind, job in jobs.jobs(options.rows, options.only):
        timing.compare(job.title, in_process.our_sides(job.tests, job.fields) +
                       [timing.call_side("SciPy and NumPy, same", peer_call(kind, job))], options.runs,
                       checker(kind, job))


if __name__ == "__main__":
    main()
