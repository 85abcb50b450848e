# SPDX-License-Identifier: Apache-2.0
"""Tables over one or two parameters, on made surfaces of cost."""

import csv
import io
import math

import optuna
import pytest

from surfaces import every_metric

from veskar.tune import grid
from veskar.tune.samples import Processes, Sample
from veskar.tune.search import Search
from veskar.tune.storage import Storage
from veskar.tune.study import Parameter, Scene, Study, StudyError

STUDY = Study("study.json", "made", None,
              (Parameter("width", 1.0, 16.0, log=True), Parameter("count", 1, 4),
               Parameter("rule", choices=("near", "far"))),
              (Scene("fog", "GOSPA", 1.0, "unused", None, (1, 2), (101, 102)),
               Scene("crossing", "GOSPA", 0.0, "unused", None, (1,), (101, 102))),
              0.02, 100, 3, 1, {})


def surface(job):
    """Fog is best at a width of 4; a count of 4 spoils the crossing."""
    _, changes, sample = job
    if sample.scene == "crossing":
        return 2.0 if changes.get("count") == 4 else 1.0
    return 0.5 + abs(math.log2(changes.get("width", 1.0)) - 2.0) + 0.1 * int(sample.case)


@pytest.fixture
def tabulate(tmp_path):
    """Fills a grid, with at most so many trials; gives the search and the axes."""

    def tabulate(*words, cost=surface):
        axes = grid.read_axes(STUDY, words)
        samples = [Sample("fog", "1", ("GOSPA",), ""), Sample("fog", "2", ("GOSPA",), ""),
                   Sample("crossing", "1", ("GOSPA",), "")]
        with Processes(1) as processes:
            search = Search(grid.study_of(STUDY, axes), samples, processes,
                            Storage(f"sqlite:///{tmp_path}/study.db"), every_metric(cost))
            search.try_all(grid.settings_of(axes))
        return search, axes

    return tabulate


def test_axes_are_steps_of_the_range_or_the_choices():
    axes = grid.read_axes(STUDY, ["width=3", "rule"])
    assert axes == {"width": (1.0, pytest.approx(4.0), 16.0), "rule": ("near", "far")}
    assert grid.read_axes(STUDY, ["count=9"]) == {"count": (1, 2, 3, 4)}  # whole numbers, each once
    assert len(grid.read_axes(STUDY, ["width"])["width"]) == 5


@pytest.mark.parametrize("words, complaint", [
    (["wide"], "--grid wide: not a parameter of the study, which are width, count, rule"),
    (["width=1"], "--grid width=1: 1 is not a whole number from 2 on"),
    (["rule=2"], "--grid rule=2: the values of rule are its choices"),
    (["width", "count", "rule"], "one parameter or two different ones"),
    (["width", "width=3"], "one parameter or two different ones"),
])
def test_axes_that_cannot_be_used_are_told(words, complaint):
    with pytest.raises(StudyError, match=complaint):
        grid.read_axes(STUDY, words)


def test_the_table_has_a_score_for_each_combination(tabulate):
    search, axes = tabulate("width=3", "count=2")
    assert search.finished == 6
    assert grid.grid_table(search, axes) == """\
made: width=3, count=2: score in training; the baseline has 2.6500
Down: width; right: count

                      1           4
1                2.6500      2.6500!
4               *0.6500     *0.6500!
16               2.6500      2.6500!

* the best score   ! a scene is worse than tolerated
"""
    rows = list(csv.DictReader(io.StringIO(grid.grid_csv(search, axes))))
    assert [(row["width"], row["count"], row["tolerated"]) for row in rows] == [
        ("1", "1", "true"), ("1", "4", "false"), ("4", "1", "true"), ("4", "4", "false"),
        ("16", "1", "true"), ("16", "4", "false")]
    assert [float(rows[3][key]) for key in ("score", "fog", "crossing")] == pytest.approx([0.65, 0.65, 2.0])


def test_the_table_of_one_parameter_is_a_column(tabulate):
    search, axes = tabulate("rule")
    assert "near            *2.6500\nfar             *2.6500\n" in grid.grid_table(search, axes)


def test_an_interrupted_grid_goes_on(tabulate, tmp_path):
    tries = []

    def breaks(job):
        tries.append(job[1])
        if len(tries) == 3 * 3:  # samples of the baseline, the first setting and the second
            raise KeyboardInterrupt
        return surface(job)

    with pytest.raises(KeyboardInterrupt):
        tabulate("width=3", cost=breaks)
    search, axes = tabulate("width=3")
    assert search.finished == 3 and "-" not in grid.grid_table(search, axes)
    again, _ = tabulate("width=3")
    made = optuna.load_study(study_name=search.study.name, storage=f"sqlite:///{tmp_path}/study.db")
    assert [trial.state.name for trial in made.trials] == ["COMPLETE", "FAIL", "COMPLETE", "COMPLETE"]
    assert again.finished == 3


def test_grids_and_the_search_keep_their_own_trials(tabulate):
    assert tabulate("width=3")[0].finished == 3
    assert tabulate("width=5")[0].finished == 5
