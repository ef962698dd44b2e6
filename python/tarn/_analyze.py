"""The one call for any analysis, and what there is to know beside it."""

from __future__ import annotations

import json
import os
from collections.abc import Mapping, Sequence
from typing import Any, Literal, NamedTuple

from . import _binding, _tables
from ._errors import EngineError, InputError, errors_of_the_package, in_words_of_python
from ._look import Look
from ._progress import Progress, shown_progress
from ._request import Adjust, Alternative, Compare, Fields, Like, Missing, Zeros, as_json, make_request
from ._result import Result, TestResult, only_test

_LIBRARY_FOLDER = os.path.dirname(os.path.abspath(__file__))
# The column that weights go into which are handed over by themselves.
_OWN_WEIGHTS = "(weights)"


class TestInfo(NamedTuple):
    """A test that can be asked for: its name, family and title, and the question that it answers."""

    name: str
    family: str
    title: str
    question: str


def analyze(
    data: Any,
    formula: str | None = None,
    *,
    one_sample: Fields | None = None,
    related: Fields | None = None,
    independent: Fields | None = None,
    group: str | None = None,
    by: str | None = None,
    within: str | None = None,
    id: str | None = None,
    where: str | None = None,
    split: str | None = None,
    tests: Fields | None = None,
    compare: Compare | None = None,
    against: Any = None,
    test_value: float | None = None,
    cut_point: float | Literal["mean"] | None = None,
    probability: float | None = None,
    success: Any = None,
    expected: Mapping[Any, float] | None = None,
    distribution: Fields | None = None,
    mean: float | None = None,
    sd: float | None = None,
    min: float | None = None,
    max: float | None = None,
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
    reference: Mapping[str, Any] | None = None,
    label: Mapping[str, str] | None = None,
    missing: Missing = "analysis",
    alpha: float = 0.05,
    confidence: float = 95,
    brief: bool = False,
    as_defined: bool = False,
    threads: int | None = None,
    memory: int | str | None = None,
    resolution: float | Mapping[str, float] | None = None,
    combinations: int | None = None,
    progress: Progress | bool | None = None,
) -> Result:
    """Tests columns of a table.

    Parameters
    ----------
    data : data frame, dict of columns or NumPy array
        Anything that offers the Arrow C stream (polars, pyarrow, DuckDB), a data frame of pandas, a dict of arrays or
        lists, a structured array, or one of two dimensions whose columns are called "0", "1", ... Nulls and NaN are
        missing. Categoricals bring their categories and order. Columns that no argument names are passed over. A frame
        of Dask is counted where it is: how often each combination of the values of a test occurs, which gives what the
        records give.
    formula : str
        In place of columns: ``"score ~ arm"`` compares groups, ``"a + b ~ arm"`` several columns,
        ``"score ~ cond | subject"`` repeated measures in long form, ``"score ~ 1"`` tests one sample.
    one_sample, related, independent : str or list of str
        Columns to be tested each by itself; measured on the same cases; to be compared between groups. Patterns
        (``"x*"``, ``"all"``) mean all columns that match; the case of letters doesn't count where one column is left.
    group, by : str
        The column whose categories are the groups of `independent`; two names of one argument.
    within, id : str
        The condition of repeated measures in long form, and their subject; with one column as `related`.
    where : str
        Which records are taken: ``'age > 40 & arm != "low"'``, ``"dose is not missing"``.
    split : str
        A column within whose categories everything is tested; `Result.parts` has each of them.
    tests : str or list of str
        Names of `tarn.tests`; a family with none named gets those that suit its columns.
    compare : {"pairwise", "stepwise"}
        Compares more than two samples with one another.
    against : category or str
        Of these pairs those with that group, or related column, alone.
    test_value : float
        The median that ``wilcoxon`` (one sample) and ``median`` test against; of two samples the difference expected.
    cut_point : float or "mean"
        Where ``binomial`` and ``runs`` cut a column of numbers.
    probability : float
        The share that ``binomial`` expects, 0.5 if not given.
    success : value or list of values
        The categories that count as the first class.
    expected : dict of numbers
        How frequent ``chi-square`` expects the categories, in any scale: ``{"a": 0.2, "b": 0.8}``.
    distribution : str or list of str
        Of ``kolmogorov-smirnov`` of one sample: "normal", "uniform", "poisson", "exponential".
    mean, sd, min, max : float
        Parameters of that distribution; what isn't given is estimated from the data.
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
    reference : dict
        The category that stands first, from which differences count: ``{"arm": "placebo"}``.
    label : dict
        What the result calls a column beside its name: ``{"hours": "Hours of sleep"}``.
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
    memory : str or int
        What table and run may take, like ``"8G"``, or in bytes; what may take more is refused. Columns that stay where they
        are count for a run alone. If not given, a table may take half of the machine, and a run as much as it takes.
    resolution : float or dict of floats
        Of a frame of Dask: the step to whose multiples numbers are rounded before they are counted, in their own units,
        of all that are tested or of each column. The notes of the result say so.
    combinations : int
        Of a frame of Dask: how many distinct combinations of values a test may have, since its counts go to this process;
        10 million if not given. A request that has more is refused.
    progress : callable or True
        Called with the percent that is done, on the calling thread; what it raises ends the analysis. True shows a bar
        of tqdm, where that is installed.

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
    >>> data = {"score": [3, 5, 4, 6, 8, 9, 7, 9], "arm": ["a", "a", "a", "a", "b", "b", "b", "b"]}
    >>> statistic, pvalue = tarn.analyze(data, "score ~ arm", exact=True)["mann-whitney"]
    >>> statistic, round(pvalue, 6)
    (0.0, 0.028571)

    The same in other words, and a pair of columns:

    >>> tarn.analyze(data, independent="score", by="arm", exact=True)[0].pvalue == pvalue
    True
    >>> sleep = {"before": [5.1, 6.0, 6.2, 4.9, 5.5, 6.1], "after": [6.0, 6.4, 6.1, 5.8, 6.3, 6.9]}
    >>> tuple(tarn.analyze(sleep, related=["before", "after"], tests="sign")["sign"])
    (5.0, 0.21875)
    """
    asked = locals()
    for name in ("data", "progress", "weights", "by", "resolution", "combinations"):
        del asked[name]
    if by is not None:
        if group is not None:
            raise InputError("by= and group= are two names of one argument; expected one of them")
        asked["group"] = by
    asked = {name: value for name, value in asked.items() if name not in _BY_THEMSELVES or value != _BY_THEMSELVES[name]}
    if is_counted(data):
        from ._counts import analyze_counts  # which few need

        return analyze_counts(data, asked, weights, resolution, combinations, progress)
    if resolution is not None or combinations is not None:
        name = "resolution" if resolution is not None else "combinations"
        raise InputError(f"{name}= is for a frame of Dask, whose values are counted; expected one, or a call without it")
    return run_on(data, asked, weights, progress)


