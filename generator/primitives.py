"""The plain types of values, and how C++ spells each."""

from dataclasses import dataclass


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
