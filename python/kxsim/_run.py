"""Carrying out the runs of a study: any callable, any executor.

Workers get a run's values as a dict and give back plain Python values; elements stay in this
process.
"""

from __future__ import annotations

import os
import pickle
import time
from collections.abc import Callable, Iterator, Mapping
from concurrent.futures import Executor
from contextlib import closing, contextmanager
from typing import TYPE_CHECKING, Any

from kxsim._pools import POOLS, Pools, Queue, carry_out
from kxsim._results import Results, first_line
from kxsim._work import Outcome, Run

if TYPE_CHECKING:
    from kinetra.simmanager import mm

    from kxsim.study import Study


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
    "serial" and any `concurrent.futures.Executor` are there besides. Runs are handed over and come
    back in chunks, two for each worker: one run within this process, elsewhere as many as take a
    fifth of a second, or `chunk` of them. `progress` shows a bar: by default on a terminal.

    A run that raises is recorded with its error and the others go on; so is one that ends its
    process, after which runs that were under way are carried out again. With `stop_on_error` none
    is handed over after the first that failed (True) or once more than that share of all runs did.
    Ctrl-C ends the runs, and what has come back is returned, with `interrupted` set.

    Each run is recorded in the job as it ends: in `job`, or in a new one of the study's model. What
    an observer of the model or an executor of the caller's raises ends the runs; such an error has
    `results`, with what has come until then.
    """
    from kinetra.simmanager import mm

    _check_elements(study, job)
    _check(function, executor, workers, chunk)
    _check_share(stop_on_error)
    inputs, total = _inputs(study)
    if executor == "serial":
        workers = 1
    workers = workers or getattr(executor, "_max_workers", None) or os.cpu_count() or 1
    if chunk is None and (executor in ("threads", "serial") or stop_on_error is True):
        chunk = 1
    job = job or mm.Job(study.model)
    job.StartTime, job.NumWorkers = time.time(), workers
    results = Results(job, inputs, total)
    queue = Queue(_runs(inputs, total), total, chunk, workers)
    window = 1 if executor == "serial" else 2 * workers
    with _recording(results), Pools(executor, workers) as pools, _bar(total, progress) as bar:
        runs = carry_out(function, queue, pools, window, lambda: _is_enough(results, stop_on_error))
        with closing(runs):
            for outcomes in runs:
                _record(results, outcomes)
                bar.update(len(outcomes))
    return results


@contextmanager
def _recording(results: Results) -> Iterator[None]:
    """Whatever ends the runs leaves what has come: in the results, which an error has with it."""
    try:
        try:
            yield
        except KeyboardInterrupt:
            results.interrupted = True
        finally:
            results.job.FinishTime = time.time()
    except Exception as error:
        error.results = results  # type: ignore[attr-defined]
        error.add_note(f"This ended the runs; `results` of the error has what came: {results!r}")
        raise


def _check_elements(study: object, job: object) -> None:
    from kinetra.simmanager import mm

    from kxsim.study import Study

    if not isinstance(study, Study):
        raise TypeError(f"what is run is a study made by kxsim.study, not {study!r}")
    if job is not None and not isinstance(job, mm.Job):
        raise TypeError(f"runs are recorded in a kinetra.simmanager.mm.Job, not in {job!r}")


def _check(
    function: Callable, executor: str | Executor, workers: int | None, chunk: int | None
) -> None:
    for number in (workers, chunk):
        if number is not None and (not isinstance(number, int) or number < 1):
            raise ValueError(f"workers and chunk are positive integers, not {number!r}")
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


def _check_share(stop_on_error: bool | float) -> None:
    if isinstance(stop_on_error, bool):
        return
    if not isinstance(stop_on_error, float) or not 0 < stop_on_error < 1:
        raise ValueError(
            "stop_on_error is True (at the first error), False or a share of the runs between 0 "
            f"and 1, not {stop_on_error!r}"
        )


def _is_enough(results: Results, stop_on_error: bool | float) -> bool:
    failed = len(results.errors)
    if isinstance(stop_on_error, bool):
        return stop_on_error and failed > 0
    return failed > stop_on_error * len(results)


@contextmanager
def _bar(total: int, progress: bool | None) -> Iterator[Any]:
    from tqdm import tqdm

    disable = None if progress is None else not progress
    with tqdm(total=total, unit="run", disable=disable) as bar:
        yield bar


def _inputs(study: Study) -> tuple[dict[str, Any], int]:
    inputs, total = study.columns(), len(study.runs)
    if total != len(study):
        raise ValueError(
            f"the study has {len(study):,} runs now, but {total:,} were made before it changed; "
            "Study.of(study.space) makes them anew"
        )
    return inputs, total


def _runs(inputs: Mapping[str, Any], total: int) -> Iterator[Run]:
    columns = [each.tolist() if hasattr(each, "tolist") else each for each in inputs.values()]
    rows = zip(*columns, strict=True) if inputs else iter([()] * total)
    return enumerate(dict(zip(inputs, row, strict=True)) for row in rows)


def _record(results: Results, outcomes: list[Outcome]) -> None:
    for outcome in outcomes:
        results.record(outcome.k, outcome.outputs, outcome.error)
    job = results.job
    with job.model().transaction():
        for outcome in outcomes:
            job.createIntoSimulationRuns(
                RunId=outcome.k + 1,
                State=results.states[outcome.k],
                StatusString=first_line(outcome.error) if outcome.error else "",
                Progress=1.0,
                SimElapsedWallTime=outcome.seconds,
                Machine=outcome.machine,
            )
