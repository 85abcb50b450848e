// SPDX-License-Identifier: Apache-2.0
#include "device/TrackLine.h"

#include <cstdio>

namespace VeskarDevice {

void printLine(const Veskar::SystemTrack& track) {
    std::printf("%d%s %s", track.id, track.isConfirmed ? " confirmed" : "",
                track.getClassName().c_str());
    for (const auto& [source, tracks] : track.sensorTracks) {
        for (const auto& [id, sensorTrack] : tracks) {
            std::printf(" %d:%d", static_cast<int>(source), id);
        }
    }
    std::printf(" %a", track.getTrackProbability());
    for (const double component : track.state) {
        std::printf(" %a", component);
    }
    for (const double variance : track.covariance.diagonal()) {
        std::printf(" %a", variance);
    }
    std::printf("\n");
}

}  // namespace VeskarDevice
