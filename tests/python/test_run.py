"""Carrying out runs: what is called with what, what a failure does, and how it ends early."""

import csv
import os
import pickle
import signal
import subprocess
import sys
import textwrap
import threading
import time
from concurrent.futures import ProcessPoolExecutor, ThreadPoolExecutor

import kxsim
import numpy as np
import pandas
import pytest
from kinetra.simmanager import mm
from kxsim.figures import Figures, data
from kxsim.study import Study, grid, values, zipped


def area(run):
    return {"area": run["a"] * run["b"], "trace": np.arange(run["a"])}


def reciprocal(run):
    return 1 / run["a"]


def deadly(run):
    if run["a"] == 3:
        raise SystemExit("bye")
    if run["a"] % 20 == 2:
        os._exit(3)
    return (lambda: 1) if run["a"] == 4 else run["a"]


@pytest.mark.parametrize("executor", ["processes", "threads", "serial", ThreadPoolExecutor(2)])
@pytest.mark.parametrize("chunk", [None, 4])
def test_every_run_gets_its_values_and_keeps_its_place(executor, chunk):
    study = grid(a=[1, 2, 3], b=[10, 20])
    results = kxsim.run(study, area, executor=executor, workers=2, chunk=chunk)
    columns = results.columns()
    np.testing.assert_array_equal(columns["area"], [10, 20, 30, 20, 40, 60])
    assert columns["run"].tolist() == [1, 2, 3, 4, 5, 6]
    assert [len(trace) for trace in columns["trace"]] == [1, 2, 3, 1, 2, 3]
    records = {run.RunId: run for run in results.job.SimulationRuns}
    assert sorted(records) == [1, 2, 3, 4, 5, 6]
    assert all(run.State == "finished" and run.Progress == 1 for run in records.values())
    assert results.job.NumWorkers == (1 if executor == "serial" else 2)
    assert results.job.FinishTime >= results.job.StartTime > 0


def kinds(run):
    return {name: type(value).__name__ for name, value in run.items()}


def test_runs_get_plain_python_values():
    results = grid(a=[1, 2], b=["x"], c=[True]).run(kinds, executor="serial")
    assert results.outputs == [{"a": "float", "b": "str", "c": "bool"}] * 2


def test_a_failing_run_keeps_its_error_and_the_others_go_on():
    results = values("a", [1, 0, 2]).run(reciprocal, workers=1)
    assert results.states == ["finished", "failed", "finished"]
    np.testing.assert_array_equal(results.columns()["output"], [1, np.nan, 0.5])
    assert "in reciprocal" in results.errors[1]
    failed = [run for run in results.job.SimulationRuns if run.State == "failed"]
    assert [run.StatusString for run in failed] == ["ZeroDivisionError: float division by zero"]
    assert repr(results) == "<results of 3 runs: 2 finished, 1 failed, 0 not run>"


@pytest.mark.parametrize(("limit", "begun"), [(True, 1), (0.25, 21), (False, 80)])
def test_it_stops_when_enough_have_failed(limit, begun):
    results = values("a", [0] * 80).run(reciprocal, executor="serial", stop_on_error=limit)
    assert 80 - results.states.count("not run") == begun == len(results.job.SimulationRuns)


@pytest.mark.parametrize("chunk", [None, 10])
def test_runs_that_end_their_process_fail_alone(chunk):
    results = values("a", range(40)).run(deadly, workers=2, chunk=chunk)
    assert sorted(results.errors) == [2, 3, 4, 22]
    assert [results.outputs[k]["output"] for k in (0, 1, 5, 21, 39)] == [0, 1, 5, 21, 39]
    words = {run.RunId: run.StatusString for run in results.job.SimulationRuns}
    assert len(words) == 40 and "process ended" in words[3] and "process ended" in words[23]
    assert words[4] == "SystemExit: bye" and "lambda" in words[5]


def slow_in_between(run):
    time.sleep(0.15 if 100 <= run["a"] < 106 else 0)
    return run["a"]


def test_what_a_chunk_has_no_time_for_is_carried_out_once():
    results = values("a", range(140)).run(slow_in_between, workers=2)
    assert results.columns()["output"].tolist() == list(range(140))
    assert len(results.job.SimulationRuns) == 140


class Refusing(ThreadPoolExecutor):
    def submit(self, function, runs, *arguments):
        raise RuntimeError("the cluster is gone")


class Odd(ThreadPoolExecutor):
    def submit(self, *call):
        return super().submit(lambda: "junk")


