"""Studies in few words.

    from kxsim.study import draws, grid, values, zipped

    study = grid(Kp=[0.1, 0.2, 0.4], Ki=[1, 2])
    print(study)             # as a tree, with the number of runs
    study.table()            # the runs, one line each

The functions describe a study; its elements are made in a model when something is asked of it, or
by `build`, all or none of them. From then on every answer comes from the elements, which
`study.space` leads to.

What varies is named by a str, which stands for a variable of that name, by `target(...)` or by an
element of a subclass of `kxsim.design.ParameterType`. Names that are no identifiers, and targets,
are keys of a mapping: `grid({"gain 1": [1, 2]}, Ki=[1, 2])`.
"""

from __future__ import annotations

import math
from collections.abc import Callable, Iterable, Iterator, Mapping, Sequence
from functools import cached_property
from numbers import Real
from typing import TYPE_CHECKING, Any, NamedTuple, TypeAlias, overload

import kxsim
from kxsim import _describe, design
from kxsim._classes import check_keywords
from kxsim._distributions import generator as numpy_generator
from kxsim._errors import always
from kxsim._live import column

if TYPE_CHECKING:
    from mf.zero import Model

    from kxsim._results import Results
    from kxsim.typing import Objects

__all__ = ["Study", "Target", "draws", "grid", "target", "values", "zipped"]


class Target(NamedTuple):
    """A thing to vary that is no variable: its class and its properties."""

    of_class: type[Any]
    properties: tuple[tuple[str, Any], ...]

    def make(self, model: Model) -> design.ParameterType:
        return self.of_class(model, **dict(self.properties))


def target(of_class: type[design.ParameterType], **properties: Any) -> Target:
    """What a run changes, say `target(design.BlockParameter, Name="Kp", BlockPath="motor/pid")`."""
    if not (isinstance(of_class, type) and issubclass(of_class, design.ParameterType)):
        raise TypeError(f"a target is a class below design.ParameterType, not {of_class!r}")
    check_keywords(of_class, properties)
    return Target(of_class, tuple(properties.items()))


class Study:
    """A parameter space, made when first needed; `len` is its number of runs."""

    def __init__(
        self, make: Callable[[Model], Any], keys: Sequence[Any], model: Model | None = None
    ) -> None:
        self._make = make
        self._keys = tuple(keys)
        self._given_model = model

    @classmethod
    def of(cls, space: design.ParameterSpace) -> Study:
        """The study of a parameter space that exists."""
        if not isinstance(space, design.ParameterSpace):
            raise TypeError(f"a study is made of a parameter space, not of {space!r}")
        space.NumIterations  # noqa: B018  (raises for a space among its own descendants)
        keys = [sample for sample in _describe.targets(space) if sample is not None]
        return cls(lambda model: space, keys, space.model())

    def build(self, model: Model | None = None) -> Study:
        """Makes the elements: in this model, that of targets or spaces it was given, or a new one.

        Raises ValueError when they exist already. A refused value leaves nothing behind.
        """
        if "space" in self.__dict__:
            raise ValueError("the study has been built already")
        if model is not None and not isinstance(model, kxsim.Model):
            raise TypeError(f"a study is built in a model, not in {model!r}")
        model = model or self._given_model or kxsim.Model()
        with model.transaction():
            self.__dict__["space"] = self._make(model)
        return self

    @cached_property
    def space(self) -> design.ParameterSpace:
        """The element that stands for the whole study."""
        return self.build().__dict__["space"]

    @property
    def model(self) -> Model:
        return self.space.model()

    def __len__(self) -> int:
        return math.ceil(self.space.NumIterations)

    @cached_property
    def runs(self) -> Objects[design.Iteration]:
        """The runs, elements of class `kxsim.design.Iteration`; made once, all or none of them.

        Observers of the model hear of all runs at once.
        """
        with self.model.transaction():
            return self.space.createIterations()

    def __iter__(self) -> Iterator[dict[str, Any]]:
        """The values of each run, by name; None for what a run lacks."""
        return _describe.rows(self.columns(), len(self.runs))

    @overload
    def __getitem__(self, place: int) -> dict[str, Any]: ...
    @overload
    def __getitem__(self, place: slice) -> list[dict[str, Any]]: ...
    def __getitem__(self, place: Any) -> Any:
        """The values of one run by its place from 0, or of a slice of the runs as a list."""
        if isinstance(place, slice):
            return [_describe.values_of(run) for run in self.runs[place]]
        return _describe.values_of(self.runs[place])

    def columns(self) -> dict[str, Any]:
        """The values by name, one per run each.

        A column in which every run has a number is a read-only NumPy array of float64; all others
        are lists, with None in runs without a value.
        """
        return _describe.columns(self.runs)

    def to_pandas(self) -> Any:
        """The runs as a data frame, numbered from 1; needs pandas."""
        import pandas

        frame = pandas.DataFrame(self.columns())
        frame.index = pandas.RangeIndex(1, len(frame) + 1, name="run")
        return frame

    def table(self, limit: int = 20) -> str:
        """The first runs in words, one line each."""
        return _describe.table(self.runs, limit)

    def run(self, function: Callable[[dict[str, Any]], Any], **options: Any) -> Results:
        """Carries out the runs: `kxsim.run`."""
        return kxsim.run(self, function, **options)

    @always
    def __repr__(self) -> str:
        return _describe.tree(self.space)

    def _repr_html_(self) -> str:
        from kxsim import _html

        return _html.preformatted(repr(self))


