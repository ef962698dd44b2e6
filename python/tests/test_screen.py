"""A screening says of each field what an analysis of it says, wherever it is done and whatever befalls the workers."""

from __future__ import annotations

import json
import math
import os
import resource
import signal
import socket
import subprocess
import sys
import threading
import time
from collections.abc import Callable, Mapping
from pathlib import Path
from typing import Any

import dask
import dask.dataframe
import distributed
import numpy
import pandas
import polars
import pyarrow
import pyarrow.parquet
import pytest
import tarn
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st
from test_same_as_command import tables

# Where a request asks for a family of its own: the arguments of the analysis that says the same.
OPTIONS: list[dict[str, Any]] = [
    {},
    {"exact": True, "alternative": "less", "adjust": "hommel"},
    {"tests": ["mann-whitney", "kolmogorov-smirnov"], "adjust": "by", "weights": "count"},
    {"where": "count > 2", "adjust": "holm", "confidence": 90, "alpha": 0.1},
    {"tests": ["mann-whitney"], "monte_carlo": 100, "seed": 5, "adjust": "hochberg"},
]


def rows_of(frame: Any) -> list[dict[str, Any]]:
    """The rows of a frame of pandas, with None for what there is none of."""
    return [
        {
            name: None if isinstance(value, float) and math.isnan(value) or value is None else value
            for name, value in row.items()
        }
        for row in frame.astype(object).to_dict("records")
    ]


def rows_tested(screening: tarn.Screening) -> list[dict[str, Any]]:
    """Its rows without those of fields that couldn't be tested, by the columns that an analysis has, too."""
    own = (
        "p_asked",
        "in_family",
        "effect",
        "effect_label",
        "effect_value",
        "effect_lower",
        "effect_upper",
        "message",
        "number",
    )
    rows = [row for row in rows_of(screening.tests) if row["name"] is not None]
    return [{name: value for name, value in row.items() if name not in own} for row in rows]


def expected(result: tarn.Result) -> list[dict[str, Any]]:
    return [{name: value for name, value in row.items() if name != "number"} for row in rows_of(result.tests)]


@settings(max_examples=120, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture])
@given(
    columns=tables(), options=st.sampled_from(OPTIONS), block=st.integers(1, 4), is_grouped=st.booleans(), data=st.data()
)
def test_a_screening_says_what_an_analysis_says(
    columns: Mapping[str, Any], options: dict[str, Any], block: int, is_grouped: bool, data: st.DataObject
) -> None:
    frame = pandas.DataFrame(dict(columns))
    fields = data.draw(
        st.permutations(["x", "y", "count"] if "weights" not in options and "where" not in options else ["x", "y"])
    )
    asked = dict(options)
    if not is_grouped:
        asked.pop("tests", None)
    words = {"independent": fields, "group": "two"} if is_grouped else {"one_sample": fields}
    try:
        result = tarn.analyze(frame, **words, brief=True, **asked)
    except (tarn.InputError, tarn.EngineError):
        return  # which says it of all fields together; a screening has those that can be tested
    found = tarn.screen(frame, fields, group="two" if is_grouped else None, block=block, **asked)
    assert rows_tested(found) == expected(result)
    effects = [test.effect for test in result]
    values = [row["effect_value"] for row in rows_of(found.tests) if row["name"] is not None]
    assert values == [None if effect is None else effect.value for effect in effects]
    assert [row["p_asked"] for row in rows_of(found.tests) if row["name"] is not None] == [
        None if test.pvalue is None or math.isnan(test.pvalue) else test.pvalue for test in result
    ]


@settings(max_examples=30, deadline=None)
@given(columns=tables(), block=st.integers(1, 3))
def test_pairs_are_those_of_an_analysis_each(columns: Mapping[str, Any], block: int) -> None:
    frame = pandas.DataFrame(dict(columns))
    pairs = [("x", "y"), ("y", "count"), ("x", "y", "count")]
    results = [tarn.analyze(frame, related=list(pair)) for pair in pairs]
    found = rows_tested(tarn.screen(frame, pairs=pairs, block=block))
    adjusted = ("p_holm", "p_bh")
    assert [{**row, **dict.fromkeys(adjusted)} for row in found] == [
        {**row, **dict.fromkeys(adjusted)} for result in results for row in expected(result)
    ]


