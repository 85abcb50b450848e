# SPDX-License-Identifier: Apache-2.0
"""The search and its judgement on made surfaces of cost, which take no replays."""

import random

import optuna
import pytest

from surfaces import every_metric

from veskar.tune.judgement import judge
from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search
from veskar.tune.storage import Storage
from veskar.tune.study import Parameter, Scene, Study, StudyError

SEEDS = {"training": range(1, 5), "held_out": range(101, 111)}


def study_of(tolerance=0.02, trials=40, **document):
    scenes = tuple(Scene(name, "GOSPA", weight, "unused", None, tuple(SEEDS["training"]),
                         tuple(SEEDS["held_out"]))
                   for name, weight in (("fog", 1.0), ("crossing", 0.0)))
    parameters = (Parameter("veskarModule.gatingDistance", 0.0, 10.0),)
    return Study("study.json", "made", None, parameters, scenes, tolerance, trials, 3, 1, document)


def samples(part):
    return [Sample(scene, str(seed), ("GOSPA",), "") for scene in ("fog", "crossing") for seed in SEEDS[part]]


def noise(sample, spread=0.01):
    return random.Random(sample.name).gauss(0.0, spread)


def better_at_7(job):
    """Fog becomes better up to 7, and crossing stays."""
    _, changes, sample = job
    x = changes.get("veskarModule.gatingDistance", 2.0)
    return 1.0 + noise(sample) + (0.02 * abs(x - 7.0) if sample.scene == "fog" else 0.0)


def better_where_trained(job):
    """As above, but beyond 3 crossing becomes worse with the seeds that the search does not see."""
    _, changes, sample = job
    x = changes.get("veskarModule.gatingDistance", 2.0)
    unseen = sample.scene == "crossing" and int(sample.case) > 100
    return better_at_7(job) + (0.05 * max(0.0, x - 3.0) if unseen else 0.0)


def worse_crossing(job):
    """As the first, but beyond 5 crossing becomes worse with every seed."""
    _, changes, sample = job
    x = changes.get("veskarModule.gatingDistance", 2.0)
    return better_at_7(job) + (0.1 * max(0.0, x - 5.0) if sample.scene == "crossing" else 0.0)


def luck(job):
    """No setting has an effect; every one has its luck with each seed."""
    _, changes, sample = job
    return 1.0 + random.Random(f"{changes}{sample.name}").gauss(0.0, 0.1)


@pytest.fixture
def storage(tmp_path):
    return f"sqlite:///{tmp_path}/study.db"


@pytest.fixture
def searched(storage):
    """Searches a surface; gives the search and what was judged."""

    def search(cost, study=None):
        study = study or study_of()
        with Processes(1) as processes:
            made = Search(study, samples("training"), processes, Storage(storage), every_metric(cost))
            made.run(study.trials)
            return made, list(made.judge(samples("held_out")))

    return search


def test_a_better_setting_is_recommended(searched):
    search, [(trial, verdict)] = searched(better_at_7)
    assert verdict.accepted and verdict.faults == ()
    assert trial.params["veskarModule.gatingDistance"] == pytest.approx(7.0, abs=1.0)
    assert verdict.score.low <= verdict.score.mean <= verdict.score.high < 0.0
    assert verdict.scenes["crossing"].mean == 0.0
    assert search.finished == 40


def test_a_setting_that_overfits_is_not_recommended(searched):
    search, judged = searched(better_where_trained)
    assert len(judged) == 3 and len(search.feasible()) > 3
    for trial, verdict in judged:
        assert trial.value < 1.1 - 0.05  # much better in training
        assert not verdict.accepted
        assert any(fault.startswith("crossing may get worse") for fault in verdict.faults)


def test_a_scene_that_gets_worse_in_training_is_left_alone(searched):
    _, judged = searched(worse_crossing)
    trial, verdict = judged[-1]
    assert verdict.accepted
    assert 4.0 < trial.params["veskarModule.gatingDistance"] <= 5.3  # 2 % are tolerated: 5.2


def test_luck_is_not_recommended(searched):
    search, judged = searched(luck, study_of(tolerance=0.2))
    assert search.feasible() and judged
    assert not any(verdict.accepted for _, verdict in judged)


def test_a_search_goes_on_where_it_stopped(storage):
    def run(count):
        with Processes(1) as processes:
            search = Search(study_of(), samples("training"), processes, Storage(storage),
                            every_metric(better_at_7))
            search.run(count)
            return [trial.params for trial in search.feasible()], search

    first, search = run(12)
    assert search.finished == 12
    more, search = run(20)
    assert search.finished == 20
    assert all(params in more for params in first)
    again, search = run(20)
    assert search.finished == 20 and again == more


def test_an_interrupted_trial_is_tried_once_again(storage):
    def trials():
        return optuna.load_study(study_name="made", storage=storage)

    with Processes(1) as processes:
        def search():
            return Search(study_of(), samples("training"), processes, Storage(storage),
                          every_metric(better_at_7))

        search().run(3)
        trials().ask()  # killed before it had a value
        tried = trials().ask().suggest_float("veskarModule.gatingDistance", 0.0, 10.0)
        search()
        trials().ask()  # killed when the second try had just begun
        search().run(5)
    made = trials().get_trials()
    assert [trial.state.name for trial in made] == ["COMPLETE"] * 3 + ["FAIL"] * 3 + ["COMPLETE"] * 2
    assert [trial.params["veskarModule.gatingDistance"] for trial in made[6:]].count(tried) == 1


def test_trials_of_another_study_are_refused(storage):
    with Processes(1) as processes:
        Search(study_of(), samples("training"), processes, Storage(storage),
               every_metric(better_at_7)).run(1)
        with pytest.raises(StudyError, match="have changed since"):
            Search(study_of(scenes={"fog": {}}), samples("training"), processes, Storage(storage),
                   every_metric(better_at_7))


def test_intervals_are_those_of_paired_differences():
    study = study_of(tolerance=0.0)
    names = [sample.name for sample in samples("held_out")]
    baseline = {name: {"GOSPA": 5.0 + index} for index, name in enumerate(names)}
    candidate = {name: {"GOSPA": costs["GOSPA"] + (-0.2 if index % 2 else -0.4)}
                 for index, (name, costs) in enumerate(baseline.items())}
    verdict = judge(study, baseline, candidate, 0.95)
    # Ten differences with a standard deviation of 0.1 * sqrt(10 / 9); Student's t with 9 degrees: 2.262.
    half = 2.262157 * 0.1 / 3.0
    assert verdict.scenes["fog"].mean == pytest.approx(-0.3)
    assert verdict.scenes["fog"].high == pytest.approx(-0.3 + half, rel=1e-5)
    assert verdict.score.low == pytest.approx(-0.3 - half, rel=1e-5)
    assert verdict.accepted


def test_a_scene_that_the_seeds_cannot_tell_counts_as_worse():
    study = study_of(tolerance=0.02)
    names = [sample.name for sample in samples("held_out")]
    baseline = dict.fromkeys(names, {"GOSPA": 1.0})
    swing = {name: (0.3 if index % 2 else -0.3) for index, name in enumerate(names)}
    candidate = {name: {"GOSPA": 1.0 + (swing[name] if name.startswith("crossing") else -0.5)}
                 for name in names}
    verdict = judge(study, baseline, candidate, 0.95)
    assert verdict.scenes["crossing"].mean == pytest.approx(0.0)
    assert [fault.split()[0] for fault in verdict.faults] == ["crossing"]
