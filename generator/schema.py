"""What the schema files say, key by key; nothing is resolved here."""

import difflib
import tomllib
from dataclasses import MISSING, dataclass, field, fields
from pathlib import Path


class Problems:
    """Collects what is wrong, one line each, so that one run tells all of it."""

    def __init__(self):
        self.lines: list[str] = []

    def add(self, where: str, what: str) -> None:
        line = f"{where}: {what}"
        if line not in self.lines:
            self.lines.append(line)


class BadSchema(Exception):
    """The schemas are refused; `lines` says why."""

    def __init__(self, lines: list[str]):
        super().__init__("\n".join(lines))
        self.lines = lines


def suggestion(name: str, known) -> str:
    """The end of a message about an unknown name: what was probably meant."""
    close = difflib.get_close_matches(name, sorted(known), n=1)
    return f"; did you mean '{close[0]}'?" if close else ""


@dataclass
class Declaration:
    """One table of a schema file; the fields are its keys, those without a default are required."""

    where: str


@dataclass
class ModuleDecl(Declaration):
    name: str
    folder: str
    namespace: str
    export_macro: str
    export_header: str
    identity: str
    uri_path: str
    packages: list
    doc: str = ""


@dataclass
class PropertyDecl(Declaration):
    name: str
    doc: str
    type: str = ""
    contains: str = ""
    refers: str = ""
    many: bool = False
    ordered: bool = True
    unique: bool = False
    proxies: bool = True
    default: object = None
    check: bool = False
    derived: bool = False
    transient: bool = False
    opposite: str = ""


@dataclass
class UseDecl(Declaration):
    use: str
    prefix: str = ""
    without: list = field(default_factory=list)


@dataclass
class OperationDecl(Declaration):
    name: str
    doc: str
    result: str
    many: bool = False
    public: bool = True


@dataclass
class ClassDecl(Declaration):
    doc: str
    super: str = ""
    abstract: bool = False
    properties: list = field(default_factory=list)
    operations: list = field(default_factory=list)
    implements: list = field(default_factory=list)


@dataclass
class EnumDecl(Declaration):
    doc: str
    literals: dict


@dataclass
class GroupDecl(Declaration):
    properties: list
    doc: str = ""


@dataclass
class FileDecl(Declaration):
    package: str
    classes: dict = field(default_factory=dict, metadata={"key": "class"})
    enums: dict = field(default_factory=dict, metadata={"key": "enum"})
    groups: dict = field(default_factory=dict, metadata={"key": "group"})
    path: Path | None = field(default=None, metadata={"key": None})


TYPE_NAMES = {str: "a string", bool: "true or false", list: "a list", dict: "a table"}


