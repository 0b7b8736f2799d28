"""What a drawn figure contains, element by element, and what cannot be drawn."""

import io
import subprocess
import sys
import textwrap

import kxsim
import numpy as np
import pytest
from kxsim import design
from kxsim.design import internal
from kxsim.figures import FigureError, Figures, data
from kxsim.study import grid, values, zipped
from matplotlib.collections import LineCollection
from matplotlib.colors import same_color

TIMES = np.array([0.0, 1.0, 2.0])


def simulate(run):
    if run["a"] == 3 and run["b"] == 20:
        raise ValueError("unstable")
    sign = -1 if run["b"] == 20 else 1
    return {
        "sum": run["a"] + run["b"],
        "time": TIMES,
        "trace": [run["a"], 5.0, sign],
        "size": "large" if run["a"] > 1 else "small",
    }


@pytest.fixture(scope="module")
def results():
    """Six runs: a = 1, 2, 3 and then again, b = 10 three times and then 20; the last fails."""
    return grid(a=[1, 2, 3], b=[10, 20]).run(simulate, executor="serial", progress=False)


@pytest.fixture
def figures(results):
    made = Figures(results)
    yield made
    made.view.destroy()
    for properties in made.model.elements(design.FigureProperties):
        properties.destroy()


def axes_of(figures, figure=None):
    return figures.draw(figure).axes[0]


def layer(axes, name):
    found = [each for each in axes.collections if each.get_gid() == name]
    assert len(found) == 1
    return found[0]


def points(axes, name="runs"):
    return layer(axes, name).get_offsets().tolist()


def heights(axes, name="runs"):
    return [bar.get_height() for bar in axes.patches if bar.get_gid() == name]


def one(cells, output=None):
    """Results of one column and one output."""
    study = values("a", cells)
    return study.run(lambda run: {"y": output}, executor="serial", progress=False)


def of_outputs(cells):
    """Results with these values of the output y, as many runs."""
    rest = iter(cells)
    study = values("a", range(len(cells)))
    return study.run(lambda run: {"y": next(rest)}, executor="serial", progress=False)


def test_a_scatter_plot_shows_the_finished_runs_and_says_how_many_it_leaves_out(figures):
    figures.scatter(x="a", y="sum", Title="Sums", YLabel="a + b")
    picture = figures.draw()
    axes = picture.axes[0]
    assert points(axes) == [[1, 11], [2, 12], [3, 13], [1, 21], [2, 22]]
    assert (axes.get_xlabel(), axes.get_ylabel()) == ("a", "a + b")
    assert axes.get_title("left") == "Sums" and len(picture.axes) == 1
    assert picture.get_supxlabel() == "1 of 6 runs not shown"


def test_colors_follow_a_quantity_its_limits_and_the_named_map(figures):
    figures.scatter(x="a", y="sum", c="b", CLabel="gain", ColorMap="plasma")
    picture = figures.draw()
    shown = layer(picture.axes[0], "runs")
    assert shown.get_array().tolist() == [10, 10, 10, 20, 20]
    assert shown.get_clim() == (10, 20) and shown.get_cmap().name == "plasma"
    assert picture.axes[1].get_ylabel() == "gain"
    figures.change("CMax", 40.0)
    figures.change("CLimMode", False)
    figures.change("Colorbar", False)
    picture = figures.draw()
    assert layer(picture.axes[0], "runs").get_clim() == (0, 40) and len(picture.axes) == 1
    figures.change("ColorMap", "parula")
    assert layer(axes_of(figures), "runs").get_cmap().name == "viridis"


