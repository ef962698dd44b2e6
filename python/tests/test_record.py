"""What a result says of how it was made, and what its hash depends on."""

from __future__ import annotations

import copy
import gzip
import json
import pickle
import subprocess
from pathlib import Path
from typing import Any

import numpy
import pandas
import polars
import pytest
import tarn
from conftest import COMMAND

COLUMNS: dict[str, list[Any]] = {"y": [1.5, 2.0, None, 4.0, 3.0, -1.0], "g": ["a", "b", "a", "b", "a", "b"], "z": [1, 2, 3, 4, 5, 6]}


def record_of(data: Any, **changes: Any) -> dict[str, Any]:
    record = tarn.analyze(data, "y ~ g", tests="mann-whitney", **changes).record
    assert record is not None
    return record


def test_record_says_what_was_asked_and_who_was_left_out() -> None:
    record = record_of(COLUMNS, where="z > 1", threads=2, memory=2**30)
    assert record["request"] == {
        "command": "tarn.analyze",
        "arguments": {"formula": "y ~ g", "tests": ["mann-whitney"], "where": "z > 1"},
    }
    assert record["version"] == tarn.__version__
    assert record["arithmetic"] == "extended"
    assert "Boost" in record["libraries"]
    assert record["left_out"]["of_records"] == 6 and record["left_out"]["by_condition"] == 1
    assert record["left_out"]["tests"] == [
        {"test": "IMannWhitneyU", "fields": ["y"], "group": "g", "without_weight": 0, "missing": 1, "complete": 4}
    ]


def test_hash_is_that_of_the_values_in_any_frame_and_file(tmp_path: Path) -> None:
    text = "y,g,z\n" + "".join(f"{'' if y is None else y},{g},{z}\n" for y, g, z in zip(*COLUMNS.values(), strict=True))
    plain, zipped = tmp_path / "d.csv", tmp_path / "d.csv.gz"
    plain.write_text(text)
    zipped.write_bytes(gzip.compress(text.encode()))
    hashes = {record_of(COLUMNS)["data"]["sha256"]}
    hashes.add(record_of(pandas.DataFrame(COLUMNS))["data"]["sha256"])
    hashes.add(record_of(pandas.DataFrame(COLUMNS)[["z", "g", "y"]])["data"]["sha256"])
    hashes.add(record_of(polars.DataFrame(COLUMNS))["data"]["sha256"])
    hashes.add(record_of(polars.DataFrame(COLUMNS).to_arrow())["data"]["sha256"])
    for path in (plain, zipped):
        done = subprocess.run(
            [COMMAND, "analyze", path, "y ~ g", "--tests", "mann-whitney", "--format", "json"],
            capture_output=True, text=True, check=True,
        )  # fmt: skip
        hashes.add(json.loads(done.stdout)["record"]["data"]["sha256"])
    assert len(hashes) == 1
    other = {**COLUMNS, "y": [1.5, 2.0, None, 4.0, 3.0, numpy.nextafter(-1.0, 0)]}
    assert record_of(other)["data"]["sha256"] not in hashes


def test_parts_have_records_of_their_own() -> None:
    result = tarn.analyze({**COLUMNS, "s": list("mmmfff")}, "y ~ z", nominal="z", tests="kruskal-wallis", split="s")
    assert result.record is not None and "data" not in result.record
    assert {name: part.record["data"]["records"] for name, part in result.parts.items() if part.record} == {"m": 3, "f": 3}


def test_record_comes_along_and_is_none_of_a_document(tmp_path: Path) -> None:
    result = tarn.analyze(COLUMNS, "y ~ g", tests="mann-whitney")
    assert pickle.loads(pickle.dumps(result)).record == copy.copy(result).record == result.record
    result.save(tmp_path / "result.xml")
    assert tarn.load(tmp_path / "result.xml").record is None


def test_record_of_a_run_has_its_plan() -> None:
    plan = {"missingTreatment": "listwise", "tests": [{"sign": {"variableName": ["y", "z"]}}]}
    record = tarn.run({"y": COLUMNS["y"], "z": COLUMNS["z"]}, plan=plan, as_defined=True).record
    assert record is not None
    assert record["request"] == {"command": "tarn.run", "plan": plan}
    assert record["arithmetic"] == "as-defined"
    assert record["left_out"]["tests"][0]["missing"] == 1


def test_hash_is_none_of_data_that_was_written_to() -> None:
    y = numpy.random.default_rng(1).normal(size=200_000)
    data = {"y": y, "g": numpy.resize([1.0, 2.0], y.size)}
    result = tarn.analyze(data, independent="y", group="g", tests="mann-whitney")
    if not result._texts.has_cases():
        pytest.fail("the cases are there until somebody writes to them")
    y[0] += 1
    assert result.record is not None
    if not result._texts.has_cases():  # the column was left where it is
        assert result.record["data"]["sha256"] is None and result.record["left_out"]["tests"] == []
    else:
        assert result.record["data"]["sha256"] is not None
