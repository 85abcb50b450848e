# SPDX-License-Identifier: Apache-2.0
"""The calibration against the program, which is in VESKAR_PROGRAM."""

import json
import os
import pathlib
import pickle
import subprocess

import numpy as np
import pytest

import veskar

ROOT = pathlib.Path(__file__).resolve().parents[2]


@pytest.fixture(scope="module")
def turned(tmp_path_factory):
    """A recording whose camera is turned by two degrees, and its radar late by 0.2 s."""
    directory = tmp_path_factory.mktemp("turned")
    scenario = json.loads((ROOT / "config/scenarios/perimeter.json").read_text())
    scenario["videoSensor"]["mountingError"] = {"yaw": 2.0}
    scenario["radarSensor"]["timestampError"] = 0.2
    (directory / "scene.json").write_text(json.dumps(scenario))
    return veskar.simulate(directory / "scene.json", directory / "turned.jsonl", seed=51,
                           duration=150.0)


@pytest.fixture(scope="module")
def answer(turned):
    return veskar.calibrate(turned)


def test_equals_the_program(turned, answer, tmp_path):
    for form, said in (("json", answer.to_json()), ("text", str(answer))):
        subprocess.run([os.environ["VESKAR_PROGRAM"], "calibrate", turned.path, "--format", form, "--report",
                        tmp_path / "said", "-o", tmp_path / "header.json", "--apply",
                        tmp_path / "copy.jsonl"], check=True)
        assert said == (tmp_path / "said").read_text()
    veskar.calibrate(turned, tmp_path / "header2.json", apply=tmp_path / "copy2.jsonl")
    for name in ("header", "copy"):
        end = ".json" if name == "header" else ".jsonl"
        assert (tmp_path / (name + end)).read_bytes() == (tmp_path / f"{name}2{end}").read_bytes()


def test_finds_what_is_wrong(turned, answer, tmp_path):
    assert answer.is_told
    assert answer.values["camera.yaw"]["error"] == pytest.approx(2.0, abs=0.15)
    assert answer.values["lag"]["error"] == pytest.approx(0.2, abs=0.03)
    assert answer.installation.camera.mounting.yaw == pytest.approx(2.0, abs=0.15)
    assert list(answer.to_pandas().query("verdict == 'corrected'").index) == ["camera.yaw", "lag"]
    correlations = answer.correlations()
    assert list(correlations.index) == list(answer.values)
    np.testing.assert_array_equal(correlations, correlations.T)
    assert abs(correlations.loc["camera.pitch", "camera.height"]) > 0.1
    assert pickle.loads(pickle.dumps(answer)).values == answer.values


def test_a_replay_takes_the_corrected_installation(turned, tmp_path):
    veskar.calibrate(turned, tmp_path / "header.json", apply=tmp_path / "copy.jsonl")
    stated = veskar.evaluate(turned)["GOSPA"]
    corrected = veskar.replay(turned, installation=tmp_path / "header.json")
    assert veskar.evaluate(turned, corrected)["GOSPA"] < stated
    assert veskar.evaluate(tmp_path / "copy.jsonl")["GOSPA"] < stated


def test_values_are_estimated_and_held_by_name(turned):
    answer = veskar.calibrate([turned.path], estimate="focalScale", hold=["camera.roll"])
    assert "focalScale" in answer.values and "camera.roll" not in answer.values
    for options, reason in (({"estimate": ["camera.zoom"]}, "camera.zoom: is none of the values"),
                            ({"hold": ["video.smoothing"]}, "video.smoothing: is none of"),
                            ({"estimate": ["radar.yaw"]}, "hold camera.yaw")):
        with pytest.raises(veskar.InputError, match=reason):
            veskar.calibrate(turned, **options)


def test_refuses_what_does_not_belong_together(turned, tmp_path):
    other = tmp_path / "other.jsonl"
    other.write_text(pathlib.Path(turned.path).read_text().replace("5.0]", "6.0]", 1))
    with pytest.raises(veskar.InputError, match="states another installation"):
        veskar.calibrate([turned, other])
    with pytest.raises(veskar.InputError, match="no recording"):
        veskar.calibrate([])
    with pytest.raises(ValueError, match="takes one recording"):
        veskar.calibrate([turned, turned], apply=tmp_path / "copy.jsonl")
    with pytest.raises(ValueError, match="would overwrite the recording"):
        veskar.calibrate(other, apply=other)


def test_does_not_fit_an_error_of_convention(turned, tmp_path):
    mirrored = tmp_path / "mirrored.jsonl"
    with open(turned.path) as lines, open(mirrored, "w") as output:
        for line in map(json.loads, lines):
            for track in line["tracks"] if line.get("source") == "radar" else ():
                track["azimuth"] = -track["azimuth"]
            output.write(json.dumps(line) + "\n")
    with pytest.raises(veskar.InputError, match="azimuth.*veskar check") as raised:
        veskar.calibrate(mirrored)
    assert raised.value.file == str(mirrored)


def test_what_progress_throws_ends_the_work(turned, tmp_path):
    def interrupt(fraction):
        raise KeyboardInterrupt

    with pytest.raises(KeyboardInterrupt):
        veskar.calibrate(turned, tmp_path / "header.json", progress=interrupt)
    assert not (tmp_path / "header.json").exists()
