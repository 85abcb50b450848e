// SPDX-License-Identifier: Apache-2.0
// Checks a recording: its lines, the timing of its frames, and its installation.
#pragma once

#include "check/Conventions.h"
#include "check/Finding.h"
#include "check/MountingEstimate.h"
#include "recording/Recording.h"

#include <functional>
#include <optional>
#include <string>

namespace Workbench {

class LineReader;

/// Results of the check of a recording.
struct RecordingCheckResult {
    Findings findings;
    std::vector<Convention> conventions;       ///< of the format that are violated
    std::optional<MountingEstimate> mounting;  ///< when enough objects were seen by both sensors
};

/// @param path the recording, or "-"
/// @param progress called after each line with the file that is being read
/// @return faults and suspicious values, rates and delays as notes, and the estimate
/// @throw InputError when the recording cannot be read
RecordingCheckResult checkRecording(const std::string& path,
                                    const std::function<void(const LineReader&)>& progress);

/// @param header the installation as stated
/// @param estimate as estimated from the tracks
/// @param findings receives a warning with the corrected value for each significant deviation, and
///                 a note otherwise
void judgeMounting(const RecordingHeader& header, const MountingEstimate& estimate,
                   Findings& findings);

}  // namespace Workbench
