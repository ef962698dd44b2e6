"""The notebook runs, and shows what it was stored with."""

from __future__ import annotations

from typing import Any

import nbclient
import nbformat
import pytest
from conftest import ROOT

NOTEBOOKS = sorted((ROOT / "python/examples").glob("*.ipynb"))


def shown(cell: Any) -> list[str]:
    """What stands below a cell, as text."""
    return [each.get("text") or each["data"]["text/plain"] for each in cell.get("outputs", ())]


@pytest.mark.parametrize("path", NOTEBOOKS, ids=[path.stem for path in NOTEBOOKS])
def test_a_notebook_shows_what_it_says(path: Any) -> None:
    stored = nbformat.read(path, as_version=4)
    run = nbformat.read(path, as_version=4)
    client = nbclient.NotebookClient(run, timeout=120, kernel_name="python3", resources={"metadata": {"path": str(ROOT)}})
    client.execute()
    assert any(shown(cell) for cell in run.cells)
    for before, after in zip(stored.cells, run.cells, strict=True):
        assert shown(after) == shown(before), before.source
