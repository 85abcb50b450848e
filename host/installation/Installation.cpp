// SPDX-License-Identifier: Apache-2.0
#include <veskar-host/Installation.h>
#include <veskar/Sensor.h>

namespace Veskar::Host {

Eigen::Matrix3d Mounting::rotation() const {
    Sensor pose;
    pose.setRotation(yaw, pitch, roll);
    return pose.getRotation();
}

Camera CameraSetup::build() const {
    Camera camera({resolution[0], resolution[1]}, sensorOffset, imageToRadians, radiansToImage,
                  fieldOfView, bdc);
    camera.setPosition(mounting.position[0], mounting.position[1], mounting.position[2]);
    camera.setRotation(mounting.yaw, mounting.pitch, mounting.roll);
    return camera;
}

}  // namespace Veskar::Host
