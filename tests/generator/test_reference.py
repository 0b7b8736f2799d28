"""The reference: it is what the schemas say now, and its pages hold together."""

import re

from schemas import REAL_SCHEMAS, REPOSITORY, a_class, write_module

from generator import emit
from generator.build import build

COMMITTED = REPOSITORY / "docs" / "reference"


def pages(schemas) -> dict[str, str]:
    return emit.render(build(schemas), emit.plan_reference)


def test_the_committed_reference_is_what_the_schemas_say():
    committed = {path.name: path.read_text(encoding="utf-8") for path in COMMITTED.iterdir()}
    assert committed == pages(REAL_SCHEMAS), "write it anew: make reference"


def test_every_link_leads_somewhere():
    texts = pages(REAL_SCHEMAS)
    for page, text in texts.items():
        for target, anchor in re.findall(r"\]\(([\w./]*)(?:#(\w+))?\)", text):
            if target.startswith("../"):
                assert (COMMITTED / target).is_file(), (page, target)
            else:
                headings = re.findall(r"^## (\w+)$", texts[target or page], re.MULTILINE)
                assert not anchor or anchor in map(str.lower, headings), (page, target, anchor)


def test_what_a_property_says(tmp_path):
    many = "many = true, ordered = false"
    schema = a_class(
        "Base", "name = 'Count', type = 'Integer', derived = true", abstract=True
    ) + a_class(
        "Tree",
        "name = 'Photo', type = 'VxArray', check = true",
        f"name = 'Leaves', refers = 'inner.Leaf', opposite = 'Tree', {many}",
        "name = 'Height', type = 'Real', default = 2.5",
        doc="One | *two* <three>.",
        super="Base",
    )
    leaf = a_class("Leaf", "name = 'Tree', refers = 'Tree', opposite = 'Leaves'")
    schema = schema.replace("inner.Leaf", "sample.inner.Leaf")
    texts = pages(write_module(tmp_path, schema, inner=leaf))
    rows = [line for line in texts["sample.md"].splitlines() if line.startswith("| `")]
    assert rows == [
        "| `Count` | whole number | one |  | A property. Computed; read-only. |",
        "| `Photo` | any value | one | nothing | A property. Checked when it is set. |",
        "| `Leaves` | [Leaf](sample.inner.md#leaf) | any number, no order |  | A property."
        " The other end of `Tree` there. |",
        "| `Height` | number | one | 2.5 | A property. |",
    ]
    assert "One \\| \\*two\\* &lt;three>." in texts["sample.md"]
    assert "Inherited: `Count` of [Base](#base)." in texts["sample.md"]
    assert "[Tree](sample.md#tree) | one or none | none" in texts["sample.inner.md"]
