"""Analyses of a frame of Dask, which no machine has to hold.

What a test makes of its records doesn't depend on their order, with one exception, so that it may as well be told how
often each combination of their values occurs. Dask counts that where the records are; the engine takes the counts as
frequency weights.
"""

from __future__ import annotations

import math
import numbers
from collections.abc import Mapping, Sequence
from dataclasses import dataclass
from typing import Any

from . import _binding, _tables
from ._analyze import Call
from ._errors import InputError, errors_of_the_package
from ._progress import Progress, shown_progress
from ._names import columns_in_common, columns_meant, unknown_column
from ._request import as_json, make_request, near_name
from ._result import Result
from ._sources import imported

_MOST_COMBINATIONS = 10_000_000
# So many parts are put together at a time.
_PARTS_TOGETHER = 8
# The largest weight that a record may have.
_LARGEST_WEIGHT = 2**31 - 1
_COUNT = "(count)"
# A note names so many counts.
_NAMED = 5
_ALL = 100

# Why arguments of `tarn.analyze` make no sense here.
_REFUSED = {
    "where": "names records, of which the counts are made; expected the frame without the others, like data[data.age > 40]",
    "within": "pairs records by their subject, which counts don't know; expected a column for each condition",
    "id": "pairs records by their subject, which counts don't know; expected a column for each condition",
    "like": "makes the choices of calls that take no counts; expected a call without it",
    "case_id": "names single records, which counts don't know; expected a call without it",
}
_FAMILIES = ("one_sample", "related", "independent")

Columns = tuple[str, ...]


@dataclass
class _Counts:
    """How often combinations occur, for each set of columns, in some partitions of the data."""

    tables: list[Any]
    records: int
    partitions: int


@dataclass(frozen=True)
class _Counting:
    """What is counted, for a worker.

    Attributes
    ----------
    sets : list of tuples of str
        The columns whose combinations are counted, set by set.
    weights : str or None
        The column with the frequency weights.
    steps : dict of floats
        The columns that are rounded, each with the step.
    most : int
        How many combinations a set may have.
    """

    sets: Sequence[Columns]
    weights: str | None
    steps: Mapping[str, float]
    most: int
    all_partitions: int

    # A refusal is handed on as what comes of a task: one that is raised would be logged by each worker as a failure.

    def of_partition(self, frame: Any) -> _Counts | InputError:
        """Counts one partition, a frame of pandas."""
        try:
            return self._of_partition(frame)
        except InputError as refusal:
            return refusal

    def together(self, counts: Sequence[_Counts | InputError]) -> _Counts | InputError:
        """Puts counts together."""
        for each in counts:
            if isinstance(each, InputError):
                return each
        try:
            return self._together([each for each in counts if isinstance(each, _Counts)])
        except InputError as refusal:
            return refusal

    def _of_partition(self, frame: Any) -> _Counts:
        frame = frame.rename(columns=str)
        for name, step in self.steps.items():
            frame = frame.assign(**{name: (frame[name] / step).round() * step})
        if self.weights is not None:
            counted = frame.assign(**{_COUNT: _whole_weights(self.weights, frame[self.weights])})
        else:
            counted = frame.assign(**{_COUNT: 1})
        return self._checked(_Counts([_summed(counted, columns) for columns in self.sets], len(frame), 1))

    def _together(self, counts: Sequence[_Counts]) -> _Counts:
        concat = imported("dask.dataframe.dispatch", "a frame of Dask").concat
        tables = [
            _summed(concat([each.tables[place] for each in counts]), columns) for place, columns in enumerate(self.sets)
        ]
        return self._checked(_Counts(tables, sum(each.records for each in counts), sum(each.partitions for each in counts)))

    def _checked(self, counts: _Counts) -> _Counts:
        for columns, table in zip(self.sets, counts.tables, strict=True):
            if len(table) > self.most:
                raise InputError(
                    f"{_listed(columns)}: {len(table):,} distinct combinations in {counts.records:,} records, "
                    f"{counts.partitions:,} of {self.all_partitions:,} partitions; expected {self.most:,} at most: "
                    "fewer by resolution=, which rounds numbers, more by combinations=, or a sample, like "
                    "data.sample(frac=0.01)"
                )
        return counts


def _summed(frame: Any, columns: Columns) -> Any:
    groups = frame.groupby(list(columns), dropna=False, observed=True, sort=False)
    return groups[_COUNT].sum().reset_index()


