"""Scatter plots: points, or lines where both axes have traces."""

from __future__ import annotations

import itertools
from collections.abc import Iterator, Sequence
from typing import Any, NamedTuple

import numpy
from matplotlib.collections import LineCollection
from matplotlib.colors import to_rgba_array
from matplotlib.lines import Line2D

from kxsim.figures._axes import Scale, add_color_bar, color_scale, series_colors, set_up
from kxsim.figures._data import Axis, Values
from kxsim.figures._errors import FigureError

MARKERS = "osD^vPX"
FADED = 0.3

# How a layer looks: all runs, or the selected before the others.
POINTS: dict[str, dict[str, Any]] = {
    "runs": {"zorder": 3, "edgecolors": "white", "linewidths": 0.3},
    "others": {"zorder": 2, "edgecolors": "white", "linewidths": 0.3},
    "selected": {"zorder": 4, "edgecolors": "black", "linewidths": 1.2},
}
LINES: dict[str, dict[str, Any]] = {
    "runs": {"zorder": 3, "linewidths": 1.3},
    "others": {"zorder": 2, "linewidths": 1.3},
    "selected": {"zorder": 4, "linewidths": 2.2},
}


class Series(NamedTuple):
    x: Values
    y: Values
    label: str
    color: Any
    marker: str


class Coloring(NamedTuple):
    """A number for each run, and its color."""

    numbers: Any
    scale: Scale

    def of(self, chosen: Any) -> Any:
        return self.scale.map(self.scale.norm(self.numbers[chosen]))


def scatter(sheet: Any, shared: Sequence[Any]) -> None:
    """Axis Y over X; colored by axis C where it has data, by series otherwise."""
    x, y, c = (Axis(sheet.properties, letter) for letter in "XYC")
    colored = sheet.values(c, shared)
    if len(colored) > 1:
        raise FigureError("TooManySources", axis="C", count=len(colored))
    ys = sheet.values(y, shared)
    xs = _sample_numbers(ys) if _lacks_x(x, ys) else sheet.values(x, shared)
    series = _series(xs, ys)
    parts = [sheet.show(_complete(one, colored)) for one in series]
    if not sheet.shown.any():
        return
    coloring = None
    if colored:
        coloring = Coloring(colored[0].numbers, color_scale(sheet, c, colored[0], sheet.shown))
    axes = sheet.picture.add_subplot()
    for one, shown in zip(series, parts, strict=True):
        add = _add_points if one.y.traces is None else _add_lines
        for layer, chosen in _layers(sheet, shown):
            add(axes, one, layer, chosen, coloring)
    axes.autoscale_view()
    set_up(axes, x, xs)
    set_up(axes, y, ys)
    if len(series) > 1:
        axes.legend(handles=[_handle(one, coloring) for one in series])
    if coloring and sheet.properties.Colorbar:
        add_color_bar(sheet, axes, c, colored[0], coloring.scale)


# Series ------------------------------------------------------------------------------------------


def _lacks_x(x: Axis, ys: Sequence[Values]) -> bool:
    """Traces need no data along X."""
    are_traces = all(each.traces is not None for each in ys)
    return are_traces and not x.sources and not x.id and not x.is_final


def _sample_numbers(ys: Sequence[Values]) -> list[Values]:
    """1, 2, ... beside each trace."""
    numbers = [[numpy.arange(1.0, len(trace) + 1) for trace in y.traces] for y in ys]
    return [Values("sample", None, traces=each) for each in numbers]


def _series(xs: Sequence[Values], ys: Sequence[Values]) -> list[Series]:
    """One source of an axis goes with each of the other's, or both go pairwise."""
    count = max(len(xs), len(ys))
    if min(len(xs), len(ys)) not in (1, count):
        fields = {"axis": "X", "count": len(xs), "other": "Y", "others": len(ys)}
        raise FigureError("SourcesDoNotMatch", fields)
    looks = zip(series_colors(count), itertools.cycle(MARKERS), strict=False)
    named = xs if len(xs) > len(ys) else ys
    rows = zip(itertools.cycle(xs), itertools.cycle(ys), named, looks, strict=False)
    return [Series(x, y, each.label, *look) for x, y, each, look in rows]


