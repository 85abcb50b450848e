// SPDX-License-Identifier: Apache-2.0
#include "live/onvif/FusedScene.h"

#include <veskar-host/GeographicPosition.h>
#include <veskar-host/Projection.h>

#include "live/onvif/ClassWords.h"
#include "live/onvif/ColorWords.h"

#include <cmath>
#include <utility>

namespace Veskar::Live {
namespace {

bool isFinite(const Host::ImageBox& box) {
    return std::isfinite(box.left) && std::isfinite(box.bottom) && std::isfinite(box.right) &&
           std::isfinite(box.top);
}

}  // namespace

FusedScene::FusedScene(const Host::Installation& installation, std::string module)
    : module_(std::move(module)), camera_(installation.camera.mounting.position) {}

SceneObject FusedScene::objectFor(const Host::FusedTrack& track) const {
    SceneObject object;
    object.name = nameOf(track.id);
    if (isFinite(track.box)) {
        object.shape = shapeOf(track.box);
    }
    object.classes = candidatesFor(track.labels.objectClass);
    object.colors = clustersFor(track.labels.color);
    object.tops = clustersFor(track.labels.upperClothingColor);
    object.bottoms = clustersFor(track.labels.lowerClothingColor);
    if (track.geo && track.geo->valid) {
        object.geo = GeoPlace{track.geo->latitude, track.geo->longitude};
    }
    if (track.ground && track.ground->position.allFinite()) {
        const Eigen::Vector2d& ground = track.ground->position;
        const Eigen::Vector3d seen = Eigen::Vector3d(ground[0], ground[1], 0.0) - camera_;
        const double distance = seen.norm();
        object.spherical = SphericalPlace{
            distance, Host::degrees(std::asin(distance > 0.0 ? seen[2] / distance : 0.0)),
            Host::deviceAzimuth(seen.head<2>())};
    }
    if (track.speed && std::isfinite(*track.speed)) {
        object.speed = track.speed;
    }
    if (track.direction && std::isfinite(*track.direction)) {
        object.direction = MotionDirection{std::remainder(90.0 - *track.direction, 360.0), 0.0};
    }
    return object;
}

SceneFrame FusedScene::describe(const Host::FusedFrame& frame, UtcTime time) {
    SceneFrame scene;
    scene.time = time;
    scene.source = module_;
    std::set<std::int32_t> present;
    for (const Host::FusedTrack& track : frame.tracks) {
        present.insert(track.id);
        scene.objects.push_back(objectFor(track));
    }
    scene.deletes = disappearances_.update(std::move(present));
    return scene;
}

}  // namespace Veskar::Live
