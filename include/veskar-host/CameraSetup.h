// SPDX-License-Identifier: Apache-2.0
// The camera of an installation.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Mounting.h>
#include <veskar/Camera.h>

#include <array>

#include <Eigen/Core>

namespace Veskar::Host {

/// The camera of an installation, as its JSON object states it (see Veskar::Camera::parse).
struct VESKAR_HOST_EXPORT CameraSetup {
    Mounting mounting;                                         ///< pose
    bool bdc = false;                                          ///< pinhole instead of lens
    std::array<int, 2> resolution{1920, 1080};                 ///< pixels
    Eigen::Vector2d sensorOffset = Eigen::Vector2d::Zero();    ///< optical centre
    Eigen::Vector4d imageToRadians = Eigen::Vector4d::Zero();  ///< lens polynomial
    Eigen::Vector4d radiansToImage = Eigen::Vector4d::Zero();  ///< its inverse
    Eigen::Vector2d fieldOfView = Eigen::Vector2d::Zero();     ///< half-angles, radians

    /// @return the library's camera
    Camera build() const;
};

}  // namespace Veskar::Host