def is_counted(data: object) -> bool:
    """Whether a table is a frame of Dask, whose values are counted where they are."""
    return _tables.library_of(data) == "dask" and hasattr(data, "to_delayed") and hasattr(data, "columns")


# What an argument is that says nothing.
_BY_THEMSELVES = {
    "alternative": "two-sided", "descending": False, "exact": False, "seed": 1, "missing": "analysis",
    "alpha": 0.05, "confidence": 95, "brief": False, "as_defined": False,
}  # fmt: skip


def run_on(data: Any, asked: Mapping[str, Any], weights: Any = None, progress: Progress | bool | None = None) -> Result:
    """Analyses a table by arguments of `analyze`, those that were given."""
    call = Call(asked, weights, progress)
    with errors_of_the_package():
        return call.result_of(call.run(_tables.read(data, call.request.wants), False), _tables.library_of(data))


class Call:
    """A call with its arguments checked."""

    def __init__(self, asked: Mapping[str, Any], weights: Any = None, progress: Progress | bool | None = None) -> None:
        self.asked = make_request(asked)
        self._progress = progress
        self._own_weights = None
        if isinstance(weights, str):
            self.asked.update(make_request({"weights": weights}))
        elif weights is not None:
            self._own_weights = weights
        asked_too = self.asked if self._own_weights is None else {**self.asked, "weights": _OWN_WEIGHTS}
        with errors_of_the_package():
            self.request = _binding.Request(as_json(asked_too))

    def run(self, table: _binding.Data, is_later: bool) -> _binding.Report:
        """Runs it on data that was read. `is_later`: whether what stands beside the document has time."""
        if self._own_weights is not None:
            _tables.add_column(table, _OWN_WEIGHTS, self._own_weights)
        with shown_progress(self._progress) as on_progress:
            return _binding.analyze(table, self.request, _LIBRARY_FOLDER, on_progress, is_later)

    def result_of(self, report: _binding.Report, library: str) -> Result:
        """What its run left."""
        return _result_of(report, library, self.asked, self._own_weights is not None)

    def only_test(self, table: _binding.Data, library: str) -> TestResult:
        """Runs it for the only test of its result."""
        report = self.run(table, True)
        return only_test(report, self.result_of(report, library), self.asked)


def _result_of(
    report: _binding.Report, library: str, asked: dict[str, Any] | None, has_own_weights: bool = False
) -> Result:
    if not report.is_done:
        raise EngineError(in_words_of_python("; ".join(report.remarks)), report.failure_code)
    return Result(report, library, asked, has_own_weights)


