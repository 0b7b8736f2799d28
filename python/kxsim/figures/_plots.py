"""Scatter plots, traces and histograms."""

from __future__ import annotations

import itertools
from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy
from matplotlib.cm import ScalarMappable
from matplotlib.collections import LineCollection
from matplotlib.colors import Normalize, to_rgba_array

from kxsim.figures._data import Axis, Values
from kxsim.figures._errors import FigureError

# Told apart by eyes that are blind to some colors, in this order (Okabe and Ito).
PALETTE = ("#0072B2", "#D55E00", "#009E73", "#CC79A7", "#E69F00", "#56B4E9", "#333333")
MARKERS = "osD^vPX"
MOST_BINS = 60


class Series(NamedTuple):
    x: Values
    y: Values
    label: str
    color: str
    marker: str


# Axes --------------------------------------------------------------------------------------------


def set_up(axes: Any, axis: Axis, values: Sequence[Values], label: str | None = None) -> None:
    """Label, limits, grid and categories of one axis."""
    letter = axis.letter.lower()
    if label is None:
        labels = {each.label for each in values}
        label = labels.pop() if len(labels) == 1 else ""
    getattr(axes, f"set_{letter}label")(axis.label or label)
    limits = axis.limits
    categories = values[0].categories if values else None
    if not categories and letter == "x":
        axes.xaxis.get_major_locator().set_params(nbins=7)
    if categories:
        getattr(axes, f"set_{letter}ticks")(range(len(categories)), categories)
        limits = limits or (-0.5, len(categories) - 0.5)
    if limits:
        getattr(axes, f"set_{letter}lim")(*limits)
    if hasattr(axes, "zaxis"):
        getattr(axes, f"{letter}axis").gridlines.set_visible(axis.grid)
    else:
        getattr(axes, f"{letter}axis").grid(axis.grid)


def color_scale(sheet: Any, axis: Axis, values: Values, shown: Any) -> tuple[Any, Normalize]:
    """The color map and what its ends stand for; categories have one color each."""
    if values.categories:
        count = len(values.categories)
        return sheet.colors.resampled(count), Normalize(-0.5, count - 0.5)
    numbers = values.numbers[shown]
    low, high = axis.limits or (numbers.min(), numbers.max())
    return sheet.colors, Normalize(low, high)


def add_color_bar(sheet: Any, axes: Any, axis: Axis, values: Values, scale: Any) -> None:
    bar = sheet.picture.colorbar(ScalarMappable(scale[1], scale[0]), ax=axes, pad=0.03)
    bar.set_label(axis.label or values.label)
    bar.outline.set_visible(False)
    if values.categories:
        bar.set_ticks(range(len(values.categories)), labels=values.categories)


