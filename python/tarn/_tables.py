"""The data of a call, handed to the binding column by column.

No library is imported here: what a column is shows in itself. Values go over as they lie in memory, or by one
conversion, and never as text.
"""

from __future__ import annotations

import math
import numbers
import os
import sys
from array import array
from collections.abc import Callable, Iterable, Mapping, Sequence
from typing import Any

from . import _binding
from ._errors import InputError
from ._request import is_unicode

# The letters of the Arrow C interface for numbers, by kind and width in bytes as NumPy and `array` tell them.
_NUMBER_FORMATS = {
    ("i", 1): "c", ("i", 2): "s", ("i", 4): "i", ("i", 8): "l",
    ("u", 1): "C", ("u", 2): "S", ("u", 4): "I", ("u", 8): "L",
    ("f", 2): "e", ("f", 4): "f", ("f", 8): "g", ("b", 1): "C",
}  # fmt: skip
_KINDS_OF_ARRAY = {**dict.fromkeys("bhilq", "i"), **dict.fromkeys("BHILQ", "u"), **dict.fromkeys("fd", "f")}
_REFUSED_KINDS = {"M": "dates with times", "m": "durations", "c": "complex numbers", "S": "bytes", "V": "records"}
_EXPECTED = "expected a data frame, a dict of columns or a NumPy array"


def library_of(data: object) -> str:
    """The library that data is of: "pandas", "polars", "builtins"."""
    return type(data).__module__.partition(".")[0]


def read(data: object, wants: Callable[[str], bool]) -> _binding.Data:
    """Makes the data of a call of a table.

    Columns that aren't wanted are known by their names alone.
    """
    read_data = _binding.Data()
    if library_of(data) == "pandas" and hasattr(data, "columns"):
        _add_columns(read_data, ((str(name), column) for name, column in data.items()), wants)  # type: ignore[attr-defined]
    elif isinstance(data, Mapping):
        _add_columns(read_data, ((str(name), column) for name, column in data.items()), wants)
    elif hasattr(data, "__arrow_c_stream__"):
        read_data.add_stream(data.__arrow_c_stream__(), "")
    elif library_of(data) == "numpy" and hasattr(data, "dtype"):
        _add_columns(read_data, _columns_of_array(data), wants)
    elif isinstance(data, (str, os.PathLike)):
        path = os.fspath(data)
        raise InputError(f'the data is the path "{path}"; expected a data frame, like pandas.read_csv("{path}")')
    elif hasattr(data, "collect"):
        raise InputError(f"the data is a {type(data).__name__}, which is not computed yet; expected what collect() gives")
    elif hasattr(data, "compute"):
        raise InputError(f"the data is a {type(data).__name__}, which is not computed yet; expected what compute() gives")
    else:
        raise InputError(f"the data is of type {type(data).__name__}; {_EXPECTED}")
    return read_data


def _columns_of_array(values: Any) -> Iterable[tuple[str, object]]:
    """The columns of a NumPy array: by their names where it has some, else by their numbers from 0."""
    if values.dtype.names is not None:
        return [(name, values[name]) for name in values.dtype.names]
    if values.ndim != 2:
        raise InputError(f"the data is an array of {values.ndim} dimensions; expected 2, or a dict of columns")
    return [(str(number), values[:, number]) for number in range(values.shape[1])]


def _add_columns(data: _binding.Data, columns: Iterable[tuple[str, object]], wants: Callable[[str], bool]) -> None:
    for name, column in columns:
        if not is_unicode(name):
            continue  # no argument can name it
        if wants(name):
            add_column(data, name, column)
        else:
            data.add_refused(name, "values that nobody asked for")


def add_column(data: _binding.Data, name: str, column: Any) -> None:
    """Adds one column: of a library, an array, or any sequence of values."""
    library = library_of(column)
    if library == "pandas":
        _add_pandas(data, name, column)
    elif hasattr(column, "__arrow_c_stream__"):
        data.add_stream(column.__arrow_c_stream__(), name)
    elif library == "pyarrow" and hasattr(column, "to_pylist"):
        data.add_stream(sys.modules["pyarrow"].chunked_array([column]).__arrow_c_stream__(), name)
    elif library == "numpy" and hasattr(column, "dtype"):
        _add_array(data, name, column)
    elif isinstance(column, array) and column.typecode in _KINDS_OF_ARRAY:
        data.add_numbers(name, _NUMBER_FORMATS[_KINDS_OF_ARRAY[column.typecode], column.itemsize], column, False)
    elif isinstance(column, Iterable) and not isinstance(column, (str, bytes, Mapping)):
        _add_values(data, name, list(column))
    else:
        raise InputError(f'column "{name}" is of type {type(column).__name__}; expected a sequence of values')


