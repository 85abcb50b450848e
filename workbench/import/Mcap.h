// SPDX-License-Identifier: Apache-2.0
// Imports MCAP files with the messages of ROS 2.
#pragma once

#include "import/ImportedRecording.h"

#include <string>

namespace Workbench {

/// What is imported.
struct McapOptions {
    std::string log;           ///< a file
    std::string installation;  ///< a recording, or an object with camera and radar
    std::string radar;         ///< topic; empty: the only one with messages of a radar
    std::string video;         ///< topic; empty: the only one with detections of a camera
};

/// Messages of a radar are radar_msgs/msg/RadarTracks, or RadarScan, whose returns are tracked; of
/// a camera vision_msgs/msg/Detection2DArray, tracked when a detection has no id. They are read by
/// the definitions that the file states, so that versions of these packages do not matter. Axes are
/// those of ROS (REP 103): x forward, y to the left. A frame's time is the stamp in its header, and
/// it was received when it was logged.
///
/// @param options what to import
/// @return the recording
/// @throw InputError the fault of an input, no such topic, or several where one is meant
ImportedRecording importMcap(const McapOptions& options);

}  // namespace Workbench
