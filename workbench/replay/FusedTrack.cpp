// SPDX-License-Identifier: Apache-2.0
#include "replay/FusedTrack.h"

#include "geometry/Site.h"

#include <cmath>
#include <utility>

#include <Eigen/LU>

namespace Workbench {
namespace {

// What of a system track's sensor tracks is asked for.
struct Supports {
    std::vector<Support> sensors;
    bool hasRadar = false;
    std::optional<double> radarTime;  // when the first one's estimate was made
    std::optional<double> videoTime;  // likewise
};

Supports supportsOf(const Veskar::SystemTrack& track) {
    Supports supports;
    supports.sensors.reserve(2);
    for (const auto& [source, tracks] : track.sensorTracks) {
        if (tracks.empty()) {
            continue;
        }
        supports.hasRadar |= source == Veskar::Radar;
        if (const auto* first = dynamic_cast<const ReportedTrack*>(tracks.begin()->second.get())) {
            (source == Veskar::Radar ? supports.radarTime : supports.videoTime) = first->reportTime;
        }
        for (const auto& [id, sensorTrack] : tracks) {
            supports.sensors.push_back({source, id, sensorTrack->coastingTime});
        }
    }
    return supports;
}

Labels labelsOf(const Veskar::SystemTrack& track, bool hasRadar) {
    // The library answers a radar's class probability as a percentage.
    const bool isRadarsClass = !track.classVoted && hasRadar;
    const double classScale = isRadarsClass ? 0.01 : 1.0;
    return {{track.getClassName(), classScale * track.getClassProbability()},
            {track.getColorName(), track.getColorProbability()},
            {track.getUpperClothingColorName(), track.getUpperClothingColorProbability()},
            {track.getLowerClothingColorName(), track.getLowerClothingColorProbability()}};
}

std::optional<GroundPosition> groundOf(const TrackReading& reading, const Projection& camera) {
    const FusedTrack& track = reading.track;
    const auto found = camera.groundPoint(track.image[0], track.image[1], track.range);
    if (!found) {
        return std::nullopt;
    }
    // Column and range tell the place on the ground; the row says the same less well.
    const Eigen::Matrix2d J = found->jacobian.inverse();
    return GroundPosition{found->position, J * reading.placeCovariance * J.transpose(),
                          J * Eigen::Vector2d(track.imageRate[0], track.rangeRate),
                          J * reading.rateCovariance * J.transpose()};
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

TrackReading readTrack(const Veskar::SystemTrack& track) {
    const Veskar::StateVector& x = track.state;
    const Veskar::StateMatrix& P = track.covariance;
    Supports supports = supportsOf(track);
    const double age =
        track.time - supports.radarTime.value_or(supports.videoTime.value_or(track.time));
    TrackReading reading;
    reading.placeCovariance << P(0, 0), P(0, 4), P(4, 0), P(4, 4);
    reading.rateCovariance << P(1, 1), P(1, 5), P(5, 1), P(5, 5);
    reading.direction = track.getDirection();
    FusedTrack& fused = reading.track;
    fused.id = track.id;
    fused.confirmed = track.isConfirmed;
    fused.probability = track.getTrackProbability();
    fused.image = {x[0], x[2]};
    fused.imageRate = {x[1], x[3]};
    fused.range = x[4] + x[5] * age;
    fused.rangeRate = x[5];
    fused.speed = track.getSpeed();
    fused.labels = labelsOf(track, supports.hasRadar);
    const Eigen::Vector4d& box = track.boundingBox;
    fused.box = {box[0], box[2], box[0] + box[1], box[2] + box[3]};
    fused.age = track.time - track.systemStartTime;
    fused.sensors = std::move(supports.sensors);
    return reading;
}

FusedTrack placed(TrackReading&& reading, const HostAdapter& adapter) {
    reading.track.ground = groundOf(reading, adapter.projection());
    FusedTrack& track = reading.track;
    addMotion(track, reading.direction);
    if (track.ground && adapter.site()) {
        track.geo = geographicPosition(*adapter.site(), track.ground->position);
    }
    return std::move(track);
}

FusedFrame placed(FrameReading&& reading, const HostAdapter& adapter) {
    FusedFrame frame{reading.time, reading.received, reading.source, {}};
    frame.tracks.reserve(reading.tracks.size());
    for (TrackReading& track : reading.tracks) {
        frame.tracks.push_back(placed(std::move(track), adapter));
    }
    return frame;
}

}  // namespace Workbench
