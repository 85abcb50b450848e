// SPDX-License-Identifier: Apache-2.0
// The words of explanations: `veskar replay --explain` writes them, the report reads them.
//
// The page of the report has them, too, in workbench/report/src/vocabulary.ts: PageVocabularyTest
// writes that file and fails when it differs.
#pragma once

#include <veskar/FusionObserver.h>

#include <cstdint>

namespace Workbench {

/// Which tracks were compared.
enum class PairKind : std::int32_t {
    Continuation,    ///< a system track with the new report of a sensor track that it holds
    Candidate,       ///< a system track with a sensor track that no system track holds
    MergeCandidate,  ///< two system tracks
};

/// What happened to a system track.
enum class EventKind : std::int32_t {
    Start,                 ///< it started from a sensor track
    StartWithheld,         ///< a sensor track started none, because it coasts
    Confirmation,          ///< it was confirmed
    ConfirmationWithheld,  ///< it is probable enough, and waits for radar
    Pruning,               ///< a sensor track left it
    Deletion,              ///< it ended
};

/// What became of a compared pair.
enum class PairOutcome : std::int32_t {
    Fused,               ///< continuation: the report was fused
    FusedThenRefused,    ///< continuation: the report was fused, and then was refused
    RefusedTooFar,       ///< the same, because it is too far from the other sensor's track
    RefusedDisagreeing,  ///< the same, because both have disagreed over the last second
    Assigned,            ///< candidate: they belong together from now on
    Merged,              ///< merge candidate: one was folded into the other
    OutsideGate,         ///< not assigned or merged: the gate did not pass
    OthersCostLess,      ///< not assigned or merged: the assignment took other pairs
    BetterClassPresent,  ///< candidate, not allowed: another one inside the gate has the right
                         ///< class
    ReportRefused,       ///< merge candidate, excluded: one of them refused a report in this frame
    ReportCoasts,        ///< candidate: the report coasts, and only fresh ones are assigned
    SeenBesideHeld,  ///< candidate: its sensor has seen it beside the track that it would replace
    SameStart,       ///< merge candidate: both started at the same time
    PairUnknown,     ///< merge candidate: nothing is remembered of the pair
    PairDisagrees,   ///< merge candidate: they have disagreed over the last second
};

/// @param kind of a pair
/// @return the list of a frame that holds such pairs; null for a number that is no enumerator, as
///         for all others below
const char* wordOf(PairKind kind);
/// @param kind of an event
/// @return the list of a frame that holds such events
const char* wordOf(EventKind kind);
/// @param outcome of a pair
/// @return its word
const char* wordOf(PairOutcome outcome);
/// @param verdict of the gate about a pair
/// @return its word
const char* wordOf(Veskar::FusionObserver::GateVerdict verdict);
/// @param verdict of the comparison of classes
/// @return its word
const char* wordOf(Veskar::FusionObserver::ClassVerdict verdict);
/// @param reason why a system track has ended
/// @return its word
const char* wordOf(Veskar::FusionObserver::DeletionReason reason);
/// @param reason why a sensor track has left
/// @return its word
const char* wordOf(Veskar::FusionObserver::PruningReason reason);

}  // namespace Workbench
