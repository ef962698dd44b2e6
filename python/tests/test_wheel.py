"""What the wheel carries, and that it needs nothing else."""

from __future__ import annotations

import os
import re
import subprocess
import sys
import zipfile
from pathlib import Path

import pytest
import tarn
from conftest import ROOT
from tarn import _binding

# What a Linux that runs Python has in any case.
OF_ANY_LINUX = ("libc.so.", "libm.so.", "libstdc++.so.", "libgcc_s.so.", "libdl.so.", "libpthread.so.", "librt.so.")
PACKAGE = Path(tarn.__file__).parent


@pytest.fixture(scope="session")
def wheel() -> Path:
    path = os.environ.get("TARN_WHEEL")
    if not path:
        pytest.skip("TARN_WHEEL names no wheel; scripts/test_python does")
    return ROOT / path


@pytest.fixture(scope="session")
def fresh(wheel: Path, tmp_path_factory: pytest.TempPathFactory) -> Path:
    """An interpreter with the wheel alone."""
    folder = tmp_path_factory.mktemp("fresh")
    subprocess.run([sys.executable, "-m", "venv", folder], check=True)
    python = folder / "bin/python"
    pip = [python, "-m", "pip", "install", "-q", "--disable-pip-version-check", "--no-index", "--no-deps", wheel]
    subprocess.run(pip, check=True, env={"PATH": str(folder / "bin")})  # without compilers
    return python


def test_a_fresh_environment_runs_an_analysis(fresh: Path, tmp_path: Path) -> None:
    program = (
        "import sys, tarn\n"
        "result = tarn.analyze({'x': [1, 2, 3, 4, 5.5, 6], 'g': list('aabbab')}, 'x ~ g', exact=True)\n"
        "print(result['mann-whitney'].statistic, tarn.explain('sign').splitlines()[0], result.tests['name'])\n"
        "print(*sorted(name for name in sys.modules if name in ('numpy', 'pandas', 'pyarrow')))\n"
    )
    done = subprocess.run(
        [fresh, "-c", program], capture_output=True, text=True, check=True, cwd=tmp_path, env={"PATH": "/nowhere"}
    )
    # By hand: the values of b are 3, 4 and 6, those of a 1, 2 and 5.5; of the nine pairs a is larger in 5.5 > 3, 5.5 > 4.
    assert done.stdout == "2.0 Sign test ['mann-whitney']\n\n"


def test_libraries_come_from_the_wheel_or_the_system() -> None:
    """All that the loader brings when the module is imported."""
    needed = subprocess.run(["ldd", _binding.__file__], capture_output=True, text=True, check=True).stdout
    found = dict(re.findall(r"^\s*(\S+) => (\S+)", needed, re.MULTILINE))
    ours = {name for name, path in found.items() if Path(path).parent.resolve() == PACKAGE.resolve()}
    assert {name for name in found if not name.startswith(OF_ANY_LINUX)} == ours
    assert any(name.startswith("libtarn.so.") for name in ours)


def test_the_wheel_is_small_and_holds_what_it_has_to(wheel: Path) -> None:
    assert wheel.stat().st_size < 5_000_000
    names = zipfile.ZipFile(wheel).namelist()
    assert {"tarn/py.typed", "tarn/_binding.pyi", "tarn/__init__.py"} <= set(names)
    assert not [name for name in names if name.endswith((".cpp", ".h", ".a"))]
    if sys.version_info >= (3, 12):
        assert "abi3" in wheel.name


def test_stubs_say_what_the_module_offers(tmp_path: Path) -> None:
    stub = tmp_path / "_binding.pyi"
    command = [sys.executable, "-m", "nanobind.stubgen", "-m", "tarn._binding", "-q", "-o", stub]
    subprocess.run(command, check=True, cwd=tmp_path)
    assert (ROOT / "python/tarn/_binding.pyi").read_text() == stub.read_text(), f"made by {' '.join(map(str, command))}"
