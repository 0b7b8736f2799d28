"""How far the cut-off frequency of a low-pass filter strays with the tolerances of its parts.

    kxsim explain examples/tolerance_study.py
    kxsim run examples/tolerance_study.py -o build/tolerance.csv

Two nominal designs with the same cut-off, each with 500 random pairs of relative errors: one
percent resistors and five percent capacitors, within their bounds. The same seed gives the same
study.
"""

import math

import kxsim
from kxsim.figures import Figures
from kxsim.study import draws, grid, zipped

kxsim.seed(1)

nominal = zipped(resistance=[1e3, 10e3], capacitance=[159e-9, 15.9e-9])  # ohm, farad
tolerances = draws(
    500,
    resistance_error=kxsim.dist.TruncatedNormal(0, 0.005, -0.01, 0.01),
    capacitance_error=kxsim.dist.Uniform(-0.05, 0.05),
)
study = grid(nominal, tolerances)


def simulate(run):
    resistance = run["resistance"] * (1 + run["resistance_error"])
    capacitance = run["capacitance"] * (1 + run["capacitance_error"])
    cut_off = 1 / (2 * math.pi * resistance * capacitance)
    return {"cut_off": cut_off, "attenuation_at_1_kHz": 1 / math.hypot(1, 1e3 / cut_off)}


def figures(results):
    pictures = Figures(results)
    pictures.histogram("cut_off", XLabel="cut-off (Hz)", Title="A thousand filters")
    pictures.scatter(
        x="resistance_error",
        y="cut_off",
        c="capacitance_error",
        YLabel="cut-off (Hz)",
        Title="The capacitor decides",
    )
    return pictures


if __name__ == "__main__":
    results = study.run(simulate)
    cut_off = results.columns()["cut_off"]
    print(results)
    print(f"cut-off {cut_off.mean():.1f} Hz, {cut_off.min():.1f} to {cut_off.max():.1f} Hz")
