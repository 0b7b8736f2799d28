"""The line counter's arithmetic: blank lines, budgets, and whose file is whose."""

from tools import count_lines

SCHEMA = """
[class.DesignView]
properties = [
  { name = "Figures", contains = "Figure", many = true },
  { name = "Targets", refers = "Target", many = true },
  { name = "Label", type = "String" },
]
[class.Figure]
"""


def test_a_class_is_charged_with_its_files_and_budgeted_by_its_properties(tmp_path):
    schema = tmp_path / "design.toml"
    schema.write_text(SCHEMA)
    (tmp_path / "design").mkdir()
    (tmp_path / "design/design_view.h").write_text("one\n\n  \ntwo\n")
    (tmp_path / "design/design_view.cpp").write_text("three\n")
    (tmp_path / "design/package.cpp").write_text("four\n")

    classes = count_lines.declared_classes([schema])
    by_class, shared = count_lines.count_generated(tmp_path / "design", classes)

    assert classes["designview"] == ("DesignView", 40 + 14 + 2 * 10)
    assert classes["figure"].budget == 40
    assert by_class == {"designview": 3, "figure": 0}
    assert shared == 1