def test_adjusted_significances_are_those_of_r() -> None:
    # By hand: U of the first group is 0, 1, 4 of 16 pairs, and the exact significances of 4 and 4 values 2/70, 4/70, 24/70
    # (table of the counts 1, 1, 2, 3, 5 for U = 0 to 4); R: p.adjust(c(2, 4, 24) / 70, "holm"), "BY", "hommel".
    data = {
        "a": [1, 2, 3, 4, 5, 6, 7, 8],
        "b": [1, 2, 3, 5, 4, 6, 7, 8],
        "c": [1, 2, 5, 6, 3, 4, 7, 8],
        "g": list("ppppqqqq"),
    }
    by_method = {
        "holm": [6 / 70, 8 / 70, 24 / 70],
        "by": [6 / 70 * 11 / 6, 6 / 70 * 11 / 6, 24 / 70 * 11 / 6],
        "hommel": [6 / 70, 8 / 70, 24 / 70],
    }
    for method, adjusted in by_method.items():
        found = tarn.screen(data, group="g", adjust=method, block=1).tests.to_pydict()  # type: ignore[arg-type]
        assert found["pvalue"] == pytest.approx([2 / 70, 4 / 70, 24 / 70])
        assert found["p_adjusted"] == pytest.approx(adjusted)
        assert found["number"] == [1, 2, 3]


# ---- Tables of each kind ----


def wide(fields: int = 60, rows: int = 80, seed: int = 1) -> pandas.DataFrame:
    numbers = numpy.random.default_rng(seed)
    frame = pandas.DataFrame({f"x{place}": numbers.normal(size=rows).round(2) for place in range(fields)})
    frame.iloc[::7, 3] = numpy.nan
    frame["arm"] = numpy.where(numbers.random(rows) < 0.5, "a", "b")
    return frame


@pytest.fixture(scope="module")
def frame() -> pandas.DataFrame:
    return wide()


@pytest.fixture(scope="module")
def known(frame: pandas.DataFrame) -> list[dict[str, Any]]:
    """What the analysis says of it."""
    return expected(tarn.analyze(frame, independent="x*", group="arm", adjust="bh"))


def in_files(frame: pandas.DataFrame, folder: Path, suffix: str) -> list[str]:
    """The table in three files, whose rows follow one another."""
    paths = []
    for place in range(3):
        path = folder / f"rows-{place}.{suffix}"
        part = frame.iloc[place * 30 : (place + 1) * 30]
        if suffix == "parquet":
            part.to_parquet(path, index=False)
        else:
            part.to_csv(path, index=False, sep="\t" if suffix == "tsv" else ",")
        paths.append(str(path))
    return paths


MAKERS: dict[str, Callable[[pandas.DataFrame, Path], Any]] = {
    "pandas": lambda frame, folder: frame,
    "polars": lambda frame, folder: polars.from_pandas(frame),
    "pyarrow": lambda frame, folder: pyarrow.Table.from_pandas(frame),
    "dict": lambda frame, folder: {name: column.tolist() for name, column in frame.items()},
    "folder of Parquet": lambda frame, folder: (in_files(frame, folder, "parquet"), folder)[1],
    "files of Parquet": lambda frame, folder: in_files(frame, folder, "parquet"),
    "folder of CSV": lambda frame, folder: (in_files(frame, folder, "csv"), str(folder))[1],
    "files of CSV, compressed": lambda frame, folder: in_files(frame, folder, "csv.gz"),
    "pattern of TSV": lambda frame, folder: (in_files(frame, folder, "tsv"), f"{folder}/rows-*.tsv")[1],
    "dask": lambda frame, folder: dask.dataframe.from_pandas(frame, npartitions=4),
}


def as_pandas(table: Any) -> pandas.DataFrame:
    made: pandas.DataFrame = table if isinstance(table, pandas.DataFrame) else pandas.DataFrame(rows_of(table.to_pandas()))
    return made


def same(screening: tarn.Screening, known: list[dict[str, Any]]) -> bool:
    columns = list(known[0])
    return [{name: row[name] for name in columns} for row in rows_of(as_pandas(screening.tests))] == known


