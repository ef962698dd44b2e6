"""Foreign Arrow data whose structures lie is refused in one line, and the process lives on.

The structures of the Arrow C interface are made here by hand, laid out as
https://arrow.apache.org/docs/format/CDataInterface.html fixes them, so that each test can break one thing of them.
"""

from __future__ import annotations

import ctypes
import math
import struct
from collections.abc import Callable, Sequence
from typing import Any

import pytest
import tarn

ROWS = 4
PLACE = ctypes.c_void_p


class Schema(ctypes.Structure):
    pass


class Array(ctypes.Structure):
    pass


class Stream(ctypes.Structure):
    pass


RELEASE_SCHEMA = ctypes.CFUNCTYPE(None, ctypes.POINTER(Schema))
RELEASE_ARRAY = ctypes.CFUNCTYPE(None, ctypes.POINTER(Array))
RELEASE_STREAM = ctypes.CFUNCTYPE(None, ctypes.POINTER(Stream))
GET_SCHEMA = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Schema))
GET_NEXT = ctypes.CFUNCTYPE(ctypes.c_int, ctypes.POINTER(Stream), ctypes.POINTER(Array))
GET_LAST_ERROR = ctypes.CFUNCTYPE(ctypes.c_void_p, ctypes.POINTER(Stream))