class Reader:
    """Reads files into declarations; whatever does not fit becomes a problem."""

    def __init__(self, problems: Problems):
        self.problems = problems

    def toml(self, path: Path) -> dict | None:
        try:
            return tomllib.loads(path.read_text(encoding="utf-8"))
        except OSError as error:
            self.problems.add(path.name, f"cannot be read: {error.strerror}")
        except UnicodeDecodeError:
            self.problems.add(path.name, "is not UTF-8 text")
        except tomllib.TOMLDecodeError as error:
            self.problems.add(path.name, f"not TOML: {str(error)[:1].lower()}{str(error)[1:]}")
        return None

    def table(self, declaration: type, where: str, table: object):
        """The declaration of one table; None when something required is missing."""
        if not isinstance(table, dict):
            self.problems.add(where, "must be a table")
            return None
        keys = {f.metadata.get("key", f.name): f for f in fields(declaration) if f.name != "where"}
        keys.pop(None, None)
        values = {}
        for key, value in table.items():
            if key not in keys:
                self.problems.add(where, f"unknown key '{key}'{suggestion(key, keys)}")
            elif keys[key].type is not object and type(value) is not keys[key].type:
                self.problems.add(where, f"'{key}' must be {TYPE_NAMES[keys[key].type]}")
            else:
                values[keys[key].name] = value
        missing = [k for k, f in keys.items() if is_required(f) and k not in table]
        for key in missing:
            self.problems.add(where, f"missing '{key}'")
        if any(is_required(f) and f.name not in values for f in keys.values()):
            return None
        return declaration(where=where, **values)

    def tables(self, declaration: type, where: str, tables: dict) -> dict:
        read = {name: self.table(declaration, f"{where}: {name}", t) for name, t in tables.items()}
        return {name: declared for name, declared in read.items() if declared is not None}

    def file(self, path: Path, table: dict) -> FileDecl | None:
        declared = self.table(FileDecl, path.name, table)
        if declared is None:
            return None
        declared.path = path
        declared.classes = self.tables(ClassDecl, path.name, declared.classes)
        declared.enums = self.tables(EnumDecl, path.name, declared.enums)
        declared.groups = self.tables(GroupDecl, path.name, declared.groups)
        for cls in declared.classes.values():
            cls.properties = self.properties(cls, uses=True)
            cls.operations = self.members(OperationDecl, cls, cls.operations, "operations")
            cls.implements = self.names(cls, cls.implements, "implements")
        for group in declared.groups.values():
            group.properties = self.properties(group, uses=False)
        return declared

    def properties(self, owner: ClassDecl | GroupDecl, uses: bool) -> list:
        """Properties, and where allowed uses of groups, in order."""
        read = []
        for number, table in enumerate(owner.properties, 1):
            if uses and isinstance(table, dict) and "use" in table:
                use = self.table(UseDecl, f"{owner.where}.properties[{number}]", table)
                if use is not None:
                    use.without = self.names(use, use.without, "without")
                    read.append(use)
            else:
                read += self.members(PropertyDecl, owner, [table], "properties", number)
        return read

    def members(self, declaration: type, owner, tables: list, key: str, first: int = 1) -> list:
        """Named tables of a list; a problem is told under the name where there is one."""
        read = []
        for number, table in enumerate(tables, first):
            name = table.get("name") if isinstance(table, dict) else None
            place = f".{name}" if isinstance(name, str) and name else f".{key}[{number}]"
            read.append(self.table(declaration, owner.where + place, table))
        return [declared for declared in read if declared is not None]

    def names(self, owner: Declaration, values: list, key: str) -> list[str]:
        if all(isinstance(value, str) for value in values):
            return values
        self.problems.add(owner.where, f"'{key}' must list names")
        return []


def is_required(declared_field) -> bool:
    return declared_field.default is MISSING and declared_field.default_factory is MISSING


def read_files(paths: list[Path], problems: Problems) -> tuple[ModuleDecl | None, list[FileDecl]]:
    """The module and the schema files among the given ones; where each lies is in its path."""
    reader = Reader(problems)
    module, module_path, files = None, None, []
    for path in sorted(paths):
        table = reader.toml(path)
        if table is None:
            continue
        if "module" not in table:
            files.append(reader.file(path, table))
        elif module_path is not None:
            problems.add(path.name, f"a second module; the first is in {module_path.name}")
        else:
            module_path = path
            for key in table.keys() - {"module"}:
                problems.add(path.name, f"unknown key '{key}' beside the module")
            module = reader.table(ModuleDecl, path.name, table["module"])
    if module_path is None and not problems.lines:
        problems.add("schemas", "none of the files has a [module]")
    root = source_root(module, module_path, problems) if module else None
    declared = [file for file in files if file is not None]
    if root is not None:
        for file in declared:
            place_under(root, file, problems)
    return module, declared


def source_root(module: ModuleDecl, path: Path, problems: Problems) -> Path | None:
    """The folder that all paths count from: the module's file without the module's folder."""
    folder = Path(module.folder)
    parent = path.resolve().parent
    if folder.is_absolute() or parent.parts[-len(folder.parts) :] != folder.parts:
        problems.add(module.where, f"does not lie in its folder '{module.folder}'")
        return None
    return parent.parents[len(folder.parts) - 1]


def place_under(root: Path, file: FileDecl, problems: Problems) -> None:
    """Makes the file's path relative to the root."""
    path = file.path.resolve()
    if not path.is_relative_to(root) or path.parent == root:
        problems.add(file.where, f"does not lie in a folder under '{root.name}'")
        return
    file.path = path.relative_to(root)
