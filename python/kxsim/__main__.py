"""The command line: `kxsim run`, `kxsim explain`, `kxsim show`."""

from __future__ import annotations

import argparse
import csv
import importlib
import os
import sys
import traceback
from collections import Counter
from collections.abc import Sequence
from pathlib import Path
from typing import Any

import kxsim
from kxsim import _describe

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


class Refused(Exception):
    """A command that cannot be carried out, in words for its user."""


def _load(file: str) -> Any:
    """The study file as a module that workers can import."""
    path = Path(file)
    if not path.is_file():
        raise Refused(f"there is no file {file}")
    sys.path.insert(0, str(path.absolute().parent))
    if not path.stem.isidentifier() or path.stem in sys.modules:
        raise Refused(f"{path.name}: a study file's name is a Python name of its own")
    return importlib.import_module(path.stem)


def _defined(module: Any, name: str) -> Any:
    if not hasattr(module, name):
        raise Refused(f"{module.__file__} does not define {name!r}; see kxsim --help")
    return getattr(module, name)


def _check_output(path: Path) -> None:
    """Before anything is computed that could not be kept; makes the folder."""
    path.parent.mkdir(parents=True, exist_ok=True)
    if path.is_dir() or not os.access(path if path.exists() else path.parent, os.W_OK):
        raise Refused(f"{path} cannot be written")
    if path.suffix == ".parquet":
        importlib.import_module("pyarrow.parquet")


def run(options: argparse.Namespace) -> int:
    module = _load(options.file)
    study, simulate = _defined(module, "study"), _defined(module, "simulate")
    make_figures = getattr(module, "figures", None)
    if options.pictures:
        make_figures = _defined(module, "figures")
    _check_output(options.output)
    print(f"{len(study):,} runs", file=sys.stderr)
    results = study.run(
        simulate,
        executor=options.executor,
        workers=options.workers,
        chunk=options.chunk,
        progress=False if options.quiet else None,
        stop_on_error=options.stop_on_error,
    )
    write = results.to_parquet if options.output.suffix == ".parquet" else results.to_csv
    write(options.output)
    print(f"{results}\nwritten to {options.output}")
    for k in sorted(results.errors)[:3]:
        print(f"run {k + 1}: {results.errors[k].strip().splitlines()[-1]}")
    if make_figures is not None:
        _save_pictures(make_figures, results, options)
    return 1 if results.errors or results.interrupted else 0


def _save_pictures(make: Any, results: Any, options: argparse.Namespace) -> None:
    folder = options.pictures or options.output.parent / "pictures"
    figures = make(results)
    if not hasattr(figures, "save"):
        raise Refused(f"`figures` returns kxsim.figures.Figures, not {figures!r}")
    for path in figures.save(folder):
        print(f"picture {path}")


def explain(options: argparse.Namespace) -> int:
    study = _defined(_load(options.file), "study")
    print(study)
    print(f"\nmemory for the runs: about {_describe.memory(study.space) / 2**20:,.1f} MiB\n")
    print(study.table(options.runs))
    return 0


def _rows(path: Path) -> list[dict[str, Any]]:
    if not path.is_file():
        raise Refused(f"there is no file {path}")
    csv.field_size_limit(sys.maxsize)  # a trace is one cell
    if path.suffix == ".parquet":
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


def _add_run(commands: Any) -> None:
    command = commands.add_parser("run", help="carry out the runs and write what comes of them")
    command.set_defaults(command=run)
    option = command.add_argument
    option("file", help="the study file")
    written = {"type": Path, "default": Path("results.csv")}
    option("-o", "--output", **written, help="a .csv or .parquet file (%(default)s)")
    option("--pictures", type=Path, metavar="DIR", help="where (`pictures`, beside the output)")
    kinds = {"choices": ["processes", "threads", "serial"], "default": "processes"}
    option("--executor", **kinds, help="(%(default)s)")
    option("--workers", type=int, help="how many at a time (one per processor)")
    option("--chunk", type=int, help="runs handed over at a time")
    stop = {"type": float, "nargs": "?", "const": True, "default": False, "metavar": "SHARE"}
    option("--stop-on-error", **stop, help="stop at the first failing run, or past a share")
    option("-q", "--quiet", action="store_true", help="no progress bar")


def _add_explain(commands: Any) -> None:
    command = commands.add_parser("explain", help="show a study without carrying it out")
    command.set_defaults(command=explain)
    command.add_argument("file", help="the study file")
    command.add_argument("-n", "--runs", type=int, default=10, help="runs to show (%(default)s)")


def _add_show(commands: Any) -> None:
    command = commands.add_parser("show", help="show results that have been written")
    command.set_defaults(command=show)
    command.add_argument("results", type=Path, help="a .csv or .parquet file")
    command.add_argument("-n", "--runs", type=int, default=20, help="runs to show (%(default)s)")


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


def _told(error: Exception, options: argparse.Namespace) -> str:
    """An error in words: where in the study file, what, and what was noted about it."""
    file = str(Path(getattr(options, "file", "")).absolute())
    lines = [f.lineno for f in traceback.extract_tb(error.__traceback__) if f.filename == file]
    place = f"{options.file}, line {lines[-1]}: " if lines else ""
    return "\n".join([f"kxsim: {place}{error}", *getattr(error, "__notes__", [])])


def main(arguments: Sequence[str] | None = None) -> int:
    options = _parser().parse_args(arguments)
    try:
        return options.command(options)
    except (Refused, kxsim.HostError, ValueError, TypeError, ImportError, OSError) as error:
        print(_told(error, options), file=sys.stderr)
        return 2


if __name__ == "__main__":
    sys.exit(main())
