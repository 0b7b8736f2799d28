"""Surfaces: over a grid of points where there is one, over triangles otherwise."""

from __future__ import annotations

import itertools
from collections.abc import Sequence
from typing import Any, NamedTuple

import numpy
from matplotlib.ticker import AutoLocator, MaxNLocator
from matplotlib.tri import Triangulation

from kxsim.figures._axes import add_color_bar, color_scale, set_up
from kxsim.figures._data import Axis, Values
from kxsim.figures._errors import FigureError

# Points that have room for lines between them.
MOST_WITH_LINES = 600
# The share of a grid's points that makes it one, though runs may have failed.
LEAST_OF_GRID = 0.75


def surface(sheet: Any, shared: Sequence[Any]) -> None:
    """Axis Z over X and Y, colored by Z. Points that several runs share show their mean."""
    x, y, z = (Axis(sheet.properties, letter) for letter in "XYZ")
    columns = [_only(axis, sheet.values(axis, shared)) for axis in (x, y, z)]
    points, runs = _points(sheet, columns)
    merged, most = _merged(points)
    if most > 1:
        sheet.notes.append(f"mean of up to {most:,} values at a point")
    axes = sheet.picture.add_subplot(projection="3d")
    scale = color_scale(sheet, z, Values("", merged[2]), slice(None))
    chosen = sheet.selected[runs]
    is_selection = bool(chosen.any())
    look = {"cmap": scale.map, "norm": scale.norm, "alpha": 0.45 if is_selection else 1.0}
    is_whole = _add_surface(axes, merged, _levels(columns, merged), look | {"gid": "surface"})
    if not is_whole:
        sheet.notes.append("drawn across missing points")
    if is_selection:
        has_traces = any(each.traces is not None for each in columns)
        _add_selected(axes, points[:, chosen], runs[chosen], has_traces)
    for axis, values in zip((x, y, z), columns, strict=True):
        set_up(axes, axis, [values])
    _dress(axes)
    if sheet.properties.Colorbar:
        add_color_bar(sheet, axes, z, columns[2], scale)


def _add_selected(axes: Any, points: Any, runs: Any, has_traces: bool) -> None:
    """Before the surface: a line for each trace, a dot for each single value."""
    axes.computed_zorder = False
    common = {"zorder": 10, "gid": "selected", "axlim_clip": True}
    if has_traces:
        for part in numpy.split(points, numpy.flatnonzero(numpy.diff(runs)) + 1, axis=1):
            axes.plot(*part, color="black", linewidth=1.6, **common)
    else:
        dots = {"c": "black", "edgecolors": "white", "s": 45, "depthshade": False}
        axes.scatter(*points, **dots, **common)


def _only(axis: Axis, values: list[Values]) -> Values:
    if len(values) > 1:
        raise FigureError("TooManySources", axis=axis.letter, count=len(values))
    return values[0]


def _points(sheet: Any, columns: Sequence[Values]) -> tuple[Any, Any]:
    """x, y and z of each point, and which run each is of. Single values go along with traces."""
    present = sheet.show(numpy.logical_and.reduce([each.present for each in columns]))
    places = numpy.flatnonzero(present)
    if all(each.traces is None for each in columns):
        points, runs = numpy.array([each.numbers[places] for each in columns]), places
    else:
        parts = [_points_of(k, columns) for k in places.tolist()]
        points = numpy.concatenate([numpy.empty((3, 0)), *parts], axis=1)
        runs = numpy.repeat(places, [part.shape[1] for part in parts])
    finite = numpy.isfinite(points).all(axis=0)
    if not finite.any():
        raise FigureError("NothingToShow")
    return points[:, finite], runs[finite]


