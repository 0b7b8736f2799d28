"""The example studies as a user meets them: what they print, write and refuse.

The folder of their binaries comes in KXSIM_EXAMPLES; ctest sets it.
"""

import csv
import os
import subprocess
from pathlib import Path

import pytest

BINARIES = os.environ.get("KXSIM_EXAMPLES")
pytestmark = pytest.mark.skipif(not BINARIES, reason="KXSIM_EXAMPLES names no folder")

INPUTS = {
    "kp": "kp_V_s_per_rad",
    "ki": "ki_V_per_rad",
    "inertia": "inertia_kg_m2",
    "friction": "friction_N_m_s_per_rad",
    "resistance": "resistance_ohm",
    "load": "load_torque_N_m",
    "load_time": "load_time_s",
}


def run(name, *options, cwd=None):
    return subprocess.run(
        [Path(BINARIES) / name, *options], cwd=cwd, capture_output=True, text=True, timeout=120
    )


def study(folder, *options):
    """The rows of a quiet motor study, and the file's bytes."""
    file = folder / "runs.csv"
    done = run("motor_study", "--quiet", "--output", file, *options)
    assert (done.returncode, done.stdout, done.stderr) == (0, "", "")
    with file.open() as text:
        return list(csv.DictReader(text)), file.read_bytes()


def test_the_first_study_prints_every_combination():
    lines = run("first_study").stdout.splitlines()
    pairs = {(kp, ki) for kp in ("0.1", "0.2", "0.4") for ki in ("1", "2")}
    assert lines[0] == "6 runs"
    assert {tuple(line.split()[2::3]) for line in lines[1:]} == pairs
    assert len(lines) == 7


def test_the_motor_study_reports_where_it_stands_and_what_it_found(tmp_path):
    done = run("motor_study", "--samples", "2", "--top", "3", cwd=tmp_path)
    assert done.returncode == 0
    for words in ("216 runs", "Best: Kp = ", "Best gains", "Best runs", "Wrote motor_study.csv"):
        assert words in done.stdout
    ends = [int(line.split()[2]) for line in done.stderr.splitlines()]
    assert ends == sorted(ends) and ends[-1] == 216
    assert len((tmp_path / "motor_study.csv").read_text().splitlines()) == 217


def test_a_study_is_decided_by_its_seed_alone(tmp_path):
    options = ("--kp", "0.1:0.2:2", "--ki", "2", "--samples", "3")
    _, once = study(tmp_path, *options, "--workers", "1")
    assert study(tmp_path, *options, "--workers", "4")[1] == once
    assert study(tmp_path, *options, "--seed", "2")[1] != once


def test_every_gain_meets_every_plant_under_the_same_conditions(tmp_path):
    rows, _ = study(tmp_path, "--kp", "0.1:0.2:3", "--ki", "1:2:2", "--samples", "4")
    assert [row["run"] for row in rows] == [str(k + 1) for k in range(3 * 2 * 3 * 4)]
    combinations = {tuple(row[column] for column in INPUTS.values()) for row in rows}
    assert len(combinations) == len(rows)
    gains = {(row[INPUTS["kp"]], row[INPUTS["ki"]]) for row in rows}
    assert gains == {(kp, ki) for kp in ("0.1", "0.15", "0.2") for ki in ("1", "2")}
    plants = {(row[INPUTS["inertia"]], row[INPUTS["friction"]]) for row in rows}
    assert plants == {("0.0001", "2e-05"), ("0.0002", "3e-05"), ("0.0004", "5e-05")}
    conditions = {(row[INPUTS["resistance"]], row[INPUTS["load"]]) for row in rows}
    assert len(conditions) == 4
    assert all(0.0 <= float(load) <= 0.2 for _, load in conditions)


