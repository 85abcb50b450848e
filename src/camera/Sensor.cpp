// SPDX-License-Identifier: Apache-2.0
#include <veskar/Sensor.h>

#include "camera/Angle.h"

#include <cmath>

namespace Veskar {

Sensor::Sensor() {
    setPosition(0.0, 0.0, 0.0);
    setRotation(0.0, 0.0, 0.0);
}

Sensor::~Sensor() = default;

void Sensor::setPosition(double x, double y, double z) {
    position = {x, y, z};
}

Eigen::Vector3d Sensor::getPosition() const {
    return position;
}

void Sensor::setRotation(double a, double b, double c) {
    const double yaw = toRadians(a);
    const double pitch = toRadians(b);
    const double roll = toRadians(c);
    Eigen::Matrix3d Rz;
    Rz << std::cos(yaw), -std::sin(yaw), 0.0,  //
        std::sin(yaw), std::cos(yaw), 0.0,     //
        0.0, 0.0, 1.0;
    Eigen::Matrix3d Ry;
    Ry << std::cos(pitch), 0.0, std::sin(pitch),  //
        0.0, 1.0, 0.0,                            //
        -std::sin(pitch), 0.0, std::cos(pitch);
    Eigen::Matrix3d Rx;
    Rx << 1.0, 0.0, 0.0,                       //
        0.0, std::cos(roll), -std::sin(roll),  //
        0.0, std::sin(roll), std::cos(roll);
    rotation = Rz * Ry * Rx;
}

Eigen::Matrix3d Sensor::getRotation() const {
    return rotation;
}

}  // namespace Veskar
