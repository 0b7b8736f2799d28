"""The example studies as a user runs them; KXSIM_EXAMPLES names the folder of those in C++."""

import csv
import importlib.util
import os
import subprocess
import sys
from pathlib import Path

import pytest

EXAMPLES = Path(__file__).parents[2] / "examples"
BINARIES = os.environ.get("KXSIM_EXAMPLES")


def load(name):
    spec = importlib.util.spec_from_file_location(name, EXAMPLES / f"{name}.py")
    module = importlib.util.module_from_spec(spec)
    spec.loader.exec_module(module)
    return module


def run(command, folder):
    return subprocess.run(
        [sys.executable, *command], cwd=folder, capture_output=True, text=True, timeout=300
    )


def is_picture(path):
    return path.read_bytes().startswith(b"\x89PNG")


def test_the_motor_study_ranks_the_gains_and_says_where_its_files_are(tmp_path):
    done = run([EXAMPLES / "motor_study.py", "--samples", "1", "--top", "3"], tmp_path)
    assert done.returncode == 0, done.stderr
    assert "grid: 108 runs" in done.stdout and "Best: Kp = " in done.stdout
    assert len((tmp_path / "build/motor_study.csv").read_text().splitlines()) == 109
    written = [Path(line.split()[1]) for line in done.stdout.splitlines() if "Wrote" in line][1:]
    assert len(written) == 3 and all(is_picture(tmp_path / path) for path in written)


def test_the_motor_study_names_a_bad_option(tmp_path):
    done = run([EXAMPLES / "motor_study.py", "--samples", "0"], tmp_path)
    assert done.returncode == 2
    assert "--samples: must be a positive whole number, not '0'" in done.stderr


@pytest.mark.skipif(not BINARIES, reason="KXSIM_EXAMPLES names no folder")
def test_the_motor_studies_in_python_and_in_cpp_judge_alike(tmp_path):
    options = ["--samples", "1", "--kp", "0.04:0.2:2", "--ki", "2", "--quiet", "-o", "runs.csv"]
    subprocess.run([Path(BINARIES).resolve() / "motor_study", *options], cwd=tmp_path, check=True)
    names = {
        "Kp": "kp_V_s_per_rad",
        "Ki": "ki_V_per_rad",
        "J": "inertia_kg_m2",
        "b": "friction_N_m_s_per_rad",
        "R": "resistance_ohm",
        "load": "load_torque_N_m",
        "load_time": "load_time_s",
    }
    outputs = {
        "overshoot": "overshoot_percent",
        "settling": "settling_time_s",
        "dip": "load_dip_rad_per_s",
        "ise": "ise_rad2_per_s",
        "heat": "heat_J",
        "cost": "cost",
    }
    simulate = load("motor_study").simulate
    with open(tmp_path / "runs.csv") as file:
        for row in csv.DictReader(file):
            judged = simulate({name: float(row[column]) for name, column in names.items()})
            for name, column in outputs.items():
                assert judged[name] == pytest.approx(float(row[column]), rel=5e-3, abs=2e-3), name


@pytest.mark.parametrize(("name", "runs", "pictures"), [("tolerance", 1000, 2), ("heating", 12, 2)])
def test_a_study_file_runs_from_the_command_line(name, runs, pictures, tmp_path):
    file = EXAMPLES / f"{name}_study.py"
    told = run(["-m", "kxsim", "explain", file], tmp_path)
    assert told.stdout.startswith(f"grid: {runs:,} runs")
    done = run(["-m", "kxsim", "run", file, "-q", "--pictures", "pictures"], tmp_path)
    assert done.returncode == 0, done.stderr
    drawn = [*(tmp_path / "pictures").iterdir()]
    assert len(drawn) == pictures and all(map(is_picture, drawn))
    assert len((tmp_path / "results.csv").read_text().splitlines()) == runs + 1


def test_the_heating_study_prefers_what_physics_prefers():
    study = load("heating_study")
    results = study.study.run(study.simulate, executor="serial", progress=False)
    energy = results.to_pandas().pivot_table("energy", "day", "control")
    assert (energy.loc["clear frost"] > energy.loc["mild rain"]).all()
    assert (energy["night setback"] < energy["proportional"]).all()
