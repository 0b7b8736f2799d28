"""The rules that a resolved model must keep, beyond that every name means something."""

import keyword
import sys
import uuid
from collections.abc import Callable, Iterable

from generator import names, stubs
from generator.model import Class, Enum, Module
from generator.primitives import ARRAY, BOOLEAN, INTEGER, INTEGER8, REAL, STRINGS
from generator.property import Property
from generator.schema import Problems, suggestion

# The runtime notes a reference by six bits of its property's index.
LAST_REFERENCE_INDEX = 63

INTEGER_RANGES = {INTEGER8: (-(2**7), 2**7 - 1), INTEGER: (-(2**31), 2**31 - 1)}


def check(module: Module, problems: Problems) -> None:
    check_module(module, problems)
    check_outputs(module, problems)
    for enum in module.enums:
        check_enum(enum, problems)
    for cls in module.classes:
        check_class_name(cls, problems)
        check_members(cls, problems)
        check_operations(cls, problems)
        for prop in cls.properties:
            check_name(prop, problems)
            for rule in RULES:
                for problem in rule(prop):
                    problems.add(prop.where, problem)


def check_module(module: Module, problems: Problems) -> None:
    where = module.schema_path.rpartition("/")[2]
    try:
        uuid.UUID(module.identity)
    except ValueError:
        problems.add(where, f"'{module.identity}' is not a UUID")
    if not module.uri_path.startswith("/") or module.uri_path.endswith("/"):
        problems.add(where, "'uri_path' must begin with a slash and not end with one")
    if not names.is_identifier(module.name):
        problems.add(where, f"'{module.name}' cannot be the name of a module")


def check_outputs(module: Module, problems: Problems) -> None:
    """Two things that want the same file; files of classes are told under the class."""
    owners: dict[str, str] = {path: "the module" for path in (module.header, module.source)}
    for folder in module.folders:
        for path in (folder.umbrella, folder.source):
            if path in owners:
                problems.add(folder.schema, f"'{path}' is also a file of {owners[path]}")
            owners[path] = folder.schema
    for item in [*module.enums, *module.classes]:
        if item.header in owners:
            problems.add(item.where, f"'{item.header}' is also the file of {owners[item.header]}")
        owners[item.header] = item.name


# Enumerations. -----------------------------------------------------------------------------------


def check_enum(enum: Enum, problems: Problems) -> None:
    if not names.is_class_name(enum.name):
        problems.add(enum.where, "an enumeration's name must begin with a capital letter")
    if not enum.literals:
        problems.add(enum.where, "needs at least one literal")
    for literal in enum.literals:
        where = f"{enum.where}.{literal.name}"
        words = names.KEYWORDS | {*keyword.kwlist, "mro"}
        if not names.is_identifier(literal.name) or literal.name in words:
            problems.add(where, "cannot be the name of a literal")
        if not isinstance(literal.doc, str) or not literal.doc:
            problems.add(where, "needs a description")


# Names of classes and members. -------------------------------------------------------------------


def check_class_name(cls: Class, problems: Problems) -> None:
    if not names.is_class_name(cls.name):
        problems.add(cls.where, "a class's name must begin with a capital letter")
    elif cls.name in names.NESTED | stubs.CLASSES or keyword.iskeyword(cls.name):
        problems.add(cls.where, "is a reserved name")
    if not cls.doc:
        problems.add(cls.where, "needs a description")


def check_name(prop: Property, problems: Problems) -> None:
    if not names.is_identifier(prop.name):
        problems.add(prop.where, "is not a name")
    elif prop.lower in names.KEYWORDS:
        problems.add(prop.where, f"its accessor '{prop.lower}' is a keyword of C++")
    elif prop.lower in names.ACCESSORS or prop.upper in names.PROPERTIES:
        problems.add(prop.where, "is a reserved name")
    elif keyword.iskeyword(prop.name) or prop.name in stubs.names_of(prop.owner.folder.module):
        problems.add(prop.where, "is a name that Python needs")
    if not prop.doc:
        problems.add(prop.where, "needs a description")


def generated_names(prop: Property) -> list[str]:
    """The members that a property adds to the implementation."""
    members = [f"get{prop.upper}", f"set{prop.upper}", f"has{prop.upper}"]
    if prop.many:
        members.append(f"get{prop.upper}Mutable")
    if prop.is_containment:
        members.append(f"createInto{prop.upper}")
    if prop.has_check:
        members.append(f"aboutToSet{prop.upper}")
    return members


def check_members(cls: Class, problems: Problems) -> None:
    """No member hides or repeats another, an inherited one included."""
    taken: dict[str, Property] = {}
    for prop in cls.all_properties:
        members = generated_names(prop)
        clash = next((member for member in members if member in taken), None)
        if clash is not None and prop.owner is cls:
            problems.add(prop.where, member_problem(prop, taken[clash], clash))
        for member in members:
            taken.setdefault(member, prop)
    for operation in cls.operations:
        if operation.name in taken:
            made_for = taken[operation.name].name
            problems.add(operation.where, f"'{operation.name}' is also made for {made_for}")