# What callers write ------------------------------------------------------------------------------


def values(key: Any, items: Iterable[Any]) -> Study:
    """One varied quantity and its values, one run each."""
    return _study(_value_set(key, items))


def grid(*parts: Any, **factors: Iterable[Any]) -> Study:
    """Every combination, the first part varying fastest.

    Parts are studies, parameter spaces, mappings from what varies to its values, and lists of runs:
    data frames or sequences of mappings. Raises ValueError when something is varied twice.
    """
    return _combined(design.Exhaustive, _children(parts, factors))


def zipped(*parts: Any, **factors: Iterable[Any]) -> Study:
    """The first values of all, the second of all, and so on; parts as in `grid`.

    Building raises ValueError when their numbers of runs differ.
    """
    children = _children(parts, factors)
    if len(children) == 1:
        return _study(children[0])
    return _combined(design.Sequential, children, _check_equal_counts)


def draws(count: int, *parts: Mapping[Any, Any], rng: Any = None, **distributions: Any) -> Study:
    """Random values, drawn anew for each run; each quantity has a distribution.

    A distribution is one of `kxsim.dist` or anything with `random`, `rvs` or `sample`. They draw
    from `rng`, a `numpy.random.Generator` or a seed for one, otherwise from kxsim's own generators
    (`kxsim.seed`). Python's `random()` looks after its own unless it takes `rng`.
    """
    is_number = isinstance(count, Real) and not isinstance(count, bool)
    if not (is_number and count >= 1 and count % 1 == 0):
        raise ValueError(f"the number of draws is a positive integer, not {count!r}")
    pairs = _pairs(parts, distributions)
    if rng is not None:
        numpy_generator(rng)  # raises for what is none

    def make(model: Any) -> Any:
        generator = None if rng is None else numpy_generator(rng)
        drawn = _made_at_once([_drawn(key, source, generator) for key, source in pairs], model)
        return design.RandomParameterSpace(model, NumSamples=int(count), Parameters=drawn)

    keys = _once([_checked(key) for key, _ in pairs])
    return Study(make, keys, _first_model(keys))


# How it is put together --------------------------------------------------------------------------


def _given_for(key: Any) -> str:
    return f"It was given for {key!r}."


class _Parameter(NamedTuple):
    """One varied quantity: a class of parameters, and the property that has what is given."""

    key: Any
    of_class: type[Any]
    property: str
    value: Any

    def make(self, model: Any) -> Any:
        try:
            values = {self.property: self.value}
            return self.of_class(model, ParameterType=_made(self.key, model), **values)
        except Exception as error:
            error.add_note(_given_for(self.key))
            raise


_Part: TypeAlias = Study | _Parameter


def _value_set(key: Any, items: Any) -> _Parameter:
    return _Parameter(_checked(key), design.ValueSetParameter, "Values", _listed(key, items))


def _study(part: _Part) -> Study:
    if isinstance(part, Study):
        return part
    return Study(part.make, (part.key,), _first_model([part.key]))


def _made_at_once(parameters: Sequence[_Parameter], model: Any) -> Sequence[Any]:
    """The elements of parameters of one class, in two calls."""
    if not parameters:
        return []
    keys = [parameter.key for parameter in parameters]
    values = {parameters[0].property: [parameter.value for parameter in parameters]}
    try:
        types = _all_made(keys, model)
        return model.createElements(parameters[0].of_class, ParameterType=types, **values)
    except Exception as error:
        refused = error
    try:
        for parameter in parameters:
            parameter.make(model)  # raises for what was refused, and says for which key
        raise refused
    finally:
        del refused  # it has this frame, which would have it too


def _combined(of_class: type, children: Sequence[_Part], check: Any = None) -> Study:
    def make(model: Any) -> Any:
        spaces = _spaces(children, model)
        if check:
            check(children, spaces)
        return of_class(model, ParameterSpaces=spaces)

    studies = [child for child in children if isinstance(child, Study)]
    keys = _once(_keys_of(children))
    model = next((study._given_model for study in studies if study._given_model), None)
    return Study(make, keys, model or _first_model(keys))


