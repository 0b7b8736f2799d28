"""The command line: `kxsim run`, `kxsim explain`, `kxsim show`."""

from __future__ import annotations

import argparse
import csv
import importlib
import os
import sys
from collections import Counter
from collections.abc import Callable, Sequence
from pathlib import Path
from typing import Any

import kxsim
from kxsim import _describe
from kxsim._results import first_line
from kxsim._study_file import Refused, defined, load, study_in, told

EPILOG = """\
A study file is a Python file that defines `study`, made by kxsim.study, and for `run` a function
`simulate` that takes a run's values as a dict and returns its outputs by name:

    from kxsim.study import grid
    study = grid(Kp=[0.1, 0.2, 0.4], Ki=[1, 2])
    def simulate(run):
        return {"cost": run["Kp"] ** 2 + run["Ki"]}

If it also defines a function `figures` of the results, `run` saves its pictures (needs Matplotlib):

    from kxsim.figures import Figures
    def figures(results):
        figures = Figures(results)
        figures.scatter(x="Kp", y="cost", c="Ki")
        return figures

Exit status: 0, 1 when a run failed or was interrupted, 2 when a command could not be carried out.
"""


# Commands ----------------------------------------------------------------------------------------


def _need(package: str, purpose: str) -> None:
    try:
        importlib.import_module(package)
    except ImportError as error:
        raise Refused(f"{purpose} needs {package.partition('.')[0]}: {error}") from error


def _check_output(path: Path) -> None:
    """Before anything is computed that could not be kept; makes the folder."""
    if path.suffix not in (".csv", ".parquet"):
        raise Refused(f"{path}: results are written as .csv or .parquet")
    if path.suffix == ".parquet":
        _need("pyarrow.parquet", "a .parquet file")
    try:
        path.parent.mkdir(parents=True, exist_ok=True)
    except OSError as error:
        raise Refused(f"{path} cannot be written: {error.strerror}") from error
    if path.is_dir() or not os.access(path if path.exists() else path.parent, os.W_OK):
        raise Refused(f"{path} cannot be written")


def run(options: argparse.Namespace) -> int:
    module = load(options.file, options.seed)
    study, simulate = study_in(module), defined(module, "simulate")
    make_figures = getattr(module, "figures", None)
    if options.pictures:
        make_figures = defined(module, "figures")
    if make_figures is not None:
        _need("matplotlib", "a study file with figures")
    _check_output(options.output)
    print(_describe.count(study.space), file=sys.stderr)
    results, failure = _carry_out(study, simulate, options)
    write = results.to_parquet if options.output.suffix == ".parquet" else results.to_csv
    write(options.output)
    print(f"{results}\nwritten to {options.output}")
    for k in sorted(results.errors)[:3]:
        print(f"run {k + 1}: {first_line(results.errors[k])}")
    if failure is not None:
        raise failure
    if make_figures is not None:
        _save_pictures(make_figures, results, options)
    return 1 if results.errors or results.interrupted else 0


def _carry_out(study: Any, simulate: Any, options: argparse.Namespace) -> tuple[Any, Any]:
    """The results, and what ended the runs before their end."""
    try:
        results = study.run(
            simulate,
            executor=options.executor,
            workers=options.workers,
            chunk=options.chunk,
            progress=False if options.quiet else None,
            stop_on_error=options.stop_on_error,
        )
    except Exception as error:
        if not hasattr(error, "results"):
            raise
        return error.results, error
    return results, None


def _save_pictures(make: Any, results: Any, options: argparse.Namespace) -> None:
    if "finished" not in results.states:
        print("no run finished, so there are no pictures")
        return
    figures = make(results)
    if not hasattr(figures, "save"):
        raise Refused(f"`figures` returns kxsim.figures.Figures, not {figures!r}")
    for path in figures.save(options.pictures or options.output.parent / "pictures"):
        print(f"picture {path}")


def explain(options: argparse.Namespace) -> int:
    study = study_in(load(options.file, options.seed))
    print(study)
    print(f"\nmemory for the runs: about {_size(_describe.memory(study.space))}\n")
    print(study.table(options.runs))
    return 0


def _size(count: float) -> str:
    """So many bytes, in words."""
    k = next((k for k in (1, 2, 3) if count < 1024 ** (k + 1)), 4)
    return f"{count / 1024**k:,.1f} {'KMGT'[k - 1]}iB"


