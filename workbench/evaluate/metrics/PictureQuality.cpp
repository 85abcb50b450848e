// SPDX-License-Identifier: Apache-2.0
#include "evaluate/metrics/PictureQuality.h"

#include "evaluate/metrics/Average.h"

#include <algorithm>
#include <vector>

namespace Workbench {

void PictureQuality::add(const Instant& instant, const NearPairs& near) {
    truths_ += static_cast<int>(instant.truths.size());
    tracks_ += static_cast<int>(instant.tracks.size());
    std::vector<const NearPair*> nearest(instant.tracks.size());
    for (const NearPair& pair : near) {
        const NearPair*& ofTrack = nearest[static_cast<std::size_t>(pair.track)];
        if (pair.distance <= radius_ && (ofTrack == nullptr || pair.distance < ofTrack->distance)) {
            ofTrack = &pair;
        }
    }
    std::vector<bool> isTracked(instant.truths.size());
    for (const NearPair* pair : nearest) {
        if (pair != nullptr) {
            isTracked[static_cast<std::size_t>(pair->truth)] = true;
            ++assignedTracks_;
        }
    }
    trackedTruths_ += static_cast<int>(std::count(isTracked.begin(), isTracked.end(), true));
}

PictureQuality::Result PictureQuality::result() const {
    Result result;
    result.completeness = average(trackedTruths_, truths_);
    result.duplicatesPerObject = average(assignedTracks_ - trackedTruths_, trackedTruths_);
    result.spuriousness = average(tracks_ - assignedTracks_, tracks_);
    return result;
}

}  // namespace Workbench
