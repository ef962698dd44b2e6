"""A frame of Dask, of which combinations of values are counted, gives what the records give."""

from __future__ import annotations

import json
import math
import os
import pickle
import signal
import threading
import time
from collections.abc import Mapping
from typing import Any

import dask.dataframe
import numpy
import pandas
import pytest
import tarn
from hypothesis import Phase, given, settings
from hypothesis import strategies as st
from test_same_as_command import tables

# All tests but that of runs. Fitted distributions rest on a mean and a deviation, whose last digits depend on the order
# of the records: they are compared by themselves.
REQUESTS: list[dict[str, Any]] = [
    {"independent": ["x", "y"], "group": "group"},
    {"independent": "x", "group": "two", "exact": True, "alternative": "less"},
    {"independent": ["y", "x"], "group": "two", "adjust": "hommel",
     "tests": ["mann-whitney", "kolmogorov-smirnov", "wald-wolfowitz", "moses", "hodges-lehmann", "median"]},
    {"independent": ["x"], "group": "group", "tests": ["kruskal-wallis", "median", "jonckheere"], "compare": "pairwise",
     "adjust": "holm", "order": {"group": ["b", "c", "a"]}},
    {"independent": "x", "group": "group", "tests": ["kruskal-wallis"], "compare": "stepwise"},
    {"related": ["x", "y"], "tests": ["sign", "wilcoxon", "hodges-lehmann"], "zeros": "pratt"},
    {"related": ["x", "y", "count"], "tests": ["friedman", "kendall"], "missing": "listwise", "compare": "pairwise"},
    {"related": ["two", "other"], "tests": ["mcnemar", "cochran", "marginal-homogeneity"]},
    {"one_sample": ["x", "two"], "tests": ["binomial"], "weights": "count", "cut_point": 1},
    {"one_sample": ["x", "y"], "tests": ["wilcoxon", "binomial"], "test_value": 0.5, "cut_point": 0},
    {"one_sample": ["count", "group"], "nominal": "count", "tests": "chi-square"},
    {"one_sample": ["count"], "tests": "kolmogorov-smirnov", "distribution": ["normal"], "mean": 4, "sd": 2},
    {"formula": "x + y ~ two", "tests": "mann-whitney", "continuity": False},
    {"independent": "x", "group": "two", "one_sample": "y", "missing": "listwise", "tests": ["mann-whitney", "wilcoxon"]},
    {"independent": ["x", "y"], "group": "group", "split": "two"},
    {"independent": ["x"], "group": "two", "monte_carlo": 50, "seed": 3, "as_defined": True},
]  # fmt: skip


def read_tests(result: tarn.Result) -> Any:
    """All that its JSON says of its tests, part by part. A list of outliers has each value once, as that of any weighted
    table has: it lists records, not cases."""

    def once(node: Any) -> Any:
        if isinstance(node, list):
            return [once(each) for each in node]
        if not isinstance(node, dict):
            return node
        if node.get("name") == "Outliers":
            return {**node, "lines": [list(dict.fromkeys(line)) for line in node["lines"]]}
        return {name: once(each) for name, each in node.items()}

    read = json.loads(result.to_json())
    return [part["result"] and once(part["result"]["tests"]) for part in read.get("parts", [{"result": read}])]


def differences(found: Any, expected: Any, place: str = "") -> list[tuple[str, Any, Any]]:
    """Where two results differ. All digits count, but for limits of effects and means of the intervals of a histogram:
    these are sums over the records, whose last digit depends on their order. Values are up to a million here."""
    if isinstance(found, dict) and isinstance(expected, dict) and found.keys() == expected.keys():
        return [each for name in found for each in differences(found[name], expected[name], f"{place}.{name}")]
    if isinstance(found, list) and isinstance(expected, list) and len(found) == len(expected):
        return [
            each
            for number in range(len(found))
            for each in differences(found[number], expected[number], f"{place}[{number}]")
        ]
    is_sum = ".effects[" in place and place.endswith((".lower", ".upper")) or ".lines[1][" in place
    are_numbers = isinstance(found, float) and isinstance(expected, float)
    is_same = (
        math.isclose(found, expected, rel_tol=1e-13, abs_tol=1e-9 if ".lines" in place else 0)
        if is_sum and are_numbers
        else found == expected
    )
    return [] if is_same else [(place, found, expected)]


