"""The numbers of the package are those of the calls of SciPy on docs/conventions.md."""

from __future__ import annotations

import importlib.util
import json
import os
from pathlib import Path
from typing import Any

import pandas
import pytest
import tarn
from conftest import ROOT


def load_checker() -> Any:
    """The script that reads the page."""
    spec = importlib.util.spec_from_file_location("check_conventions", ROOT / "scripts/check_conventions.py")
    assert spec is not None and spec.loader is not None
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


os.chdir(ROOT)  # the page and its tables are looked for there
CHECKER = load_checker()
BLOCKS = CHECKER.read_page()
NUMBERS = {"test-value", "cut-point", "probability"}
FLAGS = {"as-defined", "descending"}
LISTS = {"one-sample", "related", "independent", "tests", "success", "distribution"}


def arguments_of(command: list[str]) -> tuple[str, str | None, dict[str, Any]]:
    """The table, its description, and the arguments of the package for the words of a command."""
    words = iter(command[2:])
    table, fields, arguments = "", None, {}
    for word in words:
        option = word.removeprefix("--")
        name = {"weight": "weights"}.get(option, option.replace("-", "_"))
        if option == word:
            table = word
        elif option == "fields":
            fields = next(words)
        elif option in FLAGS:
            arguments[name] = True
        else:
            value = next(words)
            arguments[name] = float(value) if option in NUMBERS else value.split(",") if option in LISTS else value
    return table, fields, arguments


def frame_of(table: str, fields: str | None) -> tuple[Any, dict[str, Any]]:
    """The table as its description says, and the levels that a frame can't tell."""
    frame = pandas.read_csv(ROOT / table)
    arguments: dict[str, Any] = {"nominal": [], "ordinal": []}
    for field in json.loads(Path(ROOT, fields).read_text())["fields"] if fields else []:
        name, values = field["name"], field.get("categories")
        if values is not None:
            values = [value["value"] if isinstance(value, dict) else value for value in values]
            frame[name] = pandas.Categorical(frame[name], values, ordered=field.get("categoriesOrdered", False))
        elif field.get("level") in arguments:
            arguments[field["level"]].append(name)
    return frame, {name: names for name, names in arguments.items() if names}


@pytest.mark.parametrize("place", range(len(BLOCKS)), ids=[f"{block.test}-{at}" for at, block in enumerate(BLOCKS)])
def test_package_and_scipy_agree(place: int) -> None:
    block = BLOCKS[place]
    table, fields, arguments = arguments_of(block.command)
    frame, levels = frame_of(table, fields)
    result = tarn.analyze(frame, **levels, **arguments)
    test = [test for test in json.loads(result.to_json())["tests"] if test["test"] == block.test][-1]
    theirs = iter(CHECKER.run_scipy(block))
    for quantity in block.quantities:
        ours = CHECKER.value_at(test, quantity.path)
        for call in quantity.calls:
            if call.language != "SciPy":
                continue
            expected = next(theirs)
            is_good, word = CHECKER.verdict(call, quantity, ours, expected)
            assert is_good, f"{quantity.path} is {ours}, {call.code} gives {expected}: {word}"
