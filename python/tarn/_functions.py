"""One function for each test, with the arguments that users of SciPy know.

Each takes the samples themselves, or a table and the names of its columns:

* samples: ``mann_whitney(x, y)``, ``friedman(a, b, c)``, ``binomial(x)``;
* a table: ``mann_whitney(data, "len", by="supp")``, ``friedman(data, "a", "b", "c")``, ``binomial(data, "x")``.

What stands behind them goes by name and means what it means in `tarn.analyze`.
"""

from __future__ import annotations

from collections.abc import Mapping
from typing import Any, Literal, Unpack

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
    """Mann-Whitney U test of two groups: does one of them tend to have the larger values?

    Parameters
    ----------
    *samples
        Two samples ``x, y``, in the units of the measurement; or a table and a column.
    by : str
        The column whose two categories are the groups, with a table.
    test_value : float
        The difference expected, first less second.
    **options
        As in `tarn.analyze`: `alternative`, `exact`, `continuity`, `monte_carlo`, `like`, `weights`, ....

    Returns
    -------
    TestResult
        `statistic` is the U of the first sample, `effect` the rank-biserial correlation.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Mann and Whitney (1947), Annals of Mathematical Statistics 18, 50-60; Wilcoxon (1945), Biometrics Bulletin 1, 80-83.

    Examples
    --------
    >>> statistic, pvalue = tarn.mann_whitney([1.1, 2.2, 3.3, 4.4], [2.5, 3.5, 5.5, 6.5, 7.5])
    >>> statistic, round(pvalue, 4)
    (3.0, 0.1111)
    >>> tarn.mann_whitney({"len": [4.2, 11.5, 7.3, 15.2, 21.5], "supp": list("VVVOO")}, "len", by="supp").statistic
    6.0
    """
    return _by_groups("mann-whitney", samples, by, 2, {**options, "test_value": test_value})


