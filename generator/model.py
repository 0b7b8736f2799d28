"""The resolved model: every decision about the generated code is a field here.

The templates loop and print; whatever they would have to decide is computed by these classes.
"""

from dataclasses import dataclass, field
from functools import cached_property
from itertools import groupby

from generator import names
from generator.schema import PropertyDecl


@dataclass(frozen=True)
class Primitive:
    """How a kind of plain value is spelled."""

    constant: str  # of framework/class_table.h
    type: str  # what accessors return
    argument: str  # what setters take
    slot: str  # what the storage holds
    constraint: str  # what queries ask with
    initial: str = ""  # of the slot
    read: str = ""  # how the slot's content is reached
    getter: str = ""  # what the implementation's getter returns, where not `type`


ARRAY, BOOLEAN, INTEGER8, INTEGER, REAL = "VxArray", "Boolean", "Integer8", "Integer", "Real"
STRINGS = ("String", "StdString")


def text(constant: str) -> Primitive:
    return Primitive(
        constant,
        "std::u16string",
        "std::u16string_view",
        "mf::zero::Text",
        "TextConstraint",
        read=".str()",
        getter="const std::u16string&",
    )


PRIMITIVES = {
    REAL: Primitive("kReal", "double", "double", "double", "RealConstraint", " = 0.0"),
    BOOLEAN: Primitive("kBoolean", "bool", "bool", "bool", "BooleanConstraint", " = false"),
    INTEGER8: Primitive(
        "kInteger8", "std::int8_t", "std::int8_t", "std::int8_t", "IntegerConstraint", " = 0"
    ),
    INTEGER: Primitive(
        "kInteger", "std::int32_t", "std::int32_t", "std::int32_t", "IntegerConstraint", " = 0"
    ),
    "String": text("kString"),
    "StdString": text("kStdString"),
    ARRAY: Primitive(
        "kArray",
        "const vxArray*",
        "const vxArray*",
        "mf::zero::ArraySlot",
        "ArrayConstraint",
        read=".array",
    ),
}


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


@dataclass(eq=False)
class Enum(Type):
    literals: list[Literal] = field(default_factory=list)

    @property
    def width(self) -> int:
        """Of the widest enumerator, so that the comments behind them line up."""
        return max(len(f"{literal.name} = {literal.value},") for literal in self.literals)


