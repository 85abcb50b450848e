// SPDX-License-Identifier: Apache-2.0
// Writes down why the fusion did what it did.
#pragma once

#include <veskar/FusionObserver.h>

#include <functional>
#include <string>

#include <nlohmann/json.hpp>

namespace Workbench {

/// Collects the decisions of a frame and hands them out as one line of JSON: every candidate pair
/// with its gate, class verdict and outcome, and what happened to the system tracks.
class Explainer : public Veskar::FusionObserver {
public:
    /// Receives one line per fused frame, with line end.
    using Sink = std::function<void(const std::string&)>;

    /// @param sink receives the lines
    /// @param uptime seconds by which the module's clock is ahead of the one to tell times in
    Explainer(Sink sink, double uptime) : sink_(std::move(sink)), ahead_(uptime) {}

    /// Hands out the last frame.
    void finish();

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

private:
    using Json = nlohmann::ordered_json;

    Sink sink_;
    double ahead_;
    Json line_;
};

}  // namespace Workbench
