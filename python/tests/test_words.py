"""Formulas, conditions, parts, patterns and every other argument that the command has, which say what they say there."""

from __future__ import annotations

import json
from collections.abc import Callable
from pathlib import Path
from typing import Any

import pyarrow
import pytest
import tarn
from conftest import Columns, Command

TRIAL: Columns = {
    "Score": [3.0, 5.5, 4.0, 6.0, 8.0, 9.5, 7.0, 9.0, 2.0, 6.5, 5.0, 4.5],
    "score2": [2.0, 5.0, 4.5, 6.5, 8.5, 9.0, 7.5, 8.0, 1.0, 6.0, 5.5, 4.0],
    "arm": ["a", "a", "b", "b", "c", "c", "a", "b", "c", "a", "b", "c"],
    "site": ["north", "south"] * 6,
    "age": [30, 41, 52, 63, 34, 45, 56, 67, 38, 49, 60, 31],
    "unused": list(range(12)),
}
LONG: Columns = {
    "value": [3.0, 5.0, 4.0, 6.0, 8.0, 9.0, 7.0, 9.5, 2.0, 6.5, 5.0, 4.5],
    "cond": ["x", "y", "z"] * 4,
    "who": [1, 1, 1, 2, 2, 2, 3, 3, 3, 4, 4, 4],
}

# The call of the package, and the words of the command for the same.
CALLS: list[tuple[Columns, tuple[str, ...], dict[str, Any], list[str]]] = [
    (TRIAL, ("Score ~ arm",), {}, ["Score ~ arm"]),
    (TRIAL, ("Score + score2 ~ arm",), {"compare": "pairwise", "against": "b"},
     ["Score + score2 ~ arm", "--compare", "pairwise", "--against", "b"]),
    (TRIAL, ("score* ~ arm",), {}, ["score* ~ arm"]),
    (TRIAL, ("SCORE ~ Arm",), {}, ["SCORE ~ Arm"]),
    (TRIAL, ("Score ~ 1",), {}, ["Score ~ 1"]),
    (LONG, ("value ~ cond | who",), {}, ["value ~ cond | who"]),
    (LONG, (), {"related": "value", "within": "cond", "id": "who"},
     ["--related", "value", "--within", "cond", "--id", "who"]),
    (TRIAL, ("Score ~ arm",), {"where": 'age > 35 & arm != "c"'}, ["Score ~ arm", "--where", 'age > 35 & arm != "c"']),
    (TRIAL, (), {"independent": "Score", "by": "arm", "reference": {"arm": "c"}},
     ["--independent", "Score", "--by", "arm", "--reference", "arm=c"]),
    (TRIAL, (), {"independent": "Score", "group": "arm", "label": {"Score": "Points, all"}},
     ["--independent", "Score", "--group", "arm", "--label", "Score=Points, all"]),
    (TRIAL, (), {"one_sample": "arm", "tests": "chi-square", "expected": {"a": 1, "b": 2, "c": 1}},
     ["--one-sample", "arm", "--tests", "chi-square", "--expected", "a=1,b=2,c=1"]),
    (TRIAL, (), {"one_sample": "Score", "tests": "kolmogorov-smirnov", "distribution": "normal", "mean": 6, "sd": 2},
     ["--one-sample", "Score", "--tests", "kolmogorov-smirnov", "--distribution", "normal", "--mean", "6", "--sd", "2"]),
    (TRIAL, (), {"one_sample": "Score", "tests": "kolmogorov-smirnov", "distribution": "uniform", "min": 0, "max": 10},
     ["--one-sample", "Score", "--tests", "kolmogorov-smirnov", "--distribution", "uniform", "--min", "0", "--max", "10"]),
    (TRIAL, (), {"one_sample": "Score", "tests": "runs", "cut_point": "mean"},
     ["--one-sample", "Score", "--tests", "runs", "--cut-point", "mean"]),
    (TRIAL, (), {"one_sample": ["Score", "age"], "missing": "listwise", "confidence": 90, "brief": True},
     ["--one-sample", "Score,age", "--missing", "listwise", "--confidence", "90", "--brief"]),
    (TRIAL, (), {"related": ["Score", "score2"], "continuity": True, "like": "r", "case_id": "unused"},
     ["--related", "Score,score2", "--continuity", "on", "--like", "r", "--case-id", "unused"]),
]  # fmt: skip


