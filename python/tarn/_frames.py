"""Tidy frames in the library that the data came in."""

from __future__ import annotations

import importlib
import importlib.util
import math
from collections.abc import Mapping, Sequence
from typing import Any

# What the values of a column are: `None` stands in any of them for a value that there is none of.
Schema = Mapping[str, type]

_WITH_COLUMNS = {"pandas": ("pandas", "DataFrame"), "polars": ("polars", "DataFrame"), "pyarrow": ("pyarrow", "table")}


def number_of(value: Any) -> float | None:
    """A number of a result: `None` where there is none, "nan" and "inf" as what they mean."""
    return None if value is None else float(value)


def make_frame(library: str, schema: Schema, rows: Sequence[Mapping[str, Any]]) -> Any:
    """A frame of that library; a dict of columns where there is no such frame to be had.

    pandas, polars and pyarrow make their own. For any other library narwhals is asked, where it is installed.
    """
    columns = {name: [_as(kind, row.get(name)) for row in rows] for name, kind in schema.items()}
    if library in _WITH_COLUMNS:
        module, maker = _WITH_COLUMNS[library]
        return getattr(importlib.import_module(module), maker)(columns)
    if library not in ("builtins", "numpy", "") and importlib.util.find_spec("narwhals") is not None:
        made = _by_narwhals(library, columns)
        if made is not None:
            return made
    return columns


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
