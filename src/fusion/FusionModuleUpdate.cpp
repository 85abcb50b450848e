// SPDX-License-Identifier: Apache-2.0
// How a frame's sensor tracks update the system tracks.
#include <veskar/FusionModule.h>

#include "association/ClassRule.h"
#include "fusion/FusionModuleState.h"
#include "fusion/SystemTracks.h"
#include "track/Support.h"

#include <algorithm>
#include <cstddef>
#include <functional>
#include <utility>

namespace Veskar {
namespace {

/// The element that an association names.
template <typename T>
const T& elementAt(const std::vector<T>& elements, int index) {
    return elements[static_cast<std::size_t>(index)];
}

/// The gain of a frame without a report for a system track with coasting tracks of its source.
double gainOfMiss(const Config::GainNegative& gains, Source source) {
    switch (source) {
        case Source::VideoObject:
            return gains.video;
        case Source::Radar:
            return gains.radar;
        default:
            return 1.0;
    }
}

}  // namespace

void FusionModule::update(Source source, const std::vector<std::shared_ptr<Track>>& tracks) {
    workspace_->refusedSystemTracks.clear();
    workspace_->marked.clear();

    continueTracks(source, tracks);
    if (source == Source::Radar) {
        mergeSystemTracks();
    }
    associateTracks(source, tracks);
    stepUnmarked(source);
}

/// Marks also the system tracks whose sensor track has no report in this frame.
void FusionModule::continueTracks(Source source,
                                  const std::vector<std::shared_ptr<Track>>& tracks) {
    workspace_->reports.assign(tracks);
    workspace_->continued.assign(systemTracks, source, workspace_->reports);
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        SystemTrack& systemTrack = dereference(pointer);
        if (!systemTrack.hasTracks(source)) {
            continue;
        }
        continueSystemTrack(systemTrack, source);
        if (systemTrack.hasTracks(source)) {
            workspace_->marked.push_back(&systemTrack);
        }
    }
}

/// Only a system track that radar and video support can do without one of them, so only there are
/// reports refused. A refused report is still fused before its sensor track leaves.
void FusionModule::continueSystemTrack(SystemTrack& systemTrack, Source source) {
    using Refusal = FusionObserver::Refusal;
    const bool mayRefuse = isFused(systemTrack);
    std::vector<int>& refused = workspace_->refusedSensorTracks;
    refused.clear();
    const SystemTrack::SensorTracks& held = systemTrack.getSensorTracks(source);
    for (const auto& [id, previous] : held) {
        const std::shared_ptr<Track>* found = workspace_->reports.find(id);
        if (found == nullptr) {
            continue;
        }
        const Track& report = dereference(*found);
        if (mayRefuse || observer_ != nullptr) {
            const Gate& gate = workspace_->gate;
            const Gate::Outcome outcome =
                gate.evaluate(gate.factsOf(systemTrack), gate.factsOf(report));
            const Refusal refusal = mayRefuse
                                        ? judgeReport(systemTrack, report, source, outcome.passed())
                                        : Refusal::None;
            if (refusal != Refusal::None) {
                refused.push_back(id);
            }
            if (observer_ != nullptr) {
                workspace_->explanation.continuation(*observer_, systemTrack, report, outcome,
                                                     refusal);
            }
        }
        if (ContinuedEstimates::covers(held)) {
            fuseReport(systemTrack, *found, workspace_->continued.next());
        } else {
            fuseReport(systemTrack, *found);
        }
    }
    if (source == Source::Radar && config_.rules.radarKeepsSystemTrack && !refused.empty()) {
        releaseOthers(systemTrack, Source::VideoObject, std::nullopt,
                      FusionObserver::PruningReason::PartnerRefused);
        return;
    }
    for (const int id : refused) {
        release(systemTrack, source, id, FusionObserver::PruningReason::Refused);
    }
}

FusionObserver::Refusal FusionModule::judgeReport(const SystemTrack& systemTrack,
                                                  const Track& report, Source source,
                                                  bool isInsideGate) {
    using Refusal = FusionObserver::Refusal;
    const bool isRadar = source == Source::Radar;
    const Track& other = *firstTrack(systemTrack, comparedSource(source));
    Refusal refusal = Refusal::None;
    if (!isInsideGate) {
        refusal = Refusal::OutsideGate;
    } else if (workspace_->rules.areApart(report, other)) {
        refusal = Refusal::PairTooFar;
    } else if (workspace_->rules.disagree(isRadar ? report : other, isRadar ? other : report)) {
        refusal = Refusal::PairDisagrees;
    }
    if (refusal != Refusal::None) {
        workspace_->refusedSystemTracks.insert(systemTrack.id);
        return refusal;
    }
    const bool isMismatch = config_.module.removeClassMismatches &&
                            !associator_.haveMatchingClasses(systemTrack, report, source);
    return isMismatch ? Refusal::ClassMismatch : Refusal::None;
}

