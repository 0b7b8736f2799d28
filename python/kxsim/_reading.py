"""Results that were written, read again."""

from __future__ import annotations

import csv
import json
import os
import sys
from collections.abc import Sequence
from typing import Any

from kxsim._results import STATES, Results, as_numbers


def load(path: str | os.PathLike[str]) -> Results:
    """The results that `to_csv` or, in a `.parquet` file, `to_parquet` wrote.

    Columns before "state" are inputs, those after it outputs, by the names that the file has. A CSV
    file says no types: what reads as a number, as "True" or "False" or as JSON of a list or dict
    becomes that. Arrays come back as lists. The job is made, in a model of its own, when it is
    asked for.

    Raises ValueError for a file without results.

        results = kxsim.load("results.csv")
        kxsim.figures.Figures(results).histogram("cost").draw()
    """
    is_parquet = os.fspath(path).endswith(".parquet")
    columns = _parquet(path) if is_parquet else _csv(path)
    names = list(columns)
    states = columns.get("state", [])
    if names[:1] != ["run"] or not states or not set(states) <= set(STATES):
        raise ValueError(f"{os.fspath(path)} holds no results of kxsim")
    place = names.index("state")
    inputs = {name: as_numbers(columns[name]) for name in names[1:place]}
    outputs = [name for name in names[place + 1 :] if name != "error"]
    results = Results(None, inputs, len(states))
    errors = columns.get("error") or [None] * len(states)
    for k, state in enumerate(states):
        if state != "not run":
            cells = {n: columns[n][k] for n in outputs if columns[n][k] is not None}
            is_done = state == "finished"
            results.record(k, cells if is_done else None, "" if is_done else str(errors[k]))
    return results


def _parquet(path: str | os.PathLike[str]) -> dict[str, Sequence[Any]]:
    from pyarrow import parquet

    columns = parquet.read_table(path).to_pydict()
    return {name: [_json(cell) for cell in column] for name, column in columns.items()}


def _csv(path: str | os.PathLike[str]) -> dict[str, Sequence[Any]]:
    limit = csv.field_size_limit(sys.maxsize)  # a trace is one cell
    try:
        with open(path, newline="", encoding="utf-8") as file:
            columns = list(zip(*csv.reader(file), strict=True))
    except (csv.Error, ValueError) as error:
        raise ValueError(f"{os.fspath(path)} is no table: {error}") from error
    finally:
        csv.field_size_limit(limit)
    return {
        name: cells if name in ("state", "error") else [_value(cell) for cell in cells]
        for name, *cells in columns
    }


def _value(cell: str) -> Any:
    """Of a cell that reads as something what was written; any other text as it stands."""
    if not cell:
        return None
    if cell in ("True", "False"):
        return cell == "True"
    for number in (int, float):
        try:
            if str(number(cell)) == cell:
                return number(cell)
        except ValueError:
            continue
    return _json(cell)


def _json(cell: Any) -> Any:
    """Lists and dicts, which the formats have no columns for, were written as JSON."""
    if not isinstance(cell, str) or cell[:1] not in ("[", "{"):
        return cell
    try:
        return json.loads(cell)
    except ValueError:
        return cell
