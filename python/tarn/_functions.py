"""One function for each test, with the arguments that users of SciPy know.

Each takes the samples themselves, or a table and the names of its columns:

* samples: ``mann_whitney(x, y)``, ``friedman(a, b, c)``, ``binomial(x)``;
* a table: ``mann_whitney(data, "len", by="supp")``, ``friedman(data, "a", "b", "c")``, ``binomial(data, "x")``.

What stands behind them goes by name and means what it means in `tarn.analyze`.
"""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, Unpack

from . import _binding, _tables
from ._analyze import Call
from ._errors import InputError, errors_of_the_package
from ._request import Fields, Options
from ._result import TestResult

# The columns that samples become which have no names of their own.
_FIELD, _GROUP = "value", "sample"
_LETTERS = "xyz"


def _names_of(samples: tuple[Any, ...]) -> list[str]:
    """What the samples are called: by the names that they bear where those differ, else x, y, or by their numbers."""
    own = [getattr(sample, "name", None) for sample in samples]
    if all(isinstance(name, str) and name for name in own) and len(set(own)) == len(own):
        return [str(name) for name in own]
    if len(samples) <= len(_LETTERS):
        return list(_LETTERS[: len(samples)])
    return [str(number) for number in range(1, len(samples) + 1)]


def _split(options: Mapping[str, Any]) -> tuple[dict[str, Any], Any, Any]:
    """The arguments of a request, the weights and what wants to see the progress."""
    rest = dict(options)
    weights, progress = rest.pop("weights", None), rest.pop("progress", None)
    return rest, weights, progress


def _is_table(arguments: tuple[Any, ...]) -> bool:
    return len(arguments) > 1 and all(isinstance(argument, str) for argument in arguments[1:])


def _check_count(test: str, count: int, least: int, most: int | None) -> None:
    if count >= least and (most is None or count <= most):
        return
    expected = f"{least}" if most == least else f"{least} or more" if most is None else f"{least} to {most}"
    raise InputError(f"{test} of {count} {'sample' if count == 1 else 'samples'}; expected {expected}")


def _by_columns(
    test: str, family: str, arguments: tuple[Any, ...], least: int, most: int | None, options: Mapping[str, Any]
) -> TestResult:
    """A test of one column, or of several of the same cases."""
    asked, weights, progress = _split(options)
    if _is_table(arguments):
        data, names = arguments[0], list(arguments[1:])
    else:
        names = _names_of(arguments)
        data = dict(zip(names, arguments, strict=True))
    _check_count(test, len(names), least, most)
    return _test_of(data, Call({family: names, "tests": test, "brief": True, **asked}, weights, progress))


def _test_of(data: Any, call: Call) -> TestResult:
    with errors_of_the_package():
        return call.only_test(_tables.read(data, call.request.wants), _tables.library_of(data))


def _by_groups(
    test: str, arguments: tuple[Any, ...], by: str | None, most: int | None, options: Mapping[str, Any],
    is_ordered: bool = False,
) -> TestResult:  # fmt: skip
    """A test of one column between groups, or of samples by themselves."""
    asked, weights, progress = _split(options)
    if by is not None:
        if len(arguments) != 2 or not isinstance(arguments[1], str):
            raise InputError(f'by={by!r} goes with a table and one column; expected {test.replace("-", "_")}'
                             f'(data, "column", by={by!r})')  # fmt: skip
        wanted = {"independent": arguments[1], "group": by, "tests": test, "brief": True, **asked}
        return _test_of(arguments[0], Call(wanted, weights, progress))
    if _is_table(arguments):
        raise InputError('a table without groups; expected by= with the column whose categories are the groups')
    _check_count(test, len(arguments), 2, most)
    if isinstance(weights, str):
        raise InputError("weights= names a column, and samples have none; expected the weights themselves")
    call = Call({"independent": _FIELD, "group": _GROUP, "tests": test, "brief": True, **asked}, weights, progress)
    table = _binding.Data()
    with errors_of_the_package():
        _tables.add_samples(table, _FIELD, _GROUP, dict(zip(_names_of(arguments), arguments, strict=True)), is_ordered)
        return call.only_test(table, _tables.library_of(arguments[0]))


