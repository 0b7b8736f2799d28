"""What an axis plots: columns of the results, found by its data sources and reduced."""

from __future__ import annotations

from collections.abc import Callable, Iterable, Mapping, Sequence
from numbers import Real
from typing import Any, NamedTuple

import numpy

from kxsim import design
from kxsim.figures._errors import FigureError, nearest
from kxsim.figures._runs import Runs

# What a trace of a run becomes.
REDUCTIONS: dict[str, Callable[[Any], Any]] = {
    "End": lambda trace: trace[-1],
    "Min": numpy.min,
    "Max": numpy.max,
    "Mean": numpy.mean,
}

# The largest that an axis can show: the distance of two of them is a number still.
LARGEST = 1e300


class Data(NamedTuple):
    """What an axis plots: names of columns with their labels, where they are, how reduced."""

    labels: Mapping[str, str]
    reduce: str
    type: str


def data(
    names: str | Iterable[str] | Mapping[str, str],
    reduce: str = "End",
    label: str = "",
    type: str = "Default",
) -> Data:
    """What an axis plots, in full: `data("response", reduce="Max", label="peak (V)")`.

    Several names are several series, a mapping gives each its label. `reduce` says what a run's row
    of numbers becomes ("End", "Min", "Max", "Mean"); with "Trace" it stays. `type` says where the
    names are, "Parameter" or "Output"; by default wherever they are. FigureError for an unknown
    one.
    """
    if isinstance(names, str):
        names = {names: label}
    labels = _labels(names, label)
    reduce = literal(design.DataProcessingType, reduce, "reduction")
    return Data(dict(labels), reduce, literal(design.FigureDataSourceType, type, "type of source"))


def _labels(names: Any, label: str) -> Mapping[str, str]:
    """A label for each name."""
    kind = getattr(getattr(names, "dtype", None), "kind", "U")
    if not isinstance(names, Iterable) or kind in "biufc":
        given = type(names).__name__
        raise TypeError(f"an axis plots columns of the results by their names, not a {given}")
    return names if isinstance(names, Mapping) else dict.fromkeys(names, label)


def literal(enumeration: Any, given: Any, kind: str) -> str:
    """The name of a member that is given as itself or by its name; FigureError for no member."""
    name = getattr(given, "name", given)
    known = enumeration.__members__
    if name not in known:
        raise FigureError("UnknownLiteral", kind=kind, name=name, nearest=nearest(name, known))
    return str(name)


class Values(NamedTuple):
    """One data source along one axis: a number for each run, or a trace.

    `numbers` has NaN in runs without, or beyond what an axis can show; of texts it has their places
    in `categories`. `traces` has an empty array in runs without; it is None unless traces are
    plotted whole.
    """

    label: str
    numbers: Any
    categories: Sequence[str] | None = None
    traces: Any = None

    @property
    def present(self) -> Any:
        """Whether each run has something to show."""
        if self.traces is None:
            return numpy.isfinite(self.numbers)
        return numpy.array([numpy.isfinite(trace).any() for trace in self.traces], dtype=bool)


# Axes --------------------------------------------------------------------------------------------


class Axis:
    """One axis of a properties object: its sources, reduction, label, limits and grid."""

    def __init__(self, properties: Any, letter: str) -> None:
        def read(suffix: str, missing: Any = None) -> Any:
            return getattr(properties, letter + suffix, missing)

        self.letter = letter
        self.sources = [(each.type, each.value, each.label) for each in read("DataSources")]
        spec = read("Data")
        self.id = spec.Id if spec else ""
        self.reduce = (spec.ProcessingType if spec else None) or design.DataProcessingType.End
        self.label, self.grid = read("Label"), read("Grid", False)
        self.is_final = properties.DataSourcesFinalized
        self._limits = None if read("LimMode") else (read("Min"), read("Max"))

    @property
    def limits(self) -> tuple[float, float] | None:
        """None when they follow the data."""
        if self._limits is not None:
            low, high = self._limits
            if not (numpy.isfinite(self._limits).all() and low < high):
                raise FigureError("InvalidLimits", axis=self.letter, minimum=low, maximum=high)
        return self._limits


def values_of(axis: Axis, runs: Runs, kind: str, shared: Iterable[Any] = ()) -> list[Values]:
    """What an axis plots, one `Values` for each data source; none for a color axis without.

    `shared` are the data sources of the view, among which the axis' Id may also be found.
    """
    reduce = axis.reduce.name
    values = [
        _reduced(name, label or _label(name, cells, reduce), cells, reduce)
        for type, name, label in _chosen(axis, runs, kind, shared)
        for cells in [runs.cells(name, type)]
    ]
    return _with_shared_categories(axis, values)


