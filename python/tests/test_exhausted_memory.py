"""Memory that fails inside the process: the call says so, and the process lives on. The longer walk is
`tests/robustness/exhaust_python.py`; here it takes every 199th allocation."""

from __future__ import annotations

import os
import pathlib
import subprocess
import sys

import pytest
import tarn
from tarn._errors import errors_of_the_package

WALK = pathlib.Path(__file__).resolve().parents[2] / "tests" / "robustness" / "exhaust_python.py"
SHIM = os.environ.get("TARN_HARD_TIMES")


@pytest.mark.skipif(SHIM is None, reason="scripts/test_python names the library that makes allocations fail")
@pytest.mark.parametrize("endurance", [[], ["--for-good"]], ids=["once", "for good"])
def test_a_call_without_memory_says_so_and_the_process_lives_on(endurance: list[str]) -> None:
    assert SHIM is not None
    environment = {**os.environ, "LD_PRELOAD": os.path.abspath(SHIM)}
    walk = subprocess.run(
        [sys.executable, str(WALK), "--stride", "199", *endurance], env=environment, capture_output=True, text=True
    )
    assert walk.returncode == 0, walk.stdout + walk.stderr
    assert " 0 bad ends" in walk.stdout.splitlines()[-1]


@pytest.mark.parametrize("text", ["can't allocate lock", "can't allocate read lock"])
def test_a_lock_that_the_interpreter_has_no_memory_for_is_told_as_such(text: str) -> None:
    """The texts of CPython: those of an import, and of a file that it reads."""
    with pytest.raises(MemoryError, match=text), errors_of_the_package():
        raise RuntimeError(text)
    with pytest.raises(tarn.EngineError, match="the run failed"), errors_of_the_package():
        raise RuntimeError("the run failed")
