"""The resolved model: every decision about the generated code is a field here.

The templates loop and print; whatever they would have to decide is computed by these classes.
"""

from dataclasses import dataclass, field
from functools import cached_property
from itertools import groupby

from generator import names
from generator.binding import HostPackage, host_packages
from generator.primitives import PRIMITIVES
from generator.property import BuilderProperty, Property
from generator.reference import ReferencePage, reference_pages
from generator.stubs import PackageStub, package_stubs


@dataclass(eq=False)
class Type:
    """A class or an enumeration."""

    where: str
    name: str
    doc: str
    package: "Package"
    folder: "Folder"

    @cached_property
    def qualified(self) -> str:
        return f"{self.package.path}.{self.name}"

    @cached_property
    def scoped(self) -> str:
        return names.scoped(self.qualified)

    @cached_property
    def identity(self):
        return names.identity(self.qualified)

    @cached_property
    def header(self) -> str:
        return f"{self.folder.path}/{names.snake(self.name)}.h"

    def seen_from(self, package: "Package") -> str:
        """The name as code in that package's namespace writes it."""
        return self.name if package is self.package else self.scoped


@dataclass(frozen=True)
class Literal:
    name: str
    value: int
    doc: str
    identity: object

    @property
    def definition(self) -> str:
        return f"{self.name} = {self.value},"


@dataclass(eq=False)
class Enum(Type):
    literals: list[Literal] = field(default_factory=list)

    @property
    def width(self) -> int:
        """Of the widest enumerator, so that the comments behind them line up."""
        return max(len(literal.definition) for literal in self.literals)

    @property
    def includes(self) -> list[str]:
        return sorted(["framework/value.h", self.folder.module.export_header])


@dataclass(eq=False)
class Operation:
    where: str
    name: str
    doc: str
    owner: "Class"
    target: Type | None
    primitive: str  # name of the result's primitive type, where it is one
    many: bool
    is_public: bool

    @cached_property
    def identity(self):
        return names.identity(f"{self.owner.qualified}.{self.name}")

    @property
    def access(self) -> str:
        return "kPublic" if self.is_public else "kNotPublic"

    @property
    def results(self) -> str:
        return "kManyResults" if self.many else "kOneResult"

    @property
    def ending(self) -> str:
        """Of the declaration in the owner."""
        return "" if self in self.owner.implemented else " = 0"

    @property
    def result(self) -> str:
        return self.result_in(self.owner.package)

    def result_in(self, package: "Package") -> str:
        one = self.target.seen_from(package) if self.target else PRIMITIVES[self.primitive].type
        return f"std::vector<{one}>" if self.many else one

    @cached_property
    def result_type(self) -> str:
        return self.target.qualified if self.target else self.primitive


@dataclass(eq=False)
class Class(Type):
    super: "Class | None" = None
    is_abstract: bool = False
    properties: list[Property] = field(default_factory=list)  # stored in index order, then derived
    operations: list[Operation] = field(default_factory=list)
    implemented: list[Operation] = field(default_factory=list)
    top_includes: list[str] = field(default_factory=list)
    bottom_includes: list[str] = field(default_factory=list)
    forward: list[Type] = field(default_factory=list)  # declared ahead, of this package
    foreign: list[Type] = field(default_factory=list)  # the same, of other packages

    @cached_property
    def ancestors(self) -> "list[Class]":
        """The superclasses, nearest first."""
        return [self.super, *self.super.ancestors] if self.super else []

    @cached_property
    def all_properties(self) -> list[Property]:
        inherited = self.super.all_properties if self.super else []
        return [*inherited, *self.properties]

    @cached_property
    def all_operations(self) -> list[Operation]:
        return [*(self.super.all_operations if self.super else []), *self.operations]

    @property
    def stored(self) -> list[Property]:
        return [p for p in self.properties if not p.is_derived]

    @cached_property
    def slots(self) -> list[str]:
        """The declarations of the storage: neighbours of one type in one."""
        groups = groupby(self.stored, key=lambda p: p.slot_type)
        return [f"{slot_type} {', '.join(p.slot for p in group)}" for slot_type, group in groups]

    @cached_property
    def first_index(self) -> int:
        return self.super.index_count + 1 if self.super else 1

    @cached_property
    def index_count(self) -> int:
        return self.first_index - 1 + len(self.stored)

    # How it is spelled. --------------------------------------------------------------------------

    @cached_property
    def super_name(self) -> str:
        return self.super.seen_from(self.package) if self.super else ""

    @property
    def handle_kind(self) -> str:
        return "Handle" if self.is_abstract else "ConcreteHandle"

    @cached_property
    def handle_base(self) -> str:
        beyond = f", {self.super_name}" if self.super else ""
        return f"mf::zero::{self.handle_kind}<{self.name}{beyond}>"

    @cached_property
    def impl_base(self) -> str:
        return f"{self.super_name}::Impl" if self.super else "mf::zero::ElementImpl"

    @cached_property
    def impl_base_name(self) -> str:
        """As constructors are inherited from it."""
        return f"{self.super_name}::Impl::Impl" if self.super else "ElementImpl::ElementImpl"

    @cached_property
    def storage_base(self) -> str:
        return f"{self.super_name}::Impl::Storage" if self.super else "ElementImpl::Storage"

    @cached_property
    def builder_impl_base(self) -> str:
        beyond = f", {self.super_name}::Impl::BuilderImpl" if self.super else ""
        return f"mf::zero::BuilderBase<Builder{beyond}>"

    @cached_property
    def constrainables_base(self) -> str:
        return f"{self.super_name or 'mf::zero'}::Constrainables"

    @cached_property
    def open_properties(self) -> list[Property]:
        """Those whose functions are defined in the source, where the other class is complete."""
        return [p for p in self.properties if p.is_open and p.is_element]

    @cached_property
    def set_by_builder(self) -> "list[BuilderProperty]":
        """What the builder sets, inherited properties first; nothing for an abstract class."""
        if self.is_abstract:
            return []
        return [BuilderProperty(self, p) for p in self.all_properties if not p.is_derived]

    @property
    def overridden(self) -> list[Operation]:
        """The operations of superclasses that the class implements."""
        return [operation for operation in self.implemented if operation.owner is not self]

    # Its description in the tables. --------------------------------------------------------------

    @property
    def super_class(self) -> str:
        return f"{self.super_name}::Impl::kClass" if self.super else "kModelElementClass"

    @property
    def native(self) -> str:
        return "kAbstract" if self.is_abstract else f"nativeOf<{self.name}>()"

    @property
    def property_table(self) -> str:
        return "kProperties" if self.properties else "{}"

    @property
    def operation_table(self) -> str:
        return "kOperations" if self.operations else "{}"


