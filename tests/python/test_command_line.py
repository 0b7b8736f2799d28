"""The command line: what each command prints, writes and answers."""

import csv
import subprocess
import sys
from pathlib import Path

import pytest

STUDY = """
from kxsim.study import grid, zipped
study = grid(zipped(a=[1, 0], b=["x", "y"]), c=[5, 6])
def simulate(run):
    return {"out": run["c"] / run["a"]}
"""


def kxsim(folder, *arguments):
    command = [sys.executable, "-m", "kxsim", *arguments]
    done = subprocess.run(command, cwd=folder, capture_output=True, text=True, timeout=60)
    return done.returncode, done.stdout, done.stderr


FIGURES = """
from kxsim.figures import Figures
def figures(results):
    figures = Figures(results)
    figures.scatter(x="c", y="out", Title="Out")
    figures.histogram("out")
    return figures
"""


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "two_by_two.py").write_text(STUDY)
    (tmp_path / "pictured.py").write_text(STUDY + FIGURES)
    (tmp_path / "forgetful.py").write_text(STUDY + "def figures(results): pass")
    (tmp_path / "empty_one.py").write_text("")
    (tmp_path / "faulty.py").write_text("from kxsim.study import grid\ngrid(a=3)")
    (tmp_path / "noted.py").write_text(STUDY + "from kxsim.study import draws\nlen(draws(2, a=3))")
    (tmp_path / "linked.py").symlink_to(tmp_path / "two_by_two.py")
    return tmp_path


def test_explain_shows_counts_memory_and_first_runs(folder):
    code, out, _ = kxsim(folder, "explain", "linked.py", "-n", "1")
    assert code == 0 and out.startswith("grid: 4 runs\n├─ zipped: 2 runs\n")
    assert "memory for the runs: about 0.0 MiB" in out
    assert out.endswith("run  a  b  c\n  1  1  x  5\n... 3 more\n")


@pytest.mark.parametrize("name", ["results.csv", "results.parquet"])
def test_results_are_written_and_shown(folder, name):
    code, out, _ = kxsim(folder, "run", "two_by_two.py", "-o", name, "--workers", "2")
    assert code == 1 and "2 finished, 2 failed, 0 not run" in out
    assert f"written to {name}\nrun 2: ZeroDivisionError" in out
    code, out, _ = kxsim(folder, "show", name, "-n", "1")
    assert code == 0 and out.startswith("2 finished, 2 failed\n\nrun  ")
    assert "... 3 more" in out


@pytest.mark.parametrize("options", [[], ["--pictures", "deep/er"]])
def test_the_figures_of_a_study_are_saved(folder, options):
    code, out, _ = kxsim(folder, "run", "pictured.py", "--workers", "2", *options)
    where = Path(options[1] if options else "pictures")
    names = ["01-out.png", "02-histogram.png"]
    assert code == 1 and out.endswith("".join(f"picture {where / name}\n" for name in names))
    assert sorted(path.name for path in (folder / where).iterdir()) == names


@pytest.mark.parametrize(
    ("arguments", "word"),
    [
        (["run", "two_by_two.py", "--pictures", "x"], "does not define 'figures'"),
        (["run", "forgetful.py"], "returns kxsim.figures.Figures, not None"),
        (["run", "nowhere.py"], "no file nowhere.py"),
        (["run", "empty_one.py"], "does not define 'study'"),
        (["explain", "faulty.py"], "kxsim: faulty.py, line 2: the values of 'a' are a list"),
        (["explain", "noted.py"], "It was given for 'a'."),
        (["run", "two_by_two.py", "-o", "."], ". cannot be written"),
        (["show", "two_by_two.py"], "holds no results"),
        (["run", "two_by_two.py", "--workers", "-1"], "positive"),
        (["walk"], "invalid choice"),
    ],
)
def test_what_cannot_be_done_is_said_before_anything_is(folder, arguments, word):
    code, out, err = kxsim(folder, *arguments)
    assert code == 2 and word in err.splitlines()[-1] and "Traceback" not in err
    assert (folder / "results.csv").exists() == ("forgetful.py" in arguments)


def test_long_traces_are_written_into_a_new_folder_and_shown(folder):
    (folder / "long.py").write_text(STUDY.replace('run["c"] / run["a"]', "[5.0] * 60_000"))
    code, out, _ = kxsim(folder, "run", "long.py", "-o", "new/results.csv", "--workers", "2")
    assert code == 0 and "4 finished" in out
    code, out, _ = kxsim(folder, "show", "new/results.csv")
    assert code == 0 and out.startswith("4 finished") and "[5.0, 5.0, 5.0, 5.0, ..." in out


def test_the_tolerance_example_stays_within_its_bounds(tmp_path):
    example = Path(__file__).parents[2] / "examples" / "tolerance_study.py"
    code, out, _ = kxsim(tmp_path, "run", str(example), "--workers", "2")
    assert code == 0 and "1,000 finished" in out
    with open(tmp_path / "results.csv", newline="") as file:
        cut_off = [float(row["cut_off"]) for row in csv.DictReader(file)]
    assert 1001 / (1.01 * 1.05) <= min(cut_off) < 1000 < max(cut_off) <= 1001 / (0.99 * 0.95)


def test_the_help_tells_what_a_study_file_is(folder):
    code, out, _ = kxsim(folder, "--help")
    assert code == 0 and "def simulate(run):" in out and "explain" in out
