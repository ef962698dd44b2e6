"""Each kind of column that a library has is read, or refused by its name."""

from __future__ import annotations

import datetime
import decimal
import fractions
import subprocess
import sys
from array import array
from collections.abc import Callable
from typing import Any

import numpy
import pandas
import polars
import pyarrow
import pytest
import tarn
from conftest import Columns

VALUES = [1.0, 4.0, 2.0, 8.0, 5.0, 7.0]
GROUPS = ["a", "a", "b", "b", "a", "b"]


def compare(values: Any, groups: Any = GROUPS, **arguments: Any) -> tarn.TestResult:
    """The Mann-Whitney test of a column by itself; by hand of VALUES: the pairs with a > b are 4>2, 5>2, so U = 2."""
    table = {"v": values, "g": groups}
    return tarn.analyze(table, independent="v", group="g", tests="mann-whitney", **arguments)[0]


def test_each_library_gives_the_same(make: Callable[[Columns], Any]) -> None:
    result = tarn.analyze(make({"v": VALUES, "g": GROUPS}), independent="v", group="g", tests="mann-whitney")
    assert result[0].statistic == 2.0
    assert result[0].direction == "a minus b"


@pytest.mark.parametrize("missing", [None, float("nan")])
def test_nulls_and_nan_are_missing(make: Callable[[Columns], Any], missing: Any) -> None:
    # By hand: without the 4 of group a the pairs with a > b are 5>2.
    result = tarn.analyze(make({"v": [1.0, missing, *VALUES[2:]], "g": GROUPS}), independent="v", group="g")
    assert (result[0].n, result[0].n_total, result[0].statistic) == (5, 6, 1)


@pytest.mark.parametrize(
    "kind", ["int8", "uint8", "int16", "uint16", "int32", "uint32", "int64", "uint64", "float16", "float32", "float64"]
)
def test_numbers_of_any_width(kind: str) -> None:
    narrow = numpy.array(VALUES, dtype=kind)
    assert compare(narrow).statistic == 2
    assert compare(pyarrow.array(narrow)).statistic == 2
    assert compare(polars.Series(narrow) if kind != "float16" else polars.Series(VALUES)).statistic == 2
    assert compare(pandas.Series(narrow)).statistic == 2


def test_other_forms_of_numbers() -> None:
    assert compare(numpy.array(VALUES, dtype=">f8")).statistic == 2
    assert compare(numpy.array([VALUES, VALUES]).T[:, 0]).statistic == 2
    assert compare(array("f", VALUES)).statistic == 2
    assert compare([1, fractions.Fraction(4), decimal.Decimal(2), numpy.float32(8), True + 4, 7]).statistic == 2
    assert compare(range(6)).statistic == 2  # by hand: 0, 1, 4 and 2, 3, 5: 4>2, 4>3
    assert compare(numpy.ma.masked_array(VALUES, mask=[0, 1, 0, 0, 0, 0])).n == 5
    assert compare(pandas.array([1, None, 2, 8, 5, 7], dtype="Int64")).n == 5


def test_halves_are_read_by_their_bits() -> None:
    # The smallest, a subnormal and the largest number of 16 bits, as NumPy writes them, against their values.
    halves = numpy.array([2**-24, 3 * 2**-24, 65504, -1.5, 0, 2], dtype="float16")
    wide = [5.960464477539063e-08, 1.7881393432617188e-07, 65504.0, -1.5, 0.0, 2.0]
    shift = {"test_value": 0.0, "tests": "wilcoxon"}
    narrow_result = tarn.analyze({"v": halves}, one_sample="v", **shift)
    assert narrow_result.to_json() == tarn.analyze({"v": wide}, one_sample="v", **shift).to_json()


@pytest.mark.parametrize(
    "kind", [pyarrow.decimal32(9, 2), pyarrow.decimal64(18, 3), pyarrow.decimal128(38, 20), pyarrow.decimal256(70, 40)]
)
def test_decimals_are_rounded_once(kind: Any) -> None:
    texts = ["0.1", "-2.7", "12345.67", "0.3", None, "-0.01"]
    exact = pyarrow.array([None if text is None else decimal.Decimal(text) for text in texts]).cast(kind)
    numbers = [None if text is None else float(text) for text in texts]
    how = {"related": ["v", "w"], "tests": "hodges-lehmann"}
    zero = [0.0] * 6
    assert tarn.analyze({"v": exact, "w": zero}, **how).to_json() == tarn.analyze({"v": numbers, "w": zero}, **how).to_json()


