"""Results, read from what the host makes of a result document. Nothing is computed here."""

from __future__ import annotations

import functools
import html
import json
import os
import zlib
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from dataclasses import dataclass
from typing import Any, Protocol, TypeVar

from . import _binding
from ._errors import InputError, errors_of_the_package, in_words_of_python
from ._frames import Schema, make_frame, number_of
from ._plot import Plot


@dataclass(frozen=True)
class Interval:
    """An estimate between its bounds, of which there may be none."""

    estimate: float | None
    lower: float | None
    upper: float | None
    method: str | None


@dataclass(frozen=True)
class Effect:
    """An effect size with its interval.

    Attributes
    ----------
    key : str
        A stable name, such as "rank-biserial".
    label : str
        The name for a reader, with the direction.
    first, second : str or None
        The two samples of a pair of several; None where the effect is that of the whole test.
    value, lower, upper : float or None
        The effect and the bounds of its interval.
    method : str or None
        How the interval is made, by author and year.
    """

    key: str
    label: str
    first: str | None
    second: str | None
    value: float | None
    lower: float | None
    upper: float | None
    method: str | None


@dataclass(frozen=True)
class Significance:
    """One of the significances of a test.

    Attributes
    ----------
    kind : str
        "asymptotic", "exact", "monte-carlo", "fisher" or "continuity-corrected".
    alternative : str
        "two-sided", "one-sided", "less" or "greater".
    value, statistic : float or None
        The significance and the statistic that it belongs to.
    lower, upper : float or None
        The interval of an estimated one.
    is_lower_bound : bool
        Whether the true one is larger.
    decides : bool
        Whether the decision of the test rests on it.
    method : str or None
        How it was found.
    """

    kind: str
    alternative: str
    value: float | None
    statistic: float | None
    lower: float | None
    upper: float | None
    is_lower_bound: bool
    decides: bool
    method: str | None


@dataclass(frozen=True)
class Message:
    """What a test has to say: its kind ("error", "warning", "helpMessage", "remark"), its code and its text."""

    kind: str
    code: int | None
    text: str


class TestResult:
    """The result of one test. It unpacks as ``statistic, pvalue``.

    Attributes
    ----------
    name, title, family : str
        The name of the test in `tarn.tests`, its title, and "one-sample", "related" or "independent".
    fields : tuple of str
        The columns that were tested.
    group : str or None
        The column of the groups.
    statistic, pvalue : float or None
        The significance that was asked for, such as the exact one, and its statistic; else those that decide.
    df : float or None
        Degrees of freedom.
    n, n_total : float or None
        How many cases the test took, and how many there are; sums of their weights.
    decision : str or None
        "reject" or "retain", by the significance that decides; None where nothing is decided.
    effect : Effect or None
        The first one of `effects`.
    interval : Interval or None
        That of an estimate, or else of `effect`.
    method : str or None
        The convention of the numbers in one line.
    conclusion : str or None
        One sentence that claims no more than the test does.
    direction : str or None
        Which sample signed numbers take from which.
    call : str or None
        With ``like=``, the call of the other system that gives these numbers.
    effects, intervals, significances, messages : tuple
        All of them.
    result : Result
        The one that it is of.
    """

    # Read from the result when one of them is asked for.
    name: str
    title: str
    family: str
    fields: tuple[str, ...]
    group: str | None
    statistic: float | None
    pvalue: float | None
    df: float | None
    n: float | None
    n_total: float | None
    decision: str | None
    method: str | None
    conclusion: str | None
    direction: str | None
    call: str | None
    effects: tuple[Effect, ...]
    intervals: tuple[Interval, ...]
    significances: tuple[Significance, ...]
    messages: tuple[Message, ...]
    result: Result

    def __init__(self, result: Result, place: int, **known: Any) -> None:
        self.__dict__.update(result=result, _place=place, **known)

    _place: int

    def __getattr__(self, name: str) -> Any:
        if name not in TestResult.__annotations__ or "_place" not in self.__dict__:
            raise AttributeError(f"a result of a test has no {name}")
        self.__dict__.update(self.result._read_test(self._place))
        return self.__dict__[name]

    def __setattr__(self, name: str, value: object) -> None:
        raise AttributeError(f"a result stays as it is: {name} can't be set")

    def __delattr__(self, name: str) -> None:
        raise AttributeError(f"a result stays as it is: {name} can't be deleted")

    def __reduce__(self) -> tuple[Any, ...]:
        return TestResult, (self.result, self._place)

    def __eq__(self, other: object) -> bool:
        if not isinstance(other, TestResult):
            return NotImplemented
        return self.result._read_test(self._place) == other.result._read_test(other._place)

    def __hash__(self) -> int:
        return hash((self.name, self.fields, self.statistic, self.pvalue))

    def __repr__(self) -> str:
        shown = ("name", "fields", "group", "statistic", "pvalue", "df", "n", "decision")
        return f"TestResult({', '.join(f'{name}={getattr(self, name)!r}' for name in shown)})"

    def __iter__(self) -> Iterator[float | None]:
        return iter((self.statistic, self.pvalue))

    def plot(self) -> Plot:
        """The plot of the test, drawn from the cases that were analysed; it raises as `Result.plot` does."""
        return self.result._plot(self._place)

    def explain(self) -> str:
        """How the numbers of the test came about, as text; it raises as `Result.explain` does."""
        return self.result._explanation(self._place)

    @property
    def effect(self) -> Effect | None:
        """The first one of the effects."""
        return self.effects[0] if self.effects else None

    @property
    def interval(self) -> Interval | None:
        """That of an estimate, or else of the effect."""
        if self.intervals:
            return self.intervals[0]
        effect = self.effect
        return None if effect is None else Interval(effect.value, effect.lower, effect.upper, effect.method)


