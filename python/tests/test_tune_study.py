# SPDX-License-Identifier: Apache-2.0
"""Study documents, and what is made of them."""

import json

import pytest

import veskar
from veskar.tune import StudyError, read_study
from veskar.tune.samples import Processes, cost, samples_of
from veskar.tune.settings import changed, temporary_configuration


@pytest.fixture
def document(root):
    return {
        "base": str(root / "config/fusion-plain.json"),
        "parameters": {"veskarModule.gatingDistance": {"low": 3.0, "high": 12.0, "log": True},
                       "veskarModule.useJVA": {"choices": [True, False]},
                       "radarGain": {"low": 0.5, "high": 4}},
        "scenes": {"walk": {"scenario": str(root / "config/scenarios/perimeter.json"), "duration": 3.0,
                            "training": [1], "heldOut": [101, 102]}},
    }


@pytest.fixture
def read(document, tmp_path):
    def read():
        path = tmp_path / "study.json"
        path.write_text(json.dumps(document))
        return read_study(path)

    return read


def test_a_study_is_read(read, document):
    study = read()
    assert (study.name, study.tolerance, study.trials, study.prune) == ("study", 0.02, 100, True)
    assert [parameter.key for parameter in study.parameters] == list(document["parameters"])
    assert study.parameters[1].choices == (True, False)
    [scene] = study.scenes
    assert (scene.metric, scene.weight, scene.training, scene.held_out) == ("GOSPA", 1.0, (1,), (101, 102))


def test_the_shipped_study_can_be_searched(root, tmp_path):
    study = read_study(root / "config/studies/fog-and-crowd.json")
    assert {scene.name: scene.weight for scene in study.scenes} == {
        "fog": 1, "crowd": 1, "crossing": 0, "perimeter": 0, "road": 0}
    for scene in study.scenes:
        assert scene.training == tuple(range(1, 9)) and scene.held_out == tuple(range(101, 111))
        veskar.simulate(scene.scenario, tmp_path / f"{scene.name}.jsonl", duration=0.5)


@pytest.mark.parametrize("place, value, complaint", [
    (("paramters",), {}, "paramters: not known here"),
    (("trials",), 0, "trials: 0 is not a whole number from 1 on"),
    (("prune",), 1, "prune: 1 is not true or false"),
    (("tolerance",), True, "tolerance: true is not a fraction from 0 to 1"),
    (("parameters",), {}, "parameters: no parameter to search"),
    (("parameters", "radarGain", "high"), 0.5, "parameters.radarGain.high: 0.5 is not a number above 0.5"),
    (("parameters", "veskarModule.gatingDistance", "low"), 0, "gatingDistance.low: 0 has no logarithm"),
    (("parameters", "veskarModule.useJVA", "choices"), [True], r"useJVA.choices: \[true\] is not a list"),
    (("parameters", "veskarModule.gatingDistanc"), {"low": 1, "high": 2},
     "parameters.veskarModule.gatingDistanc: with 1: the key is not known"),
    (("parameters", "radarGain", "low"), -0.5, "parameters.radarGain: with -0.5: expected a number above 0"),
    (("parameters", "veskarModule.trackKillTime"), {"low": 1, "high": 2},
     "trackKillTime: with 1: .* write 1.0"),
    (("scenes", "walk", "heldOut"), [1, 2], "scenes.walk.heldOut: 1 is used for training, too"),
    (("scenes", "walk", "heldOut"), [101], "scenes.walk.heldOut: .* is not a list of 2 or more"),
    (("scenes", "walk", "training"), ["a"],
     "scenes.walk.training: .* is not a list of 1 or more different seeds"),
    (("scenes", "walk", "metric"), "GOPSA", "scenes.walk.metric: \"GOPSA\" is not one of GOSPA"),
    (("scenes", "walk", "weight"), 0, "scenes: no scene with a weight above 0"),
])
def test_faults_are_named(read, document, place, value, complaint):
    target = document
    for key in place[:-1]:
        target = target[key]
    target[place[-1]] = value
    with pytest.raises(StudyError, match=complaint) as error:
        read()
    assert "study.json: " in str(error.value)


def test_unusual_values_may_be_tried(read, document):
    document["parameters"] = {"veskarModule.systemTrackConfirmationLimitUpper": {"low": 0.6, "high": 0.9}}
    assert any(finding.severity == "warning" and "unusual" in finding.message
               for finding in _findings(read()))


def _findings(study):
    with temporary_configuration(study.base, {study.parameters[0].key: study.parameters[0].low}) as path:
        return veskar.check(path)


def test_what_is_not_json_is_told(tmp_path):
    (tmp_path / "study.json").write_text("{")
    with pytest.raises(StudyError, match="study.json: not JSON"):
        read_study(tmp_path / "study.json")


def test_the_changed_configuration_is_that_of_the_changes(read, tmp_path):
    study = read()
    with Processes(1) as processes:
        [sample] = samples_of(study, "training", tmp_path / "made", processes)
    changes = {"veskarModule.gatingDistance": 4.5, "veskarModule.useJVA": False, "radarGain": 2.5}
    path = tmp_path / "best.json"
    path.write_text(json.dumps(changed(study.base, changes)))
    run = veskar.replay(sample.path, study.base, changes=changes)
    assert json.loads(path.read_text())["veskarHost"]["radarGain"] == 2.5

    def tracks(run):  # without the last line, which states what the run was made from
        return run.to_bytes().splitlines()[1:-1]

    assert tracks(veskar.replay(sample.path, path)) == tracks(run)
    assert tracks(veskar.replay(sample.path, study.base)) != tracks(run)
    judged = veskar.evaluate(sample.path, config=path)
    assert cost((study.base, changes, sample)) == {"GOSPA": judged["GOSPA"]}
    several = sample._replace(metrics=("GOSPA", "IDSW"))
    assert cost((study.base, changes, several)) == {"GOSPA": judged["GOSPA"], "IDSW": judged["IDSW"]}


def test_scenarios_are_played_once(read, document, tmp_path):
    with Processes(2) as processes:
        samples = samples_of(read(), "held_out", tmp_path / "made", processes)
        assert [sample.name for sample in samples] == ["walk/101", "walk/102"]
        written = [(tmp_path / sample.path).stat().st_mtime_ns for sample in samples]
        assert samples_of(read(), "held_out", tmp_path / "made", processes) == samples
        assert [(tmp_path / sample.path).stat().st_mtime_ns for sample in samples] == written
        document["scenes"]["walk"]["duration"] = 2.0
        assert samples_of(read(), "held_out", tmp_path / "made", processes)[0].path != samples[0].path


def test_what_more_is_better_costs_what_it_lacks_to_one(read, document, tmp_path):
    document["scenes"]["walk"]["metric"] = "HOTA"
    study = read()
    with Processes(1) as processes:
        [sample] = samples_of(study, "training", tmp_path / "made", processes)
    hota = veskar.evaluate(sample.path, config=study.base)["HOTA"]
    assert cost((study.base, {}, sample)) == {"HOTA": 1.0 - hota}