@pytest.mark.parametrize(("columns", "words", "arguments", "typed"), CALLS)
def test_words_say_what_they_say_to_the_command(
    columns: Columns, words: tuple[str, ...], arguments: dict[str, Any], typed: list[str], command: Command
) -> None:
    result = tarn.analyze(columns, *words, **arguments)
    assert json.loads(result.to_json())["tests"] == command.tests(columns, *typed)


def test_words_mean_the_same_in_each_library(make: Callable[[Columns], Any]) -> None:
    arguments = {"where": 'AGE > 35 & arm in ("a", "b")', "tests": "mann-whitney"}
    expected = tarn.analyze(TRIAL, "score* ~ arm", **arguments)
    assert tarn.analyze(make(TRIAL), "score* ~ arm", **arguments).to_json() == expected.to_json()


def test_a_split_analysis_has_parts(command: Command) -> None:
    result = tarn.analyze(pyarrow.table(TRIAL), "Score ~ arm", split="site")
    typed = ["Score ~ arm", "--split", "site"]
    assert result.to_text() == command.run(TRIAL, *typed).stdout
    assert result.to_csv() == command.run(TRIAL, *typed, "--format", "csv").stdout
    ours, theirs = json.loads(result.to_json()), json.loads(command.run(TRIAL, *typed, "--format", "json").stdout)
    for split in (ours, theirs):
        # What was typed is another request, and the command names a file; either may have been built at another commit.
        for record in (split["record"], *(part["result"]["record"] for part in split["parts"])):
            record.pop("request", None)
            record.pop("commit", None)
            record.get("data", {}).pop("file", None)
    assert ours == theirs
    assert list(result.parts) == ["north", "south"]
    south = tarn.analyze(TRIAL, "Score ~ arm", where='site = "south"')
    assert tuple(result.parts["south"][0]) == tuple(south[0])
    assert result.tests["part"].to_pylist() == ["north", "south"]
    assert result.tests["pvalue"].to_pylist() == [part[0].pvalue for part in result.parts.values()]
    assert result.parts["north"].to_xml().startswith("<?xml")
    with pytest.raises(tarn.InputError, match="a result in parts is no one document"):
        result.to_xml()
    with pytest.raises(KeyError, match="take that of a part, like parts.'north'."):
        result["kruskal-wallis"]


def test_a_part_that_cannot_be_tested_says_why() -> None:
    columns = {"x": [1, 2, 3, 4, 5, 6, 7], "g": ["a", "b", "a", "b", "a", "b", "a"], "s": ["p"] * 6 + ["q"]}
    result = tarn.analyze(columns, "x ~ g", tests="mann-whitney", split="s")
    messages = result.messages.to_pylist()
    assert any(row["part"] == "q" and row["kind"] == "error" for row in messages)


@pytest.mark.parametrize(
    ("call", "what"),
    [
        (lambda: tarn.analyze(TRIAL, "Score ~ armm"), 'the data has no column "armm"; did you mean arm?'),
        (lambda: tarn.analyze(TRIAL, "Score ~"), "formula"),
        (lambda: tarn.analyze(TRIAL, 3), "formula= is of type int; expected a formula"),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", where="agee > 3"), 'the data has no column "agee"; did you mean age?'),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", where="arm = low"), "a text stands in quotes"),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", where="age >"), "where"),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", where="age > 1000"), "is true of none of 12 records"),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", group="arm"), "says which fields, and so does group="),
        (lambda: tarn.analyze(TRIAL, independent="Score", group="arm", by="arm"), "two names of one argument"),
        (lambda: tarn.analyze(TRIAL, independent="q*", group="arm"), 'no field matches "q.*"'),
        (lambda: tarn.analyze(TRIAL, "Score ~ score2"), 'related=."score2", "Score".'),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", split="arm"), "split: arm has the groups already"),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", reference={"arm": "d"}), 'arm has no category "d"'),
        (lambda: tarn.analyze(TRIAL, "Score ~ arm", reference=["arm"]), "expected a dict like"),
        (lambda: tarn.analyze(TRIAL, one_sample="arm", expected={"a": "b"}), "expected='b'; expected a number"),
        (lambda: tarn.analyze(TRIAL, one_sample="age", cut_point="median"), 'expected a number or "mean"'),
        (lambda: tarn.analyze(TRIAL, independent="Score", group="arm", nominal="nothing"), "nothing"),
    ],
)
def test_mistakes_in_words(call: Callable[[], object], what: str) -> None:
    with pytest.raises(tarn.InputError, match=what) as mistake:
        call()
    assert "--" not in str(mistake.value) and "\n" not in str(mistake.value)


