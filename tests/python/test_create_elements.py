"""Many elements at once, out of columns of values: what comes, and that mistakes leave nothing."""

import re

import kxsim
import numpy as np
import pytest
from kinetra.simmanager import mm
from kxsim import design
from kxsim.study import grid


def test_every_element_has_its_values_in_order(model):
    gains = model.createElements(design.Variable, Name=("a", "b", "c"))
    items = [[1, 2.5], ["off", None], [[True], {"x": 1}, np.eye(2), kxsim.dist.Uniform(0, 1)]]
    parameters = model.createElements(design.ValueSetParameter, ParameterType=gains, Values=items)
    assert [gain.Name for gain in gains] == ["a", "b", "c"] and type(gains[0]) is design.Variable
    assert [parameter.ParameterType for parameter in parameters] == [*gains]
    assert parameters[0].Values == [1, 2.5] and parameters[1].Values == ["off", None]
    assert parameters[2].Values[:2] == [[True], {"x": 1}]
    assert (parameters[2].Values[2] == np.eye(2)).all()
    space = design.Exhaustive(model, ParameterSpaces=parameters)
    assert [*space.ParameterSpaces] == [*parameters] and len(space.createIterations()) == 16
    assert model.elements(design.Variable)[1] == gains[1] and len({*gains, *gains}) == 3


@pytest.mark.parametrize(
    "numbers",
    [range(3), np.arange(3), (k for k in range(3)), np.arange(3.0), [0, True, np.float32(2)]],
    ids=["range", "integers", "generator", "floats", "mixed"],
)
def test_a_column_is_anything_that_can_be_iterated(model, numbers):
    runs = model.createElements(mm.SimulationRun, RunId=numbers)
    assert len(runs) == 3 and runs[2].RunId == 2


def test_columns_hold_what_constructors_take(model):
    runs = model.createElements("kinetra.simmanager.mm.SimulationRun", State=["finished", "failed"])
    jobs = model.createElements(
        mm.Job.StaticMetaClass(), SimulationRuns=[[{"RunId": 1}, {"RunId": 2}], []]
    )
    assert [run.State for run in runs] == ["finished", "failed"]
    assert [run.RunId for run in jobs[0].SimulationRuns] == [1, 2] and not jobs[1].SimulationRuns
    figures = model.createElements(design.Figure, Type=["SurfPlot", design.FigureType.Histogram])
    assert [figure.Type.name for figure in figures] == ["SurfPlot", "Histogram"]
    again = model.createElements(design.ValueSetParameter, ParameterType=[None], Values=[[1]])
    assert len(again) == 1 and again[0].ParameterType is None
    assert len(model.createElements(design.Variable)) == 0


def test_observers_hear_of_all_at_once_and_a_transaction_holds_all(model):
    told = []
    subscription = model.observe(lambda changes: told.append(len(changes.created)))
    model.createElements(design.Variable, Name=["a", "b"])
    assert told == [2]
    with pytest.raises(KeyError), model.transaction():
        model.createElements(design.Variable, Name=["c", "d"])
        raise KeyError
    assert told == [2] and len(model) == 2
    subscription.end()


class Unruly:
    """What stands for it in the host is asked for in vain."""

    def __init__(self, error):
        self.error = error

    def __host__(self):
        raise self.error


def loop():
    items = []
    items.append(items)
    return items


def refused(**columns):
    return lambda model: model.createElements(design.ValueSetParameter, **columns)


gone = "This was for the element at place 1, counted from 0."
MISTAKES = {
    "checked": (refused(Values=[[1], 5]), kxsim.HostError, "ValuesMustBeCellArray", gone),
    "converted": (
        lambda model: model.createElements(mm.Job, StartTime=[1, "now"]),
        kxsim.HostError,
        "CannotConvert",
        gone,
    ),
    "bytes": (refused(Values=[[1], [b"x"]]), TypeError, "bytes", "'Values' .* place 1, from 0"),
    "large": (refused(Values=[[1], [2**70 + 1]]), OverflowError, "exactly", "'Values' .* place 1"),
    "cycle": (refused(Values=[[1], loop()]), RecursionError, None, None),
    "uneven": (refused(Values=[[1], [2]], ParameterType=[None]), kxsim.HostError, "has 1", None),
    "mistyped": (refused(Value=[[1]]), TypeError, "did you mean 'Values'", None),
    "read-only": (refused(NumIterations=[1]), kxsim.HostError, "CannotSetReadOnlyProperty", None),
    "text": (refused(Values="ab"), TypeError, "'Values' are a list, not 'ab'", None),
    "number": (refused(Values=3), TypeError, "'Values' are a list, not 3", None),
    "no class": (lambda model: model.createElements(int), kxsim.HostError, "Invalid", None),
    "model": (lambda model: model.createElements(kxsim.Model), kxsim.HostError, "NotAn", None),
}


@pytest.mark.parametrize("mistake, error, word, note", MISTAKES.values(), ids=MISTAKES)
def test_each_mistake_has_its_error_and_leaves_nothing(model, mistake, error, word, note):
    with pytest.raises(error, match=word) as caught:
        mistake(model)
    notes = " ".join(getattr(caught.value, "__notes__", []))
    assert len(model) == 0 and not model.isInTransaction()
    if note:
        assert re.search(note, notes)


@pytest.mark.parametrize("error", [LookupError("nowhere"), KeyboardInterrupt()])
def test_what_code_of_ones_own_raises_meanwhile_arrives_and_leaves_nothing(model, error):
    with pytest.raises(type(error)) as caught:
        model.createElements(design.ValueSetParameter, Values=[[1], [Unruly(error)]])
    assert caught.value is error and len(model) == 0 and not model.isInTransaction()
    with pytest.raises(type(error)):
        grid(a=[1], b=[Unruly(error)]).build(model)
    assert len(model) == 0


def test_an_observers_error_arrives_and_the_elements_stay(model):
    def changed(changes):
        raise ValueError("no")

    subscription = model.observe(changed)
    with pytest.raises(kxsim.HostError):
        model.createElements(design.Variable, Name=["a", "b"])
    subscription.end()
    assert [gain.Name for gain in model.elements(design.Variable)] == ["a", "b"]
