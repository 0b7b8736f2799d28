"""What the axes of all kinds of figure have: labels, limits, grids, names of texts, colors."""

from __future__ import annotations

import re
import textwrap
from collections.abc import Sequence
from typing import Any, NamedTuple

import matplotlib
import numpy
from matplotlib.cm import ScalarMappable
from matplotlib.colors import Normalize
from matplotlib.mathtext import MathTextParser
from matplotlib.text import Text

from kxsim.figures._data import Axis, Values

# Told apart by eyes that are blind to some colors, in this order (Okabe and Ito).
PALETTE = ("#0072B2", "#D55E00", "#009E73", "#CC79A7", "#E69F00", "#56B4E9", "#333333")
# Of texts along an axis: how many have their name beside them, and in how many letters.
MOST_NAMES, LONGEST_NAME = 20, 24
# A title: letters in a line, and lines.
TITLE_WIDTH, TITLE_LINES = 44, 3
# So few different numbers are named each beside a color bar.
MOST_LEVELS = 6
# Text with formulas: after the first "$" and before the second no space, and no digit behind it.
FORMULAS = re.compile(r"(?:[^$]|\$(?=\S)[^$]*(?<=\S)\$(?!\d))*")


def series_colors(count: int) -> list[Any]:
    """A color for each series, all different."""
    if count <= len(PALETTE):
        return list(PALETTE[:count])
    return [matplotlib.colormaps["turbo"](k / (count - 1)) for k in range(count)]


def wrapped(title: str) -> str:
    """A title in lines that fit above the plot."""
    fit: Any = {"max_lines": TITLE_LINES, "placeholder": " ..."}
    return "\n".join(textwrap.fill(line, TITLE_WIDTH, **fit) for line in title.splitlines())


def set_formulas(picture: Any) -> None:
    """Texts with formulas between "$" are drawn so, where they can be; in others it is a dollar."""
    for text in picture.findobj(Text):
        text.set_parse_math(_has_formulas(text.get_text()))


def _has_formulas(text: str) -> bool:
    if "$" not in text or not FORMULAS.fullmatch(text):
        return False
    try:
        MathTextParser("path").parse(text)
    except ValueError:
        return False
    return True


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
        _name_ticks(getattr(axes, f"{letter}axis"), categories)
        limits = limits or (-0.5, len(categories) - 0.5)
    if limits:
        getattr(axes, f"set_{letter}lim")(*limits)
    if hasattr(axes, "zaxis"):
        getattr(axes, f"{letter}axis").gridlines.set_visible(axis.grid)
    else:
        getattr(axes, f"{letter}axis").grid(axis.grid)


def _name_ticks(axis: Any, categories: Sequence[str]) -> None:
    """Texts beside their places; of many only some, slanted where they are long."""
    step = -(-len(categories) // MOST_NAMES)
    names = [
        textwrap.shorten(each, LONGEST_NAME, placeholder="...") or each[:LONGEST_NAME]
        for each in categories[::step]
    ]
    axis.set_ticks(range(0, len(categories), step), labels=names)
    if axis.axis_name == "x" and axis.axes.name != "3d" and sum(map(len, names)) > 2 * LONGEST_NAME:
        axis.set_tick_params(rotation=30, labelrotation_mode="xtick")


class Scale(NamedTuple):
    """A color map and what its ends stand for."""

    map: Any
    norm: Normalize


def color_scale(sheet: Any, axis: Axis, values: Values, shown: Any) -> Scale:
    """Over all that is shown, or from limit to limit; texts have a color each."""
    if values.categories:
        count = len(values.categories)
        return Scale(sheet.colors.resampled(count), Normalize(-0.5, count - 0.5))
    numbers = values.numbers[shown]
    return Scale(sheet.colors, Normalize(*(axis.limits or (numbers.min(), numbers.max()))))


def add_color_bar(sheet: Any, axes: Any, axis: Axis, values: Values, scale: Scale) -> None:
    mappable = ScalarMappable(scale.norm, scale.map)
    bar = sheet.picture.colorbar(mappable, ax=axes, pad=0.03)
    bar.set_label(axis.label or values.label)
    bar.outline.set_visible(False)
    if values.categories:
        _name_ticks(bar.ax.yaxis, values.categories)
        return
    levels = _levels(values, scale.norm)
    if len(levels):
        bar.set_ticks(levels, labels=[f"{each:.6g}" for each in levels])
    elif bar.formatter.format_ticks(bar.get_ticks()) and bar.formatter.get_offset():
        sheet.title_pad = 24.0


def _levels(values: Values, norm: Any) -> Any:
    """The numbers that occur, if they are few and stand apart."""
    numbers = values.numbers if values.traces is None else numpy.empty(0)
    levels = numpy.unique(numbers[(numbers >= norm.vmin) & (numbers <= norm.vmax)])
    gap = 0.04 * (norm.vmax - norm.vmin)
    is_apart = 2 <= len(levels) <= MOST_LEVELS and numpy.diff(levels).min() > gap
    return levels if is_apart and numpy.abs(levels).max() < 1e6 else levels[:0]
