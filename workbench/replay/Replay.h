// SPDX-License-Identifier: Apache-2.0
// Sends a recording through the fusion and writes the fused tracks.
#pragma once

#include <veskar-host/FusedFrame.h>
#include <veskar-host/FusionPipeline.h>

#include "HostLibrary.h"
#include "recording/Excerpt.h"
#include "recording/LabelWords.h"
#include "replay/Settings.h"

#include <functional>
#include <string>

namespace Workbench {

/// What is to be replayed, and how.
struct ReplayTask {
    enum class Format { JsonLines, Csv };

    std::string recording;              ///< file of the recording, or "-"
    Excerpt excerpt;                    ///< the part of it to replay
    std::string output = "-";           ///< file of the fused tracks, or "-"
    std::string explanations;           ///< file of the explanations, or "-"; empty: none
    std::string camera;                 ///< see withCamera
    std::string installation;           ///< see withInstallation; the camera above comes after it
    Format format = Format::JsonLines;  ///< of the fused tracks
    bool inRealTime = false;            ///< keep the recording's pace
    bool withTags = false;              ///< see FusionPipeline::Options
    Settings settings;
};

/// Called during a replay. What they throw ends it, and no output appears; each may be empty.
struct ReplayHooks {
    /// Receives the part of the recording that has been read, 0 to 1; negative when unknown.
    std::function<void(double)> progress;
    UnknownWords::Tell unknownWord;  ///< receives words outside the vocabulary, once each
    /// Receives the fused frames, on the thread that writes them.
    std::function<void(const FusedFrame&)> fused;
};

/// @param task what is to be replayed
/// @param hooks called meanwhile
/// @return statistics of the fusion
/// @throw InputError the fault of an input, or why an output cannot be written
/// @throw Interrupted when a signal has come
FusionPipeline::Counts replay(const ReplayTask& task, const ReplayHooks& hooks);

}  // namespace Workbench
