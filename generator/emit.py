"""The model as source text: templates print, `layout` and `stubs` break what is too wide."""

import re
from collections.abc import Iterator
from pathlib import Path

import jinja2

from generator import layout, stubs
from generator.model import Module
from generator.property import quoted
from generator.reference import escaped

TEMPLATES = Path(__file__).parent / "templates"


def environment() -> jinja2.Environment:
    made = jinja2.Environment(
        loader=jinja2.FileSystemLoader(TEMPLATES),
        undefined=jinja2.StrictUndefined,
        trim_blocks=True,
        lstrip_blocks=True,
        keep_trailing_newline=True,
    )
    made.filters["quoted"] = quoted
    made.filters["escaped"] = escaped
    return made


def plan(module: Module) -> Iterator[tuple[str, str, dict]]:
    """Every file of the module: its path, its template and what that is given."""
    for folder in module.folders:
        for enum in folder.enums:
            yield enum.header, "enum.h.j2", {"enum": enum}
        for cls in folder.classes:
            yield cls.header, "class.h.j2", {"cls": cls}
        yield folder.umbrella, "folder.h.j2", {"folder": folder}
        yield folder.source, "folder.cpp.j2", {"folder": folder}
    for host in module.host_packages:
        yield host.header, "binding.h.j2", {"host": host}
        yield host.source, "binding.cpp.j2", {"host": host}
    yield module.host_packages_header, "host_packages.h.j2", {}
    yield module.host_packages_source, "host_packages.cpp.j2", {}
    for stub in module.stubs:
        yield stub.file, "package.pyi.j2", {"stub": stub}
    yield module.header, "module.h.j2", {}
    yield module.source, "module.cpp.j2", {}


def plan_reference(module: Module) -> Iterator[tuple[str, str, dict]]:
    """Every page of the reference, likewise."""
    yield "README.md", "reference_index.md.j2", {}
    for page in module.reference:
        yield page.file, "reference.md.j2", {"page": page}


def outputs(module: Module) -> list[str]:
    return [path for path, _, _ in plan(module)]


def squeeze(text: str) -> str:
    """One blank line at most, none at the ends."""
    return re.sub(r"\n{3,}", "\n\n", text).strip("\n") + "\n"


FITTING = {".pyi": stubs.fit, ".md": squeeze}


def render(module: Module, plan=plan) -> dict[str, str]:
    """The text of every file by its path."""
    templates = environment()
    texts = {}
    for path, template, what in plan(module):
        text = templates.get_template(template).render(module=module, **what)
        texts[path] = FITTING.get(Path(path).suffix, layout.fit)(text)
    return texts


def write(texts: dict[str, str], out: Path) -> int:
    """Writes the files whose text changed; returns how many these were."""
    changed = 0
    for path, text in texts.items():
        file = out / path
        if not file.is_file() or file.read_text(encoding="utf-8") != text:
            file.parent.mkdir(parents=True, exist_ok=True)
            file.write_text(text, encoding="utf-8")
            changed += 1
    return changed
