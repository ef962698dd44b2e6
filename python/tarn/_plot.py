"""The plot of a test."""

from __future__ import annotations

import html
import os
import re
from dataclasses import dataclass

from . import _binding
from ._errors import InputError, errors_of_the_package

_TITLE = re.compile(r"<title[^>]*>([^<]*)")


@dataclass(frozen=True, repr=False)
class Plot:
    """The plot of a test, by `Result.plot` or `TestResult.plot`. Notebooks show it.

    Attributes
    ----------
    svg : str
        The picture as SVG, 420 pixels wide; ``str`` of the plot is the same.
    """

    svg: str

    def save(self, path: str | os.PathLike[str]) -> None:
        """Writes the picture to a file, whole or not at all.

        Parameters
        ----------
        path : str or path
            Its suffix is ``.svg``.

        Raises
        ------
        InputError
            For any other suffix, and for a file that can't be written.
        """
        name = os.fspath(path)
        suffix = os.path.splitext(name)[1]
        if suffix.lower() != ".svg":
            raise InputError(f'"{name}": the suffix is "{suffix}"; expected .svg')
        with errors_of_the_package():
            _binding.write(name, self.svg)

    def __str__(self) -> str:
        return self.svg

    def __repr__(self) -> str:
        title = _TITLE.search(self.svg)
        return f"<Plot of {html.unescape(title.group(1))}>" if title else "<Plot>"

    def _repr_svg_(self) -> str:
        return self.svg
