"""Which header includes which, so that each class is complete where it is used.

A class needs its superclass and, for functions defined in the header, the classes it refers to.
Where two classes lead to each other one of them must do with a declaration: its functions are
defined in the source, and the other's header follows behind the class, for whoever uses it.
"""

from generator.model import Class, Enum, Module, Type


def resolve_includes(module: Module) -> None:
    reached = {cls: reach(cls) for cls in module.classes}
    for cls in module.classes:
        opened = {t for t in targets(cls) if t in reached and is_open(cls, t, reached)}
        for prop in cls.properties:
            prop.is_open = prop.target in opened
        at_top = (targets(cls) | enums(cls) | {cls.super}) - opened - {cls, None}
        always = ["framework/element_class.h", module.export_header]
        cls.top_includes = sorted([*always, *(other.header for other in at_top)])
        ahead = sorted(opened, key=lambda other: other.qualified)
        cls.forward = [other for other in ahead if other.package is cls.package]
        cls.foreign = [other for other in ahead if other.package is not cls.package]
        cls.bottom_includes = sorted(t.header for t in opened if may_follow(cls, t, reached))


def targets(cls: Class) -> set[Class]:
    used = [*cls.properties, *cls.operations, *cls.implemented]
    return {item.target for item in used if isinstance(item.target, Class)}


def enums(cls: Class) -> set[Type]:
    used = [*cls.properties, *cls.operations, *cls.implemented]
    return {item.target for item in used if isinstance(item.target, Enum)}


def reach(cls: Class) -> set[Class]:
    """All classes that this one leads to."""
    reached, pending = set(), [cls]
    while pending:
        current = pending.pop()
        for other in targets(current) | ({current.super} if current.super else set()):
            if other not in reached:
                reached.add(other)
                pending.append(other)
    return reached


def is_open(cls: Class, target: Class, reached: dict[Class, set[Class]]) -> bool:
    return target is not cls and target not in cls.ancestors and cls in reached[target]


def may_follow(cls: Class, target: Class, reached: dict[Class, set[Class]]) -> bool:
    """Whether the target's header can stand behind the class. It cannot where it leads to a class
    that derives from a subclass of this one: that subclass's header, which begins with this one's,
    would not have come to its class yet."""
    return not any(cls in other.ancestors[1:] for other in {target, *reached[target]})
