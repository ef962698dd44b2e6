"""What a call asks for: its arguments, checked, as the request that the binding takes."""

from __future__ import annotations

import json
import math
import numbers
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
_FIELD_LISTS = ("one_sample", "related", "independent", "nominal", "ordinal", "continuous")
_TEXT_LISTS = ("tests", "success", "distribution")
_FIELDS = ("group", "case_id", "weights")
_NUMBERS = ("alpha", "confidence", "test_value", "cut_point", "probability", "outliers")
_COUNTS = ("monte_carlo", "seed", "threads")
_FLAGS = ("continuity", "exact", "brief", "as_defined", "descending")


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
    progress: Any
    order: Mapping[str, Sequence[Any]] | None


def make_request(arguments: Mapping[str, Any]) -> dict[str, Any]:
    """Checks arguments by their names and kinds, and leaves out what was not given.

    Raises
    ------
    InputError
        For an argument of another kind, or a word that is none.
    """
    request: dict[str, Any] = {}
    for name, value in arguments.items():
        if value is not None:
            request[name] = _checked(name, value)
    return request


def as_json(request: Mapping[str, Any]) -> str:
    return json.dumps(request, ensure_ascii=False)


def fields_of(request: Mapping[str, Any]) -> set[str]:
    """All fields that a request speaks of."""
    fields = {request[name] for name in _FIELDS if name in request}
    for name in _FIELD_LISTS:
        fields.update(request.get(name, ()))
    fields.update(request.get("order", ()))
    return fields


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
    if name in _FLAGS:
        return _flag(name, value)
    if name == "order":
        return _order(value)
    raise InputError(f"{name}= is no argument{_near(name, Options.__annotations__)}")


def _near(word: str, known: Sequence[str] | Mapping[str, Any]) -> str:
    import difflib  # a mistake alone needs it

    near = difflib.get_close_matches(word, list(known), 1)
    return f"; did you mean {near[0]}?" if near else "; expected one of " + ", ".join(known)


def _word(name: str, value: Any) -> str:
    if isinstance(value, str) and value in _WORDS[name]:
        return value
    raise InputError(f"{name}={value!r}{_near(str(value), _WORDS[name])}")


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
        raise InputError(f"{name}={value!r}; expected a number")
    return float(value)


def _count(name: str, value: Any) -> int:
    least = 1 if name == "threads" else 0
    if isinstance(value, bool) or not isinstance(value, numbers.Integral) or not least <= int(value) < 2**63:
        raise InputError(f"{name}={value!r}; expected a whole number from {least} on")
    return min(int(value), 2**31) if name == "threads" else int(value)


def _flag(name: str, value: Any) -> bool:
    if isinstance(value, bool):
        return value
    raise InputError(f"{name}={value!r}; expected True or False")


def _order(value: Any) -> dict[str, list[str]]:
    if not isinstance(value, Mapping):
        raise InputError(
            f'order= is of type {type(value).__name__}; expected a dict like {{"dose": ["low", "high"]}}, from the lowest up'
        )
    return {
        _field("order", field): [_text_of("order", category) for category in _listed("order", categories)]
        for field, categories in value.items()
    }
