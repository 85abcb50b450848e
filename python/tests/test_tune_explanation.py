# SPDX-License-Identifier: Apache-2.0
"""Which parameters mattered, in numbers and in words."""

import builtins
import json

import pytest

from surfaces import every_metric

from veskar.tune.explanation import explain, importance_lines
from veskar.tune.judgement import judge
from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search
from veskar.tune.settings import changed, value_in
from veskar.tune.storage import Storage
from veskar.tune.study import Parameter, Scene, Study

GATE, RADAR, METHOD = "veskarModule.gatingDistance", "radarGain", "veskarModule.useJVA"


def made(function, root):
    """Trials on a surface of cost, independent of each other, unlike those of a search."""
    study = Study("study.json", "made", str(root / "config/fusion-plain.json"),
                  (Parameter(GATE, 0.0, 10.0), Parameter(RADAR, 0.5, 4.0),
                   Parameter(METHOD, choices=(True, False))),
                  (Scene("fog", "GOSPA", 1.0, "unused", None, (1, 2), (101, 102, 103)),
                   Scene("yard", "HOTA", 0.0, "unused", None, (1, 2), (101, 102, 103))),
                  0.02, 100, 3, 1, {})
    samples = [Sample(scene.name, str(seed), (scene.metric,), "") for scene in study.scenes
               for seed in (1, 2)]
    with Processes(1) as processes:
        search = Search(study, samples, processes, Storage("sqlite://"), every_metric(function))
        search.try_all([{GATE: gate, RADAR: radar, METHOD: method} for gate in (0.0, 3.0, 6.0, 9.0)
                        for radar in (0.5, 2.0, 4.0) for method in (True, False)])
    return search


@pytest.fixture
def search(root):
    """The gate matters much, the radar little, and the method not at all."""

    def cost(job):
        _, changes, sample = job
        if sample.scene == "yard" or not changes:
            return 1.0
        return 0.5 + 0.05 * abs(changes[GATE] - 9.0) + 0.06 * changes[RADAR]

    return made(cost, root)


def test_the_parameter_that_matters_is_the_first(search):
    importances = search.importances()
    assert list(importances) == [GATE, RADAR, METHOD]
    assert sum(importances.values()) == pytest.approx(1.0)
    assert importances[GATE] > 0.6 and importances[METHOD] < 0.05
    assert search.importances() == importances  # the same each time
    assert importance_lines(importances)[1].endswith(f"%  {GATE}")


def test_a_score_that_does_not_vary_has_no_importances(root):
    search = made(lambda job: 1.0, root)
    assert search.importances() == {}
    assert explain(search, [], {}) == (
        "The score does not depend on the parameters.\n"
        "No trial was better than the baseline without making a scene worse than tolerated.\n")


def test_without_the_package_it_is_told_what_to_install(search, monkeypatch):
    imported = builtins.__import__

    def without(name, *others, **named):
        if name.startswith("sklearn"):
            raise ImportError(name)
        return imported(name, *others, **named)

    from optuna.importance._fanova import _fanova
    monkeypatch.setattr(builtins, "__import__", without)
    with _fanova._imports:
        import sklearn  # noqa: F401
    try:
        assert search.importances() is None
        assert importance_lines(None) == ["Importances of the parameters need python3-sklearn."]
    finally:
        _fanova._imports._deferred = None


def test_the_explanation_says_what_moved_and_what_changed(search):
    held_out = [f"{scene}/{seed}" for scene in ("fog", "yard") for seed in (101, 102, 103)]
    metric = {name: "GOSPA" if name.startswith("fog") else "HOTA" for name in held_out}
    baseline = {name: {metric[name]: 1.0 + 0.1 * index} for index, name in enumerate(held_out)}

    def costlier(by):
        return {name: {metric[name]: baseline[name][metric[name]] + by[metric[name]]} for name in held_out}

    trial = search.feasible()[0]
    better = costlier({"GOSPA": -0.3, "HOTA": 0.0})
    text = explain(search, [(trial, judge(search.study, baseline, better, 0.95))],
                   {GATE: 0.9, RADAR: 0.08, METHOD: 0.02})
    assert f"depended on {GATE} (90%), {RADAR} (8%).\nIt hardly depended on {METHOD} " in text
    assert f"Trial {trial.number}, the recommended setting" in text
    gate, radar, method = text.split("baseline:\n")[1].splitlines()[:3]
    before = value_in(search.study.base, GATE)
    assert gate == f"  {GATE} rises from {before:.4g} to {trial.params[GATE]:.4g} (90%)"
    assert radar.startswith(f"  {RADAR} falls from 3 to {trial.params[RADAR]:.4g} (8%)")
    assert method.startswith(f"  {METHOD} ")
    assert "fog becomes better: GOSPA from 1.1000 to 0.8000, -27%" in text
    assert "yard does not change with confidence: what HOTA lacks to 1 from 1.4000 to 1.4000" in text
    worse = costlier({"GOSPA": 1.0, "HOTA": 1.0})
    text = explain(search, [(trial, judge(search.study, baseline, worse, 0.95))], None)
    assert "the best setting in training" in text and "fog becomes worse" in text
    assert "It is not recommended:\n  the score is not better" in text


def test_values_of_a_configuration_include_defaults(root, tmp_path):
    document = changed(str(root / "config/fusion-plain.json"), {GATE: 4.5})
    document.pop("veskarRules", None)
    path = str(tmp_path / "base.json")
    (tmp_path / "base.json").write_text(json.dumps(document))
    assert value_in(path, GATE) == 4.5
    assert value_in(path, "veskarRules.pairMemory") is False
    assert value_in(path, RADAR) == 3.0
    assert value_in(None, "videoGain") == 2.0