def _whole_weights(name: str, weights: Any) -> Any:
    """Weights as whole numbers, which add up without rounding."""
    values = weights.to_numpy(dtype="float64", na_value=math.nan)
    wrong = values[~((values >= 0) & (values == values.round()) & (values <= _LARGEST_WEIGHT))]
    if len(wrong):
        raise InputError(
            f"weights of {name}: {'a record without one' if math.isnan(wrong[0]) else f'{wrong[0]:g}'}; "
            f"expected whole numbers from 0 to {_LARGEST_WEIGHT}, since records are counted by them"
        )
    return values.astype("int64")


def _listed(names: Sequence[str]) -> str:
    return " and ".join([", ".join(names[:-1]), names[-1]] if len(names) > 1 else names)


# ---- What is counted ----


@dataclass(frozen=True)
class _Unit:
    """A run of the engine: the columns whose combinations it needs, and the one that is tested, "" for all of them."""

    columns: Columns
    field: str = ""


def _units_of(asked: Mapping[str, Any], names: Sequence[str]) -> list[_Unit]:
    """The runs of a request. Each column that is tested by itself has one: of several the combinations with one another
    would be counted, too, of which there are far more. A request that needs more than that has one run of all."""
    request = _binding.Request(as_json(asked))
    request.check(names)
    families = [family for family in _FAMILIES if family in asked]
    family = families[0] if len(families) == 1 else "related"
    if family == "related" or asked.get("missing") == "listwise" or "split" in asked:
        return [_Unit(tuple(name for name in names if request.wants(name)))]
    common = columns_in_common(asked, names)
    fields = [name for name in columns_meant(asked[family], names) if name not in common]
    return [_Unit((field, *common), field) for field in fields]


def _steps_of(resolution: Any, asked: Mapping[str, Any], frame: Any, units: Sequence[_Unit]) -> dict[str, float]:
    """The step of each column that is rounded. `frame`: an empty one, which shows what its columns hold."""
    if resolution is None:
        return {}
    if "formula" in asked and not isinstance(resolution, Mapping):
        raise InputError(
            f'resolution={resolution!r} beside a formula; expected a dict of its columns, like {{"score": 0.1}}'
        )
    common = () if "formula" in asked else columns_in_common(asked, list(frame.columns))
    counted = dict.fromkeys(name for unit in units for name in unit.columns if name not in common)
    are_numbers = [name for name in counted if getattr(frame[name].dtype, "kind", "O") in "iuf"]
    steps = resolution if isinstance(resolution, Mapping) else dict.fromkeys(are_numbers, resolution)
    for name, step in steps.items():
        if name not in are_numbers:
            raise InputError(
                f'resolution= has "{name}", which is no tested column of numbers{near_name(name, are_numbers)}'
            )
        if isinstance(step, bool) or not isinstance(step, numbers.Real) or not 0 < float(step) < math.inf:
            raise InputError(f"resolution={step!r}; expected a step above 0, in the unit of the column, or a dict of them")
    return {name: float(step) for name, step in steps.items()}


def _most(combinations: Any) -> int:
    if combinations is None:
        return _MOST_COMBINATIONS
    if isinstance(combinations, bool) or not isinstance(combinations, numbers.Integral) or combinations < 1:
        raise InputError(f"combinations={combinations!r}; expected a whole number from 1 on")
    return int(combinations)


def _check(asked: Mapping[str, Any], weights: Any) -> None:
    for name, why in _REFUSED.items():
        if name in asked:
            raise InputError(f"{name}= {why}")
    if "|" in asked.get("formula", ""):
        raise InputError(f"the formula {_REFUSED['within']}")
    if weights is not None and not isinstance(weights, str):
        raise InputError("weights= of a frame of Dask are one of its columns; expected the name of it")
    if any(str(name).lower() == "runs" for name in asked.get("tests", [])):
        raise InputError(
            "runs depends on the order of the records, which counts don't know; expected another test, or a frame in memory"
        )


# ---- The counts, and what is made of them ----


def _count(data: Any, counting: _Counting, columns: Sequence[str]) -> _Counts:
    """Has Dask count. Counts are put together as soon as some are there, so that no worker holds many."""
    dask = imported("dask", "a frame of Dask")
    names = {str(name): name for name in data.columns}
    parts = data[[names[name] for name in columns]].to_delayed()
    counts = [dask.delayed(_Counting.of_partition, pure=False)(counting, part) for part in parts]
    while len(counts) > 1:
        counts = [
            dask.delayed(_Counting.together, pure=False)(counting, counts[start : start + _PARTS_TOGETHER])
            for start in range(0, len(counts), _PARTS_TOGETHER)
        ]
    counted: _Counts | InputError = dask.compute(counts[0])[0]
    if isinstance(counted, InputError):
        raise counted
    return counted


