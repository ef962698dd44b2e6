"""What the wheel carries, and that it needs nothing else."""

from __future__ import annotations

import hashlib
import importlib.metadata
import json
import os
import re
import subprocess
import sys
import zipfile
from pathlib import Path
from typing import Any

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


@pytest.fixture(scope="session")
def libraries(wheel: Path, tmp_path_factory: pytest.TempPathFactory) -> dict[str, Path]:
    """The shared libraries of the wheel, by their names."""
    folder = tmp_path_factory.mktemp("wheel")
    with zipfile.ZipFile(wheel) as archive:
        shared = [name for name in archive.namelist() if ".so" in Path(name).suffixes]
        return {Path(name).name: Path(archive.extract(name, folder)) for name in shared}


@pytest.fixture(scope="session")
def materials(wheel: Path) -> dict[str, Any]:
    """The list of what the wheel is made of."""
    with zipfile.ZipFile(wheel) as archive:
        places = [name for name in archive.namelist() if ".dist-info/sboms/" in name]  # as PEP 770 says
        assert [Path(place).name for place in places] == ["tarn.cdx.json"]
        loaded: dict[str, Any] = json.loads(archive.read(places[0]))
        return loaded


def used_as(materials: dict[str, Any], use: str) -> dict[str, dict[str, Any]]:
    return {one["name"]: one for one in materials["components"] if one["properties"] == [{"name": "tarn:use", "value": use}]}


def test_the_list_of_materials_has_the_files_of_the_wheel(materials: dict[str, Any], libraries: dict[str, Path]) -> None:
    assert materials["bomFormat"] == "CycloneDX"
    assert materials["metadata"]["component"]["version"] == tarn.__version__
    carried = used_as(materials, "carried")
    assert carried.keys() == libraries.keys()
    for name, file in libraries.items():
        hashed = {"alg": "SHA-256", "content": hashlib.sha256(file.read_bytes()).hexdigest()}
        assert carried[name]["hashes"] == [hashed], name


def test_the_list_of_materials_has_what_each_library_loads(materials: dict[str, Any], libraries: dict[str, Path]) -> None:
    name_of = {one["bom-ref"]: one["name"] for one in materials["components"]}
    listed = {
        name_of[edge["ref"]]: {name_of[reference] for reference in edge["dependsOn"]}
        for edge in materials["dependencies"]
        if edge["ref"] != "tarn"
    }
    for name, file in libraries.items():
        told = subprocess.run(["readelf", "-dW", file], capture_output=True, text=True, check=True).stdout
        needed = re.findall(r"\(NEEDED\).*\[(.+)\]", told)
        assert needed, name
        assert {one for one in needed if not one.startswith((*OF_ANY_LINUX, "ld-linux"))} == listed.pop(name), name
    assert not listed


def test_the_list_of_materials_has_versions_and_licences(materials: dict[str, Any]) -> None:
    components = materials["components"]
    for one in components:
        assert re.match(r"(\d+:)?\d+\.\d+", one["version"]), one["name"]
        assert one["licenses"], one["name"]
    compiled = used_as(materials, "compiled in")
    assert compiled.keys() >= {"boost-math", "nlohmann-json", "nanobind", "robin-map"}
    assert compiled["nanobind"]["version"] == importlib.metadata.version("nanobind")
    assert len(components) == len(compiled) + len(used_as(materials, "carried"))
    [root] = [edge for edge in materials["dependencies"] if edge["ref"] == "tarn"]
    assert {one["bom-ref"] for one in compiled.values()} < set(root["dependsOn"])


def test_stubs_say_what_the_module_offers(tmp_path: Path) -> None:
    stub = tmp_path / "_binding.pyi"
    command = [sys.executable, "-m", "nanobind.stubgen", "-m", "tarn._binding", "-q", "-o", stub]
    subprocess.run(command, check=True, cwd=tmp_path)
    assert (ROOT / "python/tarn/_binding.pyi").read_text() == stub.read_text(), f"made by {' '.join(map(str, command))}"
