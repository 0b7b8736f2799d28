"""Command records: what each does, what a failing one leaves, and who listens."""

import gc
import weakref

import kxsim
import pytest
from kxsim import design
from kxsim.design.internal import command
from kxsim.figures import FigureError, Figures
from kxsim.study import grid


@pytest.fixture
def figures():
    study = grid(a=[1, 2, 3], b=[10, 20])
    return Figures(study.run(lambda run: run["a"] * run["b"], executor="serial", progress=False))


def records(figures):
    return [each for each in figures.model.roots() if "command" in type(each).__host_name__]


def test_figures_are_created_changed_and_deleted(figures):
    first = figures.carry_out(command.CreateFigure(figures.model))
    second = figures.carry_out(command.CreateFigure(figures.model, FigureType="SurfPlot"))
    assert [each.Type.name for each in figures] == ["ScatterPlot", "SurfPlot"]
    assert figures.current == second and records(figures) == []
    changes = [
        command.ChangeStringFigureProperty(figures.model, name="Title", value="Product"),
        command.ChangeDoubleFigureProperty(figures.model, name="ZMax", value=99),
        command.ChangeBooleanFigureProperty(figures.model, name="ZLimMode", value=False),
        command.ChangeStringFigureProperty(figures.model, name="Metadata", value="mine"),
    ]
    for change in changes:
        figures.carry_out(change)
    axes = figures.draw().axes[0]
    assert (axes.get_title(), axes.get_zlim(), second.Metadata) == ("Product", (0, 99), "mine")
    figures.carry_out(command.DeleteFigure(figures.model, FigureId=second.Id))
    assert list(figures) == [first] and figures.current == first and records(figures) == []
    assert len(figures.model.elements(design.FigureProperties)) == 1


def test_runs_are_selected_in_order_and_once_added_replaced_and_taken_out(figures):
    def carried_out(of_class, **values):
        figures.carry_out(of_class(figures.model, **values))
        return figures.selected

    assert carried_out(command.SelectRuns, RunIds=[3, 1, 3]) == [3, 1]
    more = {"RunIds": [6, 1], "AppendToExistingSelection": True}
    assert carried_out(command.SelectRuns, **more) == [3, 1, 6]
    assert carried_out(command.DeselectRuns, RunIds=[1, 2]) == [3, 6]
    assert carried_out(command.SelectRuns, RunIds=[5]) == [5]
    assert carried_out(command.SelectRuns) == []


def test_a_custom_plot_is_created_for_its_configuration(figures):
    entry = figures.register(lambda plot: plot.figure.add_subplot(), label="Empty")
    by_identity = command.CreateCustomPlot(figures.model, PlotConfigId=entry.identity())
    figure = figures.carry_out(by_identity)
    assert figure.Type is design.FigureType.CustomPlot and len(figures.draw().axes) == 1


def change(kind, name, value):
    of_class = getattr(command, f"Change{kind}FigureProperty")
    return lambda model: of_class(model, name=name, value=value)


FAILING = [
    (change("String", "Titel", "x"), "UnknownProperty", "no property 'Titel'; .* 'Title'"),
    (change("Double", "ZMin", 1), "UnknownProperty", "ScatterPlot has no property 'ZMin'"),
    (change("String", "XMin", "1"), "WrongPropertyType", "'XMin' is a number, not a text"),
    (change("Double", "XGrid", 1), "WrongPropertyType", "a truth value, not a number"),
    (change("Boolean", "XMin", True), "WrongPropertyType", "a number, not a truth value"),
    (change("String", "Type", "SurfPlot"), "WrongProperties", "not ScatterPlotProperties"),
    (change("String", "Type", "Surf"), "UnknownLiteral", "mean 'SurfPlot'"),
    (change("String", "XData", "a"), "WrongPropertyType", "an element, not a text"),
    (change("String", "ColorMap", "jett"), "UnknownColorMap", "did you mean 'jet'"),
    (change("String", "Id", "other"), "DuplicateFigure", "'other'"),
    (lambda m: command.DeleteFigure(m, FigureId="main"), "UnknownFigure", "mean 'mine'"),
    (lambda m: command.CreateCustomPlot(m, PlotConfigId="x"), "UnknownPlot", "'x'"),
    (lambda m: command.SelectRuns(m, RunIds=[1, 9, 2.5]), "UnknownRun", "run 9, 2.5; .* 1 to 6"),
    (lambda m: command.DeselectRuns(m, RunIds=[0]), "UnknownRun", "no run 0"),
    (lambda m: command.CreateFigure(m, FigureType=[]), "UnknownLiteral", "kind of figure None"),
]


