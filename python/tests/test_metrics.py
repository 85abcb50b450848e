# SPDX-License-Identifier: Apache-2.0
import itertools
import math

import numpy as np
import pandas as pd
import pytest

import veskar
from veskar import metrics


def table(*rows):
    return pd.DataFrame(rows, columns=["time", "id", "x", "y"])


def brute_force(truth, tracks, cutoff, order):
    """GOSPA by trying every assignment."""
    best = math.inf
    for size in range(min(len(truth), len(tracks)) + 1):
        for objects in itertools.combinations(range(len(truth)), size):
            for chosen in itertools.permutations(range(len(tracks)), size):
                cost = sum(math.dist(truth[i], tracks[j])**order for i, j in zip(objects, chosen))
                left = len(truth) + len(tracks) - 2 * size
                best = min(best, cost + cutoff**order / 2 * left)
    return best**(1 / order)


@pytest.mark.parametrize("seed", range(20))
def test_gospa_is_the_best_of_all_assignments(seed):
    random = np.random.default_rng(seed)
    truth, tracks = (random.uniform(0, 8, (random.integers(0, 5), 2)) for _ in range(2))
    order = float(random.choice([1.0, 2.0, 3.0]))
    found = metrics.gospa(truth, tracks, 4.0, order)
    assert found["gospa"] == pytest.approx(brute_force(truth, tracks, 4.0, order), rel=1e-12)
    matched = len(truth) - found["missed"]
    assert matched == len(tracks) - found["false"]


def test_ospa_of_a_known_example():
    # One pair 3 m apart, one object alone: sqrt((3^2 + 5^2) / 2).
    assert metrics.ospa([[0, 0], [50, 0]], [[3, 0]], 5.0) == pytest.approx(math.sqrt(17), rel=1e-12)
    assert metrics.ospa([], []) == 0.0


def test_a_perfect_tracker_is_perfect():
    truth = table(*[(t, i, float(i), 0.1 * t) for t in range(10) for i in (3, 7)])
    figures = metrics.judge(truth, truth.assign(id=truth["id"] * 10))
    for name in ("MOTA", "MOTP", "IDF1", "IDP", "IDR", "HOTA", "DetA", "AssA", "LocA"):
        assert figures[name] == pytest.approx(1.0, rel=1e-12)
    assert figures["GOSPA"] == figures["OSPA"] == 0.0 and figures["TP"] == 20


def test_a_change_of_the_id_costs_identity():
    truth = table(*[(t, 1, 0.0, 0.0) for t in range(10)])
    tracks = truth.assign(id=[5] * 6 + [6] * 4)
    assert metrics.clear_mot(truth, tracks)["IDSW"] == 1
    # IDTP 6, IDFP 4, IDFN 4.
    assert metrics.identity(truth, tracks)["IDF1"] == pytest.approx(0.6, rel=1e-12)
    # AssA: (6 (6/10) + 4 (4/10)) / 10 in all thresholds; DetA is 1.
    assert metrics.hota(truth, tracks)["HOTA"] == pytest.approx(math.sqrt(0.52), rel=1e-12)


def test_rows_may_come_in_any_order_and_form():
    truth = table(*[(t, i, 10.0 * i + t, 0.0) for t in range(5) for i in range(3)])
    tracks = truth.assign(x=truth["x"] + 0.5).sample(frac=1.0, random_state=1)
    expected = metrics.judge(truth, tracks)
    assert expected["GOSPA"] == pytest.approx(math.sqrt(3 * 0.25), rel=1e-12)
    shuffled = truth.sample(frac=1.0, random_state=2)
    assert metrics.judge({name: shuffled[name].to_numpy() for name in shuffled}, tracks) == expected
    named = truth.assign(id=truth["id"].map({0: "a", 1: "b", 2: "c"}))
    assert metrics.judge(named, tracks) == expected


def test_moments_have_the_mean_of_the_whole():
    truth = table(*[(t, 1, float(t), 0.0) for t in range(5)])
    tracks = table((0, 1, 0.5, 0.0), (2, 1, 2.0, 1.0), (9, 1, 0.0, 0.0))
    moments = metrics.over_time(truth, tracks)
    assert list(moments["time"]) == [0, 1, 2, 3, 4, 9]
    assert list(moments["missed"]) == [0, 1, 0, 1, 1, 0] and moments["false"].sum() == 1
    assert moments["gospa"].mean() == pytest.approx(metrics.judge(truth, tracks)["GOSPA"], rel=1e-12)


@pytest.mark.parametrize("tracks, message", [
    (pd.DataFrame({"time": [0.0]}), 'columns "time", "id", "x" and "y"'),
    (table((0, 1, 0.0, 0.0), (0, 1, 1.0, 0.0)), "an id occurs twice at one time"),
    (table((0, 1, math.nan, 0.0)), "finite positions"),
    (table((math.nan, 1, 0.0, 0.0)), "a time is not finite"),
])
def test_wrong_tables_are_refused(tracks, message):
    with pytest.raises(ValueError, match=message):
        metrics.judge(table((0, 1, 0.0, 0.0)), tracks)


def test_wrong_parameters_are_refused():
    for options in ({"cutoff": 0.0}, {"cutoff": math.nan}, {"order": 0.5}):
        with pytest.raises(ValueError):
            metrics.gospa([[0, 0]], [[0, 0]], **options)
    with pytest.raises(ValueError):
        metrics.gospa([[0, 0, 0]], [[0, 0]])


def test_reads_mot(tmp_path):
    file = tmp_path / "mot.txt"
    file.write_text("1,4,10,20,30,40,0.9,5.5,-2.5,0\n\n3, 4, 11, 20, 30, 40, 1, 6, -2, 0\n")
    read = metrics.read_mot(file, 10.0)
    assert read[["time", "id", "x", "y"]].values.tolist() == [[0.0, 4, 5.5, -2.5], [0.2, 4, 6, -2]]
    flat = tmp_path / "flat.txt"
    flat.write_text("1,4,10,20,30,40,0.9,-1,-1,-1\n")
    with pytest.raises(veskar.InputError, match="no world coordinates") as raised:
        metrics.read_mot(flat, 10.0)
    assert (raised.value.file, raised.value.line) == (str(flat), 1)
    ground = metrics.read_mot(flat, 10.0, lambda left, top, width, height: (top + height, left))
    assert (ground["x"][0], ground["y"][0]) == (60.0, 10.0)


def test_reads_kitti(root, tmp_path):
    labels = metrics.read_kitti(root / "tests/workbench/data/kitti.labels.txt")
    assert len(labels) > 0 and "DontCare" not in set(labels["class"])
    assert metrics.judge(labels, labels)["HOTA"] == pytest.approx(1.0, rel=1e-12)
    file = tmp_path / "kitti.txt"
    file.write_text("3 2 Car 0 0 -1.5 1 2 3 4 1.5 1.6 4 -2.5 1.7 12.5 0\n")
    row, = metrics.read_kitti(file).values.tolist()
    assert row == [0.3, 2, 12.5, 2.5, "Car"]
    file.write_text("3 2 Car 0 0\n")
    with pytest.raises(veskar.InputError, match="5 columns where 17 are needed"):
        metrics.read_kitti(file)
    file.write_text("3 2 Car 0 0 -1.5 1 2 3 4 1.5 1.6 4 left 1.7 12.5 0\n")
    with pytest.raises(veskar.InputError, match='"left" is no number'):
        metrics.read_kitti(file)
