// SPDX-License-Identifier: Apache-2.0
// Observes the fusion for the pipeline and for the host's observer.
#pragma once

#include <veskar/FusionObserver.h>

#include <optional>

namespace Veskar::Host::Internal {

/// Remembers the last frame that was fused and hands everything on to another observer, if there is
/// one. Wants decisions when that one does.
class ObserverTee : public FusionObserver {
public:
    /// @param next receives all events, or null
    void setNext(FusionObserver* next) { next_ = next; }
    /// @return the last frame that was fused since the last call, if any
    std::optional<Frame> takeFrame();

    void onFrame(const Frame& frame) override;
    void onContinuation(const Continuation& continuation) override;
    void onCandidate(const Candidate& candidate) override;
    void onMergeCandidate(const MergeCandidate& candidate) override;
    void onAssignment(const Link& link) override;
    void onMerge(int survivorId, int otherId) override;
    void onStart(const Link& link) override;
    void onConfirmation(int systemTrackId, double probability, double limit) override;
    void onPruning(const Pruning& pruning) override;
    void onDeletion(int systemTrackId, DeletionReason reason) override;
    void onStartWithheld(Veskar::Source source, int sensorTrackId, double coastingTime) override;
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override;
    bool wantsDecisions() const override;

private:
    FusionObserver* next_ = nullptr;
    std::optional<Frame> frame_;
};

}  // namespace Veskar::Host::Internal