@settings(max_examples=150, deadline=None, phases=(Phase.explicit, Phase.reuse, Phase.generate))
@given(columns=tables(), asked=st.sampled_from(REQUESTS), partitions=st.integers(1, 5))
def test_counts_give_what_the_records_give(columns: Mapping[str, Any], asked: dict[str, Any], partitions: int) -> None:
    frame = pandas.DataFrame(dict(columns))
    frame["other"] = frame["two"].to_numpy()[::-1]
    data = dask.dataframe.from_pandas(frame, npartitions=partitions, sort=False)
    try:
        expected = tarn.analyze(frame, **asked)
    except (tarn.InputError, tarn.EngineError):
        with pytest.raises((tarn.InputError, tarn.EngineError)):
            tarn.analyze(data, **asked)
        return
    found = tarn.analyze(data, **asked)
    assert not differences(read_tests(found), read_tests(expected))
    pandas.testing.assert_frame_equal(found.tests, expected.tests)
    assert found.notes[0].startswith(f"{len(frame):,} records")


def frame_of(rows: int = 4000, seed: int = 1) -> pandas.DataFrame:
    numbers = numpy.random.default_rng(seed)
    return pandas.DataFrame(
        {
            "x": numbers.normal(size=rows).round(1),
            "y": numbers.integers(0, 9, rows),
            "g": pandas.Categorical(numbers.choice(["low", "mid", "high"], rows), ["low", "mid", "high"], ordered=True),
            "b": numbers.random(rows) < 0.3,
            "n": numbers.integers(0, 4, rows),
        }
    )


@pytest.fixture(scope="module")
def frame() -> pandas.DataFrame:
    return frame_of()


@pytest.fixture(scope="module")
def data(frame: pandas.DataFrame) -> Any:
    return dask.dataframe.from_pandas(frame, npartitions=21, sort=False)


def test_categories_keep_their_order_and_truth_values_their_kind(frame: pandas.DataFrame, data: Any) -> None:
    asked: list[dict[str, Any]] = [
        {"independent": ["x", "y"], "group": "g", "tests": ["jonckheere", "kruskal-wallis"]},
        {"one_sample": ["b", "y"], "tests": "binomial", "cut_point": 3},
        {"independent": "x", "group": "b", "reference": {"b": True}},
    ]
    for each in asked:
        assert read_tests(tarn.analyze(data, **each)) == read_tests(tarn.analyze(frame, **each))


def test_categories_that_no_partition_knows_all_of() -> None:
    parts = [
        pandas.DataFrame({"x": [1.0, 2, 2], "g": pandas.Categorical(["a", "b", "a"])}),
        pandas.DataFrame({"x": [3.0, 2, 1], "g": pandas.Categorical(["c", "c", "b"])}),
    ]
    data = dask.dataframe.concat(
        [dask.dataframe.from_pandas(part, npartitions=1) for part in parts], interleave_partitions=True
    )
    plain = pandas.DataFrame({"x": [1.0, 2, 2, 3, 2, 1], "g": list("abaccb")})
    asked: dict[str, Any] = {"independent": "x", "group": "g", "tests": "kruskal-wallis"}
    assert tuple(tarn.analyze(data, **asked)[0]) == tuple(tarn.analyze(plain, **asked)[0])


def test_fitted_distributions_agree_but_for_the_order_of_a_sum(frame: pandas.DataFrame, data: Any) -> None:
    asked: dict[str, Any] = {
        "one_sample": "y",
        "tests": "kolmogorov-smirnov",
        "distribution": ["normal", "poisson", "uniform"],
    }
    for found, plain in zip(tarn.analyze(data, **asked), tarn.analyze(frame, **asked), strict=True):
        assert found.statistic == pytest.approx(plain.statistic, rel=1e-12)
        assert found.pvalue == pytest.approx(plain.pvalue, rel=1e-9, abs=1e-300)


def test_a_result_says_what_it_rests_on(frame: pandas.DataFrame, data: Any) -> None:
    result = tarn.analyze(data, "x ~ b", tests="mann-whitney")
    pairs = frame[["x", "b"]].drop_duplicates().shape[0]
    note = (
        f"4,000 records were counted by their distinct values ({pairs} of x and b), and each test takes a combination as "
        "often as it occurs"
    )
    assert result.notes == [note]
    text = " ".join(result.to_text().split())
    assert f"Note: {note}" in text and "4000 of 4000 cases" in text
    assert note in result.to_html() and result.plot().svg.startswith("<svg ")
    assert json.loads(result.to_json())["notes"] == [note]
    assert result.request == {"formula": "x ~ b", "tests": ["mann-whitney"]}
    assert type(result.tests) is pandas.DataFrame


