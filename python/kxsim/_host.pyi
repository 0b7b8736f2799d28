"""The extension, as far as its classes go; all else of it is looked up by name and untyped."""

import enum
from abc import ABCMeta
from typing import Any, overload

class _Class(ABCMeta): ...  # so that collections may also be abstract ones

class Array(metaclass=_Class):
    @property
    def host_class(self) -> str: ...
    def describe(self) -> str:
        """Size, class and content in a few words."""

class Object(Array):
    @overload
    def __init__(self, array: Array, /) -> None: ...
    @overload
    def __init__(
        self, name: str, arguments: tuple[Any, ...], values: dict[str, Any] = ..., /
    ) -> None: ...
    def __eq__(self, other: object, /) -> bool: ...
    def __hash__(self) -> int: ...
    @property
    def is_valid(self) -> bool:
        """Whether the object still refers to something."""

class ObjectArray(Array):
    index: Any
    count: Any
    def __len__(self) -> int: ...
    @overload
    def __getitem__(self, index: int, /) -> Any: ...
    @overload
    def __getitem__(self, index: slice, /) -> list[Any]: ...

class Reading(enum.Enum):
    PLAIN = 0
    OPTIONAL = 1
    MANY = 2

def __getattr__(name: str) -> Any: ...
