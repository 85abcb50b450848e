// SPDX-License-Identifier: Apache-2.0
#include <veskar/FusionObserver.h>

namespace Veskar {

FusionObserver::~FusionObserver() = default;

void FusionObserver::onFrame(const Frame&) {}
void FusionObserver::onContinuation(const Continuation&) {}
void FusionObserver::onCandidate(const Candidate&) {}
void FusionObserver::onMergeCandidate(const MergeCandidate&) {}
void FusionObserver::onAssignment(const Link&) {}
void FusionObserver::onMerge(int, int) {}
void FusionObserver::onStart(const Link&) {}
void FusionObserver::onConfirmation(int, double, double) {}
void FusionObserver::onPruning(const Pruning&) {}
void FusionObserver::onDeletion(int, DeletionReason) {}
void FusionObserver::onConfirmationWithheld(int, double, double) {}
void FusionObserver::onStartWithheld(Source, int, double) {}
bool FusionObserver::wantsDecisions() const {
    return true;
}

}  // namespace Veskar
