"""What a worker does: it calls the function with the values of some runs and tells what came of it.

Outputs that travel to another process are pickled one by one, so that one that cannot be fails its
own run only.
"""

from __future__ import annotations

import os
import pickle
import socket
import sys
import time
import traceback
from collections.abc import Callable, Mapping
from typing import Any, NamedTuple

Run = tuple[int, dict[str, Any]]


class Outcome(NamedTuple):
    """Of one run; the error is text, for not every exception can travel."""

    k: int
    outputs: dict[str, Any] | bytes | None
    error: str = ""
    seconds: float = 0.0
    machine: str = ""

    def unpacked(self) -> Outcome:
        if not isinstance(self.outputs, bytes):
            return self
        try:
            return self._replace(outputs=pickle.loads(self.outputs))
        except Exception:
            return self._replace(outputs=None, error=traceback.format_exc())


def place() -> tuple[str, int]:
    """Machine and process."""
    return socket.gethostname(), os.getpid()


def work(
    function: Callable[[dict[str, Any]], Any], runs: list[Run], limit: float, home: tuple[str, int]
) -> list[Outcome]:
    """Of these runs those that can begin within `limit` seconds, the first in any case."""
    here = place()
    outcomes: list[Outcome] = []
    end = time.perf_counter() + limit
    for k, values in runs:
        if outcomes and time.perf_counter() > end:
            break
        outcomes.append(_carried_out(function, k, values, here[0], here != home))
    return outcomes


def start() -> None:
    """In a new worker process: Ctrl-C is the parent's, and NumPy's draws are not its siblings'.

    Python's own `random` is seeded anew in each process by Python.
    """
    import signal

    signal.signal(signal.SIGINT, signal.SIG_IGN)
    if "numpy" in sys.modules:
        sys.modules["numpy"].random.seed()


def _carried_out(
    function: Callable[[dict[str, Any]], Any],
    k: int,
    values: dict[str, Any],
    machine: str,
    travels: bool,
) -> Outcome:
    outputs: dict[str, Any] | bytes | None = None
    error = ""
    began = time.perf_counter()
    try:
        outputs = _named(function(values if travels else _own(values)))
        if travels:
            outputs = pickle.dumps(outputs)
    except KeyboardInterrupt:
        raise
    except BaseException:  # a SystemExit, say, ends this run and not the study
        outputs, error = None, traceback.format_exc()
    return Outcome(k, outputs, error, time.perf_counter() - began, machine)


def _named(result: Any) -> dict[str, Any]:
    if result is None:
        return {}
    if not isinstance(result, Mapping):
        return {"output": result}
    unnamed = next((key for key in result if not isinstance(key, str)), None)
    if unnamed is not None:
        raise TypeError(f"outputs are named by str, not by {unnamed!r}")
    return dict(result)


def _own(value: Any) -> Any:
    """Lists and dicts anew: what the function changes in them is not changed in the study."""
    if isinstance(value, list):
        return [_own(each) for each in value]
    if isinstance(value, dict):
        return {key: _own(each) for key, each in value.items()}
    return value
