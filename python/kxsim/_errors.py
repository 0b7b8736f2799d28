"""The one exception of the host."""

from __future__ import annotations

import functools
from collections.abc import Callable, Sequence
from typing import Any


class HostError(RuntimeError):
    """A failure that the host or a model reports.

    `identifier` is its name ("Kxsim:Design:ValuesMustBeCellArray"): `catalog` and `key`. The text
    of the exception is for reading; further messages, if any, are its notes. An exception that
    Python code raised while the host called it is the `__cause__`.
    """

    def __init__(self, catalog: str, key: str, message: str, details: Sequence[str] = ()) -> None:
        super().__init__(catalog, key, message)
        self.catalog = catalog
        self.key = key
        self.message = message
        for detail in details:
            self.add_note(detail)

    @property
    def identifier(self) -> str:
        return f"{self.catalog}:{self.key}"

    def __str__(self) -> str:
        return f"{self.message} ({self.identifier})"


def always(shown: Callable[[Any], str]) -> Callable[[Any], str]:
    """A `__repr__` that says why where it cannot show: in another thread, in a cycle of spaces."""

    @functools.wraps(shown)
    def __repr__(self: Any) -> str:
        try:
            return shown(self)
        except HostError as error:
            return f"<{getattr(type(self), '__host_name__', type(self).__name__)}: {error.message}>"

    return __repr__
