# SPDX-License-Identifier: Apache-2.0
"""Trials that are given up after their first recordings."""

import collections

import optuna
import pytest

from surfaces import every_metric

from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search, first_and_rest
from veskar.tune.storage import Storage
from veskar.tune.study import Parameter, Scene, Study

SEEDS = {"fog": range(1, 9), "crossing": range(1, 4)}
SAMPLES = [Sample(scene, str(seed), ("GOSPA",), "") for scene, seeds in SEEDS.items() for seed in seeds]


@pytest.fixture
def searched(tmp_path):
    """Searches a valley of cost; gives the search, its trials, and the recordings tried by setting."""

    def run(prune):
        study = Study("study.json", "made", None, (Parameter("x", 0.0, 10.0),),
                      tuple(Scene(scene, "GOSPA", 1.0, "unused", None, tuple(seeds), (101, 102))
                            for scene, seeds in SEEDS.items()), 0.02, 30, 3, 1, {}, prune)
        tried = collections.defaultdict(list)

        def cost(job):
            _, changes, sample = job
            tried[changes.get("x")].append(sample.name)
            return 1.0 + abs(changes.get("x", 0.0) - 6.0)

        url = f"sqlite:///{tmp_path}/study.db"
        with Processes(1) as processes:
            search = Search(study, SAMPLES, processes, Storage(url), every_metric(cost))
            search.run(study.trials)
        return search, optuna.load_study(study_name="made", storage=url).get_trials(), tried

    return run


def test_hopeless_trials_are_given_up_after_the_first_recordings(searched):
    search, trials, tried = searched(True)
    pruned = [trial for trial in trials if trial.state.name == "PRUNED"]
    complete = [trial for trial in trials if trial.state.name == "COMPLETE"]
    assert len(trials) == search.finished == 30 and 0 < len(pruned) == search.pruned
    assert all(trial.state.name == "COMPLETE" for trial in trials[:10])  # nothing to compare with yet
    for trial in pruned:
        assert tried[trial.params["x"]] == ["fog/1", "fog/2", "crossing/1"]
    for trial in complete:
        assert sorted(tried[trial.params["x"]]) == sorted(sample.name for sample in SAMPLES)
    assert len(tried[None]) == len(SAMPLES)  # the baseline


def test_a_pruned_trial_is_never_a_finalist(searched):
    search, trials, _ = searched(True)
    pruned = {trial.number for trial in trials if trial.state.name == "PRUNED"}
    # Some of them are better than the baseline, which costs 7.
    assert any(trial.value < 7.0 for trial in trials if trial.number in pruned)
    assert search.feasible() and not pruned & {trial.number for trial in search.feasible()}
    assert search.feasible()[0].params["x"] == pytest.approx(6.0, abs=0.5)


def test_a_study_can_turn_it_off(searched):
    search, trials, _ = searched(False)
    assert search.pruned == 0 and {trial.state.name for trial in trials} == {"COMPLETE"}


def test_the_first_recordings_are_of_every_scene():
    first, rest = first_and_rest(SAMPLES)
    assert [sample.name for sample in first] == ["fog/1", "fog/2", "crossing/1"]
    assert [*first, *rest] != SAMPLES and {*first, *rest} == {*SAMPLES} and len(first) + len(rest) == 11
    single = [Sample("fog", "1", ("GOSPA",), ""), Sample("yard", "1", ("GOSPA",), "")]
    assert first_and_rest(single) == ([], single)  # nothing would be saved
