"""Figures with Matplotlib: from the properties in the model to a picture."""

from __future__ import annotations

import io
from collections.abc import Callable, Sequence
from typing import Any

import matplotlib
import numpy
from matplotlib.figure import Figure

from kxsim.figures._axes import set_formulas, wrapped
from kxsim.figures._data import Axis, Values, values_of
from kxsim.figures._errors import FigureError, nearest
from kxsim.figures._histogram import histogram
from kxsim.figures._runs import Runs
from kxsim.figures._scatter import scatter
from kxsim.figures._surface import surface

# The default's name belongs to another plotting library; this one is as uniform to the eye, also
# to one that is blind to some colors.
SYNONYMS = {"parula": "viridis"}

STYLE: dict[Any, Any] = {
    "font.size": 10,
    "axes.titlesize": 12,
    "axes.titleweight": "bold",
    "axes.titlepad": 10,
    "axes.spines.top": False,
    "axes.spines.right": False,
    "axes.edgecolor": "#666666",
    "axes.labelcolor": "#222222",
    "axes.axisbelow": True,
    "axes.formatter.limits": (-5, 6),
    "xtick.color": "#444444",
    "ytick.color": "#444444",
    "grid.color": "#dddddd",
    "grid.linewidth": 0.8,
    "legend.frameon": False,
    "savefig.dpi": 160,
    "svg.fonttype": "none",
    # Where "$" stands for no formula it is a currency; `set_formulas` tells them apart.
    "text.parse_math": False,
}


class Picture(Figure):
    """A Matplotlib figure that notebooks show without pyplot."""

    def _repr_png_(self) -> bytes:
        return encoded(self, "png")


class Sheet:
    """A picture in the making: the figure's properties, the runs and which of them are selected."""

    def __init__(self, kind: str, properties: Any, runs: Runs, selected: Sequence[int]) -> None:
        self.kind, self.properties, self.runs = kind, properties, runs
        self.selected = numpy.isin(numpy.arange(1, runs.count + 1), list(selected))
        self.picture = Picture(figsize=(6.4, 4.4), dpi=110)
        self.picture.set_layout_engine("constrained", w_pad=0.1, h_pad=0.1)
        self.shown = numpy.zeros(runs.count, dtype=bool)
        self.notes: list[str] = []
        self.title_pad: float | None = None

    def values(self, axis: Axis, shared: Any = ()) -> list[Values]:
        return values_of(axis, self.runs, self.kind, shared)

    def show(self, present: Any) -> Any:
        """Which runs with something to show are shown; they are counted."""
        present = present & self.runs.finished
        self.shown |= present
        return present

    @property
    def colors(self) -> Any:
        return color_map(self.properties.ColorMap)


def color_map(name: str) -> Any:
    """FigureError for a name that Matplotlib does not know."""
    known = matplotlib.colormaps
    if name not in known and name not in SYNONYMS:
        raise FigureError("UnknownColorMap", name=name, nearest=nearest(name, [*SYNONYMS, *known]))
    return known[SYNONYMS.get(name, name)]


DRAWERS: dict[str, Callable[[Sheet, Sequence[Any]], None]] = {
    "ScatterPlot": scatter,
    "Histogram": histogram,
    "SurfPlot": surface,
}


def encoded(picture: Figure, format: str) -> bytes:
    """A picture as the contents of a file."""
    buffer = io.BytesIO()
    with matplotlib.rc_context(STYLE):
        picture.savefig(buffer, format=format)
    return buffer.getvalue()


def draw(
    sheet: Sheet, shared: Sequence[Any], custom: Callable[[Sheet], None] | None = None
) -> Picture:
    """The picture of a figure, by its kind or by `custom`; FigureError for what cannot be drawn.

    `shared` are the data sources of the view.
    """
    with matplotlib.rc_context(STYLE):
        if custom:
            custom(sheet)
            set_formulas(sheet.picture)
        else:
            _ = sheet.colors
            DRAWERS[sheet.kind](sheet, shared)
            _finish(sheet)
    return sheet.picture


def limits(picture: Picture, letter: str) -> tuple[Any, Any]:
    """What an axis of a picture shows, or its colors; None without any."""
    axes = picture.axes[0]
    if letter == "C":
        clim: tuple[Any, Any] = axes.collections[0].get_clim() if axes.collections else (None, None)
        return clim
    low, high = getattr(axes, f"get_{letter.lower()}lim")()
    return low, high


def _finish(sheet: Sheet) -> None:
    """The title, and under the plot what it does not show."""
    if not sheet.shown.any():
        raise FigureError("NothingToShow")
    axes = sheet.picture.axes[0]
    place: Any = "center" if axes.name == "3d" else "left"
    axes.set_title(wrapped(sheet.properties.Title), loc=place, pad=sheet.title_pad, wrap=True)
    hidden = sheet.runs.count - int(sheet.shown.sum())
    if hidden:
        sheet.notes.append(f"{hidden:,} of {sheet.runs.count:,} runs not shown")
    if _is_out_of_sight(axes):
        sheet.notes.append("nothing lies within the limits")
    if sheet.notes:
        note = {"x": 0.99, "ha": "right", "fontsize": 8, "color": "#777777"}
        sheet.picture.supxlabel("; ".join(sheet.notes), **note)
    set_formulas(sheet.picture)


def _is_out_of_sight(axes: Any) -> bool:
    """Whether all data is beyond the limits of some axis."""
    plane = axes.xy_dataLim if axes.name == "3d" else axes.dataLim
    pairs = [(plane.intervalx, axes.get_xlim()), (plane.intervaly, axes.get_ylim())]
    if axes.name == "3d":
        pairs.append((axes.zz_dataLim.intervalx, axes.get_zlim()))
    return any(max(data) < min(seen) or min(data) > max(seen) for data, seen in pairs)
