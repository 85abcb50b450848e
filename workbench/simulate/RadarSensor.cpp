// SPDX-License-Identifier: Apache-2.0
#include "simulate/RadarSensor.h"

#include <veskar-host/Projection.h>

#include "HostLibrary.h"
#include "simulate/Sight.h"

#include <algorithm>
#include <array>
#include <cmath>

namespace Workbench {
RadarSensor::RadarSensor(const Scenario& scenario, std::uint64_t seed)
    : traits_(scenario.radarSensor),
      walls_(scenario.walls),
      position_(truePose(scenario.radar.mounting, traits_.mountingError).position),
      fromDevice_(truePose(scenario.radar.mounting, traits_.mountingError).rotation().transpose()),
      halfAngle_(0.5 * scenario.radar.fieldOfView),
      random_(seed, "radar"),
      falseObjects_(traits_, position_.head<2>(), radians(scenario.radar.mounting.yaw),
                    radians(halfAngle_)),
      tracker_(RadarTracker::usualParameters(), traits_.rangeStd, traits_.azimuthStd) {}

std::optional<RadarDetection> RadarSensor::measure(const Eigen::Vector2d& ground,
                                                   const Eigen::Vector2d& velocity) const {
    const Eigen::Vector3d sight = Eigen::Vector3d(ground[0], ground[1], 0.0) - position_;
    const Eigen::Vector3d offset = fromDevice_ * sight;
    const RadarDetection detection{offset.norm(), -degrees(std::atan2(offset[1], offset[0])),
                                   sight.head<2>().dot(velocity) / sight.norm()};
    const bool isInView =
        std::abs(detection.azimuth) <= halfAngle_ && detection.range <= traits_.maximumRange;
    return isInView ? std::optional<RadarDetection>(detection) : std::nullopt;
}

std::optional<RadarDetection> RadarSensor::reflect(const ObjectState& object, double dt) {
    // The reflection point varies around the nearest point and stays on the object.
    auto& wander = reflectionPoints_[object.id];
    const Eigen::Vector2d half = 0.5 * object.traits->size.head<2>();
    const double along =
        wander[0].step(random_, dt, traits_.reflectionStd * half[0], traits_.reflectionTime);
    const double across =
        wander[1].step(random_, dt, traits_.reflectionStd * half[1], traits_.reflectionTime);
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
    const Eigen::Vector2d sight = object.centre - position_.head<2>();
    const double distance = sight.norm();
    return std::any_of(objects.begin(), objects.end(), [&](const ObjectState& other) {
        const Eigen::Vector2d offset = other.centre - position_.head<2>();
        const double across = std::abs(offset[0] * sight[1] - offset[1] * sight[0]);
        // Most others are far beside the line of sight, which takes no division to see.
        if (across > other.traits->size[1] * distance) {
            return false;
        }
        const double along = offset.dot(sight) / distance;
        const double beside = across / distance;
        return other.id != object.id && along > 0.0 && along < distance - 0.5 &&
               beside < 0.5 * other.traits->size[1];
    });
}

double RadarSensor::chanceOfDetection(const ObjectState& object,
                                      const std::vector<ObjectState>& objects) const {
    if (isBehindWall(walls_, position_.head<2>(), object.centre)) {
        return 0.0;
    }
    return (isHidden(object, objects) ? traits_.hiddenFactor : 1.0) * traits_.detectionProbability;
}

std::vector<RadarDetection> RadarSensor::resolve(std::vector<RadarDetection> reflections) const {
    // Reflections in one resolution cell merge into one at their mean.
    std::vector<RadarDetection> resolved;
    while (!reflections.empty()) {
        RadarDetection sum{0.0, 0.0, 0.0};
        double count = 0.0;
        const RadarDetection first = reflections.front();
        const auto isMerged = [&](const RadarDetection& other) {
            return std::abs(other.range - first.range) < traits_.rangeResolution &&
                   std::abs(other.azimuth - first.azimuth) < traits_.azimuthResolution;
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
    const double dt = time - last_;
    last_ = time;
    std::vector<RadarDetection> reflections;
    for (const ObjectState& object : objects) {
        const std::optional<RadarDetection> reflection = reflect(object, dt);
        if (random_.chance(chanceOfDetection(object, objects)) && reflection &&
            !(std::abs(*reflection->radialSpeed) < traits_.minimumRadialSpeed)) {
            reflections.push_back(*reflection);
        }
    }
    std::vector<RadarDetection> detections = resolve(std::move(reflections));
    for (const FalseObject& object : falseObjects_.at(time, dt, random_)) {
        if (const auto reflection = measure(object.position, Eigen::Vector2d::Zero())) {
            detections.push_back(*reflection);
        }
    }
    constexpr double dopplerStd = 0.2;  // m/s
    for (RadarDetection& detection : detections) {
        detection.range = std::max(0.5, detection.range + traits_.rangeStd * random_.normal());
        detection.azimuth += traits_.azimuthStd * random_.normal();
        detection.radialSpeed = detection.radialSpeed.value_or(0.0) + dopplerStd * random_.normal();
    }
    churnIds(tracker_.planar(), traits_, dt, random_);
    return tracker_.update(time, detections);
}

}  // namespace Workbench
