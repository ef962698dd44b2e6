"""What a call asks for: its arguments, checked, as the request that the binding takes."""

from __future__ import annotations

import json
import math
import numbers
import re
from collections.abc import Mapping, Sequence
from typing import Any, Literal, TypedDict

from ._errors import InputError

Fields = str | Sequence[str]
Alternative = Literal["two-sided", "less", "greater"]
Zeros = Literal["drop", "pratt", "split"]
Adjust = Literal["holm", "hochberg", "hommel", "bh", "by", "bonferroni", "none"]
Like = Literal["r", "scipy"]
Compare = Literal["pairwise", "stepwise"]
Missing = Literal["analysis", "listwise"]

_WORDS: dict[str, tuple[str, ...]] = {
    "alternative": ("two-sided", "less", "greater"),
    "zeros": ("drop", "pratt", "split"),
    "adjust": ("holm", "hochberg", "hommel", "bh", "by", "bonferroni", "none"),
    "like": ("r", "scipy"),
    "compare": ("pairwise", "stepwise"),
    "missing": ("analysis", "listwise"),
}
_FIELD_LISTS = frozenset({"one_sample", "related", "independent", "nominal", "ordinal", "continuous"})
_TEXT_LISTS = frozenset({"tests", "success", "distribution"})
_FIELDS = frozenset({"group", "case_id", "weights", "split", "within", "id"})
_TEXTS = {
    "formula": 'a formula, like "score ~ arm"',
    "where": 'a condition, like "age > 40"',
    "against": "a category of the groups or a column",
}
_NUMBERS = frozenset(
    {"alpha", "confidence", "test_value", "probability", "outliers", "mean", "sd", "min", "max", "cut_point"}
)
_COUNTS = frozenset({"monte_carlo", "seed", "threads"})
_FLAGS = frozenset({"continuity", "exact", "brief", "as_defined", "descending"})
_SIZE = re.compile(r"(\d+(?:\.\d+)?)([KMGT])")
_WORDS_OF_FIELDS = {"reference": '{"arm": "placebo"}', "label": '{"hours": "Hours of sleep"}'}


class Options(TypedDict, total=False):
    """The arguments that the function of each test takes, with the meaning that they have in `tarn.analyze`."""

    alternative: Alternative
    continuity: bool | None
    zeros: Zeros | None
    adjust: Adjust | None
    exact: bool
    monte_carlo: int | None
    seed: int
    like: Like | None
    compare: Compare | None
    weights: Any
    missing: Missing
    alpha: float
    confidence: float
    brief: bool
    as_defined: bool
    threads: int | None
    memory: int | str | None
    progress: Any
    order: Mapping[str, Sequence[Any]] | None
    reference: Mapping[str, Any] | None
    label: Mapping[str, str] | None
    nominal: Fields | None
    ordinal: Fields | None
    continuous: Fields | None
    against: Any
    where: str | None


def make_request(arguments: Mapping[str, Any]) -> dict[str, Any]:
    """Checks arguments by their names and kinds, and leaves out what was not given.

    Raises
    ------
    InputError
        For an argument of another kind, or a word that is none.
    """
    request: dict[str, Any] = {}
    for name, value in arguments.items():
        if value is None:
            continue
        if name == "cut_point" and value == "mean":
            request["cut_at_mean"] = True
        else:
            request[name] = _checked(name, value)
    return request


def as_json(request: Mapping[str, Any]) -> str:
    return json.dumps(request, ensure_ascii=False)


def _checked(name: str, value: Any) -> Any:
    if name in _WORDS:
        return _word(name, value)
    if name in _FIELD_LISTS:
        return [_field(name, each) for each in _listed(name, value)]
    if name in _TEXT_LISTS:
        return [_text_of(name, each) for each in _listed(name, value)]
    if name in _FIELDS:
        return _field(name, value)
    if name in _NUMBERS:
        return _number(name, value)
    if name in _COUNTS:
        return _count(name, value)
    if name == "memory":
        return _bytes(value)
    if name in _FLAGS:
        return _flag(name, value)
    if name in _TEXTS:
        return _text(name, value)
    if name == "order":
        return _order(value)
    if name == "expected":
        return _expected(value)
    if name in _WORDS_OF_FIELDS:
        return _words_of_fields(name, value)
    raise InputError(f"{name}= is no argument{near_name(name, Options.__annotations__)}")


# Of more names a message tells their number.
_MOST_NAMED = 40


