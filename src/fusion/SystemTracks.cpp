// SPDX-License-Identifier: Apache-2.0
#include "fusion/SystemTracks.h"

#include "track/Dereference.h"

namespace Veskar {

void takeLabels(SystemTrack& systemTrack, const Track& report) {
    systemTrack.updateClass(report);
    systemTrack.updateColor(report);
    systemTrack.updateUpperClothingColor(report);
    systemTrack.updateLowerClothingColor(report);
}

void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report) {
    systemTrack.updateState(report);
    systemTrack.updateTrackProbability(dereference(report).probability);
    takeLabels(systemTrack, dereference(report));
}

}  // namespace Veskar
