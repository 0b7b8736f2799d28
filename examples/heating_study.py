"""How a room is best heated through a winter's day.

    kxsim explain examples/heating_study.py
    kxsim run examples/heating_study.py -o build/heating.csv

What varies is no single number: the day is an external input of 24 outside temperatures, the
control a name, and the state that the day begins with a pair of temperatures.
"""

import numpy as np
from kxsim import design
from kxsim.figures import Figures, data
from kxsim.study import grid, target, zipped
from scipy.signal import cont2discrete

HOURS = np.arange(24)
CLEAR_FROST = -6 - 5 * np.cos((HOURS - 3) * np.pi / 12)  # outside, degrees Celsius
MILD_RAIN = 6 - 1.5 * np.cos((HOURS - 3) * np.pi / 12)

AIR, WALL = 4e6, 20e6  # heat capacities, J/K
TO_WALL, TO_OUTSIDE = 250.0, 45.0  # conductances from the air to the wall and further, W/K
POWER = 3000.0  # of the heater, W
WANTED = 20.0  # by day, from 6 to 22 h, degrees Celsius
STEP = 60.0  # between two decisions of the control, s

study = grid(
    {"control": ["two-point", "proportional", "night setback"]},
    zipped(
        {"day": ["clear frost", "mild rain"]},
        {target(design.ExternalInput): [CLEAR_FROST, MILD_RAIN]},
    ),
    {target(design.InitialState): [[20.0, 15.0], [12.0, 9.0]]},  # air and wall, degrees Celsius
)

# The room over one step: the next state is NEXT @ state + INPUT @ (heating, outside temperature).
NEXT, INPUT, *_ = cont2discrete(
    (
        np.array([[-TO_WALL, TO_WALL], [TO_WALL, -TO_WALL - TO_OUTSIDE]]) / [[AIR], [WALL]],
        np.array([[1 / AIR, 0.0], [0.0, TO_OUTSIDE / WALL]]),
        np.eye(2),
        np.zeros((2, 2)),
    ),
    STEP,
)


def heating(control, hour, air, was_on):
    """What the control makes of the air's temperature, W."""
    by_day = 6 <= hour < 22
    if control == "two-point":
        return POWER if air < WANTED - 0.5 or (was_on and air < WANTED + 0.5) else 0.0
    wanted = WANTED if by_day or control == "proportional" else WANTED - 4
    return POWER * min(max((wanted + 0.5 - air) / 1.5, 0.0), 1.0)


def simulate(run):
    hours = np.arange(0, 24, STEP / 3600)
    outside = np.interp(hours, HOURS, run["ExternalInput"], period=24)
    states, powers = [np.array(run["InitialState"])], [0.0]
    for hour, temperature in zip(hours, outside, strict=True):
        powers.append(heating(run["control"], hour, states[-1][0], powers[-1] > 0))
        states.append(NEXT @ states[-1] + INPUT @ (powers[-1], temperature))
    air = np.array(states)[1:, 0]
    by_day = (hours >= 6) & (hours < 22)
    return {
        "energy": sum(powers) * STEP / 3.6e6,  # kWh
        "discomfort": np.maximum(WANTED - 0.5 - air, 0)[by_day].sum() * STEP / 3600,  # K h
        "hour": hours[::5],
        "air": air[::5],
    }


def figures(results):
    pictures = Figures(results)
    pictures.scatter(
        x=data("hour", reduce="Trace"),
        y=data("air", reduce="Trace", label="air (°C)"),
        c=data("energy", label="energy (kWh)"),
        Title="The room through the day",
    )
    pictures.scatter(
        x="control",
        y=data("energy", label="energy (kWh)"),
        c=data("discomfort", label="discomfort (K h)"),
        YGrid=True,
        Title="What comfort costs",
    )
    return pictures