@dataclass(eq=False)
class Property:
    decl: PropertyDecl
    name: str
    doc: str
    owner: "Class"
    target: Type | None  # an enumeration or a class; None for a primitive
    index: int = 0  # counts on from the superclass; 0 for a derived property
    row: int = 0  # in the class's table
    opposite: "Property | None" = None
    is_open: bool = False  # the target's class is not complete where the owner's is defined

    @property
    def where(self) -> str:
        return f"{self.owner.where}.{self.name}"

    @cached_property
    def qualified(self) -> str:
        return f"{self.owner.qualified}.{self.name}"

    @cached_property
    def identity(self):
        return names.identity(self.qualified)

    @cached_property
    def upper(self) -> str:
        return names.upper_camel(self.name)

    @cached_property
    def lower(self) -> str:
        return names.lower_camel(self.name)

    # What it is. ---------------------------------------------------------------------------------

    @property
    def many(self) -> bool:
        return self.decl.many

    @property
    def is_derived(self) -> bool:
        return self.decl.derived

    @property
    def is_element(self) -> bool:
        return isinstance(self.target, Class)

    @property
    def is_containment(self) -> bool:
        return bool(self.decl.contains)

    @property
    def is_reference(self) -> bool:
        return bool(self.decl.refers)

    @property
    def is_array(self) -> bool:
        return self.decl.type == ARRAY

    @property
    def has_check(self) -> bool:
        return self.decl.check

    @cached_property
    def shape(self) -> str:
        """Which block of a template prints it."""
        if self.is_derived:
            return "derived"
        if self.is_containment:
            return "children" if self.many else "child"
        if self.is_reference:
            return "references" if self.many else "reference"
        return "values" if self.many else "value"

    # How it is spelled. --------------------------------------------------------------------------

    @cached_property
    def primitive(self) -> Primitive:
        """Of a value that is no element."""
        if self.target is None:
            return PRIMITIVES[self.decl.type]
        name = self.target.seen_from(self.owner.package)
        return Primitive("", name, name, name, f"EnumConstraint<{name}>", "{}")

    @cached_property
    def type(self) -> str:
        """Of one value or element."""
        return self.type_in(self.owner.package)

    def type_in(self, package: "Package") -> str:
        if self.target is not None:
            return self.target.seen_from(package)
        return self.primitive.type

    def argument_in(self, package: "Package") -> str:
        """What a setter or adder of one value takes in that package's namespace."""
        if self.is_element:
            return f"const {self.type_in(package)}&"
        return self.primitive.argument if self.target is None else self.type_in(package)

    @cached_property
    def argument(self) -> str:
        return self.argument_in(self.owner.package)

    def wrapper_in(self, package: "Package") -> str:
        """How a builder of the contained element is handed over."""
        name = self.type_in(package)
        return f"mf::zero::BuilderWrapper<{name}>" if self.is_open else f"{name}::BuilderWrapper"

    @cached_property
    def wrapper(self) -> str:
        return self.wrapper_in(self.owner.package)

    @cached_property
    def collection(self) -> str:
        order = "Sequence" if self.decl.ordered else "Set"
        if not self.is_element:
            return f"mf::zero::Primitive{order}<{self.type}>"
        name = self.type
        plain = f"mf::zero::Element{order}<{name}>" if self.is_open else f"{name}::{order}"
        return f"mf::zero::WithProxies<{plain}>" if self.with_proxies else plain

    @property
    def with_proxies(self) -> bool:
        return self.is_reference and self.many and self.decl.proxies

    @cached_property
    def result(self) -> str:
        """What the handle's accessor returns."""
        return f"const {self.collection}" if self.many else self.type

    @cached_property
    def getter_result(self) -> str:
        """What the implementation's getter returns."""
        if self.many or self.target is not None or self.is_derived:
            return self.result
        return self.primitive.getter or self.result

    @cached_property
    def builder_result(self) -> str:
        """What the builder's getter returns; an array comes inside the value that owns it."""
        return "mf::zero::Value" if self.is_array else self.type

    @cached_property
    def slot_type(self) -> str:
        """What the storage holds."""
        if self.many:
            return f"mf::zero::{'Reference' if self.is_element else 'Primitive'}List"
        return "mf::zero::ReferenceSlot" if self.is_element else self.primitive.slot

    @cached_property
    def slot(self) -> str:
        """The name in the storage, with what it begins with."""
        is_plain = not self.many and not self.is_element
        return self.lower + (self.primitive.initial if is_plain else "")

    @cached_property
    def read(self) -> str:
        """The value in the storage, as the getter reads it."""
        return f"read<Storage>().{self.lower}" + ("" if self.is_element else self.primitive.read)

    @cached_property
    def constraint(self) -> str:
        if self.is_element:
            kind = "CollectionConstraint" if self.many else "ReferenceConstraint"
        elif self.many:
            kind = f"PrimitiveCollectionConstraint<{self.type}>"
        else:
            kind = self.primitive.constraint
        return f"mf::zero::query::{kind}"

    # Its row in the class's table. ---------------------------------------------------------------

    @cached_property
    def row_type(self) -> str:
        if self.target is None:
            return self.primitive.constant
        factory = "element" if self.is_element else "enumeration"
        return f'table::{factory}<{self.type}>("{self.target.qualified}")'

    @cached_property
    def flags(self) -> list[str]:
        decl = self.decl
        holds = {
            "kMany": self.many,
            "kContainment": self.is_containment,
            "kOrdered": decl.ordered,
            "kUnique": decl.unique or not self.many,
            "kReadOnly": decl.derived,
            "kDerived": decl.derived,
            "kTransient": decl.derived or decl.transient,
            "kWithProxies": self.with_proxies,
        }
        return [flag for flag, does in holds.items() if does]

    @cached_property
    def default(self) -> str | None:
        """The declared default as the registry's text."""
        value = self.decl.default
        if value is None:
            return None
        if isinstance(value, bool):
            return "true" if value else "false"
        return str(value) if self.decl.type != REAL else repr(float(value)).removesuffix(".0")

    @cached_property
    def facts(self) -> list[str]:
        """What goes beyond a plain single value, as designated initialisers in their order."""
        facts = []
        if self.flags != ["kOrdered", "kUnique"]:
            facts.append(f".flags = {' | '.join(self.flags)}")
        if self.default is not None:
            facts.append(f".defaultValue = {quoted(self.default)}")
        if self.opposite is not None:
            other = self.opposite
            table = f"{other.owner.seen_from(self.owner.package)}::Impl::kProperties"
            facts.append(f".opposite = &{table}[{other.row}]")
        if self.has_check:
            facts.append(f".check = table::check<&Impl::aboutToSet{self.upper}>")
        if self.is_derived:
            facts.append(f".derive = table::call<&Impl::get{self.upper}>")
        return facts

    @cached_property
    def offset(self) -> str:
        return "0" if self.is_derived else f"offsetof(Storage, {self.lower})"


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
    forward: list[Type] = field(default_factory=list)  # declared ahead, of this or other packages

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

    @cached_property
    def handle_base(self) -> str:
        kind = "Handle" if self.is_abstract else "ConcreteHandle"
        return f"mf::zero::{kind}<{self.name}{', ' if self.super else ''}{self.super_name}>"

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

    @cached_property
    def super_class(self) -> str:
        return f"{self.super_name}::Impl::kClass" if self.super else "kModelElementClass"