def test_tests_of_several_columns_are_one_result(frame: pandas.DataFrame, data: Any) -> None:
    asked: dict[str, Any] = {
        "independent": ["x", "y"],
        "group": "b",
        "tests": ["mann-whitney", "kolmogorov-smirnov"],
        "adjust": "by",
    }
    result, plain = tarn.analyze(data, **asked), tarn.analyze(frame, **asked)
    assert "of x and b, " in result.notes[0] and "of y and b)" in result.notes[0]
    assert result.to_csv() == plain.to_csv()
    for form in ("to_text", "to_apa", "to_markdown", "to_latex", "to_typst"):
        made, expected = getattr(result, form)(), getattr(plain, form)().rstrip("\n")
        assert made.startswith(expected) and "4,000 records" in made[len(expected) :].replace("\\", "")
    assert result["kolmogorov-smirnov", "y"].statistic == plain["kolmogorov-smirnov", "y"].statistic
    assert "<article" in result.to_html()
    with pytest.raises(tarn.InputError, match="rests on several counts and is no one document"):
        result.to_xml()
    with pytest.raises(tarn.InputError, match="no cases that could be drawn"):
        result["mann-whitney", "x"].plot()


def test_a_result_runs_again(frame: pandas.DataFrame, data: Any) -> None:
    result = tarn.analyze(data, independent="x", group="b", weights="n", resolution=0.5, combinations=500)
    assert result.request == {"independent": ["x"], "group": "b", "weights": "n", "resolution": 0.5, "combinations": 500}
    assert result.rerun(data).to_json() == result.to_json()
    assert "weighted by n" in result.notes[0]
    with pytest.raises(tarn.InputError, match="resolution= is for a frame of Dask"):
        result.rerun(frame)
    assert read_tests(result.rerun(frame, resolution=None, combinations=None)) == read_tests(
        tarn.analyze(frame, independent="x", group="b", weights="n")
    )


def test_rounding_is_that_of_the_values_and_is_told(frame: pandas.DataFrame, data: Any) -> None:
    rounded = frame.assign(x=(frame["x"] / 0.5).round() * 0.5, y=(frame["y"] / 0.5).round() * 0.5)
    both = tarn.analyze(data, independent=["x", "y"], group="g", resolution=0.5)
    assert read_tests(both) == read_tests(tarn.analyze(rounded, independent=["x", "y"], group="g"))
    assert "; x was rounded to multiples of 0.5 before; y was rounded to multiples of 0.5 before" in both.notes[0]
    one = tarn.analyze(data, related=["x", "y"], resolution={"x": 0.5})
    assert read_tests(one) == read_tests(tarn.analyze(rounded.assign(y=frame["y"]), related=["x", "y"]))
    # A column of the groups is no measurement.
    grouped = tarn.analyze(data, independent="x", group="y", nominal="y", resolution=3, tests="kruskal-wallis")
    assert grouped[0].df == 8.0 and "y was rounded" not in grouped.notes[0]


def test_counts_beyond_a_weight_are_told_in_several_records() -> None:
    # By hand: three records of 2,147,483,647 with 1, which no record could have together, and two with 0: S = 3 of 5.
    largest = 2**31 - 1
    frame = pandas.DataFrame({"x": [0, 0, 1, 1, 1], "y": [1, 1, 0, 0, 0], "n": [largest] * 5})
    result = tarn.analyze(dask.dataframe.from_pandas(frame, npartitions=2), related=["x", "y"], tests="sign", weights="n")
    assert (result[0].n, result[0].statistic) == (5.0 * largest, 2.0 * largest)


def test_too_many_combinations_are_refused_with_their_number(frame: pandas.DataFrame, data: Any) -> None:
    with pytest.raises(tarn.InputError) as refusal:
        tarn.analyze(data, related=["x", "y"], combinations=100)
    first = frame.iloc[: len(data.partitions[0])]
    assert len(first[["x", "y"]].drop_duplicates()) > 100  # so that one partition is too much
    assert "x and y: " in str(refusal.value) and "of 21 partitions; expected 100 at most: fewer by resolution=" in str(
        refusal.value
    )
    assert "a sample, like data.sample(frac=" in str(refusal.value) and "\n" not in str(refusal.value)
    # All of them together are too many for one more, and enough for what there are.
    there = len(frame[["x", "y"]].drop_duplicates())
    with pytest.raises(tarn.InputError, match=f"expected {there - 1:,} at most"):
        tarn.analyze(data, related=["x", "y"], combinations=there - 1)
    assert tarn.analyze(data, related=["x", "y"], combinations=there)[0].n == 4000
    assert tarn.analyze(data, related=["x", "y"], combinations=100, resolution=2)[0].n == 4000


