"""Custom plots: what a plot configuration's identifier designates, and what draws."""

from __future__ import annotations

import importlib
from collections.abc import Callable
from typing import TYPE_CHECKING, Any

from kxsim.design import internal
from kxsim.figures._data import numbers_in
from kxsim.figures._errors import FigureError, nearest
from kxsim.figures._links import identity_in
from kxsim.figures._runs import Runs

if TYPE_CHECKING:
    from mf import zero


class Plot:
    """What a custom plot is called with.

    `figure` is an empty Matplotlib figure to draw into, `input` the text that the figure has for
    it. `shown` and `selected` tell of each run whether it finished and whether it is selected.
    """

    def __init__(self, sheet: Any) -> None:
        self.figure = sheet.picture
        self.input: str = sheet.properties.PlotInput
        self.shown, self.selected = sheet.runs.finished, sheet.selected
        self._runs: Runs = sheet.runs

    @property
    def names(self) -> list[str]:
        """Of the columns, those of parameters first."""
        return self._runs.names()

    def column(self, name: str, type: str = "Default") -> Any:
        """A cell for each run: an array of numbers, with NaN in runs without, if all are numbers.

        Of anything else, texts, truth values or traces, a list with None in runs without.
        FigureError for an unknown name.
        """
        cells = self._runs.cells(name, type)
        numbers = numbers_in(cells)
        return list(cells) if numbers is None else numbers


Drawn = str | Callable[[Plot], object]
"""A custom plot: a function, or what designates a plot configuration."""


class Plots:
    """The plot configurations of a model, and the functions that were registered for them.

    An identifier is the identity of a configuration, or its class when no other has it.
    """

    def __init__(self, model: zero.Model) -> None:
        self._model = model
        self._functions: dict[str, Callable[[Plot], object]] = {}

    def register(self, plot: Drawn, label: str, icon: str) -> internal.PlotConfig:
        """Makes the entry for a function, or for its name; one that exists is taken."""
        name = plot if isinstance(plot, str) else self._name(plot)
        self.function(name)
        for entry in self._entries():
            if entry.PlotClass == name and label in ("", entry.GalleryLabel):
                return entry
        with self._model.transaction():
            registries = self._model.elements(internal.PlotConfigRegistry)
            registry = registries[0] if registries else internal.PlotConfigRegistry(self._model)
            texts = {"GalleryIcon": icon, "GalleryLabel": label or name.rpartition(":")[2]}
            return registry.createIntoPlotConfigs(PlotClass=name, **texts)

    def _name(self, plot: Callable[[Plot], object]) -> str:
        """By which the function is found from now on; another one may have its name already."""
        if not callable(plot):
            raise FigureError("PlotClassNotFound", name=plot, reason="it is not callable")
        name = base = f"{plot.__module__}:{getattr(plot, '__qualname__', type(plot).__name__)}"
        count = 1
        while self._functions.setdefault(name, plot) is not plot:
            count += 1
            name = f"{base} #{count}"
        return name

    def _entries(self) -> list[internal.PlotConfig]:
        registries = self._model.elements(internal.PlotConfigRegistry)
        return [entry for registry in registries for entry in registry.PlotConfigs]

    def find(self, name: str) -> internal.PlotConfig:
        """The configuration that an identifier designates; FigureError for none or several."""
        identity, entries = identity_in(name), self._entries()
        found = [each for each in entries if each.identity() == identity]
        found = found or [each for each in entries if each.PlotClass == name]
        if len(found) > 1:
            raise FigureError("AmbiguousPlot", count=len(found), name=name)
        if not found:
            near = nearest(name, [each.PlotClass for each in entries])
            raise FigureError("UnknownPlot", name=name, nearest=near)
        return found[0]

    def function(self, name: str) -> Callable[[Plot], object]:
        """The callable that a plot class names, "package.module:function"."""
        if name in self._functions:
            return self._functions[name]
        module, _, path = name.partition(":")
        if not module or not path or module.startswith("."):
            reason = "it is neither registered nor of the form package.module:function"
            raise FigureError("PlotClassNotFound", name=name, reason=reason)
        try:
            found: Any = importlib.import_module(module)
            for part in path.split("."):
                found = getattr(found, part)
        except (ImportError, AttributeError) as error:
            raise FigureError("PlotClassNotFound", name=name, reason=str(error)) from error
        if not callable(found):
            raise FigureError("PlotClassNotFound", name=name, reason="it is not callable")
        function: Callable[[Plot], object] = found
        return function

    def drawer(self, properties: Any) -> Callable[[Any], None]:
        """What draws a custom figure's sheet. Its own exceptions arrive as they are."""
        name = self.find(properties.PlotConfigId).PlotClass
        function = self.function(name)

        def draw(sheet: Any) -> None:
            try:
                function(Plot(sheet))
            except Exception as error:
                error.add_note(f"It was raised by the custom plot {name!r}.")
                raise
            if properties.Title and not sheet.picture.get_suptitle():
                sheet.picture.suptitle(properties.Title, x=0.02, ha="left", weight="bold")

        return draw
