"""The one call for any analysis, and what there is to know beside it."""

from __future__ import annotations

import os
from collections.abc import Callable, Mapping, Sequence
from typing import Any, NamedTuple

from . import _binding, _tables
from ._errors import EngineError, InputError, errors_of_the_package, in_words_of_python
from ._request import Adjust, Alternative, Compare, Fields, Like, Missing, Zeros, as_json, fields_of, make_request
from ._result import Result

Progress = Callable[[float], object]

_LIBRARY_FOLDER = os.path.dirname(os.path.abspath(__file__))
# The column that weights go into which are handed over by themselves.
_OWN_WEIGHTS = "(weights)"


class TestInfo(NamedTuple):
    """A test that can be asked for: its name, family and title, and the question that it answers."""

    name: str
    family: str
    title: str
    question: str


# A formula is to become the second argument, so what is there now has to be named.
def analyze(
    data: Any,
    *,
    one_sample: Fields | None = None,
    related: Fields | None = None,
    independent: Fields | None = None,
    group: str | None = None,
    tests: Fields | None = None,
    compare: Compare | None = None,
    test_value: float | None = None,
    cut_point: float | None = None,
    probability: float | None = None,
    success: Any = None,
    distribution: Fields | None = None,
    outliers: float | None = None,
    descending: bool = False,
    alternative: Alternative = "two-sided",
    continuity: bool | None = None,
    zeros: Zeros | None = None,
    adjust: Adjust | None = None,
    exact: bool = False,
    monte_carlo: int | None = None,
    seed: int = 1,
    like: Like | None = None,
    weights: Any = None,
    case_id: str | None = None,
    nominal: Fields | None = None,
    ordinal: Fields | None = None,
    continuous: Fields | None = None,
    order: Mapping[str, Sequence[Any]] | None = None,
    missing: Missing = "analysis",
    alpha: float = 0.05,
    confidence: float = 95,
    brief: bool = False,
    as_defined: bool = False,
    threads: int | None = None,
    progress: Progress | None = None,
) -> Result:
    """Tests columns of a table.

    Parameters
    ----------
    data : data frame, dict of columns or NumPy array
        Anything that offers the Arrow C stream (polars, pyarrow, DuckDB), a data frame of pandas, a dict of arrays or
        lists, a structured array, or one of two dimensions whose columns are called "0", "1", ... Nulls and NaN are
        missing. Categoricals bring their categories and order. Columns that no argument names are passed over.
    one_sample, related, independent : str or list of str
        Columns to be tested each by itself; measured on the same cases; to be compared between groups.
    group : str
        The column whose categories are the groups of `independent`.
    tests : str or list of str
        Names of `tarn.tests`; a family with none named gets those that suit its columns.
    compare : {"pairwise", "stepwise"}
        Compares more than two samples with one another.
    test_value : float
        The median that ``wilcoxon`` (one sample) and ``median`` test against; of two samples the difference expected.
    cut_point : float
        Where ``binomial`` and ``runs`` cut a column of numbers.
    probability : float
        The share that ``binomial`` expects, 0.5 if not given.
    success : value or list of values
        The categories that count as the first class.
    distribution : str or list of str
        Of ``kolmogorov-smirnov`` of one sample: "normal", "uniform", "poisson", "exponential".
    outliers : float
        How many extreme values ``moses`` trims.
    descending : bool
        Whether ``jonckheere`` expects values to fall with the groups.
    alternative : {"two-sided", "less", "greater"}
        ``"greater"`` expects the first sample to have the larger values.
    continuity : bool
        Whether a normal approximation is corrected for continuity.
    zeros : {"drop", "pratt", "split"}
        What becomes of differences of zero in signed ranks.
    adjust : {"holm", "hochberg", "hommel", "bh", "by", "bonferroni", "none"}
        How significances of pairs, and of the tests together, are adjusted for their number.
    exact : bool
        Exact significances, conditional on ties, also where they take some seconds.
    monte_carlo : int
        Significances from so many random arrangements of the data.
    seed : int
        The seed of these arrangements.
    like : {"r", "scipy"}
        The choices that R or SciPy make by themselves, so that the numbers are theirs.
    weights : str or sequence of numbers
        The column with the frequency weights, or the weights themselves.
    case_id : str
        The column that names the cases.
    nominal, ordinal, continuous : str or list of str
        Columns whose values are to be taken so.
    order : dict of lists
        The categories of columns from the lowest to the highest: ``{"dose": ["low", "high"]}``.
    missing : {"analysis", "listwise"}
        A test loses the cases that miss one of its own columns, or any of those that are named.
    alpha, confidence : float
        The levels: a share up to 1, percent above it.
    brief : bool
        Leaves histograms, box plots and descriptives out of the result document.
    as_defined : bool
        Computes with the engine's counts of fixed width in place of wide ones.
    threads : int
        How many threads may work at a time; no result depends on it.
    progress : callable
        Called with the percent that is done, on the calling thread. What it raises ends the analysis.

    Returns
    -------
    Result
        Its ``repr`` is the report; its frames are of the library of `data`.

    Raises
    ------
    InputError
        For data or arguments that can't be what they should be.
    EngineError
        Where the run fails.
    KeyboardInterrupt
        After Ctrl-C, which ends the run at once.

    Examples
    --------
    >>> import tarn
    >>> sleep = {"before": [5.1, 6.0, 6.2, 4.9, 5.5, 6.1], "after": [6.0, 6.4, 6.1, 5.8, 6.3, 6.9]}
    >>> statistic, pvalue = tarn.analyze(sleep, related=["before", "after"], tests="sign")["sign"]
    >>> statistic, pvalue
    (5.0, 0.21875)
    """
    asked = locals()
    del asked["data"], asked["progress"], asked["weights"]
    by_themselves = {"alternative": "two-sided", "descending": False, "exact": False, "seed": 1, "missing": "analysis",
                     "alpha": 0.05, "confidence": 95, "brief": False, "as_defined": False}  # fmt: skip
    asked = {name: value for name, value in asked.items() if name not in by_themselves or value != by_themselves[name]}
    return run_on(data, asked, weights, progress)


