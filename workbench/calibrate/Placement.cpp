// SPDX-License-Identifier: Apache-2.0
#include "calibrate/Placement.h"

#include <veskar-host/Projection.h>

#include <cmath>

namespace Workbench {
namespace {

constexpr double perDegree = 180.0 / 3.14159265358979323846;

const char* const crossing =
    "walk from one side of the picture to the other, at two distances or more";
const char* const depth = "walk towards the camera and away from it, from near to far";
const char* const motion = "walk or drive straight and steadily across the picture, both ways";

const std::array<ParameterTraits, parameterCount> allTraits{{
    {"camera.yaw", "deg", perDegree, radians(10.0), radians(0.5), radians(0.1), radians(0.04), true,
     crossing},
    {"camera.pitch", "deg", perDegree, radians(5.0), radians(0.5), radians(0.1), radians(0.06),
     true, depth},
    {"camera.roll", "deg", perDegree, radians(5.0), radians(1.5), radians(0.2), radians(0.15), true,
     crossing},
    {"camera.height", "m", 1.0, 1.0, 0.3, 0.05, 0.04, true, depth},
    {"lag", "s", 1.0, 1.0, 0.1, 0.01, 0.013, true, motion},
    {"drift", "ppm", 1e6, 1e-3, 2e-4, 2e-5, 1e-5, false,
     "record for an hour, with people who walk all the time"},
    {"azimuthScale", "", 1.0, 0.1, 0.02, 0.005, 0.002, false, crossing},
    {"radar.yaw", "deg", perDegree, radians(10.0), radians(0.5), radians(0.1), radians(0.03), false,
     crossing},
    {"radar.forward", "m", 1.0, 1.0, 0.3, 0.05, 0.03, false, depth},
    {"radar.left", "m", 1.0, 1.0, 0.3, 0.05, 0.03, false, depth},
    {"focalScale", "", 1.0, 0.1, 0.02, 0.005, 0.002, false, crossing},
    {"video.smoothing", "s^2", 1.0, 0.015, 0.05, 0.05, 0.0, false, motion},
    {"radar.depth", "", 1.0, 0.15, 1.0, 1.0, 0.0, false, depth},
}};

/// Scales the image about the optical centre.
void scaleLens(CameraSetup& camera, double factor) {
    const auto angleAt = [&](double radius) {
        const Eigen::Vector4d& c = camera.imageToRadians;
        return c[0] + radius * (c[1] + radius * (c[2] + radius * c[3]));
    };
    const double aspect = static_cast<double>(camera.resolution[0]) / camera.resolution[1];
    const Eigen::Vector2d edges(1.0, 1.0 / aspect);
    for (Eigen::Index axis = 0; axis < 2; ++axis) {
        double& half = camera.fieldOfView[axis];
        half = camera.bdc ? std::atan(std::tan(half) / factor)
                          : half * angleAt(edges[axis] / factor) / angleAt(edges[axis]);
    }
    camera.radiansToImage *= factor;
    for (Eigen::Index power = 1; power < 4; ++power) {
        camera.imageToRadians[power] /= std::pow(factor, static_cast<double>(power));
    }
}

}  // namespace

const ParameterTraits& traitsOf(MountingParameter parameter) {
    return allTraits[static_cast<std::size_t>(parameter)];
}

const std::array<MountingParameter, parameterCount>& allParameters() {
    static const auto all = [] {
        std::array<MountingParameter, parameterCount> list{};
        for (std::size_t i = 0; i < parameterCount; ++i) {
            list[i] = static_cast<MountingParameter>(i);
        }
        return list;
    }();
    return all;
}

Installation placed(const Installation& stated, const Placement& placement) {
    const auto value = [&](MountingParameter parameter) { return placement[indexOf(parameter)]; };
    Installation result = stated;
    Mounting& camera = result.camera.mounting;
    camera.yaw += degrees(value(MountingParameter::CameraYaw));
    camera.pitch += degrees(value(MountingParameter::CameraPitch));
    camera.roll += degrees(value(MountingParameter::CameraRoll));
    camera.position[2] += value(MountingParameter::CameraHeight);
    Mounting& radar = result.radar.mounting;
    radar.yaw += degrees(value(MountingParameter::RadarYaw));
    radar.position[0] += value(MountingParameter::RadarForward);
    radar.position[1] += value(MountingParameter::RadarLeft);
    if (value(MountingParameter::FocalScale) != 0.0) {
        scaleLens(result.camera, 1.0 + value(MountingParameter::FocalScale));
    }
    return result;
}

}  // namespace Workbench
