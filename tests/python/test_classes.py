"""Host packages as modules, their classes, elements and collections as Python knows such things."""

import copy
import importlib
import pickle
import subprocess
import sys

import kxsim
import numpy as np
import pytest
from hypothesis import settings
from hypothesis import strategies as st
from hypothesis.stateful import RuleBasedStateMachine, initialize, invariant, precondition, rule
from kinetra.simmanager import mm
from kxsim import _host, design
from kxsim.design.internal import command
from mf import zero

settings.register_profile("quick", max_examples=25, stateful_step_count=20)
settings.load_profile("quick")


def test_a_study_from_start_to_end(model):
    def factor(name, values):
        return design.ValueSetParameter(
            model, ParameterType=design.Variable(model, Name=name), Values=values
        )

    space = design.Exhaustive(model)
    space.ParameterSpaces.extend([factor("gain", [1, 2, 3]), factor("mode", ["slow", "fast"])])
    assert space.NumIterations == 6
    runs = space.createIterations()
    assert [tuple(sample.Value for sample in run.ParameterSamples) for run in runs] == [
        (gain, mode) for mode in ("slow", "fast") for gain in (1, 2, 3)
    ]
    job = mm.Job(model, StartTime=0.5)
    for k, _ in enumerate(runs, 1):
        job.createIntoSimulationRuns(RunId=k).State = "finished"
    assert len(job.SimulationRuns) == 6
    done = model.elements(mm.SimulationRun, State="finished", RunId=4)
    assert list(done) == [job.SimulationRuns[3]] and done[0].owner() == job


def test_lists_of_runs_are_sequences_whatever_their_length(model):
    for count in range(4):
        runs = design.ValueSetParameter(model, Values=list(range(count))).createIterations()
        assert len(runs) == count and len(list(runs)) == count
        assert runs[:2] == list(runs)[:2] and runs[::-1] == list(runs)[::-1]
    assert runs[-1] == runs[2] and runs.index(runs[1]) == 1 and runs[0] not in runs[1:]
    with pytest.raises(IndexError):
        runs[3]


@pytest.mark.parametrize("name", ["kinetra.simmanager.mm", "mf.zero", "kxsim.design.internal"])
def test_each_package_is_importable_first(name):
    script = f"import {name} as package; print(package.__name__, len(dir(package)) > 3)"
    done = subprocess.run([sys.executable, "-c", script], capture_output=True, text=True)
    assert (done.stdout.strip(), done.stderr) == (f"{name} True", "")


def test_names_are_found_listed_and_missed_like_pythons_own():
    assert {"Exhaustive", "FigureType", "internal"} <= set(dir(design))
    assert design.Variable is importlib.import_module("kxsim.design").Variable
    assert {"design", "figures", "Model", "study"} <= set(dir(kxsim))
    assert not any(name.startswith("_") or name in ("os", "sys") for name in dir(kxsim))
    assert kxsim.study.grid and kxsim.figures.Figures
    with pytest.raises(AttributeError, match="did you mean 'design'"):
        kxsim.desing  # noqa: B018
    with pytest.raises(AttributeError, match="did you mean 'Uniform'"):
        kxsim.dist.Unifrm  # noqa: B018
    assert command.SelectRuns.__module__ == "kxsim.design.internal.command"
    assert design.fullfact(np.array([2, 2])).tolist() == [[1, 2, 1, 2], [1, 1, 2, 2]]
    with pytest.raises(ModuleNotFoundError):
        importlib.import_module("kxsim.nope")
    with pytest.raises(ImportError):
        from kxsim.design import Nope  # noqa: F401


def test_every_class_has_its_documentation_and_its_place():
    for package in ("kxsim.design", "kinetra.simmanager.mm", "kxsim.design.internal.command"):
        for name in _host.classes(package):
            cls = getattr(importlib.import_module(package), name.rpartition(".")[2])
            assert cls.__doc__ and cls.__module__ == package
    assert issubclass(design.Exhaustive, design.ParameterSpace)
    assert issubclass(design.Exhaustive, zero.ModelElement)
    assert "one cell per" in design.ValueSetParameter.Values.__doc__.lower()
    assert design.Variable.StaticMetaClass().Name == "Variable"


def test_elements_are_compared_and_hashed_by_what_they_stand_for(model):
    first, second = design.Variable(model, Name="gain"), design.Variable(model, Name="gain")
    again = model.elements(design.Variable)[0]
    assert first == again and hash(first) == hash(again) and first is not again
    assert first != second and first != 3 and len({first, second, again}) == 2
    assert model.findElement(first.identity()) == first
    assert model.findElement("00000000-0000-0000-0000-000000000001") is None
    assert first.owner() is None
    assert pickle.loads(pickle.dumps(design.FigureType.SurfPlot)) is design.FigureType.SurfPlot
    with pytest.raises(TypeError, match="neither copied nor pickled"):
        copy.copy(first)
    assert repr(first) == "<kxsim.design.Variable Name='gain' Workspace=''>"


