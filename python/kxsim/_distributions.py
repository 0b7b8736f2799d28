"""Python objects as distributions.

The host draws one value at a time by calling "random". A distribution is anything with one of

    random()     called as it is
    rvs()        a SciPy distribution or its like; random_state=<generator> when it takes it
    sample()     the newer SciPy distributions or their like; rng=<generator> when it takes it

tried in this order. Draws come in the order of the runs and within a run in the order of the
space's parameters. They use the generator given to `distribution(..., rng=...)`, otherwise
kxsim's own, which `seed` starts anew together with the host's; no global state is touched.
"""

from __future__ import annotations

import atexit
import operator
from collections.abc import Callable
from functools import lru_cache, partial
from typing import Any

from kxsim import _host

_own_generator: Any = None


def seed(value: int) -> None:
    """Starts the random numbers anew: the host's, and those of Python distributions without `rng`.

    The same seed, an integer from 0 to 2**64 - 1, gives the same study. Raises TypeError or
    ValueError for everything else.
    """
    global _own_generator
    value = operator.index(value)
    if not 0 <= value < 2**64:
        raise ValueError(f"a seed is an integer from 0 to 2**64 - 1, not {value}")
    _host.seed(value)
    _own_generator = generator(value)


def generator(rng: Any) -> Any:
    """The `numpy.random.Generator` that a generator or a seed stands for."""
    from numpy.random import default_rng

    return default_rng(rng)


def _default() -> Any:
    global _own_generator
    if _own_generator is None:
        _own_generator = generator(0)
    return _own_generator


@lru_cache(maxsize=64)
def _keyword_of(function: Callable, wanted: tuple[str, ...]) -> str | None:
    import inspect

    try:
        parameters = inspect.signature(function).parameters
    except (TypeError, ValueError):
        return None
    return next((name for name in wanted if name in parameters), None)


# Functions keep all that the names of their module refer to.
atexit.register(_keyword_of.cache_clear)


def draw_from(source: object, rng: Any = None) -> Callable[[], Any] | None:
    """A function that draws one value; None when the source is no distribution."""
    for name, keywords in (
        ("random", ("rng", "random_state")),
        ("rvs", ("random_state", "rng")),
        ("sample", ("rng", "random_state")),
    ):
        method = getattr(source, name, None)
        if not callable(method) or isinstance(source, type):
            continue
        if name == "random" and rng is None:
            return method
        if isinstance(source, _host.Object):
            return _with_stream(method, _host.Generator(int(rng.integers(2**64, dtype="uint64"))))
        keyword = _keyword_of(getattr(method, "__func__", method), keywords)
        if keyword is None and name == "rvs" and hasattr(source, "freeze"):
            keyword = "random_state"  # hidden behind **kwds while the distribution is not frozen
        if keyword is None:
            return method
        return partial(_draw, method, keyword, rng)
    return None


def _with_stream(method: Callable[[], Any], stream: Any) -> Callable[[], Any]:
    def draw() -> Any:
        stream.swap()
        try:
            return method()
        finally:
            stream.swap()

    return draw


def _draw(method: Callable, keyword: str, rng: Any) -> Any:
    return _one(method(**{keyword: rng if rng is not None else _default()}))


def _one(value: Any) -> Any:
    """A draw of one element as that element."""
    return value.item() if getattr(value, "size", None) == 1 else value


class _Seeded:
    def __init__(self, source: object, rng: Any) -> None:
        self.source = source
        draw = draw_from(source, rng)
        if draw is None:
            kind = type(source).__name__
            raise TypeError(f"{kind} is no distribution: it has no random, rvs or sample")
        self._draw = draw

    def random(self) -> Any:
        return self._draw()

    def __repr__(self) -> str:
        return f"kxsim.distribution({self.source!r})"


def distribution(source: object, *, rng: Any = None) -> _Seeded:
    """A distribution that draws from its own generator.

    `source` is anything with `random`, `rvs` or `sample`; `rng` a `numpy.random.Generator` or a
    seed for one. Raises TypeError for everything else.
    """
    return _Seeded(source, None if rng is None else generator(rng))
