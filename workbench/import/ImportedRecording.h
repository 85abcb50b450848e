// SPDX-License-Identifier: Apache-2.0
// A recording made from a data set, small enough to be sorted in memory.
#pragma once

#include "io/OutputFile.h"
#include "recording/Recording.h"

#include <string>
#include <vector>

namespace Workbench {

/// The result of an import.
struct ImportedRecording {
    RecordingHeader header;
    std::vector<SensorFrame> frames;
    std::vector<TruthFrame> truth;
    std::vector<std::string> warnings;  ///< data that could not be imported unchanged
};

/// Writes the lines in the order of their arrival.
/// @param recording the imported recording; each list ordered by time
/// @param output receives the recording
void write(const ImportedRecording& recording, OutputFile& output);

}  // namespace Workbench