@pytest.mark.parametrize("kind", list(MAKERS))
def test_any_table_gives_the_same(kind: str, frame: pandas.DataFrame, known: list[dict[str, Any]], tmp_path: Path) -> None:
    data = MAKERS[kind](frame, tmp_path)
    assert same(tarn.screen(data, group="arm", adjust="bh", block=17), known)
    assert same(tarn.screen(data, "x*", by="arm", adjust="bh", threads=3), known)


def test_partitions_of_a_folder_are_a_column(frame: pandas.DataFrame, known: list[dict[str, Any]], tmp_path: Path) -> None:
    frame.sort_values("arm", kind="stable").to_parquet(tmp_path / "data", partition_cols=["arm"], index=False)
    assert same(tarn.screen(tmp_path / "data", group="arm", adjust="bh"), known)


def test_arrays_have_columns_by_their_numbers() -> None:
    values = numpy.random.default_rng(2).normal(size=(40, 5))
    found = tarn.screen(values, ["0", "3"], tests="wilcoxon", test_value=0.5)
    plain = tarn.analyze(values, one_sample=["0", "3"], tests="wilcoxon", test_value=0.5)
    assert found.tests.column("statistic").to_pylist() == [test.statistic for test in plain]


def test_words_on_columns_reach_their_block() -> None:
    frame = pandas.DataFrame({"a": [1, 2, 1, 2, 2, 2], "b": [3.5, 1, 2, 6, 5, 4], "c": list("uvuvvv"), "g": list("pqpqpq")})
    words: dict[str, Any] = {"nominal": "a", "order": {"c": ["v", "u"], "g": ["q", "p"]}, "label": {"b": "Length"}}
    found = tarn.screen(frame, ["a", "b", "c"], block=1, **words)
    assert rows_tested(found) == expected(tarn.analyze(frame, one_sample=["a", "b", "c"], **words))
    grouped = tarn.screen(frame, ["b"], group="g", block=1, **words)
    assert rows_tested(grouped) == expected(tarn.analyze(frame, independent="b", group="g", **words))


# ---- What can't be tested, what can't be meant ----


def test_a_field_that_cannot_be_tested_says_why() -> None:
    frame = pandas.DataFrame(
        {"x": [1.0, 2, 3, 4], "y": [1.0, math.inf, 3, 4], "t": list("uvuv"), "g": list("ppqq"), "z": [2.0, 1, 5, 3]}
    )
    rows = {row["fields"]: row for row in rows_of(tarn.screen(frame, group="g").tests)}
    assert list(rows) == ["x", "y", "t", "z"]
    assert "infinite" in rows["y"]["message"] and rows["y"]["pvalue"] is None and not rows["y"]["in_family"]
    assert rows["t"]["message"] == "none of the tests fits the field"
    alone = tarn.analyze(frame, independent=["x", "z"], group="g")
    assert [rows["x"]["p_holm"], rows["z"]["p_holm"]] == alone.tests["p_holm"].tolist()


MISTAKES: list[tuple[dict[str, Any], str]] = [
    ({"group": "armm"}, r'the data has no column "armm"; did you mean arm\?'),
    ({"group": "arm", "by": "arm"}, "group= are two names of one argument"),
    ({"fields": "y*", "group": "arm"}, r'the data has no column "y\*"'),
    ({"group": "arm", "tests": "manwhitney"}, 'there is no test "manwhitney"; did you mean mann-whitney'),
    ({"group": "arm", "tests": "runs"}, "runs"),
    ({"group": "arm", "where": "arn = 'a'"}, 'the data has no column "arn"; did you mean arm'),
    ({"group": "arm", "missing": "listwise"}, r"missing= is no argument"),
    ({"label": {"x9": "Length"}}, 'label: the data has no column "x9"'),
    ({"adjust": "holms"}, r"adjust='holms'; did you mean holm\?"),
    ({"pairs": [("x1", "x1")]}, "expected two columns or more that differ"),
    ({"pairs": [("x1", "x")]}, 'the data has no column "x"'),
    ({"pairs": [("x1", "x2")], "group": "arm"}, "pairs= stands in place of fields= and group="),
    ({"block": 0}, "block=0; expected a whole number from 1 on"),
    ({"threads": 0}, "threads=0; expected a whole number from 1 on"),
    ({"alphaa": 1}, "alphaa= is no argument"),
    ({"fields": "arm", "group": "arm"}, "there is no column to be tested"),
    ({"weights": [1, 2]}, "weights= is of type list; expected the name of a column"),
]


