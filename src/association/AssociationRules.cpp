// SPDX-License-Identifier: Apache-2.0
#include "association/AssociationRules.h"

#include "track/Support.h"

#include <algorithm>
#include <cmath>

namespace Veskar {

void AssociationRules::observe(Source source, double time,
                               const std::vector<std::shared_ptr<Track>>& reports,
                               const std::vector<std::shared_ptr<Track>>& others) {
    if (rules_.takeOver) {
        history_.add(source, reports);
    }
    if (source == Source::VideoObject) {
        videoTime_ = time;
    } else if (rules_.pairMemory && source == Source::Radar) {
        // Tracks that no system track holds do not coast by themselves when video is silent.
        const bool isCurrent = videoTime_ && time - *videoTime_ <= rules_.pairMemoryFreshness;
        pairMemory_.update(time, reports, isCurrent ? others : noTracks_);
    }
}

void AssociationRules::clear() {
    history_.clear();
    pairMemory_.clear();
    videoTime_.reset();
}

bool AssociationRules::isLosing(const SystemTrack& system, Source source) const {
    const SystemTrack::SensorTracks& held = system.getSensorTracks(source);
    return std::all_of(held.begin(), held.end(), [this](const auto& entry) {
        return dereference(entry.second).coastingTime >= rules_.coastingLimit;
    });
}

bool AssociationRules::mayReplaceHeld(const SystemTrack& system, const Track& report) const {
    if (!rules_.takeOver || !system.hasTracks(report.source)) {
        return true;
    }
    const SystemTrack::SensorTracks& held = system.getSensorTracks(report.source);
    return std::all_of(held.begin(), held.end(), [&](const auto& entry) {
        return history_.areExclusive(report.source, entry.first, report.id);
    });
}

bool AssociationRules::disagree(const Track& radar, const Track& video) const {
    const PairMemory::Pair* pair =
        rules_.pairMemory ? pairMemory_.find(radar.id, video.id) : nullptr;
    return pair != nullptr && pairMemory_.disagrees(*pair);
}

/// NaN counts as apart.
bool AssociationRules::areApart(const Track& report, const Track& other) const {
    const std::optional<double> distance = pairDistance(report, other);
    return distance && !(*distance < rules_.pairGate * distanceLimit_);
}

const PairMemory::Pair* AssociationRules::pairOf(const SystemTrack& a, const SystemTrack& b) const {
    if (!rules_.pairMemory) {
        return nullptr;
    }
    const bool isRadarFirst = a.hasTracks(Source::Radar);
    const Track* radar = firstTrack(isRadarFirst ? a : b, Source::Radar);
    const Track* video = firstTrack(isRadarFirst ? b : a, Source::VideoObject);
    return radar != nullptr && video != nullptr ? pairMemory_.find(radar->id, video->id) : nullptr;
}

/// The remembered distance takes the place of this frame's, on the scale of the split gate.
std::optional<double> AssociationRules::mergeCost(double cost, const SystemTrack& a,
                                                  const SystemTrack& b) const {
    if (!rules_.pairMemory) {
        return cost;
    }
    const PairMemory::Pair* pair = pairOf(a, b);
    if (pair == nullptr || pairMemory_.disagrees(*pair)) {
        return std::nullopt;
    }
    const double remembered = std::sqrt(pair->squaredDistance);
    return cost + (remembered - a.positionStatisticalDistance(b)) / distanceLimit_;
}

bool AssociationRules::survivesInstead(const SystemTrack& survivor,
                                       const SystemTrack& other) const {
    return rules_.orderedMerging && !survivor.hasTracks(Source::Radar) &&
           other.hasTracks(Source::Radar) && (other.isConfirmed || !survivor.isConfirmed);
}

}  // namespace Veskar
