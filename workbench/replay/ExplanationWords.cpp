// SPDX-License-Identifier: Apache-2.0
// No switch has a default, so that the compiler asks for the word of a new enumerator.
#include "replay/ExplanationWords.h"

namespace Workbench {

using Veskar::FusionObserver;

const char* wordOf(PairKind kind) {
    switch (kind) {
        case PairKind::Continuation:
            return "continuations";
        case PairKind::Candidate:
            return "candidates";
        case PairKind::MergeCandidate:
            return "mergeCandidates";
    }
    return nullptr;
}

const char* wordOf(EventKind kind) {
    switch (kind) {
        case EventKind::Start:
            return "starts";
        case EventKind::StartWithheld:
            return "withheldStarts";
        case EventKind::Confirmation:
            return "confirmations";
        case EventKind::ConfirmationWithheld:
            return "withheldConfirmations";
        case EventKind::Pruning:
            return "prunings";
        case EventKind::Deletion:
            return "deletions";
    }
    return nullptr;
}

const char* wordOf(PairOutcome outcome) {
    switch (outcome) {
        case PairOutcome::Fused:
            return "fused";
        case PairOutcome::FusedThenRefused:
            return "fused, then refused";
        case PairOutcome::RefusedTooFar:
            return "fused, then refused: too far from its partner";
        case PairOutcome::RefusedDisagreeing:
            return "fused, then refused: disagrees with its partner";
        case PairOutcome::Assigned:
            return "assigned";
        case PairOutcome::Merged:
            return "merged";
        case PairOutcome::OutsideGate:
            return "outside the gate";
        case PairOutcome::OthersCostLess:
            return "other pairs cost less";
        case PairOutcome::BetterClassPresent:
            return "a candidate of the right class is there";
        case PairOutcome::ReportRefused:
            return "a report was refused in this frame";
        case PairOutcome::ReportCoasts:
            return "the report coasts";
        case PairOutcome::SeenBesideHeld:
            return "its sensor sees it beside the held track";
        case PairOutcome::SameStart:
            return "both started at the same time";
        case PairOutcome::PairUnknown:
            return "nothing is remembered of the pair";
        case PairOutcome::PairDisagrees:
            return "the pair disagrees";
    }
    return nullptr;
}

const char* wordOf(FusionObserver::GateVerdict verdict) {
    switch (verdict) {
        case FusionObserver::GateVerdict::Passed:
            return "passed";
        case FusionObserver::GateVerdict::TooFar:
            return "too far";
        case FusionObserver::GateVerdict::VelocityDiffers:
            return "velocity differs";
        case FusionObserver::GateVerdict::StandsStill:
            return "stands still in video";
        case FusionObserver::GateVerdict::ClassNotSupported:
            return "class not supported";
    }
    return nullptr;
}

const char* wordOf(FusionObserver::ClassVerdict verdict) {
    switch (verdict) {
        case FusionObserver::ClassVerdict::NotCompared:
            return "not compared";
        case FusionObserver::ClassVerdict::Match:
            return "match";
        case FusionObserver::ClassVerdict::Mismatch:
            return "mismatch";
    }
    return nullptr;
}

const char* wordOf(FusionObserver::DeletionReason reason) {
    switch (reason) {
        case FusionObserver::DeletionReason::NoSensorTracks:
            return "no sensor tracks left";
        case FusionObserver::DeletionReason::Merged:
            return "merged";
        case FusionObserver::DeletionReason::RadarCopy:
            return "copy of a shared radar track";
    }
    return nullptr;
}

const char* wordOf(FusionObserver::PruningReason reason) {
    switch (reason) {
        case FusionObserver::PruningReason::Coasted:
            return "coasted";
        case FusionObserver::PruningReason::Refused:
            return "its report was refused";
        case FusionObserver::PruningReason::PartnerRefused:
            return "the report of its radar partner was refused";
        case FusionObserver::PruningReason::TakenOver:
            return "another track of its sensor took its place";
    }
    return nullptr;
}

}  // namespace Workbench
