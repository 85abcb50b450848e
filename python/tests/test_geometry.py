# SPDX-License-Identifier: Apache-2.0
import numpy as np
import pytest

import veskar


@pytest.fixture
def installation(root, tmp_path):
    scenario = root / "config/scenarios/perimeter.json"
    return veskar.Installation.load(
        veskar.simulate(scenario, tmp_path / "short.jsonl", duration=1.0).path)


def test_places_on_earth_and_back():
    site = veskar.Site(latitude=48.0, longitude=11.0, heading=90.0)
    position = veskar.geographic_position(site, [100.0, 0.0])
    assert position.valid and position.longitude > 11.001
    assert position.latitude == pytest.approx(48.0, abs=1e-4)
    np.testing.assert_allclose(veskar.ground_point(site, position), [100.0, 0.0], atol=1e-6)
    assert veskar.device_azimuth([10.0, 0.0]) == pytest.approx(90.0)


def test_models_place_what_is_reported(installation):
    radar = veskar.RadarModel(installation.radar)
    place = radar.ground_point(30.0, 0.0)
    estimate = radar.estimate(veskar.RadarReport(range=30.0, azimuth=0.0, radial_speed=-1.0))
    np.testing.assert_allclose(estimate.state[:2], place)
    assert estimate.predicted(1.0, 1.0).covariance[0, 0] > estimate.covariance[0, 0]
    camera = installation.camera.build()
    projection = veskar.Projection(camera)
    fused = veskar.to_fusion(projection, estimate)
    np.testing.assert_allclose(fused.state[[0, 2]], projection.position([*place, 0.0]), atol=1e-9)
    assert np.linalg.matrix_rank(fused.covariance, tol=1e-12) == 4
    u, v = fused.state[[0, 2]]
    box = veskar.ImageBox(left=u - 0.05, right=u + 0.05, bottom=v, top=v + 0.2)
    seen = veskar.VideoModel(camera, veskar.Config.defaults().inputs.video).estimate(box)
    np.testing.assert_allclose(seen.state[[0, 2]], [u, v])
    assert seen.state[4] == pytest.approx(fused.state[4], rel=0.05)
    moving = veskar.VideoModel(camera, veskar.Config.defaults().inputs.video).estimate(
        box, velocity=[0.1, 0.0])
    assert moving.state[1] == 0.1 and moving.covariance[1, 1] < seen.covariance[1, 1]


def test_sizes_and_words():
    assert veskar.usual_size("car")[0] > 3.0 > veskar.usual_size("human")[0]
    assert veskar.vocabulary.nearest_word("hunam", ["human", "car"]) == "human"
    assert veskar.vocabulary.nearest_word("aeroplane", ["human", "car"]) == ""
    assert veskar.is_inside_image(1.0, -1.0) and not veskar.is_inside_image(1.01, 0.0)
