"""The output of a screening as a folder of Parquet: a part for each block, and what was asked."""

from __future__ import annotations

import contextlib
import hashlib
import importlib
import json
import os
import re
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import Any

from ._blocks import Block
from ._errors import InputError
from ._frames import arrow_of_columns
from ._result import SCREENED
from ._sources import imported

# Readers of Parquet pass over names that begin with an underscore or a point.
_REQUEST = "_screening.json"
_PART = re.compile(r"part-(\d+)\.parquet")
_UNFINISHED = ".unfinished-"
_NOTES = b"tarn.notes"
# What is kept beside the request.
_KEPT = ("block", "is_finished")


def digest_of(fields: Iterable[Sequence[str]]) -> str:
    """A text that stands for a list of fields, of which there may be millions."""
    digest = hashlib.sha256()
    for names in fields:
        digest.update(json.dumps(names).encode() + b"\n")
    return digest.hexdigest()


class PartFolder:
    """The folder of a screening.

    Each part is written whole under another name and renamed, so that what has its name is done.

    Raises
    ------
    InputError
        Where pyarrow isn't installed, where the folder holds another screening or something else, and where it can't be
        written to.
    """

    def __init__(self, path: str | os.PathLike[str], request: Mapping[str, Any], block: int) -> None:
        imported("pyarrow", "out=")
        self._parquet = importlib.import_module("pyarrow.parquet")
        self.path = os.fspath(path)
        self._facts: dict[str, Any] = {"request": dict(request), "block": block, "is_finished": False}
        with self._written():
            self._is_new = not os.path.isdir(self.path)
            known = self._read_request()
        if known is not None:
            self._check(known["request"], request)
            self._facts = known

    @property
    def block(self) -> int:
        """How many fields its blocks have."""
        return int(self._facts["block"])

    @property
    def is_finished(self) -> bool:
        """Whether every part is there, with its significances adjusted."""
        return bool(self._facts["is_finished"])

    def begin(self) -> None:
        """Makes the folder, or removes what a run that was cut off has left half written."""
        with self._written():
            os.makedirs(self.path, exist_ok=True)
            for name in os.listdir(self.path):
                if name.startswith(_UNFINISHED):
                    os.remove(os.path.join(self.path, name))
            self._write_request()

    def done(self) -> set[int]:
        """The numbers of the blocks that are there."""
        if not os.path.isdir(self.path):
            return set()
        return {int(match[1]) for match in map(_PART.fullmatch, os.listdir(self.path)) if match}

    def write(self, place: int, block: Block) -> None:
        """Writes a block."""
        table = arrow_of_columns(SCREENED, block.columns)
        self._write_table(place, table.replace_schema_metadata({_NOTES: json.dumps(block.notes).encode()}))

    def read(self, place: int, names: Sequence[str] | None = None) -> Any:
        """The rows of a block, some of their columns or all, as a table of pyarrow."""
        path = self._path_of(place)
        try:
            return self._parquet.read_table(path, columns=None if names is None else list(names), partitioning=None)
        except (OSError, ValueError) as failure:
            reason = str(failure).splitlines()[0]
            raise InputError(f"{path}: can't be read: {reason}; remove it to have it made again") from None

    def notes(self, place: int) -> list[str]:
        """What a reader should know of the data of a block."""
        metadata = self._parquet.read_schema(self._path_of(place)).metadata or {}
        return list(json.loads(metadata.get(_NOTES, b"[]")))

    def replace(self, place: int, columns: Mapping[str, Sequence[Any]]) -> None:
        """Writes a block once more with other values in some of its columns."""
        table = self.read(place)
        kinds = arrow_of_columns({name: SCREENED[name] for name in columns}, columns)
        for name in columns:
            table = table.set_column(table.schema.get_field_index(name), table.schema.field(name), kinds.column(name))
        self._write_table(place, table)

    def finish(self) -> None:
        """Says that all is there."""
        self._facts["is_finished"] = True
        with self._written():
            self._write_request()

    # ---- Files ----

    def _path_of(self, place: int) -> str:
        return os.path.join(self.path, f"part-{place:06d}.parquet")

    def _unfinished(self, name: str) -> str:
        return os.path.join(self.path, f"{_UNFINISHED}{os.getpid()}-{name}")

    def _write_table(self, place: int, table: Any) -> None:
        path = self._path_of(place)
        unfinished = self._unfinished(os.path.basename(path))
        with self._written():
            self._parquet.write_table(table, unfinished)
            os.replace(unfinished, path)

    def _write_request(self) -> None:
        unfinished = self._unfinished("request")
        with open(unfinished, "w", encoding="utf-8") as file:
            json.dump(self._facts, file, ensure_ascii=False, indent=1)
        os.replace(unfinished, os.path.join(self.path, _REQUEST))

    @contextlib.contextmanager
    def _written(self) -> Iterator[None]:
        try:
            yield
        except OSError as failure:
            raise InputError(f'out="{self.path}": can\'t be written: {failure.strerror or failure}') from None

    # ---- What the folder holds ----

    def _read_request(self) -> dict[str, Any] | None:
        if not os.path.exists(self.path):
            return None
        expected = "expected a new or an empty folder, or that of the same screening"
        if not os.path.isdir(self.path):
            raise InputError(f'out="{self.path}": is a file; {expected}')
        path = os.path.join(self.path, _REQUEST)
        if not os.path.exists(path):
            if any(not name.startswith(_UNFINISHED) for name in os.listdir(self.path)):
                raise InputError(f'out="{self.path}": holds other files and no screening; {expected}')
            return None
        try:
            with open(path, encoding="utf-8") as file:
                known: dict[str, Any] = json.load(file)
            return {name: known[name] for name in ("request", *_KEPT)}
        except (ValueError, KeyError, TypeError):
            raise InputError(f'out="{self.path}": its {_REQUEST} is none that a screening wrote; {expected}') from None

    def _check(self, known: Mapping[str, Any], asked: Mapping[str, Any]) -> None:
        for name in dict.fromkeys([*known, *asked]):
            there, here = known.get(name), json.loads(json.dumps(asked.get(name)))
            if there == here:
                continue
            if isinstance(there, dict) and isinstance(here, dict):
                name, there, here = _difference(name, there, here)
            raise InputError(
                f'out="{self.path}": holds another screening, with {name} {_told(there)}, and here it is {_told(here)}; '
                "expected the same call on the same data, or another folder"
            )


def _difference(name: str, there: Mapping[str, Any], here: Mapping[str, Any]) -> tuple[str, Any, Any]:
    """The first thing in which two descriptions differ."""
    key = next(key for key in dict.fromkeys([*there, *here]) if there.get(key) != here.get(key))
    return (f"{key}=" if name == "arguments" else f"{key} of the {name}"), there.get(key), here.get(key)


def _told(value: Any) -> str:
    most = 60
    text = "not given" if value is None else json.dumps(value, ensure_ascii=False)
    return text if len(text) <= most else text[:most] + "..."
