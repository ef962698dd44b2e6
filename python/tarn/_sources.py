"""Where the columns of a screening are, and how whoever tests some of them gets these alone."""

from __future__ import annotations

import glob
import importlib
import os
import re
from collections.abc import Callable, Iterable, Mapping, Sequence
from dataclasses import dataclass
from functools import lru_cache
from types import ModuleType
from typing import Any, Protocol

from . import _tables
from ._analyze import is_counted
from ._errors import InputError
from ._request import is_unicode

Names = Sequence[str]

_BYTES_OF_A_NUMBER = 8
# A block of more fields brings nothing: what a block costs besides is small by then.
_MOST_FIELDS = 2000
# With fewer a call of the engine costs more for itself than for its tests.
_FEWEST_FIELDS = 50
# So many blocks for each worker even out what they take.
_BLOCKS_A_WORKER = 4
_MOST_BYTES_READ = 64 * 2**20
# What goes to a worker with its task passes through the scheduler, which is not made for much.
_MOST_BYTES_SENT = 8 * 2**20
# A file of lines is read as a whole, whatever is taken of it, and so had better be read seldom.
_MOST_BYTES_OF_LINES = 512 * 2**20
# A line has to fit in it, and the values up to here say what a column holds.
_BYTES_OF_A_READ = 64 * 2**20
# Nobody knows how many rows there are before they are computed.
_FIELDS_OF_UNKNOWN_LENGTH = 200

_LINES = re.compile(r"\.(csv|tsv)(\.gz|\.zst|\.bz2)?$", re.IGNORECASE)
_PARQUET = re.compile(r"\.(parquet|pq)$", re.IGNORECASE)
# What pandas calls an index that it writes as a column.
_INDEX = re.compile(r"__index_level_\d+__")


class Part(Protocol):
    """Some columns of a table, which may be read on another machine."""

    def read(self) -> Any:
        """The columns as a table, such as `tarn.analyze` takes."""


class Source(Protocol):
    """A table whose columns are taken block by block."""

    @property
    def names(self) -> Names:
        """Its columns in their order."""

    @property
    def library(self) -> str:
        """The library that results come in."""

    def part(self, names: Names) -> Part:
        """These columns."""

    def facts(self) -> dict[str, Any]:
        """What tells this table from another one, in JSON."""

    def fields_of_a_block(self, count: int, workers: int, is_sent: bool) -> int:
        """How many of `count` fields are tested at a time. `is_sent`: whether they go to other processes."""


def imported(library: str, wanted_for: str) -> ModuleType:
    """A library that only some calls need.

    Raises
    ------
    InputError
        Where it isn't installed.
    """
    try:
        return importlib.import_module(library)
    except ImportError:
        package = library.partition(".")[0]
        name = '"tarn[dask]"' if package in ("dask", "distributed") else package
        raise InputError(f"{wanted_for} needs {package}, which is not installed; expected: pip install {name}") from None


def source_of(data: Any) -> Source:
    """What a table of any kind is for a screening."""
    if isinstance(data, (str, os.PathLike)):
        return _source_of_paths([os.fspath(data)])
    if isinstance(data, (list, tuple)) and data and all(isinstance(each, (str, os.PathLike)) for each in data):
        return _source_of_paths([os.fspath(each) for each in data])
    if is_counted(data):
        return _DaskFrame(data)
    return Frame(data)


