"""What the tests share: the command, which has to say the same as the package, and data in each library."""

from __future__ import annotations

import csv
import json
import os
import subprocess
from collections.abc import Callable, Iterator, Mapping, Sequence
from pathlib import Path
from typing import Any

import distributed
import duckdb
import numpy
import pandas
import polars
import pyarrow
import pytest

ROOT = Path(__file__).resolve().parents[2]
COMMAND = Path(os.environ.get("TARN_COMMAND", ROOT / "build/release/tarn"))

Columns = Mapping[str, Sequence[Any]]


def as_pandas(columns: Columns) -> Any:
    return pandas.DataFrame(dict(columns))


def as_pandas_of_arrow(columns: Columns) -> Any:
    return pandas.DataFrame(dict(columns)).convert_dtypes(dtype_backend="pyarrow")


def as_duckdb(columns: Columns) -> Any:
    return duckdb.from_arrow(pyarrow.table(dict(columns)))


def as_arrays(columns: Columns) -> Any:
    return {
        name: numpy.array([numpy.nan if value is None else value for value in values])
        if all(value is None or isinstance(value, (int, float)) for value in values)
        else list(values)
        for name, values in columns.items()
    }


def as_chunks(columns: Columns) -> Any:
    table = pyarrow.table(dict(columns))
    half = table.num_rows // 2
    return pyarrow.concat_tables([table.slice(0, half), table.slice(half)])


MAKERS: dict[str, Callable[[Columns], Any]] = {
    "dict": dict,
    "arrays": as_arrays,
    "pandas": as_pandas,
    "pandas of pyarrow": as_pandas_of_arrow,
    "polars": lambda columns: polars.DataFrame(dict(columns), strict=False),
    "pyarrow": lambda columns: pyarrow.table(dict(columns)),
    "chunks": as_chunks,
    "duckdb": as_duckdb,
}


@pytest.fixture(params=list(MAKERS))
def make(request: pytest.FixtureRequest) -> Callable[[Columns], Any]:
    """Makes a frame of columns in each library, one after the other."""
    return MAKERS[request.param]


class Command:
    """The command on tables of a folder."""

    def __init__(self, folder: Path) -> None:
        self._folder = folder

    def _write(self, columns: Columns) -> Path:
        path = self._folder / "table.csv"
        with path.open("w", newline="") as file:
            writer = csv.writer(file)
            writer.writerow(columns)
            for row in zip(*columns.values(), strict=True):
                writer.writerow("NA" if value is None else repr(value) if isinstance(value, float) else value for value in row)
        return path

    def run(self, columns: Columns, *arguments: str) -> subprocess.CompletedProcess[str]:
        return subprocess.run(
            [COMMAND, "analyze", self._write(columns), *arguments], capture_output=True, text=True, check=False, timeout=120
        )

    def plan(self, columns: Columns, plan: Path, *arguments: str) -> Any:
        """The tests of the JSON of a plan."""
        typed = [COMMAND, "run", "--data", self._write(columns), "--plan", plan, "--format", "json", *arguments]
        done = subprocess.run(typed, capture_output=True, text=True, check=True, timeout=120)
        return json.loads(done.stdout)["tests"]

    def tests(self, columns: Columns, *arguments: str) -> Any:
        """The tests of its JSON; what it says where it refuses the request."""
        result = self.result(columns, *arguments)
        return result if isinstance(result, str) else result["tests"]

    def result(self, columns: Columns, *arguments: str) -> Any:
        """All of its JSON; what it says where it refuses the request."""
        done = self.run(columns, *arguments, "--format", "json")
        return json.loads(done.stdout) if done.stdout else done.stderr


@pytest.fixture(scope="session")
def command(tmp_path_factory: pytest.TempPathFactory) -> Command:
    if not COMMAND.exists():
        pytest.fail(f"{COMMAND} is not built")
    return Command(tmp_path_factory.mktemp("command"))


@pytest.fixture(scope="module")
def client() -> Iterator[Any]:
    """A cluster of two processes."""
    with (
        distributed.LocalCluster(n_workers=2, threads_per_worker=1, processes=True, dashboard_address=":0") as cluster,
        distributed.Client(cluster) as client,
    ):
        yield client
