// SPDX-License-Identifier: Apache-2.0
#include "live/view/SubjectExplainer.h"

#include <string>
#include <utility>

namespace Veskar::Live {

SubjectExplainer::SubjectExplainer(const Subject& subject, const ViewContent::MakeExplainer& make,
                                   ViewContent::Lines lines)
    : subject_(subject), explainer_(make([this, pass = std::move(lines)](const std::string& line) {
          if (hasDecision_) {
              pass(line);
          }
      })) {}

void SubjectExplainer::onFrame(const Frame& frame) {
    explainer_->onFrame(frame);  // writes the line of the frame before
    hasDecision_ = false;
}

void SubjectExplainer::onContinuation(const Continuation& continuation) {
    tellIf(isAbout(continuation), [&](FusionObserver& to) { to.onContinuation(continuation); });
}

void SubjectExplainer::onCandidate(const Candidate& candidate) {
    tellIf(isAbout(candidate), [&](FusionObserver& to) { to.onCandidate(candidate); });
}

void SubjectExplainer::onMergeCandidate(const MergeCandidate& candidate) {
    tellIf(isSystemTrack(candidate.olderId) || isSystemTrack(candidate.youngerId),
           [&](FusionObserver& to) { to.onMergeCandidate(candidate); });
}

void SubjectExplainer::onAssignment(const Link& link) {
    tellIf(isAbout(link), [&](FusionObserver& to) { to.onAssignment(link); });
}

void SubjectExplainer::onMerge(int survivorId, int otherId) {
    tellIf(isSystemTrack(survivorId) || isSystemTrack(otherId),
           [&](FusionObserver& to) { to.onMerge(survivorId, otherId); });
}

void SubjectExplainer::onStart(const Link& link) {
    tellIf(isAbout(link), [&](FusionObserver& to) { to.onStart(link); });
}

void SubjectExplainer::onConfirmation(int systemTrackId, double probability, double limit) {
    tellIf(isSystemTrack(systemTrackId),
           [&](FusionObserver& to) { to.onConfirmation(systemTrackId, probability, limit); });
}

void SubjectExplainer::onPruning(const Pruning& pruning) {
    tellIf(isAbout(pruning), [&](FusionObserver& to) { to.onPruning(pruning); });
}

void SubjectExplainer::onDeletion(int systemTrackId, DeletionReason reason) {
    tellIf(isSystemTrack(systemTrackId),
           [&](FusionObserver& to) { to.onDeletion(systemTrackId, reason); });
}

void SubjectExplainer::onStartWithheld(Source source, int sensorTrackId, double coastingTime) {
    tellIf(subject_.sensor == source && subject_.id == sensorTrackId,
           [&](FusionObserver& to) { to.onStartWithheld(source, sensorTrackId, coastingTime); });
}

void SubjectExplainer::onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) {
    tellIf(isSystemTrack(systemTrackId),
           [&](FusionObserver& to) { to.onConfirmationWithheld(systemTrackId, rangeStd, limit); });
}

}  // namespace Veskar::Live
