// SPDX-License-Identifier: Apache-2.0
// What observers receive.
#include <veskar/FusionObserver.h>

#include "Record.h"

namespace Bindings {
namespace {

using Observer = Veskar::FusionObserver;

void bindVerdicts(py::module_& module) {
    py::enum_<Observer::GateVerdict>(module, "GateVerdict", "What the gate says about a pair.")
        .value("PASSED", Observer::GateVerdict::Passed)
        .value("TOO_FAR", Observer::GateVerdict::TooFar)
        .value("VELOCITY_DIFFERS", Observer::GateVerdict::VelocityDiffers)
        .value("STANDS_STILL", Observer::GateVerdict::StandsStill)
        .value("CLASS_NOT_SUPPORTED", Observer::GateVerdict::ClassNotSupported);
    py::enum_<Observer::ClassVerdict>(module, "ClassVerdict", "The comparison of the classes.")
        .value("NOT_COMPARED", Observer::ClassVerdict::NotCompared)
        .value("MATCH", Observer::ClassVerdict::Match)
        .value("MISMATCH", Observer::ClassVerdict::Mismatch);
    py::enum_<Observer::Refusal>(module, "Refusal", "Why a report costs its track the place.")
        .value("NONE", Observer::Refusal::None)
        .value("OUTSIDE_GATE", Observer::Refusal::OutsideGate)
        .value("PAIR_TOO_FAR", Observer::Refusal::PairTooFar)
        .value("PAIR_DISAGREES", Observer::Refusal::PairDisagrees)
        .value("CLASS_MISMATCH", Observer::Refusal::ClassMismatch);
    py::enum_<Observer::Hindrance>(module, "Hindrance", "What a rule has against an assignment.")
        .value("NONE", Observer::Hindrance::None)
        .value("REPORT_COASTS", Observer::Hindrance::ReportCoasts)
        .value("SEEN_BESIDE_HELD", Observer::Hindrance::SeenBesideHeld);
    py::enum_<Observer::MergeHindrance>(module, "MergeHindrance", "What speaks against a merge.")
        .value("NONE", Observer::MergeHindrance::None)
        .value("SAME_START", Observer::MergeHindrance::SameStart)
        .value("PAIR_UNKNOWN", Observer::MergeHindrance::PairUnknown)
        .value("PAIR_DISAGREES", Observer::MergeHindrance::PairDisagrees);
    py::enum_<Observer::PruningReason>(module, "PruningReason", "Why a sensor track has left.")
        .value("COASTED", Observer::PruningReason::Coasted)
        .value("REFUSED", Observer::PruningReason::Refused)
        .value("PARTNER_REFUSED", Observer::PruningReason::PartnerRefused)
        .value("TAKEN_OVER", Observer::PruningReason::TakenOver);
    py::enum_<Observer::DeletionReason>(module, "DeletionReason", "Why a system track has ended.")
        .value("NO_SENSOR_TRACKS", Observer::DeletionReason::NoSensorTracks)
        .value("MERGED", Observer::DeletionReason::Merged)
        .value("RADAR_COPY", Observer::DeletionReason::RadarCopy);
}

void bindPairs(py::module_& module) {
    Record<Observer::Gate>(module, "Gate", "The gate of a pair.")
        .field("distance", &Observer::Gate::distance, "Mahalanobis distance")
        .field("limit", &Observer::Gate::limit, "the distance must stay below it")
        .field("velocity_similarity", &Observer::Gate::velocitySimilarity,
               "cosine of the angle between the velocities, or None")
        .field("similarity_limit", &Observer::Gate::similarityLimit, "it must stay above this")
        .field("verdict", &Observer::Gate::verdict, "the outcome");
    Record<Observer::PairMemory>(module, "PairMemory", "What the rule pairMemory knows of a pair.")
        .field("squared_distance", &Observer::PairMemory::squaredDistance,
               "mean squared Mahalanobis distance of the positions")
        .field("rivals", &Observer::PairMemory::rivals, "mean number of other tracks near")
        .field("disagrees", &Observer::PairMemory::disagrees, "whether they are different objects");
    Record<Observer::Continuation>(module, "Continuation", "A held sensor track reports again.")
        .field("system_track_id", &Observer::Continuation::systemTrackId, "the system track")
        .field("source", &Observer::Continuation::source, "of the sensor track")
        .field("sensor_track_id", &Observer::Continuation::sensorTrackId, "the sensor track")
        .field("gate", &Observer::Continuation::gate, "of the new report")
        .field("class_verdict", &Observer::Continuation::classVerdict, "of the new report")
        .field("refused", &Observer::Continuation::refused, "whether it costs the place")
        .field("refusal", &Observer::Continuation::refusal, "why")
        .field("pair_distance", &Observer::Continuation::pairDistance,
               "Mahalanobis distance to the other sensor's track, or None");
    Record<Observer::Candidate>(module, "Candidate", "A pair that may be assigned.")
        .field("system_track_id", &Observer::Candidate::systemTrackId, "the system track")
        .field("source", &Observer::Candidate::source, "of the sensor track")
        .field("sensor_track_id", &Observer::Candidate::sensorTrackId, "the sensor track")
        .field("gate", &Observer::Candidate::gate, "of the pair")
        .field("class_verdict", &Observer::Candidate::classVerdict, "of the pair")
        .field("allowed", &Observer::Candidate::allowed, "whether it may be assigned")
        .field("hindrance", &Observer::Candidate::hindrance, "what a rule has against it");
    Record<Observer::MergeCandidate>(module, "MergeCandidate", "Two tracks that may be one object.")
        .field("older_id", &Observer::MergeCandidate::olderId, "started first")
        .field("younger_id", &Observer::MergeCandidate::youngerId, "started later")
        .field("gate", &Observer::MergeCandidate::gate, "of the pair")
        .field("excluded", &Observer::MergeCandidate::excluded, "one has refused a report")
        .field("hindrance", &Observer::MergeCandidate::hindrance, "what else speaks against it")
        .field("memory", &Observer::MergeCandidate::memory, "of the pair, or None");
}

}  // namespace

void bindObserver(py::module_& module) {
    bindVerdicts(module);
    Record<Observer::Frame>(module, "ObservedFrame", "A frame that is about to be fused.")
        .field("source", &Observer::Frame::source, "the sensor")
        .field("timestamp", &Observer::Frame::timestamp, "s")
        .field("sensor_tracks", &Observer::Frame::sensorTracks, "tracks in the frame")
        .field("system_tracks", &Observer::Frame::systemTracks, "system tracks before it");
    bindPairs(module);
    Record<Observer::Link>(module, "Link", "A sensor track and its system track.")
        .field("system_track_id", &Observer::Link::systemTrackId, "the system track")
        .field("source", &Observer::Link::source, "of the sensor track")
        .field("sensor_track_id", &Observer::Link::sensorTrackId, "the sensor track");
    Record<Observer::Pruning>(module, "Pruning", "A sensor track has left a system track.")
        .field("system_track_id", &Observer::Pruning::systemTrackId, "the system track")
        .field("source", &Observer::Pruning::source, "of the sensor track")
        .field("sensor_track_id", &Observer::Pruning::sensorTrackId, "the sensor track")
        .field("coasting_time", &Observer::Pruning::coastingTime, "s without a report")
        .field("reason", &Observer::Pruning::reason, "why");
}

}  // namespace Bindings