@pytest.mark.parametrize(("arguments", "message"), MISTAKES, ids=[str(arguments) for arguments, _ in MISTAKES])
def test_a_mistake_is_one_line(arguments: dict[str, Any], message: str, tmp_path: Path) -> None:
    frame = wide(5)
    with pytest.raises(tarn.InputError, match=message) as mistake:
        tarn.screen(frame, **arguments, out=tmp_path / "out")
    assert "\n" not in str(mistake.value)
    assert not (tmp_path / "out").exists()


def test_a_table_that_is_none_is_one_line(tmp_path: Path) -> None:
    (tmp_path / "a.parquet").write_text("no table")
    (tmp_path / "empty").mkdir()
    (tmp_path / "both").mkdir()
    (tmp_path / "both/a.csv").write_text("x\n1\n")
    (tmp_path / "both/a.parquet").write_text("")
    (tmp_path / "b.csv").write_text("x,y\n1,2\n")
    (tmp_path / "c.csv").write_text("x,z\n1,2\n")
    (tmp_path / "text.csv").write_text("x,y\na,b\n")
    cases: list[tuple[Any, str]] = [
        (tmp_path / "a.parquet", "a.parquet: can't be read"),
        (tmp_path / "none.parquet", "there is no such file"),
        (tmp_path / "empty", "there is no file of Parquet or CSV"),
        (tmp_path / "both", "of Parquet and of CSV; expected one kind"),
        ([tmp_path / "b.csv", tmp_path / "c.csv"], '"[yz]" is a column of this file or of .*b.csv, not of both'),
        ([tmp_path / "b.csv", tmp_path / "text.csv"], "can't be one table"),
        (polars.DataFrame({"x": [1]}).lazy(), "not computed yet"),
        (7, "of type int; expected a data frame"),
        (pandas.DataFrame([[1, 2]], columns=["x", "x"]), 'two columns "x"'),
    ]
    for data, message in cases:
        with pytest.raises(tarn.InputError, match=message) as mistake:
            tarn.screen(data)
        assert "\n" not in str(mistake.value)


def test_a_library_that_is_missing_is_told_with_the_way_to_have_it(monkeypatch: pytest.MonkeyPatch, tmp_path: Path) -> None:
    data = {"x": [1.0, 2, 3], "g": list("aab")}
    (tmp_path / "a.parquet").write_text("")
    monkeypatch.setitem(sys.modules, "pyarrow", None)
    monkeypatch.setitem(sys.modules, "pyarrow.dataset", None)
    for call in (lambda: tarn.screen(data, out=tmp_path / "out"), lambda: tarn.screen(tmp_path / "a.parquet")):
        with pytest.raises(tarn.InputError, match="needs pyarrow, which is not installed; expected: pip install pyarrow"):
            call()
    assert tarn.screen(data, "x", tests="runs").tests["statistic"] == [
        2.0
    ]  # by hand: 1 below the median of 2, then 2 and 3


# ---- Output, and going on with it ----


def test_parts_are_whole_and_say_the_same(frame: pandas.DataFrame, known: list[dict[str, Any]], tmp_path: Path) -> None:
    out = tmp_path / "out"
    found = tarn.screen(frame, group="arm", adjust="bh", block=16, out=out)
    assert same(found, known) and found.out == str(out)
    assert sorted(os.listdir(out)) == ["_screening.json", *(f"part-{place:06d}.parquet" for place in range(4))]
    assert rows_of(pyarrow.parquet.read_table(out).to_pandas()) == rows_of(found.tests)
    memory = tarn.screen(frame, group="arm", adjust="bh")
    assert repr(memory) == repr(found) and len(memory) == len(found) == 60
    pandas.testing.assert_frame_equal(memory.tests, found.tests)


