# SPDX-License-Identifier: Apache-2.0
"""Workers that share a search by a PostgreSQL server, of which the tests run their own."""

import glob
import json
import os
import pathlib
import shutil
import signal
import subprocess
import tempfile
import time

import optuna
import pytest

import veskar
from surfaces import every_metric

from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search
from veskar.tune.storage import SharedStorage
from veskar.tune.study import Parameter, Scene, Study

#: s; long beside a trial here, short beside a test
LEASE = 8


def as_server(*command):
    """Runs a command of PostgreSQL, which refuses to be root."""
    user = ["runuser", "-u", "postgres", "--"] if os.geteuid() == 0 else []
    binaries = sorted(glob.glob("/usr/lib/postgresql/*/bin"))[-1]
    subprocess.run([*user, f"{binaries}/{command[0]}", *command[1:]], check=True, cwd="/",
                   stdin=subprocess.DEVNULL, stdout=subprocess.DEVNULL)


@pytest.fixture(scope="module")
def server():
    """The directory of the socket of a server without network."""
    # Not pytest's: the name of a socket is short, and the server's user may not enter there.
    directory = pathlib.Path(tempfile.mkdtemp(prefix="veskar-", dir="/tmp"))
    try:
        if os.geteuid() == 0:
            shutil.chown(directory, "postgres")
        as_server("initdb", "-D", f"{directory}/data", "-U", "veskar", "--auth=trust", "--no-sync")
        as_server("pg_ctl", "-D", f"{directory}/data", "-l", f"{directory}/log", "-w", "start", "-o",
                  f"-c listen_addresses= -c fsync=off -k {directory}")
        yield directory
        as_server("pg_ctl", "-D", f"{directory}/data", "-w", "-m", "immediate", "stop")
    finally:
        shutil.rmtree(directory)


@pytest.fixture
def storage(server, request):
    """The URL of an empty database."""
    name = request.node.name
    as_server("createdb", "-h", str(server), "-U", "veskar", name)
    return f"postgresql://veskar@/{name}?host={server}"


@pytest.fixture
def study(root, tmp_path):
    """The path of a study whose trials take a moment."""
    document = {
        "base": str(root / "config/fusion-plain.json"),
        "trials": 16,
        "prune": False,  # complete trials are counted
        "parameters": {"veskarModule.gatingDistance": {"low": 4.0, "high": 9.0}},
        "scenes": {"walk": {"scenario": str(root / "config/scenarios/perimeter.json"), "duration": 10.0,
                            "training": [1, 2, 3], "heldOut": [101, 102]}},
    }
    path = tmp_path / "study.json"
    path.write_text(json.dumps(document))
    return path


@pytest.fixture
def tune(root, study, storage, tmp_path):
    """Starts `veskar tune`; gives the process."""
    started = []
    environment = {**os.environ, "PATH": f"{root / 'python/bin'}:{os.environ['PATH']}"}

    def start(*arguments):
        started.append(subprocess.Popen(
            [os.environ["VESKAR_PROGRAM"], "tune", str(study), "-o", "tuned", "--processes", "1",
             "--storage", storage, "--lease", str(LEASE), *arguments],
            cwd=tmp_path, env=environment, text=True, stdout=subprocess.PIPE, stderr=subprocess.PIPE))
        return started[-1]

    yield start
    for process in started:
        process.kill()
        process.communicate()


def trials_in(storage):
    """All trials of the study; none when there is no study yet."""
    try:
        return optuna.load_study(study_name="study", storage=storage).get_trials()
    except (KeyError, RuntimeError):
        return []


def finish(workers):
    for worker in workers:
        _, errors = worker.communicate(timeout=100)
        assert worker.returncode == 0, errors


def test_what_a_killed_worker_was_trying_is_tried_by_another(tune, storage, study, tmp_path):
    victim = tune("--worker", "--trials", "100000")  # there is always something that it tries
    others = [tune("--worker") for _ in range(3)]
    deadline = time.monotonic() + 120
    while True:
        assert time.monotonic() < deadline and victim.poll() is None
        victim.send_signal(signal.SIGSTOP)  # to kill it where it surely tries something
        trials = trials_in(storage)
        complete = [trial for trial in trials if trial.state.name == "COMPLETE"]
        if len(complete) >= 4 and any(
                trial.state.name == "RUNNING" and trial.params
                and trial.user_attrs["worker"].endswith(f":{victim.pid}") for trial in trials):
            break
        victim.send_signal(signal.SIGCONT)
        time.sleep(0.1)
    victim.kill()
    finish(others)
    time.sleep(LEASE + 1)  # on a fast machine the others were done before
    count = max(16, len(complete)) + 8
    finish([tune("--worker", "--trials", str(count)) for _ in range(3)])
    assert not (tmp_path / "tuned/table.txt").exists()

    trials = trials_in(storage)
    complete = [trial for trial in trials if trial.state.name == "COMPLETE"]
    [failed] = [trial for trial in trials if trial.state.name == "FAIL"]
    retries = [trial for trial in trials if trial.system_attrs.get("failed_trial") == failed.number]
    assert [trial.state.name for trial in retries] == ["COMPLETE"]
    assert retries[0].params == failed.params
    assert retries[0].user_attrs["worker"] != failed.user_attrs["worker"]
    assert len({json.dumps(trial.params) for trial in complete}) == len(complete)  # none is there twice
    assert count <= len(complete) <= count + 2 and len(complete) + 1 == len(trials)

    judge = tune("--trials", str(count))  # all trials are there
    table, errors = judge.communicate(timeout=100)
    assert judge.returncode in (0, 1), errors
    assert f"{len(complete)} trials" in table and len(trials_in(storage)) == len(trials)
    # The value of the retried trial is that of its setting.
    paths = [str(path) for path in (tmp_path / "tuned/recordings").glob("walk-*-[123].jsonl")]
    costs = [veskar.evaluate(path, config=json.loads(study.read_text())["base"],
                             changes=retries[0].params)["GOSPA"] for path in paths]
    assert sum(costs) / 3 == pytest.approx(retries[0].value)


