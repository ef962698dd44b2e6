"""Thousands to millions of tests over the fields of a wide table."""

from __future__ import annotations

import functools
import math
import os
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import Any, TypedDict, Unpack

from . import _binding
from ._blocks import Block, Inquiry, Work
from ._crew import Cluster, Cores, Crew, blocks_of
from ._errors import InputError, errors_of_the_package
from ._frames import arrow_of_columns, frame_of_arrow, frame_of_columns
from ._names import columns_in_common, columns_meant, unknown_column
from ._parts import PartFolder, digest_of
from ._progress import Progress, shown_progress
from ._request import Adjust, Alternative, Fields, Like, Zeros, make_request, near_name
from ._result import SCREENED
from ._sources import Source, imported, source_of

_FORMAT = 1
_ALL = 100
# What is adjusted for the number of tests once all of them are there: the column, the one that it is made from, and the
# method, None for that of the call.
_ADJUSTED: tuple[tuple[str, str, Adjust | None], ...] = (
    ("p_holm", "pvalue", "holm"), ("p_bh", "pvalue", "bh"), ("p_adjusted", "p_asked", None),
)  # fmt: skip
# Arguments that name columns; a block has some of them alone, so that they are looked up before.
_NAMING_FIELDS = ("nominal", "ordinal", "continuous", "order", "reference", "label")
# Of so many tests the summary shows a line each.
_SHOWN = 10


class ScreenOptions(TypedDict, total=False):
    """The other arguments of `screen`, with the meaning that they have in `tarn.analyze`."""

    tests: Fields | None
    where: str | None
    alternative: Alternative
    continuity: bool | None
    zeros: Zeros | None
    exact: bool
    monte_carlo: int | None
    seed: int
    like: Like | None
    weights: str | None
    alpha: float
    confidence: float
    as_defined: bool
    test_value: float | None
    cut_point: Any
    probability: float | None
    success: Any
    expected: Mapping[Any, float] | None
    distribution: Fields | None
    mean: float | None
    sd: float | None
    min: float | None
    max: float | None
    outliers: float | None
    descending: bool
    nominal: Fields | None
    ordinal: Fields | None
    continuous: Fields | None
    order: Mapping[str, Sequence[Any]] | None
    reference: Mapping[str, Any] | None
    label: Mapping[str, str] | None
    memory: int | str | None


class Screening:
    """The tests of `screen`, which stay as they are.

    Attributes
    ----------
    out : str or None
        The folder of Parquet that holds them.
    request : dict
        The arguments that made it, those that were given.
    notes : list of str
        What a reader should know of the data, as sentences.
    """

    def __init__(
        self, library: str, request: Mapping[str, Any], alpha: float, columns: dict[str, list[Any]] | None,
        folder: PartFolder | None, blocks: int, notes: Sequence[str],
    ) -> None:  # fmt: skip
        self.request = dict(request)
        self.out = None if folder is None else folder.path
        self.notes = list(notes)
        self._library, self._alpha = library, alpha if alpha <= 1 else alpha / _ALL
        self._columns, self._folder, self._blocks = columns, folder, blocks

    @functools.cached_property
    def tests(self) -> Any:
        """A row for each test, in a frame of the library of the data, of pyarrow for files; read from `out` where
        there is one.

        Its columns are those of `Result.tests`, in which `p_holm` and `p_bh` adjust the significances that decide, and
        `p_adjusted` those that were asked for, all tests being one family; `p_asked`, the significance that was asked
        for; `in_family`, whether a test counts among them; `effect`, `effect_label`, `effect_value`, `effect_lower` and
        `effect_upper`, the first effect with its interval; and `message`. A field that couldn't be tested has a row
        whose `message` says why.
        """
        if self._folder is not None:
            parts = [self._folder.read(place) for place in range(self._blocks)]
            return frame_of_arrow(
                self._library, imported("pyarrow", "out=").concat_tables(parts).replace_schema_metadata(None)
            )
        assert self._columns is not None
        try:
            return frame_of_arrow(self._library, arrow_of_columns(SCREENED, self._columns))
        except ImportError:
            return frame_of_columns(self._library, SCREENED, self._columns)

    def _columns_of(self, names: Sequence[str]) -> dict[str, list[Any]]:
        if self._folder is None:
            assert self._columns is not None
            return {name: self._columns[name] for name in names}
        parts = [self._folder.read(place, names) for place in range(self._blocks)]
        return {name: [value for part in parts for value in part.column(name).to_pylist()] for name in names}

    def __len__(self) -> int:
        return len(self._columns_of(["name"])["name"])

    def __repr__(self) -> str:
        columns = self._columns_of(["fields", "name", "statistic", "pvalue", "p_holm", "p_bh", "in_family"])
        rows = [dict(zip(columns, values, strict=True)) for values in zip(*columns.values(), strict=True)]
        family = sorted((row for row in rows if row["in_family"]), key=lambda row: row["pvalue"])
        rejected = {
            name: sum(row[column] < self._alpha for row in family)
            for name, column in (("alone", "pvalue"), ("Holm", "p_holm"), ("Benjamini-Hochberg", "p_bh"))
        }
        lines = [
            f"Screening of {len(rows):,} tests; {len(rows) - len(family):,} of them without a significance",
            f"   rejected at {self._alpha:g}: " + ", ".join(f"{name} {count:,}" for name, count in rejected.items()),
        ]
        lines += [
            f"   {row['fields']}  {row['name']}  {_shown(row['statistic'])}  "
            f"p = {row['pvalue']:.3g}, Holm {row['p_holm']:.3g}"
            for row in family[:_SHOWN]
        ]
        return "\n".join([*lines, *(f"Note: {note}" for note in self.notes)])


