// SPDX-License-Identifier: Apache-2.0
// A fusion run against the truth, for the page.
#pragma once

#include "evaluate/Evaluation.h"
#include "recording/Header.h"

namespace Workbench {

/// Judges a run as `veskar evaluate` does by default, see docs/judgement.md.
class RunJudgement {
public:
    /// @param installation the header of the recording
    /// @param config the configuration of the run
    RunJudgement(const RecordingHeader& installation, const Veskar::Config& config)
        : header(installation), evaluation(installation, config, options) {}

    /// @param frame see Evaluation::add
    void add(const FusedFrame& frame) { evaluation.add(frame); }
    /// @param line see Evaluation::add
    void add(const RecordingLine& line) { evaluation.add(line); }

    /// @param start time 0 of the report, s
    /// @return {"cutoff": m, "moments": n, "time": column of n, "gospa": column of n, "matches":
    /// see
    ///         TrackTable (its tracks are true objects, its column the system track of each),
    ///         "parts": the figures}; null when nothing was judged
    Json json(double start) const;

private:
    Json parts() const;

    RecordingHeader header;
    EvaluationOptions options;
    Evaluation evaluation;
};

}  // namespace Workbench