# ---- Independent samples ----


def mann_whitney(*samples: Any, by: str | None = None, test_value: float | None = None,
                 **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Mann-Whitney U test of two groups.

    Parameters
    ----------
    *samples
        Two samples ``x, y``, or a table and a column.
    by : str
        The column of the groups, with a table.
    test_value : float
        The difference expected, first less second.
    **options
        As in `tarn.analyze`: `alternative`, `exact`, `continuity`, `monte_carlo`, `like`, ...

    Returns
    -------
    TestResult
        `statistic` is the U of the first sample.

    Examples
    --------
    >>> statistic, pvalue = tarn.mann_whitney([1.1, 2.2, 3.3, 4.4], [2.5, 3.5, 5.5, 6.5, 7.5])
    >>> statistic, round(pvalue, 4)
    (3.0, 0.1111)
    """
    return _by_groups("mann-whitney", samples, by, 2, {**options, "test_value": test_value})


def hodges_lehmann(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Hodges and Lehmann's estimate of the shift of two groups, first less second, with its interval.

    The arguments are those of `mann_whitney`. An estimate has an `interval`, and neither statistic nor significance.
    """
    return _by_groups("hodges-lehmann", samples, by, 2, options)


def moses(*samples: Any, by: str | None = None, outliers: float | None = None,
          **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Moses' test of extreme reactions: do two groups reach equally far to the extremes?

    `outliers` is how many extreme values are trimmed; the other arguments are those of `mann_whitney`.
    """
    return _by_groups("moses", samples, by, 2, {**options, "outliers": outliers})


def wald_wolfowitz(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Wald and Wolfowitz's runs test: are the values of two groups mixed at random?

    The arguments are those of `mann_whitney`.
    """
    return _by_groups("wald-wolfowitz", samples, by, 2, options)


def kolmogorov_smirnov(*samples: Any, by: str | None = None, distribution: str | None = None,
                       **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Kolmogorov-Smirnov test of two groups, or of one sample against a distribution.

    Parameters
    ----------
    *samples
        Two samples, or a table and a column with `by`; one sample, or a table and a column, with `distribution`.
    by : str
        The column of the groups, with a table.
    distribution : {"normal", "uniform", "poisson", "exponential"}
        What one sample is compared with; its parameters are estimated from the data.
    **options
        As in `tarn.analyze`.
    """
    is_one = distribution is not None or len(samples) == 1 or (by is None and _is_table(samples))
    if not is_one:
        return _by_groups("kolmogorov-smirnov", samples, by, 2, options)
    asked = {**options, "distribution": distribution or "normal"}
    return _by_columns("kolmogorov-smirnov", "one_sample", samples, 1, 1, asked)


def kruskal_wallis(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Kruskal-Wallis test of two groups or more.

    ``compare="pairwise"`` compares them with one another. The other arguments are those of `mann_whitney`.

    Examples
    --------
    >>> tarn.kruskal_wallis([1, 3, 5, 7, 9], [2, 4, 6, 8, 10]).statistic
    0.272727272727273
    """
    return _by_groups("kruskal-wallis", samples, by, None, options)


kruskal = kruskal_wallis


def jonckheere(*samples: Any, by: str | None = None, descending: bool = False, **options: Unpack[Options]) -> TestResult:
    """Jonckheere and Terpstra's test: do values rise with the order of the groups?

    The samples stand in their order, and so have the categories of `by` to; ``order=`` tells that of words. With
    `descending` values are expected to fall.
    """
    asked = {**options, "descending": True} if descending else options
    return _by_groups("jonckheere", samples, by, None, asked, True)


def median(*samples: Any, by: str | None = None, test_value: float | None = None,
           **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Median test of two groups or more, against the median of all of them or `test_value`."""
    return _by_groups("median", samples, by, None, {**options, "test_value": test_value})


# ---- Related samples ----


def sign(*samples: Any, test_value: float | None = None, **options: Unpack[Options]) -> TestResult:
    """Sign test of a pair: are the differences as often positive as negative?

    Parameters
    ----------
    *samples
        Two samples of the same cases, or a table and two columns.
    test_value : float
        The difference expected.
    **options
        As in `tarn.analyze`.
    """
    return _by_columns("sign", "related", samples, 2, 2, {**options, "test_value": test_value})


def wilcoxon(*samples: Any, test_value: float | None = None, **options: Unpack[Options]) -> TestResult:
    """Wilcoxon's signed rank test of a pair, or of one sample against a median.

    Parameters
    ----------
    *samples
        Two samples of the same cases, or a table and two columns; one sample, or a table and one column.
    test_value : float
        The median of one sample, 0 if not given; of a pair the difference expected.
    **options
        As in `tarn.analyze`: `alternative`, `zeros`, `continuity`, `exact`, ...
    """
    count = len(samples) - 1 if _is_table(samples) else len(samples)
    if count == 1:
        asked = {**options, "test_value": 0 if test_value is None else test_value}
        return _by_columns("wilcoxon", "one_sample", samples, 1, 1, asked)
    return _by_columns("wilcoxon", "related", samples, 1, 2, {**options, "test_value": test_value})


def hodges_lehmann_related(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Hodges and Lehmann's estimate of the shift of a pair, with its interval."""
    return _by_columns("hodges-lehmann", "related", samples, 2, 2, options)


def mcnemar(*samples: Any, success: Any = None, **options: Unpack[Options]) -> TestResult:
    """McNemar's test of two dichotomies: do they change as often one way as the other?

    `success` is the category that counts as success; without it that of the first case. Numbers are categories here.
    """
    return _by_categories("mcnemar", "related", samples, 2, 2, {**options, "success": success})


def marginal_homogeneity(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Stuart and Maxwell's question on ordered categories: have two columns equal margins?"""
    return _by_categories("marginal-homogeneity", "related", samples, 2, 2, options)


def friedman(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Friedman's test of two samples or more of the same cases; ``compare="pairwise"`` compares them all."""
    return _by_columns("friedman", "related", samples, 2, None, options)


def kendall(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Kendall's coefficient of concordance: do the cases, as judges, rank the samples alike?"""
    return _by_columns("kendall", "related", samples, 2, None, options)


def cochran(*samples: Any, success: Any = None, **options: Unpack[Options]) -> TestResult:
    """Cochran's Q test: are several dichotomies of the same cases as often a success? `success` as in `mcnemar`."""
    return _by_categories("cochran", "related", samples, 2, None, {**options, "success": success})


# ---- One sample ----


def binomial(*samples: Any, probability: float | None = None, success: Any = None, cut_point: float | None = None,
             **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Binomial test: is the share of the first of two classes the one expected?

    Parameters
    ----------
    *samples
        One sample, or a table and one column. Texts and booleans are classes; numbers are cut into two.
    probability : float
        The share expected, 0.5 if not given.
    success : value
        The first class; without it that of the first case.
    cut_point : float
        Where numbers are cut; it belongs to the first class. Without it in the middle between their ends.
    **options
        As in `tarn.analyze`.
    """
    asked = {**options, "probability": probability, "success": success, "cut_point": cut_point}
    return _by_columns("binomial", "one_sample", samples, 1, 1, asked)


def chi_square(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Chi-square test: are the categories of one sample equally frequent? Numbers are categories here."""
    return _by_categories("chi-square", "one_sample", samples, 1, 1, options)


def runs(*samples: Any, success: Any = None, cut_point: float | None = None, **options: Unpack[Options]) -> TestResult:
    """Runs test: do two classes follow one another at random? Numbers are cut at their median or at `cut_point`."""
    return _by_columns("runs", "one_sample", samples, 1, 1, {**options, "success": success, "cut_point": cut_point})


def _by_categories(
    test: str, family: str, samples: tuple[Any, ...], least: int, most: int | None, options: Mapping[str, Any]
) -> TestResult:
    """A test whose columns are categories, whatever their values."""
    names: Fields = list(samples[1:]) if _is_table(samples) else _names_of(samples)
    level = "ordinal" if test == "marginal-homogeneity" else "nominal"
    ordered = set(options.get("order") or ())
    levels = {} if level in options else {level: [name for name in names if name not in ordered]}
    return _by_columns(test, family, samples, least, most, {**levels, **options})