@pytest.mark.parametrize("executor", [Refusing(1), Odd(1), "serial"])
def test_an_error_that_ends_the_runs_has_their_results(executor):
    study = values("a", [1, 2, 3]).build()

    def observer(changes):
        if study.model.elements(mm.SimulationRun, RunId=2):
            raise RuntimeError("no more")

    subscription = study.model.observe(observer)
    with pytest.raises(Exception, match="cluster is gone|junk|no more") as raised:
        study.run(reciprocal, executor=executor)
    results = raised.value.results
    assert results.states.count("finished") == (2 if executor == "serial" else 0)
    assert results.job.FinishTime > 0
    subscription.end()


def test_a_study_that_changed_after_its_runs_were_made_is_refused():
    study = values("a", [1, 2])
    assert len(study.runs) == 2
    study.space.Values = [1, 2, 3]
    with pytest.raises(ValueError, match="made before it changed"):
        study.run(reciprocal, executor="serial")
    assert len(Study.of(study.space).run(reciprocal, executor="serial")) == 3


def spoiling(run):
    run["a"].append(run["a"].pop()["x"])
    return np.random.random()


def test_runs_neither_share_what_they_change_nor_random_numbers():
    study = values("a", [[{"x": k}] for k in range(8)])
    for executor in ("serial", "processes"):
        results = study.run(spoiling, executor=executor, workers=4, chunk=1)
        assert results.columns()["a"][7] == [{"x": 7}]
    assert len({row["output"] for row in results.outputs}) == 8


def test_an_interrupt_leaves_what_has_come():
    def interrupting(run):
        if run["a"] == 3:
            raise KeyboardInterrupt
        return run["a"]

    results = values("a", range(60)).run(interrupting, executor="serial")
    assert results.interrupted and results.states == ["finished"] * 3 + ["not run"] * 57
    assert len(results.job.SimulationRuns) == 3 and "interrupted" in repr(results)


def test_ctrl_c_ends_workers_at_once():
    script = """
        import time, kxsim
        from kxsim.study import values
        def slow(run):
            if run["a"]:
                print("sleeping", flush=True)
                time.sleep(600)
            return 1
        results = values("a", [0, 1]).run(slow, workers=2, chunk=1)
        print(results)
    """
    child = subprocess.Popen(
        [sys.executable, "-c", textwrap.dedent(script)],
        stdout=subprocess.PIPE,
        stderr=subprocess.PIPE,
        text=True,
        start_new_session=True,
    )
    watchdog = threading.Timer(60, os.killpg, (child.pid, signal.SIGKILL))
    watchdog.start()
    assert child.stdout.readline() == "sleeping\n"
    os.killpg(child.pid, signal.SIGINT)
    out, err = child.communicate()
    watchdog.cancel()
    assert (child.returncode, err) == (0, "")
    assert "interrupted" in out and "not run" in out


def test_ctrl_c_while_workers_start_is_not_lost(monkeypatch):
    submit, begun = ProcessPoolExecutor.submit, []

    def interrupted(*arguments):
        os.kill(os.getpid(), signal.SIGINT)
        begun.append(submit(*arguments))
        return begun[-1]

    monkeypatch.setattr(ProcessPoolExecutor, "submit", interrupted)
    results = values("a", range(1, 9)).run(reciprocal, workers=2)
    assert len(begun) == 1 and results.interrupted and results.states == ["not run"] * 8
    assert signal.getsignal(signal.SIGINT) is signal.default_int_handler


def test_names_that_are_taken_are_told_apart():
    study = grid(zipped(run=[5, 6], state=["x", "y"], error=[1, 0]))
    results = study.run(
        lambda run: {"run": 1 / run["error"], "error": 2, "state (input)": 3}, executor="serial"
    )
    columns = results.columns()
    assert columns["run"].tolist() == [1, 2] and columns["run (input)"].tolist() == [5, 6]
    assert columns["state"] == ["finished", "failed"] and columns["state (input)"] == ["x", "y"]
    assert columns["state (input) (output)"][0] == 3 and columns["run (output)"][0] == 1
    assert "ZeroDivisionError" in columns["error"][1] and columns["error (output)"][0] == 2


def test_results_are_written_in_full(tmp_path):
    results = grid(a=[1, 0], b=[0.1]).run(
        lambda run: {"a": 1 / run["a"], "list": [1, {"x": 2}]}, executor="threads"
    )
    results.to_csv(tmp_path / "results.csv")
    with open(tmp_path / "results.csv", newline="") as file:
        rows = list(csv.DictReader(file))
    assert [row["b"] for row in rows] == ["0.1", "0.1"]
    assert (rows[0]["a (output)"], rows[0]["list"]) == ("1.0", '[1, {"x": 2}]')
    assert rows[1]["state"] == "failed" and "ZeroDivisionError" in rows[1]["error"]


