#!/usr/bin/env python3
"""Works out again, in fractions, every significance of the reference data that is said to come from enumeration.

usage: enumerate_cases.py [FOLDER]

FOLDER is that of the published results, beside this one if not given. Needs nothing but Python 3.9 or later. Each number
is made from the data of its case alone: all ways to form the groups, all signs of the differences, all orders within the
rows or of the cases. Prints a line for each, and ends with status 1 if one isn't what the file says.
"""
import collections
import fractions
import itertools
import json
import math
import os
import sys

Fraction = fractions.Fraction
DIGITS = 13


# ---- Data ----

def mid_ranks(values):
    """Twice the mid-ranks, so that they are whole numbers."""
    return [sum(2 if other < value else other == value for other in values) + 1 for value in values]


def samples_of(columns):
    """The values of each group, in the order in which the groups occur."""
    groups = collections.OrderedDict()
    for value, group in zip(columns["x"], columns["g"]):
        groups.setdefault(group, []).append(value)
    return list(groups.values())


def option(request, name, default=None):
    return request[request.index(name) + 1] if name in request else default


def differences(columns, request):
    """Second field minus first, without zeros; of one sample its distances from the value that is tested against."""
    if "--related" in request:
        first, second = option(request, "--related").split(",")
        pairs = [(b, a) for a, b in zip(columns[first], columns[second])]
    else:
        centre = Fraction(option(request, "--test-value"))
        pairs = [(value, centre) for value in columns["x"]]
    # Decimal numbers as they are written, so that equal differences are equal.
    return [d for d in (Fraction(str(a)) - Fraction(str(b)) for a, b in pairs) if d]


# ---- All ways to form the groups ----

def arrangements(values, sizes, start, step):
    """How many ways lead to each result when `values` are dealt to groups of `sizes`.

    Equal values are dealt together. `step(result, value, dealt, before)` makes the next result; `dealt` says how many of
    the value each group got, `before` how many smaller ones it has.
    """
    states = {(tuple(0 for _ in sizes), start): 1}
    for value, count in sorted(collections.Counter(values).items()):
        following = collections.Counter()
        for (before, result), ways in states.items():
            for dealt in deals(count, [size - have for size, have in zip(sizes, before)]):
                new = tuple(have + got for have, got in zip(before, dealt))
                many = math.factorial(count)
                for got in dealt:
                    many //= math.factorial(got)
                following[new, step(result, value, dealt, before)] += ways * many
        states = following
    totals = collections.Counter()
    for (_, result), ways in states.items():
        totals[result] += ways
    return totals


def deals(count, room):
    """All ways to split `count` among groups with so much room."""
    if len(room) == 1:
        if count <= room[0]:
            yield (count,)
        return
    for got in range(min(count, room[0]) + 1):
        for rest in deals(count - got, room[1:]):
            yield (got, *rest)


def share(totals, counts):
    """How probable a result is that counts."""
    return Fraction(sum(ways for result, ways in totals.items() if counts(result)), sum(totals.values()))


def tail(totals, observed, mean, side):
    """P of what is as far from the mean as the data, or further; of one side where there is one."""
    if side == "greater":
        return share(totals, lambda result: result >= observed)
    if side == "less":
        return share(totals, lambda result: result <= observed)
    return share(totals, lambda result: abs(result - mean) >= abs(observed - mean))


# ---- The tests ----

def rank_sum(columns, request, side):
    groups = samples_of(columns)
    values = groups[0] + groups[1]
    rank = dict(zip(values, mid_ranks(values)))
    totals = arrangements(values, [len(group) for group in groups], 0,
                          lambda result, value, dealt, before: result + dealt[0] * rank[value])
    return tail(totals, sum(rank[value] for value in groups[0]), Fraction(len(groups[0]) * (len(values) + 1)), side)


def signed_ranks(columns, request, side):
    found = differences(columns, request)
    ranks = mid_ranks([abs(d) for d in found])
    totals = collections.Counter({0: 1})
    for rank in ranks:
        totals = totals + collections.Counter({result + rank: ways for result, ways in totals.items()})
    return tail(totals, sum(rank for rank, d in zip(ranks, found) if d > 0), Fraction(sum(ranks), 2), side)


def signs(columns, request, side):
    found = differences(columns, request)
    totals = collections.Counter({k: math.comb(len(found), k) for k in range(len(found) + 1)})
    return tail(totals, sum(d > 0 for d in found), Fraction(len(found), 2), side)


