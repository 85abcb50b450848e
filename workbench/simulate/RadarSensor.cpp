// SPDX-License-Identifier: Apache-2.0
#include "simulate/RadarSensor.h"

#include "geometry/Projection.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Workbench {
namespace {

constexpr double dopplerStd = 0.2;  // m/s

}  // namespace

RadarSensor::RadarSensor(const Scenario& scenario, std::uint64_t seed)
    : traits(scenario.radarSensor),
      position(truePose(scenario.radar.mounting, traits.mountingError).position),
      fromDevice(truePose(scenario.radar.mounting, traits.mountingError).rotation().transpose()),
      halfAngle(0.5 * scenario.radar.fieldOfView),
      random(seed, "radar"),
      falseObjects(traits, position.head<2>(), radians(scenario.radar.mounting.yaw),
                   radians(halfAngle)),
      tracker(RadarTracker::usualParameters(), traits.rangeStd, traits.azimuthStd) {}

std::optional<RadarDetection> RadarSensor::measure(const Eigen::Vector2d& ground,
                                                   const Eigen::Vector2d& velocity) const {
    const Eigen::Vector3d sight = Eigen::Vector3d(ground[0], ground[1], 0.0) - position;
    const Eigen::Vector3d offset = fromDevice * sight;
    const RadarDetection detection{offset.norm(), -degrees(std::atan2(offset[1], offset[0])),
                                   sight.head<2>().dot(velocity) / sight.norm()};
    const bool isInView =
        std::abs(detection.azimuth) <= halfAngle && detection.range <= traits.maximumRange;
    return isInView ? std::optional<RadarDetection>(detection) : std::nullopt;
}

std::optional<RadarDetection> RadarSensor::reflect(const ObjectState& object, double dt) {
    // The reflection wanders around the near point and stays on the object.
    auto& wander = reflectionPoints[object.id];
    const Eigen::Vector2d half = 0.5 * object.traits->size.head<2>();
    const double along =
        wander[0].step(random, dt, traits.reflectionStd * half[0], traits.reflectionTime);
    const double across =
        wander[1].step(random, dt, traits.reflectionStd * half[1], traits.reflectionTime);
    const Eigen::Vector2d shifted =
        object.nearestPoint() + object.point(along, across) - object.centre;
    const Eigen::Vector2d ahead(std::cos(object.heading), std::sin(object.heading));
    const Eigen::Vector2d offset = shifted - object.centre;
    const double forward = std::clamp(offset.dot(ahead), -half[0], half[0]);
    const double left =
        std::clamp(offset.dot(Eigen::Vector2d(-ahead[1], ahead[0])), -half[1], half[1]);
    return measure(object.point(forward, left), object.velocity);
}

bool RadarSensor::isHidden(const ObjectState& object,
                           const std::vector<ObjectState>& objects) const {
    const Eigen::Vector2d sight = object.centre - position.head<2>();
    const double distance = sight.norm();
    return std::any_of(objects.begin(), objects.end(), [&](const ObjectState& other) {
        const Eigen::Vector2d offset = other.centre - position.head<2>();
        const double along = offset.dot(sight) / distance;
        const double beside = std::abs(offset[0] * sight[1] - offset[1] * sight[0]) / distance;
        return other.id != object.id && along > 0.0 && along < distance - 0.5 &&
               beside < 0.5 * other.traits->size[1];
    });
}

std::vector<RadarDetection> RadarSensor::resolve(std::vector<RadarDetection> reflections) const {
    // Reflections in one resolution cell come out as one, in their middle.
    std::vector<RadarDetection> resolved;
    while (!reflections.empty()) {
        RadarDetection sum{0.0, 0.0, 0.0};
        double count = 0.0;
        const RadarDetection first = reflections.front();
        const auto isMerged = [&](const RadarDetection& other) {
            return std::abs(other.range - first.range) < traits.rangeResolution &&
                   std::abs(other.azimuth - first.azimuth) < traits.azimuthResolution;
        };
        std::vector<RadarDetection> rest;
        for (std::size_t i = 0; i < reflections.size(); ++i) {
            if (i == 0 || isMerged(reflections[i])) {
                sum.range += reflections[i].range;
                sum.azimuth += reflections[i].azimuth;
                *sum.radialSpeed += reflections[i].radialSpeed.value_or(0.0);
                count += 1.0;
            } else {
                rest.push_back(reflections[i]);
            }
        }
        resolved.push_back({sum.range / count, sum.azimuth / count, *sum.radialSpeed / count});
        reflections = std::move(rest);
    }
    return resolved;
}

std::vector<Report> RadarSensor::look(double time, const std::vector<ObjectState>& objects) {
    const double dt = time - last;
    last = time;
    std::vector<RadarDetection> reflections;
    for (const ObjectState& object : objects) {
        const std::optional<RadarDetection> reflection = reflect(object, dt);
        const double factor = isHidden(object, objects) ? traits.hiddenFactor : 1.0;
        if (random.chance(factor * traits.detectionProbability) && reflection) {
            reflections.push_back(*reflection);
        }
    }
    std::vector<RadarDetection> detections = resolve(std::move(reflections));
    for (const FalseObject& object : falseObjects.at(time, dt, random)) {
        if (const auto reflection = measure(object.position, Eigen::Vector2d::Zero())) {
            detections.push_back(*reflection);
        }
    }
    for (RadarDetection& detection : detections) {
        detection.range = std::max(0.5, detection.range + traits.rangeStd * random.normal());
        detection.azimuth += traits.azimuthStd * random.normal();
        detection.radialSpeed = detection.radialSpeed.value_or(0.0) + dopplerStd * random.normal();
    }
    churnIds(tracker.planar(), traits, dt, random);
    return tracker.update(time, detections);
}

}  // namespace Workbench
