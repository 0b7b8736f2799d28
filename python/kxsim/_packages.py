"""Host packages as Python modules, under their own dotted names."""

from __future__ import annotations

import importlib
import importlib.abc
import importlib.machinery
import sys
from functools import partial
from types import ModuleType
from typing import Any

from kxsim import _classes, _host
from kxsim._errors import hint, nearest


def is_package(name: str) -> bool:
    """Whether there is a host package of that name, or classes that name it as theirs."""
    return _host.look_up(name) == "package" or bool(_host.classes(name))


def _last(name: str) -> str:
    return name.rpartition(".")[2]


def members(package: str) -> list[str]:
    """The names of the packages and classes below a package that are known so far."""
    return sorted({_last(name) for name in _host.packages(package) + _host.classes(package)})


def member(module: ModuleType, name: str) -> Any:
    """A class, function or package of a host package; the module keeps it."""
    full = f"{module.__name__}.{name}"
    kind = "" if name.startswith("__") else _host.look_up(full)
    found: Any
    if kind == "class":
        found = _classes.class_for(full)
    elif kind == "function":
        found = _function(full)
    elif not name.startswith("_") and is_package(full):
        found = importlib.import_module(full)
    else:
        near = None if name.startswith("_") else nearest(name, dir(module))
        raise AttributeError(f"the host package {module.__name__!r} has no {name!r}{hint(near)}")
    setattr(module, name, found)
    return found


def _function(full: str) -> Any:
    def function(*arguments: Any) -> Any:
        return _host.call(full, arguments)

    function.__name__ = _last(full)
    function.__qualname__ = full
    function.__doc__ = f"The host function {full}."
    return function


def _attribute(module: ModuleType, name: str) -> Any:
    return members(module.__name__) if name == "__all__" else member(module, name)


def _names(module: ModuleType) -> list[str]:
    return sorted({*module.__dict__, *members(module.__name__)})


def _open(module: ModuleType) -> None:
    """Lets a module show a host package: what it has already is found without asking."""
    vars(module).update(__getattr__=partial(_attribute, module), __dir__=partial(_names, module))


_roots = {"kxsim"}


class _Importer(importlib.abc.MetaPathFinder, importlib.abc.Loader):
    """Asked first, for Python would take a folder that holds nothing but stubs for a package.

    Python's own modules come first all the same.
    """

    def find_spec(self, name: str, path: Any = None, target: Any = None) -> Any:
        root = name.partition(".")[0]
        if root == name or root not in _roots:
            return None
        found = importlib.machinery.PathFinder.find_spec(name, path, target)
        if found is not None and found.loader is not None:
            return found
        if not is_package(name):
            return None
        return importlib.machinery.ModuleSpec(name, self, origin="host", is_package=True)

    def create_module(self, spec: Any) -> ModuleType:
        return ModuleType(spec.name, f"The host package {spec.name}.")

    def exec_module(self, module: ModuleType) -> None:
        _open(module)


def install() -> None:
    """Makes host packages importable."""
    if not any(isinstance(finder, _Importer) for finder in sys.meta_path):
        sys.meta_path.insert(0, _Importer())


def adopt(name: str) -> None:
    """Lets an imported Python module show the host package of the same name."""
    _open(sys.modules[name])
    _roots.add(name)
