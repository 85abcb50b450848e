// SPDX-License-Identifier: Apache-2.0
// Estimates errors of the installation from matched radar and video tracks: yaw, height, pitch and
// time lag.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// An object seen by both sensors at one time, relative to the camera's stated pose.
struct PairSample {
    double time = 0.0;             ///< s
    double bearingError = 0.0;     ///< bearing by video minus bearing by radar, radians to the left
    double bearingRate = 0.0;      ///< of the object, radians/s
    double depressionError = 0.0;  ///< angle below the horizon by video minus by radar, radians
    double depressionRate = 0.0;   ///< of the object, radians/s
    double groundDistance = 0.0;   ///< from the camera, m
};

/// A value and its standard deviation.
struct Estimated {
    double value = 0.0;
    double std = 0.0;
    bool isSignificant = false;  ///< not negligible, and not explained by the other values
};

/// True values minus stated ones.
struct MountingEstimate {
    Estimated yaw;     ///< of the camera relative to the radar, radians to the left
    Estimated height;  ///< of the camera, m
    Estimated pitch;   ///< of the camera, radians downward
    Estimated lag;     ///< delay of the radar's time stamps relative to video's, s
    std::size_t samples = 0;
    std::size_t blocks = 0;  ///< with independent errors; results from few are unreliable
};

/// Estimates all four jointly, by iteratively reweighted least squares with Huber weights.
///
/// A camera that is turned to the left by more than stated reports everything too far right. One
/// that is higher sees the ground at steeper angles, at short distance more than at long, which
/// separates height from pitch. Late radar stamps show an object at an earlier position, in
/// proportion to its speed. The standard deviations are computed by leaving out one block of time
/// after the other (the delete-a-group jackknife: Shao, Tu: The Jackknife and Bootstrap, 1995),
/// because track errors are correlated over seconds.
///
/// @param samples in order of time; at least 50
/// @param height stated height of the camera, m
/// @return the estimate; values that are not observable have a large standard deviation
MountingEstimate estimateMounting(const std::vector<PairSample>& samples, double height);

}  // namespace Workbench
