// SPDX-License-Identifier: Apache-2.0
// A recording made from a data set: small enough to be sorted in memory.
#pragma once

#include "io/OutputFile.h"
#include "recording/Recording.h"

#include <string>
#include <vector>

namespace Workbench {

/// What an importer makes.
struct ImportedRecording {
    RecordingHeader header;
    std::vector<SensorFrame> frames;
    std::vector<TruthFrame> truth;
    std::vector<std::string> warnings;  ///< what could not be taken over as it is
};

/// Writes the lines in the order in which a host would receive them.
/// @param recording what was imported; each list in order of time
/// @param output receives the recording
void write(const ImportedRecording& recording, OutputFile& output);

}  // namespace Workbench
