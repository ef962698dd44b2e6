"""A block of a screening: some of its fields, tested by whoever has their columns."""

from __future__ import annotations

import socket
import sys
from collections.abc import Iterator, Mapping, Sequence
from dataclasses import dataclass, field
from typing import Any

from . import _tables
from ._analyze import Call
from ._errors import EngineError, InputError, errors_of_the_package
from ._frames import columns_of
from ._progress import Progress
from ._result import SCREENED, Result, screened_rows
from ._sources import Frame, Part

Fields = tuple[str, ...]

# So many fields go to the engine at a time: more gain nothing, and their results take memory.
_FIELDS_OF_A_CALL = 500
_OUT_OF_MEMORY = 220012
# Arguments that name columns, and may name some that a block doesn't have.
_DICTS_OF_FIELDS = ("order", "reference", "label")
_LISTS_OF_FIELDS = ("nominal", "ordinal", "continuous")


@dataclass(frozen=True)
class Inquiry:
    """What is asked of each field.

    Attributes
    ----------
    family : str
        The argument of `tarn.analyze` that names what is tested.
    asked : dict
        The others.
    common : tuple of str
        The columns that every test needs.
    """

    family: str
    asked: Mapping[str, Any]
    common: Fields


@dataclass(frozen=True)
class Work:
    """A block that is to be done: what it needs lies in `part`, what is tested in `fields`, a test for each entry."""

    part: Part
    inquiry: Inquiry
    fields: Sequence[Fields]


@dataclass
class Block:
    """A block that is done.

    Attributes
    ----------
    columns : dict of lists
        Its rows, as `SCREENED` says.
    notes : list of str
        What a reader should know of the data.
    refusal : InputError, EngineError or None
        Why none of its fields could be tested; None where one was.
    """

    columns: dict[str, list[Any]]
    notes: list[str] = field(default_factory=list)
    refusal: InputError | EngineError | None = None


def run_block(work: Work, watch: Progress | None = None) -> Block:
    """Tests the fields of a block, each call of the engine on one thread.

    A field that can't be tested has a row that says why.

    Raises
    ------
    InputError
        Where the columns can't be read.
    EngineError
        Where memory ends. The text names the worker.
    """
    try:
        return _Tester(work, Frame(work.part.read()), watch).block()
    except (MemoryError, EngineError) as failure:
        if isinstance(failure, EngineError) and failure.code != _OUT_OF_MEMORY:
            raise
        raise EngineError(
            f"{_here()} ran out of memory at {told_fields(work.fields)}; "
            "expected a worker with more of it, or fewer fields at a time by block=",
            _OUT_OF_MEMORY,
        ) from None


def _here() -> str:
    """Who is at work: a worker by its address and machine, or this process."""
    if "distributed" in sys.modules:
        from distributed import get_worker

        try:
            return f"the worker {get_worker().address} on {socket.gethostname()}"
        except ValueError:
            pass  # no worker
    return f"this process on {socket.gethostname()}"


def told_fields(fields: Sequence[Fields]) -> str:
    """Fields for a message, the first and the last one."""
    first, last = ", ".join(fields[0]), ", ".join(fields[-1])
    return first if len(fields) == 1 else f"{len(fields):,} fields from {first} to {last}"


class _Tester:
    def __init__(self, work: Work, table: Frame, watch: Progress | None) -> None:
        self._inquiry, self._fields = work.inquiry, work.fields
        self._table, self._watch = table, watch
        self._notes: dict[str, None] = {}
        self._refusals: list[InputError | EngineError] = []
        self._tested = 0

    def block(self) -> Block:
        rows = [row for fields in self._calls() for row in self._rows_of(fields)]
        columns = columns_of(SCREENED, [{**row, "number": number} for number, row in enumerate(rows, 1)])
        refusal = self._refusals[0] if self._refusals and not self._tested else None
        return Block(columns, list(self._notes), refusal)

    def _calls(self) -> Iterator[Sequence[Fields]]:
        """The fields of each call of the engine. Related columns are one question, so that they have one of their own."""
        step = 1 if self._inquiry.family == "related" else _FIELDS_OF_A_CALL
        return (self._fields[start : start + step] for start in range(0, len(self._fields), step))

    def _rows_of(self, fields: Sequence[Fields]) -> list[dict[str, Any]]:
        """The rows of some fields. Where the call is refused for one of them, the others are tested without it."""
        try:
            result = self._run(fields)
        except (InputError, EngineError) as refusal:
            if isinstance(refusal, EngineError) and refusal.code == _OUT_OF_MEMORY:
                raise
            self._refusals.append(refusal)
            if len(fields) > 1:
                middle = len(fields) // 2
                return self._rows_of(fields[:middle]) + self._rows_of(fields[middle:])
            return [_refused(fields[0], str(refusal))]
        self._tested += len(fields)
        self._notes.update(dict.fromkeys(result.notes))
        return _in_order(screened_rows(result), fields)

    def _run(self, fields: Sequence[Fields]) -> Result:
        inquiry = self._inquiry
        tested = list(dict.fromkeys(name for names in fields for name in names))
        names = list(dict.fromkeys([*inquiry.common, *tested]))
        asked = {**_of_columns(inquiry.asked, names), inquiry.family: tested, "brief": True, "threads": 1}
        call = Call(asked, None, self._watch)
        with errors_of_the_package():
            return call.result_of(call.run(_tables.read(self._table.take(names), lambda name: True), False), "builtins")


def _of_columns(asked: Mapping[str, Any], names: Sequence[str]) -> dict[str, Any]:
    """The arguments without what they say of other columns than these."""
    there = {name.lower() for name in names}
    kept = dict(asked)
    for argument in _DICTS_OF_FIELDS:
        if argument in kept:
            kept[argument] = {name: value for name, value in kept[argument].items() if name.lower() in there}
    for argument in _LISTS_OF_FIELDS:
        if argument in kept:
            kept[argument] = [name for name in kept[argument] if name.lower() in there]
    return {name: value for name, value in kept.items() if value or name not in (*_DICTS_OF_FIELDS, *_LISTS_OF_FIELDS)}


def _refused(fields: Fields, why: str) -> dict[str, Any]:
    return {"fields": ", ".join(fields), "in_family": False, "message": why}


def _in_order(rows: list[dict[str, Any]], fields: Sequence[Fields]) -> list[dict[str, Any]]:
    """The rows in the order of their fields, and one for a field that no test fits."""
    of_fields: dict[Fields, list[dict[str, Any]]] = {names: [] for names in fields}
    for row in rows:
        of_fields[row["fields"]].append({**row, "fields": ", ".join(row["fields"])})
    unfit = "none of the tests fits the field"
    return [row for names, found in of_fields.items() for row in found or [_refused(names, unfit)]]