def _rows(path: Path) -> list[dict[str, Any]]:
    if not path.is_file():
        raise Refused(f"there is no file {path}")
    csv.field_size_limit(sys.maxsize)  # a trace is one cell
    if path.suffix == ".parquet":
        _need("pyarrow.parquet", "a .parquet file")
        from pyarrow import parquet

        return parquet.read_table(path).to_pylist()
    with open(path, newline="", encoding="utf-8") as file:
        return list(csv.DictReader(file))


def show(options: argparse.Namespace) -> int:
    rows = _rows(options.results)
    if not rows or "state" not in rows[0]:
        raise Refused(f"{options.results} holds no results")
    states = Counter(row["state"] for row in rows)
    print(", ".join(f"{count:,} {state}" for state, count in states.most_common()) + "\n")
    names = [name for name in rows[0] if name != "run"]
    print(_describe.aligned(names, rows[: options.runs], len(rows)))
    return 0


# Options -----------------------------------------------------------------------------------------


def _at_least(least: int) -> Callable[[str], int]:
    def number(text: str) -> int:
        if not text.isdecimal() or int(text) < least:
            raise argparse.ArgumentTypeError(f"{text!r} is no integer from {least} on")
        return int(text)

    return number


def _share(text: str) -> float:
    try:
        share = float(text)
    except ValueError:
        share = 0
    if not 0 < share < 1:
        raise argparse.ArgumentTypeError(f"{text!r} is no share of the runs between 0 and 1")
    return share


def _add_study(command: Any) -> None:
    command.add_argument("file", help="the study file")
    seed = {"type": _at_least(0), "metavar": "N"}
    command.add_argument("--seed", **seed, help="start random numbers at N (kxsim.seed)")


def _add_run(commands: Any) -> None:
    command = commands.add_parser("run", help="carry out the runs and write what comes of them")
    command.set_defaults(command=run)
    _add_study(command)
    option = command.add_argument
    written = {"type": Path, "default": Path("results.csv")}
    option("-o", "--output", **written, help="a .csv or .parquet file (%(default)s)")
    option("--pictures", type=Path, metavar="DIR", help="where (`pictures`, beside the output)")
    kinds = {"choices": ["processes", "threads", "serial"], "default": "processes"}
    option("--executor", **kinds, help="(%(default)s)")
    count = {"type": _at_least(1), "metavar": "N"}
    option("--workers", **count, help="how many at a time (one per processor)")
    option("--chunk", **count, help="runs handed over at a time")
    stop = {"type": _share, "nargs": "?", "const": True, "default": False, "metavar": "SHARE"}
    option("--stop-on-error", **stop, help="stop at the first failing run, or past a share")
    option("-q", "--quiet", action="store_true", help="no progress bar")


def _add_shown(command: Any, default: int) -> None:
    count = {"type": _at_least(1), "metavar": "N", "default": default}
    command.add_argument("-n", "--runs", **count, help="runs to show (%(default)s)")


def _add_explain(commands: Any) -> None:
    command = commands.add_parser("explain", help="show a study without carrying it out")
    command.set_defaults(command=explain)
    _add_study(command)
    _add_shown(command, 10)


def _add_show(commands: Any) -> None:
    command = commands.add_parser("show", help="show results that have been written")
    command.set_defaults(command=show)
    command.add_argument("results", type=Path, help="a .csv or .parquet file")
    _add_shown(command, 20)


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(
        "kxsim",
        description="Design studies of dynamic-system models.",
        epilog=EPILOG,
        formatter_class=argparse.RawDescriptionHelpFormatter,
    )
    parser.add_argument("--version", action="version", version=kxsim.__version__)
    commands = parser.add_subparsers(required=True, metavar="command")
    for add in (_add_run, _add_explain, _add_show):
        add(commands)
    return parser


def main(arguments: Sequence[str] | None = None) -> int:
    options = _parser().parse_args(arguments)
    try:
        status = options.command(options)
        sys.stdout.flush()
        return status
    except KeyboardInterrupt:
        print("kxsim: interrupted", file=sys.stderr)
        return 1
    except BrokenPipeError:
        os.dup2(os.open(os.devnull, os.O_WRONLY), 1)  # whoever read this has seen enough
        return 1
    except Exception as error:
        words = told(error, getattr(options, "file", ""))
        if words is None:
            raise
        print(words, file=sys.stderr)
        return 1 if hasattr(error, "results") else 2


if __name__ == "__main__":
    sys.exit(main())
