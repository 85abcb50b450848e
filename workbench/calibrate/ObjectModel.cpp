// SPDX-License-Identifier: Apache-2.0
#include "calibrate/ObjectModel.h"

#include <veskar-host/UsualSize.h>

#include "simulate/VideoSensor.h"

#include <algorithm>
#include <cmath>
#include <tuple>
#include <utility>

#include <Eigen/Geometry>

namespace Workbench {
namespace {

/// Spread of reflections about the nearest point, as a share of half the side. A normal deviate of
/// that spread that cannot leave the outline lies 0.399 (1/sqrt(2 pi)) spreads inside on average,
/// with a standard deviation of 0.584 (sqrt((1 - 1/pi) / 2)) spreads.
constexpr double reflectionSpread = 0.4;
constexpr double meanInside = 0.399 * reflectionSpread;
constexpr double stdInside = 0.584 * reflectionSpread;
/// Share of half the side by which the middle of a side that faces the radar is uncertain.
constexpr double facingStd = 0.6;

/// @param towardsRadar coordinate of the radar relative to the reflection along one side, m
/// @param half half that side, m
/// @return mean and standard deviation of the middle's coordinate relative to the reflection
std::pair<double, double> middleAlong(double towardsRadar, double half) {
    if (std::abs(towardsRadar) < half) {
        return {0.0, facingStd * half};
    }
    return {-std::copysign((1.0 - meanInside) * half, towardsRadar), stdInside * half};
}

}  // namespace

std::optional<Cuboid> cuboidOf(const RadarLook& look, const std::string& className) {
    Cuboid cuboid;
    cuboid.size = usualSize(className);
    const Eigen::Vector2d half = 0.5 * cuboid.size.head<2>();
    if (!look.hasHeading && !cuboid.isLong()) {
        // As if it turned its front to the radar.
        cuboid.heading = look.sighting.azimuth;
        cuboid.toMiddle = {(1.0 - meanInside) * half[0], 0.0};
        cuboid.spread = {stdInside * half[0], reflectionSpread * half[1]};
        return cuboid;
    }
    if (!look.hasHeading) {
        return std::nullopt;
    }
    cuboid.heading = look.heading;
    const double turn = look.sighting.azimuth - look.heading;
    const Eigen::Vector2d towardsRadar =
        -look.sighting.range * Eigen::Vector2d(std::cos(turn), std::sin(turn));
    for (Eigen::Index axis = 0; axis < 2; ++axis) {
        std::tie(cuboid.toMiddle[axis], cuboid.spread[axis]) =
            middleAlong(towardsRadar[axis], half[axis]);
    }
    return cuboid;
}

ObjectModel::ObjectModel(const Installation& stated, const Placement& placement)
    : projection_(placed(stated, placement).camera.build()),
      radar_(placed(stated, placement).radar, {}),
      radarYaw_(radians(stated.radar.mounting.yaw) +
                placement[indexOf(MountingParameter::RadarYaw)]),
      cameraYaw_(radians(stated.camera.mounting.yaw)),
      azimuthFactor_(1.0 + placement[indexOf(MountingParameter::AzimuthScale)]),
      trackStd_(stated.radar.rangeStd, radians(stated.radar.azimuthStd)) {}

Eigen::Vector2d ObjectModel::reflection(const RadarSighting& sighting) const {
    return radar_.groundPoint(sighting.range, -degrees(azimuthFactor_ * sighting.azimuth)).position;
}

Eigen::Vector2d ObjectModel::middleAndBottom(const Eigen::Vector2d& reflection,
                                             const Cuboid& cuboid) const {
    ObjectTraits traits;
    traits.size = cuboid.size;
    ObjectState state;
    state.traits = &traits;
    state.heading = radarYaw_ + cuboid.heading;
    state.centre = reflection;
    state.centre = state.point(cuboid.toMiddle[0], cuboid.toMiddle[1]);
    const ImageBox box = VideoSensor::boxOf(projection_, state);
    return {0.5 * (box.left + box.right), box.bottom};
}

Eigen::Vector2d ObjectModel::anglesOf(const Eigen::Vector2d& middleAndBottom) const {
    const Eigen::Vector3d ray = projection_.ray(middleAndBottom[0], middleAndBottom[1]);
    return {std::remainder(std::atan2(ray[1], ray[0]) - cameraYaw_, radians(360.0)),
            std::atan2(-ray[2], ray.head<2>().norm())};
}

Eigen::Vector2d ObjectModel::anglesOfGround(const Eigen::Vector2d& reflection) const {
    const Eigen::Vector2d offset = reflection - projection_.origin().head<2>();
    return {std::remainder(std::atan2(offset[1], offset[0]) - cameraYaw_, radians(360.0)),
            std::atan2(projection_.origin()[2], offset.norm())};
}

Eigen::Matrix2d ObjectModel::covarianceOf(const RadarSighting& sighting,
                                          const Cuboid& cuboid) const {
    const Eigen::Vector2d place = reflection(sighting);
    const Eigen::Vector2d here = middleAndBottom(place, cuboid);
    constexpr double step = 0.05;  // m
    Eigen::Matrix2d gradient;
    for (Eigen::Index axis = 0; axis < 2; ++axis) {
        const Eigen::Vector2d moved = place + step * Eigen::Vector2d::Unit(axis);
        gradient.col(axis) = (middleAndBottom(moved, cuboid) - here) / step;
    }
    const Eigen::Matrix2d sight =
        Eigen::Rotation2Dd(radarYaw_ + sighting.azimuth).toRotationMatrix() *
        Eigen::Vector2d(trackStd_[0], sighting.range * trackStd_[1]).asDiagonal();
    const Eigen::Matrix2d body = Eigen::Rotation2Dd(radarYaw_ + cuboid.heading).toRotationMatrix() *
                                 cuboid.spread.asDiagonal();
    return gradient * (sight * sight.transpose() + body * body.transpose()) * gradient.transpose();
}

}  // namespace Workbench
