// SPDX-License-Identifier: Apache-2.0
#include "simulate/VideoSensor.h"

#include <veskar-host/UsualSize.h>

#include "simulate/Sight.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Workbench {
namespace {

Projection mountedCamera(const Scenario& scenario) {
    CameraSetup setup = scenario.camera;
    setup.mounting = truePose(setup.mounting, scenario.video.mountingError);
    return Projection(setup.build());
}

double areaOf(const ImageBox& box) {
    return std::max(0.0, box.right - box.left) * std::max(0.0, box.top - box.bottom);
}

ImageBox common(const ImageBox& a, const ImageBox& b) {
    return {std::max(a.left, b.left), std::max(a.bottom, b.bottom), std::min(a.right, b.right),
            std::min(a.top, b.top)};
}

constexpr ImageBox wholeImage{-1.0, -1.0, 1.0, 1.0};

}  // namespace

VideoSensor::VideoSensor(const Scenario& scenario, std::uint64_t seed)
    : traits_(scenario.video),
      walls_(scenario.walls),
      camera_(mountedCamera(scenario)),
      random_(seed, "video"),
      falseObjects_(traits_, camera_.origin().head<2>(), radians(scenario.camera.mounting.yaw),
                    camera_.camera().getFieldOfView()[0]),
      tracker_(VideoTracker::usualParameters(), std::hypot(traits_.edgeStd, 0.004)) {}

ImageBox VideoSensor::boxOf(const Projection& camera, const ObjectState& object) {
    ImageBox box{2e9, 2e9, -2e9, -2e9};
    const Eigen::Vector3d& size = object.traits->size;
    for (int corner = 0; corner < 8; ++corner) {
        const Eigen::Vector2d foot =
            object.point((corner & 1 ? 0.5 : -0.5) * size[0], (corner & 2 ? 0.5 : -0.5) * size[1]);
        const Eigen::Vector2d uv = camera.position({foot[0], foot[1], corner & 4 ? size[2] : 0.0});
        box = {std::min(box.left, uv[0]), std::min(box.bottom, uv[1]), std::max(box.right, uv[0]),
               std::max(box.top, uv[1])};
    }
    return box;
}

std::vector<VideoSensor::View> VideoSensor::views(const std::vector<ObjectState>& objects) const {
    std::vector<View> result;
    for (const ObjectState& object : objects) {
        const Eigen::Vector3d middle(object.centre[0], object.centre[1],
                                     0.5 * object.traits->size[2]);
        if (camera_.sees(middle) &&
            !isBehindWall(walls_, camera_.origin().head<2>(), object.centre)) {
            result.push_back({&object, boxOf(camera_, object),
                              (object.nearestPoint() - camera_.origin().head<2>()).norm(), 0.0});
        }
    }
    std::stable_sort(result.begin(), result.end(),
                     [](const View& a, const View& b) { return a.distance < b.distance; });
    for (std::size_t i = 0; i < result.size(); ++i) {
        for (std::size_t nearer = 0; nearer < i; ++nearer) {
            const double covered = areaOf(common(result[i].box, result[nearer].box));
            if (covered > 0.0) {
                result[i].covered += covered / std::max(areaOf(result[i].box), 1e-12);
            }
        }
    }
    return result;
}

bool VideoSensor::isDetected(const View& view) {
    const double height = view.box.top - view.box.bottom;
    const double inside = areaOf(common(view.box, wholeImage)) / std::max(areaOf(view.box), 1e-12);
    const bool isVisible = height >= traits_.minimumBoxHeight &&
                           view.distance <= traits_.maximumRange &&
                           view.covered < traits_.occlusionLimit && inside > 0.6;
    return random_.chance(isVisible ? traits_.detectionProbability * (1.0 - 0.5 * view.covered)
                                    : 0.0);
}

Label VideoSensor::classOf(const ObjectTraits& object) {
    const double probability = std::clamp(0.8 + 0.08 * random_.normal(), 0.3, 0.99);
    if (!random_.chance(traits_.classConfusion)) {
        return {object.className, probability};
    }
    return {object.className == "human" ? "animal" : "human", 0.6 * probability};
}

VideoDetection VideoSensor::detect(const View& view, double dt) {
    const double height = view.box.top - view.box.bottom;
    auto& foot = footErrors_[view.object->id];
    const double std = traits_.footStd * height;
    const double shift = foot[0].step(random_, dt, 0.5 * std, traits_.footTime);
    const double lift = foot[1].step(random_, dt, std, traits_.footTime);
    const auto edge = [&] { return traits_.edgeStd * random_.normal(); };
    ImageBox box = {view.box.left + shift + edge(), view.box.bottom + lift + edge(),
                    view.box.right + shift + edge(), view.box.top + edge()};
    box = common(box, wholeImage);
    box.right = std::max(box.right, box.left + 1e-3);
    box.top = std::max(box.top, box.bottom + 1e-3);
    Labels labels = view.object->traits->labels;
    labels.objectClass = classOf(*view.object->traits);
    return {box, labels};
}

VideoDetection VideoSensor::imagine(const FalseObject& object) const {
    ObjectTraits shape;
    shape.size = usualSize(object.className);
    ObjectState state;
    state.traits = &shape;
    state.centre = object.position;
    Labels labels;
    labels.objectClass = {object.className, 0.5};
    return {boxOf(camera_, state), labels};
}

std::vector<Report> VideoSensor::look(double time, const std::vector<ObjectState>& objects) {
    const double dt = time - last_;
    last_ = time;
    std::vector<VideoDetection> detections;
    for (const View& view : views(objects)) {
        if (isDetected(view)) {
            detections.push_back(detect(view, dt));
        }
    }
    for (const FalseObject& object : falseObjects_.at(time, dt, random_)) {
        const VideoDetection detection = imagine(object);
        if (camera_.sees({object.position[0], object.position[1], 0.0}) &&
            detection.box.top - detection.box.bottom >= traits_.minimumBoxHeight) {
            detections.push_back(detection);
        }
    }
    churnIds(tracker_.planar(), traits_, dt, random_);
    return tracker_.update(time, detections);
}

}  // namespace Workbench