def test_a_run_that_was_cut_off_goes_on(frame: pandas.DataFrame, known: list[dict[str, Any]], tmp_path: Path) -> None:
    frame.to_parquet(tmp_path / "data.parquet")
    out = tmp_path / "out"
    program = (
        "import os, signal, sys, tarn\n"
        "def stop(percent):\n"
        "    if percent > 40: os.kill(os.getpid(), signal.SIGKILL)\n"
        "data, out = sys.argv[1:]\n"
        "tarn.screen(data, group='arm', adjust='bh', block=5, out=out, threads=1, progress=stop)\n"
    )
    done = subprocess.run([sys.executable, "-c", program, tmp_path / "data.parquet", out], check=False)
    assert done.returncode == -signal.SIGKILL
    there = sorted(path.name for path in out.glob("part-*"))
    assert 0 < len(there) < 12
    (out / ".unfinished-1-part-000011.parquet").write_text("half")
    told: list[float] = []
    found = tarn.screen(tmp_path / "data.parquet", group="arm", adjust="bh", out=out, progress=told.append)
    assert same(found, known)
    assert len(told) == 12 - len(there) and told[0] > 40 and told[-1] == 100
    assert not list(out.glob(".unfinished*"))
    # All is there: nothing is done once more.
    written = {path: path.stat().st_mtime_ns for path in out.iterdir()}
    assert same(tarn.screen(tmp_path / "data.parquet", group="arm", adjust="bh", out=out, progress=told.append), known)
    assert written == {path: path.stat().st_mtime_ns for path in out.iterdir()} and len(told) == 12 - len(there)


def test_ctrl_c_keeps_what_is_done(tmp_path: Path) -> None:
    frame = wide(40, 60)
    out = tmp_path / "out"

    def interrupt(percent: float) -> None:
        if percent >= 50:
            raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        tarn.screen(frame, group="arm", block=4, out=out, progress=interrupt)
    assert len(list(out.glob("part-*"))) >= 5
    assert same(tarn.screen(frame, group="arm", out=out), expected(tarn.analyze(frame, independent="x*", group="arm")))


def test_another_request_is_refused_by_an_output(frame: pandas.DataFrame, tmp_path: Path) -> None:
    out = tmp_path / "out"
    tarn.screen(frame, group="arm", alpha=0.01, out=out)
    written = {path: path.read_bytes() for path in out.iterdir()}
    cases: list[tuple[Any, dict[str, Any], str]] = [
        (frame, {"group": "arm", "alpha": 0.05}, "with alpha= 0.01, and here it is 0.05"),
        (frame, {"group": "arm"}, "with alpha= 0.01, and here it is not given"),
        (frame, {"fields": "x1*", "group": "arm", "alpha": 0.01}, "with count of the fields 60, and here it is 11"),
        (frame.iloc[:-1], {"group": "arm", "alpha": 0.01}, "with rows of the data 80, and here it is 79"),
        (frame.rename(columns={"x1": "z"}), {"group": "arm", "alpha": 0.01}, "with names of the data"),
    ]
    for data, arguments, message in cases:
        with pytest.raises(tarn.InputError, match=message) as mistake:
            tarn.screen(data, out=out, **arguments)
        assert "holds another screening" in str(mistake.value) and "\n" not in str(mistake.value)
    assert written == {path: path.read_bytes() for path in out.iterdir()}


def test_a_folder_of_something_else_is_left_alone(frame: pandas.DataFrame, tmp_path: Path) -> None:
    (tmp_path / "letter.txt").write_text("Dear")
    (tmp_path / "file").write_text("")
    (tmp_path / "broken").mkdir()
    (tmp_path / "broken/_screening.json").write_text('{"request": ')
    for out, message in (
        ("", "holds other files and no screening"),
        ("file", "is a file"),
        ("broken", "is none that a screening wrote"),
    ):
        with pytest.raises(tarn.InputError, match=message):
            tarn.screen(frame, group="arm", out=tmp_path / out)
    out = tmp_path / "out"
    tarn.screen(frame, group="arm", out=out, block=20)
    (out / "part-000001.parquet").write_bytes(b"broken")
    (out / "part-000000.parquet").unlink()
    with pytest.raises(tarn.InputError, match=r"part-000001.parquet: can't be read: .*; remove it to have it made again"):
        tarn.screen(frame, group="arm", out=out)


# ---- A cluster ----