@dataclass(eq=False)
class Folder:
    """One schema file and what it describes: a folder of headers and one source."""

    path: str
    schema: str
    package: "Package"
    module: "Module"
    classes: list[Class] = field(default_factory=list)
    enums: list[Enum] = field(default_factory=list)

    @property
    def _base(self) -> str:
        return f"{self.path}/{self.path.rsplit('/', 1)[-1]}"

    @property
    def umbrella(self) -> str:
        return f"{self._base}.h"

    @property
    def source(self) -> str:
        return f"{self._base}.cpp"

    @property
    def schema_path(self) -> str:
        return f"{self.path}/{self.schema}"

    @property
    def headers(self) -> list[str]:
        return sorted(item.header for item in [*self.classes, *self.enums])

    @property
    def source_includes(self) -> list[str]:
        """Besides the classes of the folder: those of others that these must know complete."""
        used = [p for cls in self.classes for p in cls.all_properties if p.is_open]
        opened = {p.target.header for p in used if p.target.folder is not self}
        return sorted({"framework/class_table.h", self.module.header, *opened})


@dataclass(eq=False)
class Package:
    path: str
    name: str
    parent: int  # position in the module's list; -1 for a child of the root
    classes: list[Class] = field(default_factory=list)
    enums: list[Enum] = field(default_factory=list)

    @cached_property
    def namespace(self) -> str:
        return names.scoped(self.path)

    @cached_property
    def underscored(self) -> str:
        return self.path.replace(".", "_")

    @cached_property
    def _constant(self) -> str:
        return "k" + "".join(names.upper_camel(part) for part in self.path.split("."))

    @property
    def class_list(self) -> str:
        return f"{self._constant}Classes" if self.classes else "{}"

    @property
    def enum_list(self) -> str:
        return f"{self._constant}Enums" if self.enums else "{}"


@dataclass(eq=False)
class Module:
    name: str
    doc: str
    folder: str
    namespace: str
    export_macro: str
    export_header: str
    identity: str
    uri_path: str
    schema_path: str
    packages: list[Package] = field(default_factory=list)
    folders: list[Folder] = field(default_factory=list)

    @cached_property
    def singleton(self) -> str:
        return f"MetaPackage{names.upper_camel(self.name)}"

    @cached_property
    def qualified_singleton(self) -> str:
        return f"{self.namespace}::{self.singleton}"

    @property
    def includes(self) -> list[str]:
        return sorted(["framework/meta/meta_package.h", self.export_header])

    @cached_property
    def _base(self) -> str:
        return f"{self.folder}/meta_package_{names.snake(self.name)}"

    @cached_property
    def header(self) -> str:
        return f"{self._base}.h"

    @cached_property
    def source(self) -> str:
        return f"{self._base}.cpp"

    @cached_property
    def host_packages(self) -> list[HostPackage]:
        return host_packages(self.packages, self.folders)

    @cached_property
    def stubs(self) -> list[PackageStub]:
        return package_stubs(self.packages)

    @cached_property
    def reference(self) -> list[ReferencePage]:
        return reference_pages(self)

    @property
    def host_packages_header(self) -> str:
        return f"{self.folder}/host_packages.h"

    @property
    def host_packages_includes(self) -> list[str]:
        headers = [host.header for host in self.host_packages]
        return sorted([*headers, "framework/mi/host_classes.h", self.host_packages_header])

    @property
    def host_packages_source(self) -> str:
        return f"binding/{names.snake(self.name)}_host_packages.cpp"

    @property
    def classes(self) -> list[Class]:
        return [cls for package in self.packages for cls in package.classes]

    @property
    def enums(self) -> list[Enum]:
        return [enum for package in self.packages for enum in package.enums]
