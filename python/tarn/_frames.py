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
    columns = {name: [_as(kind, row.get(name)) for row in rows] for name, kind in schema.items()}
    if library in ("pandas", "polars"):
        return importlib.import_module(library).DataFrame(columns)
    if library not in _WITHOUT_FRAMES and importlib.util.find_spec("narwhals") is not None:
        made = _by_narwhals(library, columns)
        if made is not None:
            return made
    if importlib.util.find_spec("pyarrow") is None:
        return columns
    pyarrow = importlib.import_module("pyarrow")
    kinds = {int: pyarrow.int64(), float: pyarrow.float64(), str: pyarrow.string()}
    return pyarrow.table(columns, schema=pyarrow.schema([(name, kinds[kind]) for name, kind in schema.items()]))


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
