// SPDX-License-Identifier: Apache-2.0
#include "simulate/tracker/SensorTrackers.h"

#include <veskar-host/Projection.h>

#include <algorithm>
#include <cmath>

namespace Workbench {
namespace {

// The fields that all kinds of reports share.
template <typename Form>
Form reportOf(const PlanarTracker& tracker, const PlanarTrack& track, double time) {
    Form report;
    report.id = track.id;
    report.coasting = time - track.seen;
    report.confirmed = tracker.isConfirmed(track);
    return report;
}

// Smooths a label: a single frame with another word does not change it.
void observeLabel(Label& label, const Label& seen) {
    constexpr double rate = 0.2;
    if (seen.name == label.name) {
        label.probability += rate * (seen.probability - label.probability);
        return;
    }
    label.probability -= rate * seen.probability;
    if (label.probability < 0.3) {
        label = seen;
    }
}

}  // namespace

VideoTracker::VideoTracker(const TrackerParameters& parameters, double positionStd)
    : tracker_(parameters), positionStd_(positionStd) {}

TrackerParameters VideoTracker::usualParameters() {
    TrackerParameters parameters;
    parameters.accelerationStd = 0.15;
    parameters.initialVelocityStd = 0.3;
    return parameters;
}

void VideoTracker::observe(Appearance& appearance, const VideoDetection& detection) const {
    const ImageBox& box = detection.box;
    constexpr double rate = 0.3;
    appearance.size +=
        rate * (Eigen::Vector2d(box.right - box.left, box.top - box.bottom) - appearance.size);
    observeLabel(appearance.labels.objectClass, detection.labels.objectClass);
    observeLabel(appearance.labels.color, detection.labels.color);
    observeLabel(appearance.labels.upperClothingColor, detection.labels.upperClothingColor);
    observeLabel(appearance.labels.lowerClothingColor, detection.labels.lowerClothingColor);
}

VideoTracker::Appearance VideoTracker::appearanceOf(
    const PlanarTrack& track, const std::vector<VideoDetection>& detections) const {
    const auto known = appearances_.find(track.firstId);
    if (!track.detection) {
        return known->second;
    }
    const VideoDetection& detection = detections[*track.detection];
    // A track with a new id starts like a new one.
    if (known == appearances_.end() || known->second.id != track.id) {
        return {
            track.id,
            {detection.box.right - detection.box.left, detection.box.top - detection.box.bottom},
            detection.labels};
    }
    Appearance appearance = known->second;
    observe(appearance, detection);
    return appearance;
}

std::vector<Report> VideoTracker::update(double time,
                                         const std::vector<VideoDetection>& detections) {
    const double variance = positionStd_ * positionStd_;
    std::vector<PlanarDetection> points;
    points.reserve(detections.size());
    for (const VideoDetection& detection : detections) {
        points.push_back({{0.5 * (detection.box.left + detection.box.right), detection.box.bottom},
                          variance * Eigen::Matrix2d::Identity(),
                          {}});
    }
    tracker_.update(time, points);

    std::map<std::int32_t, Appearance> living;
    std::vector<Report> reports;
    reports.reserve(tracker_.tracks().size());
    for (const PlanarTrack& track : tracker_.tracks()) {
        const Appearance appearance = appearanceOf(track, detections);
        auto report = reportOf<VideoReport>(tracker_, track, time);
        const Eigen::Vector2d foot = track.filter.position();
        const double half = 0.5 * appearance.size[0];
        report.box = {foot[0] - half, foot[1], foot[0] + half, foot[1] + appearance.size[1]};
        report.velocity = track.filter.velocity();
        report.age = time - track.born;
        report.labels = appearance.labels;
        reports.emplace_back(report);
        living.emplace(track.firstId, appearance);
    }
    appearances_ = std::move(living);
    return reports;
}

RadarTracker::RadarTracker(const TrackerParameters& parameters, double rangeStd, double azimuthStd)
    : tracker_(parameters),
      tangentialSpeedStd_(parameters.initialVelocityStd),
      rangeStd_(rangeStd),
      azimuthStd_(azimuthStd) {}

TrackerParameters RadarTracker::usualParameters() {
    TrackerParameters parameters;
    parameters.accelerationStd = 1.5;
    parameters.initialVelocityStd = 3.0;
    return parameters;
}

PlanarDetection RadarTracker::pointOf(const RadarDetection& detection) const {
    constexpr double dopplerStd = 0.3;  // m/s
    const double angle = -radians(detection.azimuth);
    const Eigen::Vector2d radial(std::cos(angle), std::sin(angle));
    const Eigen::Vector2d tangential(-radial[1], radial[0]);
    // Covariance from standard deviations along and across the line of sight.
    const auto spread = [&](double along, double across) -> Eigen::Matrix2d {
        return along * along * radial * radial.transpose() +
               across * across * tangential * tangential.transpose();
    };
    PlanarDetection point{detection.range * radial,
                          spread(rangeStd_, std::max(detection.range * radians(azimuthStd_), 0.05)),
                          {}};
    if (detection.radialSpeed) {
        point.velocity = {*detection.radialSpeed * radial, spread(dopplerStd, tangentialSpeedStd_)};
    }
    return point;
}

std::vector<Report> RadarTracker::update(double time,
                                         const std::vector<RadarDetection>& detections) {
    std::vector<PlanarDetection> points;
    points.reserve(detections.size());
    for (const RadarDetection& detection : detections) {
        points.push_back(pointOf(detection));
    }
    tracker_.update(time, points);

    std::vector<Report> reports;
    reports.reserve(tracker_.tracks().size());
    for (const PlanarTrack& track : tracker_.tracks()) {
        auto report = reportOf<RadarReport>(tracker_, track, time);
        const Eigen::Vector2d position = track.filter.position();
        const Eigen::Vector2d velocity = track.filter.velocity();
        report.range = position.norm();
        report.azimuth = -degrees(std::atan2(position[1], position[0]));
        report.speed = velocity.norm();
        report.direction = -degrees(std::atan2(velocity[1], velocity[0]));
        reports.emplace_back(report);
    }
    return reports;
}

}  // namespace Workbench
