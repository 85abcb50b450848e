# SPDX-License-Identifier: Apache-2.0
"""`veskar tune` as a user runs it, with VESKAR_PROGRAM and the program of the package."""

import contextlib
import fcntl
import json
import os
import pathlib
import shutil
import signal
import sqlite3
import subprocess
import time

import pytest

import veskar


@pytest.fixture
def tune(root, tmp_path):
    """Starts `veskar tune`."""
    environment = {**os.environ, "PATH": f"{root / 'python/bin'}:{os.environ['PATH']}"}

    def start(*arguments):
        return subprocess.Popen([os.environ["VESKAR_PROGRAM"], "tune", *map(str, arguments)], cwd=tmp_path,
                                text=True,
                                env=environment, stdout=subprocess.PIPE, stderr=subprocess.PIPE)

    return start


@pytest.fixture
def study(root, tmp_path):
    """A base that confirms far too late, and one of the two parameters behind it."""
    configuration = json.loads((root / "config/fusion-plain.json").read_text())
    for limit in ("Upper", "Lower"):
        configuration["veskarModule"][f"systemTrackConfirmationLimit{limit}"] = 0.9999
    (tmp_path / "base.json").write_text(json.dumps(configuration))
    document = {
        "base": "base.json",
        "trials": 8,
        "parameters": {"veskarModule.systemTrackConfirmationLimitLower": {"low": 0.4, "high": 0.9}},
        "scenes": {"walk": {"scenario": str(root / "config/scenarios/perimeter.json"), "duration": 6.0,
                            "training": [1, 2], "heldOut": [101, 102, 103]}},
    }
    path = tmp_path / "study.json"
    path.write_text(json.dumps(document))
    return path


def finish(process, status):
    output, errors = process.communicate(timeout=250)
    assert process.returncode == status, errors
    return output, errors


def test_several_objectives_have_a_front(tune, study, tmp_path):
    document = json.loads(study.read_text())
    document["objectives"] = ["IDSW", "confirmation_delay"]
    study.write_text(json.dumps(document))
    output, _ = finish(tune(study, "-o", "tuned", "--processes", 2), 0)
    assert "Pareto front in training" in output and "mean confirmation_delay" in output
    sheet = json.loads((tmp_path / "tuned/best.sheet.json").read_text())
    assert set(sheet["heldOutObjectives"]) == {"IDSW", "confirmation_delay"}
    header, baseline, *front = (tmp_path / "tuned/front.csv").read_text().splitlines()
    assert header.startswith("trial,score,IDSW,confirmation_delay,") and baseline.startswith("baseline,")
    for row in front:
        assert not list(veskar.check(tmp_path / f"tuned/front/{row.split(',')[0]}.json"))


def states(path):
    """{state: number of trials} of a storage."""
    with contextlib.closing(sqlite3.connect(path)) as database:
        return dict(database.execute("select state, count(*) from trials group by state"))


def test_the_answer_is_a_configuration_with_its_sheet(tune, study, tmp_path):
    output, _ = finish(tune(study, "-o", "tuned", "--processes", 2), 0)
    assert "recommended" in output and output == (tmp_path / "tuned/table.txt").read_text()
    sheet = json.loads((tmp_path / "tuned/best.sheet.json").read_text())
    assert sheet["trials"] == 8 and sheet["study"]["trials"] == 8
    assert sheet["heldOutScore"]["high"] < 0.0
    assert set(sheet["recordings"]["training"]) == {"walk/1", "walk/2"}
    assert set(sheet["recordings"]["heldOut"]) == {"walk/101", "walk/102", "walk/103"}
    assert list(sheet["importances"].values()) == [1.0]  # of the only parameter
    assert f"Trial {sheet['trial']} is recommended." in (tmp_path / "tuned/page.html").read_text()
    assert not (tmp_path / "tuned/front").exists()
    best = json.loads((tmp_path / "tuned/best.json").read_text())
    [(key, value)] = sheet["changes"].items()
    assert best["veskarModule"][key.split(".")[1]] == value
    recordings = [str(path) for path in (tmp_path / "tuned/recordings").glob("walk-*-10?.jsonl")]
    costs = [veskar.evaluate(path, config=tmp_path / "tuned/best.json")["GOSPA"] for path in recordings]
    assert sum(costs) / 3 == pytest.approx(sheet["heldOutScore"]["candidate"])
    explained = finish(tune(study, "-o", "tuned", "--explain"), 0)[0]  # all is there: the same answer
    words = (tmp_path / "tuned/explanation.txt").read_text()
    assert explained == f"{output}\n{words}" and f"{key} falls from 0.9999 to " in words


