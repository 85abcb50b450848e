// SPDX-License-Identifier: Apache-2.0
// What the fusion module keeps from frame to frame beside its tracks.
#pragma once

#include <veskar/FusionModule.h>

#include "association/AssociationRules.h"
#include "association/HeldTracks.h"
#include "fusion/ContinuedEstimates.h"
#include "fusion/Explanation.h"
#include "fusion/IdSet.h"
#include "fusion/LogLimit.h"
#include "fusion/ReportIndex.h"
#include "fusion/TimeBase.h"
#include "gating/Gate.h"

#include <map>
#include <memory>
#include <optional>
#include <unordered_set>
#include <vector>

namespace Veskar {

/// What FusionModule::cycle remembers of the frames that have arrived.
struct FusionModule::Arrivals {
    /// A frame that is held back until the next one confirms or contradicts its time stamp.
    struct Frame {
        Source source;
        double timestamp;  ///< seconds
        std::vector<std::shared_ptr<Track>> tracks;
    };

    TimeBase timeBase;
    std::optional<Frame> heldBack;
    std::map<Source, double> lastTimestamps;  ///< of the last accepted frame of each source

    LogLimit zeroGain;
    LogLimit olderFrame;
    LogLimit radarWaits;
    LogLimit radarDropped;
};

/// The parts that a frame works with, and its memory, kept so that a warm module allocates little.
struct FusionModule::Workspace {
    /// @param config must outlive this
    /// @param sharedRules of the associator; must outlive this
    Workspace(const Config& config, AssociationRules& sharedRules)
        : rules(sharedRules), gate(config), explanation(config.module, gate, sharedRules) {}

    AssociationRules& rules;
    double frameTime = 0.0;           ///< of the frame at hand, s
    std::optional<double> radarTime;  ///< of the last radar frame, s
    Gate gate;
    Explanation explanation;
    ReportIndex reports;                          ///< the frame's sensor tracks
    ContinuedEstimates continued;                 ///< of system tracks that go on
    std::vector<int> refusedSensorTracks;         ///< ids with a refused report
    std::vector<int> leavingSensorTracks;         ///< ids that leave for another reason
    std::unordered_set<int> refusedSystemTracks;  ///< ids of those with a refused report
    std::vector<const SystemTrack*> mergedAway;   ///< system tracks merged into others
    std::vector<const SystemTrack*> marked;       ///< system tracks that the frame supports
    HeldTracks heldTracks;                        ///< sensor tracks that system tracks hold
    IdSet startedIds;                             ///< sensor tracks that may have started one
    IdSet sharedRadarIds;                         ///< radar tracks of the fused system tracks
    IdSet copies;                                 ///< system tracks that repeat one of those
};

}  // namespace Veskar
