"""How scripts see the classes: what the templates of the binding print beyond the model."""

from dataclasses import dataclass
from functools import cached_property
from typing import TYPE_CHECKING

from generator import names
from generator.primitives import BOOLEAN, INTEGER, INTEGER8, REAL
from generator.property import Property, quoted

if TYPE_CHECKING:
    from generator.model import Class, Folder, Operation, Package

SCALARS = {
    BOOLEAN: "logical scalar",
    INTEGER: "int32 scalar",
    INTEGER8: "int32 scalar",
    REAL: "double scalar",
}
TEXT = "VcosFactoryString scalar"


@dataclass(frozen=True)
class Method:
    """A method of a wrapper: its class, named in the wrapper, and its row in the table."""

    name: str
    type: str
    arguments: list[str]

    @property
    def row_arguments(self) -> str:
        return ", ".join(quoted(argument) for argument in self.arguments)


class Wrapper:
    """A class as scripts see it."""

    def __init__(self, cls: "Class"):
        self.cls = cls
        self.name = f"{cls.name}Wrapper"
        self.constant = f"k{cls.name}"

    @property
    def superclass(self) -> str:
        return self.cls.super.qualified if self.cls.super else "mf.zero.ModelElement"

    @cached_property
    def methods(self) -> list[Method]:
        cls = self.cls
        constructor = Method(
            "Construct", f"mf::zero::mi::Construct<{cls.name}>", [cls.name, cls.qualified]
        )
        return [
            *([] if cls.is_abstract else [constructor]),
            *(self.creator(p) for p in cls.properties if p.is_containment),
            *(self.caller(o) for o in [*cls.operations, *cls.overridden] if self.is_shown(o)),
        ]

    def creator(self, prop: Property) -> Method:
        method = f"createInto{prop.upper}"
        return Method(
            names.upper_camel(method),
            f"mf::zero::mi::CreateInto<&{self.cls.name}::Impl::{method}>",
            [method, prop.target.qualified, f"{self.cls.qualified}, any, any"],
        )

    def is_shown(self, operation: "Operation") -> bool:
        """Public, and declared or implemented by the class."""
        declared = operation.owner is self.cls
        return operation.is_public and (declared or operation in self.cls.implemented)

    def caller(self, operation: "Operation") -> Method:
        return Method(
            names.upper_camel(operation.name),
            f"mf::zero::mi::Operation<&{self.cls.name}::Impl::{operation.name}>",
            [operation.name, host_type(operation), self.cls.qualified, operation.doc],
        )

    def row(self, prop: Property) -> str:
        kind = "PrimitiveProperty" if prop.is_array else "elementProperty"
        entry = f"{self.cls.name}::Impl::{prop.entry}"
        return f"{kind}({quoted(prop.name)}, {entry}, {quoted(prop.doc)})"

    @property
    def table(self) -> str:
        """Its table, as an expression."""
        describe = "describeAbstract" if self.cls.is_abstract else "describeClass"
        texts = (self.cls.qualified, self.superclass, self.cls.doc)
        properties = f"{self.constant}Properties" if self.cls.properties else "{}"
        methods = f"{self.constant}Methods" if self.methods else "{}"
        return f"{describe}({', '.join([*map(quoted, texts), properties, methods])})"


def host_type(operation: "Operation") -> str:
    if operation.target is None:
        return SCALARS.get(operation.primitive, TEXT)
    is_class = hasattr(operation.target, "properties")
    shape = " vector" if operation.many else "" if is_class else " scalar"
    return operation.target.qualified + shape


class HostPackage:
    """A package with classes or enumerations, as the host knows it."""

    def __init__(self, package: "Package", folders: "list[Folder]"):
        self.package = package
        self.folders = [folder for folder in folders if folder.package is package]
        self.wrappers = [Wrapper(cls) for cls in package.classes]
        self.name = f"{package.underscored}Package"

    @property
    def header(self) -> str:
        return f"binding/{self.package.underscored}.h"

    @property
    def source(self) -> str:
        return f"binding/{self.package.underscored}.cpp"

    @property
    def includes(self) -> list[str]:
        framework = ("class_description", "element_methods", "empty_parent_package")
        own = [f"framework/mi/{name}.h" for name in framework]
        return sorted([*own, *(folder.umbrella for folder in self.folders)])


def host_packages(packages: "list[Package]", folders: "list[Folder]") -> list[HostPackage]:
    return [HostPackage(p, folders) for p in packages if p.classes or p.enums]
