"""Every schema that must be refused, and what is said about it: one line a problem, with file,
class and property."""

import pytest
from schemas import a_class, module_text, write_module

from generator.build import build
from generator.schema import BadSchema

KIND = "[enum.Kind]\ndoc = 'Kinds.'\n[enum.Kind.literals]\nRed = 'Red.'\nBlue = 'Blue.'\n"
LEAF = a_class("Leaf")
NAME = "name = 'Name', type = 'String'"


def with_property(inside: str) -> str:
    return KIND + LEAF + a_class("Tree", inside)


BAD = {
    # Keys.
    "unknown key of a class": (
        a_class("Tree", abstrat=True),
        "Tree: unknown key 'abstrat'; did you mean 'abstract'?",
    ),
    "unknown key of a property": (
        with_property("name = 'Age', type = 'Real', defualt = 1"),
        "Tree.Age: unknown key 'defualt'; did you mean 'default'?",
    ),
    "unknown key of a file": ("clas = 1\n", "unknown key 'clas'; did you mean 'class'?"),
    "key of the wrong type": (
        with_property("name = 'Age', type = 'Real', many = 'yes'"),
        "Tree.Age: 'many' must be true or false",
    ),
    "property without a name": (
        with_property("type = 'Real'"),
        "Tree.properties[1]: missing 'name'",
    ),
    "class without a doc": ("[class.Tree]\n", "Tree: missing 'doc'"),
    "property with an empty doc": (
        "[class.Tree]\ndoc = 'A tree.'\nproperties = [{ name = 'A', type = 'Real', doc = '' }]\n",
        "Tree.A: needs a description",
    ),
    "property that is no table": (
        "[class.Tree]\ndoc = 'A tree.'\nproperties = ['Age']\n",
        "Tree.properties[1]: must be a table",
    ),
    "names that are none": (a_class("Tree", implements=[1]), "Tree: 'implements' must list names"),
    "not TOML": (
        "[class.Tree\n",
        "not TOML: expected ']' at the end of a table declaration (at line 2, column 12)",
    ),
    "class twice in a file": (
        "[class.Tree]\ndoc = 'A.'\n[class.Tree]\ndoc = 'B.'\n",
        "not TOML: cannot declare ('class', 'Tree') twice (at line 4, column 12)",
    ),
    # Types and superclasses.
    "unknown type": (
        with_property("name = 'Kind', type = 'Knid'"),
        "Tree.Kind: unknown type 'Knid'; did you mean 'Kind'?",
    ),
    "unknown primitive": (
        with_property("name = 'Age', type = 'real'"),
        "Tree.Age: unknown type 'real'; did you mean 'Real'?",
    ),
    "unknown class": (
        with_property("name = 'Leaves', contains = 'Leave', many = true"),
        "Tree.Leaves: unknown class 'Leave'; did you mean 'Leaf'?",
    ),
    "class as a type": (
        with_property("name = 'Leaf', type = 'Leaf'"),
        "Tree.Leaf: 'Leaf' is a class; use 'contains' or 'refers'",
    ),
    "enumeration as a class": (
        with_property("name = 'Kind', refers = 'Kind'"),
        "Tree.Kind: 'Kind' is an enumeration; use 'type'",
    ),
    "primitive as a class": (
        with_property("name = 'Age', contains = 'Real'"),
        "Tree.Age: 'Real' is not a class; use 'type'",
    ),
    "two kinds of property": (
        with_property("name = 'Leaf', contains = 'Leaf', refers = 'Leaf'"),
        "Tree.Leaf: needs exactly one of 'type', 'contains' and 'refers'",
    ),
    "unknown superclass": (
        LEAF + a_class("Tree", super="Leav"),
        "Tree: unknown superclass 'Leav'; did you mean 'Leaf'?",
    ),
    "enumeration as a superclass": (
        KIND + a_class("Tree", super="Kind"),
        "Tree: 'Kind' is an enumeration",
    ),
    "its own superclass": (
        a_class("A", super="C") + a_class("B", super="A") + a_class("C", super="B"),
        "A: is its own superclass (A < C < B < A)",
    ),
    # Names.
    "property twice": (a_class("Tree", NAME, NAME), "Tree.Name: is declared twice"),
    "inherited property": (
        a_class("Plant", NAME) + a_class("Tree", NAME, super="Plant"),
        "Tree.Name: hides Plant's",
    ),
    "same accessor": (
        a_class("Tree", NAME, "name = 'name', type = 'String'"),
        "Tree.name: makes the same 'getName' as Tree.Name",
    ),
    "same getter": (
        a_class(
            "Tree",
            "name = 'Ages', type = 'Real', many = true",
            "name = 'AgesMutable', type = 'Real'",
        ),
        "Tree.AgesMutable: makes the same 'getAgesMutable' as Tree.Ages",
    ),
    "keyword as an accessor": (
        with_property("name = 'Operator', type = 'String'"),
        "Tree.Operator: its accessor 'operator' is a keyword of C++",
    ),
    "name that elements have": (
        with_property("name = 'Owner', refers = 'Leaf'"),
        "Tree.Owner: is a reserved name",
    ),
    "keyword of Python": (
        with_property("name = 'from', type = 'String'"),
        "Tree.from: is a name that Python needs",
    ),
    "name that hides a type from Python": (
        with_property("name = 'str', type = 'String'"),
        "Tree.str: is a name that Python needs",
    ),
    "name that hides a package from Python": (
        with_property("name = 'sample', type = 'String'"),
        "Tree.sample: is a name that Python needs",
    ),
    "class that hides what stubs import": (a_class("Literal"), "Literal: is a reserved name"),
    "class that is a keyword of Python": (a_class("None"), "None: is a reserved name"),
    "literal that is a keyword of Python": (
        "[enum.Kind]\ndoc = 'Kinds.'\n[enum.Kind.literals]\nNone = 'None.'\n",
        "Kind.None: cannot be the name of a literal",
    ),
    "no name": (with_property("name = 'my age', type = 'Real'"), "Tree.my age: is not a name"),
    "class in small letters": (
        a_class("tree"),
        "tree: a class's name must begin with a capital letter",
    ),
    "class that every class has": (a_class("Builder"), "Builder: is a reserved name"),
    "keyword as a literal": (
        "[enum.Kind]\ndoc = 'Kinds.'\n[enum.Kind.literals]\ndelete = 'Gone.'\n",
        "Kind.delete: cannot be the name of a literal",
    ),
    "no literals": ("[enum.Kind]\ndoc = 'K.'\nliterals = {}\n", "Kind: needs at least one literal"),
    "class and enumeration": (KIND + a_class("Kind"), "Kind: both a class and an enumeration"),
    "two classes in a file of one name": (
        a_class("ABTree") + a_class("AbTree"),
        "AbTree: 'sample/ab_tree.h' is also the file of ABTree",
    ),
    "class named as its folder": (
        a_class("Sample"),
        "Sample: 'sample/sample.h' is also the file of sample.toml",
    ),
    # Values.
    "default of another type": (
        with_property("name = 'Age', type = 'Real', default = 'old'"),
        "Tree.Age: 'old' is not a default of type 'Real'",
    ),
    "truth value as a number": (
        with_property("name = 'Age', type = 'Integer', default = true"),
        "Tree.Age: true is not a default of type 'Integer'",
    ),
    "default out of range": (
        with_property("name = 'Age', type = 'Integer8', default = 128"),
        "Tree.Age: 128 is not a default of type 'Integer8'",
    ),
    "default that is no number": (
        with_property("name = 'Age', type = 'Real', default = nan"),
        "Tree.Age: nan is not a default of type 'Real'",
    ),
    "unknown literal": (
        with_property("name = 'Kind', type = 'Kind', default = 'Bleu'"),
        "Tree.Kind: Kind has no literal 'Bleu'; did you mean 'Blue'?",
    ),
    "default of a reference": (
        with_property("name = 'Leaf', refers = 'Leaf', default = 'x'"),
        "Tree.Leaf: only a single number, text, truth value or enumeration can have a default",
    ),
    "check of a number": (
        with_property("name = 'Age', type = 'Real', check = true"),
        "Tree.Age: 'check' is for host arrays ('VxArray')",
    ),
    "many host arrays": (
        with_property("name = 'Photos', type = 'VxArray', many = true"),
        "Tree.Photos: a host array cannot be many",
    ),
    "order of a single value": (
        with_property("name = 'Age', type = 'Real', ordered = false"),
        "Tree.Age: 'ordered' is for many-valued properties",
    ),
    "unique single value": (
        with_property("name = 'Age', type = 'Real', unique = true"),
        "Tree.Age: 'unique' is for many-valued properties; a single value always is",
    ),
    "proxies in a containment": (
        with_property("name = 'Leaves', contains = 'Leaf', many = true, proxies = false"),
        "Tree.Leaves: 'proxies' is for many references",
    ),
    "derived collection": (
        with_property("name = 'Ages', type = 'Real', many = true, derived = true"),
        "Tree.Ages: a derived property must be a single number, text, truth value or enumeration",
    ),
    "derived default": (
        with_property("name = 'Age', type = 'Real', default = 1, derived = true"),
        "Tree.Age: a derived property has no 'default', 'check' or 'opposite'",
    ),
    "too many properties before a reference": (
        LEAF
        + a_class(
            "Tree",
            *(f"name = 'P{number}', type = 'Real'" for number in range(63)),
            "name = 'Leaf', refers = 'Leaf'",
        ),
        "Tree.Leaf: a reference's index must not be above 63, it is 64",
    ),
    # Opposites.
    "unknown opposite": (
        a_class("Leaf", "name = 'Tree', refers = 'Tree'")
        + a_class("Tree", "name = 'Leaf', refers = 'Leaf', opposite = 'Tee'"),
        "Tree.Leaf: unknown opposite 'Tee' in Leaf; did you mean 'Tree'?",
    ),
    "opposite that knows nothing of it": (
        a_class("Leaf", "name = 'Tree', refers = 'Tree'")
        + a_class("Tree", "name = 'Leaf', refers = 'Leaf', opposite = 'Tree'"),
        "Tree.Leaf: its opposite Leaf.Tree does not name it as its own opposite",
    ),
    "opposite of a containment": (
        with_property("name = 'Leaf', contains = 'Leaf', opposite = 'Tree'"),
        "Tree.Leaf: unknown opposite 'Tree' in Leaf",
        "Tree.Leaf: 'opposite' is for references",
    ),
    "opposite of a superclass": (
        a_class("Plant")
        + a_class("Leaf", "name = 'Plant', refers = 'Plant', opposite = 'Leaf'")
        + a_class("Tree", "name = 'Leaf', refers = 'Leaf', opposite = 'Plant'", super="Plant"),
        "Leaf.Plant: unknown opposite 'Leaf' in Plant",
        "Tree.Leaf: its opposite Leaf.Plant does not name it as its own opposite",
    ),
    # Operations.
    "not implemented": (
        a_class("Tree", operations=[{"name": "grow", "result": "Real", "doc": "Grows."}]),
        "Tree: is not abstract, so it must implement 'grow'",
    ),
    "implements what is not there": (
        a_class("Tree", implements=["grow"]),
        "Tree: implements unknown operation 'grow'",
    ),
    "unknown result": (
        a_class(
            "Tree",
            abstract=True,
            operations=[{"name": "grow", "result": "Tre", "doc": "Grows."}],
        ),
        "Tree.grow: unknown result type 'Tre'; did you mean 'Tree'?",
    ),
    "operation that elements have": (
        a_class(
            "Tree",
            abstract=True,
            operations=[{"name": "destroy", "result": "Real", "doc": "Ends."}],
        ),
        "Tree.destroy: is a reserved name",
    ),
    "operation that a property makes": (
        a_class(
            "Tree",
            NAME,
            abstract=True,
            operations=[{"name": "getName", "result": "String", "doc": "The name."}],
        ),
        "Tree.getName: 'getName' is also made for Name",
    ),
    # Groups.
    "unknown group": (
        "[group.Axis]\nproperties = []\n"
        + "[class.Tree]\ndoc = 'A tree.'\nproperties = [{ use = 'Axes' }]\n",
        "Tree.properties[1]: unknown group 'Axes'; did you mean 'Axis'?",
    ),
    "left out what is not there": (
        "[group.Axis]\nproperties = [{ name = 'Min', type = 'Real', doc = 'M.' }]\n"
        + "[class.Tree]\ndoc = 'A tree.'\nproperties = [{ use = 'Axis', without = ['Mim'] }]\n",
        "Tree.properties[1]: no 'Mim' in group 'Axis'; did you mean 'Min'?",
    ),
    "group in a group": (
        "[group.Axis]\nproperties = [{ use = 'Axis' }]\n",
        "Axis.properties[1]: unknown key 'use'",
        "Axis.properties[1]: missing 'name'",
        "Axis.properties[1]: missing 'doc'",
    ),
}


