// SPDX-License-Identifier: Apache-2.0
#include "host/fused/SensorTrackReading.h"

#include "host/fused/SystemTrackReading.h"

#include <limits>
#include <memory>
#include <utility>
#include <vector>

namespace Veskar::Host::Internal {
namespace {

/// The box as the sensor reported it.
ImageBox boxOf(const Report& report) {
    constexpr double none = std::numeric_limits<double>::quiet_NaN();
    if (const auto* video = std::get_if<VideoReport>(&report)) {
        return video->box;
    }
    const auto* estimate = std::get_if<ReadyEstimate>(&report);
    return estimate != nullptr && estimate->box ? *estimate->box : ImageBox{none, none, none, none};
}

}  // namespace

FusedFrame readTracks(const SensorFrame& frame, const HostAdapter& adapter) {
    FusedFrame read{frame.time, frame.received, frame.source, {}};
    const std::vector<std::shared_ptr<Track>> tracks = adapter.convert(frame);
    read.tracks.reserve(tracks.size());
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const ReportBase& base = baseOf(frame.tracks[i]);
        FusedTrack track = readTrack(SystemTrack(tracks[i], base.id), adapter);
        track.confirmed = base.confirmed;
        track.box = boxOf(frame.tracks[i]);
        track.sensors = {{frame.source, base.id, base.coasting}};
        read.tracks.push_back(std::move(track));
    }
    return read;
}

}  // namespace Veskar::Host::Internal
