// SPDX-License-Identifier: Apache-2.0
// Which sensor tracks support a system track.
#pragma once

#include <veskar/SystemTrack.h>

#include "track/Dereference.h"

namespace Veskar {

/// @param system a system track
/// @return whether radar and video both support it
inline bool isFused(const SystemTrack& system) {
    return system.hasTracks(Source::Radar) && system.hasTracks(Source::VideoObject);
}

/// @param system a system track
/// @return whether neither radar nor video supports it
inline bool isUnsupported(const SystemTrack& system) {
    return !system.hasTracks(Source::VideoObject) && !system.hasTracks(Source::Radar);
}

/// The sensor track that speaks for its source.
///
/// @param system a system track
/// @param s a source
/// @return the track of @p s with the smallest id; null without one
inline const Track* firstTrack(const SystemTrack& system, Source s) {
    const auto tracks = system.sensorTracks.find(s);
    if (tracks == system.sensorTracks.end() || tracks->second.empty()) {
        return nullptr;
    }
    return &dereference(tracks->second.begin()->second);
}

/// @param system a system track
/// @param voted whether a video-object track has named the label that is asked for
/// @return the radar track that answers for the label; null when the system track does so itself
inline const Track* labelFallback(const SystemTrack& system, bool voted) {
    return voted ? nullptr : firstTrack(system, Source::Radar);
}

}  // namespace Veskar