def refusal(paths) -> list[str]:
    with pytest.raises(BadSchema) as refused:
        build(paths)
    return refused.value.lines


@pytest.mark.parametrize("name", BAD)
def test_a_bad_schema_is_refused_with_its_place(tmp_path, name):
    schema, *expected = BAD[name]
    told = refusal(write_module(tmp_path, schema))
    assert told == [f"sample.toml: {line}" for line in expected]


def test_all_problems_of_all_files_are_told_at_once(tmp_path):
    paths = write_module(
        tmp_path,
        a_class("Tree", "name = 'Age', type = 'Rael'", super="Plant"),
        inner=a_class("Leaf", "name = 'Tree', refers = 'Tee'"),
        uri_path="no slash",
    )
    assert sorted(refusal(paths)) == [
        "inner.toml: Leaf.Tree: unknown class 'Tee'; did you mean 'Tree'?",
        "module.toml: 'uri_path' must begin with a slash and not end with one",
        "sample.toml: Tree.Age: unknown type 'Rael'; did you mean 'Real'?",
        "sample.toml: Tree: unknown superclass 'Plant'",
    ]


@pytest.mark.parametrize(
    ("changed", "expected"),
    [
        ({"identity": "one"}, "'one' is not a UUID"),
        ({"packages": ["sample.inner", "sample"]}, "package 'sample.inner' must follow its parent"),
        ({"packages": ["sample", "sample"]}, "package 'sample' is listed twice"),
        ({"packages": ["sample", "class"]}, "'class' cannot be the name of a package"),
        ({"folder": "other"}, "does not lie in its folder 'other'"),
        ({"name": None}, "missing 'name'"),
    ],
)
def test_a_bad_module_is_refused(tmp_path, changed, expected):
    assert f"module.toml: {expected}" in refusal(write_module(tmp_path, LEAF, **changed))


def test_a_schema_of_no_package_is_refused(tmp_path):
    paths = write_module(tmp_path, LEAF, packages=["simple"])
    assert refusal(paths) == [
        "sample.toml: unknown package 'sample'; did you mean 'simple'?",
    ]


def test_a_class_in_two_files_of_a_package_is_refused(tmp_path):
    paths = write_module(tmp_path, LEAF)
    other = tmp_path / "sample/more/more.toml"
    other.parent.mkdir()
    other.write_text(f'package = "sample"\n{LEAF}')
    assert refusal([*paths, other]) == ["sample.toml: Leaf: also in more.toml"]


def test_there_is_one_module(tmp_path):
    module, schema = write_module(tmp_path, LEAF)
    second = tmp_path / "sample/second.toml"
    second.write_text(module_text())
    assert refusal([module, schema, second]) == [
        "second.toml: a second module; the first is in module.toml"
    ]
    assert refusal([schema]) == ["schemas: none of the files has a [module]"]
