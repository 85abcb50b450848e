// SPDX-License-Identifier: Apache-2.0
#include "fusion/SystemTracks.h"

namespace Veskar {

void takeLabels(SystemTrack& systemTrack, const Track& report) {
    systemTrack.updateClass(report);
    systemTrack.updateColor(report);
    systemTrack.updateUpperClothingColor(report);
    systemTrack.updateLowerClothingColor(report);
}

void fuseReport(SystemTrack& systemTrack, const std::shared_ptr<Track>& report) {
    systemTrack.updateState(report);
    systemTrack.updateTrackProbability(report->probability);
    takeLabels(systemTrack, *report);
}

}  // namespace Veskar
