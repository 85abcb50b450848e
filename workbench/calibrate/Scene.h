// SPDX-License-Identifier: Apache-2.0
// A recording as moments at which tracks of both sensors can be compared.
#pragma once

#include "calibrate/Sightings.h"

#include <cstddef>
#include <vector>

namespace Workbench {

/// A radar track at a moment.
struct RadarLook {
    std::size_t history = 0;  ///< in Sightings::radar
    RadarSighting sighting;
    double heading = 0.0;  ///< of its motion, radians to the left of the radar's forward direction
    double speed = 0.0;    ///< m/s
    bool hasHeading = false;  ///< whether it has moved far enough to tell
    /// Whether it has moved straight at constant speed for some time, so that its tracker, which
    /// assumes just that, does not lag.
    bool isSteady = false;
};

/// All radar tracks at one time.
struct Moment {
    double time = 0.0;  ///< s
    std::vector<RadarLook> looks;
};

/// @param sightings of a recording
/// @return its moments, a quarter of a second apart or more in long recordings
std::vector<Moment> momentsOf(const Sightings& sightings);

}  // namespace Workbench
