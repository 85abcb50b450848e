// SPDX-License-Identifier: Apache-2.0
#include <veskar/AutocalibrationHandler.h>
#include <veskar/HostApplication.h>

#include "net/LocalDatagramSocket.h"
#include "track/Support.h"

#include <algorithm>
#include <locale>
#include <sstream>
#include <utility>

namespace Veskar {
namespace {

/// Height over width of a 16:9 picture: turns the aspect of a box on the image plane, where both
/// sides count from -1 to 1, into the aspect of what it shows.
constexpr double pictureHeightToWidth = 0.5625;

/// A payload stops growing when it holds more than this.
constexpr std::size_t sampleLimit = 10;

Eigen::Vector2d imagePosition(const Track& track) {
    return {track.state(0), track.state(2)};
}

/// @return whether an edge of the box comes nearer to the image's border than @p limit
bool touchesEdge(const Eigen::Vector4d& box, double limit) {
    const double left = box(0);
    const double top = box(2);
    return left < -limit || left + box(1) > limit || top < -limit || top + box(3) > limit;
}

bool isWithin(double value, const std::pair<double, double>& range) {
    return range.first <= value && value <= range.second;
}

}  // namespace

AutocalibrationHandler::AutocalibrationHandler(const Config& config)
    : socketPath_("/tmp/autocalibration.sock"), enabled_(calledFromQWR()), config_(config) {}

void AutocalibrationHandler::handleUpdate(
    const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
    const std::vector<std::shared_ptr<Track>>& videoTracks, std::int64_t nanoseconds) {
    if (!enabled_) {
        return;
    }
    CalibrationPayload payload{{}, nanoseconds};
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        handleSystemTrack(dereference(systemTrack), videoTracks, payload);
        if (payload.data.size() > sampleLimit) {
            break;
        }
    }
    if (!payload.data.empty()) {
        sendCalibrationData(payload);
    }
}

void AutocalibrationHandler::handleSystemTrack(
    const SystemTrack& systemTrack, const std::vector<std::shared_ptr<Track>>& videoTracks,
    CalibrationPayload& payload) const {
    const Config::ModuleConfig& limits = config_.module;
    if (!isFused(systemTrack)) {
        return;
    }
    const double age = systemTrack.time - systemTrack.systemStartTime;
    if (!(age >= limits.autocalibrationAgeLimit)) {  // also refuses NaN
        return;
    }
    if (systemTrack.hasCoastingTracks(Source::Radar) ||
        systemTrack.hasCoastingTracksTooLong(Source::VideoObject,
                                             limits.autocalibrationVideoCoastingLimit)) {
        return;
    }
    const Track& video = *firstTrack(systemTrack, Source::VideoObject);
    const Eigen::Vector4d& box = video.boundingBox;
    if (touchesEdge(box, limits.autocalibrationEdgeLimit)) {
        return;
    }
    const auto aspectLimits = limits.autocalibrationAspectLimits.find(systemTrack.getClassName());
    if (aspectLimits == limits.autocalibrationAspectLimits.end() ||
        !isWithin(box(1) / box(3) / pictureHeightToWidth, aspectLimits->second)) {
        return;
    }
    const auto isNear = [&](const std::shared_ptr<Track>& pointer) {
        const Track& other = dereference(pointer);
        return other.id != video.id && (imagePosition(other) - imagePosition(video)).norm() <
                                           limits.autocalibrationVideoNearLimit;
    };
    if (std::any_of(videoTracks.begin(), videoTracks.end(), isNear)) {
        return;
    }
    const Track& radar = *firstTrack(systemTrack, Source::Radar);
    payload.data.push_back({video.state(0), video.state(2), radar.id, radar.state(4)});
}

std::string AutocalibrationHandler::formatPayload(const CalibrationPayload& payload) const {
    std::ostringstream text;
    text.imbue(std::locale::classic());
    text << "{\"radarTimestamp_ns\":" << payload.timestamp << ",\"data\":[";
    const char* separator = "";
    for (const CalibrationSample& sample : payload.data) {
        text << separator << "{\"u_video\":" << sample.u_video << ",\"v_video\":" << sample.v_video
             << ",\"id_radar\":" << sample.id_radar << ",\"r_radar\":" << sample.r_radar << '}';
        separator = ",";
    }
    text << "]}";
    return text.str();
}

void AutocalibrationHandler::sendCalibrationData(const CalibrationPayload& payload) const {
    const LocalDatagramSocket socket(socketPath_);
    if (socket.isConnected()) {
        socket.send(formatPayload(payload));
    }
}

}  // namespace Veskar
