"""A result as HTML: its sentences and tables."""

from __future__ import annotations

import html
from collections.abc import Iterable, Mapping, Sequence
from typing import Any

_STYLE = (
    "body{font-family:sans-serif;max-width:60em;margin:2em auto;padding:0 1em}"
    "table{border-collapse:collapse;margin:.6em 0}"
    "th,td{padding:.2em .8em;text-align:right;border-bottom:1px solid #ddd}"
    "th:first-child,td:first-child{text-align:left}"
)
_DIGITS = 6

Results = Sequence[tuple[str | None, Mapping[str, Any]]]


def as_page(results: Results, notes: Sequence[str]) -> str:
    """The whole result as a page that stands by itself: it needs no other file."""
    title = "Results"
    return (
        f'<!DOCTYPE html>\n<html lang="en">\n<head>\n<meta charset="utf-8">\n<title>{title}</title>\n'
        f"<style>{_STYLE}</style>\n</head>\n<body>\n{as_fragment(results, notes)}</body>\n</html>\n"
    )


def as_fragment(results: Results, notes: Sequence[str]) -> str:
    """The same to stand in another page."""
    blocks = []
    for part, result in results:
        if part is not None:
            blocks.append(f"<h2>{_text(part)}</h2>\n")
        blocks += [_test(number, test) for number, test in enumerate(result["tests"], 1)]
    blocks += [f"<p>Note: {_text(note)}</p>\n" for note in notes]
    return "".join(blocks)


def _test(number: int, test: Mapping[str, Any]) -> str:
    supplement = test["supplement"] or {}
    about = ", ".join(test["fields"]) + (f" by {test['group']}" if test["group"] else "")
    sentences = [test["condition"]["text"], supplement.get("conclusion")]
    sentences += [message["text"] for message in test["messages"]]
    return (
        f"<h3>{number}. {_text(test['title'])}: {_text(about)}</h3>\n"
        + "".join(f"<p>{_text(sentence)}</p>\n" for sentence in sentences if sentence)
        + _table(("", "N", "Statistic", "df", "p"), _statistics(test))
        + _table(("p by choice", "Alternative", "Statistic", "p"), _by_choice(supplement))
        + _table(("Effect", "Value", "Lower", "Upper"), _estimates(test, supplement))
        + _table(("Sample", "N", "Q1", "Median", "Q3"), _samples(supplement))
        + _table(("Pair", "Statistic", "Standardized", "p", "Adjusted p"), _pairs(test))
    )


def _statistics(test: Mapping[str, Any]) -> Iterable[Sequence[Any]]:
    for statistics in test["statistics"]:
        for p in statistics["p_values"]:
            name = " ".join(filter(None, (statistics["label"], p["kind"], "(decides)" if p["decides"] else "")))
            yield name, test["n"], p["statistic"], statistics["df"], p["value"]


def _by_choice(supplement: Mapping[str, Any]) -> Iterable[Sequence[Any]]:
    for p in supplement.get("p_values", ()):
        yield p["kind"], p["alternative"], p["statistic"], p["value"]


def _estimates(test: Mapping[str, Any], supplement: Mapping[str, Any]) -> Iterable[Sequence[Any]]:
    for effect in supplement.get("effects", ()):
        yield effect["label"], effect["value"], effect["lower"], effect["upper"]
    for interval in test["intervals"]:
        yield interval["method"], interval["estimate"], interval["lower"], interval["upper"]


def _samples(supplement: Mapping[str, Any]) -> Iterable[Sequence[Any]]:
    for sample in supplement.get("samples", ()):
        yield sample["name"], sample["n"], sample["first_quartile"], sample["median"], sample["third_quartile"]


def _pairs(test: Mapping[str, Any]) -> Iterable[Sequence[Any]]:
    for pair in test["comparisons"]["pairs"]:
        name = f"{pair['first']} - {pair['second']}"
        yield name, pair["statistic"], pair["standardized"], pair["p"], pair["adjusted_p"]


def _table(header: Sequence[str], rows: Iterable[Sequence[Any]]) -> str:
    lines = ["<tr>" + "".join(f"<td>{_cell(value)}</td>" for value in row) + "</tr>\n" for row in rows]
    if not lines:
        return ""
    return "<table>\n<tr>" + "".join(f"<th>{name}</th>" for name in header) + "</tr>\n" + "".join(lines) + "</table>\n"


def _cell(value: Any) -> str:
    if value is None:
        return ""
    return f"{value:.{_DIGITS}g}" if isinstance(value, (int, float)) else _text(value)


def _text(value: Any) -> str:
    return html.escape(str(value))
