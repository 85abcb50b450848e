// SPDX-License-Identifier: Apache-2.0
#include "association/SystemToSystem.h"

#include "association/ClassTraits.h"

#include <algorithm>
#include <limits>

namespace Veskar {

void SystemToSystem::start(const SystemTracks& systems,
                           const std::unordered_set<int>& excludedIds) {
    sides.clear();
    for (const auto& system : systems) {
        const SystemTrack& track = *system;
        Side side = {};
        side.hasVideo = track.hasTracks(Source::VideoObject);
        side.hasRadar = track.hasTracks(Source::Radar);
        side.excluded = excludedIds.count(track.id) != 0;
        side.gateFacts = gate.factsOf(track, classTraitsOf(track).supported);
        sides.push_back(side);
    }
}

bool SystemToSystem::mayBeAssigned(const Side& older, const Side& younger) {
    return older.isPairable() && younger.isPairable() && !(older.hasVideo && younger.hasVideo) &&
           !(older.hasRadar && younger.hasRadar) &&
           younger.gateFacts.track->startTime > older.gateFacts.track->startTime;
}

void SystemToSystem::findAllowedPairs(SparseCosts& pairs) const {
    pairs.clear();
    for (const Side& older : sides) {
        for (std::size_t j = 0; j < sides.size(); ++j) {
            if (mayBeAssigned(older, sides[j])) {
                const GatingResult result = gate.evaluate(older.gateFacts, sides[j].gateFacts);
                if (result.passed) {
                    pairs.add(j, result.distance);
                }
            }
        }
        pairs.endRow();
    }
}

void SystemToSystem::pairNearest(std::vector<std::pair<int, int>>& pairs) {
    takenIds.clear();
    for (std::size_t a = 0; a < sides.size(); ++a) {
        const Side& radar = sides[a];
        if (radar.hasVideo || !radar.hasRadar || radar.excluded) {
            continue;
        }
        const std::size_t b = findNearestWithoutRadar(radar);
        if (b == sides.size()) {
            continue;
        }
        const Side& video = sides[b];
        if (video.hasVideo && !video.excluded &&
            radar.gateFacts.track->startTime > video.gateFacts.track->startTime) {
            take(video);
            take(radar);
            pairs.emplace_back(a, b);
            pairs.emplace_back(b, a);
        }
    }
}

std::size_t SystemToSystem::findNearestWithoutRadar(const Side& radar) const {
    double nearest = std::numeric_limits<double>::max();
    std::size_t found = sides.size();
    for (std::size_t b = 0; b < sides.size(); ++b) {
        if (!sides[b].hasRadar && !isTaken(sides[b])) {
            const GatingResult result = gate.evaluate(radar.gateFacts, sides[b].gateFacts);
            if (result.passed && result.distance < nearest) {
                nearest = result.distance;
                found = b;
            }
        }
    }
    return found;
}

void SystemToSystem::take(const Side& side) {
    const int id = side.gateFacts.track->id;
    takenIds.insert(std::lower_bound(takenIds.begin(), takenIds.end(), id), id);
}

bool SystemToSystem::isTaken(const Side& side) const {
    return std::binary_search(takenIds.begin(), takenIds.end(), side.gateFacts.track->id);
}

}  // namespace Veskar
