"""Histograms: how often the values of axis X occur, axis Y shows the counts."""

from __future__ import annotations

from collections.abc import Iterator, Sequence
from typing import Any

import numpy

from kxsim.figures._axes import series_colors, set_up
from kxsim.figures._data import Axis, Values

MOST_BINS = 60


def histogram(sheet: Any, shared: Sequence[Any]) -> None:
    """Counts of runs, and of traces of all values; each text has a bar of its own."""
    x, y = Axis(sheet.properties, "X"), Axis(sheet.properties, "Y")
    values = sheet.values(x, shared)
    parts = [sheet.show(each.present) for each in values]
    if not sheet.shown.any():
        return
    axes = sheet.picture.add_subplot()
    pairs = list(zip(values, parts, strict=True))
    edges = _edges(values, numpy.concatenate([_pooled(*pair) for pair in pairs]))
    centers = (edges[:-1] + edges[1:]) / 2
    widths = numpy.diff(edges) * (0.8 if values[0].categories else 1)
    for (each, shown), color in zip(pairs, series_colors(len(pairs)), strict=True):
        for layer, chosen, alpha in _layers(sheet, shown, len(values)):
            counts, _ = numpy.histogram(_pooled(each, chosen), edges)
            look = {"color": color, "alpha": alpha, "edgecolor": "white", "linewidth": 0.6}
            label = each.label if layer == "runs" else None
            axes.bar(centers, counts, widths, label=label, gid=layer, **look)
    set_up(axes, x, values)
    has_traces = any(each.traces is not None for each in values)
    set_up(axes, y, [], "values" if has_traces else "runs")
    axes.yaxis.get_major_locator().set_params(integer=True)
    if len(values) > 1:
        axes.legend()


def _layers(sheet: Any, shown: Any, series: int) -> Iterator[tuple[str, Any, float]]:
    """All runs, and in front of them the selected; how opaque they are."""
    opaque = 0.9 if series == 1 else 0.6
    is_selection = bool((sheet.selected & sheet.shown).any())
    yield "runs", shown, 0.3 if is_selection else opaque
    if is_selection:
        yield "selected", shown & sheet.selected, opaque


def _pooled(values: Values, chosen: Any) -> Any:
    """The finite values of the chosen runs, all in one."""
    if values.traces is None:
        return values.numbers[chosen]
    traces = [values.traces[k] for k in numpy.flatnonzero(chosen)]
    pooled = numpy.concatenate([numpy.empty(0), *traces])
    return pooled[numpy.isfinite(pooled)]


def _edges(values: Sequence[Values], pooled: Any) -> Any:
    """Of the bins: twice the cube root of the count (Rice's rule), or one for each text.

    Integers that are close to each other have one each, too. Values that are equal, or too close
    for numbers to lie between them, have one in all.
    """
    if values[0].categories:
        return numpy.arange(len(values[0].categories) + 1) - 0.5
    count = min(int(numpy.ceil(2 * len(pooled) ** (1 / 3))), MOST_BINS)
    low, high = pooled.min(), pooled.max()
    resolution = 2 * numpy.spacing(numpy.abs(pooled).max())
    is_integer = bool((pooled == numpy.round(pooled)).all()) and resolution < 0.5
    if is_integer and high - low < max(2 * count, 12):
        return numpy.arange(low, high + 2) - 0.5
    if high - low < count * resolution:
        margin = max(0.05 * abs(high), resolution)
        return numpy.array([low - margin, high + margin])
    return numpy.histogram_bin_edges(pooled, count)
