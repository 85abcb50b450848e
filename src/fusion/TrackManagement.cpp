// SPDX-License-Identifier: Apache-2.0
// How system tracks are born, confirmed, merged and deleted.
#include <veskar/FusionModule.h>

#include "fusion/Report.h"
#include "fusion/SystemTracks.h"
#include "fusion/Workspace.h"

namespace Veskar {
namespace {

/// Two sensors that agree need less probability than one alone.
bool deservesConfirmation(const SystemTrack& systemTrack, const Config::ModuleConfig& limits) {
    const double probability = systemTrack.getTrackProbability();
    return limits.systemTrackConfirmationLimitUpper < probability ||
           (isFused(systemTrack) && limits.systemTrackConfirmationLimitLower < probability);
}

bool isEmpty(const SystemTrack& systemTrack) {
    return !systemTrack.hasTracks(VideoObject) && !systemTrack.hasTracks(Radar);
}

bool hasSingleRadarTrackOnly(const SystemTrack& systemTrack) {
    return systemTrack.hasTracks(Radar) && !systemTrack.hasTracks(VideoObject) &&
           systemTrack.getSensorTracks(Radar).size() == 1;
}

}  // namespace

/// Skips in one walk what is held already: initialize would walk all system tracks for each.
void FusionModule::startSystemTracks(Source source,
                                     const std::vector<std::shared_ptr<Track>>& tracks) {
    IdSet& heldIds = workspace->heldIds;
    heldIds.clear();
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        if (!systemTrack->hasSource(source)) {
            break;  // isOccupied throws here
        }
        for (const auto& [id, sensorTrack] : systemTrack->getSensorTracks(source)) {
            heldIds.add(id);
        }
    }
    heldIds.sort();
    for (const std::shared_ptr<Track>& track : tracks) {
        if (track->source != source || !heldIds.contains(track->id)) {
            initialize(track);
        }
    }
}

void FusionModule::initialize(std::shared_ptr<Track> track) {
    if (associator.isOccupied(*track, systemTracks)) {
        return;
    }
    if (config.module.removeClassMismatches && excludedTrackIds.count(track->id) > 0) {
        return;
    }
    systemTracks.push_back(
        std::make_shared<SystemTrack>(track, ObjectIdGenerator::instance->next()));
    takeLabels(*systemTracks.back(), *track);
}

void FusionModule::management() {
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        if (deservesConfirmation(*systemTrack, config.module)) {
            systemTrack->isConfirmed = true;
        }
        systemTrack->prune();
        systemTrack->updateIsConfident();
    }
    eraseIf(systemTracks, isEmpty);
    if (config.module.allowRadarToMultiple) {
        eraseRadarCopies();
    }
    excludedTrackIds.clear();
}

/// A radar track that may feed several system tracks leaves a radar-only one beside the fused ones.
void FusionModule::eraseRadarCopies() {
    IdSet& sharedRadarIds = workspace->sharedRadarIds;
    sharedRadarIds.clear();
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        if (isFused(*systemTrack)) {
            for (const auto& [id, radarTrack] : systemTrack->getSensorTracks(Radar)) {
                sharedRadarIds.add(id);
            }
        }
    }
    sharedRadarIds.sort();

    IdSet& copies = workspace->copies;
    copies.clear();
    for (const std::shared_ptr<SystemTrack>& systemTrack : systemTracks) {
        if (hasSingleRadarTrackOnly(*systemTrack) &&
            sharedRadarIds.contains(systemTrack->getSensorTracks(Radar).begin()->first)) {
            copies.add(systemTrack->id);
        }
    }
    copies.sort();
    eraseIf(systemTracks,
            [&copies](const SystemTrack& systemTrack) { return copies.contains(systemTrack.id); });
}

/// Only one sensor track moves over, preferably the video one, which carries the labels.
void FusionModule::merge(SystemTrack& target, SystemTrack& other) {
    const Source source = other.hasTracks(VideoObject) ? VideoObject : Radar;
    fuseReport(target, other.getSensorTracks(source).begin()->second);
}

}  // namespace Veskar
