"""What a result holds and shows."""

from __future__ import annotations

import html
import json
import pickle
import re
import subprocess
import sys
from collections.abc import Callable
from pathlib import Path
from typing import Any
from xml.etree import ElementTree

import duckdb
import narwhals
import numpy
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
    assert repr(result).startswith("Kruskal-Wallis test: x by g ")
    assert repr(result) == result.to_text().rstrip("\n")
    assert len(result.to_text(details=True)) > len(result.to_text())


def test_the_report_names_arguments() -> None:
    result = tarn.analyze(COLUMNS, "x ~ g", where='g != "c"')
    shown = [repr(result), result.to_text(details=True), result.to_html().split("tarn-result")[0].split("</style>")[1]]
    for text in shown:
        assert "where=" in text and "keeps 6 of 9 records" in text and "--where" not in text


def pictures_in(page: str) -> list[str]:
    return re.findall(r"<svg .*?</svg>", page, re.DOTALL)


def test_a_notebook_shows_each_test_with_its_plot(result: tarn.Result) -> None:
    shown = result._repr_html_()
    assert shown.count("<article") == shown.count("</article>") == len(pictures_in(shown)) == 2
    assert shown.count("<style>") == 1 and ".tarn" in shown and '<div class="tarn">' in shown
    ids = re.findall(r' id="([^"]+)"', shown)
    assert len(ids) == len(set(ids))
    # Another result on the same page has other identifiers.
    other = tarn.analyze(COLUMNS, related=["x", "y"], tests="sign")._repr_html_()
    assert not set(ids) & set(re.findall(r' id="([^"]+)"', other))
    hostile = tarn.analyze({"<b>": [1, 2, 3]}, one_sample="<b>", tests="wilcoxon", test_value=0)._repr_html_()
    assert "&lt;b&gt;" in hostile and "<b>" not in hostile


def test_a_notebook_shows_the_text_of_many_tests() -> None:
    columns = {f"x{number}": COLUMNS["x"] for number in range(21)} | {"g": COLUMNS["g"]}
    result = tarn.analyze(columns, "x* ~ g", tests="kruskal-wallis")
    assert result._repr_html_().startswith("<pre>") and len(pictures_in(result.to_html())) == 21


def test_a_page_has_the_sentences_the_plots_and_the_call(result: tarn.Result) -> None:
    page = result.to_html()
    assert page.startswith("<!DOCTYPE html>") and "<script src" not in page and len(pictures_in(page)) == 2
    for test in result:
        assert test.conclusion is not None and html.escape(test.conclusion, quote=False) in page
    call = """tarn.analyze(data, independent=['x', 'y'], group='g', tests=['kruskal-wallis'], compare='pairwise', alpha=0.5)"""
    assert call in html.unescape(page)
    assert eval(call, {"tarn": tarn, "data": COLUMNS}).to_json() == result.to_json()
    assert pictures_in(result.to_html(plots=False)) == []


def test_the_call_of_a_page_can_be_typed() -> None:
    data = {"score": COLUMNS["x"], "arm": COLUMNS["g"]}
    result = tarn.analyze(data, "score ~ arm", exact=True, weights=[1.0] * 9)
    call = "tarn.analyze(data, 'score ~ arm', exact=True, weights=weights)"
    assert call in html.unescape(result.to_html())
    assert eval(call, {"tarn": tarn, "data": data, "weights": [1.0] * 9}).to_json() == result.to_json()


def titles_in(svg: str) -> str:
    root = ElementTree.fromstring(svg)
    return " ".join(each.text or "" for each in root.iter("{http://www.w3.org/2000/svg}title"))


