// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/SensorScene.h"

#include "live/onvif/ClassWords.h"
#include "live/onvif/ColorWords.h"

#include <algorithm>
#include <cmath>
#include <utility>
#include <variant>

#include <Eigen/LU>

namespace Veskar::Live {
namespace {

using Host::degrees;
using Host::RadarReport;
using Host::VideoReport;

/// From clockwise from straight ahead to counter-clockwise from the right, -180 to 180 degrees.
double counterClockwiseFromRight(double angle) {
    return std::remainder(90.0 - angle, 360.0);
}

}  // namespace

SensorScene::SensorScene(const Host::Installation& installation, std::string module)
    : module_(std::move(module)),
      camera_(installation.camera.build()),
      cameraMounting_(installation.camera.mounting),
      radarMounting_(installation.radar.mounting) {}

SceneFrame SensorScene::describe(const Host::SensorFrame& frame, UtcTime time) {
    SceneFrame scene;
    scene.time = time;
    scene.source = module_;
    std::set<std::int32_t> present;
    for (const Host::Report& report : frame.tracks) {
        if (!Host::baseOf(report).confirmed) {
            continue;
        }
        if (const auto* video = std::get_if<VideoReport>(&report)) {
            scene.objects.push_back(objectFor(*video));
        } else if (const auto* radar = std::get_if<RadarReport>(&report)) {
            scene.objects.push_back(objectFor(*radar));
        } else {
            continue;
        }
        present.insert(Host::baseOf(report).id);
    }
    scene.deletes = disappearances_.update(std::move(present));
    return scene;
}

SceneObject SensorScene::objectFor(const VideoReport& report) const {
    SceneObject object;
    object.name = nameOf(report.id);
    object.classes = candidatesFor(report.labels.objectClass);
    object.colors = clustersFor(report.labels.color);
    object.tops = clustersFor(report.labels.upperClothingColor);
    object.bottoms = clustersFor(report.labels.lowerClothingColor);
    if (report.coasting > 0.0) {
        return object;
    }
    object.shape = shapeOf(report.box);
    describeMotion(report, object);
    return object;
}

/// The inverse of the projection of a motion over ground at the foot of the box.
void SensorScene::describeMotion(const VideoReport& report, SceneObject& object) const {
    const Eigen::Vector3d ray =
        camera_.ray(0.5 * (report.box.left + report.box.right), report.box.bottom);
    const Eigen::Vector3d& origin = camera_.origin();
    constexpr double flattest = 1e-3;  // the ground 1000 camera heights away
    if (!report.velocity || !(ray[2] < -flattest)) {
        return;
    }
    const Eigen::Matrix2d toImage =
        camera_.project(origin - ray * (origin[2] / ray[2]), Eigen::Vector3d::Zero())
            .jacobian.leftCols<2>();
    const Eigen::Vector2d velocity = toImage.inverse() * *report.velocity;
    if (!velocity.allFinite()) {
        return;
    }
    object.speed = velocity.norm();
    object.direction =
        MotionDirection{counterClockwiseFromRight(cameraMounting_.yaw -
                                                  degrees(std::atan2(velocity[1], velocity[0]))),
                        0.0};
}

SceneObject SensorScene::objectFor(const RadarReport& report) const {
    SceneObject object;
    object.name = nameOf(report.id);
    object.classes = candidatesFor(report.objectClass);
    if (report.coasting > 0.0) {
        return object;
    }
    const double sine = std::clamp(-radarMounting_.position[2] / report.range, -1.0, 1.0);
    object.spherical = SphericalPlace{report.range, degrees(std::asin(sine)),
                                      counterClockwiseFromRight(report.azimuth)};
    if (report.speed && report.direction) {
        object.speed = report.speed;
        object.direction = MotionDirection{counterClockwiseFromRight(*report.direction), 0.0};
    }
    return object;
}

}  // namespace Veskar::Live