def run_on(data: Any, asked: Mapping[str, Any], weights: Any = None, progress: Progress | None = None) -> Result:
    """Analyses a table by arguments of `analyze`, those that were given."""
    request = make_request({**asked, "weights": weights if isinstance(weights, str) else None})
    own_weights = weights if weights is not None and "weights" not in request else None
    with errors_of_the_package():
        table = _tables.read(data, fields_of(request))
    return run(table, request, _tables.library_of(data), own_weights, progress)


def run(
    table: _binding.Data, request: dict[str, Any], library: str, own_weights: Any = None,
    progress: Progress | None = None,
) -> Result:  # fmt: skip
    """Runs a checked request on data that was read."""
    if progress is not None and not callable(progress):
        raise InputError(f"progress= is of type {type(progress).__name__}; expected a function of the percent that is done")
    with errors_of_the_package():
        if own_weights is not None:
            _tables.add_column(table, _OWN_WEIGHTS, own_weights)
            request = {**request, "weights": _OWN_WEIGHTS}
        report = _binding.analyze(table, as_json(request), _LIBRARY_FOLDER, progress)
    if not report.is_done:
        raise EngineError(in_words_of_python("; ".join(report.remarks)), report.failure_code)
    return Result(report, library, request)


def load(path: str | os.PathLike[str]) -> Result:
    """Reads a result document that was saved, by `Result.save` or by the command.

    Parameters
    ----------
    path : str or path
        The document, XML.

    Returns
    -------
    Result
        What stands in the document. Effects and groups are made from the data, so that it has none; its frames are
        dicts of columns.

    Raises
    ------
    InputError
        For a file that can't be read or is no result document.
    """
    with errors_of_the_package():
        return Result(_binding.load(os.fspath(path)))


def explain(name_or_code: str | int) -> str:
    """Says what a test or a code means.

    Parameters
    ----------
    name_or_code : str or int
        A name of `tarn.tests`, or the code of a message.

    Raises
    ------
    InputError
        For what is neither.

    Examples
    --------
    >>> print(tarn.explain("sign").splitlines()[0])
    Sign test
    """
    with errors_of_the_package():
        return _binding.explain(str(name_or_code)).rstrip("\n")


def tests() -> list[TestInfo]:
    """All tests that can be asked for, family by family.

    Examples
    --------
    >>> [test.name for test in tarn.tests() if test.family == "one-sample"]
    ['kolmogorov-smirnov', 'binomial', 'chi-square', 'runs', 'wilcoxon']
    """
    return [TestInfo(*test) for test in _binding.tests()]