def _table_of(counts: Any, empty: Any, columns: Sequence[str]) -> tuple[Any, Any]:
    """The counts of one run as a table with all columns, and their weights. Every run has the same columns, those of the
    others without a value. A count that is too large for a weight stands in several rows."""
    numpy = imported("numpy", "a frame of Dask")
    count = counts[_COUNT].to_numpy()
    copies = numpy.maximum(1, -(-count // _LARGEST_WEIGHT))
    places = numpy.repeat(numpy.arange(len(count)), copies)
    weights = numpy.full(len(places), _LARGEST_WEIGHT, dtype="int64")
    last = numpy.cumsum(copies) - 1
    weights[last] = count - (copies - 1) * _LARGEST_WEIGHT
    table = counts.iloc[places].reset_index(drop=True)
    return {name: table[name] if name in table else empty[name].reindex(table.index) for name in columns}, weights


def analyze_counts(
    data: Any, arguments: Mapping[str, Any], weights: Any, resolution: Any, combinations: Any,
    progress: Progress | bool | None,
) -> Result:  # fmt: skip
    """Analyses a frame of Dask by arguments of `analyze`, those that were given."""
    asked = make_request(arguments)
    _check(asked, weights)
    names = list(map(str, data.columns))
    with errors_of_the_package():
        units = _units_of(asked, names)
        if weights is not None and weights not in names:
            raise InputError(unknown_column(make_request({"weights": weights})["weights"], names))
        if any(weights in unit.columns for unit in units):
            raise InputError(f'weights="{weights}" is a column that the tests use; expected another one')
        empty = data._meta.rename(columns=str)
        steps = _steps_of(resolution, asked, empty, units)
        counting = _Counting([unit.columns for unit in units], weights, steps, _most(combinations), data.npartitions)
        columns = [name for name in names if any(name in unit.columns for unit in units)]
        with shown_progress(progress) as on_progress:
            counts = _count(data, counting, [*columns, *([] if weights is None else [weights])])
            report = _report_of(asked, units, counts, empty, columns, on_progress)
    report.add_note(_note_of(counting, counts))
    given = {"weights": weights, "resolution": resolution, "combinations": combinations}
    return Result(report, "pandas", {**asked, **{name: value for name, value in given.items() if value is not None}})


def _report_of(
    asked: Mapping[str, Any], units: Sequence[_Unit], counts: _Counts, empty: Any, columns: Sequence[str],
    on_progress: Progress | None,
) -> _binding.Report:  # fmt: skip
    """Runs the whole request on the counts of each unit, and takes the tests of its column."""
    reports = []
    for place, (unit, counted) in enumerate(zip(units, counts.tables, strict=True)):
        table, weights = _table_of(counted, empty, columns)
        call = Call(asked, weights, _part_of(on_progress, place, len(units)))
        report = call.run(_tables.read(table, lambda name: True), False)
        call.result_of(report, "pandas")  # which raises where there is none
        reports.append((unit.field, report))
    return reports[0][1] if len(reports) == 1 else _binding.join(reports, str(asked.get("adjust", "")))


def _part_of(on_progress: Progress | None, place: int, count: int) -> Progress | None:
    """What hears of one run of several."""
    if on_progress is None:
        return None
    return lambda percent: on_progress((_ALL * place + percent) / count)


def _note_of(counting: _Counting, counts: _Counts) -> str:
    """What the numbers of the result rest on."""
    sets = zip(counting.sets, counts.tables, strict=True)
    of_sets = [f"{len(table):,} of {_listed(columns)}" for columns, table in sets]
    if len(of_sets) > _NAMED:
        of_sets = [*of_sets[:_NAMED], f"those of {len(of_sets) - _NAMED} others"]
    rounded = "".join(f"; {name} was rounded to multiples of {step:g} before" for name, step in counting.steps.items())
    weighed = "" if counting.weights is None else f", weighted by {counting.weights}"
    return (
        f"{counts.records:,} records{weighed} were counted by their distinct values ({', '.join(of_sets)}), and each test "
        f"takes a combination as often as it occurs{rounded}"
    )
