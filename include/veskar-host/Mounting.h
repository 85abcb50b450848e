// SPDX-License-Identifier: Apache-2.0
// Where a sensor is mounted.
#pragma once

#include <veskar-host/ExportHost.h>

#include <Eigen/Core>

namespace Veskar::Host {

/// Where a sensor is mounted. The device's frame: x forward, y to the left, z up, metres, origin on
/// the ground below the device.
struct VESKAR_HOST_EXPORT Mounting {
    Eigen::Vector3d position = Eigen::Vector3d::Zero();  ///< metres; the third is the height
    double yaw = 0.0;                                    ///< degrees to the left
    double pitch = 0.0;                                  ///< degrees downward
    double roll = 0.0;                                   ///< degrees, right side down

    /// @return rotation from the sensor's frame to the device's
    Eigen::Matrix3d rotation() const;
};

}  // namespace Veskar::Host
