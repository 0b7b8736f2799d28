"""Studies in few words: what they make, how they read, and each mistake."""

import gc
import weakref

import kxsim
import numpy as np
import pytest
import scipy.stats
from kxsim import _describe, design
from kxsim.study import Study, draws, grid, target, values, zipped


class Frame:
    """As much of a data frame as a list of runs needs."""

    def __init__(self, **columns):
        self.columns = list(columns)
        self._columns = columns

    def __getitem__(self, name):
        return self._columns[name]


block = target(design.BlockParameter, Name="Kp", BlockPath="motor/pid")

STUDIES = {
    "grid": (grid(a=[1, 2], b=["x", "y"]), [(1, "x"), (2, "x"), (1, "y"), (2, "y")]),
    "zipped": (zipped(a=[1, 2], b=np.array([3, 4])), [(1, 3), (2, 4)]),
    "values": (values("a", range(3)), [(0,), (1,), (2,)]),
    "one zipped": (zipped(a=[1, 2]), [(1,), (2,)]),
    "keys": (grid({block: [1], "a b": [2]}, c=[3]), [(1, 2, 3)]),
    "rows": (grid([{"a": 1, "b": 2}, {"a": 3, "b": 4}], c=[5]), [(1, 2, 5), (3, 4, 5)]),
    "frame": (grid(Frame(a=[1, 3], b=[2, 4])), [(1, 2), (3, 4)]),
    "nested": (
        zipped(grid(a=[1, 2], b=[3]), values("c", [True, None])),
        [(1, 3, True), (2, 3, None)],
    ),
}


@pytest.mark.parametrize("study, rows", STUDIES.values(), ids=STUDIES)
def test_the_runs_are_those_asked_for(study, rows):
    assert len(study) == len(rows)
    assert [tuple(run.values()) for run in study] == rows
    assert len(study.runs) == len(study) and study.runs is study.runs
    assert tuple(study[-1].values()) == rows[-1] and study[:2] == [*study][:2]


def test_a_study_reads_as_a_tree_and_its_runs_as_a_table():
    norm = kxsim.distribution(scipy.stats.norm(2, scale=3))
    study = grid(
        zipped({block: [0.1, 0.2]}, Ki=[1, 2]),
        draws(3, R=kxsim.dist.Normal(1, 0.5), L=norm),
        n=range(9),
    )
    assert repr(study).splitlines() == [
        "grid: 54 runs",
        "├─ zipped: 2 runs",
        "│  ├─ motor/pid:Kp: 2 runs, 0.1, 0.2",
        "│  └─ Ki: 2 runs, 1, 2",
        "├─ draws: 3 runs",
        "│  ├─ R: Normal (Mean 1, StandardDeviation 0.5)",
        "│  └─ L: norm(2, scale=3)",
        "└─ n: 9 runs, 0, 1, 2, 3, ...",
    ]
    assert grid(a=[1, 2], b=["x"]).table(limit=1) == "run  a  b\n  1  1  x\n... 1 more"


def test_columns_of_numbers_are_arrays_and_all_others_lists():
    columns = grid(a=[1, 2], b=["x"], c=[True], d=[1.5]).columns()
    assert columns["b"] == ["x", "x"] and columns["c"] == [True, True]
    for name, numbers in {"a": [1, 2], "d": [1.5, 1.5]}.items():
        assert columns[name].dtype == np.float64 and columns[name].tolist() == numbers
    assert values("a", [7]).columns()["a"].tolist() == [7]


def test_columns_keep_targets_apart_and_runs_in_place(model):
    targets = [design.Variable(model, Name="a") for _ in range(2)]
    first = grid({targets[0]: [1, 2]}, {targets[1]: [3]}).build(model)
    assert {name: [*each] for name, each in first.columns().items()} == {
        "a": [1, 2],
        "a #2": [3, 3],
    }
    assert [*first] == [{"a": 1, "a #2": 3}, {"a": 2, "a #2": 3}]


