"""Names for annotations, as the stubs of the host's packages use them.

from kxsim.typing import Objects

def finished(runs: Objects[mm.SimulationRun]) -> int: ...
"""

from __future__ import annotations

import uuid
from collections.abc import Sequence
from typing import Any, TypeAlias, TypeVar

from numpy.typing import NDArray

T = TypeVar("T")

Value: TypeAlias = Any
"""What a host array may hold (docs/python.md): numbers, texts, lists, dicts, any object."""

Identity: TypeAlias = str | uuid.UUID | NDArray[Any]
"""An element's identity: as text, or an array of 16 numbers from 0 to 255."""

Many: TypeAlias = Sequence[T] | NDArray[Any]
"""What fills a collection: a list, a tuple, another collection, an array."""

Objects: TypeAlias = Sequence[T]
"""What the host answers for many objects; they are made as they are looked at."""