def near_name(word: str, known: Sequence[str] | Mapping[str, Any]) -> str:
    """The end of a message on a word that is none of the known ones: the one that was meant, or all of them."""
    import difflib  # a mistake alone needs it

    near = difflib.get_close_matches(word, list(known), 1)
    if near:
        return f"; did you mean {near[0]}?"
    return "; expected one of " + (", ".join(known) if len(known) <= _MOST_NAMED else f"{len(known):,} others")


def _word(name: str, value: Any) -> str:
    if isinstance(value, str) and value in _WORDS[name]:
        return value
    raise InputError(f"{name}={value!r}{near_name(str(value), _WORDS[name])}")


def _field(name: str, value: Any) -> str:
    if not isinstance(value, (str, numbers.Integral)) or isinstance(value, bool):
        raise InputError(f"{name}= is of type {type(value).__name__}; expected the name of a column")
    text = _text_of(name, value)
    if not text or any(ord(letter) < 0x20 for letter in text):
        raise InputError(f"{name}={text!r}; expected the name of a column, without control characters")
    return text


def _listed(name: str, value: Any) -> list[Any]:
    """One name by itself is a list, too."""
    if isinstance(value, (str, numbers.Real)):
        return [value]
    if isinstance(value, Mapping) or not hasattr(value, "__iter__"):
        raise InputError(f"{name}= is of type {type(value).__name__}; expected a name or a list of names")
    return list(value)


def _text_of(name: str, value: Any) -> str:
    """A name or a category as a text, as which it is looked up."""
    text = str(value).lower() if isinstance(value, bool) else str(value)
    if not is_unicode(text):
        raise InputError(f"{name}={text!r}; expected a text without half a surrogate pair")
    return text


def is_unicode(text: str) -> bool:
    """Whether a text can go to other programs: Python lets halves of surrogate pairs stand in one."""
    try:
        text.encode()
    except UnicodeEncodeError:
        return False
    return True


def _number(name: str, value: Any) -> float:
    if isinstance(value, bool) or not isinstance(value, numbers.Real) or not math.isfinite(value):
        raise InputError(f"{name}={value!r}; expected a number" + (' or "mean"' if name == "cut_point" else ""))
    return float(value)


def _count(name: str, value: Any) -> int:
    least = 1 if name == "threads" else 0
    if isinstance(value, bool) or not isinstance(value, numbers.Integral) or not least <= int(value) < 2**63:
        raise InputError(f"{name}={value!r}; expected a whole number from {least} on")
    return min(int(value), 2**31) if name == "threads" else int(value)


def _bytes(value: Any) -> int:
    """A size as the command takes it, or its bytes."""
    size = _SIZE.fullmatch(value) if isinstance(value, str) else None
    if size is not None:
        value = int(float(size[1]) * 1024 ** ("KMGT".index(size[2]) + 1))
    if isinstance(value, bool) or not isinstance(value, numbers.Integral) or not 0 < int(value) < 2**63:
        raise InputError(f"memory={value!r}; expected a size like \"8G\" or \"512M\", or a number of bytes")
    return int(value)


def _flag(name: str, value: Any) -> bool:
    if isinstance(value, bool):
        return value
    raise InputError(f"{name}={value!r}; expected True or False")


def _text(name: str, value: Any) -> str:
    if name == "against" and isinstance(value, (bool, numbers.Real)):
        value = str(value).lower() if isinstance(value, bool) else str(value)
    if not isinstance(value, str):
        raise InputError(f"{name}= is of type {type(value).__name__}; expected {_TEXTS[name]}")
    if not value.strip():
        raise InputError(f"{name}={value!r}; expected {_TEXTS[name]}")
    return _text_of(name, value)


def _items(name: str, value: Any, example: str) -> list[tuple[Any, Any]]:
    """What a dict has."""
    if not isinstance(value, Mapping):
        raise InputError(f"{name}= is of type {type(value).__name__}; expected a dict like {example}")
    return list(value.items())


def _order(value: Any) -> dict[str, list[str]]:
    return {
        _field("order", field): [_text_of("order", category) for category in _listed("order", categories)]
        for field, categories in _items("order", value, '{"dose": ["low", "high"]}, from the lowest up')
    }


def _expected(value: Any) -> dict[str, float]:
    items = _items("expected", value, '{"a": 0.2, "b": 0.8}, each category with its share or its count')
    return {_text_of("expected", category): _number("expected", share) for category, share in items}


def _words_of_fields(name: str, value: Any) -> dict[str, str]:
    return {_field(name, field): _text_of(name, word) for field, word in _items(name, value, _WORDS_OF_FIELDS[name])}
