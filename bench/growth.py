#!/usr/bin/env python3
"""How CPU time and memory of the command grow: with the records, the fields and the tests, and with the groups.

Each row is the median of some runs of the whole command with a budget of one core, so that CPU time is work and not its
sharing. The slope is that of the logarithms from the row before: 1 is in proportion, 0 is no growth. What a run takes
at its start pulls the slopes of small sizes towards 0. "per step" is CPU time by what grows. A run of more than ten
seconds is made once, and a series ends with a run that is beyond the limit.
"""
import math
import os

import timing

BUDGET = ("--threads", "1")
LONG = 10.0  # seconds

RECORDS = (10_000, 100_000, 1_000_000, 10_000_000)
FIELDS = (2, 20, 200, 2_000)
TESTS = (1, 10, 100, 1_000, 10_000)
GROUPS = (5, 20, 50, 200)


def numbered(count):
    return ["x%d" % i for i in range(count)]


def grouped_test(test, **keys):
    return [{test: dict(keys, variableName="x0", groupVariableName="g")}]


def slope(ratio, growth):
    return "%6.2f" % (math.log(ratio) / math.log(growth)) if ratio > 0 else "      "


class Growth:
    """A table of one series. The command of a size is made when it is its turn."""

    def __init__(self, title, what, options):
        self.title, self.what, self.options = title, what, options
        self.before = None
        self.is_begun = self.is_over = False
        self.is_wanted = options.only in title

    def measure(self, size, command):
        if self.is_over:
            return
        if not self.is_begun:
            self.is_begun = True
            print(self.title)
            print("  %12s  %10s  %10s  %6s  %10s  %6s  %12s" % (
                self.what, "wall s", "CPU s", "slope", "peak MB", "slope", "per step us"))
        first = timing.timed(command + list(BUDGET), limit=self.options.limit)
        if first is None:
            self.is_over = True
            print("  %12d  more than %d s" % (size, self.options.limit), flush=True)
            return
        # The first run warms the file cache; one that is long needs no warming, and counts.
        runs = [first] if first.wall > LONG else [timing.timed(command + list(BUDGET))
                                                  for _ in range(self.options.runs)]
        wall, cpu, memory = (timing.median([getattr(run, name) for run in runs]) for name in timing.Figures._fields)
        line = "  %12d  %10.3f  %10.3f  %6s  %10.1f  %6s  %12.3f"
        slopes = ["", ""]
        if self.before:
            growth = size / self.before[0]
            slopes = [slope(cpu / self.before[1], growth), slope(memory / self.before[2], growth)]
        print(line % (size, wall, cpu, slopes[0], memory, slopes[1], 1e6 * cpu / size), flush=True)
        self.before = size, cpu, memory


def growth_of_records(options):
    none = {"typeOfMultipleComparison": "none"}
    for title, test, groups, keys in (("Mann-Whitney by records", "IMannWhitneyU", 2, {}),
                                      ("Kruskal-Wallis, 5 groups, by records", "IKruskalWallis", 5, none)):
        growth = Growth(title, "records", options)
        for size in RECORDS:
            if growth.is_wanted and size <= options.largest:
                data = timing.grouped_table("groups%d" % groups, groups, timing.normal, size)
                growth.measure(size, timing.tarn(test, data, grouped_test(test, **keys), "--nominal", "g"))
    for title, test, count, keys in (("sign by records", "RSign", 2, {}),
                                     ("Wilcoxon, pair, by records", "RWilcoxonSignedRanks", 2, {}),
                                     ("Friedman, 5 fields, by records", "RFriedmansTwoWayByRanks", 5, none)):
        growth = Growth(title, "records", options)
        for size in RECORDS:
            if growth.is_wanted and size <= options.largest:
                data = timing.normal_table(size, count)
                growth.measure(size, timing.tarn(test, data, [{test: dict(keys, variableName=numbered(count))}]))


def growth_of_fields(options):
    """The same 2,000 records get wider: tested all, or one of them."""
    records = min(2_000, options.largest)
    for title, tested in (("Mann-Whitney of every field, 2,000 records, by fields", None),
                          ("Mann-Whitney of one field, 2,000 records, by fields of the table", 1)):
        growth = Growth(title, "fields", options)
        for size in FIELDS:
            if growth.is_wanted and size <= options.largest:
                data = timing.grouped_table("groups2", 2, timing.normal, records, size)
                tests = [{"IMannWhitneyU": {"variableName": name, "groupVariableName": "g"}}
                         for name in numbered(tested or size)]
                growth.measure(size, timing.tarn("fields", data, tests, "--nominal", "g"))


def growth_of_tests(options):
    """More and more tests of the same 20 fields, 2,000 records each."""
    fields = 20
    data = None
    growth = Growth("tests of 20 fields, 2,000 records, in turn Mann-Whitney and sign, by tests", "tests", options)
    for size in TESTS:
        if growth.is_wanted and size <= options.largest:
            data = data or timing.grouped_table("groups2", 2, timing.normal, 2_000, fields)
            tests = []
            for i in range(size):
                x = "x%d" % (i // 2 % fields)
                tests.append({"IMannWhitneyU": {"variableName": x, "groupVariableName": "g"}} if i % 2 == 0 else
                             {"RSign": {"variableName": [x, "x%d" % ((i // 2 + 1) % fields)]}})
            growth.measure(size, timing.tarn("tests", data, tests, "--nominal", "g"))


def growth_of_groups(options):
    """The comparisons of k groups; a little rise with the group, or the stepwise search would not begin."""
    def rising(groups):
        def draw(rng):
            group = rng.randint(1, groups)
            return [group, rng.gauss(0.5 * group / groups, 1.0)]
        return draw

    for records in (100_000, 1_000_000):
        if records > options.largest:
            continue
        for name, test in (("Jonckheere-Terpstra", "IJonckheereTerpstra"), ("median", "IMedian")):
            for comparison in ("stepWise", "pairWise", "none"):
                title = "%s, %s, %d records, by groups" % (name, comparison, records)
                growth = Growth(title, "groups", options)
                for size in GROUPS:
                    if growth.is_wanted:
                        data = timing.table("rising%d" % size, ["g", "x0"], rising(size), records)
                        tests = grouped_test(test, typeOfMultipleComparison=comparison)
                        growth.measure(size, timing.tarn("groups", data, tests, "--nominal", "g"))


def main():
    options = timing.parser(__doc__, runs=3)
    options.add_argument("--largest", type=int, default=max(RECORDS), 
                         help="the largest size, for trying this script (%(default)s)")
    options.add_argument("--limit", type=int, default=120, help="the most seconds of a run (%(default)s)")
    options = options.parse_args()
    timing.print_machine("budget of one core")
    os.makedirs(timing.FOLDER, exist_ok=True)
    growth_of_records(options)
    growth_of_fields(options)
    growth_of_tests(options)
    growth_of_groups(options)


if __name__ == "__main__":
    main()