def test_wide_decimals_are_rounded_once() -> None:
    digits = ["12345678901234567890123456789.123", "-98765432109876543210.987654321", "7e-20", "3e25"]
    exact = pyarrow.array([decimal.Decimal(text) for text in digits], pyarrow.decimal256(76, 30))
    how = {"one_sample": "v", "tests": "kolmogorov-smirnov"}
    assert tarn.analyze({"v": exact}, **how).to_json() == tarn.analyze({"v": list(map(float, digits))}, **how).to_json()


@pytest.mark.parametrize("kind", [pyarrow.string(), pyarrow.large_string(), pyarrow.string_view()])
def test_texts_of_any_layout(kind: Any) -> None:
    short = pyarrow.array([None, *GROUPS, None], kind)[1:7]  # which begins behind the beginning of its buffers
    assert compare(VALUES, short).statistic == 2
    long = [f"{group}, and more than a view holds by itself" for group in GROUPS]
    assert compare(VALUES, pyarrow.array(long, kind)).statistic == 2
    assert compare(VALUES, pyarrow.array(long, kind).dictionary_encode()).statistic == 2


def test_texts_of_other_libraries() -> None:
    assert compare(VALUES, pandas.Series(GROUPS, dtype="string")).statistic == 2
    assert compare(VALUES, pandas.Series(GROUPS, dtype="object")).statistic == 2
    assert compare(VALUES, numpy.array(GROUPS)).statistic == 2
    assert compare(VALUES, polars.Series(GROUPS)).statistic == 2
    assert compare(VALUES, ["ä", "ä", "ω", "ω", "ä", "ω"]).direction == "ä minus ω"


def test_slices_nulls_that_nobody_counted_and_chunks() -> None:
    bits = pyarrow.py_buffer(bytes([0b01111101]))  # of which the second is missing
    buffer = pyarrow.py_buffer(numpy.array([0.0, 9.0, *VALUES]).tobytes())
    uncounted = pyarrow.Array.from_buffers(pyarrow.float64(), 6, [bits, buffer], null_count=-1, offset=2)
    # By hand: the bits count from the beginning of the buffer, so that of the six only the last one is missing.
    assert compare(uncounted).n == 5
    chunked = pyarrow.chunked_array([VALUES[:1], [], VALUES[1:4], VALUES[4:]])
    assert compare(chunked).statistic == 2
    words = pyarrow.chunked_array(
        [pyarrow.array(GROUPS[:2]).dictionary_encode(), pyarrow.array(GROUPS[2:]).dictionary_encode()]
    )
    assert compare(VALUES, words).statistic == 2
    sliced = polars.DataFrame({"v": [9.0, *VALUES], "g": ["b", *GROUPS]}).slice(1)
    assert tarn.analyze(sliced, independent="v", group="g", tests="mann-whitney")[0].statistic == 2


def test_booleans() -> None:
    flags = [group == "b" for group in GROUPS]
    for groups in (flags, numpy.array(flags), pyarrow.array(flags), polars.Series(flags), pandas.array(flags, dtype="boolean")):
        assert compare(VALUES, groups).direction == "false minus true"


def test_categories_stand_in_their_order() -> None:
    for ordered in (False, True):
        groups = pandas.Categorical(GROUPS, categories=["b", "unused", "a"][::2], ordered=ordered)
        assert compare(VALUES, pandas.Series(groups)).direction == "b minus a"
    assert compare(VALUES, polars.Series(GROUPS, dtype=polars.Enum(["b", "a"]))).direction == "b minus a"
    coded = pyarrow.DictionaryArray.from_arrays([1, 1, 0, 0, 1, 0], ["b", "a"])
    assert compare(VALUES, coded).direction == "b minus a"
    numbers = pandas.Series(pandas.Categorical([2, 2, 1, 1, 2, 1], categories=[2, 1]))
    assert compare(VALUES, numbers).direction == "2 minus 1"


def test_categoricals_of_polars_stand_in_ascending_order() -> None:
    polars.Series(["b"], dtype=polars.Categorical)  # which the process meets first
    assert compare(VALUES, polars.Series(GROUPS, dtype=polars.Categorical)).direction == "a minus b"


