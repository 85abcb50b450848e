// SPDX-License-Identifier: Apache-2.0
#include "fusion/Explanation.h"

#include "association/ClassRule.h"
#include "track/Support.h"

#include <algorithm>
#include <optional>

namespace Veskar {
namespace {

using GateVerdict = FusionObserver::GateVerdict;
using ClassVerdict = FusionObserver::ClassVerdict;

GateVerdict told(Gate::Verdict verdict) {
    switch (verdict) {
        case Gate::Verdict::Passed:
            return GateVerdict::Passed;
        case Gate::Verdict::TooFar:
            return GateVerdict::TooFar;
        case Gate::Verdict::VelocityDiffers:
            return GateVerdict::VelocityDiffers;
        case Gate::Verdict::StandsStill:
            return GateVerdict::StandsStill;
        case Gate::Verdict::ClassNotSupported:
            break;
    }
    return GateVerdict::ClassNotSupported;
}

ClassVerdict classesOf(const SystemTrack& systemTrack, const Track& track) {
    const std::optional<bool> agree = classesAgree(systemTrack, track, track.source);
    if (!agree) {
        return ClassVerdict::NotCompared;
    }
    return *agree ? ClassVerdict::Match : ClassVerdict::Mismatch;
}

}  // namespace

/// The gate measures nothing where a class is not supported; an observer gets the figures all the
/// same.
FusionObserver::Gate Explanation::told(const Gate::Outcome& outcome, const Track& a,
                                       const Track& b) const {
    const bool isMeasured = outcome.verdict != Gate::Verdict::ClassNotSupported;
    const Gate::Outcome figures = isMeasured ? outcome : gate_.measure(a, b);
    FusionObserver::Gate result;
    result.distance = figures.distance;
    result.limit = config_.gatingDistance;
    if (config_.splitGating) {
        result.limit = config_.positionGatingDistance;
        result.similarityLimit = config_.velocityGatingSimilarity;
    }
    if (figures.moving) {
        result.velocitySimilarity = figures.similarity;
    }
    result.verdict = Veskar::told(outcome.verdict);
    return result;
}

void Explanation::continuation(FusionObserver& observer, const SystemTrack& systemTrack,
                               const Track& report, const Gate::Outcome& outcome,
                               FusionObserver::Refusal refusal) const {
    const Track* other = firstTrack(systemTrack, comparedSource(report.source));
    observer.onContinuation(
        {systemTrack.id, report.source, report.id, told(outcome, systemTrack, report),
         classesOf(systemTrack, report), refusal != FusionObserver::Refusal::None, refusal,
         other != nullptr ? rules_.pairDistance(report, *other) : std::nullopt});
}

void Explanation::findOpenTracks(const Tracks& tracks, const SystemTracks& systemTracks,
                                 bool mayShare) {
    heldTracks_.start(systemTracks);
    openTracks_.clear();
    for (std::size_t j = 0; j < tracks.size(); ++j) {
        const Track& track = dereference(tracks[j]);
        if (mayShare || !heldTracks_.holds(track)) {
            openTracks_.push_back({static_cast<int>(j), gate_.factsOf(track)});
        }
    }
}

void Explanation::candidates(FusionObserver& observer, const Tracks& tracks,
                             const SystemTracks& systemTracks, Source source) {
    const auto isOpen = [this, source](const auto& pointer) {
        return rules_.isOpen(dereference(pointer), source);
    };
    if (std::none_of(systemTracks.begin(), systemTracks.end(), isOpen)) {
        return;
    }
    findOpenTracks(tracks, systemTracks, source == Source::Radar && config_.allowRadarToMultiple);
    if (openTracks_.empty()) {
        return;
    }
    // The greedy assignment knows no classes and may choose whatever passes the gate.
    if (config_.useJVA) {
        problem_.start(systemTracks, tracks, source);
        mismatches_.clear();
        problem_.findAllowedPairs(allowedPairs_, mismatches_);
    }
    for (std::size_t i = 0; i < systemTracks.size(); ++i) {
        if (!isOpen(systemTracks[i])) {
            continue;
        }
        const SystemTrack& systemTrack = *systemTracks[i];
        const GateFacts facts = gate_.factsOf(systemTrack);
        for (const OpenTrack& open : openTracks_) {
            const Track& track = *open.facts.track;
            const Gate::Outcome outcome = gate_.evaluate(facts, open.facts);
            const FusionObserver::Hindrance hindrance = hindranceOf(systemTrack, track);
            const bool allowed =
                config_.useJVA ? allowedPairs_.find(i, open.index) != nullptr
                               : outcome.passed() && hindrance == FusionObserver::Hindrance::None;
            observer.onCandidate({systemTrack.id, source, track.id,
                                  told(outcome, systemTrack, track), classesOf(systemTrack, track),
                                  allowed, hindrance});
        }
    }
}

FusionObserver::Hindrance Explanation::hindranceOf(const SystemTrack& systemTrack,
                                                   const Track& track) const {
    using Hindrance = FusionObserver::Hindrance;
    if (!rules_.isFresh(track)) {
        return Hindrance::ReportCoasts;
    }
    return rules_.mayReplaceHeld(systemTrack, track) ? Hindrance::None : Hindrance::SeenBesideHeld;
}

FusionObserver::MergeHindrance Explanation::mergeHindranceOf(const SystemTrack& older,
                                                             const SystemTrack& younger) const {
    using Hindrance = FusionObserver::MergeHindrance;
    if (!rules_.isOlder(older, younger)) {
        return Hindrance::SameStart;
    }
    if (!rules_.remembersPairs()) {
        return Hindrance::None;
    }
    const PairMemory::Pair* pair = rules_.pairOf(older, younger);
    if (pair == nullptr) {
        return Hindrance::PairUnknown;
    }
    return rules_.disagrees(*pair) ? Hindrance::PairDisagrees : Hindrance::None;
}

std::optional<FusionObserver::PairMemory> Explanation::memoryOf(const SystemTrack& a,
                                                                const SystemTrack& b) const {
    const PairMemory::Pair* pair = rules_.pairOf(a, b);
    if (pair == nullptr) {
        return std::nullopt;
    }
    return FusionObserver::PairMemory{pair->squaredDistance, pair->rivals, rules_.disagrees(*pair)};
}

void Explanation::mergeCandidates(FusionObserver& observer, const SystemTracks& systemTracks,
                                  const std::unordered_set<int>& excludedIds) {
    singles_.clear();
    for (const std::shared_ptr<SystemTrack>& pointer : systemTracks) {
        const SystemTrack& systemTrack = dereference(pointer);
        if (!isFused(systemTrack) && !isUnsupported(systemTrack)) {
            singles_.push_back(
                {&systemTrack, systemTrack.hasTracks(Source::Radar), gate_.factsOf(systemTrack)});
        }
    }
    for (const SingleSensor& older : singles_) {
        for (const SingleSensor& younger : singles_) {
            const bool sameStart = older.track->startTime == younger.track->startTime;
            const bool isOrdered = sameStart ? older.track->id < younger.track->id
                                             : older.track->startTime < younger.track->startTime;
            if (older.hasRadar != younger.hasRadar && isOrdered) {
                const Gate::Outcome outcome = gate_.evaluate(older.facts, younger.facts);
                observer.onMergeCandidate(
                    {older.track->id, younger.track->id,
                     told(outcome, *older.track, *younger.track),
                     excludedIds.count(older.track->id) + excludedIds.count(younger.track->id) > 0,
                     mergeHindranceOf(*older.track, *younger.track),
                     memoryOf(*older.track, *younger.track)});
            }
        }
    }
}

void Explanation::prune(FusionObserver& observer, SystemTrack& systemTrack) {
    held_.clear();
    for (const auto& [source, tracks] : systemTrack.sensorTracks) {
        for (const auto& [id, track] : tracks) {
            held_.push_back({systemTrack.id, source, id, dereference(track).coastingTime});
        }
    }
    systemTrack.prune();
    for (const FusionObserver::Pruning& before : held_) {
        if (systemTrack.getSensorTracks(before.source).count(before.sensorTrackId) == 0) {
            observer.onPruning(before);
        }
    }
}

}  // namespace Veskar
