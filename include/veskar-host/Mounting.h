// SPDX-License-Identifier: Apache-2.0
// Pose of a sensor.
#pragma once

#include <veskar-host/ExportHost.h>

#include <Eigen/Core>

namespace Veskar::Host {

/// Pose of a sensor in the device frame: x forward, y to the left, z up, metres, origin on the
/// ground below the device.
struct VESKAR_HOST_EXPORT Mounting {
    Eigen::Vector3d position = Eigen::Vector3d::Zero();  ///< metres; the third is the height
    double yaw = 0.0;                                    ///< degrees to the left
    double pitch = 0.0;                                  ///< degrees downward
    double roll = 0.0;                                   ///< degrees, right side down

    /// @return rotation matrix from the sensor's frame to the device frame
    Eigen::Matrix3d rotation() const;
};

}  // namespace Veskar::Host