@pytest.mark.parametrize("nulls", [pyarrow.nulls(6), polars.Series([None] * 6)])
def test_columns_of_nulls_alone(nulls: Any) -> None:
    table = {"v": VALUES, "n": nulls}
    assert tarn.analyze(table, one_sample="v", tests="runs", where="n is missing")[0].n == 6


def test_missing_categories() -> None:
    groups = ["a", None, "b", "b", "a", "b"]
    for column in (groups, pandas.Categorical(groups), pyarrow.array(groups).dictionary_encode(), polars.Series(groups)):
        assert compare(VALUES, pandas.Series(column) if isinstance(column, pandas.Categorical) else column).n == 5


DAYS = [datetime.date(2020, 1, day) for day in range(1, 7)]


@pytest.mark.parametrize(
    ("column", "what"),
    [
        (DAYS, "dates"),
        (pyarrow.array(DAYS), "dates"),
        (polars.Series(DAYS), "dates"),
        (pandas.Series(pandas.to_datetime(DAYS)), "dates with times"),
        (pyarrow.array([datetime.timedelta(1)] * 6), "durations"),
        (pyarrow.array([datetime.time(1)] * 6), "times of day"),
        (polars.Series([[1]] * 6), "lists"),
        (pyarrow.array([{"a": 1}] * 6), "structs"),
        (pyarrow.array([b"a"] * 6), "bytes"),
        (numpy.array([1j] * 6), "complex numbers"),
        ([1.0, "a", 2.0, 3.0, 4.0, 5.0], "numbers and texts"),
        ([True, 2, 3, 4, 5, 6], "booleans and numbers"),
    ],
)
def test_what_cannot_be_tested_is_refused_by_name(column: Any, what: str) -> None:
    with pytest.raises(tarn.InputError) as mistake:
        compare(column)
    assert str(mistake.value) == f'column "v" holds {what}; expected numbers, booleans, texts or categories'


def test_columns_that_nobody_names_may_hold_anything(make: Callable[[Columns], Any]) -> None:
    table = make({"day": DAYS, "v": VALUES, "g": GROUPS})
    assert tarn.analyze(table, independent="v", group="g", tests="mann-whitney")[0].statistic == 2


@pytest.mark.parametrize(
    ("data", "what"),
    [
        ({"vv": VALUES, "g": GROUPS}, 'the data has no column "v"; expected one of "vv" or "g"'),
        ({"v": VALUES[:4], "g": GROUPS}, 'column "v" has 4 values and "g" 6; expected as many in each'),
        ({"v": [*VALUES[:5], float("inf")], "g": GROUPS},
         'column "v": an infinite number; expected finite ones, or a null for a missing value'),
        ({"v": [10**400, *VALUES[1:]], "g": GROUPS},
         'column "v": a number beyond 1.8e308; expected one that a double can hold'),
        ({"v": 3, "g": GROUPS}, 'column "v" is of type int; expected a sequence of values'),
        ({"v": VALUES, "g": ["a", "a", "b", "b", "a", "\ud800"]},
         "column \"g\": '\\ud800'; expected texts without half a surrogate pair"),
        ({"v": VALUES, "g": ["a", "a", "b", "b", "a", "b\0"]},
         'column "g": a text that is not UTF-8 or has a NUL; expected UTF-8 without it'),
        (polars.LazyFrame({"v": VALUES}), "the data is a LazyFrame, which is not computed yet; expected what collect() gives"),
        (None, "the data is of type NoneType; expected a data frame, a dict of columns or a NumPy array"),
        (numpy.zeros(3), "the data is an array of 1 dimensions; expected 2, or a dict of columns"),
        (pandas.DataFrame([[1, 2, "a"]], columns=["v", "v", "g"]),
         'the data has two columns "v"; expected names that differ'),
    ],
)  # fmt: skip
def test_data_that_makes_no_table(data: Any, what: str) -> None:
    with pytest.raises(tarn.InputError) as mistake:
        tarn.analyze(data, independent="v", group="g")
    assert str(mistake.value) == what


def test_a_stream_is_read_once() -> None:
    class Counted:
        def __init__(self) -> None:
            self.count = 0

        def __arrow_c_stream__(self, requested_schema: object = None) -> object:
            self.count += 1
            return pyarrow.table({"v": VALUES, "g": GROUPS}).__arrow_c_stream__()

    source = Counted()
    assert tarn.analyze(source, independent="v", group="g", tests="mann-whitney")[0].statistic == 2
    assert source.count == 1


