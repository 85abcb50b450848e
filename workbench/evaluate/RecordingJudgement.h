// SPDX-License-Identifier: Apache-2.0
// Judges a whole recording: the fusion runs on it, or its fused tracks come from files.
#pragma once

#include <veskar-host/FusionPipeline.h>

#include "HostLibrary.h"
#include "evaluate/EvaluationReport.h"
#include "recording/Excerpt.h"
#include "replay/Provenance.h"
#include "replay/Settings.h"

#include <functional>
#include <string>
#include <vector>

namespace Workbench {

/// What is to be judged, and how.
struct JudgementTask {
    std::string recording;  ///< file of a recording with truth, or "-"
    Excerpt excerpt;        ///< the part of it to judge
    /// Files of its fused tracks; "-" is standard input. With none the fusion runs.
    std::vector<std::string> runs;
    std::string camera;         ///< of the fusion that runs, see withCamera
    Settings settings;          ///< of the fusion that runs
    EvaluationOptions options;  ///< bands ascend, hits are in any order
};

/// The figures of a recording. Of several runs the trackers are "run 1", "run 2", ..., otherwise
/// "fusion"; behind them come the sensors, whose tracks are converted with the configuration of the
/// first run.
struct RecordingFigures {
    EvaluationReport report;
    std::vector<GospaSeries> overTime;  ///< when `EvaluationOptions::keepsMoments`
    FusionPipeline::Counts counts;      ///< of the fusion, when it ran
};

/// @param task what is to be judged
/// @param provenance checks whether fused tracks belong to the recording
/// @param progress receives the part of the recording that has been read, 0 to 1; negative when
///                 unknown; may be empty
/// @return the figures
/// @throw InputError the fault of an input or of the bands, that the recording has no truth, or
/// that
///                   its runs have different cameras or radars
/// @throw Interrupted when a signal has come
RecordingFigures judgeRecording(JudgementTask task, const Provenance& provenance,
                                const std::function<void(double)>& progress);

}  // namespace Workbench
