"""What a result holds and shows."""

from __future__ import annotations

import json
import pickle
import subprocess
import sys
from collections.abc import Callable
from pathlib import Path
from typing import Any
from xml.etree import ElementTree

import duckdb
import narwhals
import pandas
import polars
import pyarrow
import pytest
import tarn
from conftest import ROOT, Columns

COLUMNS = {
    "x": [1.0, 4.0, 2.0, 8.0, 5.0, 7.0, 3.0, 9.0, 12.0],
    "y": [2.0, 3.0, 3.0, 9.0, 4.0, 9.0, 1.0, 7.0, 10.0],
    "g": ["a", "a", "b", "b", "a", "b", "c", "c", "c"],
}
FRAMES = ["tests", "comparisons", "groups", "effects", "intervals", "subsets", "messages"]


@pytest.fixture
def result() -> tarn.Result:
    return tarn.analyze(COLUMNS, independent=["x", "y"], group="g", tests="kruskal-wallis", compare="pairwise", alpha=0.5)


@pytest.mark.parametrize(
    ("make", "kind"),
    [
        (pandas.DataFrame, pandas.DataFrame),
        (polars.DataFrame, polars.DataFrame),
        (pyarrow.table, pyarrow.Table),
        (dict, pyarrow.Table),
    ],
)
@pytest.mark.parametrize("name", FRAMES)
def test_frames_are_of_the_library_of_the_data(make: Callable[[Columns], Any], kind: type, name: str) -> None:
    result = tarn.analyze(make(COLUMNS), related=["x", "y"])
    frame = getattr(result, name)
    assert isinstance(frame, kind)
    assert list(columns_of(frame))[:3] == ["number", "name", "fields"]


def test_frames_of_other_libraries_are_tables_of_pyarrow() -> None:
    frame = tarn.analyze(duckdb.from_arrow(pyarrow.table(COLUMNS)), related=["x", "y"]).tests
    assert isinstance(frame, pyarrow.Table)


def test_frames_without_a_library_are_dicts_of_columns() -> None:
    program = (
        "import sys\n"
        "sys.modules['pyarrow'] = sys.modules['narwhals'] = None\n"
        "import importlib.util\n"
        "importlib.util.find_spec = lambda name: None\n"
        "import tarn\n"
        "print(tarn.analyze({'x': [1, 2, 4, 3]}, 'x ~ 1', tests='runs').tests['name'])\n"
    )
    done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, check=True)
    assert done.stdout == "['runs']\n"


def columns_of(frame: Any) -> dict[str, list[Any]]:
    columns: dict[str, list[Any]] = narwhals.from_native(frame, eager_only=True).to_dict(as_series=False)
    return columns


def test_frames_hold_what_json_holds(result: tarn.Result) -> None:
    tests = json.loads(result.to_json())["tests"]
    shown = columns_of(result.tests)
    assert shown["number"] == [1, 2]
    assert shown["fields"] == ["x", "y"]
    assert shown["statistic"] == [test["statistics"][0]["statistic"] for test in tests]
    assert shown["p_holm"] == [test["adjusted_p"]["holm"] for test in tests]
    assert shown["conclusion"] == [test["supplement"]["conclusion"] for test in tests]
    pairs = [pair for test in tests for pair in test["comparisons"]["pairs"]]
    assert len(pairs) == 6
    assert columns_of(result.comparisons)["adjusted_pvalue"] == [pair["adjusted_p"] for pair in pairs]
    groups = columns_of(result.groups)
    assert groups["sample"] == ["a", "b", "c"] * 2
    assert groups["median"] == [4.0, 7.0, 9.0, 3.0, 9.0, 7.0]  # by hand
    effects = [effect for test in tests for effect in test["supplement"]["effects"]]
    assert columns_of(result.effects)["value"] == [effect["value"] for effect in effects]


