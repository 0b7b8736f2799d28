"""What came of the runs of a study, as columns."""

from __future__ import annotations

import csv
import json
import os
from collections import Counter
from collections.abc import Mapping
from numbers import Integral
from typing import TYPE_CHECKING, Any

if TYPE_CHECKING:
    from kinetra.simmanager import mm

STATES = ("finished", "failed", "not run")


class Results:
    """Inputs, states, outputs and errors of all runs, also of those that never began.

    `states` has "finished", "failed" or "not run" for each run, `outputs` a dict or None, `errors`
    the text of what a failing run raised, by the run's place from 0. `job` is the record in the
    model; results that were unpickled or read from a file (`kxsim.load`) get one of their own.
    """

    def __init__(self, job: mm.Job | None, inputs: Mapping[str, Any], count: int) -> None:
        self._job = job
        self.inputs = dict(inputs)
        self.states = [STATES[-1]] * count
        self.outputs: list[dict[str, Any] | None] = [None] * count
        self.errors: dict[int, str] = {}
        self.interrupted = False

    @property
    def job(self) -> mm.Job:
        if self._job is None:
            self._job = _new_job(self)
        return self._job

    def __getstate__(self) -> dict[str, Any]:
        return {**self.__dict__, "_job": None}  # elements stay in their process

    def record(self, k: int, outputs: Any, error: str) -> None:
        self.states[k] = "failed" if error else "finished"
        self.outputs[k] = outputs
        if error:
            self.errors[k] = error

    def __len__(self) -> int:
        return len(self.states)

    def __repr__(self) -> str:
        counts = Counter(self.states)
        words = [f"{counts[state]:,} {state}" for state in STATES]
        end = ", interrupted" if self.interrupted else ""
        runs = "run" if len(self) == 1 else "runs"
        return f"<results of {len(self):,} {runs}: {', '.join(words)}{end}>"

    def _repr_html_(self) -> str:
        from kxsim import _html

        columns = self._first(_html.ROWS).columns()
        if "error" in columns:
            columns["error"] = [each and first_line(each) for each in columns["error"]]
        keys = columns.pop("run")
        rows = {int(key): {n: c[k] for n, c in columns.items()} for k, key in enumerate(keys)}
        return _html.table(repr(self), rows, len(self))

    def _first(self, count: int) -> Results:
        """The results of the first runs."""
        inputs = {name: column[:count] for name, column in self.inputs.items()}
        first = Results(self._job, inputs, min(count, len(self)))
        first.states, first.outputs = self.states[:count], self.outputs[:count]
        first.errors = {k: error for k, error in self.errors.items() if k < count}
        return first

    def columns(self) -> dict[str, Any]:
        """By name: "run" from 1, the inputs, "state", the outputs, and "error" if there was one.

        Columns of numbers are NumPy arrays, with NaN in runs without; all others lists, with None.
        A name that another column has is followed by " (input)" or " (output)"; "run", "state" and
        "error" are never those of an input or an output.
        """
        columns: dict[str, Any] = {"run": list(range(1, len(self) + 1))}
        for name, column in self.inputs.items():
            columns[_free(name, "input", columns)] = column
        columns["state"] = list(self.states)
        for name in dict.fromkeys(name for each in self.outputs if each for name in each):
            column = [each.get(name) if each else None for each in self.outputs]
            columns[_free(name, "output", columns)] = column
        if self.errors:
            columns["error"] = [self.errors.get(k) for k in range(len(self))]
        return {name: as_numbers(column) for name, column in columns.items()}

    def to_pandas(self) -> Any:
        """A data frame; needs pandas."""
        import pandas

        columns = {name: pandas.Series(list(each)) for name, each in self.columns().items()}
        return pandas.DataFrame(columns).set_index("run")

    def to_arrow(self) -> Any:
        """A table; needs pyarrow. What Arrow has no type for becomes text, as in CSV."""
        import pyarrow

        columns = self.columns()
        for name, column in columns.items():
            try:
                columns[name] = pyarrow.array(column)
            except (pyarrow.ArrowException, OverflowError):
                columns[name] = pyarrow.array([_text(value) for value in column])
        return pyarrow.table(columns)

    def to_parquet(self, path: str | os.PathLike[str]) -> None:
        """Needs pyarrow."""
        from pyarrow import parquet

        parquet.write_table(self.to_arrow(), path)

    def to_csv(self, path: str | os.PathLike[str]) -> None:
        """Numbers in full precision; arrays, lists and dicts as JSON."""
        columns = self.columns()
        with open(path, "w", newline="", encoding="utf-8") as file:
            writer = csv.writer(file)
            writer.writerow(columns)
            writer.writerows(
                [_word(value) for value in row] for row in zip(*columns.values(), strict=True)
            )


def _new_job(results: Results) -> mm.Job:
    from kinetra.simmanager import mm

    import kxsim

    job = mm.Job(kxsim.Model())
    with job.model().transaction():
        for k, state in enumerate(results.states):
            if state != "not run":
                error = first_line(results.errors.get(k, ""))
                job.createIntoSimulationRuns(
                    RunId=k + 1, State=state, StatusString=error, Progress=1.0
                )
    return job


def _free(name: str, kind: str, taken: Mapping[str, Any]) -> str:
    while name in taken or name in ("run", "state", "error"):
        name = f"{name} ({kind})"
    return name


def first_line(error: str) -> str:
    """What was raised, of its traceback: the line after the frames, for it may have several."""
    lines = error.strip().splitlines() or [""]
    frame = max((k for k, line in enumerate(lines) if line.startswith('  File "')), default=-1)
    return next((line for line in lines[frame + 1 :] if not line.startswith(" ")), lines[-1])


def as_numbers(column: Any) -> Any:
    """An array if it says the same as the column: a float has no more than 53 bits."""
    import numpy

    if isinstance(column, numpy.ndarray):
        return column
    kinds = {type(value) for value in column} - {type(None)}
    if not kinds or not all(issubclass(kind, int | float | numpy.number) for kind in kinds):
        return column
    if kinds == {bool} or any(issubclass(kind, bool) for kind in kinds):
        return column
    array = numpy.array([numpy.nan if value is None else value for value in column])
    if array.dtype.kind == "f":
        whole = (value for value in column if isinstance(value, Integral))
        return array if all(int(float(value)) == value for value in whole) else column
    return column if array.dtype.kind == "O" else array


def _text(value: Any) -> str | None:
    return None if value is None else str(_word(value))


def _word(value: Any) -> Any:
    value = value.tolist() if hasattr(value, "tolist") else value
    if not isinstance(value, list | tuple | dict):
        return value
    try:
        return json.dumps(value, default=str)
    except TypeError:  # a key that JSON has not
        return str(value)
