// SPDX-License-Identifier: Apache-2.0
// Where a sensor is mounted and where it looks.
#pragma once

#include <veskar/Export.h>

#include <Eigen/Core>

namespace Veskar {

/// The mounting pose of a sensor. A value; copies are independent.
class VESKAR_EXPORT Sensor {
public:
    /// At the origin with the identity rotation.
    Sensor();
    virtual ~Sensor();
    /// Copies the pose.
    Sensor(const Sensor&) = default;
    /// Copies the pose.
    /// @return this sensor
    Sensor& operator=(const Sensor&) = default;

    /// @param x first coordinate, in the unit of the caller
    /// @param y second coordinate
    /// @param z third coordinate; for a camera the height above ground in metres
    void setPosition(double x, double y, double z);
    /// @return the position
    Eigen::Vector3d getPosition() const;

    /// Sets the orientation to R = Rz(a) Ry(b) Rx(c): the third angle's rotation acts first.
    ///
    /// @param a degrees about the third axis (yaw), not limited to a turn
    /// @param b degrees about the second axis (pitch)
    /// @param c degrees about the first axis (roll)
    void setRotation(double a, double b, double c);
    /// @return the rotation matrix from the sensor's frame to the common one
    Eigen::Matrix3d getRotation() const;

protected:
    /// Position in the unit of the caller.
    Eigen::Vector3d position;
    /// Rotation from the sensor's frame to the common one.
    Eigen::Matrix3d rotation;
};

}  // namespace Veskar