def _points_of(k: int, columns: Sequence[Values]) -> Any:
    """Of one run, three rows."""
    rows = [each.numbers[k] if each.traces is None else each.traces[k] for each in columns]
    lengths = {letter: numpy.size(row) for letter, row in zip("XYZ", rows, strict=True)}
    for (axis, count), (other, others) in itertools.combinations(lengths.items(), 2):
        if count != others and 1 not in (count, others):
            fields = {"axis": axis, "count": count, "other": other, "others": others}
            raise FigureError("TraceLengthsDiffer", fields, run=k + 1)
    return numpy.array(numpy.broadcast_arrays(*rows)).reshape(3, -1)


def _merged(points: Any) -> tuple[Any, int]:
    """Each place once with the mean of its heights, ordered by x, then y; and the most of one."""
    places, which, counts = numpy.unique(
        points[:2].T, axis=0, return_inverse=True, return_counts=True
    )
    heights = numpy.bincount(which.ravel(), points[2]) / counts
    return numpy.vstack([places.T, heights]), int(counts.max(initial=0))


class Levels(NamedTuple):
    """Where the points of a surface are along X and Y, and the share of the grid that they are."""

    x: Any
    y: Any
    share: float


def _levels(columns: Sequence[Values], points: Any) -> Levels:
    """Also of runs that have no height, so that no surface spans where they are."""
    if all(each.traces is None for each in columns[:2]):
        places = numpy.array([each.numbers for each in columns[:2]])
    else:
        places = points[:2]
    places = numpy.unique(places[:, numpy.isfinite(places).all(axis=0)], axis=1)
    x, y = (numpy.unique(each) for each in places)
    return Levels(x, y, places.shape[1] / (len(x) * len(y)))


def _add_surface(axes: Any, points: Any, levels: Levels, look: dict[str, Any]) -> bool:
    """On a grid where most of its points are there, with holes for those without a height.

    Over triangles otherwise. Answers whether nothing spans missing points of a grid.
    """
    x, y, z = points
    has_lines = len(z) <= MOST_WITH_LINES
    lines = {"edgecolor": "white", "linewidth": 0.25} if has_lines else {"antialiased": False}
    look = look | lines
    scaled = _scaled(points[:2])
    if len(z) < 3 or numpy.linalg.matrix_rank(scaled, tol=1e-9) < 2:
        raise FigureError("NotASurface", count=len(z))
    is_grid = levels.share >= LEAST_OF_GRID
    heights = numpy.full((len(levels.y), len(levels.x)) if is_grid else (0, 0), numpy.nan)
    if is_grid:
        heights[numpy.searchsorted(levels.y, y), numpy.searchsorted(levels.x, x)] = z
    if _has_faces(heights):
        grid = (*numpy.meshgrid(levels.x, levels.y), heights)
        axes.plot_surface(*grid, rcount=200, ccount=200, **look, axlim_clip=True)
        return True
    triangles = Triangulation(*scaled).triangles
    axes.plot_trisurf(x, y, z, triangles=triangles, **look, axlim_clip=True)
    return not is_grid


def _has_faces(heights: Any) -> bool:
    """Whether three of four neighbours are there anywhere."""
    there = numpy.isfinite(heights).astype(int)
    corners = there[1:, 1:] + there[1:, :-1] + there[:-1, 1:] + there[:-1, :-1]
    return bool((corners >= 3).any())


def _scaled(places: Any) -> Any:
    """From -1 to 1 along each axis, about as they are seen: neighbours do not depend on units."""
    spread = places - places.mean(axis=1, keepdims=True)
    return spread / numpy.maximum(numpy.abs(spread).max(axis=1, keepdims=True), 1e-300)


def _dress(axes: Any) -> None:
    axes.view_init(elev=24, azim=-128)
    for axis in (axes.xaxis, axes.yaxis, axes.zaxis):
        axis.set_pane_color((0.97, 0.97, 0.97, 1.0))
        axis.line.set_color("#999999")
        has_numbers = isinstance(axis.get_major_locator(), AutoLocator)
        axis.labelpad = 6 if has_numbers else 16
        if has_numbers:
            axis.set_major_locator(MaxNLocator(5))
