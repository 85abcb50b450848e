# SPDX-License-Identifier: Apache-2.0
import gc

import numpy as np
import pytest

import veskar


def test_matrices_are_views_that_keep_the_track_alive(track):
    made = track()
    state = made.state
    assert state.shape == (6,) and made.covariance.shape == (6, 6)
    state[0] = 0.5
    made.covariance[0, 0] = 4.0
    assert made.state[0] == 0.5 and made.covariance[0, 0] == 4.0
    assert np.shares_memory(state, made.state)
    del made
    gc.collect()
    assert state[0] == 0.5


def test_predicts_with_constant_velocity(track):
    made = track()
    before, covariance = made.state.copy(), made.covariance.copy()
    made.predict(2.0)
    transition = veskar.constant_velocity(2.0)
    np.testing.assert_allclose(made.state, transition @ before, atol=1e-15)
    np.testing.assert_allclose(made.covariance, transition @ covariance @ transition.T, atol=1e-15)
    assert made.time == 2.0


def test_distance_is_that_of_mahalanobis(track):
    one, other = track(), track(u=0.2)
    difference = one.state - other.state
    expected = np.sqrt(difference @ np.linalg.solve(one.covariance + other.covariance, difference))
    assert one.statistical_distance(other) == pytest.approx(expected, rel=1e-12)


def test_a_gain_must_be_given():
    with pytest.raises(TypeError):
        veskar.Track(np.zeros(6), np.eye(6), 0.0, 1, veskar.Source.RADAR)


def test_wrong_shapes_and_none_are_type_errors(track):
    with pytest.raises(TypeError):
        veskar.Track(np.zeros(5), np.eye(6), 0.0, 1, veskar.Source.RADAR, probability=1.0)
    with pytest.raises(TypeError):
        track().statistical_distance(None)
    with pytest.raises(TypeError):
        veskar.SystemTrack(None, 1)


def test_a_system_track_fuses_in_information_form(track):
    video, radar = track(), track(veskar.Source.RADAR, id=7, u=0.12)
    fused = veskar.SystemTrack(video, 3)
    fused.update_state(radar)
    information = np.linalg.inv(video.covariance) + np.linalg.inv(radar.covariance)
    expected = np.linalg.solve(information, np.linalg.solve(video.covariance, video.state) +
                               np.linalg.solve(radar.covariance, radar.state))
    np.testing.assert_allclose(fused.state, expected, rtol=1e-9)
    assert set(fused.sensor_tracks) >= {veskar.Source.VIDEO, veskar.Source.RADAR}
    assert fused.sensor_tracks[veskar.Source.RADAR] == {7: radar}
    assert fused.id == 3 and fused.label() == "human"


def test_a_sensor_track_can_be_taken_out_again(track):
    video, radar = track(), track(veskar.Source.RADAR, id=7, u=0.12)
    fused = veskar.SystemTrack(video, 3)
    before = fused.state.copy()
    fused.update_state(radar)
    assert abs(fused.state[0] - before[0]) > 1e-3
    fused.remove_track(veskar.Source.RADAR, 7)
    np.testing.assert_allclose(fused.state, before, rtol=1e-9)
    assert not fused.has_tracks(veskar.Source.RADAR)
    fused.update_state(radar)
    fused.apply_defusion(radar)
    np.testing.assert_allclose(fused.state, before, rtol=1e-9)
    assert fused.has_tracks(veskar.Source.RADAR)


def test_a_system_track_answers_from_its_sensor_tracks(track):
    radar = track(veskar.Source.RADAR, id=7, class_name="car")
    radar.speed, radar.direction = 3.0, [1.0, 0.0]
    radar.location = veskar.SphericalCoordinate(range=20.0, azimuth=90.0)
    fused = veskar.SystemTrack(radar, 1)
    assert fused.speed is None and fused.get_speed() == 3.0
    assert fused.get_direction().tolist() == [1.0, 0.0]
    assert fused.get_location() == radar.location
    assert fused.get_geo_location() is None
    video = track(class_name="human")
    video.color_name = "red"
    fused.update_class(video)
    fused.update_color(video)
    assert (fused.label(), fused.get_color_name()) == ("human", "red")


def test_coasts_with_its_tracks(track):
    fused = veskar.SystemTrack(track(), 1)
    fused.predict(0.2)
    assert fused.has_coasting_tracks_too_long(veskar.Source.VIDEO, 0.1)
    assert not fused.has_coasting_tracks_too_long(veskar.Source.VIDEO, 0.3)


def test_estimates_compare_without_tracks(track):
    one, other = track(), track(u=0.2)
    estimates = one.state, one.covariance, other.state, other.covariance
    assert veskar.statistical_distance(*estimates) == one.statistical_distance(other)
    assert veskar.log_pdf(*estimates) == one.log_pdf(other)
