"""What Python adds to some host classes: models as containers, collections as sequences."""

from __future__ import annotations

import atexit
import operator
import sys
import weakref
from collections.abc import Callable, Iterable, Iterator, Mapping, MutableSequence, Sequence
from contextlib import contextmanager
from itertools import islice
from reprlib import repr as shortened
from types import GenericAlias
from typing import TYPE_CHECKING, Any, NamedTuple, TypeVar, overload

from kxsim import _host
from kxsim._classes import HostObject, check_keywords
from kxsim._dist import Distribution
from kxsim._errors import HostError, always

if TYPE_CHECKING:
    from mf.zero import ModelElement, Transaction, meta

    from kxsim._classes import HostObject as _Mixed  # what these are mixed into
    from kxsim.typing import Identity, Objects

    E = TypeVar("E", bound=ModelElement)
else:
    _Mixed = object

MANY = _host.Reading.MANY
_COLUMNS = (list, _host.ObjectArray)
_NO_COLUMNS = (str, bytes, Mapping, set, frozenset)


def column(name: object, values: Any) -> Any:
    """The values given for each of several; TypeError for what is no list of them.

    Sets have no order, tables and studies more than one column, arrays without dimensions none.
    """
    if isinstance(values, _COLUMNS):
        return values
    is_list = isinstance(values, Iterable) and not isinstance(values, _NO_COLUMNS)
    if not is_list or hasattr(values, "columns") or getattr(values, "ndim", 1) == 0:
        told = " ".join(shortened(values).split())
        raise TypeError(f"the values of {name!r} are a list, not {told}")
    return values.tolist() if _is_row_of_numbers(values) else list(values)


def _is_row_of_numbers(values: Any) -> bool:
    """Whether it is an array of which Python's own numbers are made sooner than NumPy's."""
    numpy = sys.modules.get("numpy")
    is_array = numpy is not None and type(values) is numpy.ndarray  # a masked one has holes
    return is_array and values.ndim == 1 and values.dtype.kind in "biuf"


def _note_place(error: Exception, columns: Mapping[str, Sequence[Any]]) -> None:
    """Adds to an error which of the values is none for the host."""
    for name, values in columns.items():
        for k, value in enumerate(values):
            try:
                _host.round_trip(value)
            except type(error):
                error.add_note(f"This was for {name!r} of the element at place {k}, from 0.")
                return


class Model(_Mixed):
    """Mixed into mf.zero.Model."""

    __slots__ = ()

    def __init__(self) -> None:
        super().__init__()

    @contextmanager
    def transaction(self) -> Iterator[Transaction]:
        """A change as a whole: kept at the end of the block, rolled back on an exception."""
        transaction = _host.invoke(self, "beginTransaction", ())
        try:
            yield transaction
        except BaseException:
            if transaction.isOpen():
                transaction.rollback()
            raise
        if transaction.isOpen():
            transaction.commit()

    def observe(self, observer: Callable[[ChangeSet], object]) -> Subscription:
        """Calls the observer with each committed change set, until the subscription ends.

        It ends with `end()`, at the end of a `with` block, and when nobody holds it any more: keep
        it, or use this as a decorator. An exception of the observer reaches who committed, after
        the other observers were told; the change stays.
        """
        return Subscription(self, observer)

    @overload
    def elements(self, of_class: None = None, **conditions: Any) -> Objects[ModelElement]: ...
    @overload
    def elements(self, of_class: type[E], **conditions: Any) -> Objects[E]: ...
    @overload
    def elements(self, of_class: str | meta.Class, **conditions: Any) -> Objects[Any]: ...
    def elements(self, of_class: Any = None, **conditions: Any) -> Any:
        """All elements, or those of a class and its subclasses; keywords name properties and the
        values that they must have."""
        arguments: tuple[Any, ...] = () if of_class is None else (of_class,)
        if conditions:
            arguments = (of_class or "mf.zero.ModelElement", conditions)
        return _host.invoke(self, "elements", arguments, MANY)

    @overload
    def createElements(self, of_class: type[E], /, **columns: Iterable[Any]) -> Objects[E]: ...
    @overload
    def createElements(
        self, of_class: str | meta.Class, /, **columns: Iterable[Any]
    ) -> Objects[Any]: ...
    def createElements(self, of_class: Any, /, **columns: Iterable[Any]) -> Any:
        """New elements of a class, in order, all or none of them; keywords name properties and
        have their values, one for each element."""
        if isinstance(of_class, type) and issubclass(of_class, HostObject):
            check_keywords(of_class, columns)
        given = {name: column(name, values) for name, values in columns.items()}
        try:
            return _host.invoke(self, "createElements", (of_class, given), MANY)
        except (TypeError, OverflowError) as error:
            _note_place(error, given)
            raise

    def roots(self) -> Objects[ModelElement]:
        """The elements that no other contains."""
        return _host.invoke(self, "roots", (), MANY)

    def findElement(self, identity: Identity) -> ModelElement | None:
        """The element with that identity, or None."""
        return _host.invoke(self, "findElement", (identity,), _host.Reading.OPTIONAL)

    def __len__(self) -> int:
        return int(_host.invoke(self, "size", ()))

    def __bool__(self) -> bool:
        return True

    @always
    def __repr__(self) -> str:
        return f"<mf.zero.Model of {len(self)} elements>" if self.is_valid else super().__repr__()