def pairs(x: Axis, y: Axis, xs: list[Values], ys: list[Values]) -> list[Series]:
    """One source of an axis goes with each of the other's, or both go pairwise."""
    if len(xs) != len(ys) and 1 not in (len(xs), len(ys)):
        raise FigureError(
            "SourcesDoNotMatch", axis=x.letter, count=len(xs), other=y.letter, others=len(ys)
        )
    count = max(len(xs), len(ys))
    names = xs if len(ys) < len(xs) else ys
    looks = zip(itertools.cycle(PALETTE), itertools.cycle(MARKERS), strict=False)
    rows = zip(xs * (count // len(xs)), ys * (count // len(ys)), names, looks, strict=False)
    return [Series(a, b, named.label, *look) for a, b, named, look in rows]


# Scatter plots -----------------------------------------------------------------------------------


def scatter(sheet: Any, shared: Sequence[Any]) -> None:
    """Points, or lines where both axes have traces; colored by axis C, by series otherwise."""
    x, y, c = (Axis(sheet.properties, letter) for letter in "XYC")
    colored = sheet.values(c, shared)
    if len(colored) > 1:
        raise FigureError("TooManySources", axis="C", count=len(colored))
    ys = sheet.values(y, shared)
    xs = _sample_numbers(ys) if _lacks_x(x, ys) else sheet.values(x, shared)
    series = pairs(x, y, xs, ys)
    parts = [sheet.show(_checked(one, colored)) for one in series]
    axes = sheet.picture.add_subplot()
    scale = None
    if colored and sheet.shown.any():
        scale = color_scale(sheet, c, colored[0], sheet.shown)
    for one, shown in zip(series, parts, strict=True):
        add = _add_points if one.y.traces is None else _add_lines
        for chosen, look in layers(sheet, shown):
            add(axes, one, chosen, look, colored[0].numbers if scale else None, scale)
    axes.autoscale_view()
    set_up(axes, x, xs)
    set_up(axes, y, ys)
    if len(series) > 1:
        _add_legend(axes, series, scale)
    if scale and sheet.properties.Colorbar:
        add_color_bar(sheet, axes, c, colored[0], scale)


def _lacks_x(x: Axis, ys: Sequence[Values]) -> bool:
    """Traces need no data along X."""
    are_traces = all(each.traces is not None for each in ys)
    return are_traces and not x.sources and not x.id and not x.is_final


def _sample_numbers(ys: Sequence[Values]) -> list[Values]:
    """1, 2, ... beside each trace."""
    numbers = [[numpy.arange(1.0, len(trace) + 1) for trace in y.traces] for y in ys]
    return [Values("sample", None, traces=each) for each in numbers]


def _checked(series: Series, colored: Sequence[Values]) -> Any:
    """Which runs have all values; FigureError when traces and single values meet."""
    x, y = series.x, series.y
    if (x.traces is None) != (y.traces is None):
        axis, other = ("X", "Y") if x.traces is not None else ("Y", "X")
        raise FigureError("TraceNeedsTrace", axis=axis, other=other)
    present = x.present & y.present
    for values in colored:
        if values.traces is not None:
            raise FigureError("TraceNeedsTrace", axis="C", other="Y")
        present &= values.present
    if x.traces is not None:
        for k in numpy.flatnonzero(present):
            counts = len(x.traces[k]), len(y.traces[k])
            if counts[0] != counts[1]:
                of = {"run": k + 1, "axis": "X", "count": counts[0]}
                raise FigureError("TraceLengthsDiffer", **of, other="Y", others=counts[1])
    return present


def layers(sheet: Any, shown: Any) -> list[tuple[Any, dict[str, Any]]]:
    """What to draw and how: all alike, or the selected over the faded others."""
    if not (sheet.selected & sheet.shown).any():
        return [(shown, {"alpha": None, "zorder": 3, "gid": "runs"})]
    return [
        (shown & ~sheet.selected, {"alpha": 0.3, "zorder": 2, "gid": "others"}),
        (shown & sheet.selected, {"alpha": 1.0, "zorder": 4, "gid": "selected"}),
    ]


def _add_points(
    axes: Any, series: Series, chosen: Any, look: dict, colors: Any, scale: Any
) -> None:
    size = numpy.clip(1600 / max(len(chosen), 1), 10, 40)
    how = {**look, "s": size, "marker": series.marker, "edgecolors": "white", "linewidths": 0.3}
    if look["gid"] == "selected":
        how |= {"s": 2 * size, "edgecolors": "black", "linewidths": 1.2}
    elif look["gid"] == "runs":
        how["alpha"] = 0.9 if len(chosen) < 400 else 0.65
    if scale is None:
        how["facecolors"] = series.color
    elif look["gid"] != "others":
        how |= {"c": colors[chosen], "cmap": scale[0], "norm": scale[1]}
    else:
        how["facecolors"] = scale[0](scale[1](colors[chosen]))
    if look["gid"] == "others":
        how |= {"facecolors": _pale(how["facecolors"], look["alpha"]), "alpha": 1.0}
    axes.scatter(series.x.numbers[chosen], series.y.numbers[chosen], **how)


def _pale(colors: Any, alpha: float) -> Any:
    """As on white paper, but hiding what is behind: points that coincide stay pale."""
    opaque = to_rgba_array(colors)
    opaque[:, :3] = 1 - alpha * (1 - opaque[:, :3])
    return opaque


def _add_lines(axes: Any, series: Series, chosen: Any, look: dict, colors: Any, scale: Any) -> None:
    places = numpy.flatnonzero(chosen)
    lines = [numpy.column_stack([series.x.traces[k], series.y.traces[k]]) for k in places]
    is_crowded = len(chosen) >= 100
    how = {**look, "linewidths": 0.7 if is_crowded else 1.3}
    if look["gid"] == "selected":
        how["linewidths"] = 1.2 if is_crowded else 2.2
    elif look["gid"] == "runs":
        how["alpha"] = 0.9 if len(chosen) < 40 else 0.5
    if scale is None:
        how["colors"] = series.color
    elif look["gid"] != "others":
        how |= {"array": colors[chosen], "cmap": scale[0], "norm": scale[1]}
    else:
        how["colors"] = scale[0](scale[1](colors[chosen]))
    if look["gid"] == "others":
        how |= {"colors": _pale(how["colors"], look["alpha"]), "alpha": 1.0}
    axes.add_collection(LineCollection(lines, **how))


def _add_legend(axes: Any, series: Sequence[Series], scale: Any) -> None:
    from matplotlib.lines import Line2D

    def handle(one: Series) -> Line2D:
        color = "#777777" if scale else one.color
        style = {"marker": one.marker, "linestyle": ""} if one.y.traces is None else {}
        return Line2D([], [], color=color, label=one.label, **style)

    axes.legend(handles=[handle(one) for one in series])


# Histograms --------------------------------------------------------------------------------------


def histogram(sheet: Any, shared: Sequence[Any]) -> None:
    """How often the values of axis X occur; of traces all values, of texts each."""
    x, y = Axis(sheet.properties, "X"), Axis(sheet.properties, "Y")
    values = sheet.values(x, shared)
    parts = [sheet.show(each.present) for each in values]
    if not sheet.shown.any():
        return
    axes = sheet.picture.add_subplot()
    edges = _edges([_pooled(each, part) for each, part in zip(values, parts, strict=True)], values)
    for k, (each, part) in enumerate(zip(values, parts, strict=True)):
        how = {"color": PALETTE[k % len(PALETTE)], "edgecolor": "white", "linewidth": 0.6}
        for chosen, look in _bar_layers(sheet, part, len(values) > 1):
            counts, _ = numpy.histogram(_pooled(each, chosen), edges)
            label = each.label if look["gid"] != "selected" else None
            widths = numpy.diff(edges) * (0.8 if each.categories else 1)
            centers = (edges[:-1] + edges[1:]) / 2
            axes.bar(centers, counts, widths, label=label, **how, **look)
    set_up(axes, x, values)
    traced = any(each.traces is not None for each in values)
    set_up(axes, y, [], "values" if traced else "runs")
    axes.yaxis.get_major_locator().set_params(integer=True)
    if len(values) > 1:
        axes.legend()


def _bar_layers(sheet: Any, shown: Any, is_one_of_many: bool) -> list[tuple[Any, dict[str, Any]]]:
    """All runs, and in front of them the selected."""
    usual = 0.6 if is_one_of_many else 0.9
    if not (sheet.selected & sheet.shown).any():
        return [(shown, {"alpha": usual, "gid": "runs"})]
    raised = (shown & sheet.selected, {"alpha": usual, "zorder": 3, "gid": "selected"})
    return [(shown, {"alpha": 0.3, "gid": "runs"}), raised]


def _pooled(values: Values, chosen: Any) -> Any:
    """The finite values of the chosen runs, all in one."""
    if values.traces is None:
        return values.numbers[chosen]
    traces = [values.traces[k] for k in numpy.flatnonzero(chosen)]
    pooled = numpy.concatenate(traces or [numpy.empty(0)])
    return pooled[numpy.isfinite(pooled)]


def _edges(pooled: Sequence[Any], values: Sequence[Values]) -> Any:
    """Of the bins, the same for all series: twice the cube root of the count (Rice's rule), or one
    for each text."""
    if values[0].categories:
        return numpy.arange(len(values[0].categories) + 1) - 0.5
    everything = numpy.concatenate(pooled)
    count = int(numpy.ceil(2 * len(everything) ** (1 / 3)))
    return numpy.histogram_bin_edges(everything, min(count, MOST_BINS))
