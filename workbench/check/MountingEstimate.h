// SPDX-License-Identifier: Apache-2.0
// What matched radar and video tracks say about the installation: yaw, height, pitch and time lag.
#pragma once

#include <array>
#include <cstddef>
#include <vector>

#include <Eigen/Core>

namespace Workbench {

/// One object seen by both sensors at one time, as seen from the camera's stated pose.
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
    bool isSignificant = false;  ///< large enough to matter, and not explained by the others
};

/// True values minus stated ones.
struct MountingEstimate {
    Estimated yaw;     ///< of the camera against the radar, radians to the left
    Estimated height;  ///< of the camera, m
    Estimated pitch;   ///< of the camera, radians downward
    Estimated lag;     ///< seconds by which the radar's time stamps are later than video's
    std::size_t samples = 0;
    std::size_t blocks = 0;  ///< of samples whose errors are independent; a handful says little
};

/// Fits all four at once, by iterated weighted least squares with Huber's weights.
///
/// A camera that is turned to the left by more than stated sees everything too far right; one that
/// is higher sees the ground steeper, nearby more than far away, which parts height from pitch;
/// radar stamps that are late show an object where it has been, in proportion to its speed. The
/// standard deviations come from leaving out one block of time after the other (the delete-a-group
/// jackknife: Shao, Tu: The Jackknife and Bootstrap, 1995), because errors of tracks are correlated
/// over seconds.
///
/// @param samples in order of time; at least 50
/// @param height stated height of the camera, m
/// @return the estimate; a value that the samples do not tell has a large standard deviation
MountingEstimate estimateMounting(const std::vector<PairSample>& samples, double height);

}  // namespace Workbench