def _block(count: int, rows: int, workers: int, most_bytes: int) -> int:
    by_memory = most_bytes // (_BYTES_OF_A_NUMBER * max(rows, 1))
    even = -(-count // (_BLOCKS_A_WORKER * workers))
    return max(1, min(by_memory, _MOST_FIELDS, max(even, _FEWEST_FIELDS)))


def _checked_names(names: Iterable[Any]) -> list[str]:
    known: dict[str, None] = {}
    for name in map(str, names):
        if name in known:
            raise InputError(f'the data has two columns "{name}"; expected names that differ')
        if is_unicode(name):
            known[name] = None
    return list(known)


# ---- In memory ----


@dataclass(frozen=True)
class _Held:
    """Columns that go along."""

    table: Any

    def read(self) -> Any:
        return self.table


class Frame:
    """A table in memory."""

    def __init__(self, data: Any) -> None:
        self.library = _tables.library_of(data)
        if self.library not in ("pandas", "numpy", "polars", "pyarrow") and hasattr(data, "__arrow_c_stream__"):
            data = imported("pyarrow", f"a screening of a table of {self.library}").table(data)
        names, self._rows, self._take = _taken_from(data)
        self.names = _checked_names(names)

    def take(self, names: Names) -> Any:
        """A table of these columns alone."""
        return self._take(names)

    def part(self, names: Names) -> Part:
        return _Held(self._take(names))

    def facts(self) -> dict[str, Any]:
        return {"kind": "table", "rows": self._rows}

    def fields_of_a_block(self, count: int, workers: int, is_sent: bool) -> int:
        return _block(count, self._rows, workers, _MOST_BYTES_SENT if is_sent else _MOST_BYTES_READ)


def _taken_from(data: Any) -> tuple[list[Any], int, Callable[[Names], Any]]:
    """The names of a table's columns, its rows, and how some of its columns become a table."""
    library = _tables.library_of(data)
    if library == "pandas" and hasattr(data, "columns"):
        places = {str(name): place for place, name in enumerate(data.columns)}
        return list(data.columns), len(data), lambda names: data.iloc[:, [places[name] for name in names]]
    if isinstance(data, Mapping):
        keys = {str(name): name for name in data}
        rows = len(next(iter(data.values()), ()))
        return list(data), rows, lambda names: {name: data[keys[name]] for name in names}
    if library == "numpy" and getattr(data, "ndim", 0) == 2:
        return list(range(data.shape[1])), len(data), lambda names: {name: data[:, int(name)] for name in names}
    if library == "numpy" and getattr(getattr(data, "dtype", None), "names", None):
        return list(data.dtype.names), len(data), lambda names: {name: data[name] for name in names}
    if library in ("polars", "pyarrow") and hasattr(data, "select") and hasattr(data, "shape"):
        columns = data.columns if library == "polars" else data.column_names
        return list(columns), data.shape[0], lambda names: data.select(list(names))
    _tables.read(data, lambda name: False)  # which says what it is
    raise InputError(f"the data is of type {type(data).__name__}; expected a table")


# ---- Files ----


@lru_cache(maxsize=4)
def _parquet(paths: tuple[str, ...], stamps: tuple[int, ...]) -> Any:
    """A data set, opened once in each process: what it says of its columns takes long to read where there are many.
    `stamps`: when the files were written, so that others aren't taken for them."""
    return imported("pyarrow.dataset", "Parquet").dataset(list(paths), format="parquet", partitioning="hive")


def _first_line(failure: BaseException) -> str:
    return (str(failure).splitlines() or [type(failure).__name__])[0]


@dataclass(frozen=True)
class _ParquetPart:
    paths: tuple[str, ...]
    stamps: tuple[int, ...]
    names: tuple[str, ...]

    def read(self) -> Any:
        try:
            return _parquet(self.paths, self.stamps).to_table(columns=list(self.names), use_threads=False)
        except (OSError, ValueError) as failure:
            raise InputError(f"{self.paths[0]}: can't be read: {_first_line(failure)}") from None


@dataclass(frozen=True)
class _LinesPart:
    paths: tuple[str, ...]
    names: tuple[str, ...]

    def read(self) -> Any:
        arrow = imported("pyarrow", "a screening of CSV")
        tables = [_read_lines(path, self.names) for path in self.paths]
        try:
            return arrow.concat_tables(tables, promote_options="permissive")
        except (ValueError, TypeError) as failure:  # pyarrow has both
            raise InputError(f"{self.paths[0]} and other files: can't be one table: {_first_line(failure)}") from None


def _lines_options(path: str) -> dict[str, Any]:
    csv = imported("pyarrow.csv", "a screening of CSV")
    is_tabbed = ".tsv" in os.path.basename(path).lower()
    return {
        "read_options": csv.ReadOptions(use_threads=False, block_size=_BYTES_OF_A_READ),
        "parse_options": csv.ParseOptions(delimiter="\t" if is_tabbed else ",", newlines_in_values=True),
    }


def _read_lines(path: str, names: Names) -> Any:
    csv = imported("pyarrow.csv", "a screening of CSV")
    convert = csv.ConvertOptions(include_columns=list(names), strings_can_be_null=True)
    try:
        return csv.read_csv(path, convert_options=convert, **_lines_options(path))
    except (OSError, ValueError, KeyError) as failure:
        raise InputError(f"{path}: can't be read: {_first_line(failure)}") from None


class _Files:
    """What files of either kind have in common."""

    library = "pyarrow"

    def __init__(self, paths: Sequence[str]) -> None:
        self._paths = tuple(os.path.abspath(path) for path in paths)
        stats = [os.stat(path) for path in self._paths]
        self._stamps = tuple(stat.st_mtime_ns for stat in stats)
        self._sizes = [stat.st_size for stat in stats]

    def facts(self) -> dict[str, Any]:
        return {"kind": "files", "paths": list(self._paths), "sizes": self._sizes, "written": list(self._stamps)}


class _Parquet(_Files):
    def __init__(self, paths: Sequence[str]) -> None:
        super().__init__(paths)
        try:
            opened = _parquet(self._paths, self._stamps)
            self._rows = opened.count_rows()
        except (OSError, ValueError) as failure:
            raise InputError(f"{self._paths[0]}: can't be read: {_first_line(failure)}") from None
        self.names = _checked_names(name for name in opened.schema.names if not _INDEX.fullmatch(name))

    def part(self, names: Names) -> Part:
        return _ParquetPart(self._paths, self._stamps, tuple(names))

    def fields_of_a_block(self, count: int, workers: int, is_sent: bool) -> int:
        return _block(count, self._rows, workers, _MOST_BYTES_READ)


class _Lines(_Files):
    def __init__(self, paths: Sequence[str]) -> None:
        super().__init__(paths)
        headers = [_header_of(path) for path in self._paths]
        for path, header in zip(self._paths, headers, strict=True):
            if sorted(header) != sorted(headers[0]):
                other = next(iter(set(header) ^ set(headers[0])))
                raise InputError(
                    f'{path}: "{other}" is a column of this file or of {self._paths[0]}, not of both; '
                    "expected the same columns in each file"
                )
        self.names = _checked_names(headers[0])

    def part(self, names: Names) -> Part:
        return _LinesPart(self._paths, tuple(names))

    def fields_of_a_block(self, count: int, workers: int, is_sent: bool) -> int:
        # A number takes about as much in memory as in a line, and each block reads all lines.
        by_memory = int(_MOST_BYTES_OF_LINES / max(sum(self._sizes), 1) * count)
        return max(1, min(by_memory, max(-(-count // workers), _FEWEST_FIELDS)))


def _header_of(path: str) -> list[str]:
    csv = imported("pyarrow.csv", "a screening of CSV")
    try:
        with csv.open_csv(path, **_lines_options(path)) as reader:
            return list(reader.schema.names)
    except (OSError, ValueError) as failure:
        raise InputError(f"{path}: can't be read: {_first_line(failure)}") from None


def _source_of_paths(paths: Sequence[str]) -> Source:
    files = [file for path in paths for file in _files_of(path)]
    lines = [file for file in files if _LINES.search(file)]
    if not files:
        raise InputError(f"{paths[0]}: there is no file of Parquet or CSV; expected some, .parquet, .csv or .csv.gz")
    if not lines:
        return _Parquet(files)
    if len(lines) == len(files):
        return _Lines(files)
    raise InputError(f"{paths[0]}: there are files of Parquet and of CSV; expected one kind")


def _files_of(path: str) -> list[str]:
    if os.path.isdir(path):
        return sorted(
            os.path.join(folder, name)
            for folder, _, names in os.walk(path)
            for name in names
            if not name.startswith((".", "_")) and (_LINES.search(name) or _PARQUET.search(name))
        )
    if os.path.exists(path):
        return [path]
    found = sorted(glob.glob(path)) if any(letter in path for letter in "*?[") else []
    if not found:
        raise InputError(f"{path}: there is no such file; expected a file or a folder of Parquet or CSV")
    return found


# ---- Dask ----


@dataclass(frozen=True)
class DaskPart:
    """Columns that Dask computes."""

    frame: Any

    def read(self) -> Any:
        return self.frame.compute()


class _DaskFrame:
    library = "pandas"

    def __init__(self, data: Any) -> None:
        self._data = data
        self._names = {str(name): name for name in data.columns}
        self.names = _checked_names(data.columns)

    def part(self, names: Names) -> Part:
        return DaskPart(self._data[[self._names[name] for name in names]])

    def facts(self) -> dict[str, Any]:
        return {"kind": "dask", "partitions": self._data.npartitions}

    def fields_of_a_block(self, count: int, workers: int, is_sent: bool) -> int:
        return max(1, min(_FIELDS_OF_UNKNOWN_LENGTH, -(-count // (_BLOCKS_A_WORKER * workers))))
