// SPDX-License-Identifier: Apache-2.0
// The evaluation of a fusion run against the truth, for the page.
#pragma once

#include "evaluate/Evaluation.h"
#include "recording/Header.h"

#include <optional>

namespace Workbench {

/// Evaluates a run as `veskar evaluate` does by default, see docs/judgement.md.
class RunJudgement {
public:
    /// @param installation the header of the recording
    /// @param config the configuration of the run
    RunJudgement(const RecordingHeader& installation, const Veskar::Config& config);

    /// @param frame see Evaluation::add
    void add(const FusedFrame& frame);
    /// @param line see Evaluation::add
    void add(const RecordingLine& line);

    /// @param start time 0 of the report, s
    /// @return {"cutoff": m, "moments": n, "time": column of n, "gospa": column of n, "matches":
    ///         see TrackTable (its tracks are true objects, its column the system track of each),
    ///         "parts": the metrics}; null when nothing was evaluated
    Json json(double start);

private:
    Json parts();

    RecordingHeader header_;
    EvaluationOptions options_;
    std::optional<Evaluation> evaluation_;  ///< set when the recording has truth
};

}  // namespace Workbench