def member_problem(prop: Property, other: Property, member: str) -> str:
    if prop.name != other.name:
        return f"makes the same '{member}' as {other.owner.name}.{other.name}"
    return "is declared twice" if other.owner is prop.owner else f"hides {other.owner.name}'s"


def check_operations(cls: Class, problems: Problems) -> None:
    seen = {operation.name for operation in (cls.super.all_operations if cls.super else [])}
    for operation in cls.operations:
        if operation.name in seen:
            problems.add(operation.where, "is declared twice")
        seen.add(operation.name)
        name = operation.name
        if not names.is_identifier(name) or names.lower_camel(name) != name:
            problems.add(operation.where, "an operation's name must begin with a small letter")
        elif name in names.KEYWORDS or name in names.OPERATIONS:
            problems.add(operation.where, "is a reserved name")
        if operation.primitive == ARRAY:
            problems.add(operation.where, "an operation cannot return a host array")
    if not cls.is_abstract:
        implemented = {o for c in [cls, *cls.ancestors] for o in c.implemented}
        for operation in cls.all_operations:
            if operation not in implemented:
                problems.add(cls.where, f"is not abstract, so it must implement '{operation.name}'")


# Rules of one property. --------------------------------------------------------------------------


def many_rule(prop: Property) -> Iterable[str]:
    if prop.many:
        if prop.is_array:
            yield "a host array cannot be many"
        return
    if not prop.decl.ordered:
        yield "'ordered' is for many-valued properties"
    if prop.decl.unique:
        yield "'unique' is for many-valued properties; a single value always is"


def proxies_rule(prop: Property) -> Iterable[str]:
    if not prop.decl.proxies and not (prop.is_reference and prop.many):
        yield "'proxies' is for many references"


def check_rule(prop: Property) -> Iterable[str]:
    if prop.has_check and not prop.is_array:
        yield f"'check' is for host arrays ('{ARRAY}')"


def derived_rule(prop: Property) -> Iterable[str]:
    if not prop.is_derived:
        return
    if prop.many or prop.is_element or prop.is_array:
        yield "a derived property must be a single number, text, truth value or enumeration"
    if prop.decl.default is not None or prop.has_check or prop.decl.opposite:
        yield "a derived property has no 'default', 'check' or 'opposite'"


def opposite_rule(prop: Property) -> Iterable[str]:
    other = prop.opposite
    if prop.decl.opposite and not prop.is_reference:
        yield "'opposite' is for references"
    elif other is not None:
        place = f"{other.owner.name}.{other.name}"
        if other.decl.opposite != prop.name or other.opposite is not prop:
            yield f"its opposite {place} does not name it as its own opposite"
        elif not other.is_reference:
            yield f"its opposite {place} is not a reference"
        elif prop.target is not other.owner or other.target is not prop.owner:
            yield f"it and its opposite {place} must refer to each other's class"


def index_rule(prop: Property) -> Iterable[str]:
    if prop.is_reference and prop.index > LAST_REFERENCE_INDEX:
        yield f"a reference's index must not be above {LAST_REFERENCE_INDEX}, it is {prop.index}"


def default_rule(prop: Property) -> Iterable[str]:
    value = prop.decl.default
    if value is None:
        return
    if prop.many or prop.is_element or prop.is_array:
        yield "only a single number, text, truth value or enumeration can have a default"
    elif isinstance(prop.target, Enum):
        literals = [literal.name for literal in prop.target.literals]
        if value not in literals:
            hint = suggestion(str(value), literals)
            yield f"{prop.target.name} has no literal {toml(value)}{hint}"
    elif not DEFAULTS[prop.decl.type](prop.decl.type, value):
        yield f"{toml(value)} is not a default of type '{prop.decl.type}'"


def is_integer(name: str, value: object) -> bool:
    low, high = INTEGER_RANGES[name]
    return type(value) is int and low <= value <= high


def is_real(_: str, value: object) -> bool:
    return type(value) in (int, float) and abs(value) <= sys.float_info.max


DEFAULTS: dict[str, Callable[[str, object], bool]] = {
    BOOLEAN: lambda _, value: type(value) is bool,
    INTEGER8: is_integer,
    INTEGER: is_integer,
    REAL: is_real,
    **dict.fromkeys(STRINGS, lambda _, value: type(value) is str and "\0" not in value),
}

RULES = [
    many_rule,
    proxies_rule,
    check_rule,
    derived_rule,
    opposite_rule,
    index_rule,
    default_rule,
]


def toml(value: object) -> str:
    """A value as the schema spells it, near enough for a message."""
    if isinstance(value, bool):
        return str(value).lower()
    return f"'{value}'" if isinstance(value, str) else str(value)