def screen(
    data: Any,
    fields: Fields | None = None,
    *,
    group: str | None = None,
    by: str | None = None,
    pairs: Sequence[Sequence[str]] | None = None,
    adjust: Adjust | None = None,
    client: Any = None,
    out: str | os.PathLike[str] | None = None,
    block: int | None = None,
    threads: int | None = None,
    progress: Progress | bool | None = None,
    **options: Unpack[ScreenOptions],
) -> Screening:
    """Tests each of many columns by itself, and adjusts the significances for their number.

    Each test gives what `tarn.analyze` gives, in one row and without the documents and histograms, so that there can
    be millions. They are done in blocks of columns, on the cores at hand or on the workers of a cluster.

    Parameters
    ----------
    data : table, path, list of paths or frame of Dask
        A table as in `tarn.analyze`; files or folders of Parquet, or of CSV with commas (``.tsv`` with tabs), whose rows
        follow one another in the order of their names, and of which each worker reads its columns alone; or a frame of
        Dask. Workers on other machines need to see files by the same path.
    fields : str or list of str
        The columns that are tested, or patterns of them; all that no other argument names, if not given.
    group, by : str
        The column whose categories are compared; two names of one argument. Without it, and without `pairs`, each column
        is tested as one sample.
    pairs : list of tuples of str
        In place of `fields`: columns of the same cases that are compared with one another, two or more at a time.
    adjust : {"holm", "hochberg", "hommel", "bh", "by", "bonferroni", "none"}
        How the significances of all tests together are adjusted in the column `p_adjusted`.
    client : distributed.Client
        The cluster that works; the cores at hand, if not given.
    out : str or path
        A folder for the result, in Parquet: a part for each block, written as soon as it is done. Where a run was cut
        off, the same call goes on with what is missing. It knows a table again by its columns and rows, files by their
        paths, sizes and times.
    block : int
        How many columns are tested at a time. No result depends on it.
    threads : int
        How many cores may work at a time where there is no client.
    progress : callable or True
        As in `tarn.analyze`, called after each block.
    **options
        Any other argument of `tarn.analyze` but those that name columns of their own (formula, one_sample, related,
        independent, within, id, split, case_id), compare pairs of groups (compare, against), or need all columns at once
        (missing). `weights` is the name of a column.

    Returns
    -------
    Screening
        Its `tests` is a frame with a row for each test.

    Raises
    ------
    InputError
        For data or arguments that can't be what they should be; where every column of the first block is refused; where
        `out` holds another screening; where a library is missing that the call needs.
    EngineError
        Where a run fails, and where a worker runs out of memory, which it names.
    KeyboardInterrupt
        After Ctrl-C.

    Examples
    --------
    >>> data = {"a": [3, 5, 4, 6, 8, 9, 7, 9], "b": [1, 7, 3, 2, 8, 4, 6, 5], "arm": list("ppppdddd")}
    >>> found = tarn.screen(data, group="arm", adjust="holm")
    >>> print(found)
    Screening of 2 tests; 0 of them without a significance
       rejected at 0.05: alone 1, Holm 0, Benjamini-Hochberg 0
       a  mann-whitney  16  p = 0.0286, Holm 0.0571
       b  mann-whitney  13  p = 0.2, Holm 0.2

    Pairs of columns:

    >>> tarn.screen(data, pairs=[("a", "b")], tests="sign").tests["statistic"].to_pylist()
    [1.0]
    """
    asked = make_request({**options, "group": group if by is None else by, "adjust": adjust})
    if by is not None and group is not None:
        raise InputError("by= and group= are two names of one argument; expected one of them")
    _check(options, asked, block, threads)
    source = source_of(data)
    with errors_of_the_package():
        inquiry, tested = _inquiry_of(source, asked, fields, pairs)
    crew: Crew = Cores(threads)
    if client is not None:
        crew = Cluster(client)
    asked_whole = {**asked, **({} if fields is None else {"fields": fields}), **({} if pairs is None else {"pairs": pairs})}
    with shown_progress(progress) as on_progress:
        return _Run(source, inquiry, tested, asked_whole, out, block, crew).screening(on_progress)


