"""Distributions of the host, which all draw from one generator (`kxsim.seed`).

Parameters out of range raise `HostError` "Vexal:host:InvalidDistribution".
"""

from typing import Any, Never, overload

from numpy.typing import NDArray

from kxsim._classes import NamedObject
from kxsim.typing import Many

__all__ = [
    "Choice",
    "Distribution",
    "Exponential",
    "Lognormal",
    "Normal",
    "Triangular",
    "TruncatedNormal",
    "Uniform",
]

class Distribution(NamedObject):
    """The base of the distributions."""

    def __init__(self, abstract: Never, /) -> None: ...
    @overload
    def random(self) -> Any:
        """One draw, or a matrix of them."""
    @overload
    def random(self, rows: int, columns: int, /) -> NDArray[Any]: ...

class Uniform(Distribution):
    """On [Lower, Upper]; both finite, Lower below Upper."""

    def __init__(self, Lower: float, Upper: float) -> None: ...

class Normal(Distribution):
    """Finite mean, positive finite standard deviation."""

    def __init__(self, Mean: float, StandardDeviation: float) -> None: ...

class Lognormal(Distribution):
    """Exp of a normal; Mu and Sigma are those of the logarithm."""

    def __init__(self, Mu: float, Sigma: float) -> None: ...

class Triangular(Distribution):
    """Lower <= Mode <= Upper, Lower below Upper, all finite."""

    def __init__(self, Lower: float, Mode: float, Upper: float) -> None: ...

class Exponential(Distribution):
    """Positive finite mean."""

    def __init__(self, Mean: float) -> None: ...

class TruncatedNormal(Distribution):
    """The normal given that it lies in [Lower, Upper]; either bound may be infinite."""

    def __init__(
        self, Mean: float, StandardDeviation: float, Lower: float, Upper: float
    ) -> None: ...

class Choice(Distribution):
    """One of the values; equally likely, or by weights >= 0 that are not all 0."""

    def __init__(self, Values: Many[Any], Weights: Many[float] | None = None) -> None: ...
