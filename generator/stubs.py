"""How Python's type checkers and editors see a package: what the template of its stub prints.

Classes and enumerations are named in full, `kxsim.design.Figure`: within a class a simple name may
be one of its properties.
"""

import re
import textwrap
from functools import cached_property
from typing import TYPE_CHECKING

from generator.primitives import ARRAY, BOOLEAN, INTEGER, INTEGER8, REAL

if TYPE_CHECKING:
    from generator.model import Class, Enum, Module, Operation, Package
    from generator.property import Property

WIDTH = 100
ROOT = "mf.zero.ModelElement"
VALUE, MANY, OBJECTS = (f"kxsim.typing.{name}" for name in ("Value", "Many", "Objects"))
SCALARS = {ARRAY: VALUE, BOOLEAN: "bool", INTEGER: "int", INTEGER8: "int", REAL: "float"}

# What a stub needs by name, so that no class or property can be called like this.
CLASSES = frozenset(["HostEnum", "Literal", "Never", "TypedDict", "Unpack"])
NAMES = frozenset(["Never", "Unpack", "bool", "float", "int", "kxsim", "mf", "property", "str"])


def names_of(module: "Module") -> frozenset[str]:
    """What no property of the module can be called: the roots of its packages among it."""
    return NAMES | {each.path.partition(".")[0] for each in module.packages}


def docstring(text: str, indent: int) -> str:
    """The text as a docstring, behind that many spaces; all lines after the first indented."""
    escaped = text.replace("\\", "\\\\").replace('"""', '\\"\\"\\"')
    if escaped.endswith('"'):
        escaped = f'{escaped[:-1]}\\"'
    margin = " " * indent
    if len(margin) + len(escaped) + 6 <= WIDTH:
        return f'"""{escaped}"""'
    lines = textwrap.wrap(escaped, WIDTH - len(margin) - 3, break_on_hyphens=False)
    return f'"""{lines[0]}\n' + "".join(f"{margin}{line}\n" for line in lines[1:]) + f'{margin}"""'


def seen_from(package: "Package", path: str, name: str) -> str:
    """A name of the package `path`, as the stub of another one writes it."""
    return name if path == package.path else f"{path}.{name}"


def values_of(cls: "Class", package: "Package") -> str:
    """The type of its first values."""
    return seen_from(package, cls.package.path, f"_{cls.name}Values")


def or_name_of(enum: "Enum", package: "Package") -> str:
    """The type of a member or its name."""
    return seen_from(package, enum.package.path, f"_{enum.name}OrName")


def scalar(primitive: str) -> str:
    return SCALARS.get(primitive, "str")


class PropertyStub:
    def __init__(self, prop: "Property"):
        self.prop = prop
        self.name = prop.name
        self.docstring = docstring(prop.doc, 8)
        self.package = prop.owner.package

    @property
    def is_writable(self) -> bool:
        return not (self.prop.many or self.prop.is_derived)

    @property
    def is_enum(self) -> bool:
        return self.prop.target is not None and not self.prop.is_element

    @cached_property
    def one(self) -> str:
        """One value or element."""
        return self.prop.target.qualified if self.prop.target else scalar(self.prop.decl.type)

    @cached_property
    def result(self) -> str:
        """What is read: what may be empty is None then."""
        prop = self.prop
        if prop.many:
            kind = "Sequence" if prop.decl.ordered else "Set"
            return f"mf.zero.{'' if prop.is_element else 'Primitive'}{kind}[{self.one}]"
        is_optional = prop.is_element or (self.is_enum and prop.default is None)
        return f"{self.one} | None" if is_optional else self.one

    @cached_property
    def argument(self) -> str:
        """What is written: of an enumeration also a literal's name."""
        if not self.is_enum:
            return self.result
        optional = self.result.removeprefix(self.one)
        return or_name_of(self.prop.target, self.package) + optional

    @cached_property
    def first(self) -> str:
        """What a constructor takes: contents by their own first values."""
        prop = self.prop
        if prop.is_containment:
            values = values_of(prop.target, self.package)
            return f"{values} | {MANY}[{values}]" if prop.many else f"{values} | None"
        if not prop.many:
            return self.argument
        one = or_name_of(prop.target, self.package) if self.is_enum else self.one
        return f"{MANY}[{one}]"


