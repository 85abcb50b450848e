// SPDX-License-Identifier: Apache-2.0
// Which tracks of both sensors belong to one object, at an assumed placement.
#pragma once

#include "calibrate/CoarseStart.h"
#include "calibrate/ObjectModel.h"

#include <cstddef>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// An object that both sensors see at one time.
struct CalibrationSample {
    RadarSighting heard;
    Cuboid cuboid;
    Eigen::Vector2d seen;          ///< middle and bottom of the box when the radar heard it
    Eigen::Vector2d seenRate;      ///< their change, 1/s
    Eigen::Vector2d acceleration;  ///< of both as video follows it, expected from the radar, 1/s^2
    double assumedLag = 0.0;       ///< with which `seen` was looked up, s
    double sinceMiddle = 0.0;      ///< time after the middle of the recording, s
    /// Makes the components of an error independent, of unit variance; the first row is zero where
    /// bearings tell nothing.
    Eigen::Matrix2d whitening;
    /// Samples of one cluster, consecutive samples of one pair of tracks, have dependent errors.
    std::size_t cluster = 0;
    std::size_t timeBlock = 0;  ///< number of the third of a minute, over all recordings

    /// @return whether its bearings tell something
    bool hasBearing() const { return whitening(0, 0) > 0.0; }
};

/// Independent clusters of samples that an estimate needs at least.
constexpr std::size_t leastClusters = 12;

/// Pairs tracks that are each other's nearest, with no other one about as near, for most of the
/// time that both exist.
///
/// @param stated the installation as stated
/// @param placement its assumed errors
/// @param scenes recordings made with it
/// @param gate largest difference of bearings and depressions, radians
/// @return samples of objects that move steadily or stand
std::vector<CalibrationSample> pairSamples(const Installation& stated, const Placement& placement,
                                           const std::vector<CalibrationScene>& scenes,
                                           double gate);

}  // namespace Workbench
