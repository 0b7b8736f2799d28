"""States that simulations start from."""

from __future__ import annotations

from dataclasses import dataclass
from typing import Any


@dataclass(frozen=True)
class SimState:
    """What `kxsim.design.InitialState` takes as its `SimState`; reading it gives this very object.

    `value` belongs to the simulation: an array, a mapping, anything. Subclasses will do.

        design.InitialState(model, SimState=kxsim.SimState({"speed": 0.0}))
    """

    value: Any = None

    __host_class__ = "Kinetra.SimState.ModelSimState"
