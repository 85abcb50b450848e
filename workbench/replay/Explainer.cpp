// SPDX-License-Identifier: Apache-2.0
#include "replay/Explainer.h"

#include "recording/Recording.h"

#include <cmath>

namespace Workbench {
namespace {

using Json = nlohmann::ordered_json;
using Observer = Veskar::FusionObserver;

/// The time of a frame as recordings state it, to a microsecond.
double recordedTime(double timestamp, double ahead) {
    return std::nearbyint((timestamp - ahead) * 1e6) / 1e6;
}

/// JSON has no numbers that are not finite.
Json numberOf(double value) {
    return std::isfinite(value) ? Json(value) : Json(nullptr);
}

const char* wordOf(Observer::GateVerdict verdict) {
    switch (verdict) {
        case Observer::GateVerdict::Passed:
            return "passed";
        case Observer::GateVerdict::TooFar:
            return "too far";
        case Observer::GateVerdict::VelocityDiffers:
            return "velocity differs";
        case Observer::GateVerdict::StandsStill:
            return "stands still in video";
        default:
            return "class not supported";
    }
}

const char* wordOf(Observer::ClassVerdict verdict) {
    switch (verdict) {
        case Observer::ClassVerdict::Match:
            return "match";
        case Observer::ClassVerdict::Mismatch:
            return "mismatch";
        default:
            return "not compared";
    }
}

const char* wordOf(Observer::DeletionReason reason) {
    switch (reason) {
        case Observer::DeletionReason::NoSensorTracks:
            return "no sensor tracks left";
        case Observer::DeletionReason::Merged:
            return "merged";
        default:
            return "copy of a shared radar track";
    }
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

/// Why a pair was not assigned, as far as it is known before the assignment.
const char* outcomeOf(const Observer::Candidate& candidate) {
    if (candidate.gate.verdict != Observer::GateVerdict::Passed) {
        return "outside the gate";
    }
    return candidate.allowed ? "other pairs cost less" : "a candidate of the right class is there";
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
    record["outcome"] = continuation.refused ? "fused, then refused" : "fused";
    line_["continuations"].push_back(std::move(record));
}

void Explainer::onCandidate(const Candidate& candidate) {
    Json record = linkOf(candidate.systemTrackId, candidate.source, candidate.sensorTrackId);
    addGate(record, candidate.gate);
    record["class"] = wordOf(candidate.classVerdict);
    record["outcome"] = outcomeOf(candidate);
    line_["candidates"].push_back(std::move(record));
}

void Explainer::onMergeCandidate(const MergeCandidate& candidate) {
    Json record{{"track", candidate.olderId}, {"other", candidate.youngerId}};
    addGate(record, candidate.gate);
    if (candidate.excluded) {
        record["outcome"] = "a report was refused in this frame";
    } else {
        const bool isInside = candidate.gate.verdict == GateVerdict::Passed;
        record["outcome"] = isInside ? "other pairs cost less" : "outside the gate";
    }
    line_["mergeCandidates"].push_back(std::move(record));
}

void Explainer::onAssignment(const Link& link) {
    for (Json& record : line_["candidates"]) {
        if (record["track"] == link.systemTrackId && record["id"] == link.sensorTrackId) {
            record["outcome"] = "assigned";
        }
    }
}

void Explainer::onMerge(int survivorId, int otherId) {
    for (Json& record : line_["mergeCandidates"]) {
        const bool isPair = record["track"] == survivorId && record["other"] == otherId;
        const bool isReverse = record["track"] == otherId && record["other"] == survivorId;
        if (isPair || isReverse) {
            record["outcome"] = "merged";
        }
    }
}

void Explainer::onStart(const Link& link) {
    line_["starts"].push_back(linkOf(link.systemTrackId, link.source, link.sensorTrackId));
}

void Explainer::onConfirmation(int systemTrackId, double probability, double limit) {
    line_["confirmations"].push_back(
        {{"track", systemTrackId}, {"probability", numberOf(probability)}, {"limit", limit}});
}

void Explainer::onPruning(const Pruning& pruning) {
    Json record = linkOf(pruning.systemTrackId, pruning.source, pruning.sensorTrackId);
    record["coasting"] = numberOf(pruning.coastingTime);
    line_["prunings"].push_back(std::move(record));
}

void Explainer::onDeletion(int systemTrackId, DeletionReason reason) {
    line_["deletions"].push_back({{"track", systemTrackId}, {"reason", wordOf(reason)}});
}

}  // namespace Workbench