def integrate(kp, ki, inertia, friction, resistance, load, load_time):
    """What a plain Runge-Kutta integration of the same drive makes of the judged quantities."""
    supply, inductance, constant, target, step = 24.0, 0.35e-3, 0.042, 200.0, 5e-5

    def rates(state, torque):
        current, speed, integral, _, _ = state
        error = target - speed
        wanted = kp * error + integral
        voltage = max(-supply, min(supply, wanted))
        return (
            (voltage - resistance * current - constant * speed) / inductance,
            (constant * current - friction * speed - torque) / inertia,
            ki * error + (voltage - wanted) * ki / kp,
            error * error,
            resistance * current * current,
        )

    def moved(state, rate, by):
        return tuple(x + by * dx for x, dx in zip(state, rate, strict=True))

    state, settling, overshoot, dip = (0.0,) * 5, None, 0.0, 0.0
    for k in range(round(1.5 / step)):
        torque = load if k * step >= load_time else 0.0
        a = rates(state, torque)
        b = rates(moved(state, a, step / 2), torque)
        c = rates(moved(state, b, step / 2), torque)
        d = rates(moved(state, c, step), torque)
        mean = [(p + 2 * q + 2 * r + s) / 6 for p, q, r, s in zip(a, b, c, d, strict=True)]
        state = moved(state, mean, step)
        time, error = (k + 1) * step, target - state[1]
        if time > load_time:
            dip = max(dip, error)
            continue
        overshoot = max(overshoot, -100.0 * error / target)
        settling = None if abs(error) > 0.02 * target else settling or time
    return {
        "overshoot_percent": overshoot,
        "settling_time_s": settling,
        "load_dip_rad_per_s": dip,
        "ise_rad2_per_s": state[3],
        "heat_J": state[4],
    }


@pytest.mark.parametrize(
    ("kp", "ki"),
    [("0.04", "2"), ("0.2", "2")],
    ids=["overshoots, never at the voltage limit", "starts at the voltage limit"],
)
def test_the_judged_quantities_are_those_of_an_independent_integration(tmp_path, kp, ki):
    rows, _ = study(tmp_path, "--kp", kp, "--ki", ki, "--samples", "1")
    row = rows[1]
    expected = integrate(**{name: float(row[column]) for name, column in INPUTS.items()})
    for column, value in expected.items():
        assert float(row[column]) == pytest.approx(value, rel=5e-3, abs=1e-3), column


def test_runs_that_cannot_be_integrated_fail_and_the_study_ends(tmp_path):
    options = ("--kp", "1e7", "--ki", "1e9", "--samples", "1")
    rows, _ = study(tmp_path, *options)
    assert [row["state"] for row in rows] == ["failed"] * 3
    assert {row["heat_J"] for row in rows} == {""}
    told = run("motor_study", *options, cwd=tmp_path)
    assert told.returncode == 0
    assert "3 failed" in told.stdout and "The first to fail was run 1: " in told.stdout


def test_the_help_names_every_option():
    done = run("motor_study", "--help")
    assert done.returncode == 0
    for option in ("kp", "ki", "samples", "seed", "top", "workers", "output", "quiet"):
        assert f"--{option}" in done.stdout


@pytest.mark.parametrize(
    ("options", "words"),
    [
        (("--samples", "-3"), "--samples: must be a whole number from 1 to 100000, not '-3'"),
        (("--samples", "0"), "not '0'"),
        (("--samples", "many"), "not 'many'"),
        (("--samples", "99999999999999999999"), "not '99999999999999999999'"),
        (("--samples", "100000"), "the study would have 10800000 runs"),
        (("--seed", "1.5"), "not '1.5'"),
        (("--kp", "0.2:0.1:3"), "0 < FROM < TO"),
        (("--ki", "0"), "must be a positive number"),
        (("--ki", "inf"), "must be a positive number"),
        (("--gain", "1"), "--gain"),
        (("--responses", "motor_study.csv"), "must name two files"),
    ],
)
def test_a_bad_option_is_named_and_nothing_is_written(tmp_path, options, words):
    done = run("motor_study", *options, cwd=tmp_path)
    assert done.returncode == 2
    assert done.stdout == ""
    message, hint = done.stderr.splitlines()
    assert message.startswith("motor_study: ") and words in message
    assert hint == "Try motor_study --help."
    assert not any(tmp_path.iterdir())


@pytest.mark.parametrize("option", ["--output", "--responses"])
def test_a_file_that_cannot_be_written_is_named_before_anything_runs(tmp_path, option):
    done = run("motor_study", option, tmp_path / "nowhere" / "x.csv", cwd=tmp_path)
    assert done.returncode == 1
    assert done.stdout == ""
    assert "nowhere/x.csv': No such file or directory" in done.stderr
    assert not any(tmp_path.iterdir())
