// SPDX-License-Identifier: Apache-2.0
// Imports the results of other trackers as a run of a recording, to be judged and compared.
#pragma once

#include "import/ResultRows.h"
#include "io/OutputFile.h"

#include <optional>
#include <string>
#include <vector>

namespace Workbench {

/// What is imported.
struct ResultsOptions {
    std::string results;              ///< file of the tracker
    std::string recording;            ///< what it tracked
    std::optional<double> frameRate;  ///< of the results, frames per second
};

/// A format of results.
struct ResultsFormat {
    /// Reads the rows.
    std::vector<ResultRow> (*read)(const std::string& path);
    bool isAtCamera;  ///< whether places are relative to the camera, otherwise to the device
};

/// Writes fused tracks that state the results. Every track is confirmed and supported by no sensor.
///
/// The frames are the moments of truth of the recording, or its video frames when it has none; with
/// a frame rate, the first frame is at time 0. A tracker is taken to need no time: its tracks count
/// at the truth of the same moment. Velocities are those between a track's last two frames. Boxes
/// without a place stand on the ground where the camera sees the middle of their lower edge.
///
/// @param options what is imported
/// @param format of the results
/// @param output receives the fused tracks
/// @return words for classes that were imported as "unknown"
/// @throw InputError the fault of an input, or that the results have more frames than the recording
std::vector<std::string> importResults(const ResultsOptions& options, const ResultsFormat& format,
                                       OutputFile& output);

}  // namespace Workbench
