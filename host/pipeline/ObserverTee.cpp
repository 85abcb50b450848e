// SPDX-License-Identifier: Apache-2.0
#include "host/pipeline/ObserverTee.h"

#include <utility>

namespace Veskar::Host::Internal {

std::optional<FusionObserver::Frame> ObserverTee::takeFrame() {
    return std::exchange(frame_, std::nullopt);
}

void ObserverTee::onFrame(const Frame& frame) {
    frame_ = frame;
    if (next_ != nullptr) {
        next_->onFrame(frame);
    }
}

void ObserverTee::onContinuation(const Continuation& continuation) {
    if (next_ != nullptr) {
        next_->onContinuation(continuation);
    }
}

void ObserverTee::onCandidate(const Candidate& candidate) {
    if (next_ != nullptr) {
        next_->onCandidate(candidate);
    }
}

void ObserverTee::onMergeCandidate(const MergeCandidate& candidate) {
    if (next_ != nullptr) {
        next_->onMergeCandidate(candidate);
    }
}

void ObserverTee::onAssignment(const Link& link) {
    if (next_ != nullptr) {
        next_->onAssignment(link);
    }
}

void ObserverTee::onMerge(int survivorId, int otherId) {
    if (next_ != nullptr) {
        next_->onMerge(survivorId, otherId);
    }
}

void ObserverTee::onStart(const Link& link) {
    if (next_ != nullptr) {
        next_->onStart(link);
    }
}

void ObserverTee::onConfirmation(int systemTrackId, double probability, double limit) {
    if (next_ != nullptr) {
        next_->onConfirmation(systemTrackId, probability, limit);
    }
}

void ObserverTee::onPruning(const Pruning& pruning) {
    if (next_ != nullptr) {
        next_->onPruning(pruning);
    }
}

void ObserverTee::onDeletion(int systemTrackId, DeletionReason reason) {
    if (next_ != nullptr) {
        next_->onDeletion(systemTrackId, reason);
    }
}

void ObserverTee::onStartWithheld(Source source, int sensorTrackId, double coastingTime) {
    if (next_ != nullptr) {
        next_->onStartWithheld(source, sensorTrackId, coastingTime);
    }
}

void ObserverTee::onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) {
    if (next_ != nullptr) {
        next_->onConfirmationWithheld(systemTrackId, rangeStd, limit);
    }
}

bool ObserverTee::wantsDecisions() const {
    return next_ != nullptr && next_->wantsDecisions();
}

}  // namespace Veskar::Host::Internal