def _check(options: Mapping[str, Any], asked: Mapping[str, Any], block: int | None, threads: int | None) -> None:
    for name in options:
        if name not in ScreenOptions.__annotations__:
            raise InputError(f"{name}= is no argument of a screening{near_name(name, ScreenOptions.__annotations__)}")
    make_request({"threads": threads})
    if block is not None and (isinstance(block, bool) or not isinstance(block, int) or block < 1):
        raise InputError(f"block={block!r}; expected a whole number from 1 on")


def _inquiry_of(
    source: Source, asked: Mapping[str, Any], fields: Fields | None, pairs: Sequence[Sequence[str]] | None
) -> tuple[Inquiry, list[tuple[str, ...]]]:
    """What is asked of each field, and the fields of each test."""
    rest = {name: value for name, value in asked.items() if name != "adjust"}
    common = columns_in_common(rest, source.names)
    lowered = {name.lower() for name in source.names}
    for argument in _NAMING_FIELDS:
        named = rest.get(argument, [])
        for name in [named] if isinstance(named, str) else named:
            if name.lower() not in lowered:
                raise InputError(f"{argument}: {unknown_column(name, source.names)}")
    if pairs is None:
        found = [name for name in source.names if name not in common] if fields is None else []
        if fields is not None:
            meant = columns_meant(make_request({"one_sample": fields})["one_sample"], source.names)
            found = [name for name in meant if name not in common]
        tested: list[tuple[str, ...]] = [(name,) for name in found]
        family = "independent" if "group" in rest else "one_sample"
    else:
        if fields is not None or "group" in rest:
            raise InputError("pairs= stands in place of fields= and group=; expected it alone")
        family, tested = "related", _checked_pairs(pairs, source.names)
    if not tested:
        raise InputError("there is no column to be tested; expected one beside " + (", ".join(common) or "none"))
    return Inquiry(family, rest, common), tested


def _checked_pairs(pairs: Sequence[Sequence[str]], names: Sequence[str]) -> list[tuple[str, ...]]:
    known = set(names)
    checked = []
    for pair in pairs:
        columns = tuple(make_request({"related": pair})["related"])
        if len(set(columns)) < 2 or len(set(columns)) < len(columns):
            raise InputError(f"pairs= has {pair!r}; expected two columns or more that differ")
        for name in columns:
            if name not in known:
                raise InputError(unknown_column(name, names))
        checked.append(columns)
    return checked


