"""Python classes of host classes, made from their descriptions when first asked for."""

from __future__ import annotations

import enum
import types
from collections.abc import Callable, Iterable, Mapping
from typing import TYPE_CHECKING, Any

from kxsim import _dist, _host
from kxsim._errors import HostError, always, hint, nearest

if TYPE_CHECKING:
    from inspect import Signature

_made: dict[str, type] = {}
_construct = _host.Object.__init__


class _Kept:
    """Stands for the first value of a property that is not given."""

    def __repr__(self) -> str:
        return "..."


class _Signature:
    """What `inspect.signature`, and so help and completion, are told of a class's constructor."""

    def __get__(self, element: object, cls: type[HostObject]) -> Signature:
        from inspect import Parameter, Signature

        if not cls.__host_properties__:
            raise AttributeError("__signature__")
        settable = (
            name
            for name, is_plain in cls.__host_properties__.items()
            if not is_plain or getattr(cls, name).fset
        )
        words = (Parameter(name, Parameter.KEYWORD_ONLY, default=_Kept()) for name in settable)
        model = Parameter("model", Parameter.POSITIONAL_ONLY)
        return Signature([model, Parameter("first", Parameter.VAR_POSITIONAL), *words])


class HostObject(_host.Object):
    """The base of all classes of the host.

    Objects are equal when they stand for the same thing, whichever Python object holds them.
    """

    __slots__ = ()
    __host_name__ = ""
    __host_properties__: Mapping[str, bool] = {}
    __signature__ = _Signature()

    def __init__(self, *arguments: Any, **values: Any) -> None:
        check_keywords(type(self), values)
        try:
            _construct(self, self.__host_name__, arguments, values)
        except HostError as error:
            if error.key == "CannotConvert" and values:
                error.add_note(f"Given were {', '.join(map(repr, values))}.")
            raise

    def __reduce__(self) -> Any:
        raise TypeError(f"{type(self).__host_name__} can be neither copied nor pickled")

    @always
    def __repr__(self) -> str:
        name = type(self).__host_name__
        if not _host.is_ready(self) or not self.is_valid:
            return f"<{name} ({'no longer' if _host.is_ready(self) else 'not yet'} valid)>"
        shown = [f"{key}={value!r}" for key, value in self._values(limit=4)]
        return f"<{' '.join([name, *shown])}>"

    def _values(self, limit: int | None = None) -> list[tuple[str, Any]]:
        """Names and values of the first properties that are plain values."""
        shown: list[tuple[str, Any]] = []
        for name, is_plain in type(self).__host_properties__.items():
            if is_plain and (limit is None or len(shown) < limit):
                shown.append((name, getattr(self, name)))
        return shown

    def _repr_html_(self) -> str:
        from kxsim import _html

        if not self.is_valid or not type(self).__host_properties__:
            return _html.preformatted(repr(self))
        values = {name: getattr(self, name) for name in type(self).__host_properties__}
        return _html.pairs(type(self).__host_name__, values)


class NamedObject(HostObject):
    """The base of classes that are known by name alone: attributes are looked up on each access."""

    __slots__ = ()

    def __init__(self, *arguments: Any) -> None:
        _host.Object.__init__(self, _host.call_raw(type(self).__host_name__, arguments))

    @always
    def __repr__(self) -> str:
        return f"<{self.describe().removeprefix('1-by-1 ')}>"

    def __getattr__(self, name: str) -> Any:
        if name.startswith("__") or not _host.has_member(self, name):
            raise AttributeError(f"{type(self).__host_name__} has no {name!r}", name=name, obj=self)
        try:
            return _host.get(self, name)
        except HostError as error:
            if error.key not in ("NotAProperty", "NoSuchMember"):
                raise
        return lambda *arguments: _host.invoke(self, name, arguments)


def check_keywords(cls: type[HostObject], names: Iterable[str]) -> None:
    """Raises TypeError for a keyword that is no property of the class."""
    for name in names:
        if name not in cls.__host_properties__:
            near = nearest(name, cls.__host_properties__)
            raise TypeError(f"{cls.__name__} has no property {name!r}{hint(near)}")


def class_for(name: str) -> type:
    """The Python class of a host class. Raises HostError for an unknown name."""
    made = _made.get(name)
    if made is None:
        described = _host.describe_class(name)
        made = _enumeration(described) if described["literals"] else _class(described)
        _made[name] = made
    return made


def _split(name: str) -> tuple[str, str]:
    package, _, short = name.rpartition(".")
    return package, short


# Enumerations ------------------------------------------------------------------------------------


class HostEnum(enum.Enum):
    """The base of enumerations of the host; a member may also be looked up by its name."""

    __host_name__: str

    @classmethod
    def _missing_(cls, value: object) -> HostEnum | None:
        return cls.__members__.get(value) if isinstance(value, str) else None

    def __host__(self) -> _host.Array:
        return _host.enum_member(type(self).__host_name__, self.name)


