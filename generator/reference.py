"""The reference: what the templates of its pages print, in Markdown."""

from collections.abc import Iterator
from functools import cached_property
from typing import TYPE_CHECKING

from generator.primitives import ARRAY, BOOLEAN, INTEGER, INTEGER8, REAL

if TYPE_CHECKING:
    from generator.model import Class, Module, Operation, Package, Type
    from generator.property import Property

WORDS = {
    ARRAY: "any value",
    BOOLEAN: "truth value",
    INTEGER: "whole number",
    INTEGER8: "whole number, -128 to 127",
    REAL: "number",
}
INITIAL = {ARRAY: "nothing", BOOLEAN: "false", INTEGER: "0", INTEGER8: "0", REAL: "0"}


def escaped(text: str) -> str:
    """Plain text that may stand in a cell of a table."""
    for sign in ("\\", "`", "*", "|"):
        text = text.replace(sign, f"\\{sign}")
    return text.replace("<", "&lt;")


def word(primitive: str) -> str:
    return WORDS.get(primitive, "text")


def page_of(package: "Package") -> str:
    return f"{package.path}.md"


def link(to: "Type", package: "Package") -> str:
    """A link to a class or an enumeration, from the page of that package."""
    page = "" if to.package is package else page_of(to.package)
    return f"[{to.name}]({page}#{to.name.lower()})"


class PropertyEntry:
    def __init__(self, prop: "Property"):
        self.prop = prop
        self.name = prop.name

    @cached_property
    def type(self) -> str:
        prop = self.prop
        if prop.target is None:
            return word(prop.decl.type)
        to = link(prop.target, prop.owner.package)
        return f"contains {to}" if prop.is_containment else to

    @cached_property
    def multiplicity(self) -> str:
        if self.prop.many:
            return "any number" if self.prop.decl.ordered else "any number, no order"
        return "one or none" if self.prop.is_element else "one"

    @cached_property
    def default(self) -> str:
        """What it is in a new element; nothing for collections and what is computed."""
        prop = self.prop
        if prop.many or prop.is_derived:
            return ""
        if prop.default is not None:
            return prop.default
        return "none" if prop.target is not None else INITIAL.get(prop.decl.type, "empty")

    @cached_property
    def doc(self) -> str:
        prop = self.prop
        facts = {
            "Computed; read-only.": prop.is_derived,
            "Checked when it is set.": prop.has_check,
            "Not saved.": prop.decl.transient,
        }
        opposite = [f"The other end of `{prop.opposite.name}` there."] if prop.opposite else []
        told = [fact for fact, holds in facts.items() if holds]
        return " ".join([escaped(prop.doc), *told, *opposite])


class OperationEntry:
    def __init__(self, operation: "Operation"):
        self.call = f"{operation.name}()"
        self.doc = escaped(operation.doc)
        target = operation.target
        one = link(target, operation.owner.package) if target else word(operation.primitive)
        self.result = f"many of {one}" if operation.many else one


class ClassEntry:
    def __init__(self, cls: "Class", module: "Module"):
        self.cls = cls
        self.name = cls.name
        self.doc = escaped(cls.doc)
        self.properties = [PropertyEntry(prop) for prop in cls.properties]
        self.operations = [OperationEntry(each) for each in cls.operations if each.is_public]
        self.subclasses = [each for each in module.classes if each.super is cls]

    @cached_property
    def place(self) -> str:
        """Where it stands among the classes, in sentences; empty for a class by itself."""
        cls, sentences = self.cls, []
        if cls.super:
            sentences.append(f"A {link(cls.super, cls.package)}.")
        if cls.is_abstract:
            sentences.append("Abstract: only its subclasses have elements.")
        if self.subclasses:
            below = ", ".join(link(each, cls.package) for each in self.subclasses)
            sentences.append(f"Subclasses: {below}.")
        return " ".join(sentences)

    @cached_property
    def inherited(self) -> str:
        """The properties of its superclasses by name, nearest first."""
        named = [
            f"{', '.join(f'`{prop.name}`' for prop in each.properties)}"
            f" of {link(each, self.cls.package)}"
            for each in self.cls.ancestors
            if each.properties
        ]
        return "; ".join(named)


class ReferencePage:
    """One package."""

    def __init__(self, package: "Package", module: "Module"):
        self.path = package.path
        self.file = page_of(package)
        self.package = package
        self.classes = [ClassEntry(cls, module) for cls in package.classes]
        self.enums = package.enums

    @cached_property
    def tree(self) -> list[str]:
        """The classes as nested lists, each below its superclass."""
        heads = [c for c in self.package.classes if not c.super or c.super.package != self.package]
        return [line for cls in heads for line in self.branch(cls, "")]

    def branch(self, cls: "Class", margin: str) -> Iterator[str]:
        yield f"{margin}- {link(cls, self.package)}: {escaped(cls.doc)}"
        for below in self.package.classes:
            if below.super is cls:
                yield from self.branch(below, f"{margin}  ")


def reference_pages(module: "Module") -> list[ReferencePage]:
    return [ReferencePage(each, module) for each in module.packages if each.classes or each.enums]