def test_a_worker_that_was_taken_for_dead_is_not_counted(storage):
    study = Study("study.json", "study", None, (Parameter("veskarModule.gatingDistance", 0.0, 10.0),),
                  (Scene("fog", "GOSPA", 1.0, "unused", None, (1,), (101, 102)),), 0.02, 3, 3, 1, {})
    taken = []

    def cost(job):
        """While the second trial is evaluated, another worker takes it."""
        trials = optuna.load_study(study_name="study", storage=storage)
        running = [trial for trial in trials.get_trials() if trial.state.name == "RUNNING"]
        if running and running[0].number == 1:
            trials.tell(1, state=optuna.trial.TrialState.FAIL)
            taken.append(1)
        return 1.0

    with Processes(1) as processes:
        search = Search(study, [Sample("fog", "1", ("GOSPA",), "")], processes,
                        SharedStorage(storage, LEASE), every_metric(cost))
        search.run(3)
    assert taken == [1] and search.finished == 3
    assert [trial.state.name for trial in trials_in(storage)] == ["COMPLETE", "FAIL", "COMPLETE", "COMPLETE"]


def test_parallel_starts_workers(root, study, storage, tmp_path):
    environment = {**os.environ, "PATH": f"{root / 'python/bin'}:{os.environ['PATH']}"}
    outcome = subprocess.run(
        ["parallel", "-q", "-j", "2", "-N0", os.environ["VESKAR_PROGRAM"], "tune", str(study), "-o", "tuned",
         "--storage", storage, "--worker", "--processes", "1", "--trials", "6", ":::", "1", "2"],
        cwd=tmp_path, env=environment, text=True, capture_output=True)
    assert outcome.returncode == 0, outcome.stderr
    trials = trials_in(storage)
    assert {trial.state.name for trial in trials} == {"COMPLETE"} and 6 <= len(trials) <= 7
    assert len({trial.user_attrs["worker"] for trial in trials}) == 2


def test_workers_share_a_grid(tune, storage):
    grid = ("--grid", "veskarModule.gatingDistance=8")
    workers = [tune("--worker", *grid), tune("--worker", *grid), tune(*grid)]
    finish(workers)
    [study] = optuna.get_all_study_summaries(storage)
    trials = optuna.load_study(study_name=study.study_name, storage=storage).get_trials()
    assert {trial.state.name for trial in trials} == {"COMPLETE"}
    assert len({trial.params["veskarModule.gatingDistance"] for trial in trials}) == len(trials) == 8


def test_a_killed_worker_leaves_no_hole_in_a_grid(storage):
    study = Study("study.json", "study", None, (Parameter("veskarModule.gatingDistance", 0.0, 10.0),),
                  (Scene("fog", "GOSPA", 1.0, "unused", None, (1,), (101, 102)),), 0.02, 3, 3, 1, {})
    settings = [{"veskarModule.gatingDistance": value} for value in (1.0, 2.0)]

    def search():
        return Search(study, [Sample("fog", "1", ("GOSPA",), "")], processes,
                      SharedStorage(storage, LEASE), every_metric(lambda job: 1.0))

    with Processes(1) as processes:
        dead = search()
        with pytest.raises(SystemExit):
            dead.try_all(settings, progress=lambda count, best: exit())  # after the first
        shared = SharedStorage(storage, LEASE)
        shared.ask(optuna.load_study(study_name="study", storage=shared.trials))  # and no heartbeat since
        search().try_all(settings)
    trials = trials_in(storage)
    assert [trial.state.name for trial in trials] == ["COMPLETE", "FAIL", "COMPLETE"]
    assert [trial.params for trial in trials if trial.state.name == "COMPLETE"] == settings


def test_a_storage_that_cannot_be_used_is_told(root, study, tmp_path):
    def complaint(*arguments):
        environment = {**os.environ, "PATH": f"{root / 'python/bin'}:{os.environ['PATH']}"}
        outcome = subprocess.run(
            [os.environ["VESKAR_PROGRAM"], "tune", str(study), "--processes", "1", *arguments],
            cwd=tmp_path, env=environment, text=True, capture_output=True)
        assert outcome.returncode == 2 and "Traceback" not in outcome.stderr
        return outcome.stderr

    assert "--worker needs --storage" in complaint("--worker")
    assert "mysql is not postgresql" in complaint("--storage", "mysql://host/name")
    assert "--storage: " in complaint("--storage", "name")
    assert "storage: " in complaint("--storage", f"postgresql://veskar@/none?host={tmp_path}")