def _enumeration(described: dict[str, Any]) -> type:
    package, short = _split(described["name"])
    make: Any = HostEnum  # called like this, it makes another enumeration
    made: type[HostEnum] = make(short, described["literals"], module=package)
    made.__doc__ = described["doc"]
    made.__host_name__ = described["name"]
    return made


# Classes -----------------------------------------------------------------------------------------


def _class(described: dict[str, Any]) -> type:
    from kxsim import _live

    name = described["name"]
    package, short = _split(name)
    superclasses = described["superclasses"]
    if superclasses:
        base = class_for(superclasses[0])
    else:
        base = NamedObject if described["by_name"] else HostObject
    own = _live.EXTENSIONS.get(name)
    mixed_in = [each for each in (own, *base.__mro__) if each in _live.EXTENSIONS.values()]
    contents = {
        "__slots__": (),
        "__module__": package,
        "__doc__": _class_doc(described),
        "__host_name__": name,
        "__host_properties__": {
            each["name"]: _is_plain(each["type"])
            for each in described["members"]
            if each["kind"] == "property"
        },
    }
    for each in described["members"]:
        is_known = each["defined_by"] != name or any(hasattr(m, each["name"]) for m in mixed_in)
        if not is_known and each["kind"] in _MAKERS:
            contents[each["name"]] = _MAKERS[each["kind"]](name, each)
    bases = (own, base) if own else (base,)
    return types.new_class(short, bases, exec_body=lambda body: body.update(contents))


def _is_plain(data_type: str) -> bool:
    return data_type.endswith(" scalar")


def _class_doc(described: dict[str, Any]) -> str:
    constructor = next((m for m in described["members"] if m["kind"] == "constructor"), None)
    if constructor is None:
        return described["doc"] or _dist.DOCS.get(described["name"], "")
    return f"{described['doc']}\n\n{constructor['doc']}"


def _signature(described: dict[str, Any]) -> str:
    arguments = described["arguments"]
    if arguments is None:
        return f"{described['name']}(...)"
    words = [
        (name or data_type) + ("=..." if is_optional else "")
        for name, data_type, is_optional in arguments
    ]
    return f"{described['name']}({', '.join(words)})"


def _method_doc(described: dict[str, Any]) -> str:
    result = "" if described["type"] in ("", "void") else f" -> {described['type']}"
    return f"{_signature(described)}{result}\n\n{described['doc']}"


def _property(owner: str, described: dict[str, Any]) -> property:
    from kxsim import _live

    name, data_type = described["name"], described["type"]
    getter = _host.getter(name, data_type.endswith(" property"))
    setter = _host.setter(name) if described["writable"] else None
    if _live.EXTENSIONS.get(data_type) is _live.Collection:
        setter = _keeping(name, getter)
    return property(getter, setter, None, f"{described['doc']} ({data_type})")


def _keeping(name: str, getter: Callable) -> Callable:
    """The setter that lets `owner.name += items` end well, and refuses all else."""

    def keep(owner: HostObject, value: object) -> None:
        if value != getter(owner):
            raise AttributeError(
                f"{name!r} has no setter, it is a live collection: assign to {name}[:]"
            )

    return keep


def _named(function: Callable, owner: str, described: dict[str, Any]) -> Callable:
    function.__name__ = described["name"]
    function.__qualname__ = f"{_split(owner)[1]}.{described['name']}"
    function.__doc__ = _method_doc(described)
    return function


def reading_of(data_type: str) -> _host.Reading:
    """How a method's result is to be read, by its declared data type."""
    shapes = {"vector": _host.Reading.MANY, "property": _host.Reading.OPTIONAL}
    return shapes.get(data_type.rpartition(" ")[2], _host.Reading.PLAIN)


def _method(owner: str, described: dict[str, Any]) -> Callable:
    name, reading = described["name"], reading_of(described["type"])

    def method(self: HostObject, *arguments: Any, **values: Any) -> Any:
        return _host.invoke(self, name, arguments, reading, values)

    def plain_method(self: HostObject) -> Any:
        return _host.invoke(self, name, (), reading)

    if described["arguments"] == []:
        return _named(plain_method, owner, described)
    return _named(method, owner, described)


def _static_method(owner: str, described: dict[str, Any]) -> classmethod:
    name = described["name"]

    def method(cls: type[HostObject], *arguments: Any) -> Any:
        return _host.invoke_static(cls.__host_name__, name, arguments)

    def plain_method(cls: type[HostObject]) -> Any:
        return _host.invoke_static(cls.__host_name__, name, ())

    made = method if described["arguments"] else plain_method
    return classmethod(_named(made, owner, described))


_MAKERS = {"property": _property, "method": _method, "static": _static_method}
