// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedTrack.h"

#include "geometry/Site.h"

#include <cmath>

#include <Eigen/LU>

namespace Workbench {
namespace {

// Seconds since the estimate of the first sensor track of a source was made.
std::optional<double> reportAge(const Veskar::SystemTrack& track, Veskar::Source source) {
    if (!track.hasTracks(source)) {
        return std::nullopt;
    }
    const Veskar::Track& first = *track.getSensorTracks(source).begin()->second;
    const auto* report = dynamic_cast<const ReportedTrack*>(&first);
    return report == nullptr ? std::nullopt
                             : std::optional<double>(track.time - report->reportTime);
}

Labels labelsOf(const Veskar::SystemTrack& track) {
    // The library answers a radar's class probability as a percentage.
    const bool isRadarsClass = !track.classVoted && track.hasTracks(Veskar::Radar);
    const double classScale = isRadarsClass ? 0.01 : 1.0;
    return {{track.getClassName(), classScale * track.getClassProbability()},
            {track.getColorName(), track.getColorProbability()},
            {track.getUpperClothingColorName(), track.getUpperClothingColorProbability()},
            {track.getLowerClothingColorName(), track.getLowerClothingColorProbability()}};
}

std::optional<GroundPosition> groundOf(const FusedTrack& fused, const Veskar::StateMatrix& P,
                                       const Projection& camera) {
    const auto found = camera.groundPoint(fused.image[0], fused.image[1], fused.range);
    if (!found) {
        return std::nullopt;
    }
    // Column and range tell the place on the ground; the row says the same less well.
    const Eigen::Matrix2d J = found->jacobian.inverse();
    Eigen::Matrix2d place;
    place << P(0, 0), P(0, 4), P(4, 0), P(4, 4);
    Eigen::Matrix2d rate;
    rate << P(1, 1), P(1, 5), P(5, 1), P(5, 5);
    return GroundPosition{found->position, J * place * J.transpose(),
                          J * Eigen::Vector2d(fused.imageRate[0], fused.rangeRate),
                          J * rate * J.transpose()};
}

void readMotion(const Veskar::SystemTrack& track, FusedTrack& fused) {
    fused.speed = track.getSpeed();
    std::optional<Eigen::Vector2d> direction = track.getDirection();
    if (fused.ground) {
        const Eigen::Vector2d velocity = fused.ground->velocity;
        fused.speed = fused.speed.value_or(velocity.norm());
        direction = direction.value_or(velocity);
    }
    if (direction && direction->squaredNorm() > 0.0) {
        fused.direction = -degrees(std::atan2((*direction)[1], (*direction)[0]));
    }
}

}  // namespace

FusedTrack readTrack(const Veskar::SystemTrack& track, const HostAdapter& adapter) {
    const Veskar::StateVector& x = track.state;
    const double age = reportAge(track, Veskar::Radar)
                           .value_or(reportAge(track, Veskar::VideoObject).value_or(0.0));
    FusedTrack fused;
    fused.id = track.id;
    fused.confirmed = track.isConfirmed;
    fused.probability = track.getTrackProbability();
    fused.image = {x[0], x[2]};
    fused.imageRate = {x[1], x[3]};
    fused.range = x[4] + x[5] * age;
    fused.rangeRate = x[5];
    fused.ground = groundOf(fused, track.covariance, adapter.projection());
    readMotion(track, fused);
    fused.labels = labelsOf(track);
    const Eigen::Vector4d& box = track.boundingBox;
    fused.box = {box[0], box[2], box[0] + box[1], box[2] + box[3]};
    if (fused.ground && adapter.site()) {
        fused.geo = geographicPosition(*adapter.site(), fused.ground->position);
    }
    fused.age = track.time - track.systemStartTime;
    for (const auto& [source, tracks] : track.sensorTracks) {
        for (const auto& [id, sensorTrack] : tracks) {
            fused.sensors.push_back({source, id, sensorTrack->coastingTime});
        }
    }
    return fused;
}

}  // namespace Workbench