@pytest.mark.parametrize("make", ["scatter", "surface", "histogram"])
def test_limits_hold_or_follow_and_grids_are_each_axis_own(figures, make):
    sources = {"x": "a"} if make == "histogram" else {"x": "a", "y": "b"}
    getattr(figures, make)(**sources, XMin=-1, XMax=np.int64(7), YGrid=np.True_)
    axes = axes_of(figures)
    assert axes.get_xlim() == (-1, 7) and axes.get_ylim()[1] < 30
    grids = [axes.xaxis, axes.yaxis]
    if make == "surface":
        assert [axis.gridlines.get_visible() for axis in grids] == [False, True]
    else:
        assert [any(g.get_visible() for g in a.get_gridlines()) for a in grids] == [False, True]
    figures.change("XLimMode", True)
    assert axes_of(figures).get_xlim()[0] > 0
    getattr(figures, make)(**sources, YMin=-5, YMax=5, YLimMode=True)
    assert axes_of(figures).get_ylim() != (-5, 5)
    getattr(figures, make)(**sources, YMin=-5, YMax=5)
    assert axes_of(figures).get_ylim() == (-5, 5)


def test_of_one_limit_the_other_is_what_was_seen_when_the_figure_was_made(figures):
    figures.scatter(x="a", y="sum", c="b", XMin=2, YMax=15, CMin=-10, XLimMode=False)
    axes = axes_of(figures)
    assert axes.get_xlim() == (2, pytest.approx(3.1)) and axes.get_ylim() == (
        pytest.approx(10.45),
        15,
    )
    assert layer(axes, "runs").get_clim() == (-10, 20)
    figures.histogram("sum", YMax=9)
    assert axes_of(figures).get_ylim() == (0, 9)
    figures.surface(x="a", y="b", z="sum", ZMin=0)
    assert axes_of(figures).get_zlim()[0] == 0 < 22 <= axes_of(figures).get_zlim()[1] < 24
    figures.scatter(x="a", y="sum", XMin=2, XLimMode=True)
    assert figures.properties().XMax == 0


@pytest.mark.parametrize("given", [np.array([1.0, 2.0]), None, 3])
@pytest.mark.parametrize("axis", ["x", "c"])
def test_an_axis_is_told_names_not_values(figures, axis, given):
    with pytest.raises(TypeError, match="columns of the results by their names, not a "):
        figures.scatter(**{"y": "sum", axis: given})
    assert len(figures) == 0


@pytest.mark.parametrize(
    ("reduce", "expected"),
    [("End", [1, 1, 1, -1, -1]), ("Min", [1, 1, 1, -1, -1]), ("Max", [5] * 5), ("Mean", None)],
)
def test_a_trace_is_reduced_to_one_value_a_run(figures, reduce, expected):
    figures.scatter(x="a", y=data("trace", reduce=reduce))
    axes = axes_of(figures)
    expected = expected or [(a + 5 + s) / 3 for a, s in [(1, 1), (2, 1), (3, 1), (1, -1), (2, -1)]]
    np.testing.assert_allclose([y for _, y in points(axes)], expected)
    assert axes.get_ylabel() == ("trace" if reduce == "End" else f"trace ({reduce.lower()})")


def test_traces_are_lines_of_their_own_over_time_or_over_their_samples(figures):
    figures.scatter(x=data("time", "Trace"), y=data("trace", "Trace"), c="b")
    lines = layer(axes_of(figures), "runs")
    assert isinstance(lines, LineCollection) and len(lines.get_segments()) == 5
    assert lines.get_segments()[3].tolist() == [[0, 1], [1, 5], [2, -1]]
    assert lines.get_array().tolist() == [10, 10, 10, 20, 20]
    figures.scatter(y=data("trace", "Trace"))
    axes = axes_of(figures)
    assert layer(axes, "runs").get_segments()[0].tolist() == [[1, 1], [2, 5], [3, 1]]
    assert axes.get_xlabel() == "sample"
    figures.scatter(y=data(["time", "trace"], "Trace"))
    axes = axes_of(figures)
    assert [len(each.get_segments()) for each in axes.collections] == [5, 5]
    assert axes.get_xlabel() == "sample" and axes.get_ylabel() == ""


