"""What Python adds to the host's distributions: parameters by name, plain lists, documentation."""

from __future__ import annotations

from inspect import BoundArguments, Parameter, Signature
from typing import TYPE_CHECKING, Any

from kxsim._errors import hint, nearest

if TYPE_CHECKING:
    from kxsim._classes import NamedObject as _Mixed  # what this is mixed into
else:
    _Mixed = object

# Parameters, those that may be left out with a "?", and documentation, as in dist.pyi.
_KINDS = {
    "Uniform": ("Lower Upper", "On [Lower, Upper]; both finite, Lower below Upper."),
    "Normal": ("Mean StandardDeviation", "Finite mean, positive finite standard deviation."),
    "Lognormal": ("Mu Sigma", "Exp of a normal; Mu and Sigma are those of the logarithm."),
    "Triangular": ("Lower Mode Upper", "Lower <= Mode <= Upper, Lower below Upper, all finite."),
    "Exponential": ("Mean", "Positive finite mean."),
    "TruncatedNormal": (
        "Mean StandardDeviation Lower Upper",
        "The normal given that it lies in [Lower, Upper]; either bound may be infinite.",
    ),
    "Choice": (
        "Values Weights?",
        "One of the values; equally likely, or by weights >= 0 that are not all 0.",
    ),
}


def _parameter(word: str) -> Parameter:
    default = None if word.endswith("?") else Parameter.empty
    return Parameter(word.rstrip("?"), Parameter.POSITIONAL_OR_KEYWORD, default=default)


_SIGNATURES = {
    f"kxsim.dist.{name}": Signature([_parameter(word) for word in words.split()])
    for name, (words, _) in _KINDS.items()
}

DOCS = {f"kxsim.dist.{name}": doc for name, (_, doc) in _KINDS.items()}


class _OfClass:
    def __get__(self, distribution: object, cls: type[Any]) -> Signature:
        if cls.__host_name__ not in _SIGNATURES:
            raise AttributeError("__signature__")
        return _SIGNATURES[cls.__host_name__]


class Distribution(_Mixed):
    """Mixed into kxsim.dist.Distribution."""

    __slots__ = ()
    __signature__: Any = _OfClass()

    def __init__(self, *arguments: Any, **values: Any) -> None:
        signature = _SIGNATURES.get(type(self).__host_name__)
        if signature is not None:
            bound = _bound(type(self).__name__, signature, arguments, values)
            arguments, values = _in_order(bound), {}
        super().__init__(*arguments, **values)


def _bound(
    kind: str, signature: Signature, arguments: tuple[Any, ...], values: dict[str, Any]
) -> BoundArguments:
    for name in values:
        if name not in signature.parameters:
            near = nearest(name, signature.parameters)
            raise TypeError(f"{kind} has no parameter {name!r}{hint(near)}")
    try:
        return signature.bind(*arguments, **values)
    except TypeError as error:
        raise TypeError(f"{kind}{signature}: {error}") from None


def _in_order(bound: BoundArguments) -> tuple[Any, ...]:
    weights = bound.arguments.pop("Weights", None)
    if isinstance(weights, list | tuple):
        import numpy

        weights = numpy.array(weights, float)
    return bound.args if weights is None else (*bound.args, weights)