class CreatorStub:
    """A method that creates into a containment."""

    def __init__(self, prop: "Property"):
        self.name = f"createInto{prop.upper}"
        self.result = prop.target.qualified
        self.values = values_of(prop.target, prop.owner.package)
        what = f"Creates a {prop.target.name} in {prop.name}, with first values if there are any."
        self.docstring = docstring(what, 8)


class OperationStub:
    def __init__(self, operation: "Operation"):
        self.name = operation.name
        self.docstring = docstring(operation.doc, 8)
        self.result = scalar(operation.primitive)
        if operation.target is not None:
            self.result = operation.target.qualified
        if operation.many:
            self.result = f"{OBJECTS}[{self.result}]"


class ClassStub:
    def __init__(self, cls: "Class"):
        self.cls = cls
        self.name = cls.name
        self.docstring = docstring(cls.doc, 4)
        self.values = values_of(cls, cls.package)
        self.properties = [PropertyStub(prop) for prop in cls.properties]
        self.first_values = [each for each in self.properties if each.is_writable or each.prop.many]
        self.creators = [CreatorStub(prop) for prop in cls.properties if prop.is_containment]
        self.operations = [OperationStub(each) for each in cls.operations if each.is_public]

    @property
    def superclass(self) -> str:
        above = self.cls.super
        return seen_from(self.cls.package, above.package.path, above.name) if above else ROOT

    @property
    def values_superclass(self) -> str:
        return values_of(self.cls.super, self.cls.package) if self.cls.super else "TypedDict"


class EnumStub:
    def __init__(self, enum: "Enum"):
        self.name = enum.name
        self.docstring = docstring(enum.doc, 4)
        self.literals = [
            (literal.name, literal.value, docstring(literal.doc, 4)) for literal in enum.literals
        ]
        self.alias = or_name_of(enum, enum.package)
        self.names = ", ".join(f'"{literal.name}"' for literal in enum.literals)


class PackageStub:
    """A package, as one stub file."""

    def __init__(self, package: "Package", packages: "list[Package]"):
        self.path = package.path
        self.package = package
        self.classes = [ClassStub(cls) for cls in package.classes]
        self.enums = [EnumStub(enum) for enum in package.enums]
        self.children = [
            each.name for each in packages if each.path.rpartition(".")[0] == package.path
        ]
        self.has_members = bool(self.classes or self.enums)

    @property
    def file(self) -> str:
        return f"python/{self.path.replace('.', '/')}/__init__.pyi"

    @property
    def public(self) -> list[str]:
        """The names of its classes, enumerations and packages."""
        return sorted([*(each.name for each in [*self.classes, *self.enums]), *self.children])

    @property
    def typing_names(self) -> str:
        """What of the module typing the stub names."""
        of_classes = ["TypedDict", "Unpack"] if self.classes else []
        of_enums = ["Literal"] if self.enums else []
        never = ["Never"] if any(each.cls.is_abstract for each in self.classes) else []
        return ", ".join(sorted([*of_classes, *of_enums, *never]))

    @cached_property
    def modules(self) -> list[str]:
        """The modules that the stub names, its own among them."""
        named = {"kxsim.typing", "mf.zero"} if self.classes else set()
        for cls in self.package.classes:
            targets = [p.target for p in cls.properties] + [o.target for o in cls.operations]
            named |= {each.package.path for each in [cls.super, *targets] if each is not None}
        return sorted(named)


def package_stubs(packages: "list[Package]") -> list[PackageStub]:
    """Of all packages but roots without classes, which are Python packages written by hand."""
    stubs = [PackageStub(package, packages) for package in packages]
    return [stub for stub in stubs if stub.has_members or "." in stub.path]


def fit(text: str) -> str:
    """One blank line at most, and functions whose line is too wide with an argument a line."""
    squeezed = re.sub(r"\n{3,}", "\n\n", text).strip("\n") + "\n"
    return re.sub(r"^( *)(def .*?\()(.*)(\).*)$", fit_function, squeezed, flags=re.MULTILINE)


def fit_function(line: re.Match) -> str:
    if len(line[0]) <= WIDTH:
        return line[0]
    indent, head, arguments, tail = line.groups()
    margin = f"{indent}    "
    lines = [f"{margin}{each},\n" for each in arguments.split(", ")]
    return f"{indent}{head}\n{''.join(lines)}{indent}{tail}"