def test_results_are_tables_elsewhere(tmp_path):
    def simulate(run):
        odd = {"mixed": {"k": 1} if run["a"] else 3, "key": {(1, 2): 3}, "huge": 2**70}
        return {"y": run["a"], "trace": np.arange(run["a"]), **odd}

    frame = pandas.DataFrame({"a": [0, 1], "b": ["u", "v"]})
    study = grid(frame)
    assert study.to_pandas().to_dict("list") == {"a": [0, 1], "b": ["u", "v"]}
    results = study.run(simulate, executor="serial")
    assert results.to_pandas().loc[2, "y"] == 1
    results.to_parquet(tmp_path / "results.parquet")
    back = pandas.read_parquet(tmp_path / "results.parquet")
    assert back["mixed"].tolist() == ["3", '{"k": 1}'] and back["run"].tolist() == [1, 2]
    assert [list(trace) for trace in back["trace"]] == [[], [0]]
    assert back["key"][0] == "{(1, 2): 3}" and back["huge"][0] == str(2**70)


def written(run):
    if not run["a"]:
        raise ValueError("first\nsecond")
    return {"n": 2**60 + 1, "on": True, "code": "007", "trace": np.arange(3.0), "map": np.eye(2)}


@pytest.mark.parametrize("way", ["results.csv", "results.parquet", "pickle"])
def test_results_are_read_again(tmp_path, way):
    study = grid(a=[1, 0, 2], b=["x", "y"])
    results = study.run(written, executor="serial", stop_on_error=0.2)
    if way == "pickle":
        back = pickle.loads(pickle.dumps(results))
    else:
        (results.to_csv if "csv" in way else results.to_parquet)(tmp_path / way)
        back = kxsim.load(tmp_path / way)
    assert back.states == results.states and back.errors == results.errors
    assert list(back.inputs) == ["a", "b"] and back.inputs["b"] == results.inputs["b"]
    np.testing.assert_array_equal(back.inputs["a"], results.inputs["a"])
    last = back.outputs[3]
    assert (last["n"], last["on"], last["code"]) == (2**60 + 1, True, "007")
    assert list(last["trace"]) == [0, 1, 2] and np.array(last["map"]).tolist() == [[1, 0], [0, 1]]
    told = [run.StatusString for run in back.job.SimulationRuns if run.State == "failed"]
    assert told == ["ValueError: first"] * 2
    Figures(back).scatter(x="a", y=data("trace", reduce="Trace"))


@pytest.mark.parametrize("text", ["", "a,b\n1,2\n", "run,state\n1,2,3\n", "run,a,state\n1,2,odd\n"])
def test_what_holds_no_results_is_refused(tmp_path, text):
    (tmp_path / "other.csv").write_text(text)
    with pytest.raises(ValueError, match="other.csv"):
        kxsim.load(tmp_path / "other.csv")


MISTAKES = [
    (lambda s: kxsim.run([{"a": 1}], area), TypeError, "a study made by kxsim.study"),
    (lambda s: kxsim.run(s.space, area), TypeError, "a study made by kxsim.study"),
    (lambda s: kxsim.run(s, area, job=s.space), TypeError, "recorded in a .*Job, not in"),
    (lambda s: kxsim.run(s, 3), TypeError, "callable"),
    (lambda s: kxsim.run(s, lambda run: 1), TypeError, "executor='threads'"),
    (lambda s: kxsim.run(s, area, executor="cluster"), ValueError, "no such executor"),
    (lambda s: kxsim.run(s, area, workers=-1), ValueError, "positive"),
    (lambda s: kxsim.run(s, area, workers=0), ValueError, "positive"),
    (lambda s: kxsim.run(s, area, chunk=0), ValueError, "positive"),
    (lambda s: kxsim.run(s, area, workers=1.5), ValueError, "positive"),
    (lambda s: kxsim.run(s, area, stop_on_error=1), ValueError, "between 0 and 1"),
    (lambda s: kxsim.run(s, area, stop_on_error=1.0), ValueError, "between 0 and 1"),
]


@pytest.mark.parametrize(("mistake", "error", "word"), MISTAKES)
def test_each_mistake_has_its_error(mistake, error, word):
    study = values("a", [1]).build()
    before = len(study.model)
    with pytest.raises(error, match=word):
        mistake(study)
    assert len(study.model) == before