def _with_shared_categories(axis: Axis, values: list[Values]) -> list[Values]:
    """Texts of several sources stand in one row; FigureError for numbers among them."""
    texts = [each.categories for each in values if each.categories is not None]
    if len(values) < 2 or not texts:
        return values
    if len(texts) < len(values):
        raise FigureError("TextsAndNumbers", axis=axis.letter)
    together = list(dict.fromkeys(text for each in texts for text in each))
    place_of = {text: place for place, text in enumerate(together)}

    def moved(each: Values, categories: Sequence[str]) -> Values:
        places = numpy.array([*(place_of[text] for text in categories), numpy.nan])
        codes = numpy.where(numpy.isnan(each.numbers), -1, each.numbers).astype(int)
        return Values(each.label, places[codes], together)

    return [moved(each, own) for each, own in zip(values, texts, strict=True)]


def _chosen(
    axis: Axis, runs: Runs, kind: str, shared: Iterable[Any]
) -> Iterable[tuple[str, str, str]]:
    """Type, name and label of each source: the one that Id names, or all of the axis."""
    sources = axis.sources
    if axis.id:
        known = [*sources, *((each.type, each.value, each.label) for each in shared)]
        sources = [each for each in known if axis.id in each[1:]][:1]
        if not sources and axis.id in runs.names():
            sources = [(None, axis.id, "")]
        if not sources:
            names = [name for each in known for name in each[1:]]
            near = nearest(axis.id, [*names, *runs.names()])
            raise FigureError("UnknownDataSource", axis=axis.letter, name=axis.id, nearest=near)
    elif not sources and axis.letter != "C" and not axis.is_final:
        sources = [(None, "", "")]
    for type, name, label in sources:
        type = type.name if type else "Default"
        found = runs.default(kind, axis.letter) if (type, name) == ("Default", "") else (type, name)
        if found is None:
            raise FigureError("NoData", axis=axis.letter)
        yield (*found, label)
    if not sources and axis.letter != "C":
        raise FigureError("NoData", axis=axis.letter)


def _label(name: str, cells: Sequence[Any], reduce: str) -> str:
    is_reduced = reduce in ("Min", "Max", "Mean") and any(map(_is_row, cells))
    return f"{name} ({reduce.lower()})" if is_reduced else name


def _is_row(cell: Any) -> bool:
    return isinstance(cell, list | tuple) or getattr(cell, "ndim", 0) > 0


def _is_text(cell: Any) -> bool:
    return isinstance(cell, str | bool | numpy.bool_)


def numbers_in(cells: Sequence[Any]) -> Any:
    """An array with NaN where there is none; None unless all others are single numbers."""
    is_number = isinstance(cells, numpy.ndarray) or all(
        cell is None or (isinstance(cell, Real) and not _is_text(cell)) for cell in cells
    )
    return numpy.array(cells, dtype=float) if is_number else None


def _reduced(name: str, label: str, cells: Sequence[Any], reduce: str) -> Values:
    numbers = numbers_in(cells)
    if numbers is not None:
        return Values(label, _showable(numbers))
    if any(map(_is_text, cells)):
        return _categories(name, label, cells)
    rows = [_row(name, run, cell) for run, cell in enumerate(cells, 1)]
    if reduce == "Trace" and any(map(_is_row, cells)):
        return Values(label, None, traces=[*map(_showable, rows)])
    reduction = REDUCTIONS.get(reduce, REDUCTIONS["End"])
    numbers = numpy.array([reduction(row) if row.size else numpy.nan for row in rows])
    return Values(label, _showable(numbers))


def _showable(numbers: Any) -> Any:
    return numpy.where(numpy.abs(numbers) <= LARGEST, numbers, numpy.nan)


def _row(name: str, run: int, cell: Any) -> Any:
    """A run's numbers; a single one is a row of one."""
    if cell is None:
        return numpy.empty(0)
    if isinstance(cell, Real):
        return numpy.array([cell], dtype=float)
    try:
        row = numpy.asarray(cell)
    except ValueError:
        row = numpy.empty((0, 0))
    if row.dtype.kind not in "biuf" or row.size != max(row.shape, default=1):
        is_array = row.ndim > 1 and row.size
        kind = f"an array of {row.shape}" if is_array else f"a {type(cell).__name__}"
        raise FigureError("NotPlottable", name=name, run=run, kind=kind)
    return row.ravel().astype(float)


def _last_in_words(row: Any) -> str | None:
    """In so many digits that different numbers stay apart; None without one."""
    return f"{row[-1]:.15g}" if row.size and not numpy.isnan(row[-1]) else None


def _categories(name: str, label: str, cells: Sequence[Any]) -> Values:
    """Texts stand side by side, in the order in which they first occur; numbers among them too."""
    places: dict[str, int] = {}
    numbers = numpy.full(len(cells), numpy.nan)
    for k, cell in enumerate(cells):
        text = str(cell) if _is_text(cell) else _last_in_words(_row(name, k + 1, cell))
        if text is not None:
            numbers[k] = places.setdefault(text, len(places))
    return Values(label, numbers, categories=list(places))
