// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SensorReports.h"

#include <veskar-host/GeographicPosition.h>

#include "live/onvif/ClassWords.h"
#include "live/onvif/ColorWords.h"

#include <algorithm>
#include <cmath>

namespace Veskar::Live {
namespace {

using Host::degrees;
using Host::radians;

/// From counter-clockwise from the right to clockwise from straight ahead, -180 to 180 degrees.
double clockwiseFromAhead(double angle) {
    return std::remainder(90.0 - angle, 360.0);
}

/// Motion over ground.
struct GroundMotion {
    double speed;      ///< m/s
    double direction;  ///< degrees clockwise from straight ahead
};

/// The motion over ground that Speed and Direction state together. Standing still has no direction.
std::optional<GroundMotion> motionOf(const SceneObject& object, LeftOut& leftOut) {
    if (object.speed == 0.0 && !object.direction) {
        return GroundMotion{0.0, 0.0};
    }
    if (!object.speed || !object.direction) {
        if (object.speed) {
            leftOut.add("Speed without Direction");
        } else if (object.direction) {
            leftOut.add("Direction without Speed");
        }
        return std::nullopt;
    }
    return GroundMotion{*object.speed * std::cos(radians(object.direction->pitch)),
                        clockwiseFromAhead(object.direction->yaw)};
}

Host::ImageBox around(const Shape& shape) {
    Eigen::Vector2d least = shape.polygons.front().front();
    Eigen::Vector2d most = least;
    for (const auto& outline : shape.polygons) {
        for (const Eigen::Vector2d& point : outline) {
            least = least.cwiseMin(point);
            most = most.cwiseMax(point);
        }
    }
    return {least[0], least[1], most[0], most[1]};
}

bool hasPoints(const Shape& shape) {
    return !shape.polygons.empty() &&
           std::none_of(shape.polygons.begin(), shape.polygons.end(),
                        [](const auto& outline) { return outline.empty(); });
}

/// Whether a part of a box is in the image. It rules out numbers that are not finite, too.
bool isInImage(const Host::ImageBox& box) {
    return box.left <= 1.0 && box.right >= -1.0 && box.bottom <= 1.0 && box.top >= -1.0 &&
           std::isfinite(box.left) && std::isfinite(box.right) && std::isfinite(box.bottom) &&
           std::isfinite(box.top);
}

}  // namespace

SensorReports::SensorReports(const Host::Installation& installation)
    : camera_(installation.camera.build()),
      cameraMounting_(installation.camera.mounting),
      radarMounting_(installation.radar.mounting),
      site_(installation.site) {}

Host::Labels SensorReports::labels(const SceneObject& object, LeftOut& leftOut) {
    std::vector<Candidate> classes = object.classes;
    classes.insert(classes.end(), object.vehicleTypes.begin(), object.vehicleTypes.end());
    Host::Labels labels;
    labels.objectClass = bestClass(classes, leftOut);
    labels.color = bestColor(object.colors.empty() ? object.vehicleColors : object.colors, leftOut);
    labels.upperClothingColor = bestColor(object.tops, leftOut);
    const bool isCovered = object.isDressed && object.bottoms.empty();
    labels.lowerClothingColor =
        isCovered ? labels.upperClothingColor : bestColor(object.bottoms, leftOut);
    return labels;
}

std::optional<Host::ImageBox> SensorReports::boxOf(const SceneObject& object,
                                                   const Transformation& frame,
                                                   LeftOut& leftOut) const {
    if (!object.shape) {
        return std::nullopt;
    }
    const Shape& shape = *object.shape;
    if (shape.centre) {
        leftOut.add("Shape.CenterOfGravity");
    }
    if (shape.box && !shape.polygons.empty()) {
        leftOut.add("Shape.Polygon beside BoundingBox");
    }
    if (!shape.box && !hasPoints(shape)) {
        leftOut.add("Shape without BoundingBox and Polygon");
        return std::nullopt;
    }
    const Transformation toImage = frame * object.transformation;
    const Host::ImageBox box = toImage(shape.box ? *shape.box : around(shape));
    if (!isInImage(box)) {
        leftOut.add("Shape outside the image");
        return std::nullopt;
    }
    return box;
}

std::optional<Eigen::Vector2d> SensorReports::imageVelocity(const SceneObject& object,
                                                            const Host::ImageBox& box,
                                                            LeftOut& leftOut) const {
    const std::optional<GroundMotion> motion = motionOf(object, leftOut);
    if (!motion) {
        return std::nullopt;
    }
    if (motion->speed == 0.0) {
        return Eigen::Vector2d::Zero();
    }
    const Eigen::Vector3d& origin = camera_.origin();
    const Eigen::Vector3d ray = camera_.ray(0.5 * (box.left + box.right), box.bottom);
    constexpr double flattest = 1e-3;  // the ground 1000 camera heights away
    if (!(ray[2] < -flattest) || !(origin[2] > 0.0)) {
        leftOut.add("Speed of an object that does not stand on the ground");
        return std::nullopt;
    }
    const double angle = radians(cameraMounting_.yaw - motion->direction);
    const Eigen::Vector3d velocity =
        motion->speed * Eigen::Vector3d(std::cos(angle), std::sin(angle), 0.0);
    const Eigen::Vector2d rate =
        camera_.project(origin - ray * (origin[2] / ray[2]), velocity).rate;
    return rate.allFinite() ? std::optional(rate) : std::nullopt;
}

std::optional<Host::VideoReport> SensorReports::video(const SceneObject& object,
                                                      const Transformation& frame,
                                                      LeftOut& leftOut) const {
    if (object.spherical) {
        leftOut.add("SphericalCoordinate of a camera");
    }
    if (object.geo) {
        leftOut.add("GeoLocation of a camera");
    }
    const std::optional<Host::ImageBox> box = boxOf(object, frame, leftOut);
    if (!box) {
        return std::nullopt;
    }
    Host::VideoReport report;
    report.box = *box;
    report.velocity = imageVelocity(object, *box, leftOut);
    report.labels = labels(object, leftOut);
    return report;
}

std::optional<SensorReports::RadarPlace> SensorReports::placeOf(const SceneObject& object,
                                                                LeftOut& leftOut) const {
    if (object.spherical && object.spherical->elevation) {
        leftOut.add("SphericalCoordinate.ElevationAngle");
    }
    if (object.spherical && object.spherical->distance && object.spherical->azimuth) {
        if (object.geo) {
            leftOut.add("GeoLocation beside SphericalCoordinate");
        }
        return RadarPlace{*object.spherical->distance,
                          clockwiseFromAhead(*object.spherical->azimuth)};
    }
    if (object.spherical) {
        leftOut.add("SphericalCoordinate without Distance and AzimuthAngle");
    }
    if (!object.geo) {
        return std::nullopt;
    }
    if (!site_) {
        leftOut.add("GeoLocation while the installation has no site");
        return std::nullopt;
    }
    Dbus::GeoLocation::Position position;
    position.latitude = object.geo->latitude;
    position.longitude = object.geo->longitude;
    const Eigen::Vector2d ground = groundPoint(*site_, position);
    const Eigen::Vector3d seen =
        radarMounting_.rotation().transpose() *
        (Eigen::Vector3d(ground[0], ground[1], 0.0) - radarMounting_.position);
    constexpr double farthest = 1e5;  // beyond, the tangent plane is no map of the Earth
    if (seen.norm() > farthest) {
        leftOut.add("GeoLocation far from the site");
        return std::nullopt;
    }
    return RadarPlace{seen.norm(), degrees(std::atan2(-seen[1], seen[0]))};
}

std::optional<Host::RadarReport> SensorReports::radar(const SceneObject& object,
                                                      LeftOut& leftOut) const {
    if (object.shape) {
        leftOut.add("Shape of a radar");
    }
    const std::optional<RadarPlace> place = placeOf(object, leftOut);
    if (!place) {
        return std::nullopt;
    }
    Host::RadarReport report;
    report.range = place->range;
    report.azimuth = place->azimuth;
    if (const std::optional<GroundMotion> motion = motionOf(object, leftOut)) {
        report.speed = motion->speed;
        report.direction = motion->direction;
    }
    const Host::Labels all = labels(object, leftOut);
    report.objectClass = all.objectClass;
    for (const Host::Label* color :
         {&all.color, &all.upperClothingColor, &all.lowerClothingColor}) {
        if (color->probability > 0.0) {
            leftOut.add("Color of a radar");
        }
    }
    return report;
}

}  // namespace Veskar::Live
