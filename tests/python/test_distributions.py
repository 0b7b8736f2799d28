"""Python objects as distributions: what counts as one, and which generator they draw from."""

import inspect

import kxsim
import numpy as np
import pytest
import scipy.stats
from kxsim import design


def draws(model, sources, runs=3):
    parameters = [design.RandomParameter(model, Distribution=source) for source in sources]
    space = design.RandomParameterSpace(model, NumSamples=runs, Parameters=parameters)
    return [[sample.Value for sample in run.ParameterSamples] for run in space.createIterations()]


class Counting:
    def __init__(self):
        self.drawn = 0

    def random(self):
        self.drawn += 1
        return self.drawn


class Rvs:
    def rvs(self, random_state):
        return random_state.normal(size=1)


class Texts:
    def random(self):
        return "abc"


def test_draws_come_run_by_run_and_within_a_run_parameter_by_parameter(model):
    source = Counting()
    assert draws(model, [source, source]) == [[1, 2], [3, 4], [5, 6]]
    assert draws(model, [Texts()], 1) == [["abc"]]


SOURCES = [
    lambda: scipy.stats.norm(2, 1),
    lambda: scipy.stats.norm,
    lambda: scipy.stats.Normal(mu=2.0, sigma=1.0),
    lambda: scipy.stats.randint(0, 10),
    Rvs,
    lambda: kxsim.dist.Normal(2, 1),
]


@pytest.mark.parametrize("make", SOURCES)
def test_the_seed_determines_the_study_and_nothing_global_is_touched(model, make):
    state = np.random.get_state()[1].tolist()
    kxsim.seed(7)
    first = draws(model, [make()])
    kxsim.seed(7)
    assert draws(model, [make()]) == first != draws(model, [make()])
    assert all(isinstance(value, float) for row in first for value in row)
    assert np.random.get_state()[1].tolist() == state


@pytest.mark.parametrize("make", SOURCES)
def test_a_generator_of_its_own_is_independent_of_the_seed(model, make):
    kxsim.seed(1)
    first = draws(model, [kxsim.distribution(make(), rng=5)])
    again = draws(model, [kxsim.distribution(make(), rng=np.random.default_rng(5))])
    assert first == again


def test_the_hosts_distributions_take_parameters_by_name_and_plain_lists():
    for cls, words in {
        kxsim.dist.Uniform: {"Lower": 1, "Upper": 2},
        kxsim.dist.TruncatedNormal: {"Mean": 1, "StandardDeviation": 2, "Lower": 0, "Upper": 3},
        kxsim.dist.Choice: {"Values": ["a", 1], "Weights": [0, 1]},
    }.items():
        made = cls(**words)
        assert list(inspect.signature(cls).parameters) == list(words)
        assert all(np.all(getattr(made, name) == value) for name, value in words.items())
    assert made.random() == 1 and kxsim.dist.Choice([5]).random() == 5
    for mistake in (dict(Low=0, Upper=1), dict(Lower=0), dict(Lower=0, Upper=1, Mode=0)):
        with pytest.raises(TypeError, match="Uniform.*(Low|Upper|Mode)"):
            kxsim.dist.Uniform(**mistake)


def test_a_generator_of_its_own_leaves_the_hosts_as_it_was():
    def next_after(action):
        kxsim.seed(3)
        action()
        return kxsim.dist.Uniform(0, 1).random()

    source = kxsim.distribution(kxsim.dist.Uniform(0, 1), rng=5)
    assert next_after(source.random) == next_after(lambda: None)


@pytest.mark.parametrize(
    ("value", "error"), [(-1, ValueError), (2**64, ValueError), (1.5, TypeError), ("1", TypeError)]
)
def test_a_seed_is_an_integer_of_64_bits(value, error):
    with pytest.raises(error):
        kxsim.seed(value)
