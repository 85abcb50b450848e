// SPDX-License-Identifier: Apache-2.0
#include "association/PairMemory.h"

#include "track/Dereference.h"

#include <algorithm>
#include <cmath>
#include <utility>

namespace Veskar {
namespace {

/// More rivals than this count as this many.
constexpr int mostRivals = 4;
/// What stands for the time since the last comparison in a pair's first one, s: a frame at 10 Hz.
constexpr double firstInterval = 0.1;
/// Pairs farther than this, in units of "pairMemoryFar", along one axis are not compared.
constexpr double comparedReach = 1.5;
/// A pair is forgotten that has not been compared for this long, s.
constexpr double longestInterval = 1.0;

double squared(double value) {
    return value * value;
}

bool isRemembered(const PairMemory::Pair& pair, double time) {
    return time - pair.time <= longestInterval;
}

std::pair<int, int> idsOf(const PairMemory::Pair& pair) {
    return {pair.radarId, pair.videoId};
}

}  // namespace

PairMemory::PairMemory(const Config::Rules& rules)
    : rules_(rules), reachScale_(squared(comparedReach * rules.pairMemoryFar)) {}

void PairMemory::update(double time, const Tracks& radar, const Tracks& video) {
    gather(radar, radar_);
    gather(video, video_);
    findCandidates();
    merge(time);
}

const PairMemory::Pair* PairMemory::find(int radarId, int videoId) const {
    const std::pair<int, int> ids(radarId, videoId);
    const auto found =
        std::lower_bound(pairs_.begin(), pairs_.end(), ids,
                         [](const Pair& pair, const auto& wanted) { return idsOf(pair) < wanted; });
    return found != pairs_.end() && idsOf(*found) == ids ? &*found : nullptr;
}

Marginals PairMemory::marginalsOf(const PositionEstimate& position) const {
    Marginals marginals{};
    for (std::size_t k = 0; k < Marginals::positionCount; ++k) {
        marginals.mean[k] = position.mean[k];
        marginals.reach[k] = reachScale_ * position.variance[k];
    }
    return marginals;
}

/// Of several tracks with one id the last one counts, which is also the one that is fused.
void PairMemory::gather(const Tracks& tracks, std::vector<Fresh>& fresh) const {
    fresh.clear();
    for (const std::shared_ptr<Track>& pointer : tracks) {
        const Track& track = dereference(pointer);
        if (track.coastingTime <= rules_.pairMemoryFreshness) {
            const PositionEstimate position(track);
            if (position.isFinite()) {
                fresh.push_back({track.id, static_cast<int>(fresh.size()), position, 0});
            }
        }
    }
    const auto isBefore = [](const Fresh& a, const Fresh& b) {
        return a.id != b.id ? a.id < b.id : a.place > b.place;
    };
    // Sensors mostly report in the order of their ids.
    if (!std::is_sorted(fresh.begin(), fresh.end(), isBefore)) {
        std::sort(fresh.begin(), fresh.end(), isBefore);  // allocates nothing
    }
    const auto isRepeated = [](const Fresh& a, const Fresh& b) { return a.id == b.id; };
    fresh.erase(std::unique(fresh.begin(), fresh.end(), isRepeated), fresh.end());
}

void PairMemory::findCandidates() {
    search_.assign(video_.size(),
                   [this](std::size_t k) { return marginalsOf(video_[k].position); });
    const double far = squared(rules_.pairMemoryFar);
    const double near = squared(rules_.pairMemoryNear);
    candidates_.clear();
    for (Fresh& radar : radar_) {
        search_.forEachNear(marginalsOf(radar.position), [&](std::size_t number) {
            Fresh& video = video_[number];
            const double distance = squaredDistance(radar.position, video.position);
            const bool isNear = distance >= 0.0 && distance < near;
            radar.neighbours += isNear ? 1 : 0;
            video.neighbours += isNear ? 1 : 0;
            // Neither NaN nor a negative number, of an indefinite covariance, is a distance.
            const bool isFar = !(distance >= 0.0 && distance < far);
            candidates_.push_back({&radar, &video, isFar ? far : distance, isNear});
        });
    }
}

/// Walks over the known pairs and the candidates side by side.
void PairMemory::merge(double time) {
    merged_.clear();
    auto known = pairs_.cbegin();
    const auto keepThoseBefore = [&](const std::pair<int, int>* ids) {
        for (; known != pairs_.cend() && (ids == nullptr || idsOf(*known) < *ids); ++known) {
            if (isRemembered(*known, time)) {
                merged_.push_back(*known);
            }
        }
    };
    const double far = squared(rules_.pairMemoryFar);
    for (const Candidate& candidate : candidates_) {
        const std::pair<int, int> ids(candidate.radar->id, candidate.video->id);
        keepThoseBefore(&ids);
        Pair pair{ids.first, ids.second, rules_.pairMemoryLimit, 0.0, time - firstInterval};
        bool isKnown = false;
        if (known != pairs_.cend() && idsOf(*known) == ids) {
            isKnown = isRemembered(*known, time);
            pair = isKnown ? *known : pair;
            ++known;
        }
        if (isKnown || candidate.squaredDistance < far) {
            remember(pair, candidate, time);
        }
    }
    keepThoseBefore(nullptr);
    std::swap(pairs_, merged_);
}

/// Both means follow with the same weight. Frames that come out of order weigh nothing.
void PairMemory::remember(const Pair& pair, const Candidate& candidate, double time) {
    const double interval = std::max(time - pair.time, 0.0);
    if (interval != weighted_.interval) {
        weighted_ = {interval, 1.0 - std::exp(-interval / rules_.pairMemoryTime)};
    }
    const double weight = weighted_.weight;
    const int itself = candidate.isNear ? 2 : 0;
    const int rivals =
        std::min(candidate.radar->neighbours + candidate.video->neighbours - itself, mostRivals);
    Pair now = pair;
    now.squaredDistance += weight * (candidate.squaredDistance - pair.squaredDistance);
    now.rivals += weight * (rivals - pair.rivals);
    now.time = std::max(pair.time, time);
    merged_.push_back(now);
}

}  // namespace Veskar
