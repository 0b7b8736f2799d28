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


DRAWN = """
import kxsim
from kxsim.study import draws
study = draws(2, a=kxsim.dist.Uniform(0, 1))
"""


@pytest.fixture
def folder(tmp_path):
    (tmp_path / "two_by_two.py").write_text(STUDY)
    (tmp_path / "pictured.py").write_text(STUDY + FIGURES)
    (tmp_path / "forgetful.py").write_text(STUDY + "def figures(results): pass")
    (tmp_path / "empty_one.py").write_text("")
    (tmp_path / "faulty.py").write_text("from kxsim.study import grid\ngrid(a=3)")
    (tmp_path / "noted.py").write_text(STUDY + "from kxsim.study import draws\nlen(draws(2, a=3))")
    (tmp_path / "other.py").write_text("study = 3")
    (tmp_path / "my-study.py").write_text(STUDY)
    (tmp_path / "named").mkdir()
    (tmp_path / "named" / "signal.py").write_text(STUDY)
    (tmp_path / "named.csv").write_text("")
    (tmp_path / "two_by_two.txt").write_text("not Python")
    (tmp_path / "raising.py").write_text("import os\n1 / 0\n")
    huge = "study = grid({str(k): range(1000) for k in range(8)})"
    (tmp_path / "huge.py").write_text(STUDY + huge)
    (tmp_path / "broken.py").write_text("\nstudy = (\n")
    (tmp_path / "drawn.py").write_text(DRAWN)
    (tmp_path / "linked.py").symlink_to(tmp_path / "two_by_two.py")
    return tmp_path


def test_explain_shows_counts_memory_and_first_runs(folder):
    code, out, _ = kxsim(folder, "explain", "linked.py", "-n", "1")
    assert code == 0 and out.startswith("grid: 4 runs\n├─ zipped: 2 runs\n")
    assert "memory for the runs: about 1.7 KiB" in out
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
        (["run", "two_by_two.py", "-o", "named.csv/x.csv"], "x.csv cannot be written"),
        (["show", "two_by_two.py"], "holds no results"),
        (["run", "two_by_two.py", "-o", "results.xlsx"], "written as .csv or .parquet"),
        (["run", "two_by_two.txt"], "a study file is Python"),
        (["run", "named/signal.py"], "rename it, for Python has another module 'signal'"),
        (["explain", "other.py"], "`study` is no study: int"),
        (["explain", "raising.py"], "raising.py, line 2: ZeroDivisionError: division by zero"),
        (["explain", "broken.py"], "broken.py, line 2: SyntaxError: "),
        (["run", "two_by_two.py", "--workers", "0"], "--workers: '0' is no integer from 1 on"),
        (["explain", "two_by_two.py", "-n", "-2"], "-n/--runs: '-2' is no integer from 1 on"),
        (["run", "two_by_two.py", "--stop-on-error", "2"], "'2' is no share of the runs"),
        (["run", "huge.py"], "more iterations than this machine's memory can hold"),
        (["walk"], "invalid choice"),
    ],
)
def test_what_cannot_be_done_is_said_before_anything_is(folder, arguments, word):
    code, out, err = kxsim(folder, *arguments)
    assert code == 2 and word in err.splitlines()[-1] and "Traceback" not in err
    assert (folder / "results.csv").exists() == ("forgetful.py" in arguments)


def test_a_file_of_any_name_is_run_and_without_a_finished_run_there_are_no_pictures(folder):
    code, out, _ = kxsim(folder, "run", "my-study.py", "--workers", "2")
    assert code == 1 and "2 finished, 2 failed" in out
    failing = (STUDY + FIGURES).replace('run["a"]', "0")
    (folder / "all failing.py").write_text(failing)
    code, out, err = kxsim(folder, "run", "all failing.py", "--executor", "serial")
    assert code == 1 and out.endswith("no run finished, so there are no pictures\n")
    assert "Traceback" not in err and not (folder / "pictures").exists()
    wrong = failing.replace("    figures = Figures", "    None.gone\n    figures = Figures")
    (folder / "wrong.py").write_text(wrong.replace("/ 0", "/ 1"))
    code, _, err = kxsim(folder, "run", "wrong.py", "--executor", "serial")
    assert code == 2 and "kxsim: wrong.py, line 9: AttributeError: " in err


def test_an_interrupt_and_a_reader_that_leaves_end_a_command_without_a_traceback(folder):
    (folder / "late.py").write_text("raise KeyboardInterrupt")
    assert kxsim(folder, "explain", "late.py") == (1, "", "kxsim: interrupted\n")
    command = [sys.executable, "-m", "kxsim", "explain", "two_by_two.py"]
    with subprocess.Popen(
        command, cwd=folder, stdout=subprocess.PIPE, stderr=subprocess.PIPE, text=True
    ) as left:
        left.stdout.close()
        assert left.stderr.read() == "" and left.wait(60) == 1


def test_a_seed_gives_the_same_draws_again(folder):
    seeds = ["1", "1", "2"]
    first, again, other = (kxsim(folder, "explain", "drawn.py", "--seed", each) for each in seeds)
    assert first == again != other and first[0] == other[0] == 0


def test_what_ends_a_study_leaves_its_results(folder):
    observer = """
from kinetra.simmanager import mm
def watch(changes):
    if study.model.elements(mm.SimulationRun, RunId=2):
        raise RuntimeError("disk full")
subscription = study.model.observe(watch)
"""
    (folder / "watched.py").write_text(STUDY + observer)
    code, out, err = kxsim(folder, "run", "watched.py", "--executor", "serial")
    assert code == 1 and "1 finished, 1 failed, 2 not run" in out and "disk full" in err
    assert len((folder / "results.csv").read_text().splitlines()) > 4
    code, _, err = kxsim(folder, "run", "two_by_two.py", "--stop-on-error", "1")
    assert code == 2 and "between 0 and 1" in err


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
