// SPDX-License-Identifier: Apache-2.0
#include "fusion/Explanation.h"

#include "fusion/SystemTracks.h"

#include <utility>

namespace Veskar {
namespace {

using GateVerdict = FusionObserver::GateVerdict;
using ClassVerdict = FusionObserver::ClassVerdict;

/// Which pairs the assignment may choose, as the association finds them.
std::vector<std::vector<bool>> allowedPairs(TrackAssociator& associator,
                                            const Explanation::Tracks& tracks,
                                            const Explanation::SystemTracks& systemTracks,
                                            Source source, bool classesForbid) {
    std::vector<std::vector<double>> cost;
    std::vector<std::vector<bool>> allowed;
    std::vector<std::vector<int>> classMatch;
    associator.sensorToSystemCostMatrix(tracks, systemTracks, cost, allowed, classMatch, source);
    if (classesForbid) {
        std::unordered_set<int> mismatches;
        associator.handleClassMatching(tracks, systemTracks, cost, allowed, classMatch, mismatches);
    }
    return allowed;
}

/// Whether two system tracks can be one object at all: each has one sensor, and not the same.
bool complement(const SystemTrack& a, const SystemTrack& b) {
    return !isFused(a) && !isFused(b) && a.hasTracks(Source::Radar) != b.hasTracks(Source::Radar) &&
           a.hasTracks(Source::VideoObject) != b.hasTracks(Source::VideoObject);
}

}  // namespace

FusionObserver::Gate Explanation::gateOf(const Track& a, const Track& b) {
    FusionObserver::Gate gate;
    const bool passed = associator.checkGating(a, b).passed;
    bool velocityPasses = true;
    if (config.splitGating) {
        gate.distance = a.positionStatisticalDistance(b);
        gate.limit = config.positionGatingDistance;
        gate.similarityLimit = config.velocityGatingSimilarity;
        const auto [counts, similarity] = a.velocitySimilarity(b, config.velocityMinGatingLimit);
        if (counts) {
            gate.velocitySimilarity = similarity;
            velocityPasses = similarity > config.velocityGatingSimilarity;
        }
    } else {
        gate.distance = a.statisticalDistance(b);
        gate.limit = config.gatingDistance;
    }
    if (passed) {
        gate.verdict = GateVerdict::Passed;
    } else if (!associator.isSupportedClass(a) || !associator.isSupportedClass(b)) {
        gate.verdict = GateVerdict::ClassNotSupported;
    } else if (!(gate.distance < gate.limit)) {
        gate.verdict = GateVerdict::TooFar;
    } else {
        gate.verdict = velocityPasses ? GateVerdict::StandsStill : GateVerdict::VelocityDiffers;
    }
    return gate;
}

FusionObserver::ClassVerdict Explanation::classesOf(const SystemTrack& systemTrack,
                                                    const Track& track) {
    if (!systemTrack.hasTracks(track.source == Source::Radar ? Source::VideoObject
                                                             : Source::Radar)) {
        return ClassVerdict::NotCompared;
    }
    return associator.haveMatchingClasses(systemTrack, track, track.source)
               ? ClassVerdict::Match
               : ClassVerdict::Mismatch;
}

void Explanation::continuation(const SystemTrack& systemTrack, const Track& report, bool refused) {
    observer.onContinuation({systemTrack.id, report.source, report.id, gateOf(systemTrack, report),
                             classesOf(systemTrack, report), refused});
}

void Explanation::candidates(const Tracks& tracks, const SystemTracks& systemTracks,
                             Source source) {
    // The greedy assignment knows no classes.
    const auto allowed = allowedPairs(associator, tracks, systemTracks, source, config.useJVA);
    const bool mayShare = source == Source::Radar && config.allowRadarToMultiple;
    std::vector<bool> isOpen;
    for (const std::shared_ptr<Track>& track : tracks) {
        isOpen.push_back(mayShare || !associator.isOccupied(*track, systemTracks));
    }
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        const SystemTrack& systemTrack = *systemTracks[i];
        for (std::size_t j = 0; j < tracks.size(); ++j) {
            if (isOpen[j] && !systemTrack.hasTracks(source)) {
                observer.onCandidate({systemTrack.id, source, tracks[j]->id,
                                      gateOf(systemTrack, *tracks[j]),
                                      classesOf(systemTrack, *tracks[j]), allowed[i][j]});
            }
        }
    }
}

void Explanation::mergeCandidates(const SystemTracks& systemTracks,
                                  const std::unordered_set<int>& excludedIds) {
    for (const std::shared_ptr<SystemTrack>& older : systemTracks) {
        for (const std::shared_ptr<SystemTrack>& younger : systemTracks) {
            if (complement(*older, *younger) && younger->startTime > older->startTime) {
                observer.onMergeCandidate(
                    {older->id, younger->id, gateOf(*older, *younger),
                     excludedIds.count(older->id) + excludedIds.count(younger->id) > 0});
            }
        }
    }
}

void Explanation::prune(SystemTrack& systemTrack) {
    const std::map<Source, SystemTrack::SensorTracks> before = systemTrack.sensorTracks;
    systemTrack.prune();
    for (const auto& [source, tracks] : before) {
        const SystemTrack::SensorTracks& left = systemTrack.sensorTracks.at(source);
        for (const auto& [id, track] : tracks) {
            if (left.count(id) == 0) {
                observer.onPruning({systemTrack.id, source, id, track->coastingTime});
            }
        }
    }
}

}  // namespace Veskar
