// SPDX-License-Identifier: Apache-2.0
#include "recording/Recording.h"

#include <veskar/Sensor.h>

namespace Workbench {

Eigen::Matrix3d Mounting::rotation() const {
    Veskar::Sensor pose;
    pose.setRotation(yaw, pitch, roll);
    return pose.getRotation();
}

const ReportBase& baseOf(const Report& report) {
    return std::visit([](const auto& form) -> const ReportBase& { return form; }, report);
}

const char* sourceName(Veskar::Source source) {
    return source == Veskar::VideoObject ? "video" : source == Veskar::Radar ? "radar" : "other";
}

Veskar::Camera CameraSetup::build() const {
    Veskar::Camera camera({resolution[0], resolution[1]}, sensorOffset, imageToRadians,
                          radiansToImage, fieldOfView, bdc);
    camera.setPosition(mounting.position[0], mounting.position[1], mounting.position[2]);
    camera.setRotation(mounting.yaw, mounting.pitch, mounting.roll);
    return camera;
}

}  // namespace Workbench
