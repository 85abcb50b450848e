# SPDX-License-Identifier: Apache-2.0
import numpy as np
import pytest

import veskar


@pytest.fixture
def associator():
    plain = veskar.Config.defaults()
    plain.rules = veskar.Config.Rules()
    return veskar.TrackAssociator(plain)


def test_associates_what_is_near(associator, track):
    systems = [veskar.SystemTrack(track(id=1, u=-0.5), 1), veskar.SystemTrack(track(id=2, u=0.5), 2)]
    radar = [track(veskar.Source.RADAR, id=11, u=0.51), track(veskar.Source.RADAR, id=12, u=-0.51)]
    pairs, removed = associator.sensor_to_system_association(radar, systems, veskar.Source.RADAR)
    assert sorted(pairs) == [(0, 1), (1, 0)] and removed == set()
    cost, allowed, class_match = associator.sensor_to_system_cost_matrix(radar, systems,
                                                                         veskar.Source.RADAR)
    np.testing.assert_array_equal(allowed, [[False, True], [True, False]])
    assert cost.shape == (2, 2) and cost[0, 1] < 9999.0 and cost[0, 0] == 9999.0
    assert class_match.all()


def test_gate_tells_distance_and_verdict(associator, track):
    near = associator.check_gating(veskar.SystemTrack(track(), 1), track(veskar.Source.RADAR))
    far = associator.check_gating(veskar.SystemTrack(track(), 1), track(veskar.Source.RADAR, u=0.9))
    assert near.passed and near.distance == pytest.approx(0.0, abs=1e-9)
    assert not far.passed and far.distance > near.distance


def test_nothing_to_associate_gives_nothing(associator, track):
    assert associator.sensor_to_system_association([track()], [], veskar.Source.VIDEO) == ([], set())
    assert associator.system_to_system_association([]) == []


def test_none_among_the_tracks_is_refused(associator):
    with pytest.raises(TypeError, match="None among the tracks"):
        associator.system_to_system_association([None])
    with pytest.raises(TypeError, match="None among the tracks"):
        associator.sensor_to_system_association([None], [], veskar.Source.VIDEO)


def test_assigns_optimally():
    cost = np.array([[1.0, 2.0, 9.0], [1.5, 8.0, 9.0]])
    assert veskar.TrackAssociator.run_jva(cost) == [(0, 1), (1, 0)]
    allowed = np.array([[True, True, True], [False, True, True]])
    assert veskar.TrackAssociator.run_jva(cost, allowed) == [(0, 1)]
    assert veskar.TrackAssociator.run_jva(np.where(allowed, cost, 9999.0), allowed) == (
        [(0, 0), (1, 1)])
    assert veskar.TrackAssociator.run_jva(np.empty((0, 3))) == []
    with pytest.raises(RuntimeError, match="too big"):
        veskar.TrackAssociator.run_jva(np.zeros((513, 1)))
    for wrong in (np.ones((1, 3), bool), np.ones(3, bool)):
        with pytest.raises(ValueError):
            veskar.TrackAssociator.run_jva(cost, wrong)


def test_tells_who_is_held(associator, track):
    systems = [veskar.SystemTrack(track(id=1), 1)]
    assert associator.is_occupied(track(id=1), systems)
    assert not associator.is_occupied(track(id=2), systems)
