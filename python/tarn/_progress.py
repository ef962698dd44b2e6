"""Who wants to see how far an analysis is."""

from __future__ import annotations

import contextlib
import importlib
import importlib.util
from collections.abc import Callable, Iterator

from ._errors import InputError

Progress = Callable[[float], object]
_ALL = 100


@contextlib.contextmanager
def _bar() -> Iterator[Progress | None]:
    """A bar of tqdm; nothing where it isn't installed."""
    if importlib.util.find_spec("tqdm") is None:
        yield None
        return
    with importlib.import_module("tqdm.auto").tqdm(total=_ALL, unit="%", leave=False) as bar:
        yield lambda percent: bar.update(percent - bar.n)


def shown_progress(progress: Progress | bool | None) -> contextlib.AbstractContextManager[Progress | None]:
    """What is called with the percent that is done, while it is shown.

    Raises
    ------
    InputError
        For what is neither a function nor a truth value.
    """
    if progress is True:
        return _bar()
    if progress is None or progress is False:
        return contextlib.nullcontext()
    if not callable(progress):
        raise InputError(
            f"progress= is of type {type(progress).__name__}; expected a function of the percent that is done, or True"
        )
    return contextlib.nullcontext(progress)