def test_a_stream_that_fails_says_why() -> None:
    def batches() -> Any:
        yield pyarrow.record_batch({"v": VALUES, "g": GROUPS})
        raise OSError("the disk is gone")

    schema = pyarrow.schema({"v": pyarrow.float64(), "g": pyarrow.string()})
    with pytest.raises(tarn.InputError, match="the data can't be read: .*the disk is gone"):
        tarn.analyze(pyarrow.RecordBatchReader.from_batches(schema, batches()), independent="v", group="g")


def test_arrays_with_and_without_names() -> None:
    named = numpy.array(list(zip(VALUES, [0, 0, 1, 1, 0, 1], strict=True)), dtype=[("v", "f4"), ("g", "i8")])
    assert tarn.analyze(named, independent="v", group="g", tests="mann-whitney")[0].statistic == 2
    plain = numpy.column_stack([VALUES, [0, 0, 1, 1, 0, 1]])
    assert tarn.analyze(plain, independent=0, group=1, tests="mann-whitney")[0].statistic == 2


def test_names_that_are_numbers() -> None:
    frame = pandas.DataFrame({0: VALUES, 1: GROUPS})
    assert tarn.analyze(frame, independent=0, group=1, tests="mann-whitney")[0].statistic == 2


@pytest.mark.parametrize("name", ["", "a\nb", "\ud800"])
def test_names_that_no_column_can_have(name: str) -> None:
    with pytest.raises(tarn.InputError, match="^one_sample=.*; expected "):
        tarn.analyze({name: VALUES}, one_sample=name)
    assert tarn.analyze({name: VALUES, "v": VALUES}, one_sample="v", tests="runs")[0].n == 6


def test_pandas_without_pyarrow() -> None:
    program = (
        "import sys; sys.modules['pyarrow'] = None\n"
        "import pandas, tarn\n"
        f"frame = pandas.DataFrame({{'v': {VALUES}, 'g': {GROUPS}}})\n"
        "test = tarn.analyze(frame, independent='v', group='g', tests='mann-whitney')\n"
        "print(test[0].statistic, type(test.tests).__name__)\n"
    )
    done = subprocess.run([sys.executable, "-c", program], capture_output=True, text=True, check=True)
    assert done.stdout == "2.0 DataFrame\n"


# ---- Memory of others ----

LARGE = 40_000


def large_columns() -> dict[str, Any]:
    numbers = numpy.random.default_rng(5)
    return {"x": numbers.normal(size=LARGE), "y": numbers.normal(size=LARGE), "g": numbers.integers(0, 2, LARGE)}


@pytest.mark.parametrize("make_large", [dict, pandas.DataFrame, polars.DataFrame, pyarrow.table])
def test_large_columns_stay_as_they_are(make_large: Callable[[Columns], Any]) -> None:
    columns = large_columns()
    frame = make_large(columns)
    before = {name: values.copy() for name, values in columns.items()}
    as_lists = {name: values.tolist() for name, values in columns.items()}
    for arguments in (
        {"related": ["x", "y"], "tests": "wilcoxon"},
        {"independent": "x", "group": "g", "tests": "mann-whitney"},
        {"one_sample": "x", "tests": "runs", "where": "y > 0"},
        {"related": ["x", "y"], "tests": "sign", "ordinal": ["x", "y"]},
    ):
        assert tarn.analyze(frame, **arguments).to_json() == tarn.analyze(as_lists, **arguments).to_json()
    assert all((columns[name] == before[name]).all() for name in columns)


@pytest.mark.parametrize("odd", [numpy.nan, numpy.inf])
def test_large_columns_with_odd_values_are_read_one_by_one(odd: float) -> None:
    columns = large_columns()
    columns["x"][17] = odd
    if numpy.isinf(odd):
        with pytest.raises(tarn.InputError, match="an infinite number"):
            tarn.analyze(columns, related=["x", "y"])
    else:
        assert tarn.analyze(columns, related=["x", "y"], tests="sign")[0].n == LARGE - 1


def test_a_later_effect_is_that_of_the_data_as_it_was() -> None:
    columns = large_columns()
    test = tarn.wilcoxon(columns["x"], columns["y"])
    expected = tarn.wilcoxon(columns["x"].copy(), columns["y"].copy()).effect
    columns["x"][:] = 0
    assert test.effect == expected