class ChangeSet(NamedTuple):
    """What an outermost transaction changed.

    Elements that it created; "Identity" and "Class" of those that it destroyed; "Element",
    "Property", "OldValue" and "NewValue" of each property that it modified.
    """

    created: Sequence[ModelElement]
    destroyed: Sequence[dict[str, Any]]
    modified: Sequence[dict[str, Any]]


def _many(value: Any) -> Sequence[Any]:
    """The host's array of one reads as that one."""
    return value if isinstance(value, Sequence) else [value]


class _Relay:
    """What the host holds of a subscription: nothing that keeps the observer alive."""

    __slots__ = ("_subscription",)

    def __init__(self, subscription: Subscription) -> None:
        self._subscription = weakref.ref(subscription)

    def changed(self, changes: dict[str, Any]) -> None:
        subscription = self._subscription()
        if subscription is not None:
            kinds = (changes["Created"], changes["Destroyed"], changes["Modified"])
            subscription.observer(ChangeSet(*map(_many, kinds)))


# What the host calls keeps all that the names of its module refer to, files for one.
atexit.register(_host.release_foreign, _Relay)


class Subscription:
    """An observation of a model; it keeps its observer."""

    def __init__(self, model: Any, observer: Callable) -> None:
        if not callable(observer):
            raise TypeError(f"an observer must be callable, unlike {type(observer).__name__}")
        self.observer = observer
        self._held = _host.invoke(model, "observe", (_Relay(self),))

    def end(self) -> None:
        """Tells the observer no more; may be called again."""
        self._held.end()

    def __enter__(self) -> Subscription:
        return self

    def __exit__(self, *_: object) -> None:
        self.end()


class Element(_Mixed):
    """Mixed into mf.zero.ModelElement."""

    __slots__ = ()

    def owner(self) -> ModelElement | None:
        """The element that contains this one, or None."""
        return _host.invoke(self, "owner", (), _host.Reading.OPTIONAL)


class Run(_Mixed):
    """Mixed into kxsim.design.Iteration."""

    __slots__ = ()

    @always
    def __repr__(self) -> str:
        if not self.is_valid:
            return super().__repr__()
        from kxsim._describe import values_of

        words = [f"{name}={value!r}" for name, value in islice(values_of(self).items(), 6)]
        return f"<{' '.join([type(self).__host_name__, *words])}>"

    def _repr_html_(self) -> str:
        if not self.is_valid:
            return super()._repr_html_()
        from kxsim import _describe, _html

        return _html.pairs(type(self).__host_name__, _describe.values_of(self))


