// SPDX-License-Identifier: Apache-2.0
// Reads recordings for a calibration.
#pragma once

#include "calibrate/CoarseStart.h"
#include "recording/Recording.h"

#include <cstdint>
#include <functional>
#include <string>

namespace Workbench {

/// A recording, ready to be calibrated with.
struct CalibrationInput {
    RecordingHeader header;
    CalibrationScene scene;
    std::string fault;  ///< a convention of the format that the recording violates; or empty
};

/// An error of convention, such as azimuths in radians, is not an error of mounting: fitted, it
/// would give a wrong installation. It is looked for first.
///
/// @param path the recording, or "-"
/// @param progress called with the share that has been read, 0 to 1; negative when unknown
/// @return its tracks; without them when there is a fault
/// @throw InputError when the recording cannot be read
CalibrationInput readForCalibration(const std::string& path,
                                    const std::function<void(double)>& progress);

}  // namespace Workbench
