"""Keeps the floors in order: an include may only point sideways or down.

Usage: check_includes.py ROOT...    (src, a generated root with the same folder names, python)
"""

import re
import sys
from pathlib import Path
from typing import NamedTuple


class Rule(NamedTuple):
    """What the files of a floor may include, by prefix of the included path; refusals win."""

    allowed: tuple[str, ...]
    refused: tuple[str, ...] = ()


# host/vexal.h brings in the whole host, its class-object system included.
CLASS_OBJECTS = ("host/vcos/", "host/vexal.h", "framework/mi/")
MODEL_PACKAGE = ("host/", "framework/", "package/", "design/", "simmanager/")

# A file belongs to the longest floor that its path starts with.
RULES = {
    "host": Rule(("host/",)),
    "framework": Rule(("framework/", "host/array.h"), ("framework/mi/",)),
    "framework/mi": Rule(("framework/", "host/")),
    "design": Rule(MODEL_PACKAGE, CLASS_OBJECTS),
    "simmanager": Rule(MODEL_PACKAGE, CLASS_OBJECTS),
    "package": Rule(MODEL_PACKAGE),
    "binding": Rule((*MODEL_PACKAGE, "binding/")),
    "extension": Rule(("extension/", "host/")),
}

INCLUDE = re.compile(r'^\s*#\s*include\s*"([^"]+)"', re.MULTILINE)


def floor_of(path: str) -> str | None:
    """The floor that a path relative to its root belongs to."""
    floors = [floor for floor in RULES if path.startswith(floor + "/")]
    return max(floors, key=len, default=None)


def is_allowed(floor: str, included: str) -> bool:
    rule = RULES[floor]
    if included.startswith(rule.refused) or not included.startswith(rule.allowed):
        return False
    # What lies in a folder "detail" is its own floor's business.
    top = included.partition("/")[0]
    return "/detail/" not in included or floor.partition("/")[0] == top


def violations(root: Path) -> list[str]:
    """One line per include under the root that its floor may not have."""
    found = []
    for file in sorted(path for path in root.rglob("*") if path.suffix in {".h", ".cpp"}):
        floor = floor_of(file.relative_to(root).as_posix())
        if floor is None:
            found.append(f"{file}: lies on no floor ({', '.join(RULES)})")
            continue
        text = file.read_text(encoding="utf-8")
        for match in INCLUDE.finditer(text):
            if not is_allowed(floor, match[1]):
                line = text.count("\n", 0, match.start(1)) + 1
                found.append(f'{file}:{line}: {floor} may not include "{match[1]}"')
    return found


def main(roots: list[str]) -> int:
    found = [line for root in roots for line in violations(Path(root))]
    print("\n".join(found) if found else "every include points sideways or down")
    return 1 if found else 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:] or ["src"]))