def test_several_sources_are_series_with_a_legend(figures):
    figures.scatter(x="a", y={"sum": "both", "b": ""})
    axes = axes_of(figures)
    first, second = axes.collections
    assert first.get_offsets()[3].tolist() == [1, 21]
    assert second.get_offsets()[3].tolist() == [1, 20]
    assert [text.get_text() for text in axes.get_legend().get_texts()] == ["both", "b"]
    assert not same_color(first.get_facecolor()[0], second.get_facecolor()[0])
    assert axes.get_ylabel() == ""


def test_texts_are_categories_in_the_order_of_their_first_run(figures):
    figures.scatter(x="size", y="sum", c="size")
    picture = figures.draw()
    axes, bar = picture.axes
    assert [text.get_text() for text in axes.get_xticklabels()] == ["small", "large"]
    assert [x for x, _ in points(axes)] == [0, 1, 1, 0, 1]
    assert [text.get_text() for text in bar.get_yticklabels()] == ["small", "large"]
    figures.histogram("size")
    assert heights(axes_of(figures)) == [2, 3]


def test_many_texts_have_names_beside_some():
    texts = [f"a rather long name, number {k}" for k in range(50)]
    figures = Figures(one(texts, output=1))
    figures.scatter(x="a", y="y")
    labels = axes_of(figures).get_xticklabels()
    assert len(labels) <= 20 and all(len(label.get_text()) <= 24 for label in labels)


def test_numbers_among_texts_stay_apart_and_what_is_missing_is_left_out():
    figures = Figures(of_outputs(["off", 1000000.0, 1000001.0, float("nan"), [], None, "off"]))
    figures.scatter(x="a", y="y")
    axes = axes_of(figures)
    assert [text.get_text() for text in axes.get_yticklabels()] == ["off", "1000000", "1000001"]
    assert points(axes) == [[0, 0], [1, 1], [2, 2], [6, 0]]


def test_what_is_beyond_any_axis_is_not_shown():
    cells = [1.0, 1e305, -1e305, float("inf"), 2.0]
    for outputs, reduce in [(cells, "End"), ([[each, each] for each in cells], "Trace")]:
        figures = Figures(of_outputs(outputs))
        figures.scatter(y=data("y", reduce))
        picture = figures.draw()
        assert picture.get_supxlabel() == "3 of 5 runs not shown"
        assert picture.axes[0].get_ylim()[1] < 3
        figures.histogram(data("y", reduce))
        assert sum(heights(axes_of(figures))) == (2 if reduce == "End" else 4)


def test_texts_of_two_sources_share_one_axis():
    study = grid(zipped(u=["low", "mid"], v=["mid", "high"]))
    figures = Figures(study.run(lambda run: {"y": 1}, executor="serial", progress=False))
    figures.scatter(x="run", y=["u", "v"])
    axes = axes_of(figures)
    assert [text.get_text() for text in axes.get_yticklabels()] == ["low", "mid", "high"]
    assert [each.get_offsets()[:, 1].tolist() for each in axes.collections] == [[0, 1], [1, 2]]


def test_a_histogram_counts_runs_and_of_traces_values(figures):
    figures.histogram("sum", Title="Sums", XLabel="sum of both")
    axes = axes_of(figures)
    assert sum(heights(axes)) == 5 and axes.patches[0].get_x() == 10.5
    assert (axes.get_xlabel(), axes.get_ylabel()) == ("sum of both", "runs")
    figures.histogram(data("trace", "Trace"))
    assert sum(heights(axes_of(figures))) == 15 and axes_of(figures).get_ylabel() == "values"
    figures.histogram(["sum", "a"])
    axes = axes_of(figures)
    assert [text.get_text() for text in axes.get_legend().get_texts()] == ["sum", "a"]


@pytest.mark.parametrize("cells", [[0.1, 0.1 + 2e-17], [1e17, 1e17, 1e17 + 16], [3.0], [0, 0]])
def test_values_that_differ_by_rounding_stand_in_one_bar(cells):
    figures = Figures(of_outputs(cells))
    figures.histogram("y")
    assert heights(axes_of(figures)) == [len(cells)]


