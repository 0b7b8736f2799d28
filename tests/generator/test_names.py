"""Spellings, and the identities that must stay what they are for all time."""

import pytest
from schemas import REAL_SCHEMAS

from generator import names
from generator.build import build


@pytest.mark.parametrize(
    ("name", "accessor", "file"),
    [
        ("SimulationRun", "simulationRun", "simulation_run"),
        ("ETA", "eTA", "eta"),
        ("value", "value", "value"),
        ("XLimMode", "xLimMode", "x_lim_mode"),
        ("HTTPLog2Disk", "hTTPLog2Disk", "http_log2_disk"),
    ],
)
def test_a_name_has_one_spelling_for_each_use(name, accessor, file):
    assert names.lower_camel(name) == accessor
    assert names.snake(name) == file
    assert names.upper_camel(accessor)[1:] == name[1:]


@pytest.mark.parametrize(
    ("name", "identity"),
    [
        ("kinetra.simmanager.mm.Job", "bc026d1f-d252-355b-91a0-5b51270c43f5"),
        ("kinetra.simmanager.mm.SimulationRun.ETA", "8a441c09-aa6c-3b2d-8113-ea538b19a719"),
        ("kxsim.design.FigureType", "74d410bd-cb8f-34f7-b302-934a1377b101"),
        (
            "kxsim.design.ParameterSpace.createIterations",
            "12840c42-2ea0-31ac-8e8c-e0cb7b1809c3",
        ),
    ],
)
def test_identities_never_change(name, identity):
    assert str(names.identity(name)) == identity


def test_identities_are_of_version_3_and_all_different():
    module = build(REAL_SCHEMAS)
    items = [*module.classes, *module.enums]
    items += [member for cls in module.classes for member in [*cls.properties, *cls.operations]]
    items += [literal for enum in module.enums for literal in enum.literals]
    identities = [item.identity for item in items]
    assert len(set(identities)) == len(identities)
    assert {identity.version for identity in identities} == {3}
