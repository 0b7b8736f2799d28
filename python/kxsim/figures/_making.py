"""Making and changing the elements of a figure; what is refused leaves none behind."""

from __future__ import annotations

import enum
from collections.abc import Iterable, Mapping
from numbers import Real
from typing import Any

from kxsim import design
from kxsim.figures._data import Axis, Data, data, values_of
from kxsim.figures._errors import FigureError, nearest
from kxsim.figures._links import CLASSES
from kxsim.figures._runs import Runs

# What an axis plots: a column's name, several, names with labels, or in full.
What = str | Iterable[str] | Mapping[str, str] | Data

_WORDS = {bool: "a truth value", float: "a number", str: "a text"}


def new_view(results: Any, model: Any) -> design.DesignView:
    """An empty view that offers all columns of the results."""
    runs = Runs(results)
    sources: list[Any] = [
        {"type": type, "value": name}
        for type in ("Parameter", "Output")
        for name in runs.names(type)
    ]
    return design.DesignView(model, DataSources=sources)


def make(
    view: Any, runs: Runs, kind: str, axes: Mapping[str, What], values: dict[str, Any]
) -> tuple[design.Figure, Any]:
    """A figure and its properties object, or FigureError and nothing."""
    contents: dict[str, Any] = {}
    for letter, what in axes.items():
        if what:
            contents |= _axis_contents(letter, what, runs)
    for letter in _letters(CLASSES[kind]):
        if {f"{letter}Min", f"{letter}Max"} & values.keys():
            contents[f"{letter}LimMode"] = False
    own, more = _parted(kind, values)
    with view.model().transaction():
        properties = CLASSES[kind](view.model(), {**contents, **more})
        own.setdefault("Id", properties.identity())
        check_id(view, own["Id"])
        figure = view.createIntoFigures(Type=kind, **own)
        _check(kind, axes, properties, runs, view.DataSources)
        if "ColorMap" in more:
            check_color_map(more["ColorMap"])
    return figure, properties


def _axis_contents(letter: str, what: What, runs: Runs) -> dict[str, Any]:
    """The data specification and the sources of an axis, as first values."""
    given = what if isinstance(what, Data) else data(what)
    sources = [
        {"type": runs.type_of(name, given.type), "value": name, "label": label}
        for name, label in given.labels.items()
    ]
    return {f"{letter}Data": {"ProcessingType": given.reduce}, f"{letter}DataSources": sources}


def _parted(kind: str, values: Mapping[str, Any]) -> tuple[dict[str, Any], dict[str, Any]]:
    """Values of the figure, values of its properties object."""
    own: dict[str, Any] = {}
    more: dict[str, Any] = {}
    for name, value in values.items():
        of_figure = owner_of(name, design.Figure, CLASSES[kind]) is design.Figure
        (own if of_figure else more)[name] = value
    return own, more


def owner_of(name: str, *classes: Any) -> Any:
    """The class that has a property; FigureError when none of a figure's two has it."""
    for each in classes:
        if name in each.__host_properties__:
            return each
    known = [known for each in classes for known in each.__host_properties__]
    kind = classes[-1].__name__.removesuffix("Properties")
    raise FigureError("UnknownProperty", figure=kind, name=name, nearest=nearest(name, known))


def _check(
    kind: str, plotted: Iterable[str], properties: Any, runs: Runs, shared: Iterable[Any]
) -> None:
    """FigureError for limits that are none and for what no axis can show."""
    for letter in _letters(type(properties)):
        _ = Axis(properties, letter).limits
    for letter in plotted:
        values_of(Axis(properties, letter), runs, kind, shared)


def _letters(of_class: Any) -> list[str]:
    """Of the axes that a class of properties has."""
    return [name[0] for name in of_class.__host_properties__ if name[1:] == "LimMode"]


def check_id(view: Any, name: str) -> None:
    if any(each.Id == name for each in view.Figures):
        raise FigureError("DuplicateFigure", name=name)


def check_color_map(name: str) -> None:
    from kxsim.figures._draw import color_map

    color_map(name)


def checked_value(owner: Any, name: str, value: Any) -> Any:
    """A new value of a property, if it is of the property's kind."""
    present = getattr(owner, name)
    kind = next((each for each in _WORDS if isinstance(present, each)), None)
    if kind is float and isinstance(value, Real) and not isinstance(value, bool):
        return float(value)
    if kind is None or not isinstance(value, kind):
        word = "an enumeration" if isinstance(present, enum.Enum) else "an element"
        given = next((_WORDS[each] for each in _WORDS if isinstance(value, each)), None)
        told = {"kind": _WORDS[kind] if kind else word, "given": given or type(value).__name__}
        raise FigureError("WrongPropertyType", name=name, **told)
    return value
