# SPDX-License-Identifier: Apache-2.0
"""What the tests share."""

import pathlib

import numpy as np
import pytest

import veskar

ROOT = pathlib.Path(__file__).resolve().parent.parent.parent


@pytest.fixture
def root():
    return ROOT


@pytest.fixture
def track():
    """Makes a sensor track of a person who walks at (u, v) and a range of 20 m."""

    def make(source=veskar.Source.VIDEO, id=1, time=0.0, u=0.1, **others):
        others.setdefault("probability", 2.0)
        others.setdefault("class_name", "human")
        return veskar.Track([u, 0.01, -0.2, 0.0, 20.0, 0.5], np.diag([1e-3] * 4 + [1.0, 0.5]), time,
                            id, source, **others)

    return make
