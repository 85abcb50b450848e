// SPDX-License-Identifier: Apache-2.0
// Which sensor tracks some system track holds already.
#pragma once

#include <veskar/SystemTrack.h>
#include <veskar/Track.h>

#include <memory>
#include <vector>

namespace Veskar {

/// TrackAssociator::isOccupied for many sensor tracks: one walk over the system tracks for all
/// sensor tracks of one source, then one binary search each.
class HeldTracks {
public:
    /// Forgets what is known.
    /// @param systemTracks the system tracks; must stay as they are until the last call of holds
    void start(const std::vector<std::shared_ptr<SystemTrack>>& systemTracks);

    /// @param track a sensor track
    /// @return whether a system track holds a track of that source and id
    /// @throw std::out_of_range when a system track before that one has no map for the source
    bool holds(const Track& track);

private:
    void collect(Source source);

    const std::vector<std::shared_ptr<SystemTrack>>* systems_ = nullptr;
    bool collected_ = false;
    Source source_ = Source::System;  ///< the source of `heldIds_`
    std::vector<int> heldIds_;        ///< ascending; of the system tracks before `unknowing_`
    const SystemTrack* unknowing_ =
        nullptr;  ///< the first system track without a map for `source_`
};

}  // namespace Veskar
