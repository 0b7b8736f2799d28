"""What a type checker says of scripts, by the stubs; and the stubs beside the host."""

import re
import subprocess
import sys
from pathlib import Path

import pytest

ROOT = Path(__file__).parents[2]
CACHE = ROOT / "build" / "mypy"


def run(tool, *arguments):
    """The lines that a tool of mypy prints, from a folder where only what is installed is found."""
    command = [sys.executable, "-m", tool, *map(str, arguments)]
    CACHE.mkdir(parents=True, exist_ok=True)
    done = subprocess.run(command, capture_output=True, text=True, cwd=CACHE)
    return done.stdout.splitlines() + done.stderr.splitlines()


def check(*what):
    config = ["--config-file", ROOT / "pyproject.toml", "--cache-dir", CACHE]
    return run("mypy", *config, "--hide-error-context", *what)


GOOD = """
import kxsim
import numpy as np
from collections.abc import MutableSequence
from typing import Literal
from kinetra.simmanager import mm
from kxsim import design
from kxsim.design.internal import command
from kxsim.typing import Objects
from mf import zero

model = kxsim.Model()
identity = "6ac6d230-3cb9-321b-97a3-24af3ee475c4"
gain = design.Variable(model, identity, {"Name": "gain"}, Workspace="base")
again = design.Variable(model, {"Name": "gain"}, np.arange(1, 17))
spaces: MutableSequence[design.ParameterSpace] = design.Exhaustive(model).ParameterSpaces
spaces.append(design.ValueSetParameter(model, ParameterType=gain, Values=[1, "off", None]))
spaces[0:1] = [design.Sequential(model, ParameterSpaces=[spaces[0]])]

job = mm.Job(model, SimulationRuns=[{"RunId": 1}, {"RunId": 2}])
runs: zero.Sequence[mm.SimulationRun] = job.SimulationRuns
run: mm.SimulationRun = job.createIntoSimulationRuns({"RunId": 3}, State="finished")
done: Objects[mm.SimulationRun] = model.elements(mm.SimulationRun, State="finished")
owner: zero.ModelElement | None = done[0].owner()

view = design.DesignView(model, Figures={"Type": "Histogram"})
kind: design.FigureType = view.Figures[0].Type
view.Figures[0].Type = "SurfPlot"
view.Figures[0].Type = design.FigureType.CustomPlot
ids: zero.PrimitiveSequence[float] = command.SelectRuns(model, RunIds=np.arange(3.0)).RunIds
third: Literal[3] = design.FigureType.Histogram.value
assert third == kind.value and issubclass(type(spaces), MutableSequence)
above: zero.meta.Class | None = design.Variable.StaticMetaClass().Superclass

with model.transaction() as transaction:
    gain.Name = "Kp"
    is_open: bool = transaction.isOpen()
"""


def test_scripts_that_are_right_pass_and_run(tmp_path):
    script = tmp_path / "good.py"
    script.write_text(GOOD)
    assert check("--strict", script) == ["Success: no issues found in 1 source file"]
    exec(compile(GOOD, script, "exec"), {})


WRONG = {
    'design.Variable(model, Nam="x")': 'Unexpected keyword argument "Nam" for "Variable"; did you',
    "design.Variable(model, Name=3)": 'Argument "Name" to "Variable" has incompatible type "int"',
    'design.Variable(model, {"Nam": "x"})': "Argument 2 to .* expected .*_VariableValues",
    'design.Variable(Name="x")': 'Too few arguments for "Variable"',
    "design.ParameterSpace(model)": 'Argument 1 to "ParameterSpace" .* expected "Never"',
    "design.Exhaustve(model)": 'Module has no attribute "Exhaustve"; maybe "Exhaustive"',
    "kxsim.nope": 'Module has no attribute "nope"',
    'job.StartTime = "now"': 'expression has type "str", variable has type "float"',
    "job.StarTime": '"Job" has no attribute "StarTime"; maybe "StartTime"',
    "job.SimulationRuns = runs": 'Property "SimulationRuns" defined in "Job" is read-only',
    "space.NumIterations = 3": 'Property "NumIterations" defined in "ParameterSpace" is read-only',
    "job.createIntoSimulationRuns(RunI=1)": 'Unexpected keyword argument "RunI"',
    "space.createIterations(3)": 'Too many arguments for "createIterations"',
    "view.Figures.append(job)": 'incompatible type "Job"; expected "Figure"',
    'view.Figures[0].Type = "Pie"': "has type \"Literal\\['Pie'\\]\", variable has type",
    'design.Figure(model, Type="Pie")': 'Argument "Type" to "Figure" has incompatible type',
    "design.DesignView(model, Figures=[view])": 'incompatible type "DesignView"; .*_FigureValues',
    "design.FigureType.Pie": '"type\\[FigureType\\]" has no attribute "Pie"',
    "job.SimulationRuns.owner()": '"Sequence\\[SimulationRun\\]" has no attribute "owner"',
    "space.ParameterSpaces[0].Values": '"ParameterSpace" has no attribute "Values"',
    "variable.owner().identity()": 'Item "None" of "ModelElement | None" has no attribute',
    "kxsim.dist.Uniform(1)": 'Missing positional argument "Upper"',
}
BEFORE = """
import kxsim
from kinetra.simmanager import mm
from kxsim import design
model = kxsim.Model()
variable, space, view = design.Variable(model), design.Exhaustive(model), design.DesignView(model)
job = mm.Job(model)
runs = job.SimulationRuns
"""


@pytest.fixture(scope="module")
def told(tmp_path_factory):
    """The errors in a script of all wrong lines, by their line."""
    script = tmp_path_factory.mktemp("wrong") / "wrong.py"
    script.write_text(BEFORE + "\n".join(WRONG))
    lines = [*BEFORE.splitlines(), *WRONG]
    found = {}
    for line in check("--strict", script):
        if match := re.match(r"[^:]*wrong\.py:(\d+): error: (.*)", line):
            found.setdefault(lines[int(match[1]) - 1], []).append(match[2])
    assert all(line in WRONG for line in found)
    return found


@pytest.mark.parametrize("line", WRONG)
def test_a_wrong_line_is_told(line, told):
    assert any(re.search(WRONG[line], error) for error in told.get(line, [])), told.get(line)


PAGES = ["README.md", "docs/tutorial.md", "docs/python.md"]
UNTYPED = ["--allow-untyped-defs", "--allow-untyped-calls", "--ignore-missing-imports"]


@pytest.mark.parametrize("page", PAGES)
def test_the_examples_of_a_page_are_typed(page, tmp_path):
    blocks = re.findall(r"```python\n(.*?)```", (ROOT / page).read_text(), re.DOTALL)
    assert blocks
    script = tmp_path / "page.py"
    script.write_text("\n".join(blocks))
    assert check(*UNTYPED, script) == ["Success: no issues found in 1 source file"]


def test_the_examples_are_typed():
    assert check(*UNTYPED, *sorted(ROOT.glob("examples/*.py")))[-1].startswith("Success")


def test_the_package_itself_is_typed():
    assert check("-p", "kxsim")[-1].startswith("Success")


def test_the_stubs_say_what_the_host_has():
    packages = ["mf.zero", "kinetra.simmanager", "kxsim.design", "kxsim.dist"]
    assert run("mypy.stubtest", *packages)[-1].startswith("Success: no issues found in 8 modules")