def test_levels_of_columns_that_are_not_tested_say_nothing() -> None:
    plain = tarn.analyze(TRIAL, "Score ~ arm")
    told = tarn.analyze(TRIAL, "Score ~ arm", nominal=["age", "unused"])
    assert told.record["data"] == plain.record["data"]
    shown, expected = json.loads(told.to_json()), json.loads(plain.to_json())
    assert shown.pop("record")["request"] != expected.pop("record")["request"]
    assert shown == expected


# ---- Plans and looks ----

PLAN = {"missingTreatment": "analysis", "tests": [{"RSign": {"variableName": ["Score", "score2"]}}]}


def test_a_plan_runs_as_the_command_runs_it(command: Command, tmp_path: Path) -> None:
    path = tmp_path / "sign.plan.json"
    path.write_text(json.dumps(PLAN))
    result = tarn.run(TRIAL, PLAN)
    assert result.to_xml() == tarn.run(pyarrow.table(TRIAL), path).to_xml()
    assert json.loads(result.to_json())["tests"] == command.plan(TRIAL, path, "--extended")
    defined = tarn.run(TRIAL, PLAN, as_defined=True)
    assert json.loads(defined.to_json())["tests"] == command.plan(TRIAL, path)
    assert result.request == {}


def test_a_request_of_the_engine_runs() -> None:
    settings = {
        "independentVariables": ["Score"], "groupVariable": ["arm"], "isAutomaticallyIndependent": False,
        "IKruskalWallis": {"isSelected": True}, "done": True,
    }  # fmt: skip
    result = tarn.run(TRIAL, settings=settings)
    assert tuple(result["kruskal-wallis"]) == tuple(tarn.kruskal(TRIAL, "Score", by="arm"))


def test_what_the_engine_passes_over_is_said(tmp_path: Path) -> None:
    plan = {**PLAN, "siglevel": 0.1}
    result = tarn.run(TRIAL, plan)
    assert any("siglevel: unknown key, passed over" in row["text"] for row in result.messages.to_pylist())
    with pytest.raises(tarn.InputError, match="plan: siglevel: unknown key"):
        tarn.run(TRIAL, plan, strict=True)


@pytest.mark.parametrize(
    ("arguments", "what"),
    [
        ({}, "expected plan= or settings=, one of them"),
        ({"plan": 3}, "plan= is of type int"),
        ({"plan": "no such file.json"}, "no such file.json: can't be read"),
        ({"plan": {"tests": [object()]}}, "plan= is no JSON"),
        ({"plan": {"tests": 3}}, "plan"),
    ],
)
def test_mistakes_in_plans(arguments: dict[str, Any], what: str) -> None:
    with pytest.raises(tarn.InputError, match=what):
        tarn.run(TRIAL, **arguments)


def test_a_look_shows_each_column(make: Callable[[Columns], Any]) -> None:
    look = tarn.look(make(TRIAL))
    lines = repr(look).splitlines()
    assert lines[0] == "the data: 12 rows, 6 fields"
    assert lines[1].split() == ["Score", "number", "2", "to", "9.5,", "median", "5.75"]  # by hand
    assert lines[3].split()[:3] == ["arm", "3", "words"]
    for call in look.calls:
        assert len(eval(call, {"tarn": tarn, "data": make(TRIAL)})) > 0


def test_a_look_names_what_cannot_be_tested() -> None:
    import datetime

    look = tarn.look(pyarrow.table({"x": [1, 2], "day": [datetime.date(2024, 1, 1), datetime.date(2024, 1, 2)]}))
    assert "dates" in repr(look) and "can't be tested" in repr(look)
    assert look.fields["name"].to_pylist() == ["x", "day"]
