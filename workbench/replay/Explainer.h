// SPDX-License-Identifier: Apache-2.0
// Writes the fusion's decisions with their reasons.
#pragma once

#include <veskar/FusionObserver.h>

#include "recording/Header.h"

#include <functional>
#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// Collects the decisions of a frame and passes them on as one line of JSON: every candidate pair
/// with its gate, class verdict and outcome, and the events of the system tracks.
class Explainer : public Veskar::FusionObserver {
public:
    /// Receives one line per fused frame, with line end.
    using Sink = std::function<void(const std::string&)>;

    /// @param sink receives the lines
    /// @param uptime offset of the module's clock to the times that are written, s
    Explainer(Sink sink, double uptime) : sink_(std::move(sink)), ahead_(uptime) {}

    /// Passes on the last frame.
    void finish();

    void onFrame(const Frame& frame) override;
    void onContinuation(const Continuation& continuation) override;
    void onCandidate(const Candidate& candidate) override;
    void onMergeCandidate(const MergeCandidate& candidate) override;
    void onAssignment(const Link& link) override;
    void onMerge(int survivorId, int otherId) override;
    void onStart(const Link& link) override;
    void onConfirmation(int systemTrackId, double probability, double limit) override;
    void onStartWithheld(Veskar::Source source, int sensorTrackId, double coastingTime) override;
    void onConfirmationWithheld(int systemTrackId, double rangeStd, double limit) override;
    void onPruning(const Pruning& pruning) override;
    void onDeletion(int systemTrackId, DeletionReason reason) override;

private:
    Sink sink_;
    double ahead_;
    Json line_;
};

}  // namespace Workbench
