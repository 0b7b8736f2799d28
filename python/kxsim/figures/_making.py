"""Making and changing the elements of a figure; what is refused leaves none behind."""

from __future__ import annotations

import enum
from collections.abc import Iterable, Mapping
from numbers import Real
from typing import Any

import numpy

from kxsim import design
from kxsim.figures._data import Axis, Data, data, literal, values_of
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
        if is_given(what):
            contents |= _axis_contents(letter, what, runs)
    for letter in _letters(CLASSES[kind]):
        if {f"{letter}Min", f"{letter}Max"} & values.keys():
            contents[f"{letter}LimMode"] = False
    own, more = _parted(kind, values)
    with view.model().transaction():
        plain = {name for name, is_plain in CLASSES[kind].__host_properties__.items() if is_plain}
        parts = {name: more[name] for name in more if name not in plain}
        properties = CLASSES[kind](view.model(), {**contents, **parts})
        _set_all(properties, {name: more[name] for name in more if name in plain})
        figure = view.createIntoFigures(Type=kind)
        own.setdefault("Id", properties.identity())
        check_id(view, own["Id"])
        _set_all(figure, own)
        if "ColorMap" in more:
            check_color_map(more["ColorMap"])
        _complete_limits(kind, properties, values, runs, view.DataSources)
        _check(kind, axes, properties, runs, view.DataSources)
    return figure, properties


def _set_all(owner: Any, values: Mapping[str, Any]) -> None:
    for name, value in values.items():
        setattr(owner, name, checked_value(owner, name, value))


def is_given(what: Any) -> bool:
    """Whether anything was said of an axis; what is wrong with it comes to light later."""
    return not (isinstance(what, tuple) and len(what) == 0)


def _axis_contents(letter: str, what: What, runs: Runs) -> dict[str, Any]:
    """The data specification and the sources of an axis, as first values."""
    given = what if isinstance(what, Data) else data(what)
    if not given.labels:
        raise FigureError("NoData", axis=letter)
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


def _complete_limits(
    kind: str, properties: Any, given: Mapping[str, Any], runs: Runs, shared: Any
) -> None:
    """Of two limits of which one was given, the other becomes what it is without limits."""
    ends = ("Min", "Max")
    halves = [
        (letter, missing)
        for letter in _letters(type(properties))
        for end, missing in (ends, ends[::-1])
        if letter + end in given and letter + missing not in given
        if not getattr(properties, f"{letter}LimMode")
    ]
    if not halves:
        return
    from kxsim.figures import _draw

    for letter, _ in halves:
        setattr(properties, f"{letter}LimMode", True)
    picture = _draw.draw(_draw.Sheet(kind, properties, runs, ()), shared)
    for letter, missing in halves:
        limits = dict(zip(ends, _draw.limits(picture, letter), strict=True))
        if limits[missing] is not None:
            setattr(properties, letter + missing, float(limits[missing]))
        setattr(properties, f"{letter}LimMode", False)


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
    if isinstance(value, numpy.generic):
        value = value.item()
    if isinstance(present, enum.Enum):
        return _checked_type(owner, literal(type(present), value, f"literal of {name}"))
    kind = next((each for each in _WORDS if isinstance(present, each)), None)
    if kind is float and isinstance(value, Real) and not isinstance(value, bool):
        return float(value)
    if kind is None or not isinstance(value, kind):
        given = next((_WORDS[each] for each in _WORDS if isinstance(value, each)), None)
        wanted, given = _WORDS[kind] if kind else "an element", given or type(value).__name__
        raise FigureError("WrongPropertyType", name=name, kind=wanted, given=given)
    return value


def _checked_type(figure: Any, kind: str) -> str:
    """A kind of figure for which its properties object will do."""
    own, wanted = (CLASSES[each] for each in (figure.Type.name, kind))
    if own is not wanted:
        told = {"figure": kind, "kind": wanted.__name__, "given": own.__name__}
        raise FigureError("WrongProperties", told)
    return kind
