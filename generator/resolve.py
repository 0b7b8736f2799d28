"""From declarations to the model: names become classes, groups become properties, order becomes
indices. What cannot be resolved is a problem and left out."""

from dataclasses import replace

from generator import names
from generator.model import (
    Class,
    Enum,
    Folder,
    Literal,
    Module,
    Operation,
    Package,
    Type,
)
from generator.primitives import PRIMITIVES
from generator.property import Property
from generator.schema import (
    ClassDecl,
    FileDecl,
    GroupDecl,
    ModuleDecl,
    OperationDecl,
    Problems,
    PropertyDecl,
    UseDecl,
    suggestion,
)


class Resolver:
    def __init__(self, declared: ModuleDecl, files: list[FileDecl], problems: Problems):
        self.problems = problems
        self.files = files
        self.types: dict[str, Type] = {}  # by qualified name
        self.declared: dict[Class, ClassDecl] = {}
        self.groups: dict[Package, dict[str, GroupDecl]] = {}
        self.module = Module(
            name=declared.name,
            doc=declared.doc,
            folder=declared.folder,
            namespace=declared.namespace,
            export_macro=declared.export_macro,
            export_header=declared.export_header,
            identity=declared.identity,
            uri_path=declared.uri_path,
            schema_path=f"{declared.folder}/{declared.where}",
        )
        self.packages = self.resolve_packages(declared)

    def run(self) -> Module:
        for file in self.files:
            self.add_file(file)
        for package in self.module.packages:
            package.classes.sort(key=lambda cls: cls.name)
            package.enums.sort(key=lambda enum: enum.name)
        for cls, declared in self.declared.items():
            self.resolve_super(cls, declared)
        self.break_cycles()
        for cls in self.supers_first():
            self.resolve_members(cls, self.declared[cls])
        for cls in self.declared:
            self.resolve_implements(cls)
            for prop in cls.properties:
                self.resolve_opposite(prop)
        return self.module

    # Packages and types. -------------------------------------------------------------------------

    def resolve_packages(self, declared: ModuleDecl) -> dict[str, Package]:
        packages: dict[str, Package] = {}
        for path in declared.packages:
            parent, _, name = str(path).rpartition(".")
            if not names.is_identifier(name) or name in names.KEYWORDS:
                self.problems.add(declared.where, f"'{path}' cannot be the name of a package")
            elif path in packages:
                self.problems.add(declared.where, f"package '{path}' is listed twice")
            elif parent and parent not in packages:
                self.problems.add(declared.where, f"package '{path}' must follow its parent")
            else:
                position = list(packages).index(parent) if parent else -1
                packages[path] = Package(path, name, position)
        self.module.packages = list(packages.values())
        return packages

    def add_file(self, file: FileDecl) -> None:
        package = self.packages.get(file.package)
        if package is None:
            hint = suggestion(file.package, self.packages)
            self.problems.add(file.where, f"unknown package '{file.package}'{hint}")
            return
        folder = Folder(file.path.parent.as_posix(), file.path.name, package, self.module)
        self.module.folders.append(folder)
        for name, declared in sorted(file.classes.items()):
            cls = Class(declared.where, name, declared.doc, package, folder)
            cls.is_abstract = declared.abstract
            self.declared[cls] = declared
            if self.add_type(cls):
                folder.classes.append(cls)
                package.classes.append(cls)
        for name, declared in sorted(file.enums.items()):
            enum = Enum(declared.where, name, declared.doc, package, folder)
            enum.literals = [
                Literal(literal, value, doc, names.identity(f"{enum.qualified}.{literal}"))
                for value, (literal, doc) in enumerate(declared.literals.items(), 1)
            ]
            if self.add_type(enum):
                folder.enums.append(enum)
                package.enums.append(enum)
        known = self.groups.setdefault(package, {})
        for name, group in file.groups.items():
            if name in known:
                self.problems.add(group.where, f"also in {known[name].where.split(':')[0]}")
            known[name] = group

    def add_type(self, added: Type) -> bool:
        other = self.types.get(added.qualified)
        if other is not None:
            place = other.where.split(":")[0]
            here = place == added.where.split(":")[0]
            what = "both a class and an enumeration" if here else f"also in {place}"
            self.problems.add(added.where, what)
            return False
        self.types[added.qualified] = added
        return True

    def find_type(self, name: str, package: Package) -> Type | None:
        """By simple name from the package outwards, or by qualified name."""
        path = package.path
        while path:
            if f"{path}.{name}" in self.types:
                return self.types[f"{path}.{name}"]
            path = path.rpartition(".")[0]
        return self.types.get(name)

    def known_names(self, kind: type) -> list[str]:
        return [t.name for t in self.types.values() if isinstance(t, kind)]

    def find_class(self, where: str, name: str, package: Package, role: str) -> Class | None:
        found = self.find_type(name, package)
        if isinstance(found, Class):
            return found
        if found is not None:
            what = "is an enumeration; use 'type'" if role != "superclass" else "is an enumeration"
            self.problems.add(where, f"'{name}' {what}")
        elif name in PRIMITIVES and role != "superclass":
            self.problems.add(where, f"'{name}' is not a class; use 'type'")
        else:
            hint = suggestion(name, self.known_names(Class))
            self.problems.add(where, f"unknown {role} '{name}'{hint}")
        return None

    # Superclasses. -------------------------------------------------------------------------------

    def resolve_super(self, cls: Class, declared: ClassDecl) -> None:
        if declared.super:
            cls.super = self.find_class(cls.where, declared.super, cls.package, "superclass")

    def break_cycles(self) -> None:
        """Tells each cycle once, and cuts it so that the rest can be looked at."""
        for cls in self.declared:
            chain = [cls]
            while chain[-1].super is not None and chain[-1].super not in chain:
                chain.append(chain[-1].super)
            if chain[-1].super is cls:
                path = " < ".join(c.name for c in [*chain, cls])
                self.problems.add(cls.where, f"is its own superclass ({path})")
                cls.super = None

    def supers_first(self) -> list[Class]:
        return sorted(self.declared, key=lambda cls: len(cls.ancestors))

    # Members. ------------------------------------------------------------------------------------

    def resolve_members(self, cls: Class, declared: ClassDecl) -> None:
        expanded = [p for item in declared.properties for p in self.expand(cls, item)]
        resolved = [p for p in (self.resolve_property(cls, d) for d in expanded) if p is not None]
        stored = [p for p in resolved if not p.is_derived]
        cls.properties = stored + [p for p in resolved if p.is_derived]
        for index, prop in enumerate(stored, cls.first_index):
            prop.index = index
        for row, prop in enumerate(cls.properties):
            prop.row = row
        operations = (self.resolve_operation(cls, operation) for operation in declared.operations)
        cls.operations = [operation for operation in operations if operation is not None]

    def expand(self, cls: Class, item: PropertyDecl | UseDecl) -> list[PropertyDecl]:
        """A property as it is; the use of a group as the group's properties, prefixed."""
        if isinstance(item, PropertyDecl):
            return [item]
        groups = self.groups.get(cls.package, {})
        group = groups.get(item.use)
        if group is None:
            hint = suggestion(item.use, groups)
            self.problems.add(item.where, f"unknown group '{item.use}'{hint}")
            return []
        inside = [p.name for p in group.properties]
        for name in item.without:
            if name not in inside:
                hint = suggestion(name, inside)
                self.problems.add(item.where, f"no '{name}' in group '{item.use}'{hint}")
        return [
            replace(p, name=item.prefix + p.name, doc=p.doc.replace("{prefix}", item.prefix))
            for p in group.properties
            if p.name not in item.without
        ]

    def resolve_property(self, cls: Class, declared: PropertyDecl) -> Property | None:
        where = f"{cls.where}.{declared.name}"
        kinds = [key for key in ("type", "contains", "refers") if getattr(declared, key)]
        if len(kinds) != 1:
            self.problems.add(where, "needs exactly one of 'type', 'contains' and 'refers'")
            return None
        name = getattr(declared, kinds[0])
        if kinds[0] == "type":
            target = self.resolve_value_type(where, name, cls.package)
            if target is None and name not in PRIMITIVES:
                return None
        else:
            target = self.find_class(where, name, cls.package, "class")
            if target is None:
                return None
        return Property(declared, declared.name, declared.doc, cls, target)

    def resolve_value_type(self, where: str, name: str, package: Package) -> Enum | None:
        """The enumeration of that name; None for a primitive type or a problem."""
        if name in PRIMITIVES:
            return None
        found = self.find_type(name, package)
        if isinstance(found, Enum):
            return found
        if found is not None:
            self.problems.add(where, f"'{name}' is a class; use 'contains' or 'refers'")
        else:
            hint = suggestion(name, [*PRIMITIVES, *self.known_names(Enum)])
            self.problems.add(where, f"unknown type '{name}'{hint}")
        return None

    def resolve_operation(self, cls: Class, declared: OperationDecl) -> Operation | None:
        where = f"{cls.where}.{declared.name}"
        name = declared.result
        target = None if name in PRIMITIVES else self.find_type(name, cls.package)
        if target is None and name not in PRIMITIVES:
            hint = suggestion(name, [*PRIMITIVES, *self.known_names(Type)])
            self.problems.add(where, f"unknown result type '{name}'{hint}")
            return None
        return Operation(
            where,
            declared.name,
            declared.doc,
            cls,
            target,
            "" if target else name,
            declared.many,
            declared.public,
        )

    # What needs all members. ---------------------------------------------------------------------

    def resolve_implements(self, cls: Class) -> None:
        known = {operation.name: operation for operation in cls.all_operations}
        for name in self.declared[cls].implements:
            if name in known:
                cls.implemented.append(known[name])
            else:
                hint = suggestion(name, known)
                self.problems.add(cls.where, f"implements unknown operation '{name}'{hint}")

    def resolve_opposite(self, prop: Property) -> None:
        name = prop.decl.opposite
        if not name or not isinstance(prop.target, Class):
            return
        known = {p.name: p for p in prop.target.all_properties}
        prop.opposite = known.get(name)
        if prop.opposite is None:
            hint = suggestion(name, known)
            what = f"unknown opposite '{name}' in {prop.target.name}{hint}"
            self.problems.add(prop.where, what)
