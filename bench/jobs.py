"""The jobs that run in process, once for all scripts that put somebody beside them: fields, plan, statistic."""
import collections

import in_process
import timing

SCREENED = 2_000

KINDS = ("mann-whitney", "kruskal-wallis", "kolmogorov-smirnov", "sign", "wilcoxon", "friedman", "screening")

# `fields` are arrays, or Groups, by name; `values` and `group` those that the test takes. `read` finds in our document
# the number to compare.
Job = collections.namedtuple("Job", "title tests fields values group read")


def statistic(document):
    return timing.value_of(document, "TestStatistic")


def largest_difference(document):
    """D; the statistic of ours is another multiple of it."""
    return timing.value_of(document, "Absolute")


def statistics(document):
    return timing.values_of(document, "TestStatistic")


def grouped(title, test, group_count, draw, rows, read=statistic, **keys):
    values, group = draw(rows), in_process.groups(rows, group_count)
    tests = [{test: dict(keys, variableName="x0", groupVariableName="g")}]
    return Job(title, tests, {"g": group, "x0": values}, [values], group, read)


def related(title, test, count, rows, read=statistic, **keys):
    fields = {"x%d" % i: in_process.normal(rows, 20262 + i) for i in range(count)}
    return Job(title, [{test: dict(keys, variableName=list(fields))}], fields, list(fields.values()), None, read)


def screening(size):
    fields = {"x%d" % i: in_process.normal(size, 20262 + i) for i in range(size)}
    group = in_process.groups(size, 2)
    tests = [{"IMannWhitneyU": {"variableName": name, "groupVariableName": "g"}} for name in fields]
    return Job("screening, %d fields of %d rows" % (size, size), tests, dict(fields, g=group), list(fields.values()),
               group, statistics)


def jobs(rows, only="", kinds=KINDS):
    """The jobs of these kinds whose titles have that text; each is made when it is its turn."""
    none = {"typeOfMultipleComparison": "none"}
    shapes = (("continuous", in_process.normal), ("values 1 to 7", in_process.seven_steps))
    makers = []

    def offer(kind, title, make, *arguments, **keys):
        if only in title and kind in kinds:
            makers.append((kind, lambda: make(title, *arguments, **keys)))

    for shape, draw in shapes:
        offer("mann-whitney", "Mann-Whitney, " + shape, grouped, "IMannWhitneyU", 2, draw, rows)
    for shape, draw in shapes:
        offer("kruskal-wallis", "Kruskal-Wallis, 5 groups, " + shape, grouped, "IKruskalWallis", 5, draw, rows, **none)
    for shape, draw in shapes:
        offer("kolmogorov-smirnov", "Kolmogorov-Smirnov, two groups, " + shape, grouped, "IKolmogorovSmirnov", 2, draw,
              rows, largest_difference)
    offer("sign", "sign", related, "RSign", 2, rows)
    offer("wilcoxon", "Wilcoxon, pair", related, "RWilcoxonSignedRanks", 2, rows)
    offer("friedman", "Friedman, 5 fields", related, "RFriedmansTwoWayByRanks", 5, rows, **none)
    for kind, make in makers:
        yield kind, make()
    size = min(SCREENED, rows)
    if only in "screening" and "screening" in kinds:
        yield "screening", screening(size)


def tolerance(kind):
    """The statistics of several samples are the difference of two numbers of the size of the number of records."""
    return 1e-6 if kind in ("friedman", "kruskal-wallis") else 1e-9


def checker(kind, job):
    """Compares our documents with one another and with what the last side returns."""
    def check(*results):
        *ours, theirs = results
        documents = [run.document() for run in ours]
        if documents[::2] != documents[1::2]:  # all cores and one, in turn
            raise SystemExit("the number of threads changes the document of " + job.title)
        for document in documents:
            found = job.read(document)
            if not isinstance(found, list):
                found, expected = [found], [theirs]
            else:
                expected = list(theirs)
            if len(found) != len(expected):
                raise SystemExit("the results differ: %d and %d statistics" % (len(found), len(expected)))
            for one, other in zip(found, expected):
                timing.check_close(job.title, one, float(other), tolerance(kind))
    return check
