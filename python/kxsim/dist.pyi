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
    """On [lower, upper]; both finite, lower below upper."""

    def __init__(self, lower: float, upper: float, /) -> None: ...

class Normal(Distribution):
    """Finite mean, positive finite standard deviation."""

    def __init__(self, mean: float, standard_deviation: float, /) -> None: ...

class Lognormal(Distribution):
    """Exp of a normal; mu and sigma are those of the logarithm."""

    def __init__(self, mu: float, sigma: float, /) -> None: ...

class Triangular(Distribution):
    """lower <= mode <= upper, lower below upper, all finite."""

    def __init__(self, lower: float, mode: float, upper: float, /) -> None: ...

class Exponential(Distribution):
    """Positive finite mean."""

    def __init__(self, mean: float, /) -> None: ...

class TruncatedNormal(Distribution):
    """The normal given that it lies in [lower, upper]; either bound may be infinite."""

    def __init__(
        self, mean: float, standard_deviation: float, lower: float, upper: float, /
    ) -> None: ...

class Choice(Distribution):
    """One of the values; equally likely, or by weights >= 0 that are not all 0."""

    def __init__(self, values: Many[Any], weights: Many[float] = ..., /) -> None: ...
