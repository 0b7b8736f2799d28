"""The one exception of figures and all that it says."""

from __future__ import annotations

from typing import Any

from kxsim._errors import hint, nearest

__all__ = ["FigureError", "nearest"]

MESSAGES = {
    # What is plotted.
    "UnknownQuantity": "the runs have no {kind} {name!r}",
    "AmbiguousQuantity": "{name!r} is a parameter and an output: the source's type says which",
    "UnknownDataSource": "axis {axis} plots {name!r}, which is no data source and no column",
    "NoData": "axis {axis} has no data source",
    "UnknownLiteral": "there is no {kind} {name!r}",
    "TextsAndNumbers": "axis {axis} cannot show texts and numbers at once",
    "NotPlottable": "{name!r} of run {run} is {kind}: no number, text or row of numbers",
    "TooManySources": "axis {axis} shows one data source here, not {count}",
    "SourcesDoNotMatch": "axis {axis} has {count} data sources and axis {other} has {others}: give "
    "one of them one, or both as many",
    "TraceNeedsTrace": "axis {axis} has a trace for each run, axis {other} one value: reduce the "
    "one, or give the other a trace too",
    "TraceAsColor": "axis C colors whole runs: reduce its trace to one value",
    "TraceLengthsDiffer": "run {run} has {count} values for axis {axis} and {others} for axis "
    "{other}",
    "NothingToShow": "no run has all the values that the figure shows",
    "NotASurface": "a surface needs three points that are not on one line; there are {count}",
    # How it looks.
    "InvalidLimits": "axis {axis}: the limits {minimum:g} and {maximum:g} are not finite numbers, "
    "the first below the second",
    "UnknownColorMap": "there is no color map {name!r}",
    # Figures and their properties.
    "UnknownFigure": "the view has no figure with the Id {name!r}",
    "DuplicateFigure": "the view has more than one figure with the Id {name!r}",
    "NoCurrentFigure": "the view has no figure",
    "NoProperties": "nothing tells which {kind} belongs to the figure {name!r}: give it the "
    "identity of one as Id, or link them",
    "WrongProperties": "a {figure} has {kind}, not {given}",
    "UnknownProperty": "a {figure} has no property {name!r}",
    "WrongPropertyType": "{name!r} is {kind}, not {given}",
    "ForeignCommand": "the command is in another model than the figures",
    # Runs and custom plots.
    "UnknownRun": "there is no run {name}; runs are numbered from 1 to {count}",
    "UnknownPlot": "no plot configuration is designated by {name!r}; `register` makes one",
    "AmbiguousPlot": "{count} plot configurations have the class {name!r}: designate one by its "
    "identity",
    "PlotClassNotFound": "the plot class {name!r} cannot be used: {reason}",
}


class FigureError(ValueError):
    """A figure that cannot be drawn or changed as asked; what was there is as it was.

    `key` tells what is wrong ("UnknownColorMap"), `fields` what about: "name" is what was not
    understood, "nearest" what may have been meant, or None.
    """

    def __init__(self, key: str, fields: dict[str, Any] | None = None, /, **more: Any) -> None:
        self.key = key
        self.fields = {**(fields or {}), **more}
        super().__init__(key, self.fields)

    def __str__(self) -> str:
        return MESSAGES[self.key].format(**self.fields) + hint(self.fields.get("nearest"))