def _add_array(data: _binding.Data, name: str, values: Any) -> None:
    if values.ndim != 1:
        raise InputError(f'column "{name}" has {values.ndim} dimensions; expected 1')
    kind = values.dtype.kind
    if kind in _REFUSED_KINDS:
        data.add_refused(name, _REFUSED_KINDS[kind])
    elif hasattr(values, "mask") or kind not in "biuf":
        _add_values(data, name, values.tolist())
    else:
        _add_plain(data, name, values)


def _add_plain(data: _binding.Data, name: str, values: Any) -> None:
    """Adds numbers of NumPy, without a copy where they stand side by side in the machine's own form."""
    number_format = _NUMBER_FORMATS.get((values.dtype.kind, values.dtype.itemsize))
    if number_format is None or not values.dtype.isnative:
        values, number_format = values.astype("float64"), "g"
    if not values.flags.c_contiguous:
        values = values.copy()
    data.add_numbers(name, number_format, values, values.dtype.kind == "b")


def _add_pandas(data: _binding.Data, name: str, column: Any) -> None:
    dtype = column.dtype
    kind = getattr(dtype, "kind", "O")
    if hasattr(dtype, "categories"):
        _add_categories(data, name, column.array)
    elif sys.modules.get("pyarrow") is not None and (hasattr(dtype, "pyarrow_dtype") or str(dtype) in ("str", "string")):
        add_column(data, name, column.array.__arrow_array__())  # which pandas has at hand, or makes far sooner
    elif kind in _REFUSED_KINDS:
        data.add_refused(name, _REFUSED_KINDS[kind])
    elif kind in "biuf" and library_of(dtype) == "numpy":
        _add_plain(data, name, column.to_numpy())
    elif kind == "b":
        _add_booleans(data, name, column.to_numpy(dtype="float64", na_value=math.nan))
    elif kind in "iuf":
        _add_plain(data, name, column.to_numpy(dtype="float64", na_value=math.nan))
    else:
        _add_values(data, name, column.tolist())


def _add_booleans(data: _binding.Data, name: str, values: Any) -> None:
    data.add_numbers(name, "g", values, True)


def _add_categories(data: _binding.Data, name: str, column: Any) -> None:
    """Adds a categorical of pandas: its codes, and its categories in their order."""
    categories = column.categories.tolist()
    codes = column.codes
    if not codes.flags.c_contiguous:
        codes = codes.copy()
    code_format = _NUMBER_FORMATS[codes.dtype.kind, codes.dtype.itemsize]
    kinds = {_kind_of(category) for category in categories}
    if not kinds or kinds == {"text"}:
        _check_texts(name, categories)
        data.add_texts(name, code_format, codes, categories, True, bool(column.ordered))
    elif kinds == {"number"} or kinds == {"boolean"}:
        entries = [float(category) for category in categories]
        data.add_number_codes(name, code_format, codes, entries, kinds == {"boolean"}, bool(column.ordered))
    else:
        data.add_refused(name, "categories that are " + " and ".join(sorted(_plural(kind) for kind in kinds)))


def _add_values(data: _binding.Data, name: str, values: Sequence[Any]) -> None:
    """Adds values of Python, which say themselves what they are."""
    kinds = {_kind_of_type(kind) for kind in set(map(type, values))} - {"missing"}
    if not kinds or kinds == {"number"}:
        data.add_numbers(name, "g", _numbers(name, values), False)
    elif kinds == {"boolean"}:
        data.add_numbers(name, "g", _numbers(name, values), True)
    elif kinds == {"text"} or kinds == {"text", "number"} and _has_no_number(values):
        _add_texts(data, name, values)
    else:
        data.add_refused(name, " and ".join(sorted(_plural(kind) for kind in kinds)))


def _has_no_number(values: Sequence[Any]) -> bool:
    """Whether all numbers among the values are NaN, which stands for a missing text, too."""
    return all(isinstance(value, str) or _is_missing(value) for value in values)


def _numbers(name: str, values: Iterable[Any]) -> array[float]:
    try:
        return array("d", [math.nan if _is_missing(value) else float(value) for value in values])
    except OverflowError:
        raise InputError(f'column "{name}": a number beyond 1.8e308; expected one that a double can hold') from None