def test_a_surface_stands_on_its_grid_but_for_the_corner_where_a_run_failed(figures):
    figures.surface(x="a", y="b", z="sum", ZLabel="height", Title="Sums")
    picture = figures.draw()
    axes, bar = picture.axes
    surface = layer(axes, "surface")
    np.testing.assert_allclose(surface.get_array(), [(11 + 12 + 21 + 22) / 4, (12 + 13 + 22) / 3])
    assert surface.get_clim() == (11, 22)
    assert (axes.get_zlabel(), bar.get_ylabel()) == ("height", "height")
    assert axes.get_title() == "Sums"


def test_integers_of_a_small_range_have_a_bar_each_and_a_single_value_one_around_it():
    def bars(cells):
        figures = Figures(of_outputs(cells))
        figures.histogram("y")
        patches = axes_of(figures).patches
        return [(bar.get_x() + bar.get_width() / 2, bar.get_height()) for bar in patches]

    assert bars([2, 4, 4, 3.0, 6]) == [(2, 1), (3, 1), (4, 2), (5, 0), (6, 1)]
    assert bars([1e-9, 1e-9]) == [(pytest.approx(1e-9), 2)] and bars([7]) == [(7, 1)]
    assert len(bars([0, 1000, 3])) == 3


def test_titles_are_wrapped_and_dollars_are_math_where_they_can_be(figures):
    figures.scatter(x="a", y="sum", Title="many words " * 30)
    lines = axes_of(figures).get_title("left").splitlines()
    assert len(lines) == 3 and max(map(len, lines)) <= 44 and lines[-1].endswith("...")
    texts = {r"angle $\alpha_0$": True, "from $5 to $10": False, r"$\frac$": False, "a $": False}
    for text, is_math in texts.items():
        figures.change("XLabel", text)
        label = axes_of(figures).xaxis.label
        assert (label.get_text(), label.get_parse_math()) == (text, is_math)
        assert figures.draw()._repr_png_()


def test_every_series_has_a_color_of_its_own_and_few_numbers_a_tick_each(figures):
    ys = {"a": "", "b": "", "sum": "", **{f"a{k}": "" for k in range(7)}}
    outputs = {name: 1 for name in ys if name != "a"}
    many = Figures(values("a", [1]).run(lambda run: outputs, executor="serial", progress=False))
    many.scatter(x="a", y=ys)
    faces = [tuple(each.get_facecolor()[0]) for each in axes_of(many).collections]
    assert len(set(faces)) == len(ys) == 10
    figures.scatter(x="a", y="sum", c="b")
    ticks = figures.draw().axes[1].get_yticklabels()
    assert [text.get_text() for text in ticks] == ["10", "20"]


def test_limits_beyond_all_data_are_noted(figures):
    for limits in ({"XMin": 50, "XMax": 60}, {"YMin": -2, "YMax": -1}):
        for make in (figures.scatter, figures.surface):
            make(x="a", y="b", **limits)
            assert "nothing lies within the limits" in figures.draw().get_supxlabel()
    figures.scatter(x="a", y="b", XMin=2, XMax=60)
    assert "limits" not in figures.draw().get_supxlabel()


def test_a_surface_does_not_span_a_level_without_heights_unless_it_says_so():
    def drawn(levels, missing):
        study = grid(a=levels, b=[0, 1])
        results = study.run(
            lambda run: {"z": None if run["a"] in missing else run["a"]},
            executor="serial",
            progress=False,
        )
        figures = Figures(results)
        figures.surface(x="a", y="b", z="z")
        picture = figures.draw()
        faces = layer(picture.axes[0], "surface").get_array().tolist()
        return faces, "across missing points" in picture.get_supxlabel()

    faces, is_noted = drawn([0, 1, 2, 3, 4], [2])
    assert {0.5, 3.5} <= set(faces) and 2 not in faces and not is_noted
    faces, is_noted = drawn([0, 1, 2], [1])
    assert len(faces) == 2 and is_noted