def test_a_test_has_a_plot(result: tarn.Result, tmp_path: Path) -> None:
    plot = result["kruskal-wallis", "y"].plot()
    assert plot == result.plot(1) == result.plot(("kruskal-wallis", "y")) != result.plot(0)
    assert "y" in titles_in(plot.svg) and plot._repr_svg_() == str(plot) == plot.svg
    assert repr(plot) == "<Plot of Kruskal-Wallis test: y by g>"
    plot.save(tmp_path / "y.svg")
    assert (tmp_path / "y.svg").read_text() == plot.svg
    with pytest.raises(tarn.InputError, match='the suffix is ".png"; expected .svg'):
        plot.save(tmp_path / "y.png")
    with pytest.raises(tarn.InputError, match="the result has 2 tests"):
        result.plot()
    with pytest.raises(tarn.InputError, match="the result has 2 tests"):
        result.save(tmp_path / "both.svg")
    assert not (tmp_path / "both.svg").exists()
    one = tarn.mann_whitney(COLUMNS["x"], COLUMNS["y"])
    assert "Mann-Whitney" in titles_in(one.plot().svg)
    one.result.save(tmp_path / "one.svg")
    assert (tmp_path / "one.svg").read_text() == one.plot().svg


def test_a_test_says_how_its_numbers_came_about(tmp_path: Path) -> None:
    columns = {"x": [1, 2, 2, 3, 4], "g": ["a", "a", "b", "b", "b"]}
    result = tarn.analyze(columns, "x ~ g", tests=["mann-whitney", "median"])
    text = result.explain()
    # By hand: a has the ranks 1 and 2.5, and 2 * 3 / 2 of its U is its own.
    assert "U             R1 - n1 (n1 + 1) / 2 = 3.5 - 2 * 3 / 2 = 0.5\n" in text
    assert text == "\n".join(test.explain() for test in result)
    assert result.explain("median") == result["median"].explain() == result.explain(1)
    assert text.startswith("Mann-Whitney U test: x by g\n   How the numbers came about\n")
    split = tarn.analyze({**columns, "s": ["m"] * 5}, "x ~ g", tests=["mann-whitney", "median"], split="s")
    assert split.explain() == split.parts["m"].explain() == text
    failed = tarn.analyze(COLUMNS, related=["x", "y"], nominal=["x", "y"], tests="mcnemar")  # of more than two values
    assert "has no numbers that could be explained" in failed.explain()
    result.save(tmp_path / "result.xml")
    for caseless in (tarn.load(tmp_path / "result.xml"), pickle.loads(pickle.dumps(result))):
        with pytest.raises(tarn.InputError, match="cases"):
            caseless.explain()
        with pytest.raises(tarn.InputError, match="cases"):
            caseless.to_html(explain=True)


def test_a_page_says_how_the_numbers_came_about_where_it_is_asked_to() -> None:
    columns = {"x": [1, 2, 2, 3, 4], "g": ["a", "a", "b", "b", "b"], "s": ["m"] * 5}
    result = tarn.analyze(columns, "x ~ g", tests=["mann-whitney", "median"])
    before, block = result.to_html(), result._repr_html_()
    page = result.to_html(explain=True)
    assert page.count("<details") == 2 and "<details" not in before + block
    assert "<code>= 3.5 - 2 * 3 / 2</code>" in page  # U by hand, as in the test before
    assert result.to_html() == before and result._repr_html_() == block  # nothing of it stays
    assert len(pictures_in(page)) == 2 and pictures_in(result.to_html(plots=False, explain=True)) == []
    split = tarn.analyze(columns, "x ~ g", tests=["mann-whitney", "median"], split="s")
    assert split.to_html(explain=True).count("<details") == split.parts["m"].to_html(explain=True).count("<details") == 2


def test_plots_of_parts_are_those_of_their_records() -> None:
    columns = {**COLUMNS, "s": ["m", "f", "m", "f", "m", "f", "m", "f", "f"]}
    split = tarn.analyze(columns, independent="x", group="g", tests="kruskal-wallis", split="s")
    assert len(pictures_in(split.to_html())) == len(split) == 2
    for place, sex in enumerate(split.parts):
        alone = tarn.analyze(columns, independent="x", group="g", tests="kruskal-wallis", where=f's = "{sex}"')
        assert split.plot(place) == split.parts[sex].plot() == alone.plot()
        assert pictures_in(split.parts[sex].to_html()) == pictures_in(alone.to_html())


