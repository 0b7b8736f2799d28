"""What the host gets for Python values of no built-in kind, and how it calls Python objects."""

from __future__ import annotations

import datetime
import sys
import uuid
from collections.abc import Callable

from kxsim import _host
from kxsim._distributions import draw_from

_WITHOUT_COUNTERPART = (
    bytes,
    bytearray,
    memoryview,
    complex,
    set,
    frozenset,
    range,
    datetime.date,
    datetime.time,
    datetime.timedelta,
)


def _refusal(value: object) -> TypeError:
    kind = type(value).__name__
    dtype = getattr(value, "dtype", None)
    if dtype is not None and str(dtype) != kind:
        kind = f"{kind} of {dtype}"
    hint = "; make it a list" if isinstance(value, set | frozenset | range) else ""
    hint = "; fill it first, with nan for one" if hasattr(value, "mask") else hint
    return TypeError(f"the host has no counterpart for {kind}{hint}")


def _numpy_stand_in(value: object) -> object:
    """For arrays that are no plain numbers: those of objects or text become cell arrays."""
    numpy = sys.modules.get("numpy")
    if numpy is None or not isinstance(value, numpy.ndarray | numpy.generic):
        return None
    if value.dtype.kind == "f" and value.dtype.itemsize == 2 or value.dtype.byteorder == ">":
        return value.astype(float)
    if isinstance(value, numpy.generic) or value.dtype.kind not in "OU":
        raise _refusal(value)
    shape = (1,) * (2 - value.ndim) + value.shape
    return _host.make_cell(shape, value.ravel(order="F").tolist())


def adapt(value: object) -> object:
    """What stands for a value in the host; the value itself when it may lie there as it is."""
    as_host = getattr(type(value), "__host__", None)
    if as_host is not None:
        return as_host(value)
    if isinstance(value, type) and hasattr(value, "__host_name__"):
        return value.__host_name__
    if isinstance(value, int):
        return int(value)
    if isinstance(value, uuid.UUID):
        return str(value)
    stand_in = _numpy_stand_in(value)
    if stand_in is not None:
        return stand_in
    if isinstance(value, _WITHOUT_COUNTERPART):
        raise _refusal(value)
    return value


def find_method(value: object, name: str) -> Callable | None:
    """The callable that answers the host's calls of a Python object by name."""
    if name == "random":
        return draw_from(value)
    if name.startswith("_"):
        return None
    if name == "changed" and callable(value):
        return value
    method = getattr(value, name, None)
    return method if callable(method) else None
