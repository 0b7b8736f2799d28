"""How things show themselves: in words, in notebooks, to `help` and completion."""

import inspect
from html.parser import HTMLParser

import kxsim
import numpy as np
from kinetra.simmanager import mm
from kxsim import design
from kxsim.design.internal import command
from kxsim.study import Study, grid


class Cells(HTMLParser):
    """The cells of a table, row by row, and the text outside of cells."""

    def __init__(self, html):
        super().__init__()
        self.rows, self.besides, self.open = [], "", []
        self.feed(html)
        assert not self.open, f"not closed: {self.open}"

    def handle_starttag(self, tag, attributes):
        self.open.append(tag)
        if tag == "tr":
            self.rows.append([])
        elif tag in ("th", "td"):
            self.rows[-1].append("")

    def handle_endtag(self, tag):
        assert self.open.pop() == tag

    def handle_data(self, text):
        if self.open and self.open[-1] in ("th", "td"):
            self.rows[-1][-1] += text
        else:
            self.besides += text


def shown(thing):
    return Cells(thing._repr_html_())


def test_an_element_is_a_table_of_its_properties(model):
    script = "<script>alert(1)</script> & more"
    target = design.Variable(model, Name=script)
    values = design.ValueSetParameter(model, ParameterType=target, Values=list(range(5000)))
    assert shown(target).rows == [["Name", script], ["Workspace", ""]]
    rows = dict(shown(values).rows)
    assert rows["NumIterations"] == "5000" and rows["Values"].startswith("[0.0, 1.0,")
    assert all(len(text) <= 60 for text in rows.values())
    assert rows["ParameterType"].startswith("<kxsim.design.Variable")
    view = design.DesignView(model, Figures=[{}, {}])
    assert shown(view).rows == [["Figures", "2 items"], ["DataSources", "0 items"]]
    target.destroy()
    assert "no longer valid" in shown(target).besides
    assert shown(model).besides == repr(model)


def test_collections_and_lists_are_tables_of_limited_length(model):
    job = mm.Job(model)
    for k in range(25):
        job.createIntoSimulationRuns(RunId=k, State=f"<{k}>")
    for runs in (job.SimulationRuns, model.elements(mm.SimulationRun)):
        table = shown(runs)
        assert table.rows[0][:3] == ["", "RunId", "State"]
        assert table.rows[8][:3] == ["7", "7", "<7>"]
        assert len(table.rows) == 21 and table.besides.split(":")[0] in repr(runs)
        assert table.besides.endswith("... 5 more")
    ids = command.SelectRuns(model, RunIds=[4, 2]).RunIds
    assert shown(ids).rows == [["", "value"], ["0", "4"], ["1", "2"]]


def test_runs_show_their_values(model):
    study = grid(Kp=[0.1, 0.2], Ki=[1, 2]).build(model)
    assert shown(study.runs).rows[:2] == [["", "Kp", "Ki"], ["0", "0.1", "1"]]
    assert repr(study.runs[1]) == "<kxsim.design.Iteration Kp=0.2 Ki=1.0>"
    assert shown(Study.of(study.space)).besides == str(study)
    assert shown(study.runs[1]).rows == [["Kp", "0.2"], ["Ki", "1"]]
    wide = grid(*({f"<{k}>": [1]} for k in range(100)))
    assert shown(wide).besides.endswith("... 41 more")
    assert shown(wide.runs).besides.endswith("... 80 more columns")
    assert len(shown(wide.runs).rows[1]) == 21
    assert len(shown(wide.runs[0]).rows) == 60 and shown(wide.runs[0]).besides.endswith("40 more")


def test_what_cannot_be_shown_says_why(model):
    space = design.Exhaustive(model)
    study = Study.of(space)
    assert [*study] == [{}] == study[:]
    space.ParameterSpaces.append(space)
    assert all("its own descendants" in repr(thing) for thing in (space, study))


def test_results_show_inputs_states_outputs_and_errors():
    def simulate(run):
        return {"cost": 1 / run["gain"], "peak": np.float32(0.5)}

    study = grid(gain=list(range(30)))
    results = study.run(simulate, executor="serial", progress=False)
    table = shown(results)
    assert table.rows[0] == ["", "gain", "state", "cost", "peak", "error"]
    told = "ZeroDivisionError: float division by zero"
    assert table.rows[1] == ["1", "0", "failed", "nan", "nan", told]
    assert table.rows[3] == ["3", "2", "finished", "0.5", "0.5", ""]
    assert "30 runs: 29 finished" in table.besides and table.besides.endswith("... 10 more")
    counted = grid(gain=[1, 2]).run(lambda run: 3, executor="serial", progress=False)
    assert shown(counted).rows[1] == ["1", "1", "finished", "3"]


def test_signatures_have_the_properties_that_a_constructor_takes():
    assert str(inspect.signature(design.Variable)) == "(model, /, *first, Name=..., Workspace=...)"
    space = inspect.signature(design.Exhaustive).parameters
    assert list(space) == ["model", "first", "ParameterSpaces"]
    assert not inspect.signature(kxsim.Model).parameters
    assert list(inspect.signature(design.Exhaustive.createIterations).parameters) == ["self"]
