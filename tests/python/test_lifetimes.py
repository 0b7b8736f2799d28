"""Who keeps what alive, and for how long."""

import gc
import subprocess
import sys
import textwrap
import threading
import weakref

import kxsim
import numpy as np
import pytest
from kxsim import _host, design


def test_views_outlive_element_and_model():
    model = kxsim.Model()
    sample = design.ParameterSample(model, Value=np.arange(1000.0))
    view = sample.Value
    sample.destroy()
    model.close()
    del sample, model
    gc.collect()
    np.testing.assert_array_equal(view, np.arange(1000.0))


def test_objects_keep_their_model():
    variable = design.Variable(kxsim.Model(), Name="gain")
    gc.collect()
    assert variable.model().elements(design.Variable)[0] == variable


def test_a_cycle_through_an_observer_is_collected(counts):
    class Watcher:
        def __init__(self):
            self.model = kxsim.Model()
            self.subscription = self.model.observe(self.look)

        def look(self, changes):
            pass

    watcher = weakref.ref(Watcher())
    gc.collect()
    assert watcher() is None


def test_foreign_objects_go_with_the_last_array_that_holds_them(model):
    class Source:
        def random(self):
            return 1.0

    source = Source()
    alive = weakref.ref(source)
    parameter = design.RandomParameter(model, Distribution=source)
    references = sys.getrefcount(source)
    for _ in range(100):
        assert parameter.Distribution is source
    assert sys.getrefcount(source) == references
    del source
    gc.collect()
    assert alive() is not None
    parameter.destroy()
    assert alive() is None


def work(model):
    """A little of everything, failures included."""
    with model.transaction():
        target = design.Variable(model, Name="gain")
        values = design.ValueSetParameter(model, ParameterType=target, Values=[1, "a", {"b": [2]}])
        space = design.Exhaustive(model, ParameterSpaces=[values])
    runs = space.createIterations()
    assert [run.ParameterSamples[0].Value for run in runs] == [1, "a", {"b": [2]}]
    with model.observe(lambda changes: repr(changes)):
        target.Name = "Kp"
    for refused in (lambda: setattr(values, "Values", 3), lambda: design.Variable(model, nope=1)):
        with pytest.raises((kxsim.HostError, TypeError)):
            refused()
    sample = design.ParameterSample(model, Value=np.ones((3, 4)))
    assert sample.Value.sum() == 12 and kxsim.dist.Normal(0, 1).random() is not None
    for element in model.roots():
        element.destroy()


def test_repeated_work_grows_nothing(model, counts):
    for _ in range(3):
        work(model)
    before = counts()
    for _ in range(30):
        work(model)
    after = counts()
    assert after[0] == before[0] and after[1] <= before[1] + 2
    assert len(model) == 0


def in_thread(action):
    outcome = []

    def run():
        try:
            outcome.append(action())
        except Exception as error:
            outcome.append(error)

    thread = threading.Thread(target=run)
    thread.start()
    thread.join()
    return outcome[0]


def test_another_thread_is_refused_but_may_release(model, counts):
    variable = design.Variable(model, Name="gain")
    other = design.Variable(model)
    hash(variable)
    for action in (
        lambda: variable.Name,
        lambda: setattr(variable, "Name", "x"),
        lambda: kxsim.Model(),
        lambda: _host.round_trip([1]),
        lambda: hash(other),
    ):
        error = in_thread(action)
        assert isinstance(error, kxsim.HostError) and error.identifier == "Vexal:host:WrongThread"
    assert variable.Name == "gain"
    assert in_thread(lambda: {variable: 1}[variable]) == 1
    for thing in (model, variable, model.elements(), design.DesignView(model).Figures):
        assert "thread" in in_thread(lambda thing=thing: repr(thing))
    before = counts()[0]
    held = [design.Variable(model, Name="other")]
    in_thread(held.clear)
    model.elements(design.Variable, Name="other")[0].destroy()
    assert counts()[0]["misused_releases"] == 0 and counts()[0]["arrays"] == before["arrays"]


def outcome_of(script, *options):
    done = subprocess.run(
        [sys.executable, *options, "-c", textwrap.dedent(script)],
        capture_output=True,
        text=True,
        timeout=60,
    )
    return done.returncode, done.stdout, done.stderr


def test_the_interpreter_ends_cleanly_whatever_lives():
    script = """
        import sys
        import kxsim
        import numpy as np
        from kxsim import design

        class Source:
            def random(self): return 1.0
            def __del__(self): pass

        model = kxsim.Model()
        sample = design.ParameterSample(model, Value=np.arange(10.))
        view = sample.Value
        parameter = design.RandomParameter(model, Distribution=Source())
        subscription = model.observe(print)
        transaction = model.beginTransaction()
        kind = design.FigureType.Histogram
        sys.modules["keeps"] = [model, sample, view, parameter, subscription, transaction, kind]
        error = None
        try:
            parameter.Distribution = 3
        except kxsim.HostError as raised:
            error = raised
    """
    assert outcome_of(script, "-X", "dev") == (0, "", "")


def test_at_the_end_names_of_the_script_are_let_go_though_the_host_draws_from_it(tmp_path):
    script = f"""
        import atexit

        def at_exit():
            parameter.ParameterType.Name = "after"
            assert "gone" in repr(parameter.Distribution)

        atexit.register(at_exit)  # before kxsim's own: it comes after that
        from kxsim import design
        from kxsim.study import draws

        class Own:
            def random(self): return 1.0

        class Rvs:
            def rvs(self, random_state): return 1.0

        log = open({str(tmp_path / "log")!r}, "w")
        log.write("important")
        study = draws(3, a=Own(), b=Rvs())
        study.runs
        parameter = study.space.Parameters[0]
        subscription = study.model.observe(lambda changes: print("told"))
    """
    assert outcome_of(script) == (0, "told\n", "")
    assert (tmp_path / "log").read_text() == "important"