Schema._fields_ = [
    ("format", ctypes.c_char_p),
    ("name", ctypes.c_char_p),
    ("metadata", PLACE),
    ("flags", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("children", ctypes.POINTER(ctypes.POINTER(Schema))),
    ("dictionary", ctypes.POINTER(Schema)),
    ("release", RELEASE_SCHEMA),
    ("private_data", PLACE),
]
Array._fields_ = [
    ("length", ctypes.c_int64),
    ("null_count", ctypes.c_int64),
    ("offset", ctypes.c_int64),
    ("n_buffers", ctypes.c_int64),
    ("n_children", ctypes.c_int64),
    ("buffers", ctypes.POINTER(PLACE)),
    ("children", ctypes.POINTER(ctypes.POINTER(Array))),
    ("dictionary", ctypes.POINTER(Array)),
    ("release", RELEASE_ARRAY),
    ("private_data", PLACE),
]
Stream._fields_ = [
    ("get_schema", GET_SCHEMA),
    ("get_next", GET_NEXT),
    ("get_last_error", GET_LAST_ERROR),
    ("release", RELEASE_STREAM),
    ("private_data", PLACE),
]


@RELEASE_SCHEMA
def release_schema(schema: Any) -> None:
    schema.contents.release = RELEASE_SCHEMA()


@RELEASE_ARRAY
def release_array(array: Any) -> None:
    array.contents.release = RELEASE_ARRAY()


@RELEASE_STREAM
def release_stream(stream: Any) -> None:
    stream.contents.release = RELEASE_STREAM()


def pointers_to(kind: type[ctypes.Structure], children: Sequence[ctypes.Structure]) -> Any:
    return (ctypes.POINTER(kind) * len(children))(*[ctypes.pointer(child) for child in children])


def new_schema(kind: bytes, name: bytes = b"", children: Sequence[Schema] = (), dictionary: Schema | None = None) -> Schema:
    schema = Schema(format=kind, name=name, n_children=len(children), release=release_schema)
    if children:
        schema.children = pointers_to(Schema, children)
    if dictionary is not None:
        schema.dictionary = ctypes.pointer(dictionary)
    return schema


def new_array(
    length: int, buffers: Sequence[bytes | None], children: Sequence[Array] = (), dictionary: Array | None = None
) -> Array:
    array = Array(length=length, n_buffers=len(buffers), n_children=len(children), release=release_array)
    held = [None if buffer is None else ctypes.create_string_buffer(buffer, max(len(buffer), 1)) for buffer in buffers]
    array.buffers = (PLACE * len(buffers))(*[None if one is None else ctypes.addressof(one) for one in held])
    array.held = held  # ctypes keeps what is behind a pointer, but not what is behind an address
    if children:
        array.children = pointers_to(Array, children)
    if dictionary is not None:
        array.dictionary = ctypes.pointer(dictionary)
    return array


class Data:
    """A stream of one array with the columns v, numbers, and g; a test breaks what it likes before it is read."""

    def __init__(self, group_schema: Schema, group: Array) -> None:
        self.group_schema, self.group = group_schema, group
        self.value_schema = new_schema(b"g", b"v")
        self.value = new_array(ROWS, [None, struct.pack("4d", 1, 4, 2, 8)])
        self.schema = new_schema(b"+s", children=[self.value_schema, group_schema])
        self.array = new_array(ROWS, [None], children=[self.value, group])
        self.arrays = [self.array]
        self.given = 0
        self.error: tuple[int, bytes | None] | None = None
        self.stream = Stream(GET_SCHEMA(self._get_schema), GET_NEXT(self._get_next), GET_LAST_ERROR(self._get_last_error),
                             release_stream)

    def __arrow_c_stream__(self, requested_schema: object = None) -> object:
        new_capsule = ctypes.pythonapi.PyCapsule_New
        new_capsule.restype, new_capsule.argtypes = ctypes.py_object, [PLACE, ctypes.c_char_p, PLACE]
        return new_capsule(ctypes.addressof(self.stream), b"arrow_array_stream", None)

    def _get_schema(self, _: Any, schema: Any) -> int:
        schema[0] = self.schema
        return 0

    def _get_next(self, _: Any, array: Any) -> int:
        if self.error is not None:
            ctypes.memset(array, 0xAA, ctypes.sizeof(Array))  # nobody may touch what a failed call leaves
            return self.error[0]
        array[0] = self.arrays[self.given] if self.given < len(self.arrays) else Array()
        self.given += 1
        return 0

    def _get_last_error(self, _: Any) -> int | None:
        text = self.error[1] if self.error else None
        self.text = None if text is None else ctypes.create_string_buffer(text)
        return None if self.text is None else ctypes.addressof(self.text)


LONG = b"a text of 20 letters"
GROUPS = ["a", "a", "b", "b"]


def texts() -> Data:
    return Data(new_schema(b"u", b"g"), new_array(ROWS, [None, struct.pack("5i", 0, 1, 2, 3, 4), b"aabb"]))


def large_texts() -> Data:
    return Data(new_schema(b"U", b"g"), new_array(ROWS, [None, struct.pack("5q", 0, 1, 2, 3, 4), b"aabb"]))


def view(size: int, buffer: int = 0, begin: int = 0) -> bytes:
    return struct.pack("i4sii", size, LONG[:4], buffer, begin) if size > 12 else struct.pack("i12s", size, b"b")


def views(last: bytes | None = None) -> Data:
    """Two long texts, a short one, and one that a test chooses."""
    values = view(len(LONG)) * 2 + view(1) + (view(1) if last is None else last)
    return Data(new_schema(b"vu", b"g"), new_array(ROWS, [None, values, LONG, struct.pack("q", len(LONG))]))


def codes(*numbers: int) -> Data:
    entries = new_array(2, [None, struct.pack("3i", 0, 1, 2), b"ab"])
    packed = struct.pack("4b", *(numbers or (0, 0, 1, 1)))
    return Data(new_schema(b"c", b"g", dictionary=new_schema(b"u")), new_array(ROWS, [None, packed], dictionary=entries))


def compare(data: Data) -> tarn.TestResult:
    return tarn.analyze(data, independent="v", group="g", tests="mann-whitney")[0]


def refusal(data: Data) -> str:
    with pytest.raises(tarn.InputError) as mistake:
        compare(data)
    return str(mistake.value)


@pytest.mark.parametrize("make", [texts, large_texts, views, codes])
def test_what_is_made_here_is_read(make: Callable[[], Data]) -> None:
    """By hand: of the pairs of 1, 4 in the one group and 2, 8 in the other, 4 > 2 alone, so U = 1 or 3."""
    assert compare(make()).statistic in (1, 3)


def change(what: str, **members: Any) -> Callable[[Data], None]:
    """Sets members of a part of the data: "group.dictionary"."""

    def break_it(data: Data) -> None:
        part: Any = data
        for name in what.split("."):
            part = getattr(part, name)
            part = part.contents if hasattr(part, "contents") else part
        for name, value in members.items():
            setattr(part, name, value)

    return break_it


def change_buffer(what: str, index: int, value: bytes | None = None) -> Callable[[Data], None]:
    def break_it(data: Data) -> None:
        part: Any = getattr(data, what)
        part.kept = None if value is None else ctypes.create_string_buffer(value, len(value))
        part.buffers[index] = None if value is None else ctypes.addressof(part.kept)

    return break_it


def change_entries(index: int, value: bytes | None) -> Callable[[Data], None]:
    def break_it(data: Data) -> None:
        data.entries = data.group.dictionary.contents  # type: ignore[attr-defined]
        change_buffer("entries", index, value)(data)

    return break_it


def change_metadata(metadata: bytes) -> Callable[[Data], None]:
    def break_it(data: Data) -> None:
        data.kept = ctypes.create_string_buffer(metadata, len(metadata))  # type: ignore[attr-defined]
        data.group_schema.metadata = ctypes.addressof(data.kept)  # type: ignore[attr-defined]

    return break_it


def forget_child(what: str) -> Callable[[Data], None]:
    def break_it(data: Data) -> None:
        part = getattr(data, what)
        part.children[1] = type(part.children[1])()

    return break_it


MOST = 2**47
NO_SCHEMAS, NO_ARRAYS = ctypes.POINTER(ctypes.POINTER(Schema))(), ctypes.POINTER(ctypes.POINTER(Array))()
NO_BUFFERS = ctypes.POINTER(PLACE)()

BROKEN_SCHEMAS = [
    (change("schema", format=None), 'the schema of the data: it has no format; expected one like "g" or "u"'),
    (change("schema", release=RELEASE_SCHEMA()),
     "the schema of the data: it was released before; expected one that is in use"),
    (change("schema", children=NO_SCHEMAS), "the schema of the data: it has children, and no list of them; expected both"),
    (change("schema", n_children=-1), "the schema of the data: it has -1 children; expected 0 or more"),
    (forget_child("schema"), "the schema of the data: no column 1 counted from 0; expected 2"),
    (change("group_schema", release=RELEASE_SCHEMA()), "the schema of the data: no column 1 counted from 0; expected 2"),
    (change("group_schema", format=None), 'column "g": it has no format; expected one like "g" or "u"'),
    (change("group_schema", format=b"\xff"), 'column "g": its format is not UTF-8; expected one like "g" or "u"'),
    (change("group_schema.dictionary", format=b"q"),
     'column "g" holds values in the unknown format "q"; expected numbers, booleans, texts or categories'),
    (change("group_schema.dictionary", format=b""),
     'column "g" holds values in the unknown format ""; expected numbers, booleans, texts or categories'),
    (change("group_schema", name=b"\xff"), "the data: the name of column 1 counted from 0 is not UTF-8; expected UTF-8"),
    (change("group_schema", name=None), 'the data has no column "g"; expected one of "v" or ""'),
    (change("group_schema.dictionary", format=None), 'column "g", its categories: it has no format; expected one like "g" or "u"'),
    (change("group_schema.dictionary", release=RELEASE_SCHEMA()),
     'column "g", its categories: it was released before; expected one that is in use'),
    (change("group_schema", format=b"g"),
     'column "g" holds categories whose codes are no whole numbers; expected numbers, booleans, texts or categories'),
    (change("group_schema.dictionary", dictionary=ctypes.pointer(new_schema(b"u"))),
     'column "g" holds categories with categories of their own; expected numbers, booleans, texts or categories'),
    (change_metadata(struct.pack("i", -1)), 'column "g": metadata of the size -1; expected 0 or more'),
    (change_metadata(struct.pack("ii", 1, -7)), 'column "g": metadata of the size -7; expected 0 or more'),
    (change("stream", get_next=GET_NEXT()),
     "the data is a stream without its functions; expected get_schema and get_next"),
    (change("stream", get_schema=GET_SCHEMA()),
     "the data is a stream without its functions; expected get_schema and get_next"),
]  # fmt: skip


@pytest.mark.parametrize(("break_it", "what"), BROKEN_SCHEMAS)
def test_broken_schemas(break_it: Callable[[Data], None], what: str) -> None:
    data = codes()
    break_it(data)
    assert refusal(data) == what


@pytest.mark.parametrize(
    "kind", [b"d:", b"d:10", b"d:10,", b"d:10,2,", b"d:10,2,129", b"d:10,2,128,5", b"d:39,2", b"d:0,0", b"d:10,2000", b"d:9,-2147483648", b"d:x,2"]
)  # fmt: skip
def test_broken_formats_of_decimals(kind: bytes) -> None:
    """Digits from 1 to as many as the width holds (9, 18, 38, 76), two numbers or three, widths of 32 to 256 bits."""
    data = texts()
    data.group_schema.format = kind
    assert refusal(data).startswith(f'column "g" holds values in the unknown format "{kind.decode()}"; ')


BROKEN_ARRAYS = [
    (change("array", length=-1), f"the data: an array with the length -1; expected one from 0 to {MOST}"),
    (change("array", length=2**63 - 1), f"the data: an array with the length {2**63 - 1}; expected one from 0 to {MOST}"),
    (change("array", offset=-3), f"the data: an array with the offset -3; expected one from 0 to {MOST}"),
    (change("array", null_count=5), "the data: an array of 4 values, of which 5 are null; expected no more nulls than values, or -1"),
    (change("array", null_count=1),
     "the data: 1 missing rows, and no bits that tell which; expected rows that are there"),
    (change("array", n_buffers=0), "the data: an array with 0 buffers; expected 1 for its format"),
    (change("array", buffers=NO_BUFFERS), "the data: an array without its list of buffers; expected one"),
    (change("array", n_children=3), "the data: an array of 3 columns; expected 2 after its schema"),
    (change("array", n_children=-1), "the data: an array of -1 columns; expected 2 after its schema"),
    (change("array", children=NO_ARRAYS), "the data: an array without its list of columns; expected one"),
    (change("array", offset=1), 'column "v": an array of 4 values; expected 5, as the rows need'),
    (forget_child("array"), 'column "g": no array of its values; expected one'),
    (change("group", release=RELEASE_ARRAY()), 'column "g": an array that was released before; expected one that is in use'),
    (change("group", length=3), 'column "g": an array of 3 values; expected 4, as the rows need'),
    (change("group", length=-4), f'column "g": an array with the length -4; expected one from 0 to {MOST}'),
    (change("group", offset=2**62), f'column "g": an array with the offset {2**62}; expected one from 0 to {MOST}'),
    (change("group", null_count=-2),
     'column "g": an array of 4 values, of which -2 are null; expected no more nulls than values, or -1'),
    (change("group", null_count=2), 'column "g": 2 nulls, and no bits that tell which; expected both'),
    (change("group", n_buffers=1), 'column "g": an array with 1 buffers; expected 2 for its format'),
    (change("group", n_buffers=3), 'column "g": an array with 3 buffers; expected 2 for its format'),
    (change("group", buffers=NO_BUFFERS), 'column "g": an array without its list of buffers; expected one'),
    (change_buffer("group", 1), 'column "g": an array without its buffer of values; expected one'),
    (change("group", n_children=1), 'column "g": an array with 1 children; expected none'),
    (change("group", dictionary=ctypes.POINTER(Array)()),
     'column "g": an array without categories; expected some after its schema'),
    (change("value", dictionary=ctypes.pointer(new_array(0, [None, None]))),
     'column "v": an array with categories; expected none after its schema'),
    (change("group.dictionary", release=RELEASE_ARRAY()),
     'column "g", its categories: an array that was released before; expected one that is in use'),
    (change("group.dictionary", length=-1),
     f'column "g", its categories: an array with the length -1; expected one from 0 to {MOST}'),
    (change("group.dictionary", n_buffers=2), 'column "g", its categories: an array with 2 buffers; expected 3 for its format'),
    (change("group.dictionary", dictionary=ctypes.pointer(new_array(0, [None, None]))),
     'column "g", its categories: an array with categories of its own; expected none'),
    (change_entries(1, struct.pack("3i", 0, 2, 1)),
     'column "g", its categories, category 1 counted from 0: a text from 2 to 1; expected offsets that don\'t fall'),
    (change_entries(2, None), 'column "g", its categories: an array without its buffer of texts; expected one'),
]  # fmt: skip


@pytest.mark.parametrize(("break_it", "what"), BROKEN_ARRAYS)
def test_broken_arrays(break_it: Callable[[Data], None], what: str) -> None:
    data = codes()
    break_it(data)
    assert refusal(data) == what


@pytest.mark.parametrize(("make", "kind"), [(texts, "5i"), (large_texts, "5q")])
@pytest.mark.parametrize(
    ("offsets", "what"),
    [
        ((0, 1, 3, 2, 4), 'column "g", row 2 counted from 0: a text from 3 to 2; expected offsets that don\'t fall'),
        ((-1, 1, 2, 3, 4), 'column "g", row 0 counted from 0: a text that begins at -1; expected 0 or more'),
        ((0, 1, 2, 3, -2**31),
         'column "g", row 3 counted from 0: a text from 3 to -2147483648; expected offsets that don\'t fall'),
    ],
)  # fmt: skip
def test_broken_offsets_of_texts(make: Callable[[], Data], kind: str, offsets: tuple[int, ...], what: str) -> None:
    data = make()
    change_buffer("group", 1, struct.pack(kind, *offsets))(data)
    assert refusal(data) == what


def test_offsets_of_texts_behind_the_last_row() -> None:
    """The last offset of an array tells how long the texts are in all."""
    data = texts()
    data.group.length = 5
    change_buffer("group", 1, struct.pack("6i", 0, 1, 2, 3, 400, 4))(data)
    assert refusal(data) == (
        'column "g", row 3 counted from 0: a text that ends at 400, and all of them at 4; expected offsets that don\'t fall'
    )


def test_rows_are_counted_through_all_arrays() -> None:
    data = texts()
    data.arrays.append(texts().array)
    data.arrays.append(new_array(ROWS, [None], children=[
        new_array(ROWS, [None, struct.pack("4d", 1, 2, 3, 4)]),
        new_array(ROWS, [None, struct.pack("5i", 0, 1, 0, 3, 4), b"aabb"])]))  # fmt: skip
    assert refusal(data).startswith('column "g", row 9 counted from 0: a text from 1 to 0; ')


@pytest.mark.parametrize(
    ("last", "what"),
    [
        (view(-1), "a text of -1 bytes; expected 0 or more"),
        (view(20, buffer=1), "a text in buffer 1 of 1; expected one of them, from 0"),
        (view(20, buffer=-1), "a text in buffer -1 of 1; expected one of them, from 0"),
        (view(20, begin=1), "a text of 20 bytes from 1 on, in a buffer of 20; expected one within it"),
        (view(20, begin=-1), "a text of 20 bytes from -1 on, in a buffer of 20; expected one within it"),
        (view(2**31 - 1, begin=2**31 - 1),
         "a text of 2147483647 bytes from 2147483647 on, in a buffer of 20; expected one within it"),
    ],
)  # fmt: skip
def test_broken_views_of_texts(last: bytes, what: str) -> None:
    assert refusal(views(last)) == 'column "g", row 3 counted from 0: ' + what


@pytest.mark.parametrize(
    ("break_it", "what"),
    [
        (change_buffer("group", 2), "an array without its buffer of texts 0; expected one"),
        (change_buffer("group", 3), "an array without the sizes of its buffers of texts; expected them"),
        (change("group", n_buffers=2), "an array with 2 buffers; expected 3 or more for its format"),
    ],
)  # fmt: skip
def test_views_without_their_buffers(break_it: Callable[[Data], None], what: str) -> None:
    data = views()
    break_it(data)
    assert refusal(data) == 'column "g": ' + what


def test_what_stands_in_the_place_of_missing_texts_is_not_looked_at() -> None:
    data = views(view(-1))
    data.group.null_count = 1
    change_buffer("group", 0, bytes([0b0111]))(data)
    assert compare(data).n == 3


@pytest.mark.parametrize("code", [2, 127, -1, -128])
def test_codes_without_a_category(code: int) -> None:
    assert refusal(codes(0, 0, code, 1)) == (
        f'column "g", row 2 counted from 0: the code {code}, and 2 categories; '
        "expected a code for each of them, from 0"
    )


@pytest.mark.parametrize("buffers", [0, 1])
def test_columns_of_nulls_have_no_buffers_or_one(buffers: int) -> None:
    """None by the interface; polars gives them one."""
    data = Data(new_schema(b"n", b"n"), new_array(ROWS, [None] * buffers))
    data.group.null_count = ROWS
    assert tarn.analyze(data, one_sample="v", tests="runs", where="n is missing")[0].n == ROWS


@pytest.mark.parametrize(
    ("break_it", "what"),
    [
        (change("group", n_buffers=-1), "an array with -1 buffers; expected 0 or more for its format"),
        (change("group", buffers=NO_BUFFERS), "an array without its list of buffers; expected one"),
    ],
)
def test_broken_columns_of_nulls(break_it: Callable[[Data], None], what: str) -> None:
    data = Data(new_schema(b"n", b"g"), new_array(ROWS, [None]))
    data.group.null_count = ROWS
    break_it(data)
    assert refusal(data) == 'column "g": ' + what


MEBI = 2**20


def nulls(*lengths: int, columns: int = 1) -> Data:
    """Columns of nulls, with an array of each length."""
    data = Data(new_schema(b"n", b"g"), new_array(0, []))
    data.schema = new_schema(b"+s", children=[new_schema(b"n", f"n{i}".encode()) for i in range(columns)])
    data.arrays = [new_array(n, [None], children=[new_array(n, []) for _ in range(columns)]) for n in lengths]
    return data


def too_large(data: Any, memory: int | None) -> str:
    with pytest.raises(tarn.InputError) as mistake:
        tarn.look(data, memory=memory)
    return str(mistake.value)


def test_a_column_of_nulls_says_alone_how_long_it_is() -> None:
    """A cell of the table takes 8 bytes, of whose columns there are two."""
    of_machine = too_large(nulls(2**40, columns=2), None)
    assert of_machine.startswith("the data: may take 16.0 TiB of memory (1099511627776 rows of 2 columns); expected at most ")
    assert of_machine.endswith(", or more told by memory=") and "\n" not in of_machine
    assert too_large(nulls(2**40), MEBI) == (
        "the data: may take 8.0 TiB of memory (1099511627776 rows of 1 column); expected at most 1.0 MiB, or more told by memory="
    )
    plan = {"tests": [{"runs": {"variableName": "n0"}}]}
    with pytest.raises(tarn.InputError, match="^the data: may take 8.0 TiB of memory"):
        tarn.run(nulls(2**40), plan)
    with pytest.raises(tarn.InputError, match="^the data: may take 8.0 TiB of memory"):
        tarn.analyze(nulls(2**40), one_sample="n0")


def test_columns_of_nulls_as_long_as_they_may_be() -> None:
    """2^16 rows of two columns take 1 MiB, and one row more, 16 bytes more."""
    assert tarn.look(nulls(2**16, columns=2), memory=MEBI).title == "the data: 65536 rows, 2 fields"
    assert too_large(nulls(2**16 + 1, columns=2), MEBI).startswith("the data: may take 1.0 MiB of memory (65537 rows of 2 ")


def test_rows_add_up_over_arrays() -> None:
    half = 2**16
    assert tarn.look(nulls(half, half), memory=MEBI).title == "the data: 131072 rows, 1 field"
    assert too_large(nulls(half, half, half), MEBI).startswith("the data: may take 1.5 MiB of memory (196608 rows of 1 column)")


def test_rows_are_refused_before_those_behind_them_are_asked_for() -> None:
    data = nulls(2**40, 1, 1)
    too_large(data, None)
    assert data.given == 1


def test_columns_add_up_over_streams() -> None:
    """Each column of such a table comes by itself."""
    np = pytest.importorskip("numpy")
    whole = {name: np.zeros(2**16, dtype=np.int64) for name in ("x", "y", "z")}
    assert too_large(whole, MEBI).startswith("the data: may take 1.5 MiB of memory (65536 rows of 3 columns)")
    assert len(tarn.look({name: whole[name] for name in ("x", "y")}, memory=MEBI).fields["name"]) == 2


def test_columns_that_stay_where_they_are_take_nothing() -> None:
    np = pytest.importorskip("numpy")
    numbers = np.arange(2.0**18)
    assert tarn.look({"x": numbers}, memory=MEBI).title == "the data: 262144 rows, 1 field"
    numbers[7] = math.nan  # which a table has in another way, so that the column is copied
    assert too_large({"x": numbers}, MEBI).startswith("the data: may take 2.0 MiB of memory (262144 rows of 1 column)")


def test_distinct_words_take_memory() -> None:
    """64 bytes each, beside the 8 of a row."""
    words = [str(i) + "w" for i in range(2**14)]
    assert too_large({"x": words}, MEBI).startswith(
        "the data: may take 1.1 MiB of memory (16384 rows of 1 column, 16384 distinct values)"
    )
    assert tarn.look({"x": words}, memory=2 * MEBI).title == "the data: 16384 rows, 1 field"


def test_of_a_long_column_of_nulls_the_rows_alone_are_read() -> None:
    data = Data(new_schema(b"n", b"g"), new_array(2**40, []))
    data.group.null_count = 2**40
    data.array.offset = 1
    data.array.length = ROWS - 1
    assert tarn.analyze(data, one_sample="v", tests="runs", where="g is missing", memory="1M")[0].n == ROWS - 1


def test_many_columns_without_rows_take_nothing() -> None:
    assert tarn.look(nulls(0, columns=3000), memory=1).title == "the data: 0 rows, 3000 fields"


def test_categories_that_are_nulls_take_nothing() -> None:
    """They have no buffers, so that there may be any number of them; the codes are checked like others."""
    def coded(*numbers: int) -> Data:
        data = codes(*numbers)
        data.group_schema.dictionary.contents.format = b"n"
        data.group.dictionary = ctypes.pointer(new_array(2**40, []))
        return data

    assert tarn.analyze(coded(0, 1, 2, 3), one_sample="v", tests="runs", where="g is missing", memory="1M")[0].n == ROWS
    with pytest.raises(tarn.InputError, match='^column "g", row 1 counted from 0: the code -1, and 1099511627776 categories; '):
        tarn.look(coded(0, -1, 2, 3))


def test_rows_without_bits_are_not_counted_one_by_one() -> None:
    """Uncounted nulls and no bits: all rows are there, however many they are."""
    data = nulls(2**40)
    data.arrays[0].null_count = -1
    assert too_large(data, MEBI).startswith("the data: may take 8.0 TiB of memory")


def test_codes_of_missing_values_are_not_looked_at() -> None:
    data = codes(0, 0, -1, 1)
    data.group.null_count = 1
    change_buffer("group", 0, bytes([0b1011]))(data)
    assert compare(data).n == 3


def test_rows_that_are_missing_as_a_whole() -> None:
    data = texts()
    data.array.null_count = -1
    change_buffer("array", 0, bytes([0b1101]))(data)
    assert refusal(data) == (
        "the data, row 1 counted from 0: it is missing as a whole; expected a row, with nulls in its columns"
    )


def test_a_stream_that_changes_its_shape() -> None:
    data = texts()
    data.arrays.append(new_array(ROWS, [None], children=[data.value]))
    assert refusal(data) == "the data: an array of 1 columns; expected 2 after its schema"


@pytest.mark.parametrize(
    ("error", "what"),
    [
        ((5, b"the disk is gone"), "the disk is gone"),
        ((5, None), "Input/output error"),  # what the C library says of EIO
        ((5, b""), "Input/output error"),
        ((5, b"\xff"), "Input/output error"),
        ((5, b"two\nlines"), "two?lines"),
        ((-7, None), "Unknown error -7"),
    ],
)
def test_a_stream_that_fails(error: tuple[int, bytes | None], what: str) -> None:
    data = texts()
    data.error = error
    assert refusal(data) == "the data can't be read: " + what


def test_a_stream_that_fails_without_a_way_to_say_why() -> None:
    data = texts()
    data.error = (5, b"the disk is gone")
    data.stream.get_last_error = GET_LAST_ERROR()
    assert refusal(data) == "the data can't be read: Input/output error"


def test_columns_that_nobody_names_may_lie() -> None:
    data = texts()
    data.group.length = 1
    data.group.buffers[1] = None
    assert tarn.analyze(data, one_sample="v", tests="runs")[0].n == ROWS


def test_a_look_at_broken_data() -> None:
    data = texts()
    data.group.length = 3
    with pytest.raises(tarn.InputError, match='^column "g": an array of 3 values; expected 4, as the rows need$'):
        tarn.look(data)


def test_buffers_may_stand_anywhere() -> None:
    """An address that is no multiple of the width of a number."""
    data = texts()
    moved = ctypes.create_string_buffer(b"\0" + struct.pack("4d", 1, 4, 2, 8), 33)
    data.value.buffers[1] = ctypes.addressof(moved) + 1
    offsets = ctypes.create_string_buffer(b"\0" + struct.pack("5i", 0, 1, 2, 3, 4), 21)
    data.group.buffers[1] = ctypes.addressof(offsets) + 1
    statistic = compare(data).statistic
    assert statistic is not None and not math.isnan(statistic) and statistic in (1, 3)