def _complete(series: Series, colored: Sequence[Values]) -> Any:
    """Which runs have all values; FigureError when traces and single values meet."""
    x, y = series.x, series.y
    if (x.traces is None) != (y.traces is None):
        axis, other = ("X", "Y") if x.traces is not None else ("Y", "X")
        raise FigureError("TraceNeedsTrace", axis=axis, other=other)
    if any(each.traces is not None for each in colored):
        raise FigureError("TraceAsColor")
    present = numpy.logical_and.reduce([each.present for each in (x, y, *colored)])
    if x.traces is not None:
        for k in numpy.flatnonzero(present).tolist():
            counts = {"count": len(x.traces[k]), "others": len(y.traces[k])}
            if counts["count"] != counts["others"]:
                raise FigureError("TraceLengthsDiffer", counts, run=k + 1, axis="X", other="Y")
    return present


# Drawing -----------------------------------------------------------------------------------------


def _layers(sheet: Any, shown: Any) -> Iterator[tuple[str, Any]]:
    """What is drawn alike: everything, unless a run that is shown is selected."""
    if not (sheet.selected & sheet.shown).any():
        yield "runs", shown
    else:
        yield "others", shown & ~sheet.selected
        yield "selected", shown & sheet.selected


def _add_points(
    axes: Any, series: Series, layer: str, chosen: Any, coloring: Coloring | None
) -> None:
    count = len(chosen)
    size = float(numpy.clip(1600 / count, 10, 40))
    look = {**POINTS[layer], "s": 2 * size if layer == "selected" else size, "gid": layer}
    look |= _paint(series, layer, chosen, coloring, "facecolors", "c")
    if count > 1000 and layer != "selected":
        look["linewidths"] = 0
    alpha = 0.65 if count > 400 and layer == "runs" else 1.0
    x, y = series.x.numbers[chosen], series.y.numbers[chosen]
    axes.scatter(x, y, marker=series.marker, alpha=alpha, rasterized=count > 5000, **look)


def _paint(
    series: Series, layer: str, chosen: Any, coloring: Coloring | None, colors: str, numbers: str
) -> dict[str, Any]:
    """What a layer is colored by: keywords, of which these two take colors, and numbers."""
    if layer == "others":
        return {colors: _pale(coloring.of(chosen) if coloring else series.color)}
    if coloring:
        scale = coloring.scale
        return {numbers: coloring.numbers[chosen], "cmap": scale.map, "norm": scale.norm}
    return {colors: series.color}


def _pale(colors: Any) -> Any:
    """As if faded on white paper, but opaque: points that coincide stay pale."""
    opaque = to_rgba_array(colors)
    opaque[:, :3] = 1 - FADED * (1 - opaque[:, :3])
    return opaque


def _add_lines(
    axes: Any, series: Series, layer: str, chosen: Any, coloring: Coloring | None
) -> None:
    places = numpy.flatnonzero(chosen)
    lines = [numpy.column_stack([series.x.traces[k], series.y.traces[k]]) for k in places]
    look = dict(LINES[layer])
    if len(chosen) >= 100:
        look["linewidths"] *= 0.55
    look |= _paint(series, layer, chosen, coloring, "colors", "array")
    alpha = 0.5 if len(chosen) > 40 and layer == "runs" else 1.0
    axes.add_collection(LineCollection(lines, gid=layer, alpha=alpha, **look))


def _handle(series: Series, coloring: Coloring | None) -> Line2D:
    """Of a series in the legend; its color says nothing where colors are values."""
    color = "#777777" if coloring else series.color
    look: Any = {"marker": series.marker, "linestyle": ""} if series.y.traces is None else {}
    return Line2D([], [], color=color, label=series.label, **look)