def test_a_surface_of_scattered_points_is_triangles():
    study = grid([{"x": x, "y": y} for x, y in [(0, 0), (4, 1), (1, 3), (5, 5), (2, 7)]])
    results = study.run(lambda run: {"z": run["x"]}, executor="serial", progress=False)
    figures = Figures(results)
    figures.surface(x="x", y="y", z="z")
    assert len(layer(axes_of(figures), "surface").get_array()) >= 3
    figures.surface(x="x", y="run", z="y", ColorMap="cividis")
    assert layer(axes_of(figures), "surface").get_cmap().name == "cividis"


def test_the_triangles_of_a_surface_are_the_same_in_any_units():
    def heights_in(unit):
        places = [(0, 0), (4, 1), (1, 3), (5, 5), (2, 7), (3, 2)]
        study = grid([{"x": 5 + x * unit, "y": y / unit} for x, y in places])
        numbers = {x: z for z, (x, _) in enumerate(places)}
        results = study.run(
            lambda run: numbers[round((run["x"] - 5) / unit)], executor="serial", progress=False
        )
        figures = Figures(results)
        figures.surface()
        return sorted(layer(axes_of(figures), "surface").get_array())

    assert heights_in(1e-12) == heights_in(1.0) == heights_in(1e6)


def test_runs_that_share_a_point_of_a_surface_are_averaged_and_it_says_so():
    study = grid(a=[0, 1], b=[0, 1], c=[10, 20])
    results = study.run(lambda run: {"z": run["c"]}, executor="serial", progress=False)
    figures = Figures(results)
    figures.surface()
    picture = figures.draw()
    assert layer(picture.axes[0], "surface").get_array().tolist() == [15]
    assert picture.get_supxlabel() == "mean of up to 2 values at a point"


def test_traces_over_a_parameter_are_a_surface(figures):
    figures.surface(x=data("time", "Trace"), y="a", z=data("trace", "Trace"))
    assert len(layer(axes_of(figures), "surface").get_array()) == 4
    figures.select([2, 4])
    lines = [line for line in axes_of(figures).lines if line.get_gid() == "selected"]
    assert [line.get_data_3d()[2].tolist() for line in lines] == [[2, 5, 1], [1, 5, -1]]


def test_selected_runs_stand_out_in_every_kind(figures):
    figures.select([2, 4])
    figures.scatter(x="a", y="sum")
    axes = axes_of(figures)
    assert points(axes, "selected") == [[2, 12], [1, 21]]
    assert points(axes, "others") == [[1, 11], [3, 13], [2, 22]]
    raised, faded = layer(axes, "selected"), layer(axes, "others")
    assert raised.get_sizes()[0] > faded.get_sizes()[0] and raised.zorder > faded.zorder
    assert raised.get_facecolor().mean() < faded.get_facecolor().mean()
    figures.scatter(y=data("trace", "Trace"))
    axes = axes_of(figures)
    raised, faded = layer(axes, "selected"), layer(axes, "others")
    assert len(raised.get_segments()) == 2 and raised.zorder > faded.zorder
    assert raised.get_color().mean() < faded.get_color().mean()
    figures.histogram("sum")
    axes = axes_of(figures)
    assert sum(heights(axes, "selected")) == 2 and sum(heights(axes)) == 5
    figures.surface(x="a", y="b", z="sum")
    assert len(points(axes_of(figures), "selected")) == 2
    figures.select([6])  # failed, so nothing of it can stand out
    figures.scatter(x="a", y="sum")
    assert len(points(axes_of(figures))) == 5


