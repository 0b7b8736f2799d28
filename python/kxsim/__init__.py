"""Design studies of dynamic-system models, scripted from Python.

Importing starts the embedded host in this thread and loads the package of design studies. Host
packages are then Python modules under their own names::

    import kxsim
    from kxsim import design

    model = kxsim.Model()
    gain = design.Variable(model, Name="gain")
    with model.transaction():
        gain.Name = "Kp"

Everything of the host belongs to the thread that imported kxsim first.
"""

from __future__ import annotations

import importlib
import os
import sys
from typing import TYPE_CHECKING, Any

from kxsim import _classes, _host, _packages
from kxsim._adapters import adapt, find_method
from kxsim._distributions import distribution, seed
from kxsim._errors import HostError
from kxsim._states import SimState

__all__ = ["HostError", "Model", "SimState", "distribution", "load", "run", "seed"]
__version__ = "0.1.0"


def _start() -> None:
    _host.connect(HostError, _classes.class_for, adapt, find_method)
    _host.start()
    _host.load_module(os.path.join(os.path.dirname(_host.__file__), _host.PACKAGE_LIBRARY))
    _packages.install()


_start()


if TYPE_CHECKING:
    from mf.zero import Model

    from kxsim import design as design
    from kxsim import dist as dist
    from kxsim import figures as figures
    from kxsim import study as study
    from kxsim._reading import load
    from kxsim._run import run
else:

    def __getattr__(name: str) -> Any:
        if name == "Model":
            return _classes.class_for("mf.zero.Model")
        if name == "run":
            from kxsim._run import run

            return run
        if name == "load":
            from kxsim._reading import load

            return load
        if name in ("figures", "study"):
            return importlib.import_module(f"kxsim.{name}")
        return _packages.member(sys.modules[__name__], name)


def __dir__() -> list[str]:
    return sorted({*__all__, "figures", "study", *_packages.members(__name__)})