def test_first_values_and_identity_come_in_any_order(model):
    identity = "6ac6d230-3cb9-321b-97a3-24af3ee475c4"
    variable = design.Variable(model, identity, {"Name": "gain"}, Workspace="base")
    assert (variable.Name, variable.Workspace) == ("gain", "base")
    assert variable.identity() == identity


def test_references_are_set_and_cleared(model):
    target = design.Variable(model, Name="gain")
    values = design.ValueSetParameter(model, ParameterType=target)
    assert values.ParameterType == target
    values.ParameterType = None
    assert values.ParameterType is None


def test_a_transaction_is_kept_or_rolled_back_as_a_whole(model):
    variable = design.Variable(model, Name="before")
    told = []
    with model.observe(told.append):
        with pytest.raises(ZeroDivisionError), model.transaction():
            variable.Name = "after"
            design.Variable(model)
            1 / 0  # noqa: B018
        assert variable.Name == "before" and len(model) == 1 and not told
        with model.transaction():
            variable.Name = "after"
            with model.transaction() as inner:
                other = design.Variable(model)
                inner.rollback()
            assert not other.is_valid
    assert variable.Name == "after" and len(told) == 1
    assert told[0].created == told[0].destroyed == [] or not len(told[0].created)
    assert told[0].modified == [
        {"Element": variable, "Property": "Name", "OldValue": "before", "NewValue": "after"}
    ]


class CollectionMachine(RuleBasedStateMachine):
    """A live collection beside a list that is changed alike."""

    @initialize()
    def start(self):
        self.model = kxsim.Model()
        self.live = design.Exhaustive(self.model).ParameterSpaces
        self.spare = [design.Sequential(self.model) for _ in range(8)]
        self.expected = []

    def outcome(self, action):
        """Of doing it to both: the value, or the error's kind."""
        outcomes = []
        for items in (self.live, self.expected):
            try:
                outcomes.append(action(items))
            except (IndexError, ValueError) as error:
                outcomes.append(type(error))
        assert outcomes[0] == outcomes[1]

    places = st.integers(-9, 9)
    bounds = st.none() | places
    slices = st.builds(slice, bounds, bounds, st.sampled_from([None, 1, 2, -1]))

    def fresh(self, k=1):
        unused = [space for space in self.spare if space not in self.expected]
        return unused[:k]

    @precondition(fresh)
    @rule(place=places)
    def insert(self, place):
        new = self.fresh()
        self.outcome(lambda items: items.insert(place, *new))

    @rule(k=st.integers(0, 3))
    def extend(self, k):
        spaces = self.fresh(k)
        self.outcome(lambda items: items.extend(spaces))

    @precondition(fresh)
    @rule()
    def append(self):
        new = self.fresh()
        self.outcome(lambda items: items.append(*new))

    @rule(k=st.integers(0, 7))
    def remove(self, k):
        self.outcome(lambda items: items.remove(self.spare[k]))
        assert self.spare[k] not in self.live

    @rule(key=places | slices)
    def delete(self, key):
        self.outcome(lambda items: items.__delitem__(key))

    @rule(key=places | slices)
    def read(self, key):
        self.outcome(lambda items: items[key])

    @precondition(fresh)
    @rule(place=places)
    def replace(self, place):
        new = self.fresh()
        self.outcome(lambda items: items.__setitem__(place, *new))

    @rule(place=places)
    def pop(self, place):
        self.outcome(lambda items: items.pop(place))

    @rule()
    def clear_or_reverse(self):
        action = "clear" if len(self.expected) > 6 else "reverse"
        self.outcome(lambda items: getattr(items, action)())

    @invariant()
    def they_hold_the_same(self):
        assert list(self.live) == self.expected and len(self.live) == len(self.expected)


TestLiveCollections = CollectionMachine.TestCase


def test_a_collection_grows_in_place_and_no_other_takes_its(model):
    study, other = design.Exhaustive(model), design.Exhaustive(model)
    spaces = [design.Sequential(model), design.Sequential(model)]
    study.ParameterSpaces += spaces
    assert [*study.ParameterSpaces] == spaces
    with pytest.raises(AttributeError, match=r"ParameterSpaces\[:\]"):
        other.ParameterSpaces = study.ParameterSpaces
    assert [*study.ParameterSpaces] == spaces and not other.ParameterSpaces


def test_collections_of_values_and_strangers(model):
    select = command.SelectRuns(model, RunIds=[3, 1])
    select.RunIds.append(2)
    assert sorted(select.RunIds) == [1, 2, 3] and 2 in select.RunIds and "x" not in select.RunIds
    select.RunIds.clear()
    assert list(select.RunIds) == select.RunIds[:] == []
    spaces = design.Exhaustive(model).ParameterSpaces
    with pytest.raises(kxsim.HostError):
        spaces.extend([design.Sequential(model), design.Variable(model)])
    assert len(spaces) == 0 and design.Variable(model) not in spaces and 3 not in spaces
