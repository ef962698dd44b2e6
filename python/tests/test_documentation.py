"""What README.md and the docstrings show is what the package says."""

from __future__ import annotations

import doctest
from types import ModuleType

import pytest
import tarn
from conftest import ROOT
from tarn import _analyze, _functions, _result

FLAGS = doctest.NORMALIZE_WHITESPACE | doctest.ELLIPSIS


def test_readme(monkeypatch: pytest.MonkeyPatch) -> None:
    monkeypatch.chdir(ROOT)
    failed, attempted = doctest.testfile(str(ROOT / "python/README.md"), module_relative=False, optionflags=FLAGS)
    assert attempted > 5 and failed == 0


@pytest.mark.parametrize("module", [_analyze, _functions, _result])
def test_docstrings(module: ModuleType) -> None:
    failed, _ = doctest.testmod(module, extraglobs={"tarn": tarn}, optionflags=FLAGS)
    assert failed == 0


def test_everything_public_has_a_docstring() -> None:
    for name in tarn.__all__:
        assert name.startswith("__") or getattr(tarn, name).__doc__, name


def test_each_test_has_a_function() -> None:
    others = {"hodges-lehmann": ["hodges_lehmann", "hodges_lehmann_related"]}
    for test in tarn.tests():
        for name in others.get(test.name, [test.name.replace("-", "_")]):
            assert callable(getattr(tarn, name))