def test_a_figure_without_data_sources_takes_the_first_ones_unless_they_are_final(figures):
    figure = figures.create("ScatterPlot")
    axes = axes_of(figures)
    assert (axes.get_xlabel(), axes.get_ylabel()) == ("a", "sum")
    figures.create(design.FigureType.SurfPlot)
    assert axes_of(figures).get_zlabel() == "sum"
    figures.create("Histogram")
    assert axes_of(figures).get_xlabel() == "sum"
    figures.properties(figure).DataSourcesFinalized = True
    with pytest.raises(FigureError) as caught:
        figures.draw(figure)
    assert caught.value.key == "NoData" and caught.value.fields["axis"] == "Y"


def test_an_id_picks_among_the_sources_of_axis_and_view(figures):
    figure = figures.scatter(x="a", y={"sum": "", "b": "the gain"})
    spec = figures.properties(figure).YData
    for name, second in [("b", 10), ("the gain", 10), ("run", 1)]:
        spec.Id = name
        assert points(axes_of(figures))[0] == [1, second]
    figures.view.createIntoDataSources(value="sum", label="of the view")
    figures.scatter(x="a", y="b", YData={"Id": "of the view"})
    assert points(axes_of(figures))[0] == [1, 11]
    figures.current = figure
    spec.Id = "the gian"
    with pytest.raises(FigureError, match="did you mean 'the gain'"):
        figures.draw()


def test_a_view_built_element_by_element_is_drawn(results):
    model = results.job.model()
    view = design.DesignView(model)
    first = view.createIntoFigures(Id="one")
    second = view.createIntoFigures(Id="two", Type="Histogram")
    sources = {"XDataSources": [{"value": "sum"}], "XData": {"ProcessingType": "Max"}}
    made = [design.ScatterPlotProperties(model, Title=title) for title in ("first", "second")]
    third = design.ScatterPlotProperties(model, Title="third", **sources)
    figures = Figures(results, view)
    with pytest.raises(FigureError) as caught:
        figures.draw("one")
    assert caught.value.key == "NoProperties"
    second.Id = third.identity()
    with pytest.raises(FigureError):
        figures.draw(first)
    figures.link(first, made[1])
    assert axes_of(figures, first).get_title("left") == "second"
    assert axes_of(figures, second).get_title("left") == "third"
    fourth = view.createIntoFigures(Id="four")
    kindless = view.createIntoFigures(Id="kindless", Type=[])
    assert axes_of(figures, "four").get_title("left") == "first"
    figures.delete(fourth)
    assert not made[0].is_valid and made[1].is_valid
    with pytest.raises(FigureError, match="no kind of figure None"):
        figures.draw(kindless)
    figures.delete(kindless)
    second.Id = first.Id
    with pytest.raises(FigureError, match="more than one figure with the Id 'one'"):
        figures.draw("one")
    with pytest.raises(ValueError, match="another model"):
        Figures(results, view, kxsim.Model())
    with pytest.raises(FigureError, match="not CustomPlotProperties"):
        figures.link(first, design.CustomPlotProperties(model))
    for element in (view, *model.elements(design.FigureProperties)):
        element.destroy()


def spread(plot):
    axes = plot.figure.add_subplot()
    axes.plot(plot.column("a")[plot.shown], plot.column("sum")[plot.shown], gid=plot.input)
    axes.set_title(",".join(plot.column("size")[:2]) + str(plot.selected.sum()))
    assert plot.column("trace")[0] == [1, 5, 1] and plot.column("trace")[-1] is None


