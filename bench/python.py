"""What Python pays, beside plain Python that does the least for the same result: one table.

Each figure is the best of several; the goals are the project's own.
"""

import subprocess
import sys
import time
import timeit
from collections.abc import Callable
from functools import partial
from typing import NamedTuple

import kxsim
from kinetra.simmanager import mm
from kxsim import design
from kxsim.study import grid, zipped


class Row(NamedTuple):
    name: str
    nanoseconds: float
    floor: float | None = None
    goal: float | None = None


class Plain:
    __slots__ = ("progress",)


def per_call(action: Callable[[], object], calls: int = 100_000) -> float:
    return min(timeit.repeat(action, number=calls, repeat=5)) / calls * 1e9


def per_item(make: Callable[[], Callable[[], object]], items: int, repeat: int = 3) -> float:
    """The best time of what `make` prepares, per item."""
    times = []
    for _ in range(repeat):
        action = make()
        began = time.perf_counter()
        action()
        times.append(time.perf_counter() - began)
    return min(times) / items * 1e9


def start() -> Row:
    def process(code: str) -> float:
        return per_item(lambda: lambda: subprocess.run([sys.executable, "-c", code]), 1, 7)

    empty = process("pass")
    return Row("import and start", process("import kxsim") - empty, empty, 100e6)


def properties() -> list[Row]:
    run, plain = mm.SimulationRun(kxsim.Model()), Plain()
    plain.progress = 0.0

    def read() -> float:
        return run.Progress

    def read_plain() -> float:
        return plain.progress

    def write() -> None:
        run.Progress = 0.0 if run.Progress else 1.0

    return [
        Row("property read", per_call(read), per_call(read_plain), 120),
        Row("property read and write", per_call(write)),
    ]


def factorial() -> list[Row]:
    count = 10**6
    levels = {f"p{k}": [float(level) for level in range(10)] for k in range(6)}

    def hand_over() -> Callable[[], object]:
        space = grid(**levels).build().space
        return space.createIterations

    def columns(factors: int) -> Callable[[], object]:
        study = grid(**{f"p{k}": range(10) for k in range(factors)}).build()
        assert len(study.runs) == 10**factors
        return study.columns

    return [
        Row("a run of 10^6, made and handed over", per_item(hand_over, count)),
        *(
            Row(
                f"a value of 10^{factors} runs into columns",
                per_item(partial(columns, factors), factors * 10**factors),
                None,
                30,
            )
            for factors in (4, 6)
        ),
    ]


def building() -> Row:
    keys = {f"p{k}": [1.0, 2.0] for k in range(10**4)}
    make = per_item(lambda: lambda: zipped(keys).build(), 10**4)
    floor = per_item(lambda: lambda: [(key, list(each)) for key, each in keys.items()], 10**4)
    return Row("a parameter of 10^4, through the study layer", make, floor, 5_000)


def first(run: dict) -> float:
    return run["a"]


def running() -> Row:
    study = grid(a=range(200), b=range(100))
    study.columns()
    time_taken = per_item(lambda: lambda: study.run(first, workers=2, progress=False), len(study))
    values = [{"a": a} for a in range(len(study))]
    floor = per_item(lambda: lambda: [first(run) for run in values], len(study))
    return Row("a run by processes, in chunks", time_taken, floor, 50_000)


def main() -> None:
    assert design  # what importing it costs is not to be measured
    rows = [start(), *properties(), *factorial(), building(), running()]
    print(f"{'row':46}{'ns':>12}{'floor':>12}{'goal':>12}")
    for row in rows:
        floor = f"{row.floor:,.0f}" if row.floor is not None else ""
        goal = f"{row.goal:,.0f}" if row.goal is not None else ""
        missed = "  missed" if row.goal is not None and row.nanoseconds > row.goal else ""
        print(f"{row.name:46}{row.nanoseconds:>12,.0f}{floor:>12}{goal:>12}{missed}")


if __name__ == "__main__":
    main()