class _Figures(Protocol):
    """A significance with its statistic, as their digits."""

    @property
    def kind(self) -> str: ...
    @property
    def statistic(self) -> str: ...
    @property
    def pvalue(self) -> str: ...


class ReportTexts(Protocol):
    """Where the texts of a result come from."""

    @property
    def document(self) -> str: ...
    @property
    def notes(self) -> list[str]: ...
    @property
    def remarks(self) -> list[str]: ...
    def text(self, is_full: bool, /) -> str: ...
    def json(self) -> str: ...
    def csv(self) -> str: ...
    def in_format(self, format: str, /) -> str: ...
    def has_cases(self) -> bool: ...
    def html(self, request: str, notes: Sequence[str], with_plots: bool, with_steps: bool, /) -> str: ...
    def html_of(self, test: int, id: str, /) -> str: ...
    def svg(self, test: int, /) -> str: ...
    def explanation(self, test: int, /) -> str: ...
    def deciding(self) -> Sequence[_Figures | None]: ...
    def part_count(self) -> int: ...
    def part(self, place: int, /) -> ReportTexts: ...


@dataclass(frozen=True)
class _StoredTexts:
    """The texts of a result that came from another process, where its cases are not."""

    document: str
    notes: list[str]
    remarks: list[str]
    stored: dict[str, str]
    parts: tuple[ReportTexts, ...]

    def text(self, is_full: bool, /) -> str:
        return self.stored["details" if is_full else "text"]

    def json(self) -> str:
        return self.stored["json"]

    def csv(self) -> str:
        return self.stored["csv"]

    def in_format(self, format: str, /) -> str:
        return self.stored[format]

    def has_cases(self) -> bool:
        return False

    def html(self, request: str, notes: Sequence[str], with_plots: bool, with_steps: bool, /) -> str:
        if with_steps:
            raise InputError(
                "the result comes from another process, without its cases; expected to_html(explain=True) where they are"
            )
        return self.stored["html"]

    def html_of(self, test: int, id: str, /) -> str:
        return ""  # the text stands for it

    def svg(self, test: int, /) -> str:
        raise InputError("the result comes from another process, without its cases; expected plot() where they are")

    def explanation(self, test: int, /) -> str:
        raise InputError("the result comes from another process, without its cases; expected explain() where they are")

    def deciding(self) -> Sequence[_Figures | None]:
        return ()  # they stand in the texts, too

    def part_count(self) -> int:
        return len(self.parts)

    def part(self, place: int, /) -> ReportTexts:
        return self.parts[place]


def _notes_of(texts: ReportTexts) -> list[str]:
    return [in_words_of_python(note) for note in texts.notes]


def _stored(texts: ReportTexts, request: str) -> _StoredTexts:
    stored = {
        "text": texts.text(False), "details": texts.text(True), "json": texts.json(), "csv": texts.csv(),
        "html": texts.html(request, _notes_of(texts), False, False), **{name: texts.in_format(name) for name in ("md", "latex", "typst", "apa")},
    }  # fmt: skip
    parts = tuple(_stored(texts.part(place), request) for place in range(texts.part_count()))
    return _StoredTexts(texts.document, texts.notes, texts.remarks, stored, parts)


