// SPDX-License-Identifier: Apache-2.0
// The sensor track that speaks for its source in a system track.
#pragma once

#include <veskar/SystemTrack.h>

namespace Veskar {

/// @param system a system track
/// @param s a source
/// @return the track of @p s with the smallest id; null without one
inline const Track* firstTrack(const SystemTrack& system, Source s) {
    const auto tracks = system.sensorTracks.find(s);
    if (tracks == system.sensorTracks.end() || tracks->second.empty()) {
        return nullptr;
    }
    const Track& first = *tracks->second.begin()->second;
    return &first;
}

/// @param system a system track
/// @param voted whether a video-object track has named the label that is asked for
/// @return the radar track that answers for the label; null when the system track does so itself
inline const Track* labelFallback(const SystemTrack& system, bool voted) {
    return voted ? nullptr : firstTrack(system, Source::Radar);
}

}  // namespace Veskar
