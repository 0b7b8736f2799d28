"""Values on their way to the host and back."""

import array
import math
import uuid

import kxsim
import numpy as np
import pytest
from hypothesis import given
from hypothesis import strategies as st
from hypothesis.extra import numpy as arrays
from kxsim import _host, design

round_trip = _host.round_trip

# What comes back as it went: numbers are doubles, empty text and lists are themselves.
plain = st.recursive(
    st.none() | st.booleans() | st.floats(allow_nan=False) | st.text(),
    lambda inner: st.lists(inner) | st.dictionaries(st.text(min_size=1), inner),
    max_leaves=20,
)


@given(plain)
def test_plain_values_come_back_equal_and_of_their_type(value):
    back = round_trip(value)
    assert back == value and type(back) is type(value)


@given(
    arrays.arrays(
        st.sampled_from([np.float64, np.float32, np.bool_, np.int8, np.uint32, np.float16, ">f8"]),
        arrays.array_shapes(min_dims=2, max_dims=4, min_side=0, max_side=4),
    ),
    st.data(),
)
def test_arrays_of_any_layout_come_back_equal(value, data):
    axes = data.draw(st.permutations(range(value.ndim)))
    steps = data.draw(st.tuples(*[st.sampled_from([1, -1, 2])] * value.ndim))
    strided = value.transpose(axes)[tuple(slice(None, None, step) for step in steps)]
    back = round_trip(strided)
    if back is None:  # the host's nothing
        assert strided.shape[:2] == (0, 0)
        return
    expected = strided.astype(np.bool_ if value.dtype.kind == "b" else np.float64)
    assert np.asarray(back).dtype == expected.dtype
    np.testing.assert_array_equal(back, as_seen_by_host(expected))


def as_seen_by_host(given):
    """Without trailing extents of one; a row is a vector, one element a number."""
    while given.ndim > 2 and given.shape[-1] == 1:
        given = given[..., 0]
    if given.size == 1:
        return given.reshape(())
    return given[0] if given.ndim == 2 and given.shape[0] == 1 else given


@pytest.mark.parametrize(
    ("value", "back"),
    [
        ((1, (2,)), [1.0, [2.0]]),
        (np.arange(3), np.arange(3.0)),
        (np.float32(0.5), 0.5),
        (np.bool_(True), True),
        (np.array(7), 7.0),
        (array.array("i", [1, 2]), np.array([1.0, 2.0])),
        (np.array(["a", "bc"]), ["a", "bc"]),
        ("\ud800", "\ud800"),
        ("\u20ac\U0001f600a\U0010ffff", "\u20ac\U0001f600a\U0010ffff"),
        (uuid.UUID(int=5), str(uuid.UUID(int=5))),
        (math.inf, math.inf),
        (2**53, 2.0**53),
    ],
)
def test_other_values_come_back_as_their_nearest(value, back):
    assert type(round_trip(value)) is type(back)
    np.testing.assert_equal(round_trip(value), back)


def test_grids_of_objects_are_cell_arrays_and_back():
    grid = np.array([[1.0, "x"], [None, 2.0]], dtype=object)
    grid[0, 1] = [1.0, [2.0]]
    back = round_trip(grid)
    assert back.shape == (2, 2) and back.tolist() == grid.tolist()


class Opaque:
    pass


def test_any_other_object_is_kept_as_it_is():
    thing = Opaque()
    assert round_trip([thing, len])[0] is thing
    assert round_trip([thing, len])[1] is len


itself = []
itself.append(itself)


@pytest.mark.parametrize(
    ("value", "error", "word"),
    [
        (2**53 + 1, OverflowError, "9007199254740993"),
        (10**400, OverflowError, "too large"),
        (np.array([2**60]), OverflowError, "2**53"),
        (np.array([2**53 + 1]), OverflowError, "2**53"),
        (np.array([[-(2**53) - 1]]), OverflowError, "2**53"),
        (np.ma.array([1.0, 2.0], mask=[False, True]), TypeError, "MaskedArray of float64"),
        (1j, TypeError, "complex"),
        (b"x", TypeError, "bytes"),
        ({1}, TypeError, "make it a list"),
        ([{1: 2}], TypeError, "named by str"),
        ({"": 2}, Exception, "InvalidFieldName"),
        (np.array([1j]), TypeError, "complex128"),
        (np.datetime64("2020-01-01"), TypeError, "datetime64"),
        (itself, RecursionError, "recursion"),
    ],
)
def test_what_has_no_counterpart_is_refused_in_words(value, error, word):
    with pytest.raises(error, match=word.replace("*", r"\*")):
        round_trip(value)


def test_arrays_are_read_without_a_copy_and_cannot_be_written(model):
    given = np.asfortranarray(np.arange(6.0).reshape(2, 3))
    sample = design.ParameterSample(model, Value=given)
    given[0, 0] = 99  # the model has its own
    first, second = sample.Value, sample.Value
    assert first[0, 0] == 0 and first.flags.f_contiguous
    assert np.shares_memory(first, second)
    with pytest.raises(ValueError, match="read-only"):
        first[0, 0] = 1


def test_enumerations_are_python_enums(model):
    figure = design.Figure(model, Type="SurfPlot")
    assert figure.Type is design.FigureType.SurfPlot is design.FigureType("SurfPlot")
    figure.Type = design.FigureType.Histogram
    assert figure.Type.name == "Histogram" and figure.Type.value == 3
    assert round_trip([design.FigureType.Histogram]) == [figure.Type]
    figure.Type = None
    assert figure.Type is None  # the model holds a number that is no member


def test_a_simulation_state_passes_where_the_host_asks_for_one(model):
    class Thermal(kxsim.SimState):
        pass

    state = Thermal({"air": 20.0})
    target = design.InitialState(model, SimState=state)
    assert target.SimState is state
    with pytest.raises(kxsim.HostError) as refused:
        target.SimState = {"air": 20.0}
    assert refused.value.key == "InvalidSimState" and target.SimState is state