_OF_TEST: Schema = {"number": int, "name": str, "fields": str}
_SCHEMAS: dict[str, Schema] = {
    "tests": {
        **_OF_TEST, "title": str, "family": str, "group": str, "n": float, "n_total": float, "statistic": float,
        "standard_error": float, "standardized": float, "df": float, "pvalue": float, "kind": str, "decision": str,
        "p_holm": float, "p_bh": float, "p_adjusted": float, "direction": str, "conclusion": str,
    },
    "comparisons": {
        **_OF_TEST, "first": str, "second": str, "statistic": float, "standard_error": float, "standardized": float,
        "pvalue": float, "adjusted_pvalue": float, "p_adjusted": float,
    },
    "groups": {
        **_OF_TEST, "sample": str, "n": float, "missing": float, "q1": float, "median": float, "q3": float,
        "median_lower": float, "median_upper": float, "letters": str,
    },
    "effects": {
        **_OF_TEST, "key": str, "label": str, "first": str, "second": str, "value": float, "lower": float,
        "upper": float, "method": str,
    },
    "intervals": {**_OF_TEST, "method": str, "estimate": float, "lower": float, "upper": float, "confidence": float},
    "subsets": {**_OF_TEST, "subset": int, "members": str, "statistic": float, "pvalue": float, "adjusted_pvalue": float},
    "messages": {**_OF_TEST, "kind": str, "code": int, "text": str},
}  # fmt: skip


# With more tests than that a notebook shows their summary alone.
_MOST_BLOCKS = 20
# What a frame of a result in parts has besides.
_OF_PART: Schema = {"part": str}


