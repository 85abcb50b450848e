// SPDX-License-Identifier: Apache-2.0
// Several observers of one fusion.
#pragma once

#include <veskar/FusionObserver.h>

#include <memory>
#include <utility>
#include <vector>

namespace Veskar::Live {

/// Tells each of its observers everything.
class ObserverList : public FusionObserver {
public:
    /// @param observer told from now on
    void add(std::unique_ptr<FusionObserver> observer) {
        observers_.push_back(std::move(observer));
    }
    /// Ends all observers.
    void clear() { observers_.clear(); }
    /// @return whether nobody is told
    bool isEmpty() const { return observers_.empty(); }

    void onFrame(const Frame& frame) override { tell(&FusionObserver::onFrame, frame); }
    void onContinuation(const Continuation& continuation) override {
        tell(&FusionObserver::onContinuation, continuation);
    }
    void onCandidate(const Candidate& candidate) override {
        tell(&FusionObserver::onCandidate, candidate);
    }
    void onMergeCandidate(const MergeCandidate& candidate) override {
        tell(&FusionObserver::onMergeCandidate, candidate);
    }
    void onAssignment(const Link& link) override { tell(&FusionObserver::onAssignment, link); }
    void onMerge(int survivorId, int otherId) override {
        tell(&FusionObserver::onMerge, survivorId, otherId);
    }
    void onStart(const Link& link) override { tell(&FusionObserver::onStart, link); }
    void onConfirmation(int systemTrackId, double probability, double limit) override {
        tell(&FusionObserver::onConfirmation, systemTrackId, probability, limit);
    }
    void onPruning(const Pruning& pruning) override { tell(&FusionObserver::onPruning, pruning); }
    void onDeletion(int systemTrackId, DeletionReason reason) override {
        tell(&FusionObserver::onDeletion, systemTrackId, reason);
    }
    void onStartWithheld(Source source, int sensorTrackId, double coastingTime) override {
        tell(&FusionObserver::onStartWithheld, source, sensorTrackId, coastingTime);
    }
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override {
        tell(&FusionObserver::onConfirmationWithheld, systemTrackId, rangeStd, limit);
    }

private:
    template <typename... Parameters, typename... Arguments>
    void tell(void (FusionObserver::*event)(Parameters...), const Arguments&... arguments) {
        for (const auto& observer : observers_) {
            ((*observer).*event)(arguments...);
        }
    }

    std::vector<std::unique_ptr<FusionObserver>> observers_;
};

}  // namespace Veskar::Live
