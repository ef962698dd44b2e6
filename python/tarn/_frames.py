"""Tidy frames in the library that the data came in."""

from __future__ import annotations

import importlib
import importlib.util
import math
from collections.abc import Mapping, Sequence
from typing import Any

# What the values of a column are: `None` stands in any of them for a value that there is none of.
Schema = Mapping[str, type]

_WITHOUT_FRAMES = ("builtins", "numpy", "array", "pyarrow", "")


def number_of(value: Any) -> float | None:
    """A number of a result: `None` where there is none, "nan" and "inf" as what they mean."""
    return None if value is None else float(value)


def make_frame(library: str, schema: Schema, rows: Sequence[Mapping[str, Any]]) -> Any:
    """A frame of that library; of data that came in none a table of pyarrow, and without that a dict of columns.

    pandas, polars and pyarrow make their own. For any other library narwhals is asked, where it is installed.
    """
    return frame_of_columns(library, schema, columns_of(schema, rows))


def columns_of(schema: Schema, rows: Sequence[Mapping[str, Any]]) -> dict[str, list[Any]]:
    """Rows as columns, with what each holds made what the schema says."""
    return {name: [_as(kind, row.get(name)) for row in rows] for name, kind in schema.items()}


def frame_of_columns(library: str, schema: Schema, columns: dict[str, list[Any]]) -> Any:
    """The same of columns that are made."""
    if library in ("pandas", "polars"):
        return importlib.import_module(library).DataFrame(columns)
    if library not in _WITHOUT_FRAMES and importlib.util.find_spec("narwhals") is not None:
        made = _by_narwhals(library, columns)
        if made is not None:
            return made
    if importlib.util.find_spec("pyarrow") is None:
        return columns
    return arrow_of_columns(schema, columns)


def arrow_of_columns(schema: Schema, columns: Mapping[str, Sequence[Any]]) -> Any:
    """A table of pyarrow, which has to be there."""
    pyarrow = importlib.import_module("pyarrow")
    kinds = {int: pyarrow.int64(), float: pyarrow.float64(), str: pyarrow.string(), bool: pyarrow.bool_()}
    return pyarrow.table(dict(columns), schema=pyarrow.schema([(name, kinds[kind]) for name, kind in schema.items()]))


def frame_of_arrow(library: str, table: Any) -> Any:
    """A table of pyarrow as a frame of that library; as it is for libraries that make none of it."""
    if library == "pandas":
        return table.to_pandas()
    return importlib.import_module("polars").from_arrow(table) if library == "polars" else table


def _by_narwhals(library: str, columns: dict[str, list[Any]]) -> Any:
    """A frame of another library, `None` where narwhals can't make one; of one that can't hold columns pyarrow's."""
    narwhals = importlib.import_module("narwhals")
    for backend in (library, "pyarrow"):
        try:
            return narwhals.from_dict(columns, backend=backend).to_native()
        except (ValueError, TypeError, ImportError):
            continue
    return None


def _as(kind: type, value: Any) -> Any:
    if value is None:
        return None
    if kind is float:
        number = float(value)
        return None if math.isnan(number) else number
    return kind(value)