def runs_in(order):
    return 1 + sum(one != next_one for one, next_one in zip(order, order[1:]))


def all_run_counts(first, second):
    """How many orders of so many cases of two kinds have each number of runs."""
    totals = collections.Counter()
    for places in itertools.combinations(range(first + second), first):
        chosen = set(places)
        totals[runs_in([place in chosen for place in range(first + second)])] += 1
    return totals


def runs(columns, request, side):
    cut = Fraction(option(request, "--cut-point"))
    order = [value >= cut for value in columns["x"]]
    upper, n = sum(order), len(order)
    totals = all_run_counts(upper, n - upper)
    return tail(totals, runs_in(order), 1 + Fraction(2 * upper * (n - upper), n), side)


def two_sample_runs(columns, request, side):
    order = [group for _, group in sorted(zip(columns["x"], columns["g"]))]
    groups = samples_of(columns)
    totals = all_run_counts(len(groups[0]), len(groups[1]))
    return share(totals, lambda result: result <= runs_in(order))


def span(places, trimmed):
    """From the first to the last of ascending places that are left, both counted."""
    return places[len(places) - 1 - trimmed] - places[trimmed] + 1


def moses(columns, request, side, trimmed):
    order = [group for _, group in sorted(zip(columns["x"], columns["g"]))]
    control = columns["g"][0]
    places = [place for place, group in enumerate(order) if group == control]
    totals = collections.Counter(span(chosen, trimmed)
                                 for chosen in itertools.combinations(range(len(order)), len(places)))
    return share(totals, lambda result: result <= span(places, trimmed))


def smirnov(columns, request, side):
    groups = samples_of(columns)
    sizes = [len(group) for group in groups]

    def step(result, value, dealt, before):
        distance = (before[0] + dealt[0]) * sizes[1] - (before[1] + dealt[1]) * sizes[0]
        return max(result, abs(distance))

    totals = arrangements(groups[0] + groups[1], sizes, 0, step)
    steps = sorted(set(groups[0] + groups[1]))
    observed = max(abs(sum(v <= at for v in groups[0]) * sizes[1] - sum(v <= at for v in groups[1]) * sizes[0])
                   for at in steps)
    return share(totals, lambda result: result >= observed)


def kruskal_wallis(columns, request, side):
    groups = samples_of(columns)
    values = [value for group in groups for value in group]
    rank = dict(zip(values, mid_ranks(values)))
    sizes = [len(group) for group in groups]
    totals = arrangements(values, sizes, tuple(0 for _ in sizes), lambda result, value, dealt, before: tuple(
        have + got * rank[value] for have, got in zip(result, dealt)))
    scatter = lambda sums: sum(Fraction(one * one, size) for one, size in zip(sums, sizes))
    observed = scatter([sum(rank[value] for value in group) for group in groups])
    return share(totals, lambda result: scatter(result) >= observed)


def jonckheere(columns, request, side):
    groups = samples_of(columns)
    sizes = [len(group) for group in groups]

    def step(result, value, dealt, before):
        for low in range(len(sizes)):
            for high in range(low + 1, len(sizes)):
                result += 2 * before[low] * dealt[high] + dealt[low] * dealt[high]
        return result

    totals = arrangements([value for group in groups for value in group], sizes, 0, step)
    pairs = [(a, b) for low in range(len(groups)) for high in range(low + 1, len(groups))
             for a in groups[low] for b in groups[high]]
    observed = sum(2 if a < b else 1 if a == b else 0 for a, b in pairs)
    return tail(totals, observed, len(pairs), side)


def above_median(columns):
    groups = samples_of(columns)
    values = sorted(value for group in groups for value in group)
    half = len(values) // 2
    median = values[half] if len(values) % 2 else Fraction(values[half - 1] + values[half], 2)
    return [len(group) for group in groups], [sum(value > median for value in group) for group in groups]


def median(columns, request, side):
    sizes, above = above_median(columns)
    totals = {dealt: math.prod(math.comb(size, got) for size, got in zip(sizes, dealt))
              for dealt in deals(sum(above), sizes)}
    scatter = lambda counts: sum(Fraction(one * one, size) for one, size in zip(counts, sizes))
    return share(totals, lambda result: scatter(result) >= scatter(above))


