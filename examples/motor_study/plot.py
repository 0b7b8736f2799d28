"""Draws the motor study from its two files: responses, cost over the gains, and the trade-off.

motor_study --output runs.csv --responses responses.csv
python plot.py runs.csv responses.csv motor_study.png
"""

import argparse
import csv
from collections import defaultdict
from pathlib import Path

import matplotlib

matplotlib.use("agg")
import matplotlib.pyplot as plt  # noqa: E402  (the backend comes first)

SET_SPEED = 200.0  # rad/s
BAND = 0.02
INK, ACCENT, MUTED = "#24292f", "#d1495b", "#8c959f"
BLUES = "#9ecae1", "#4292c6", "#08519c"  # light to heavy plants
COSTS = {"cmap": "viridis_r", "vmin": 0.0, "vmax": 3.0}


def read(path):
    """The rows of a CSV file, numbers as floats, empty fields as None."""

    def parse(text):
        try:
            return float(text) if text else None
        except ValueError:
            return text

    with Path(path).open() as file:
        return [{key: parse(text) for key, text in row.items()} for row in csv.DictReader(file)]


def worst_costs(runs):
    """The worst cost by (Kp, Ki)."""
    worst = defaultdict(float)
    for run in runs:
        key = run["kp_V_s_per_rad"], run["ki_V_per_rad"]
        cost = run["cost"]
        worst[key] = max(worst[key], float("inf") if cost is None else cost)
    return worst


def draw_responses(axes, responses, runs, best):
    traces = defaultdict(lambda: ([], []))
    for row in responses:
        times, speeds = traces[row["run"]]
        times.append(row["time_s"])
        speeds.append(row["speed_rad_per_s"])
    inertias = {run["run"]: run["inertia_kg_m2"] for run in runs}
    shades = dict(zip(sorted(set(inertias.values())), BLUES, strict=True))
    axes.axhspan(SET_SPEED * (1 - BAND), SET_SPEED * (1 + BAND), color="#eaeef2", lw=0)
    for run, (times, speeds) in sorted(traces.items(), key=lambda item: -inertias[item[0]]):
        axes.plot(times[::2], speeds[::2], color=shades[inertias[run]], lw=0.7)
    for inertia, shade in shades.items():
        axes.plot([], [], color=shade, label=f"J = {inertia * 1e4:g} kg cm²")
    axes.set(xlim=(0, 1.5), ylim=(0, 225), xlabel="time (s)", ylabel="speed (rad/s)")
    gains = f"Kp = {best[0]:g} V s/rad, Ki = {best[1]:g} V/rad"
    axes.set_title(f"The best gains with every plant, load and temperature\n{gains}")
    axes.legend(loc="lower right", frameon=False)


def draw_costs(axes, costs, best):
    kps = sorted({kp for kp, _ in costs})
    kis = sorted({ki for _, ki in costs})
    grid = [[costs[kp, ki] for ki in kis] for kp in kps]
    axes.imshow(grid, origin="lower", aspect="auto", **COSTS)
    for row, line in enumerate(grid):
        for column, cost in enumerate(line):
            dark = cost > COSTS["vmax"] / 2
            is_best = (kps[row], kis[column]) == best
            axes.text(
                column,
                row,
                f"{cost:.2f}",
                ha="center",
                va="center",
                fontsize=8,
                color="white" if dark else INK,
                weight="bold" if is_best else "normal",
            )
    x, y = kis.index(best[1]), kps.index(best[0])
    axes.add_patch(plt.Rectangle((x - 0.5, y - 0.5), 1, 1, fill=False, ec=ACCENT, lw=2))
    axes.set_xticks(range(len(kis)), [f"{ki:g}" for ki in kis])
    axes.set_yticks(range(len(kps)), [f"{kp:g}" for kp in kps])
    axes.set(xlabel="Ki (V/rad)", ylabel="Kp (V s/rad)")
    axes.set_title("Worst cost over the gains\n1 or less meets all requirements")


def draw_trade_off(axes, runs, best):
    settled = [run for run in runs if run["state"] == "settled"]
    of_best = [run for run in settled if (run["kp_V_s_per_rad"], run["ki_V_per_rad"]) == best]

    def scatter(chosen, **look):
        return axes.scatter(
            [1e3 * run["settling_time_s"] for run in chosen],
            [run["overshoot_percent"] for run in chosen],
            **look,
        )

    points = scatter(settled, c=[run["cost"] for run in settled], s=9, lw=0, **COSTS)
    scatter(of_best, s=26, facecolors="none", edgecolors=ACCENT, lw=1.0, label="best gains")
    axes.set(xlabel="settling time (ms)", ylabel="overshoot (%)", xlim=(0, None))
    axes.set_title(f"Every run that settled\n{len(settled)} of {len(runs)}")
    axes.legend(loc="upper left", frameon=False)
    return points


def main():
    parser = argparse.ArgumentParser(description=__doc__.splitlines()[0])
    parser.add_argument("runs", help="what motor_study wrote to --output")
    parser.add_argument("responses", help="what it wrote to --responses")
    parser.add_argument("picture", help="the PNG file to draw")
    arguments = parser.parse_args()

    runs = read(arguments.runs)
    costs = worst_costs(runs)
    best = min(costs, key=costs.get)
    plt.rcParams.update(
        {
            "font.size": 9,
            "axes.titlesize": 10,
            "axes.edgecolor": MUTED,
            "axes.labelcolor": INK,
            "text.color": INK,
            "xtick.color": INK,
            "ytick.color": INK,
        }
    )
    figure, (left, middle, right) = plt.subplots(
        1, 3, figsize=(13, 4), layout="constrained", width_ratios=(1.25, 1, 1)
    )
    draw_responses(left, read(arguments.responses), runs, best)
    draw_costs(middle, costs, best)
    points = draw_trade_off(right, runs, best)
    figure.colorbar(points, ax=right, label="cost")
    for axes in (left, right):
        axes.spines[["top", "right"]].set_visible(False)
    figure.savefig(arguments.picture, dpi=130)


if __name__ == "__main__":
    main()