def run(
    data: Any,
    plan: Mapping[str, Any] | str | os.PathLike[str] | None = None,
    *,
    settings: Mapping[str, Any] | str | os.PathLike[str] | None = None,
    strict: bool = False,
    weights: str | None = None,
    brief: bool = False,
    as_defined: bool = False,
    threads: int | None = None,
    memory: int | str | None = None,
    progress: Progress | bool | None = None,
) -> Result:
    """Runs a plan, or a request in the terms of the engine, on a table.

    Parameters
    ----------
    data : data frame, dict of columns or NumPy array
        As in `tarn.analyze`. Columns that can't be tested, like dates, are no fields of the run.
    plan : dict or path
        The tests with their fields, as `tarn run --plan` takes them; docs/command-line.md lists the keys.
    settings : dict or path
        In its place a request, as `tarn run --settings` takes it.
    strict : bool
        Whether anything that the engine would pass over is a mistake. Otherwise it is among the messages.
    weights : str
        The column with the frequency weights.
    brief, as_defined, threads, memory, progress
        As in `tarn.analyze`.

    Returns
    -------
    Result
        What the document says. Effects and groups belong to `tarn.analyze`; here there are none.

    Raises
    ------
    InputError
        For a plan that is none, and for data that can't be read.
    EngineError
        Where the run fails.

    Examples
    --------
    >>> plan = {"tests": [{"sign": {"variableName": ["x", "y"]}}]}
    >>> result = tarn.run({"x": [1, 2, 3, 4, 5], "y": [2, 3, 4, 5, 7]}, plan)
    >>> result["sign"].pvalue
    0.0625
    """
    if (plan is None) == (settings is None):
        raise InputError("expected plan= or settings=, one of them")
    asked = plan if plan is not None else settings
    name, text = _json_of("plan" if plan is not None else "settings", asked)
    flags = make_request({"brief": brief, "as_defined": as_defined, "threads": threads, "memory": memory, "weights": weights})
    with errors_of_the_package():
        table = _tables.read(data, lambda column: True)
        with shown_progress(progress) as on_progress:
            report = _binding.run(
                table, plan is not None, name, text, flags.get("weights", ""), flags.get("threads", 0),
                flags.get("memory", 0), strict, not as_defined, brief, _LIBRARY_FOLDER, on_progress,
            )  # fmt: skip
        return _result_of(report, _tables.library_of(data), None)


def _json_of(argument: str, asked: Any) -> tuple[str, str]:
    """A document in JSON and what messages call it."""
    if isinstance(asked, Mapping):
        try:
            return argument, json.dumps(asked, ensure_ascii=False)
        except (TypeError, ValueError) as mistake:
            raise InputError(f"{argument}= is no JSON: {mistake}; expected texts, numbers, lists and dicts") from None
    if not isinstance(asked, (str, os.PathLike)):
        raise InputError(f"{argument}= is of type {type(asked).__name__}; expected a dict, or the path of a file")
    path = os.fspath(asked)
    try:
        with open(path, encoding="utf-8") as file:
            return path, file.read()
    except (OSError, UnicodeDecodeError) as failure:
        reason = failure.strerror if isinstance(failure, OSError) else "no UTF-8"
        raise InputError(f"{path}: can't be read: {reason}") from None


def look(data: Any, *, memory: int | str | None = None) -> Look:
    """A first look at a table: what its columns hold, what is odd in them, and what can be asked of it.

    Parameters
    ----------
    data : data frame, dict of columns or NumPy array
        As in `tarn.analyze`.
    memory : str or int
        What the table may take, as in `tarn.analyze`.

    Returns
    -------
    Look
        Its ``repr`` is the text, its `fields` a frame of the library of `data`.

    Raises
    ------
    InputError
        For data that can't be read.

    Examples
    --------
    >>> tarn.look({"score": [3, 5, 4, 6, 8, 9], "arm": ["a", "a", "a", "b", "b", "b"]})
    the data: 6 rows, 2 fields
      score  number   3 to 9, median 5.5
      arm    2 words  a 3, b 3
    Try
       tarn.analyze(data, independent="score", group="arm")
       tarn.analyze(data, one_sample="score")
    """
    limits = make_request({"memory": memory})
    with errors_of_the_package():
        found = _binding.look(_tables.read(data, lambda column: True), "the data", limits.get("memory", 0))
        return Look(found, _tables.library_of(data))


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
        tables of pyarrow, or dicts of columns without it.

    Raises
    ------
    InputError
        For a file that can't be read or is no result document.

    Examples
    --------
    >>> import os, tempfile
    >>> with tempfile.TemporaryDirectory() as folder:
    ...     path = os.path.join(folder, "result.xml")
    ...     tarn.analyze({"x": [1, 2, 4, 3]}, "x ~ 1", tests="runs").save(path)
    ...     tarn.load(path)["runs"].statistic
    2.0
    """
    with errors_of_the_package():
        return Result(_binding.load(os.fspath(path)))


def explain(name_or_code: str | int) -> str:
    """Says what a test or a code means.

    Parameters
    ----------
    name_or_code : str or int
        A name of `tarn.tests`, or the code of a message.

    Returns
    -------
    str
        The text of `tarn explain`, lines of it.

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

    Returns
    -------
    list of TestInfo
        The name, family, title and question of each.

    Examples
    --------
    >>> [test.name for test in tarn.tests() if test.family == "one-sample"]
    ['kolmogorov-smirnov', 'binomial', 'chi-square', 'runs', 'wilcoxon']
    """
    return [TestInfo(*test) for test in _binding.tests()]
