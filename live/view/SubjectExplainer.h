// SPDX-License-Identifier: Apache-2.0
// Explains what is decided about one track.
#pragma once

#include <veskar/FusionObserver.h>

#include "live/view/LiveView.h"
#include "live/view/Subject.h"

#include <memory>

namespace Veskar::Live {

/// Lets an explainer know only of the decisions about one track, and passes on the lines of frames
/// in which there were any.
class SubjectExplainer : public FusionObserver {
public:
    /// @param subject the track
    /// @param make makes the explainer
    /// @param lines receives its lines
    SubjectExplainer(const Subject& subject, const ViewContent::MakeExplainer& make,
                     ViewContent::Lines lines);

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
    void onStartWithheld(Source source, int sensorTrackId, double coastingTime) override;
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override;

private:
    bool isSystemTrack(int id) const { return !subject_.sensor && subject_.id == id; }
    template <typename Pair>
    bool isAbout(const Pair& pair) const {
        return subject_.isAmong(pair.systemTrackId, pair.source, pair.sensorTrackId);
    }
    template <typename Tell>
    void tellIf(bool isMine, Tell tell) {
        if (isMine) {
            hasDecision_ = true;
            tell(*explainer_);
        }
    }

    Subject subject_;
    std::unique_ptr<FusionObserver> explainer_;
    bool hasDecision_ = false;  ///< in this frame
};

}  // namespace Veskar::Live
