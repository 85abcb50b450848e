// SPDX-License-Identifier: Apache-2.0
// What video sees of an object that the radar reports: the box around a cuboid of usual size.
#pragma once

#include <veskar-host/Projection.h>
#include <veskar-host/RadarModel.h>

#include "calibrate/Placement.h"
#include "calibrate/Scene.h"

#include <optional>
#include <string>

#include <Eigen/Core>

namespace Workbench {

/// An object as a cuboid around a reflection of the radar.
///
/// The radar reports a point that wanders about the nearest point of the object and stays within
/// its outline; the middle of the cuboid lies behind that point. Which corner is the nearest
/// follows from the heading. Where a side faces the radar, every point of it may be the nearest
/// one, and the middle is uncertain by a share of the side.
struct Cuboid {
    Eigen::Vector3d size{0.5, 0.5, 1.75};  ///< length, width, height, m
    double heading = 0.0;  ///< of the length, radians to the left of the radar's forward direction
    Eigen::Vector2d toMiddle{0.0, 0.0};  ///< from the reflection, ahead and to the left, m
    Eigen::Vector2d spread{0.0, 0.0};    ///< standard deviation of `toMiddle`, m

    /// @return whether it looks different from its sides; people do not
    bool isLong() const { return size[0] > 1.0; }
};

/// @param look the object by radar
/// @param className the object by video
/// @return its cuboid; nothing for a long object whose heading is unknown
std::optional<Cuboid> cuboidOf(const RadarLook& look, const std::string& className);

/// Both sensors at one placement.
class ObjectModel {
public:
    /// @param stated the installation as stated
    /// @param placement its errors
    ObjectModel(const Installation& stated, const Placement& placement);

    /// @param sighting by radar
    /// @return the reflection on the ground, device frame, m
    Eigen::Vector2d reflection(const RadarSighting& sighting) const;
    /// @param reflection on the ground, device frame, m
    /// @param cuboid the object around it
    /// @return middle column and lower edge of its box, image units
    Eigen::Vector2d middleAndBottom(const Eigen::Vector2d& reflection, const Cuboid& cuboid) const;
    /// @param middleAndBottom of a box
    /// @return bearing and depression of that point, radians to the left of and below the camera's
    ///         viewing direction
    Eigen::Vector2d anglesOf(const Eigen::Vector2d& middleAndBottom) const;
    /// @param reflection on the ground, device frame, m
    /// @return bearing and depression of that point, as above
    Eigen::Vector2d anglesOfGround(const Eigen::Vector2d& reflection) const;
    /// Covariance of middleAndBottom by the errors of the radar's track and of the cuboid.
    Eigen::Matrix2d covarianceOf(const RadarSighting& sighting, const Cuboid& cuboid) const;

    const Projection& projection() const { return projection_; }
    /// @return the radar's yaw, radians
    double radarYaw() const { return radarYaw_; }

private:
    Projection projection_;
    RadarModel radar_;
    double radarYaw_;
    double cameraYaw_;
    double azimuthFactor_;
    Eigen::Vector2d trackStd_;  ///< of range (m) and azimuth (radians) of the radar's tracks
};

}  // namespace Workbench