def hodges_lehmann(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Hodges and Lehmann's estimate of the shift of two groups, first less second, with its interval.

    Parameters
    ----------
    *samples
        Two samples ``x, y``, in the units of the measurement; or a table and a column.
    by : str
        The column whose two categories are the groups, with a table.
    **options
        As in `tarn.analyze`: `confidence`, `weights`, ....

    Returns
    -------
    TestResult
        An estimate has an `interval`, in the units of the samples, and neither statistic nor significance.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Hodges and Lehmann (1963), Annals of Mathematical Statistics 34, 598-611; the interval: Lehmann (1963), ibid. 1507-1512.

    Examples
    --------
    >>> tarn.hodges_lehmann([5.0, 7.0, 9.0], [1.0, 2.0, 4.0]).interval.estimate
    5.0
    """
    return _by_groups("hodges-lehmann", samples, by, 2, options)


def moses(*samples: Any, by: str | None = None, outliers: float | None = None,
          **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Moses' test of extreme reactions: do two groups reach equally far to the extremes?

    Parameters
    ----------
    *samples
        Two samples ``x, y``, in the units of the measurement; or a table and a column.
    by : str
        The column whose two categories are the groups, with a table.
    outliers : float
        How many extreme values are trimmed at each end; a twentieth of the first group if not given.
    **options
        As in `tarn.analyze`: `exact`, `weights`, ....

    Returns
    -------
    TestResult
        `pvalue` is that of the span of the first group, the control, without the outliers.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Moses (1952), Psychometrika 17, 239-247.

    Examples
    --------
    >>> tarn.moses([4, 5, 6, 7, 8], [1, 2, 9, 10], outliers=1).pvalue < 0.5
    True
    """
    return _by_groups("moses", samples, by, 2, {**options, "outliers": outliers})


def wald_wolfowitz(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Wald and Wolfowitz's runs test: are the values of two groups mixed at random?

    Parameters
    ----------
    *samples
        Two samples ``x, y``, in the units of the measurement; or a table and a column.
    by : str
        The column whose two categories are the groups, with a table.
    **options
        As in `tarn.analyze`: `exact`, `continuity`, ....

    Returns
    -------
    TestResult
        `statistic` is the number of runs, the smallest one where there are ties.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162.

    Examples
    --------
    >>> tarn.wald_wolfowitz([1, 2, 5, 6], [3, 4, 7, 8]).statistic
    4.0
    """
    return _by_groups("wald-wolfowitz", samples, by, 2, options)


def kolmogorov_smirnov(
    *samples: Any, by: str | None = None, distribution: str | None = None, mean: float | None = None,
    sd: float | None = None, min: float | None = None, max: float | None = None, **options: Unpack[Options],
) -> TestResult:  # fmt: skip
    """Kolmogorov-Smirnov test of two groups, or of one sample against a distribution.

    Parameters
    ----------
    *samples
        Two samples, or a table and a column with `by`; one sample, or a table and a column, with `distribution`.
    by : str
        The column of the groups, with a table.
    distribution : {"normal", "uniform", "poisson", "exponential"}
        What one sample is compared with; "normal" if there is one sample alone.
    mean, sd, min, max : float
        Parameters of the distribution, in the units of the sample; what isn't given is estimated from the data.
    **options
        As in `tarn.analyze`: `exact`, `like`, ....

    Returns
    -------
    TestResult
        `statistic` is the square root of n times the largest difference, of two samples with n their harmonic size.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Kolmogorov (1933), Giornale dell'Istituto Italiano degli Attuari 4, 83-91; Smirnov (1948), Annals of Mathematical
    Statistics 19, 279-281; Lilliefors (1967), Journal of the American Statistical Association 62, 399-402.

    Examples
    --------
    >>> tarn.kolmogorov_smirnov([1, 2, 3, 4], [5, 6, 7, 8]).statistic
    1.4142135623731
    >>> tarn.kolmogorov_smirnov([0.1, 0.4, 0.7], distribution="uniform", min=0, max=1).fields
    ('x',)
    """
    is_one = distribution is not None or len(samples) == 1 or (by is None and _is_table(samples))
    if not is_one:
        return _by_groups("kolmogorov-smirnov", samples, by, 2, options)
    parameters = {"mean": mean, "sd": sd, "min": min, "max": max}
    asked = {**options, **parameters, "distribution": distribution or "normal"}
    return _by_columns("kolmogorov-smirnov", "one_sample", samples, 1, 1, asked)


def kruskal_wallis(*samples: Any, by: str | None = None, **options: Unpack[Options]) -> TestResult:
    """Kruskal-Wallis test of two groups or more: does one of them tend to have larger values?

    Parameters
    ----------
    *samples
        Two samples or more, in the units of the measurement; or a table and a column.
    by : str
        The column whose categories are the groups, with a table.
    **options
        As in `tarn.analyze`: `compare`, `against`, `exact`, `adjust`, ...; ``compare="pairwise"`` compares them with one another.

    Returns
    -------
    TestResult
        `statistic` is H, corrected for ties, `df` one less than the groups.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Kruskal and Wallis (1952), Journal of the American Statistical Association 47, 583-621.

    Examples
    --------
    >>> test = tarn.kruskal_wallis([1, 3, 5, 7, 9], [2, 4, 6, 8, 10])
    >>> test.statistic, test.df
    (0.272727272727273, 1.0)
    """
    return _by_groups("kruskal-wallis", samples, by, None, options)


kruskal = kruskal_wallis


def jonckheere(*samples: Any, by: str | None = None, descending: bool = False, **options: Unpack[Options]) -> TestResult:
    """Jonckheere and Terpstra's test: do values rise with the order of the groups?

    Parameters
    ----------
    *samples
        Two samples or more in their order, in the units of the measurement; or a table and a column.
    by : str
        The column whose categories are the groups, with a table; ``order=`` tells the order of words.
    descending : bool
        Whether values are expected to fall.
    **options
        As in `tarn.analyze`: `order`, `compare`, `exact`, ....

    Returns
    -------
    TestResult
        `statistic` counts the pairs of cases whose values rise with their groups; ties count half.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Terpstra (1952), Indagationes Mathematicae 14, 327-333; Jonckheere (1954), Biometrika 41, 133-145.

    Examples
    --------
    >>> tarn.jonckheere([1, 2], [3, 4], [5, 6]).statistic
    12.0
    """
    asked = {**options, "descending": True} if descending else options
    return _by_groups("jonckheere", samples, by, None, asked, True)


def median(*samples: Any, by: str | None = None, test_value: float | None = None,
           **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Median test of two groups or more: are as many values of each above the median of all?

    Parameters
    ----------
    *samples
        Two samples or more, in the units of the measurement; or a table and a column.
    by : str
        The column whose categories are the groups, with a table.
    test_value : float
        A value in place of that median, in the units of the samples.
    **options
        As in `tarn.analyze`: `compare`, `exact`, `like`, ....

    Returns
    -------
    TestResult
        `statistic` is chi-square, `df` one less than the groups.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Mood (1950), Introduction to the Theory of Statistics, 394-399; Brown and Mood (1951), Proceedings of the Second
    Berkeley Symposium, 159-166.

    Examples
    --------
    >>> tarn.median([1, 2, 3, 9], [7, 8, 4, 6], [10, 11, 12, 13]).df
    2.0
    """
    return _by_groups("median", samples, by, None, {**options, "test_value": test_value})


# ---- Related samples ----


def sign(*samples: Any, test_value: float | None = None, **options: Unpack[Options]) -> TestResult:
    """Sign test of a pair: are the differences as often positive as negative?

    Parameters
    ----------
    *samples
        Two samples of the same cases, equally long; or a table and two columns.
    test_value : float
        The difference expected, second less first.
    **options
        As in `tarn.analyze`: `alternative`, `exact`, `monte_carlo`, `like`, `weights`, ....

    Returns
    -------
    TestResult
        `statistic` is how many differences, second less first, are positive.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Arbuthnott (1710), Philosophical Transactions 27, 186-190; Dixon and Mood (1946), Journal of the American Statistical
    Association 41, 557-566.

    Examples
    --------
    >>> tuple(tarn.sign([5.1, 6.0, 6.2, 4.9, 5.5, 6.1], [6.0, 6.4, 6.1, 5.8, 6.3, 6.9]))
    (5.0, 0.21875)
    """
    return _by_columns("sign", "related", samples, 2, 2, {**options, "test_value": test_value})


def wilcoxon(*samples: Any, test_value: float | None = None, **options: Unpack[Options]) -> TestResult:
    """Wilcoxon's signed rank test of a pair, or of one sample against a median.

    Parameters
    ----------
    *samples
        Two samples of the same cases, or a table and two columns; one sample, or a table and one column.
    test_value : float
        The median of one sample, 0 if not given; of a pair the difference expected. In the units of the samples.
    **options
        As in `tarn.analyze`: `alternative`, `zeros`, `continuity`, `exact`, ....

    Returns
    -------
    TestResult
        `statistic` is the sum of the ranks of the positive differences, second less first.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Wilcoxon (1945), Biometrics Bulletin 1, 80-83; tie correction: Lehmann (1975), Nonparametrics.

    Examples
    --------
    >>> tarn.wilcoxon([1.0, 2.0, 3.0], [2.0, 4.5, 2.5]).statistic
    5.0
    >>> tarn.wilcoxon([1.0, -2.0, 3.5, 4.0], exact=True).pvalue
    0.375
    """
    count = len(samples) - 1 if _is_table(samples) else len(samples)
    if count == 1:
        asked = {**options, "test_value": 0 if test_value is None else test_value}
        return _by_columns("wilcoxon", "one_sample", samples, 1, 1, asked)
    return _by_columns("wilcoxon", "related", samples, 1, 2, {**options, "test_value": test_value})


def hodges_lehmann_related(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Hodges and Lehmann's estimate of the shift of a pair, second less first, with its interval.

    Parameters
    ----------
    *samples
        Two samples of the same cases, equally long; or a table and two columns.
    **options
        As in `tarn.analyze`: `confidence`, `weights`, ....

    Returns
    -------
    TestResult
        An estimate has an `interval`, in the units of the samples, and neither statistic nor significance.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Hodges and Lehmann (1963), Annals of Mathematical Statistics 34, 598-611; the interval: Tukey (1949).

    Examples
    --------
    >>> tarn.hodges_lehmann_related([1, 2, 3], [2, 4, 6]).interval.estimate
    2.0
    """
    return _by_columns("hodges-lehmann", "related", samples, 2, 2, options)


def mcnemar(*samples: Any, success: Any = None, **options: Unpack[Options]) -> TestResult:
    """McNemar's test of two dichotomies: do they change as often one way as the other?

    Numbers are categories here.

    Parameters
    ----------
    *samples
        Two samples of the same cases, equally long; or a table and two columns.
    success : value
        The category that counts as success; without it that of the first case.
    **options
        As in `tarn.analyze`: `exact`, `continuity`, ....

    Returns
    -------
    TestResult
        `statistic` is chi-square, corrected for continuity; `exact` gives the binomial significance.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, texts or truth values, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    McNemar (1947), Psychometrika 12, 153-157; continuity correction: Edwards (1948), Psychometrika 13, 185-187.

    Examples
    --------
    >>> tarn.mcnemar([0, 0, 0, 0, 1, 1], [1, 1, 1, 0, 0, 1], exact=True).pvalue  # three changes one way, one the other
    0.625
    """
    return _by_categories("mcnemar", "related", samples, 2, 2, {**options, "success": success})


def marginal_homogeneity(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Marginal homogeneity test: have two columns of ordered categories equal margins?

    Numbers are categories here, in ascending order.

    Parameters
    ----------
    *samples
        Two samples of the same cases, equally long; or a table and two columns.
    **options
        As in `tarn.analyze`: `order`, `exact`, ....

    Returns
    -------
    TestResult
        `statistic` is the sum of the scores of the first sample where both differ.

    Raises
    ------
    InputError
        For samples that hold anything but numbers or categories with an order, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Agresti (1983), Biometrics 39, 505-510; Mehta and Patel (1992), Statistics in Medicine 11, 1457-1476.

    Examples
    --------
    >>> tarn.marginal_homogeneity([1, 2, 3, 2], [2, 3, 3, 1]).n
    4.0
    """
    return _by_categories("marginal-homogeneity", "related", samples, 2, 2, options)


def friedman(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Friedman's test of two samples or more of the same cases: does one of them tend to be larger?

    Parameters
    ----------
    *samples
        Two samples or more of the same cases, equally long; or a table and its columns.
    **options
        As in `tarn.analyze`: `compare`, `against`, `exact`, ...; ``compare="pairwise"`` compares them all.

    Returns
    -------
    TestResult
        `statistic` is chi-square, corrected for ties, `df` one less than the samples.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Friedman (1937), Journal of the American Statistical Association 32, 675-701.

    Examples
    --------
    >>> tarn.friedman([1, 2, 3], [4, 5, 6], [7, 8, 9]).statistic
    6.0
    """
    return _by_columns("friedman", "related", samples, 2, None, options)


def kendall(*samples: Any, **options: Unpack[Options]) -> TestResult:
    """Kendall's coefficient of concordance: do the cases, as judges, rank the samples alike?

    Parameters
    ----------
    *samples
        Two samples or more of the same cases, equally long; or a table and its columns.
    **options
        As in `tarn.analyze`: `compare`, `exact`, ....

    Returns
    -------
    TestResult
        `statistic` is that of Friedman's test; the coefficient W is the `effect`.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Kendall and Babington Smith (1939), Annals of Mathematical Statistics 10, 275-287.

    Examples
    --------
    >>> tarn.kendall([1, 2, 3], [4, 5, 6], [7, 8, 9]).effect.value
    1.0
    """
    return _by_columns("kendall", "related", samples, 2, None, options)


def cochran(*samples: Any, success: Any = None, **options: Unpack[Options]) -> TestResult:
    """Cochran's Q test: are several dichotomies of the same cases as often a success?

    Numbers are categories here.

    Parameters
    ----------
    *samples
        Two samples or more of the same cases, equally long; or a table and its columns.
    success : value
        The category that counts as success; without it that of the first case.
    **options
        As in `tarn.analyze`: `compare`, `exact`, ....

    Returns
    -------
    TestResult
        `statistic` is Q, `df` one less than the samples.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, texts or truth values, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Cochran (1950), Biometrika 37, 256-266.

    Examples
    --------
    >>> tarn.cochran([1, 1, 1, 0], [0, 0, 0, 1], [1, 0, 1, 0], success=1).df
    2.0
    """
    return _by_categories("cochran", "related", samples, 2, None, {**options, "success": success})


# ---- One sample ----


def binomial(*samples: Any, probability: float | None = None, success: Any = None, cut_point: float | None = None,
             **options: Unpack[Options]) -> TestResult:  # fmt: skip
    """Binomial test: is the share of the first of two classes the one expected?

    Parameters
    ----------
    *samples
        One sample; or a table and one column.
    probability : float
        The share expected, 0.5 if not given.
    success : value
        The first class; without it that of the first case. Texts and booleans are classes; numbers are cut into two.
    cut_point : float
        Where numbers are cut; it belongs to the first class. Without it in the middle between their ends.
    **options
        As in `tarn.analyze`: `alternative`, `exact`, `monte_carlo`, `like`, `weights`, ....

    Returns
    -------
    TestResult
        `statistic` is how many cases are of the first class.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, texts or truth values, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Bernoulli (1713), Ars Conjectandi; Clopper and Pearson (1934), Biometrika 26, 404-413, for the interval.

    Examples
    --------
    >>> tuple(tarn.binomial(list("yyyyyn"), exact=True))  # 2 (6 + 1) / 64
    (5.0, 0.21875)
    """
    asked = {**options, "probability": probability, "success": success, "cut_point": cut_point}
    return _by_columns("binomial", "one_sample", samples, 1, 1, asked)


def chi_square(
    *samples: Any, expected: Mapping[Any, float] | None = None, **options: Unpack[Options]
) -> TestResult:
    """Chi-square test: are the categories of one sample as frequent as expected?

    Numbers are categories here.

    Parameters
    ----------
    *samples
        One sample; or a table and one column.
    expected : dict of numbers
        How frequent each category is expected to be, in any scale; all alike if not given.
    **options
        As in `tarn.analyze`: `exact`, `monte_carlo`, `weights`, ....

    Returns
    -------
    TestResult
        `statistic` is Pearson's chi-square, `df` one less than the categories.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, texts or truth values, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Pearson (1900), Philosophical Magazine 50, 157-175.

    Examples
    --------
    >>> tarn.chi_square(list("aaaaaabb")).statistic
    2.0
    >>> tarn.chi_square(list("aaaaaabb"), expected={"a": 3, "b": 1}).statistic
    0.0
    """
    return _by_categories("chi-square", "one_sample", samples, 1, 1, {**options, "expected": expected})


def runs(
    *samples: Any, success: Any = None, cut_point: float | Literal["mean"] | None = None, **options: Unpack[Options]
) -> TestResult:
    """Runs test: do two classes follow one another at random?

    Parameters
    ----------
    *samples
        One sample; or a table and one column.
    success : value
        One of the classes; the other one is all else.
    cut_point : float or "mean"
        Where numbers are cut; at their median if not given.
    **options
        As in `tarn.analyze`: `exact`, `continuity`, ....

    Returns
    -------
    TestResult
        `statistic` is the number of runs.

    Raises
    ------
    InputError
        For samples that hold anything but numbers, texts or truth values, or another number of them.
    EngineError
        Where the run fails.

    References
    ----------
    Wald and Wolfowitz (1940), Annals of Mathematical Statistics 11, 147-162.

    Examples
    --------
    >>> tarn.runs([1, 9, 2, 8, 3, 7]).statistic
    6.0
    """
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
