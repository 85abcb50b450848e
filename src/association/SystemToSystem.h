// SPDX-License-Identifier: Apache-2.0
// System tracks against each other: which pairs may describe one object.
#pragma once

#include <veskar/SystemTrack.h>

#include "assignment/SparseCosts.h"
#include "association/AssociationRules.h"
#include "gating/Gate.h"
#include "gating/NearSearch.h"

#include <memory>
#include <unordered_set>
#include <utility>
#include <vector>

namespace Veskar {

/// One problem of pairing system tracks. What belongs to a track alone is found once, and only for
/// tracks that can be paired.
class SystemToSystem {
public:
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;
    using Pairs = std::vector<std::pair<int, int>>;

    /// @param gate the gate; must outlive this
    /// @param rules order the pairs and may forbid them; must outlive this
    SystemToSystem(const Gate& gate, const AssociationRules& rules) : gate_(gate), rules_(rules) {}

    /// Finds the pairs that may be assigned: the row is the older track, the column the younger,
    /// and no source stands on both sides.
    ///
    /// @param systems the system tracks
    /// @param excludedIds ids of those to leave out
    /// @param pairs receives the pairs
    void findAllowedPairs(const SystemTracks& systems, const std::unordered_set<int>& excludedIds,
                          SparseCosts& pairs);

    /// Pairs every radar-only track with the nearest track without radar, when that is an older
    /// video-only one. Earlier radar tracks choose first.
    ///
    /// @param systems the system tracks
    /// @param excludedIds ids of those to leave out
    /// @param pairs receives both orientations of each pair
    void pairNearest(const SystemTracks& systems, const std::unordered_set<int>& excludedIds,
                     Pairs& pairs);

private:
    /// A system track that is not yet backed by both sensors.
    struct Side {
        std::size_t index;
        const SystemTrack* track;
        bool hasVideo;
        bool hasRadar;
        bool excluded;
        GateSide gateSide;
    };

    void start(const SystemTracks& systems, const std::unordered_set<int>& excludedIds);
    void inspectTracks();
    const Side* findNearestWithoutRadar(const Side& radar) const;
    void take(const Side& side);
    bool isTaken(const Side& side) const;

    Gate::Cost costOf(const Side& a, const Side& b) const;

    const Gate& gate_;
    const AssociationRules& rules_;
    std::vector<Side> sides_;
    NearSearch search_;          ///< over `sides_`
    std::vector<int> takenIds_;  ///< ascending
};

}  // namespace Veskar
