// SPDX-License-Identifier: Apache-2.0
// How system tracks are started, confirmed, merged and deleted.
#include <veskar/FusionModule.h>

#include "fusion/FusionModuleState.h"
#include "fusion/SystemTracks.h"
#include "track/Support.h"

#include <cmath>
#include <utility>

namespace Veskar {
namespace {

/// Two sensors that agree need less probability than one alone.
bool deservesConfirmation(const SystemTrack& systemTrack, const Config::ModuleConfig& limits) {
    const double probability = systemTrack.getTrackProbability();
    return limits.systemTrackConfirmationLimitUpper < probability ||
           (isFused(systemTrack) && limits.systemTrackConfirmationLimitLower < probability);
}

bool hasSingleRadarTrackOnly(const SystemTrack& systemTrack) {
    return systemTrack.hasTracks(Source::Radar) && !isFused(systemTrack) &&
           systemTrack.getSensorTracks(Source::Radar).size() == 1;
}

void tellConfirmation(FusionObserver& observer, const SystemTrack& systemTrack,
                      const Config::ModuleConfig& limits) {
    const double probability = systemTrack.getTrackProbability();
    const double upper = limits.systemTrackConfirmationLimitUpper;
    observer.onConfirmation(systemTrack.id, probability,
                            upper < probability ? upper : limits.systemTrackConfirmationLimitLower);
}

template <typename Predicate>
void tellDeletions(FusionObserver& observer,
                   const std::vector<std::shared_ptr<SystemTrack>>& systemTracks,
                   Predicate isDeleted, FusionObserver::DeletionReason reason) {
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        const SystemTrack& systemTrack = dereference(pointer);
        if (isDeleted(systemTrack)) {
            observer.onDeletion(systemTrack.id, reason);
        }
    }
}

}  // namespace

/// Does what initialize would do for each track, but walks over the held tracks once only.
void FusionModule::startSystemTracks(const std::vector<std::shared_ptr<Track>>& tracks) {
    HeldTracks& heldTracks = workspace_->heldTracks;
    heldTracks.start(systemTracks);
    IdSet& startedIds = workspace_->startedIds;
    startedIds.clear();
    for (const std::shared_ptr<Track>& pointer : tracks) {
        const Track& track = dereference(pointer);
        if (heldTracks.holds(track)) {
            continue;
        }
        if (startedIds.contains(track.id)) {
            initialize(pointer);  // a second report: this frame may have started its system track
        } else {
            startedIds.insert(track.id);
            startSystemTrack(pointer);
        }
    }
}

void FusionModule::initialize(std::shared_ptr<Track> track) {
    if (!associator_.isOccupied(dereference(track), systemTracks)) {
        startSystemTrack(std::move(track));
    }
}

void FusionModule::startSystemTrack(std::shared_ptr<Track> track) {
    const Track& report = dereference(track);
    if (!workspace_->rules.isFresh(report)) {
        if (observer_ != nullptr) {
            observer_->onStartWithheld(report.source, report.id, report.coastingTime);
        }
        return;
    }
    if (config_.module.removeClassMismatches && excludedTrackIds_.count(report.id) > 0) {
        return;
    }
    systemTracks.push_back(
        std::make_shared<SystemTrack>(std::move(track), ObjectIdGenerator::instance->next()));
    SystemTrack& started = *systemTracks.back();
    takeLabels(started, report);
    if (observer_ != nullptr) {
        observer_->onStart({started.id, report.source, report.id});
    }
}

void FusionModule::management() {
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        SystemTrack& systemTrack = dereference(pointer);
        if (deservesConfirmation(systemTrack, config_.module) && !waitsForRadar(systemTrack)) {
            if (observer_ != nullptr && !systemTrack.isConfirmed) {
                tellConfirmation(*observer_, systemTrack, config_.module);
            }
            systemTrack.isConfirmed = true;
        }
        if (observer_ != nullptr) {
            workspace_->explanation.prune(*observer_, systemTrack);
        } else {
            systemTrack.prune();
        }
        systemTrack.updateIsConfident();
    }
    if (observer_ != nullptr) {
        tellDeletions(*observer_, systemTracks, isUnsupported,
                      FusionObserver::DeletionReason::NoSensorTracks);
    }
    eraseIf(systemTracks, isUnsupported);
    if (config_.module.allowRadarToMultiple) {
        eraseRadarCopies();
    }
    excludedTrackIds_.clear();
}

/// Whether video alone saw the object so far, without a certain range, while a radar is there that
/// should see it.
bool FusionModule::waitsForRadar(const SystemTrack& systemTrack) const {
    const double limit = config_.rules.videoRangeStd;
    if (!(limit > 0.0) || systemTrack.isConfirmed || systemTrack.hasTracks(Source::Radar)) {
        return false;
    }
    const std::optional<double>& radarTime = workspace_->radarTime;
    const bool isSilent =
        !radarTime || !(workspace_->frameTime - *radarTime < config_.rules.radarSilence);
    const double rangeStd = std::sqrt(systemTrack.covariance(4, 4));
    if (isSilent || rangeStd < limit) {
        return false;
    }
    if (observer_ != nullptr) {
        observer_->onConfirmationWithheld(systemTrack.id, rangeStd, limit);
    }
    return true;
}

/// A radar track that may feed several system tracks leaves a radar-only one beside the fused ones.
void FusionModule::eraseRadarCopies() {
    IdSet& sharedRadarIds = workspace_->sharedRadarIds;
    sharedRadarIds.clear();
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        const SystemTrack& systemTrack = dereference(pointer);
        if (isFused(systemTrack)) {
            for (const auto& [id, radarTrack] : systemTrack.getSensorTracks(Source::Radar)) {
                sharedRadarIds.insert(id);
            }
        }
    }

    IdSet& copies = workspace_->copies;
    copies.clear();
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        const SystemTrack& systemTrack = dereference(pointer);
        if (hasSingleRadarTrackOnly(systemTrack) &&
            sharedRadarIds.contains(systemTrack.getSensorTracks(Source::Radar).begin()->first)) {
            copies.insert(systemTrack.id);
        }
    }
    const auto isCopy = [&copies](const SystemTrack& systemTrack) {
        return copies.contains(systemTrack.id);
    };
    if (observer_ != nullptr) {
        tellDeletions(*observer_, systemTracks, isCopy, FusionObserver::DeletionReason::RadarCopy);
    }
    eraseIf(systemTracks, isCopy);
}

/// Only one sensor track moves over, preferably the video one, which carries the labels.
void FusionModule::merge(SystemTrack& target, SystemTrack& other) {
    const Source source =
        other.hasTracks(Source::VideoObject) ? Source::VideoObject : Source::Radar;
    fuseReport(target, other.getSensorTracks(source).begin()->second);
}

}  // namespace Veskar