void FusionModule::release(SystemTrack& systemTrack, Source source, int id,
                           FusionObserver::PruningReason reason) {
    if (observer_ != nullptr) {
        const Track& leaving = dereference(systemTrack.getSensorTracks(source).at(id));
        observer_->onPruning({systemTrack.id, source, id, leaving.coastingTime, reason});
    }
    systemTrack.pruneSensorTracksByIdx(source, id);
}

void FusionModule::releaseOthers(SystemTrack& systemTrack, Source source, std::optional<int> kept,
                                 FusionObserver::PruningReason reason) {
    std::vector<int>& leaving = workspace_->leavingSensorTracks;
    leaving.clear();
    for (const auto& entry : systemTrack.getSensorTracks(source)) {
        if (entry.first != kept) {
            leaving.push_back(entry.first);
        }
    }
    for (const int id : leaving) {
        release(systemTrack, source, id, reason);
    }
}

void FusionModule::mergeSystemTracks() {
    if (systemTracks.size() < 2) {
        return;
    }
    if (observer_ != nullptr) {
        workspace_->explanation.mergeCandidates(*observer_, systemTracks,
                                                workspace_->refusedSystemTracks);
    }
    std::vector<const SystemTrack*>& mergedAway = workspace_->mergedAway;
    mergedAway.clear();
    const auto isMergedAway = [&mergedAway](const SystemTrack& systemTrack) {
        return std::find(mergedAway.begin(), mergedAway.end(), &systemTrack) != mergedAway.end();
    };
    // A pair can come in both orientations: then the first one counts.
    for (const auto& [row, col] :
         associator_.systemToSystemAssociation(systemTracks, workspace_->refusedSystemTracks)) {
        SystemTrack* survivor = &dereference(elementAt(systemTracks, row));
        SystemTrack* other = &dereference(elementAt(systemTracks, col));
        if (!isMergedAway(*survivor) && !isMergedAway(*other)) {
            if (workspace_->rules.survivesInstead(*survivor, *other)) {
                std::swap(survivor, other);
            }
            if (observer_ != nullptr) {
                observer_->onMerge(survivor->id, other->id);
                observer_->onDeletion(other->id, FusionObserver::DeletionReason::Merged);
            }
            merge(*survivor, *other);
            mergedAway.push_back(other);
        }
    }
    eraseIf(systemTracks, isMergedAway);
}

void FusionModule::associateTracks(Source source,
                                   const std::vector<std::shared_ptr<Track>>& tracks) {
    if (systemTracks.empty() || tracks.empty()) {
        return;
    }
    if (observer_ != nullptr) {
        workspace_->explanation.candidates(*observer_, tracks, systemTracks, source);
    }
    for (const auto& [systemIndex, sensorIndex] :
         associator_.sensorToSystemAssociation(tracks, systemTracks, source, excludedTrackIds_)) {
        SystemTrack& systemTrack = dereference(elementAt(systemTracks, systemIndex));
        const std::shared_ptr<Track>& pointer = elementAt(tracks, sensorIndex);
        const Track& track = dereference(pointer);
        if (workspace_->rules.isOpen(systemTrack, track.source)) {
            if (observer_ != nullptr) {
                observer_->onAssignment({systemTrack.id, track.source, track.id});
            }
            fuseReport(systemTrack, pointer);
            releaseOthers(systemTrack, track.source, track.id,
                          FusionObserver::PruningReason::TakenOver);
            workspace_->marked.push_back(&systemTrack);
        }
    }
}

/// A gain of 1 keeps the mean and adds it to the probability's history.
void FusionModule::stepUnmarked(Source source) {
    std::vector<const SystemTrack*>& marked = workspace_->marked;
    std::sort(marked.begin(), marked.end(), std::less<>());
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        SystemTrack& systemTrack = dereference(pointer);
        if (std::binary_search(marked.begin(), marked.end(), &systemTrack, std::less<>())) {
            continue;
        }
        systemTrack.updateTrackProbability(systemTrack.hasCoastingTracks(source)
                                               ? gainOfMiss(config_.module.gainNegative, source)
                                               : 1.0);
    }
}

}  // namespace Veskar
