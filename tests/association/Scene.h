// SPDX-License-Identifier: Apache-2.0
// Random frames for association, with varied sources, classes, boxes, speeds and distances.
#pragma once

#include "association/LiteralAssociator.h"
#include "support/RandomEstimates.h"

#include <unordered_set>

namespace VeskarTest {

/// Properties of a scene.
struct SceneSettings {
    int systems = 8;
    int sensors = 8;
    Veskar::Source source = Veskar::Source::Radar;
    double spread = 3.0;          ///< half the width of the area with tracks
    double otherSource = 0.4;     ///< probability that a system track holds the other source too
    double reported = 0.3;        ///< probability that a sensor track is held by a system track
    bool allSourcesKnown = true;  ///< every system track has a map for every source
    bool onGrid = false;          ///< states and covariances on a coarse grid: many exact ties
};

/// System tracks and a frame of sensor tracks.
struct Scene {
    SystemTracks systems;
    SensorTracks sensors;
    Veskar::Source source;
    std::unordered_set<int> excludedIds;
};

/// @return a scene that depends only on the settings and the state of @p random
Scene makeScene(const SceneSettings& settings, RandomEstimates& random);

/// @return a configuration whose gates pass some pairs of such a scene
Veskar::Config makeSceneConfig(RandomEstimates& random);

}  // namespace VeskarTest
