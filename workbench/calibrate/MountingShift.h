// SPDX-License-Identifier: Apache-2.0
// How far a camera is turned from where the installation says, robustly and at little cost.
#pragma once

#include "calibrate/CoarseStart.h"

#include <cstddef>
#include <optional>

namespace Workbench {

/// A median over clusters of pairs.
struct ShiftedAngle {
    double value = 0.0;  ///< true minus stated, radians
    double std = 0.0;    ///< of the value
};

/// Turn of the camera against the radar.
struct MountingShift {
    ShiftedAngle yaw;    ///< to the left
    ShiftedAngle pitch;  ///< downward; a change of height counts as pitch, too
    std::size_t clusters = 0;
};

/// The coarse start finds the turn that most pairs of tracks agree on; of the pairs that are near
/// one another with that turn, the rest is the median over clusters of the median in each. Half of
/// the pairs may be wrong. Nothing is fitted: a knocked camera is off by degrees.
///
/// @param stated the installation as stated
/// @param scene what both sensors saw for some minutes
/// @return the shift; nothing when there are fewer than 12 clusters
std::optional<MountingShift> mountingShift(const Installation& stated,
                                           const CalibrationScene& scene);

}  // namespace Workbench