class _Run:
    """A screening under way."""

    def __init__(
        self, source: Source, inquiry: Inquiry, tested: list[tuple[str, ...]], asked: dict[str, Any],
        out: str | os.PathLike[str] | None, block: int | None, crew: Crew,
    ) -> None:  # fmt: skip
        self._source, self._inquiry, self._tested, self._asked, self._crew = source, inquiry, tested, asked, crew
        self._block = block or source.fields_of_a_block(len(tested), crew.workers, crew.is_elsewhere)
        self._folder: PartFolder | None = None
        self._blocks: dict[int, Block] = {}
        if out is not None:
            self._folder = PartFolder(out, self._facts(), self._block)
            self._block = self._folder.block

    def _facts(self) -> dict[str, Any]:
        """What the screening is, for whoever goes on with it."""
        tested = {"family": self._inquiry.family, "count": len(self._tested), "digest": digest_of(self._tested)}
        arguments = {name: value for name, value in self._asked.items() if name not in ("fields", "pairs", "memory")}
        data = {**self._source.facts(), "columns": len(self._source.names), "names": digest_of([self._source.names])}
        program = f"{_binding.version}, format {_FORMAT}"
        return {"program": program, "arguments": arguments, "data": data, "fields": tested}

    @property
    def _count(self) -> int:
        return -(-len(self._tested) // self._block)

    def _fields_of(self, place: int) -> Sequence[tuple[str, ...]]:
        return self._tested[place * self._block : (place + 1) * self._block]

    def _works(self, places: Iterable[int]) -> Iterator[tuple[int, Work]]:
        for place in places:
            fields = self._fields_of(place)
            names = dict.fromkeys([*self._inquiry.common, *(name for names in fields for name in names)])
            yield place, Work(self._source.part(list(names)), self._inquiry, fields)

    def screening(self, on_progress: Progress | None) -> Screening:
        done = set() if self._folder is None else self._folder.done() & set(range(self._count))
        left = [place for place in range(self._count) if place not in done]
        if left:
            self._test(left, on_progress)
        if self._folder is None:
            return self._in_memory()
        if not self._folder.is_finished or left:
            self._adjust_parts(self._folder)
        notes = [note for place in range(self._count) for note in self._folder.notes(place)]
        return self._made(None, notes)

    def _test(self, left: Sequence[int], on_progress: Progress | None) -> None:
        """Tests what is left. Nothing is kept before the first block has shown that the request can be met."""
        tested = len(self._tested) - sum(len(self._fields_of(place)) for place in left)
        waiting: dict[int, Block] = {}
        is_sure = left[0] != 0
        if is_sure:
            self._begin()
        with self._crew:
            for place, block in blocks_of(self._crew, self._works(left)):
                waiting[place] = block
                if place == 0:
                    if block.refusal is not None:
                        raise block.refusal
                    is_sure = True
                    self._begin()
                if is_sure:
                    self._keep(waiting)
                tested += len(self._fields_of(place))
                if on_progress is not None:
                    on_progress(_ALL * tested / len(self._tested))

    def _begin(self) -> None:
        if self._folder is not None:
            self._folder.begin()

    def _keep(self, waiting: dict[int, Block]) -> None:
        if self._folder is None:
            self._blocks.update(waiting)
        else:
            for place, block in waiting.items():
                self._folder.write(place, block)
        waiting.clear()

    # ---- When all is there ----

    def _adjusted(self, columns: Mapping[str, Sequence[Any]]) -> dict[str, list[float | None]]:
        """The adjusted significances of all tests, from those that they are made of."""
        of_family = columns["in_family"]
        adjusted: dict[str, list[float | None]] = {}
        for name, made_from, method in _ADJUSTED:
            adjust = method or self._asked.get("adjust")
            if adjust is None:
                adjusted[name] = [None] * len(of_family)
                continue
            given = [_number(p) if is_in else math.nan for p, is_in in zip(columns[made_from], of_family, strict=True)]
            adjusted[name] = [None if math.isnan(p) else p for p in _binding.adjusted(given, adjust)]
        return adjusted

    def _in_memory(self) -> Screening:
        blocks = [self._blocks[place] for place in range(self._count)]
        columns: dict[str, list[Any]] = {
            name: [value for block in blocks for value in block.columns[name]] for name in SCREENED
        }
        columns["number"] = list(range(1, len(columns["number"]) + 1))
        columns.update(self._adjusted(columns))
        return self._made(columns, [note for block in blocks for note in block.notes])

    def _adjust_parts(self, folder: PartFolder) -> None:
        folder.begin()
        needed = ("pvalue", "p_asked", "in_family")
        parts = [folder.read(place, needed) for place in range(self._count)]
        together = {name: [value for part in parts for value in part.column(name).to_pylist()] for name in needed}
        adjusted = self._adjusted(together)
        start = 0
        for place, part in enumerate(parts):
            end = start + part.num_rows
            values: dict[str, Sequence[Any]] = {name: column[start:end] for name, column in adjusted.items()}
            folder.replace(place, {"number": range(start + 1, end + 1), **values})
            start = end
        folder.finish()

    def _made(self, columns: dict[str, list[Any]] | None, notes: Sequence[str]) -> Screening:
        unique = list(dict.fromkeys(notes))
        alpha = self._asked.get("alpha", 0.05)
        return Screening(self._source.library, self._asked, alpha, columns, self._folder, self._count, unique)


def _number(value: float | None) -> float:
    return math.nan if value is None else value


def _shown(statistic: float | None) -> str:
    return "-" if statistic is None else f"{statistic:.6g}"
