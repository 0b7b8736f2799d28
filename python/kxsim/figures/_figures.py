"""The figures of a view: made, found, changed, drawn; and which runs are selected."""

from __future__ import annotations

import base64
import os
import re
from collections.abc import Callable, Iterable, Iterator
from numbers import Real
from pathlib import Path
from typing import TYPE_CHECKING, Any

from kxsim import design
from kxsim._results import Results
from kxsim.figures import _commands, _making
from kxsim.figures._custom import Drawn, Plots
from kxsim.figures._data import literal
from kxsim.figures._errors import FigureError, nearest
from kxsim.figures._links import Links
from kxsim.figures._making import What
from kxsim.figures._runs import Runs

if TYPE_CHECKING:
    from mf import zero

    from kxsim._live import Subscription
    from kxsim.design import internal
    from kxsim.figures._draw import Picture


class Figures:
    """A design view and the results that its figures show.

    Without a view there is a new one, in `model` or in that of the results' job; it offers all
    columns of the results as data sources. Held here and not in the model: which properties object
    belongs to which figure (`properties`), which figure is `current`, which runs are `selected`,
    and the functions of custom plots. Each drawing shows the results as they are then.
    """

    def __init__(
        self,
        results: Results,
        view: design.DesignView | None = None,
        model: zero.Model | None = None,
    ) -> None:
        if not isinstance(results, Results):
            raise TypeError(f"figures show the results of a study's runs, not {results!r}")
        if view is not None and model is not None and view.model() != model:
            raise ValueError("the view belongs to another model")
        self.results = results
        self.view = view or _making.new_view(results, model or results.job.model())
        self.model = self.view.model()
        self._links = Links(self.model)
        self._plots = Plots(self.model)
        self._recent: dict[str, None] = {}  # identities, the last made or set last
        self._selected: dict[int, None] = {}
        self._listening: Subscription | None = None

    def __iter__(self) -> Iterator[design.Figure]:
        return iter(self.view.Figures)

    def __len__(self) -> int:
        return len(self.view.Figures)

    def __repr__(self) -> str:
        return f"<{len(self)} figures of {len(self.results):,} runs, {len(self.selected)} selected>"

    def _repr_html_(self) -> str:
        pictures = [base64.b64encode(self.draw(each)._repr_png_()).decode() for each in self]
        return "".join(f'<img width="640" src="data:image/png;base64,{each}">' for each in pictures)

    # Making ---------------------------------------------------------------------------------------

    def scatter(self, x: What = (), y: What = (), c: What = (), **values: Any) -> design.Figure:
        """Points over x and y, colored by c; lines for traces. Answers the new figure.

        What an axis plots is the name of a parameter or an output, several of them, a mapping from
        names to labels, or `kxsim.figures.data(...)`; without one, what `create` takes. Keywords
        are properties of the figure and of its properties object; limits that are given hold, and
        beside a single one the other is what the axis would show now. FigureError, and no figure,
        for names that are unknown and for what cannot be drawn; TypeError for arrays.
        """
        values = {"Colorbar": _making.is_given(c), **values}
        return self._make("ScatterPlot", {"X": x, "Y": y, "C": c}, values)

    def surface(self, x: What = (), y: What = (), z: What = (), **values: Any) -> design.Figure:
        """A surface z over x and y; arguments as those of `scatter`."""
        return self._make("SurfPlot", {"X": x, "Y": y, "Z": z}, {"Colorbar": True, **values})

    def histogram(self, x: What = (), **values: Any) -> design.Figure:
        """How often values occur; arguments as those of `scatter`, axis Y counts."""
        return self._make("Histogram", {"X": x}, values)

    def custom(self, plot: Drawn, input: str = "", **values: Any) -> design.Figure:
        """A figure that a function draws, which is called with a `Plot`.

        The function, or what designates its plot configuration: an identity or a class.
        """
        with self.model.transaction():
            entry = self._plots.find(plot) if isinstance(plot, str) else self.register(plot)
            name = plot if isinstance(plot, str) else entry.identity()
            values = {"PlotConfigId": name, "PlotInput": input, **values}
            return self._make("CustomPlot", {}, values)

    def create(self, kind: Any) -> design.Figure:
        """A figure of a kind of `kxsim.design.FigureType`: outputs over parameters, the first."""
        return self._make(literal(design.FigureType, kind, "kind of figure"), {}, {})

    def _make(self, kind: str, axes: dict[str, What], values: dict[str, Any]) -> design.Figure:
        figure, properties = _making.make(self.view, Runs(self.results), kind, axes, values)
        self._links.add(figure, properties)
        self.current = figure
        return figure

    # Finding and changing -------------------------------------------------------------------------

    @property
    def current(self) -> design.Figure | None:
        """The figure that was made or set last of those there are, or the view's last, or None."""
        figures = {each.identity(): each for each in self}
        known = (figures[each] for each in reversed(self._recent) if each in figures)
        return next(known, next(reversed(figures.values()), None))

    @current.setter
    def current(self, figure: Any) -> None:
        identity = self._found(figure).identity()
        self._recent.pop(identity, None)
        self._recent[identity] = None

    def properties(self, figure: Any = None) -> Any:
        """The properties object of a figure, by default the current one."""
        return self._links.find(self._found(figure))

    def link(self, figure: Any, properties: Any) -> None:
        """Lets a properties object that was made elsewhere be the figure's."""
        self._links.add(self._found(figure), properties)

    def change(self, name: str, value: Any, figure: Any = None) -> None:
        """Sets a property of a figure or of its properties object, by default the current one's.

        FigureError for an unknown name, and for a value of another kind or that nothing draws.
        """
        figure = self._found(figure)
        properties = self.properties(figure)
        of_figure = _making.owner_of(name, design.Figure, type(properties)) is design.Figure
        owner = figure if of_figure else properties
        value = _making.checked_value(owner, name, value)
        if name == "Id" and value != figure.Id:
            _making.check_id(self.view, value)
        elif name == "ColorMap":
            _making.check_color_map(value)
        elif name == "PlotConfigId":
            self._plots.find(value)
        setattr(owner, name, value)

    def delete(self, figure: Any = None) -> None:
        """Destroys a figure, given itself or by its Id, and its properties object.

        `figure.destroy()` leaves the properties object, for another figure may have it.
        """
        figure = self._found(figure)
        with self.model.transaction():
            properties = self._links.owned(figure)
            figure.destroy()
            if properties is not None:
                properties.destroy()

    def register(self, plot: Drawn, label: str = "", icon: str = "") -> internal.PlotConfig:
        """The plot configuration of a function, or of its name "package.module:function"."""
        return self._plots.register(plot, label, icon)

    def _found(self, figure: Any) -> design.Figure:
        """A figure of the view, given itself, by its Id, or None for the current one."""
        if figure is None:
            if self.current is None:
                raise FigureError("NoCurrentFigure")
            return self.current
        found = [each for each in self if figure in (each, each.Id)]
        if len(found) == 1:
            return found[0]
        name = figure if isinstance(figure, str) else getattr(figure, "Id", repr(figure))
        if found:
            raise FigureError("DuplicateFigure", name=name)
        raise FigureError("UnknownFigure", name=name, nearest=nearest(name, [f.Id for f in self]))

    # Selecting runs -------------------------------------------------------------------------------

    @property
    def selected(self) -> list[int]:
        """The numbers of the selected runs, in the order in which they were selected."""
        return list(self._selected)

    def select(self, runs: Iterable[float], append: bool = False) -> None:
        """Selects runs by their numbers, from 1, besides those that are if `append`.

        FigureError for a number that no run has, and the selection is as it was.
        """
        known = self._known(runs)
        self._selected = {**(self._selected if append else {}), **known}

    def deselect(self, runs: Iterable[float]) -> None:
        """Takes runs out of the selection, whether they were in it or not; FigureError as above."""
        gone = self._known(runs)
        self._selected = {run: None for run in self._selected if run not in gone}

    def _known(self, runs: Iterable[float]) -> dict[int, None]:
        listed, count = list(runs), len(self.results)
        unknown = [
            run
            for run in listed
            if not (isinstance(run, Real) and run % 1 == 0 and 1 <= run <= count)
        ]
        if unknown:
            words = ", ".join(f"{r:g}" if isinstance(r, Real) else repr(r) for r in unknown[:3])
            raise FigureError("UnknownRun", name=words, count=count)
        return dict.fromkeys(map(int, listed))

    # Commands -------------------------------------------------------------------------------------

    def carry_out(self, command: Any) -> Any:
        """Does what a record of `kxsim.design.internal.command` asks for, as one transaction.

        The record is gone afterwards, also when it fails with a FigureError.
        """
        return _commands.carry_out(self, command)

    def listen(self, on_error: Callable[[Exception], object] | None = None) -> Subscription:
        """Carries out the records that are created in the model from now on.

        Ends with `end()` of what it answers, or with a `with` block of that. A record that fails
        raises in whoever committed it, or its error is handed to `on_error`.
        """
        if self._listening is not None:
            self._listening.end()
        self._listening = self.model.observe(
            lambda changes: _commands.carry_out_all(self, changes.created, on_error)
        )
        return self._listening

    # Drawing --------------------------------------------------------------------------------------

    def draw(self, figure: Any = None) -> Picture:
        """A `matplotlib.figure.Figure` of a figure, by default the current one.

        FigureError when its data is not there, does not fit, or is limited to nothing.
        """
        from kxsim.figures import _draw

        figure = self._found(figure)
        properties, kind = self.properties(figure), figure.Type.name
        custom = self._plots.drawer(properties) if kind == "CustomPlot" else None
        sheet = _draw.Sheet(kind, properties, Runs(self.results), self.selected)
        return _draw.draw(sheet, self.view.DataSources, custom)

    def save(self, folder: str | os.PathLike[str], format: str = "png") -> list[Path]:
        """Draws every figure into a file of its own, named after its place and title.

        Files of the same names are replaced and others stay, so that fewer or renamed figures
        leave those of before. Nothing is written when one of them cannot be drawn.
        """
        from kxsim.figures import _draw

        contents = {
            self._file_name(k, each, format): self.draw(each) for k, each in enumerate(self, 1)
        }
        paths = [Path(folder) / name for name in contents]
        pictures = [_draw.encoded(each, format) for each in contents.values()]
        Path(folder).mkdir(parents=True, exist_ok=True)
        for path, picture in zip(paths, pictures, strict=True):
            path.write_bytes(picture)
        return paths

    def _file_name(self, place: int, figure: Any, format: str) -> str:
        words: str = self.properties(figure).Title or figure.Type.name
        slug = re.sub(r"\W+", "-", words.casefold()).strip("-")[:60]
        return f"{place:02d}-{slug or 'figure'}.{format}"