def test_tests_are_found_by_name_and_place(result: tarn.Result) -> None:
    assert result["kruskal-wallis", "y"] == result[1]
    assert [test.fields for test in result] == [("x",), ("y",)]
    assert len(result) == 2
    with pytest.raises(KeyError, match="2 tests are kruskal-wallis: name the field, too, or take one by its place: 0, 1"):
        result["kruskal-wallis"]
    with pytest.raises(KeyError, match="the result has no test sign; it has kruskal-wallis"):
        result["sign"]


def test_a_test_has_its_numbers(result: tarn.Result) -> None:
    test = result["kruskal-wallis", "x"]
    statistic, pvalue = test
    assert (statistic, pvalue) == (test.statistic, test.pvalue)
    assert (test.df, test.n, test.n_total, test.decision) == (2, 9, 9, "reject")
    assert test.method is not None
    assert test.effect is not None and test.effect == test.effects[0]
    assert test.interval is not None and test.interval.estimate == test.effect.value
    assert any(p.decides and p.value == pvalue for p in test.significances)


def test_a_result_stays_as_it_is(result: tarn.Result) -> None:
    with pytest.raises(AttributeError):
        result.notes = []  # type: ignore[misc]
    with pytest.raises(AttributeError):
        result[0].pvalue = 0.0  # type: ignore[misc]


def test_the_report_is_what_is_shown(result: tarn.Result) -> None:
    assert repr(result).startswith("1. Kruskal-Wallis test: x by g\n")
    html = tarn.analyze({"<b>": [1, 2, 3]}, one_sample="<b>", tests="wilcoxon", test_value=0)._repr_html_()
    assert html.startswith("<h3>1. Wilcoxon signed rank test: &lt;b&gt;</h3>") and "<b>" not in html


def test_a_page_has_the_sentences_and_the_numbers(result: tarn.Result) -> None:
    page = result.to_html()
    parsed = ElementTree.fromstring(page.removeprefix("<!DOCTYPE html>").replace('<meta charset="utf-8">', ""))
    headings = [heading.text for heading in parsed.iter("h3")]
    assert headings == ["1. Kruskal-Wallis test: x by g", "2. Kruskal-Wallis test: y by g"]
    cells = [cell.text for cell in parsed.iter("td")]
    for test in result:
        assert f"{test.statistic:.6g}" in cells and f"{test.pvalue:.6g}" in cells
        assert test.conclusion in [sentence.text for sentence in parsed.iter("p")]


def test_saving_and_loading(result: tarn.Result, tmp_path: Path) -> None:
    made = {
        ".html": result.to_html, ".xml": result.to_xml, ".json": result.to_json, ".csv": result.to_csv,
        ".txt": result.to_text,
    }  # fmt: skip
    for suffix, text in made.items():
        result.save(tmp_path / f"result{suffix}")
        assert (tmp_path / f"result{suffix}").read_text() == text()
    loaded = tarn.load(tmp_path / "result.xml")
    assert [tuple(test) for test in loaded] == [tuple(test) for test in result]
    assert columns_of(loaded.effects)["key"] == []
    with pytest.raises(tarn.InputError, match="the result has no request to run again"):
        loaded.rerun(COLUMNS)
    with pytest.raises(tarn.InputError, match="expected .html, .xml, .json, .csv or .txt"):
        result.save(tmp_path / "result.doc")
    with pytest.raises(tarn.InputError):
        result.save(tmp_path / "no such folder" / "result.xml")
    with pytest.raises(tarn.InputError):
        tarn.load(tmp_path / "result.csv")


def test_a_result_goes_to_another_process(result: tarn.Result) -> None:
    copy = pickle.loads(pickle.dumps(result))
    assert repr(copy) == repr(result)
    assert list(copy) == list(result)
    assert copy.tests == result.tests
    assert copy.request == result.request
    assert list(copy.rerun(COLUMNS)) == list(result)


