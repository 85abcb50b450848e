// SPDX-License-Identifier: Apache-2.0
// Working memory of the fusion module, kept from frame to frame.
#pragma once

#include <veskar/FusionModule.h>

#include "association/Occupancy.h"
#include "fusion/IdSet.h"
#include "fusion/ReportIndex.h"

#include <unordered_set>
#include <vector>

namespace Veskar {

struct FusionModule::Workspace {
    ReportIndex reports;                          ///< the frame's sensor tracks
    std::vector<int> refusedSensorTracks;         ///< ids that one system track shall let go
    std::unordered_set<int> refusedSystemTracks;  ///< ids of those with a report outside the gate
    std::vector<const SystemTrack*> mergedAway;   ///< what this frame has folded into others
    std::vector<const SystemTrack*> marked;       ///< what this frame has supported
    Occupancy occupancy;                          ///< sensor tracks that system tracks hold
    IdSet startedIds;                             ///< sensor tracks that may have started one
    IdSet sharedRadarIds;                         ///< radar tracks of the fused system tracks
    IdSet copies;                                 ///< system tracks that repeat one of those
};

}  // namespace Veskar
