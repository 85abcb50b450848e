// SPDX-License-Identifier: Apache-2.0
// The sensor tracks behind a system track: which are held, coast and leave.
#include <veskar/SystemTrack.h>

#include "track/Support.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace Veskar {
namespace {

/// Seconds after which a sensor track without a report leaves.
constexpr double coastingLimit = 0.5;

/// Takes a sensor track out of the estimate and erases it.
/// @return the entry after the erased one
SystemTrack::SensorTracks::iterator release(SystemTrack& system, Source source,
                                            SystemTrack::SensorTracks& tracks,
                                            SystemTrack::SensorTracks::iterator leaving) {
    system.applyDefusion(dereference(leaving->second));
    const auto next = tracks.erase(leaving);
    if (source == Source::VideoObject) {
        if (const Track* radar = firstTrack(system, Source::Radar)) {
            system.boundingBox = radar->boundingBox;
        }
    }
    return next;
}

}  // namespace

SystemTrack::SystemTrack(std::shared_ptr<Track> track, int systemId)
    : Track(systemId),
      classVoted(false),
      colorVoted(false),
      upperClothingColorVoted(false),
      lowerClothingColorVoted(false),
      systemStartTime(0.0),
      trackProbabilityHistory(5, 0.5),
      reasonLatches{},
      framesWithoutVideo(0),
      isConfirmed(false) {
    const Track& first = dereference(track);
    state = first.state;
    covariance = first.covariance;
    time = first.time;
    startTime = first.startTime;
    sensorTracks[Source::Radar];
    sensorTracks[Source::VideoObject];
    sensorTracks[first.source][first.id] = std::move(track);
    updateClass(first);
    boundingBox = first.boundingBox;
    startPosition = first.startPosition;
    systemStartTime = first.startTime;
}

SystemTrack::~SystemTrack() = default;

double SystemTrack::getAge() const {
    const Track* video = firstTrack(*this, Source::VideoObject);
    return video == nullptr ? -1.0 : video->time - video->startTime;
}

std::optional<double> SystemTrack::getSpeed() const {
    const Track* radar = firstTrack(*this, Source::Radar);
    return radar == nullptr ? std::nullopt : radar->getSpeed();
}

std::optional<Eigen::Vector2d> SystemTrack::getDirection() const {
    const Track* radar = firstTrack(*this, Source::Radar);
    return radar == nullptr ? std::nullopt : radar->getDirection();
}

std::optional<SphericalCoordinate> SystemTrack::getLocation() const {
    const Track* radar = firstTrack(*this, Source::Radar);
    return radar == nullptr ? std::nullopt : radar->getLocation();
}

std::optional<::Dbus::GeoLocation::Position> SystemTrack::getGeoLocation() const {
    const Track* radar = firstTrack(*this, Source::Radar);
    return radar == nullptr ? std::nullopt : radar->getGeoLocation();
}

bool SystemTrack::hasSource(const Source& s) const {
    return sensorTracks.find(s) != sensorTracks.end();
}

bool SystemTrack::hasTracks(const Source& s) const {
    const auto tracks = sensorTracks.find(s);
    return tracks != sensorTracks.end() && !tracks->second.empty();
}

const SystemTrack::SensorTracks& SystemTrack::getSensorTracks(const Source& s) const {
    return sensorTracks.at(s);
}

void SystemTrack::setCoastingTimeTracks(double dt) {
    for (const auto& tracks : sensorTracks) {
        for (const auto& entry : tracks.second) {
            dereference(entry.second).coastingTime += dt;
        }
    }
}

bool SystemTrack::hasCoastingTracks(const Source& s) const {
    return hasCoastingTracksTooLong(s, 0.0);
}

bool SystemTrack::hasCoastingTracksTooLong(const Source& s, double limit) const {
    const auto tracks = sensorTracks.find(s);
    return tracks != sensorTracks.end() &&
           std::any_of(tracks->second.begin(), tracks->second.end(), [limit](const auto& entry) {
               return dereference(entry.second).coastingTime > limit;
           });
}

void SystemTrack::pruneSensorTracksByIdx(const Source& s, int idx) {
    const auto tracks = sensorTracks.find(s);
    if (tracks == sensorTracks.end()) {
        return;
    }
    const auto leaving = tracks->second.find(idx);
    if (leaving != tracks->second.end()) {
        release(*this, s, tracks->second, leaving);
    }
}

void SystemTrack::pruneSensorTracksByCoastingTime(const Source& s) {
    const Source pruned = s;  // s may be a member of a track that leaves
    SensorTracks& tracks = sensorTracks[pruned];
    for (auto entry = tracks.begin(); entry != tracks.end();) {
        const bool leaves = dereference(entry->second).coastingTime >= coastingLimit;
        entry = leaves ? release(*this, pruned, tracks, entry) : std::next(entry);
    }
}

void SystemTrack::prune() {
    pruneSensorTracksByCoastingTime(Source::Radar);
    pruneSensorTracksByCoastingTime(Source::VideoObject);
}

}  // namespace Veskar