def test_an_analysis_is_run_again(result: tarn.Result) -> None:
    assert result.request == {
        "independent": ["x", "y"], "group": "g", "tests": ["kruskal-wallis"], "compare": "pairwise", "alpha": 0.5,
    }  # fmt: skip
    assert result.rerun(COLUMNS).to_json() == result.to_json()
    assert result.rerun(COLUMNS, compare=None, independent="y").to_json() != result.to_json()
    weighted = tarn.analyze(COLUMNS, related=["x", "y"], weights=[1.0] * 9)
    with pytest.raises(tarn.InputError, match="the weights were not a column"):
        weighted.rerun(COLUMNS)
    assert weighted.rerun(COLUMNS, weights=[1.0] * 9).to_json() == weighted.to_json()


def test_messages_say_what_the_run_remarks() -> None:
    result = tarn.analyze({"x": [1, 2], "y": [2, 3], "w": [1.0, 0.0]}, related=["x", "y"], tests="sign", weights="w")
    assert any("weight" in text for text in columns_of(result.messages)["text"])
    assert "note" in columns_of(result.messages)["kind"]


def test_what_is_said_of_tests_and_codes() -> None:
    names = {test.name for test in tarn.tests()}
    assert {"mann-whitney", "sign", "friedman"} <= names
    assert tarn.explain("mann-whitney").startswith("Mann-Whitney U test\n")
    assert tarn.explain(220916).startswith("220916: ")
    with pytest.raises(tarn.InputError, match='"mann-whitny" is neither a code nor a test; did you mean mann-whitney?'):
        tarn.explain("mann-whitny")


def test_the_engine_says_why_it_failed() -> None:
    with pytest.raises(tarn.EngineError) as failure:
        tarn.analyze({"x": [], "y": []}, related=["x", "y"])
    assert failure.value.code == 240037
    assert failure.value.sentence in str(failure.value)
    assert pickle.loads(pickle.dumps(failure.value)).code == 240037


def test_a_failed_run_names_what_the_package_has() -> None:
    with pytest.raises(tarn.EngineError) as failure:
        tarn.analyze(COLUMNS, one_sample="x", tests="chi-square")
    assert "tarn.tests() lists the tests, tarn.explain(name) says what one assumes" in str(failure.value)


def test_sentences_name_arguments() -> None:
    with pytest.raises(tarn.InputError) as mistake:
        tarn.analyze(COLUMNS, independent="x", group="g", tests="jonckheere")
    assert str(mistake.value).endswith(
        'are words: tell their order from the lowest to the highest, order={"g": ["..", "..", ".."]}'
    ) or str(mistake.value).endswith('order={"g": [.., .., ..]}')
    with pytest.raises(tarn.InputError) as mistake:
        tarn.analyze(COLUMNS, independent="x")
    assert "--" not in str(mistake.value) and "group=" in str(mistake.value)


def test_examples_are_the_ones_of_the_sources() -> None:
    frame = pandas.read_csv(ROOT / "examples/sleep_clinic.csv")
    test = tarn.sign(frame, "hours_before", "hours_after")
    assert test.statistic == 211  # README.md


@pytest.mark.parametrize(
    "choices",
    [{}, {"exact": True}, {"alternative": "less"}, {"like": "scipy"}, {"monte_carlo": 50}, {"continuity": True}],
)
def test_figures_that_come_first_are_those_of_the_whole(choices: dict[str, Any]) -> None:
    result = tarn.analyze(COLUMNS, related=["x", "y"], **choices)
    early = [tuple(test) for test in result]
    stored = pickle.loads(pickle.dumps(result))  # which reads all of them from JSON
    assert early == [tuple(test) for test in stored]
    for function in (tarn.sign, tarn.wilcoxon):
        test = function(COLUMNS["x"], COLUMNS["y"], **choices)
        assert tuple(test) == tuple(pickle.loads(pickle.dumps(test)))
        assert tuple(test) == tuple(tarn.analyze(COLUMNS, related=["x", "y"], tests=test.name, **choices)[0])
