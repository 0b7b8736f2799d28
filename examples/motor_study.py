"""Which gains of a PI speed controller suit a DC motor, whatever it drives?

    python examples/motor_study.py --help
    kxsim explain examples/motor_study.py

A full factorial of the proportional and the integral gain, of three plants (inertia and friction in
pairs), and of randomly drawn conditions: the winding's resistance, from cold to hot, and a load
torque that comes at some time. All gains meet the same conditions, so that they compare. SI units
throughout.
"""

import argparse
from pathlib import Path

import kxsim
import numpy as np
import pandas as pd
from kxsim.figures import Figures, data
from kxsim.study import draws, grid, zipped
from scipy.integrate import solve_ivp

SUPPLY = 24.0  # the drive's voltage limit, both ways, V
INDUCTANCE = 0.35e-3  # of the armature, H
CONSTANT = 0.042  # torque and back-EMF, N m/A and V s/rad
SET_SPEED = 200.0  # from 0 s on, rad/s
SETTLING_BAND = 0.02  # share of the set speed
END_TIME = 1.5  # s
TIMES = np.linspace(0.0, END_TIME, 3001)  # at which the response is looked at, s

# What a good drive keeps to: %, s, rad/s, J.
REQUIREMENTS = {"overshoot": 10.0, "settling": 0.3, "dip": 15.0, "heat": 45.0}


def build_study(samples=8):
    return grid(
        {"Kp": np.linspace(0.04, 0.24, 6).round(3)},  # V s/rad
        {"Ki": np.linspace(0.5, 3.0, 6)},  # V/rad
        zipped(J=[1e-4, 2e-4, 4e-4], b=[2e-5, 3e-5, 5e-5]),  # kg m^2, N m s/rad
        draws(
            samples,
            R=kxsim.dist.Uniform(0.55, 0.75),  # ohm
            load=kxsim.dist.TruncatedNormal(0.10, 0.05, 0.0, 0.20),  # N m
            load_time=kxsim.dist.Uniform(0.7, 0.9),  # s
        ),
    )


def rates(time, state, run, torque):
    """The closed loop under one load; the two integrals of the judgement ride along as states.

    Motor: L di/dt = u - R i - K w and J dw/dt = K i - b w - T (Franklin, Powell, Emami-Naeini,
    "Feedback Control of Dynamic Systems", chapter 2). Controller: u = sat(v), v = Kp e + z,
    dz/dt = Ki e + (u - v) Ki / Kp, where the last term keeps the integrator from winding up in
    saturation (back-calculation; Astrom, Hagglund, "Advanced PID Control", chapter 3).
    """
    current, speed, integrator, _, _ = state
    error = SET_SPEED - speed
    commanded = run["Kp"] * error + integrator
    applied = min(max(commanded, -SUPPLY), SUPPLY)
    return (
        (applied - run["R"] * current - CONSTANT * speed) / INDUCTANCE,
        (CONSTANT * current - run["b"] * speed - torque) / run["J"],
        run["Ki"] * error + (applied - commanded) * run["Ki"] / run["Kp"],
        error * error,
        run["R"] * current * current,
    )


def integrate(run):
    """The states at TIMES, one column each; no step goes across the jump of the load."""
    parts, state = [], np.zeros(5)
    load_time = run["load_time"]
    for begin, end, torque in ((0.0, load_time, 0.0), (load_time, END_TIME, run["load"])):
        times = TIMES[(begin <= TIMES) & (end > TIMES)]
        solution = solve_ivp(
            rates,
            (begin, end),
            state,
            "LSODA",
            np.append(times, end),
            args=(run, torque),
            rtol=1e-6,
            atol=1e-6,
        )
        if not solution.success:
            raise RuntimeError(solution.message)
        parts.append(solution.y[:, :-1])
        state = solution.y[:, -1]
    return np.column_stack([*parts, state])


def simulate(run):
    current, speed, _, ise, heat = integrate(run)
    before, after = run["load_time"] >= TIMES, run["load_time"] < TIMES
    error = SET_SPEED - speed
    outside = np.flatnonzero(before & (abs(error) > SETTLING_BAND * SET_SPEED))
    settles = outside[-1] + 1 < np.count_nonzero(before)
    judged = {
        "overshoot": max(0.0, 100 * -error[before].min() / SET_SPEED),  # %
        "settling": TIMES[outside[-1] + 1] if settles else run["load_time"],  # s
        "dip": max(0.0, error[after].max()),  # rad/s
        "heat": heat[-1],  # J
    }
    return {
        **judged,
        "settles": settles,
        "end_error": error[-1],  # rad/s
        "ise": ise[-1],  # rad^2/s
        "peak": abs(current).max(),  # A
        # The largest of what is required, as a share of what is allowed: 1 or less meets all (goal
        # attainment: Gembicki, Haimes, IEEE Trans. Automat. Control 20, 1975).
        "cost": max(judged[name] / REQUIREMENTS[name] for name in judged),
        "time": TIMES[::4],
        "speed": speed[::4],
    }


