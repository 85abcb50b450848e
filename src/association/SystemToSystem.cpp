// SPDX-License-Identifier: Apache-2.0
#include "association/SystemToSystem.h"

#include "track/Support.h"

#include <algorithm>
#include <limits>
#include <optional>

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
    for (Side& side : sides_) {
        side.gateSide = gate_.sideOf(*side.track);
    }
    search_.assign(sides_.size(), [this](std::size_t k) -> const Marginals& {
        return sides_[k].gateSide.marginals;
    });
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
                    !rules_.isOlder(*older.track, *younger.track)) {
                    return;
                }
                const Gate::Cost cost = costOf(older, younger);
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
            rules_.isOlder(*video->track, *radar.track)) {
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
        const Gate::Cost cost = costOf(radar, side);
        if (cost.passed && cost.value < least) {
            least = cost.value;
            found = &side;
        }
    });
    return found;
}

Gate::Cost SystemToSystem::costOf(const Side& a, const Side& b) const {
    const Gate::Cost cost = gate_.costInside(a.gateSide, b.gateSide);
    if (!cost.passed) {
        return cost;
    }
    const std::optional<double> remembered = rules_.mergeCost(cost.value, *a.track, *b.track);
    return {remembered.value_or(0.0), remembered.has_value()};
}

void SystemToSystem::take(const Side& side) {
    const int id = side.track->id;
    takenIds_.insert(std::lower_bound(takenIds_.begin(), takenIds_.end(), id), id);
}

bool SystemToSystem::isTaken(const Side& side) const {
    return std::binary_search(takenIds_.begin(), takenIds_.end(), side.track->id);
}

}  // namespace Veskar