@pytest.mark.parametrize(("make", "key", "words"), FAILING)
def test_a_failing_command_changes_nothing_and_is_gone(figures, make, key, words):
    figures.scatter(x="a", y="output", Id="other")
    figure = figures.scatter(x="a", y="output", Id="mine", Title="before")
    figures.select([2])
    before = (len(figures.model), figures.selected, repr(figure), repr(figures.properties()))
    record = make(figures.model)
    with pytest.raises(FigureError, match=words) as caught:
        figures.carry_out(record)
    assert caught.value.key == key and not record.is_valid
    after = (len(figures.model), figures.selected, repr(figure), repr(figures.properties()))
    assert after == before and figures.current == figure


def test_what_is_no_number_is_no_run(figures):
    with pytest.raises(FigureError, match="no run 'x', None, inf;"):
        figures.select(["x", None, float("inf"), 1])
    assert figures.selected == []


def test_without_a_figure_there_is_nothing_to_change(figures):
    with pytest.raises(FigureError, match="no figure"):
        figures.carry_out(change("String", "Title", "x")(figures.model))
    with pytest.raises(TypeError, match="no command"):
        figures.carry_out(figures.view)
    elsewhere = command.CreateFigure(kxsim.Model())
    with pytest.raises(FigureError, match="another model"):
        figures.carry_out(elsewhere)
    assert elsewhere.is_valid and len(figures) == 0
    figures.scatter(x="a", y="output")
    figures.carry_out(change("String", "Type", "Histogram")(figures.model))
    assert figures.current.Type is design.FigureType.Histogram


def test_a_carried_out_command_can_be_undone_as_a_whole(figures):
    figure = figures.scatter(x="a", y="output", Title="before")
    figures.scatter(x="a", y="output")
    figures.current = figure
    change_title = change("String", "Title", "after")(figures.model)
    delete = command.DeleteFigure(figures.model, FigureId=figure.Id)
    told = []
    model = figures.model
    with model.observe(told.append), pytest.raises(ZeroDivisionError), model.transaction():
        figures.carry_out(change_title)
        figures.carry_out(command.CreateFigure(figures.model))
        figures.carry_out(delete)
        1 / 0  # noqa: B018
    assert told == [] and len(figures) == 2 and figures.current == figure
    assert figures.properties().Title == "before"
    assert set(records(figures)) == {change_title, delete}
    figures.draw()
    with figures.model.observe(told.append):
        figures.carry_out(change_title)
    assert len(told) == 1 and figures.properties().Title == "after"


def test_listening_carries_out_what_anyone_asks_for(figures):
    with figures.listen():
        command.CreateFigure(figures.model, FigureType="Histogram")
        with figures.model.transaction():
            command.ChangeStringFigureProperty(figures.model, name="XLabel", value="first")
            command.SelectRuns(figures.model, RunIds=[4])
            command.ChangeStringFigureProperty(figures.model, name="XLabel", value="second")
            assert figures.selected == []
    assert figures.draw().axes[0].get_xlabel() == "second" and figures.selected == [4]
    command.SelectRuns(figures.model, RunIds=[1])
    assert figures.selected == [4] and len(records(figures)) == 1


def test_an_error_while_listening_reaches_whoever_asked(figures):
    figures.listen()
    with pytest.raises(kxsim.HostError) as caught:
        command.SelectRuns(figures.model, RunIds=[99])
    assert isinstance(caught.value.__cause__, FigureError) and records(figures) == []
    with pytest.raises(kxsim.HostError) as caught, figures.model.transaction():
        for run in (99, 2, 98):
            command.SelectRuns(figures.model, RunIds=[run], AppendToExistingSelection=True)
    assert [e.fields["name"] for e in caught.value.__cause__.exceptions] == ["99", "98"]
    assert figures.selected == [2] and records(figures) == []
    errors = []
    figures.listen(errors.append)  # in place of the one before
    command.DeleteFigure(figures.model, FigureId="nope")
    command.SelectRuns(figures.model, RunIds=[3])
    assert [error.key for error in errors] == ["UnknownFigure"] and figures.selected == [3]


def test_who_listens_is_not_kept(counts):
    study = grid(a=[1, 2]).run(lambda run: run["a"], executor="serial", progress=False)

    def listen():
        figures = Figures(study)
        figures.listen()
        command.CreateFigure(figures.model)
        figures.draw()
        alive = weakref.ref(figures)
        figures.view.destroy()
        del figures
        gc.collect()
        for properties in study.job.model().elements(design.FigureProperties):
            properties.destroy()
        return alive

    listen(), listen()
    before = counts()
    assert [listen()() for _ in range(10)] == [None] * 10
    after = counts()
    assert after[0] == before[0] and after[1] <= before[1] + 2
    command.SelectRuns(study.job.model(), RunIds=[99])  # nobody is there to refuse it
