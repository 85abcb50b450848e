// SPDX-License-Identifier: Apache-2.0
#include "association/SystemToSystem.h"

#include "track/Support.h"

#include <algorithm>
#include <limits>

namespace Veskar {

void SystemToSystem::start(const SystemTracks& systems,
                           const std::unordered_set<int>& excludedIds) {
    sides_.clear();
    for (std::size_t i = 0; i < systems.size(); ++i) {
        const SystemTrack& track = dereference(systems[i]);
        if (!isFused(track)) {
            sides_.push_back({i,
                              &track,
                              track.hasTracks(Source::VideoObject),
                              track.hasTracks(Source::Radar),
                              excludedIds.count(track.id) != 0,
                              {}});
        }
    }
}

void SystemToSystem::inspectTracks() {
    search_.clear();
    for (Side& side : sides_) {
        side.gateSide = gate_.sideOf(*side.track);
        search_.add(side.gateSide.marginals);
    }
}

void SystemToSystem::findAllowedPairs(const SystemTracks& systems,
                                      const std::unordered_set<int>& excludedIds,
                                      SparseCosts& pairs) {
    pairs.clear();
    start(systems, excludedIds);
    sides_.erase(std::remove_if(sides_.begin(), sides_.end(),
                                [](const Side& side) { return side.excluded; }),
                 sides_.end());
    if (sides_.size() > 1) {
        inspectTracks();
        for (const Side& older : sides_) {
            pairs.endRows(older.index - pairs.rowCount());
            search_.forEachNear(older.gateSide.marginals, [&](std::size_t k) {
                const Side& younger = sides_[k];
                if ((older.hasVideo && younger.hasVideo) || (older.hasRadar && younger.hasRadar) ||
                    !(younger.track->startTime > older.track->startTime)) {
                    return;
                }
                const Gate::Cost cost = gate_.costInside(older.gateSide, younger.gateSide);
                if (cost.passed) {
                    pairs.add(younger.index, cost.value);
                }
            });
            pairs.endRows(1);
        }
    }
    pairs.endRows(systems.size() - pairs.rowCount());
}

void SystemToSystem::pairNearest(const SystemTracks& systems,
                                 const std::unordered_set<int>& excludedIds, Pairs& pairs) {
    start(systems, excludedIds);
    if (sides_.size() < 2) {
        return;
    }
    inspectTracks();
    takenIds_.clear();
    for (const Side& radar : sides_) {
        if (!radar.hasRadar || radar.excluded) {
            continue;
        }
        const Side* video = findNearestWithoutRadar(radar);
        if (video != nullptr && video->hasVideo && !video->excluded &&
            radar.track->startTime > video->track->startTime) {
            take(*video);
            take(radar);
            pairs.emplace_back(radar.index, video->index);
            pairs.emplace_back(video->index, radar.index);
        }
    }
}

const SystemToSystem::Side* SystemToSystem::findNearestWithoutRadar(const Side& radar) const {
    double least = std::numeric_limits<double>::max();
    const Side* found = nullptr;
    search_.forEachNear(radar.gateSide.marginals, [&](std::size_t k) {
        const Side& side = sides_[k];
        if (side.hasRadar || isTaken(side)) {
            return;
        }
        const Gate::Cost cost = gate_.costInside(radar.gateSide, side.gateSide);
        if (cost.passed && cost.value < least) {
            least = cost.value;
            found = &side;
        }
    });
    return found;
}

void SystemToSystem::take(const Side& side) {
    const int id = side.track->id;
    takenIds_.insert(std::lower_bound(takenIds_.begin(), takenIds_.end(), id), id);
}

bool SystemToSystem::isTaken(const Side& side) const {
    return std::binary_search(takenIds_.begin(), takenIds_.end(), side.track->id);
}

}  // namespace Veskar