def fisher(columns, request, side):
    sizes, above = above_median(columns)
    totals = {got: math.comb(sizes[0], got) * math.comb(sizes[1], sum(above) - got)
              for got in range(sum(above) + 1) if sum(above) - got <= sizes[1]}
    return share(totals, lambda result: totals[result] <= totals[above[0]])


def rows_of(columns, request):
    return list(zip(*(columns[field] for field in option(request, "--related").split(","))))


def within_rows(rows):
    """How many ways lead to each list of column sums when each row is put into every order."""
    totals = collections.Counter({tuple(0 for _ in rows[0]): 1})
    for row in rows:
        orders = collections.Counter(itertools.permutations(row))
        following = collections.Counter()
        for sums, ways in totals.items():
            for order, many in orders.items():
                following[tuple(one + other for one, other in zip(sums, order))] += ways * many
        totals = following
    return totals


def column_sums(rows):
    squares = lambda sums: sum(one * one for one in sums)
    observed = squares([sum(column) for column in zip(*rows)])
    return share(within_rows(rows), lambda sums: squares(sums) >= observed)


def friedman(columns, request, side):
    return column_sums([mid_ranks(row) for row in rows_of(columns, request)])


def cochran(columns, request, side):
    return column_sums(rows_of(columns, request))


def mcnemar(columns, request, side):
    changed = [(a, b) for a, b in rows_of(columns, request) if a != b]
    up = sum(a < b for a, b in changed)
    totals = collections.Counter({k: math.comb(len(changed), k) for k in range(len(changed) + 1)})
    return tail(totals, up, Fraction(len(changed), 2), side)


def marginal_homogeneity(columns, request, side):
    steps = [a - b for a, b in rows_of(columns, request) if a != b]
    totals = collections.Counter({0: 1})
    for step in steps:
        following = collections.Counter()
        for result, ways in totals.items():
            following[result + step] += ways
            following[result - step] += ways
        totals = following
    return tail(totals, sum(steps), 0, side)


TESTS = {
    "IMannWhitneyU": rank_sum, "RWilcoxonSignedRanks": signed_ranks, "OWilcoxonSignedRanks": signed_ranks,
    "RSign": signs, "ORuns": runs, "IWaldWolfowitzRuns": two_sample_runs, "IKolmogorovSmirnov": smirnov,
    "IKruskalWallis": kruskal_wallis, "IJonckheereTerpstra": jonckheere, "IMedian": median,
    "RFriedmansTwoWayByRanks": friedman, "RKendallsCoefficient": friedman, "RCochransQ": cochran,
    "RMcNemar": mcnemar, "RMarginalHomogeneity": marginal_homogeneity,
}


def probability(test, columns, request, quantity, of):
    """The significance as a fraction."""
    side = of if of in ("less", "greater") else "two-sided"
    if test == "IMoses":
        return moses(columns, request, side, int(option(request, "--outliers", 1)) if of == "trimmed" else 0)
    if quantity == "p fisher":
        return fisher(columns, request, side)
    return TESTS[test](columns, request, side)


def decimal(value, digits=DIGITS):
    """A fraction with so many significant digits, rounded half up."""
    if value == 1:
        return "1"
    places = digits
    while value * 10**(places - digits + 1) < 1:
        places += 1
    return "0." + str(math.floor(value * 10**places + Fraction(1, 2))).zfill(places)


def main():
    here = os.path.dirname(os.path.abspath(__file__))
    folder = sys.argv[1] if len(sys.argv) > 1 else os.path.join(here, "..", "published")
    done = wrong = 0
    for name in sorted(os.listdir(folder)):
        with open(os.path.join(folder, name), encoding="utf-8") as file:
            pack = json.load(file)
        data = {}
        for case in pack["cases"]:
            data[case["name"]] = case["data"] if isinstance(case["data"], dict) else data[case["data"]]
            if case["kind"] != "enumeration":
                continue
            for number in case["expect"]:
                if not number["quantity"].startswith(("p ", "further p")):
                    continue
                value = probability(pack["test"], data[case["name"]], case["request"], number["quantity"],
                                    number.get("of", ""))
                isRight = decimal(value) == number["printed"]
                done, wrong = done + 1, wrong + (not isRight)
                print("%-34s %-28s %s%s" % (case["name"], number["quantity"], number["printed"],
                                            "" if isRight else "  IS " + decimal(value)))
    print("%d numbers, %d wrong" % (done, wrong))
    return 1 if wrong or not done else 0


if __name__ == "__main__":
    sys.exit(main())