def test_what_has_no_cases_has_no_plot(result: tarn.Result, tmp_path: Path) -> None:
    result.save(tmp_path / "result.xml")
    plan = {"tests": [{"sign": {"variableName": ["x", "y"]}}]}
    for caseless in (tarn.load(tmp_path / "result.xml"), tarn.run(COLUMNS, plan), pickle.loads(pickle.dumps(result))):
        with pytest.raises(tarn.InputError, match="cases"):
            caseless.plot(0)
        page = caseless.to_html()
        assert pictures_in(page) == [] and "There are no plots: a result without its table has no cases to draw." in page
    assert "There are no plots" in tarn.load(tmp_path / "result.xml")._repr_html_()
    assert "There are no plots" not in result._repr_html_()
    failed = tarn.analyze(COLUMNS, related=["x", "y"], nominal=["x", "y"], tests="mcnemar")  # of more than two values
    assert "error" in columns_of(failed.messages)["kind"]
    with pytest.raises(tarn.InputError, match="McNemar.* has nothing that could be drawn"):
        failed.plot()


@pytest.mark.parametrize("make", [dict, pandas.DataFrame])
def test_data_that_was_written_to_is_not_drawn(make: Callable[[Any], Any]) -> None:
    numbers = numpy.random.default_rng(1)
    columns = {name: numbers.normal(size=40_000) for name in ("x", "y")}  # so many stay where they are
    data = make(columns)
    result = tarn.analyze(data, related=["x", "y"], tests="sign")
    plot = result.plot()
    assert len(pictures_in(result.to_html())) == 1
    rows = data["x"] if make is dict else data["x"].array
    before, rows[7] = rows[7], 1000.0
    with pytest.raises(tarn.InputError, match="the data was written to since it was analysed"):
        result.plot()
    page = result.to_html()
    assert pictures_in(page) == [] and "The data was written to since it was analysed" in page
    assert "There are no plots" in result._repr_html_() and pictures_in(result._repr_html_()) == []
    rows[7] = before
    assert result.plot() == plot


def test_saving_and_loading(result: tarn.Result, tmp_path: Path) -> None:
    made = {
        ".html": result.to_html, ".xml": result.to_xml, ".json": result.to_json, ".csv": result.to_csv,
        ".txt": result.to_text, ".md": result.to_markdown, ".tex": result.to_latex, ".typ": result.to_typst,
    }  # fmt: skip
    for suffix, text in made.items():
        result.save(tmp_path / f"result{suffix}")
        assert (tmp_path / f"result{suffix}").read_text() == text()
    loaded = tarn.load(tmp_path / "result.xml")
    assert [tuple(test) for test in loaded] == [tuple(test) for test in result]
    assert columns_of(loaded.effects)["key"] == []
    with pytest.raises(tarn.InputError, match="the result has no request to run again"):
        loaded.rerun(COLUMNS)
    with pytest.raises(tarn.InputError, match=r"expected \.html, .*, \.typ or \.svg"):
        result.save(tmp_path / "result.doc")
    with pytest.raises(tarn.InputError):
        result.save(tmp_path / "no such folder" / "result.xml")
    with pytest.raises(tarn.InputError):
        tarn.load(tmp_path / "result.csv")


def test_a_result_goes_to_another_process(result: tarn.Result) -> None:
    copy = pickle.loads(pickle.dumps(result))
    assert repr(copy) == repr(result)
    for text in ("to_json", "to_csv", "to_markdown", "to_latex", "to_typst", "to_apa"):
        assert getattr(copy, text)() == getattr(result, text)()
    assert copy.to_text(details=True) == result.to_text(details=True)
    assert copy._repr_html_().startswith("<pre>Kruskal-Wallis test: x by g")
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
