"""Who does the blocks of a screening: the cores at hand, or the workers of a cluster."""

from __future__ import annotations

import concurrent.futures
import os
import threading
from collections.abc import Iterable, Iterator
from typing import Any, Protocol

from ._blocks import Block, Work, run_block, told_fields
from ._errors import EngineError
from ._sources import DaskPart, imported

# So many blocks for each worker are at hand, the one that it works on among them: it need not wait for the next one,
# and no more of the table than that is on its way.
_BLOCKS_AT_HAND = 2
# Dask warns of tasks above 10 MB, and our blocks of a single long column may be larger.
_LARGE_TASK = {"distributed.admin.large-graph-warning-threshold": "8 GiB"}


class Crew(Protocol):
    """Who does blocks. A context, which ends with all that is under way."""

    @property
    def workers(self) -> int:
        """How many blocks are done at a time."""

    @property
    def is_elsewhere(self) -> bool:
        """Whether columns have to be sent to whoever tests them."""

    def begin(self, work: Work) -> Any:
        """Begins a block and returns what stands for it."""

    def some_done(self, begun: Iterable[Any]) -> Iterable[Any]:
        """Waits until some of these are done, and returns them."""

    def block(self, done: Any, work: Work) -> Block:
        """What came of it; raises what it raised."""

    def __enter__(self) -> Crew: ...
    def __exit__(self, *_: object) -> None: ...


def blocks_of(crew: Crew, works: Iterable[tuple[int, Work]]) -> Iterator[tuple[int, Block]]:
    """Does blocks and yields each with its number, in the order in which they are done."""
    begun: dict[Any, tuple[int, Work]] = {}

    def done() -> Iterator[tuple[int, Block]]:
        for each in crew.some_done(list(begun)):
            place, work = begun.pop(each)
            yield place, crew.block(each, work)

    for place, work in works:
        begun[crew.begin(work)] = (place, work)
        while len(begun) >= _BLOCKS_AT_HAND * crew.workers:
            yield from done()
    while begun:
        yield from done()


class _Stopped(Exception):
    """A block that nobody wants any more."""


class Cores:
    """The cores at hand, a thread for each: the engine works without the interpreter."""

    is_elsewhere = False

    def __init__(self, threads: int | None) -> None:
        self.workers = threads or len(os.sched_getaffinity(0))
        self._stop = threading.Event()

    def __enter__(self) -> Cores:
        self._pool = concurrent.futures.ThreadPoolExecutor(self.workers, "tarn-screen")
        return self

    def __exit__(self, *_: object) -> None:
        self._stop.set()
        self._pool.shutdown(wait=True, cancel_futures=True)

    def begin(self, work: Work) -> concurrent.futures.Future[Block]:
        return self._pool.submit(run_block, work, self._watch)

    def some_done(self, begun: Iterable[Any]) -> Iterable[Any]:
        return concurrent.futures.wait(begun, return_when=concurrent.futures.FIRST_COMPLETED).done

    def block(self, done: Any, work: Work) -> Block:
        block: Block = done.result()
        return block

    def _watch(self, percent: float) -> None:
        if self._stop.is_set():
            raise _Stopped


class Cluster:
    """The workers of a client of Dask, which may come and go."""

    is_elsewhere = True

    def __init__(self, client: Any) -> None:
        self._client = client

    @property
    def workers(self) -> int:
        """How many blocks are done at a time."""
        return max(1, sum(map(int, self._client.nthreads().values())))

    def __enter__(self) -> Cluster:
        self._begun: set[Any] = set()
        return self

    def __exit__(self, *_: object) -> None:
        if self._begun:
            self._client.cancel(list(self._begun))

    def begin(self, work: Work) -> Any:
        dask = imported("dask", "client=")
        with dask.config.set(_LARGE_TASK):
            if isinstance(work.part, DaskPart):
                parts = work.part.frame.to_delayed()
                future = self._client.compute(dask.delayed(_run_parts, pure=False)(parts, _Rest(work)))
            else:
                future = self._client.submit(run_block, work, pure=False)
        self._begun.add(future)
        return future

    def some_done(self, begun: Iterable[Any]) -> Iterable[Any]:
        wait = imported("distributed", "client=").wait
        return set(wait(list(begun), return_when="FIRST_COMPLETED").done)

    def block(self, done: Any, work: Work) -> Block:
        from distributed.scheduler import KilledWorker

        self._begun.discard(done)
        try:
            block: Block = done.result()
        except KilledWorker as failure:
            worker = failure.last_worker
            raise EngineError(
                f"the worker {worker.address} on {worker.host} died at {told_fields(work.fields)}, the last one of "
                f"{failure.allowed_failures + 1}, mostly for want of memory; expected workers with more of it, or fewer "
                "fields at a time by block="
            ) from None
        return block


class _Rest:
    """A block without its columns. Dask looks into lists, and has nothing to look for in ours."""

    def __init__(self, work: Work) -> None:
        self.inquiry, self.fields = work.inquiry, work.fields


def _run_parts(parts: list[Any], rest: _Rest) -> Block:
    """Does a block whose columns come in parts, those of a frame of Dask."""
    concat = imported("dask.dataframe.dispatch", "a frame of Dask").concat
    return run_block(Work(_Together(concat(parts)), rest.inquiry, rest.fields))


class _Together:
    def __init__(self, table: Any) -> None:
        self._table = table

    def read(self) -> Any:
        return self._table