def test_columns_keep_runs_in_place_where_these_differ(model):
    named = design.Variable(model, Name="a")
    for items in ([(1, named), (2, None), (3, named)], [(4, None)], [(5, named)]):
        run = design.Iteration(model)
        for value, of in items:
            run.ParameterSamples.append(
                design.ParameterSample(model, Value=value, ParameterType=of)
            )
    assert _describe.columns(model.elements(design.Iteration)) == {
        "a": [1, None, 5],
        "(no target)": [2, 4, None],
        "a #2": [3, None, None],
    }


def test_a_study_is_made_of_the_models_own_elements(model):
    gain = design.Variable(model, Name="gain")
    study = grid({gain: [1, 2]}, Study.of(design.ValueSetParameter(model, Values=[5])))
    assert study.model == model and isinstance(study.space, design.Exhaustive)
    assert study.space.ParameterSpaces[0].ParameterType == gain
    study.space.ParameterSpaces[0].Values = [7]
    assert len(study) == 1 and repr(study).splitlines()[1] == "├─ gain: 1 run, 7"
    other = zipped(a=[1], b=[2]).build(model)
    assert other.model == model
    with pytest.raises(ValueError, match="already"):
        other.build(model)


def test_draws_are_reproducible():
    def drawn(rng):
        sources = {"a": scipy.stats.norm, "b": kxsim.dist.Uniform(0, 1)}
        return [tuple(run.values()) for run in draws(5, sources, rng=rng)]

    assert drawn(3) == drawn(3) != drawn(4)
    assert drawn(np.random.default_rng(3)) == drawn(3)
    seeded = draws(2, a=scipy.stats.norm(), rng=3)
    assert [*grid(seeded)] == [*seeded]


twice = Frame(a=[1])
twice.columns *= 2

MISTAKES = [
    (lambda: grid(), ValueError, "at least one"),
    (lambda: grid(a=3), TypeError, "'a' are a list"),
    *(
        (lambda items=items: grid(a=items), TypeError, "'a' are a list")
        for items in ("xyz", {"x", "y"}, np.array(5.0), Frame(x=[1]), grid(b=[1]))
    ),
    (lambda: grid(zipped(a=[1], b=[1]), a=[2]), ValueError, "'a' is varied twice"),
    (lambda: grid(a=[], b=[1]), ValueError, "'a' has no values"),
    (lambda: grid(Frame(a=[], b=[])), ValueError, "'a' has no values"),
    (lambda: grid(twice), ValueError, "'a' is varied twice"),
    (lambda: grid({"": [1]}), ValueError, "needs a name"),
    (lambda: grid(a=[1])[1], IndexError, "out of range"),
    (lambda: grid({3: [1]}), TypeError, "a name or a target"),
    (lambda: grid([1, 2]), TypeError, "no study"),
    (lambda: grid([{"a": 1}, {"b": 1}]), ValueError, "row 1"),
    (lambda: len(zipped(a=[1], b=[1, 2])), ValueError, "a: 1 run, 1; b: 2 runs"),
    *(
        (lambda count=count: draws(count, a=1), ValueError, "positive integer")
        for count in (0, 1.5, True, None, "5", float("nan"), float("inf"))
    ),
    (lambda: draws(2), ValueError, "at least one distribution"),
    (lambda: len(draws(2, a=3, rng=1)), TypeError, "no distribution"),
    (lambda: len(draws(2, a=3)), kxsim.HostError, "RandomMethodNotFound"),
    (lambda: len(grid(a=np.ma.array([1, 2], mask=[0, 1]))), TypeError, "fill it first"),
    (lambda: len(grid(a=np.array(["2020"], "M8[ns]"))), TypeError, "datetime64"),
    (lambda: draws(2, [kxsim.dist.Uniform(0, 1)]), TypeError, "draws take mappings"),
    (lambda: target(design.Figure), TypeError, "ParameterType"),
    (lambda: target(design.BlockParameter, Nam="Kp"), TypeError, "did you mean 'Name'"),
    (lambda: grid(a=[1]).build(3), TypeError, "built in a model, not in 3"),
    (lambda: Study.of(3), TypeError, "parameter space"),
]


