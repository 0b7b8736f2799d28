"""What the command promises to a build: it writes what it lists, and only what changed."""

import os

import pytest
from schemas import REAL_SCHEMAS, a_class, write_module

from generator.__main__ import main

SCHEMA = a_class("Tree", "name = 'Age', type = 'Real'") + a_class("Leaf")


def files_under(folder) -> set[str]:
    return {str(path) for path in folder.rglob("*") if path.is_file()}


def test_what_is_listed_is_what_is_written(tmp_path, capsys):
    paths, out = write_module(tmp_path / "in", SCHEMA), tmp_path / "out"
    arguments = ["--out", str(out), *map(str, paths)]
    assert main(["--list-outputs", *arguments]) == 0
    listed = capsys.readouterr().out.splitlines()
    assert not out.exists()
    assert main(arguments) == 0
    assert set(listed) == files_under(out)


def test_only_what_changed_is_written_and_nothing_is_removed(tmp_path):
    out = tmp_path / "out"
    assert main(["--out", str(out), *map(str, write_module(tmp_path / "in", SCHEMA))]) == 0
    (out / "sample/by_hand.h").write_text("// Mine.\n")
    for path in out.rglob("*.*"):
        os.utime(path, (1, 1))
    changed = SCHEMA.replace("A class.", "A plant.", 1)
    assert main(["--out", str(out), *map(str, write_module(tmp_path / "in", changed))]) == 0
    written = {path.name for path in out.rglob("*.*") if path.stat().st_mtime > 1}
    assert written == {"tree.h", "sample.cpp", "__init__.pyi"}
    assert (out / "sample/by_hand.h").exists()


def test_the_order_of_files_and_keys_does_not_matter(tmp_path):
    tree, leaf = a_class("Tree"), a_class("Leaf")
    texts = []
    for name, schema in (("a", tree + leaf), ("b", leaf + tree)):
        paths = write_module(tmp_path / name, schema, inner=a_class("Root"))
        if name == "b":
            paths.reverse()
        assert main(["--out", str(tmp_path / name / "out"), *map(str, paths)]) == 0
        out = tmp_path / name / "out"
        texts.append({p.relative_to(out): p.read_text() for p in out.rglob("*.*")})
    assert texts[0] == texts[1]


def test_a_refusal_writes_nothing_and_goes_to_standard_error(tmp_path, capsys):
    paths = write_module(tmp_path / "in", a_class("Tree", super="Plant"))
    assert main(["--out", str(tmp_path / "out"), *map(str, paths)]) == 1
    assert capsys.readouterr() == ("", "sample.toml: Tree: unknown superclass 'Plant'\n")
    assert not (tmp_path / "out").exists()


def test_no_generated_line_is_too_wide(tmp_path):
    assert main(["--out", str(tmp_path), *map(str, REAL_SCHEMAS)]) == 0
    for path in tmp_path.rglob("*.*"):
        for number, line in enumerate(path.read_text().splitlines(), 1):
            assert len(line) <= 100, f"{path}:{number}"


def test_the_classes_stay_thin(capsys):
    assert main(["--stats", *map(str, REAL_SCHEMAS)]) == 0
    lines = capsys.readouterr().out.splitlines()
    assert lines[-2].startswith("36 classes")
    assert "over" not in lines[-2]


def test_the_output_folder_is_asked_for(capsys):
    with pytest.raises(SystemExit):
        main([str(REAL_SCHEMAS[0])])
    assert "--out is needed" in capsys.readouterr().err
