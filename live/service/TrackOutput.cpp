// SPDX-License-Identifier: Apache-2.0
#include "live/service/TrackOutput.h"

#include "live/onvif/SceneCodec.h"
#include "live/service/TrackText.h"

#include <algorithm>
#include <utility>

namespace Veskar::Live {

TrackOutput::TrackOutput(const OutputSettings& settings, const Host::Installation& installation,
                         EventLoop& loop, std::unique_ptr<Output> output)
    : settings_(settings),
      output_(std::move(output)),
      scene_(installation),
      limit_(loop,
             std::chrono::duration_cast<EventLoop::Duration>(
                 std::chrono::duration<double>(settings.interval)),
             [this](const Moment& moment) { write(moment); }) {}

void TrackOutput::offer(const Host::FusedFrame& frame, UtcTime utc) {
    Moment moment{frame, utc};
    auto& tracks = moment.frame.tracks;
    tracks.erase(std::remove_if(tracks.begin(), tracks.end(),
                                [this](const auto& track) { return !isWanted(track); }),
                 tracks.end());
    if (!settings_.withTags) {
        for (Host::FusedTrack& track : tracks) {
            track.tags.reset();
        }
    }
    if (settings_.interval > 0.0) {
        limit_.offer(std::move(moment));
    } else {
        write(moment);
    }
}

void TrackOutput::endTracks(UtcTime utc) {
    flush();
    const Moment nothing{{}, utc};
    const bool isScene =
        settings_.format == TrackFormat::OnvifJson || settings_.format == TrackFormat::OnvifXml;
    if (settings_.format == TrackFormat::Events || (isScene && scene_.hasTracks())) {
        write(nothing);
    }
}

bool TrackOutput::isWanted(const Host::FusedTrack& track) const {
    return (track.confirmed || !settings_.isConfirmedOnly) &&
           (settings_.classes.empty() ||
            settings_.classes.count(track.labels.objectClass.name) > 0);
}

void TrackOutput::write(const Moment& moment) {
    switch (settings_.format) {
        case TrackFormat::JsonLines: {
            std::string line = toJsonLine(moment.frame);
            line.pop_back();
            send(std::move(line));
            break;
        }
        case TrackFormat::OnvifJson:
            send(toJson(Scene{scene_.describe(moment.frame, moment.utc)}));
            break;
        case TrackFormat::OnvifXml:
            send(toXml(Scene{scene_.describe(moment.frame, moment.utc)}));
            break;
        case TrackFormat::Events:
            for (std::string& event : events_.update(moment.frame, moment.utc)) {
                send(std::move(event));
            }
            break;
        case TrackFormat::Text:
            send(textOf(moment.frame, moment.utc));
            break;
    }
}

void TrackOutput::send(std::string message) {
    // A message of a broker needs no end; in streams every message is a line.
    if (!std::holds_alternative<BrokerTopic>(settings_.to)) {
        message += '\n';
    }
    output_->send(message);
}

}  // namespace Veskar::Live