MISTAKES: list[tuple[dict[str, Any], str]] = [
    ({"one_sample": "x", "tests": "runs"}, "runs depends on the order of the records"),
    (
        {"one_sample": "x", "where": "y > 3"},
        "where= names records, of which the counts are made; expected the frame without",
    ),
    ({"related": "x", "within": "g", "id": "y"}, "within= pairs records by their subject"),
    ({"formula": "x ~ g | y"}, "the formula pairs records by their subject"),
    ({"one_sample": "x", "like": "scipy"}, "like= makes the choices of calls that take no counts"),
    ({"one_sample": "x", "case_id": "y"}, "case_id= names single records"),
    ({"one_sample": "x", "weights": [1, 2]}, "weights= of a frame of Dask are one of its columns"),
    ({"one_sample": "x", "weights": "m"}, 'the data has no column "m"'),
    ({"one_sample": "y", "weights": "y"}, 'weights="y" is a column that the tests use'),
    ({"one_sample": "y", "weights": "x"}, "weights of x: -?[0-9.]+; expected whole numbers from 0"),
    ({"one_sample": "xx"}, 'the data has no column "xx"; expected one of "x", "y", "g", "b" or "n"'),
    ({"independent": "x", "group": "gg"}, 'the data has no column "gg"; expected one of'),
    ({"one_sample": "x", "resolution": 0}, "resolution=0; expected a step above 0"),
    ({"one_sample": "x", "resolution": {"y": 1}}, 'resolution= has "y", which is no tested column of numbers'),
    ({"formula": "x ~ g", "resolution": 1}, "resolution=1 beside a formula; expected a dict of its columns"),
    ({"one_sample": "x", "combinations": 0}, "combinations=0; expected a whole number from 1 on"),
    ({"one_sample": "x", "testss": 1}, "unexpected keyword argument"),
]


@pytest.mark.parametrize(("asked", "message"), MISTAKES, ids=[message[:40] for _, message in MISTAKES])
def test_a_mistake_is_one_line(asked: dict[str, Any], message: str, data: Any) -> None:
    with pytest.raises((tarn.InputError, TypeError), match=message) as mistake:
        tarn.analyze(data, **asked)
    assert "\n" not in str(mistake.value)


def test_other_calls_say_what_they_expect(data: Any) -> None:
    for call in (lambda: tarn.look(data), lambda: tarn.run(data, {"tests": []}), lambda: tarn.sign(data, "x", "y")):
        with pytest.raises(tarn.InputError, match="not computed yet; expected what compute"):
            call()
    for name in ("resolution", "combinations"):
        with pytest.raises(tarn.InputError, match=f"{name}= is for a frame of Dask"):
            tarn.analyze({"x": [1.0, 2]}, "x ~ 1", **{name: 3})  # type: ignore[arg-type]


def test_progress_is_told_of_all_columns(data: Any) -> None:
    told: list[float] = []
    tarn.analyze(data, one_sample=["x", "y"], tests="wilcoxon", test_value=0, progress=told.append)
    assert told == sorted(told) and told[-1] <= 100 and any(percent > 50 for percent in told)


def slow(frame: pandas.DataFrame) -> pandas.DataFrame:
    """A partition that takes its time, so that somebody can be killed meanwhile."""
    time.sleep(0.2)
    return frame


def test_a_worker_that_dies_changes_no_count(frame: pandas.DataFrame, data: Any, client: Any) -> None:
    processes = list(client.run(os.getpid).values())
    killer = threading.Timer(1, lambda: os.kill(processes[0], signal.SIGKILL))
    killer.start()
    result = tarn.analyze(data.map_partitions(slow, meta=frame.iloc[:0]), related=["x", "y"], tests=["sign", "wilcoxon"])
    killer.join()
    assert read_tests(result) == read_tests(tarn.analyze(frame, related=["x", "y"], tests=["sign", "wilcoxon"]))
    client.wait_for_workers(2)
    assert processes[0] not in client.run(os.getpid).values()


def test_a_refusal_comes_from_a_worker_as_it_is(data: Any, client: Any) -> None:
    with pytest.raises(tarn.InputError, match="x and y: .* distinct combinations"):
        tarn.analyze(data, related=["x", "y"], combinations=10)


def test_an_error_goes_from_one_process_to_another() -> None:
    for error in (tarn.InputError("what"), tarn.EngineError("why", 3)):
        made = pickle.loads(pickle.dumps(error))
        assert type(made) is type(error) and str(made) == str(error) and vars(made) == vars(error)
