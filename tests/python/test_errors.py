"""What arrives when something goes wrong, and what it left behind."""

import kxsim
import pytest
from kxsim import design


def test_a_host_error_has_a_name_and_words(model):
    values = design.ValueSetParameter(model, Values=[1, 2])
    with pytest.raises(kxsim.HostError, match="cell array") as caught:
        values.Values = 3
    error = caught.value
    assert error.identifier == "Kxsim:Design:ValuesMustBeCellArray"
    assert (error.catalog, error.key) == ("Kxsim:Design", "ValuesMustBeCellArray")
    assert values.Values == [1, 2]


MISTAKES = [
    (lambda m: design.Variable(), kxsim.HostError, "CannotCreateWithoutModel"),
    (lambda m: design.Variable(3), kxsim.HostError, "CannotCreateWithoutModel"),
    (lambda m: design.Variable(m, Nam="x"), TypeError, "did you mean 'Name'"),
    (lambda m: design.Variable(m, Name=[]), kxsim.HostError, "Vexal:class:|mf0:messages:"),
    (lambda m: design.Variable(m, "no identity"), kxsim.HostError, "InvalidValue"),
    (lambda m: design.ParameterType(m), kxsim.HostError, "AbstractClass"),
    (lambda m: design.Variable(m, {"Nam": "x"}), kxsim.HostError, "mf0:messages:NoSuchProperty"),
    (lambda m: design.Figure(m, Type="Pie"), kxsim.HostError, "mf0:messages:NoSuchLiteral"),
    (lambda m: design.Exhaustive(m, NumIterations=3), kxsim.HostError, "SetReadOnlyProperty"),
    (lambda m: setattr(design.Variable(m), "Nam", 1), AttributeError, "Nam"),
    (lambda m: setattr(design.Exhaustive(m), "NumIterations", 1), AttributeError, "no setter"),
    (lambda m: setattr(design.Exhaustive(m), "ParameterSpaces", []), AttributeError, "live coll"),
    (lambda m: design.Exhaustive(m).ParameterSpaces["a"], TypeError, "as an integer"),
    (lambda m: design.Variable(m).destroy(1), TypeError, "takes 1 positional argument"),
    (lambda m: design.Exhaustive(m).ParameterSpaces.at(0, 1), kxsim.HostError, "TooManyArguments"),
    (lambda m: design.FigureType("Nope"), ValueError, "Nope"),
    (lambda m: kxsim.dist.Normal(0, StandardDev=1), TypeError, "Normal .* 'StandardDeviation'"),
    (lambda m: kxsim.dist.Normal(0), TypeError, r"Normal\(.* missing"),
    (lambda m: kxsim.dist.Normal(0, -1), kxsim.HostError, "InvalidDistribution"),
    (lambda m: design.RandomParameter(m, Distribution=3), kxsim.HostError, "RandomMethodNotFound"),
    (lambda m: kxsim.distribution(object()), TypeError, "random, rvs or sample"),
    (lambda m: m.observe(3), TypeError, "callable"),
    (lambda m: m.elements("nope"), kxsim.HostError, "NoSuchType"),
]


@pytest.mark.parametrize(("mistake", "error", "word"), MISTAKES)
def test_each_mistake_has_its_error_and_leaves_no_trace(model, mistake, error, word):
    with pytest.raises(error, match=word), model.transaction():
        mistake(model)
    assert len(model) == 0


def test_notes_say_in_words_of_python_what_the_host_expects(model):
    for mistake, note in (
        (lambda: design.Variable(model, Name=3), "text, a str"),
        (lambda: design.Variable(model, Name=3), "'Name'"),
        (lambda: design.Variable(), "model comes first"),
        (lambda: design.RandomParameter(model, Distribution=3), "'rvs' or 'sample'"),
    ):
        with pytest.raises(kxsim.HostError) as caught:
            mistake()
        assert note in " ".join(caught.value.__notes__)


def test_a_refused_value_leaves_no_element(model):
    with pytest.raises(kxsim.HostError):
        design.ValueSetParameter(model, Values=3)
    assert len(model) == 0


def test_a_destroyed_element_says_so(model):
    variable = design.Variable(model, Name="gain")
    variable.destroy()
    with pytest.raises(kxsim.HostError) as caught:
        _ = variable.Name
    assert caught.value.identifier == "Vexal:class:InvalidHandle"
    assert not variable.is_valid and "no longer valid" in repr(variable)


class Faulty:
    def __init__(self, error):
        self.error = error

    def random(self):
        raise self.error


def draw(model, source):
    parameter = design.RandomParameter(model, Distribution=source)
    return design.RandomParameterSpace(
        model, NumSamples=1, Parameters=[parameter]
    ).createIterations()


def test_what_python_raises_inside_a_host_call_is_the_cause(model):
    fault = ZeroDivisionError("no draw today")
    with pytest.raises(kxsim.HostError, match="no draw today") as caught:
        draw(model, Faulty(fault))
    assert caught.value.__cause__ is fault


def test_an_interrupt_inside_a_host_call_stays_one(model):
    with pytest.raises(KeyboardInterrupt):
        draw(model, Faulty(KeyboardInterrupt()))


def test_an_observers_exception_reaches_the_committer_and_the_change_stays(model):
    variable = design.Variable(model)
    told = []

    @model.observe
    def faulty(changes):
        raise LookupError("in an observer")

    with model.observe(told.append), pytest.raises(kxsim.HostError) as caught:
        variable.Name = "Kp"
    assert isinstance(caught.value.__cause__, LookupError)
    assert variable.Name == "Kp" and len(told) == 1
    faulty.end()
    variable.Name = "Ki"
