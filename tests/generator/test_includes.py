"""However the headers are entered, each class finds complete what it needs complete."""

import re

import pytest
from schemas import GARDEN_SCHEMAS, REAL_SCHEMAS, a_class, write_module

from generator import emit
from generator.build import build

INCLUDE = re.compile(r'#include "(.*)"')
CLASS = re.compile(r"class \w+ (\w+)$|class \w+ (\w+) :")
NEEDED = re.compile(
    r"(?:Handle<\w+, |\b)([\w:]+?)(?:> \{$|::(?:Impl|Sequence|Set|BuilderWrapper)\b)"
)


def needed_by(text: str, known: set[str]) -> set[str]:
    """The classes that the text uses in ways that a declaration does not serve."""
    return {match.rpartition("::")[2] for match in NEEDED.findall(text)} & known


def entered(header: str, texts: dict[str, str], known: set[str]) -> None:
    """Includes a header as a preprocessor would, with a look at every class on the way."""
    seen, complete = set(), set()

    def include(path: str) -> None:
        if path in seen or path not in texts:
            return
        seen.add(path)
        body, own = "", None
        for line in texts[path].splitlines():
            if found := INCLUDE.match(line):
                include(found[1])
            elif line == "};" and own:
                missing = needed_by(body, known) - complete - {own}
                assert not missing, f"{own}, entered by {header}"
                complete.add(own)
                own = None
            elif found := CLASS.match(line):
                own = found[1] or found[2]
            body += line + "\n"

    include(header)


# Two levels below the class that leads back to them: the case in which an include would come
# before its class.
FAMILY = (
    a_class("Node", "name = 'Folders', contains = 'Folder', many = true")
    + a_class("Container", "name = 'Node', refers = 'Node'", super="Node")
    + a_class("Folder", "name = 'Up', refers = 'Container'", super="Container")
    + a_class("Leaf", "name = 'Folder', refers = 'Folder'", super="Node")
)


@pytest.mark.parametrize(
    "schemas", [REAL_SCHEMAS, GARDEN_SCHEMAS, FAMILY], ids=["real", "garden", "family"]
)
def test_every_class_is_complete_before_it_is_needed(tmp_path, schemas):
    paths = write_module(tmp_path, schemas) if isinstance(schemas, str) else schemas
    module = build(paths)
    texts, known = emit.render(module), {cls.name for cls in module.classes}
    for cls in module.classes:
        entered(cls.header, texts, known)


def test_what_a_class_refers_to_comes_with_it_where_it_can():
    headers = {cls.name: cls for cls in build(GARDEN_SCHEMAS).classes}
    assert headers["Bed"].bottom_includes == ["fixture/gardener.h", "fixture/plant.h"]
    assert [other.name for other in headers["Bed"].forward] == ["Gardener", "Plant"]
    assert "fixture/bed.h" in headers["RaisedBed"].top_includes
