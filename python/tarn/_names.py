"""Which columns of a table the names of a call mean, where the whole table is not at hand."""

from __future__ import annotations

from collections.abc import Mapping, Sequence
from typing import Any

from . import _binding
from ._errors import InputError
from ._request import as_json, near_name

_FAMILIES = ("one_sample", "related", "independent")


def unknown_column(name: str, names: Sequence[str]) -> str:
    """The sentence for a name that no column has."""
    return f'the data has no column "{name}"{near_name(name, names)}'


def columns_meant(words: Sequence[str], names: Sequence[str]) -> list[str]:
    """The columns that names and patterns mean, in the order of the words.

    Raises
    ------
    InputError
        For a word that means none.
    """
    known = set(names)
    meant: dict[str, None] = {}
    for word in words:
        wants = _binding.Request(as_json({"one_sample": [word]})).wants
        found = [word] if word in known else [name for name in names if wants(name)]
        if not found:
            raise InputError(unknown_column(word, names))
        meant.update(dict.fromkeys(found))
    return list(meant)


def columns_in_common(asked: Mapping[str, Any], names: Sequence[str]) -> tuple[str, ...]:
    """The columns that a request needs beside those that it tests, such as that of the groups.

    Raises
    ------
    InputError
        For a name of the request that no column has.
    """
    rest = {name: value for name, value in asked.items() if name not in _FAMILIES}
    request = _binding.Request(as_json({**rest, "one_sample": []}))
    request.check(names)
    return tuple(name for name in names if request.wants(name))
