// SPDX-License-Identifier: Apache-2.0
#include "live/service/TrackText.h"

#include <veskar-host/SensorFrame.h>

#include <string_view>

#include <fmt/format.h>

namespace Veskar::Live {
namespace {

std::string placeOf(const Host::FusedTrack& track) {
    if (!track.ground) {
        return "-";
    }
    const Eigen::Vector2d& position = track.ground->position;
    return fmt::format("x {:.1f} m, y {:.1f} m", position[0], position[1]);
}

std::string motionOf(const Host::FusedTrack& track) {
    if (!track.speed) {
        return "-";
    }
    return track.direction ? fmt::format("{:.1f} m/s to {:.0f}°", *track.speed, *track.direction)
                           : fmt::format("{:.1f} m/s", *track.speed);
}

std::string supportOf(const Host::FusedTrack& track) {
    std::string text;
    for (const Host::Support& support : track.sensors) {
        text += fmt::format("{}{} {}", text.empty() ? "" : ", ", Host::sourceName(support.source),
                            support.id);
    }
    return text.empty() ? "-" : text;
}

std::string lineOf(const Host::FusedTrack& track, std::string_view time) {
    const Host::Label& label = track.labels.objectClass;
    return fmt::format("{}  {:>5}  {:<24} {:<24} {:<18} {}{}", time, track.id,
                       fmt::format("{} {:.2f}", label.name, label.probability), placeOf(track),
                       motionOf(track), supportOf(track), track.confirmed ? "" : " (unconfirmed)");
}

}  // namespace

std::string textOf(const Host::FusedFrame& frame, UtcTime utc) {
    // Of YYYY-MM-DDTHH:MM:SS.ffffffZ, as far as milliseconds.
    const std::string time = utcText(utc).substr(11, 12);
    if (frame.tracks.empty()) {
        return time + "  no tracks";
    }
    std::string text;
    for (const Host::FusedTrack& track : frame.tracks) {
        text += text.empty() ? "" : "\n";
        text += lineOf(track, time);
    }
    return text;
}

}  // namespace Veskar::Live
