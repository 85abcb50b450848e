# SPDX-License-Identifier: Apache-2.0
import math

import numpy as np
import pytest

import veskar


def pinhole(height=4.0, pitch=10.0):
    camera = veskar.Camera((1920, 1080), (0.0, 0.0), np.zeros(4), np.zeros(4),
                           (math.radians(45), math.radians(29)), True)
    camera.position = (0.0, 0.0, height)
    camera.set_rotation(0.0, pitch, 0.0)
    return camera


def test_range_follows_from_height_and_angle():
    found = pinhole().range_to_target(0.0, 0.0, 1.0)
    assert not found.clamped
    assert found.range == pytest.approx(4.0 / math.sin(math.radians(10.0)), rel=1e-9)


def test_a_ray_above_the_minimum_angle_is_clamped():
    found = pinhole(pitch=0.0).range_to_target(0.0, 0.0, 2.0)
    assert found.clamped
    assert found.range == pytest.approx(4.0 / math.sin(math.radians(2.0)), rel=1e-9)


def test_pixels_and_back():
    box = np.array([-0.5, 0.25, -0.5, 0.5])
    in_pixels = veskar.to_pixels(box, pinhole())
    np.testing.assert_allclose(in_pixels[:2], [480.0, 240.0])
    np.testing.assert_allclose(veskar.from_pixels(in_pixels, pinhole()), box, atol=1e-12)


def test_parse_tells_what_is_wrong():
    with pytest.raises(RuntimeError):
        veskar.Camera.parse("{}")
