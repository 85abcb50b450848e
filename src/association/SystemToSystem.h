// SPDX-License-Identifier: Apache-2.0
// System tracks against each other: which pairs may describe one object.
#pragma once

#include <veskar/SystemTrack.h>

#include "association/Gate.h"
#include "association/SparseCosts.h"

#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Veskar {

/// One problem of pairing system tracks. What belongs to a track alone is found once.
class SystemToSystem {
public:
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;

    /// @param trackGate the gate; must outlive this
    explicit SystemToSystem(const Gate& trackGate) : gate(trackGate) {}

    /// Starts a problem. The tracks must outlive it.
    ///
    /// @param systems the system tracks
    /// @param excludedIds ids of those to leave out
    void start(const SystemTracks& systems, const std::unordered_set<int>& excludedIds);

    /// Finds the pairs that may be assigned: the row is the older track, the column the younger,
    /// and no source stands on both sides.
    /// @param pairs receives them
    void findAllowedPairs(SparseCosts& pairs) const;

    /// Pairs every radar-only track with the nearest track without radar, when that is an older
    /// video-only one; earlier radar tracks choose first.
    /// @param pairs receives both orientations of each pair
    void pairNearest(std::vector<std::pair<int, int>>& pairs);

private:
    struct Side {
        bool hasVideo;
        bool hasRadar;
        bool excluded;
        GateFacts gateFacts;

        bool isPairable() const { return !(hasVideo && hasRadar) && !excluded; }
    };

    static bool mayBeAssigned(const Side& older, const Side& younger);
    std::size_t findNearestWithoutRadar(const Side& radar) const;
    void take(const Side& side);
    bool isTaken(const Side& side) const;

    const Gate& gate;
    std::vector<Side> sides;
    std::vector<int> takenIds;  ///< ascending
};

}  // namespace Veskar
