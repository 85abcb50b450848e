// SPDX-License-Identifier: Apache-2.0
// Greedy association, in the order of the sensor tracks.
#pragma once

#include <veskar/Config.h>
#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include "association/AssociationRules.h"
#include "association/HeldTracks.h"
#include "gating/Gate.h"
#include "gating/NearSearch.h"

#include <memory>
#include <utility>
#include <vector>

namespace Veskar {

/// Gives every sensor track to the nearest system track inside its gate that has none of that
/// source yet. With "allowRadarToMultiple" a radar track goes to all of them instead.
class NearestSensorToSystem {
public:
    using SystemTracks = std::vector<std::shared_ptr<SystemTrack>>;
    using SensorTracks = std::vector<std::shared_ptr<Track>>;
    using Pairs = std::vector<std::pair<int, int>>;

    /// @param config says what may be shared; must outlive this
    /// @param gate the gate; must outlive this
    /// @param rules open system tracks and may forbid pairs; must outlive this
    NearestSensorToSystem(const Config::ModuleConfig& config, const Gate& gate,
                          const AssociationRules& rules)
        : config_(config), gate_(gate), rules_(rules) {}

    /// @param sensors tracks of one source
    /// @param systems system tracks
    /// @param source source of all sensor tracks
    /// @param pairs receives pairs (system index, sensor index)
    /// @throw std::out_of_range as TrackAssociator::isOccupied
    void associate(const SensorTracks& sensors, const SystemTracks& systems, const Source& source,
                   Pairs& pairs);

private:
    /// A system track that takes a track of the source.
    struct Place {
        int index;
        const SystemTrack* track;
        bool taken;
        GateSide side;
    };

    void gatherPlaces(const SystemTracks& systems, const Source& source);
    template <typename Visit>
    void visitFreeInGate(const Track& sensor, Visit visit);
    void giveToAll(const Track& sensor, int index, Pairs& pairs);
    void giveToNearest(const Track& sensor, int index, Pairs& pairs);

    const Config::ModuleConfig& config_;
    const Gate& gate_;
    const AssociationRules& rules_;
    std::vector<Place> places_;
    NearSearch search_;  ///< over `places_`
    HeldTracks heldTracks_;
};

}  // namespace Veskar
