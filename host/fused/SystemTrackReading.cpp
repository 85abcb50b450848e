// SPDX-License-Identifier: Apache-2.0
#include "host/fused/SystemTrackReading.h"

#include <veskar-host/GeographicPosition.h>

#include <cmath>
#include <utility>

#include <Eigen/LU>

namespace Veskar::Host::Internal {
namespace {

// Data gathered from the sensor tracks of a system track.
struct Supports {
    std::vector<Support> sensors;
    bool hasRadar = false;
    std::optional<double> radarTime;  // time of the estimate of the first radar track, s
    std::optional<double> videoTime;  // the same for video, s
};

Supports supportsOf(const SystemTrack& track) {
    Supports supports;
    supports.sensors.reserve(2);
    for (const auto& [source, tracks] : track.sensorTracks) {
        if (tracks.empty()) {
            continue;
        }
        supports.hasRadar |= source == Radar;
        if (const auto* first = dynamic_cast<const ReportedTrack*>(tracks.begin()->second.get())) {
            (source == Radar ? supports.radarTime : supports.videoTime) = first->reportTime;
        }
        for (const auto& [id, sensorTrack] : tracks) {
            supports.sensors.push_back({source, id, sensorTrack->coastingTime});
        }
    }
    return supports;
}

Labels labelsOf(const SystemTrack& track, bool hasRadar) {
    // The library returns a radar's class probability in percent.
    const bool isRadarsClass = !track.classVoted && hasRadar;
    const double classScale = isRadarsClass ? 0.01 : 1.0;
    return {{track.getClassName(), classScale * track.getClassProbability()},
            {track.getColorName(), track.getColorProbability()},
            {track.getUpperClothingColorName(), track.getUpperClothingColorProbability()},
            {track.getLowerClothingColorName(), track.getLowerClothingColorProbability()}};
}

/// @param P covariance of the fusion state
/// @param first u or u'
/// @param second range or range'
Eigen::Matrix2d block(const StateMatrix& P, Eigen::Index first, Eigen::Index second) {
    Eigen::Matrix2d result;
    result << P(first, first), P(first, second), P(second, first), P(second, second);
    return result;
}

std::optional<GroundPosition> groundOf(const FusedTrack& track, const StateMatrix& covariance,
                                       const Projection& camera) {
    const auto found = camera.groundPoint(track.image[0], track.image[1], track.range);
    if (!found) {
        return std::nullopt;
    }
    // The ground position follows from column and range alone; the row is less accurate.
    const Eigen::Matrix2d J = found->jacobian.inverse();
    return GroundPosition{found->position, J * block(covariance, 0, 4) * J.transpose(),
                          J * Eigen::Vector2d(track.imageRate[0], track.rangeRate),
                          J * block(covariance, 1, 5) * J.transpose()};
}

void addMotion(FusedTrack& track, std::optional<Eigen::Vector2d> direction) {
    if (track.ground) {
        const Eigen::Vector2d velocity = track.ground->velocity;
        track.speed = track.speed.value_or(velocity.norm());
        direction = direction.value_or(velocity);
    }
    if (direction && direction->squaredNorm() > 0.0) {
        track.direction = -degrees(std::atan2((*direction)[1], (*direction)[0]));
    }
}

}  // namespace

FusedTrack readTrack(const SystemTrack& track, const HostAdapter& adapter) {
    const StateVector& x = track.state;
    Supports supports = supportsOf(track);
    const double age =
        track.time - supports.radarTime.value_or(supports.videoTime.value_or(track.time));
    FusedTrack fused;
    fused.id = track.id;
    fused.confirmed = track.isConfirmed;
    fused.probability = track.getTrackProbability();
    fused.image = {x[0], x[2]};
    fused.imageRate = {x[1], x[3]};
    fused.range = x[4] + x[5] * age;
    fused.rangeRate = x[5];
    fused.ground = groundOf(fused, track.covariance, adapter.projection());
    fused.speed = track.getSpeed();
    addMotion(fused, track.getDirection());
    fused.labels = labelsOf(track, supports.hasRadar);
    const Eigen::Vector4d& box = track.boundingBox;
    fused.box = {box[0], box[2], box[0] + box[1], box[2] + box[3]};
    if (fused.ground && adapter.site()) {
        fused.geo = geographicPosition(*adapter.site(), fused.ground->position);
    }
    fused.age = track.time - track.systemStartTime;
    fused.sensors = std::move(supports.sensors);
    return fused;
}

}  // namespace Veskar::Host::Internal
