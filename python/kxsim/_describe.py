"""Studies in words: read from their elements, however these came about."""

from __future__ import annotations

import re
from collections import Counter
from collections.abc import Iterable, Iterator, Mapping, Sequence
from typing import Any

from kxsim import _host, design

_WORDS = {"Exhaustive": "grid", "Sequential": "zipped", "RandomParameterSpace": "draws"}

# As measured over studies of a million runs.
_BYTES_PER_RUN, _BYTES_PER_REFERENCE, _BYTES_PER_SAMPLE = 100, 13, 200


def name_of(target: Any) -> str:
    """How a column of this target's values is headed."""
    if target is None:
        return "(no target)"
    name = getattr(target, "Name", "") or type(target).__name__
    path = getattr(target, "BlockPath", "")
    return f"{path}:{name}" if path else name


def _numbered(pairs: Iterable[tuple[Any, Any]]) -> dict[str, Any]:
    """By the targets' names; equal names are numbered."""
    named: dict[str, Any] = {}
    counts: Counter[str] = Counter()
    for target, value in pairs:
        name = name_of(target)
        counts[name] += 1
        named[f"{name} #{counts[name]}" if counts[name] > 1 else name] = value
    return named


def values_of(run: Any) -> dict[str, Any]:
    """The values of one run."""
    return _numbered((sample.ParameterType, sample.Value) for sample in run.ParameterSamples)


def columns(runs: Any) -> dict[str, Any]:
    """The values of all runs by target: NumPy arrays where each is a number, else lists."""
    return _numbered(_host.gather(runs, "ParameterSamples", "ParameterType", "Value"))


def rows(columns: Mapping[str, Any], count: int) -> Iterator[dict[str, Any]]:
    """The columns of so many runs, run by run."""
    if not columns:
        return ({} for _ in range(count))
    lists = (column if isinstance(column, list) else column.tolist() for column in columns.values())
    return (dict(zip(columns, row, strict=True)) for row in zip(*lists, strict=True))


def targets(space: Any) -> Iterator[Any]:
    """What a space varies, in the order of its samples."""
    if isinstance(space, design.ValueSetParameter):
        yield space.ParameterType
    elif isinstance(space, design.StatisticalParameterSpace):
        yield from (parameter.ParameterType for parameter in space.Parameters)
    else:
        for child in space.ParameterSpaces:
            yield from targets(child)


def memory(space: Any) -> float:
    """Bytes that the runs will take in the model, without the values themselves."""
    width = sum(1 for _ in targets(space))
    per_run = _BYTES_PER_RUN + _BYTES_PER_REFERENCE * width
    return space.NumIterations * per_run + _samples(space) * _BYTES_PER_SAMPLE


def _samples(space: Any) -> float:
    """Runs of a combination share the samples of its parts."""
    if isinstance(space, design.StatisticalParameterSpace):
        return space.NumIterations * len(space.Parameters)
    if isinstance(space, design.ValueSetParameter):
        return space.NumIterations
    return sum(map(_samples, space.ParameterSpaces))


def tree(space: Any) -> str:
    """The space and what is below it, a line each, with its number of runs."""
    return "\n".join(_lines(space))


def count(space: Any) -> str:
    """Its number of runs, in words, however many they are."""
    return f"{space.NumIterations:,.0f} run{'s' if space.NumIterations != 1 else ''}"


def _lines(space: Any) -> list[str]:
    if isinstance(space, design.ValueSetParameter):
        return [f"{name_of(space.ParameterType)}: {count(space)}, {_preview(space.Values or [])}"]
    head = f"{_WORDS.get(type(space).__name__, type(space).__name__)}: {count(space)}"
    return [head, *_branches(_blocks(space))]


def _blocks(space: Any) -> list[list[str]]:
    if isinstance(space, design.StatisticalParameterSpace):
        return [
            [f"{name_of(parameter.ParameterType)}: {_distribution(parameter.Distribution)}"]
            for parameter in space.Parameters
        ]
    return [_lines(child) for child in space.ParameterSpaces]


def _distribution(source: Any) -> str:
    """The host's and frozen SciPy ones by name and arguments, others as they show themselves."""
    source = getattr(source, "source", source)
    name = getattr(getattr(source, "dist", None), "name", None)
    if name is None:
        return re.sub(r"^<kxsim\.dist\.(\w+) object( \(.*\))?>$", r"\1\2", repr(source))
    words = [*map(repr, source.args), *(f"{key}={value!r}" for key, value in source.kwds.items())]
    return f"{name}({', '.join(words)})"


def _branches(blocks: Sequence[Sequence[str]]) -> Iterator[str]:
    for block in blocks:
        is_last = block is blocks[-1]
        yield ("└─ " if is_last else "├─ ") + block[0]
        yield from (("   " if is_last else "│  ") + line for line in block[1:])


def _preview(values: Any, shown: int = 4) -> str:
    values = list(values)
    words = [_word(value) for value in values[:shown]]
    return ", ".join(words + (["..."] if len(values) > shown else []))


def _word(value: Any) -> str:
    value = value.tolist() if hasattr(value, "tolist") else value
    if isinstance(value, float):
        return f"{value:g}"
    if isinstance(value, list):
        rest = f", ... of {len(value)}" if len(value) > 2 else ""
        return f"[{', '.join(map(_word, value[:2]))}{rest}]"
    text = " ".join(str(value).split())
    return text if len(text) <= 24 else f"{text[:21]}..."


def table(runs: Sequence[Any], limit: int) -> str:
    """The first runs, a line each."""
    rows = [values_of(run) for run in runs[:limit]]
    names = list(dict.fromkeys(name for row in rows for name in row))
    return aligned(names, rows, len(runs))


def aligned(names: Sequence[str], rows: Sequence[Mapping[str, Any]], total: int) -> str:
    """The first rows of a table, numbered from 1, and how many more there are."""
    cells = [["run", *names]]
    cells += [
        [str(k), *(_word(row[name]) if name in row else "" for name in names)]
        for k, row in enumerate(rows, 1)
    ]
    widths = [max(map(len, column)) for column in zip(*cells, strict=True)]
    lines = ["  ".join(map(str.rjust, line, widths)) for line in cells]
    rest = total - len(rows)
    return "\n".join(lines + ([f"... {rest:,} more"] if rest > 0 else []))
