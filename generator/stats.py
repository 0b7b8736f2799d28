"""Lines of the generated code against their budget, class by class."""

import re

from generator.model import Class, Module

FIXED, PER_PROPERTY, PER_CONTAINMENT_LIST, TOTAL = 40, 10, 14, 3000


def count(text: str) -> int:
    return sum(1 for line in text.splitlines() if line.strip())


def budget(cls: Class) -> int:
    lists = sum(p.is_containment and p.many for p in cls.properties)
    return FIXED + PER_CONTAINMENT_LIST * lists + PER_PROPERTY * (len(cls.properties) - lists)


def table_lines(cls: Class, source: str) -> int:
    """The lines of the class in its folder's source: from its first mention to the next class."""
    mention = re.compile(rf"^[^ ].*\b{cls.name}::", re.MULTILINE)
    starts = [match.start() for match in mention.finditer(source)]
    return sum(count(source[start : end_of(source, start)]) for start in starts)


def end_of(source: str, start: int) -> int:
    """Where a definition that begins at column 0 ends: behind the next `;` or `}` that ends it."""
    return re.compile(r"(;|^\};?|\})$", re.MULTILINE).search(source, start).end()


def report(module: Module, texts: dict[str, str]) -> str:
    """One line per class, their sum, and what belongs to no class; `over` marks what exceeds its
    budget. Blank lines do not count."""
    rows, of_classes = [], 0
    for cls in module.classes:
        lines = count(texts[cls.header]) + table_lines(cls, texts[cls.folder.source])
        of_classes += lines
        rows.append((cls.name, lines, budget(cls)))
    rows.sort(key=lambda row: row[2] - row[1])
    rows.append((f"{len(module.classes)} classes", of_classes, TOTAL))
    rows.append(("everything besides", sum(map(count, texts.values())) - of_classes, 0))
    return "\n".join(
        f"{name:<36}{lines:>7}{allowed or '':>7}{'  over' if 0 < allowed < lines else ''}"
        for name, lines, allowed in rows
    )