class Result:
    """The result of an analysis, which stays as it is.

    ``result["mann-whitney"]`` is one of its tests, by name, or by name and field where there are several;
    ``result[0]`` the first one. Its ``repr`` is the report for a reader; notebooks show it with plots. Frames are of the library that the data came
    in: pandas, polars, and others by narwhals; of data that came in none they are tables of pyarrow, and without it
    dicts of columns. In frames of a result in parts (``split=``) a column "part" says which one a row is of.
    """

    def __init__(
        self, texts: ReportTexts, library: str = "builtins", asked: Mapping[str, Any] | None = None,
        has_own_weights: bool = False,
    ) -> None:  # fmt: skip
        self.__dict__.update(
            _texts=texts, _library=library, _asked=None if asked is None else dict(asked), _has_own_weights=has_own_weights
        )

    _texts: ReportTexts
    _library: str
    _asked: dict[str, Any] | None
    _has_own_weights: bool

    def __setattr__(self, name: str, value: object) -> None:
        raise AttributeError(f"a result stays as it is: {name} can't be set")

    def __delattr__(self, name: str) -> None:
        raise AttributeError(f"a result stays as it is: {name} can't be deleted")

    def __reduce__(self) -> tuple[Any, ...]:
        return Result, (_stored(self._texts, self._call), self._library, self._asked, self._has_own_weights)

    # ---- What was asked ----

    @property
    def request(self) -> dict[str, Any]:
        """The arguments of `tarn.analyze` that made it, those that were given; empty for what came in other ways."""
        asked = dict(self._asked or {})
        if asked.pop("cut_at_mean", False):
            asked["cut_point"] = "mean"
        return asked

    @property
    def record(self) -> dict[str, Any] | None:
        """How the result was made; None for one of `tarn.load`.

        It has the "version" and the "commit" of the program, the "libraries" that numbers go through, the "request", the
        "arithmetic", the "data" as the tests saw it, with its "sha256" and that of each of its "fields", and who was
        "left_out" and why. The hash is the same for the same values in any kind of data frame, and in a file that
        the command reads. It is None once somebody has written to the data. A result in parts has what all of them have in
        common; each of `parts` has its own.

        Examples
        --------
        >>> result = tarn.analyze({"x": [3, 5, None, 6], "g": ["a", "a", "b", "b"]}, "x ~ g", tests="mann-whitney")
        >>> result.record["left_out"]["tests"][0]["missing"]
        1
        """
        record: dict[str, Any] | None = self._json["record"]
        return record

    @property
    def _call(self) -> str:
        """The call that makes it again, "" for what came in other ways."""
        if self._asked is None:
            return ""
        words = [repr(value) if name == "formula" else f"{name}={value!r}" for name, value in self.request.items()]
        words.sort(key=lambda word: word[0] not in "'\"")  # the formula first
        return f"tarn.analyze({', '.join(['data', *words, *(['weights=weights'] if self._has_own_weights else [])])})"

    def rerun(self, data: Any, **changes: Any) -> Result:
        """Analyses other data in the same way.

        Parameters
        ----------
        data : data frame, dict of columns or NumPy array
            As in `tarn.analyze`.
        **changes
            Arguments of `tarn.analyze` that are to be others, ``None`` for one that isn't to be there.

        Raises
        ------
        InputError
            As `tarn.analyze` does; and where the result wasn't made by it, or with weights that no column has.

        Examples
        --------
        >>> first = tarn.analyze({"x": [1, 2, 3, 4, 6, 9]}, "x ~ 1", tests="runs")
        >>> first.rerun({"x": [9, 1, 8, 2, 7, 3]})["runs"].statistic
        6.0
        """
        from ._analyze import analyze

        if self._asked is None:
            raise InputError("the result has no request to run again; expected one that tarn.analyze made")
        if self._has_own_weights and "weights" not in changes:
            raise InputError("the weights were not a column of the data; expected weights= with those of the new data")
        return analyze(data, **{**self.request, **changes})

    # ---- Parts ----

    @functools.cached_property
    def parts(self) -> dict[str, Result]:
        """With ``split=`` the result of each category that could be tested; otherwise there are none."""
        parts = self._json.get("parts", [])
        return {
            part["category"]: Result(self._texts.part(place), self._library, self._asked, self._has_own_weights)
            for place, part in enumerate(parts)
            if part["result"] is not None
        }

    # ---- Tests ----

    def __len__(self) -> int:
        return len(self._tests)

    def __iter__(self) -> Iterator[TestResult]:
        return iter(self._tests)

    def __getitem__(self, key: int | str | tuple[str, str]) -> TestResult:
        if isinstance(key, int):
            return self._tests[key]
        name, wanted = key if isinstance(key, tuple) else (key, None)
        found = [test for test in self._tests if test.name == name and (wanted is None or wanted in test.fields)]
        if len(found) == 1:
            return found[0]
        if found and self.parts:
            raise KeyError(f"{len(found)} tests are {name}: take that of a part, like parts[{next(iter(self.parts))!r}]")
        if found:
            places = ", ".join(str(place) for place, test in enumerate(self._tests) if test in found)
            raise KeyError(f"{len(found)} tests are {name}: name the field, too, or take one by its place: {places}")
        names = ", ".join(dict.fromkeys(test.name for test in self._tests))
        raise KeyError(f"the result has no test {key}; it has {names}")

    @functools.cached_property
    def _json(self) -> dict[str, Any]:
        read: dict[str, Any] = json.loads(self._texts.json())
        return read

    @functools.cached_property
    def _results(self) -> list[tuple[str | None, dict[str, Any]]]:
        """The results in JSON, one, or those of the parts by their categories."""
        if "parts" not in self._json:
            return [(None, self._json)]
        return [(part["category"], part["result"]) for part in self._json["parts"] if part["result"] is not None]

    @functools.cached_property
    def _tests(self) -> tuple[TestResult, ...]:
        deciding = () if _makes_a_choice(self._asked or {}) else self._texts.deciding()
        if deciding:
            return tuple(TestResult(self, place, **_known(figures)) for place, figures in enumerate(deciding))
        return tuple(TestResult(self, place) for place in range(len(self._tests_in_json)))

    @functools.cached_property
    def _tests_in_json(self) -> list[dict[str, Any]]:
        return [test for _, result in self._results for test in result["tests"]]

    def _read_test(self, place: int) -> dict[str, Any]:
        return _read_test(self._tests_in_json[place], self._asked or {})

    # ---- Frames ----

    @property
    def tests(self) -> Any:
        """A row for each test, with the significance that decides and those adjusted for the number of tests."""
        return self._frame_of("tests", lambda test: [_test_row(test)])

    @property
    def comparisons(self) -> Any:
        """A row for each pair of samples that was compared."""
        return self._frame_of("comparisons", _pair_rows)

    @property
    def groups(self) -> Any:
        """A row for each group or field of a test: its size, quartiles and the interval of its median."""
        return self._frame_of("groups", _group_rows)

    @property
    def effects(self) -> Any:
        """A row for each effect size."""
        return self._frame_of("effects", lambda test: _supplement(test).get("effects", []))

    @property
    def intervals(self) -> Any:
        """A row for each interval of an estimate, at the level of confidence in percent."""
        level = {"confidence": self._results[0][1]["confidence_level"] if self._results else None}
        return self._frame_of("intervals", lambda test: [{**row, **level} for row in test["intervals"]])

    @property
    def subsets(self) -> Any:
        """A row for each homogeneous subset that a stepwise search found."""
        return self._frame_of("subsets", _subset_rows)

    @property
    def messages(self) -> Any:
        """A row for each error, warning and remark of a test, then those on the whole run, which have no number."""
        rows = self._rows_of(lambda test: [vars(message) for message in _messages(test)])
        rows += [{"kind": "warning", "text": in_words_of_python(text)} for text in self._texts.remarks]
        rows += [{"kind": "note", "text": text} for text in self.notes]
        for part in self._json.get("parts", []):
            rows += [{"part": part["category"], "kind": "note", "text": in_words_of_python(note)} for note in part["notes"]]
            if part["mistake"] is not None:
                rows.append({"part": part["category"], "kind": "error", "text": in_words_of_python(part["mistake"])})
        return self._frame("messages", rows)

    @property
    def notes(self) -> list[str]:
        """What a reader should know of the data, as sentences."""
        return _notes_of(self._texts)

    def _rows_of(self, rows_of: Callable[[Mapping[str, Any]], Iterable[Mapping[str, Any]]]) -> list[dict[str, Any]]:
        return [
            {**row, **_common(number, test), "part": part}
            for part, result in self._results
            for number, test in enumerate(result["tests"], 1)
            for row in rows_of(test)
        ]

    def _frame_of(self, name: str, rows_of: Callable[[Mapping[str, Any]], Iterable[Mapping[str, Any]]]) -> Any:
        return self._frame(name, self._rows_of(rows_of))

    def _frame(self, name: str, rows: list[dict[str, Any]]) -> Any:
        schema = {**_OF_PART, **_SCHEMAS[name]} if "parts" in self._json else _SCHEMAS[name]
        return make_frame(self._library, schema, rows)

    # ---- Texts ----

    def __repr__(self) -> str:
        return self.to_text().rstrip("\n")

    def _repr_html_(self) -> str:
        blocks = [self._texts.html_of(place, f"{self._id}-{place + 1}") for place in range(self._count_of_blocks)]
        if not all(blocks) or not blocks:
            return f"<pre>{html.escape(repr(self))}</pre>"
        sentences = [f"Note: {note}" for note in self.notes]
        if not self._texts.has_cases():
            sentences.append("There are no plots: the cases are not there as they were analysed.")
        notes = [f'<p class="quiet">{html.escape(sentence)}</p>\n' for sentence in sentences]
        return f'<style>{_binding.style_sheet()}</style>\n<div class="tarn">\n{"".join(blocks + notes)}</div>\n'

    @property
    def _count_of_blocks(self) -> int:
        """How many tests a notebook shows one by one: none where the text is easier to read."""
        return len(self) if len(self) <= _MOST_BLOCKS and not self.parts else 0

    @functools.cached_property
    def _id(self) -> str:
        """What identifiers begin with in a notebook that shows several results."""
        return f"tarn-{zlib.crc32(self._texts.json().encode()):08x}"

    def plot(self, key: int | str | tuple[str, str] | None = None) -> Plot:
        """The plot of a test, drawn from the cases that were analysed.

        Parameters
        ----------
        key : int, str or tuple of str
            The test as in ``result[key]``; not needed where there is one alone.

        Returns
        -------
        Plot
            Notebooks show it; `Plot.save` writes it.

        Raises
        ------
        InputError
            Where nothing can be drawn: of a test that ended in an error; of results of `tarn.load`, of `tarn.run` and of
            another process, which have no cases; where the data was written to since.

        Examples
        --------
        >>> result = tarn.analyze({"x": [3, 5, 4, 6], "g": ["a", "a", "b", "b"]}, "x ~ g", tests="mann-whitney")
        >>> result.plot().svg.startswith("<svg ")
        True
        """
        if key is None and len(self) != 1:
            raise InputError(f"the result has {len(self)} tests; expected the name or the place of one of them")
        return self[0 if key is None else key].plot()

    def _plot(self, place: int) -> Plot:
        with errors_of_the_package():
            return Plot(self._texts.svg(place))

    def explain(self, key: int | str | tuple[str, str] | None = None) -> str:
        """How the numbers of the tests came about: ranks, sums, and each formula with its numbers put in.

        Parameters
        ----------
        key : int, str or tuple of str
            A test as in ``result[key]``; all of them if not given.

        Returns
        -------
        str
            The steps of each test, which a pocket calculator can follow, and whether they give the numbers of the
            result.

        Raises
        ------
        InputError
            Of results of `tarn.load`, of `tarn.run` and of another process, which have no cases; where the data was
            written to since.

        Examples
        --------
        >>> result = tarn.analyze({"x": [3, 5, 4, 6], "g": ["a", "a", "b", "b"]}, "x ~ g", tests="mann-whitney")
        >>> print(result.explain().splitlines()[12])
              U             R1 - n1 (n1 + 1) / 2 = 4 - 2 * 3 / 2 = 1
        """
        if key is not None:
            return self[key].explain()
        return "\n".join(self._explanation(place) for place in range(len(self)))

    def _explanation(self, place: int) -> str:
        with errors_of_the_package():
            return self._texts.explanation(place)

    def to_html(self, plots: bool = True, explain: bool = False) -> str:
        """A page for a browser, which stands by itself: it needs no script and fetches nothing.

        Parameters
        ----------
        plots : bool
            Whether each test has its plot, where its cases are there as they were analysed.
        explain : bool
            Whether each test says how its numbers came about, as `explain` does; the page has it folded until a reader
            opens it, and shows it on paper.

        Raises
        ------
        InputError
            With `explain`, where `explain` raises it.

        Examples
        --------
        >>> result = tarn.analyze({"x": [3, 5, 4, 6], "g": ["a", "a", "b", "b"]}, "x ~ g", tests="mann-whitney")
        >>> "How the numbers came about" in result.to_html(explain=True)
        True
        """
        with errors_of_the_package():
            return self._texts.html(self._call, self.notes, plots, explain)

    def to_json(self) -> str:
        """The whole result as JSON, in the format that the command writes."""
        return self._texts.json()

    def to_csv(self) -> str:
        """The tests as tidy comma-separated values."""
        return self._texts.csv()

    def to_xml(self) -> str:
        """The result document of the engine, which `tarn.load` reads again.

        Raises
        ------
        InputError
            For a result in parts, which have a document each, and for several columns of a frame of Dask.
        """
        if "parts" in self._json:
            raise InputError("a result in parts is no one document; expected to_xml() of one of its parts")
        if not self._texts.document:
            raise InputError("the result rests on several counts and is no one document; expected that of a single column")
        return self._texts.document

    def to_text(self, details: bool = False) -> str:
        """The report for a reader; with `details` whatever is known of each test, in the engine's own terms."""
        return "".join(in_words_of_python(line) for line in self._texts.text(details).splitlines(keepends=True))

    def to_markdown(self) -> str:
        """The tables of the report in Markdown, as GitHub and Pandoc read them."""
        return self._texts.in_format("md")

    def to_latex(self) -> str:
        """The same in LaTeX, with the package booktabs; its first lines say what a preamble needs."""
        return self._texts.in_format("latex")

    def to_typst(self) -> str:
        """The same in Typst."""
        return self._texts.in_format("typst")

    def to_apa(self) -> str:
        """A paragraph for each test in the style of the American Psychological Association."""
        return self._texts.in_format("apa")

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the result to a file, whole or not at all.

        Parameters
        ----------
        path : str or path
            Its suffix says in which form: ``.html``, ``.xml`` (the result document), ``.json``, ``.csv``, ``.txt``,
            ``.md`` (Markdown), ``.tex`` (LaTeX), ``.typ`` (Typst), or ``.svg`` (the plot of a single test).

        Raises
        ------
        InputError
            For any other suffix, for a file that can't be written, and as the form itself does.
        """
        name = os.fspath(path)
        makers: dict[str, Callable[[], str]] = {
            ".html": self.to_html, ".xml": self.to_xml, ".json": self.to_json, ".csv": self.to_csv, ".txt": self.to_text,
            ".md": self.to_markdown, ".tex": self.to_latex, ".typ": self.to_typst, ".svg": lambda: self.plot().svg,
        }  # fmt: skip
        suffix = os.path.splitext(name)[1].lower()
        if suffix not in makers:
            *others, last = makers
            raise InputError(f'"{name}": the suffix is "{suffix}"; expected {", ".join(others)} or {last}')
        with errors_of_the_package():
            _binding.write(name, makers[suffix]())


# ---- From JSON ----


def _supplement(test: Mapping[str, Any]) -> dict[str, Any]:
    return test["supplement"] or {}


def _common(number: int, test: Mapping[str, Any]) -> dict[str, Any]:
    return {"number": number, "name": test["name"], "fields": ", ".join(test["fields"])}


def _leading(test: Mapping[str, Any]) -> tuple[dict[str, Any], dict[str, Any]]:
    """The set of statistics that decides and its significance; the first of each where none does."""
    for statistics in test["statistics"]:
        for p in statistics["p_values"]:
            if p["decides"]:
                return statistics, p
    first = test["statistics"][0] if test["statistics"] else {}
    return first, (first.get("p_values") or [{}])[0]


def _test_row(test: Mapping[str, Any]) -> dict[str, Any]:
    statistics, p = _leading(test)
    adjusted = test["adjusted_p"] or {}
    return {
        **test,
        "statistic": p.get("statistic", statistics.get("statistic")),
        "standard_error": statistics.get("standard_error"),
        "standardized": statistics.get("standardized"),
        "df": statistics.get("df"),
        "pvalue": p.get("value"),
        "kind": p.get("kind"),
        "p_holm": adjusted.get("holm"),
        "p_bh": adjusted.get("benjamini_hochberg"),
        "p_adjusted": _supplement(test).get("adjusted_p"),
        "conclusion": _supplement(test).get("conclusion"),
    }


# What a screening says of each test: its row among the tests, the significance that was asked for, its first effect, and
# what else it has to say.
SCREENED: Schema = {
    **_SCHEMAS["tests"], "p_asked": float, "in_family": bool, "effect": str, "effect_label": str, "effect_value": float,
    "effect_lower": float, "effect_upper": float, "message": str,
}  # fmt: skip


def screened_rows(result: Result) -> list[dict[str, Any]]:
    """The tests of a result as rows of a screening, whose significances are not adjusted yet."""
    rows = []
    for place, test in enumerate(result._tests_in_json):
        effect = (_supplement(test).get("effects") or [{}])[0]
        told = [message.text for message in _messages(test) if message.kind in ("error", "warning")]
        row = {
            **_test_row(test), "fields": tuple(test["fields"]), "p_asked": result._read_test(place)["pvalue"],
            "in_family": test["adjusted_p"] is not None, "effect": effect.get("key"), "effect_label": effect.get("label"),
            "effect_value": effect.get("value"), "effect_lower": effect.get("lower"), "effect_upper": effect.get("upper"),
            "message": "; ".join(told) or None, "p_holm": None, "p_bh": None, "p_adjusted": None,
        }  # fmt: skip
        rows.append(row)
    return rows


def _pair_rows(test: Mapping[str, Any]) -> list[dict[str, Any]]:
    pairs = test["comparisons"]["pairs"]
    adjusted = _supplement(test).get("adjusted_pairs") or [None] * len(pairs)
    return [
        {**pair, "pvalue": pair["p"], "adjusted_pvalue": pair["adjusted_p"], "p_adjusted": p}
        for pair, p in zip(pairs, adjusted, strict=True)
    ]


def _subset_rows(test: Mapping[str, Any]) -> list[dict[str, Any]]:
    return [
        {**subset, "subset": number, "members": ", ".join(subset["members"]), "pvalue": subset["p"],
         "adjusted_pvalue": subset["adjusted_p"]}
        for number, subset in enumerate(test["comparisons"]["subsets"], 1)
    ]  # fmt: skip


def _group_rows(test: Mapping[str, Any]) -> list[dict[str, Any]]:
    supplement = _supplement(test)
    if not supplement:  # a stored document has the sizes alone
        return [{"sample": sample["name"], "n": sample["figures"].get("N")} for sample in test["samples"]]
    letters = supplement["letters"]
    return [
        {**sample, "sample": sample["name"], "q1": sample["first_quartile"], "q3": sample["third_quartile"],
         "letters": letters.get(sample["name"])}
        for sample in supplement["samples"]
    ]  # fmt: skip


def _messages(test: Mapping[str, Any]) -> list[Message]:
    messages = [Message(each["kind"], each["code"], each["text"]) for each in test["messages"]]
    remarks = test["remarks"] + _supplement(test).get("remarks", [])
    return messages + [Message("remark", None, in_words_of_python(text)) for text in remarks]


def _significances(test: Mapping[str, Any]) -> tuple[list[Significance], list[Significance]]:
    """Those of the document, and those that were made beside it."""
    of_document = [
        Significance(
            p["kind"], "two-sided" if p["tails"] == 2 else "one-sided", number_of(p["value"]),
            number_of(p["statistic"]), None, None, p["is_lower_bound"], p["decides"], None,
        )
        for statistics in test["statistics"]
        for p in statistics["p_values"]
    ]  # fmt: skip
    supplied = [
        Significance(
            p["kind"], p["alternative"], number_of(p["value"]), number_of(p["statistic"]), number_of(p["lower"]),
            number_of(p["upper"]), False, False, p["method"],
        )
        for p in _supplement(test).get("p_values", [])
    ]  # fmt: skip
    return of_document, supplied


_CHOICES = ("continuity", "zeros", "like", "test_value")


def _is_choice(asked: Mapping[str, Any]) -> bool:
    return asked.get("alternative", "two-sided") != "two-sided" or any(name in asked for name in _CHOICES)


class _OfKind(Protocol):
    """A significance of any form."""

    @property
    def kind(self) -> str: ...


_Chosen = TypeVar("_Chosen", bound=_OfKind)


def _asked_for(supplied: Sequence[_Chosen], asked: Mapping[str, Any]) -> _Chosen | None:
    """The one among those beside the document that the arguments of the call ask for, as the report takes it, too."""
    by_kind = {p.kind: p for p in reversed(supplied)}
    is_choice = _is_choice(asked)
    if asked.get("exact") and "exact" in by_kind:
        return by_kind["exact"]
    if is_choice and "asymptotic" in by_kind:
        return by_kind["asymptotic"]
    if asked.get("monte_carlo") and "monte-carlo" in by_kind and "like" not in asked:
        return by_kind["monte-carlo"]
    return supplied[0] if is_choice and supplied else None


def _makes_a_choice(asked: Mapping[str, Any]) -> bool:
    """Whether a significance is asked for that stands beside the document."""
    return bool(_is_choice(asked) or asked.get("exact") or asked.get("monte_carlo"))


def only_test(report: _binding.Report, result: Result, asked: Mapping[str, Any]) -> TestResult:
    """The first test of a result with the significance that was asked for. All else is read when it is asked for."""
    deciding = report.deciding()
    if not deciding or deciding[0] is None:
        return result[0]
    known = _known(deciding[0])
    if _makes_a_choice(asked):
        wanted = _asked_for(report.chosen(), asked)
        if wanted is not None:
            chosen = _known(wanted)
            known = chosen if chosen["statistic"] is not None else {**chosen, "statistic": known["statistic"]}
    return TestResult(result, 0, **known)


def _known(figures: _Figures | None) -> dict[str, float | None]:
    """What is known of a test by its figures."""
    if figures is None:
        return {}
    return {
        "statistic": float(figures.statistic) if figures.statistic else None,
        "pvalue": float(figures.pvalue) if figures.pvalue else None,
    }


def _read_test(test: Mapping[str, Any], asked: Mapping[str, Any]) -> dict[str, Any]:
    """What a `TestResult` shows, by its names."""
    supplement = _supplement(test)
    statistics, p = _leading(test)
    of_document, supplied = _significances(test)
    wanted = _asked_for(supplied, asked)
    statistic = number_of(p.get("statistic", statistics.get("statistic")))
    pvalue = number_of(p.get("value"))
    if wanted is not None:
        statistic = statistic if wanted.statistic is None else wanted.statistic
        pvalue = wanted.value
    return {
        "name": test["name"] or test["test"],
        "title": test["title"],
        "family": test["family"],
        "fields": tuple(test["fields"]),
        "group": test["group"],
        "statistic": statistic,
        "pvalue": pvalue,
        "df": number_of(statistics.get("df")),
        "n": number_of(test["n"]),
        "n_total": number_of(test["n_total"]),
        "decision": test["decision"],
        "method": test["method"],
        "conclusion": supplement.get("conclusion"),
        "direction": test["direction"],
        "call": supplement.get("call"),
        "effects": tuple(
            Effect(
                effect["key"], effect["label"], effect["first"], effect["second"], number_of(effect["value"]),
                number_of(effect["lower"]), number_of(effect["upper"]), effect["method"],
            )
            for effect in supplement.get("effects", [])
        ),
        "intervals": tuple(
            Interval(number_of(each["estimate"]), number_of(each["lower"]), number_of(each["upper"]), each["method"])
            for each in test["intervals"]
        ),
        "significances": tuple(of_document + supplied),
        "messages": tuple(_messages(test)),
    }  # fmt: skip
