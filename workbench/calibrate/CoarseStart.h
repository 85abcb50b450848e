// SPDX-License-Identifier: Apache-2.0
// Finds the neighbourhood of the true placement, however wrong the stated one is.
#pragma once

#include "calibrate/ObjectModel.h"
#include "calibrate/Scene.h"

#include <vector>

namespace Workbench {

/// A recording with its tracks.
struct CalibrationScene {
    Sightings sightings;
    std::vector<Moment> moments;
    /// Whether the bearings of both sensors are independent of each other and tell something.
    bool hasBearings = true;

    /// @return the middle of the recording, s
    double middle() const {
        return moments.empty() ? 0.0 : 0.5 * (moments.front().time + moments.back().time);
    }
};

/// What is searched.
enum class CoarseReach {
    Everything,  ///< 12 degrees of yaw, 7 of pitch, 1 m of height and 1.2 s of lag
    Turns        ///< yaw and pitch alone
};

/// For each lag and height each pair of a box and a radar track votes for its difference of
/// bearings and depressions (in the manner of a Hough transform): true pairs agree on one cell.
///
/// @param stated the installation as stated
/// @param scenes recordings made with it
/// @param reach what is searched
/// @return yaw, pitch, height and lag with the most votes; other values are zero
Placement coarseStart(const Installation& stated, const std::vector<CalibrationScene>& scenes,
                      CoarseReach reach = CoarseReach::Everything);

}  // namespace Workbench