@dataclass(frozen=True)
class BuilderProperty:
    """A property as the builder of a class, its own or a subclass's, sets it."""

    cls: Class
    property: Property

    @property
    def table(self) -> str:
        owner = self.property.owner
        return "Impl" if owner is self.cls else f"{owner.seen_from(self.cls.package)}::Impl"

    @property
    def verb(self) -> str:
        return "add" if self.property.many else "set"

    @property
    def argument(self) -> str:
        if self.property.is_containment:
            return self.property.wrapper_in(self.cls.package)
        return self.property.argument_in(self.cls.package)

    @property
    def type(self) -> str:
        return self.property.type_in(self.cls.package)

    @property
    def value(self) -> str:
        return "value.release()" if self.property.is_containment else "value"

    @property
    def step(self) -> str:
        """The body of the setter."""
        return f"return {self.verb}<{self.table}>({self.property.row}, {self.value});"

    @property
    def is_open(self) -> bool:
        return self.property.is_open and not self.property.is_containment


@dataclass(eq=False)
class Folder:
    """One schema file and what it describes: a folder of headers and one source."""

    path: str
    schema: str
    package: "Package"
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
    def opened_headers(self) -> list[str]:
        """Of the classes that other folders define and these must know to their ends."""
        used = [p for cls in self.classes for p in cls.all_properties if p.is_open]
        return sorted({p.target.header for p in used if p.target.folder is not self})


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
    def constant(self) -> str:
        """What the package's lists are called in the generated tables."""
        return "".join(names.upper_camel(part) for part in self.path.split("."))


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

    @cached_property
    def _base(self) -> str:
        return f"{self.folder}/meta_package_{names.snake(self.name)}"

    @cached_property
    def header(self) -> str:
        return f"{self._base}.h"

    @cached_property
    def source(self) -> str:
        return f"{self._base}.cpp"

    @property
    def classes(self) -> list[Class]:
        return [cls for package in self.packages for cls in package.classes]

    @property
    def enums(self) -> list[Enum]:
        return [enum for package in self.packages for enum in package.enums]


def quoted(value: str) -> str:
    """A C++ string literal of the text in UTF-8."""
    escapes = {'"': '\\"', "\\": "\\\\", "\n": "\\n", "\t": "\\t"}
    return '"' + "".join(escapes.get(c, c if c >= " " else f"\\{ord(c):03o}") for c in value) + '"'
