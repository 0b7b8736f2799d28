"""Which properties object belongs to a figure; the schema leaves it open."""

from __future__ import annotations

import uuid
from typing import Any

from kxsim import design
from kxsim.figures._data import literal
from kxsim.figures._errors import FigureError

# A histogram has no class of its own: axis X of a scatter plot says what is counted.
CLASSES: dict[str, Any] = {
    "ScatterPlot": design.ScatterPlotProperties,
    "SurfPlot": design.SurfPlotProperties,
    "Histogram": design.ScatterPlotProperties,
    "CustomPlot": design.CustomPlotProperties,
}


def class_for(figure: Any) -> Any:
    """Of the properties of a figure. FigureError for a figure without a kind."""
    return CLASSES[literal(design.FigureType, figure.Type, "kind of figure")]


class Links:
    """From figures to properties objects of a model, by identities, so that neither is kept.

    A figure has the one that it was linked with; or else the one whose identity is its Id. Those
    left over belong together in the order in which they were made, if there are as many of either.
    """

    def __init__(self, model: Any) -> None:
        self._model = model
        self._made: dict[str, str] = {}

    def add(self, figure: Any, properties: Any) -> None:
        expected = class_for(figure)
        if not isinstance(properties, expected):
            given = getattr(properties, "__host_name__", type(properties).__name__)
            told = {"figure": figure.Type.name, "kind": expected.__name__}
            raise FigureError("WrongProperties", **told, given=given.rpartition(".")[2])
        self._made[figure.identity()] = properties.identity()

    def find(self, figure: Any) -> Any:
        """The properties object of a figure; FigureError when nothing tells which."""
        found = self._known(figure)
        if found is None:
            self._pair(class_for(figure))
            found = self._known(figure)
        if found is None:
            kind = class_for(figure).__name__
            raise FigureError("NoProperties", kind=kind, name=figure.Id)
        self.add(figure, found)
        return found

    def owned(self, figure: Any) -> Any:
        """The properties object that no other figure has, or None."""
        try:
            found = self.find(figure)
        except FigureError:
            return None
        others = [each for each in self._model.elements(design.Figure) if each != figure]
        is_shared = any(self._known(each) == found for each in others)
        return None if is_shared else found

    def _known(self, figure: Any) -> Any:
        if figure.Type is None:
            return None
        of_class = class_for(figure)
        for identity in (self._made.get(figure.identity()), identity_in(figure.Id)):
            found = self._model.findElement(identity) if identity else None
            if isinstance(found, of_class):
                return found
        return None

    def _pair(self, of_class: Any) -> None:
        everything = self._model.elements(design.Figure)
        figures = [each for each in everything if each.Type and class_for(each) is of_class]
        known = {each: self._known(each) for each in figures}
        taken = set(known.values())
        free = [each for each in self._model.elements(of_class) if each not in taken]
        waiting = [figure for figure in figures if known[figure] is None]
        if len(waiting) == len(free):
            for figure, properties in zip(waiting, free, strict=True):
                self.add(figure, properties)


def identity_in(text: str) -> str | None:
    """An Id that may be an identity, as the model writes it."""
    try:
        return str(uuid.UUID(text))
    except ValueError:
        return None
