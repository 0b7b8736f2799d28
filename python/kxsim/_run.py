"""Carrying out the runs of a study: any callable, any executor, in chunks.

Workers get a run's values as a dict and give back plain Python values; elements stay in this
process. Chunks are handed over a few at a time, so that a study of any length starts at once and
ends soon when it is told to.
"""

from __future__ import annotations

import os
import pickle
import signal
import socket
import time
import traceback
from collections.abc import Callable, Iterable, Iterator, Mapping
from concurrent.futures import (
    FIRST_COMPLETED,
    BrokenExecutor,
    Executor,
    Future,
    ProcessPoolExecutor,
    ThreadPoolExecutor,
    wait,
)
from contextlib import contextmanager
from itertools import islice
from typing import TYPE_CHECKING, Any, NamedTuple

from kxsim._results import Results

if TYPE_CHECKING:
    from kinetra.simmanager import mm

    from kxsim.study import Study

Chunk = list[tuple[int, dict[str, Any]]]


class Outcome(NamedTuple):
    """Of one run, as a worker tells it; the error is text, for not every exception can travel."""

    k: int
    outputs: dict[str, Any] | None
    error: str
    seconds: float = 0.0
    machine: str = ""


def run(
    study: Study,
    function: Callable[[dict[str, Any]], Any],
    *,
    executor: str | Executor = "processes",
    workers: int | None = None,
    chunk: int | None = None,
    progress: bool | None = None,
    stop_on_error: bool | float = False,
    job: mm.Job | None = None,
) -> Results:
    """Calls the function with the values of each run, and returns what came of it.

    The function gets a dict and returns a number, an array or a mapping of names to such. With
    `executor` "processes" it must be importable (defined in a module, no lambda); "threads",
    "serial" and any `concurrent.futures.Executor` are there besides. `chunk` runs are handed over
    and come back at a time, two chunks for each worker: one run within this process, up to 64
    elsewhere. `progress` shows a bar: by default on a terminal.

    A run that raises is recorded with its error and the others go on; with `stop_on_error` none is
    handed over after the first that failed (True) or once more than that share of all runs did.
    Ctrl-C ends the runs, and what has come back is returned, with `interrupted` set.

    Each run is recorded in the job as it ends: in `job`, or in a new one of the study's model.
    """
    from kinetra.simmanager import mm

    if any(each is not None and each < 1 for each in (workers, chunk)):
        raise ValueError("workers and chunk are positive integers")
    if not 0 <= stop_on_error <= 1:
        raise ValueError("stop_on_error is true, false or a share of the runs, from 0 to 1")
    _check(function, executor)
    if executor == "serial":
        workers = 1
    workers = workers or getattr(executor, "_max_workers", None) or os.cpu_count() or 1
    inputs = study.columns()
    total = len(study)
    if chunk is None:
        is_near = executor in ("threads", "serial") or stop_on_error is True
        chunk = 1 if is_near else max(1, min(64, total // (workers * 16)))
    job = job or mm.Job(study.model)
    job.StartTime, job.NumWorkers = time.time(), workers
    results = Results(job, inputs, total)
    try:
        with _executor(executor, workers) as pool, _bar(total, progress) as bar:
            chunks = _chunks(inputs, total, chunk)
            window = 1 if executor == "serial" else 2 * workers
            for outcomes in _carry_out(pool, function, chunks, window, results, stop_on_error):
                _record(job, results, outcomes)
                bar.update(len(outcomes))
    except KeyboardInterrupt:
        results.interrupted = True
    finally:
        job.FinishTime = time.time()
    return results


# In workers --------------------------------------------------------------------------------------


def _named(result: Any) -> dict[str, Any]:
    if result is None:
        return {}
    if not isinstance(result, Mapping):
        return {"output": result}
    unnamed = next((key for key in result if not isinstance(key, str)), None)
    if unnamed is not None:
        raise TypeError(f"outputs are named by str, not by {unnamed!r}")
    return dict(result)


def _work(function: Callable, chunk: Chunk) -> list[Outcome]:
    machine = socket.gethostname()
    outcomes = []
    for k, values in chunk:
        began = time.perf_counter()
        outputs, error = None, ""
        try:
            outputs = _named(function(values))
        except Exception:
            error = traceback.format_exc()
        outcomes.append(Outcome(k, outputs, error, time.perf_counter() - began, machine))
    return outcomes


def _leave_interrupts_to_the_parent() -> None:
    signal.signal(signal.SIGINT, signal.SIG_IGN)


# Executors ---------------------------------------------------------------------------------------


class _Serial(Executor):
    def submit(self, function: Callable, /, *arguments: Any, **keywords: Any) -> Future:
        future: Future = Future()
        future.set_result(function(*arguments, **keywords))
        return future


# By the names that callers give them, for so many workers.
POOLS: dict[Any, Callable[[int], Executor]] = {
    "processes": lambda workers: ProcessPoolExecutor(
        workers, initializer=_leave_interrupts_to_the_parent
    ),
    "threads": ThreadPoolExecutor,
    "serial": lambda workers: _Serial(),
}


def _check(function: Callable, executor: str | Executor) -> None:
    if not isinstance(executor, Executor) and executor not in POOLS:
        raise ValueError(f"no such executor: {executor!r}; {', '.join(POOLS)} or an Executor")
    if not callable(function):
        raise TypeError(f"a run is carried out by a callable, not by {function!r}")
    if executor != "processes":
        return
    try:
        pickle.dumps(function)
    except Exception as error:
        raise TypeError(
            f"{function!r} cannot be sent to other processes: define it in a module, or pass "
            "executor='threads'"
        ) from error


@contextmanager
def _executor(kind: str | Executor, workers: int) -> Iterator[Executor]:
    """The caller's, left open, or one of our own, ended with what it is doing when interrupted."""
    if isinstance(kind, Executor):
        yield kind
        return
    pool = POOLS[kind](workers)
    try:
        yield pool
    except BaseException:
        processes = list((getattr(pool, "_processes", None) or {}).values())
        # Before they end: a pool that finds them broken says so in a thread of its own.
        pool.shutdown(wait=False, cancel_futures=True)
        for process in processes:
            process.terminate()
        raise
    pool.shutdown()


@contextmanager
def _bar(total: int, progress: bool | None) -> Iterator[Any]:
    from tqdm import tqdm

    disable = None if progress is None else not progress
    with tqdm(total=total, unit="run", disable=disable) as bar:
        yield bar


# Here --------------------------------------------------------------------------------------------


def _chunks(inputs: Mapping[str, Any], total: int, size: int) -> Iterator[Chunk]:
    columns = [each.tolist() if hasattr(each, "tolist") else each for each in inputs.values()]
    rows = zip(*columns, strict=True) if inputs else iter([()] * total)
    numbered = enumerate(dict(zip(inputs, row, strict=True)) for row in rows)
    while chunk := list(islice(numbered, size)):
        yield chunk


def _outcomes_of(future: Future, chunk: Chunk) -> list[Outcome]:
    """What a chunk gave; when it could not come back, the same error for each of its runs."""
    try:
        return future.result()
    except Exception as error:
        text = "".join(traceback.format_exception_only(error))
        return [Outcome(k, None, text) for k, _ in chunk]


def _is_enough(results: Results, stop_on_error: bool | float) -> bool:
    failed = len(results.errors)
    if isinstance(stop_on_error, bool):
        return stop_on_error and failed > 0
    return failed > stop_on_error * len(results)


def _carry_out(
    pool: Executor,
    function: Callable,
    chunks: Iterator[Chunk],
    window: int,
    results: Results,
    stop_on_error: bool | float,
) -> Iterator[list[Outcome]]:
    """Yields the outcomes of chunks as they come; at most `window` chunks are under way."""
    pending: dict[Future, Chunk] = {}
    try:
        while True:
            for chunk in islice(chunks, window - len(pending)):
                try:
                    pending[pool.submit(_work, function, chunk)] = chunk
                except BrokenExecutor:
                    chunks = iter(())
                    break
            if not pending:
                return
            done, _ = wait(pending, return_when=FIRST_COMPLETED)
            for future in done:
                yield _outcomes_of(future, pending.pop(future))
            if _is_enough(results, stop_on_error):
                chunks = iter(())
                pending = {each: pending[each] for each in pending if not each.cancel()}
    finally:
        for future in pending:
            future.cancel()


def _record(job: mm.Job, results: Results, outcomes: Iterable[Outcome]) -> None:
    with job.model().transaction():
        for outcome in outcomes:
            state = "failed" if outcome.error else "finished"
            results.record(outcome.k, state, outcome.outputs, outcome.error)
            job.createIntoSimulationRuns(
                RunId=outcome.k + 1,
                State=state,
                StatusString=outcome.error.strip().rpartition("\n")[2],
                Progress=1.0,
                SimElapsedWallTime=outcome.seconds,
                Machine=outcome.machine,
            )
