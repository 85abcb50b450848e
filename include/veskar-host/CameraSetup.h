// SPDX-License-Identifier: Apache-2.0
// The camera of an installation.
#pragma once

#include <veskar-host/ExportHost.h>
#include <veskar-host/Mounting.h>
#include <veskar/Camera.h>

#include <array>

#include <Eigen/Core>

namespace Veskar::Host {

/// The camera of an installation, with the members of its JSON object (see Veskar::Camera::parse).
struct VESKAR_HOST_EXPORT CameraSetup {
    Mounting mounting;                                         ///< pose
    bool bdc = false;                                          ///< pinhole instead of lens
    std::array<int, 2> resolution{1920, 1080};                 ///< pixels
    Eigen::Vector2d sensorOffset = Eigen::Vector2d::Zero();    ///< optical centre in the image
    Eigen::Vector4d imageToRadians = Eigen::Vector4d::Zero();  ///< lens polynomial, c0..c3
    Eigen::Vector4d radiansToImage = Eigen::Vector4d::Zero();  ///< its inverse, c0..c3
    Eigen::Vector2d fieldOfView = Eigen::Vector2d::Zero();     ///< half-angles, radians

    /// @return the library's camera
    Camera build() const;
};

}  // namespace Veskar::Host
