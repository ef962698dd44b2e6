"""A table gives the package what the same table as CSV gives the command, to the last digit."""

from __future__ import annotations

import json
import re
from typing import Any

import pytest
import tarn
from conftest import MAKERS, Columns, Command
from hypothesis import HealthCheck, given, settings
from hypothesis import strategies as st

NUMBERS = st.one_of(
    st.integers(-5, 5).map(float),
    st.floats(-1e6, 1e6, allow_nan=False).map(lambda number: number + 0.0),
    st.none(),
)


@st.composite
def tables(draw: st.DrawFn) -> Columns:
    count = draw(st.integers(4, 30))

    def column(values: st.SearchStrategy[Any]) -> list[Any]:
        return draw(st.lists(values, min_size=count, max_size=count))

    # A first row without gaps tells each library what its columns hold.
    return {
        "x": [1.5, *column(NUMBERS)],
        "y": [-2.0, *column(NUMBERS)],
        "count": [3, *column(st.integers(0, 9))],
        "group": ["b", *column(st.sampled_from(["a", "b", "c"]) | st.none())],
        "two": ["no", *column(st.sampled_from(["no", "yes"]))],
    }


REQUESTS: list[tuple[dict[str, Any], list[str]]] = [
    ({"independent": ["x", "y"], "group": "group"}, ["--independent", "x,y", "--group", "group"]),
    ({"independent": "x", "group": "two", "exact": True, "alternative": "less"},
     ["--independent", "x", "--group", "two", "--exact", "--alternative", "less"]),
    ({"independent": ["x"], "group": "group", "tests": ["kruskal-wallis", "median"], "compare": "pairwise",
      "adjust": "holm"},
     ["--independent", "x", "--group", "group", "--tests", "kruskal-wallis,median", "--compare", "pairwise",
      "--adjust", "holm"]),
    ({"related": ["x", "y"], "tests": ["sign", "wilcoxon"], "zeros": "pratt", "monte_carlo": 200, "seed": 7},
     ["--related", "x,y", "--tests", "sign,wilcoxon", "--zeros", "pratt", "--monte-carlo", "200", "--seed", "7"]),
    ({"related": ["x", "y", "count"], "missing": "listwise", "alpha": 0.1},
     ["--related", "x,y,count", "--missing", "listwise", "--alpha", "0.1"]),
    ({"one_sample": ["x", "two"], "weights": "count"}, ["--one-sample", "x,two", "--weight", "count"]),
    ({"one_sample": ["count"], "nominal": ["count"], "as_defined": True},
     ["--one-sample", "count", "--nominal", "count", "--as-defined"]),
    ({"independent": ["x"], "group": "group", "order": {"group": ["c", "a", "b"]}, "tests": "jonckheere"},
     ["--independent", "x", "--group", "group", "--order", "group=c,a,b", "--tests", "jonckheere"]),
]  # fmt: skip


@pytest.mark.parametrize("library", list(MAKERS))
@settings(max_examples=25, deadline=None, suppress_health_check=[HealthCheck.function_scoped_fixture])
@given(columns=tables(), number=st.integers(0, len(REQUESTS) - 1))
def test_package_says_what_the_command_says(library: str, columns: Columns, number: int, command: Command) -> None:
    arguments, typed = REQUESTS[number]
    expected = command.result(columns, *typed)
    try:
        result = tarn.analyze(MAKERS[library](columns), **arguments)
    except (tarn.InputError, tarn.EngineError) as mistake:
        assert isinstance(expected, str), f"the command does it; the package says {mistake}"
        return
    made = json.loads(result.to_json())
    assert made["tests"] == expected["tests"]
    assert made["record"]["data"]["fields"] == expected["record"]["data"]["fields"], "the hashes of the fields"
    assert made["record"]["data"]["sha256"] == expected["record"]["data"]["sha256"]
    assert made["record"]["left_out"] == expected["record"]["left_out"]


def test_report_is_that_of_the_command(command: Command) -> None:
    columns = {"x": [1.0, 4.0, 2.0, 8.0, 5.0, 7.0], "g": ["a", "a", "b", "b", "a", "b"]}
    typed = ["--independent", "x", "--group", "g"]
    result = tarn.analyze(columns, independent="x", group="g")
    formats = {
        "text": result.to_text, "csv": result.to_csv, "md": result.to_markdown, "latex": result.to_latex,
        "typst": result.to_typst, "apa": result.to_apa,
    }  # fmt: skip
    for name, text in formats.items():
        assert text() == command.run(columns, *typed, "--format", name).stdout
    details, record = result.to_text(details=True).split("\nRecord\n")
    expected, expected_record = command.run(columns, *typed, "--details").stdout.split("\nRecord\n")
    assert details == expected
    without_words = [line for line in expected_record.splitlines() if not line.startswith("   Request: ")]
    assert record.splitlines() == without_words


@pytest.mark.parametrize("split", [[], ["--split", "s"]])
def test_page_is_that_of_the_command(command: Command, split: list[str]) -> None:
    columns = {"x": [1.0, 4.0, 2.0, 8.0, 5.0, 7.0], "y": [2.0, 2.5, 9.0, 1.0, 4.0, 3.0], "g": list("aabbab"), "s": list("mmmfff")}
    page = tarn.analyze(columns, independent=["x", "y"], group="g", split="s" if split else None).to_html()
    expected = command.run(columns, "--independent", "x,y", "--group", "g", *split, "--format", "html").stdout
    tests = re.findall("<article.*?</article>", expected, re.DOTALL)
    assert len(tests) >= 2 and all("<svg" in test for test in tests)
    assert re.findall("<article.*?</article>", page, re.DOTALL) == tests


def test_category_orders_are_those_of_a_description(command: Command, tmp_path: Any) -> None:
    import polars

    levels = ["low", "mid", "high"]
    columns = {"x": [1.0, 4.0, 2.0, 8.0, 5.0, 7.0, 3.0], "dose": ["low", "mid", "low", "high", "mid", "high", "low"]}
    description = tmp_path / "fields.json"
    field = {"name": "dose", "type": "string", "categories": levels, "categoriesOrdered": True}
    description.write_text(json.dumps({"fields": [{"name": "x", "type": "number"}, field]}))
    typed = ["--fields", str(description), "--independent", "x", "--group", "dose", "--tests", "jonckheere"]
    frame = polars.DataFrame(columns, schema_overrides={"dose": polars.Enum(levels)})
    result = tarn.analyze(frame, independent="x", group="dose", tests="jonckheere")
    assert json.loads(result.to_json())["tests"] == command.tests(columns, *typed)
