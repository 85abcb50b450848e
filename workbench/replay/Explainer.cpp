// SPDX-License-Identifier: Apache-2.0
#include "replay/Explainer.h"

#include "recording/Recording.h"
#include "replay/ExplanationWords.h"

#include <cmath>

namespace Workbench {
namespace {

using Observer = Veskar::FusionObserver;

/// The frame's time as in recordings, rounded to a microsecond.
double recordedTime(double timestamp, double ahead) {
    return std::nearbyint((timestamp - ahead) * 1e6) / 1e6;
}

/// Null for values that are not finite, since JSON has no such numbers.
Json numberOf(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

void addGate(Json& record, const Observer::Gate& gate) {
    record["distance"] = numberOf(gate.distance);
    record["limit"] = gate.limit;
    if (gate.velocitySimilarity) {
        record["velocitySimilarity"] = numberOf(*gate.velocitySimilarity);
        record["similarityLimit"] = gate.similarityLimit;
    }
    record["gate"] = wordOf(gate.verdict);
}

Json linkOf(int systemTrackId, Veskar::Source source, int sensorTrackId) {
    return Json{{"track", systemTrackId}, {"sensor", sourceName(source)}, {"id", sensorTrackId}};
}

PairOutcome outcomeOf(const Observer::Continuation& continuation) {
    switch (continuation.refusal) {
        case Observer::Refusal::None:
            return PairOutcome::Fused;
        case Observer::Refusal::PairTooFar:
            return PairOutcome::RefusedTooFar;
        case Observer::Refusal::PairDisagrees:
            return PairOutcome::RefusedDisagreeing;
        case Observer::Refusal::OutsideGate:
        case Observer::Refusal::ClassMismatch:
            break;  // the verdicts say why
    }
    return PairOutcome::FusedThenRefused;
}

/// Why a pair was not assigned, as far as it is known before the assignment.
PairOutcome outcomeOf(const Observer::Candidate& candidate) {
    if (candidate.hindrance == Observer::Hindrance::ReportCoasts) {
        return PairOutcome::ReportCoasts;
    }
    if (candidate.gate.verdict != Observer::GateVerdict::Passed) {
        return PairOutcome::OutsideGate;
    }
    if (candidate.hindrance == Observer::Hindrance::SeenBesideHeld) {
        return PairOutcome::SeenBesideHeld;
    }
    return candidate.allowed ? PairOutcome::OthersCostLess : PairOutcome::BetterClassPresent;
}

/// Why a pair was not merged, as far as it is known before the merges.
PairOutcome outcomeOf(const Observer::MergeCandidate& candidate) {
    if (candidate.excluded) {
        return PairOutcome::ReportRefused;
    }
    if (candidate.gate.verdict != Observer::GateVerdict::Passed) {
        return PairOutcome::OutsideGate;
    }
    switch (candidate.hindrance) {
        case Observer::MergeHindrance::SameStart:
            return PairOutcome::SameStart;
        case Observer::MergeHindrance::PairUnknown:
            return PairOutcome::PairUnknown;
        case Observer::MergeHindrance::PairDisagrees:
            return PairOutcome::PairDisagrees;
        case Observer::MergeHindrance::None:
            break;
    }
    return PairOutcome::OthersCostLess;
}

}  // namespace

void Explainer::finish() {
    if (!line_.is_null()) {
        sink_(line_.dump() + "\n");
        line_ = nullptr;
    }
}

void Explainer::onFrame(const Frame& frame) {
    finish();
    line_ = Json{{"source", sourceName(frame.source)},
                 {"time", recordedTime(frame.timestamp, ahead_)},
                 {"sensorTracks", frame.sensorTracks},
                 {"systemTracks", frame.systemTracks}};
}

void Explainer::onContinuation(const Continuation& continuation) {
    Json record =
        linkOf(continuation.systemTrackId, continuation.source, continuation.sensorTrackId);
    addGate(record, continuation.gate);
    record["class"] = wordOf(continuation.classVerdict);
    if (continuation.pairDistance) {
        record["pairDistance"] = numberOf(*continuation.pairDistance);
    }
    record["outcome"] = wordOf(outcomeOf(continuation));
    line_[wordOf(PairKind::Continuation)].push_back(std::move(record));
}

void Explainer::onCandidate(const Candidate& candidate) {
    Json record = linkOf(candidate.systemTrackId, candidate.source, candidate.sensorTrackId);
    addGate(record, candidate.gate);
    record["class"] = wordOf(candidate.classVerdict);
    record["outcome"] = wordOf(outcomeOf(candidate));
    line_[wordOf(PairKind::Candidate)].push_back(std::move(record));
}

void Explainer::onMergeCandidate(const MergeCandidate& candidate) {
    Json record{{"track", candidate.olderId}, {"other", candidate.youngerId}};
    addGate(record, candidate.gate);
    if (candidate.memory) {
        record["meanSquaredDistance"] = numberOf(candidate.memory->squaredDistance);
        record["rivals"] = numberOf(candidate.memory->rivals);
    }
    record["outcome"] = wordOf(outcomeOf(candidate));
    line_[wordOf(PairKind::MergeCandidate)].push_back(std::move(record));
}

void Explainer::onAssignment(const Link& link) {
    for (Json& record : line_[wordOf(PairKind::Candidate)]) {
        if (record["track"] == link.systemTrackId && record["id"] == link.sensorTrackId) {
            record["outcome"] = wordOf(PairOutcome::Assigned);
        }
    }
}

void Explainer::onMerge(int survivorId, int otherId) {
    for (Json& record : line_[wordOf(PairKind::MergeCandidate)]) {
        const bool isPair = record["track"] == survivorId && record["other"] == otherId;
        const bool isReverse = record["track"] == otherId && record["other"] == survivorId;
        if (isPair || isReverse) {
            record["outcome"] = wordOf(PairOutcome::Merged);
        }
    }
}

void Explainer::onStart(const Link& link) {
    line_[wordOf(EventKind::Start)].push_back(
        linkOf(link.systemTrackId, link.source, link.sensorTrackId));
}

void Explainer::onStartWithheld(Veskar::Source source, int sensorTrackId, double coastingTime) {
    line_[wordOf(EventKind::StartWithheld)].push_back({{"sensor", sourceName(source)},
                                                       {"id", sensorTrackId},
                                                       {"coasting", numberOf(coastingTime)}});
}

void Explainer::onConfirmation(int systemTrackId, double probability, double limit) {
    line_[wordOf(EventKind::Confirmation)].push_back(
        {{"track", systemTrackId}, {"probability", numberOf(probability)}, {"limit", limit}});
}

void Explainer::onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) {
    line_[wordOf(EventKind::ConfirmationWithheld)].push_back(
        {{"track", systemTrackId}, {"rangeStd", numberOf(rangeStd)}, {"limit", limit}});
}

void Explainer::onPruning(const Pruning& pruning) {
    Json record = linkOf(pruning.systemTrackId, pruning.source, pruning.sensorTrackId);
    record["coasting"] = numberOf(pruning.coastingTime);
    record["reason"] = wordOf(pruning.reason);
    line_[wordOf(EventKind::Pruning)].push_back(std::move(record));
}

void Explainer::onDeletion(int systemTrackId, DeletionReason reason) {
    line_[wordOf(EventKind::Deletion)].push_back(
        {{"track", systemTrackId}, {"reason", wordOf(reason)}});
}

}  // namespace Workbench
