"""The two errors of the package, and the words of the command as those of the package."""

from __future__ import annotations

import contextlib
import re
from collections.abc import Iterator

from . import _binding


class InputError(ValueError):
    """A data frame, an argument or a file that can't be what it should be.

    The text is one line: what, where, what was expected, and the near name where there is one.
    """


class EngineError(RuntimeError):
    """A run that failed.

    Attributes
    ----------
    code : int
        The code of the engine, 0 where it has none; `tarn.explain` says what it means.
    sentence : str
        What happened, as the text of the error says it, too.
    """

    def __init__(self, sentence: str, code: int = 0) -> None:
        super().__init__(sentence)
        self.code = code
        self.sentence = sentence

    def __reduce__(self) -> tuple[type[EngineError], tuple[str, int]]:
        return EngineError, (self.sentence, self.code)


_OPTION = re.compile(r"--([a-z]+(?:-[a-z]+)*)(:?)")
# An order, ready to copy, at the end of a sentence: the fields, and the categories from the lowest to the highest.
_ORDER = re.compile(r"--order '?([^=' ]+)=([^']*)'?$")
# Fields, ready to copy.
_FIELDS = re.compile(
    r"--(one-sample|related|independent|nominal|ordinal|continuous) (?!with |or |and )"
    r"([^\s\"'`,;]+(?:,[^\s\"'`,;]+)*)(?=$|,|;| beside)"
)
_RENAMED = {"weight": "weights", "by": "group"}


def in_words_of_python(text: str) -> str:
    """Names the arguments of the package where a sentence names the options of the command."""

    def argument(match: re.Match[str]) -> str:
        name = match.group(1).replace("-", "_")
        return _RENAMED.get(name, name) + (match.group(2) or "=")

    def order(match: re.Match[str]) -> str:
        categories = ", ".join(word if word == ".." else f'"{word}"' for word in match.group(2).split(","))
        return "order={" + ", ".join(f'"{field}": [{categories}]' for field in match.group(1).split(",")) + "}"

    def fields(match: re.Match[str]) -> str:
        names = [f'"{name}"' for name in match.group(2).split(",")]
        return match.group(1).replace("-", "_") + "=" + (names[0] if len(names) == 1 else f"[{', '.join(names)}]")

    if "--" not in text and "tarn " not in text:
        return text
    text = _OPTION.sub(argument, _FIELDS.sub(fields, _ORDER.sub(order, text)))
    return text.replace("tarn tests lists", "tarn.tests() lists").replace("tarn explain NAME", "tarn.explain(name)")


# How the interpreter says that there was no memory for a lock, which an import takes, and each file that it reads.
_NO_LOCK = "can't allocate "


@contextlib.contextmanager
def errors_of_the_package() -> Iterator[None]:
    """Turns what the binding raises into the errors of the package."""
    try:
        yield
    except _binding.InputMistake as mistake:
        raise InputError(in_words_of_python(str(mistake))) from None
    except RuntimeError as failure:
        if isinstance(failure, EngineError):
            raise
        if str(failure).startswith(_NO_LOCK):
            raise MemoryError(str(failure)) from None
        raise EngineError(str(failure)) from None
