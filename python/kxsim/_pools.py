"""How runs reach workers: in chunks, a few at a time, on any executor.

A study of any length starts at once and ends soon when it is told to. Worker processes that end
are replaced, and the run that ended them is found.
"""

from __future__ import annotations

import math
import signal
import threading
import traceback
from collections.abc import Callable, Generator, Iterator
from concurrent.futures import (
    FIRST_COMPLETED,
    BrokenExecutor,
    Executor,
    Future,
    ProcessPoolExecutor,
    ThreadPoolExecutor,
    wait,
)
from contextlib import contextmanager, nullcontext
from itertools import islice
from types import FrameType
from typing import Any, NamedTuple

from kxsim import _work
from kxsim._work import Outcome, Run

# A chunk of short runs takes so many seconds, unless that were more runs than this.
SECONDS, RUNS = 0.2, 1000


class _Serial(Executor):
    def submit(self, function: Callable, /, *arguments: Any, **keywords: Any) -> Future:
        future: Future = Future()
        future.set_result(function(*arguments, **keywords))
        return future


# By the names that callers give them, for so many workers.
POOLS: dict[Any, Callable[[int], Executor]] = {
    "processes": lambda workers: ProcessPoolExecutor(workers, initializer=_work.start),
    "threads": ThreadPoolExecutor,
    "serial": lambda workers: _Serial(),
}


class Chunk(NamedTuple):
    runs: list[Run]
    is_suspect: bool = False  # it was under way when a worker process ended