def test_custom_plots_are_drawn_by_functions_and_by_names(figures):
    figures.select([1])
    figures.custom(spread, input="wide", Title="Spread")
    picture = figures.draw()
    line = picture.axes[0].lines[0]
    assert line.get_xdata().tolist() == [1, 2, 3, 1, 2] and line.get_gid() == "wide"
    assert (picture.get_suptitle(), picture.axes[0].get_title()) == ("Spread", "small,large1")
    entry = figures.register("builtins:repr", label="By name")
    assert entry == figures.register("builtins:repr")
    assert (entry.GalleryLabel, entry.owner().PlotConfigs[1]) == ("By name", entry)
    figures.custom(entry.identity())
    assert isinstance(figures.draw(), type(picture))
    again = figures.register("builtins:repr", label="By another name")
    assert again != entry
    figures.register(spread, label="Once more")
    figures.draw(figures.custom(spread))
    titled = [lambda plot: plot.figure.suptitle("one"), lambda plot: plot.figure.suptitle("two")]
    made = [figures.custom(each) for each in titled]
    assert [figures.draw(each).get_suptitle() for each in made] == ["one", "two"]
    for _ in range(2):
        entry.owner().PlotConfigs.append(internal.PlotConfig(figures.model, PlotClass="twice"))
    with pytest.raises(FigureError, match="2 plot configurations have the class 'twice'"):
        figures.custom("twice")
    figures.custom(lambda plot: plot.column("smu"))
    with pytest.raises(FigureError, match="did you mean 'sum'") as caught:
        figures.draw()
    assert "custom plot" in caught.value.__notes__[0]


def test_pictures_are_saved_all_or_none(figures, tmp_path):
    figures.scatter(x="a", y="sum", Title="Sum & a: 50 %")
    figures.histogram("sum")
    paths = figures.save(tmp_path / "new" / "folder")
    assert [path.name for path in paths] == ["01-sum-a-50.png", "02-histogram.png"]
    assert all(path.read_bytes()[:4] == b"\x89PNG" for path in paths)
    assert b"Sum &amp; a: 50 %" in figures.save(tmp_path, format="svg")[0].read_bytes()
    figures.properties().XDataSources[0].value = "gone"
    with pytest.raises(FigureError):
        figures.save(tmp_path / "none")
    assert not (tmp_path / "none").exists()


def test_matplotlib_is_loaded_when_something_is_drawn_and_pyplot_never():
    script = """
        import sys
        from kxsim.figures import Figures
        from kxsim.study import values
        figures = Figures(values("a", [1, 2]).run(lambda run: 1, executor="serial", progress=False))
        figures.scatter(x="a", y="output")
        print("matplotlib" in sys.modules)
        figures.draw()
        print("matplotlib" in sys.modules, "matplotlib.pyplot" in sys.modules)
    """
    command = [sys.executable, "-c", textwrap.dedent(script)]
    done = subprocess.run(command, capture_output=True, text=True, timeout=60)
    assert (done.stdout, done.stderr) == ("False\nTrue False\n", "")


def test_notebooks_show_pictures(figures):
    figures.scatter(x="a", y="sum")
    assert figures.draw()._repr_png_()[:4] == b"\x89PNG"
    assert figures._repr_html_().startswith('<img width="640" src="data:image/png;base64,iVBOR')
    figures.draw().savefig(io.BytesIO(), format="pdf")


MAKING = [
    (lambda f: f.scatter(x="aa", y="sum"), "UnknownQuantity", "'aa'; did you mean 'a'"),
    (lambda f: f.scatter(x=data("a", type="Output"), y="sum"), "UnknownQuantity", "no output 'a'"),
    (
        lambda f: f.scatter(x="a", y=data("sum", reduce="max")),
        "UnknownLiteral",
        "reduction 'max'; .* 'Max'",
    ),
    (lambda f: f.scatter(x="a", y="sum", Titel="x"), "UnknownProperty", "'Title'"),
    (lambda f: f.histogram("a", ZMin=1), "UnknownProperty", "no property 'ZMin'"),
    (lambda f: f.scatter(x="a", y="sum", XMin=4), "InvalidLimits", "4 and 3.1"),
    (lambda f: f.scatter(x="a", y="sum", Title=3), "WrongPropertyType", "'Title' is a text"),
    (lambda f: f.scatter(x="a", y=""), "UnknownQuantity", "no parameter or output ''"),
    (lambda f: f.scatter(x="a", y=[]), "NoData", "axis Y"),
    (lambda f: f.scatter(x="a", y="sum", YMin=float("nan"), YMax=1), "InvalidLimits", "axis Y"),
    (lambda f: f.surface(x="a", y="b", z="sum", ColorMap="Virids"), "UnknownColorMap", "'viridis'"),
    (lambda f: f.custom("nowhere"), "UnknownPlot", "'nowhere'"),
    (lambda f: f.register("nowhere"), "PlotClassNotFound", "module:function"),
    (lambda f: f.register(".os:name"), "PlotClassNotFound", "module:function"),
    (lambda f: f.register("os:nope"), "PlotClassNotFound", "nope"),
    (lambda f: f.register("os:name"), "PlotClassNotFound", "callable"),
    (lambda f: f.custom(3), "PlotClassNotFound", "plot class 3 .* callable"),
    (lambda f: f.histogram(data("a", type="Input")), "UnknownLiteral", "type of source 'Input'"),
    (lambda f: f.create("Histgram"), "UnknownLiteral", "mean 'Histogram'"),
    (lambda f: f.scatter(x="a", y=["sum", "size"]), "TextsAndNumbers", "axis Y"),
    (lambda f: f.scatter(x="a", y=[3]), "UnknownQuantity", "or output 3"),
]


