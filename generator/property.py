"""A property: what it is, how its functions and values are spelled, its row in the tables."""

from dataclasses import dataclass
from functools import cached_property
from typing import TYPE_CHECKING

from generator import names
from generator.primitives import ARRAY, PRIMITIVES, REAL, Primitive
from generator.schema import PropertyDecl

if TYPE_CHECKING:
    from generator.model import Class, Package, Type


@dataclass(eq=False)
class Property:
    decl: PropertyDecl
    name: str
    doc: str
    owner: "Class"
    target: "Type | None"  # an enumeration or a class; None for a primitive
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
        return self.is_containment or self.is_reference

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

    @property
    def is_one_open(self) -> bool:
        """Whether its accessors answer what is not complete; a collection is, whatever it holds."""
        return self.is_open and not self.many

    # How it is spelled. --------------------------------------------------------------------------

    @cached_property
    def entry(self) -> str:
        """Its row, as the implementation names it."""
        return f"kProperties[{self.row}]"

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
    def builder_get(self) -> str:
        return "get" if self.is_array else f"get<{self.type}>"

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
    def facts(self) -> str:
        """What goes beyond a plain single value: the last argument, with designated initialisers
        in their order, or nothing."""
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
        return f", {{{', '.join(facts)}}}" if facts else ""

    @cached_property
    def offset(self) -> str:
        return "0" if self.is_derived else f"offsetof(Storage, {self.lower})"


@dataclass(frozen=True)
class BuilderProperty:
    """A property as the builder of a class, its own or a subclass's, sets it."""

    cls: "Class"
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


def quoted(value: str) -> str:
    """A C++ string literal of the text in UTF-8."""
    escapes = {'"': '\\"', "\\": "\\\\", "\n": "\\n", "\t": "\\t"}
    return '"' + "".join(escapes.get(c, c if c >= " " else f"\\{ord(c):03o}") for c in value) + '"'
