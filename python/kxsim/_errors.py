"""The one exception of the host, and words that errors share."""

from __future__ import annotations

import difflib
import functools
from collections.abc import Callable, Iterable, Sequence
from typing import Any

# What a text of the host's says to whoever writes Python, by a word of it.
_IN_PYTHON = {
    "'VcosFactoryString scalar'": "That is text, a str.",
    "'VcosFactoryString vector'": "That is a list of texts, str.",
    "CannotCreateWithoutModel": "In Python the model comes first: Variable(model, Name='gain').",
    "RandomMethodNotFound": "In Python it may also have 'rvs' or 'sample'.",
}


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
        text = str(self)
        for note in (*details, *(note for word, note in _IN_PYTHON.items() if word in text)):
            self.add_note(note)

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


def nearest(name: object, known: Iterable[str]) -> str | None:
    """What may have been meant: the known name that is most like it, whatever its case."""
    folded = {each.casefold(): each for each in known}
    found = difflib.get_close_matches(str(name).casefold(), folded, n=1)
    return folded[found[0]] if found else None


def hint(near: str | None) -> str:
    """The end of a message about a wrong name; empty when nothing is like it."""
    return f"; did you mean {near!r}?" if near else ""