class Queue:
    """The runs that wait, in chunks: of a size that is given, or that suits the runs' duration."""

    def __init__(self, runs: Iterator[Run], total: int, size: int | None, workers: int) -> None:
        self._runs, self._left = runs, total
        self._back: list[Chunk] = []
        self._is_fixed, self._size = size is not None, size or 1
        self._workers = workers
        self.seconds = math.inf if self._is_fixed else SECONDS

    def take(self) -> Chunk | None:
        if self._back:
            return self._back.pop()
        size = self._size
        if not self._is_fixed:  # towards the end every worker has something to do
            size = max(1, min(size, self._left // (2 * self._workers)))
        chunk = Chunk(list(islice(self._runs, size)))
        self._left -= len(chunk.runs)
        return chunk if chunk.runs else None

    def put_back(self, *chunks: Chunk) -> None:
        self._back += [chunk for chunk in chunks if chunk.runs]

    def stop(self) -> None:
        self._runs, self._back = iter(()), []

    def learn(self, chunk: Chunk, outcomes: list[Outcome]) -> None:
        """What was not begun comes back; the size follows what a chunk of this size took."""
        count = len(outcomes)
        self.put_back(chunk._replace(runs=chunk.runs[count:]))
        if self._is_fixed:
            return
        if count < len(chunk.runs):
            self._size = count
        elif count == self._size and sum(each.seconds for each in outcomes) < SECONDS / 2:
            self._size = min(RUNS, 2 * count)


class Pools:
    """The caller's executor, left open, or our own; those break and are opened anew."""

    def __init__(self, kind: str | Executor, workers: int) -> None:
        self._kind, self._workers = kind, workers
        self._shared = kind if isinstance(kind, Executor) else None
        self._own: list[Executor] = []

    def __enter__(self) -> Pools:
        return self

    def __exit__(self, kind: type[BaseException] | None, *_: object) -> None:
        for pool in self._own:
            if kind is None:
                pool.shutdown()
            else:
                _abandon(pool)

    def submit(self, chunk: Chunk, *call: Any) -> tuple[Future, Executor]:
        """Suspects have a worker of their own. Ctrl-C waits until worker processes have begun."""
        with _interrupts_held() if self._kind == "processes" else nullcontext():
            return self._submit(chunk, *call)

    def _submit(self, chunk: Chunk, *call: Any) -> tuple[Future, Executor]:
        pool = self._open(1) if chunk.is_suspect else self._shared
        if pool is None:
            pool = self._shared = self._open(self._workers)
        try:
            future = pool.submit(*call)
        except BrokenExecutor:
            if not self.close(pool):
                raise
            return self._submit(chunk, *call)
        if not isinstance(future, Future):
            raise TypeError(f"the executor's submit returned {future!r} instead of a Future")
        return future, pool

    def close(self, pool: Executor) -> bool:
        """Whether there will be a new one instead: not of what belongs to the caller."""
        if pool is self._kind:
            return False
        if pool is self._shared:
            self._shared = None
        if pool in self._own:
            self._own.remove(pool)
            pool.shutdown()
        return True

    def _open(self, workers: int) -> Executor:
        pool = POOLS[self._kind](workers)
        self._own.append(pool)
        return pool


@contextmanager
def _interrupts_held() -> Iterator[None]:
    """Ctrl-C within is raised at the end. While a worker is forked Python would lose it here, and
    there it would end the worker before that ignores it."""
    previous = signal.getsignal(signal.SIGINT)
    if threading.current_thread() is not threading.main_thread() or not callable(previous):
        yield
        return
    held: list[tuple[int, FrameType | None]] = []
    signal.signal(signal.SIGINT, lambda *arguments: held.append(arguments))
    try:
        yield
    finally:
        signal.signal(signal.SIGINT, previous)
        if held:
            previous(*held[0])


def _abandon(pool: Executor) -> None:
    """Ends it with what it is doing."""
    processes = list((getattr(pool, "_processes", None) or {}).values())
    # Before they end: a pool that finds them broken says so in a thread of its own.
    pool.shutdown(wait=False, cancel_futures=True)
    for process in processes:
        process.terminate()


def carry_out(
    function: Callable[[dict[str, Any]], Any],
    queue: Queue,
    pools: Pools,
    window: int,
    is_enough: Callable[[], bool],
) -> Generator[list[Outcome], None, None]:
    """Yields the outcomes of chunks as they come; at most `window` chunks are under way."""
    home = _work.place()
    pending: dict[Future, tuple[Chunk, Executor]] = {}
    try:
        while True:
            while len(pending) < window and (chunk := queue.take()):
                call = (_work.work, function, chunk.runs, queue.seconds, home)
                future, pool = pools.submit(chunk, *call)
                pending[future] = chunk, pool
            if not pending:
                return
            for future in wait(pending, return_when=FIRST_COMPLETED).done:
                yield _outcomes_of(future, *pending.pop(future), queue, pools)
            if is_enough():
                queue.stop()
                pending = {each: pending[each] for each in pending if not each.cancel()}
    finally:
        for future in pending:
            future.cancel()


def _outcomes_of(
    future: Future, chunk: Chunk, pool: Executor, queue: Queue, pools: Pools
) -> list[Outcome]:
    """What a chunk gave; one that cannot come back is halved until the run is found."""
    try:
        outcomes = future.result()
    except BrokenExecutor:
        if not pools.close(pool):
            raise
        if not chunk.is_suspect:  # another chunk's run may have done it
            queue.put_back(chunk._replace(is_suspect=True))
            return []
        return _without(chunk, queue, "the worker process ended while it carried out this run")
    except Exception as error:
        return _without(chunk, queue, "".join(traceback.format_exception_only(error)))
    if chunk.is_suspect:
        pools.close(pool)
    if not isinstance(outcomes, list) or not all(isinstance(each, Outcome) for each in outcomes):
        raise TypeError(f"the executor returned {outcomes!r} instead of what it was to call for")
    queue.learn(chunk, outcomes)
    return [outcome.unpacked() for outcome in outcomes]


def _without(chunk: Chunk, queue: Queue, error: str) -> list[Outcome]:
    half = len(chunk.runs) // 2
    if not half:
        return [Outcome(k, None, error) for k, _ in chunk.runs]
    queue.put_back(*(chunk._replace(runs=runs) for runs in (chunk.runs[:half], chunk.runs[half:])))
    return []