def test_a_killed_search_goes_on(tune, study, tmp_path):
    database = tmp_path / "tuned/study.db"
    killed = tune(study, "-o", "tuned", "--processes", 1)
    deadline = time.monotonic() + 200
    while True:
        assert time.monotonic() < deadline and killed.poll() is None
        with contextlib.suppress(sqlite3.OperationalError):  # there is no table yet
            found = states(database) if database.exists() else {}
            if found.get("COMPLETE", 0) >= 2 and "RUNNING" in found:
                break
        time.sleep(0.01)
    killed.send_signal(signal.SIGKILL)
    killed.communicate()
    before = states(database)
    assert before["COMPLETE"] < 8
    output, _ = finish(tune(study, "-o", "tuned"), 0)
    assert "8 trials" in output
    after = states(database)
    assert after["COMPLETE"] == 8 and "RUNNING" not in after and "WAITING" not in after
    # What was under way has failed and was tried again.
    assert after.get("FAIL", 0) == before.get("RUNNING", 0)


def test_a_grid_is_a_table_and_a_file(tune, study, tmp_path):
    key = "veskarModule.systemTrackConfirmationLimitLower"
    table, _ = finish(tune(study, "-o", "tuned", "--grid", f"{key}=3"), 0)
    assert table == (tmp_path / "tuned/grid.txt").read_text()
    header, *rows = (tmp_path / "tuned/grid.csv").read_text().splitlines()
    assert header == f"{key},score,walk,tolerated"
    assert [row.split(",")[0] for row in rows] == ["0.4", "0.65", "0.9"]
    recordings = [str(path) for path in (tmp_path / "tuned/recordings").glob("walk-*.jsonl")]
    costs = [veskar.evaluate(path, config=tmp_path / "base.json", changes={key: 0.65})["GOSPA"]
             for path in recordings]
    assert float(rows[1].split(",")[1]) == pytest.approx(sum(costs) / 2)
    assert "--trials: the trials of --grid are" in finish(tune(study, "--grid", key, "--trials", 3), 2)[1]
    assert "--grid radarGain: not a parameter" in finish(tune(study, "--grid", "radarGain"), 2)[1]


def test_two_searches_do_not_share_a_directory(tune, study, tmp_path):
    (tmp_path / "tuned").mkdir()
    with open(tmp_path / "tuned/lock", "w", encoding="utf-8") as file:
        fcntl.flock(file, fcntl.LOCK_EX)
        assert "another search works there" in finish(tune(study, "-o", "tuned"), 2)[1]


def test_wrong_input_is_told(tune, study, tmp_path):
    _, errors = finish(tune("none.json"), 2)
    assert errors.startswith("veskar tune: ") and "none.json" in errors
    study.write_text("[]")
    assert "study.json: an object is expected" in finish(tune(study), 2)[1]


def test_the_installed_program_is_found_beside(tmp_path):
    (tmp_path / "bin").mkdir()
    tuner = tmp_path / "libexec/veskar/veskar-tune"
    tuner.parent.mkdir(parents=True)
    tuner.write_text('#!/bin/sh\necho "installed: $*"\n')
    tuner.chmod(0o755)
    program = shutil.copy(os.environ["VESKAR_PROGRAM"], tmp_path / "bin/veskar")
    build = pathlib.Path(os.environ["VESKAR_PROGRAM"]).parents[1]
    environment = {"PATH": str(tmp_path), "LD_LIBRARY_PATH": f"{build / 'src'}:{build / 'host'}"}
    outcome = subprocess.run([program, "tune", "study.json", "--help"], env=environment, text=True,
                             capture_output=True)
    assert outcome.stdout == "installed: study.json --help\n", outcome.stderr


def test_without_the_package_the_program_says_what_to_install(tmp_path):
    outcome = subprocess.run([os.environ["VESKAR_PROGRAM"], "tune", "study.json"],
                             env={"PATH": str(tmp_path)},
                             text=True, capture_output=True)
    assert outcome.returncode == 2 and "install python3-veskar, python3-optuna" in outcome.stderr
