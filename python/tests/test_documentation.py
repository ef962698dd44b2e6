"""What README.md and the docstrings show is what the package says."""

from __future__ import annotations

import doctest
from inspect import signature
from types import FunctionType, ModuleType

import pytest
import tarn
from conftest import ROOT
from tarn import _analyze, _functions, _result, _screen

FLAGS = doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS


@pytest.mark.parametrize(("page", "least"), [("README.md", 3), ("python/README.md", 20), ("docs/many-machines.md", 25)])
def test_readme(page: str, least: int, monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(ROOT)
    failed, attempted = doctest.testfile(str(ROOT / page), module_relative=False, optionflags=FLAGS)
    assert attempted >= least and failed == 0


@pytest.mark.parametrize("module", [_analyze, _functions, _result, _screen])
def test_docstrings(module: ModuleType) -> None:
    failed, _ = doctest.testmod(module, extraglobs={"tarn": tarn}, optionflags=FLAGS)
    assert failed == 0


def test_everything_public_has_a_docstring() -> None:
    for name in tarn.__all__:
        assert name.startswith("__") or getattr(tarn, name).__doc__, name


def test_functions_say_what_they_take_give_raise_and_show() -> None:
    for name in tarn.__all__:
        function = getattr(tarn, name)
        if not isinstance(function, FunctionType):
            continue
        doc = function.__doc__ or ""
        headings = ["Returns", "Examples", *(["Parameters", "Raises"] if signature(function).parameters else [])]
        for heading in headings:
            assert f"    {heading}\n    {'-' * len(heading)}\n" in doc, (name, heading)
        assert ">>> " in doc and (function.__module__ != "tarn._functions" or "    References\n" in doc), name


def test_each_test_has_a_function() -> None:
    others = {"hodges-lehmann": ["hodges_lehmann", "hodges_lehmann_related"]}
    for test in tarn.tests():
        for name in others.get(test.name, [test.name.replace("-", "_")]):
            assert callable(getattr(tarn, name))