def _keys_of(children: Sequence[_Part]) -> list[Any]:
    keys: list[Any] = []
    for child in children:
        if isinstance(child, _Parameter):
            keys.append(child.key)
        else:
            keys += child._keys
    return keys


def _spaces(children: Sequence[_Part], model: Any) -> Sequence[Any]:
    parameters = [child for child in children if isinstance(child, _Parameter)]
    made = _made_at_once(parameters, model)
    if len(parameters) == len(children):
        return made
    rest = iter(made)
    return [
        next(rest) if isinstance(child, _Parameter) else child._make(model) for child in children
    ]


def _check_equal_counts(children: Sequence[_Part], spaces: Sequence[Any]) -> None:
    counts = {
        len(child.value) if isinstance(child, _Parameter) else spaces[k].NumIterations
        for k, child in enumerate(children)
    }
    if len(counts) > 1:
        told = "; ".join(_describe.tree(space).splitlines()[0] for space in spaces)
        raise ValueError(f"what is zipped must have equally many runs: {told}")


def _drawn(key: Any, source: Any, generator: Any) -> _Parameter:
    try:
        if generator is not None:
            source = kxsim.distribution(source, rng=generator)
    except Exception as error:
        error.add_note(_given_for(key))
        raise
    return _Parameter(key, design.RandomParameter, "Distribution", source)


def _children(parts: Iterable[Any], factors: Mapping[str, Any]) -> list[_Part]:
    children = [child for part in (*parts, factors) for child in _parts_of(part)]
    if not children:
        raise ValueError("a study varies something: give at least one part")
    return children


def _parts_of(part: Any) -> Sequence[_Part]:
    if isinstance(part, Study):
        return [part]
    if isinstance(part, design.ParameterSpace):
        return [Study.of(part)]
    if isinstance(part, Mapping):
        return [_value_set(key, items) for key, items in part.items()]
    return [zipped(_columns_of(part))]


def _columns_of(table: Any) -> dict[Any, list[Any]]:
    """The columns of a data frame or of a sequence of mappings with the same keys."""
    if hasattr(table, "columns") and hasattr(table, "__getitem__"):
        return {name: list(table[name]) for name in _once(list(table.columns))}
    rows = list(table) if isinstance(table, Iterable) and not isinstance(table, str) else []
    if not rows or not all(isinstance(row, Mapping) for row in rows):
        raise TypeError(f"this is no study, mapping or list of runs: {table!r}")
    for k, row in enumerate(rows):
        if row.keys() != rows[0].keys():
            raise ValueError(f"row {k} has the keys {[*row]}, the first has {[*rows[0]]}")
    return {key: [row[key] for row in rows] for key in rows[0]}


def _pairs(parts: Iterable[Mapping[Any, Any]], more: Mapping[str, Any]) -> list[tuple[Any, Any]]:
    for part in parts:
        if not isinstance(part, Mapping):
            raise TypeError(f"draws take mappings from what varies to distributions, not {part!r}")
    pairs = [pair for part in (*parts, more) for pair in part.items()]
    if not pairs:
        raise ValueError("draws need at least one distribution")
    return pairs


def _listed(key: Any, items: Any) -> list[Any]:
    listed = list(column(key, items))
    if not listed:
        raise ValueError(f"{key!r} has no values")
    return listed


def _checked(key: Any) -> Any:
    if type(key) is not str and not isinstance(key, str | Target | design.ParameterType):
        raise TypeError(f"what varies is a name or a target, not {key!r}")
    if key == "":
        raise ValueError("what varies needs a name, not ''")
    return key


def _once(keys: Sequence[Any]) -> Sequence[Any]:
    if len(set(keys)) < len(keys):
        again = next(key for k, key in enumerate(keys) if key in keys[:k])
        raise ValueError(f"{again!r} is varied twice")
    return keys


def _made(key: Any, model: Any) -> Any:
    if isinstance(key, str):
        return design.Variable(model, Name=key)
    return key.make(model) if isinstance(key, Target) else key


def _all_made(keys: Sequence[Any], model: Any) -> Sequence[Any]:
    names = [key for key in keys if isinstance(key, str)]
    variables = model.createElements(design.Variable, Name=names)
    if len(names) == len(keys):
        return variables
    rest = iter(variables)
    return [next(rest) if isinstance(key, str) else _made(key, model) for key in keys]


def _first_model(keys: Iterable[Any]) -> Any:
    """The model of the first element among the keys."""
    targets = (key for key in keys if not isinstance(key, str))
    elements = (key for key in targets if isinstance(key, design.ParameterType))
    return next((element.model() for element in elements), None)