@pytest.mark.parametrize("kind", ["pandas", "polars", "dict", "folder of Parquet", "folder of CSV", "dask"])
def test_a_cluster_gives_the_same(
    kind: str, frame: pandas.DataFrame, known: list[dict[str, Any]], client: Any, tmp_path: Path
) -> None:
    told: list[float] = []
    data = MAKERS[kind](frame, tmp_path)
    assert same(tarn.screen(data, group="arm", adjust="bh", block=9, client=client, progress=told.append), known)
    assert told == sorted(told) and len(told) == 7 and told[-1] == 100


def test_a_mistake_is_told_by_a_cluster_as_well(frame: pandas.DataFrame, client: Any) -> None:
    with pytest.raises(tarn.InputError, match='there is no test "manwhitney"; did you mean mann-whitney'):
        tarn.screen(frame, group="arm", tests="manwhitney", client=client)


def test_a_worker_that_dies_changes_nothing(
    known: list[dict[str, Any]], frame: pandas.DataFrame, client: Any, tmp_path: Path
) -> None:
    processes = dict(client.run(os.getpid))
    killed: list[int] = []

    def kill_one(percent: float) -> None:
        if percent > 20 and not killed:
            killed.append(next(iter(processes.values())))
            os.kill(killed[0], signal.SIGKILL)

    found = tarn.screen(frame, group="arm", adjust="bh", block=2, client=client, out=tmp_path / "out", progress=kill_one)
    assert killed and same(found, known)
    client.wait_for_workers(2)
    assert killed[0] not in client.run(os.getpid).values()


def test_a_worker_that_died_for_good_is_named(frame: pandas.DataFrame) -> None:
    with (
        dask.config.set({"distributed.scheduler.allowed-failures": 0}),
        distributed.LocalCluster(n_workers=1, threads_per_worker=1, processes=True, dashboard_address=":0") as cluster,
        distributed.Client(cluster) as client,
    ):
        ((address, process),) = client.run(os.getpid).items()

        def kill_at_work() -> None:
            while not any(client.processing().values()):
                time.sleep(0.01)
            os.kill(process, signal.SIGKILL)

        killer = threading.Thread(target=kill_at_work)
        killer.start()
        with pytest.raises(tarn.EngineError, match="died at 2 fields from x0 to x1, .* want of memory") as failure:
            tarn.screen(frame, ["x0", "x1"], group="arm", monte_carlo=10**9, client=client)
        killer.join()
        assert f"the worker {address} on 127.0.0.1 " in str(failure.value)


def limit_memory(more: int) -> None:
    """Lets this process have no more than that besides what it has."""
    pages = int(Path("/proc/self/statm").read_text().split()[0])
    resource.setrlimit(resource.RLIMIT_AS, (pages * resource.getpagesize() + more, resource.RLIM_INFINITY))


def test_a_worker_without_memory_is_named(tmp_path: Path) -> None:
    # Few bytes in the file and 200 MB of each column in memory: it ends at a large piece, and the worker itself has enough
    # to go on with.
    rows, enough = 25_000_000, 180 * 2**20
    zeros = numpy.zeros(rows)
    pyarrow.parquet.write_table(pyarrow.table({"x": zeros, "y": zeros}), tmp_path / "data.parquet")
    with (
        distributed.LocalCluster(n_workers=1, threads_per_worker=1, processes=True, dashboard_address=":0") as cluster,
        distributed.Client(cluster) as client,
    ):
        (address,) = client.run(__import__, "tarn")
        client.run(limit_memory, enough)
        with pytest.raises(tarn.EngineError, match="ran out of memory at [xy];") as failure:
            tarn.screen(tmp_path / "data.parquet", tests="wilcoxon", test_value=1, client=client)
        assert f"the worker {address} on {socket.gethostname()} " in str(failure.value)
        assert "by block=" in str(failure.value)


def test_a_cluster_needs_no_shared_memory_of_results(client: Any, tmp_path: Path) -> None:
    """The parts are written where the call is, and hold what the call gives."""
    frame = wide(10)
    found = tarn.screen(frame, group="arm", client=client, out=tmp_path / "out", block=3)
    facts = json.loads((tmp_path / "out/_screening.json").read_text())
    assert facts["is_finished"] and facts["block"] == 3
    assert rows_tested(found) == expected(tarn.analyze(frame, independent="x*", group="arm"))