class Collection(_Mixed):
    """Mixed into the live collections: a mutable sequence, each change one transaction."""

    __slots__ = ()
    __class_getitem__: Any = classmethod(GenericAlias)

    def __len__(self) -> int:
        return int(_host.invoke(self, "size", ()))

    def _all(self) -> Sequence[Any]:
        items = _host.invoke(self, "toArray", (), MANY)
        return () if items is None else items

    def __getitem__(self, index: Any) -> Any:
        if isinstance(index, slice):
            return list(self._all()[index])
        place = operator.index(index)
        try:
            return _host.invoke(self, "at", (place if place >= 0 else place + len(self),))
        except HostError as error:
            if error.key != "IndexOutOfRange":
                raise
        raise IndexError("index out of range")

    def __iter__(self) -> Iterator[Any]:
        """Over what it holds now, whatever happens to it meanwhile."""
        return iter(self._all())

    def __contains__(self, value: Any) -> bool:
        try:
            return _host.invoke(self, "contains", (value,))
        except (HostError, TypeError):
            return False

    def __setitem__(self, index: Any, value: Any) -> None:
        items = list(self._all())
        items[index] = list(value) if isinstance(index, slice) else value
        self._assign(items)

    def __delitem__(self, index: Any) -> None:
        items = list(self._all())
        del items[index]
        self._assign(items)

    def _assign(self, items: list[Any]) -> None:
        _host.invoke(self, "assign", (items,))

    def append(self, value: Any) -> None:
        _host.invoke(self, "add", ([value],))

    def extend(self, values: Iterable[Any]) -> None:
        """Appends all of them, or none when one is refused."""
        _host.invoke(self, "add", (list(values),))

    def insert(self, index: int, value: Any) -> None:
        size = len(self)
        place = max(0, index + size) if index < 0 else min(index, size)
        if place == size:
            self.append(value)
        else:
            self._insert(place, value)

    def _insert(self, place: int, value: Any) -> None:
        if _host.has_member(self, "insert"):
            _host.invoke(self, "insert", (place, value))
        else:
            raise TypeError(f"{type(self).__host_name__} has no order to insert into")

    def remove(self, value: Any) -> None:
        """Takes it out; ValueError when it is not held."""
        if value not in self:
            raise ValueError(f"{value!r} is not in the collection")
        _host.invoke(self, "remove", (value,))

    def clear(self) -> None:
        """Takes everything out."""
        _host.invoke(self, "clear", ())

    def reverse(self) -> None:
        self._assign(self[::-1])

    index = Sequence.index
    count = Sequence.count
    pop = MutableSequence.pop
    __reversed__ = Sequence.__reversed__
    __iadd__ = MutableSequence.__iadd__

    @always
    def __repr__(self) -> str:
        return _listing(self, type(self).__host_name__) if self.is_valid else super().__repr__()

    def _repr_html_(self) -> str:
        return _table(self, type(self).__host_name__) if self.is_valid else super()._repr_html_()


def _listing(items: Any, name: str, shown: int = 6) -> str:
    """The first few in words."""
    words = [repr(item) for item in items[:shown]]
    rest = [f"... {len(items) - shown} more"] if len(items) > shown else []
    return f"<{name} of {len(items)}: [{', '.join(words + rest)}]>"


def _table(items: Any, name: str) -> str:
    from kxsim import _html

    return _html.listing(items, name)


def _extend_object_arrays() -> None:
    of_arrays: Any = _host.ObjectArray
    Sequence.register(of_arrays)
    of_arrays.index = Sequence.index
    of_arrays.count = Sequence.count
    of_arrays.__repr__ = always(lambda self: _listing(self, self.host_class))
    of_arrays._repr_html_ = lambda self: _table(self, self.host_class)


_extend_object_arrays()
MutableSequence.register(Collection)

EXTENSIONS = {
    "mf.zero.Model": Model,
    "mf.zero.ModelElement": Element,
    "mf.zero.Set": Collection,
    "mf.zero.PrimitiveSet": Collection,
    "kxsim.design.Iteration": Run,
    "kxsim.dist.Distribution": Distribution,
}
