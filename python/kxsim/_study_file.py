"""Study files of the command line: loading one, and saying what is wrong in it."""

from __future__ import annotations

import importlib
import sys
import sysconfig
import traceback
from importlib.machinery import PathFinder
from pathlib import Path
from typing import Any

import kxsim
from kxsim.study import Study


class Refused(Exception):
    """A command that cannot be carried out, in words for its user."""


def load(file: str, seed: int | None) -> Any:
    """The study file as a module that workers can import, after the seed was set."""
    path = Path(file)
    if not path.is_file():
        raise Refused(f"there is no file {path}")
    if path.suffix != ".py" or "." in path.stem:
        raise Refused(f"{path}: a study file is Python, and named like study.py")
    if _is_taken(path.stem):
        raise Refused(f"{path}: rename it, for Python has another module {path.stem!r}")
    if seed is not None:
        kxsim.seed(seed)
    sys.path.insert(0, str(path.absolute().parent))
    return importlib.import_module(path.stem)


def _is_taken(name: str) -> bool:
    """Whether a study file of this name would be, or hide, a module of Python or a package."""
    installed = [sysconfig.get_path(each) for each in ("purelib", "platlib")]
    is_known = name in sys.modules or name in sys.stdlib_module_names
    return is_known or PathFinder.find_spec(name, installed) is not None


def defined(module: Any, name: str) -> Any:
    if not hasattr(module, name):
        raise Refused(f"{module.__file__} does not define {name!r}; see kxsim --help")
    return getattr(module, name)


def study_in(module: Any) -> Study:
    study = defined(module, "study")
    if not isinstance(study, Study):
        raise Refused(f"{module.__file__}: `study` is no study: {type(study).__name__}")
    return study


# What is said in one line; other errors too, if the study file raised them.
TOLD = (Refused, kxsim.HostError, ValueError, TypeError, ImportError, OSError)


def _line_in(file: str, error: Exception) -> int | None:
    """Where in the study file an error came up, or None."""
    lines = [
        each.lineno for each in traceback.extract_tb(error.__traceback__) if each.filename == file
    ]
    if isinstance(error, SyntaxError) and error.filename == file:
        return error.lineno
    return lines[-1] if lines else None


def told(error: Exception, file: str) -> str | None:
    """An error in words: where in the study file, what, and what was noted about it."""
    line = _line_in(str(Path(file).absolute()), error)
    if line is None and not isinstance(error, TOLD):
        return None
    place = "" if line is None else f"{file}, line {line}: "
    words = error.msg if isinstance(error, SyntaxError) else str(error)
    name = "" if isinstance(error, TOLD) else f"{type(error).__name__}: "
    return "\n".join([f"kxsim: {place}{name}{words}", *getattr(error, "__notes__", [])])