def _add_texts(data: _binding.Data, name: str, values: Iterable[Any]) -> None:
    codes: dict[str, int] = {}
    missing = -1
    coded = array("i", [codes.setdefault(v, len(codes)) if isinstance(v, str) else missing for v in values])
    _check_texts(name, codes)
    data.add_texts(name, "i", coded, list(codes), False, False)


def _check_texts(name: str, texts: Iterable[str]) -> None:
    for text in texts:
        if not is_unicode(text):
            raise InputError(f'column "{name}": {text!r}; expected texts without half a surrogate pair')


def _is_missing(value: object) -> bool:
    return value is None or type(value).__name__ in ("NAType", "NaTType") or (isinstance(value, float) and value != value)


def _kind_of(value: object) -> str:
    return "missing" if _is_missing(value) else _kind_of_type(type(value))


def _kind_of_type(kind: type) -> str:
    if kind is type(None) or kind.__name__ in ("NAType", "NaTType"):
        return "missing"
    if issubclass(kind, str):
        return "text"
    if issubclass(kind, bool) or kind.__name__ in ("bool_", "bool"):
        return "boolean"
    names = {base.__name__ for base in kind.__mro__}  # what is asked by name needs no import
    if issubclass(kind, numbers.Real) or "Decimal" in names:
        return "number"
    if "datetime" in names:
        return "date with time"
    return "date" if "date" in names else kind.__name__


def _plural(kind: str) -> str:
    known = {"date with time": "dates with times", "Interval": "intervals", "bytes": "bytes"}
    return known.get(kind, kind + "s")


def numbers_of(name: str, sample: Any) -> Any:
    """The numbers of one sample as doubles side by side, NaN for what is missing; without a copy where they are such.

    Raises
    ------
    InputError
        For a sample that holds anything else.
    """
    of_library = _array_of(sample)
    if of_library is not None:
        return of_library
    if hasattr(sample, "to_pylist"):
        values = sample.to_pylist()
    elif hasattr(sample, "to_list"):
        values = sample.to_list()
    elif hasattr(sample, "tolist"):
        values = sample.tolist()
    elif isinstance(sample, Iterable) and not isinstance(sample, (str, bytes, Mapping)):
        values = list(sample)
    else:
        raise InputError(f"sample {name} is of type {type(sample).__name__}; expected a sequence of numbers")
    if not isinstance(values, list):
        raise InputError(f"sample {name} is a single value; expected a sequence of numbers")
    kinds = {_kind_of_type(kind) for kind in set(map(type, values))} - {"missing", "number", "boolean"}
    if kinds:
        raise InputError(f"sample {name} holds {' and '.join(sorted(_plural(kind) for kind in kinds))}; expected numbers")
    return _numbers(name, values)


def _array_of(sample: Any) -> Any:
    """The numbers of a sample of NumPy, pandas or polars as an array of doubles; `None` for any other sample."""
    library = library_of(sample)
    kind = getattr(getattr(sample, "dtype", None), "kind", "")
    if library == "numpy" and kind in "biuf" and kind and sample.ndim == 1 and not hasattr(sample, "mask"):
        values = sample.astype("float64", copy=False)
    elif library == "pandas" and kind in "biuf" and kind:
        values = sample.to_numpy(dtype="float64", na_value=math.nan)
    elif library == "polars" and "numpy" in sys.modules and sample.dtype.is_numeric() and not sample.dtype.is_decimal():
        values = sample.to_numpy().astype("float64", copy=False)
    elif library == "pyarrow" and "numpy" in sys.modules and _is_number_of_arrow(sample):
        values = sample.to_numpy(zero_copy_only=False).astype("float64", copy=False)
    else:
        return None
    return values if values.flags.c_contiguous else values.copy()


def _is_number_of_arrow(sample: Any) -> bool:
    types = sys.modules["pyarrow"].types
    kind = getattr(sample, "type", None)
    return kind is not None and bool(types.is_integer(kind) or types.is_floating(kind))


def add_samples(data: _binding.Data, field: str, group: str, samples: Mapping[str, Any], is_ordered: bool) -> None:
    """Adds samples below one another as one column, with another one that says which sample a row is of."""
    numbers = [numbers_of(name, sample) for name, sample in samples.items()]
    data.add_samples(field, group, numbers, list(samples), is_ordered)