@pytest.mark.parametrize(("mistake", "key", "words"), MAKING)
def test_a_figure_that_cannot_be_is_not_made(figures, mistake, key, words):
    before = len(figures.model)
    with pytest.raises(FigureError, match=words) as caught:
        mistake(figures)
    assert caught.value.key == key and len(figures.model) == before and len(figures) == 0


DRAWING = [
    (lambda f: f.scatter(x="a", y=data("trace", "Trace")), "TraceNeedsTrace", "axis Y has a trace"),
    (lambda f: f.scatter(y=data("trace", "Trace"), c=data("time", "Trace")), "TraceAsColor", "C"),
    (lambda f: f.scatter(x=["a", "b"], y=["a", "b", "sum"]), "SourcesDoNotMatch", "2 .* 3"),
    (lambda f: f.scatter(x="a", y="b", c=["a", "b"]), "TooManySources", "axis C .* not 2"),
    (lambda f: f.surface(x="a", y="b", z=["a", "b"]), "TooManySources", "axis Z"),
    (lambda f: f.surface(x="a", y="a", z="sum"), "NotASurface", "there are 3"),
    (lambda f: f.surface(x="b", y="b", z="sum"), "NotASurface", "there are 2"),
    (lambda f: f.histogram("sum", Id="counts") and f.draw("count"), "UnknownFigure", "'counts'"),
]


@pytest.mark.parametrize(("make", "key", "words"), DRAWING)
def test_what_cannot_be_drawn_says_why(figures, make, key, words):
    with pytest.raises(FigureError, match=words) as caught:
        make(figures)
        figures.draw()
    assert caught.value.key == key


@pytest.mark.parametrize(
    ("cells", "output", "key", "words"),
    [
        ([1, 2], {"x": 1}, "NotPlottable", "'y' of run 1 is a dict"),
        ([1, 2], np.ones((2, 2)), "NotPlottable", r"array of \(2, 2\)"),
        ([1, 2], float("nan"), "NothingToShow", "no run"),
        ([[1, 2], [1]], [3, 4], "TraceLengthsDiffer", "run 2 has 1 values .* and 2"),
    ],
)
def test_values_that_no_axis_can_show(cells, output, key, words):
    with pytest.raises(FigureError, match=words) as caught:
        figures = Figures(one(cells, output))
        figures.scatter(x=data("a", "Trace"), y=data("y", "Trace"))
        figures.draw()
    assert caught.value.key == key


def test_a_name_that_is_a_parameter_and_an_output_needs_a_type():
    results = values("y", [1, 2]).run(lambda run: {"y": 5}, executor="serial", progress=False)
    figures = Figures(results)
    with pytest.raises(FigureError, match="source's type says which"):
        figures.scatter(x="run", y="y")
    figures.scatter(x=data("y", type="Parameter"), y=data("y", type="Output"))
    assert points(axes_of(figures)) == [[1, 5], [2, 5]]
