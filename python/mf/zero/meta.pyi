"""The meta model: what describes the classes. All of it is read-only."""

import mf.zero
from kxsim._classes import HostEnum
from mf.zero import meta

__all__ = [
    "Class",
    "Enum",
    "EnumLiteral",
    "Operation",
    "Package",
    "PrimitiveType",
    "Property",
    "StructuredType",
    "Type",
    "TypedElement",
    "ValueFlags",
]

class ValueFlags(HostEnum):
    """Whether a property holds one value or many."""

    Single = 1
    Many = 2

class Type(mf.zero.ModelElement):
    """What a property's value can be."""

    @property
    def Name(self) -> str: ...
    @property
    def QualifiedName(self) -> str: ...
    @property
    def Package(self) -> meta.Package | None: ...

class StructuredType(Type):
    """A type with properties."""

    @property
    def Properties(self) -> mf.zero.Sequence[meta.Property]: ...

class Class(StructuredType):
    """A class of elements."""

    @property
    def ScopedName(self) -> str: ...
    @property
    def Documentation(self) -> str: ...
    @property
    def IsAbstract(self) -> bool: ...
    @property
    def Superclass(self) -> meta.Class | None: ...
    @property
    def Operations(self) -> mf.zero.Sequence[meta.Operation]: ...

class Enum(Type):
    """An enumeration."""

    @property
    def UnderlyingType(self) -> meta.PrimitiveType | None: ...
    @property
    def Literals(self) -> mf.zero.Sequence[meta.EnumLiteral]: ...

class PrimitiveType(Type):
    """A type whose values are no elements."""

class EnumLiteral(mf.zero.ModelElement):
    """A named value of an enumeration."""

    @property
    def Name(self) -> str: ...
    @property
    def Value(self) -> int: ...
    @property
    def Enum(self) -> meta.Enum | None: ...

class TypedElement(mf.zero.ModelElement):
    """Something with a name, a type and a multiplicity."""

    @property
    def Name(self) -> str: ...
    @property
    def Type(self) -> meta.Type | None: ...
    @property
    def Lower(self) -> int: ...
    @property
    def Upper(self) -> int: ...

class Property(TypedElement):
    """A property of a class."""

    @property
    def Index(self) -> int: ...
    @property
    def ValueFlags(self) -> meta.ValueFlags: ...
    @property
    def DefaultValue(self) -> str: ...
    @property
    def HasDefault(self) -> bool: ...
    @property
    def IsContainment(self) -> bool: ...
    @property
    def IsOrdered(self) -> bool: ...
    @property
    def IsUnique(self) -> bool: ...
    @property
    def IsReadOnly(self) -> bool: ...
    @property
    def IsDerived(self) -> bool: ...
    @property
    def IsTransient(self) -> bool: ...
    @property
    def IsQualificationUnique(self) -> bool: ...
    @property
    def Class(self) -> meta.Class | None: ...

class Operation(TypedElement):
    """An operation of a class."""

    @property
    def IsPublic(self) -> bool: ...
    @property
    def IsStatic(self) -> bool: ...
    @property
    def IsAbstract(self) -> bool: ...
    @property
    def IsEvent(self) -> bool: ...
    @property
    def Class(self) -> meta.Class | None: ...

class Package(mf.zero.ModelElement):
    """A namespace of types and packages."""

    @property
    def Name(self) -> str: ...
    @property
    def Uri(self) -> str: ...
    @property
    def Packages(self) -> mf.zero.Sequence[meta.Package]: ...
    @property
    def Types(self) -> mf.zero.Sequence[meta.Type]: ...
    @property
    def Parent(self) -> meta.Package | None: ...
