"""What someone who sees a table for the first time should know of it."""

from __future__ import annotations

import html
import re
from typing import Any

from . import _binding
from ._errors import in_words_of_python
from ._frames import Schema, make_frame

_MISSING = re.compile(r"if it means missing: --na \S+")
_SCHEMA: Schema = {"name": str, "kind": str, "values": str, "remarks": str}


class Look:
    """A first look at a table, by `tarn.look`.

    Attributes
    ----------
    title : str
        How large the table is.
    calls : list of str
        Calls of `tarn.analyze` to copy.
    """

    def __init__(self, found: _binding.DataLook, library: str) -> None:
        self.title = found.title
        self.calls = [_call(call) for call in found.calls]
        self._library = library
        self._rows = [
            {"name": field.name, "kind": field.kind, "values": field.values, "remarks": _remark("; ".join(field.remarks))}
            for field in found.fields
        ]  # fmt: skip
        self._rows += [{"name": name, "kind": "-", "values": what, "remarks": "can't be tested"} for name, what in found.others]

    @property
    def fields(self) -> Any:
        """A row for each column, in a frame of the library of the data."""
        return make_frame(self._library, _SCHEMA, self._rows)

    def __repr__(self) -> str:
        columns = list(_SCHEMA)
        widths = [max((len(row[column]) for row in self._rows), default=0) for column in columns]
        lines = [self.title]
        for row in self._rows:
            cells = (row[column].ljust(width) for column, width in zip(columns, widths, strict=True))
            lines.append(("  " + "  ".join(cells)).rstrip())
        return "\n".join(lines + (["Try"] if self.calls else []) + ["   " + call for call in self.calls])

    def _repr_html_(self) -> str:
        return f"<pre>{html.escape(repr(self))}</pre>"


def _remark(remark: str) -> str:
    """A remark of the command, which marks missing cells by an option where a frame has nulls."""
    return in_words_of_python(_MISSING.sub("make it null if it means missing", remark))


def _call(words: str) -> str:
    """A call of the command as one of the package: what stands behind the name of the table, options with fields."""
    import shlex  # for a first look alone

    arguments = []
    rest = iter(shlex.split(words))
    for option in rest:
        names = next(rest, "").split(",")
        value = f'"{names[0]}"' if len(names) == 1 else "[" + ", ".join(f'"{name}"' for name in names) + "]"
        arguments.append(f"{option.removeprefix('--').replace('-', '_')}={value}")
    return f"tarn.analyze(data, {', '.join(arguments)})"
