// SPDX-License-Identifier: Apache-2.0
// Checks a recording: its lines, its frames in time, and what they say about the installation.
#pragma once

#include "check/Conventions.h"
#include "check/Finding.h"
#include "check/MountingEstimate.h"
#include "recording/Recording.h"

#include <functional>
#include <optional>
#include <string>

namespace Workbench {

/// What a check of a recording knows beside its findings.
struct RecordingCheckResult {
    Findings findings;
    std::vector<Convention> conventions;       ///< of the format that the recording does not follow
    std::optional<MountingEstimate> mounting;  ///< when enough objects were seen by both sensors
};

/// @param path the recording, or "-"
/// @param progress called with the bytes read and the size of the file (0 when unknown)
/// @return everything that is wrong or suspicious, rates and delays as notes, and the estimate
/// @throw InputError when the recording cannot be read
RecordingCheckResult checkRecording(
    const std::string& path, const std::function<void(std::uint64_t, std::uint64_t)>& progress);

/// @param header the installation as stated
/// @param estimate what the tracks say about it
/// @param findings receives a warning with the corrected value for everything that is off, and a
///                 note for what is not
void judgeMounting(const RecordingHeader& header, const MountingEstimate& estimate,
                   Findings& findings);

}  // namespace Workbench
