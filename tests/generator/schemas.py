"""Small modules for the tests of the generator."""

from pathlib import Path

MODULE = {
    "name": "sample",
    "doc": "Registers the sample.",
    "folder": "sample",
    "namespace": "sample",
    "export_macro": "SAMPLE_API",
    "export_header": "sample/export.h",
    "identity": "0f5b8a52-5a35-3a58-9a11-0c2f5e1d7b44",
    "uri_path": "/test/sample",
    "packages": ["sample", "sample.inner"],
}


def module_text(**changed) -> str:
    keys = {**MODULE, **changed}
    return "[module]\n" + "".join(
        f"{key} = {toml(value)}\n" for key, value in keys.items() if value is not None
    )


def write_module(root: Path, schema: str, inner: str = "", **changed) -> list[Path]:
    """Writes a module, the schema of its package and, if given, that of the package inside."""
    texts = {"module.toml": module_text(**changed), "sample.toml": f'package = "sample"\n{schema}'}
    if inner:
        texts["inner/inner.toml"] = f'package = "sample.inner"\n{inner}'
    paths = [root / "sample" / name for name in texts]
    for path, text in zip(paths, texts.values(), strict=True):
        path.parent.mkdir(parents=True, exist_ok=True)
        path.write_text(text, encoding="utf-8")
    return paths


def a_class(name: str, *properties: str, doc: str = "A class.", **keys) -> str:
    """The schema of a class; each property is the inside of an inline table."""
    lines = [f"[class.{name}]", f"doc = {doc!r}"]
    lines += [f"{key} = {toml(value)}" for key, value in keys.items()]
    lines += ["properties = [", *(f"  {{ {p}, doc = 'A property.' }}," for p in properties), "]"]
    return "\n".join(lines) + "\n"


def toml(value) -> str:
    if isinstance(value, bool):
        return str(value).lower()
    if isinstance(value, list):
        return f"[{', '.join(toml(item) for item in value)}]"
    if isinstance(value, dict):
        return f"{{ {', '.join(f'{key} = {toml(item)}' for key, item in value.items())} }}"
    return repr(value)


REPOSITORY = Path(__file__).parents[2]
REAL_SCHEMAS = sorted((REPOSITORY / "src").rglob("*.toml"))
GARDEN_SCHEMAS = sorted((REPOSITORY / "tests/fixture").rglob("*.toml"))
