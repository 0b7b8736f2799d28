"""The columns of results, by name and by where they come from."""

from __future__ import annotations

from collections.abc import Sequence
from typing import Any

import numpy

from kxsim.figures._errors import FigureError, nearest


class Runs:
    """What results have to plot: a cell for each run and column, None where there is none."""

    def __init__(self, results: Any) -> None:
        self.count = len(results)
        self.finished = numpy.array([state == "finished" for state in results.states], dtype=bool)
        self._outputs = results.outputs
        self._parameters = {"run": range(1, self.count + 1), **results.inputs}
        self._output_names = dict.fromkeys(
            name for each in results.outputs if each for name in each
        )

    def names(self, type: str = "Default") -> list[str]:
        """Of the columns of a type, the parameters first."""
        parameters = [] if type == "Output" else list(self._parameters)
        return parameters + ([] if type == "Parameter" else list(self._output_names))

    def type_of(self, name: str, type: str) -> str:
        """Where a name is, "Parameter" or "Output"; FigureError where it is not, or in both."""
        if type == "Default" and name in self._parameters and name in self._output_names:
            raise FigureError("AmbiguousQuantity", name=name)
        if type != "Output" and name in self._parameters:
            return "Parameter"
        if type != "Parameter" and name in self._output_names:
            return "Output"
        kind = "parameter or output" if type == "Default" else type.lower()
        near = nearest(name, self.names(type))
        raise FigureError("UnknownQuantity", kind=kind, name=name, nearest=near)

    def cells(self, name: str, type: str = "Default") -> Sequence[Any]:
        if self.type_of(name, type) == "Parameter":
            parameter: Sequence[Any] = self._parameters[name]
            return parameter
        return [each.get(name) if each else None for each in self._outputs]

    def default(self, kind: str, axis: str) -> tuple[str, str] | None:
        """What an axis of a kind of figure plots when nothing says what: type and name.

        Parameters along X, and Y of a surface; the first output along the last axis.
        """
        if axis == {"SurfPlot": "Z", "Histogram": "X"}.get(kind, "Y"):
            names, place, type = list(self._output_names), 0, "Output"
        else:
            parameters = [name for name in self._parameters if name != "run"]
            place, type = "XYZ".index(axis), "Parameter"
            names = parameters or ["run"]
        return (type, names[place]) if place < len(names) else None