@pytest.mark.parametrize(("mistake", "error", "word"), MISTAKES)
def test_each_mistake_has_its_error(mistake, error, word):
    with pytest.raises(error, match=word):
        mistake()


def test_a_refused_study_leaves_the_model_as_it_was(model):
    with pytest.raises(kxsim.HostError) as caught:
        grid(draws(2, a=3), b=[1]).build(model)
    assert len(model) == 0 and caught.value.__notes__[-1] == "It was given for 'a'."
    with pytest.raises(TypeError) as caught:
        grid(a=[1j], b=[1]).build(model)
    assert len(model) == 0 and caught.value.__notes__ == ["It was given for 'a'."]


def test_a_refused_study_is_let_go_at_once(model):
    class Fair:
        def random(self):
            return 0.5

    fair = Fair()
    is_kept = weakref.ref(fair)
    gc.disable()
    try:
        with pytest.raises(kxsim.HostError) as caught:
            draws(2, a=fair, b=3).build(model)
        del caught, fair
        assert is_kept() is None
    finally:
        gc.enable()


def test_parts_keep_their_order_and_each_refusal_its_key(model):
    gain = design.Variable(model, Name="gain")
    study = zipped(
        {"a": [1, 2], block: [3, 4], gain: [5, 6]},
        grid(b=[7, 8]),
        draws(2, c=kxsim.dist.Uniform(0, 1)),
    )
    spaces = study.space.ParameterSpaces
    assert study.model == model and [*study[1]] == ["a", "motor/pid:Kp", "gain", "b", "c"]
    assert [type(space).__name__ for space in spaces[2:]] == [
        "ValueSetParameter",
        "Exhaustive",
        "RandomParameterSpace",
    ]
    with pytest.raises(ValueError, match="a: 2 runs, 1, 2; grid: 1 run"):
        zipped({"a": [1, 2]}, grid(b=[1])).build(model)
    elements = len(model)
    wrong = target(design.BlockParameter, Name=3)
    sources = {"a": kxsim.dist.Uniform(0, 1), "b": 3}
    for refused, key in [
        (grid(a=[1], b=[2, 1j], c=[1j]), "b"),
        (grid({"a": [1], wrong: [2]}), wrong),
        (grid({gain: [1]}, a=[{1: 2}]), "a"),
        (draws(2, sources), "b"),
        (draws(2, sources, rng=1), "b"),
    ]:
        with pytest.raises((TypeError, kxsim.HostError)) as caught:
            refused.build(model)
        assert caught.value.__notes__[-1] == f"It was given for {key!r}."
        assert "place" not in "".join(caught.value.__notes__) and len(model) == elements
        assert caught.value.__context__ is None
    other = kxsim.Model()
    with pytest.raises(kxsim.HostError, match="CrossModel") as caught:
        grid({gain: [1], design.Variable(other, Name="b"): [1]}).build(model)
    assert "b" in caught.value.__notes__[-1] and len(model) == elements


def test_runs_are_made_as_a_whole_or_not_at_all(model):
    class Tiring:
        left = 3

        def random(self):
            self.left -= 1
            if self.left < 0:
                raise RuntimeError("enough")
            return 1.0

    study = grid(draws(2, a=Tiring()), b=[1, 2]).build(model)
    elements, told = len(model), []
    subscription = model.observe(lambda changes: told.append(len(changes.created)))
    assert len(study.runs) == 4 and told == [len(model) - elements]
    subscription.end()
    again = Study.of(study.space)
    elements = len(model)
    with pytest.raises(kxsim.HostError) as caught:
        again.runs  # noqa: B018
    assert isinstance(caught.value.__cause__, RuntimeError) and len(model) == elements
