"""The framework as scripts see it: models, elements, live collections, transactions."""

from collections.abc import Iterable, MutableSequence
from typing import Any, Never, SupportsIndex, TypeVar, overload

from kxsim import _live
from kxsim._classes import HostObject
from kxsim.typing import Many
from mf.zero import meta as meta

__all__ = [
    "Map",
    "Model",
    "ModelElement",
    "Multimap",
    "PrimitiveAssociativeCollection",
    "PrimitiveSequence",
    "PrimitiveSet",
    "Sequence",
    "Set",
    "Subscription",
    "Transaction",
    "meta",
]

_T = TypeVar("_T")

class Model(_live.Model, HostObject):
    """A container of elements, which may refer to each other."""

    def __init__(self) -> None: ...
    def beginTransaction(self) -> Transaction:
        """Begins a transaction, inside the open one if there is one.

        It is rolled back unless it is committed before the last reference to it goes; better use
        `with model.transaction():`.
        """
    def isInTransaction(self) -> bool:
        """Whether a transaction is open."""
    def size(self) -> float:
        """How many elements the model holds, contained ones included; `len` says it as an int."""
    def freeze(self) -> None:
        """Refuses every change until the model is thawed."""
    def thaw(self) -> None:
        """Lets changes be made again."""
    def isFrozen(self) -> bool:
        """Whether changes are refused."""
    def close(self) -> None:
        """Destroys everything in the model, after which it cannot be used."""

class Transaction(HostObject):
    """A change in progress.

    The transactions of one model end in the reverse order of their beginning.
    """

    def __init__(self, made_by_models: Never, /) -> None: ...
    def commit(self) -> None:
        """Keeps the changes; after the outermost one the observers are told."""
    def rollback(self) -> None:
        """Undoes every change since its beginning."""
    def isOpen(self) -> bool:
        """Whether it has not ended yet."""

class Subscription(HostObject):
    """The host's side of an observation; `Model.observe` returns Python's."""

    def __init__(self, made_by_models: Never, /) -> None: ...
    def end(self) -> None:
        """Tells the observer no more; may be called again."""

class ModelElement(_live.Element, HostObject):
    """The root of all elements."""

    def __init__(self, abstract: Never, /) -> None: ...
    @classmethod
    def StaticMetaClass(cls) -> meta.Class:
        """The meta class of the class."""
    @classmethod
    def isValid(cls, object: object, /) -> bool:
        """Whether an object refers to an element that has not been destroyed."""
    def destroy(self) -> None:
        """Destroys the element and what it contains, and takes them out of every reference."""
    def identity(self) -> str:
        """The identity, which is fixed at creation, as text."""
    def model(self) -> Model:
        """The model that the element belongs to."""

# The live collections behave alike, whatever they hold. The ones without order refuse to insert
# anywhere but at the end.

class _Collection(HostObject, MutableSequence[_T]):
    def __init__(self, made_by_elements: Never, /) -> None: ...
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, index: SupportsIndex) -> _T: ...
    @overload
    def __getitem__(self, index: slice) -> list[_T]: ...
    @overload
    def __setitem__(self, index: SupportsIndex, value: _T) -> None: ...
    @overload
    def __setitem__(self, index: slice, value: Iterable[_T]) -> None: ...
    def __delitem__(self, index: SupportsIndex | slice) -> None: ...
    def insert(self, index: int, value: _T) -> None: ...
    def size(self) -> float:
        """How many it holds; `len` says it as an int."""
    def at(self, index: int, /) -> _T:
        """What stands at a place, from 0."""
    def contains(self, value: object, /) -> bool:
        """Whether it holds it."""
    def indexOf(self, value: _T, /) -> float:
        """The place where it stands; -1 when it is not held."""
    def toArray(self) -> Any:
        """All that it holds now, as one array."""
    def add(self, values: _T | Many[_T], /) -> None:
        """Adds one, or all of an array, a list or a collection; all of it or nothing."""
    def assign(self, values: _T | Many[_T], /) -> None:
        """Makes it hold exactly these."""

class Set(_Collection[_T]):
    """The elements that a property holds: a live view, in no particular order."""

class Sequence(Set[_T]):
    """The elements that a property holds, in order: a live view."""

    def removeAt(self, index: int, /) -> None:
        """Takes out what stands there."""
    def move(self, from_: int, to: int, /) -> None:
        """Moves what stands at one place to another."""

class PrimitiveSet(_Collection[_T]):
    """The values that a property holds, each once: a live view."""

class PrimitiveSequence(PrimitiveSet[_T]):
    """The values that a property holds, in order: a live view."""

    def removeAt(self, index: int, /) -> None:
        """Takes out what stands there."""
    def move(self, from_: int, to: int, /) -> None:
        """Moves what stands at one place to another."""

class Map(Set[_T]):
    """Elements by key."""

class Multimap(Set[_T]):
    """Elements by key, several for one key."""

class PrimitiveAssociativeCollection(PrimitiveSet[_T]):
    """Values by key."""