kxsim.seed(1)
study = build_study()


def rank(results):
    """The gains, best first: in how many runs they meet all requirements, and the worst of each."""
    runs = results.to_pandas()
    judged = [*REQUIREMENTS, "ise", "peak", "cost"]
    runs[judged] = runs[judged].where(runs["state"] == "finished", np.inf)
    gains = runs.assign(met=runs["cost"] <= 1).groupby(["Kp", "Ki"])
    ranking = gains[judged].max()
    ranking.insert(0, "meet all", gains["met"].sum())
    return ranking.sort_values("cost")


def worst_costs(plot):
    """A custom plot: the worst cost of each pair of gains."""
    columns = pd.DataFrame({name: plot.column(name) for name in ("Kp", "Ki", "cost")})
    worst = columns.pivot_table("cost", "Kp", "Ki", "max")
    axes = plot.figure.add_subplot()
    axes.imshow(worst, origin="lower", aspect="auto", cmap="viridis_r", vmin=0, vmax=3)
    for (row, column), cost in np.ndenumerate(worst.to_numpy()):
        light = "white" if cost > 1.5 else "black"
        axes.text(column, row, f"{cost:.2f}", ha="center", va="center", color=light)
    axes.set_xticks(range(len(worst.columns)), [f"{ki:g}" for ki in worst.columns])
    axes.set_yticks(range(len(worst.index)), [f"{kp:g}" for kp in worst.index])
    axes.set(xlabel="Ki (V/rad)", ylabel="Kp (V s/rad)")


def figures(results):
    """Every response with those of the best gains selected, the costs, and the trade-off."""
    pictures = Figures(results)
    pictures.scatter(
        x=data("time", reduce="Trace", label="time (s)"),
        y=data("speed", reduce="Trace", label="speed (rad/s)"),
        c=data("J", label="inertia (kg m²)"),
        Title="Every response; the best gains stand out",
        ColorMap="copper",
    )
    pictures.custom(worst_costs, Title="Worst cost over the gains; 1 or less meets all")
    pictures.scatter(
        x=data("settling", label="settling time (s)"),
        y=data("overshoot", label="overshoot (%)"),
        c="cost",
        Title="Every run by settling time and overshoot",
        ColorMap="viridis_r",
    )
    best = rank(results).index[0]
    gains = zip(results.inputs["Kp"], results.inputs["Ki"], strict=True)
    pictures.select([k for k, each in enumerate(gains, 1) if each == best])
    return pictures


def positive(text):
    if not text.isdecimal() or int(text) < 1:
        raise argparse.ArgumentTypeError(f"must be a positive whole number, not {text!r}")
    return int(text)


def read_options():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    option = parser.add_argument
    option("--samples", type=positive, default=8, help="random conditions a plant (%(default)s)")
    option("--seed", type=positive, default=1, help="same seed, same results (%(default)s)")
    option("--workers", type=positive, help="processes that simulate (one per processor)")
    option("--top", type=positive, default=8, help="lines of the table (%(default)s)")
    option(
        "-o",
        "--output",
        type=Path,
        default=Path("build/motor_study.csv"),
        help="CSV file to write, a row per run (%(default)s)",
    )
    option(
        "--pictures",
        type=Path,
        default=Path("build/pictures"),
        help="folder for the pictures (%(default)s)",
    )
    return parser.parse_args()


def report(ranking, runs, top):
    (kp, ki), best = ranking.index[0], ranking.iloc[0]
    print(
        f"Best: Kp = {kp:g} V s/rad, Ki = {ki:g} V/rad, which meet all requirements in "
        f"{best['meet all']:.0f} of {runs} runs\n\n"
        "Best gains; the worst of their runs in each respect"
    )
    shown = ranking.head(top).reset_index()
    print(shown.to_string(index=False, float_format="{:.4g}".format))


def main():
    options = read_options()
    kxsim.seed(options.seed)
    study = build_study(options.samples)
    print(f"{__doc__.splitlines()[0]}\n\n{study}\n")
    results = study.run(simulate, workers=options.workers)
    print(f"{results}\n")
    ranking = rank(results)
    report(ranking, len(results) // len(ranking), options.top)
    options.output.parent.mkdir(parents=True, exist_ok=True)
    results.to_csv(options.output)
    print(f"\nWrote {options.output}, a row for each of the {len(results)} runs")
    for path in figures(results).save(options.pictures):
        print(f"Wrote {path}")


if __name__ == "__main__":
    main()
